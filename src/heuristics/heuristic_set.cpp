#include "heuristics/heuristic_set.h"

#include <algorithm>

namespace quillon {

namespace {

// Names are ASCII, so the locale has no say in what equals what.
constexpr char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, UpperAscii, UpperAscii);
}

} // namespace

std::optional<std::uint32_t> FindHeuristic(std::string_view name) {
    for (const THeuristic& row : kHeuristics)
        if ((row.m_nBit & kAllHeuristics) != 0 && EqualIgnoringCase(row.m_name, name))
            return row.m_nBit;
    return std::nullopt;
}

void ResetHeuristicParameters(THeuristicParameters& parameters) {
    for (const THeuristic& row : kHeuristics)
        row.m_pReset(parameters);
}

} // namespace quillon
