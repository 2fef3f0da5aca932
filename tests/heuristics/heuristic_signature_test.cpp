#include "heuristics/heuristic_signature.h"

#include <algorithm>
#include <functional>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_set_fixture.h"

namespace quillon {
namespace {

constexpr TSquare kB4 = 25, kD4 = 27, kC6 = 42, kE7 = 52;

class HeuristicSignature : public HeuristicSetFixture {
  protected:
    std::uint32_t Signature(std::uint32_t mask) {
        m_board.m_nHeuristics = mask;
        return ComputeHeurParams(m_board);
    }

    void Watch(std::initializer_list<TSquare> squares) {
        m_p.m_nBlockedFigures = static_cast<std::int8_t>(squares.size());
        std::ranges::copy(squares, m_p.m_BlockedFigures.begin());
        m_p.m_BlockedFiguresNow = m_p.m_BlockedFigures;
    }

    /// Black: pawn e7, rook a8, queen d8, king e8, knight g8, in square order. White figures never have an ordinal.
    void SetUpRoot() {
        Place(kB4, kWhiteQueen);
        Place(kE7, kBlackPawn);
        Place(kA8, kBlackRook);
        Place(57, kWhiteKnight);
        Place(kD8, kBlackQueen);
        Place(kE8, kBlackKing);
        Place(kG8, kBlackKnight);
        Place(kE1, kWhiteKing);
    }
};

static_assert(noexcept(ComputeHeurParams(std::declval<const TChessboard&>())));

TEST_F(HeuristicSignature, EmptyMaskGivesZeroWhateverTheParameters) {
    m_p.m_nFfmDepth = 9;
    m_p.m_bBlockedFiguresByHand = true;
    m_board.m_wBlackState = 0xffff;
    EXPECT_EQ(Signature(0), 0u);
    m_board.m_pContext = nullptr;
    EXPECT_EQ(Signature(0), 0u);
}

TEST_F(HeuristicSignature, BitsWithoutParametersLeaveTheDynamicApplicationFlag) {
    for (const std::uint32_t bit :
         {SH_AREKINGSNEAR, SH_SWEEPINGWHITEROOK, SH_DONTLEAVEMAINDIAGONAL, SH_DONTRECEDEBLACKKING,
          SH_DONTLETPROMOTEDQUEENMOVE, SH_KEYLINE, SH_KEYDIAGONAL, SH_DONTLETBLACKQUEENCHECKTWICE,
          SH_USEBLOCKBLACKPAWNSLEVEL, SH_KEYSQUARE, SH_3MOVESTOMATE, SH_DONTLETPROMOTEDFIGUREMOVE, SH_SEASNAKE,
          SH_REDUCTIONTOGLOBREGPOS, SH_ZUGZWANG}) {
        m_p.m_bApplyDlfuDynamically = true;
        EXPECT_EQ(Signature(bit), 1u) << bit;
        m_p.m_bApplyDlfuDynamically = false;
        EXPECT_EQ(Signature(bit), 0u) << bit;
    }
}

TEST_F(HeuristicSignature, EdgeAppendsFourFlags) {
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'1000u);
    m_p.m_bAllowExceptions = true;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'1100u);
    m_board.m_wBlackState = 0x100;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'1110u);
    m_p.m_bEdgeInclCornerSquares = true;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'1111u);
    m_p.m_bDontLetKingMove = false;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'0111u);
    m_p.m_bApplyDlfuDynamically = false;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b0'0111u);
}

TEST_F(HeuristicSignature, SuspendedBanOfKingMovesCountsAsNotStrict) {
    m_board.m_wBlackState = 0x8000;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'0000u);
    m_p.m_bDontLetKingMove = false;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'0000u);
    m_board.m_wBlackState = 0x8100;
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE), 0b1'0010u);
}

TEST_F(HeuristicSignature, OneColourAppendsTheMarker) {
    for (std::uint8_t marker = 0; marker < 4; ++marker) {
        m_board.m_bySideState = marker;
        EXPECT_EQ(Signature(SH_ONECOLORPLAYPOSSIBLE), 4u + marker);
        m_board.m_bySideState = static_cast<std::uint8_t>(0xfc | marker); // the counts of captures do not enter
        EXPECT_EQ(Signature(SH_ONECOLORPLAYPOSSIBLE), 4u + marker);
    }
}

TEST_F(HeuristicSignature, ZugzwangTrianglesAppendTwoSquares) {
    m_p.m_nZugzwangTriangle1 = 10;
    m_p.m_nZugzwangTriangle2 = 20;
    EXPECT_EQ(Signature(SH_ZUGZWANGTRIANGLES), 4756u); // 4096 + 640 + 20
}

TEST_F(HeuristicSignature, ExtendedEdgeAppendsFourFlags) {
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 16u);
    m_p.m_nRelaxCaptures = 3;
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 24u);
    m_p.m_nRelaxCaptures = 1;
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 24u);
    m_p.m_bEdgeInclCornerSquares = true;
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 28u);
    m_p.m_bExtEdgeStrict = true;
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 30u);
    m_board.m_wBlackState = 0x100;
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 31u);
    m_board.m_wBlackState = 0x8000; // concerns the other edge heuristic only
    EXPECT_EQ(Signature(SH_KEEPKINGWITHINEXTEDGE), 30u);
}

