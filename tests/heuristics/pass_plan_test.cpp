// The plan of passes as a whole: results, the list that the user sees, the dry runs.

#include "heuristics/pass_plan.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_signature.h"
#include "heuristics/planned_position.h"
#include "heuristics/sea_snake.h"
#include "search/register_use.h"
#include "tempregister/search_register.h"

namespace quillon::test {
namespace {

constexpr const char* kRook = "8/8/8/3k4/8/8/8/K6R";
constexpr const char* kTwoRooks = "8/8/8/3k4/8/8/8/K5RR";

TEST(PassName, CountsRelaxationsByLetters) {
    EXPECT_EQ(PassName(1, 0), "1");
    EXPECT_EQ(PassName(1, 1), "1b");
    EXPECT_EQ(PassName(1, 2), "1c");
    EXPECT_EQ(PassName(1, 25), "1z");
    EXPECT_EQ(PassName(2, 0), "2");
    EXPECT_EQ(PassName(2, 7), "2") << "the pass without heuristics is one";
    EXPECT_NE(PassName(1, 26), PassName(1, 27));
}

// ---- doubt of quick mode

/// What the register says of a position with eleven plies left, doubted in pass 1 where the snake was over, when the
/// plan has taken the snake off.
TMateResult KnownBehindTheSeaSnake(bool bKeepQuick) {
    CPlannedPosition plan("k7/p7/8/8/8/8/P7/1Q5K", SH_SEASNAKE | SH_DONTRECEDEBLACKKING);
    TAggregatedTemporaryChessboardRegister known(1 << 20, 256);
    CSearchRegister kept(known);
    plan.Analysis().m_pRegister = &kept;
    plan.Parameters().m_bSeaSnakeKeepQuick = bKeepQuick;
    TChessboard late = plan.Root();
    late.m_nMoves = 11;
    EXPECT_FALSE(AppliesSeaSnake(late));
    kept.AddDoubtfulUser(late.m_nHeuristics, late.m_nHeurParams);
    StoreVerdict(late, MR_DOUBTFUL);
    EXPECT_EQ(AskRegister(late), MR_DOUBTFUL);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Root().m_nHeurParams, late.m_nHeurParams) << "the next pass asks under the same key";
    EXPECT_EQ(plan.Mask(), late.m_nHeuristics);
    EXPECT_EQ(plan.Analysis().m_bSafeMode, !bKeepQuick);
    return AskRegister(late);
}

TEST(PassPlan, SafeModeDoesNotInheritTheDoubtOfQuickMode) {
    EXPECT_EQ(KnownBehindTheSeaSnake(false), MR_NONE);
    EXPECT_EQ(KnownBehindTheSeaSnake(true), MR_DOUBTFUL) << "quick mode goes on";
}

// ---- steps

TEST(PassPlan, CountsItsSteps) {
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_SAVEQUEENROOK | SH_AREKINGSNEAR);
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Parameters().m_nRelaxations, 1);
    EXPECT_EQ(plan.Root().m_nHeurParams, ComputeHeurParams(plan.Root()));
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Parameters().m_nRelaxations, 2);
}

TEST(PassPlan, TheUserMaySwitchRelaxationOff) {
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_SAVEQUEENROOK);
    plan.Parameters().m_bLetRelaxHeuristics = false;
    plan.Parameters().m_bFallbackPending = true;
    EXPECT_EQ(CountRelaxations(plan.Root()), 0);
    EXPECT_EQ(plan.Step(), kNothingLeftToRelax);
    EXPECT_EQ(plan.Mask(), 0u);
    EXPECT_EQ(plan.Root().m_nHeurParams, 0u);
    EXPECT_EQ(plan.Parameters().m_nRelaxations, 0);
    EXPECT_FALSE(plan.Parameters().m_bFallbackPending);
}

TEST(PassPlan, ABlackNodeFollowsItsParent) {
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_AREKINGSNEAR);
    plan.Position().Play("Rh1-h2");
    TChessboard& child = plan.Position().Now();
    EXPECT_EQ(TryRelaxSpecialHeuristics(child), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_AREKINGSNEAR);
    EXPECT_EQ(child.m_nHeuristics, SH_AREKINGSNEAR);
    EXPECT_EQ(child.m_nHeurParams, ComputeHeurParams(child));
    EXPECT_EQ(TryRelaxSpecialHeuristics(child), kNothingLeftToRelax);
    EXPECT_EQ(child.m_nHeuristics, 0u);
    child.m_pPrevious = nullptr;
    child.m_nHeuristics = SH_ZUGZWANG;
    EXPECT_EQ(TryRelaxSpecialHeuristics(child), kNothingLeftToRelax) << "without a parent nothing happens";
    EXPECT_EQ(child.m_nHeuristics, SH_ZUGZWANG);
}

