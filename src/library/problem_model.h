#pragma once
// The open library of the program without its window: its problems, the one that is shown, the copy of it that is being
// edited, and the operations on files. What has to be asked or shown goes through the host.
//
// Invariants
//   1 The library is never empty: with no file open it holds one new problem.
//   2 There is always a current problem, and it is one of the library.
//   3 A file on the disk is the old or the new one, whatever fails.
//
// Threads: one thread works on a model.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/notifier.h"
#include "library/chess_problem.h"
#include "library/problem_file.h"

namespace quillon {

enum class EAnswer : std::uint8_t { Yes, No, Cancel };

/// Who owns the model: a window, or a test.
class IProblemHost : public INotifier {
  public:
    [[nodiscard]] virtual EAnswer AskYesNoCancel(std::string_view text, std::string_view title) = 0;

    /// Is a search for mate running or waiting?
    [[nodiscard]] virtual bool IsSolving() const = 0;
    virtual void StopSolving() = 0;

    /// A line for the status area.
    virtual void ShowStatus(std::string_view text) = 0;

    /// Another problem has become the current one, or the current one has changed under its editor.
    virtual void ProblemShown() = 0;

    /// The open file has another name, or the current problem has been saved.
    virtual void FileChanged() = 0;
};

/// What is edited of a problem.
struct TWorkingCopy {
    std::string m_description;
    std::set<std::string> m_tags;
    std::map<std::string, Variant> m_variants;
    SortIndications m_sortIndications;
    std::uint16_t m_kind = kDirectMate;
    std::uint16_t m_plies = 3;
    std::array<TFigure, kSquares> m_board{};

    friend bool operator==(const TWorkingCopy&, const TWorkingCopy&);
};

class CProblemModel {
  public:
    explicit CProblemModel(IProblemHost& host, TProblemFileOptions options = {});

    // --- What there is

    [[nodiscard]] const TProblemMap& Library() const { return m_library; }
    [[nodiscard]] const ChessProblem& Current() const { return *m_library.at(m_currentId); }
    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; } // empty: no file is open
    [[nodiscard]] const std::set<std::string>& TagsOfFile() const { return m_tagsOfFile; }

    /// "Quillon - NAME"
    [[nodiscard]] std::string WindowTitle() const;

    /// The description, or what stands for it in a problem that has none.
    [[nodiscard]] std::string ProblemTitle() const;

    // --- Editing

    [[nodiscard]] TWorkingCopy& Edited() { return m_edited; }
    [[nodiscard]] bool IsProblemChanged() const;

    /// Asks whether changes are to be saved, if there are any, and saves them on Yes. On No they stay what they are:
    /// they go when another problem is shown. False: whatever was to follow is not to be done (Cancel, or they could
    /// not be saved).
    [[nodiscard]] bool AskToSaveChanges();

    // --- Files. False if nothing was done, or it failed, which has been told.

    bool OpenProblemFile(const std::filesystem::path& path);
    bool NewProblemFile(const std::filesystem::path& path);
    bool SaveProblemFile();

    /// The dialog has asked about the path itself: a file that exists is only asked about here where its name has been
    /// made from it, by the ending ".cp" or as that of the twin.
    bool SaveProblemFileAs(const std::filesystem::path& path);

    // A file that others have changed since it was read is only written over if the user says so. Where the twin
    // without comments cannot be saved any more when the other is, that is told, and the library counts as saved. What
    // is odd in a file that is read goes to the log; without a log it is told here.

    /// Adds the problems of another file whose positions are not there, or removes those whose positions are; what came
    /// of it is told, and saved or taken back as the user answers.
    bool AppendProblems(const std::filesystem::path& otherPath);
    bool RemoveProblems(const std::filesystem::path& otherPath);

    /// To be called when something in the folder of the file has changed: asks whether to read it anew if it was the
    /// file.
    void FolderChanged();

    // --- Navigation. False if the current problem stays.

    bool ShowProblem(std::int32_t id);
    bool GoToProblem(std::int32_t id) { return ShowProblem(id); }
    bool NextProblem();
    bool PreviousProblem();
    bool FirstProblem();
    bool LastProblem();
    bool PreviouslyViewed();
    bool ReturnFromPreviouslyViewed();
    bool NewProblem();

  private:
    using TFileTimes = std::map<std::filesystem::path, std::filesystem::file_time_type>; // of the files that there are

    [[nodiscard]] bool MayReplaceLibrary();
    [[nodiscard]] bool MayLeaveProblem();
    [[nodiscard]] bool ReadOther(const std::filesystem::path& path, TProblemMap& problems);
    [[nodiscard]] bool Open(const std::filesystem::path& path);
    [[nodiscard]] bool HasFile();
    [[nodiscard]] bool WriteEdited(const std::filesystem::path& path);
    [[nodiscard]] bool WriteLibrary(const std::filesystem::path& path);
    [[nodiscard]] bool MaySavePosition();
    [[nodiscard]] bool IsOfOpenLibrary(const std::filesystem::path& file) const;
    [[nodiscard]] bool MayReplaceFiles(const std::filesystem::path& path, const std::filesystem::path& chosen);
    [[nodiscard]] bool MayOverwrite(const std::filesystem::path& path);
    void TakeWrites(const std::vector<std::filesystem::path>& files);
    void Read(const std::filesystem::path& path, TProblemMap& problems, std::string& oddities) const;
    void TakeLibrary(TProblemMap library, const std::filesystem::path& path, const TFileTimes& times);
    void MakeLibraryOfOneProblem();
    void TakeTags();
    [[nodiscard]] TFileTimes LastWritesOf(const std::filesystem::path& path) const;
    [[nodiscard]] bool IsChangedSince(const TFileTimes& times) const;
    void Show(std::int32_t id);
    void ShowFromHistory(std::size_t index);
    ChessProblem& AddNewProblem();
    [[nodiscard]] std::int32_t NextFreeId() const;
    [[nodiscard]] bool AskToKeep(const std::string& what);

    IProblemHost& m_host;
    TProblemFileOptions m_options;
    TProblemMap m_library;
    std::int32_t m_currentId = 0;
    TWorkingCopy m_edited;
    std::filesystem::path m_path;
    TFileTimes m_lastWrites; // of what was read or written
    TFileTimes m_toldWrites; // of what the user knows
    std::set<std::string> m_tagsOfFile;
    std::vector<std::int32_t> m_history; // ids in the order in which they were viewed
    std::size_t m_nHistoryIndex = 0;     // of the one that is shown
};

} // namespace quillon
