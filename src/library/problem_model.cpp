#include "library/problem_model.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "core/chess_exception.h"
#include "library/problem_file_writer.h"

namespace quillon {

namespace {

constexpr const char* kProduct = "Quillon";
constexpr const char* kErrorTitle = "Error";
constexpr const char* kNavigationTitle = "Navigation between problems";
constexpr const char* kEmptyFile = "File cannot be empty.";
constexpr const char* kUntitled = "New Problem";
constexpr const char* kChanged = "The opened file has been changed by an external application.\n\n";
constexpr std::size_t kFewProblems = 10;

using TBoard = std::array<TFigure, kSquares>;

bool SameVariants(const std::map<std::string, Variant>& a, const std::map<std::string, Variant>& b) {
    const auto sameMove = [](const VariantMove& x, const VariantMove& y) {
        return SameMove(x.move, y.move) && x.text == y.text && x.comment == y.comment;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const auto& x, const auto& y) {
        const auto &xs = x.second.moves, &ys = y.second.moves;
        return x.first == y.first && std::equal(xs.begin(), xs.end(), ys.begin(), ys.end(), sameMove);
    });
}

TWorkingCopy CopyOf(const ChessProblem& problem) {
    return {problem.description,
            problem.tags,
            problem.variants,
            problem.sortIndications,
            problem.kind,
            problem.plies,
            problem.originalPosition->m_board};
}

void StoreTexts(const TWorkingCopy& copy, ChessProblem& problem) {
    problem.description = copy.m_description;
    problem.tags = copy.m_tags;
    problem.variants = copy.m_variants;
    problem.sortIndications = copy.m_sortIndications;
}

/// Gives two problems each other's positions, with the moves played there, and stipulations.
void SwapPositions(ChessProblem& a, ChessProblem& b) {
    std::swap(a.kind, b.kind);
    std::swap(a.plies, b.plies);
    a.originalPosition.swap(b.originalPosition);
    a.playedPositions.swap(b.playedPositions);
    std::swap(a.currentPosition, b.currentPosition);
}

/// What is edited, stored in its problem until it is known whether it could be saved.
class CStored {
  public:
    ///   Errors  ChessException: the position cannot be one of a problem. Nothing has changed then.
    CStored(const TWorkingCopy& copy, ChessProblem& problem) : m_problem(problem), m_before(CopyOf(problem)) {
        m_bPosition = copy.m_kind != problem.kind || copy.m_plies != problem.plies ||
                      copy.m_board != problem.originalPosition->m_board;
        if (m_bPosition) {
            TChessboard board = EmptyChessboard();
            board.m_board = copy.m_board;
            m_other.kind = copy.m_kind;
            m_other.plies = copy.m_plies;
            SetOriginalPosition(m_other, board);
            SwapPositions(m_problem, m_other);
        }
        StoreTexts(copy, problem);
    }
    ~CStored() {
        if (m_bKept)
            return;
        StoreTexts(m_before, m_problem);
        if (m_bPosition)
            SwapPositions(m_problem, m_other);
    }
    CStored(const CStored&) = delete;
    CStored& operator=(const CStored&) = delete;

    void Keep() { m_bKept = true; }

  private:
    ChessProblem& m_problem;
    const TWorkingCopy m_before;
    ChessProblem m_other; // holds the position that was replaced
    bool m_bPosition = false;
    bool m_bKept = false;
};

/// The problems of each position, in ascending order of id.
std::multimap<TBoard, const ChessProblem*> ByPosition(const TProblemMap& problems) {
    std::multimap<TBoard, const ChessProblem*> byPosition;
    for (const auto& [id, problem] : problems)
        byPosition.emplace(problem->originalPosition->m_board, problem.get());
    return byPosition;
}

/// A failure of reading, with its place where it has one.
std::string TextOf(const ChessException& failure, const std::filesystem::path& path) {
    const auto* const error = dynamic_cast<const ProblemFileError*>(&failure);
    return error != nullptr ? FailureText(path.string(), *error) : failure.what();
}

std::string OpenedText(std::size_t nProblems) {
    return "The opened file contains " + std::to_string(nProblems) + " chess problem(s)" +
           (nProblems < kFewProblems ? "\nYou can find sample compositions in file sample_problems.cp (Ctrl+O or from "
                                       "menu: File->Open file...)"
                                     : "\nYou can search the contents of the file using Ctrl+F or from menu: Problem "
                                       "-> Find problem");
}

} // namespace

