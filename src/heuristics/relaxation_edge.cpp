// The rules of what confines the black king: the strict edge, the edge line, the extended edge, the ring of attacked
// squares around him - and of what is left when none of them is in force.

#include "core/attacks.h"
#include "heuristics/black_mobility.h"
#include "heuristics/king_confinement.h"
#include "heuristics/pawn_breakthrough.h"
#include "heuristics/queen_mates.h"
#include "heuristics/relaxation_rules.h"
#include "heuristics/watched_set.h"

namespace quillon {

namespace {

bool IsEdgeStrict(const TRelaxation& r) { return r.Has(SH_KEEPKINGONTHEEDGE) && r.m_parameters.m_bDontLetKingMove; }

/// The play runs along a line that was named for it.
bool HasLineFlag(const TRelaxation& r) { return r.Has(SH_KEYLINE | SH_KEYDIAGONAL); }

// ---- the strict edge

/// One figure against many watched ones: the watched figures are the weaker assumption of the two.
bool IsWorthParking(const TRelaxation& r) {
    constexpr int kFewWatched = 2;
    return r.Has(SH_DONTLETFIGUREUNBLOCK) && !r.m_bFiguresCameBack && WhiteFigureCount(r.m_board) == 1 &&
           r.m_parameters.m_nBlockedFigures > kFewWatched;
}

/// A lone queen from a knight's distance keeps the king shut in; he can step out and back while others move.
bool IsHeldByLoneQueen(const TRelaxation& r) {
    const TChessboard& b = r.m_board;
    return b.m_whiteQueens == 1 && WhiteFigureCount(b) == 1 && BlackFigureCount(b) >= 2 &&
           KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) == 2 && !HasLineFlag(r) && IsBlackKingCaged(b) &&
           !IsStalemateTrap(b);
}

/// The king's own men leave him one square; with few figures on the board two.
bool IsShutInByOwnMen(const TChessboard& b) {
    constexpr int kFewFigures = 4;
    const int gaps = WhiteFigureCount(b) + BlackFigureCount(b) < kFewFigures ? 2 : 1;
    return CountBlackMenAroundKing(b) >= CountSquaresAroundKing(b) - gaps;
}

/// Would a king who is driven straight back leave White's plan as it is?
bool ToleratesExceptions(const TRelaxation& r) {
    const TChessboard& b = r.m_board;
    return IsHeldByLoneQueen(r) || IsShutInByOwnMen(b) || CountQueenMatingSquares(b) > 1 || GuardsKingAlone(b);
}

/// Does the position call for a ring of attacked squares rather than for the edge line?
bool CallsForSurrounding(const TRelaxation& r) {
    const TChessboard& b = r.m_board;
    const bool bHeavyWithBishop = b.m_whiteQueens + b.m_whiteRooks == 2 && b.m_whiteBishops > 0;
    return (bHeavyWithBishop && !IsBlackKingCaged(b)) || IsWedgedByPawn(b) || HasLineFlag(r);
}

void EndStrictEdge(TRelaxation& r) {
    constexpr int kHardlyMovingKing = 2; // classes below it
    r.m_parameters.m_bDontLetKingMove = false;
    if (r.m_parameters.m_nMoveCategory >= kHardlyMovingKing && CallsForSurrounding(r)) {
        r.TakeOff(SH_KEEPKINGONTHEEDGE);
        r.Set(SH_ASSERTBLACKKINGSURROUNDED);
    }
}

// ---- without an edge

/// With the king bound to take pawns at the extended edge, the watched figures are what holds him: they stay or go
/// whole.
bool MayReduceWatched(const TRelaxation& r) {
    return !(r.Has(SH_KEEPKINGWITHINEXTEDGE) && CountBlackMoves(r.m_board) > 0 && TakesOnlyPawnsWithKing(r.m_board));
}

void RelaxExtEdge(TRelaxation& r) {
    if (r.m_parameters.m_bExtEdgeStrict) {
        r.m_parameters.m_bExtEdgeStrict = false;
        return;
    }
    r.TakeOff(SH_KEEPKINGWITHINEXTEDGE);
    if (CountBlackKingFreeSquares(r.m_board) <= 1 || IsBlackKingConfined(r.m_board))
        r.Set(SH_ASSERTBLACKKINGSURROUNDED);
}

void RelaxGeneral(TRelaxation& r) {
    constexpr std::uint32_t kInOrder[] = {SH_DONTLETBLACKQUEENCHECKTWICE, SH_SKIPWORSTWHITEMOVES, SH_SAVEQUEENROOK,
                                          SH_AREKINGSNEAR};
    for (const std::uint32_t bit : kInOrder)
        if (TakeOffIfSet(r, bit) != ERelaxation::NotMine)
            return;
    r.m_board.m_nHeuristics = 0;
}

// ---- the successor of the edge

void SetExtEdge(TRelaxation& r) {
    r.Set(SH_KEEPKINGWITHINEXTEDGE);
    if (IsCornerShutByPawns(r.m_board))
        r.m_parameters.m_bEdgeInclCornerSquares = true;
}

/// Pawn play that brings the king inwards is the reason not to look for a mate near the edge.
bool IsDrivenInByPawns(const TChessboard& b) {
    if (WhiteFigureCount(b) == 0 && IsWhiteToMove(b) && DrivesKingInByPromotion(b))
        return true;
    return b.m_whiteQueens + b.m_whiteRooks == 0 && HasMobileBlackPawn(b) && DrivesKingInByPawns(b);
}

/// Two minor figures surround nobody from afar, and two knights alone mate nobody.
bool DoMinorsStandFar(const TChessboard& b) {
    constexpr int kNear = 2, kFewFigures = 3;
    if (b.m_whiteQueens + b.m_whiteRooks > 0 || WhiteFigureCount(b) >= kFewFigures)
        return false;
    const bool bKnightsOnly = b.m_whiteKnights == 2 && b.m_whitePawns == 0;
    return KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) > kNear || bKnightsOnly;
}

