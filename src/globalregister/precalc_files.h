#pragma once
// The files of precalculated data that the folders hold.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "globalregister/precalc_file_name.h"

namespace quillon {

struct TPrecalcFileFound {
    std::filesystem::path m_path;
    std::string m_typeName;
    TPrecalcFile m_file;
    std::uint64_t m_nSize = 0; // bytes
};

/// Does its name say that a file holds the lengths beside bit data?
[[nodiscard]] bool HasDetails(const std::filesystem::path& path);

/// Every file that a load of its type would look at, by type and then by kind. Folders that are not there, and those
/// that cannot be read, have none.
///   Errors  std::bad_alloc.
[[nodiscard]] std::vector<TPrecalcFileFound> FindPrecalcFiles(const TPrecalcFolders& folders);

/// True if the table that a file holds, in whatever form, was left in the making, or while it was saved: the mark of
/// that stands beside its plain file. False for an empty path.
[[nodiscard]] bool IsLeftInTheMaking(const std::filesystem::path& path);

/// The folders that a user means by a folder: one that has `Precalc` or `CustomPrecalc` in it, or one with the files
/// themselves.
///   secondRoot  beside the former; empty for none.
[[nodiscard]] TPrecalcFolders FoldersOf(const std::filesystem::path& folder, const std::filesystem::path& secondRoot);

} // namespace quillon