bool operator==(const TWorkingCopy& a, const TWorkingCopy& b) {
    return a.m_description == b.m_description && a.m_tags == b.m_tags && SameVariants(a.m_variants, b.m_variants) &&
           a.m_sortIndications == b.m_sortIndications && a.m_kind == b.m_kind && a.m_plies == b.m_plies &&
           a.m_board == b.m_board;
}

CProblemModel::CProblemModel(IProblemHost& host, TProblemFileOptions options)
    : m_host(host), m_options(std::move(options)) {
    MakeLibraryOfOneProblem();
}

std::string CProblemModel::WindowTitle() const {
    return m_path.empty() ? kProduct : std::string(kProduct) + " - " + m_path.filename().string();
}

std::string CProblemModel::ProblemTitle() const {
    return m_edited.m_description.empty() ? kUntitled : m_edited.m_description;
}

bool CProblemModel::IsProblemChanged() const { return !(CopyOf(Current()) == m_edited); }

bool CProblemModel::AskToSaveChanges() {
    if (!IsProblemChanged())
        return true;
    switch (m_host.AskYesNoCancel("There are changes in the current problem.\nDo you want to save them?", kProduct)) {
    case EAnswer::Yes:
        return SaveProblemFile();
    case EAnswer::No:
        return true;
    default:
        return false;
    }
}

// --- Files

bool CProblemModel::MayReplaceLibrary() {
    if (m_host.IsSolving() && !m_host.AskYesNo("All pending threads of mate search will be stopped.\nDo you want to "
                                               "continue?",
                                               kProduct))
        return false;
    m_host.StopSolving();
    return AskToSaveChanges();
}

bool CProblemModel::OpenProblemFile(const std::filesystem::path& path) { return MayReplaceLibrary() && Open(path); }

bool CProblemModel::NewProblemFile(const std::filesystem::path& path) {
    if (!MayReplaceLibrary())
        return false;
    try {
        return CreateNewProblemFile(path, m_host, EExistingFile::Ask, m_options) && Open(path);
    } catch (const ChessException& failure) {
        m_host.Inform(failure.what(), kErrorTitle);
        return false;
    }
}

/// What had to be asked before has been asked.
bool CProblemModel::Open(const std::filesystem::path& path) {
    m_host.ShowStatus("Opening file...");
    const TFileTimes times = LastWritesOf(path); // before the reading: what changes meanwhile is noticed later
    TProblemMap library;
    std::string oddities;
    try {
        Read(path, library, oddities);
        if (library.empty())
            throw ChessException(kEmptyFile);
    } catch (const CFileError& failure) {
        m_host.Inform(failure.what(), kErrorTitle); // nothing has been read: the library stays
        return false;
    } catch (const ChessException& failure) {
        MakeLibraryOfOneProblem();
        m_host.Inform(TextOf(failure, path), kErrorTitle);
        return false;
    }
    TakeLibrary(std::move(library), path, times);
    if (!oddities.empty())
        m_host.Inform(oddities, kProduct);
    return true;
}

/// Reads a file. What is odd in it ends up in `oddities` if there is no log that has it.
void CProblemModel::Read(const std::filesystem::path& path, TProblemMap& problems, std::string& oddities) const {
    constexpr int kMostShown = 5;
    int nWarnings = 0;
    std::string shown;
    const auto take = [&](const ProblemFileError& warning) {
        if (++nWarnings <= kMostShown)
            shown += "\n" + FailureText(path.string(), warning);
    };
    ReadProblemFile(path, problems, take, m_options);
    if (nWarnings > 0 && !m_options.m_log)
        oddities = "Warnings: " + std::to_string(nWarnings) + shown + (nWarnings > kMostShown ? "\n..." : "");
}

void CProblemModel::TakeLibrary(TProblemMap library, const std::filesystem::path& path, const TFileTimes& times) {
    m_library = std::move(library);
    m_path = path;
    m_lastWrites = m_toldWrites = times;
    m_history.clear();
    m_tagsOfFile.clear();
    TakeTags();
    Show(m_library.begin()->first);
    m_host.FileChanged();
    m_host.ShowStatus(OpenedText(m_library.size()));
}

