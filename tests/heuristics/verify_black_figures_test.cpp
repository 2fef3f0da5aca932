// Rules about what Black's figures may not do.

#include <gtest/gtest.h>

#include "heuristics/verified_position.h"
#include "heuristics/verify_black_figures.h"

namespace quillon::test {
namespace {

// ---- watched figures

TEST(WatchedFigure, MayNotLeaveTheNeighbourhoodOfItsSquare) {
    CMadeMove line("1n2k3/8/8/8/8/8/8/K6R", 9);
    line.Watch("b8", "b8").Play("Ka1-b1 Nb8-c6");
    EXPECT_TRUE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, OtherFiguresMayMove) {
    CMadeMove line("1n2k2n/8/8/8/8/8/8/K6R", 9);
    line.Watch("b8", "b8").Play("Ka1-b1 Nh8-f7");
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, MayMoveOneField) {
    CMadeMove line("1r2k3/8/8/8/8/8/8/K6R", 11);
    line.Watch("b8", "b8").Play("Ka1-a2 Rb8-b7");
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
    line.Play("Ka2-a1 Rb7-b6");
    EXPECT_TRUE(line.Doubts(SH_DONTLETFIGUREUNBLOCK)) << "two fields in two steps";
    line.Context().m_bBishopIsMajor = true;
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, EnPriseItHasNotGotAway) {
    CMadeMove line("1n2k3/8/8/8/8/8/8/K1R5", 9);
    line.Watch("b8", "b8").Play("Ka1-b1 Nb8-c6");
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, AWatchedPawnBesideAShutInKingIsForced) {
    CMadeMove line("k7/2K5/8/7p/8/8/8/6N1", 9);
    line.Watch("h7", "h5").Play("Ng1-e2 h5-h4");
    EXPECT_TRUE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
    line.Context().m_bBlockedPawns = true;
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, AgainstPawnsAloneTheRaceDecides) {
    CMadeMove won("1n5k/P7/8/8/8/8/8/7K", 9);
    won.Watch("b8", "b8").Play("Kh1-g1 Nb8-d7");
    EXPECT_FALSE(won.Doubts(SH_DONTLETFIGUREUNBLOCK));
    CMadeMove lost("1n6/8/8/8/8/P7/1k6/7K", 9);
    lost.Watch("b8", "b8").Play("Kh1-g1 Nb8-d7");
    EXPECT_TRUE(lost.Doubts(SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, ThePinnedFigureMayMoveOnItsLine) {
    CMadeMove line("4k3/8/4r3/8/8/4P3/8/K3R3", 9);
    line.Watch("e6", "e6").Play("Ka1-b1 Re6-e4");
    EXPECT_TRUE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
    line.Context().m_nKeyWhiteFigure = String2Square("e1");
    line.Context().m_nPinnedFigure = String2Square("e6");
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK | SH_KEYWHITEFIGURE, SH_DONTLETFIGUREUNBLOCK));
    CMadeMove away("4k3/8/4r3/8/8/4P3/8/K3R3", 9);
    away.Watch("e6", "e6").Play("Ka1-b1 Re6-h6");
    away.Context().m_nKeyWhiteFigure = String2Square("e1");
    away.Context().m_nPinnedFigure = String2Square("e6");
    EXPECT_TRUE(away.Doubts(SH_DONTLETFIGUREUNBLOCK | SH_KEYWHITEFIGURE, SH_DONTLETFIGUREUNBLOCK));
}

TEST(WatchedFigure, UnderTheStrictEdgeACaptureAmongManyRooksIsExcused) {
    CMadeMove line("1r2k2r/8/8/1P6/8/8/8/K6N", 9);
    line.Watch("b8", "b8").Play("Ka1-a2 Rb8:b5");
    EXPECT_TRUE(line.Doubts(SH_DONTLETFIGUREUNBLOCK));
    EXPECT_FALSE(line.Doubts(SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGONTHEEDGE, SH_DONTLETFIGUREUNBLOCK));
    CMadeMove quiet("1r2k2r/8/8/1P6/8/8/8/K6N", 9);
    quiet.Watch("b8", "b8").Play("Ka1-a2 Rb8-b6");
    EXPECT_TRUE(quiet.Doubts(SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGONTHEEDGE, SH_DONTLETFIGUREUNBLOCK));
}

TEST(InitialSquareOfMoved, IsThatOfTheSetInForce) {
    CMadeMove line("1r2k3/8/8/8/8/8/8/K6R", 9);
    line.Watch("b8", "b8").Play("Ka1-a2 Rb8-b7");
    CVerifiedMove move = line.Verified();
    EXPECT_EQ(InitialSquareOfMoved(move), String2Square("b8"));
    line.Context().m_bBlockedFiguresByHand = false;
    line.Context().m_BlockedFiguresNow[0] = String2Square("c8");
    EXPECT_EQ(InitialSquareOfMoved(move), String2Square("c8"));
    line.Context().m_BlockedFiguresNow[0] = kNoSquare;
    EXPECT_EQ(InitialSquareOfMoved(move), String2Square("b8")) << "from where it has come now";
    CMadeMove other("1r2k3/8/8/8/8/8/8/K6R", 9, "Ka1-a2 Rb8-b7");
    CVerifiedMove unwatched = other.Verified();
    EXPECT_EQ(InitialSquareOfMoved(unwatched), kNoSquare);
}

// ---- promoted figures

TEST(PromotedQueen, MayNotMove) {
    CMadeMove line("8/7K/8/8/4k3/8/p7/7N", 11, "Kh7-h6 a2-a1Q");
    EXPECT_FALSE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE)) << "the promotion itself";
    line.Play("Kh6-h5 Qa1-a8");
    EXPECT_TRUE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
}

