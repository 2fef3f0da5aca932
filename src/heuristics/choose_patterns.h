#pragma once
// Heuristics for patterns that few positions show: a pin or a queen that the whole play turns on, a rook that sweeps
// the first rank, a move to be lost, figures none of which White can spare.

#include <array>

#include "heuristics/choice_rules.h"

namespace quillon {

/// The black figure beside a cornered king on the main diagonal that a white diagonal figure pins, or can pin with its
/// next move, while White has a queen or rook to make use of it; kNoSquare for none.
[[nodiscard]] TSquare FindFigureOnMainDiagonal(TChessboard& root);

/// SH_DONTLEAVEMAINDIAGONAL with its figure, in safe mode.
void ChooseMainDiagonal(TChoice& choice);

/// SH_SEASNAKE with its squares: a single white queen works her way up, step by step and turning back, to a shut-in
/// king, while Black can do nothing but swing his queen to and fro between two squares.
void ChooseSeaSnake(TChoice& choice);

/// SH_DONTLOSEANYFIGURES, in safe mode and without the heuristics that reckon with sacrifices or a fixed cage: White is
/// behind, has few figures and hardly a pawn, and cannot mate with fewer.
void ChooseSavedFigures(TChoice& choice);

/// SH_ZUGZWANG, SH_KEYWHITEFIGURE, SH_SWEEPINGWHITEROOK, and SH_KEEPKINGNEARCORNER where no edge was chosen.
void ChoosePatterns(TChoice& choice);

/// White sliders that could be the key figure: on a line with the black king along which they move, with a figure that
/// they hold on it between the two.
struct TKeyFigures {
    std::array<TSquare, 8> m_squares{};
    std::size_t m_nCount = 0;
};
[[nodiscard]] TKeyFigures FindKeyFigures(const TChessboard& b);

/// Is the figure that the key figure holds pinned indeed, with nothing else between it and its king?
[[nodiscard]] bool IsTruePin(const TChessboard& b, TSquare keyFigure, TSquare pinned);

/// Where key figure and watched figures are to work together but the key figure pins nothing as yet, another one may:
/// the key data are made anew, in safe mode.
void RebuildKeyFigure(TChoice& choice);

} // namespace quillon
