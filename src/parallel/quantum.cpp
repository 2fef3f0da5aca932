#include "parallel/quantum.h"

#include <algorithm>
#include <array>

namespace quillon {

namespace {

/// Seconds of the first slot, of a late slot, and the factor for those between.
struct TShares {
    int m_nFirst, m_nLate, m_nFactor;
};

constexpr int kShareRows = 9;

/// By how many levels the node stands above the last one of the range: 8 ... 0. The late slots' are Fibonacci numbers.
constexpr std::array<TShares, kShareRows> kShares{{
    {83, 21, 2},
    {55, 13, 2},
    {35, 8, 2},
    {25, 5, 2},
    {21, 3, 2},
    {17, 2, 2},
    {11, 1, 3},
    {5, 0, 7},
    {3, -1, 10},
}};
static_assert(kShareRows == kMostSchedulerLevels);

constexpr int kUnitsPerSecond = 10;

bool IsInRange(const TSlotTimes& times) { return times.m_nLevel <= times.m_nSchedulerLevels; }

/// At or beyond the moves that were sorted among the best and the first that is still open.
bool IsLate(const TSlotTimes& times, int slot) { return slot >= times.m_nCustomFrom && slot >= FirstOpenSlot(times); }

TShares SharesOf(const TSlotTimes& times, int slot) {
    if (!IsInRange(times))
        return {6, slot >= FirstOpenSlot(times) && OpenSlots(times) >= 2 ? -1 : 2, 1};
    const int row = kShareRows - 1 - (times.m_nSchedulerLevels - times.m_nLevel);
    return kShares[static_cast<std::size_t>(std::clamp(row, 0, kShareRows - 1))];
}

/// Every open slot has had so much: from then on each may run to its end.
std::uint32_t EnoughUnits(const TSlotTimes& times) {
    return static_cast<std::uint32_t>(SharesOf(times, 0).m_nFirst * kUnitsPerSecond);
}

std::uint32_t LeastTime(const TSlotTimes& times) {
    std::uint32_t least = UINT32_MAX;
    for (const TSlotTimes::TSlot& slot : times.m_slots)
        if (slot.m_bOpen)
            least = std::min(least, slot.m_nTime);
    return least;
}

} // namespace

int FirstOpenSlot(const TSlotTimes& times) {
    const auto open = std::ranges::find(times.m_slots, true, &TSlotTimes::TSlot::m_bOpen);
    return open == times.m_slots.end() ? -1 : static_cast<int>(open - times.m_slots.begin());
}

int OpenSlots(const TSlotTimes& times) {
    return static_cast<int>(std::ranges::count(times.m_slots, true, &TSlotTimes::TSlot::m_bOpen));
}

int Quantum(const TSlotTimes& times, int slot) {
    const int firstOpen = FirstOpenSlot(times);
    const TShares shares = SharesOf(times, slot);
    if (slot == 0 || OpenSlots(times) <= 1 || firstOpen < 0 || firstOpen >= slot)
        return shares.m_nFirst;
    if (IsLate(times, slot))
        return shares.m_nLate;
    if (shares.m_nLate < 1)
        return shares.m_nLate == 0 ? 2 : 1;
    return shares.m_nFactor * shares.m_nLate;
}

int QuantumMs(int nQuantum, int nSecondMs) {
    if (nQuantum >= 1)
        return nQuantum * nSecondMs;
    return std::max((nQuantum == 0 ? 300 : 100) * nSecondMs / 1000, 1);
}

std::uint32_t QuantumUnits(int nQuantum) {
    if (nQuantum > 0)
        return static_cast<std::uint32_t>(nQuantum * kUnitsPerSecond);
    return nQuantum == 0 ? 3 : 1;
}

int NextSlotToResume(const TSlotTimes& times, bool bChecked) {
    int best = FirstOpenSlot(times);
    if (best < 0 || (bChecked && LeastTime(times) >= EnoughUnits(times)))
        return -1;
    const int first = best;
    std::uint64_t time = times.m_slots[static_cast<std::size_t>(best)].m_nTime;
    for (std::size_t i = static_cast<std::size_t>(best) + 1; i < times.m_slots.size(); ++i) {
        const TSlotTimes::TSlot& slot = times.m_slots[i];
        if (!slot.m_bOpen)
            continue;
        const int index = static_cast<int>(i);
        const int weight = index - first + (IsLate(times, index) ? 4 : 2);
        if (time <= std::uint64_t{slot.m_nTime} * static_cast<std::uint64_t>(weight))
            break;
        best = index;
        time = slot.m_nTime;
    }
    return best;
}

} // namespace quillon
