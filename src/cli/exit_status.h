#pragma once
// How the program ends. Of several statuses the greatest counts.

#include <algorithm>

namespace quillon {

enum class EExitStatus : int {
    Answered = 0,      // every problem was answered by a mate or by the proof that there is none
    Unanswered = 1,    // some were left in doubt, were stopped, or differ from the answer that was expected
    BadInput = 2,      // a bad problem, file or option
    SystemFailure = 3, // memory, disk, a closed output
};

[[nodiscard]] constexpr EExitStatus Graver(EExitStatus a, EExitStatus b) { return std::max(a, b); }

} // namespace quillon
