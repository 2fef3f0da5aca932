#include "heuristics/heuristic_text.h"

#include <string>

#include "heuristics/heuristic_set_fixture.h"

namespace quillon {
namespace {

constexpr TSquare kD5 = 35, kE6 = 44;

class HeuristicText : public HeuristicSetFixture {
  protected:
    std::string Parameters(std::uint32_t bit) const { return HeuristicParametersText(m_board, bit, m_analysis); }
    std::string Set(std::uint32_t mask, bool withQuickMode = false) {
        m_board.m_nHeuristics = mask;
        return HeuristicsText(m_board, withQuickMode, m_analysis);
    }
    void RelaxByEverything() {
        m_p.m_nRelaxCaptures = 2;
        m_p.m_bRelaxOnAdvancedPawn = true;
        m_p.m_shDeferMoves = 3;
        m_p.m_shDeferMaxMoves = 5;
    }
};

TEST_F(HeuristicText, BitsWithoutParametersHaveNoText) {
    m_p.m_bDontLetPromotedStrict = m_p.m_bAssertBKSStrict = true;
    for (const std::uint32_t bit :
         {SH_AREKINGSNEAR, SH_SWEEPINGWHITEROOK, SH_ZUGZWANGTRIANGLES, std::uint32_t{0x100}, SH_DONTRECEDEBLACKKING,
          SH_SAVEQUEENROOK, SH_DONTLETBLACKQUEENCHECKTWICE, SH_USEBLOCKBLACKPAWNSLEVEL, SH_SINGLEQUEENMATE,
          SH_3MOVESTOMATE, SH_CAPTUREKNIGHT, SH_SKIPWORSTWHITEMOVES, std::uint32_t{0x10000000},
          std::uint32_t{0x20000000}, SH_REDUCTIONTOGLOBREGPOS, SH_ZUGZWANG, std::uint32_t{0},
          SH_KEEPKINGONTHEEDGE | SH_SEASNAKE})
        EXPECT_EQ(Parameters(bit), "") << bit;
}

TEST_F(HeuristicText, EdgeShowsItsForm) {
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "STRICT");
    m_p.m_bAllowExceptions = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "ALMOST_STRICT");
    m_p.m_bDontLetKingMove = false;
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "");
    m_p.m_bEdgeInclCornerSquares = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "incl.corner");
    m_p.m_bDontLetKingMove = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "ALMOST_STRICT,incl.corner");
}

TEST_F(HeuristicText, EdgeShowsRelaxationUnlessItIsForTheExtendedEdgeOnly) {
    RelaxByEverything();
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "STRICT,C2f,A,D3,M5");
    m_p.m_bEdgeInclCornerSquares = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "STRICT,incl.corner,C2f,A,D3,M5");
    m_p.m_bRelaxExtEdgeOnly = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGONTHEEDGE), "STRICT,incl.corner");
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "C2f,A,D3,M5,incl.corner");
}

TEST_F(HeuristicText, ExtendedEdgeShowsRelaxationFirst) {
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "");
    m_p.m_bExtEdgeStrict = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "strict");
    m_p.m_bEdgeInclCornerSquares = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "incl.corner,strict");
    RelaxByEverything();
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "C2f,A,D3,M5,incl.corner,strict");
}

TEST_F(HeuristicText, EachRelaxationItemAlone) {
    m_p.m_nRelaxCaptures = 255;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "C255f");
    m_p.m_bRelaxCapturesInclPawns = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "C255");
    m_p.m_nRelaxCaptures = 0;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "");
    m_p.m_bRelaxOnAdvancedPawn = true;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "A");
    m_p.m_bRelaxOnAdvancedPawn = false;
    m_p.m_shDeferMaxMoves = 7;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "");
    m_p.m_shDeferMoves = 65535;
    EXPECT_EQ(Parameters(SH_KEEPKINGWITHINEXTEDGE), "D65535,M7");
}

