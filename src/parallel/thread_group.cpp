#include "parallel/thread_group.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "parallel/search_thread.h"
#include "platform/sleep.h"
#include "search/control.h"

namespace quillon {

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
    try {
        member.m_thread = CThread(SearchStackBytes(nPlies), [this, &member] { Run(member); });
    } catch (const std::system_error&) {
        m_members.pop_back();
        return false;
    }
    return true;
}

void CThreadGroup::Run(TMember& member) {
    while (member.m_control.load(std::memory_order_acquire) == kMemberWaits)
        SleepMs(0);
    const bool bGoes = member.m_control.load(std::memory_order_acquire) == kMemberGoes;
    member.m_failure = RunSearchThread(
        m_analysis, *member.m_pContext, bGoes ? member.m_body : [] {});
    if (bGoes)
        m_analysis.m_nRunningThreads.fetch_sub(1, std::memory_order_relaxed);
    DropOwnCommand(m_analysis, member.m_pContext->m_nThreadNumber);
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
    m_bStopping = m_bStopping || (m_pNode != nullptr && IsLeaving(*m_pNode));
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
