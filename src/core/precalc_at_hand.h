#pragma once
// May precalculated data answer? Does this process have any at all: the makers ask after each capture, and most runs
// have none.

#include <atomic>
#include <cstdint>

namespace quillon {

/// Bit of m_wKingState, beside kPrecalcCanAnswer: a custom type of this material may prove a mate here. Such data are
/// never exact, so what the search does where exact lengths are at hand does not follow from it.
inline constexpr std::uint16_t kCustomDataMayMate = 0x1000;

/// Bit of m_wKingState, set in the root of a solve that is to do without precalculated data, whatever others of this
/// process use. It stays as long as the line does.
inline constexpr std::uint16_t kNoPrecalcData = 0x4000;

/// Written by globalregister alone, while nothing is being searched.
inline std::atomic<bool> g_bPrecalcDataAtHand{false};

[[nodiscard]] inline bool ArePrecalcDataAtHand() { return g_bPrecalcDataAtHand.load(std::memory_order_relaxed); }

} // namespace quillon
