#include "heuristics/heuristics_dialog.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "heuristics/heuristic_signature.h"
#include "heuristics/heuristic_text.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kTwoExtEdges =
    "Conflict of heuristics: select only one of 'Don't let black king out of ext.edge' and "
    "'(Don't let black king) move unless back to the edge'";

class CBoxes : public INotifier {
  public:
    void Inform(std::string_view text, std::string_view title) override {
        m_texts.emplace_back(text);
        EXPECT_EQ(title, "Information");
    }
    bool AskYesNo(std::string_view, std::string_view) override { return false; }
    std::vector<std::string> m_texts;
};

class HeuristicsDialog : public ::testing::Test {
  protected:
    /// Stores the dialog; what was shown stays in m_boxes.
    bool Apply() {
        m_boxes.m_texts.clear();
        return ApplyHeuristicsDialog(Board(), m_d, m_boxes);
    }
    /// Stores a dialog that must fail with one message.
    std::string Fault() {
        EXPECT_FALSE(Apply());
        EXPECT_EQ(m_boxes.m_texts.size(), 1u);
        return m_boxes.m_texts.empty() ? "" : m_boxes.m_texts.back();
    }
    TChessboard& Board() { return m_position.Root(); }
    TSearchContext& P() { return m_position.Context(); }
    std::uint32_t Mask() { return Board().m_nHeuristics; }

    // Black: Ka8, Nc6 (on the long diagonal of the Bh1), Rb8, pawn d7; White: Ka1, Bh1, Qh8.
    CSearchedPosition m_position{"kr5Q/3p4/2n5/8/8/8/8/K6B", 21, 1};
    CBoxes m_boxes;
    THeuristicsDialog m_d;
};

TEST_F(HeuristicsDialog, EmptyDialogMeansThePassWithoutHeuristics) {
    Board().m_nHeuristics = SH_3MOVESTOMATE | SH_KEYSQUARE;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), 0u);
    EXPECT_EQ(Board().m_nHeurParams, 0u);
    EXPECT_EQ(Board().m_byPass, 2);
    EXPECT_TRUE(m_boxes.m_texts.empty());
}

TEST_F(HeuristicsDialog, EachPlainBoxSetsItsBit) {
    const std::vector<std::pair<bool THeuristicsDialog::*, std::uint32_t>> boxes{
        {&THeuristicsDialog::m_bDontLetKingMove, SH_KEEPKINGONTHEEDGE},
        {&THeuristicsDialog::m_bOutOfEdge, SH_KEEPKINGONTHEEDGE},
        {&THeuristicsDialog::m_bOutOfExtEdge, SH_KEEPKINGWITHINEXTEDGE},
        {&THeuristicsDialog::m_bMoveUnlessOnEdge, SH_KEEPKINGWITHINEXTEDGE},
        {&THeuristicsDialog::m_bAssertSurrounded, SH_ASSERTBLACKKINGSURROUNDED},
        {&THeuristicsDialog::m_bAssertSurroundedStrict, SH_ASSERTBLACKKINGSURROUNDED},
        {&THeuristicsDialog::m_bSweepingWhiteRook, SH_SWEEPINGWHITEROOK},
        {&THeuristicsDialog::m_bDontRecedeBlackKing, SH_DONTRECEDEBLACKKING},
        {&THeuristicsDialog::m_bAreKingsNear, SH_AREKINGSNEAR},
        {&THeuristicsDialog::m_bSaveQueenRook, SH_SAVEQUEENROOK},
        {&THeuristicsDialog::m_bDontLoseFigures, SH_DONTLOSEANYFIGURES},
        {&THeuristicsDialog::m_bInclPawns, SH_DONTLOSEANYFIGURES},
        {&THeuristicsDialog::m_bInclPromotablePawns, SH_DONTLOSEANYFIGURES},
        {&THeuristicsDialog::m_bDontLeaveMainDiagonal, SH_DONTLEAVEMAINDIAGONAL},
        {&THeuristicsDialog::m_bQueenCheckTwice, SH_DONTLETBLACKQUEENCHECKTWICE},
        {&THeuristicsDialog::m_bDontLetFigureUnblock, SH_DONTLETFIGUREUNBLOCK},
        {&THeuristicsDialog::m_bReduceToGlobalRegister, SH_REDUCTIONTOGLOBREGPOS},
        {&THeuristicsDialog::m_b3MovesToMate, SH_3MOVESTOMATE},
        {&THeuristicsDialog::m_bSingleQueenMate, SH_SINGLEQUEENMATE},
        {&THeuristicsDialog::m_bSkipWorstWhiteMoves, SH_SKIPWORSTWHITEMOVES},
        {&THeuristicsDialog::m_bOneColorPlay, SH_ONECOLORPLAYPOSSIBLE},
        {&THeuristicsDialog::m_bCaptureKnight, SH_CAPTUREKNIGHT},
        {&THeuristicsDialog::m_bZugzwang, SH_ZUGZWANG},
        {&THeuristicsDialog::m_bFindForcedMate, SH_FINDFORCEDMATE},
    };
    for (const auto& [box, bit] : boxes) {
        m_d = THeuristicsDialog{};
        m_d.*box = true;
        EXPECT_TRUE(Apply()) << bit;
        EXPECT_EQ(Mask(), bit);
        EXPECT_EQ(Board().m_nHeurParams, ComputeHeurParams(Board()));
    }
}