TEST_F(HeuristicSignature, SaveQueenRookAppendsStrictAndTheLostFigure) {
    EXPECT_EQ(Signature(SH_SAVEQUEENROOK), 6u);
    m_board.m_wBlackState = 0x20;
    EXPECT_EQ(Signature(SH_SAVEQUEENROOK), 7u);
    m_p.m_bSaveRookQueenStrict = false;
    EXPECT_EQ(Signature(SH_SAVEQUEENROOK), 5u);
    m_board.m_wBlackState = 0xffdf;
    EXPECT_EQ(Signature(SH_SAVEQUEENROOK), 4u);
}

TEST_F(HeuristicSignature, DontLoseFiguresAppendsTheMode) {
    EXPECT_EQ(Signature(SH_DONTLOSEANYFIGURES), 4u);
    m_p.m_nSaveFiguresMode = 1;
    EXPECT_EQ(Signature(SH_DONTLOSEANYFIGURES), 5u);
    m_p.m_nSaveFiguresMode = 2;
    EXPECT_EQ(Signature(SH_DONTLOSEANYFIGURES), 6u);
}

TEST_F(HeuristicSignature, FlagsOfOneBit) {
    EXPECT_EQ(Signature(SH_ASSERTBLACKKINGSURROUNDED), 2u);
    m_p.m_bAssertBKSStrict = true;
    EXPECT_EQ(Signature(SH_ASSERTBLACKKINGSURROUNDED), 3u);
    EXPECT_EQ(Signature(SH_CAPTUREKNIGHT), 2u);
    m_p.m_nCaptureKnightMode = 1;
    EXPECT_EQ(Signature(SH_CAPTUREKNIGHT), 3u);
    EXPECT_EQ(Signature(SH_SKIPWORSTWHITEMOVES), 3u);
}

TEST_F(HeuristicSignature, DistanceFromTheCornerTakesThreeBits) {
    const std::pair<int, std::uint32_t> rows[] = {{-2, 8}, {-1, 9}, {1, 10}, {2, 11}, {3, 12}, {4, 13}, {5, 14}};
    for (const auto& [distance, expected] : rows) {
        m_p.m_nKingNearCorner = static_cast<std::int8_t>(distance);
        EXPECT_EQ(Signature(SH_KEEPKINGNEARCORNER), expected) << distance;
    }
    m_p.m_nKingNearCorner = 0; // none given: like none of the others
    EXPECT_EQ(Signature(SH_KEEPKINGNEARCORNER), 15u);
    m_p.m_nKingNearCorner = -5; // a signed byte: 8 - 3
    EXPECT_EQ(Signature(SH_KEEPKINGNEARCORNER), 5u);
}

TEST_F(HeuristicSignature, KeyWhiteFigureAppendsItsSquareFirst) {
    m_p.m_nKeyWhiteFigure = kD4;
    EXPECT_EQ(Signature(SH_KEYWHITEFIGURE), 91u);                          // 64 + 27
    EXPECT_EQ(Signature(SH_KEYWHITEFIGURE | SH_SAVEQUEENROOK), 366u);      // 4 * 91 + 2, though its bit is higher
    EXPECT_EQ(Signature(SH_KEYWHITEFIGURE | SH_DONTLOSEANYFIGURES), 364u); // 4 * 91
}

TEST_F(HeuristicSignature, ForcedMateAppendsDepthAndTheWayToRun) {
    m_p.m_nFfmDepth = 5; // w = 8 * (8 * 1 + 5) = 104
    m_p.m_nFfmWithOther = 1;
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 182u); // 2 * 105 - 28
    m_p.m_nFfmWithOther = 0;
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 180u); // 2 * 104 - 28
    m_p.m_nFfmWithOther = -1;
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 178u); // 2 * 103 - 28
    m_p.m_bFfmPreliminary = true;
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 179u);
    m_p.m_bFfmCycleTwice = true;
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 191u); // 2 * 104 - 18 + 1
    m_p.m_nFfmWithOther = 1;                       // not asked with two cycles
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 191u);
}

