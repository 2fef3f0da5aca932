#include "heuristics/sea_snake.h"

#include <algorithm>

#include "core/search_context.h"
#include "heuristics/heuristic_moves.h"
#include "heuristics/verify_lines.h"

namespace quillon {

namespace {

constexpr int kShortestSnakePlies = 13; // as many as the short-mate search looks ahead by itself

/// The position two plies back, before White's move; null at the start of the line.
const TChessboard* BeforeWhiteMove(const TChessboard& b) {
    return b.m_pPrevious != nullptr ? b.m_pPrevious->m_pPrevious : nullptr;
}

bool HasCapturedWithin(const TChessboard& b) {
    const TChessboard* const before = BeforeWhiteMove(b);
    return before != nullptr && WhiteMen(b) + BlackMen(b) != WhiteMen(*before) + BlackMen(*before);
}

/// A white pawn of the file with no man in front of it.
bool HasFreePawnInFile(const TChessboard& b, int file) {
    for (int rank = 6; rank >= 1; --rank) {
        const TFigure figure = b.m_board[SquareAt(file, rank)];
        if (figure == kWhitePawn)
            return b.m_board[SquareAt(file, 7)] == kNoFigure;
        if (figure != kNoFigure)
            return false;
    }
    return false;
}

bool HasBlackPawnInFile(const TChessboard& b, int file) {
    for (int rank = 1; rank < 7; ++rank)
        if (WithoutMark(b.m_board[SquareAt(file, rank)]) == kBlackPawn)
            return true;
    return false;
}

bool HasOpenedFile(const TChessboard& b) {
    const TChessboard* const before = BeforeWhiteMove(b);
    if (before == nullptr)
        return false;
    const TSquare target = b.m_pPrevious->m_lastMove.m_nTo;
    const int file = FileOf(target);
    return WithoutMark(before->m_board[target]) == kBlackPawn && !HasBlackPawnInFile(b, file) &&
           HasFreePawnInFile(b, file);
}

} // namespace

bool AppliesSeaSnake(TChessboard& b) {
    const bool bQueenGone = b.m_whiteQueens == 0 && HasCapturedWithin(b);
    if (b.m_nMoves < kShortestSnakePlies || bQueenGone || HasOpenedFile(b)) {
        ClearHeuristics(b, SH_SEASNAKE);
        return false;
    }
    return IsSeaSnakeInForce(b);
}

int GenerateSeaSnakeMoves(const TChessboard& b, TMove* list) {
    const TSearchContext& context = *b.m_pContext;
    TMove checks[kMaxMoves];
    const int nChecks = GenerateWhiteChecks(b, checks);
    const int count = CollectWhiteMoves(b, list, [&](const TMove& move) {
        return b.m_board[move.m_nFrom] == kWhiteQueen || b.m_board[move.m_nTo] == kBlackQueen ||
               std::any_of(checks, checks + nChecks, [&](const TMove& check) { return SameMove(check, move); });
    });
    std::partition(list, list + count, [&](const TMove& move) {
        return move.m_nTo == context.m_nSeaSnakeApproach || move.m_nTo == context.m_nSeaSnakeTurnBack;
    });
    return count != 0 ? count : -1;
}

} // namespace quillon
