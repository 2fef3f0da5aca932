// The multithreading levels: a white node below the root deals its moves to a group of threads.

#include <new>
#include <utility>
#include <vector>

#include "parallel/group_shape.h"
#include "parallel/node_share.h"
#include "parallel/thread_group.h"
#include "search/analysis.h"
#include "search/control.h"
#include "search/search_hooks.h"

namespace quillon {

namespace {

class CLevelGroup {
  public:
    CLevelGroup(TChessboard& p, TNodeFunction node)
        : m_p(p), m_context(*p.m_pContext), m_node(node), m_group(*p.m_pAnalysis, *p.m_pContext, &p) {}

    /// false: no group of at least two threads came about.
    bool Form(const TMove* list, int nMoves) {
        const TAnalysis& analysis = *m_p.m_pAnalysis;
        const int limit = analysis.m_nForcedThreadsMode > 1 ? analysis.m_nGroupLimit : 0;
        const int size = GroupSize(nMoves, m_context.m_nGroupSize, limit);
        const std::uint64_t first = FirstThreadNumber((m_p.m_nInitialMoves - m_p.m_nMoves) / 2,
                                                      m_context.m_nThreadNumber, m_context.m_nGroupSize, size);
        if (size < 2 || first + static_cast<std::uint64_t>(size) - 1 > kLastThreadNumber)
            return false;
        m_members.resize(static_cast<std::size_t>(size));
        std::vector<std::vector<TMove>> hands = DealMoves(list, nMoves, size);
        for (std::size_t i = 0; i < m_members.size(); ++i) {
            m_members[i].m_share.m_moves = std::move(hands[i]);
            if (!Add(m_members[i], static_cast<std::uint32_t>(first + i)))
                return false; // the destructor of the group abandons those that wait
        }
        return true;
    }

    /// Lets the group run to its end.
    TMateResult Run() {
        m_group.Go();
        const TMember* mated = nullptr;
        for (int i = m_group.WaitNext(); i >= 0; i = m_group.WaitNext()) {
            const TMember& member = m_members[static_cast<std::size_t>(i)];
            if (member.m_verdict.m_result != MR_MATE || mated != nullptr)
                continue;
            mated = &member;
            m_group.StopAll();
        }
        if (mated != nullptr) {
            TakeMateFrom(m_p, mated->m_share);
            return MR_MATE;
        }
        CNodeVerdict verdict(m_p);
        for (const TMember& member : m_members)
            verdict.Add(member.m_verdict);
        return verdict.Result();
    }

  private:
    struct TMember {
        TNodeShare m_share;
        TShareVerdict m_verdict;
    };

    bool Add(TMember& member, std::uint32_t number) {
        PrepareShare(m_p, member.m_share, number);
        return m_group.Add(*member.m_share.m_context, m_p.m_nInitialMoves,
                           [this, &member] { member.m_verdict = SearchShare(member.m_share, m_node); });
    }

    TChessboard& m_p;
    TSearchContext& m_context;
    TNodeFunction m_node;
    std::vector<TMember> m_members;
    CThreadGroup m_group; // ends before the members that its threads work on
};

/// Behind a group no thread of it waits for the register.
void MakeRoomInRegister(const TChessboard& p) {
    ITemporaryRegister* const known = p.m_pAnalysis->m_pRegister;
    if (known != nullptr && !IsStopping(p))
        known->FreeMemoryEarly();
}

} // namespace

int FindMateMultithreadingLevel(TChessboard& p, int nMoves, TMove* list, TNodeFunction pNode) {
    if (&p != &RootSlot(*p.m_pContext, p.m_nMoves) || IsStopping(p))
        return kContinueHere; // not on the main stack: a look aside; or on the way up, where no group would last
    CLevelGroup group(p, pNode);
    try {
        if (!group.Form(list, nMoves))
            return kContinueHere;
    } catch (const std::bad_alloc&) {
        return kContinueHere;
    }
    const TMateResult result = group.Run();
    MakeRoomInRegister(p);
    return result;
}

} // namespace quillon
