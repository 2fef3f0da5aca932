#include "heuristics/heuristic_set.h"

#include "heuristics/plain_text.h"

namespace quillon {

std::optional<std::uint32_t> FindHeuristic(std::string_view name) {
    for (const THeuristic& row : kHeuristics)
        if ((row.m_nBit & kAllHeuristics) != 0 && EqualWords(row.m_name, name))
            return row.m_nBit;
    return std::nullopt;
}

void ResetHeuristicParameters(THeuristicParameters& parameters) {
    for (const THeuristic& row : kHeuristics)
        row.m_pReset(parameters);
}

} // namespace quillon