TEST_F(HeuristicText, OneColourShowsTheMarkerOfThePosition) {
    const std::array<const char*, 4> texts{"", "WhiteSquaresOnly", "BlackSquaresOnly", "SeparatedBlackBishop"};
    for (std::uint8_t mode = 0; mode < 4; ++mode) {
        m_board.m_bySideState = static_cast<std::uint8_t>(kBlackCapturesMask | mode); // the other bits do not matter
        EXPECT_EQ(Parameters(SH_ONECOLORPLAYPOSSIBLE), texts[mode]);
    }
}

TEST_F(HeuristicText, SquaresAreCapitalFileAndRank) {
    EXPECT_EQ(Parameters(SH_DONTLEAVEMAINDIAGONAL), "");
    EXPECT_EQ(Parameters(SH_KEYSQUARE), "");
    EXPECT_EQ(Parameters(SH_KEYWHITEFIGURE), "");
    m_p.m_nBlackFigureOnMainDiagonal = kD5;
    m_p.m_nKeySquare = kA1;
    m_p.m_nKeyWhiteFigure = kH8;
    EXPECT_EQ(Parameters(SH_DONTLEAVEMAINDIAGONAL), "D5");
    EXPECT_EQ(Parameters(SH_KEYSQUARE), "A1");
    EXPECT_EQ(Parameters(SH_KEYWHITEFIGURE), "H8");
}

TEST_F(HeuristicText, WatchedFiguresAreThoseOfTheRootUpToTheCount) {
    m_p.m_BlockedFigures = {kD5, kE6, kA1, 255, 255, 255, 255, 255};
    m_p.m_BlockedFiguresNow = {kH1, kH1, kH1, 255, 255, 255, 255, 255};
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "");
    m_p.m_nBlockedFigures = 2;
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "D5,E6");
    m_p.m_bBlockedFiguresEff = true;
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "EFF,D5,E6");
    m_p.m_nBlockedFigures = 0;
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "EFF");
}

TEST_F(HeuristicText, AllEightWatchedFigures) {
    m_p.m_BlockedFigures = {0, 1, 2, 3, 4, 5, 6, 7};
    m_p.m_nBlockedFigures = 8;
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "A1,B1,C1,D1,E1,F1,G1,H1");
    m_p.m_nBlockedFigures = 9; // more than there can be
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "A1,B1,C1,D1,E1,F1,G1,H1");
    m_p.m_nBlockedFigures = -1;
    EXPECT_EQ(Parameters(SH_DONTLETFIGUREUNBLOCK), "");
}

TEST_F(HeuristicText, ForcedMateShowsDepthAndCycle) {
    m_p.m_nFfmDepth = 4;
    EXPECT_EQ(Parameters(SH_FINDFORCEDMATE), "#1+");
    m_p.m_bFfmCycleTwice = true;
    EXPECT_EQ(Parameters(SH_FINDFORCEDMATE), "#1+-Custom");
    m_p.m_bFfmPreliminary = true;
    EXPECT_EQ(Parameters(SH_FINDFORCEDMATE), "#1+-Preliminary-Custom");
    m_p.m_bFfmCycleTwice = false;
    m_p.m_nFfmDepth = 2;
    EXPECT_EQ(Parameters(SH_FINDFORCEDMATE), "CheckOnly-Preliminary");
}

TEST_F(HeuristicText, ForcedMateDepthThatIsNoCodePrintsNothing) {
    m_p.m_nFfmDepth = 10;
    EXPECT_EQ(Set(SH_FINDFORCEDMATE), "SH_FINDFORCEDMATE");
}

TEST_F(HeuristicText, StrictForms) {
    EXPECT_EQ(Parameters(SH_DONTLETPROMOTEDQUEENMOVE), "");
    EXPECT_EQ(Parameters(SH_DONTLETPROMOTEDFIGUREMOVE), "");
    EXPECT_EQ(Parameters(SH_ASSERTBLACKKINGSURROUNDED), "");
    m_p.m_bDontLetPromotedStrict = true;
    EXPECT_EQ(Parameters(SH_DONTLETPROMOTEDQUEENMOVE), "strict");
    EXPECT_EQ(Parameters(SH_DONTLETPROMOTEDFIGUREMOVE), "strict");
    EXPECT_EQ(Parameters(SH_ASSERTBLACKKINGSURROUNDED), "");
    m_p.m_bAssertBKSStrict = true;
    EXPECT_EQ(Parameters(SH_ASSERTBLACKKINGSURROUNDED), "strict");
}

