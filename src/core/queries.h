#pragma once
// What the chess core asks of the folders above it. They define these functions; the core only declares them.

#include "core/chessboard.h"
#include "core/position_type.h"

namespace quillon {

/// search: is there a mate in one for White, to move in `b`? `b.m_nMoves` is not looked at.
[[nodiscard]] bool HasMateInOne(const TChessboard& b);

/// search: does White, to move in `b`, force mate in at most two moves? Works on a copy; the slots of the context's
/// stack below ply 4 are used, so `b` has to stand in slot 4 or higher.
[[nodiscard]] bool HasMateInTwo(const TChessboard& b);

/// heuristics: does the forbidden-squares heuristic keep the white king, just put on its target, off that square?
[[nodiscard]] bool IsForbiddenToWhiteKing(const TChessboard& b, TSquare target);

/// heuristics: does the further bishop mode (3) refuse this white move?
[[nodiscard]] bool IsRefusedByBishopMode(const TChessboard& b, const TMove& move);

/// heuristics: a black figure other than a pawn was captured while a bishop mode is in force.
void CorrectBishopMode(TChessboard& b);

/// heuristics: a black move marked to defer the edge check was made: sets the relaxation bits.
void ApplyDeferredEdgeCheck(TChessboard& b);

/// globalregister: is a data set for this material at hand? Type 0 has none.
[[nodiscard]] bool IsPrecalcDataAvailable(TPositionType type);

/// globalregister: is a data set at hand of which a part of these men, any number of them, never moves?
[[nodiscard]] bool IsCustomPrecalcDataAvailable(const TChessboard& b);

} // namespace quillon