TEST_F(HeuristicSignature, ForcedMateOfTheLowestDepth) {
    m_p.m_bApplyDlfuDynamically = false;
    m_p.m_nFfmDepth = 2;
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 2u); // w = 16, 2 * 15 - 28
    m_p.m_nFfmDepth = 1;                         // no code; below zero the value wraps: 2 * 7 - 28 = -14
    EXPECT_EQ(Signature(SH_FINDFORCEDMATE), 4294967282u);
}

TEST_F(HeuristicSignature, SingleQueenAppendsItsModeLast) {
    m_p.m_nSingleQueenMode = 3;
    EXPECT_EQ(Signature(SH_SINGLEQUEENMATE), 7u);
    m_p.m_nFfmDepth = 5;
    EXPECT_EQ(Signature(SH_SINGLEQUEENMATE | SH_FINDFORCEDMATE), 715u);     // 4 * 178 + 3
    EXPECT_EQ(Signature(SH_SINGLEQUEENMATE | SH_SKIPWORSTWHITEMOVES), 15u); // 4 * 3 + 3, though its bit is lower
}

TEST_F(HeuristicSignature, ALargerSetByHand) {
    m_p.m_nKeyWhiteFigure = kD4;
    m_p.m_nKingNearCorner = 3;
    m_p.m_nFfmDepth = 4;
    m_p.m_nSingleQueenMode = 2;
    // dynamic 1; key figure 64 + 27 = 91; edge 91 * 16 + 8 = 1464; corner 1464 * 8 + 4 = 11716;
    // w = 8 * (8 * 11716 + 4) = 749856, forced mate 2 * 749855 - 28 = 1499682; single queen 4 * 1499682 + 2
    EXPECT_EQ(Signature(SH_KEEPKINGONTHEEDGE | SH_KEYWHITEFIGURE | SH_KEEPKINGNEARCORNER | SH_FINDFORCEDMATE |
                        SH_SINGLEQUEENMATE | SH_SEASNAKE),
              5998730u);
}

TEST_F(HeuristicSignature, WhatIsTooLargeWraps) {
    m_p.m_nKeyWhiteFigure = kH8;
    m_p.m_nZugzwangTriangle1 = m_p.m_nZugzwangTriangle2 = kH8;
    m_p.m_nSaveFiguresMode = 1;
    // 64 + 63 = 127; edge * 16 + 8 = 2040; marker * 4 = 8160; triangles * 4096 + 4095 = 33427455;
    // extended edge * 16 = 534839280; save queen * 4 + 2 = 2139357122; figures * 4 + 1 = 8557428489 - 2^32
    EXPECT_EQ(Signature(SH_KEYWHITEFIGURE | SH_KEEPKINGONTHEEDGE | SH_ONECOLORPLAYPOSSIBLE | SH_ZUGZWANGTRIANGLES |
                        SH_KEEPKINGWITHINEXTEDGE | SH_SAVEQUEENROOK | SH_DONTLOSEANYFIGURES),
              4262461193u);
}

TEST_F(HeuristicSignature, WatchedFiguresByHandAreOrdinalsBelowAFlag) {
    SetUpRoot();
    m_p.m_bBlockedFiguresByHand = true;
    // rook a8 0, queen d8 1, king e8 2, knight g8 3; flag above them: 16
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 33u); // 2 * 16 + 1
    Watch({kD8, kG8});
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 53u); // 2 * (16 + 2 + 8) + 1
    Watch({kG8, kD8});
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 53u);
    m_p.m_bBlockedFiguresEff = true;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 55u);
    Watch({kA8, kE8});
    m_p.m_bBlockedFiguresEff = false;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 43u); // 2 * (16 + 1 + 4) + 1
    m_p.m_bApplyDlfuDynamically = false;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 42u);
}

TEST_F(HeuristicSignature, WatchedFiguresByHandAskTheRootListOnly) {
    SetUpRoot();
    m_p.m_bBlockedFiguresByHand = true;
    Watch({kD8, kG8});
    m_p.m_BlockedFiguresNow = {kC6, kA8, kA8, kA8, kA8, kA8, kA8, kA8};
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 53u);
}

TEST_F(HeuristicSignature, PawnsHaveOrdinalsOnlyWhenOneIsWatched) {
    SetUpRoot();
    m_p.m_bBlockedFiguresByHand = true;
    Watch({kE7, kG8});
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 49u); // 2 * (16 + 8) + 1: the pawn is not seen
    m_p.m_bBlockedPawns = true;                         // pawn e7 0, ..., knight g8 4, flag 32
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 99u); // 2 * (32 + 1 + 16) + 1
    m_root.m_board[kE7] |= kPawnMayNotAdvance;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 99u);
}

TEST_F(HeuristicSignature, WatchedFiguresOfTheEngineInTheirPlaces) {
    SetUpRoot();
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 3u); // 2 * (2 * 0 + 1) + 1
    Watch({kD8, kG8});
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 43u); // 2 * (2 * 10 + 1) + 1
    m_p.m_bBlockedFiguresEff = true;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 47u); // 2 * (2 * 11 + 1) + 1
}