TEST_F(HeuristicText, KeyLineShowsTheFile) {
    EXPECT_EQ(Parameters(SH_KEYLINE), "");
    m_analysis.m_nKeyLine = 0;
    EXPECT_EQ(Parameters(SH_KEYLINE), "A");
    m_analysis.m_nKeyLine = 7;
    EXPECT_EQ(Parameters(SH_KEYLINE), "H");
}

TEST_F(HeuristicText, KeyDiagonalHasItsFirstSquareInTheLowByte) {
    EXPECT_EQ(Parameters(SH_KEYDIAGONAL), "");
    m_analysis.m_wKeyDiagonal = 63 * 256 + 0;
    EXPECT_EQ(Parameters(SH_KEYDIAGONAL), "A1-H8");
    m_analysis.m_wKeyDiagonal = 0 * 256 + 63;
    EXPECT_EQ(Parameters(SH_KEYDIAGONAL), "H8-A1");
}

TEST_F(HeuristicText, FiguresToSave) {
    EXPECT_EQ(Parameters(SH_DONTLOSEANYFIGURES), "");
    m_p.m_nSaveFiguresMode = 1;
    EXPECT_EQ(Parameters(SH_DONTLOSEANYFIGURES), "incl.pawns");
    m_p.m_nSaveFiguresMode = 2;
    EXPECT_EQ(Parameters(SH_DONTLOSEANYFIGURES), "incl.pawnsBeforePromo");
    m_p.m_nSaveFiguresMode = 3;
    EXPECT_EQ(Parameters(SH_DONTLOSEANYFIGURES), "incl.pawnsBeforePromo");
}

TEST_F(HeuristicText, DistanceFromTheCorner) {
    EXPECT_EQ(Parameters(SH_KEEPKINGNEARCORNER), "");
    m_p.m_nKingNearCorner = 3;
    EXPECT_EQ(Parameters(SH_KEEPKINGNEARCORNER), "3S");
    m_p.m_nKingNearCorner = -2;
    EXPECT_EQ(Parameters(SH_KEEPKINGNEARCORNER), "2M");
}

TEST_F(HeuristicText, SeaSnakeShowsSquaresAndCount) {
    m_p.m_nSeaSnakeApproach = kD5;
    m_p.m_nSeaSnakeTurnBack = kE6;
    m_p.m_nSeaSnakePendulum1 = kA1;
    EXPECT_EQ(Parameters(SH_SEASNAKE), "D5,E6");
    m_analysis.m_seaSnakeAfterMoves = {TMove{1, 2, 0, 0}, TMove{3, 4, 0, 0}, TMove{5, 6, 0, 0}};
    EXPECT_EQ(Parameters(SH_SEASNAKE), "D5,E6,3");
    m_p.m_nSeaSnakeTurnBack = kNoSquare;
    EXPECT_EQ(Parameters(SH_SEASNAKE), "D5,3");
}

TEST_F(HeuristicText, SetListsItsBitsInRisingOrder) {
    m_p.m_nKingNearCorner = -2;
    EXPECT_EQ(Set(SH_ZUGZWANG | SH_AREKINGSNEAR | SH_KEEPKINGNEARCORNER | SH_SAVEQUEENROOK),
              "SH_AREKINGSNEAR, SH_SAVEQUEEN/ROOK, SH_KEEPKINGNEARCORNER(2M), SH_ZUGZWANG");
}

TEST_F(HeuristicText, EmptySetHasNoText) { EXPECT_EQ(Set(0), ""); }

TEST_F(HeuristicText, BitsWithoutNamePrintDots) { EXPECT_EQ(Set(0x30000100), "..., ..., ..."); }

