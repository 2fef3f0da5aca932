#pragma once
// Move ordering: where the recursion asks for the order of a node's moves. No sort is in force yet; lists keep the
// order of generation, behind the hint of the node's ply.

#include <cstdint>

#include "core/chessboard.h"
#include "core/mate_result.h"
#include "core/move.h"

namespace quillon {

struct TWhiteSort {
    int m_nMoves;              // moves that remain to be tried
    bool m_bMateFound = false; // a mate of the node was established: it returns mate at once
    bool m_bRetry = false;     // the node is to be run again without SH_DONTLETFIGUREUNBLOCK
};

struct TBlackSort {
    int m_nMoves;                     // moves that remain
    TMateResult m_nVerdict = MR_MATE; // negative: ends the node
    bool m_bLegal = false;            // every move of the list was proved legal
};

/// bShort: few plies left, the expensive position knowledge is skipped.
[[nodiscard]] inline TWhiteSort SortWhiteMoves(TChessboard&, int nMoves, TMove*, bool /*bShort*/) { return {nMoves}; }
[[nodiscard]] inline TWhiteSort SortWhiteMovesSimple(TChessboard&, int nMoves, TMove*) { return {nMoves}; }
[[nodiscard]] inline TBlackSort SortBlackMoves(TChessboard&, int nMoves, TMove*) { return {nMoves}; }

// Hints: the move that answered the last node of the same ply is tried first in the next one. It changes nothing but
// the order, and needs no board knowledge: a mate threat stays a threat in most of the sibling lines.

/// The hint of the node's ply if it is among the moves that its figure could make here.
[[nodiscard]] bool FindHint(const TChessboard& b, TMove& hint);

/// Brings the ply's hint, if it is in the list, to the front; the others keep their order.
void PutHintFirst(const TChessboard& b, int nMoves, TMove* list);

/// This move answered the node: mate for White, a refutation for Black.
void KeepHint(const TChessboard& b, const TMove& move);

} // namespace quillon