TEST_F(HeuristicSignature, WatchedFiguresAwayFromTheirPlacesAddTheirSquares) {
    SetUpRoot();
    Watch({kD8, kG8});
    m_p.m_BlockedFiguresNow[0] = kC6;
    // knight 8; one digit 42 below seven places: 8 * 128 + 42 = 1066
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 2133u);
    m_p.m_BlockedFiguresNow[1] = kB4; // a white figure in the root: no ordinal
    // digits 42 * 64 + 25 = 2713 below thirteen places, nothing above
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 5427u);
    m_p.m_bBlockedFiguresEff = true;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 21811u); // 2 * (8192 + 2713) + 1
    m_p.m_bBlockedFiguresEff = false;
    m_p.m_BlockedFiguresNow = {kA8, kG8, 255, 255, 255, 255, 255, 255}; // on another's place
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 2417u);               // 2 * ((1 + 8) * 128 + 56) + 1
}

TEST_F(HeuristicSignature, EntriesBeyondTheCountDoNotEnter) {
    SetUpRoot();
    Watch({kD8});
    m_p.m_BlockedFigures[1] = kG8;
    m_p.m_BlockedFiguresNow[1] = kA8;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 11u); // 2 * (2 * 2 + 1) + 1
    m_p.m_nBlockedFigures = -1;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 3u);
}

TEST_F(HeuristicSignature, EightFiguresAwayFromTheirPlacesKeepTheLastDigits) {
    SetUpRoot();
    Watch({48, 49, 50, 51, 53, 54, 55, 47});
    m_p.m_BlockedFiguresNow = {0, 1, 2, 3, 4, 5, 6, 7};
    m_p.m_bBlockedFiguresEff = true; // shifted out by 49 places
    // 2 * 2^30 + 3 * 2^24 + 4 * 2^18 + 5 * 2^12 + 6 * 64 + 7 = 2198884743, doubled and 1, less 2^32
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 102802191u);
}

TEST_F(HeuristicSignature, OrdinalsBeyondThirtyTwoAreLost) {
    for (TSquare square = 0; square < 40; ++square)
        Place(square, kBlackKnight);
    m_p.m_bBlockedFiguresByHand = true; // its flag would be bit 41
    Watch({0, 31, 32, 39});
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 3u); // 2 * (2^31 + 1) + 1, less 2^32
}

TEST_F(HeuristicSignature, WatchedFiguresComeBeforeEverythingElse) {
    SetUpRoot();
    m_p.m_bBlockedFiguresByHand = true;
    Watch({kD8, kG8});
    m_p.m_nKeyWhiteFigure = kD4;
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK | SH_KEYWHITEFIGURE), 3419u);   // 64 * 53 + 27
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGONTHEEDGE), 856u); // 16 * 53 + 8
}

TEST_F(HeuristicSignature, RootOfTheContextCountsNotThePosition) {
    SetUpRoot();
    m_p.m_bBlockedFiguresByHand = true;
    Watch({kD8, kG8});
    m_board.m_board[kA1] = kBlackRook;
    m_board.m_blackRooks = 1;
    m_board.m_blockedFigures = {kC6, kB4, 255, 255, 255, 255, 255, 255};
    EXPECT_EQ(Signature(SH_DONTLETFIGUREUNBLOCK), 53u);
}

// --- Properties over many sets -------------------------------------------------------------------------------------

/// One appended parameter: its bit and the number of bits it takes.
struct TWidth {
    std::uint32_t m_nBit;
    int m_nBits;
};

constexpr TWidth kWidths[] = {
    {SH_KEYWHITEFIGURE, 6},
    {SH_KEEPKINGONTHEEDGE, 4},
    {SH_ONECOLORPLAYPOSSIBLE, 2},
    {SH_ZUGZWANGTRIANGLES, 12},
    {SH_SAVEQUEENROOK, 2},
    {SH_DONTLOSEANYFIGURES, 2},
    {SH_ASSERTBLACKKINGSURROUNDED, 1},
    {SH_KEEPKINGWITHINEXTEDGE, 4},
    {SH_CAPTUREKNIGHT, 1},
    {SH_SKIPWORSTWHITEMOVES, 1},
    {SH_KEEPKINGNEARCORNER, 3},
    {SH_FINDFORCEDMATE, 7},
    {SH_SINGLEQUEENMATE, 2},
};

int WidthOf(std::uint32_t mask) {
    int width = 1; // the flag of the dynamic application
    for (const TWidth& row : kWidths)
        width += (mask & row.m_nBit) != 0 ? row.m_nBits : 0;
    return width;
}

