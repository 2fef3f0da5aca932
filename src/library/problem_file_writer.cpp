#include "library/problem_file_writer.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "core/chess_exception.h"
#include "library/problem_writer.h"
#include "platform/save_file.h"

namespace quillon {

namespace {

constexpr const char* kReplaceTitle = "New file";

/// Errors  as WriteProblemFile.
void Save(const std::vector<TFileToSave>& files) {
    const TSaveResult result = SaveFiles(files, /*bBackup=*/true);
    if (!result.m_error)
        return;
    const bool bOpened = result.m_step != ESaveStep::Open;
    const char* const what = bOpened ? "Error saving to file: " : "Error opening file: ";
    std::string message = what + files[result.m_nFile].m_path.string() + " (" + result.m_error.message() + ")";
    std::vector<std::filesystem::path> savedFiles;
    for (const std::size_t n : result.m_saved) {
        savedFiles.push_back(files[n].m_path);
        message += "\n" + savedFiles.back().string() + " is saved.";
    }
    throw CSaveError(message, bOpened, std::move(savedFiles));
}

/// The Ukrainian text has no line end: the line of the white figures is part of it, and readers refuse the file.
const char* DescriptionLine(ELanguage language) {
    switch (language) {
    case ELanguage::Polish:
        return "\tDesc: Kliknij tutaj, aby zmienić opis zadania\n";
    case ELanguage::Ukrainian:
        return "\tDesc: Натисніть тут, щоб змінити опис задачі";
    default:
        return "\tDesc: Click here to change problem description\n";
    }
}

std::string DefaultText(ELanguage language) {
    return std::string("UTF-8\n1 #2\n{\n") + DescriptionLine(language) + "\tWhite: Ke1\n\tBlack: Ke8\n}\n";
}

} // namespace

bool ProblemFileExists(const std::filesystem::path& path, const TProblemFileOptions& options) {
    const std::vector<std::filesystem::path> files = FilesOfLibrary(path, options);
    return std::any_of(files.begin(), files.end(), [](const std::filesystem::path& file) {
        std::error_code ignored;
        return std::filesystem::exists(file, ignored);
    });
}

void SaveTextFile(const std::filesystem::path& path, std::string_view text) { Save({{path, text}}); }

void WriteProblemFile(const std::filesystem::path& path, const TProblemMap& library,
                      const TProblemFileOptions& options) {
    const std::string whole = FormatProblems(library, true);
    if (!options.m_bCommentCompatibility)
        return SaveTextFile(path, whole);
    const std::string withoutComments = FormatProblems(library, false);
    Save({{PathWithComments(path), whole}, {PathWithoutComments(path), withoutComments}});
}

void WriteDefaultProblemFile(const std::filesystem::path& path, const TProblemFileOptions& options) {
    const std::string text = DefaultText(options.m_language);
    std::vector<TFileToSave> files;
    for (const std::filesystem::path& file : FilesOfLibrary(path, options))
        files.push_back({file, text});
    Save(files);
}

bool CreateNewProblemFile(const std::filesystem::path& path, INotifier& notifier, EExistingFile existing,
                          const TProblemFileOptions& options) {
    if (ProblemFileExists(path, options) &&
        (existing == EExistingFile::Keep ||
         !notifier.AskYesNo("File " + path.string() + " already exists.\nDo you want to replace it with a new file?",
                            kReplaceTitle)))
        return false;
    WriteDefaultProblemFile(path, options);
    return true;
}

} // namespace quillon
