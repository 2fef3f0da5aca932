#include "heuristics/initial_analysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/heuristic_text.h"
#include "heuristics/heuristic_text_reader.h"
#include "heuristics/read_set_check.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

bool Fired(const TInitialAnalysis& initial, std::string_view rule) {
    return std::ranges::find(initial.m_rules, rule) != initial.m_rules.end();
}

TEST(InitialAnalysis, StartsFromResetParameters) {
    CSearchedPosition position("7k/8/6K1/8/8/8/8/1Q6", 9);
    TSearchContext& p = position.Context();
    p.m_nRelaxations = 3;
    p.m_nRelaxCaptures = 3;
    p.m_bDropBlockedFigures = p.m_bEdgeToAssertBks = p.m_bFallbackPending = true;
    p.m_nKeyWhiteFigure = 5;
    p.m_bFfmPreliminary = true;
    p.m_nEdgeMinorFigures = 9;
    position.Analysis().m_seaSnakeAfterMoves = {TMove{}};
    position.Analysis().m_zugzwangPositions["x"] = {};
    const TInitialAnalysis initial = AnalyzeInitialPosition(position.Root());
    EXPECT_EQ(initial.m_solvedMoves.size(), 1u) << "Qb1-b8";
    EXPECT_EQ(p.m_nRelaxations, 0);
    EXPECT_EQ(p.m_nRelaxCaptures, 0);
    EXPECT_FALSE(p.m_bDropBlockedFigures);
    EXPECT_FALSE(p.m_bFallbackPending);
    EXPECT_EQ(p.m_nKeyWhiteFigure, kNoSquare);
    EXPECT_FALSE(p.m_bFfmPreliminary);
    EXPECT_NE(p.m_nEdgeMinorFigures, 9);
    EXPECT_TRUE(position.Analysis().m_seaSnakeAfterMoves.empty());
    EXPECT_TRUE(position.Analysis().m_zugzwangPositions.empty());
    EXPECT_STREQ(position.Analysis().m_pStatusText.load(), "Initial position type check...");
}

TEST(InitialAnalysis, MateInThreeIsWatchedInEveryPosition) {
    for (const char* placement : {"7k/8/6K1/8/8/8/8/1Q6", "8/8/2b5/3k4/8/8/2N5/K2R4"})
        EXPECT_NE(AnalyzeInitialPosition(CSearchedPosition(placement, 21, 1).Root()).m_nHeuristics & SH_3MOVESTOMATE,
                  0u);
}

TEST(InitialAnalysis, TwinBishopsChooseNothing) {
    CSearchedPosition twins("7k/8/8/8/8/8/8/B1B1K3", 21, 1); // both on dark squares
    const TInitialAnalysis none = AnalyzeInitialPosition(twins.Root());
    EXPECT_EQ(none.m_nHeuristics, 0u);
    EXPECT_TRUE(none.m_rules.empty());
    EXPECT_EQ(twins.Root().m_nHeurParams, 0u);
    CSearchedPosition pair("7k/8/8/8/8/8/8/BB2K3", 21, 1);
    EXPECT_NE(AnalyzeInitialPosition(pair.Root()).m_nHeuristics, 0u);
    CSearchedPosition withPawn("7k/8/8/8/8/P7/8/B1B1K3", 21, 1);
    EXPECT_NE(AnalyzeInitialPosition(withPawn.Root()).m_nHeuristics, 0u);
}

TEST(InitialAnalysis, FactsOfTheRootAreStored) {
    CSearchedPosition position("qr2b1nk/p7/8/8/8/8/PP6/KQRB1N2", 21, 1);
    (void)AnalyzeInitialPosition(position.Root());
    const TSearchContext& p = position.Context();
    EXPECT_EQ(p.m_nWhiteMaterial, 9 + 5 + 3 + 3 + 2);
    EXPECT_EQ(p.m_nBlackMaterial, 9 + 5 + 3 + 3 + 1);
    EXPECT_EQ(p.m_nClassFigures, 8);
    EXPECT_EQ(p.m_nRootBlackQueens, 1);
    EXPECT_EQ(p.m_nRootBlackRooks, 1);
    EXPECT_EQ(p.m_nRootBlackBishops, 1);
    EXPECT_EQ(p.m_nRootBlackKnights, 1);
    const TRootMaterial material = position.Analysis().m_rootMaterial;
    EXPECT_EQ(material.m_nWhiteFigures, 4);
    EXPECT_EQ(material.m_nBlackFigures, 4);
    EXPECT_EQ(material.m_nWhitePawns, 2);
    EXPECT_EQ(material.m_nBlackPawns, 1);
}