class HeuristicSignatureProperty : public HeuristicSignature {
  protected:
    static constexpr int kDraws = 20000;

    unsigned Draw(unsigned n) { return static_cast<unsigned>(m_random() % n); }
    bool Toss() { return Draw(2) != 0; }

    void DrawParameters() {
        constexpr std::int8_t kDistances[] = {-2, -1, 1, 2, 3, 4, 5};
        m_p.m_bApplyDlfuDynamically = Toss();
        m_p.m_bDontLetKingMove = Toss();
        m_p.m_bAllowExceptions = Toss();
        m_p.m_bEdgeInclCornerSquares = Toss();
        m_p.m_bExtEdgeStrict = Toss();
        m_p.m_nRelaxCaptures = static_cast<std::uint8_t>(Draw(3));
        m_p.m_nZugzwangTriangle1 = static_cast<TSquare>(Draw(64));
        m_p.m_nZugzwangTriangle2 = static_cast<TSquare>(Draw(64));
        m_p.m_bSaveRookQueenStrict = Toss();
        m_p.m_nSaveFiguresMode = static_cast<std::uint8_t>(Draw(3));
        m_p.m_bAssertBKSStrict = Toss();
        m_p.m_nCaptureKnightMode = static_cast<std::uint8_t>(Draw(2));
        m_p.m_nKingNearCorner = kDistances[Draw(7)];
        m_p.m_nKeyWhiteFigure = static_cast<TSquare>(Draw(64));
        m_p.m_nFfmDepth = static_cast<std::uint8_t>(2 + Draw(8));
        m_p.m_nFfmWithOther = static_cast<std::int8_t>(static_cast<int>(Draw(3)) - 1);
        m_p.m_bFfmCycleTwice = Toss();
        m_p.m_bFfmPreliminary = Toss();
        m_p.m_nSingleQueenMode = static_cast<std::uint8_t>(Draw(4));
        m_board.m_wBlackState = static_cast<std::uint16_t>(Draw(65536));
        m_board.m_bySideState = static_cast<std::uint8_t>(Draw(256));
    }

    /// A mask whose parameters all fit into 32 bits.
    std::uint32_t DrawNarrowMask() {
        for (;;) {
            const auto mask = static_cast<std::uint32_t>(m_random()) & kAllHeuristics & ~SH_DONTLETFIGUREUNBLOCK;
            if (mask != 0 && WidthOf(mask) <= 32)
                return mask;
        }
    }

    void DrawWatchedFigures() {
        m_p.m_bBlockedFiguresByHand = Toss();
        m_p.m_bBlockedFiguresEff = Toss();
        m_p.m_bBlockedPawns = Toss();
        m_p.m_nBlockedFigures = static_cast<std::int8_t>(Draw(9));
        for (std::size_t i = 0; i < 8; ++i) {
            m_p.m_BlockedFigures[i] = static_cast<TSquare>(Draw(64));
            m_p.m_BlockedFiguresNow[i] = Toss() ? m_p.m_BlockedFigures[i] : static_cast<TSquare>(Draw(64));
        }
    }

    /// What enters the signature, one number per parameter, in no way packed. With `mask`, equal lists must give equal
    /// signatures and different lists different ones.
    std::vector<int> Entering(std::uint32_t mask) const {
        const auto has = [mask](std::uint32_t bit) { return (mask & bit) != 0; };
        const bool bRelaxed = (m_board.m_wBlackState & 0x100) != 0;
        std::vector<int> list{m_p.m_bApplyDlfuDynamically};
        const auto add = [&list](std::initializer_list<int> values) { list.insert(list.end(), values); };
        if (has(SH_KEYWHITEFIGURE))
            add({m_p.m_nKeyWhiteFigure});
        if (has(SH_KEEPKINGONTHEEDGE))
            add({m_p.m_bDontLetKingMove && m_board.m_wBlackState < 0x8000, m_p.m_bAllowExceptions, bRelaxed,
                 m_p.m_bEdgeInclCornerSquares});
        if (has(SH_ONECOLORPLAYPOSSIBLE))
            add({m_board.m_bySideState % 4});
        if (has(SH_ZUGZWANGTRIANGLES))
            add({m_p.m_nZugzwangTriangle1, m_p.m_nZugzwangTriangle2});
        if (has(SH_KEEPKINGWITHINEXTEDGE))
            add({m_p.m_nRelaxCaptures > 0, m_p.m_bEdgeInclCornerSquares, m_p.m_bExtEdgeStrict, bRelaxed});
        if (has(SH_SAVEQUEENROOK))
            add({m_p.m_bSaveRookQueenStrict, m_board.m_wBlackState / 0x20 % 2});
        if (has(SH_DONTLOSEANYFIGURES))
            add({m_p.m_nSaveFiguresMode});
        if (has(SH_ASSERTBLACKKINGSURROUNDED))
            add({m_p.m_bAssertBKSStrict});
        if (has(SH_CAPTUREKNIGHT))
            add({m_p.m_nCaptureKnightMode});
        if (has(SH_KEEPKINGNEARCORNER))
            add({m_p.m_nKingNearCorner});
        if (has(SH_FINDFORCEDMATE))
            add({m_p.m_nFfmDepth, m_p.m_bFfmCycleTwice ? 2 : m_p.m_nFfmWithOther, m_p.m_bFfmPreliminary});
        if (has(SH_SINGLEQUEENMATE))
            add({m_p.m_nSingleQueenMode});
        return list;
    }

