#pragma once
// Whether the first pass looks for play that White can force (SH_FINDFORCEDMATE), how deep a threat counts as force,
// and how often that depth may rise.

#include "heuristics/choice_rules.h"

namespace quillon {

/// Shorter problems are searched as fast without it.
inline constexpr int kShortestForcedMatePlies = 11;

/// What White has to force matters with: checks, heavy figures, a need to hurry. Above 0 forced play is worth a try.
[[nodiscard]] int RateForcingPlay(const TChoice& choice);

/// White has to give check after check: it has checks, and Black, left alone for a move, is much the stronger.
[[nodiscard]] bool MustGiveChecks(const TChoice& choice);

/// SH_FINDFORCEDMATE with its parameters, or nothing.
void ChooseForcedMate(TChoice& choice);

} // namespace quillon
