#include "heuristics/white_promotion.h"

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/mask_attacks.h"

namespace quillon {

namespace {

constexpr int kSecondRank = 1, kSixthRank = 5, kSeventhRank = 6, kEighthRank = 7; // as indices

TMask WhitePawns(const TChessboard& b) {
    if (b.m_whitePawns == 0)
        return 0;
    const CBoardPlanes planes(b.m_board.data());
    return planes.Plane<6>() & planes.Plane<1>();
}

int StepsToPromotion(int square) { return kEighthRank - RankOf(square) - (RankOf(square) == kSecondRank ? 1 : 0); }

/// Ahead of it the square is empty, or it can take something.
bool HasMoveForward(const TChessboard& b, int pawn) {
    const bool bFree = b.m_board[static_cast<std::size_t>(pawn + 8)] == kNoFigure;
    return bFree || (WhitePawnAttacks(MaskOf(pawn)) & BlackFigures(b.m_board.data())) != 0;
}

bool HasEffect(TChessboard& b, TMove promotion) {
    TChessboard child = b;
    child.m_pPrevious = &b;
    if (MakeWhiteMove<kLegalityOnly>(child, promotion) == 0)
        return false;
    if (child.m_blackChecker != kNoChecker)
        return true;
    return PromotionKind(promotion) == kQueen &&
           !IsAttackedByBlack(child, FileOf(promotion.m_nTo), RankOf(promotion.m_nTo));
}

} // namespace

bool HasPawnInReachOfPromotion(const TChessboard& b, int nMoves) {
    for (TMask pawns = WhitePawns(b); pawns != 0;)
        if (StepsToPromotion(TakeSquare(pawns)) <= nMoves)
            return true;
    return false;
}

bool HasAdvancedPawn(const TChessboard& b) {
    for (TMask pawns = WhitePawns(b); pawns != 0;) {
        const int pawn = TakeSquare(pawns);
        if (RankOf(pawn) >= kSixthRank && HasMoveForward(b, pawn))
            return true;
    }
    return false;
}

bool CanPromoteWithEffect(TChessboard& b) {
    for (TMask pawns = WhitePawns(b) & (kRank1 << (8 * kSeventhRank)); pawns != 0;) {
        TMove list[kMaxMoves];
        const int count = GenerateWhiteFigureMoves(b, static_cast<TSquare>(TakeSquare(pawns)), list);
        for (int i = 0; i < count; ++i)
            if (HasEffect(b, list[i]))
                return true;
    }
    return false;
}

bool HasPawnAsFarAs(const TChessboard& b, TSquare square) {
    for (TMask pawns = WhitePawns(b); pawns != 0;) {
        const int pawn = TakeSquare(pawns);
        if (RankOf(pawn) >= RankOf(square) && HasMoveForward(b, pawn))
            return true;
    }
    return false;
}

} // namespace quillon
