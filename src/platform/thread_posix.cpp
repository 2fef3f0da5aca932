#include "platform/thread.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits.h>
#include <memory>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillon {

namespace {

using TBody = std::function<void()>;

std::atomic<int> g_nLiveThreads{0};
std::atomic<int> g_nRefusedThreads{0};

constexpr int kNiceOfAStep = 5; // one step of priority in the system's measure

void* RunBody(void* argument) noexcept {
    const std::unique_ptr<TBody> body(static_cast<TBody*>(argument));
    (*body)();
    return nullptr;
}

void Check(int error, const char* what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

std::size_t WholePages(std::size_t bytes) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

class CThreadAttributes {
  public:
    CThreadAttributes() { Check(pthread_attr_init(&m_attributes), "thread attributes"); }
    CThreadAttributes(const CThreadAttributes&) = delete;
    CThreadAttributes& operator=(const CThreadAttributes&) = delete;
    ~CThreadAttributes() { pthread_attr_destroy(&m_attributes); }

    void SetStack(std::size_t bytes) {
        const auto least = static_cast<std::size_t>(PTHREAD_STACK_MIN);
        Check(pthread_attr_setstacksize(&m_attributes, WholePages(std::max(bytes, least))), "stack of a thread");
    }
    [[nodiscard]] const pthread_attr_t* Get() const { return &m_attributes; }

  private:
    pthread_attr_t m_attributes{};
};

} // namespace

CThread::CThread(std::size_t stackBytes, std::function<void()> body) {
    if (g_nRefusedThreads.load(std::memory_order_relaxed) > 0 &&
        g_nRefusedThreads.fetch_sub(1, std::memory_order_relaxed) > 0)
        Check(EAGAIN, "start of a thread");
    CThreadAttributes attributes;
    attributes.SetStack(stackBytes);
    auto argument = std::make_unique<TBody>(std::move(body));
    Check(pthread_create(&m_thread, attributes.Get(), RunBody, argument.get()), "start of a thread");
    static_cast<void>(argument.release()); // the thread owns it now
    m_bJoinable = true;
    g_nLiveThreads.fetch_add(1, std::memory_order_relaxed);
}

CThread::CThread(CThread&& other) noexcept
    : m_thread(other.m_thread), m_bJoinable(std::exchange(other.m_bJoinable, false)) {}

CThread& CThread::operator=(CThread&& other) noexcept {
    if (this != &other) {
        Join();
        m_thread = other.m_thread;
        m_bJoinable = std::exchange(other.m_bJoinable, false);
    }
    return *this;
}

CThread::~CThread() { Join(); }

void CThread::Join() {
    if (!std::exchange(m_bJoinable, false))
        return;
    pthread_join(m_thread, nullptr);
    g_nLiveThreads.fetch_sub(1, std::memory_order_relaxed);
}

void SetThreadPriority(int nPriority) {
    if (nPriority != 0)
        (void)setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), -nPriority * kNiceOfAStep);
}

void RefuseThreads(int nThreads) { g_nRefusedThreads.store(nThreads, std::memory_order_relaxed); }

int LiveThreads() { return g_nLiveThreads.load(std::memory_order_relaxed); }

} // namespace quillon
