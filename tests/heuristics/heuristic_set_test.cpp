#include "heuristics/heuristic_set.h"

#include <gtest/gtest.h>

#include <cctype>
#include <iterator>
#include <set>
#include <string>
#include <utility>

namespace quillon {
namespace {

constexpr std::pair<std::uint32_t, const char*> kNames[] = {
    {0x00000001, "SH_AREKINGSNEAR"},
    {0x00000002, "SH_SWEEPINGWHITEROOK"},
    {0x00000004, "SH_KEEPKINGONTHEEDGE"},
    {0x00000008, "SH_ONECOLORPLAYPOSSIBLE"},
    {0x00000010, "SH_ZUGZWANGTRIANGLES"},
    {0x00000020, "SH_DONTLEAVEMAINDIAGONAL"},
    {0x00000040, "SH_KEEPKINGWITHINEXTEDGE"},
    {0x00000080, "SH_DONTLETFIGUREUNBLOCK"},
    {0x00000200, "SH_FINDFORCEDMATE"},
    {0x00000400, "SH_DONTRECEDEBLACKKING"},
    {0x00000800, "SH_DONTLETPROMOTEDQUEENMOVE"},
    {0x00001000, "SH_KEYLINE"},
    {0x00002000, "SH_KEYDIAGONAL"},
    {0x00004000, "SH_SAVEQUEEN/ROOK"},
    {0x00008000, "SH_DONTLOSEANYFIGURES"},
    {0x00010000, "SH_DONTLETBLACKQUEENCHECKTWICE"},
    {0x00020000, "SH_USEBLOCKBLACKPAWNSLEVEL"},
    {0x00040000, "SH_KEYSQUARE"},
    {0x00080000, "SH_ASSERTBLACKKINGSURROUNDED"},
    {0x00100000, "SH_SINGLEQUEENMATE"},
    {0x00200000, "SH_3MOVESTOMATE"},
    {0x00400000, "SH_KEYWHITEFIGURE"},
    {0x00800000, "SH_CAPTUREKNIGHT"},
    {0x01000000, "SH_SKIPWORSTWHITEMOVES"},
    {0x02000000, "SH_DONTLETPROMOTEDFIGUREMOVE"},
    {0x04000000, "SH_KEEPKINGNEARCORNER"},
    {0x08000000, "SH_SEASNAKE"},
    {0x40000000, "SH_REDUCTIONTOGLOBREGPOS"},
    {0x80000000, "SH_ZUGZWANG"},
};

constexpr std::uint32_t kUnnamedBits[] = {0x00000100, 0x10000000, 0x20000000};

std::string WithCase(std::string_view name, int (*fold)(int)) {
    std::string folded;
    for (const char c : name)
        folded += static_cast<char>(fold(static_cast<unsigned char>(c)));
    return folded;
}

TEST(HeuristicSet, EveryBitHasItsName) {
    for (const auto& [bit, name] : kNames)
        EXPECT_EQ(HeuristicName(bit), name);
}

TEST(HeuristicSet, UnnamedBitsPrintDots) {
    for (const std::uint32_t bit : kUnnamedBits)
        EXPECT_EQ(HeuristicName(bit), "...");
}

TEST(HeuristicSet, WhatIsNoSingleBitPrintsDots) {
    EXPECT_EQ(HeuristicName(0), "...");
    EXPECT_EQ(HeuristicName(3), "...");
    EXPECT_EQ(HeuristicName(SH_SEASNAKE | SH_ZUGZWANG), "...");
    EXPECT_EQ(HeuristicName(0xffffffff), "...");
}

TEST(HeuristicSet, MaskOfAllHoldsTheNamedBitsOnly) {
    std::uint32_t mask = 0;
    for (const auto& [bit, name] : kNames)
        mask |= bit;
    EXPECT_EQ(kAllHeuristics, mask);
    for (const std::uint32_t bit : kUnnamedBits)
        EXPECT_EQ(kAllHeuristics & bit, 0u);
}

TEST(HeuristicSet, NameIsFoundInEitherCase) {
    for (const auto& [bit, name] : kNames) {
        EXPECT_EQ(FindHeuristic(name), bit) << name;
        EXPECT_EQ(FindHeuristic(WithCase(name, std::tolower)), bit) << name;
    }
    EXPECT_EQ(FindHeuristic("Sh_SaveQueen/Rook"), SH_SAVEQUEENROOK);
}

TEST(HeuristicSet, WhatIsNoNameIsNotFound) {
    for (const char* text :
         {"", "...", "SH_", "SEASNAKE", "SH_SEASNAKE ", " SH_SEASNAKE", "SH_SEASNAKES", "SH_ZUGZWAN", "SH_SAVEQUEEN",
          "SH_SAVEQUEENROOK", "SH_DONTLETKINGMOVE", "SH_DONTLETKINGMOVE(excptns)", "QuickMode", "none"})
        EXPECT_EQ(FindHeuristic(text), std::nullopt) << text;
}

TEST(HeuristicSet, LabelsOfBitsWithSeveralControls) {
    const auto labels = [](std::uint32_t bit) { return kHeuristics[std::countr_zero(bit)].m_labels; };
    using TLabels = std::array<std::string_view, 2>;
    EXPECT_EQ(labels(SH_KEEPKINGONTHEEDGE),
              (TLabels{"Don't let bl.king move (unless immed.mate)", "Don't let bl.king out of the edge"}));
    EXPECT_EQ(labels(SH_KEEPKINGWITHINEXTEDGE), (TLabels{"out of ext.edge", "move unless on the edge"}));
    EXPECT_EQ(labels(SH_DONTLETPROMOTEDQUEENMOVE), (TLabels{"Don't let promoted", "queen"}));
    EXPECT_EQ(labels(SH_DONTLETPROMOTEDFIGUREMOVE), (TLabels{"Don't let promoted", "any figure move"}));
    EXPECT_EQ(labels(SH_KEEPKINGNEARCORNER), (TLabels{"Keep king near corner, max.", ""}));
}

TEST(HeuristicSet, HeuristicsWithoutControlAreThoseOfTheEngine) {
    std::set<std::string_view> engineOnly;
    for (const THeuristic& row : kHeuristics) {
        const bool bNamed = (row.m_nBit & kAllHeuristics) != 0;
        if (row.m_bEngineOnly)
            engineOnly.insert(row.m_name);
        EXPECT_EQ(row.m_labels[0].empty(), row.m_bEngineOnly || !bNamed) << row.m_name;
    }
    EXPECT_EQ(engineOnly,
              (std::set<std::string_view>{"SH_ZUGZWANGTRIANGLES", "SH_USEBLOCKBLACKPAWNSLEVEL", "SH_KEYSQUARE"}));
}

/// Every field at a value that is neither its initial value nor the value of a reset.
THeuristicParameters Disturbed() {
    constexpr TBlockedSquares kSome{1, 2, 3, 4, 5, 6, 7, 8};
    THeuristicParameters p;
    p.m_bDontLetKingMove = false;
    p.m_bAllowExceptions = true;
    p.m_bExtEdgeStrict = true;
    p.m_bAssertBKSStrict = true;
    p.m_nKingNearCorner = -2;
    p.m_nRelaxCaptures = 3;
    p.m_bRelaxCapturesInclPawns = true;
    p.m_bRelaxExtEdgeOnly = true;
    p.m_bRelaxOnAdvancedPawn = true;
    p.m_bSkipDeferIfNoBalanceChange = true;
    p.m_bAutoDynRelax = true;
    p.m_shDeferMoves = 4;
    p.m_shDeferMaxMoves = 5;
    p.m_bEdgeInclCornerSquares = true;
    p.m_nSaveFiguresMode = 2;
    p.m_bSaveRookQueenStrict = false;
    p.m_bBishopIsMajor = true;
    p.m_nKeySquare = 6;
    p.m_nKeyWhiteFigure = 7;
    p.m_nPinnedFigure = 8;
    p.m_bKeyFigureIsRook = true;
    p.m_nBlackFigureOnMainDiagonal = 9;
    p.m_nBlockedFigures = 8;
    p.m_BlockedFigures = kSome;
    p.m_BlockedFiguresNow = kSome;
    p.m_bBlockedFiguresEff = true;
    p.m_bApplyDlfuDynamically = false;
    p.m_bBlockedPawns = true;
    p.m_bBlockedFiguresByHand = true;
    p.m_bSeaSnake = true;
    p.m_nSeaSnakeApproach = 10;
    p.m_nSeaSnakeTurnBack = 11;
    p.m_nSeaSnakePendulum1 = 12;
    p.m_nSeaSnakePendulum2 = 13;
    p.m_SingleQueenSquares = {14, 15, 16, kNoSquare};
    p.m_nSingleQueenMode = 2;
    p.m_nCaptureKnightMode = 1;
    p.m_bLetRelaxHeuristics = false;
    p.m_bHeuristicsFallback = true;
    p.m_bRunPass2 = false;
    p.m_nFfmDepth = 6;
    p.m_nFfmStartDepth = 5;
    p.m_nFfmRelaxations = 2;
    p.m_bFfmAddCaptures = true;
    p.m_nFfmWithOther = 1;
    p.m_bFfmCycleTwice = true;
    p.m_nFfmCycleRelaxations = 3;
    p.m_bFfmPreliminary = true;
    p.m_nFfmSavedHeuristics = SH_SEASNAKE;
    p.m_bDontLetPromotedStrict = true;
    p.m_nZugzwangTriangle1 = 17;
    p.m_nZugzwangTriangle2 = 18;
    p.m_nRelaxations = 19;
    p.m_nDropCount = 1;
    p.m_DropList = kSome;
    return p;
}

TEST(HeuristicParameters, ResetTouchesTheParametersOfASolveOnly) {
    THeuristicParameters expected = Disturbed();
    expected.m_bDontLetKingMove = true;
    expected.m_bAllowExceptions = false;
    expected.m_bExtEdgeStrict = false;
    expected.m_bAssertBKSStrict = false;
    expected.m_nKingNearCorner = 0;
    expected.m_nRelaxCaptures = 0;
    expected.m_bRelaxCapturesInclPawns = false;
    expected.m_bRelaxOnAdvancedPawn = false;
    expected.m_bEdgeInclCornerSquares = false;
    expected.m_nSaveFiguresMode = 0;
    expected.m_bSaveRookQueenStrict = true;
    expected.m_bBishopIsMajor = false;
    expected.m_nBlackFigureOnMainDiagonal = 255;
    expected.m_nBlockedFigures = 0;
    expected.m_bApplyDlfuDynamically = true;
    expected.m_bBlockedPawns = false;
    expected.m_bBlockedFiguresByHand = false;
    expected.m_nFfmWithOther = -1;

    THeuristicParameters p = Disturbed();
    ResetHeuristicParameters(p);
    EXPECT_TRUE(p == expected);
}

TEST(HeuristicParameters, FreshRecordIsAlreadyReset) {
    THeuristicParameters p;
    ResetHeuristicParameters(p);
    EXPECT_TRUE(p == THeuristicParameters{});
}

TEST(HeuristicParameters, FieldsThatStandForNoneAtFirst) {
    const THeuristicAnalysisParameters analysis;
    EXPECT_FALSE(analysis.m_bSafeMode);
    EXPECT_EQ(analysis.m_shLookForQuickerMateDepth, -1);
    EXPECT_EQ(static_cast<std::uint16_t>(analysis.m_shLookForQuickerMateDepth), 65535);
    EXPECT_EQ(analysis.m_nKeyLine, 255);
    const THeuristicParameters p;
    EXPECT_EQ(p.m_BlockedFigures, (TBlockedSquares{255, 255, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(static_cast<std::uint8_t>(p.m_nFfmWithOther), 255);
}

} // namespace
} // namespace quillon
