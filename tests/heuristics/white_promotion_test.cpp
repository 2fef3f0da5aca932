#include "heuristics/white_promotion.h"

#include <gtest/gtest.h>

#include "heuristics/verified_position.h"

namespace quillon::test {
namespace {

TChessboard Board(std::string_view placement) { return ChessboardFromFEN(placement); }

TEST(HasPawnInReachOfPromotion, CountsSteps) {
    const TChessboard seventh = Board("4k3/P7/8/8/8/8/8/4K3"), second = Board("4k3/8/8/8/8/8/P7/4K3"),
                      none = Board("4k3/8/8/8/8/8/8/4K2R");
    EXPECT_TRUE(HasPawnInReachOfPromotion(seventh, 1));
    EXPECT_FALSE(HasPawnInReachOfPromotion(seventh, 0));
    EXPECT_TRUE(HasPawnInReachOfPromotion(second, 5)) << "the double step saves one";
    EXPECT_FALSE(HasPawnInReachOfPromotion(second, 4));
    EXPECT_FALSE(HasPawnInReachOfPromotion(none, 100));
}

TEST(HasAdvancedPawn, OnTheSixthOrSeventhRankWithAMove) {
    EXPECT_TRUE(HasAdvancedPawn(Board("4k3/8/P7/8/8/8/8/4K3")));
    EXPECT_TRUE(HasAdvancedPawn(Board("4k3/P7/8/8/8/8/8/4K3")));
    EXPECT_FALSE(HasAdvancedPawn(Board("4k3/8/8/P7/8/8/8/4K3")));
    EXPECT_FALSE(HasAdvancedPawn(Board("4k3/p7/P7/8/8/8/8/4K3")));
    EXPECT_TRUE(HasAdvancedPawn(Board("4k3/pn6/P7/8/8/8/8/4K3"))) << "it can take";
}

bool Promotes(std::string_view placement) {
    CMadeMove line(placement, 5);
    return CanPromoteWithEffect(line.After());
}

TEST(CanPromoteWithEffect, AQueenThatStandsOrACheck) {
    EXPECT_TRUE(Promotes("8/P6k/8/8/8/8/8/4K3"));
    EXPECT_FALSE(Promotes("8/P6k/8/8/8/8/8/4K2b")) << "the queen is taken, and no figure checks";
    EXPECT_TRUE(Promotes("4k3/P7/8/8/4b3/8/8/4K3")) << "it checks, taken or not";
    EXPECT_FALSE(Promotes("r6k/P7/8/8/8/8/8/4K3")) << "blocked";
    EXPECT_FALSE(Promotes("8/8/P6k/8/8/8/8/4K3")) << "not there yet";
    EXPECT_FALSE(Promotes("2r5/3P4/8/8/7k/8/8/b2K3r")) << "White is in check and has other cares";
}

TEST(HasPawnAsFarAs, AnotherPawnOfThatRank) {
    const TChessboard b = Board("4k3/8/8/8/P7/8/8/4K3");
    EXPECT_TRUE(HasPawnAsFarAs(b, SquareAt(7, 3)));
    EXPECT_FALSE(HasPawnAsFarAs(b, SquareAt(7, 4)));
    EXPECT_FALSE(HasPawnAsFarAs(Board("4k3/8/8/p7/P7/8/8/4K3"), SquareAt(7, 3))) << "it cannot move";
}

} // namespace
} // namespace quillon::test
