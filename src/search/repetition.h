#pragma once
// Repetition of positions within a line. A white move that repeats an earlier position of the line brings White nothing
// that it did not have there with more plies left; the engine ends the move there. The verdict of what lies above then
// depends on the path, which is what the marks of the context (m_repetition) keep track of.

#include <cstdint>

#include "core/chessboard.h"

namespace quillon {

/// The position reached by a white move, repeating an earlier one of its line: m_nMoves of that one; 0 for none.
/// Only positions with the same castlings left are the same.
///   child    position after the white move, m_nMoves even.
///   bTreated receives whether the engine ends the move here: always in a pass with heuristics and quick mode, in the
///            strict cases only early in the line or when it keeps repeating.
[[nodiscard]] int FindRepetition(const TChessboard& child, bool& bTreated);

/// The mark of a node (m_nMoves = nMoves): the highest m_nMoves of an earlier position that its subtree went back to.
[[nodiscard]] std::uint16_t& RepetitionMark(const TChessboard& b, int nMoves);

/// Raises the mark to `value` if that is higher.
void RaiseRepetitionMark(const TChessboard& b, int nMoves, int value);

} // namespace quillon
