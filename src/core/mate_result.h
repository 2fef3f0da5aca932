#pragma once
// TMateResult: what a search function, a sort or a register says about a position.

#include <cstdint>

namespace quillon {

/// A signed byte; values below MR_FFM_END do not occur.
using TMateResult = std::int8_t;

inline constexpr TMateResult MR_MATE = 1;        // White forces mate within the plies left
inline constexpr TMateResult MR_NOMATE = 0;      // proved that White does not, or Black has refuted
inline constexpr TMateResult MR_DOUBTFUL = -1;   // a heuristic cut the line; nothing is proved
inline constexpr TMateResult MR_NONE = -2;       // register: knows nothing; black sort: Black escapes, no mate
inline constexpr TMateResult MR_REPETITION = -3; // the line repeated an earlier position; depends on the path
inline constexpr TMateResult MR_FFM_END = -4;    // end of the FindForcedMate horizon
inline constexpr TMateResult MR_QUICKER = 2;     // register only: a mate exists, but using the additional moves

/// The log's format of a verdict ("%d%smate"): an indentation depth and a prefix go in.
[[nodiscard]] constexpr const char* MateResultLogFormat(TMateResult result) {
    switch (result) {
    case MR_MATE:
        return "%d%smate";
    case MR_NOMATE:
        return "%d%sno mate";
    case MR_DOUBTFUL:
        return "%d%sdoubtful";
    case MR_REPETITION:
        return "%d%sposition repetition";
    case MR_FFM_END:
        return "%d%send of FindForcedMate depth";
    default:
        return "%d%sresult error";
    }
}

} // namespace quillon
