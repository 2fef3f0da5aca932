// How a standing black king is confined.

#include "heuristics/king_confinement.h"

#include <gtest/gtest.h>

#include "core/fen.h"

namespace quillon::test {
namespace {

TChessboard Board(const char* placement) { return ChessboardFromFEN(placement); }

TEST(KingConfinement, TellsACage) {
    EXPECT_FALSE(IsBlackKingCaged(Board("k7/8/1K6/8/8/8/8/8"))) << "b8 is free";
    EXPECT_TRUE(IsBlackKingCaged(Board("k7/8/1K1B4/8/8/8/8/8")));
}

TEST(KingConfinement, CountsHisOwnMenAroundHim) {
    EXPECT_EQ(CountBlackMenAroundKing(Board("kr6/pp5p/8/8/8/8/8/K7")), 3);
    EXPECT_EQ(CountSquaresAroundKing(Board("k7/8/8/8/8/8/8/K7")), 3);
    EXPECT_EQ(CountSquaresAroundKing(Board("3k4/8/8/8/8/8/8/K7")), 5);
    EXPECT_EQ(CountSquaresAroundKing(Board("8/8/8/3k4/8/8/8/K7")), 8);
}

TEST(KingConfinement, AWedgeIsProtected) {
    EXPECT_TRUE(IsWedgedByPawn(Board("8/8/8/3k4/3P4/2P5/8/K7")));
    EXPECT_FALSE(IsWedgedByPawn(Board("8/8/8/3k4/3P4/8/8/K7")));
    EXPECT_FALSE(IsWedgedByPawn(Board("8/8/8/3k4/3R4/2P5/8/K7"))) << "no pawn";
}

TEST(KingConfinement, WalksWhereNothingStopsHim) {
    EXPECT_EQ(CountReachableSquares(Board("k7/8/8/8/8/8/8/1RK5")), 6) << "a2 to a7";
    EXPECT_FALSE(IsBlackKingConfined(Board("k7/8/8/8/8/8/8/1RK5")));
    EXPECT_EQ(CountReachableSquares(Board("k7/8/8/8/7R/8/8/1RK5")), 3) << "a5 to a7";
    EXPECT_TRUE(IsBlackKingConfined(Board("k7/8/8/8/7R/8/8/1RK5")));
    EXPECT_EQ(CountReachableSquares(Board("k7/8/1K1B4/8/8/8/8/8")), 0);
}

TEST(KingConfinement, RunsWithThreeFreeSquares) {
    EXPECT_TRUE(IsBlackKingOnTheRun(Board("k7/8/8/8/8/8/8/K7")));
    EXPECT_FALSE(IsBlackKingOnTheRun(Board("k7/8/8/8/8/8/8/1RK5")));
}

TEST(KingConfinement, TheExtendedEdgeHoldsWithoutAWayIn) {
    EXPECT_TRUE(CanHoldExtEdge(Board("k7/8/8/8/8/8/8/K7"))) << "from a8 nothing lies inside";
    EXPECT_FALSE(CanHoldExtEdge(Board("8/1k6/8/8/8/8/8/K7"))) << "c6";
    EXPECT_TRUE(CanHoldExtEdge(Board("8/1k6/8/8/8/8/8/2R4K"))) << "c6 is guarded";
    EXPECT_FALSE(CanHoldExtEdge(Board("8/8/2kp4/2ppp3/8/8/8/K7"))) << "inside already";
}

TEST(KingConfinement, ACornerIsShutByPawns) {
    EXPECT_TRUE(IsCornerShutByPawns(Board("k7/8/3P4/2PP4/8/8/8/K7"))) << "c7, b6 and c6 covered";
    EXPECT_TRUE(IsCornerShutByPawns(Board("k7/8/2pP4/2P5/8/8/8/K7"))) << "c6 held by a stopped pawn";
    EXPECT_FALSE(IsCornerShutByPawns(Board("k7/8/2pP4/2PN4/8/8/8/K7"))) << "the pawn on c6 can take";
    EXPECT_FALSE(IsCornerShutByPawns(Board("k7/8/8/2PP4/8/8/8/K7"))) << "c7 is open";
    EXPECT_FALSE(IsCornerShutByPawns(Board("3k4/8/3P4/2PP4/8/8/8/K7"))) << "not in the corner";
    EXPECT_FALSE(IsCornerShutByPawns(Board("8/8/3P4/k1PP4/8/8/8/K7"))) << "in the middle ranks";
}

TEST(KingConfinement, ACornerOfTheOtherSideIsTheSameQuestion) {
    // h8: the squares in front are f7, g6 and f6.
    EXPECT_TRUE(IsCornerShutByPawns(Board("7k/8/4P3/4PP2/8/8/8/K7")));
    EXPECT_FALSE(IsCornerShutByPawns(Board("7k/8/3P4/2PP4/8/8/8/K7"))) << "the pawns of the other wing";
    EXPECT_FALSE(IsCornerShutByPawns(Board("K7/8/8/8/8/8/8/7k")));
}

TEST(KingConfinement, CountsTheWallOfPawns) {
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("8/8/8/4P3/4k3/8/8/K7")), 1);
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("8/8/8/8/4k3/8/4P3/K7")), 2) << "two rows below count twice";
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("8/8/8/8/4k3/4P3/8/K7")), 0) << "the row just below counts nothing";
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("4k3/4P3/4P3/8/8/8/8/K7")), 2);
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("4k3/8/8/8/4P3/8/8/K7")), 0) << "four rows away";
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("k7/8/8/4P3/8/8/8/K7")), 0) << "four files away";
    EXPECT_EQ(CountWhitePawnsAroundKing(Board("k7/8/8/3P4/8/8/8/K7")), 1);
}

} // namespace
} // namespace quillon::test
