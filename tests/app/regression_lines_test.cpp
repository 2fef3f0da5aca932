#include "app/regression_lines.h"

#include <gtest/gtest.h>

#include "app/expected_answer.h"
#include "core/fen.h"

namespace quillon {
namespace {

constexpr TMove kKey{17, 10, 0, 0};   // Kb3-c2
constexpr TMove kOther{23, 63, 0, 0}; // Qh3-h8
const TRunName kName{"MODE", 7, kAsGiven};

ChessProblem Problem(ProblemFlags flags, std::vector<TMove> answer = {}) {
    ChessProblem problem;
    problem.flags = flags;
    problem.answer = std::move(answer);
    SetOriginalPosition(problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    return problem;
}

TSolvingResult Found(std::vector<TSolution> keys) {
    TSolvingResult result;
    result.m_verdict = keys.empty() ? EVerdict::NoMate : EVerdict::Mate;
    result.m_bComplete = true;
    result.m_solutions = std::move(keys);
    result.m_seconds = 1.234;
    return result;
}

const TSolution kFoundKey{kKey, "Kb3-c2", "2"};
const TSolution kFoundOther{kOther, "Qh3-h8", "2"};

TRunVerdict Judge(const ChessProblem& problem, const TSolvingResult& result, ESolveEnd end = ESolveEnd::Itself) {
    return JudgeRun(kName, problem, result, end, 64);
}

// ---- no answer is expected

TEST(RegressionLines, AProblemWithoutAnswerTellsItsSolutions) {
    const TRunVerdict verdict = Judge(Problem(0), Found({kFoundKey, kFoundOther}));
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Solved);
    EXPECT_EQ(verdict.m_line, "[MODE] Prob.#7 Kb3-c2, Qh3-h8 (1234 msec).\n");
}

TEST(RegressionLines, AProblemWithoutAnswerAndWithoutSolution) {
    const TRunVerdict verdict = Judge(Problem(0), Found({}));
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Solved);
    EXPECT_EQ(verdict.m_line, "[MODE] Prob.#7 No solution (1234 msec).\n");
}

TEST(RegressionLines, WholeMillisecondsAreToldAsTheyAre) {
    TSolvingResult result = Found({kFoundKey});
    for (int nMs = 1000; nMs < 1100; ++nMs) { // 1.001 is not a whole number of binary digits
        result.m_seconds = static_cast<double>(nMs) / 1000.0;
        EXPECT_EQ(Judge(Problem(0), result).m_line, "[MODE] Prob.#7 Kb3-c2 (" + std::to_string(nMs) + " msec).\n");
    }
}

TEST(RegressionLines, DoubtIsNoProof) {
    TSolvingResult result = Found({});
    result.m_verdict = EVerdict::Doubtful;
    EXPECT_EQ(Judge(Problem(0), result).m_outcome, ERegressionOutcome::Doubtful);
    EXPECT_EQ(Judge(Problem(kFlagAnswer), result).m_outcome, ERegressionOutcome::Doubtful);
}

TEST(RegressionLines, AMirroredCopyHasItsNumberBehindTheProblems) {
    const TRunName name{"MODE", -5, 3};
    EXPECT_EQ(JudgeRun(name, Problem(0), Found({kFoundKey}), ESolveEnd::Itself, 0).m_line,
              "[MODE] Prob.#-5 M3 Kb3-c2 (1234 msec).\n");
    EXPECT_EQ(JudgeRun(name, Problem(kFlagAnswer, {kKey}), Found({kFoundKey}), ESolveEnd::Itself, 0).m_line,
              "[MODE] Test #-5 M3 ok (1234 msec).\n");
}

// ---- an answer is expected

TEST(RegressionLines, TheExpectedKeysInAnyOrderAreOk) {
    const TRunVerdict verdict = Judge(Problem(kFlagAnswer, {kOther, kKey}), Found({kFoundKey, kFoundOther}));
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Passed);
    EXPECT_EQ(verdict.m_line, "[MODE] Test #7 ok (1234 msec).\n");
    EXPECT_EQ(Judge(Problem(kFlagAnswer), Found({})).m_outcome, ERegressionOutcome::Passed);
}

TEST(RegressionLines, OtherKeysFailWithBothLists) {
    const TRunVerdict verdict = Judge(Problem(kFlagAnswer, {kKey, {200, 3, 0, 0}}), Found({kFoundOther}));
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Failed);
    EXPECT_EQ(verdict.m_line, "[MODE] Test #7 failed:\n\tfound:\nQh3-h8\n\tshould be:\nKb3-c2\n"
                              "a move beyond the board\n");
}