void CProblemModel::MakeLibraryOfOneProblem() {
    m_library.clear();
    m_path.clear();
    m_lastWrites.clear();
    m_toldWrites.clear();
    m_history.clear();
    m_tagsOfFile.clear();
    Show(AddNewProblem().id);
    m_host.FileChanged();
}

void CProblemModel::TakeTags() {
    for (const auto& [id, problem] : m_library)
        m_tagsOfFile.insert(problem->tags.begin(), problem->tags.end());
}

CProblemModel::TFileTimes CProblemModel::LastWritesOf(const std::filesystem::path& path) const {
    TFileTimes times;
    for (const std::filesystem::path& file : FilesOfLibrary(path, m_options)) {
        std::error_code missing;
        const auto lastWrite = std::filesystem::last_write_time(file, missing);
        if (!missing)
            times.emplace(file, lastWrite);
    }
    return times;
}

/// Are there files other than those? One that is gone has nothing that could be read, or lost.
bool CProblemModel::IsChangedSince(const TFileTimes& times) const {
    const TFileTimes now = LastWritesOf(m_path);
    return std::any_of(now.begin(), now.end(), [&](const auto& file) {
        const auto known = times.find(file.first);
        return known == times.end() || known->second != file.second;
    });
}

void CProblemModel::FolderChanged() {
    constexpr const char* kRecommendation = "It is strongly recommended to reopen it (close and open it again)\n\n";
    if (m_path.empty() || !IsChangedSince(m_toldWrites))
        return;
    m_toldWrites = LastWritesOf(m_path);
    if (IsProblemChanged())
        m_host.Inform(std::string(kChanged) + kRecommendation +
                          "Any unsaved changes will be lost.\nIf you want to save them, it is recommended to save to "
                          "another file (File... Save As).",
                      kProduct);
    else if (m_host.AskYesNo(std::string(kChanged) + kRecommendation + "Do you want to reload the file?", kProduct))
        static_cast<void>(OpenProblemFile(std::filesystem::path(m_path)));
}

/// The same position may stand in the file already.
bool CProblemModel::MaySavePosition() {
    if (!IsProblemChanged())
        return true;
    for (const auto& [id, problem] : m_library)
        if (id != m_currentId && problem->originalPosition->m_board == m_edited.m_board)
            return m_host.AskYesNo("The same position already exists in this file as the following problem:\n#n" +
                                       std::to_string(id) + " " + problem->description +
                                       "\n\nDo you want to save changes anyway?",
                                   kProduct);
    return true;
}

bool CProblemModel::IsOfOpenLibrary(const std::filesystem::path& file) const {
    if (m_path.empty())
        return false;
    const std::vector<std::filesystem::path> files = FilesOfLibrary(m_path, m_options);
    return std::any_of(files.begin(), files.end(), [&](const std::filesystem::path& own) {
        std::error_code ignored;
        return own == file || std::filesystem::equivalent(own, file, ignored);
    });
}

/// What others have written there since it was read would be in the backup only.
bool CProblemModel::MayOverwrite(const std::filesystem::path& path) {
    const std::vector<std::filesystem::path> files = FilesOfLibrary(path, m_options);
    const bool bOpenFile =
        std::any_of(files.begin(), files.end(), [&](const auto& file) { return IsOfOpenLibrary(file); });
    return !bOpenFile || !IsChangedSince(m_lastWrites) ||
           m_host.AskYesNo(std::string(kChanged) + "Do you want to overwrite it?", kProduct);
}

/// `chosen` is what the user has named, and was asked about.
bool CProblemModel::MayReplaceFiles(const std::filesystem::path& path, const std::filesystem::path& chosen) {
    for (const std::filesystem::path& file : FilesOfLibrary(path, m_options)) {
        std::error_code ignored;
        if (file != chosen && std::filesystem::exists(file, ignored) && !IsOfOpenLibrary(file) &&
            !m_host.AskYesNo("File " + file.string() + " already exists.\nDo you want to replace it?", kProduct))
            return false;
    }
    return true;
}

/// Of the files of the open library these are what has just been written: the others may have been changed by others.
void CProblemModel::TakeWrites(const std::vector<std::filesystem::path>& files) {
    const TFileTimes now = LastWritesOf(m_path);
    for (const std::filesystem::path& file : files)
        if (const auto written = now.find(file); written != now.end())
            m_lastWrites[file] = m_toldWrites[file] = written->second;
}

