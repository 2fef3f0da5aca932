#include "heuristics/chosen_figures.h"

#include <algorithm>
#include <cassert>

#include "core/lines.h"

namespace quillon {

bool CanBeWatched(const TChessboard& board, TSquare square) {
    return square < kSquares && IsBlack(board.m_board[square]) && KindOf(board.m_board[square]) != kKing;
}

void SetWatchedFigures(THeuristicParameters& parameters, const TChessboard& board, std::span<const TSquare> squares) {
    assert(squares.size() <= kMaxBlockedFigures);
    assert(std::ranges::all_of(squares, [&](TSquare square) { return CanBeWatched(board, square); }));
    parameters.m_BlockedFigures = kNoBlockedSquares;
    std::ranges::copy(squares, parameters.m_BlockedFigures.begin());
    parameters.m_BlockedFiguresNow = parameters.m_BlockedFigures;
    parameters.m_nBlockedFigures = static_cast<std::int8_t>(squares.size());
    parameters.m_bBlockedFiguresEff = false;
    parameters.m_bBlockedPawns =
        std::ranges::any_of(squares, [&](TSquare square) { return WithoutMark(board.m_board[square]) == kBlackPawn; });
}

void AddWatchedFigure(THeuristicParameters& parameters, const TChessboard& board, TSquare square) {
    if (!CanBeWatched(board, square) || KindOf(board.m_board[square]) == kPawn)
        return;
    const auto count = static_cast<std::size_t>(std::clamp<int>(parameters.m_nBlockedFigures, 0, kMaxBlockedFigures));
    const auto watched = std::span(parameters.m_BlockedFigures).first(count);
    if (count == kMaxBlockedFigures || std::ranges::find(watched, square) != watched.end())
        return;
    parameters.m_BlockedFigures[count] = parameters.m_BlockedFiguresNow[count] = square;
    parameters.m_nBlockedFigures = static_cast<std::int8_t>(count + 1);
}

bool CanBeKeyFigure(const TChessboard& board, TSquare square) {
    return square < kSquares && IsWhite(board.m_board[square]) &&
           (IsDiagonalSlider(board.m_board[square], kWhite) || IsStraightSlider(board.m_board[square], kWhite));
}

TSquare FindPinnedByKeyFigure(const TChessboard& board, TSquare keyFigure) {
    const TDirection direction = kDirectionBetween[keyFigure][BlackKingSquare(board)];
    if (direction == kNoDirection)
        return kNoSquare;
    const TFigure offTheLine = IsStraight(direction) ? kBlackBishop : kBlackRook;
    int square = keyFigure;
    for (int n = kSquaresToEdge[direction][keyFigure]; n > 0; --n) {
        square += kSteps[direction];
        const TFigure figure = board.m_board[static_cast<std::size_t>(square)];
        if (figure == kBlackKnight || figure == offTheLine)
            return static_cast<TSquare>(square);
    }
    return kNoSquare;
}

void SetKeyFigure(THeuristicParameters& parameters, const TChessboard& board, TSquare keyFigure, TSquare pinned) {
    parameters.m_nKeyWhiteFigure = keyFigure;
    parameters.m_nPinnedFigure = pinned;
    parameters.m_bKeyFigureIsRook = board.m_board[keyFigure] == kWhiteRook;
}

bool IsBlackFigureOnMainDiagonal(const TChessboard& board, TSquare square) {
    if (square >= kSquares || !IsBlack(board.m_board[square]))
        return false;
    return FileOf(square) == RankOf(square) || FileOf(square) + RankOf(square) == 7;
}

} // namespace quillon