TEST_F(HeuristicsDialog, BothFormsOfTheExtendedEdgeAreToldButDoNotStop) {
    m_d.m_bOutOfExtEdge = m_d.m_bMoveUnlessOnEdge = true;
    EXPECT_TRUE(Apply());
    ASSERT_EQ(m_boxes.m_texts.size(), 1u);
    EXPECT_EQ(m_boxes.m_texts[0], kTwoExtEdges);
    EXPECT_EQ(Mask(), SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_TRUE(P().m_bExtEdgeStrict);
}

TEST_F(HeuristicsDialog, FormsOfTheEdge) {
    m_d.m_bDontLetKingMove = m_d.m_bOutOfEdge = true;
    EXPECT_EQ(Fault(),
              "Conflict of heuristics (\"Don't let black king move\" and \"Don't let black king out of the edge "
              "and/or ext.edge\") ");
    m_d.m_bDontLetKingMove = false;
    m_d.m_bAllowExceptions = true;
    EXPECT_EQ(Fault(),
              "Heuristics 'Don't let black king move' is off, while 'allow exc' is on.\nIt requires correction.");
    m_d.m_bAllowExceptions = false;
    m_d.m_bInclCornerSquares = true;
    EXPECT_TRUE(Apply());
    EXPECT_FALSE(P().m_bDontLetKingMove);
    EXPECT_TRUE(P().m_bEdgeInclCornerSquares);
    m_d.m_bOutOfEdge = false;
    m_d.m_bDontLetKingMove = m_d.m_bAllowExceptions = true;
    EXPECT_TRUE(Apply());
    EXPECT_TRUE(P().m_bDontLetKingMove);
    EXPECT_TRUE(P().m_bAllowExceptions);
}

TEST_F(HeuristicsDialog, DistanceFromTheCorner) {
    constexpr const char* kFault =
        "Invalid maximum distance from corner in the parameter of heuristics 'Keep king near corner'";
    m_d.m_bNearCorner = true;
    for (const char* bad : {"", "0", "6", "-1", "x"}) {
        m_d.m_nearCornerDistance = bad;
        EXPECT_EQ(Fault(), kFault) << bad;
    }
    m_d.m_nearCornerDistance = "5";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nKingNearCorner, 5);
    m_d.m_bNearCornerMoves = true;
    EXPECT_EQ(Fault(), kFault);
    m_d.m_nearCornerDistance = "2";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nKingNearCorner, -2);
    m_d.m_bNearCorner = false;
    m_d.m_nearCornerDistance = "99";
    EXPECT_TRUE(Apply()) << "the field is not read without its box";
}

TEST_F(HeuristicsDialog, CountsOfTheRelaxation) {
    for (const char* bad : {"", "x", "00", "-1", "256"}) {
        m_d.m_relaxCaptures = bad;
        EXPECT_EQ(Fault(), "Invalid number of figures to capture for relaxation of edge heuristics") << bad;
    }
    m_d.m_relaxCaptures = "2";
    for (const char* bad : {"", "x", "00", "-1", "65536"}) {
        m_d.m_deferMoves = bad;
        EXPECT_EQ(Fault(), "Invalid number of moves to defer") << bad;
    }
    m_d.m_deferMoves = "3";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nRelaxCaptures, 2);
    EXPECT_EQ(P().m_shDeferMoves, 3);
}

