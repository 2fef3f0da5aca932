#pragma once
// A solve under watch: on a thread of its own, while the caller's thread shows the progress, obeys the user's signals
// and ends it in time.

#include <functional>
#include <optional>

#include "cli/progress_line.h"
#include "cli/user_signals.h"
#include "heuristics/solving_driver.h"

namespace quillon {

enum class EStopCause { None, TimeLimit, Interrupt };

struct TWatchedResult {
    TSolvingResult m_result;
    TPlanReport m_plan;                    // as it was before the first pass
    EStopCause m_cause = EStopCause::None; // what was asked to stop the solve; it may have ended just before
};

/// Runs the solve to its end; no thread is left when it returns.
///   secondsLimit  stops the solve when it has run so long, pauses not counted.
///   planSink      hears of the plan before the first pass, on the solving thread; may be empty.
///   Suspends pause all threads and then stop the process; they go on when it is continued. A process that cannot be
///   stopped stays in the pause until SIGCONT or a second suspend. Reports write the progress state to standard error,
///   whether the line is shown or not.
///   Errors        what StartSolving throws; std::system_error when there is no thread.
[[nodiscard]] TWatchedResult SolveWatched(const TSolveRequest& request, CProgressLine& line,
                                          std::optional<double> secondsLimit, TUserSignals& signals,
                                          const std::function<void(const TPlanReport&)>& planSink = {});

} // namespace quillon
