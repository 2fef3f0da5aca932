#include "heuristics/heuristic_text_reader.h"

#include <random>
#include <string>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_set_fixture.h"
#include "heuristics/heuristic_text.h"

namespace quillon {
namespace {

constexpr TSquare kD5 = 35, kE6 = 44;

/// The message a text is refused with; "accepted" if it is not.
std::string Refusal(std::string_view text) {
    try {
        (void)ReadHeuristicsText(text);
    } catch (const ChessException& error) {
        return error.what();
    }
    return "accepted";
}

TEST(HeuristicTextReader, NoneIsTheEmptySet) {
    EXPECT_EQ(ReadHeuristicsText("none").m_nHeuristics, 0u);
    EXPECT_EQ(ReadHeuristicsText("  NONE ").m_nHeuristics, 0u);
}

TEST(HeuristicTextReader, NamesInAnyCaseAndWithBlanks) {
    EXPECT_EQ(ReadHeuristicsText(" sh_3movestomate ,SH_SaveQueen/Rook").m_nHeuristics,
              SH_3MOVESTOMATE | SH_SAVEQUEENROOK);
}

TEST(HeuristicTextReader, EveryHeuristicByItsName) {
    for (const THeuristic& row : kHeuristics) {
        if ((row.m_nBit & kAllHeuristics) == 0)
            continue;
        const std::uint32_t needing =
            SH_KEEPKINGNEARCORNER | SH_KEYLINE | SH_KEYDIAGONAL | SH_KEYSQUARE | SH_KEYWHITEFIGURE;
        if ((row.m_nBit & needing) == 0)
            EXPECT_EQ(ReadHeuristicsText(row.m_name).m_nHeuristics, row.m_nBit);
        else
            EXPECT_EQ(Refusal(row.m_name),
                      "Heuristics, character 1: " + std::string(row.m_name) + " needs a parameter");
    }
}

TEST(HeuristicTextReader, CommasWithinBracketsBelongToTheParameters) {
    const TReadHeuristics read = ReadHeuristicsText("SH_DONTLETFIGUREUNBLOCK(d5,E6), SH_KEEPKINGNEARCORNER(2M)");
    EXPECT_EQ(read.m_nHeuristics, SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGNEARCORNER);
    EXPECT_EQ(read.m_parameters.m_nBlockedFigures, 2);
    EXPECT_EQ(read.m_parameters.m_BlockedFigures[0], kD5);
    EXPECT_EQ(read.m_parameters.m_BlockedFigures[1], kE6);
    EXPECT_TRUE(read.m_parameters.m_bBlockedFiguresByHand);
    EXPECT_EQ(read.m_parameters.m_nKingNearCorner, -2);
}

TEST(HeuristicTextReader, FormsOfTheEdge) {
    struct TForm {
        const char* m_text;
        bool m_bStrict, m_bExceptions, m_bCorner;
    };
    for (const TForm& form : {TForm{"SH_KEEPKINGONTHEEDGE", false, false, false},
                              {"SH_KEEPKINGONTHEEDGE(incl.corner)", false, false, true},
                              {"SH_KEEPKINGONTHEEDGE(STRICT)", true, false, false},
                              {"SH_KEEPKINGONTHEEDGE(almost_strict,incl.corner)", true, true, true},
                              {"SH_DONTLETKINGMOVE", true, false, false},
                              {"sh_dontletkingmove(EXCPTNS)", true, true, false},
                              {"SH_DONTLETKINGMOVE(incl.corner)", true, false, true}}) {
        const TReadHeuristics read = ReadHeuristicsText(form.m_text);
        EXPECT_EQ(read.m_nHeuristics, SH_KEEPKINGONTHEEDGE) << form.m_text;
        EXPECT_EQ(read.m_parameters.m_bDontLetKingMove, form.m_bStrict) << form.m_text;
        EXPECT_EQ(read.m_parameters.m_bAllowExceptions, form.m_bExceptions) << form.m_text;
        EXPECT_EQ(read.m_parameters.m_bEdgeInclCornerSquares, form.m_bCorner) << form.m_text;
    }
}

TEST(HeuristicTextReader, RelaxationOfTheEdges) {
    const THeuristicParameters p = ReadHeuristicsText("SH_KEEPKINGWITHINEXTEDGE(C2f,A,D3,M5,strict)").m_parameters;
    EXPECT_EQ(p.m_nRelaxCaptures, 2);
    EXPECT_FALSE(p.m_bRelaxCapturesInclPawns);
    EXPECT_TRUE(p.m_bRelaxOnAdvancedPawn);
    EXPECT_EQ(p.m_shDeferMoves, 3);
    EXPECT_EQ(p.m_shDeferMaxMoves, 5);
    EXPECT_TRUE(p.m_bExtEdgeStrict);
    EXPECT_TRUE(ReadHeuristicsText("SH_DONTLETKINGMOVE(C1)").m_parameters.m_bRelaxCapturesInclPawns);
    EXPECT_TRUE(ReadHeuristicsText("SH_DONTLETKINGMOVE, SH_KEEPKINGWITHINEXTEDGE(A)").m_parameters.m_bRelaxExtEdgeOnly);
    EXPECT_EQ(Refusal("SH_DONTLETKINGMOVE(C1), SH_KEEPKINGWITHINEXTEDGE(A)"),
              "Heuristics, character 25: the two edge heuristics tell different relaxations");
}

TEST(HeuristicTextReader, DepthOfForcedMateIsWhereRelaxationStarts) {
    const THeuristicParameters p = ReadHeuristicsText("SH_FINDFORCEDMATE(#1+-Preliminary-Custom)").m_parameters;
    EXPECT_EQ(p.m_nFfmDepth, 4);
    EXPECT_EQ(p.m_nFfmStartDepth, 4);
    EXPECT_TRUE(p.m_bFfmPreliminary);
    EXPECT_TRUE(p.m_bFfmCycleTwice);
    EXPECT_EQ(ReadHeuristicsText("SH_FINDFORCEDMATE(checkonly)").m_parameters.m_nFfmDepth, 2);
}

TEST(HeuristicTextReader, QuickModeAndForbiddenDynamicApplication) {
    const TReadHeuristics read = ReadHeuristicsText("SH_SEASNAKE(D5),  QuickMode (CannotApplyDLFUDynamically)");
    EXPECT_EQ(read.m_nHeuristics, SH_SEASNAKE);
    EXPECT_TRUE(read.m_bQuickMode);
    EXPECT_FALSE(read.m_parameters.m_bApplyDlfuDynamically);
    EXPECT_EQ(read.m_parameters.m_nSeaSnakeApproach, kD5);
    EXPECT_FALSE(ReadHeuristicsText(" (CannotApplyDLFUDynamically)").m_parameters.m_bApplyDlfuDynamically);
}

TEST(HeuristicTextReader, FaultsNameThePlace) {
    EXPECT_EQ(Refusal(""), "Heuristics, character 1: a heuristic is missing");
    EXPECT_EQ(Refusal("SH_SEASNAKE,"), "Heuristics, character 13: a heuristic is missing");
    EXPECT_EQ(Refusal("SH_SEASNAKE, SH_FOO"), "Heuristics, character 14: unknown heuristic \"SH_FOO\"");
    EXPECT_EQ(Refusal("..."), "Heuristics, character 1: unknown heuristic \"...\"");
    EXPECT_EQ(Refusal("none, SH_SEASNAKE"), "Heuristics, character 1: unknown heuristic \"none\"");
    EXPECT_EQ(Refusal("SH_SEASNAKE, SH_SEASNAKE"), "Heuristics, character 14: SH_SEASNAKE told twice");
    EXPECT_EQ(Refusal("SH_KEEPKINGONTHEEDGE, SH_DONTLETKINGMOVE"),
              "Heuristics, character 23: SH_KEEPKINGONTHEEDGE told twice");
    EXPECT_EQ(Refusal("SH_KEYLINE(A"), "Heuristics, character 11: bracket without its end");
    EXPECT_EQ(Refusal("SH_KEYLINE(J)"), "Heuristics, character 12: no file letter: \"J\"");
    EXPECT_EQ(Refusal("SH_KEYLINE()"), "Heuristics, character 12: a parameter is missing");
    EXPECT_EQ(Refusal("SH_KEYLINE(A,B)"), "Heuristics, character 14: one parameter too many: \"B\"");
    EXPECT_EQ(Refusal("SH_CAPTUREKNIGHT(A)"), "Heuristics, character 18: SH_CAPTUREKNIGHT takes no parameter");
    EXPECT_EQ(Refusal("SH_KEYDIAGONAL(A1-B3)"), "Heuristics, character 16: no diagonal: \"A1-B3\"");
    EXPECT_EQ(Refusal("SH_KEYDIAGONAL(A1-J9)"), "Heuristics, character 19: no square: \"J9\"");
    EXPECT_EQ(Refusal("SH_KEYSQUARE(A)"), "Heuristics, character 14: no square: \"A\"");
    EXPECT_EQ(Refusal("SH_FINDFORCEDMATE(#6)"), "Heuristics, character 19: unknown parameter \"#6\"");
    EXPECT_EQ(Refusal("SH_DONTLOSEANYFIGURES(all)"), "Heuristics, character 23: unknown parameter \"all\"");
    EXPECT_EQ(Refusal("SH_DONTLETFIGUREUNBLOCK(A1,A1)"), "Heuristics, character 28: square told twice: \"A1\"");
    EXPECT_EQ(Refusal("SH_DONTLETFIGUREUNBLOCK(A1,B1,C1,D1,E1,F1,G1,H1,A2)"),
              "Heuristics, character 49: more than 8 squares");
    EXPECT_EQ(Refusal("SH_KEEPKINGWITHINEXTEDGE(C0)"), "Heuristics, character 26: unknown parameter \"C0\"");
    EXPECT_EQ(Refusal("SH_KEEPKINGWITHINEXTEDGE(C256)"), "Heuristics, character 26: unknown parameter \"C256\"");
    EXPECT_EQ(Refusal("SH_\x01"), "Heuristics, character 1: unknown heuristic \"SH_\\x01\"");
}

TEST(HeuristicTextReader, DistanceFromTheCorner) {
    EXPECT_EQ(ReadHeuristicsText("SH_KEEPKINGNEARCORNER(5s)").m_parameters.m_nKingNearCorner, 5);
    EXPECT_EQ(ReadHeuristicsText("SH_KEEPKINGNEARCORNER(1M)").m_parameters.m_nKingNearCorner, -1);
    for (const char* bad : {"6S", "0S", "3M", "0M", "3", "S", "-1S"})
        EXPECT_EQ(Refusal("SH_KEEPKINGNEARCORNER(" + std::string(bad) + ")"),
                  "Heuristics, character 23: no distance from the corner (1S to 5S, 1M, 2M): \"" + std::string(bad) +
                      "\"");
}

// --- Storing for a board
// -----------------------------------------------------------------------------------------------

class StoreReadHeuristics : public HeuristicSetFixture {
  protected:
    std::string Stored(std::string_view text) {
        try {
            quillon::StoreReadHeuristics(ReadHeuristicsText(text), m_position, m_p, m_analysis);
        } catch (const ChessException& error) {
            return error.what();
        }
        return "stored";
    }
    TChessboard m_position = ChessboardFromFEN("k7/1n1p4/8/8/8/8/B7/K6R");
};

TEST_F(StoreReadHeuristics, WatchedFiguresMustBeBlackFigures) {
    EXPECT_EQ(Stored("SH_DONTLETFIGUREUNBLOCK(B7,D7)"), "stored");
    EXPECT_EQ(m_p.m_nBlockedFigures, 2);
    EXPECT_TRUE(m_p.m_bBlockedPawns);
    EXPECT_EQ(m_p.m_BlockedFigures, m_p.m_BlockedFiguresNow);
    for (const char* square : {"A8", "A2", "C3"})
        EXPECT_EQ(Stored("SH_DONTLETFIGUREUNBLOCK(" + std::string(square) + ")"),
                  "Heuristics: SH_DONTLETFIGUREUNBLOCK needs a black figure on " + std::string(square));
    EXPECT_EQ(m_p.m_nBlockedFigures, 2) << "a refused set leaves what was there";
    EXPECT_EQ(Stored("SH_DONTLETFIGUREUNBLOCK(EFF,B7)"), "stored");
    EXPECT_FALSE(m_p.m_bBlockedPawns);
    EXPECT_TRUE(m_p.m_bBlockedFiguresEff);
}

TEST_F(StoreReadHeuristics, KeyFigureNeedsAPinnedOne) {
    m_position = ChessboardFromFEN("k7/8/2n5/8/8/8/8/K6B");
    EXPECT_EQ(Stored("SH_KEYWHITEFIGURE(H1)"), "stored");
    EXPECT_EQ(m_p.m_nPinnedFigure, SquareAt(2, 5));
    EXPECT_FALSE(m_p.m_bKeyFigureIsRook);
    EXPECT_EQ(Stored("SH_KEYWHITEFIGURE(A1)"),
              "Heuristics: SH_KEYWHITEFIGURE needs a white queen, rook or bishop on A1");
    m_position = ChessboardFromFEN("k7/8/2p5/8/8/8/8/K6B");
    EXPECT_EQ(Stored("SH_KEYWHITEFIGURE(H1)"), "Heuristics: the key white figure on H1 pins no black figure");
}

TEST_F(StoreReadHeuristics, MainDiagonalNeedsABlackFigure) {
    EXPECT_EQ(Stored("SH_DONTLEAVEMAINDIAGONAL(B7)"), "stored");
    EXPECT_EQ(m_p.m_nBlackFigureOnMainDiagonal, SquareAt(1, 6));
    EXPECT_EQ(Stored("SH_DONTLEAVEMAINDIAGONAL(D7)"),
              "Heuristics: SH_DONTLEAVEMAINDIAGONAL needs a black figure of a main diagonal on D7");
}

TEST_F(StoreReadHeuristics, PlanOfPassesStays) {
    m_p.m_bLetRelaxHeuristics = m_p.m_bRunPass2 = false;
    m_p.m_bHeuristicsFallback = true;
    m_analysis.m_bSafeMode = true;
    EXPECT_EQ(Stored("SH_3MOVESTOMATE"), "stored");
    EXPECT_FALSE(m_p.m_bLetRelaxHeuristics);
    EXPECT_FALSE(m_p.m_bRunPass2);
    EXPECT_TRUE(m_p.m_bHeuristicsFallback);
    EXPECT_TRUE(m_analysis.m_bSafeMode);
    EXPECT_EQ(Stored("SH_3MOVESTOMATE, QuickMode"), "stored");
    EXPECT_TRUE(m_analysis.m_bSafeMode);
}

TEST_F(StoreReadHeuristics, ZugzwangWithoutMovesIsTheRootToReturnTo) {
    EXPECT_EQ(Stored("SH_ZUGZWANG"), "stored");
    ASSERT_EQ(m_analysis.m_zugzwangPositions.size(), 1u);
    EXPECT_EQ(m_analysis.m_zugzwangPositions.at(""), m_position.m_board);
    EXPECT_EQ(Stored("SH_3MOVESTOMATE"), "stored");
    EXPECT_TRUE(m_analysis.m_zugzwangPositions.empty());
}

TEST_F(StoreReadHeuristics, MarkerOfALineIsNoStartingSet) {
    EXPECT_EQ(Stored("SH_ONECOLORPLAYPOSSIBLE(WhiteSquaresOnly)"),
              "Heuristics: SH_ONECOLORPLAYPOSSIBLE takes no parameter in a set to start with");
    EXPECT_EQ(Stored("SH_ONECOLORPLAYPOSSIBLE"), "stored");
}

// --- Text, set, text
// ---------------------------------------------------------------------------------------------------

class HeuristicRoundTrip : public HeuristicSetFixture {
  protected:
    int Below(int bound) { return static_cast<int>(m_rng() % static_cast<unsigned>(bound)); }
    bool Coin() { return Below(2) != 0; }
    TSquare AnySquare() { return static_cast<TSquare>(Below(kSquares)); }