    std::mt19937 m_random{20240517};
};

TEST_F(HeuristicSignatureProperty, SetsThatFitDifferExactlyWhenAParameterThatEntersDoes) {
    int nEqual = 0;
    for (int i = 0; i < kDraws; ++i) {
        const std::uint32_t mask = DrawNarrowMask();
        DrawParameters();
        const std::vector<int> first = Entering(mask);
        const std::uint32_t firstSignature = Signature(mask);
        DrawParameters();
        const std::vector<int> second = Entering(mask);
        ASSERT_EQ(first == second, firstSignature == Signature(mask)) << std::hex << mask;
        nEqual += first == second;
    }
    EXPECT_GT(nEqual, 0);
    EXPECT_LT(nEqual, kDraws / 2);
}

using TChange = std::function<void(TSearchContext&, TChessboard&)>;
struct TNamedChange {
    const char* m_name;
    std::uint32_t m_nBits; // the change enters when one of these is set
    TChange m_change;
};

const std::vector<TNamedChange>& Changes() {
    static const std::vector<TNamedChange> changes{
        {"strict", SH_KEEPKINGONTHEEDGE, [](auto& p, auto&) { p.m_bDontLetKingMove ^= true; }},
        {"exceptions", SH_KEEPKINGONTHEEDGE, [](auto& p, auto&) { p.m_bAllowExceptions ^= true; }},
        {"edge relaxed", SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE,
         [](auto&, auto& b) { b.m_wBlackState ^= 0x100; }},
        {"corner", SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE,
         [](auto& p, auto&) { p.m_bEdgeInclCornerSquares ^= true; }},
        {"captures", SH_KEEPKINGWITHINEXTEDGE,
         [](auto& p, auto&) { p.m_nRelaxCaptures = p.m_nRelaxCaptures == 0 ? 3 : 0; }},
        {"extended strict", SH_KEEPKINGWITHINEXTEDGE, [](auto& p, auto&) { p.m_bExtEdgeStrict ^= true; }},
        {"marker", SH_ONECOLORPLAYPOSSIBLE, [](auto&, auto& b) { b.m_bySideState ^= 3; }},
        {"triangle 1", SH_ZUGZWANGTRIANGLES, [](auto& p, auto&) { p.m_nZugzwangTriangle1 ^= 33; }},
        {"triangle 2", SH_ZUGZWANGTRIANGLES, [](auto& p, auto&) { p.m_nZugzwangTriangle2 ^= 33; }},
        {"save strict", SH_SAVEQUEENROOK, [](auto& p, auto&) { p.m_bSaveRookQueenStrict ^= true; }},
        {"lost figure", SH_SAVEQUEENROOK, [](auto&, auto& b) { b.m_wBlackState ^= 0x20; }},
        {"save mode", SH_DONTLOSEANYFIGURES,
         [](auto& p, auto&) { p.m_nSaveFiguresMode = static_cast<std::uint8_t>((p.m_nSaveFiguresMode + 1) % 3); }},
        {"assert strict", SH_ASSERTBLACKKINGSURROUNDED, [](auto& p, auto&) { p.m_bAssertBKSStrict ^= true; }},
        {"knight mode", SH_CAPTUREKNIGHT, [](auto& p, auto&) { p.m_nCaptureKnightMode ^= 1; }},
        {"distance", SH_KEEPKINGNEARCORNER,
         [](auto& p, auto&) { p.m_nKingNearCorner = p.m_nKingNearCorner == 2 ? std::int8_t{-2} : std::int8_t{2}; }},
        {"key figure", SH_KEYWHITEFIGURE, [](auto& p, auto&) { p.m_nKeyWhiteFigure ^= 9; }},
        {"depth", SH_FINDFORCEDMATE,
         [](auto& p, auto&) { p.m_nFfmDepth = p.m_nFfmDepth == 9 ? std::uint8_t{2} : std::uint8_t{9}; }},
        {"two cycles", SH_FINDFORCEDMATE, [](auto& p, auto&) { p.m_bFfmCycleTwice ^= true; }},
        {"preliminary", SH_FINDFORCEDMATE, [](auto& p, auto&) { p.m_bFfmPreliminary ^= true; }},
        {"queen mode", SH_SINGLEQUEENMATE, [](auto& p, auto&) { p.m_nSingleQueenMode ^= 3; }},
        {"dynamic", kAllHeuristics, [](auto& p, auto&) { p.m_bApplyDlfuDynamically ^= true; }},
    };
    return changes;
}

