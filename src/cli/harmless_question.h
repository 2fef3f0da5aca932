#pragma once
// What may be answered where nobody sits by.

#include <string_view>

#include "globalregister/precalc_loader.h"

namespace quillon {

/// Is nothing written, and nothing lost, by a Yes? Data that stay packed, or on disk, are read more slowly; without
/// them there would be none. The offers that write files are for those who have asked for them.
[[nodiscard]] constexpr bool IsHarmlessQuestion(std::string_view question) { return question == kStayPackedQuestion; }

} // namespace quillon
