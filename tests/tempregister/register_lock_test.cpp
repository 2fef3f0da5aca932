#include "tempregister/register_lock.h"

#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/random_positions.h"

namespace quillon::test {
namespace {

using namespace std::chrono_literals;

// Long enough for a thread that is not held back to show it.
constexpr auto kWhile = 30ms;

// A thread that takes one side of the lock, notes that it has it and gives it back.
template <typename TGuard> class CVisitor {
  public:
    explicit CVisitor(TRegisterLock& lock)
        : m_thread([this, &lock] {
              m_bStarted = true;
              const TGuard guard(lock);
              m_bInside = true;
          }) {
        while (!m_bStarted)
            std::this_thread::yield();
    }
    ~CVisitor() { Join(); }

    [[nodiscard]] bool IsInsideAfterAWhile() const {
        std::this_thread::sleep_for(kWhile);
        return m_bInside;
    }
    void Join() {
        if (m_thread.joinable())
            m_thread.join();
    }
    [[nodiscard]] bool WasInside() const { return m_bInside; }

  private:
    std::atomic<bool> m_bStarted = false;
    std::atomic<bool> m_bInside = false;
    std::thread m_thread;
};

using CReader = CVisitor<CSharedLock>;
using CWriter = CVisitor<CExclusiveLock>;

// Data that only the lock protects: under the shared side both halves are equal.
struct TGuarded {
    TRegisterLock m_lock;
    std::uint64_t m_nFirst = 0;
    std::uint64_t m_nSecond = 0;

    void Change() {
        ++m_nFirst;
        if (m_nFirst % 64 == 0)
            std::this_thread::yield(); // invites others between the halves
        ++m_nSecond;
    }
    [[nodiscard]] bool IsTorn() const { return m_nFirst != m_nSecond; }
};

struct TStressResult {
    std::uint64_t m_nChanges = 0;
    std::uint64_t m_nTorn = 0;
};

void StepOf(TGuarded& guarded, std::uint64_t choice, TStressResult& result) {
    if (choice < 70) {
        const CSharedLock shared(guarded.m_lock);
        result.m_nTorn += guarded.IsTorn() ? 1 : 0;
    } else if (choice < 85) {
        const CExclusiveLock exclusive(guarded.m_lock);
        guarded.Change();
        ++result.m_nChanges;
    } else if (choice < 93) { // the owner asks again, and for the other side
        const CExclusiveLock exclusive(guarded.m_lock);
        guarded.Change();
        const CExclusiveLock again(guarded.m_lock);
        const CSharedLock shared(guarded.m_lock);
        guarded.Change();
        result.m_nTorn += guarded.IsTorn() ? 1 : 0;
        result.m_nChanges += 2;
    } else { // from the exclusive side to the shared one without a gap
        guarded.m_lock.AcquireExclusive();
        guarded.Change();
        ++result.m_nChanges;
        const std::uint64_t seen = guarded.m_nFirst;
        guarded.m_lock.AcquireShared();
        guarded.m_lock.ReleaseExclusive();
        result.m_nTorn += guarded.m_nFirst != seen || guarded.m_nSecond != seen ? 1 : 0;
        guarded.m_lock.ReleaseShared();
    }
}

TStressResult Stress(int nThreads, int nSteps) {
    TGuarded guarded;
    std::vector<TStressResult> results(static_cast<std::size_t>(nThreads));
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < results.size(); ++t)
        threads.emplace_back([&guarded, &result = results[t], nSteps, t] {
            std::mt19937_64 rng(1000 + t);
            for (int step = 0; step < nSteps; ++step)
                StepOf(guarded, reference::Draw(rng, 100), result);
        });
    TStressResult sum;
    for (std::size_t t = 0; t < results.size(); ++t) {
        threads[t].join();
        sum.m_nChanges += results[t].m_nChanges;
        sum.m_nTorn += results[t].m_nTorn;
    }
    EXPECT_EQ(guarded.m_nFirst, sum.m_nChanges);
    EXPECT_EQ(guarded.m_nSecond, sum.m_nChanges);
    EXPECT_EQ(guarded.m_lock.Readers(), 0u);
    return sum;
}

} // namespace

