#pragma once
// Figures that a heuristic set names: which figures of a board can be meant, and how they are written into the
// parameters.

#include <span>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"

namespace quillon {

/// SH_DONTLETFIGUREUNBLOCK can watch any black figure but the king.
[[nodiscard]] bool CanBeWatched(const TChessboard& board, TSquare square);

/// Makes these squares, at most kMaxBlockedFigures and each of a figure that can be watched, the watched set. The
/// caller tells whether a person named them (m_bBlockedFiguresByHand).
void SetWatchedFigures(THeuristicParameters& parameters, const TChessboard& board, std::span<const TSquare> squares);

/// Adds a figure to the watched set; a black pawn stays out, a figure that is in it already or beyond
/// kMaxBlockedFigures too.
void AddWatchedFigure(THeuristicParameters& parameters, const TChessboard& board, TSquare square);

/// SH_KEYWHITEFIGURE needs a white figure that moves along lines.
[[nodiscard]] bool CanBeKeyFigure(const TChessboard& board, TSquare square);

/// The black figure that the key figure holds on its line with the black king: the first, going from the key figure
/// towards the king and on beyond him to the edge, that cannot leave the line's squares without opening it - a knight,
/// on a diagonal a rook, on a rank or file a bishop. Other figures are passed over. kNoSquare if there is none, or if
/// the two stand on no common line.
[[nodiscard]] TSquare FindPinnedByKeyFigure(const TChessboard& board, TSquare keyFigure);

/// Writes the key figure and what follows from it; `keyFigure` can be one.
void SetKeyFigure(THeuristicParameters& parameters, const TChessboard& board, TSquare keyFigure, TSquare pinned);

/// SH_DONTLEAVEMAINDIAGONAL: may this be the black figure that stays on its main diagonal?
[[nodiscard]] bool IsBlackFigureOnMainDiagonal(const TChessboard& board, TSquare square);

} // namespace quillon
