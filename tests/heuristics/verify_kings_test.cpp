// Rules about the two kings' distance.

#include <gtest/gtest.h>

#include "heuristics/verified_position.h"
#include "heuristics/verify_kings.h"

namespace quillon::test {
namespace {

TEST(AreKingsNear, WhiteWouldComeTooLate) {
    CMadeMove line("7k/8/8/8/8/8/8/K6N", 7, "Ka1-a2 Kh8-g8");
    EXPECT_TRUE(line.Doubts(SH_AREKINGSNEAR)) << "six squares, and three moves left";
    CMadeMove longer("7k/8/8/8/8/8/8/K6N", 11, "Ka1-a2 Kh8-g8");
    EXPECT_FALSE(longer.Doubts(SH_AREKINGSNEAR));
}

TEST(AreKingsNear, TheBonusLetsThemStandFurtherApart) {
    CMadeMove line("7k/8/8/8/8/8/8/K6N", 7, "Ka1-a2 Kh8-g8");
    line.Context().m_nKingsNearBonus = 2;
    EXPECT_FALSE(line.Doubts(SH_AREKINGSNEAR));
    line.Context().m_nKingsNearBonus = 1; // a square short, and the black king may come nearer
    EXPECT_FALSE(line.Doubts(SH_AREKINGSNEAR));
    CMadeMove held("n6k/8/8/8/8/8/8/K6N", 7, "Ka1-a2 Kh8-g8");
    held.Context().m_nKingsNearBonus = 1;
    EXPECT_TRUE(held.Doubts(SH_AREKINGSNEAR)) << "the knight can move instead";
}

TEST(AreKingsNear, NotWithAQueenNorRightAfterAPromotion) {
    CMadeMove queen("7k/8/8/8/8/8/8/K5QN", 7, "Ka1-a2 Kh8-h7");
    EXPECT_FALSE(queen.Doubts(SH_AREKINGSNEAR));
    CMadeMove promoted("7k/P7/8/8/8/8/8/K6N", 7, "a7-a8N Kh8-g8");
    EXPECT_FALSE(promoted.Doubts(SH_AREKINGSNEAR));
    promoted.Play("Ka1-a2 Kg8-h8");
    EXPECT_TRUE(promoted.Doubts(SH_AREKINGSNEAR));
}

TEST(AreKingsNear, MateOnTheMoveExcuses) {
    CMadeMove line("7k/8/8/8/8/8/R7/1R1K4", 5, "Ra2-a7 Kh8-g8");
    EXPECT_FALSE(line.Doubts(SH_AREKINGSNEAR)) << "Rb8 mates";
}

TEST(IsBlackKingDrawnNearer, NeedsABareKingAndASquareNearer) {
    CMadeMove near("7k/8/8/8/8/8/8/K6N", 5), figure("7k/8/8/8/8/8/8/K1n4N", 5), shut("7k/7p/8/8/8/8/8/K5R1", 5);
    EXPECT_TRUE(IsBlackKingDrawnNearer(near.After()));
    EXPECT_FALSE(IsBlackKingDrawnNearer(figure.After()));
    EXPECT_FALSE(IsBlackKingDrawnNearer(shut.After()));
}

TEST(CaptureKnight, ASafeKnightSavesAKingInOpposition) {
    CMadeMove line("3k4/8/4K3/8/8/8/8/n6B", 9, "Bh1-g2 Kd8-e8");
    EXPECT_TRUE(line.Doubts(SH_CAPTUREKNIGHT));
    line.Context().m_nCaptureKnightMode = 1;
    EXPECT_FALSE(line.Doubts(SH_CAPTUREKNIGHT));
}

TEST(CaptureKnight, AKnightThatFallsDoesNot) {
    CMadeMove line("3k3B/8/4K3/8/8/8/8/n7", 9, "Bh8-g7 Kd8-e8");
    EXPECT_FALSE(line.Doubts(SH_CAPTUREKNIGHT));
}

TEST(CaptureKnight, OnlyFaceToFaceOnTheEdgeOutsideTheCornersWithoutPawns) {
    CMadeMove pawn("3k4/8/4K3/7p/8/8/8/n6B", 9, "Bh1-g2 Kd8-e8");
    EXPECT_FALSE(pawn.Doubts(SH_CAPTUREKNIGHT));
    CMadeMove aside("3k4/8/4K3/8/8/8/8/n6B", 9, "Bh1-g2 Kd8-c7");
    EXPECT_FALSE(aside.Doubts(SH_CAPTUREKNIGHT));
    CMadeMove offLine("4k3/8/5K2/8/8/8/8/n6B", 9, "Kf6-e6 Ke8-d8");
    EXPECT_FALSE(offLine.Doubts(SH_CAPTUREKNIGHT)) << "a knight's move apart";
    CMadeMove corner("1k6/8/K7/8/8/8/8/2n2B2", 9, "Bf1-c4 Kb8-a8");
    EXPECT_FALSE(corner.Doubts(SH_CAPTUREKNIGHT));
}

TEST(CaptureKnight, MateOnTheMoveExcuses) {
    CMadeMove line("3k4/8/4K3/8/8/8/8/n6R", 9, "Rh1-h2 Kd8-e8");
    EXPECT_FALSE(line.Doubts(SH_CAPTUREKNIGHT)) << "Rh8 mates";
}

} // namespace
} // namespace quillon::test
