#pragma once
// Does this process have precalculated data at all? The makers ask after each capture, and most runs have none.

#include <atomic>

namespace quillon {

/// Written by globalregister alone, while nothing is being searched.
inline std::atomic<bool> g_bPrecalcDataAtHand{false};

[[nodiscard]] inline bool ArePrecalcDataAtHand() { return g_bPrecalcDataAtHand.load(std::memory_order_relaxed); }

} // namespace quillon
