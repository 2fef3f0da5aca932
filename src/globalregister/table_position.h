#pragma once
// The positions that a table has elements for.

#include <cstdint>

#include "core/chessboard.h"
#include "globalregister/position_indexing.h"

namespace quillon {

/// Puts the position of an index onto an empty board.
///   Result  false: the index names none, or none that is legal with White to move.
[[nodiscard]] inline bool GetTablePosition(const TPositionIndexing& indexing, std::uint64_t index, TChessboard& b) {
    return indexing.GetPositionByIndex(index, b) && TryRecountFigures(b, true) && b.m_blackChecker == kNoChecker;
}

} // namespace quillon
