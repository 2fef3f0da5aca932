#pragma once
// Rules about lines of the board, and about squares of one colour.

#include "heuristics/verified_move.h"

namespace quillon {

/// SH_KEYLINE: a black figure that moves like a rook goes along the key file.
[[nodiscard]] ERuling DoubtsMoveAlongKeyLine(CVerifiedMove& move);

/// SH_KEYDIAGONAL: a black figure that moves like a bishop goes along the key diagonal.
[[nodiscard]] ERuling DoubtsMoveAlongKeyDiagonal(CVerifiedMove& move);

/// SH_DONTLEAVEMAINDIAGONAL: the named figure, on a main diagonal with its cornered king, has left it.
[[nodiscard]] ERuling DoubtsOpenedMainDiagonal(CVerifiedMove& move);

/// SH_SEASNAKE: the black queen has moved to where White does not attack her. Marks the move with kMoveMark.
[[nodiscard]] ERuling DoubtsSeaSnakeQueen(CVerifiedMove& move);

/// SH_SWEEPINGWHITEROOK: a bishop, a pawn in the root, moves on the squares that its king does not stand on.
[[nodiscard]] ERuling DoubtsPromotedBishopsColour(CVerifiedMove& move);

/// SH_ONECOLORPLAYPOSSIBLE: with the black bishop taken off, White's men on squares of one colour cannot check.
[[nodiscard]] ERuling DoubtsPlayOnOneColour(CVerifiedMove& move);

/// Squares of the diagonal between two squares of one diagonal, both included.
[[nodiscard]] bool IsOnKeyDiagonal(std::uint16_t diagonal, TSquare square);

/// Has one of the moves after which SH_SEASNAKE applies been made in this line? Without such moves it always applies.
[[nodiscard]] bool IsSeaSnakeInForce(const TChessboard& b);

/// White's men stand and move on squares of `colour` alone (as ColourOf). Can one of them check a king on `square`?
[[nodiscard]] bool CanCheckFromColour(const TChessboard& b, int colour, TSquare square);

} // namespace quillon