TEST(RegisterLock, ThreadNumbersAreTheThreadsOwnAndNeverZero) {
    std::mutex mutex;
    std::set<std::uint32_t> numbers{0, ThisThreadNumber()};
    std::vector<std::thread> threads;
    threads.reserve(16);
    for (int i = 0; i < 16; ++i)
        threads.emplace_back([&] {
            const std::uint32_t number = ThisThreadNumber();
            const std::uint32_t again = ThisThreadNumber();
            const std::lock_guard guard(mutex);
            numbers.insert(number);
            numbers.insert(again);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(numbers.size(), 18u);
}

TEST(RegisterLock, ReadersAreInsideTogether) {
    TRegisterLock lock;
    std::barrier<> both(2); // never passed unless both are inside
    std::thread other([&] {
        const CSharedLock shared(lock);
        both.arrive_and_wait();
        both.arrive_and_wait();
    });
    {
        const CSharedLock shared(lock);
        both.arrive_and_wait();
        EXPECT_EQ(lock.Readers(), 2u);
        both.arrive_and_wait();
    }
    other.join();
    EXPECT_EQ(lock.Readers(), 0u);
}

TEST(RegisterLock, WriterWaitsForReaders) {
    TRegisterLock lock;
    lock.AcquireShared();
    CWriter writer(lock);
    EXPECT_FALSE(writer.IsInsideAfterAWhile());
    lock.ReleaseShared();
    writer.Join();
    EXPECT_TRUE(writer.WasInside());
}

TEST(RegisterLock, ReaderWaitsForTheWriterEvenForLong) {
    TRegisterLock lock;
    lock.AcquireExclusive();
    CReader reader(lock);
    EXPECT_FALSE(reader.IsInsideAfterAWhile());
    std::this_thread::sleep_for(300ms); // longer than a waiting reader only yields
    lock.ReleaseExclusive();
    reader.Join();
    EXPECT_TRUE(reader.WasInside());
}

TEST(RegisterLock, WaitingWriterLetsNoFurtherReaderIn) {
    TRegisterLock lock;
    lock.AcquireShared();
    CWriter writer(lock);
    EXPECT_FALSE(writer.IsInsideAfterAWhile());
    CReader reader(lock);
    EXPECT_FALSE(reader.IsInsideAfterAWhile());
    lock.ReleaseShared();
    writer.Join();
    reader.Join();
    EXPECT_TRUE(writer.WasInside() && reader.WasInside());
}

TEST(RegisterLock, OwnerGivesTheExclusiveSideBackAsOftenAsItTookIt) {
    TRegisterLock lock;
    for (int i = 0; i < 3; ++i)
        lock.AcquireExclusive();
    CWriter writer(lock);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(lock.IsOwnedByThisThread());
        EXPECT_FALSE(writer.IsInsideAfterAWhile());
        lock.ReleaseExclusive();
    }
    EXPECT_FALSE(lock.IsOwnedByThisThread());
    writer.Join();
    EXPECT_TRUE(writer.WasInside());
}

TEST(RegisterLock, OwnerTakesTheSharedSideAndKeepsWritersOutWithIt) {
    TRegisterLock lock;
    lock.AcquireExclusive();
    lock.AcquireShared();
    lock.AcquireExclusive(); // its own reader does not hold it back
    lock.ReleaseExclusive();
    lock.ReleaseExclusive();
    EXPECT_EQ(lock.Readers(), 1u);
    CReader reader(lock);
    reader.Join();
    EXPECT_TRUE(reader.WasInside());
    CWriter writer(lock);
    EXPECT_FALSE(writer.IsInsideAfterAWhile());
    lock.ReleaseShared();
    writer.Join();
    EXPECT_TRUE(writer.WasInside());
}

TEST(RegisterLock, OwnershipIsOfOneThread) {
    TRegisterLock lock;
    const CExclusiveLock exclusive(lock);
    bool bOwnedElsewhere = true;
    std::thread([&] { bOwnedElsewhere = lock.IsOwnedByThisThread(); }).join();
    EXPECT_FALSE(bOwnedElsewhere);
    EXPECT_TRUE(lock.IsOwnedByThisThread());
}

TEST(RegisterLock, GuardsGiveBackWhenAnExceptionLeavesThem) {
    TRegisterLock lock;
    const auto fail = [&lock] {
        const CExclusiveLock exclusive(lock);
        const CSharedLock shared(lock);
        throw std::runtime_error("out");
    };
    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_FALSE(lock.IsOwnedByThisThread());
    EXPECT_EQ(lock.Readers(), 0u);
    CWriter writer(lock);
    writer.Join();
    EXPECT_TRUE(writer.WasInside());
}

TEST(RegisterLock, NoThreadSeesHalfAChange) {
    for (const int nThreads : {2, 3, 8}) {
        const TStressResult result = Stress(nThreads, 4000);
        EXPECT_EQ(result.m_nTorn, 0u) << nThreads;
        EXPECT_GT(result.m_nChanges, 0u);
    }
}

} // namespace quillon::test
