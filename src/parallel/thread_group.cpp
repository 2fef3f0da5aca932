#include "parallel/thread_group.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "parallel/group_shape.h"
#include "platform/sleep.h"
#include "search/control.h"
#include "search/observed_lines.h"

namespace quillon {

namespace {

// The nodes keep their lists of moves on the stack, some 3 KB a ply in an optimised build, several times that with
// sanitizers, and short searches nest in long ones. Only what is touched costs memory.
constexpr std::size_t kStackReserve = 16;

} // namespace

CThreadGroup::~CThreadGroup() {
    StopAll();
    Abandon();
    JoinAll();
    CountOwnerAgain();
}

bool CThreadGroup::Add(TSearchContext& context, int nPlies, std::function<void()> body) {
    TMember& member = m_members.emplace_back();
    member.m_pContext = &context;
    member.m_body = std::move(body);
    if (m_analysis.m_pObservedLines != nullptr)
        m_analysis.m_pObservedLines->Begin(context, &m_owner);
    try {
        member.m_thread = CThread(ThreadStackBytes(nPlies) * kStackReserve, [this, &member] { Run(member); });
    } catch (const std::system_error&) {
        if (m_analysis.m_pObservedLines != nullptr)
            m_analysis.m_pObservedLines->End(context);
        m_members.pop_back();
        return false;
    }
    return true;
}

void CThreadGroup::Run(TMember& member) {
    SetThreadPriority(m_analysis.m_nThreadPriority);
    while (member.m_control.load(std::memory_order_acquire) == kMemberWaits)
        SleepMs(0);
    if (member.m_control.load(std::memory_order_acquire) == kMemberGoes) {
        try {
            member.m_body();
        } catch (...) {
            member.m_failure = std::current_exception();
        }
        m_analysis.m_nRunningThreads.fetch_sub(1, std::memory_order_relaxed);
    }
    if (m_analysis.m_pObservedLines != nullptr)
        m_analysis.m_pObservedLines->End(*member.m_pContext);
    FlushPositions(*member.m_pContext, m_analysis);
    DropOwnPause(m_analysis, member.m_pContext->m_nThreadNumber);
    m_analysis.m_nFinishedThreads.fetch_add(1, std::memory_order_relaxed);
    const std::lock_guard lock(m_mutex);
    member.m_bEnded = true;
    m_ended.notify_one();
}

void CThreadGroup::Control(std::uint8_t control) {
    for (TMember& member : m_members) {
        std::uint8_t waiting = kMemberWaits;
        member.m_control.compare_exchange_strong(waiting, control, std::memory_order_release,
                                                 std::memory_order_relaxed);
    }
}

/// The owner waits from now on: the members are counted in its place.
void CThreadGroup::Go() {
    const auto count = static_cast<std::uint32_t>(m_members.size());
    m_bOwnerWaits = true;
    m_analysis.m_nRunningThreads.fetch_add(count - 1, std::memory_order_relaxed);
    Control(kMemberGoes);
}

void CThreadGroup::CountOwnerAgain() {
    if (std::exchange(m_bOwnerWaits, false))
        m_analysis.m_nRunningThreads.fetch_add(1, std::memory_order_relaxed);
}

void CThreadGroup::Abandon() { Control(kMemberAbandoned); }

int CThreadGroup::WaitNext() {
    std::unique_lock lock(m_mutex);
    int next = NextEnded();
    while (next == -1) {
        m_ended.wait_for(lock, std::chrono::milliseconds(kForwardMs));
        Forward();
        next = NextEnded();
    }
    lock.unlock();
    if (next < 0) {
        CountOwnerAgain();
        return -1;
    }
    TMember& member = m_members[static_cast<std::size_t>(next)];
    member.m_bTold = true;
    member.m_thread.Join();
    if (member.m_failure) {
        StopAll();
        JoinAll();
        std::rethrow_exception(std::exchange(member.m_failure, nullptr));
    }
    return next;
}

/// The index of a member that has ended and was not told of; -1: all others run; -2: there is none left.
int CThreadGroup::NextEnded() const {
    int next = -2;
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        if (m_members[i].m_bTold)
            continue;
        if (m_members[i].m_bEnded)
            return static_cast<int>(i);
        next = -1;
    }
    return next;
}

void CThreadGroup::Forward() {
    const std::uint8_t request = m_bStopping ? kStopRequest : RequestFor(m_analysis, m_owner);
    if (request == m_forwarded)
        return;
    m_forwarded = request;
    for (TMember& member : m_members)
        AskThread(*member.m_pContext, request);
}

void CThreadGroup::StopAll() {
    m_bStopping = true;
    Forward();
}

void CThreadGroup::JoinAll() {
    for (TMember& member : m_members)
        member.m_thread.Join();
}

} // namespace quillon
