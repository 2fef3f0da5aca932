// The demand for more threads, rule by rule.

#include "heuristics/thread_demand.h"

#include <gtest/gtest.h>

namespace quillon::test {
namespace {

/// Threads, moves, good moves, forcing moves, processors.
int Demand(int nThreads, int nMoves, int nGood, int nForcing = 0, int nProcessors = 8, bool bPawnsOnly = false,
           bool bLineChecker = false) {
    return ComputeThreadDemand({nThreads, nMoves, nGood, nForcing, nProcessors, bPawnsOnly, bLineChecker});
}

TEST(ThreadDemand, OneMoveMoreThanThreadsUpToTwiceAsMany) {
    EXPECT_EQ(Demand(4, 5, 0), 5) << "not more threads than moves";
    EXPECT_EQ(Demand(4, 8, 0), 8);
    EXPECT_EQ(Demand(4, 4, 0), 0) << "a thread for each move already";
    EXPECT_EQ(Demand(4, 9, 0), 0) << "too many moves for this rule";
    EXPECT_EQ(Demand(6, 12, 0, 0, 4), 8) << "not more than twice the processors";
    EXPECT_EQ(Demand(8, 12, 0, 0, 4), 0) << "as many threads as that already";
    EXPECT_EQ(Demand(4, 8, 0, 0, 8, true), 6) << "half as many more with pawns alone";
    EXPECT_EQ(Demand(4, 8, 0, 1, 8, true), 6);
    EXPECT_EQ(Demand(4, 8, 0, 2, 8, true), 8) << "unless two of them check, capture or promote";
    EXPECT_EQ(Demand(5, 10, 0, 0, 8, true), 7) << "rounded down";
    EXPECT_EQ(Demand(1, 2, 0, 0, 8, true), 0) << "half of one more is none";
    EXPECT_EQ(Demand(100, 200, 0, 0, 128), 127) << "at most";
}

TEST(ThreadDemand, MoreGoodMovesThanThreads) {
    EXPECT_EQ(Demand(4, 30, 6), 6) << "not more than there are good moves";
    EXPECT_EQ(Demand(4, 30, 20), 8);
    EXPECT_EQ(Demand(4, 30, 20, 0, 8, false, true), 12) << "against a single line checker three times as many";
    EXPECT_EQ(Demand(4, 30, 4), 0);
    EXPECT_EQ(Demand(90, 200, 200, 0, 8), 127) << "at most";
}

TEST(ThreadDemand, ForcingMovesRaiseTheGoodOnes) {
    EXPECT_EQ(Demand(4, 30, 3, 6), 5) << "3 + 2 * (6 - 3) / 3";
    EXPECT_EQ(Demand(4, 30, 3, 4), 0) << "2 / 3 is none";
    EXPECT_EQ(Demand(4, 30, 6, 5), 6) << "a lower count changes nothing";
}

TEST(ThreadDemand, ManyMovesWithoutAGoodOne) {
    EXPECT_EQ(Demand(4, 33, 0), 6);
    EXPECT_EQ(Demand(5, 41, 0), 7);
    EXPECT_EQ(Demand(4, 32, 0), 0);
    EXPECT_EQ(Demand(4, 33, 1), 0);
}

TEST(ThreadDemand, IsNeverTheNumberAskedFor) {
    for (const int threads : {1, 2, 3, 4, 5, 8, 16, 100, 126, 127, 128, 255})
        for (int moves = 1; moves < 218; ++moves)
            for (const int good : {0, 1, 2, 5, 40, 200})
                for (const int processors : {1, 2, 8, 256})
                    for (const bool bPawnsOnly : {false, true}) {
                        const int demand = Demand(threads, moves, good, 0, processors, bPawnsOnly);
                        ASSERT_TRUE(demand == 0 || (demand > threads && demand <= 127))
                            << threads << " threads, " << moves << " moves, " << good << " good: " << demand;
                    }
}

} // namespace
} // namespace quillon::test