    void DrawParameters() {
        m_p.m_bDontLetKingMove = Coin();
        m_p.m_bAllowExceptions = Coin();
        m_p.m_bExtEdgeStrict = Coin();
        m_p.m_bAssertBKSStrict = Coin();
        m_p.m_nKingNearCorner = static_cast<std::int8_t>(Coin() ? 1 + Below(5) : -1 - Below(2));
        m_p.m_nRelaxCaptures = static_cast<std::uint8_t>(Coin() ? 0 : Below(256));
        m_p.m_bRelaxCapturesInclPawns = Coin();
        m_p.m_bRelaxExtEdgeOnly = Coin();
        m_p.m_bRelaxOnAdvancedPawn = Coin();
        m_p.m_shDeferMoves = static_cast<std::uint16_t>(Coin() ? 0 : Below(65536));
        m_p.m_shDeferMaxMoves = static_cast<std::uint16_t>(Below(65536));
        m_p.m_bEdgeInclCornerSquares = Coin();
        m_p.m_nSaveFiguresMode = static_cast<std::uint8_t>(Below(3));
        m_p.m_nKeySquare = AnySquare();
        m_p.m_nKeyWhiteFigure = AnySquare();
        m_p.m_nBlackFigureOnMainDiagonal = Coin() ? AnySquare() : kNoSquare;
        m_p.m_nBlockedFigures = static_cast<std::int8_t>(Below(9));
        const int first = Below(8);
        for (int i = 0; i < 8; ++i)
            m_p.m_BlockedFigures[static_cast<std::size_t>(i)] = static_cast<TSquare>(8 * i + (first + 3 * i) % 8);
        m_p.m_bBlockedFiguresEff = Coin();
        m_p.m_bApplyDlfuDynamically = Coin();
        m_p.m_nSeaSnakeApproach = AnySquare();
        m_p.m_nSeaSnakeTurnBack = Coin() ? AnySquare() : kNoSquare;
        m_p.m_nFfmDepth = static_cast<std::uint8_t>(2 + Below(8));
        m_p.m_bFfmCycleTwice = Coin();
        m_p.m_bFfmPreliminary = Coin();
        m_p.m_bDontLetPromotedStrict = Coin();
        m_analysis.m_nKeyLine = static_cast<std::uint8_t>(Below(8));
        const int file = Below(7), length = 1 + Below(7 - file);
        m_analysis.m_wKeyDiagonal = static_cast<std::uint16_t>(SquareAt(file + length, length) << 8 | file);
        m_board.m_bySideState = static_cast<std::uint8_t>(Below(4));
    }

