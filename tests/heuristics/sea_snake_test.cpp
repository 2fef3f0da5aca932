// SH_SEASNAKE: the queen's moves alone, and when it is over.

#include "heuristics/sea_snake.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

constexpr const char* kQueen = "k7/p7/8/8/8/8/P7/1Q5K";

TEST(SeaSnake, OnlyTheQueenMoves) {
    CHeuristicLine line(kQueen, 21, SH_SEASNAKE);
    const auto moves = line.Generated();
    EXPECT_TRUE(moves.contains("Qb1-c1") && moves.contains("Qb1-b7"));
    EXPECT_FALSE(moves.contains("Kh1-g1"));
    EXPECT_FALSE(moves.contains("a2-a3"));
    EXPECT_TRUE(line.m_bDoubtful);
}

TEST(SeaSnake, ApproachAndTurnBackComeFirst) {
    CHeuristicLine line(kQueen, 21, SH_SEASNAKE);
    line.Context().m_nSeaSnakeApproach = String2Square("b6");
    line.Context().m_nSeaSnakeTurnBack = String2Square("g1");
    TMove list[kMaxMoves];
    ASSERT_GT(GenerateSeaSnakeMoves(line.Now(), list), 2);
    const std::set<int> first{list[0].m_nTo, list[1].m_nTo};
    EXPECT_EQ(first, (std::set<int>{String2Square("b6"), String2Square("g1")}));
}

TEST(SeaSnake, WithoutAQueenMoveAllMovesAreWanted) {
    CHeuristicLine line("k7/p7/8/8/8/8/P7/7K", 21, SH_SEASNAKE);
    EXPECT_TRUE(line.Generated().empty());
    EXPECT_FALSE(line.m_bDoubtful);
}

TEST(SeaSnake, EndsWhenFewPliesAreLeft) {
    CHeuristicLine longEnough(kQueen, 13, SH_SEASNAKE), tooShort(kQueen, 11, SH_SEASNAKE | SH_3MOVESTOMATE);
    EXPECT_TRUE(AppliesSeaSnake(longEnough.Now()));
    EXPECT_TRUE(longEnough.Has(SH_SEASNAKE));
    EXPECT_FALSE(AppliesSeaSnake(tooShort.Now()));
    EXPECT_EQ(tooShort.Now().m_nHeuristics, SH_3MOVESTOMATE);
    EXPECT_EQ(tooShort.Now().m_nHeurParams, ComputeHeurParams(tooShort.Now()));
}

TEST(SeaSnake, EndsWhenTheQueenIsLost) {
    CHeuristicLine line("kr6/p7/8/8/8/8/P7/1Q5K", 21, SH_SEASNAKE);
    line.Play("Kh1-g1 Rb8:b1");
    EXPECT_FALSE(AppliesSeaSnake(line.Now()));
    EXPECT_FALSE(line.Has(SH_SEASNAKE));
}

TEST(SeaSnake, EndsWhenAFileIsOpenedForAPawn) {
    const auto applies = [](std::string_view placement) {
        CHeuristicLine line(placement, 21, SH_SEASNAKE);
        line.Play("Qg1-g4 Ka8-b8 Qg4:c4 Kb8-a8");
        const bool bApplies = AppliesSeaSnake(line.Now());
        EXPECT_EQ(line.Has(SH_SEASNAKE), bApplies);
        return bApplies;
    };
    EXPECT_FALSE(applies("k7/8/2P5/8/2p5/8/8/6QK"));
    EXPECT_TRUE(applies("k7/8/8/8/2p5/8/2P5/6QK")) << "the queen herself stands before the pawn";
    EXPECT_TRUE(applies("k7/8/2P5/8/2p5/8/2p5/6QK")) << "another black pawn is left in the file";
    EXPECT_TRUE(applies("k7/8/8/8/2p5/8/8/6QK")) << "there is no white pawn";
}

TEST(SeaSnake, AppliesOnlyAfterTheMovesItIsLimitedTo) {
    CHeuristicLine line(kQueen, 21, SH_SEASNAKE);
    line.Analysis().m_seaSnakeAfterMoves = {ParseMove("Qb1-c1", true)};
    EXPECT_FALSE(AppliesSeaSnake(line.Now()));
    EXPECT_TRUE(line.Has(SH_SEASNAKE)) << "it may still come";
    line.Play("Qb1-c1 Ka8-b8");
    EXPECT_TRUE(AppliesSeaSnake(line.Now()));
}

} // namespace
} // namespace quillon::test