TEST(PassPlan, BeginsAtTheFirstPass) {
    CPlannedPosition plan("qrb3k1/8/8/8/8/8/8/4K2R", SH_DONTLETFIGUREUNBLOCK);
    plan.Watch("a8 c8");
    plan.Parameters().m_nRelaxations = 9;
    plan.Parameters().m_bFfmPreliminary = true;
    BeginPassPlan(plan.Root());
    EXPECT_EQ(plan.Parameters().m_nRelaxations, 0);
    EXPECT_EQ(plan.Root().m_blockedFigures[0], String2Square("a8"));
    EXPECT_EQ(plan.Root().m_blockedFigures[1], String2Square("c8"));
    EXPECT_EQ(plan.Root().m_blockedFigures[2], kNoSquare);
    EXPECT_EQ(plan.Root().m_nHeurParams, ComputeHeurParams(plan.Root()));
    EXPECT_EQ(plan.Mask(), SH_DONTLETFIGUREUNBLOCK) << "a preliminary pass belongs to FindForcedMate";
}

TEST(PassPlan, ParkedFiguresComeBackWithinAWholePlan) {
    CPlannedPosition plan("k7/8/8/8/8/8/8/qrbnK2R", SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK);
    plan.Watch("a1 b1 c1");
    plan.Parameters().m_bAllowExceptions = true;
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_KEEPKINGONTHEEDGE) << "parked";
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK) << "back, and the strict form ended";
    EXPECT_FALSE(plan.Parameters().m_bDontLetKingMove);
}

// ---- dry runs

/// What a dry run must leave as it is.
void ExpectNothingChanges(CPlannedPosition& plan, void (*run)(const TChessboard&)) {
    const THeuristicParameters parameters = plan.Parameters();
    const TChessboard root = plan.Root();
    run(plan.Root());
    EXPECT_TRUE(parameters == plan.Parameters());
    EXPECT_EQ(root.m_nHeuristics, plan.Root().m_nHeuristics);
    EXPECT_EQ(root.m_nHeurParams, plan.Root().m_nHeurParams);
    EXPECT_EQ(root.m_bySideState, plan.Root().m_bySideState);
    EXPECT_EQ(root.m_blockedFigures, plan.Root().m_blockedFigures);
    EXPECT_EQ(root.m_board, plan.Root().m_board);
    EXPECT_FALSE(plan.Analysis().m_bSafeMode);
    for (const auto& stamp : plan.Analysis().m_relaxationTicks)
        ASSERT_EQ(stamp, 0u);
}

TEST(PassPlan, DryRunsChangeNothing) {
    CPlannedPosition plan(kTwoRooks, SH_FINDFORCEDMATE | SH_SEASNAKE | SH_ONECOLORPLAYPOSSIBLE | SH_KEEPKINGONTHEEDGE);
    plan.Root().m_bySideState = 2;
    plan.Parameters().m_bFfmPreliminary = true;
    plan.Parameters().m_nRelaxations = 4;
    ExpectNothingChanges(plan, [](const TChessboard& root) { (void)ShowPassPlan(root); });
    ExpectNothingChanges(plan, [](const TChessboard& root) { (void)CountRelaxations(root); });
}

TEST(PassPlan, StepsThatTheClockDecidesAreNotCountedBeforehand) {
    CPlannedPosition plan(kTwoRooks, SH_FINDFORCEDMATE | SH_AREKINGSNEAR);
    EXPECT_EQ(CountRelaxations(plan.Root()), 1) << "without FindForcedMate";
    plan.Analysis().m_nStartTicks = 1000;
    for (auto& stamp : plan.Analysis().m_relaxationTicks)
        stamp = 1001;
    int made = 0, byClock = 0;
    for (int result; (result = plan.Step()) != kNothingLeftToRelax; ++made)
        byClock += result < 0;
    EXPECT_EQ(byClock, 2);
    EXPECT_EQ(made, 3);
}

TEST(PassPlan, StepsCountedAreThoseThatAreMade) {
    std::mt19937_64 rng(5);
    for (int i = 0; i < Samples(60); ++i) {
        CPlannedPosition plan(AnyPlacement(rng, i, 4 + i % 6),
                              static_cast<std::uint32_t>(rng()) & 0xcfeff0ffu & ~SH_FINDFORCEDMATE & ~0x100u);
        const int counted = CountRelaxations(plan.Root());
        int made = 0;
        while (plan.Step() != kNothingLeftToRelax && plan.Mask() != 0)
            ++made;
        EXPECT_EQ(counted, made);
    }
}

