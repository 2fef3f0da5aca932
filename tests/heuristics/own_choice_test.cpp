// The engine's own choice of heuristics, the guided passes and brute force: three ways to one answer.

#include <gtest/gtest.h>

#include "heuristics/judged_solve.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

void SolveInAllWays(CJudge& judge, const TJudgedProblem& problem) {
    for (const ESolveMode mode : {ESolveMode::FirstSolution, ESolveMode::AllSolutions}) {
        TSolveRequest request = RequestFor(problem, mode);
        judge.Solve(problem, request);
        judge.SolveUnguided(problem, request, nullptr);
        request.m_bRunPass2 = false;
        judge.Solve(problem, request);
        request.m_bRunPass2 = request.m_bBruteForce = true;
        judge.Solve(problem, request);
    }
}

TEST(OwnChoice, SolvesComposedPositionsLikeBruteForce) {
    CJudge judge;
    for (const TComposedPosition& row : ComposedPositions())
        if (row.m_nMoves >= 4)
            SolveInAllWays(judge, {row.m_placement, row.m_nMoves, {row.m_key}});
    EXPECT_GT(judge.Tally().m_nGuided, 50u) << testing::PrintToString(judge.Tally());
    EXPECT_GT(judge.Tally().m_nHits, 0u) << testing::PrintToString(judge.Tally());
}

TEST(OwnChoice, SolvesRandomProblemsLikeBruteForce) {
    std::mt19937_64 rng(7030);
    CJudge judge;
    for (int i = 0; i < Samples(8); ++i)
        SolveInAllWays(judge, RandomProblem(rng, 4, 3, 20'000));
    EXPECT_GT(judge.Tally().m_nMate, 10) << testing::PrintToString(judge.Tally());
    EXPECT_GT(judge.Tally().m_nNoMate, 3) << testing::PrintToString(judge.Tally());
}

} // namespace
} // namespace quillon::test
