#include "app/expected_answer.h"

#include <algorithm>

#include "core/expected_move.h"
#include "core/notation.h"

namespace quillon {

namespace {

bool HasSquares(const TMove& move) { return move.m_nFrom < kSquares && move.m_nTo < kSquares; }

} // namespace

bool AreKeysAsExpected(const std::vector<TSolution>& found, const std::vector<TMove>& expected) {
    const auto isFound = [&](const TMove& move) {
        return std::ranges::any_of(found, [&](const TSolution& key) { return IsMoveMeant(move, key.m_move); });
    };
    const auto isExpected = [&](const TSolution& key) {
        return std::ranges::any_of(expected, [&](const TMove& move) { return IsMoveMeant(move, key.m_move); });
    };
    return std::ranges::all_of(expected, isFound) && std::ranges::all_of(found, isExpected);
}

std::string ExpectedMoveText(const TMove& expected, const TChessboard& board) {
    return HasSquares(expected) ? WriteMove(expected, board) : "a move beyond the board";
}

std::string ExpectedSortWhiteMovesCheck(const ChessProblem& problem) {
    // Marked moves have left the board. So has one that the file puts beyond it, and no sort can bring it first.
    const auto missed = std::ranges::find_if_not(problem.expectedWhiteMoves, HasSquares);
    if (missed == problem.expectedWhiteMoves.end())
        return {};
    return "ExpectedSortWhiteMoves failed: move " + std::to_string(missed - problem.expectedWhiteMoves.begin() + 1);
}

} // namespace quillon
