// Rules about white men that Black has taken.

#include <gtest/gtest.h>

#include "core/queries.h"
#include "globalregister/active_tables.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/verified_position.h"
#include "heuristics/verify_material.h"

namespace quillon::test {
namespace {

// ---- SH_SAVEQUEEN/ROOK, strict

TEST(SaveQueenRook, TheLastRookIsLostAndTheKingIsFree) {
    CMadeMove line("8/8/8/3k4/8/8/8/K3R3", 9, "Re1-e5 Kd5:e5");
    EXPECT_TRUE(line.Doubts(SH_SAVEQUEENROOK));
}

TEST(SaveQueenRook, AQueenRemains) {
    CMadeMove line("8/7Q/8/3k4/8/8/8/K3R3", 9, "Re1-e5 Kd5:e5");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
}

TEST(SaveQueenRook, TheQueenIsLostAndARookRemains) {
    CMadeMove line("8/8/8/3k4/8/8/8/K3Q2R", 9, "Qe1-e5 Kd5:e5");
    EXPECT_TRUE(line.Doubts(SH_SAVEQUEENROOK));
}

TEST(SaveQueenRook, NothingIsLostByAQuietMove) {
    CMadeMove line("8/8/8/3k4/8/8/8/K3R3", 9, "Re1-e2 Kd5-d4");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    EXPECT_EQ(line.Move().m_nPromotion & kMoveDefersEdgeCheck, 0);
}

TEST(SaveQueenRook, InANetTheCheckRunsOn) {
    CMadeMove line("k7/3N4/2K5/8/8/8/8/R7", 9, "Ra1-a7 Ka8:a7");
    ASSERT_EQ(line.Verified().FreeSquares(), 2);
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    EXPECT_NE(line.Move().m_nPromotion & kMoveDefersEdgeCheck, 0);
    EXPECT_EQ(line.After().m_wBlackState & kWhiteMajorFigureLost, 0) << "only the maker sets it";
    const std::uint32_t signature = line.After().m_nHeurParams;
    ApplyDeferredEdgeCheck(line.After());
    EXPECT_NE(line.After().m_wBlackState & kWhiteMajorFigureLost, 0);
    EXPECT_NE(line.After().m_nHeurParams, signature);
}

TEST(SaveQueenRook, WithoutAMoveToMarkTheNetIsNoExcuse) {
    CMadeMove line("k7/3N4/2K5/8/8/8/8/R7", 9, "Ra1-a7 Ka8:a7");
    line.Under(SH_SAVEQUEENROOK);
    EXPECT_EQ(VerifyHeuristics(line.After(), nullptr), kDoubtful);
}

TEST(SaveQueenRook, APromotionThatComesInANetIsAnException) {
    CMadeMove line("k7/3N3P/2K5/8/8/8/8/R7", 9, "Ra1-a7 Ka8:a7");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    EXPECT_EQ(line.Move().m_nPromotion & kMoveDefersEdgeCheck, 0);
}

TEST(SaveQueenRook, MateOnTheMoveIsAnException) {
    CMadeMove line("k7/3N4/2K5/8/8/8/Q7/7R", 9, "Qa2-a7 Ka8:a7");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    EXPECT_EQ(line.Move().m_nPromotion & kMoveDefersEdgeCheck, 0);
}

TEST(SaveQueenRook, TheRunningCheckAsksForAHeavyFigureOrAPromotion) {
    CMadeMove none("8/8/8/3k4/8/8/8/K1B5", 9, "Ka1-b1 Kd5-d4");
    none.After().m_wBlackState |= kWhiteMajorFigureLost;
    EXPECT_TRUE(none.Doubts(SH_SAVEQUEENROOK));
    CMadeMove rook("8/8/8/3k4/8/8/8/K1R5", 9, "Ka1-b1 Kd5-d4");
    rook.After().m_wBlackState |= kWhiteMajorFigureLost;
    EXPECT_FALSE(rook.Doubts(SH_SAVEQUEENROOK));
    CMadeMove pawn("8/7P/8/3k4/8/8/8/K1B5", 9, "Ka1-b1 Kd5-d4");
    pawn.After().m_wBlackState |= kWhiteMajorFigureLost;
    EXPECT_FALSE(pawn.Doubts(SH_SAVEQUEENROOK)) << "h8Q+ comes";
    CMadeMove slowPawn("8/8/7P/3k4/8/8/8/K1B5", 9, "Ka1-b1 Kd5-d4");
    slowPawn.After().m_wBlackState |= kWhiteMajorFigureLost;
    EXPECT_TRUE(slowPawn.Doubts(SH_SAVEQUEENROOK));
}

TEST(SaveQueenRook, LeavesTheMaskWhenNothingIsLeftToSave) {
    CMadeMove line("8/8/8/3k4/8/8/8/K1B5", 9, "Ka1-b1 Kd5-d4");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK | SH_KEYLINE, SH_KEYLINE));
    for (const TChessboard* p : {&line.Before(), &line.After()}) {
        EXPECT_EQ(p->m_nHeuristics, SH_KEYLINE);
        EXPECT_EQ(p->m_nHeurParams, ComputeHeurParams(*p));
    }
    EXPECT_EQ(line.Before().m_pPrevious->m_nHeuristics, SH_SAVEQUEENROOK | SH_KEYLINE) << "above, it may have work";
}

