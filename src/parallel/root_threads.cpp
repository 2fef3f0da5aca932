// The root's white moves are shared by the threads of the analysis.

#include <algorithm>

#include "heuristics/find_mate_root.h"
#include "parallel/group_shape.h"
#include "parallel/thread_group.h"

namespace quillon {

namespace {

/// The contexts of the root's threads live as long as the solve. A pass starts from what the driver's context says.
TSearchContext& ContextOfThread(TRootRun& run, const TAnalysis& analysis, const TSearchContext& driver, std::size_t i) {
    if (run.m_threadContexts.size() <= i)
        run.m_threadContexts.push_back(NewSearchContext());
    TSearchContext& context = *run.m_threadContexts[i];
    CloneSearchContext(driver, context);
    context.m_nThreadNumber = static_cast<std::uint32_t>(i);
    context.m_nGroupSize = analysis.m_nThreads;
    context.m_nStopRequest.store(kRunRequest, std::memory_order_relaxed);
    return context;
}

} // namespace

bool TryRootMovesInThreads(TSearchContext& context, TAnalysis& analysis, TRootRun& run, IRootMoves& moves, int nMoves) {
    const int wanted = std::min<int>(analysis.m_nThreads, nMoves);
    CThreadGroup group(analysis, context);
    int created = 0;
    for (; created < wanted; ++created) {
        TSearchContext& member = ContextOfThread(run, analysis, context, static_cast<std::size_t>(created));
        if (!group.Add(member, context.m_pRoot->m_nInitialMoves, [&moves, &member] {
                while (moves.TryNext(member)) {
                }
            }))
            break;
    }
    if (created < 2)
        return false; // the group gives up those that wait
    group.Go();
    // A thread ends when nothing is left to begin; one that ends with moves open has found enough, or was stopped.
    while (group.WaitNext() >= 0)
        if (moves.IsEnough())
            group.StopAll();
    return true;
}

} // namespace quillon
