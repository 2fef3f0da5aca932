// Random sets on more problems and longer ones, up to those in which the register takes part.

#include <gtest/gtest.h>

#include "heuristics/judged_solve.h"

namespace quillon::test {
namespace {

TEST(RandomSetsSlow, ProveNothingFalseInTwo) {
    const TJudgedTally tally = SolveRandomProblems(8002, {2, 4, Samples(600), 4, 20'000});
    EXPECT_GT(tally.m_nMate, tally.m_nSolves / 10) << testing::PrintToString(tally);
    EXPECT_GT(tally.m_nNoMate, tally.m_nSolves / 50) << testing::PrintToString(tally);
}

TEST(RandomSetsSlow, ProveNothingFalseInThree) {
    ExpectAllVerdicts(SolveRandomProblems(8003, {3, 4, Samples(300), 10, 50'000}));
}

TEST(RandomSetsSlow, ProveNothingFalseInFour) {
    ExpectAllVerdicts(SolveRandomProblems(8004, {4, 3, Samples(80), 16, 50'000}));
}

TEST(RandomSetsSlow, ProveNothingFalseInFive) {
    ExpectAllVerdicts(SolveRandomProblems(8005, {5, 3, Samples(30), 20, 60'000}));
}

TEST(RandomSetsSlow, ProveNothingFalseThroughTheRegister) {
    const TJudgedTally tally = SolveRandomProblems(8006, {6, 3, Samples(20), 20, 100'000});
    ExpectAllVerdicts(tally);
    EXPECT_GT(tally.m_nHits, 1000u) << testing::PrintToString(tally);
}

} // namespace
} // namespace quillon::test
