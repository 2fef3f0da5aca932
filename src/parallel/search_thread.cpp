#include "parallel/search_thread.h"

#include "parallel/group_shape.h"
#include "platform/thread.h"
#include "search/observed_lines.h"

namespace quillon {

namespace {

// The nodes keep their lists of moves on the stack, some 3 KB a ply in an optimised build, several times that with
// sanitizers, and short searches nest in long ones. Only what is touched costs memory.
constexpr std::size_t kStackReserve = 16;

} // namespace

std::size_t SearchStackBytes(int nPlies) { return ThreadStackBytes(nPlies) * kStackReserve; }

std::exception_ptr RunSearchThread(TAnalysis& analysis, TSearchContext& context, const std::function<void()>& body) {
    SetThreadPriority(analysis.m_nThreadPriority);
    const CObservedThread observed(analysis, context);
    std::exception_ptr failure;
    try {
        body();
    } catch (...) {
        failure = std::current_exception();
    }
    FlushPositions(context, analysis);
    analysis.m_nFinishedThreads.fetch_add(1, std::memory_order_relaxed);
    return failure;
}

} // namespace quillon
