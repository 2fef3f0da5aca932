#pragma once
// SH_ONECOLORPLAYPOSSIBLE: play with bishops of opposite colours. Black's bishop is taken off the board and may be
// anywhere on the squares of its colour; White keeps off these squares (the maker sees to it), and Black may pass
// instead of moving the bishop.
//
// Why a mate found so is a proof. Let every white man stand on squares of the other colour when the bishop is taken
// off, have White besides the king one bishop and pawns, and let no pawn be able to promote. Then, wherever the bishop
// is:
//   - White's men never come to its squares, so it captures nothing and checks nobody;
//   - White's bishop moves and checks along squares that it cannot stand on; king, pawns and their checks have no
//   lines.
//     So it blocks no move, no check, and takes no checking man;
//   - Black's other moves are all there, and more: what the bishop stands in the way of is open to Black too;
//   - a move of the bishop changes nothing of this, so a pass stands for all of them. Only stalemate wants care: a
//     bishop walled in by its own men cannot move, so Black cannot pass; and it may stop the very moves that Black has.
// No mate found says nothing, since White kept off half the board: such a node ends in doubt.

#include "core/chessboard.h"

namespace quillon {

/// A white node's position: if all of the above holds, takes the bishop off and sets the bishop mode and the signature.
void DetectOppositeBishops(TChessboard& b);

/// Can none of White's pawns promote before Black runs out of men to capture? In the mode a pawn's step would lead to a
/// square of the bishop's colour, so each of its moves is a capture.
[[nodiscard]] bool IsPromotionOutOfReach(const TChessboard& b);

/// In the mode, Black to move and not in check: has Black a move wherever the bishop is? So it is if the bishop can
/// move from every square that it may stand on, or if there is a legal move that it cannot stop from where it is walled
/// in.
[[nodiscard]] bool CanBlackMoveWhereverBishopIs(const TChessboard& b);

} // namespace quillon
