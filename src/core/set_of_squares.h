#pragma once
// Squares as a text.

#include <string_view>
#include <vector>

#include "core/square.h"

namespace quillon {

/// Squares as letter and digit, with or without blanks and commas between them; one that is told again counts once.
///   Errors  ChessException "Error in ParseSetOfSquares: " and the text.
[[nodiscard]] std::vector<TSquare> ParseSetOfSquares(std::string_view text);

} // namespace quillon
