#pragma once
// What a problem expects, against what was found.

#include <string>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"
#include "heuristics/find_mate_root.h"
#include "library/chess_problem.h"

namespace quillon {

/// Are the found keys the expected ones, in any order?
[[nodiscard]] bool AreKeysAsExpected(const std::vector<TSolution>& found, const std::vector<TMove>& expected);

/// The expected move in long notation. Its squares may be anything.
[[nodiscard]] std::string ExpectedMoveText(const TMove& expected, const TChessboard& board);

/// Behind a solve, whose marks the expected white moves of the problem have: empty, or "ExpectedSortWhiteMoves failed:
/// move " and the number, from 1, of the first one that was not sorted first.
[[nodiscard]] std::string ExpectedSortWhiteMovesCheck(const ChessProblem& problem);

} // namespace quillon