TEST_F(HeuristicSignatureProperty, EverySingleParameterCountsExactlyWhenItsBitIsSet) {
    for (const TNamedChange& row : Changes())
        for (int i = 0; i < 2000; ++i) {
            const std::uint32_t mask = DrawNarrowMask();
            DrawParameters();
            m_board.m_wBlackState &= 0x7fff; // the ban of king moves holds, so that its strictness counts
            const std::uint32_t before = Signature(mask);
            row.m_change(m_p, m_board);
            ASSERT_EQ((mask & row.m_nBits) != 0, before != Signature(mask)) << row.m_name << std::hex << ' ' << mask;
        }
}

TEST_F(HeuristicSignatureProperty, ParametersThatAreTheSameAllThroughASolveDoNotEnter) {
    SetUpRoot();
    for (int i = 0; i < kDraws; ++i) {
        DrawParameters();
        DrawWatchedFigures();
        const auto mask = static_cast<std::uint32_t>(m_random()) & kAllHeuristics;
        const std::uint32_t before = Signature(mask);
        m_p.m_bRelaxOnAdvancedPawn ^= true;
        m_p.m_bRelaxCapturesInclPawns ^= true;
        m_p.m_bRelaxExtEdgeOnly ^= true;
        m_p.m_shDeferMoves = static_cast<std::uint16_t>(m_p.m_shDeferMoves + 1);
        m_p.m_shDeferMaxMoves = static_cast<std::uint16_t>(m_p.m_shDeferMaxMoves + 1);
        m_p.m_bBishopIsMajor ^= true;
        m_p.m_nKeySquare ^= 1;
        m_p.m_nPinnedFigure ^= 1;
        m_p.m_nBlackFigureOnMainDiagonal ^= 1;
        m_p.m_nSeaSnakeApproach ^= 1;
        m_p.m_bDontLetPromotedStrict ^= true;
        m_board.m_wBlackState ^= 0x5edf; // all bits but 0x20, 0x100 and 0x8000
        m_board.m_bySideState ^= 0xfc;
        ASSERT_EQ(before, Signature(mask)) << std::hex << mask;
    }
}

TEST_F(HeuristicSignatureProperty, SubsetsOfWatchedFiguresHaveSignaturesOfTheirOwn) {
    SetUpRoot();
    m_p.m_bBlockedPawns = true;
    constexpr TSquare kBlackMen[] = {kE7, kA8, kD8, kE8, kG8};
    for (const bool bByHand : {false, true}) {
        m_p.m_bBlockedFiguresByHand = bByHand;
        std::set<std::uint32_t> signatures;
        for (unsigned subset = 0; subset < 32; ++subset) {
            m_p.m_nBlockedFigures = 0;
            for (unsigned i = 0; i < 5; ++i)
                if ((subset >> i & 1) != 0) {
                    const auto n = static_cast<std::size_t>(m_p.m_nBlockedFigures++);
                    m_p.m_BlockedFigures[n] = m_p.m_BlockedFiguresNow[n] = kBlackMen[i];
                }
            signatures.insert(Signature(SH_DONTLETFIGUREUNBLOCK));
        }
        EXPECT_EQ(signatures.size(), 32u) << bByHand;
    }
}

/// The same number worked out differently: each step in wide arithmetic on its own, the watched figures one by one.
class CPlainSignature {
  public:
    void Append(std::uint64_t radix, std::int64_t digit) {
        m_nValue = (m_nValue * radix + static_cast<std::uint64_t>(digit)) % (std::uint64_t{1} << 32);
    }
    void Times2(int n) {
        for (int i = 0; i < n; ++i)
            Append(2, 0);
    }
    [[nodiscard]] std::uint64_t Value() const { return m_nValue; }

  private:
    std::uint64_t m_nValue = 0;
};

