// Names of passes, and the plan as long as no rule chooses or drops a heuristic.

#include "heuristics/pass_plan.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

TEST(PassName, CountsRelaxationsByLetters) {
    EXPECT_EQ(PassName(1, 0), "1");
    EXPECT_EQ(PassName(1, 1), "1b");
    EXPECT_EQ(PassName(1, 2), "1c");
    EXPECT_EQ(PassName(1, 25), "1z");
    EXPECT_EQ(PassName(2, 0), "2");
    EXPECT_EQ(PassName(2, 7), "2") << "the pass without heuristics is one";
    EXPECT_NE(PassName(1, 26), PassName(1, 27));
}

TEST(PassPlan, InitialAnalysisStartsFromResetParameters) {
    CSearchedPosition position("7k/8/6K1/8/8/8/8/1Q6", 9);
    position.Context().m_nRelaxations = 3;
    position.Context().m_nRelaxCaptures = 3;
    const TInitialAnalysis initial = AnalyseInitialPosition(position.Root());
    EXPECT_EQ(initial.m_nHeuristics, 0u);
    EXPECT_TRUE(initial.m_solvedMoves.empty());
    EXPECT_EQ(position.Context().m_nRelaxations, 0);
    EXPECT_EQ(position.Context().m_nRelaxCaptures, 0);
}

TEST(PassPlan, RelaxationsCountedAreThoseThatSucceed) {
    CSearchedPosition position("7k/8/6K1/8/8/8/8/1Q6", 9);
    const int counted = CountRelaxations(position.Root());
    int made = 0;
    while (TryRelaxSpecialHeuristics(position.Root()))
        ++made;
    EXPECT_EQ(counted, made);
}

} // namespace
} // namespace quillon::test
