#pragma once
// The answer that a library expects of a problem, against the keys that were found.

#include <string>
#include <vector>

#include "core/expected_move.h"
#include "heuristics/solving_driver.h"

namespace quillon {

enum class EAnswerCheck {
    NotComparable, // nothing wrong so far, but the run ended before it had all it was to find
    AsExpected,    // also: the run ended at its limit of keys, all of which are expected ones
    Differs,       // a key that is not expected, or the proof that an expected one is none
};

/// nLimit: the number of keys at which the run was to end, 0 for none.
[[nodiscard]] EAnswerCheck CheckAnswer(const TSolvingResult& result, const std::vector<TMove>& expected, int nLimit);

/// "Qd1-d8, e2-e4", or "no solution". The squares of the moves may be anything.
[[nodiscard]] std::string AnswerText(const std::vector<TMove>& expected, const TChessboard& board);

} // namespace quillon
