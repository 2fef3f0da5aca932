#pragma once
// What --explain tells: how a solve is planned, and what its passes came to.

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "heuristics/solving_driver.h"

namespace quillon {

/// For a person, printed before the first pass.
[[nodiscard]] std::string PlanText(const TPlanReport& plan);

/// For a person, printed behind the result: a line a pass, and the pass of each key.
[[nodiscard]] std::string PassRecordsText(const TSolvingResult& result);

/// For programs: the same in one object.
[[nodiscard]] nlohmann::ordered_json ExplainObject(const TPlanReport& plan, const TSolvingResult& result);

} // namespace quillon
