#include "library/problem_file_writer.h"

#include <algorithm>
#include <string>
#include <vector>

#include "core/chess_exception.h"
#include "library/problem_writer.h"
#include "platform/save_file.h"

namespace quillon {

namespace {

constexpr const char* kReplaceTitle = "New file";

/// One of the files that a library consists of.
struct TLibraryFile {
    std::filesystem::path m_path;
    bool m_bWithComments;
};

std::vector<TLibraryFile> FilesOf(const std::filesystem::path& path, const TProblemFileOptions& options) {
    if (!options.m_bCommentCompatibility)
        return {{path, true}};
    return {{PathWithComments(path), true}, {PathWithoutComments(path), false}};
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
    const std::vector<TLibraryFile> files = FilesOf(path, options);
    return std::any_of(files.begin(), files.end(), [](const TLibraryFile& file) {
        std::error_code ignored;
        return std::filesystem::exists(file.m_path, ignored);
    });
}

void SaveTextFile(const std::filesystem::path& path, std::string_view text) {
    const TSaveResult result = SaveFile(path, text, true);
    if (!result.m_error)
        return;
    const bool bOpened = result.m_step != ESaveStep::Open;
    const char* const what = bOpened ? "Error saving to file: " : "Error opening file: ";
    throw CSaveError(what + path.string() + " (" + result.m_error.message() + ")", bOpened);
}

void WriteProblemFile(const std::filesystem::path& path, const TProblemMap& library,
                      const TProblemFileOptions& options) {
    for (const TLibraryFile& file : FilesOf(path, options))
        SaveTextFile(file.m_path, FormatProblems(library, file.m_bWithComments));
}

void WriteDefaultProblemFile(const std::filesystem::path& path, const TProblemFileOptions& options) {
    for (const TLibraryFile& file : FilesOf(path, options))
        SaveTextFile(file.m_path, DefaultText(options.m_language));
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
