// One register and eight threads: what they read must be true whatever the others do at the moment.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "core/fen.h"
#include "tempregister/aggregated_register.h"
#include "tempregister/chess_boards.h"
#include "tempregister/search_register.h"

namespace quillon::test {
namespace {

constexpr int kThreads = 8;

/// What is true of board i, for all time: the shortest mate, no mate below it, and doubt.
struct TTruth {
    int m_nMate; // plies
    int m_nDoubt;
};
TTruth TruthOf(std::size_t i) { return {5 + 2 * static_cast<int>(i % 12), 3 + 2 * static_cast<int>(i % 7)}; }

class RegisterThreads : public testing::Test {
  protected:
    /// One step of a search: asks about a board or tells the truth about it.
    void Step(CRandom& random, TAggregatedTemporaryChessboardRegister& known) {
        const std::size_t i = random.Below(static_cast<std::uint32_t>(m_boards.size()));
        const TTruth truth = TruthOf(i);
        const std::uint32_t heuristics = 1 + random.Below(3);
        const int nMoves = 1 + 2 * static_cast<int>(random.Below(16));
        switch (random.Below(4)) {
        case 0:
            known.InsertLoaded(static_cast<std::uint16_t>(nMoves), m_boards[i], nMoves >= truth.m_nMate);
            break;
        case 1:
            if (nMoves <= truth.m_nDoubt)
                known.InsertDoubtful(static_cast<std::uint16_t>(nMoves), m_boards[i], heuristics, 0);
            break;
        default:
            Check(known.Find(nMoves, m_boards[i], heuristics, 0), nMoves, truth);
        }
    }

    void Check(int found, int nMoves, const TTruth& truth) {
        const bool bTrue = found == 1    ? nMoves >= truth.m_nMate
                           : found == 0  ? nMoves < truth.m_nMate
                           : found == -1 ? nMoves <= truth.m_nDoubt
                                         : found == -2;
        if (!bTrue)
            ++m_nLies;
        if (found != -2)
            ++m_nAnswers;
    }

    /// Steps on all threads at once, and `also(thread, step)` between them.
    template <typename TAlso> void Run(int steps, TAggregatedTemporaryChessboardRegister& known, TAlso also) {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < kThreads; ++thread)
            threads.emplace_back([&, thread] {
                CRandom random(static_cast<std::uint64_t>(thread) + 100);
                for (int step = 0; step < steps; ++step) {
                    Step(random, known);
                    also(thread, step);
                }
            });
    }

    std::uint32_t ElementsInTables(const TAggregatedTemporaryChessboardRegister& known) {
        std::uint32_t elements = 0;
        known.combinedMap.ForEach([&](const TBoardBytes&, const TCombinedLengths&) { ++elements; });
        return elements;
    }

    std::vector<TBoardBytes> m_boards = DifferentBoards(3000, 21);
    std::atomic<int> m_nLies = 0;
    std::atomic<int> m_nAnswers = 0;
};

TEST_F(RegisterThreads, ReadersAndWriters) {
    TAggregatedTemporaryChessboardRegister known(64 << 20, 256);
    Run(6000, known, [](int, int) {});
    EXPECT_EQ(m_nLies, 0);
    EXPECT_GT(m_nAnswers, 1000);
    EXPECT_EQ(known.GetElementsCount() - known.GetDoubtfulCount(), ElementsInTables(known));
    EXPECT_LE(known.GetElementsCount(), 4 * m_boards.size());
}

TEST_F(RegisterThreads, WithAFullRegisterThatEvicts) {
    nLastRemovedLevel = 0;
    TAggregatedTemporaryChessboardRegister known(64 << 20, 256);
    known.nMaxElements = 2500;
    Run(6000, known, [&](int thread, int step) {
        if (thread == 0 && step % 50 == 0)
            known.EmptySomeDataWhenRegisterFull(true);
    });
    nLastRemovedLevel = 0;
    EXPECT_EQ(m_nLies, 0);
    EXPECT_GT(m_nAnswers, 1000);
    EXPECT_GT(known.Statistics().m_nEvictions, 0u);
    EXPECT_LE(known.GetElementsCount(), known.nMaxElements + kThreads); // each may be between its check and its insert
    EXPECT_EQ(known.GetElementsCount() - known.GetDoubtfulCount(), ElementsInTables(known));
}

TEST_F(RegisterThreads, WithClearingResizingAndUsersOfDoubt) {
    TAggregatedTemporaryChessboardRegister known(64 << 20, 256);
    Run(4000, known, [&](int thread, int step) {
        if (thread == 0 && step % 500 == 0)
            known.SetBucketCount(step % 1000 == 0 ? 64 : 512, step % 1500 != 0);
        if (thread == 1 && step % 300 == 0)
            known.Clear(step % 900 / 300 - 1, true);
        if (thread == 2 && step % 50 == 0)
            known.AddDoubtfulUser(1, 0);
        if (thread == 3 && step % 20 == 0)
            (void)known.RemoveDoubtful(1 + static_cast<std::uint32_t>(step) / 20 % 3, 0);
        if (thread == 4 && step % 100 == 0)
            (void)known.RemoveNMovers(step % 12);
        if (thread == 5 && step % 10 == 0)
            (void)known.Statistics();
    });
    EXPECT_EQ(m_nLies, 0);
    EXPECT_EQ(known.GetElementsCount() - known.GetDoubtfulCount(), ElementsInTables(known));
    known.Clear(0, true);
    EXPECT_EQ(known.GetElementsCount(), 0u);
    EXPECT_EQ(known.Statistics().m_nBytes, 0u);
}

TEST_F(RegisterThreads, SeveralRegistersShareTheFreeLists) {
    std::vector<std::jthread> threads;
    std::atomic<int> failures = 0;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 8; ++round) {
                TAggregatedTemporaryChessboardRegister known(64 << 20, 64);
                const std::size_t count = 200 + 100 * static_cast<std::size_t>((round + thread) % 8);
                for (std::size_t i = 0; i < count; ++i)
                    known.InsertLoaded(static_cast<std::uint16_t>(TruthOf(i).m_nMate), m_boards[i], true);
                for (std::size_t i = 0; i < count; ++i)
                    failures += known.FindFinal(TruthOf(i).m_nMate, m_boards[i]) != 1 ? 1 : 0;
                failures += known.RemoveNMovers(99) != count ? 1 : 0;
            }
        });
    threads.clear();
    EXPECT_EQ(failures, 0);
}

} // namespace
} // namespace quillon::test
