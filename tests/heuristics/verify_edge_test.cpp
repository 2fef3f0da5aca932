// Rules that tie the black king to a place, and the dynamic relaxation of two of them.

#include <gtest/gtest.h>

#include "core/makers.h"
#include "core/queries.h"
#include "heuristics/dynamic_relaxation.h"
#include "heuristics/king_edge.h"
#include "heuristics/verified_position.h"
#include "heuristics/verify_edge.h"

namespace quillon::test {
namespace {

// ---- near a corner

TEST(KingNearCorner, FiveSquaresExcludeTheFourInTheMiddle) {
    CMadeMove middle("8/8/8/4k3/8/8/8/K6N", 9, "Ka1-b1 Ke5-d4");
    middle.Context().m_nKingNearCorner = 5;
    EXPECT_TRUE(middle.Doubts(SH_KEEPKINGNEARCORNER));
    CMadeMove beside("8/8/8/4k3/8/8/8/K6N", 9, "Ka1-b1 Ke5-e6");
    beside.Context().m_nKingNearCorner = 5;
    EXPECT_FALSE(beside.Doubts(SH_KEEPKINGNEARCORNER));
    beside.Context().m_nKingNearCorner = 4;
    EXPECT_TRUE(beside.Doubts(SH_KEEPKINGNEARCORNER));
}

TEST(KingNearCorner, NegativeCountsKingMoves) {
    CMadeMove near("8/8/4k3/8/8/8/8/K6N", 9, "Ka1-b1 Ke6-f6");
    near.Context().m_nKingNearCorner = -2;
    EXPECT_FALSE(near.Doubts(SH_KEEPKINGNEARCORNER));
    near.Context().m_nKingNearCorner = -1;
    EXPECT_TRUE(near.Doubts(SH_KEEPKINGNEARCORNER));
    CMadeMove far("8/8/4k3/8/8/8/8/K6N", 9, "Ka1-b1 Ke6-e7");
    far.Context().m_nKingNearCorner = -2;
    EXPECT_TRUE(far.Doubts(SH_KEEPKINGNEARCORNER));
}

TEST(KingNearCorner, MateOnTheMoveExcuses) {
    CMadeMove line("5k2/8/4K3/8/8/8/8/R7", 9, "Ra1-b1 Kf8-e8");
    line.Context().m_nKingNearCorner = 1;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGNEARCORNER)) << "Rb8 mates";
}

// ---- the edge, strict

