// Threads that help one with a look aside: copies of the position, requests passed on, failures told, nothing left.

#include "search/helper_threads.h"

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/processors.h"
#include "platform/sleep.h"
#include "search/control.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kPlacement = "8/8/8/8/7Q/n1K5/8/k7";

/// A position two plies below its root, and what exists besides it.
class HelperThreads : public testing::Test {
  protected:
    HelperThreads() { m_line.Play("Qh4-b4 Na3-b5"); }
    ~HelperThreads() override {
        EXPECT_EQ(LiveSearchContexts(), m_contexts);
        EXPECT_EQ(LiveThreads(), m_threads);
        EXPECT_EQ(m_line.Analysis().m_nRunningThreads, 0u);
    }

    const int m_threads = LiveThreads();
    CSearchedPosition m_line{kPlacement, 9};
    const int m_contexts = LiveSearchContexts();
};

/// Until it is told to stop.
void Linger(const TChessboard& b) {
    while (!IsStopping(b))
        SleepMs(1);
}

TEST_F(HelperThreads, EachHasItsOwnCopyOfThePositionAndItsLine) {
    std::mutex mutex;
    std::set<const TSearchContext*> contexts;
    CHelperThreads helpers;
    const int started = helpers.Start(m_line.Now(), 3, [&](TChessboard& b) {
        const std::lock_guard lock(mutex);
        contexts.insert(b.m_pContext);
        EXPECT_EQ(b.m_board, m_line.Now().m_board);
        EXPECT_EQ(b.m_pPrevious->m_pContext, b.m_pContext);
        EXPECT_EQ(&b, &RootSlot(*b.m_pContext, b.m_nMoves));
        CountTrialPosition(*b.m_pContext, *b.m_pAnalysis);
    });
    helpers.Join();
    EXPECT_EQ(started, 3);
    EXPECT_EQ(contexts.size(), 3u);
    EXPECT_FALSE(contexts.contains(&m_line.Context()));
    EXPECT_EQ(m_line.Analysis().m_nTrialPositions, 3u);
}

TEST_F(HelperThreads, TheirEndStopsThem) {
    CHelperThreads helpers;
    helpers.Start(m_line.Now(), 2, Linger);
}

TEST_F(HelperThreads, AStopOfTheCallerReachesThemWhileHeWaits) {
    CHelperThreads helpers;
    helpers.Start(m_line.Now(), 2, Linger);
    AskThread(m_line.Context(), kStopRequest);
    helpers.Join();
}

TEST_F(HelperThreads, AStopOfAllReachesThem) {
    CHelperThreads helpers;
    helpers.Start(m_line.Now(), 2, Linger);
    GiveCommand(m_line.Analysis(), kStopCommand, kAllThreads);
    helpers.Join();
}

/// Nor while he waits.
TEST_F(HelperThreads, ABoundOfTheCallerIsNotTheirs) {
    m_line.Context().m_nPositionsLeft = 5;
    m_line.Context().m_nStopRequest = kBoundRequest;
    std::atomic<int> free{0};
    CHelperThreads helpers;
    helpers.Start(m_line.Now(), 2, [&](TChessboard& b) {
        SleepMs(50);
        free += b.m_pContext->m_nPositionsLeft == TSearchContext::kNoBound && !IsStopping(b) ? 1 : 0;
    });
    helpers.Join();
    EXPECT_EQ(free, 2);
}

TEST_F(HelperThreads, WhatOneThrowsTheCallerHearsWhenAllHaveEnded) {
    std::atomic<int> ended{0};
    CHelperThreads helpers;
    helpers.Start(m_line.Now(), 3, [&](TChessboard&) {
        if (++ended == 1)
            throw std::runtime_error("one of them");
    });
    EXPECT_THROW(helpers.Join(), std::runtime_error);
    EXPECT_EQ(ended, 3);
}

TEST_F(HelperThreads, NoneIsNoTrouble) {
    CHelperThreads helpers;
    EXPECT_EQ(helpers.Start(m_line.Now(), 0, [](TChessboard&) { FAIL(); }), 0);
    helpers.Join();
    helpers.Stop();
}

/// A position outside of the main stack has no like in a clone.
TEST_F(HelperThreads, NoneAreStartedOnAnyPosition) {
    const TChessboard elsewhere = m_line.Now();
    CHelperThreads helpers;
    EXPECT_EQ(helpers.Start(elsewhere, 0, [](TChessboard&) { FAIL(); }), 0);
    EXPECT_EQ(helpers.Start(elsewhere, -1, [](TChessboard&) { FAIL(); }), 0);
}

TEST_F(HelperThreads, WhatOneThrowsIsHeardBehindAStopButNotInTheDestructor) {
    const auto throws = [](TChessboard&) { throw std::runtime_error("one of them"); };
    CHelperThreads stopped;
    stopped.Start(m_line.Now(), 2, throws);
    EXPECT_THROW(stopped.Stop(), std::runtime_error);
    CHelperThreads left;
    left.Start(m_line.Now(), 2, throws);
}

/// As with a group of threads: it works no more than its owner.
TEST_F(HelperThreads, ACallerWhoWaitsIsNotCountedAsRunning) {
    const std::atomic<std::uint32_t>& running = m_line.Analysis().m_nRunningThreads;
    {
        const CCountedThread caller(m_line.Analysis().m_nRunningThreads);
        std::atomic<bool> bAlone{false};
        CHelperThreads helpers;
        helpers.Start(m_line.Now(), 1, [&](TChessboard&) {
            for (int ms = 0; ms < 2000 && !bAlone; ++ms) {
                bAlone = running == 1;
                SleepMs(1);
            }
        });
        helpers.Join();
        EXPECT_TRUE(bAlone);
        EXPECT_EQ(running, 1u);
    }
}

TEST_F(HelperThreads, ALookIsSharedAmongNoMoreThreadsThanThereAreProcessors) {
    m_line.Analysis().m_nThreads = 1;
    EXPECT_EQ(ThreadsForLook(m_line.Analysis()), 1);
    m_line.Analysis().m_nThreads = 255;
    EXPECT_EQ(ThreadsForLook(m_line.Analysis()), std::min(255, UsableProcessors()));
}

} // namespace
} // namespace quillon::test
