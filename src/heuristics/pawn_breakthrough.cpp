#include "heuristics/pawn_breakthrough.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"

namespace quillon {

namespace {

constexpr int kFifthRank = 4, kSeventhRank = 6, kEighthRank = 7;
constexpr int kFirstRingInside = 2;

bool IsPassed(const TChessboard& b, int file, int rank) {
    for (int r = rank + 1; r < kEighthRank; ++r)
        for (int f = file - 1; f <= file + 1; ++f)
            if (IsOnBoard(f, r) && WithoutMark(b.m_board[SquareAt(f, r)]) == kBlackPawn)
                return false;
    return true;
}

bool IsWayOpen(const TChessboard& b, int file, int rank) {
    for (int r = rank + 1; r <= kEighthRank; ++r)
        if (b.m_board[SquareAt(file, r)] != kNoFigure || IsAttackedByBlackFigure(b, file, r))
            return false;
    return true;
}

bool IsFreePawn(const TChessboard& b, int file, int rank) {
    const bool bDoubleStep = rank == 1;
    const int moves = kEighthRank - rank - (bDoubleStep ? 1 : 0);
    // The king, who moves second, comes in time if he is as near as the pawn.
    const bool bKingTooFar = KingSteps(BlackKingSquare(b), SquareAt(file, kEighthRank)) > moves;
    return bKingTooFar && IsPassed(b, file, rank) && IsWayOpen(b, file, rank);
}

bool CanGoInside(TChessboard& b) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackFigureMoves(b, BlackKingSquare(b), list);
    for (int i = 0; i < count; ++i) {
        if (RingOf(FileOf(list[i].m_nTo), RankOf(list[i].m_nTo)) < kFirstRingInside)
            continue;
        TChessboard child = b;
        child.m_pPrevious = &b;
        TMove move = list[i];
        if (MakeBlackMove<kLegalityOnly>(child, move, false) != kIllegalMove)
            return true;
    }
    return false;
}

/// What was promoted stays on the board, or costs Black his king's place.
bool HasEffect(const TChessboard& after, const TMove& move) {
    const int file = FileOf(move.m_nTo), rank = RankOf(move.m_nTo);
    TSquare capturer;
    if (FindBlackCapturer(after, file, rank, capturer))
        return false;
    return KingSteps(BlackKingSquare(after), move.m_nTo) > 1 || IsAttackedByWhite(after, file, rank);
}

/// Is there a move of a pawn from this rank on, wanted by `isWanted`, behind which the king can go inside?
template <class TWanted> bool DrivesKingIn(const TChessboard& b, int lowestRank, TWanted isWanted) {
    constexpr std::uint16_t kFewestPlies = 3; // for the move and an answer to it
    TChessboard parent = b;
    parent.m_nMoves = std::max(b.m_nMoves, kFewestPlies);
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(b, list);
    for (int i = 0; i < count; ++i) {
        TMove move = list[i];
        if (b.m_board[move.m_nFrom] != kWhitePawn || RankOf(move.m_nFrom) < lowestRank)
            continue;
        TChessboard child = parent;
        child.m_pPrevious = &parent;
        if (MakeWhiteMove<kLegalityOnly>(child, move) != 0 && isWanted(child, move) && CanGoInside(child))
            return true;
    }
    return false;
}

} // namespace

bool HasFreeWhitePawn(const TChessboard& b) {
    for (int square = 8; square < kSquares - 8; ++square)
        if (b.m_board[static_cast<std::size_t>(square)] == kWhitePawn && IsFreePawn(b, FileOf(square), RankOf(square)))
            return true;
    return false;
}

bool DrivesKingInByPromotion(const TChessboard& b) { return DrivesKingIn(b, kSeventhRank, HasEffect); }

bool DrivesKingInByPawns(const TChessboard& b) {
    return DrivesKingIn(b, kFifthRank, [](const TChessboard&, const TMove&) { return true; });
}

} // namespace quillon
