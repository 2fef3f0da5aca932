#pragma once
// A problem as a JSON object with all that its file tells.

#include <nlohmann/json_fwd.hpp>

#include "library/chess_problem.h"

namespace quillon {

/// Moves are in long notation. What a problem does not have is left out.
[[nodiscard]] nlohmann::ordered_json ProblemObject(const ChessProblem& problem);

} // namespace quillon