/// The key figure's rule asks for a pass whatever is left; with nothing left that is the pass without heuristics.
TEST(PassPlan, AStepThatLeavesNothingMakesNoPassWithHeuristics) {
    CPlannedPosition plan("k1n4R/8/1K6/8/8/8/8/8", SH_KEYWHITEFIGURE);
    plan.Parameters().m_nKeyWhiteFigure = String2Square("h8");
    EXPECT_EQ(CountRelaxations(plan.Root()), 0);
    EXPECT_EQ(ShowPassPlan(plan.Root()), "Pass 1: SH_KEYWHITEFIGURE(H8),  QuickMode");
    EXPECT_EQ(plan.Step(), kRelaxed);
    EXPECT_EQ(plan.Mask(), 0u);
}

// ---- the list

TEST(ShowPassPlan, ListsASetForEachPass) {
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_SAVEQUEENROOK | SH_AREKINGSNEAR);
    EXPECT_EQ(ShowPassPlan(plan.Root()), "Pass 1: SH_AREKINGSNEAR, SH_SAVEQUEEN/ROOK, SH_ZUGZWANG,  QuickMode"
                                         "\n\nPass 1b: SH_AREKINGSNEAR, SH_SAVEQUEEN/ROOK,  QuickMode"
                                         "\n\nPass 1c: SH_AREKINGSNEAR,  QuickMode");
}

TEST(ShowPassPlan, SaysWhenThereIsNothingToList) {
    CPlannedPosition plan(kRook, 0);
    EXPECT_EQ(ShowPassPlan(plan.Root()), "No heuristics selected.");
}

TEST(ShowPassPlan, ListsOnePassWhenRelaxationIsOff) {
    CPlannedPosition plan(kRook, SH_ZUGZWANG | SH_AREKINGSNEAR);
    plan.Parameters().m_bLetRelaxHeuristics = false;
    plan.Analysis().m_bSafeMode = true;
    EXPECT_EQ(ShowPassPlan(plan.Root()), "Pass 1: SH_AREKINGSNEAR, SH_ZUGZWANG");
}

TEST(ShowPassPlan, StarsWhatDependsOnTheClock) {
    CPlannedPosition plan(kTwoRooks, SH_FINDFORCEDMATE | SH_AREKINGSNEAR);
    plan.Analysis().m_bSafeMode = true;
    plan.Analysis().m_nStartTicks = 1000;
    plan.Analysis().m_relaxationTicks[1] = 9000; // long past: the list asks no clock
    plan.Parameters().m_nFfmDepth = plan.Parameters().m_nFfmStartDepth = 3;
    EXPECT_EQ(
        ShowPassPlan(plan.Root()),
        "Pass 1: SH_AREKINGSNEAR, SH_FINDFORCEDMATE(#1)"
        "\n\nPass 1b*: SH_AREKINGSNEAR, SH_FINDFORCEDMATE(#1+)"
        "\n\nPass 1c*: SH_AREKINGSNEAR, SH_FINDFORCEDMATE(#2+)"
        "\n\nPass 1d: SH_AREKINGSNEAR"
        "\n\n* time-dependent relaxation (non-deterministic) - possible, but actually occurs only if all previous "
        "passes are completed in a short time");
}

TEST(ShowPassPlan, BeginsWithThePreliminaryPass) {
    CPlannedPosition plan(kRook, SH_FINDFORCEDMATE | SH_KEEPKINGONTHEEDGE);
    plan.Analysis().m_bSafeMode = true;
    plan.Parameters().m_bDontLetKingMove = false;
    plan.Parameters().m_bFfmPreliminary = true;
    const std::string text = ShowPassPlan(plan.Root());
    EXPECT_EQ(text, "Pass 1: SH_KEEPKINGWITHINEXTEDGE, SH_FINDFORCEDMATE(CheckOnly-Preliminary)"
                    "\n\nPass 1b: SH_KEEPKINGONTHEEDGE, SH_FINDFORCEDMATE(CheckOnly)"
                    "\n\nPass 1c: SH_KEEPKINGONTHEEDGE");
    BeginPassPlan(plan.Root());
    EXPECT_EQ(ShowPassPlan(plan.Root()), text) << "the same once the plan has begun";
}

TEST(ShowPassPlan, ListsTheMovesThatSeaSnakeWaitsFor) {
    CPlannedPosition plan(kRook, SH_SEASNAKE | SH_AREKINGSNEAR);
    plan.Parameters().m_nSeaSnakeApproach = String2Square("d5");
    plan.Analysis().m_seaSnakeAfterMoves = {ParseMove("Rh1-h2", true), ParseMove("Ka1-b1", true)};
    EXPECT_EQ(ShowPassPlan(plan.Root()),
              "Pass 1: SH_AREKINGSNEAR, SH_SEASNAKE(D5,2),  QuickMode, SH_SEASNAKE(after Rh1-h2, Ka1-b1 only)"
              "\n\nPass 1b: SH_AREKINGSNEAR")
        << "and quick mode ends with it";
}

} // namespace
} // namespace quillon::test
