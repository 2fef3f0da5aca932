#include "cli/regress_report.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace quillon {

namespace {

using TRegressJson = nlohmann::ordered_json;

constexpr const char* kOnlyMirroredCopies = "only its mirrored copies are tested\n";

const char* RegressOutcomeName(ERegressionOutcome outcome) {
    switch (outcome) {
    case ERegressionOutcome::Passed:
        return "passed";
    case ERegressionOutcome::Failed:
        return "failed";
    case ERegressionOutcome::Solved:
        return "solved";
    case ERegressionOutcome::Doubtful:
        return "doubtful";
    case ERegressionOutcome::TimeLimit:
        return "time-limit";
    case ERegressionOutcome::Stopped:
        return "stopped";
    case ERegressionOutcome::Skipped:
        break;
    }
    return "skipped";
}

int& RegressCounterOf(TRegressTotals& totals, ERegressionOutcome outcome) {
    switch (outcome) {
    case ERegressionOutcome::Passed:
        return totals.m_nPassed;
    case ERegressionOutcome::Failed:
        return totals.m_nFailed;
    case ERegressionOutcome::Solved:
        return totals.m_nSolved;
    case ERegressionOutcome::Doubtful:
        return totals.m_nDoubtful;
    case ERegressionOutcome::TimeLimit:
        return totals.m_nTimeLimit;
    case ERegressionOutcome::Stopped:
        return totals.m_nStopped;
    case ERegressionOutcome::Skipped:
        break;
    }
    return totals.m_nSkipped;
}

std::string RegressJsonLine(const TRegressJson& object) {
    return object.dump(-1, ' ', false, TRegressJson::error_handler_t::replace) + "\n";
}

/// What the run has to tell, without a line end behind it.
std::string RegressTextOf(const TRegressionRun& run) {
    const bool bLeftOut = run.m_outcome == ERegressionOutcome::Skipped && run.m_lines.empty();
    const std::string text = bLeftOut ? kOnlyMirroredCopies : run.m_lines;
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

} // namespace

void CountRun(TRegressTotals& totals, const TRegressionRun& run) {
    ++RegressCounterOf(totals, run.m_outcome);
    totals.m_seconds += run.m_seconds;
    if (run.m_outcome != ERegressionOutcome::Skipped && run.m_outcome != ERegressionOutcome::Stopped)
        ++totals.m_nRuns;
}

std::string RunText(const TRegressionRun& run) {
    const std::string text = RegressTextOf(run);
    if (text.empty())
        return {};
    const bool bNamesProblem = text.front() == '[';
    const std::string copy = run.m_mirror == kAsGiven ? "" : " M" + std::to_string(run.m_mirror);
    return (bNamesProblem ? "" : "#" + std::to_string(run.m_nId) + copy + ": ") + text + "\n";
}

std::string RegressTotalsText(const TRegressTotals& totals) {
    char time[48];
    std::snprintf(time, sizeof time, "; %.1f s\n", totals.m_seconds);
    std::string text = std::to_string(totals.m_nProblems) + (totals.m_nProblems == 1 ? " problem, " : " problems, ") +
                       std::to_string(totals.m_nRuns) + (totals.m_nRuns == 1 ? " run: " : " runs: ") +
                       std::to_string(totals.m_nPassed) + " passed, " + std::to_string(totals.m_nFailed) + " failed, " +
                       std::to_string(totals.m_nSolved) + " solved";
    const auto add = [&text](int nCount, const char* what) {
        if (nCount > 0)
            text += ", " + std::to_string(nCount) + what;
    };
    add(totals.m_nDoubtful, " doubtful");
    add(totals.m_nTimeLimit, " at the time limit");
    add(totals.m_nStopped, " stopped");
    add(totals.m_nSkipped, " skipped");
    add(totals.m_nNotRun, " not run");
    return text + time;
}

std::string RunJson(const TRegressionRun& run) {
    TRegressJson object;
    object["id"] = run.m_nId;
    object["mirror"] = run.m_mirror;
    object["outcome"] = RegressOutcomeName(run.m_outcome);
    object["keys"] = run.m_keys;
    object["seconds"] = run.m_seconds;
    object["text"] = RegressTextOf(run);
    return RegressJsonLine(object);
}

std::string RegressTotalsJson(const TRegressTotals& totals) {
    TRegressJson object;
    object["problems"] = totals.m_nProblems;
    object["runs"] = totals.m_nRuns;
    object["passed"] = totals.m_nPassed;
    object["failed"] = totals.m_nFailed;
    object["solved"] = totals.m_nSolved;
    object["doubtful"] = totals.m_nDoubtful;
    object["timeLimit"] = totals.m_nTimeLimit;
    object["stopped"] = totals.m_nStopped;
    object["skipped"] = totals.m_nSkipped;
    object["notRun"] = totals.m_nNotRun;
    object["seconds"] = totals.m_seconds;
    return RegressJsonLine(object);
}

} // namespace quillon