TEST(InitialAnalysis, HandMadeSetKeepsMaskAndParameters) {
    CSearchedPosition position("kr5Q/3p4/2n5/8/8/8/8/K6B", 21, 1);
    TSearchContext& p = position.Context();
    p.m_nKingNearCorner = -2;
    p.m_bDontLetKingMove = false;
    p.m_nBlockedFigures = 1;
    p.m_BlockedFigures[0] = p.m_BlockedFiguresNow[0] = SquareAt(1, 7);
    p.m_bBlockedFiguresByHand = true;
    p.m_nRelaxations = 4;
    const std::uint32_t mask = SH_KEEPKINGNEARCORNER | SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK;
    for (int start = 0; start < 2; ++start) { // a second start keeps it as well
        const TInitialAnalysis initial = AnalyzeInitialPosition(position.Root(), {true, mask, nullptr});
        EXPECT_EQ(initial.m_nHeuristics, mask);
        EXPECT_EQ(position.Root().m_nHeuristics, mask);
        EXPECT_TRUE(initial.m_rules.empty());
        EXPECT_EQ(p.m_nKingNearCorner, -2);
        EXPECT_FALSE(p.m_bDontLetKingMove);
        EXPECT_EQ(p.m_nRelaxations, 0);
        EXPECT_EQ(position.Root().m_blockedFigures[0], SquareAt(1, 7));
        EXPECT_EQ(position.Root().m_nHeurParams, ComputeHeurParams(position.Root()));
        EXPECT_EQ(p.m_nBlackMaterial, 5 + 3 + 1) << "the facts are taken all the same";
    }
}

TEST(InitialAnalysis, SavedFiguresAreTheMainHeuristicOfAFewLightFigures) {
    // Two knights against a rook and pawns; the black king has room.
    CSearchedPosition position("8/3k4/8/pppr4/8/8/8/KN3N2", 21, 1);
    const TInitialAnalysis initial = AnalyzeInitialPosition(position.Root());
    EXPECT_TRUE(Fired(initial, "pattern: no figure can be spared"));
    EXPECT_NE(initial.m_nHeuristics & SH_DONTLOSEANYFIGURES, 0u);
    EXPECT_EQ(initial.m_nHeuristics & (SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_SAVEQUEENROOK |
                                       SH_DONTLETBLACKQUEENCHECKTWICE | SH_ASSERTBLACKKINGSURROUNDED),
              0u);
    EXPECT_EQ(position.Context().m_nSaveFiguresMode, 2);
    EXPECT_TRUE(position.Analysis().m_bSafeMode);
    EXPECT_TRUE(initial.m_bSafeModeForced);
}

TEST(InitialAnalysis, SafeModeOfTheUserIsNotForced) {
    CSearchedPosition position("7k/8/6K1/8/8/8/8/1Q6", 9, 1);
    position.Analysis().m_bSafeMode = true;
    EXPECT_FALSE(AnalyzeInitialPosition(position.Root()).m_bSafeModeForced);
    EXPECT_TRUE(position.Analysis().m_bSafeMode);
}

TEST(InitialAnalysis, SafeModeSavesTheHeavyFigureInLargePositionsToo) {
    // Eleven figures are no miniature.
    constexpr const char* kPlacement = "nbrk4/nb1r4/q2b4/8/8/8/1N6/K5QR";
    CSearchedPosition quick(kPlacement, 21, 1), safe(kPlacement, 21, 1);
    safe.Analysis().m_bSafeMode = true;
    EXPECT_EQ(AnalyzeInitialPosition(quick.Root()).m_nHeuristics & SH_SAVEQUEENROOK, 0u);
    EXPECT_NE(AnalyzeInitialPosition(safe.Root()).m_nHeuristics & SH_SAVEQUEENROOK, 0u);
}

std::vector<std::string> SolvedBy(const std::string& placement, int nPlies, bool bByHand) {
    CSearchedPosition position(placement, nPlies, 1);
    std::vector<std::string> solved;
    for (const TMove& move : AnalyzeInitialPosition(position.Root(), {bByHand, 0, nullptr}).m_solvedMoves)
        solved.push_back(WriteMove(move, position.Root()));
    std::ranges::sort(solved);
    return solved;
}

TEST(InitialAnalysis, MatesOnTheMoveAreSolved) {
    std::mt19937_64 rng(31);
    int nSolved = 0;
    for (int i = 0; i < Samples(300); ++i) {
        const std::string placement =
            i % 2 == 0 ? AnyPlacement(rng, i, 4 + i % 8) : reference::RandomMatingPlacement(rng, 4 + i % 5);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), 1, 60000);
        ASSERT_TRUE(truth);
        EXPECT_EQ(SolvedBy(placement, 9, i % 3 == 0), truth->keys) << placement;
        nSolved += !truth->keys.empty();
    }
    EXPECT_GT(nSolved, Floor(15));
}

