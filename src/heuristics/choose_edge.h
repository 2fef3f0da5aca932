#pragma once
// What holds the black king: may he move at all, does he keep to the edge, to the line beside it, among few squares,
// near his corner? One of these at most is chosen, the tightest that the root bears out.

#include "heuristics/choice_rules.h"

namespace quillon {

/// Does the walk keep to the edge of the board?
///   bInclCornerSquares  b2, b7, g2 and g7 count as edge.
[[nodiscard]] bool KeepsToEdge(const TKingWalk& walk, bool bInclCornerSquares);

/// SH_KEEPKINGONTHEEDGE in its strict form; SH_ASSERTBLACKKINGSURROUNDED gives way.
void SetStrictEdge(TChoice& choice);

void ChooseEdge(TChoice& choice);

} // namespace quillon