TEST_F(HeuristicsDialog, DeferNeedsAnEventToWaitFor) {
    m_d.m_deferMoves = "1";
    EXPECT_EQ(Fault(), "Defer check is meaningful only when 'on advanced pawn' or 'on figure captured' selected.");
    m_d.m_bRelaxOnAdvancedPawn = true;
    EXPECT_TRUE(Apply());
    m_d.m_bRelaxOnAdvancedPawn = false;
    m_d.m_relaxCaptures = "1";
    EXPECT_TRUE(Apply());
}

TEST_F(HeuristicsDialog, OptionsOfTheSavedFigures) {
    m_d.m_bInclPawns = m_d.m_bInclPromotablePawns = true;
    EXPECT_EQ(Fault(), "Only one of additional options of Don't lose any figures (incl. pawns + incl.promotable pawns) "
                       "can be selected.");
    m_d.m_bInclPawns = false;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nSaveFiguresMode, 2);
    EXPECT_EQ(Mask(), SH_DONTLOSEANYFIGURES) << "an option alone sets the heuristic";
    m_d.m_bInclPawns = true;
    m_d.m_bInclPromotablePawns = false;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nSaveFiguresMode, 1);
    m_d.m_bInclPawns = false;
    m_d.m_bDontLoseFigures = true;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nSaveFiguresMode, 0);
}

TEST_F(HeuristicsDialog, FigureOfTheMainDiagonal) {
    m_d.m_bDontLeaveMainDiagonal = true;
    for (const char* bad : {"b8", "d7", "a1", "e5"}) { // off the diagonal (two), white, empty
        m_d.m_mainDiagonalFigure = bad;
        EXPECT_EQ(Fault(), "Improper field (Black figure not let leave main diagonal)") << bad;
    }
    m_d.m_mainDiagonalFigure = "Nc6";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nBlackFigureOnMainDiagonal, SquareAt(2, 5));
    m_d.m_mainDiagonalFigure = "";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nBlackFigureOnMainDiagonal, kNoSquare);
}

TEST_F(HeuristicsDialog, SquaresOfTheFields) {
    m_d.m_bDontLeaveMainDiagonal = true;
    for (const char* bad : {"c", "c9", "j1", "xxc6", " c6 "}) {
        m_d.m_mainDiagonalFigure = bad;
        EXPECT_EQ(Fault(), "Invalid piece (Black figure not let leave main diagonal)") << bad;
    }
    for (const char* good : {"c6", "C6", "nC6", "?c6"}) {
        m_d.m_mainDiagonalFigure = good;
        EXPECT_TRUE(Apply()) << good;
    }
}

TEST_F(HeuristicsDialog, RadioButtonsOfPromotedFigures) {
    m_d.m_bDontLetPromoted = true;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), 0u) << "neither button";
    m_d.m_promoted = EPromotedRadio::Queen;
    m_d.m_bDontLetPromotedStrict = true;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), SH_DONTLETPROMOTEDQUEENMOVE);
    EXPECT_TRUE(P().m_bDontLetPromotedStrict);
    m_d.m_promoted = EPromotedRadio::AnyFigure;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), SH_DONTLETPROMOTEDFIGUREMOVE);
    m_d.m_bDontLetPromoted = false;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), 0u);
}

TEST_F(HeuristicsDialog, BlockedFieldsNameTheirNumber) {
    m_d.m_bDontLetFigureUnblock = true;
    for (const char* bad : {"a1", "a8", "e4"}) {
        m_d.m_blockedFigures[4] = bad;
        EXPECT_EQ(Fault(), "Improper field: Figure not let unblock #5") << bad;
    }
    m_d.m_blockedFigures[4] = "i9";
    EXPECT_EQ(Fault(), "Invalid piece (Figure not let unblock #5)");
}

