#pragma once
// Heuristic sets drawn at random for a board: any bits, with any parameters that a person or the plan of passes could
// give them. They need not make sense: whatever doubts, nothing may come out wrong.

#include <algorithm>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "core/search_context.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/forced_mate_depth.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_text.h"
#include "heuristics/heuristic_text_reader.h"
#include "support/random_positions.h"

namespace quillon::test {

/// A set as a solve takes it, and what is no part of its text.
struct TRandomSet {
    TReadHeuristics m_set;
    std::vector<TMove> m_seaSnakeAfterMoves;
    std::vector<std::array<TFigure, kSquares>> m_zugzwangBoards;

    /// Puts into a solve, made for m_set, what the request does not hold.
    void StoreRest(THeuristicAnalysisParameters& analysis) const {
        analysis.m_seaSnakeAfterMoves = m_seaSnakeAfterMoves;
        for (const auto& board : m_zugzwangBoards)
            analysis.m_zugzwangPositions[std::to_string(analysis.m_zugzwangPositions.size())] = board;
    }
};

class CRandomSetMaker {
  public:
    CRandomSetMaker(std::mt19937_64& rng, const TChessboard& board) : m_rng(rng), m_board(board) {}

    /// A few bits of `mask` or many; never none.
    [[nodiscard]] TRandomSet Draw(std::uint32_t mask = kAllHeuristics) {
        TRandomSet set;
        const int percent = reference::Chance(m_rng, 50) ? 50 : 15;
        for (const THeuristic& row : kHeuristics)
            if ((mask & row.m_nBit) != 0 && reference::Chance(m_rng, percent))
                set.m_set.m_nHeuristics |= row.m_nBit;
        DrawParameters(set.m_set.m_parameters);
        DrawFigures(set.m_set);
        if (set.m_set.m_nHeuristics == 0)
            set.m_set.m_nHeuristics = mask & (~mask + 1);
        set.m_set.m_nKeyLine = static_cast<std::uint8_t>(reference::DrawInt(m_rng, 8));
        set.m_set.m_wKeyDiagonal = Diagonal();
        if (Flag())
            set.m_seaSnakeAfterMoves.push_back({Square(), Square(), 0, 0});
        if (Flag())
            set.m_zugzwangBoards.push_back(BoardAfterAWhiteMove());
        return set;
    }

    /// All parameters that name no figure of the board.
    void DrawParameters(THeuristicParameters& p) {
        DrawEdge(p);
        DrawForcedMate(p);
        p.m_bAssertBKSStrict = Flag();
        p.m_nKingNearCorner = Int8(-2, 5);
        p.m_nSaveFiguresMode = Byte(0, 2);
        p.m_bSaveRookQueenStrict = Flag();
        p.m_bBishopIsMajor = Flag();
        p.m_bDontLetPromotedStrict = Flag();
        p.m_nKeySquare = SquareOrNone();
        p.m_bApplyDlfuDynamically = Flag();
        p.m_bSeaSnake = Flag();
        p.m_nSeaSnakeApproach = SquareOrNone();
        p.m_nSeaSnakeTurnBack = SquareOrNone();
        p.m_nSeaSnakePendulum1 = SquareOrNone();
        p.m_nSeaSnakePendulum2 = SquareOrNone();
        for (TSquare& square : p.m_SingleQueenSquares)
            square = SquareOrNone();
        p.m_nSingleQueenMode = Byte(0, 3);
        p.m_nCaptureKnightMode = Byte(0, 1);
        p.m_nZugzwangTriangle1 = Square();
        p.m_nZugzwangTriangle2 = Square();
    }

  private:
    [[nodiscard]] bool Flag() { return reference::Chance(m_rng, 50); }
    [[nodiscard]] std::uint8_t Byte(int first, int last) {
        return static_cast<std::uint8_t>(first + reference::DrawInt(m_rng, last - first + 1));
    }
    [[nodiscard]] std::int8_t Int8(int first, int last) {
        return static_cast<std::int8_t>(first + reference::DrawInt(m_rng, last - first + 1));
    }
    [[nodiscard]] TSquare Square() { return Byte(0, kSquares - 1); }
    [[nodiscard]] TSquare SquareOrNone() { return reference::Chance(m_rng, 25) ? kNoSquare : Square(); }

