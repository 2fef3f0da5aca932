#pragma once
// The set of black figures that SH_DONTLETFIGUREUNBLOCK watches, as the plan of passes makes it smaller. Entry i of the
// two lists of the parameters and of the board's squares is one figure.

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"

namespace quillon {

/// Writes the watched squares to the root's board, where the search follows the figures.
void WriteWatchedSquares(TChessboard& root, const THeuristicParameters& parameters);

/// Takes the figures of m_DropList out of the set and empties that list.
///   Returns  true if one was dropped and one is left.
bool DropListedFigures(TChessboard& board, THeuristicParameters& parameters);

/// Leaves the bishops and knights out of the set, if there are any beside the black queen, at the root of a run: they
/// find other squares soon, while a queen that is shut in is worth watching alone. What is left is in the order of the
/// squares.
///   Returns  true if the set became smaller.
bool ReduceToHeavyFigures(TChessboard& board, THeuristicParameters& parameters);

/// The heuristic goes for good: it is not applied on the way either.
void StopWatching(TChessboard& board, THeuristicParameters& parameters);

} // namespace quillon
