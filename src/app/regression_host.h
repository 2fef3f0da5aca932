#pragma once
// What the regression run asks of the program around it: a window, the command line, a test.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/regression_lines.h"
#include "core/notifier.h"
#include "heuristics/solving_driver.h"
#include "library/problem_model.h"

namespace quillon {

/// What came of a run, for who shows it.
struct TRegressionRun {
    std::int32_t m_nId = 0;
    TMirror m_mirror = kAsGiven;
    ERegressionOutcome m_outcome = ERegressionOutcome::Skipped;
    std::vector<std::string> m_keys; // found, in long notation of the copy
    double m_seconds = 0;
    std::string m_lines;   // of the log; empty for a run that the user has stopped, and one that was not to be
    bool m_bLogged = true; // they have reached the log
};

/// Threads: AskYesNoCancel and IsSolving on the thread that starts the run, the rest on the threads of the run, one
/// call
///          at a time.
class IRegressionHost : public INotifier {
  public:
    [[nodiscard]] virtual EAnswer AskYesNoCancel(std::string_view text, std::string_view title) = 0;

    /// Is a search for mate running or waiting?
    [[nodiscard]] virtual bool IsSolving() const = 0;

    /// The open library. It stays as it is while the run lasts.
    [[nodiscard]] virtual const TProblemMap& Library() const = 0;

    /// Navigates to the problem as the user would, and returns when it is shown.
    virtual void ShowProblem(std::int32_t id) = 0;

    /// The run options of the problem, or of a mirrored copy of it.
    ///   Errors  ChessException: it cannot be solved.
    [[nodiscard]] virtual TSolveRequest MakeRequest(const ChessProblem& problem) = 0;

    /// A run has ended, or a problem is left out. In the order of the log.
    virtual void RunEnded(const TRegressionRun& run) = 0;

    /// The whole run has ended.
    virtual void RegressionEnded() = 0;
};

} // namespace quillon
