#pragma once
// How the scheduler divides time: which slot runs for how long, and which comes next.
//
//   1 A slot is a move of a scheduled node, in the order of the node's list; it is open from its beginning to its
//     end.
//   2 High in the tree the first move gets much time, near the end little; later moves get short slices, on a Fibonacci
//     row. Once all slots have had a share each may run to its end.

#include <cstdint>
#include <vector>

#include "search/analysis.h"

namespace quillon {

/// What the division of time looks at, for one scheduled node.
struct TSlotTimes {
    int m_nLevel = 1;           // the node's, 1 for the first one below the multithreading levels
    int m_nSchedulerLevels = 0; // 0..kMostSchedulerLevels; a deeper node is outside the range
    int m_nCustomFrom = 0;      // the moves before it were sorted among the best

    struct TSlot {
        bool m_bOpen = false;
        std::uint32_t m_nTime = 0; // had so far, in units of 100 ms
    };
    std::vector<TSlot> m_slots;
};

/// The first open slot, -1 for none.
[[nodiscard]] int FirstOpenSlot(const TSlotTimes& times);

/// Open slots.
[[nodiscard]] int OpenSlots(const TSlotTimes& times);

/// Seconds that `slot` may run before the next one gets its turn; 0 and below stand for less than one (QuantumMs).
[[nodiscard]] int Quantum(const TSlotTimes& times, int slot);

/// The length of a quantum, ms, at least 1, where a second lasts `nSecondMs`.
[[nodiscard]] int QuantumMs(int nQuantum, int nSecondMs = 1000);

/// What a slot that has used up a quantum is charged, in units of 100 ms.
[[nodiscard]] std::uint32_t QuantumUnits(int nQuantum);

/// The open slot to go on with: an earlier one unless it has had several times as much as a later one.
///   bChecked  asked to find out whether a switch is due: -1 once all open slots have had their share.
///   Returns   -1 for no switch, or when no slot is open.
[[nodiscard]] int NextSlotToResume(const TSlotTimes& times, bool bChecked);

} // namespace quillon
