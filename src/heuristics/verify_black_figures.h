#pragma once
// Rules about what Black's figures, the king apart, may not do.

#include "heuristics/verified_move.h"

namespace quillon {

/// SH_DONTLETFIGUREUNBLOCK: a watched figure has got more than one field from its initial square.
[[nodiscard]] ERuling DoubtsUnblockedFigure(CVerifiedMove& move);

/// SH_DONTLETPROMOTEDQUEENMOVE: a queen moves after Black has promoted.
[[nodiscard]] ERuling DoubtsPromotedQueenMove(CVerifiedMove& move);

/// SH_DONTLETPROMOTEDFIGUREMOVE: any figure that was a pawn in the root moves.
[[nodiscard]] ERuling DoubtsPromotedFigureMove(CVerifiedMove& move);

/// SH_DONTLETBLACKQUEENCHECKTWICE: the queen checks with two moves running.
[[nodiscard]] ERuling DoubtsSecondQueenCheck(CVerifiedMove& move);

/// The initial square of the watched figure that made the move; kNoSquare if none did.
[[nodiscard]] TSquare InitialSquareOfMoved(CVerifiedMove& move);

/// The king's test under a second check with the kings close together: can White's king step out of it and stay within
/// two squares of the black king? Then the check has changed nothing.
[[nodiscard]] bool CanKingStayClose(const TChessboard& b);

} // namespace quillon