TEST(SaveQueenRook, StaysInTheMaskWhileAPawnMayPromote) {
    CMadeMove line("8/8/8/P2k4/8/8/8/K1B5", 9, "Ka1-b1 Kd5-d4");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    EXPECT_EQ(line.Before().m_nHeuristics, SH_SAVEQUEENROOK);
    CMadeMove late("8/8/8/P2k4/8/8/8/K1B5", 5, "Ka1-b1 Kd5-d4"); // two white moves left before Black's move
    EXPECT_FALSE(late.Doubts(SH_SAVEQUEENROOK));
    EXPECT_EQ(late.Before().m_nHeuristics, 0u);
}

// ---- SH_SAVEQUEEN/ROOK, plain

TEST(SaveQueenRookPlain, EveryRookCounts) {
    CMadeMove line("k7/6b1/8/8/8/8/8/4R1KR", 9, "Re1-e5 Bg7:e5");
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK)) << "strict: a rook remains";
    line.Context().m_bSaveRookQueenStrict = false;
    EXPECT_TRUE(line.Doubts(SH_SAVEQUEENROOK));
}

TEST(SaveQueenRookPlain, WhatIsTakenBackIsNotLost) {
    CMadeMove line("k7/6b1/8/8/8/3N4/8/4R1KR", 9, "Re1-e5 Bg7:e5");
    line.Context().m_bSaveRookQueenStrict = false;
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    CMadeMove last("k7/6b1/8/8/8/3N4/8/4R1K1", 9, "Re1-e5 Bg7:e5");
    last.Context().m_bSaveRookQueenStrict = false;
    EXPECT_TRUE(last.Doubts(SH_SAVEQUEENROOK)) << "nothing is left to mate with";
}

TEST(SaveQueenRookPlain, ALoneBishopCountsWhereItIsMajor) {
    CMadeMove line("8/8/8/8/4k3/8/8/K1B5", 9, "Bc1-e3 Ke4:e3");
    line.Context().m_bSaveRookQueenStrict = false;
    EXPECT_FALSE(line.Doubts(SH_SAVEQUEENROOK));
    line.Context().m_bBishopIsMajor = true;
    EXPECT_TRUE(line.Doubts(SH_SAVEQUEENROOK));
}

// ---- SH_DONTLOSEANYFIGURES

TEST(DontLoseFigures, ModeZeroCountsFiguresAgainstTheRoot) {
    CMadeMove line("8/8/8/3kB3/8/8/8/KN6", 9, "Ka1-a2 Kd5:e5");
    EXPECT_FALSE(line.Doubts(SH_DONTLOSEANYFIGURES)) << "the first loss of two";
    line.Analysis().m_rootMaterial.m_nWhiteFigures = 3;
    EXPECT_TRUE(line.Doubts(SH_DONTLOSEANYFIGURES));
}

