#include "globalregister/precalc_file_name.h"

#include <algorithm>
#include <system_error>

#include "core/chess_exception.h"

namespace quillon {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSkipThis = "_SKIPTHIS";

bool IsLowerCase(char c) { return c >= 'a' && c <= 'z'; }

std::string_view ExtensionOf(EPrecalcKind kind) { return kPrecalcExtensions[static_cast<std::size_t>(kind)]; }

fs::path WithAppended(fs::path path, std::string_view end) { return path += end; }

fs::path FolderIn(const fs::path& root, const TPositionIndexing& indexing) {
    const fs::path folder =
        root / (std::to_string(indexing.MenWithKings()) + "pieces" + (indexing.bHasPawns ? "+pawns" : "-pawns"));
    std::error_code error;
    return fs::is_directory(folder, error) ? folder : root;
}

fs::path FolderOf(const TPositionIndexing& indexing, const TPrecalcFolders& folders, bool bSecondRoot) {
    if (indexing.custom)
        return folders.m_installation / kCustomPrecalcFolder;
    return FolderIn(bSecondRoot ? folders.m_secondRoot : folders.m_installation / kPrecalcFolder, indexing);
}

fs::path ChosenFile(const fs::path& chosen, const TPrecalcFile& file) {
    if (KindOfFile(chosen) != file.m_kind)
        return WithAppended(chosen, kSkipThis);
    if (!file.m_bDetails)
        return chosen;
    std::string name = chosen.string();
    name.insert(name.size() - ExtensionOf(file.m_kind).size(), kDetailsExtension);
    return name;
}

bool TakeEnd(std::string& name, std::string_view end) {
    if (!name.ends_with(end))
        return false;
    name.resize(name.size() - end.size());
    return true;
}

} // namespace

std::string PrecalcBaseName(std::string_view typeName) {
    std::string name;
    bool bSquares = false; // within brackets, or behind the first letter of a "+"
    for (std::size_t i = 0; i < typeName.size(); ++i) {
        const char c = typeName[i];
        const bool bFirstFrozen = i > 0 && typeName[i - 1] == '+';
        name += c;
        if (IsLowerCase(c) && (!bSquares || bFirstFrozen))
            name += '_';
        if (c == '(' || c == ')' || c == '+')
            bSquares = c != ')';
    }
    return name;
}

fs::path GetFileName(const TPositionIndexing& indexing, const TPrecalcFolders& folders, const TPrecalcFile& file,
                     const fs::path& explicitPath) {
    if (file.m_bSecondRoot && (folders.m_secondRoot.empty() || indexing.custom || !explicitPath.empty()))
        return {};
    if (!explicitPath.empty())
        return ChosenFile(explicitPath, file);
    std::string name = PrecalcBaseName(indexing.typeName);
    name += kTableExtension;
    if (file.m_bDetails)
        name += kDetailsExtension;
    name += ExtensionOf(file.m_kind);
    return FolderOf(indexing, folders, file.m_bSecondRoot) / name;
}

// ".packed.lz4" ends as ".lz4" does: the longer extensions come first.
EPrecalcKind KindOfFile(const fs::path& path) {
    const std::string name = path.filename().string();
    const auto kind = std::find_if(kPrecalcKinds.rbegin(), kPrecalcKinds.rend(),
                                   [&](EPrecalcKind candidate) { return name.ends_with(ExtensionOf(candidate)); });
    return *kind; // the plain kind's extension ends every name
}

std::optional<std::string> TypeOfFile(const fs::path& path) {
    std::string name = path.filename().string();
    TakeEnd(name, ExtensionOf(KindOfFile(path)));
    TakeEnd(name, kDetailsExtension);
    if (!TakeEnd(name, kTableExtension))
        return std::nullopt;
    std::string typeName = name;
    std::erase(typeName, '_');
    if (PrecalcBaseName(typeName) != name)
        return std::nullopt;
    try {
        return TPositionIndexing(typeName).typeName;
    } catch (const ChessException&) {
        return std::nullopt;
    }
}

} // namespace quillon