    void DrawEdge(THeuristicParameters& p) {
        p.m_bDontLetKingMove = Flag();
        p.m_bAllowExceptions = Flag();
        p.m_bExtEdgeStrict = Flag();
        p.m_nRelaxCaptures = Byte(0, 2);
        p.m_bRelaxCapturesInclPawns = Flag();
        p.m_bRelaxExtEdgeOnly = Flag();
        p.m_bRelaxOnAdvancedPawn = Flag();
        p.m_bSkipDeferIfNoBalanceChange = Flag();
        p.m_bAutoDynRelax = Flag();
        p.m_shDeferMoves = Byte(0, 3);
        p.m_shDeferMaxMoves = Byte(0, 9);
        p.m_bEdgeInclCornerSquares = Flag();
    }

    void DrawForcedMate(THeuristicParameters& p) {
        p.m_nFfmDepth = p.m_nFfmStartDepth = Byte(kMinForcedMateDepth, kMaxForcedMateDepth);
        p.m_nFfmRelaxations = p.m_nFfmCycleRelaxations = Byte(0, 3);
        p.m_bFfmAddCaptures = Flag();
        p.m_nFfmWithOther = Int8(-1, 1);
        p.m_bFfmCycleTwice = Flag();
        p.m_bFfmPreliminary = Flag();
    }

    /// The parameters that name figures. A bit whose figure the board does not have is taken off.
    void DrawFigures(TReadHeuristics& set) {
        std::vector<TSquare> watched, keys, onDiagonal;
        for (TSquare square = 0; square < kSquares; ++square) {
            if (CanBeWatched(m_board, square) && Flag() && watched.size() < kMaxBlockedFigures)
                watched.push_back(square);
            if (CanBeKeyFigure(m_board, square) && FindPinnedByKeyFigure(m_board, square) != kNoSquare)
                keys.push_back(square);
            if (IsBlackFigureOnMainDiagonal(m_board, square))
                onDiagonal.push_back(square);
        }
        THeuristicParameters& p = set.m_parameters;
        SetWatchedFigures(p, m_board, watched);
        p.m_bBlockedFiguresEff = Flag();
        p.m_bBlockedFiguresByHand = !watched.empty() && Flag();
        if (keys.empty())
            set.m_nHeuristics &= ~SH_KEYWHITEFIGURE;
        else
            p.m_nKeyWhiteFigure = OneOf(keys);
        if (!onDiagonal.empty() && Flag())
            p.m_nBlackFigureOnMainDiagonal = OneOf(onDiagonal);
    }

    [[nodiscard]] TSquare OneOf(std::span<const TSquare> squares) {
        return squares[static_cast<std::size_t>(reference::DrawInt(m_rng, static_cast<int>(squares.size())))];
    }

    [[nodiscard]] std::uint16_t Diagonal() {
        for (;;) {
            const int first = Square(), second = Square();
            if (first != second && AbsDiff(FileOf(first), FileOf(second)) == AbsDiff(RankOf(first), RankOf(second)))
                return static_cast<std::uint16_t>(second << 8 | first);
        }
    }

    /// The root itself, or with one white man on another square.
    [[nodiscard]] std::array<TFigure, kSquares> BoardAfterAWhiteMove() {
        std::array<TFigure, kSquares> board;
        std::ranges::copy(m_board.m_board, board.begin());
        const TSquare from = Square(), to = Square();
        if ((board[from] & kWhite) != 0 && board[to] == kNoFigure)
            std::swap(board[from], board[to]);
        return board;
    }

    std::mt19937_64& m_rng;
    const TChessboard& m_board;
};

[[nodiscard]] inline TRandomSet RandomSet(std::mt19937_64& rng, const TChessboard& board,
                                          std::uint32_t mask = kAllHeuristics) {
    return CRandomSetMaker(rng, board).Draw(mask);
}

/// The set as it is printed.
[[nodiscard]] inline std::string TextOf(const TReadHeuristics& set, const TChessboard& board) {
    const auto context = NewSearchContext();
    THeuristicAnalysisParameters analysis;
    StoreReadHeuristics(set, board, *context, analysis);
    TChessboard shown = board;
    shown.m_pContext = context.get();
    shown.m_nHeuristics = set.m_nHeuristics;
    return HeuristicsText(shown, false, analysis);
}

} // namespace quillon::test
