#pragma once
// Heuristics of positions with few figures, where each figure counts: kings that have to meet, the last heavy figure,
// black queens on the board or to come, figures that are shut in.

#include "heuristics/choice_rules.h"

namespace quillon {

/// At most so many queens, rooks, bishops and knights on both sides make a miniature.
inline constexpr int kMiniatureFigures = 7;

/// The last heavy figure decides: White has little besides it, no pawn is about to replace it, and the black king is
/// not so shut in that what is left could mate him.
[[nodiscard]] bool DependsOnHeavyFigure(const TChoice& choice);

/// Takes the rules of miniatures. Nothing in positions with more figures.
void ChooseForMiniature(TChoice& choice);

/// SH_DONTLETFIGUREUNBLOCK with its figures: black figures that cannot move or only to and fro, where the black king
/// sits in a cage. Their coming free would mean another game.
void ChooseWatchedFigures(TChoice& choice);

} // namespace quillon