bool CProblemModel::WriteLibrary(const std::filesystem::path& path) {
    const std::vector<std::filesystem::path> files = FilesOfLibrary(path, m_options);
    std::vector<std::filesystem::path> written = files;
    try {
        WriteProblemFile(path, m_library, m_options);
    } catch (const CSaveError& failure) {
        m_host.Inform(std::string("Error saving to file\n") + failure.what(), kErrorTitle);
        written = failure.SavedFiles();
    } catch (const ChessException& failure) {
        m_host.Inform(std::string("Error saving to file\n") + failure.what(), kErrorTitle);
        return false;
    }
    // The first has all that the library holds.
    const bool bSaved = std::find(written.begin(), written.end(), files.front()) != written.end();
    if (bSaved && path != m_path) {
        m_path = path;
        m_lastWrites.clear();
        m_toldWrites.clear();
    }
    TakeWrites(written);
    if (bSaved)
        TakeTags();
    return bSaved;
}

bool CProblemModel::WriteEdited(const std::filesystem::path& path) {
    if (!MaySavePosition() || !MayOverwrite(path))
        return false;
    try {
        // Undone if the file cannot be written: the changes stay changes.
        CStored stored(m_edited, *m_library.at(m_currentId));
        if (!WriteLibrary(path))
            return false;
        stored.Keep();
    } catch (const ChessException& failure) {
        m_host.Inform(std::string("Error saving to file\n") + failure.what(), kErrorTitle);
        return false;
    }
    m_host.FileChanged();
    return true;
}

bool CProblemModel::HasFile() {
    if (m_path.empty())
        m_host.Inform("Error saving to file\nNo file is open.", kErrorTitle);
    return !m_path.empty();
}

bool CProblemModel::SaveProblemFile() { return HasFile() && WriteEdited(std::filesystem::path(m_path)); }

bool CProblemModel::SaveProblemFileAs(const std::filesystem::path& path) {
    std::filesystem::path file = path;
    if (!file.has_extension())
        file += ".cp";
    return MayReplaceFiles(file, path) && WriteEdited(file);
}

bool CProblemModel::ReadOther(const std::filesystem::path& path, TProblemMap& problems) {
    if (!MayReplaceLibrary())
        return false;
    try {
        std::string oddities;
        Read(path, problems, oddities);
        if (!oddities.empty())
            m_host.Inform(oddities, kProduct);
        return true;
    } catch (const ChessException& failure) {
        m_host.Inform(TextOf(failure, path), kErrorTitle);
        return false;
    }
}

/// Changes of the current problem that the user has not wanted to save are not saved here either.
bool CProblemModel::AskToKeep(const std::string& what) {
    if (!m_host.AskYesNo(what + "\n\nDo you want to save changes? (select 'No' to reject them)", kProduct) ||
        !HasFile() || !MayOverwrite(m_path) || !WriteLibrary(std::filesystem::path(m_path)))
        return false;
    m_host.FileChanged();
    return true;
}

bool CProblemModel::AppendProblems(const std::filesystem::path& otherPath) {
    TProblemMap others;
    if (!ReadOther(otherPath, others))
        return false;
    auto known = ByPosition(m_library);
    std::vector<std::int32_t> added;
    std::string differing;
    for (auto& [id, problem] : others) {
        const auto [first, last] = known.equal_range(problem->originalPosition->m_board);
        const bool bSame =
            std::any_of(first, last, [&](const auto& row) { return row.second->plies == problem->plies; });
        if (bSame)
            continue;
        if (first != last) {
            differing +=
                std::to_string(id) + " vs. " + StipulationText(*first->second) + " " + StipulationText(*problem) + "\n";
            continue;
        }
        problem->id = NextFreeId();
        known.emplace(problem->originalPosition->m_board, problem.get());
        added.push_back(problem->id);
        m_library.emplace(problem->id, std::move(problem));
    }
    std::string text = "Appended problems: " + std::to_string(added.size());
    if (!differing.empty())
        text += "\nMoreover some problems differ only by stipulation (#n): \n" + differing;
    const bool bKept = AskToKeep(text);
    if (!bKept)
        for (const std::int32_t id : added)
            m_library.erase(id);
    return bKept;
}

