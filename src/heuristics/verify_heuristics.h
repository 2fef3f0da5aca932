#pragma once
// The gate at which a heuristic declares mate doubtful: asked for a position just after a black move, in a pass with
// heuristics. A doubt only stops the line in this pass; nothing here proves anything.

#include <cstdint>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Answers of VerifyHeuristics.
inline constexpr int kNotDoubtful = 0;
inline constexpr int kDoubtful = 1;
inline constexpr int kUndecided = 255; // the run was stopped while a rule looked for a mate

/// m_lastDoubtCause of the one rule that belongs to no bit: a lone rook against a king with room. It is told under the
/// value of the other rule of rooks.
inline constexpr std::uint32_t kLoneRookDoubt = 2;

/// Runs the rules on `board`, White to move, made by a black move from its parent. The first rule that doubts ends it
/// and writes its bit to m_lastDoubtCause.
///   deferMove  when not null: the move in the list it came from. A rule may mark it, so that it is remembered when the
///              move is made for good: kMoveDefersEdgeCheck, kMoveMark.
///   board      its mask, and its parent's, may lose a heuristic that has nothing left to do in the whole subtree.
///   Cost       once per black move of a sorted node; mate searches come last in each rule.
[[nodiscard]] int VerifyHeuristics(TChessboard& board, TMove* deferMove);

} // namespace quillon