TEST(RegressionLines, AKeyTooManyOrTooFewFails) {
    EXPECT_EQ(Judge(Problem(kFlagAnswer, {kKey}), Found({kFoundKey, kFoundOther})).m_outcome,
              ERegressionOutcome::Failed);
    EXPECT_EQ(Judge(Problem(kFlagAnswer, {kKey, kOther}), Found({kFoundKey})).m_outcome, ERegressionOutcome::Failed);
    EXPECT_EQ(Judge(Problem(kFlagAnswer), Found({kFoundKey})).m_line,
              "[MODE] Test #7 failed:\n\tfound:\nKb3-c2\n\tshould be:\n");
    EXPECT_EQ(Judge(Problem(kFlagAnswer, {kKey}), Found({})).m_line,
              "[MODE] Test #7 failed:\n\tfound:\n\tshould be:\nKb3-c2\n");
}

TEST(RegressionLines, APromotionWithoutAFigureIsToAQueen) {
    const TSolution queen{{48, 56, kQueen, 0}, "a7-a8Q", "2"}, knight{{48, 56, kKnight, 0}, "a7-a8N", "2"};
    EXPECT_TRUE(AreKeysAsExpected({queen}, {{48, 56, 0, 0}}));
    EXPECT_FALSE(AreKeysAsExpected({knight}, {{48, 56, 0, 0}}));
    EXPECT_FALSE(AreKeysAsExpected({queen, knight}, {{48, 56, 0, 0}}));
}

// ---- an order of White's moves is expected

constexpr ProblemFlags kOnly = kFlagExpectedSortWhiteMoves | kFlagExpectedSortWhiteMovesOnly;

TSolvingResult StoppedByExpectation() {
    TSolvingResult result = Found({});
    result.m_verdict = EVerdict::Stopped;
    result.m_bStopped = result.m_bStoppedByExpectation = result.m_bExpectedWhiteMovesCompared = true;
    return result;
}

TEST(RegressionLines, TheOrdinalOfTheFirstMoveThatDiffers) {
    ChessProblem problem = Problem(kFlagExpectedSortWhiteMoves);
    EXPECT_EQ(ExpectedSortWhiteMovesCheck(problem), "");
    problem.expectedWhiteMoves = {kKey, kOther, kKey};
    EXPECT_EQ(ExpectedSortWhiteMovesCheck(problem), "");
    problem.expectedWhiteMoves[2] = {17 + 64, 10 + 64, 0, 0};
    EXPECT_EQ(ExpectedSortWhiteMovesCheck(problem), "ExpectedSortWhiteMoves failed: move 3");
    problem.expectedWhiteMoves[1] = {23 + 64, 63 + 64, 0, 0};
    EXPECT_EQ(ExpectedSortWhiteMovesCheck(problem), "ExpectedSortWhiteMoves failed: move 2");
}

TEST(RegressionLines, AMoveThatWasNotSortedFirstFailsWhateverElseIsExpected) {
    ChessProblem problem = Problem(kFlagExpectedSortWhiteMoves | kFlagAnswer, {kKey});
    problem.expectedWhiteMoves = {{17 + 64, 10 + 64, 0, 0}};
    const TRunVerdict verdict = Judge(problem, StoppedByExpectation());
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Failed);
    EXPECT_EQ(verdict.m_line, "[MODE] Test #7 failed: ExpectedSortWhiteMoves failed: move 1\n");
    EXPECT_EQ(Judge(problem, Found({kFoundKey}), ESolveEnd::TimeLimit).m_line, verdict.m_line);
}

TEST(RegressionLines, ARunForTheOrderAlone) {
    ChessProblem problem = Problem(kOnly);
    problem.expectedWhiteMoves = {kKey};
    const TRunVerdict verdict = Judge(problem, StoppedByExpectation());
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Passed);
    EXPECT_EQ(verdict.m_line, "[MODE] Test #7 ok (1234 msec) - ExpectedSortWhiteMovesOnly.\n");
}

TEST(RegressionLines, AnOrderThatWasNotComparedIsNoPass) {
    ChessProblem problem = Problem(kOnly);
    problem.expectedWhiteMoves = {kKey};
    const TRunVerdict verdict = Judge(problem, Found({kFoundKey}));
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Doubtful);
    EXPECT_EQ(verdict.m_line,
              "[MODE] Test #7: the order of White's moves was not compared (no position was sorted).\n");
}