    std::string TextOf(const TReadHeuristics& read) {
        const auto pContext = NewSearchContext();
        static_cast<THeuristicParameters&>(*pContext) = read.m_parameters;
        TChessboard board = m_board;
        board.m_pContext = pContext.get();
        board.m_nHeuristics = read.m_nHeuristics;
        board.m_bySideState = read.m_nBishopMode;
        THeuristicAnalysisParameters analysis;
        analysis.m_nKeyLine = read.m_nKeyLine;
        analysis.m_wKeyDiagonal = read.m_wKeyDiagonal;
        analysis.m_bSafeMode = !read.m_bQuickMode;
        return HeuristicsText(board, true, analysis);
    }

    std::mt19937 m_rng{20240611};
};

TEST_F(HeuristicRoundTrip, RandomSetsComeBackAsTheyWerePrinted) {
    const auto pAgain = NewSearchContext();
    for (int i = 0; i < 400; ++i) {
        DrawParameters();
        m_board.m_nHeuristics = static_cast<std::uint32_t>(m_rng() & m_rng()) & kAllHeuristics;
        if (m_board.m_nHeuristics == 0)
            continue;
        m_analysis.m_bSafeMode = Coin();
        const std::string text = HeuristicsText(m_board, true, m_analysis);
        SCOPED_TRACE(text);
        const TReadHeuristics read = ReadHeuristicsText(text);
        ASSERT_EQ(read.m_nHeuristics, m_board.m_nHeuristics);
        ASSERT_EQ(TextOf(read), text);
    }
}

} // namespace
} // namespace quillon
