// The sample library under random heuristic sets, and its long answers replayed against every defence.

#include <gtest/gtest.h>

#include "heuristics/judged_solve.h"
#include "heuristics/product_oracle.h"
#include "library/sample_proofs.h"

namespace quillon::sample_proofs {
namespace {

using namespace quillon::test;

constexpr int kLongestUnderSets = 6; // all keys without the guide take long beyond
constexpr int kLongestInOnePass = 9;
constexpr int kShortestVerified = 5;

TJudgedProblem ProblemOf(const TSample& sample) { return {sample.m_fen, sample.m_nStipulation, sample.m_keys}; }

TEST(SampleSoundness, RandomSetsProveNothingFalse) {
    std::mt19937_64 rng(9001);
    CJudge judge;
    for (const TSample& sample : quillon::sample_proofs::Samples())
        if (sample.m_nStipulation <= kLongestUnderSets)
            SolveWithRandomSets(judge, rng, ProblemOf(sample), 5);
    EXPECT_GT(judge.Tally().m_nMissed, 50) << testing::PrintToString(judge.Tally());
    EXPECT_GT(judge.Tally().m_nHits, 1000u) << testing::PrintToString(judge.Tally());
}

/// With one move less there is no mate: whatever is in force, none may be found.
TEST(SampleSoundness, RandomSetsFindNoMateInAMoveLess) {
    std::mt19937_64 rng(9002);
    CJudge judge;
    for (const TSample& sample : quillon::sample_proofs::Samples())
        if (sample.m_nStipulation > 2 && sample.m_nStipulation <= kLongestUnderSets)
            SolveWithRandomSets(judge, rng, {sample.m_fen, sample.m_nStipulation - 1, {}}, 4);
    EXPECT_GT(judge.Tally().m_nNoMate, 50) << testing::PrintToString(judge.Tally());
    EXPECT_GT(judge.Tally().m_nDoubtful, 10) << testing::PrintToString(judge.Tally());
}

/// The checks that need many plies only come up in long problems, which one pass with a set is done with soon.
TEST(SampleSoundness, OnePassProvesNothingFalseOfLongProblems) {
    std::mt19937_64 rng(9003);
    CJudge judge;
    for (const TSample& sample : quillon::sample_proofs::Samples()) {
        if (sample.m_nStipulation <= kLongestUnderSets || sample.m_nStipulation > kLongestInOnePass)
            continue;
        const TJudgedProblem problem = ProblemOf(sample);
        for (int i = 0; i < 16; ++i) {
            TSolveRequest request = RequestFor(problem, ESolveMode::FirstSolution);
            request.m_bRunPass2 = request.m_bLetRelaxHeuristics = false;
            request.m_bSafeMode = i % 2 != 0;
            const TRandomSet set = RandomSet(rng, request.m_board);
            judge.SolveUnguided(problem, request, &set);
        }
    }
    EXPECT_GT(judge.Tally().m_nMate, 50) << testing::PrintToString(judge.Tally());
    EXPECT_GT(judge.Tally().m_nMissed, 50) << testing::PrintToString(judge.Tally());
}

TEST(SampleSoundness, OwnChoiceFindsTheKeysOfBruteForce) {
    CJudge judge;
    for (const TSample& sample : quillon::sample_proofs::Samples()) {
        if (sample.m_nStipulation < 4 || sample.m_nStipulation > kLongestUnderSets)
            continue;
        const TJudgedProblem problem = ProblemOf(sample);
        for (const ESolveMode mode : {ESolveMode::FirstSolution, ESolveMode::AllSolutions}) {
            TSolveRequest request = RequestFor(problem, mode);
            judge.Solve(problem, request);
            judge.SolveUnguided(problem, request, nullptr);
            request.m_bBruteForce = true;
            judge.Solve(problem, request);
        }
    }
    EXPECT_GT(judge.Tally().m_nGuided, 50u) << testing::PrintToString(judge.Tally());
}

/// The best-first proof need not find a mate, but where it does its moves carry most of the way.
TEST(SampleSoundness, LongAnswersStandAgainstEveryDefence) {
    constexpr std::uint64_t kMostPositions = 20'000, kGuideNodes = 300'000;
    int guided = 0, suggested = 0, longest = 0;
    for (const TSample& sample : quillon::sample_proofs::Samples()) {
        if (sample.m_nStipulation < kShortestVerified)
            continue;
        CProductOracle oracle(sample.m_fen, sample.m_nStipulation);
        guided += oracle.Guide(kGuideNodes);
        for (const std::string& key : sample.m_keys) {
            const reference::ProofReport report = reference::VerifyMate(
                reference::ProblemFromFen(sample.m_fen), sample.m_nStipulation, key, std::ref(oracle), kMostPositions);
            EXPECT_EQ(report.fault, "") << "problem " << sample.m_nId << ' ' << sample.m_fen << ' ' << key;
        }
        suggested += oracle.Suggested();
        longest = std::max(longest, sample.m_nStipulation);
    }
    EXPECT_GT(guided, 60);
    EXPECT_GT(suggested, 1000);
    EXPECT_GE(longest, 30);
}

} // namespace
} // namespace quillon::sample_proofs