TEST(StrictEdge, AnyMoveOfTheKingIsDoubtful) {
    CMadeMove king("4k3/p7/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    EXPECT_TRUE(king.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove pawn("4k3/p7/8/8/8/8/8/K6N", 7, "Ka1-b1 a7-a6");
    EXPECT_FALSE(pawn.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, SuspendedItIsTheWiderForm) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    line.After().m_wBlackState |= kKingMoveBanSuspended;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, NotInTheSecondForcedMateCycle) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    line.Context().m_bFFM = true;
    line.Context().m_nFfmCycleRelaxations = 2;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Context().m_bFfmCycleTwice = true;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, TheKingMayReturnToHisRootSquareIfWhiteHoldsTheOther) {
    CMadeMove held("4k3/8/8/8/8/8/8/K6R", 9, "Ka1-b1 Ke8-d8 Rh1-d1 Kd8-e8");
    EXPECT_FALSE(held.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove notHeld("4k3/8/8/8/8/8/8/K6R", 9, "Ka1-b1 Ke8-d8 Rh1-h2 Kd8-e8");
    EXPECT_TRUE(notHeld.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove holderFalls("4k3/8/8/8/b7/8/8/K6R", 9, "Ka1-b1 Ke8-d8 Rh1-d1 Kd8-e8");
    EXPECT_TRUE(holderFalls.Doubts(SH_KEEPKINGONTHEEDGE)) << "Black takes the rook";
}

TEST(StrictEdge, AlmostStrictAKingForcedStraightBackMayMove) {
    CMadeMove line("k7/8/8/1NK5/8/7B/8/8", 7, "Kc5-c6 Ka8-b8");
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Context().m_bAllowExceptions = true;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove free("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    free.Context().m_bAllowExceptions = true;
    EXPECT_TRUE(free.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, ACaptureOnceThePlayHasBegunIsLetPass) {
    CMadeMove atOnce("3Nk3/7p/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8:d8");
    EXPECT_TRUE(atOnce.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove later("3Nk3/7p/8/8/8/8/8/K6N", 7, "Ka1-b1 h7-h6 Kb1-a1 Ke8:d8");
    EXPECT_FALSE(later.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, InTheSeaSnakeAMinorFigureMayFallAtOnce) {
    CMadeMove minor("3Nk3/7p/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8:d8");
    EXPECT_FALSE(minor.Doubts(SH_KEEPKINGONTHEEDGE | SH_SEASNAKE, SH_KEEPKINGONTHEEDGE));
    CMadeMove rook("4k3/3R4/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8:d7");
    EXPECT_TRUE(rook.Doubts(SH_KEEPKINGONTHEEDGE | SH_SEASNAKE, SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, AKingDrivenByZugzwangMayMove) {
    CMadeMove blocked("4k3/8/8/7p/8/7P/8/K6N", 9);
    blocked.Watch("h5", "h5").Play("Ka1-b1 h5-h4 Kb1-a1 Ke8-d8");
    EXPECT_FALSE(blocked.Doubts(SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK, SH_KEEPKINGONTHEEDGE));
    CMadeMove mobile("4k3/8/8/7p/8/8/8/K6N", 9);
    mobile.Watch("h5", "h5").Play("Ka1-b1 h5-h4 Kb1-a1 Ke8-d8");
    EXPECT_TRUE(mobile.Doubts(SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK, SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, AgainstAStrippedBlackTheKingMayMoveAlongTheEdge) {
    CMadeMove edge("4k3/8/8/8/8/8/8/K6R", 9, "Ka1-b1 Ke8-d8");
    EXPECT_TRUE(edge.Doubts(SH_KEEPKINGONTHEEDGE));
    edge.Context().m_nEdgeHeavyFigures = 1;
    EXPECT_FALSE(edge.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove off("4k3/8/8/8/8/8/8/K6R", 9, "Ka1-b1 Ke8-d7");
    off.Context().m_nEdgeHeavyFigures = 1;
    EXPECT_TRUE(off.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(IsBlackStripped, CountsBothSides) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6R", 7);
    EXPECT_FALSE(IsBlackStripped(line.After())) << "no counts, no exception";
    line.Context().m_nEdgeHeavyFigures = 1;
    EXPECT_TRUE(IsBlackStripped(line.After()));
    line.Context().m_nEdgeMinorFigures = 1;
    EXPECT_FALSE(IsBlackStripped(line.After()));
    CMadeMove rook("4k2r/8/8/8/8/8/8/K6R", 7);
    rook.Context().m_nEdgeHeavyFigures = 1;
    EXPECT_FALSE(IsBlackStripped(rook.After()));
    CMadeMove knights("4k1nn/8/8/8/8/8/8/K6R", 7);
    knights.Context().m_nEdgeHeavyFigures = 1;
    EXPECT_FALSE(IsBlackStripped(knights.After()));
}

TEST(StrictEdge, AShortMateIsLookedForWithTimeLeft) {
    CMadeMove early("4k3/8/8/8/8/8/1R6/R3K3", 11, "Ke1-e2 Ke8-d8");
    EXPECT_FALSE(early.Doubts(SH_KEEPKINGONTHEEDGE)) << "Ra7 and Rb8";
    CMadeMove late("4k3/8/8/8/8/8/1R6/R3K3", 9, "Ke1-e2 Ke8-d8");
    EXPECT_TRUE(late.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove none("4k3/8/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d8");
    EXPECT_TRUE(none.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(StrictEdge, MateOnTheMoveExcuses) {
    CMadeMove line("5k2/8/4K3/8/8/8/8/R7", 7, "Ra1-b1 Kf8-e8");
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

// ---- the edge, wider form

TEST(Edge, TheKingMayMoveAlongIt) {
    CMadeMove along("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    along.Context().m_bDontLetKingMove = false;
    EXPECT_FALSE(along.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove off("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    off.Context().m_bDontLetKingMove = false;
    EXPECT_TRUE(off.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(Edge, TheSquaresBesideTheCornersMayCount) {
    CMadeMove line("1k6/8/8/8/8/8/8/K6N", 7, "Ka1-a2 Kb8-b7");
    line.Context().m_bDontLetKingMove = false;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Context().m_bEdgeInclCornerSquares = true;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

// ---- the extended edge

TEST(ExtendedEdge, ReachesToTheLineBesideTheEdge) {
    CMadeMove beside("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    EXPECT_FALSE(beside.Doubts(SH_KEEPKINGWITHINEXTEDGE));
    CMadeMove off("8/4k3/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke7-d6");
    EXPECT_TRUE(off.Doubts(SH_KEEPKINGWITHINEXTEDGE));
}

TEST(ExtendedEdge, StrictTheKingMayOnlyStepBackFromTheLine) {
    struct TRow {
        const char* m_placement;
        const char* m_moves;
        bool m_bDoubtful;
    };
    const TRow rows[] = {{"8/4k3/p7/8/8/8/8/K6N", "Ka1-b1 Ke7-d7", true},
                         {"8/4k3/p7/8/8/8/8/K6N", "Ka1-b1 Ke7-d8", false},
                         {"8/4k3/p7/8/8/8/8/K6N", "Ka1-b1 a6-a5", false},
                         {"4k3/8/p7/8/8/8/8/K6N", "Ka1-b1 Ke8-e7", false}};
    for (const TRow& row : rows) {
        CMadeMove line(row.m_placement, 7, row.m_moves);
        EXPECT_FALSE(line.Doubts(SH_KEEPKINGWITHINEXTEDGE)) << row.m_moves;
        line.Context().m_bExtEdgeStrict = true;
        EXPECT_EQ(line.Doubts(SH_KEEPKINGWITHINEXTEDGE), row.m_bDoubtful) << row.m_moves;
    }
}

TEST(ExtendedEdge, APromotionOnTheKingsWingIsLetPass) {
    CMadeMove wing("8/8/4k3/8/8/8/6p1/K6N", 7, "Ka1-b2 g2-g1N");
    EXPECT_FALSE(wing.Doubts(SH_KEEPKINGWITHINEXTEDGE));
    CMadeMove other("8/8/4k3/8/8/8/1p6/7K", 7, "Kh1-g2 b2-b1N");
    EXPECT_TRUE(other.Doubts(SH_KEEPKINGWITHINEXTEDGE));
}

TEST(ExtendedEdge, WithASweepingRookOnlyWhileItSweeps) {
    CMadeMove away("8/4k3/8/8/8/8/R7/7K", 9, "Kh1-h2 Ke7-d6");
    EXPECT_FALSE(away.Doubts(SH_KEEPKINGWITHINEXTEDGE | SH_SWEEPINGWHITEROOK, SH_KEEPKINGWITHINEXTEDGE));
    CMadeMove atWork("8/4k3/8/8/8/8/8/R6K", 9, "Kh1-h2 Ke7-d6");
    EXPECT_TRUE(atWork.Doubts(SH_KEEPKINGWITHINEXTEDGE | SH_SWEEPINGWHITEROOK, SH_KEEPKINGWITHINEXTEDGE));
    CMadeMove none("8/4k3/8/8/8/8/P7/7K", 9, "Kh1-h2 Ke7-d6");
    EXPECT_TRUE(none.Doubts(SH_KEEPKINGWITHINEXTEDGE | SH_SWEEPINGWHITEROOK, SH_KEEPKINGWITHINEXTEDGE));
}

// ---- dynamic relaxation

/// A king that leaves the edge, under the wider form.
CMadeMove& Wider(CMadeMove& line) {
    line.Context().m_bDontLetKingMove = false;
    return line;
}

TEST(DynamicRelaxation, OnAnAdvancedPawn) {
    CMadeMove line("4k3/8/7P/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    EXPECT_TRUE(Wider(line).Doubts(SH_KEEPKINGONTHEEDGE));
    line.Context().m_bRelaxOnAdvancedPawn = true;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove blocked("4k3/7p/7P/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    Wider(blocked).Context().m_bRelaxOnAdvancedPawn = true;
    EXPECT_TRUE(blocked.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(DynamicRelaxation, OnCaptures) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    Wider(line).Context().m_nRelaxCaptures = 1;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Analysis().m_rootMaterial.m_nBlackFigures = 1; // it is gone
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Analysis().m_rootMaterial.m_nWhiteFigures = 2; // but White has lost one too
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(DynamicRelaxation, PawnsCountIfToldSo) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    Wider(line).Context().m_nRelaxCaptures = 1;
    line.Analysis().m_rootMaterial.m_nBlackPawns = 1;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Context().m_bRelaxCapturesInclPawns = true;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(DynamicRelaxation, ALooseManIsAsGoodAsCaptured) {
    CMadeMove loose("4k3/8/7n/8/8/8/8/K6R", 9, "Ka1-b1 Ke8-d7");
    Wider(loose).Context().m_nRelaxCaptures = 1;
    EXPECT_FALSE(loose.Doubts(SH_KEEPKINGONTHEEDGE));
    loose.Context().m_nRelaxCaptures = 2;
    EXPECT_TRUE(loose.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove guarded("4k3/6p1/7n/8/8/8/8/K6R", 9, "Ka1-b1 Ke8-d7");
    Wider(guarded).Context().m_nRelaxCaptures = 1;
    EXPECT_TRUE(guarded.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(DynamicRelaxation, MayBeKeptFromTheEdgeProper) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    Wider(line).Context().m_nRelaxCaptures = 1;
    line.Analysis().m_rootMaterial.m_nBlackFigures = 1;
    line.Context().m_bRelaxExtEdgeOnly = true;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    CMadeMove ext("8/4k3/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke7-d6");
    ext.Context().m_nRelaxCaptures = 1;
    ext.Context().m_bRelaxExtEdgeOnly = true;
    EXPECT_TRUE(ext.Doubts(SH_KEEPKINGWITHINEXTEDGE));
    ext.Analysis().m_rootMaterial.m_nBlackFigures = 1;
    EXPECT_FALSE(ext.Doubts(SH_KEEPKINGWITHINEXTEDGE));
}

TEST(DynamicRelaxation, DeferringMarksTheMoveAndTellsHowLong) {
    CMadeMove nine("4k3/8/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    Wider(nine).Context().m_shDeferMoves = 2;
    ASSERT_EQ(nine.After().m_nMoves, 9);
    EXPECT_FALSE(nine.Doubts(SH_KEEPKINGONTHEEDGE));
    EXPECT_NE(nine.Move().m_nPromotion & kMoveDefersEdgeCheck, 0);
    EXPECT_EQ(nine.Context().m_shDeferMaxMoves, 5);

    CMadeMove three("4k3/8/8/8/8/8/8/K6N", 5, "Ka1-b1 Ke8-d7");
    Wider(three).Context().m_shDeferMoves = 2;
    ASSERT_EQ(three.After().m_nMoves, 3);
    EXPECT_FALSE(three.Doubts(SH_KEEPKINGONTHEEDGE));
    EXPECT_EQ(three.Context().m_shDeferMaxMoves, 1);
}

TEST(DynamicRelaxation, DeferringIsSkippedWhenTheBalanceCannotChange) {
    CMadeMove bare("4k3/8/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    Wider(bare).Context().m_shDeferMoves = 2;
    bare.Context().m_bSkipDeferIfNoBalanceChange = true;
    EXPECT_TRUE(bare.Doubts(SH_KEEPKINGONTHEEDGE));
    EXPECT_EQ(bare.Move().m_nPromotion & kMoveDefersEdgeCheck, 0);
    CMadeMove figure("4k3/8/8/n7/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    Wider(figure).Context().m_shDeferMoves = 2;
    figure.Context().m_bSkipDeferIfNoBalanceChange = true;
    EXPECT_FALSE(figure.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(DynamicRelaxation, TheBalanceChangesByPawnsInTime) {
    CMadeMove pawn("4k3/8/8/7P/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    EXPECT_TRUE(CanBalanceChange(pawn.After()));
    CMadeMove late("4k3/8/8/7P/8/8/8/K6N", 5, "Ka1-b1 Ke8-d7");
    EXPECT_FALSE(CanBalanceChange(late.After()));
    CMadeMove blackPawn("4k3/p7/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    EXPECT_FALSE(CanBalanceChange(blackPawn.After()));
    blackPawn.Context().m_bRelaxCapturesInclPawns = true;
    EXPECT_TRUE(CanBalanceChange(blackPawn.After()));
}

/// The maker's part: the marked move, made for good from its parent.
TChessboard MakeMarked(CMadeMove& line) {
    TChessboard child = line.Before();
    child.m_pPrevious = &line.Before();
    TMove move = line.Move();
    EXPECT_EQ(MakeBlackMove(child, move, true), kMoveStands);
    return child;
}

TEST(DynamicRelaxation, TheMakerTurnsTheMarkIntoARelaxedLine) {
    CMadeMove line("4k3/8/8/8/8/8/8/KR6", 11, "Ka1-b2 Ke8-d7");
    Wider(line).Context().m_shDeferMoves = 2;
    ASSERT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Context().m_shDeferMaxMoves = 77; // what a sibling may have left
    const TChessboard child = MakeMarked(line);
    EXPECT_NE(child.m_wBlackState & kEdgeRelaxed, 0);
    EXPECT_EQ(line.Context().m_shDeferMaxMoves, 5);
    EXPECT_NE(child.m_nHeurParams, line.Before().m_nHeurParams) << "its results are its own";
    EXPECT_EQ(child.m_nHeurParams, ComputeHeurParams(child));
}

TEST(DynamicRelaxation, TheMakerLiftsTheBanOnKingMovesInItsLine) {
    CMadeMove line("4k3/8/8/8/8/8/8/KR6", 11, "Ka1-b2 Ke8-d7");
    line.Context().m_bDontLetKingMove = true;
    line.Context().m_shDeferMoves = 2;
    ASSERT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    const TChessboard child = MakeMarked(line);
    EXPECT_NE(child.m_wBlackState & kEdgeRelaxed, 0);
    EXPECT_NE(child.m_wBlackState & kKingMoveBanSuspended, 0);
    EXPECT_EQ(child.m_nHeurParams, ComputeHeurParams(child));
    Wider(line).Under(SH_KEEPKINGONTHEEDGE);
    EXPECT_EQ(MakeMarked(line).m_wBlackState & kKingMoveBanSuspended, 0) << "there is none";
}

/// When the time is over the king counts where he stands, whatever moves.
TEST(DynamicRelaxation, BehindALiftedBanTheEdgeIsWhatCounts) {
    CMadeMove off("8/3k3n/8/8/8/8/8/K6N", 7, "Ka1-b1 Nh7-g5"), back("8/3k4/8/8/8/8/8/K6N", 7, "Ka1-b1 Kd7-d8");
    for (CMadeMove* line : {&off, &back}) {
        line->Context().m_bDontLetKingMove = true;
        line->Context().m_shDeferMaxMoves = 11;
        line->After().m_wBlackState |= kEdgeRelaxed | kKingMoveBanSuspended;
    }
    EXPECT_TRUE(off.Doubts(SH_KEEPKINGONTHEEDGE));
    EXPECT_FALSE(back.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(DynamicRelaxation, AMarkWithoutAnEdgeHeuristicDoesNothing) {
    CMadeMove line("4k3/8/8/8/8/8/8/KR6", 11, "Ka1-b2 Ke8-d7");
    Wider(line).Context().m_shDeferMoves = 2;
    ASSERT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Under(0);
    EXPECT_EQ(MakeMarked(line).m_wBlackState & kEdgeRelaxed, 0);
    line.Under(SH_KEEPKINGWITHINEXTEDGE); // d7 is within it
    EXPECT_EQ(MakeMarked(line).m_wBlackState & kEdgeRelaxed, 0);
}

TEST(DynamicRelaxation, ARelaxedLineIsFreeUntilTheTimeIsOver) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    Wider(line).After().m_wBlackState |= kEdgeRelaxed;
    line.Context().m_shDeferMoves = 2;
    line.Context().m_shDeferMaxMoves = 9;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    EXPECT_EQ(line.Move().m_nPromotion & kMoveDefersEdgeCheck, 0) << "deferred once";
    line.Context().m_shDeferMaxMoves = 11;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    EXPECT_EQ(line.Context().m_shDeferMaxMoves, 11);
}

TEST(DynamicRelaxation, TheEventThatHasComeKeepsTheLineFree) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d7");
    Wider(line).After().m_wBlackState |= kEdgeRelaxed;
    line.Context().m_shDeferMaxMoves = 11;
    line.Context().m_nRelaxCaptures = 1;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE));
    line.Analysis().m_rootMaterial.m_nBlackFigures = 1;
    EXPECT_FALSE(line.Doubts(SH_KEEPKINGONTHEEDGE));
}

TEST(KingEdge, CornersAndTheSquaresBesideThem) {
    CMadeMove corner("7k/8/8/8/8/8/8/K6N", 5), beside("8/6k1/8/8/8/8/8/K6N", 5), edge("6k1/8/8/8/8/8/8/K6N", 5);
    EXPECT_TRUE(IsBlackKingInCorner(corner.After()));
    EXPECT_FALSE(IsBlackKingInCorner(beside.After()));
    EXPECT_FALSE(IsBlackKingInCorner(edge.After()));
    EXPECT_FALSE(IsBlackKingBesideCorner(corner.After()));
    EXPECT_TRUE(IsBlackKingBesideCorner(beside.After()));
    EXPECT_FALSE(IsBlackKingBesideCorner(edge.After()));
}

} // namespace
} // namespace quillon::test