TEST(DontLoseFigures, ModesDifferInThePawnsTheyCount) {
    struct TRow {
        const char* m_placement;
        const char* m_moves;
        bool m_bZero, m_bOne, m_bTwo;
    };
    const TRow rows[] = {{"8/8/8/8/4k3/4P3/8/K7", "Ka1-b1 Ke4:e3", false, true, false},
                         {"8/8/8/4Pk2/8/8/8/K7", "Ka1-b1 Kf5:e5", false, true, false},
                         {"8/8/4P3/5k2/8/8/8/K7", "Ka1-b1 Kf5:e6", false, true, true},
                         {"8/8/8/3kB3/8/8/8/K7", "Ka1-a2 Kd5:e5", false, true, true}};
    for (const TRow& row : rows) {
        CMadeMove line(row.m_placement, 9, row.m_moves);
        EXPECT_EQ(line.Doubts(SH_DONTLOSEANYFIGURES), row.m_bZero) << row.m_placement;
        line.Context().m_nSaveFiguresMode = 1;
        EXPECT_EQ(line.Doubts(SH_DONTLOSEANYFIGURES), row.m_bOne) << row.m_placement;
        line.Context().m_nSaveFiguresMode = 2;
        EXPECT_EQ(line.Doubts(SH_DONTLOSEANYFIGURES), row.m_bTwo) << row.m_placement;
    }
}

TEST(DontLoseFigures, APawnThatIsReplacedIsNoLoss) {
    CMadeMove line("8/8/4P2P/5k2/8/8/8/K7", 9, "Ka1-b1 Kf5:e6");
    line.Context().m_nSaveFiguresMode = 2;
    EXPECT_FALSE(line.Doubts(SH_DONTLOSEANYFIGURES));
}

TEST(DontLoseFigures, AnExchangeForARookIsExcused) {
    CMadeMove rook("8/8/8/3kr3/8/3N4/8/K7", 9, "Nd3:e5 Kd5:e5");
    rook.Context().m_nSaveFiguresMode = 1;
    EXPECT_FALSE(rook.Doubts(SH_DONTLOSEANYFIGURES));
    CMadeMove bishop("8/8/8/3kb3/8/3N4/8/K7", 9, "Nd3:e5 Kd5:e5");
    bishop.Context().m_nSaveFiguresMode = 1;
    EXPECT_TRUE(bishop.Doubts(SH_DONTLOSEANYFIGURES));
}

TEST(DontLoseFigures, MayBeReleasedInALine) {
    CMadeMove line("8/8/8/3kB3/8/8/8/K7", 9, "Ka1-a2 Kd5:e5");
    line.Context().m_nSaveFiguresMode = 1;
    line.After().m_wBlackState |= kLossesReleased;
    EXPECT_FALSE(line.Doubts(SH_DONTLOSEANYFIGURES));
}

TEST(DontLoseFigures, ACaptureLetThroughReleasesThem) {
    CMadeMove capture("k7/3N4/2K5/8/8/8/8/R7", 9, "Ra1-a7 Ka8:a7"), quiet("k7/8/8/8/8/8/8/KR6", 9, "Ka1-a2 Ka8-a7");
    for (CMadeMove* line : {&capture, &quiet}) {
        line->Under(SH_DONTLOSEANYFIGURES | SH_SAVEQUEENROOK);
        ApplyDeferredEdgeCheck(line->After());
    }
    EXPECT_NE(capture.After().m_wBlackState & kLossesReleased, 0);
    EXPECT_EQ(quiet.After().m_wBlackState & kLossesReleased, 0);
    CMadeMove other("k7/3N4/2K5/8/8/8/8/R7", 9, "Ra1-a7 Ka8:a7");
    other.Under(SH_SAVEQUEENROOK);
    ApplyDeferredEdgeCheck(other.After());
    EXPECT_EQ(other.After().m_wBlackState & kLossesReleased, 0);
}

// ---- SH_KEYWHITEFIGURE

TEST(KeyWhiteFigure, MayNotBeTaken) {
    CMadeMove line("8/8/8/3kB3/8/8/8/K7", 9, "Ka1-b1 Kd5:e5");
    line.Context().m_nKeyWhiteFigure = String2Square("e5");
    EXPECT_TRUE(line.Doubts(SH_KEYWHITEFIGURE));
    line.Context().m_nKeyWhiteFigure = String2Square("a1");
    EXPECT_FALSE(line.Doubts(SH_KEYWHITEFIGURE));
}

TEST(KeyWhiteFigure, MayBeExchangedForAFigureButNotForAPawn) {
    CMadeMove figure("8/5n2/8/4B3/3P4/8/k7/7K", 9, "Kh1-h2 Nf7:e5");
    figure.Context().m_nKeyWhiteFigure = String2Square("e5");
    EXPECT_FALSE(figure.Doubts(SH_KEYWHITEFIGURE));
    CMadeMove pawn("8/8/5p2/4B3/3P4/8/k7/7K", 9, "Kh1-h2 f6:e5");
    pawn.Context().m_nKeyWhiteFigure = String2Square("e5");
    EXPECT_TRUE(pawn.Doubts(SH_KEYWHITEFIGURE));
}

