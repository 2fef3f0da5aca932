#pragma once
// What the logging instantiations of the nodes tell: each move made and each verdict. The plain instantiations contain
// no such call.
//
// Threads: where an analysis has several, all of them tell, at once.

#include "core/chessboard.h"
#include "core/mate_result.h"

namespace quillon {

class INodeLog {
  public:
    virtual ~INodeLog() = default;

    /// A move was made: `child` is the position after it, its m_lastMove the move.
    virtual void Move(const TChessboard& child) = 0;

    /// The verdict on `node`: a whole node, or a child just made.
    virtual void Verdict(const TChessboard& node, TMateResult result) = 0;

    /// A remark on the move just made, such as "Mate found (pos.in temp.reg.)".
    virtual void Remark(const TChessboard& child, const char* text) = 0;
};

} // namespace quillon
