#pragma once
// The materials that a table is made from.
//
// A table has White to move. Its element asks, after White's move, all replies of Black; so the tables of the materials
// that one capture or promotion of White leads to are needed, those that one of Black leads to, and those that Black's
// reply to White's makes of the former. A white pawn that takes in passing does so between two moves of Black; where
// that can follow upon itself, so do the materials.

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

/// The letters in the order that names a type: the same material has one name.
[[nodiscard]] std::string InTypeOrder(std::string_view letters);

/// The types whose data an ordinary type needs, each once, with fewer men before more, and of as many those with fewer
/// pawns before more. Material that cannot mate needs no data and is not among them.
[[nodiscard]] std::vector<std::string> NeededTypes(std::string_view typeName);

/// These types, and all that they need in turn, in an order in which each can be made from those before it.
[[nodiscard]] std::vector<std::string> TypesInOrderOfMaking(const std::vector<std::string>& typeNames);

} // namespace quillon
