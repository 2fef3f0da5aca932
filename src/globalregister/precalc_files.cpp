#include "globalregister/precalc_files.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <tuple>

namespace quillon {

namespace {

namespace fs = std::filesystem;

/// The folder and its sub-folders, one level deep.
void AddFilesIn(const fs::path& folder, bool bSubFolders, std::vector<fs::path>& files) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown))
            files.push_back(entry->path());
        else if (bSubFolders && entry->is_directory(unknown))
            AddFilesIn(entry->path(), false, files);
    }
}

/// A file that stands where it is looked for: with a sub-folder for its men, those beside that are not.
std::optional<TPrecalcFileFound> Found(const fs::path& path, const TPrecalcFolders& folders) {
    const std::optional<std::string> typeName = TypeOfFile(path);
    if (!typeName)
        return std::nullopt;
    const TPositionIndexing indexing(*typeName);
    TPrecalcFileFound found{path, *typeName, {KindOfFile(path), HasDetails(path), false}, 0};
    for (const bool bSecondRoot : {false, true}) {
        found.m_file.m_bSecondRoot = bSecondRoot;
        if (GetFileName(indexing, folders, found.m_file) != path)
            continue;
        std::error_code error;
        found.m_nSize = fs::file_size(path, error);
        return error ? std::nullopt : std::optional(found);
    }
    return std::nullopt;
}

auto Order(const TPrecalcFileFound& found) {
    return std::make_tuple(found.m_typeName.size(), found.m_typeName, found.m_file.m_bDetails, found.m_file.m_kind,
                           found.m_path);
}

/// The plain file of the table, not that of its lengths.
std::string PlainTableName(const fs::path& path) {
    std::string name = path.string();
    name.resize(name.size() - kPrecalcExtensions[static_cast<std::size_t>(KindOfFile(path))].size());
    if (name.ends_with(kDetailsExtension))
        name.resize(name.size() - kDetailsExtension.size());
    return name;
}

bool IsFolder(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

} // namespace

bool HasDetails(const fs::path& path) {
    return path.filename().string().find(std::string(kTableExtension) + std::string(kDetailsExtension)) !=
           std::string::npos;
}

std::vector<TPrecalcFileFound> FindPrecalcFiles(const TPrecalcFolders& folders) {
    std::vector<fs::path> files;
    AddFilesIn(folders.m_installation / kPrecalcFolder, true, files);
    AddFilesIn(folders.m_installation / kCustomPrecalcFolder, false, files);
    if (!folders.m_secondRoot.empty())
        AddFilesIn(folders.m_secondRoot, true, files);
    std::vector<TPrecalcFileFound> all;
    for (const fs::path& path : files)
        if (std::optional<TPrecalcFileFound> found = Found(path, folders))
            all.push_back(std::move(*found));
    std::ranges::sort(all, [](const auto& a, const auto& b) { return Order(a) < Order(b); });
    return all;
}

bool IsLeftInTheMaking(const fs::path& path) {
    if (path.empty())
        return false;
    const std::string name = PlainTableName(path);
    for (const std::string& plain : {name, name + std::string(kDetailsExtension)})
        for (const std::string_view mark : {kIterationExtension, kSavePendingExtension}) {
            std::error_code error;
            if (fs::exists(plain + std::string(mark), error))
                return true;
        }
    return false;
}

TPrecalcFolders FoldersOf(const fs::path& folder, const fs::path& secondRoot) {
    if (IsFolder(folder / kPrecalcFolder) || IsFolder(folder / kCustomPrecalcFolder))
        return {folder, secondRoot};
    return {folder, folder};
}

} // namespace quillon
