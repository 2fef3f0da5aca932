#pragma once
// Rules that count the black king's room: he has so many free squares that no mate is in sight.

#include "heuristics/verified_move.h"

namespace quillon {

/// SH_3MOVESTOMATE: three white moves from the end, and the king has room that one heavy figure at most cannot take.
[[nodiscard]] ERuling DoubtsMateInThree(CVerifiedMove& move);

/// SH_ASSERTBLACKKINGSURROUNDED: more free squares than the limit.
[[nodiscard]] ERuling DoubtsUnsurroundedKing(CVerifiedMove& move);

/// The last rule, which belongs to no bit: a rook and pawns that are not going to promote, against a king with room.
[[nodiscard]] ERuling DoubtsLoneRook(CVerifiedMove& move);

/// The free squares up to which the king counts as surrounded.
[[nodiscard]] int SurroundedLimit(CVerifiedMove& move);

/// A quiet line: neither Black's last move nor White's before it captured.
[[nodiscard]] bool IsQuietLine(CVerifiedMove& move);

} // namespace quillon
