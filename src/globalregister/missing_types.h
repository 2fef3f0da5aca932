#pragma once
// Which types have no finished precalculated data.

#include <string>
#include <vector>

#include "globalregister/global_registers.h"

namespace quillon {

/// Men of a type, with the kings: tables have from three to seven.
inline constexpr int kFewestTableMen = 3;
inline constexpr int kMostTableMen = 2 + kMaxTypeMen;

/// The types of so many men, with the kings, that have no finished table to load, an unfinished one or none, as the
/// generator of tables would miss them; in the order of their letters. Material that cannot mate needs none and is not
/// listed.
///   nPieces  kFewestTableMen to kMostTableMen.
[[nodiscard]] std::vector<std::string> MissingTypes(int nPieces, const CGlobalRegisters& registers);

/// "List of missing precalculated data for positions with 4 pieces :", and the types, one a line.
[[nodiscard]] std::string MissingTypesText(int nPieces, const std::vector<std::string>& types);

/// Shows the list, and as long as the user wants that those of one man more.
void ListMissing(int nPieces, const CGlobalRegisters& registers, INotifier& notifier);

} // namespace quillon
