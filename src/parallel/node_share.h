#pragma once
// TNodeShare: moves of a white node, searched by a thread with a context of its own.
//
//   1 The thread's context is a clone of the one that the node stands in; its copy of the node gets the moves handed
//   in. 2 What the shares leave behind is put together as if the node had tried all the moves itself.
// Threads: whoever owns the share prepares it before its thread starts and reads it when that has ended.

#include <cstdint>
#include <memory>
#include <vector>

#include "core/chessboard.h"
#include "core/mate_result.h"
#include "core/move.h"
#include "core/search_context.h"

namespace quillon {

/// The white node that a thread calls with its moves handed in (m_byResumeList).
using TNodeFunction = TMateResult (*)(TChessboard*);

/// What moves of a node have come to.
struct TShareVerdict {
    TMateResult m_result = MR_DOUBTFUL; // as long as nothing was found out
    std::uint16_t m_nMark = 0;          // of the node, raised by repetitions behind these moves
    std::uint32_t m_nDoubtCause = 0;    // with MR_DOUBTFUL
};

struct TNodeShare {
    std::unique_ptr<TSearchContext> m_context;
    TChessboard* m_pPosition = nullptr; // the node, in the stack of the share's own context
    std::vector<TMove> m_moves;
};

/// Gives the share its context.
///   thread  the number its thread is to have.
///   Errors  std::bad_alloc.
void PrepareShare(const TChessboard& node, TNodeShare& share, std::uint32_t thread);

/// The work of the share's thread on m_moves, at most 255. It may be done again with other moves.
[[nodiscard]] TShareVerdict SearchShare(TNodeShare& share, TNodeFunction node);

/// What the moves of a node have come to, share by share. None of them has mated.
class CNodeVerdict {
  public:
    /// The node's child has no mark from now on.
    explicit CNodeVerdict(TChessboard& node);

    void Add(const TShareVerdict& verdict);

    /// MR_REPETITION, MR_DOUBTFUL or MR_NOMATE.
    [[nodiscard]] TMateResult Result() const;

  private:
    TChessboard& m_node;
    bool m_bDoubt = false, m_bRepetition = false;
};

/// What the mating move leaves behind for the nodes above, as it does in a node of one thread.
void TakeMateFrom(const TChessboard& node, const TNodeShare& share);

} // namespace quillon
