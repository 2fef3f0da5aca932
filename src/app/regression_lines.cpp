#include "app/regression_lines.h"

#include <algorithm>
#include <cmath>

#include "app/expected_answer.h"
#include "library/one_line.h"

namespace quillon {

namespace {

constexpr const char* kNoSolution = "No solution";
constexpr const char* kNothingCompared = ": the order of White's moves was not compared (no position was sorted).\n";

bool Has(const ChessProblem& problem, ProblemFlags flags) { return (problem.flags & flags) != 0; }

/// "#7 M1", "#7".
std::string NumberText(const TRunName& name) {
    const std::string suffix = name.m_mirror == kAsGiven ? "" : " M" + std::to_string(name.m_mirror);
    return "#" + std::to_string(name.m_nId) + suffix;
}

std::string TestText(const TRunName& name) { return "[" + name.m_mode + "] Test " + NumberText(name); }

std::string TimeText(const TSolvingResult& result) {
    return " (" + std::to_string(std::llround(result.m_seconds * 1000)) + " msec)";
}

std::string OkText(const TRunName& name, const TSolvingResult& result) {
    return TestText(name) + " ok" + TimeText(result);
}

std::string SolutionsLine(const TRunName& name, const TSolvingResult& result) {
    std::string keys;
    for (const TSolution& key : result.m_solutions)
        keys += (keys.empty() ? "" : ", ") + key.m_text;
    return "[" + name.m_mode + "] Prob." + NumberText(name) + " " + (keys.empty() ? kNoSolution : keys) +
           TimeText(result) + ".\n";
}

std::string MoveLines(const std::vector<TMove>& moves, const TChessboard& board) {
    std::string lines;
    for (const TMove& move : moves)
        lines += ExpectedMoveText(move, board) + "\n";
    return lines;
}

std::string DifferenceLines(const TRunName& name, const ChessProblem& problem, const TSolvingResult& result) {
    std::vector<TMove> found;
    for (const TSolution& key : result.m_solutions)
        found.push_back(key.m_move);
    const TChessboard& board = *problem.originalPosition;
    return TestText(name) + " failed:\n\tfound:\n" + MoveLines(found, board) + "\tshould be:\n" +
           MoveLines(problem.answer, board);
}

TRunVerdict JudgeAnswer(const TRunName& name, const ChessProblem& problem, const TSolvingResult& result) {
    if (!AreKeysAsExpected(result.m_solutions, problem.answer))
        return {ERegressionOutcome::Failed, DifferenceLines(name, problem, result)};
    const bool bDoubtful =
        result.m_verdict == EVerdict::Doubtful; // no key was to be found, and none is proved not to be
    return {bDoubtful ? ERegressionOutcome::Doubtful : ERegressionOutcome::Passed, OkText(name, result) + ".\n"};
}

TRunVerdict JudgeOrderAlone(const TRunName& name, const TSolvingResult& result) {
    if (!result.m_bExpectedWhiteMovesCompared)
        return {ERegressionOutcome::Doubtful, TestText(name) + kNothingCompared};
    return {ERegressionOutcome::Passed, OkText(name, result) + " - ExpectedSortWhiteMovesOnly.\n"};
}

TRunVerdict JudgeStopped(ESolveEnd end, int nLimitSeconds) {
    if (end == ESolveEnd::User)
        return {ERegressionOutcome::Stopped, ""};
    return {ERegressionOutcome::TimeLimit, "Solving time limit hit: " + std::to_string(nLimitSeconds) + " seconds\n"};
}

} // namespace

std::string RunModeText(const TSolveRequest& request) {
    if (request.m_bBruteForce)
        return "Brute force";
    std::string threads = "Threads = " + std::to_string(request.m_nThreads);
    if (request.m_nThreads > 1 && request.m_nMultithreadingLevels > 1)
        threads += "^" + std::to_string(request.m_nMultithreadingLevels);
    if (request.m_nSchedulerLevels > 0)
        threads += ", Scheduler levels = " + std::to_string(request.m_nSchedulerLevels);
    return threads + (request.m_bSafeMode ? ", Safe mode" : ", Quick mode") +
           (request.m_bHybrid ? ", Hybrid brute force" : "");
}

std::string RunModeText(const ChessProblem& problem) {
    TSolveRequest request;
    request.m_nThreads = std::max<int>(problem.threads, 1);
    request.m_nMultithreadingLevels = std::max<int>(problem.levels, 1);
    request.m_nSchedulerLevels = std::max<int>(problem.schedulerLevels, 0);
    request.m_bSafeMode = Has(problem, kFlagSafeMode);
    request.m_bHybrid = Has(problem, kFlagHybridBruteForce);
    request.m_bBruteForce = Has(problem, kFlagBruteForce);
    return RunModeText(request);
}

TRunVerdict JudgeRun(const TRunName& name, const ChessProblem& problem, const TSolvingResult& result, ESolveEnd end,
                     int nLimitSeconds) {
    if (const std::string fault = ExpectedSortWhiteMovesCheck(problem); !fault.empty())
        return {ERegressionOutcome::Failed, FailureLine(name, fault)};
    if (result.m_bStopped && end != ESolveEnd::Itself && !result.m_bStoppedByExpectation)
        return JudgeStopped(end, nLimitSeconds);
    if (Has(problem, kFlagExpectedSortWhiteMovesOnly))
        return JudgeOrderAlone(name, result);
    if (Has(problem, kFlagAnswer))
        return JudgeAnswer(name, problem, result);
    const bool bDoubtful = result.m_verdict == EVerdict::Doubtful;
    return {bDoubtful ? ERegressionOutcome::Doubtful : ERegressionOutcome::Solved, SolutionsLine(name, result)};
}

std::string FailureLine(const TRunName& name, std::string_view text) {
    return TestText(name) + " failed: " + OneLine(text) + "\n";
}

std::string BestDefenceLine(const TRunName& name, const ChessProblem& problem, const TSolvingResult& result) {
    if (!Has(problem, kFlagGuiCheckBestDefence | kFlagGuiCheck) || result.m_variant.empty())
        return {};
    const std::string checks = Has(problem, kFlagGuiCheck) ? "best defence and auxiliary mate" : "best defence";
    return TestText(name) + ": " + checks + " not checked (the analysis is not available).\n";
}

} // namespace quillon
