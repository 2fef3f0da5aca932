#pragma once
// The rules that hold for a set made by hand, for one that was read as text.

#include "core/chessboard.h"
#include "heuristics/heuristic_text_reader.h"

namespace quillon {

/// Puts a set that was read for `board` to the checks of the heuristics dialog (heuristics_dialog.h).
///   Errors  ChessException: one line with the message of the first check that fails, or that of StoreReadHeuristics.
void CheckReadHeuristics(const TReadHeuristics& read, const TChessboard& board);

} // namespace quillon
