#pragma once
// The moves that FindForcedMate lets White choose from: checks, threats of mate, and built-in exceptions. What they
// leave out could mate all the same, so a node that uses them may end in mate or in doubt, never in no mate.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// With fewer plies left a quiet move has no time to threaten: a move, a reply, and the mate.
inline constexpr int kFewestThreatPlies = 4;

/// The forcing moves of White, to move in `b`, under the depth code of the context; each once, pseudo-legal. They come
/// stage by stage:
///   in check     the replies to it, and nothing else: none is left out
///   codes to 2   all checks
///   any          advances of pawns while the black king has fewer than three free squares
///   from code 3  checks, then quiet moves that threaten mate as deep as the code says (kFewestThreatPlies left)
///   any          moves against a lone black queen; captures of a queen by a side with two; promotions where White has
///                little else; from code 5 on, if asked for, captures next to the black king
///   any          the next white move of a line that the sort indications tell move by move
/// A mate is looked for in plain chess; where the other heuristics stay in force (KeepsOtherHeuristics), under these.
///   list     room for kMaxMoves; the slots of the stack up to m_nMoves are used. Returns the number of moves.
int GenerateForcingMoves(TChessboard& b, TMove* list);

} // namespace quillon
