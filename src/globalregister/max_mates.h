#pragma once
// The longest mates of a table, and those of the material that a type can turn into.
//
// They are kept beside the data, in `MaxMateIndexesCache/<name of the type>.idx`, the name as in those of the data
// files (precalc_file_name.h: "Qr_"), so that "Qr" and "QR" do not share a file. Numbers are little-endian:
//   offset  bytes   content
//   0       8       moves of the longest mate
//   8       8 each  indices of positions that have it, ascending: all, or as many as were wanted, 2048 at least
//
// Threads: any; files are replaced whole.

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "globalregister/global_registers.h"

namespace quillon {

inline constexpr std::string_view kMaxMatesFolder = "MaxMateIndexesCache";
inline constexpr std::string_view kMaxMatesExtension = ".idx";

/// Moves of the longest mate in the data, 0 for none.
///   indexes    receives up to nLimit of the positions that have it.
///   bUseCache  takes both from the file, if it has them and is not older than the table; what had to be found is
///              written there, unless the table is in the making.
///   Of a table of one byte an element values from 128 up do not count: they are marks of a table in the making.
///   Errors     ChessException: damaged data.
[[nodiscard]] std::uint32_t GetMaxMoves(const TGlobalRegister& data, const std::filesystem::path& installation,
                                        std::set<std::uint64_t>& indexes, std::size_t nLimit, bool bUseCache);

/// The types that a type turns into, each once: a white pawn promoted, a black pawn promoted, one man less.
[[nodiscard]] std::vector<std::string> SubTypesOf(std::string_view typeName);

struct TSubMaterialMaximum {
    std::uint32_t m_nMoves = 0;              // of the longest mate in any of the types
    std::vector<std::string> m_missingTypes; // without data
};

/// Loads the data of each of SubTypesOf, one after the other.
///   Errors  ChessException: damaged data.
[[nodiscard]] TSubMaterialMaximum MaxMovesOfSubTypes(std::string_view typeName, CGlobalRegisters& registers);

} // namespace quillon
