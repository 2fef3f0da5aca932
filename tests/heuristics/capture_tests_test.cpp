#include "heuristics/capture_tests.h"

#include <gtest/gtest.h>

#include "core/notation.h"
#include "heuristics/verified_position.h"

namespace quillon::test {
namespace {

TChessboard Board(std::string_view placement) { return ChessboardFromFEN(placement); }

TEST(CanWhiteCaptureOn, PinsAndDefendedSquaresCount) {
    const TSquare e5 = String2Square("e5");
    EXPECT_TRUE(CanWhiteCaptureOn(Board("7k/8/8/4n3/8/8/8/K3R3"), e5));
    EXPECT_FALSE(CanWhiteCaptureOn(Board("7k/8/8/4n3/8/8/8/K4R2"), e5));
    EXPECT_FALSE(CanWhiteCaptureOn(Board("4r2k/8/8/8/4n3/3p4/4R3/4K3"), String2Square("d3"))) << "no piece reaches it";
    EXPECT_FALSE(CanWhiteCaptureOn(Board("4r2k/8/8/3n4/4B3/8/8/4K3"), String2Square("d5"))) << "the bishop is pinned";
    EXPECT_TRUE(CanWhiteCaptureOn(Board("7k/8/8/3n4/4B3/8/8/4K3"), String2Square("d5")));
    EXPECT_TRUE(CanWhiteCaptureOn(Board("7k/8/8/4n3/4K3/8/8/8"), e5)) << "the king takes";
    EXPECT_FALSE(CanWhiteCaptureOn(Board("7k/6b1/8/4n3/4K3/8/8/8"), e5)) << "it is defended";
}

TEST(HasLooseBlackMan, AttackedAndNotDefended) {
    EXPECT_TRUE(HasLooseBlackMan(Board("7k/8/8/4n3/8/8/8/K3R3"), false));
    EXPECT_FALSE(HasLooseBlackMan(Board("7k/6b1/8/4n3/8/8/8/K3R3"), false));
    EXPECT_FALSE(HasLooseBlackMan(Board("7k/8/8/4n3/8/8/8/K4R2"), false));
    EXPECT_FALSE(HasLooseBlackMan(Board("7k/8/8/4p3/8/8/8/K3R3"), false));
    EXPECT_TRUE(HasLooseBlackMan(Board("7k/8/8/4p3/8/8/8/K3R3"), true));
}

TEST(CountBlackRooksEnPrise, CountsThoseThatCanBeTaken) {
    EXPECT_EQ(CountBlackRooksEnPrise(Board("7k/8/r7/4r3/8/8/8/1K2R3")), 1);
    EXPECT_EQ(CountBlackRooksEnPrise(Board("7k/8/4r3/1r6/8/8/8/KR2R3")), 2);
    EXPECT_EQ(CountBlackRooksEnPrise(Board("7k/8/4r3/r7/8/8/8/K4R2")), 0);
    EXPECT_EQ(CountBlackRooksEnPrise(Board("7k/8/4n3/8/8/8/8/K3R3")), 0);
}

TEST(IsHeldBySafeWhiteMan, AManOtherThanTheKingThatBlackCannotTake) {
    const TSquare d8 = String2Square("d8");
    EXPECT_TRUE(IsHeldBySafeWhiteMan(Board("4k3/8/8/8/8/8/8/K2R4"), d8));
    EXPECT_FALSE(IsHeldBySafeWhiteMan(Board("4k3/8/8/8/b7/8/8/K2R4"), d8));
    EXPECT_FALSE(IsHeldBySafeWhiteMan(Board("4k3/8/8/8/8/8/8/K6R"), d8));
    EXPECT_FALSE(IsHeldBySafeWhiteMan(Board("5k2/2K5/8/8/8/8/8/8"), d8)) << "only the king holds it";
}

} // namespace
} // namespace quillon::test