bool CProblemModel::RemoveProblems(const std::filesystem::path& otherPath) {
    TProblemMap others;
    if (!ReadOther(otherPath, others))
        return false;
    const auto unwanted = ByPosition(others);
    TProblemMap removed;
    bool bCurrent = false;
    for (auto at = m_library.begin(); at != m_library.end();) {
        const auto here = at++;
        if (!unwanted.contains(here->second->originalPosition->m_board))
            continue;
        if (here->first == m_currentId)
            bCurrent = true;
        else
            removed.insert(m_library.extract(here));
    }
    const bool bKept = AskToKeep("Removed problems: " + std::to_string(removed.size()) +
                                 (bCurrent ? "\nWarning: the current problem cannot be removed." : ""));
    if (!bKept)
        m_library.merge(removed);
    return bKept;
}

// --- Navigation

bool CProblemModel::MayLeaveProblem() {
    if (m_host.IsSolving()) {
        if (!m_host.AskYesNo("Search for mate pending. Do you want to stop this task?", kNavigationTitle))
            return false;
        m_host.StopSolving();
    }
    return AskToSaveChanges();
}

void CProblemModel::Show(std::int32_t id) {
    if (!m_history.empty())
        m_history.resize(m_nHistoryIndex + 1);
    m_history.push_back(id);
    ShowFromHistory(m_history.size() - 1);
}

void CProblemModel::ShowFromHistory(std::size_t index) {
    m_nHistoryIndex = index;
    m_currentId = m_history[index];
    m_edited = CopyOf(Current());
    m_host.ProblemShown();
}

bool CProblemModel::ShowProblem(std::int32_t id) {
    if (!m_library.contains(id) || !MayLeaveProblem())
        return false;
    Show(id);
    return true;
}

bool CProblemModel::NextProblem() {
    if (!MayLeaveProblem())
        return false;
    const auto next = m_library.upper_bound(m_currentId);
    if (next != m_library.end()) {
        Show(next->first);
        return true;
    }
    if (!m_host.AskYesNo("This is the last problem.\nDo you want to create a new one?", kNavigationTitle))
        return false;
    Show(AddNewProblem().id);
    return true;
}

bool CProblemModel::PreviousProblem() {
    const auto current = m_library.find(m_currentId);
    return current != m_library.begin() && ShowProblem(std::prev(current)->first);
}

bool CProblemModel::FirstProblem() { return ShowProblem(m_library.begin()->first); }

bool CProblemModel::LastProblem() { return ShowProblem(m_library.rbegin()->first); }

bool CProblemModel::PreviouslyViewed() {
    for (std::size_t index = m_nHistoryIndex; index > 0; --index)
        if (m_library.contains(m_history[index - 1])) { // it may have been removed meanwhile
            if (!MayLeaveProblem())
                return false;
            ShowFromHistory(index - 1);
            return true;
        }
    return false;
}

bool CProblemModel::ReturnFromPreviouslyViewed() {
    for (std::size_t index = m_nHistoryIndex + 1; index < m_history.size(); ++index)
        if (m_library.contains(m_history[index])) {
            if (!MayLeaveProblem())
                return false;
            ShowFromHistory(index);
            return true;
        }
    return false;
}

bool CProblemModel::NewProblem() {
    if (!MayLeaveProblem())
        return false;
    Show(AddNewProblem().id);
    return true;
}

/// The numbers of a library may end with the last there is: then the first free one.
std::int32_t CProblemModel::NextFreeId() const {
    if (m_library.empty())
        return 1;
    const std::int32_t last = m_library.rbegin()->first;
    if (last < std::numeric_limits<std::int32_t>::max())
        return last + 1;
    std::int32_t id = 1;
    for (const auto& [used, problem] : m_library)
        id += used == id ? 1 : 0;
    return id;
}

ChessProblem& CProblemModel::AddNewProblem() {
    auto problem = std::make_unique<ChessProblem>();
    problem->id = NextFreeId();
    TChessboard board = EmptyChessboard();
    board.m_board[kE1] = kWhiteKing;
    board.m_board[kE8] = kBlackKing;
    SetOriginalPosition(*problem, board);
    return *m_library.emplace(problem->id, std::move(problem)).first->second;
}

} // namespace quillon
