#pragma once
// Which table of a type the folders hold, in whatever form, without loading it.

#include <cstdint>
#include <filesystem>

#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_format.h"

namespace quillon {

/// All flags that a file may have. The rest of the byte that holds them is of the first indices in bit data.
inline constexpr std::uint16_t kFileFlags = kFlagPawnRanks48 | kFlagCombinations | kFlagWideElements;

enum class EExistingForm : std::uint8_t {
    None,
    Whole,   // by its size, its flags and, of bit data, its lengths: a load takes it
    Archive, // packed in buckets: no load takes it
    Wrong,   // a file of this name in the first root that is no table of this type
};

struct TExistingTable {
    EExistingForm m_form = EExistingForm::None;
    std::filesystem::path m_file; // of that form
};

/// The finished table of a type: one that a load takes before an archive, and both before what is none. Marks of a
/// table in the making are not looked at.
///   indexing  with its combinations off.
///   Errors    std::bad_alloc.
[[nodiscard]] TExistingTable FindExistingTable(const TPositionIndexing& indexing, const TPrecalcFolders& folders);

/// The same, of the second root alone: Whole, or None.
[[nodiscard]] TExistingTable FindInSecondRoot(const TPositionIndexing& indexing, const TPrecalcFolders& folders);

/// The table of a type in the second root, if that is a folder of its own that may have one.
///   Result  the name of its plain file, which need not exist; empty: there is no such folder.
[[nodiscard]] std::filesystem::path NameInSecondRoot(const TPositionIndexing& indexing, const TPrecalcFolders& folders);

/// Is there a table that a load takes and that was not left in the making?
[[nodiscard]] bool HasFinishedTable(const TPositionIndexing& indexing, const TPrecalcFolders& folders);

} // namespace quillon
