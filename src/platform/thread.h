#pragma once
// CThread: a thread with a stack of a given size, which std::thread cannot have. Search threads recurse deeply.
//
//   1 Whoever owns the object owns the thread: the destructor waits for its end.
//   2 An exception that leaves the body ends the program, as with std::thread.
// Threads: an object is used by one thread at a time. What the body did is visible after Join.

#include <cstddef>
#include <functional>
#include <pthread.h>

namespace quillon {

class CThread {
  public:
    /// No thread.
    CThread() = default;

    /// Starts `body`.
    ///   stackBytes  rounded up to whole pages and to the least the system allows.
    ///   Errors      std::system_error when the system gives no thread or no stack.
    CThread(std::size_t stackBytes, std::function<void()> body);

    CThread(CThread&& other) noexcept;
    CThread& operator=(CThread&& other) noexcept;
    ~CThread();

    /// True from the start until Join.
    [[nodiscard]] bool IsJoinable() const { return m_bJoinable; }

    /// Waits for the end of the body. Without a thread it does nothing.
    void Join();

  private:
    pthread_t m_thread{};
    bool m_bJoinable = false;
};

/// Sets the priority of the calling thread: 0 normal, below that the thread gives way to others. What the system does
/// not grant is not told: a priority is a wish.
void SetThreadPriority(int nPriority);

/// The threads made by CThread that exist in this process now.
[[nodiscard]] int LiveThreads();

/// The next `nThreads` that are asked for are refused, as by a system that has none left: what callers do then can be
/// tried out. 0: none is.
void RefuseThreads(int nThreads);

} // namespace quillon
