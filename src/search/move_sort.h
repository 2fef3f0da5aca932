#pragma once
// Move ordering: White's key and Black's best defence should come first, so that most of the tree is never entered. The
// sorts try every move on a scratch copy in the slot that the real child will use, ask the register about the result,
// and score the move (move_score.h). They may find that the node is already answered.
//
// The terms of a score are rules of thumb and bear only on the order. What ends a node is a proof.

#include <cstdint>

#include "core/chessboard.h"
#include "core/mate_result.h"
#include "core/move.h"

namespace quillon {

struct TWhiteSort {
    int m_nMoves;              // moves that remain to be tried; illegal ones have fallen off the end
    bool m_bMateFound = false; // a mate of the node was established: it returns mate at once
    bool m_bRetry = false;     // the node is to be run again without SH_DONTLETFIGUREUNBLOCK
    bool m_bLeftOut = false;   // moves were cut that could be mates: the node cannot end as proved no mate
    int m_nBest = 0;           // at the head of the list, sorted as almost the best
};

struct TBlackSort {
    int m_nMoves;                     // moves that remain, all proved legal
    TMateResult m_nVerdict = MR_MATE; // negative: ends the node
    bool m_bAnyMated = false;         // legal moves known to be mated were taken out
    TMove m_deciding = {};            // the move that a negative verdict is about
};

/// bShort: few plies left, the expensive position knowledge is skipped.
[[nodiscard]] TWhiteSort SortWhiteMoves(TChessboard& p, int nMoves, TMove* list, bool bShort);

/// The cheap order: one pass of the capture and check terms.
[[nodiscard]] TWhiteSort SortWhiteMovesSimple(TChessboard& p, int nMoves, TMove* list);

/// For nodes of four plies or more. Verdicts: MR_NONE (Black escapes), MR_DOUBTFUL, MR_REPETITION.
///   bKeepMated  moves known to be mated stay in the list: a log is to tell of them.
[[nodiscard]] TBlackSort SortBlackMoves(TChessboard& p, int nMoves, TMove* list, bool bKeepMated = false);

} // namespace quillon
