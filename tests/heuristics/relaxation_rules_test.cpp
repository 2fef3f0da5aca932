// The rules of the plan of passes, each on a position of its own, and that the plan always ends.

#include "heuristics/relaxation_rules.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/planned_position.h"

namespace quillon::test {
namespace {

constexpr const char* kCentre = "8/8/8/3k4/8/8/8/K6R";
constexpr const char* kQueenRookBishopKnight = "qrbn2k1/8/8/8/8/8/8/4K2R";

// ---- 1 and 2: figures that come back

TEST(RelaxationRules, ParkedFiguresComeBackAndTheOtherRulesRun) {
    CPlannedPosition plan(kCentre, SH_AREKINGSNEAR | SH_ZUGZWANG);
    plan.Parameters().m_bBlockedFiguresParked = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR | SH_DONTLETFIGUREUNBLOCK) << "and zugzwang went";
    EXPECT_FALSE(plan.Parameters().m_bBlockedFiguresParked);
    CPlannedPosition none(kCentre, SH_AREKINGSNEAR | SH_ZUGZWANG);
    EXPECT_EQ(none.Step(), kRelaxed);
    EXPECT_EQ(none.Mask(), SH_AREKINGSNEAR);
}

TEST(RelaxationRules, KeyFigureAndWatchedFiguresTakeTurns) {
    CPlannedPosition plan(kQueenRookBishopKnight, SH_AREKINGSNEAR | SH_DONTLETFIGUREUNBLOCK | SH_ZUGZWANG);
    plan.Watch("a8 b8");
    plan.Parameters().m_bKeyFigureSwapPending = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR | SH_KEYWHITEFIGURE | SH_ZUGZWANG) << "the key figure alone";
    EXPECT_TRUE(plan.Parameters().m_bKeyFigureSwapPending);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR | SH_DONTLETFIGUREUNBLOCK) << "the watched ones alone, and a rule more";
    EXPECT_FALSE(plan.Parameters().m_bKeyFigureSwapPending);
}

// ---- 4 to 8, 11, 16, 17, 19, 22: heuristics that just go

struct TGoingRow {
    ERelaxation (*m_pRule)(TRelaxation&);
    std::uint32_t m_nBit;
};

TEST(RelaxationRules, SomeHeuristicsJustGo) {
    constexpr TGoingRow kRows[] = {{RelaxSweepingRook, SH_SWEEPINGWHITEROOK},
                                   {RelaxZugzwang, SH_ZUGZWANG},
                                   {RelaxSeaSnake, SH_SEASNAKE},
                                   {RelaxOneColorPlay, SH_ONECOLORPLAYPOSSIBLE},
                                   {RelaxNearCorner, SH_KEEPKINGNEARCORNER},
                                   {RelaxMainDiagonal, SH_DONTLEAVEMAINDIAGONAL},
                                   {RelaxQueenChecks, SH_DONTLETBLACKQUEENCHECKTWICE},
                                   {RelaxPromotedQueen, SH_DONTLETPROMOTEDQUEENMOVE},
                                   {RelaxSingleQueenMate, SH_SINGLEQUEENMATE},
                                   {RelaxSavedFigures, SH_DONTLOSEANYFIGURES}};
    for (const TGoingRow& row : kRows) {
        CPlannedPosition plan(kCentre, row.m_nBit | SH_3MOVESTOMATE);
        plan.Parameters().m_bQueenCheckRelaxable = plan.Parameters().m_bPromotedQueenRelaxable = true;
        EXPECT_EQ(plan.Apply(row.m_pRule), ERelaxation::Done) << HeuristicName(row.m_nBit);
        EXPECT_EQ(plan.Mask(), SH_3MOVESTOMATE) << HeuristicName(row.m_nBit);
        EXPECT_EQ(plan.Apply(row.m_pRule), ERelaxation::NotMine) << HeuristicName(row.m_nBit);
        EXPECT_EQ(plan.Mask(), SH_3MOVESTOMATE);
        CPlannedPosition step(kCentre, row.m_nBit | SH_3MOVESTOMATE);
        step.Parameters().m_bQueenCheckRelaxable = step.Parameters().m_bPromotedQueenRelaxable = true;
        EXPECT_EQ(step.Step(), kRelaxed) << HeuristicName(row.m_nBit);
        EXPECT_EQ(step.Mask(), SH_3MOVESTOMATE) << HeuristicName(row.m_nBit);
    }
}