TEST(PromotedQueen, WithoutAPromotionQueensMove) {
    CMadeMove line("8/7K/8/8/4k3/8/8/q6N", 11, "Kh7-h6 Qa1-a8");
    EXPECT_FALSE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
}

TEST(PromotedQueen, EnPriseIsAnExceptionUnlessStrict) {
    CMadeMove line("7R/7K/8/8/4k3/8/p7/8", 11, "Kh7-h6 a2-a1Q Kh6-h5 Qa1-a8");
    EXPECT_FALSE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
    line.Context().m_bDontLetPromotedStrict = true;
    EXPECT_TRUE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
}

TEST(PromotedQueen, AShieldBesideItsKingMayMove) {
    CMadeMove strong("6RR/7K/8/8/8/8/p1k5/8", 11, "Kh7-h6 a2-a1Q Kh6-h5 Qa1-b1");
    EXPECT_FALSE(strong.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
    CMadeMove weak("7R/7K/8/8/8/8/p1k5/8", 11, "Kh7-h6 a2-a1Q Kh6-h5 Qa1-b1");
    EXPECT_TRUE(weak.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
}

TEST(PromotedQueen, TheSweepingRookAndTheDropThresholdExcuse) {
    CMadeMove line("8/7K/8/8/4k3/8/p7/7N", 11, "Kh7-h6 a2-a1Q Kh6-h5 Qa1-a8");
    EXPECT_FALSE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE | SH_SWEEPINGWHITEROOK, SH_DONTLETPROMOTEDQUEENMOVE));
    line.Context().m_nDropThreshold = 2;
    EXPECT_FALSE(line.Doubts(SH_DONTLETPROMOTEDQUEENMOVE)) << "Black has a single figure";
    CMadeMove two("n7/7K/8/8/4k3/8/p7/7N", 11, "Kh7-h6 a2-a1Q Kh6-h5 Qa1-a7");
    two.Context().m_nDropThreshold = 2;
    EXPECT_TRUE(two.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
}

TEST(PromotedFigure, OnlyOneThatWasAPawn) {
    CMadeMove promoted("7R/7K/8/8/4k3/8/p7/7n", 11, "Kh7-h6 a2-a1N Kh6-h5 Na1-c2");
    EXPECT_TRUE(promoted.Doubts(SH_DONTLETPROMOTEDFIGUREMOVE));
    EXPECT_FALSE(promoted.Doubts(SH_DONTLETPROMOTEDQUEENMOVE));
    CMadeMove original("7R/7K/8/8/4k3/8/p7/7n", 11, "Kh7-h6 a2-a1N Kh6-g5 Nh1-f2");
    EXPECT_FALSE(original.Doubts(SH_DONTLETPROMOTEDFIGUREMOVE));
    CMadeMove king("7R/7K/8/8/4k3/8/p7/7n", 11, "Kh7-h6 a2-a1N Kh6-g5 Ke4-d3");
    EXPECT_FALSE(king.Doubts(SH_DONTLETPROMOTEDFIGUREMOVE));
}

// ---- queen checks

TEST(QueenChecksTwice, SecondCheckIsDoubtful) {
    CMadeMove line("7k/8/8/8/q7/8/4K3/8", 11, "Ke2-d2 Qa4-d4");
    EXPECT_FALSE(line.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE)) << "the first";
    line.Play("Kd2-c2 Qd4-c4");
    EXPECT_TRUE(line.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE));
}

TEST(QueenChecksTwice, AQuietMoveBetweenBreaksTheRow) {
    CMadeMove line("7k/8/8/8/q7/8/4K3/8", 13, "Ke2-d2 Qa4-d4 Kd2-c2 Qd4-h4 Kc2-d2 Qh4-f2");
    EXPECT_FALSE(line.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE));
}

TEST(QueenChecksTwice, EnPriseIsAnException) {
    CMadeMove line("7k/8/8/8/q7/8/4K3/8", 11, "Ke2-d2 Qa4-d4 Kd2-c2 Qd4-c3");
    EXPECT_FALSE(line.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE)) << "the king takes her";
}

TEST(QueenChecksTwice, AStepAlongTheEdgeIsAnException) {
    CMadeMove step("7k/8/8/8/K7/8/8/7q", 11, "Ka4-a5 Qh1-a1 Ka5-b5 Qa1-b1");
    EXPECT_FALSE(step.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE));
    CMadeMove leap("7k/8/8/8/K7/8/8/7q", 11, "Ka4-a5 Qh1-a1 Ka5-b5 Qa1-f1");
    EXPECT_TRUE(leap.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE));
}

TEST(QueenChecksTwice, WithTheKingsCloseTheKingDecides) {
    CMadeMove stays("8/8/7q/8/4K3/2k5/8/8", 11, "Ke4-f3 Qh6-h1 Kf3-e3 Qh1-h6");
    EXPECT_FALSE(stays.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE));
    CMadeMove driven("8/8/7q/8/4K3/2k5/8/8", 11, "Ke4-f3 Qh6-h1 Kf3-e3 Qh1-e1");
    EXPECT_TRUE(driven.Doubts(SH_DONTLETBLACKQUEENCHECKTWICE));
}

TEST(CanKingStayClose, StepsOutOfTheCheckNearTheOtherKing) {
    CMadeMove yes("8/8/8/8/8/2k1K3/8/6q1", 5), no("8/8/8/8/8/4k3/8/4K2q", 5);
    EXPECT_TRUE(CanKingStayClose(yes.After()));
    EXPECT_FALSE(CanKingStayClose(no.After()));
}

} // namespace
} // namespace quillon::test
