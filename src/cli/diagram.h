#pragma once
// The board as eight lines of text.

#include <string>

#include "core/chessboard.h"

namespace quillon {

/// Ranks 8 to 1 with their numbers in front, and the files below: "8 | . . K . . . . . |". White's figures in capitals.
[[nodiscard]] std::string DiagramText(const TChessboard& b);

} // namespace quillon
