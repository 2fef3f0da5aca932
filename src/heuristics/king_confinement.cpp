#include "heuristics/king_confinement.h"

#include <algorithm>
#include <bit>

#include "core/attacks.h"
#include "core/king_flights.h"
#include "core/mask_attacks.h"
#include "core/mate_test.h"

namespace quillon {

namespace {

constexpr int kLargestConfinement = 4; // squares
constexpr int kFreeSquaresOfRun = 3;

TMask WhitePawns(const TFigureMasks& masks) { return masks.m_white & masks.m_pawns; }

constexpr TMask InnerSquares() {
    TMask inner = 0;
    for (int square = 0; square < kSquares; ++square)
        if (RingOf(FileOf(square), RankOf(square)) > 1)
            inner |= MaskOf(square);
    return inner;
}

bool HoldsWhiteMan(const TChessboard& b, int file, int rank) {
    return IsOnBoard(file, rank) && IsWhite(b.m_board[SquareAt(file, rank)]);
}

/// A black pawn that stands before a white one and cannot take its way out beside it.
bool IsHeldBlackPawn(const TChessboard& b, int file, int rank) {
    return WithoutMark(b.m_board[SquareAt(file, rank)]) == kBlackPawn &&
           b.m_board[SquareAt(file, rank - 1)] == kWhitePawn && !HoldsWhiteMan(b, file - 1, rank - 1) &&
           !HoldsWhiteMan(b, file + 1, rank - 1);
}

} // namespace

bool IsBlackKingCaged(const TChessboard& b) { return CountBlackKingFreeSquares(b) == 0; }

int CountBlackMenAroundKing(const TChessboard& b) {
    return std::popcount(KingAttacks(BlackKingSquare(b)) & BlackFigures(b.m_board.data()));
}

int CountSquaresAroundKing(const TChessboard& b) { return std::popcount(KingAttacks(BlackKingSquare(b))); }

bool IsWedgedByPawn(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    return (KingAttacks(masks.m_nBlackKing) & WhitePawns(masks) & WhiteAttacks(masks, masks.Occupied())) != 0;
}

int CountReachableSquares(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    const TMask open = SquaresOpenToBlackKing(masks);
    TMask reached = MaskOf(masks.m_nBlackKing);
    for (TMask fresh = reached; fresh != 0;) {
        const TMask around = KingAttacks(TakeSquare(fresh)) & open & ~reached;
        reached |= around;
        fresh |= around;
    }
    return std::popcount(reached) - 1;
}

bool IsBlackKingConfined(const TChessboard& b) { return CountReachableSquares(b) <= kLargestConfinement; }

bool IsBlackKingOnTheRun(const TChessboard& b) { return CountBlackKingFreeSquares(b) >= kFreeSquaresOfRun; }

bool CanHoldExtEdge(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    return RingOf(b.m_blackKingFile, b.m_blackKingRank) <= 1 && (BlackKingFreeSquares(masks) & InnerSquares()) == 0;
}

bool IsCornerShutByPawns(const TChessboard& b) {
    const auto isMiddle = [](int line) { return line >= 2 && line <= 5; };
    if (isMiddle(b.m_blackKingFile) || isMiddle(b.m_blackKingRank))
        return false;
    // The inner square of the corner, and the way from it towards the centre.
    const int file = b.m_blackKingFile < 2 ? 1 : 6, rank = b.m_blackKingRank < 2 ? 1 : 6;
    const int toFile = file == 1 ? 1 : -1, toRank = rank == 1 ? 1 : -1;
    const TMask covered = WhitePawnAttacks(WhitePawns(TakeMasks(b)));
    const auto isShut = [&](int f, int r) {
        return (covered & MaskOf(SquareAt(f, r))) != 0 || IsHeldBlackPawn(b, f, r);
    };
    return isShut(file + toFile, rank) && isShut(file, rank + toRank) && isShut(file + toFile, rank + toRank);
}

int CountWhitePawnsAroundKing(const TChessboard& b) {
    constexpr int kReach = 3;
    constexpr int kSkippedRow = 2, kRowInstead = 1; // from below
    const int king = b.m_blackKingFile;
    const int bottom = std::max(0, b.m_blackKingRank - kReach), top = std::min(7, b.m_blackKingRank + kReach);
    int count = 0;
    for (int row = bottom; row <= top; ++row) {
        const int rank = row - bottom == kSkippedRow ? bottom + kRowInstead : row;
        for (int file = std::max(0, king - kReach); file <= std::min(7, king + kReach); ++file)
            count += b.m_board[SquareAt(file, rank)] == kWhitePawn;
    }
    return count;
}

} // namespace quillon
