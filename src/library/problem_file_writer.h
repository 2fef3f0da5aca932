#pragma once
// Problem libraries on their way to the disk. A library is written whole; whatever happens meanwhile, its file is then
// either the old or the new one (platform/save_file.h), and the old one stays beside it as "NAME.BAK".

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/notifier.h"
#include "library/problem_file.h"

namespace quillon {

/// A file that could not be written. What there was before is still there, but for the files that SavedFiles names.
class CSaveError : public CFileError {
  public:
    CSaveError(const std::string& message, bool bOpened, std::vector<std::filesystem::path> savedFiles = {})
        : CFileError(message), m_bOpened(bOpened), m_savedFiles(std::move(savedFiles)) {}

    /// False: it may not be written at that place; true: writing began and failed, as on a full disk.
    [[nodiscard]] bool IsOpened() const { return m_bOpened; }

    /// Those of the library that are new all the same.
    [[nodiscard]] const std::vector<std::filesystem::path>& SavedFiles() const { return m_savedFiles; }

  private:
    bool m_bOpened;
    std::vector<std::filesystem::path> m_savedFiles;
};

/// Writes the library in ascending order of id. With comments kept apart two files are written. Both are on the disk
/// before the first takes its name, so that a full disk changes neither. The one with comments, which alone has all
/// that the library holds, comes first: a kill between the two leaves it new, and the other as it was.
///   Errors  CSaveError: "Error opening file: ", path and reason, if the file cannot be written to; "Error saving
///           to file: ", path and reason, if it could not be written whole or the old one not be kept. Where the other
///           file is new all the same the message says so.
void WriteProblemFile(const std::filesystem::path& path, const TProblemMap& library,
                      const TProblemFileOptions& options = {});

/// Is there a file of the library, or one of its two?
[[nodiscard]] bool ProblemFileExists(const std::filesystem::path& path, const TProblemFileOptions& options);

/// What to do about a file that exists.
enum class EExistingFile { Keep, Ask };

/// Makes a library of one problem: the two kings, and a description that asks to be changed.
///   Returns  false, and nothing is written, if the file exists and is to be kept.
///   Errors   as WriteProblemFile.
bool CreateNewProblemFile(const std::filesystem::path& path, INotifier& notifier, EExistingFile existing,
                          const TProblemFileOptions& options = {});

/// The same without looking whether the file exists.
void WriteDefaultProblemFile(const std::filesystem::path& path, const TProblemFileOptions& options);

/// Writes a text to a file.
///   Errors  as WriteProblemFile.
void SaveTextFile(const std::filesystem::path& path, std::string_view text);

} // namespace quillon
