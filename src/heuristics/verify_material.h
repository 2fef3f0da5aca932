#pragma once
// Rules about white men that Black has taken, and about material that cannot mate.

#include "heuristics/verified_move.h"

namespace quillon {

/// SH_SAVEQUEENROOK: Black has taken a queen or rook (or, with m_bBishopIsMajor, a bishop).
///   Strict (m_bSaveRookQueenStrict): the last one, or the queen. With the king in a net the check runs on for one
///   white move: the move is marked, and kWhiteMajorFigureLost stands in the position it leads to. The bit leaves the
///   mask of the parent once White has no such figure and can get none.
[[nodiscard]] ERuling DoubtsLostHeavyFigure(CVerifiedMove& move);

/// SH_DONTLOSEANYFIGURES: Black has taken a man that the mode counts.
[[nodiscard]] ERuling DoubtsLostFigure(CVerifiedMove& move);

/// SH_KEYWHITEFIGURE: Black has captured on the key figure's square.
[[nodiscard]] ERuling DoubtsLostKeyFigure(CVerifiedMove& move);

/// SH_REDUCTIONTOGLOBREGPOS, SH_ZUGZWANGTRIANGLES: precalculated data tell that White, with fewer men, has no mate.
[[nodiscard]] ERuling DoubtsReducedMaterial(CVerifiedMove& move);

/// White has nothing that SH_SAVEQUEENROOK could save, and no pawn that could become such a figure in time.
[[nodiscard]] bool HasNothingToSave(const TChessboard& b);

/// Does SH_DONTLOSEANYFIGURES count the man that was captured?
[[nodiscard]] bool IsCountedLoss(CVerifiedMove& move);

} // namespace quillon