bool CanBeSurrounded(const TChessboard& b, int freeSquares) {
    constexpr int kFewFree = 3, kFewMen = 4;
    return WhiteFigureCount(b) >= 2 && freeSquares < kFewFree && WhiteMen(b) + BlackMen(b) > kFewMen &&
           !DoMinorsStandFar(b);
}

void SetSuccessorOfEdge(TRelaxation& r) {
    constexpr int kManyPawns = 5;
    const TChessboard& b = r.m_board;
    const int freeSquares = CountBlackKingFreeSquares(b);
    if (freeSquares <= 1 && CountWhitePawnsAroundKing(b) >= kManyPawns) {
        r.Set(SH_ASSERTBLACKKINGSURROUNDED);
        return;
    }
    if (IsDrivenInByPawns(b))
        return;
    if (CanHoldExtEdge(b))
        SetExtEdge(r);
    else if (CanBeSurrounded(b, freeSquares))
        r.Set(SH_ASSERTBLACKKINGSURROUNDED);
    const bool bNearEdge = RingOf(b.m_blackKingFile, b.m_blackKingRank) < 2;
    if (bNearEdge && IsBlackKingOnTheRun(b) && !r.Has(SH_ASSERTBLACKKINGSURROUNDED))
        SetExtEdge(r);
    if (!r.Has(SH_KEEPKINGWITHINEXTEDGE) && freeSquares <= 1)
        r.Set(SH_ASSERTBLACKKINGSURROUNDED);
}

} // namespace

ERelaxation ReplaceEdgeBySurrounded(TRelaxation& r) {
    if (!IsEdgeStrict(r) || !r.m_parameters.m_bAllowExceptions || !r.m_parameters.m_bEdgeToAssertBks)
        return ERelaxation::NotMine;
    r.TakeOff(SH_KEEPKINGONTHEEDGE);
    r.Set(SH_ASSERTBLACKKINGSURROUNDED);
    return ERelaxation::NextPass;
}

ERelaxation RelaxStrictEdge(TRelaxation& r) {
    if (!IsEdgeStrict(r))
        return ERelaxation::NotMine;
    if (IsWorthParking(r)) {
        r.TakeOff(SH_DONTLETFIGUREUNBLOCK);
        r.m_parameters.m_bBlockedFiguresParked = true;
    } else if (!r.m_parameters.m_bAllowExceptions && ToleratesExceptions(r)) {
        r.m_parameters.m_bAllowExceptions = true;
    } else {
        EndStrictEdge(r);
    }
    return ERelaxation::NextPass;
}

ERelaxation RelaxSurrounded(TRelaxation& r) {
    if (r.Has(SH_ASSERTBLACKKINGSURROUNDED) && r.m_parameters.m_bAssertBKSStrict) {
        r.m_parameters.m_bAssertBKSStrict = false;
        return ERelaxation::Done;
    }
    return TakeOffIfSet(r, SH_ASSERTBLACKKINGSURROUNDED);
}

ERelaxation RelaxWithoutEdge(TRelaxation& r) {
    if (r.Has(SH_KEEPKINGONTHEEDGE))
        return ERelaxation::NotMine;
    if (r.Has(SH_DONTLETFIGUREUNBLOCK) || r.m_parameters.m_bDlfuDynamic) {
        if (!MayReduceWatched(r) || !ReduceToHeavyFigures(r.m_board, r.m_parameters))
            StopWatching(r.m_board, r.m_parameters);
    } else if (r.Has(SH_KEEPKINGWITHINEXTEDGE)) {
        RelaxExtEdge(r);
    } else {
        RelaxGeneral(r);
    }
    return ERelaxation::Done;
}

ERelaxation ReplaceEdge(TRelaxation& r) {
    r.TakeOff(SH_KEEPKINGONTHEEDGE);
    SetSuccessorOfEdge(r);
    return ERelaxation::Done;
}

} // namespace quillon
