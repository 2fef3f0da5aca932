#pragma once
// The depth codes of FindForcedMate: what counts as a forcing white move. A code is one step wider than the code
// before.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quillon {

struct TForcedMateDepth {
    std::uint8_t m_nCode;
    std::string_view m_text;   // as printed behind the heuristic's name
    std::string_view m_button; // label of the dialog's radio button
};

inline constexpr std::array kForcedMateDepths{
    TForcedMateDepth{2, "CheckOnly", "check+excps"},
    TForcedMateDepth{3, "#1", "threat #1"},
    TForcedMateDepth{4, "#1+", "#1+"},
    TForcedMateDepth{5, "#2", "#2"},
    TForcedMateDepth{6, "#2+", "#2+"},
    TForcedMateDepth{7, "#3", "#3"},
    TForcedMateDepth{8, "#4", "#4"},
    TForcedMateDepth{9, "#5", "#5"},
};
inline constexpr std::uint8_t kMinForcedMateDepth = kForcedMateDepths.front().m_nCode;
inline constexpr std::uint8_t kMaxForcedMateDepth = kForcedMateDepths.back().m_nCode;
static_assert(kMaxForcedMateDepth - kMinForcedMateDepth + 1 == kForcedMateDepths.size(), "the codes have no gaps");

/// Printed text of a depth code, empty for a number that is no code.
[[nodiscard]] constexpr std::string_view ForcedMateDepthText(int code) {
    if (code < kMinForcedMateDepth || code > kMaxForcedMateDepth)
        return {};
    return kForcedMateDepths[static_cast<std::size_t>(code - kMinForcedMateDepth)].m_text;
}

} // namespace quillon
