#pragma once
// How the search uses the register of solved subpositions: which positions may be looked up or stored, and when.

#include "core/chessboard.h"
#include "core/mate_result.h"

namespace quillon {

/// The key of a register is the board alone, so a position may be looked up or stored only if the board tells the truth
/// about castling and no en passant capture is available. The root is exempt from every check.
[[nodiscard]] bool IsRegisterSafe(const TChessboard& b);

/// In the opposite-bishops mode the bishop that was taken off belongs to the key: a copy of the position with a black
/// bishop on the first empty square of its colour. The position itself in any other mode.
/// A mate found in the mode holds for every square of the bishop, so it may be stored under that key; a proof found
/// there may hold for that square alone, so only doubt is taken from it.
[[nodiscard]] TChessboard WithRemovedBishop(const TChessboard& b);

/// Is there a register, and is this analysis long enough to use it?
[[nodiscard]] bool IsRegisterInForce(const TChessboard& b);

/// What the register knows of a white node (plies left m_nMoves); MR_NONE if nothing usable. Doubt is no answer in the
/// pass without heuristics. An answer sets the context's doubt cause (0 for no mate, -1 for doubt) and, if it needed
/// the additional moves, m_bAdditionalMovesUsed; MR_QUICKER comes back as MR_MATE.
[[nodiscard]] TMateResult AskRegister(const TChessboard& b);

/// The same for a child of a black node with q plies left: asked only from q = 3 on (inside a trial with additional
/// moves always).
[[nodiscard]] TMateResult AskRegisterAboutReply(const TChessboard& child, int q);

/// May a verdict of this node be stored at all?
[[nodiscard]] bool MayStore(const TChessboard& b);

/// Stores MR_MATE or MR_NOMATE (as proved) or MR_DOUBTFUL if MayStore.
void StoreVerdict(const TChessboard& b, TMateResult verdict);

/// White has just been shown to mate by capturing the figure that Black promoted last: the same holds for every other
/// promotion on that square.
void StoreOtherPromotions(const TChessboard& b);

} // namespace quillon