TEST(RelaxationRules, TwoOfThemGoEarlyOnlyWhenTold) {
    CPlannedPosition plan(kCentre, SH_DONTLETBLACKQUEENCHECKTWICE | SH_DONTLETPROMOTEDQUEENMOVE);
    EXPECT_EQ(plan.Apply(RelaxQueenChecks), ERelaxation::NotMine);
    EXPECT_EQ(plan.Apply(RelaxPromotedQueen), ERelaxation::NotMine);
    constexpr std::uint32_t kBoth =
        SH_DONTLETBLACKQUEENCHECKTWICE | SH_DONTLETPROMOTEDQUEENMOVE | SH_ASSERTBLACKKINGSURROUNDED;
    CPlannedPosition late(kCentre, kBoth), early(kCentre, kBoth);
    EXPECT_EQ(late.Step(), kRelaxed);
    EXPECT_EQ(late.Mask(), kBoth & ~SH_ASSERTBLACKKINGSURROUNDED);
    early.Parameters().m_bQueenCheckRelaxable = early.Parameters().m_bPromotedQueenRelaxable = true;
    EXPECT_EQ(early.Step(), kRelaxed);
    EXPECT_EQ(early.Mask(), kBoth & ~SH_DONTLETBLACKQUEENCHECKTWICE);
    EXPECT_EQ(early.Step(), kRelaxed);
    EXPECT_EQ(early.Mask(), SH_ASSERTBLACKKINGSURROUNDED);
}

TEST(RelaxationRules, SeaSnakeEndsQuickMode) {
    CPlannedPosition ends(kCentre, SH_SEASNAKE | SH_AREKINGSNEAR);
    EXPECT_EQ(ends.Step(), kRelaxed);
    EXPECT_TRUE(ends.Analysis().m_bSafeMode);
    EXPECT_EQ(ends.Step(), kNothingLeftToRelax);
    EXPECT_TRUE(ends.Analysis().m_bSafeMode) << "for all later passes";
    CPlannedPosition keeps(kCentre, SH_SEASNAKE | SH_AREKINGSNEAR);
    keeps.Parameters().m_bSeaSnakeKeepQuick = true;
    EXPECT_EQ(keeps.Step(), kRelaxed);
    EXPECT_FALSE(keeps.Analysis().m_bSafeMode);
    CPlannedPosition other(kCentre, SH_ZUGZWANG | SH_AREKINGSNEAR);
    EXPECT_EQ(other.Step(), kRelaxed);
    EXPECT_FALSE(other.Analysis().m_bSafeMode);
}

TEST(RelaxationRules, OneColorPlayTakesItsMarkerWithIt) {
    CPlannedPosition plan(kCentre, SH_ONECOLORPLAYPOSSIBLE | SH_AREKINGSNEAR);
    plan.Root().m_bySideState = 0x15; // marker 1 beside counts of captures
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Root().m_bySideState, 0x14);
}

// ---- 9: the edge that becomes a ring

TEST(RelaxationRules, AlmostStrictEdgeMayBecomeARing) {
    constexpr std::uint32_t kEdge = SH_KEEPKINGONTHEEDGE | SH_AREKINGSNEAR;
    CPlannedPosition plan(kCentre, kEdge);
    plan.Parameters().m_bEdgeToAssertBks = true;
    EXPECT_EQ(plan.Apply(ReplaceEdgeBySurrounded), ERelaxation::NotMine) << "no exceptions are allowed yet";
    plan.Parameters().m_bAllowExceptions = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_ASSERTBLACKKINGSURROUNDED | SH_AREKINGSNEAR);
    CPlannedPosition notTold(kCentre, kEdge);
    notTold.Parameters().m_bAllowExceptions = true;
    EXPECT_EQ(notTold.Apply(ReplaceEdgeBySurrounded), ERelaxation::NotMine);
}

// ---- 10, 14: dropping figures

