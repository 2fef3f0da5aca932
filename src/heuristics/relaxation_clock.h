#pragma once
// The time that decides whether a plan of passes gets a step more: how long the passes before it took.

#include <cstdint>

#include "search/analysis.h"

namespace quillon {

/// Forgets the stamps: a new solve, or a restart, begins.
///   Threads no other thread is in a plan.
void ClearRelaxationStamps(TAnalysis& analysis);

/// Milliseconds of the analysis' clock, which stands still in a pause (search/control.h), from the start of the solve
/// to the moment when its first thread reached this step. The first call stamps the step, all later ones tell the same,
/// so that every thread decides alike. Negative when the stamp is older than the start.
///   Threads any; the stamps are behind m_nRelaxationLock.
[[nodiscard]] std::int64_t MsUntilRelaxation(TAnalysis& analysis, std::uint8_t nRelaxations);

} // namespace quillon
