#include "heuristics/black_mobility.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/figure_masks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "heuristics/material.h"

namespace quillon {

namespace {

TChessboard WithBlackToMove(const TChessboard& b) {
    constexpr std::uint16_t kFewestPlies = 2; // the move has to find a ply left
    TChessboard turned = b;
    if (IsWhiteToMove(b)) {
        turned.m_nMoves = std::max(kFewestPlies, static_cast<std::uint16_t>(b.m_nMoves - 1));
        turned.m_lastMove = {};
    }
    return turned;
}

/// Calls visit(move, position behind it) for each legal black move until it returns false.
template <class TVisit> void VisitBlackMoves(const TChessboard& b, TVisit visit) {
    if (b.m_whiteChecker != kNoChecker)
        return;
    TChessboard turned = WithBlackToMove(b);
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(turned, list);
    for (int i = 0; i < count; ++i) {
        TChessboard child = turned;
        child.m_pPrevious = &turned;
        TMove move = list[i];
        if (MakeBlackMove<kLegalityOnly>(child, move, false) != kIllegalMove && !visit(move, child))
            return;
    }
}

} // namespace

int CountBlackMoves(const TChessboard& b) {
    int count = 0;
    VisitBlackMoves(b, [&](const TMove&, const TChessboard&) {
        ++count;
        return true;
    });
    return count;
}

int CountMobileBlackMen(const TChessboard& b) {
    TMask movers = 0;
    VisitBlackMoves(b, [&](const TMove& move, const TChessboard&) {
        if (move.m_nFrom != BlackKingSquare(b))
            movers |= MaskOf(move.m_nFrom);
        return true;
    });
    return std::popcount(movers);
}

bool IsStalematePosition(const TChessboard& b) { return CountMobileBlackMen(b) == 0; }

bool IsStalemateTrap(const TChessboard& b) { return CountMobileBlackMen(b) <= 1; }

bool DefendsByChecks(const TChessboard& b) {
    bool bFound = false;
    VisitBlackMoves(b, [&](const TMove& move, const TChessboard& child) {
        const TFigure kind = KindOf(b.m_board[move.m_nFrom]);
        bFound = kind != kKing && kind != kPawn && child.m_whiteChecker != kNoChecker &&
                 !IsAttackedByWhite(child, FileOf(move.m_nTo), RankOf(move.m_nTo));
        return !bFound;
    });
    return bFound;
}

bool IsBlackAheadAfterKingCapture(const TChessboard& b) {
    int best = 0;
    VisitBlackMoves(b, [&](const TMove& move, const TChessboard&) {
        if (move.m_nFrom == BlackKingSquare(b))
            best = std::max(best, WorthOf(b.m_board[move.m_nTo]));
        return true;
    });
    return best > 0 && BlackMaterial(b) > WhiteMaterial(b) - best;
}

bool TakesOnlyPawnsWithKing(const TChessboard& b) {
    bool bAny = false, bOnlyPawns = true;
    VisitBlackMoves(b, [&](const TMove& move, const TChessboard&) {
        if (move.m_nFrom == BlackKingSquare(b)) {
            bAny = true;
            bOnlyPawns = KindOf(b.m_board[move.m_nTo]) == kPawn;
        }
        return bOnlyPawns;
    });
    return bAny && bOnlyPawns;
}

bool HasMobileBlackPawn(const TChessboard& b) {
    for (int square = 8; square < kSquares - 8; ++square)
        if (b.m_board[static_cast<std::size_t>(square)] == kBlackPawn && // one with the mark may not advance
            b.m_board[static_cast<std::size_t>(square - 8)] == kNoFigure)
            return true;
    return false;
}

} // namespace quillon
