#pragma once
// The mate test on masks: one pass over the white figures tells the flights of the black king, one over the black ones
// whether the checker can be captured or its line be closed.

#include "core/mask_attacks.h"

namespace quillon {

/// Value of a double-step argument when White's last move was none.
inline constexpr int kNoDoubleStep = -1;

/// All squares White attacks, its own figures' squares included, over the given occupation.
[[nodiscard]] TMask WhiteAttacks(const TFigureMasks& masks, TMask occupied);

/// White figures that check the black king; the white king is never one.
[[nodiscard]] TMask WhiteCheckers(const TFigureMasks& masks);

/// Is the white king attacked (the black king included)?
[[nodiscard]] bool IsWhiteKingAttacked(const TFigureMasks& masks);

/// Has Black, to move and in check from `checkers` (not empty), a legal move?
///   nDoubleStep  square of the white pawn that has just made a double step, or kNoDoubleStep.
[[nodiscard]] bool HasEvasion(const TFigureMasks& masks, TMask checkers, int nDoubleStep);

/// Is Black, to move, mated?
[[nodiscard]] bool IsBlackMated(const TFigureMasks& masks, int nDoubleStep);

} // namespace quillon