TEST_F(HeuristicsDialog, BlockedFiguresAreWatched) {
    m_d.m_bDontLetFigureUnblock = true;
    m_d.m_blockedFigures[1] = "b8";
    m_d.m_blockedFigures[7] = "Nc6";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nBlockedFigures, 2);
    EXPECT_EQ(P().m_BlockedFigures[0], SquareAt(1, 7));
    EXPECT_EQ(P().m_BlockedFigures[1], SquareAt(2, 5));
    EXPECT_TRUE(P().m_bBlockedFiguresByHand);
    EXPECT_FALSE(P().m_bBlockedPawns);
    EXPECT_EQ(Board().m_blockedFigures[1], SquareAt(2, 5));
    m_d.m_blockedFigures[0] = "d7";
    m_d.m_bApplyDynamically = false;
    EXPECT_TRUE(Apply());
    EXPECT_TRUE(P().m_bBlockedPawns);
    EXPECT_FALSE(P().m_bApplyDlfuDynamically);
}

TEST_F(HeuristicsDialog, KeyFigureMustHoldABlackFigure) {
    m_d.m_bKeyWhiteFigure = true;
    for (const char* bad : {"", "a1", "c6", "e4"}) {
        m_d.m_keyWhiteFigure = bad;
        EXPECT_EQ(Fault(), "Invalid key white figure") << bad;
    }
    m_d.m_keyWhiteFigure = "Bh1";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nKeyWhiteFigure, kH1);
    EXPECT_EQ(P().m_nPinnedFigure, SquareAt(2, 5));
    m_d.m_keyWhiteFigure = "h8"; // on the rank only a rook, which may stay on it
    EXPECT_EQ(Fault(), "Invalid key white figure (pinned piece not found)");
}

TEST_F(HeuristicsDialog, KeyFigureMayHoldAFigureBehindTheKing) {
    CSearchedPosition behind("7n/8/8/4k3/3p4/8/8/B3K3", 21, 1);
    m_d.m_bKeyWhiteFigure = true;
    m_d.m_keyWhiteFigure = "a1";
    EXPECT_TRUE(ApplyHeuristicsDialog(behind.Root(), m_d, m_boxes));
    EXPECT_EQ(behind.Context().m_nPinnedFigure, kH8);
    m_d.m_keyWhiteFigure = "e1";
    EXPECT_FALSE(ApplyHeuristicsDialog(behind.Root(), m_d, m_boxes));
    CSearchedPosition offLine("7n/8/8/4k3/3p4/8/B7/4K3", 21, 1);
    m_d.m_keyWhiteFigure = "a2";
    EXPECT_FALSE(ApplyHeuristicsDialog(offLine.Root(), m_d, m_boxes));
    EXPECT_EQ(m_boxes.m_texts.back(), "Invalid key white figure (pinned piece not found)");
}

TEST_F(HeuristicsDialog, KeyLineIsOneLetter) {
    m_d.m_bKeyLine = true;
    for (const char* bad : {"", "i", "1", "ab"}) {
        m_d.m_keyLine = bad;
        EXPECT_EQ(Fault(), "Invalid field Key line") << bad;
    }
    m_d.m_keyLine = "h";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(m_position.Analysis().m_nKeyLine, 7);
}

TEST_F(HeuristicsDialog, KeyDiagonalIsTwoSquares) {
    m_d.m_bKeyDiagonal = true;
    m_d.m_keyDiagonal1 = "a1";
    for (const char* bad : {"", "a2", "b3", "a1"}) {
        m_d.m_keyDiagonal2 = bad;
        EXPECT_EQ(Fault(), "Invalid field Key diagonal") << bad;
    }
    m_d.m_keyDiagonal2 = "x";
    EXPECT_EQ(Fault(), "Invalid piece (Key diagonal - field 2)");
    m_d.m_keyDiagonal2 = "h8";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(m_position.Analysis().m_wKeyDiagonal, 63 * 256 + 0);
    m_d.m_keyDiagonal1 = "9";
    EXPECT_EQ(Fault(), "Invalid piece (Key diagonal - field 1)");
}