TEST(InitialAnalysis, ReductionAsksForEveryMaterialWithFewerWhiteMen) {
    static std::vector<std::string> asked;
    asked.clear();
    CSearchedPosition position("7k/7p/8/8/8/8/8/KQR5", 21, 1);
    const auto Nothing = [](TPositionType type) {
        asked.push_back(PositionTypeToString(type));
        return false;
    };
    EXPECT_FALSE(IsReducibleToPrecalcData(position.Root(), Nothing));
    std::ranges::sort(asked);
    EXPECT_EQ(asked, (std::vector<std::string>{"Qp", "Rp"}));
    EXPECT_TRUE(IsReducibleToPrecalcData(position.Root(),
                                         [](TPositionType type) { return PositionTypeToString(type) == "Rp"; }));
    CSearchedPosition crowded("7k/pppppp2/8/8/8/8/8/KQR5", 21, 1);
    EXPECT_FALSE(IsReducibleToPrecalcData(crowded.Root(), [](TPositionType) { return true; }))
        << "Black alone has more men than any data set";
}

TEST(InitialAnalysis, StoredSettingsNeedTheirSwitch) {
    constexpr const char* kKnown = "r5k1/1p1p2p1/N7/1p4N1/1p4p1/8/7Q/bK4n1";
    CSearchedPosition off(kKnown, 21, 1), on(kKnown, 21, 1);
    on.Analysis().m_bUsePredefinedIndications = true;
    (void)AnalyzeInitialPosition(off.Root());
    (void)AnalyzeInitialPosition(on.Root());
    EXPECT_EQ(off.Analysis().m_shLookForQuickerMateDepth, kDefaultQuickerMateDepth);
    EXPECT_EQ(on.Analysis().m_shLookForQuickerMateDepth, 5);
}

TEST(InitialAnalysis, StoredSettingsAddToAHandMadeSet) {
    CSearchedPosition position("8/p5p1/4K2p/2p2Pb1/P1NkN1p1/1P1B4/p1P3P1/8", 21, 1);
    position.Analysis().m_bUsePredefinedIndications = true;
    const TInitialAnalysis initial =
        AnalyzeInitialPosition(position.Root(), {true, SH_DONTLETPROMOTEDQUEENMOVE | SH_SEASNAKE, nullptr});
    EXPECT_EQ(initial.m_nHeuristics, SH_SEASNAKE);
}

/// What must hold of every set the engine chooses.
TEST(InitialAnalysis, ChosenSetsAreConsistent) {
    std::mt19937_64 rng(7);
    for (int i = 0; i < 300; ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 12);
        SCOPED_TRACE(placement);
        CSearchedPosition position(placement, i % 2 == 0 ? 21 : 63, 1);
        const TInitialAnalysis initial = AnalyzeInitialPosition(position.Root());
        const std::uint32_t mask = initial.m_nHeuristics;
        const TSearchContext& p = position.Context();
        EXPECT_EQ(mask & ~kAllHeuristics, 0u);
        EXPECT_EQ(position.Root().m_nHeuristics, mask);
        EXPECT_EQ(position.Root().m_nHeurParams, ComputeHeurParams(position.Root()));
        const std::uint32_t held = mask & (SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE |
                                           SH_ASSERTBLACKKINGSURROUNDED | SH_KEEPKINGNEARCORNER);
        EXPECT_EQ(held & (held - 1), 0u) << "one of them holds the king";
        EXPECT_FALSE((mask & SH_SEASNAKE) != 0 && (mask & SH_FINDFORCEDMATE) != 0);
        EXPECT_EQ((mask & SH_DONTLETFIGUREUNBLOCK) != 0, p.m_nBlockedFigures > 0);
        EXPECT_LE(p.m_nFfmStartDepth + p.m_nFfmRelaxations, 9);
        if ((mask & SH_FINDFORCEDMATE) != 0) {
            EXPECT_EQ(p.m_bFfmPreliminary,
                      p.m_nFfmWithOther == -1 && position.Root().m_nMoves >= 61 && BlackRing(position.Root()) <= 1);
        }
        EXPECT_NO_THROW(CheckReadHeuristics(
            ReadHeuristicsText(HeuristicsText(position.Root(), true, position.Analysis())), position.Root()))
            << HeuristicsText(position.Root(), true, position.Analysis()) << ": what is printed can be given by hand";
        CSearchedPosition again(placement, position.Root().m_nMoves, 1);
        EXPECT_EQ(AnalyzeInitialPosition(again.Root()).m_rules, initial.m_rules) << "the same root, the same rules";
    }
}

} // namespace
} // namespace quillon::test
