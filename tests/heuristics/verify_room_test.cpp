// Rules that count the black king's room.

#include <gtest/gtest.h>

#include "core/attacks.h"
#include "heuristics/verified_position.h"
#include "heuristics/verify_room.h"

namespace quillon::test {
namespace {

// ---- three moves to mate

TEST(MateInThree, ALoneKnightCannotTakeTheRoomOfAKingInTheMiddle) {
    CMadeMove line("N7/8/8/4k3/8/8/8/K7", 7, "Ka1-b1 Ke5-d5");
    EXPECT_TRUE(line.Doubts(SH_3MOVESTOMATE));
}

TEST(MateInThree, IsAskedThreeMovesFromTheEndOnly) {
    CMadeMove line("N7/8/8/4k3/8/8/8/K7", 9, "Ka1-b1 Ke5-d5");
    EXPECT_FALSE(line.Doubts(SH_3MOVESTOMATE));
}

TEST(MateInThree, APawnThatMayPromoteSpeaksForMate) {
    CMadeMove nearPawn("N7/8/8/4k2P/8/8/8/K7", 7, "Ka1-b1 Ke5-d5");
    EXPECT_FALSE(nearPawn.Doubts(SH_3MOVESTOMATE));
    CMadeMove farPawn("N7/8/8/4k3/7P/8/8/K7", 7, "Ka1-b1 Ke5-d5");
    EXPECT_TRUE(farPawn.Doubts(SH_3MOVESTOMATE));
}

TEST(MateInThree, OnTheEdgeAnythingMayHappen) {
    CMadeMove line("N7/8/8/8/8/8/4k3/K7", 7, "Ka1-b2 Ke2-e1");
    EXPECT_FALSE(line.Doubts(SH_3MOVESTOMATE));
}

TEST(MateInThree, AHeavyFigureRaisesTheLimitsAndTwoLiftThem) {
    CMadeMove one("8/R7/8/4k3/8/8/8/7K", 7, "Kh1-g1 Ke5-d5");
    EXPECT_TRUE(one.Doubts(SH_3MOVESTOMATE));
    CMadeMove two("8/RR6/8/4k3/8/8/8/7K", 7, "Kh1-g1 Ke5-d5");
    EXPECT_FALSE(two.Doubts(SH_3MOVESTOMATE));
}

TEST(MateInThree, BesideTheEdgeAQueenIsEnough) {
    CMadeMove queen("8/4k3/8/8/8/8/8/Q6K", 7, "Kh1-h2 Ke7-d7");
    EXPECT_FALSE(queen.Doubts(SH_3MOVESTOMATE));
    CMadeMove rook("8/4k3/8/8/8/8/8/R6K", 7, "Kh1-h2 Ke7-d7");
    EXPECT_TRUE(rook.Doubts(SH_3MOVESTOMATE));
}

TEST(MateInThree, AKingThatHadLittleRoomBeforeMayBeCaughtAgain) {
    CMadeMove wide("8/8/3pp3/4k3/3p4/8/8/K6N", 7, "Ka1-b1 Ke5-e4");
    ASSERT_EQ(CountBlackKingFreeSquares(wide.Before()), 5);
    EXPECT_TRUE(wide.Doubts(SH_3MOVESTOMATE));
    CMadeMove narrow("8/8/3ppp2/4k3/3p4/8/8/K6N", 7, "Ka1-b1 Ke5-e4");
    ASSERT_EQ(CountBlackKingFreeSquares(narrow.Before()), 4);
    EXPECT_FALSE(narrow.Doubts(SH_3MOVESTOMATE));
}

// ---- the king surrounded

TEST(SurroundedKing, ThreeFreeSquaresAreTheLimit) {
    CMadeMove open("N7/8/8/4k3/8/8/8/K7", 9, "Ka1-b1 Ke5-d5");
    EXPECT_TRUE(open.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
    CMadeMove shut("7k/8/5K2/8/8/8/8/N7", 9, "Na1-b3 Kh8-h7");
    ASSERT_EQ(shut.Verified().FreeSquares(), 3);
    EXPECT_FALSE(shut.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
    shut.Context().m_bAssertBKSStrict = true;
    EXPECT_TRUE(shut.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
}

TEST(SurroundedKing, WhiteCanStillTakeSquaresAway) {
    CMadeMove line("7k/8/5K2/8/8/8/8/R7", 9, "Ra1-b1 Kh8-h7");
    line.Context().m_bAssertBKSStrict = true;
    ASSERT_EQ(line.Verified().FreeSquares(), 3);
    EXPECT_FALSE(line.Doubts(SH_ASSERTBLACKKINGSURROUNDED)) << "the rook takes the h-file";
}

TEST(SurroundedKing, OneSquareMoreIsLetPassInAQuietLine) {
    CMadeMove quiet("7k/8/8/5K2/8/8/8/N7", 9, "Na1-b3 Kh8-h7");
    ASSERT_EQ(quiet.Verified().FreeSquares(), 4);
    EXPECT_FALSE(quiet.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
    CMadeMove capture("7k/7P/8/5K2/8/8/8/N7", 9, "Na1-b3 Kh8:h7");
    ASSERT_EQ(capture.Verified().FreeSquares(), 4);
    EXPECT_TRUE(capture.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
}

TEST(SurroundedKing, IsNotAskedInTheSecondForcedMateCycle) {
    CMadeMove line("N7/8/8/4k3/8/8/8/K7", 9, "Ka1-b1 Ke5-d5");
    line.Context().m_bFFM = true;
    EXPECT_TRUE(line.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
    line.Context().m_nFfmCycleRelaxations = 1;
    EXPECT_FALSE(line.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
    line.Context().m_bFfmCycleTwice = true; // the first of the two cycles
    EXPECT_TRUE(line.Doubts(SH_ASSERTBLACKKINGSURROUNDED));
}

int LimitAfter(std::string_view placement, std::string_view moves, bool bStrict = false) {
    CMadeMove line(placement, 9, moves);
    line.Context().m_bAssertBKSStrict = bStrict;
    CVerifiedMove move = line.Verified();
    return SurroundedLimit(move);
}

TEST(SurroundedKing, LimitFollowsTheMaterial) {
    EXPECT_EQ(LimitAfter("8/8/8/4k3/8/8/8/KNN5", "Ka1-a2 Ke5-d5"), 3);
    EXPECT_EQ(LimitAfter("8/8/8/4k3/8/8/8/KNN5", "Ka1-a2 Ke5-d5", true), 2);
    EXPECT_EQ(LimitAfter("8/8/8/4k3/8/8/8/KNNB4", "Ka1-a2 Ke5-e6"), 4);
    EXPECT_EQ(LimitAfter("8/8/8/4k3/8/8/8/KNNB3n", "Ka1-a2 Ke5-e6"), 3) << "Black has a figure";
    EXPECT_EQ(LimitAfter("8/8/4P3/4k3/8/8/8/KNN4N", "Ka1-a2 Ke5:e6"), 5) << "after a capture";
    EXPECT_EQ(LimitAfter("8/8/8/2K1k3/8/8/8/1NNB4", "Kc5-b5 Ke5-d5"), 5) << "kings closer than four";
    EXPECT_EQ(LimitAfter("8/8/8/2KPk3/8/8/8/1NN4N", "Kc5-b4 Ke5:d5"), 6) << "both";
}

TEST(SurroundedKing, ManyQueensRaiseTheLimitOnAnEmptyBoard) {
    EXPECT_EQ(LimitAfter("7Q/7Q/8/8/8/8/3k4/KQ6", "Ka1-a2 Kd2-e3"), 5) << "three queens against a bare king";
    EXPECT_EQ(LimitAfter("6nQ/7Q/8/8/8/8/3k4/KQ6", "Ka1-a2 Kd2-e3"), 4) << "four figures in all";
    EXPECT_EQ(LimitAfter("5nnQ/7Q/8/8/8/8/3k4/KQ6", "Ka1-a2 Kd2-e3"), 3) << "five are too many";
}

// ---- the lone rook

TEST(LoneRook, FromAfarOnNoLineWithAKingWithRoom) {
    CMadeMove line("8/8/4k3/8/8/8/8/R6K", 7, "Kh1-h2 Ke6-d6");
    EXPECT_TRUE(line.Doubts(0, kLoneRookDoubt)) << "it needs no heuristic";
    EXPECT_TRUE(line.Doubts(SH_KEYLINE, kLoneRookDoubt)) << "it comes last";
}

TEST(LoneRook, NotInAProblemOfFivePlies) {
    CMadeMove line("8/8/4k3/8/8/8/8/R6K", 5, "Kh1-h2 Ke6-d6");
    EXPECT_FALSE(line.Doubts(0, kLoneRookDoubt));
}

TEST(LoneRook, HasTimeEnoughInALongLine) {
    CMadeMove line("8/8/4k3/8/8/8/8/R6K", 11, "Kh1-h2 Ke6-d6");
    EXPECT_FALSE(line.Doubts(0, kLoneRookDoubt));
}

TEST(LoneRook, OnALineWithTheKing) {
    CMadeMove line("8/8/4k3/8/8/4p3/8/4R2K", 7, "Kh1-h2 Ke6-e5");
    EXPECT_FALSE(line.Doubts(0, kLoneRookDoubt));
}

TEST(LoneRook, BesideTheKingUnlessDefended) {
    CMadeMove alone("8/8/8/8/4k3/8/3R4/7K", 7, "Kh1-g1 Ke4-e3");
    EXPECT_TRUE(alone.Doubts(0, kLoneRookDoubt));
    CMadeMove defended("8/8/8/8/4k3/8/3R4/2K5", 7, "Kc1-c2 Ke4-e3");
    EXPECT_FALSE(defended.Doubts(0, kLoneRookDoubt));
}

TEST(LoneRook, AttackedItIsPartOfAnExchange) {
    CMadeMove line("7b/8/4k3/8/8/8/8/R6K", 7, "Kh1-h2 Ke6-d6");
    EXPECT_FALSE(line.Doubts(0, kLoneRookDoubt));
}

TEST(LoneRook, IsNotAloneWithAPawnAboutToPromoteOrAnotherFigure) {
    CMadeMove pawn("8/8/4k3/7P/8/8/8/R6K", 7, "Kh1-h2 Ke6-d6");
    EXPECT_FALSE(pawn.Doubts(0, kLoneRookDoubt));
    CMadeMove farPawn("8/8/4k3/8/7P/8/8/R6K", 7, "Kh1-h2 Ke6-d6");
    EXPECT_TRUE(farPawn.Doubts(0, kLoneRookDoubt));
    CMadeMove knight("8/8/4k3/8/8/8/8/RN5K", 7, "Kh1-h2 Ke6-d6");
    EXPECT_FALSE(knight.Doubts(0, kLoneRookDoubt));
}

} // namespace
} // namespace quillon::test
