// Whatever set of heuristics is in force: what is told as a mate is one, and what is told as none is none.

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"
#include "heuristics/judged_solve.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

TEST(RandomSets, ProveNothingFalseInThree) {
    ExpectAllVerdicts(SolveRandomProblems(7003, {3, 4, Samples(30), 6, 20'000}));
}

TEST(RandomSets, ProveNothingFalseInFour) {
    ExpectAllVerdicts(SolveRandomProblems(7004, {4, 3, Samples(10), 10, 20'000}));
}

TEST(RandomSets, ProveNothingFalseOfComposedPositions) {
    std::mt19937_64 rng(7010);
    CJudge judge;
    for (const TComposedPosition& row : ComposedPositions())
        SolveWithRandomSets(judge, rng, {row.m_placement, row.m_nMoves, {row.m_key}}, 2);
    const TJudgedTally& tally = judge.Tally();
    EXPECT_GT(tally.m_nMissed, 5) << testing::PrintToString(tally);
    EXPECT_GT(tally.m_nHits, 100u) << testing::PrintToString(tally);
}

/// The queen to come mates in ten moves. No white move gives check, so the quick test after them doubts them all, and
/// nothing else does.
TEST(RandomSets, ADoubtOfAllWhiteMovesIsNoRefutation) {
    CHeuristicLine line("8/P7/4k3/8/8/8/8/K7", 21, SH_KEEPKINGONTHEEDGE);
    CRecordingRegister known;
    line.Analysis().m_pRegister = &known;
    EXPECT_EQ(line.Verdict(), MR_DOUBTFUL);
    ASSERT_FALSE(known.m_stored.empty());
    EXPECT_EQ(known.m_stored.back().m_nPlies, 21);
    EXPECT_EQ(known.m_stored.back().m_nVerdict, MR_DOUBTFUL);
}

} // namespace
} // namespace quillon::test
