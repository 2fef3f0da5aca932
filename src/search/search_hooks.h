#pragma once
// Steps of the nodes that other folders or later parts of the search supply. Each has its place in the recursion; one
// that does not exist yet answers "not in force".

#include "core/chessboard.h"
#include "core/mate_result.h"

namespace quillon {

/// Answer of a white node from precalculated data; MR_NONE: not in force, or the material has no data.
[[nodiscard]] inline TMateResult AskPrecalcData(const TChessboard&) { return MR_NONE; }

/// What AnalyseInThreads returns when the node is to go on by itself.
inline constexpr int kContinueHere = -128;

/// parallel: deals the node's moves to a group of threads, if this node lies within the multithreading levels.
[[nodiscard]] int AnalyseInThreads(TChessboard& p, int nMoves, TMove* list);

} // namespace quillon