TEST_F(HeuristicsDialog, SeaSnakeNeedsItsApproachSquare) {
    m_d.m_bSeaSnake = true;
    EXPECT_EQ(Fault(), "Invalid piece (Sea snake - approach square)");
    m_d.m_seaSnakeApproach = "d5";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), SH_SEASNAKE);
    EXPECT_EQ(P().m_nSeaSnakeTurnBack, kNoSquare);
    m_d.m_seaSnakeTurnBack = "z";
    EXPECT_EQ(Fault(), "Invalid piece (Sea snake - turn back square)");
    m_d.m_seaSnakeTurnBack = "e6";
    m_d.m_seaSnakePendulum1 = "z";
    EXPECT_EQ(Fault(), "Invalid piece (Sea snake - pendulum square 1 (approachable))");
    m_d.m_seaSnakePendulum1 = "";
    m_d.m_seaSnakePendulum2 = "z";
    EXPECT_EQ(Fault(), "Invalid piece (Sea snake - pendulum square 2)");
    m_d.m_seaSnakePendulum2 = "a1";
    m_d.m_seaSnakeAfter = "Qh8-h7 a1-a2";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(m_position.Analysis().m_seaSnakeAfterMoves.size(), 2u);
    m_d.m_seaSnakeAfter = "Qh8-";
    EXPECT_EQ(Fault(), "Invalid move for SH_SEASNAKE");
    m_d.m_seaSnakeAfter = "";
    m_d.m_bFindForcedMate = true;
    EXPECT_EQ(Fault(), "FindForcedMate cannot be used together with SeaSnake.");
}

TEST_F(HeuristicsDialog, ZugzwangPositionLiesBehindTheMoves) {
    auto& positions = m_position.Analysis().m_zugzwangPositions;
    m_d.m_bZugzwang = true;
    m_d.m_zugzwangAfter = "Ka1-a2 d7-d6 Ka2-a1";
    EXPECT_TRUE(Apply());
    ASSERT_EQ(positions.size(), 1u);
    EXPECT_EQ(positions.at("Ka1-a2 d7-d6 Ka2-a1")[SquareAt(3, 5)], kBlackPawn);
    positions.begin()->second[0] = kNoFigure;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(positions.begin()->second[0], kNoFigure) << "the same text is not played again";
    for (const char* bad : {"Ka1-a2 Ka2-a1", "Ka1-c3", "rubbish"}) {
        m_d.m_zugzwangAfter = bad;
        EXPECT_EQ(Fault(), "Invalid move for SH_ZUGZWANG") << bad;
    }
}

TEST_F(HeuristicsDialog, RelaxationsOfForcedMate) {
    m_d.m_bFindForcedMate = true;
    for (const char* bad : {"", "x", "1x", "-1"}) {
        m_d.m_ffmRelaxations = bad;
        EXPECT_EQ(Fault(), "Invalid value in field with number of heuristics relaxations for FFM (FindForcedMate)")
            << bad;
    }
    m_d.m_nFfmDepth = 9;
    m_d.m_ffmRelaxations = "1";
    EXPECT_EQ(Fault(), "Number of heuristics relaxations for FFM is too large (max = 0 => #5)");
    m_d.m_nFfmDepth = 3;
    m_d.m_ffmRelaxations = "7";
    EXPECT_EQ(Fault(), "Number of heuristics relaxations for FFM is too large (max = 6 => #5)");
    m_d.m_ffmRelaxations = "6";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(P().m_nFfmRelaxations, 6);
    EXPECT_EQ(P().m_nFfmDepth, 3);
    EXPECT_EQ(P().m_nFfmStartDepth, 3);
}

TEST_F(HeuristicsDialog, RelaxationSwitchedOffIsOnlyNoted) {
    m_d.m_bFindForcedMate = true;
    m_d.m_ffmRelaxations = "2";
    m_d.m_bLetRelaxHeuristics = false;
    EXPECT_TRUE(Apply());
    ASSERT_EQ(m_boxes.m_texts.size(), 1u);
    EXPECT_EQ(m_boxes.m_texts[0],
              "Note: relaxation of heuristics is off, so setting for FFM (2 time(s)) will be ignored");
    m_d.m_ffmRelaxations = "0";
    EXPECT_TRUE(Apply());
    EXPECT_TRUE(m_boxes.m_texts.empty());
}

TEST_F(HeuristicsDialog, ForcedMateWithOtherHeuristics) {
    m_d.m_bFindForcedMate = true;
    for (const auto& [button, with] : {std::pair{EForcedMateWithOther::No, 0},
                                       {EForcedMateWithOther::Yes, 1},
                                       {EForcedMateWithOther::Partially, -1},
                                       {EForcedMateWithOther::PartiallyAfterInitialPass, -1}}) {
        m_d.m_ffmWithOther = button;
        EXPECT_TRUE(Apply());
        EXPECT_EQ(P().m_nFfmWithOther, with);
        EXPECT_EQ(P().m_bFfmPreliminary, button == EForcedMateWithOther::PartiallyAfterInitialPass);
    }
}

