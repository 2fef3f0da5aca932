#pragma once
// A list of white moves that a heuristic generated instead of all moves.

#include <cstdint>

#include "core/chessboard.h"
#include "core/generation.h"
#include "core/heuristic_parameters.h"
#include "core/move.h"

namespace quillon {

struct THeuristicMoves {
    int m_nCount = -1;        // -1: take all moves
    bool m_bDoubtful = false; // the node cannot end as proved no mate: moves were left out, or the heuristic says so
};

/// Heuristics that select their own generator of white moves.
inline constexpr std::uint32_t kGeneratingHeuristics =
    SH_ZUGZWANG | SH_SEASNAKE | SH_KEYWHITEFIGURE | SH_ZUGZWANGTRIANGLES | SH_ONECOLORPLAYPOSSIBLE;
static_assert(kGeneratingHeuristics == 0x88400018);

/// The list of the first heuristic in force that has one for this node. In check all replies are wanted, and there is
/// none. May clear bits whose heuristic has ended in this line, with the signature.
///   list  room for kMaxMoves
[[nodiscard]] THeuristicMoves GenerateByHeuristics(TChessboard& b, TMove* list);

/// Takes these bits off a position for the subtree below it.
void ClearHeuristics(TChessboard& b, std::uint32_t bits);

/// Writes those of White's moves that `wanted(move)` keeps; returns their number.
template <class TWanted> int CollectWhiteMoves(const TChessboard& b, TMove* list, TWanted wanted) {
    const int all = GenerateWhiteMoves(b, list);
    int count = 0;
    for (int i = 0; i < all; ++i)
        if (wanted(list[i]))
            list[count++] = list[i];
    return count;
}

} // namespace quillon
