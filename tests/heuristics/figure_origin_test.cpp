#include "heuristics/figure_origin.h"

#include <gtest/gtest.h>

#include "heuristics/verified_position.h"

namespace quillon::test {
namespace {

TEST(OriginOfBlackFigure, IsTracedThroughTheLine) {
    CMadeMove line("4k3/8/8/8/8/8/8/nK5n", 13, "Kb1-b2 Na1-c2 Kb2-b1 Nc2-d4 Kb1-a1 Nh1-g3");
    EXPECT_EQ(OriginOfBlackFigure(line.After(), String2Square("d4")), String2Square("a1"));
    EXPECT_EQ(OriginOfBlackFigure(line.After(), String2Square("g3")), String2Square("h1"));
    EXPECT_EQ(OriginOfBlackFigure(line.After(), String2Square("e8")), String2Square("e8"));
}

TEST(OriginOfBlackFigure, WhiteMovesToTheSquareDoNotCount) {
    CMadeMove line("4k3/8/8/8/8/n7/8/2BK4", 9, "Kd1-e1 Na3-b5 Bc1-a3 Nb5:a3");
    EXPECT_EQ(OriginOfBlackFigure(line.After(), String2Square("a3")), String2Square("a3"));
}

TEST(OriginOfBlackFigure, ACastledRookComesFromTheCorner) {
    CMadeMove line("r3k2r/8/8/8/8/8/8/7K", 9, "Kh1-g2 0-0-0");
    EXPECT_EQ(OriginOfBlackFigure(line.After(), String2Square("d8")), String2Square("a8"));
    CMadeMove other("r3k2r/8/8/8/8/8/8/7K", 9, "Kh1-g2 0-0");
    EXPECT_EQ(OriginOfBlackFigure(other.After(), String2Square("f8")), String2Square("h8"));
}

TEST(IsPromotedBlackFigure, WasAPawnInTheRoot) {
    CMadeMove line("4k3/8/8/8/8/8/p7/2K4n", 13, "Kc1-d2 a2-a1N Kd2-d1 Na1-b3");
    EXPECT_TRUE(IsPromotedBlackFigure(line.After(), String2Square("b3")));
    EXPECT_FALSE(IsPromotedBlackFigure(line.After(), String2Square("h1")));
}

TEST(HasWhiteLostHeavyFigure, LooksAtTheCapturesOfTheLine) {
    CMadeMove knight("8/8/8/3kN3/8/8/8/K6R", 9, "Ka1-a2 Kd5:e5");
    EXPECT_FALSE(HasWhiteLostHeavyFigure(knight.After()));
    CMadeMove rook("8/8/8/3k4/8/8/8/K3R3", 9, "Re1-e5 Kd5:e5");
    EXPECT_TRUE(HasWhiteLostHeavyFigure(rook.After()));
    EXPECT_FALSE(HasWhiteLostHeavyFigure(rook.Before()));
}

} // namespace
} // namespace quillon::test
