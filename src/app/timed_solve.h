#pragma once
// A solve that nobody watches, on a thread of its own, up to a time limit.

#include <atomic>

#include "app/regression_lines.h"
#include "core/notifier.h"
#include "heuristics/solving_driver.h"

namespace quillon {

struct TTimedResult {
    TSolvingResult m_result;
    ESolveEnd m_end = ESolveEnd::Itself; // what was asked to stop the solve; it may have ended just before
};

/// Runs the solve to its end; no thread is left when it returns.
///   nLimitSeconds  0: none. The time in which the process stood still does not count.
///   bMayRun        cleared by another thread it stops the solve.
///   Errors         what StartSolving throws; std::system_error when there is no thread.
[[nodiscard]] TTimedResult SolveInTime(const TSolveRequest& request, INotifier& notifier, int nLimitSeconds,
                                       const std::atomic<bool>& bMayRun);

} // namespace quillon
