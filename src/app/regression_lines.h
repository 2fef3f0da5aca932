#pragma once
// The lines of a regression's log, and the verdict on a run that they tell.

#include <cstdint>
#include <string>
#include <string_view>

#include "app/mirrored_problem.h"
#include "heuristics/solving_driver.h"
#include "library/chess_problem.h"

namespace quillon {

/// What came of a run.
enum class ERegressionOutcome {
    Passed,    // as the problem expects
    Failed,    // otherwise, or an error ended the solve
    Solved,    // the problem expects nothing
    Doubtful,  // nothing was found, as far as expected, and the passes ended without a proof; or the order of White's
               // moves is all that is expected, and the solve has sorted none of them
    TimeLimit, // stopped at the limit
    Stopped,   // stopped by the user; nothing is logged
    Skipped,   // not run: what the problem requires is not there
};

/// Who ended a solve.
enum class ESolveEnd { Itself, TimeLimit, User };

/// A run in the words of the log.
struct TRunName {
    std::string m_mode; // RunModeText
    std::int32_t m_nId = 0;
    TMirror m_mirror = kAsGiven;
};

struct TRunVerdict {
    ERegressionOutcome m_outcome = ERegressionOutcome::Stopped;
    std::string m_line; // of the log, with its line end; empty for none
};

/// Threads and heuristics of a run: "Threads = 4^2, Safe mode". Brute force has neither.
[[nodiscard]] std::string RunModeText(const TSolveRequest& request);

/// As far as the problem itself tells: for a run that has come to no request.
[[nodiscard]] std::string RunModeText(const ChessProblem& problem);

/// Behind a solve.
///   problem        as it was solved, mirrored or not, with the marks that the solve has left on its expected moves.
///   nLimitSeconds  the time limit, for the line that tells of it.
[[nodiscard]] TRunVerdict JudgeRun(const TRunName& name, const ChessProblem& problem, const TSolvingResult& result,
                                   ESolveEnd end, int nLimitSeconds);

/// "[...] Test #7 M1 failed: TEXT".
[[nodiscard]] std::string FailureLine(const TRunName& name, std::string_view text);

/// Tells that the analysis of Black's best defence, which the problem asks to be checked, was not; empty when it asks
/// for none or the run has no main line to check it with.
[[nodiscard]] std::string BestDefenceLine(const TRunName& name, const ChessProblem& problem,
                                          const TSolvingResult& result);

} // namespace quillon
