#pragma once
// Exchanges on one square.

#include "core/chessboard.h"

namespace quillon {

/// Exchange test of a key figure: can a black man other than the king take what stands on the square, and White retake?
/// A figure that can be exchanged is no key to the position.
[[nodiscard]] bool CanBeExchanged(const TChessboard& b, TSquare square);

} // namespace quillon
