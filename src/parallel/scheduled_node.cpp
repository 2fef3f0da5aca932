// A white node below the multithreading levels whose moves a scheduler juggles.

#include <new>

#include "parallel/scheduler.h"
#include "search/search_hooks.h"

namespace quillon {

int FindMateScheduled(TChessboard& p, int nMoves, TMove* list, int nBest, TNodeFunction pNode) {
    const TScheduler* const parent = p.m_pContext->m_pScheduler;
    if (&p != &RootSlot(*p.m_pContext, p.m_nMoves)) // not on the main stack: a look aside
        return kContinueHere;
    if (parent != nullptr && parent->Nesting() >= kMostNestedSchedulers)
        return kContinueHere;
    TScheduler scheduler(p, parent, nBest);
    try {
        scheduler.TakeMoves(list, nMoves);
    } catch (const std::bad_alloc&) {
        return kContinueHere;
    }
    return scheduler.Run(pNode);
}

} // namespace quillon
