#pragma once
// The two transformations of a board that the application offers. Both touch m_board only; the caller validates with
// RecountFigures. The texts are what the problem's description gets in front.

#include <string>
#include <string_view>

#include "core/chessboard.h"

namespace quillon {

inline constexpr std::string_view kSwappedColoursPrefix = "B&Wh.swapped: ";

/// (file, rank) goes to (file, 7 - rank) and each figure changes colour; marks in bit 5 stay.
void SwapColours(TChessboard& b);

/// (file, rank) goes to (rank, 7 - file).
void Rotate90(TChessboard& b);

/// The description of a rotated problem: "Rotated 90°: " in front, repeated turns accumulate in the text ("Rotated
/// 180°: "); at 360 the prefix goes away, the board being the original again.
[[nodiscard]] std::string RotatedDescription(std::string_view description);

} // namespace quillon