// ---- reduction to precalculated data

TEST(ReducedMaterial, WithoutDataThereIsNoDoubt) {
    ASSERT_FALSE(IsPrecalcDataAvailable(GetPositionType(ChessboardFromFEN("8/8/8/3k4/8/8/8/K3R3"))));
    CMadeMove line("8/8/8/3k4/8/8/8/K3R1B1", 23, "Ka1-b1 Kd5-c4");
    EXPECT_FALSE(line.Doubts(SH_REDUCTIONTOGLOBREGPOS));
    EXPECT_FALSE(line.Doubts(SH_ZUGZWANGTRIANGLES));
}

// Without the bishop White mates in fourteen moves at least; eleven are left.
TEST(ReducedMaterial, DataThatTellOfNoMateAreDoubt) {
    const CActiveTables tables(true, {"R"});
    CMadeMove line("8/8/8/3k4/8/8/8/K3R1B1", 23, "Ka1-b1 Kd5-c4");
    EXPECT_TRUE(line.Doubts(SH_REDUCTIONTOGLOBREGPOS));
    CMadeMove longer("8/8/8/3k4/8/8/8/K3R1B1", 41, "Ka1-b1 Kd5-c4");
    EXPECT_FALSE(longer.Doubts(SH_REDUCTIONTOGLOBREGPOS));
    CMadeMove shallow("8/8/8/3k4/8/8/8/K3R1B1", 17, "Ka1-b1 Kd5-c4");
    EXPECT_FALSE(shallow.Doubts(SH_REDUCTIONTOGLOBREGPOS)) << "so few plies are searched";
}

// Without the bishop the rook would give check: no position, and no answer.
TEST(ReducedMaterial, PositionsThatCannotBeAreNotAskedAbout) {
    const CActiveTables tables(true, {"R"});
    CMadeMove line("R1B1k3/8/8/8/8/8/8/K7", 41, "Ka1-b1 Ke8-f7 Kb1-a1 Kf7-e8");
    EXPECT_FALSE(line.Doubts(SH_REDUCTIONTOGLOBREGPOS));
}

// White mates with queen and rook, and in time; with the rook alone, whose data there are, it would not.
TEST(ReducedMaterial, ADearManIsTakenOffWhereNoCheapOneWillDo) {
    const CActiveTables tables(true, {"R"});
    CMadeMove line("8/8/8/3k4/8/8/7Q/K3R3", 23, "Ka1-b1 Kd5-c4");
    EXPECT_TRUE(line.Doubts(SH_REDUCTIONTOGLOBREGPOS));
}

// That the king alone does not mate tells nothing.
TEST(ReducedMaterial, OneWhiteManStays) {
    const CActiveTables tables(true, {"q"});
    CMadeMove line("8/8/8/3k4/8/8/7q/K3R1B1", 23, "Ka1-b1 Kd5-c4");
    EXPECT_FALSE(line.Doubts(SH_REDUCTIONTOGLOBREGPOS));
}

// The doubt is about the moves that are left, and takes none of those that a short-mate search allows in addition.
TEST(ReducedMaterial, AdditionalMovesStayUnused) {
    const CActiveTables tables(true, {"R"});
    CMadeMove line("8/8/8/3k4/8/8/8/K3R1B1", 23, "Ka1-b1 Kd5-c4");
    line.Context().m_nQuickerLevel = 1;
    line.Context().m_nAdditionalMoves = 40;
    line.Context().m_bAdditionalMovesUsed = false;
    EXPECT_TRUE(line.Doubts(SH_REDUCTIONTOGLOBREGPOS));
    EXPECT_FALSE(line.Context().m_bAdditionalMovesUsed);
}

TEST(HasNothingToSave, HeavyFiguresPawnsInTimeAndMajorBishops) {
    CMadeMove line("8/8/8/3k4/8/8/8/K1B5", 9, "Ka1-b1");
    EXPECT_TRUE(HasNothingToSave(line.After()));
    line.Context().m_bBishopIsMajor = true;
    EXPECT_FALSE(HasNothingToSave(line.After()));
    CMadeMove rook("8/8/8/3k4/8/8/8/K1R5", 9, "Ka1-b1");
    EXPECT_FALSE(HasNothingToSave(rook.After()));
}

} // namespace
} // namespace quillon::test
