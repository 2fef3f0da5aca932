#pragma once
// One step of the plan of passes, as its rules see it.

#include <cstdint>

#include "core/search_context.h"
#include "heuristics/material.h"

namespace quillon {

/// What a rule says.
enum class ERelaxation {
    NotMine,  // the next rule
    Done,     // the step is made; there is a next pass unless the mask is empty now
    NextPass, // the step is made, and there is a next pass whatever the mask
    ByClock,  // as Done; it was made because the passes so far were quick
};

/// Where a rule that depends on the clock gets the time from.
enum class ERelaxationClock {
    Stamp,       // of this step: the first thread to reach it looks at the clock
    AlwaysQuick, // a list of what may happen
    NeverQuick,  // a count of what will happen
};

struct TRelaxation {
    TChessboard& m_board;               // odd plies left; mask and marks are written
    THeuristicParameters& m_parameters; // of the board's context
    bool& m_bSafeMode;
    ERelaxationClock m_clock;
    bool m_bFiguresCameBack = false; // the watched figures were parked during the last pass

    [[nodiscard]] bool Has(std::uint32_t bit) const { return (m_board.m_nHeuristics & bit) != 0; }
    void Set(std::uint32_t bits) { m_board.m_nHeuristics |= bits; }
    void TakeOff(std::uint32_t bits) { m_board.m_nHeuristics &= ~bits; }
};

/// Takes the bit off if it is set.
[[nodiscard]] inline ERelaxation TakeOffIfSet(TRelaxation& r, std::uint32_t bit) {
    if (!r.Has(bit))
        return ERelaxation::NotMine;
    r.TakeOff(bit);
    return ERelaxation::Done;
}

} // namespace quillon
