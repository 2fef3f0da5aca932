#include "search/helper_threads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <new>
#include <system_error>
#include <utility>

#include "platform/processors.h"
#include "search/analysis.h"
#include "search/control.h"

namespace quillon {

namespace {

/// A position and its recursion take some hundred bytes to some KB of stack a ply, several times that with sanitizers.
constexpr std::size_t kLeastStack = std::size_t{8} << 20, kStackOfPly = std::size_t{32} << 10;

/// In such steps what is asked of the caller reaches his helpers while he waits.
constexpr std::chrono::milliseconds kForwardStep{10};

std::unique_ptr<TSearchContext> CloneOf(const TSearchContext& caller) {
    auto clone = NewSearchContext();
    CloneSearchContext(caller, *clone);
    clone->m_nPositionsLeft = TSearchContext::kNoBound;
    clone->m_nStopRequest.store(kRunRequest, std::memory_order_relaxed);
    return clone;
}

/// A thread that waits is not counted as running.
class CWaitingThread {
  public:
    explicit CWaitingThread(std::atomic<std::uint32_t>& running) : m_running(running) {
        m_running.fetch_sub(1, std::memory_order_relaxed);
    }
    ~CWaitingThread() { m_running.fetch_add(1, std::memory_order_relaxed); }
    CWaitingThread(const CWaitingThread&) = delete;
    CWaitingThread& operator=(const CWaitingThread&) = delete;

  private:
    std::atomic<std::uint32_t>& m_running;
};

} // namespace

int ThreadsForLook(const TAnalysis& analysis) {
    return analysis.m_nThreads < 2 ? 1 : std::min<int>(analysis.m_nThreads, UsableProcessors());
}

bool IsInMainStack(const TChessboard& b) {
    const auto& stack = b.m_pContext->m_stack;
    return !std::less<const TChessboard*>()(&b, stack.data()) &&
           std::less<const TChessboard*>()(&b, stack.data() + stack.size());
}

int CHelperThreads::Start(const TChessboard& b, int nHelpers, std::function<void(TChessboard&)> body) {
    if (nHelpers < 1)
        return 0;
    m_pCallers = &b;
    m_body = std::move(body);
    MakeClones(*b.m_pContext, static_cast<std::size_t>(nHelpers));
    StartThreads(b);
    return static_cast<int>(m_threads.size());
}

/// As many as there is memory for.
void CHelperThreads::MakeClones(const TSearchContext& caller, std::size_t nCount) {
    try {
        m_contexts.reserve(nCount);
        m_threads.reserve(nCount);
        while (m_contexts.size() < nCount)
            m_contexts.push_back(CloneOf(caller));
    } catch (const std::bad_alloc&) {
    }
}

/// As many as the system gives.
void CHelperThreads::StartThreads(const TChessboard& b) {
    const auto slot = static_cast<std::size_t>(&b - b.m_pContext->m_stack.data());
    try {
        for (const auto& context : m_contexts)
            m_threads.emplace_back(kLeastStack + kStackOfPly * b.m_nInitialMoves,
                                   [this, &own = context->m_stack[slot]] { Help(own); });
    } catch (const std::bad_alloc&) {
    } catch (const std::system_error&) {
    }
}

void CHelperThreads::Help(TChessboard& b) {
    const CCountedThread running(b.m_pAnalysis->m_nRunningThreads);
    SetThreadPriority(b.m_pAnalysis->m_nThreadPriority);
    std::exception_ptr failure;
    try {
        m_body(b);
    } catch (...) {
        failure = std::current_exception();
    }
    FlushPositions(*b.m_pContext, *b.m_pAnalysis);
    const std::lock_guard lock(m_mutex);
    if (!m_failure)
        m_failure = failure;
    ++m_nEnded;
    m_ended.notify_one();
}

void CHelperThreads::Join() {
    if (m_threads.empty())
        return;
    {
        const CWaitingThread waiting(m_pCallers->m_pAnalysis->m_nRunningThreads);
        std::uint8_t asked = kRunRequest;
        for (std::unique_lock lock(m_mutex); m_nEnded != m_threads.size();) {
            m_ended.wait_for(lock, kForwardStep);
            const std::uint8_t request = RequestFor(*m_pCallers->m_pAnalysis, *m_pCallers->m_pContext);
            if (std::exchange(asked, request) != request)
                Ask(request);
        }
        m_threads.clear();
    }
    Tell();
}

void CHelperThreads::Stop() {
    End();
    Tell();
}

void CHelperThreads::End() {
    Ask(kStopRequest); // one may sleep in a pause
    m_threads.clear();
}

void CHelperThreads::Tell() {
    if (m_failure)
        std::rethrow_exception(std::exchange(m_failure, nullptr));
}

void CHelperThreads::Ask(std::uint8_t request) {
    for (const auto& context : m_contexts)
        AskThread(*context, request);
}

} // namespace quillon