std::uint64_t PlainWatchedFigures(const TSearchContext& p) {
    const TChessboard& root = *p.m_pRoot;
    std::vector<int> blackMen;
    for (int square = 0; square < 64; ++square) {
        const int code = root.m_board[static_cast<std::size_t>(square)];
        if (code >= 128 && ((code & 31) != 2 || p.m_bBlockedPawns))
            blackMen.push_back(square);
    }
    std::set<std::size_t> ordinals;
    std::vector<int> moved;
    for (std::size_t i = 0; i < static_cast<std::size_t>(p.m_nBlockedFigures); ++i) {
        const int square = p.m_bBlockedFiguresByHand ? p.m_BlockedFigures[i] : p.m_BlockedFiguresNow[i];
        const auto man = std::ranges::find(blackMen, square);
        if (man != blackMen.end())
            ordinals.insert(static_cast<std::size_t>(man - blackMen.begin()));
        if (!p.m_bBlockedFiguresByHand && p.m_BlockedFigures[i] != p.m_BlockedFiguresNow[i])
            moved.push_back(square);
    }
    std::uint64_t sum = p.m_bBlockedFiguresByHand ? std::uint64_t{1} << blackMen.size() : 0;
    for (const std::size_t ordinal : ordinals)
        sum += std::uint64_t{1} << ordinal;
    CPlainSignature v;
    v.Append(1, static_cast<std::int64_t>(sum + (p.m_bBlockedFiguresEff ? 1 : 0)));
    if (p.m_bBlockedFiguresByHand)
        return v.Value();
    if (moved.empty()) {
        v.Append(2, 1);
        return v.Value();
    }
    v.Times2(1);
    for (const int square : moved)
        v.Append(64, square);
    return v.Value();
}

TEST_F(HeuristicSignatureProperty, AgreesWithThePlainCalculation) {
    SetUpRoot();
    constexpr std::uint32_t kMask32 = 0xffffffff;
    for (int i = 0; i < kDraws; ++i) {
        DrawParameters();
        DrawWatchedFigures();
        std::uint32_t mask = static_cast<std::uint32_t>(m_random()) & kAllHeuristics;
        mask |= SH_AREKINGSNEAR; // never empty
        const auto has = [mask](std::uint32_t bit) { return (mask & bit) != 0; };
        const auto bit = [this](int n) { return m_board.m_wBlackState >> n & 1; };

        CPlainSignature v;
        if (has(SH_DONTLETFIGUREUNBLOCK))
            v.Append(1, static_cast<std::int64_t>(PlainWatchedFigures(m_p)));
        v.Append(2, m_p.m_bApplyDlfuDynamically);
        if (has(SH_KEYWHITEFIGURE))
            v.Append(64, m_p.m_nKeyWhiteFigure);
        if (has(SH_KEEPKINGONTHEEDGE)) {
            v.Append(2, bit(15) != 0 ? 0 : m_p.m_bDontLetKingMove);
            v.Append(2, m_p.m_bAllowExceptions);
            v.Append(2, bit(8));
            v.Append(2, m_p.m_bEdgeInclCornerSquares);
        }
        if (has(SH_ONECOLORPLAYPOSSIBLE))
            v.Append(4, m_board.m_bySideState % 4);
        if (has(SH_ZUGZWANGTRIANGLES)) {
            v.Append(64, m_p.m_nZugzwangTriangle1);
            v.Append(64, m_p.m_nZugzwangTriangle2);
        }
        if (has(SH_KEEPKINGWITHINEXTEDGE)) {
            v.Append(2, m_p.m_nRelaxCaptures > 0);
            v.Append(2, m_p.m_bEdgeInclCornerSquares);
            v.Append(2, m_p.m_bExtEdgeStrict);
            v.Append(2, bit(8));
        }
        if (has(SH_SAVEQUEENROOK)) {
            v.Append(2, m_p.m_bSaveRookQueenStrict);
            v.Append(2, bit(5));
        }
        if (has(SH_DONTLOSEANYFIGURES))
            v.Append(4, m_p.m_nSaveFiguresMode);
        if (has(SH_ASSERTBLACKKINGSURROUNDED))
            v.Append(2, m_p.m_bAssertBKSStrict);
        if (has(SH_CAPTUREKNIGHT))
            v.Append(2, m_p.m_nCaptureKnightMode);
        if (has(SH_SKIPWORSTWHITEMOVES))
            v.Append(2, 1);
        if (has(SH_KEEPKINGNEARCORNER))
            v.Append(8, m_p.m_nKingNearCorner > 0 ? m_p.m_nKingNearCorner + 1 : m_p.m_nKingNearCorner + 2);
        if (has(SH_FINDFORCEDMATE)) {
            v.Append(8, m_p.m_nFfmDepth);
            // 16 times the value, less 18, or less 28 and twice the way to run
            v.Append(16, m_p.m_bFfmCycleTwice ? -18 : 2 * m_p.m_nFfmWithOther - 28);
            v.Append(1, m_p.m_bFfmPreliminary);
        }
        if (has(SH_SINGLEQUEENMATE))
            v.Append(4, m_p.m_nSingleQueenMode);
        ASSERT_EQ(Signature(mask), v.Value() & kMask32) << std::hex << mask;
    }
}

} // namespace
} // namespace quillon
