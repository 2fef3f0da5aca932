#include "heuristics/search_hooks.h"

#include "core/queries.h"

namespace quillon {

// No heuristic forbids the white king a square. A maker that refused his move would take it out of the list without a
// doubt, and the node could end as refuted where the king's move mates: such a rule belongs into the node instead.
bool IsForbiddenToWhiteKing(const TChessboard&, TSquare) { return false; }

} // namespace quillon
