#pragma once
// Certain escapes: after a black move White's material is so thin that Black is safe for good, and the line ends there
// without a search. Only positions in which White has no queen and no rook are judged.
//
// These are rules of thumb of the endgame, not consequences of the rules of chess: a composer's freak position may
// break one. They apply only behind a capture or an under-promotion, or while a mark of this file stands.

#include "core/chessboard.h"

namespace quillon {

/// Should the rules be asked after this black move?
///   after       the position after the move, before its last move was stored
///   bCapture    the black move captured
[[nodiscard]] inline bool MayHaveEscaped(const TChessboard& after, bool bCapture) {
    const TFigure promotion = PromotionKind(after.m_lastMove); // White's previous move: not stored over yet
    return bCapture || promotion == kBishop || promotion == kKnight ||
           (after.m_wBlackState & (kMinorMaterial | kRookPawnWrongBishop)) != 0;
}

/// Has Black escaped for certain? `after` is complete but for m_lastMove: White is to move, m_nMoves (odd) plies are
/// left; below 3 the rules do not apply. Sets the marks kMinorMaterial and kRookPawnWrongBishop.
[[nodiscard]] bool HasEscapedForCertain(TChessboard& after);

/// The colour of square that White's bishops cannot reach, when all of them stand on one colour; -1 otherwise or with
/// no bishop. 0 dark, 1 light.
[[nodiscard]] int ColourOutOfBishopsReach(const TChessboard& b);

/// White has bishops of one colour only, no knight, rook or queen, and a pawn on a rook's file whose corner the bishops
/// do not control. `bAllPawns`: all pawns have to stand on that file.
[[nodiscard]] bool IsRookPawnWithWrongBishop(const TChessboard& b, bool bAllPawns);

/// King and pawn against king, Black having just moved: a sufficient test for a draw.
[[nodiscard]] bool IsDrawnPawnEnding(const TChessboard& b, TSquare pawn);

/// King, bishop and rook's pawn against king: a sufficient test for a draw.
[[nodiscard]] bool IsDrawnWrongBishopEnding(const TChessboard& b, TSquare pawn, TSquare bishop);

/// With t white moves left, can this pawn still matter: promote in time or help to mate the king near it?
[[nodiscard]] bool DoesPawnMatter(const TChessboard& b, TSquare pawn, int nMovesLeft);

} // namespace quillon
