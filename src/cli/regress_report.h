#pragma once
// What `quillon regress` prints: the lines of the log as they come, or JSON, and the totals.

#include <string>

#include "app/regression_host.h"

namespace quillon {

/// Numbers of a regression run.
struct TRegressTotals {
    int m_nProblems = 0; // of the file, or of those asked for
    int m_nRuns = 0;     // that ended by themselves or at the time limit
    int m_nPassed = 0, m_nFailed = 0, m_nSolved = 0, m_nDoubtful = 0, m_nTimeLimit = 0;
    int m_nSkipped = 0; // problems
    int m_nStopped = 0; // runs that the user has stopped
    int m_nNotRun = 0;  // problems that the run had not come to by then
    double m_seconds = 0;
};

void CountRun(TRegressTotals& totals, const TRegressionRun& run);

/// What the log says of the run; where that does not name the problem, its number stands in front.
[[nodiscard]] std::string RunText(const TRegressionRun& run);
[[nodiscard]] std::string RegressTotalsText(const TRegressTotals& totals);

/// One object, on one line. The names of its fields are a contract.
[[nodiscard]] std::string RunJson(const TRegressionRun& run);
[[nodiscard]] std::string RegressTotalsJson(const TRegressTotals& totals);

} // namespace quillon