TEST(RelaxationRules, FiguresAreDroppedOnceAndThenTheHeuristicGoes) {
    CPlannedPosition plan(kQueenRookBishopKnight, SH_DONTLETFIGUREUNBLOCK | SH_AREKINGSNEAR);
    plan.Watch("a8 b8 c8");
    plan.Parameters().m_bDropBlockedFigures = true;
    plan.Parameters().m_nDropThreshold = 3;
    plan.Parameters().m_nDropCount = 1;
    plan.Parameters().m_DropList[0] = String2Square("b8");
    plan.Parameters().m_bHeuristicsFallback = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Parameters().m_nBlockedFigures, 2);
    EXPECT_FALSE(plan.Parameters().m_bFallbackPending);
    EXPECT_EQ(plan.Mask(), SH_DONTLETFIGUREUNBLOCK | SH_AREKINGSNEAR);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR);
    EXPECT_TRUE(plan.Parameters().m_bFallbackPending) << "the figures ran out";
    EXPECT_FALSE(plan.Parameters().m_bApplyDlfuDynamically);
    EXPECT_EQ(plan.Step(), kNothingLeftToRelax);
    EXPECT_FALSE(plan.Parameters().m_bFallbackPending) << "for one pass";
}

TEST(RelaxationRules, TheEarlyDropNeedsALargeSet) {
    for (const int threshold : {2, 3}) {
        CPlannedPosition plan(kQueenRookBishopKnight, SH_DONTLETFIGUREUNBLOCK | SH_DONTLEAVEMAINDIAGONAL);
        plan.Watch("a8 b8 c8");
        plan.Parameters().m_bDropBlockedFigures = true;
        plan.Parameters().m_nDropThreshold = static_cast<std::int8_t>(threshold);
        plan.Parameters().m_nDropCount = 1;
        plan.Parameters().m_DropList[0] = String2Square("b8");
        EXPECT_EQ(plan.Step(), kRelaxed);
        EXPECT_EQ(plan.Parameters().m_nBlockedFigures, threshold > 2 ? 2 : 3);
        EXPECT_EQ((plan.Mask() & SH_DONTLEAVEMAINDIAGONAL) != 0, threshold > 2) << "a later rule made the step";
        EXPECT_EQ(plan.Step(), kRelaxed);
        EXPECT_EQ(plan.Parameters().m_nBlockedFigures, 2) << "the late drop has no threshold";
    }
}

TEST(RelaxationRules, FiguresAppliedOnTheWayAreDroppedToo) {
    CPlannedPosition plan(kQueenRookBishopKnight, SH_AREKINGSNEAR);
    plan.Watch("a8 b8");
    plan.Parameters().m_bDropBlockedFigures = true;
    EXPECT_EQ(plan.Apply(DropFigures), ERelaxation::NotMine);
    plan.Parameters().m_bDlfuDynamic = true;
    EXPECT_EQ(plan.Apply(DropFigures), ERelaxation::Done);
    EXPECT_FALSE(plan.Parameters().m_bDlfuDynamic) << "the list was empty";
    EXPECT_FALSE(plan.Parameters().m_bFallbackPending) << "fallback is off";
}

// ---- 12, 15: the key figure

constexpr const char* kExchangeable = "k7/8/4n3/8/3R4/2P5/8/K6R"; // the knight takes on d4, the pawn retakes

TEST(RelaxationRules, AnExchangeableKeyFigureGoesEarly) {
    const auto applies = [](const char* placement, const char* square, std::uint32_t others) {
        CPlannedPosition plan(placement, SH_KEYWHITEFIGURE | others);
        plan.Parameters().m_nKeyWhiteFigure = String2Square(square);
        const bool bApplies = plan.Apply(RelaxExchangeableKeyFigure) == ERelaxation::Done;
        EXPECT_EQ((plan.Mask() & SH_KEYWHITEFIGURE) == 0, bApplies);
        EXPECT_EQ(plan.Parameters().m_bKeyFigureSwapPending, bApplies && others != SH_AREKINGSNEAR);
        return bApplies;
    };
    EXPECT_TRUE(applies(kExchangeable, "d4", SH_AREKINGSNEAR));
    EXPECT_TRUE(applies(kExchangeable, "d4", SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK));
    EXPECT_FALSE(applies(kExchangeable, "h1", SH_AREKINGSNEAR)) << "nobody takes it";
    EXPECT_FALSE(applies("1k6/8/4n3/8/3R4/2P5/8/K6R", "d4", SH_AREKINGSNEAR)) << "not in the corner";
    EXPECT_FALSE(applies("k7/8/4n3/8/3R4/2P5/8/K7", "d4", SH_AREKINGSNEAR)) << "the only figure";
}