TEST(RegressionLines, WithTheOrderAsExpectedTheSolutionsAreTold) {
    ChessProblem problem = Problem(kFlagExpectedSortWhiteMoves);
    problem.expectedWhiteMoves = {kKey};
    EXPECT_EQ(Judge(problem, Found({kFoundKey})).m_line, "[MODE] Prob.#7 Kb3-c2 (1234 msec).\n");
}

// ---- ended early

TSolvingResult Stopped(std::vector<TSolution> keys) {
    TSolvingResult result = Found(std::move(keys));
    result.m_bStopped = true;
    result.m_bComplete = false;
    return result;
}

TEST(RegressionLines, TheTimeLimitIsToldInsteadOfAVerdict) {
    for (const auto& keys : {std::vector<TSolution>{}, {kFoundOther}}) {
        const TRunVerdict verdict = Judge(Problem(kFlagAnswer, {kKey}), Stopped(keys), ESolveEnd::TimeLimit);
        EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::TimeLimit);
        EXPECT_EQ(verdict.m_line, "Solving time limit hit: 64 seconds\n");
    }
}

TEST(RegressionLines, AStopOfTheUserLeavesNoLine) {
    const TRunVerdict verdict = Judge(Problem(kFlagAnswer, {kKey}), Stopped({kFoundOther}), ESolveEnd::User);
    EXPECT_EQ(verdict.m_outcome, ERegressionOutcome::Stopped);
    EXPECT_EQ(verdict.m_line, "");
}

TEST(RegressionLines, ALimitThatCameWithTheEndChangesNothing) {
    EXPECT_EQ(Judge(Problem(kFlagAnswer, {kKey}), Found({kFoundKey}), ESolveEnd::TimeLimit).m_outcome,
              ERegressionOutcome::Passed);
}

TEST(RegressionLines, AnErrorStaysOnItsLine) {
    EXPECT_EQ(FailureLine(kName, "bad\nset"), "[MODE] Test #7 failed: bad set\n");
}

// ---- best defence

TEST(RegressionLines, BestDefenceIsToldAsNotCheckedWhereThereIsALineToCheck) {
    TSolvingResult result = Found({kFoundKey});
    EXPECT_EQ(BestDefenceLine(kName, Problem(kFlagGuiCheck), result), "") << "no main line";
    result.m_variant = {"Kb3-c2", "Ka1-a2"};
    EXPECT_EQ(BestDefenceLine(kName, Problem(0), result), "");
    EXPECT_EQ(BestDefenceLine(kName, Problem(kFlagGuiCheckBestDefence), result),
              "[MODE] Test #7: best defence not checked (the analysis is not available).\n");
    EXPECT_EQ(BestDefenceLine(kName, Problem(kFlagGuiCheck), result),
              "[MODE] Test #7: best defence and auxiliary mate not checked (the analysis is not available).\n");
}

// ---- the first field

TEST(RegressionLines, TheModeOfARun) {
    TSolveRequest request;
    EXPECT_EQ(RunModeText(request), "Threads = 1, Quick mode");
    request.m_nMultithreadingLevels = 2;
    EXPECT_EQ(RunModeText(request), "Threads = 1, Quick mode") << "levels are of several threads";
    request.m_nThreads = 4;
    request.m_bSafeMode = true;
    EXPECT_EQ(RunModeText(request), "Threads = 4^2, Safe mode");
    request.m_nSchedulerLevels = 3;
    request.m_bHybrid = true;
    EXPECT_EQ(RunModeText(request), "Threads = 4^2, Scheduler levels = 3, Safe mode, Hybrid brute force");
    request.m_bBruteForce = true;
    EXPECT_EQ(RunModeText(request), "Brute force");
}

TEST(RegressionLines, TheModeOfAProblemThatHasNoRequest) {
    ChessProblem problem = Problem(kFlagSafeMode);
    EXPECT_EQ(RunModeText(problem), "Threads = 1, Safe mode");
    problem.threads = 4;
    problem.levels = 2;
    problem.schedulerLevels = 3;
    problem.flags = kFlagHybridBruteForce;
    EXPECT_EQ(RunModeText(problem), "Threads = 4^2, Scheduler levels = 3, Quick mode, Hybrid brute force");
    problem.flags = kFlagBruteForce;
    EXPECT_EQ(RunModeText(problem), "Brute force");
}

} // namespace
} // namespace quillon
