#pragma once
// What a problem of a regression needs to be there: precalculated data, the online tablebase.

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "core/position_type.h"
#include "library/chess_problem.h"

namespace quillon {

/// Can precalculated data of the type be had? Whoever answers may load them, and has released them when it returns. Not
/// asked for type 0.
using TIsTypeAvailable = std::function<bool(TPositionType)>;

/// The type of a material as files name it: FEN letters, "RRk" for two white rooks. Kings count for nothing. 0 if it is
/// no type: no figure besides the kings, more than five, or another letter.
[[nodiscard]] TPositionType TypeOfMaterial(std::string_view material);

/// Are the data of all materials to be had?
[[nodiscard]] bool AreMaterialsAvailable(const std::set<std::string>& materials,
                                         const TIsTypeAvailable& isTypeAvailable);

/// Why the problem is not run, as a line of the log; empty for a problem that can be.
///   nLichessLevels  the setting; 0 or less: the online tablebase is off.
[[nodiscard]] std::string_view UnmetRequirement(const ChessProblem& problem, const TIsTypeAvailable& isTypeAvailable,
                                                int nLichessLevels);

} // namespace quillon
