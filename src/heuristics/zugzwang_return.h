#pragma once
// SH_ZUGZWANG: there is a position to which White returns again and again, each time with Black having spent a move
// that he cannot get back. White's men leave it only to come home.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// White's men that do not stand where the stored position has them; of several stored positions the nearest counts.
/// -1 if none is stored.
[[nodiscard]] int CountMenAwayFromZugzwang(const TChessboard& b);

/// White's moves on the way out and home: with all men at home, all but pawn moves and captures; with one or two men
/// away, checks and those moves that take no further man away. -1 if the node is not on the way, or nothing is left;
/// with fewer than 14 plies left the heuristic has then ended, and its bit is cleared with the signature.
int GenerateReturningMoves(TChessboard& b, TMove* list);

/// White's first move has led straight back to a stored position: a short mate is not to be looked for in what is meant
/// to be repeated. For the short-mate search.
[[nodiscard]] bool RefusesQuickerSearch(const TChessboard& b);

} // namespace quillon