TEST_F(HeuristicsDialog, DepthOfTheShortMateSearch) {
    for (const char* bad : {"0", "17", "x", "-3"}) {
        m_d.m_quickerMateDepth = bad;
        EXPECT_EQ(Fault(), "Value of depth for quicker mate is out of range.") << bad;
    }
    m_d.m_quickerMateDepth = "16";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(m_position.Analysis().m_shLookForQuickerMateDepth, 31);
    m_d.m_quickerMateDepth = "";
    EXPECT_TRUE(Apply());
    EXPECT_EQ(m_position.Analysis().m_shLookForQuickerMateDepth, 31) << "an empty field leaves it";
}

TEST_F(HeuristicsDialog, FieldsBeforeAFaultStayChanged) {
    Board().m_nHeuristics = SH_FINDFORCEDMATE | SH_3MOVESTOMATE;
    m_d.m_bOutOfEdge = true;
    m_d.m_bInclPawns = m_d.m_bInclPromotablePawns = true;
    EXPECT_FALSE(Apply());
    EXPECT_EQ(Mask(), SH_KEEPKINGONTHEEDGE | SH_DONTLOSEANYFIGURES | SH_FINDFORCEDMATE)
        << "read and unchecked is off, not reached is as it was";
    m_d.m_bInclPawns = false;
    EXPECT_TRUE(Apply());
    EXPECT_EQ(Mask(), SH_KEEPKINGONTHEEDGE | SH_DONTLOSEANYFIGURES);
}

TEST_F(HeuristicsDialog, OpensOnTheSetAndStoresItAgain) {
    m_d.m_bDontLetKingMove = m_d.m_bAllowExceptions = true;
    m_d.m_bMoveUnlessOnEdge = m_d.m_bNearCorner = m_d.m_bNearCornerMoves = true;
    m_d.m_nearCornerDistance = "2";
    m_d.m_relaxCaptures = "3";
    m_d.m_deferMoves = "4";
    m_d.m_bInclPawns = m_d.m_bDontLetFigureUnblock = m_d.m_bKeyWhiteFigure = m_d.m_bKeyLine = m_d.m_bKeyDiagonal = true;
    m_d.m_blockedFigures[0] = "B8";
    m_d.m_keyWhiteFigure = "H1";
    m_d.m_keyLine = "c";
    m_d.m_keyDiagonal1 = "a1";
    m_d.m_keyDiagonal2 = "h8";
    m_d.m_bDontLetPromoted = true;
    m_d.m_promoted = EPromotedRadio::AnyFigure;
    m_d.m_bFindForcedMate = true;
    m_d.m_nFfmDepth = 4;
    m_d.m_ffmRelaxations = "2";
    m_d.m_quickerMateDepth = "5";
    ASSERT_TRUE(Apply());
    const auto text = HeuristicsText(Board(), true, m_position.Analysis());
    const std::uint32_t signature = Board().m_nHeurParams;
    m_d = ReadHeuristicsDialog(Board());
    EXPECT_EQ(m_d.m_keyLine, "C");
    EXPECT_EQ(m_d.m_quickerMateDepth, "5");
    EXPECT_EQ(m_d.m_nearCornerDistance, "2");
    ASSERT_TRUE(Apply());
    EXPECT_EQ(HeuristicsText(Board(), true, m_position.Analysis()), text);
    EXPECT_EQ(Board().m_nHeurParams, signature);
}

TEST_F(HeuristicsDialog, OpensWithoutForcedMateOnASeaSnake) {
    Board().m_nHeuristics = SH_SEASNAKE | SH_FINDFORCEDMATE;
    EXPECT_FALSE(ReadHeuristicsDialog(Board()).m_bFindForcedMate);
    EXPECT_TRUE(ReadHeuristicsDialog(Board()).m_bSeaSnake);
    Board().m_nHeuristics = SH_FINDFORCEDMATE;
    EXPECT_TRUE(ReadHeuristicsDialog(Board()).m_bFindForcedMate);
}

} // namespace
} // namespace quillon::test
