// The multithreading levels: a white node below the root deals its moves to a group of threads.

#include <algorithm>
#include <cassert>
#include <memory>
#include <new>
#include <vector>

#include "parallel/group_shape.h"
#include "parallel/thread_group.h"
#include "search/control.h"
#include "search/hints.h"
#include "search/repetition.h"
#include "search/search_hooks.h"

namespace quillon {

namespace {

/// The record of one thread of the group.
struct TShare {
    std::unique_ptr<TSearchContext> m_context;
    TChessboard* m_pPosition = nullptr; // the node, in the stack of the thread's own context
    std::vector<TMove> m_moves;
    TMateResult m_result = MR_NOMATE;
    bool m_bLeft = false; // the thread was stopped or called away: its result is doubt, its mark nothing
};

using TNode = TMateResult (*)(TChessboard*);

/// Marks of nodes that the thread does not stand in: those with fewer plies belong to it, those above to its creator.
void ClearMarksAbove(TSearchContext& context, int nMoves) {
    std::fill(context.m_repetition.begin() + nMoves + 2, context.m_repetition.end(), std::uint16_t{0});
    std::fill(context.m_repetitionSaved.begin() + nMoves + 2, context.m_repetitionSaved.end(), std::uint16_t{0});
}

class CLevelGroup {
  public:
    CLevelGroup(TChessboard& p, TNode node)
        : m_p(p), m_context(*p.m_pContext), m_node(node), m_group(*p.m_pAnalysis, *p.m_pContext) {}

    /// false: no group of at least two threads came about.
    bool Form(const TMove* list, int nMoves) {
        const TAnalysis& analysis = *m_p.m_pAnalysis;
        const int limit = analysis.m_nForcedThreadsMode > 1 ? analysis.m_nGroupLimit : 0;
        const int size = GroupSize(nMoves, m_context.m_nGroupSize, limit);
        const std::uint64_t first = FirstThreadNumber((m_p.m_nInitialMoves - m_p.m_nMoves) / 2,
                                                      m_context.m_nThreadNumber, m_context.m_nGroupSize, size);
        if (size < 2 || first + static_cast<std::uint64_t>(size) - 1 > kLastThreadNumber)
            return false;
        m_shares.resize(static_cast<std::size_t>(size));
        const std::vector<std::vector<TMove>> hands = DealMoves(list, nMoves, size);
        for (std::size_t i = 0; i < m_shares.size(); ++i)
            if (!Add(m_shares[i], hands[i], static_cast<std::uint32_t>(first + i)))
                return false; // the destructor of the group abandons those that wait
        return true;
    }

    /// Lets the group run to its end.
    TMateResult Run() {
        m_group.Go();
        const TShare* mated = nullptr;
        for (int i = m_group.WaitNext(); i >= 0; i = m_group.WaitNext()) {
            TShare& share = m_shares[static_cast<std::size_t>(i)];
            if (share.m_result != MR_MATE || mated != nullptr)
                continue;
            mated = &share;
            m_group.StopAll();
        }
        if (mated != nullptr) {
            TakeMate(*mated);
            return MR_MATE;
        }
        return Combine();
    }

  private:
    bool Add(TShare& share, const std::vector<TMove>& moves, std::uint32_t number) {
        share.m_context = NewSearchContext();
        TSearchContext& context = *share.m_context;
        CloneSearchContext(m_context, context);
        context.m_nThreadNumber = number;
        context.m_nThreadPlies = m_p.m_nMoves;
        context.m_nStopRequest.store(kRunRequest, std::memory_order_relaxed);
        ClearMarksAbove(context, m_p.m_nMoves);
        share.m_moves = moves;
        share.m_pPosition = &RootSlot(context, m_p.m_nMoves);
        context.m_byResumeList = 2; // the verdict on a share is none on the node
        context.m_nResumeCount = static_cast<std::uint8_t>(moves.size());
        context.m_pResumeList = share.m_moves.data();
        return m_group.Add(context, m_p.m_nInitialMoves, [this, &share] { share.m_result = Judge(share); });
    }

    /// A thread that was called away has no verdict; if nobody calls its creator away, that is doubt.
    TMateResult Judge(TShare& share) const {
        const TMateResult result = m_node(share.m_pPosition);
        if (result == MR_MATE)
            return result;
        share.m_bLeft = IsStopping(*share.m_pPosition);
        return share.m_bLeft ? MR_DOUBTFUL : result;
    }

    /// What the mating move leaves behind for the nodes above, as it does in a node of one thread.
    void TakeMate(const TShare& share) {
        const TSearchContext& context = *share.m_context;
        m_context.m_zugzwangMove = context.m_zugzwangMove;
        m_context.m_bUnderPromotionEqual = context.m_bUnderPromotionEqual;
        const std::size_t i = context.m_moveIndex[m_p.m_nMoves].load(std::memory_order_relaxed);
        if (i < share.m_moves.size())
            KeepHint(m_p, share.m_moves[i]);
    }

    TMateResult Combine() {
        bool bDoubt = false, bRepetition = false;
        RepetitionMark(m_p, m_p.m_nMoves - 1) = 0; // of a move tried before
        for (const TShare& share : m_shares) {
            if (!share.m_bLeft)
                RaiseRepetitionMark(m_p, m_p.m_nMoves, RepetitionMark(*share.m_pPosition, m_p.m_nMoves));
            bRepetition = bRepetition || share.m_result <= MR_REPETITION;
            bDoubt = bDoubt || share.m_result == MR_DOUBTFUL;
            if (share.m_result == MR_DOUBTFUL)
                m_context.m_lastDoubtCause = share.m_context->m_lastDoubtCause;
        }
        if (bDoubt && (m_p.m_byPass >= 2 || !bRepetition))
            return MR_DOUBTFUL; // in the last pass a repetition may count as refuted, doubt never
        return bRepetition ? MR_REPETITION : MR_NOMATE;
    }

    TChessboard& m_p;
    TSearchContext& m_context;
    TNode m_node;
    std::vector<TShare> m_shares;
    CThreadGroup m_group; // ends before the shares that its threads work on
};

} // namespace

int FindMateMultithreadingLevel(TChessboard& p, int nMoves, TMove* list, TNode pNode) {
    if (&p != &RootSlot(*p.m_pContext, p.m_nMoves))
        return kContinueHere; // not on the main stack: a look aside
    CLevelGroup group(p, pNode);
    try {
        if (!group.Form(list, nMoves))
            return kContinueHere;
    } catch (const std::bad_alloc&) {
        return kContinueHere;
    }
    return group.Run();
}

} // namespace quillon