TEST(RelaxationRules, TheKeyFigureGoesLateInAnyCase) {
    CPlannedPosition plan(kCentre, SH_KEYWHITEFIGURE);
    EXPECT_EQ(plan.Apply(RelaxKeyFigure), ERelaxation::NextPass);
    EXPECT_EQ(plan.Mask(), 0u);
    EXPECT_FALSE(plan.Parameters().m_bKeyFigureSwapPending);
    EXPECT_EQ(plan.Apply(RelaxKeyFigure), ERelaxation::NotMine);
    CPlannedPosition both(kCentre, SH_KEYWHITEFIGURE | SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    EXPECT_EQ(both.Apply(RelaxKeyFigure), ERelaxation::NextPass);
    EXPECT_TRUE(both.Parameters().m_bKeyFigureSwapPending);
    CPlannedPosition notStrict(kCentre, SH_KEYWHITEFIGURE | SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    notStrict.Parameters().m_bDontLetKingMove = false;
    EXPECT_EQ(notStrict.Step(), kRelaxed);
    EXPECT_FALSE(notStrict.Parameters().m_bKeyFigureSwapPending);
    EXPECT_EQ(notStrict.Mask(), SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
}

// ---- 13: the strict edge

TEST(RelaxationRules, WatchedFiguresAreParkedForOnePass) {
    CPlannedPosition plan("k7/8/8/8/8/8/8/qrbnK2R", SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    plan.Watch("a1 b1 c1");
    EXPECT_EQ(plan.Apply(RelaxStrictEdge), ERelaxation::NextPass);
    EXPECT_EQ(plan.Mask(), SH_KEEPKINGONTHEEDGE);
    EXPECT_TRUE(plan.Parameters().m_bBlockedFiguresParked);
    CPlannedPosition back("k7/8/8/8/8/8/8/qrbnK2R", SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    back.Watch("a1 b1 c1");
    EXPECT_EQ(back.Apply(RelaxStrictEdge, true), ERelaxation::NextPass);
    EXPECT_FALSE(back.Parameters().m_bBlockedFiguresParked) << "they have only just come back";
    CPlannedPosition few("k7/8/8/8/8/8/8/qrbnK2R", SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    few.Watch("a1 b1");
    EXPECT_EQ(few.Apply(RelaxStrictEdge), ERelaxation::NextPass);
    EXPECT_FALSE(few.Parameters().m_bBlockedFiguresParked);
    CPlannedPosition two("k7/8/8/8/8/8/8/qrbnK1RR", SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    two.Watch("a1 b1 c1");
    EXPECT_EQ(two.Apply(RelaxStrictEdge), ERelaxation::NextPass);
    EXPECT_FALSE(two.Parameters().m_bBlockedFiguresParked) << "White has two figures";
}

/// Does the strict edge become the almost strict one here?
bool Tolerates(const char* placement, std::uint32_t others = 0) {
    CPlannedPosition plan(placement, SH_KEEPKINGONTHEEDGE | others);
    EXPECT_EQ(plan.Apply(RelaxStrictEdge), ERelaxation::NextPass);
    EXPECT_EQ(plan.Parameters().m_bAllowExceptions, plan.Parameters().m_bDontLetKingMove);
    return plan.Parameters().m_bAllowExceptions;
}

TEST(RelaxationRules, ExceptionsForAKingHeldByALoneQueen) {
    // Ka1, whom Kc2 and Qf7 leave no square; his rooks guard every square the queen could mate from.
    constexpr const char* kHeld = "rr6/5Q2/8/8/8/8/2K5/k7";
    EXPECT_TRUE(Tolerates(kHeld));
    EXPECT_FALSE(Tolerates(kHeld, SH_KEYLINE)) << "play on a line";
    EXPECT_FALSE(Tolerates("rr6/5Q2/8/8/7R/8/2K5/k7")) << "not alone";
    EXPECT_FALSE(Tolerates("rr6/5Q2/8/8/8/2K5/8/k7")) << "b1 is free";
}

TEST(RelaxationRules, ExceptionsForAKingShutInByHisOwnMen) {
    EXPECT_TRUE(Tolerates("kr6/p5rr/8/8/8/8/8/K5NR")) << "a corner with two men";
    EXPECT_FALSE(Tolerates("k6r/p5rr/8/8/8/8/8/K5NR"));
    EXPECT_TRUE(Tolerates("k7/p7/8/8/8/8/8/K5NR")) << "with few figures one man less is enough";
    EXPECT_TRUE(Tolerates("3kr3/2ppp2r/8/8/8/8/8/K5NR")) << "four of five at the edge";
    EXPECT_FALSE(Tolerates("3kr3/2pp3r/8/8/8/8/8/K5NR")) << "three of five";
}

TEST(RelaxationRules, ExceptionsForAQueenWithSeveralMates) {
    EXPECT_TRUE(Tolerates("k4rrr/8/1K6/8/8/8/8/7Q")) << "a7 and b7";
    EXPECT_FALSE(Tolerates("k4rrr/8/8/8/8/8/8/K6Q"));
}

TEST(RelaxationRules, ExceptionsForALoneGuardingRook) {
    // Kh8 with a rook beside him on g8: without it Qg7 mates.
    EXPECT_TRUE(Tolerates("6rk/8/7K/8/8/8/8/bnn3Q1"));
    EXPECT_FALSE(Tolerates("6nk/8/7K/8/8/8/8/bnn3Q1")) << "a knight does not count as the guard";
}

TEST(RelaxationRules, TheStrictEdgeEndsAsEdgeOrRing) {
    const auto ends = [](const char* placement, int category, std::uint32_t others) {
        CPlannedPosition plan(placement, SH_KEEPKINGONTHEEDGE | others);
        plan.Parameters().m_bAllowExceptions = true;
        plan.Parameters().m_nMoveCategory = static_cast<std::uint8_t>(category);
        EXPECT_EQ(plan.Step(), kRelaxed);
        EXPECT_FALSE(plan.Parameters().m_bDontLetKingMove);
        return plan.Mask();
    };
    constexpr const char* kHeavyAndBishop = "8/8/8/3k4/8/8/8/K4BRR";
    constexpr const char* kWedge = "8/8/8/3k4/3P4/2P5/8/K6R";
    EXPECT_EQ(ends(kHeavyAndBishop, 2, 0), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(ends(kHeavyAndBishop, 1, 0), SH_KEEPKINGONTHEEDGE) << "the king hardly moves";
    EXPECT_EQ(ends(kWedge, 2, 0), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(ends(kCentre, 2, 0), SH_KEEPKINGONTHEEDGE) << "nothing calls for a ring";
    EXPECT_EQ(ends(kCentre, 2, SH_KEYLINE), SH_ASSERTBLACKKINGSURROUNDED | SH_KEYLINE);
}

// ---- 18: the effective set

TEST(RelaxationRules, TheWatchedSetBecomesEffectiveOnce) {
    CPlannedPosition plan(kQueenRookBishopKnight, SH_DONTLETFIGUREUNBLOCK);
    plan.Watch("a8 b8");
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_TRUE(plan.Parameters().m_bBlockedFiguresEff);
    EXPECT_EQ(plan.Mask(), SH_DONTLETFIGUREUNBLOCK);
    EXPECT_EQ(plan.Apply(MakeWatchedEffective), ERelaxation::NotMine);
    CPlannedPosition none(kQueenRookBishopKnight, SH_DONTLETFIGUREUNBLOCK);
    EXPECT_EQ(none.Apply(MakeWatchedEffective), ERelaxation::NotMine) << "nothing is watched";
    CPlannedPosition off(kQueenRookBishopKnight, SH_AREKINGSNEAR);
    off.Watch("a8 b8");
    EXPECT_EQ(off.Apply(MakeWatchedEffective), ERelaxation::NotMine) << "the same pass would run again";
}

// ---- 20: saved figures

TEST(RelaxationRules, SavedFiguresGoByTheKindOfPlay) {
    const auto applies = [](const char* placement, std::uint32_t others) {
        CPlannedPosition plan(placement, SH_DONTLOSEANYFIGURES | others);
        return plan.Apply(RelaxSavedFiguresByType) == ERelaxation::Done;
    };
    EXPECT_TRUE(applies("8/8/8/3k4/3p4/3P4/8/K6N", SH_ASSERTBLACKKINGSURROUNDED)) << "one light figure decides little";
    EXPECT_FALSE(applies("8/8/8/3k4/3p4/3P4/8/K6R", SH_ASSERTBLACKKINGSURROUNDED)) << "figures decide";
    EXPECT_TRUE(applies("7k/8/8/P7/8/8/8/K6R", SH_ASSERTBLACKKINGSURROUNDED)) << "but a pawn gets through";
    EXPECT_TRUE(applies("8/8/8/3k4/3p4/3P4/8/K4BNN", 0)) << "few and light";
    EXPECT_FALSE(applies("8/8/8/3k4/3p4/3P4/8/K4BNN", SH_ASSERTBLACKKINGSURROUNDED));
    EXPECT_FALSE(applies("8/8/8/3k4/3p4/3P4/8/K3BBNN", 0)) << "four";
    EXPECT_FALSE(applies("8/8/8/3k4/3p4/3P4/8/K4BNR", 0)) << "a rook";
}

// ---- 21: the ring

TEST(RelaxationRules, TheStrictRingTakesTwoSteps) {
    CPlannedPosition plan(kCentre, SH_ASSERTBLACKKINGSURROUNDED | SH_AREKINGSNEAR);
    plan.Parameters().m_bAssertBKSStrict = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_ASSERTBLACKKINGSURROUNDED | SH_AREKINGSNEAR);
    EXPECT_FALSE(plan.Parameters().m_bAssertBKSStrict);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR);
}

// ---- 23: without an edge

TEST(RelaxationRules, WatchedFiguresAreReducedAndThenGo) {
    CPlannedPosition plan(kQueenRookBishopKnight, SH_DONTLETFIGUREUNBLOCK | SH_AREKINGSNEAR);
    plan.Watch("a8 b8 c8 d8");
    plan.Parameters().m_bBlockedFiguresEff = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Parameters().m_nBlockedFigures, 2) << "queen and rook";
    EXPECT_EQ(plan.Mask(), SH_DONTLETFIGUREUNBLOCK | SH_AREKINGSNEAR);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR);
    EXPECT_FALSE(plan.Parameters().m_bApplyDlfuDynamically);
}

TEST(RelaxationRules, WatchedFiguresStayWholeBesideAKingBoundToPawns) {
    for (const std::uint32_t others : {SH_KEEPKINGWITHINEXTEDGE, SH_AREKINGSNEAR}) {
        CPlannedPosition plan("k2qrbn1/P7/8/8/8/8/8/KR6", SH_DONTLETFIGUREUNBLOCK | others);
        plan.Watch("d8 e8 f8");
        EXPECT_EQ(plan.Apply(RelaxWithoutEdge), ERelaxation::Done);
        const bool bGone = (plan.Mask() & SH_DONTLETFIGUREUNBLOCK) == 0;
        EXPECT_EQ(bGone, others == SH_KEEPKINGWITHINEXTEDGE);
        EXPECT_EQ(plan.Parameters().m_nBlockedFigures, bGone ? 3 : 2);
    }
}

TEST(RelaxationRules, TheExtendedEdgeIsWeakenedAndReplaced) {
    CPlannedPosition plan(kCentre, SH_KEEPKINGWITHINEXTEDGE | SH_AREKINGSNEAR);
    plan.Parameters().m_bExtEdgeStrict = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_KEEPKINGWITHINEXTEDGE | SH_AREKINGSNEAR);
    EXPECT_FALSE(plan.Parameters().m_bExtEdgeStrict);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR) << "the king has room";
    CPlannedPosition narrow("k7/8/1K6/8/8/8/8/7R", SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_EQ(narrow.Step(), kRelaxed);
    EXPECT_EQ(narrow.Mask(), SH_ASSERTBLACKKINGSURROUNDED) << "one free square";
    CPlannedPosition confined("8/k7/8/8/7R/8/8/1R5K", SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_EQ(confined.Step(), kRelaxed);
    EXPECT_EQ(confined.Mask(), SH_ASSERTBLACKKINGSURROUNDED) << "a5 to a8 are all he has";
}

TEST(RelaxationRules, GeneralHeuristicsGoInOrderAndThenAll) {
    constexpr std::uint32_t kRest = SH_3MOVESTOMATE | SH_DONTRECEDEBLACKKING;
    std::uint32_t mask =
        SH_DONTLETBLACKQUEENCHECKTWICE | SH_SKIPWORSTWHITEMOVES | SH_SAVEQUEENROOK | SH_AREKINGSNEAR | kRest;
    CPlannedPosition plan(kCentre, mask);
    for (const std::uint32_t bit :
         {SH_DONTLETBLACKQUEENCHECKTWICE, SH_SKIPWORSTWHITEMOVES, SH_SAVEQUEENROOK, SH_AREKINGSNEAR}) {
        mask &= ~bit;
        EXPECT_EQ(plan.Step(), kRelaxed);
        EXPECT_EQ(plan.Mask(), mask);
    }
    EXPECT_EQ(plan.Step(), kNothingLeftToRelax);
    EXPECT_EQ(plan.Mask(), 0u);
    EXPECT_EQ(plan.Root().m_nHeurParams, 0u);
    EXPECT_EQ(plan.Step(), kNothingLeftToRelax) << "an empty mask stays empty";
}

// ---- 24: the successor of the edge

std::uint32_t SuccessorOfEdge(const char* placement, bool* pCorner = nullptr) {
    CPlannedPosition plan(placement, SH_KEEPKINGONTHEEDGE);
    plan.Parameters().m_bDontLetKingMove = false;
    (void)plan.Step();
    if (pCorner != nullptr)
        *pCorner = plan.Parameters().m_bEdgeInclCornerSquares;
    return plan.Mask();
}

TEST(RelaxationRules, TheEdgeGivesWayToWhatThePositionSuggests) {
    EXPECT_EQ(SuccessorOfEdge("k7/8/8/8/8/8/8/K6R"), SH_KEEPKINGWITHINEXTEDGE) << "it holds";
    EXPECT_EQ(SuccessorOfEdge("8/1k6/8/8/8/8/8/K6R"), SH_KEEPKINGWITHINEXTEDGE) << "a king on the run near the edge";
    EXPECT_EQ(SuccessorOfEdge(kCentre), 0u) << "in the centre nothing is";
}

TEST(RelaxationRules, TheEdgeGivesWayToTheRing) {
    // Kd4, caught between rooks on c1 and e1 and the white king: two free squares.
    EXPECT_EQ(SuccessorOfEdge("8/7p/1K6/8/3k4/8/1P1P4/2R1R3"), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(SuccessorOfEdge("8/8/8/8/3k4/8/8/K1R1R3"), 0u) << "too few men on the board";
}

TEST(RelaxationRules, TwoFarMinorFiguresSurroundNobody) {
    constexpr const char* kFar = "8/8/2ppp3/2pkp3/2p1p3/8/8/KNB5";
    constexpr const char* kNear = "8/3K4/2ppp3/2pkp3/2p1p3/8/8/1NB5";
    CPlannedPosition far(kFar, SH_KEEPKINGONTHEEDGE), near(kNear, SH_KEEPKINGONTHEEDGE);
    EXPECT_EQ(SuccessorOfEdge(kNear), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(SuccessorOfEdge(kFar), SH_ASSERTBLACKKINGSURROUNDED) << "one free square alone is enough";
    constexpr const char* kFarTwoFree = "8/8/2ppp3/2pkp3/2p5/8/8/KNB5";
    constexpr const char* kNearTwoFree = "8/3K4/2ppp3/2pkp3/2p5/8/8/1NB5";
    EXPECT_EQ(SuccessorOfEdge(kFarTwoFree), 0u);
    EXPECT_EQ(SuccessorOfEdge(kNearTwoFree), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(SuccessorOfEdge("8/3K4/2ppp3/2pkp3/2p5/8/8/NN6"), 0u) << "two knights and no pawn";
}

TEST(RelaxationRules, PawnsThatDriveTheKingInLeaveNoSuccessor) {
    EXPECT_EQ(SuccessorOfEdge("8/P7/8/8/8/7k/8/K7"), SH_KEEPKINGWITHINEXTEDGE) << "h3: nothing inside in one step";
    EXPECT_EQ(SuccessorOfEdge("8/P7/8/8/8/6k1/8/K7"), 0u);
    EXPECT_EQ(SuccessorOfEdge("8/8/8/P7/8/6k1/1p6/1K6"), SH_KEEPKINGWITHINEXTEDGE) << "no black pawn can move";
    EXPECT_EQ(SuccessorOfEdge("8/8/8/P7/1p6/6k1/8/1K6"), 0u);
}

TEST(RelaxationRules, AWallOfPawnsAroundTheKingIsARing) {
    // Five pawns around, one free square.
    constexpr const char* kWall = "k7/2P5/1PP5/2PP4/8/8/8/K7";
    EXPECT_EQ(SuccessorOfEdge(kWall), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(SuccessorOfEdge("k7/8/2P5/2PP4/8/8/8/K7"), SH_KEEPKINGWITHINEXTEDGE) << "three pawns";
}

TEST(RelaxationRules, AShutCornerWidensTheEdge) {
    bool bCorner = false;
    EXPECT_EQ(SuccessorOfEdge("k7/8/3P4/2PP4/8/8/8/K7", &bCorner), SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_TRUE(bCorner);
    EXPECT_EQ(SuccessorOfEdge("k7/8/8/8/8/8/8/K6R", &bCorner), SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_FALSE(bCorner);
}

// ---- all together

TEST(RelaxationRules, AreTwentyFourInTheirOrder) {
    EXPECT_EQ(kRelaxationRules.size(), 24u);
    EXPECT_EQ(kRelaxationRules[2].m_pApply, RelaxForcedMate);
    EXPECT_EQ(kRelaxationRules[9].m_pApply, DropFiguresEarly);
    EXPECT_EQ(kRelaxationRules[12].m_pApply, RelaxStrictEdge);
    EXPECT_EQ(kRelaxationRules[17].m_pApply, MakeWatchedEffective);
    EXPECT_EQ(kRelaxationRules[23].m_pApply, ReplaceEdge);
}

/// Whatever the set and its parameters, the plan ends, and no step leaves set, parameters and quick mode as they were.
TEST(RelaxationRules, EveryPlanEnds) {
    std::mt19937_64 rng(4711);
    const auto coin = [&] { return rng() % 2 == 0; };
    for (int i = 0; i < Samples(400); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 9);
        CPlannedPosition plan(placement,
                              static_cast<std::uint32_t>(rng()) & static_cast<std::uint32_t>(rng()) & kAllHeuristics);
        THeuristicParameters& p = plan.Parameters();
        p.m_bDontLetKingMove = coin();
        p.m_bExtEdgeStrict = coin();
        p.m_bAssertBKSStrict = coin();
        p.m_bDropBlockedFigures = coin();
        p.m_bDlfuDynamic = coin();
        p.m_bEdgeToAssertBks = coin();
        p.m_bFfmCycleTwice = coin();
        p.m_nFfmRelaxations = static_cast<std::uint8_t>(rng() % 4);
        p.m_nFfmCycleRelaxations = static_cast<std::uint8_t>(rng() % 4);
        p.m_nFfmWithOther = static_cast<std::int8_t>(static_cast<int>(rng() % 3) - 1);
        p.m_nDropThreshold = static_cast<std::int8_t>(rng() % 5);
        p.m_nMoveCategory = static_cast<std::uint8_t>(rng() % 4);
        for (TSquare square = 0; square < kSquares && p.m_nBlockedFigures < 4; ++square)
            if (IsBlack(plan.Root().m_board[square]) && plan.Root().m_board[square] != kBlackKing && coin())
                p.m_BlockedFigures[static_cast<std::size_t>(p.m_nBlockedFigures++)] = square;
        p.m_BlockedFiguresNow = p.m_BlockedFigures;
        int steps = 0;
        for (int result = kRelaxed; result != kNothingLeftToRelax; ++steps) {
            ASSERT_LT(steps, 60) << placement;
            THeuristicParameters before = p;
            const std::uint32_t mask = plan.Mask();
            const bool bSafe = plan.Analysis().m_bSafeMode;
            result = plan.Step();
            before.m_nRelaxations = p.m_nRelaxations;
            ASSERT_TRUE(plan.Mask() != mask || !(before == p) || bSafe != plan.Analysis().m_bSafeMode ||
                        result == kNothingLeftToRelax)
                << placement << ' ' << mask;
            ASSERT_EQ(plan.Root().m_nHeurParams, ComputeHeurParams(plan.Root()));
            ASSERT_EQ(plan.Mask() & ~kAllHeuristics, 0u);
            ASSERT_TRUE(result == kNothingLeftToRelax || plan.Mask() != 0);
        }
        ASSERT_EQ(plan.Mask(), 0u) << placement;
        ASSERT_EQ(p.m_nRelaxations, steps);
    }
}

} // namespace
} // namespace quillon::test