TEST_F(HeuristicText, StrictEdgeHasANameOfItsOwn) {
    EXPECT_EQ(Set(SH_KEEPKINGONTHEEDGE), "SH_DONTLETKINGMOVE");
    EXPECT_EQ(Set(SH_AREKINGSNEAR | SH_KEEPKINGONTHEEDGE | SH_SEASNAKE),
              "SH_AREKINGSNEAR, SH_DONTLETKINGMOVE, SH_SEASNAKE");
    m_p.m_bAllowExceptions = true;
    EXPECT_EQ(Set(SH_KEEPKINGONTHEEDGE), "SH_DONTLETKINGMOVE(excptns)");
    m_p.m_bDontLetKingMove = false;
    EXPECT_EQ(Set(SH_KEEPKINGONTHEEDGE), "SH_KEEPKINGONTHEEDGE");
}

TEST_F(HeuristicText, StrictEdgeWithAFurtherParameterKeepsItsName) {
    m_p.m_bEdgeInclCornerSquares = true;
    EXPECT_EQ(Set(SH_KEEPKINGONTHEEDGE), "SH_KEEPKINGONTHEEDGE(STRICT,incl.corner)");
    m_p.m_bEdgeInclCornerSquares = false;
    m_p.m_bRelaxOnAdvancedPawn = true;
    EXPECT_EQ(Set(SH_KEEPKINGONTHEEDGE), "SH_KEEPKINGONTHEEDGE(STRICT,A)");
}

TEST_F(HeuristicText, StrictExtendedEdgeKeepsItsName) {
    m_p.m_bExtEdgeStrict = true;
    EXPECT_EQ(Set(SH_KEEPKINGWITHINEXTEDGE), "SH_KEEPKINGWITHINEXTEDGE(strict)");
}

TEST_F(HeuristicText, ReplacementNeedsTheExactItem) {
    EXPECT_EQ(ShownHeuristic("SH_KEEPKINGONTHEEDGE(strict)"), "SH_DONTLETKINGMOVE");
    EXPECT_EQ(ShownHeuristic("SH_KEEPKINGONTHEEDGE(STRICT)"), "SH_DONTLETKINGMOVE");
    EXPECT_EQ(ShownHeuristic("SH_KEEPKINGONTHEEDGE(ALMOST_STRICT)"), "SH_DONTLETKINGMOVE(excptns)");
    for (const std::string_view item :
         {"SH_KEEPKINGONTHEEDGE", "SH_KEEPKINGONTHEEDGE(Strict)", "SH_KEEPKINGONTHEEDGE(almost_strict)",
          "SH_KEEPKINGONTHEEDGE(STRICT) ", "SH_KEEPKINGWITHINEXTEDGE(strict)", ""})
        EXPECT_EQ(ShownHeuristic(item), item);
}

TEST_F(HeuristicText, QuickModeFollowsWhenAskedForBeforeThePassWithoutHeuristics) {
    EXPECT_EQ(Set(SH_SEASNAKE, true), "SH_SEASNAKE,  QuickMode");
    EXPECT_EQ(Set(SH_SEASNAKE, false), "SH_SEASNAKE");
    EXPECT_EQ(Set(0, true), " QuickMode");
    m_board.m_byPass = 0;
    EXPECT_EQ(Set(0, true), " QuickMode");
    m_board.m_byPass = 2;
    EXPECT_EQ(Set(0, true), "");
    m_board.m_byPass = 3;
    EXPECT_EQ(Set(0, true), "");
}

TEST_F(HeuristicText, SafeModeIsNotQuickMode) {
    m_analysis.m_bSafeMode = true;
    EXPECT_EQ(Set(SH_SEASNAKE, true), "SH_SEASNAKE");
}

TEST_F(HeuristicText, ForbiddenDynamicApplicationComesLast) {
    m_p.m_bApplyDlfuDynamically = false;
    EXPECT_EQ(Set(SH_SEASNAKE), "SH_SEASNAKE (CannotApplyDLFUDynamically)");
    EXPECT_EQ(Set(SH_SEASNAKE, true), "SH_SEASNAKE,  QuickMode (CannotApplyDLFUDynamically)");
    EXPECT_EQ(Set(0), " (CannotApplyDLFUDynamically)");
}

} // namespace
} // namespace quillon
