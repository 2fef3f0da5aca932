#pragma once
// SH_DONTLETFIGUREUNBLOCK applied on the way: the black king has just reached a square where none of Black's figures
// can come to his help, so a trial assumes that none ever will.

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"

namespace quillon {

/// Has the black king's move just left all of Black's figures blocked: there is one at least, and none has more than
/// one field to go to?
///   child  White to move, in a pass with heuristics; the bit is not in force and the pass allows it to be applied
///          dynamically, or falls back on it because the watched figures ran out.
[[nodiscard]] bool AreFiguresJustBlocked(const TChessboard& child);

/// While it lives, SH_DONTLETFIGUREUNBLOCK is in force in the position, watching the black figures where they stand.
/// Position and context get their old values back at its end.
class CDynamicBlocking {
  public:
    explicit CDynamicBlocking(TChessboard& child);
    ~CDynamicBlocking();
    CDynamicBlocking(const CDynamicBlocking&) = delete;
    CDynamicBlocking& operator=(const CDynamicBlocking&) = delete;

  private:
    TChessboard& m_child;
    const std::uint32_t m_nHeuristics, m_nHeurParams;
    const TBlockedSquares m_onBoard, m_inRoot, m_now;
    const std::int8_t m_nBlockedFigures;
    const bool m_bByHand;
};

/// Were the watched figures all let go in this line, so that the heuristic watches nothing any more?
[[nodiscard]] bool AreAllFiguresUnblocked(const TChessboard& b);

} // namespace quillon
