#pragma once
// TRegisterLock: a re-entrant reader-writer spin lock of five words, and its guards.
//
// Invariants
//   1 At most one thread owns the exclusive side; it may take it again, and give it back as often.
//   2 The owner may take the shared side too. A holder of the shared side alone must not ask for the exclusive one: it
//     would wait for itself. It may take the shared side again only while no writer can come: a waiting writer lets no
//     further reader in.
//   3 What was done under the exclusive side is visible to every later holder of either side, and a writer sees that
//     the readers before it are through.
// Threads: any. The guards belong to the thread that made them.

#include <atomic>
#include <cstdint>

namespace quillon {

namespace detail {

/// Number of this thread, 0 until it is asked for the first time.
inline constinit thread_local std::uint32_t t_nThreadNumber = 0;

/// Gives this thread the next number.
std::uint32_t AssignThreadNumber();

} // namespace detail

/// A small number, never 0, that no other thread of the process has or had (the first 2^32 - 1 threads).
[[nodiscard]] inline std::uint32_t ThisThreadNumber() {
    const std::uint32_t number = detail::t_nThreadNumber;
    return number != 0 ? number : detail::AssignThreadNumber();
}

class TRegisterLock {
  public:
    TRegisterLock() = default;
    TRegisterLock(const TRegisterLock&) = delete;
    TRegisterLock& operator=(const TRegisterLock&) = delete;

    void AcquireExclusive() {
        if (IsOwnedByThisThread())
            ++m_nRecursions;
        else
            WaitForExclusive();
    }

    void ReleaseExclusive() {
        if (m_nRecursions != 0) {
            --m_nRecursions;
            return;
        }
        m_nOwner.store(0, std::memory_order_relaxed);
        m_nWriter.store(0, std::memory_order_release);
    }

    void AcquireShared() {
        if (IsOwnedByThisThread())
            m_nReaders.fetch_add(1, std::memory_order_relaxed);
        else if (!TryShared())
            WaitForShared();
    }

    void ReleaseShared() { m_nReaders.fetch_sub(1, std::memory_order_release); }

    /// True in the thread that holds the exclusive side.
    [[nodiscard]] bool IsOwnedByThisThread() const {
        // Only this thread ever stores its own number, so no order is needed.
        return m_nOwner.load(std::memory_order_relaxed) == ThisThreadNumber();
    }

    /// How often the shared side is held at the moment, by all threads together.
    [[nodiscard]] std::uint32_t Readers() const { return m_nReaders.load(std::memory_order_relaxed); }

  private:
    // A reader announces itself and then looks for a writer; a writer announces itself and then looks for readers. That
    // one of the two sees the other needs one order of these four accesses that all threads agree on: they are
    // sequentially consistent.
    [[nodiscard]] bool TryShared() {
        if (m_nPendingWriters.load(std::memory_order_relaxed) != 0 || m_nWriter.load(std::memory_order_relaxed) != 0)
            return false;
        m_nReaders.fetch_add(1, std::memory_order_seq_cst);
        if (m_nWriter.load(std::memory_order_seq_cst) == 0)
            return true;
        m_nReaders.fetch_sub(1, std::memory_order_release); // a writer came in between
        return false;
    }

    [[nodiscard]] bool TryWriter() {
        return m_nWriter.load(std::memory_order_relaxed) == 0 && m_nWriter.exchange(1, std::memory_order_seq_cst) == 0;
    }

    void WaitForExclusive();
    void WaitForShared();

    std::atomic<std::uint32_t> m_nWriter = 0;         // 1: a thread owns the exclusive side
    std::uint32_t m_nRecursions = 0;                  // further acquisitions by the owner, who alone touches it
    std::atomic<std::uint32_t> m_nPendingWriters = 0; // owners that wait for readers to leave
    std::atomic<std::uint32_t> m_nReaders = 0;        // holds of the shared side
    std::atomic<std::uint32_t> m_nOwner = 0;          // number of the owning thread, 0 for none
};
static_assert(sizeof(TRegisterLock) == 20);

/// Holds the shared side while it lives.
class [[nodiscard]] CSharedLock {
  public:
    explicit CSharedLock(TRegisterLock& lock) : m_lock(lock) { m_lock.AcquireShared(); }
    CSharedLock(const CSharedLock&) = delete;
    CSharedLock& operator=(const CSharedLock&) = delete;
    ~CSharedLock() { m_lock.ReleaseShared(); }

  private:
    TRegisterLock& m_lock;
};

/// Holds the exclusive side while it lives.
class [[nodiscard]] CExclusiveLock {
  public:
    explicit CExclusiveLock(TRegisterLock& lock) : m_lock(lock) { m_lock.AcquireExclusive(); }
    CExclusiveLock(const CExclusiveLock&) = delete;
    CExclusiveLock& operator=(const CExclusiveLock&) = delete;
    ~CExclusiveLock() { m_lock.ReleaseExclusive(); }

  private:
    TRegisterLock& m_lock;
};

} // namespace quillon
