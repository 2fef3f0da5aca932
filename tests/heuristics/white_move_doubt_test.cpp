// What is said of a white move just made.

#include "heuristics/white_move_doubt.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

std::uint32_t Doubt(std::string_view placement, std::string_view moves, std::uint32_t mask, int nPlies = 21) {
    CHeuristicLine line(placement, nPlies, mask);
    line.Play(moves);
    return FindDoubtAfterWhiteMove(line.Now());
}

TEST(WhiteMoveDoubt, AKingThatSimplyLeavesTheEdgeIsDoubt) {
    constexpr const char* kEdge = "k7/8/8/8/8/8/6PP/6K1";
    EXPECT_NE(Doubt(kEdge, "g2-g3", SH_KEEPKINGONTHEEDGE), 0u);
    EXPECT_EQ(Doubt(kEdge, "g2-g3", SH_KEYLINE), 0u) << "nothing keeps him there";
    EXPECT_EQ(Doubt(kEdge, "g2-g3", 0), 0u);
    EXPECT_EQ(Doubt(kEdge, "g2-g3", SH_KEEPKINGONTHEEDGE, 13), 0u) << "left to the node itself";
    EXPECT_EQ(Doubt("k7/8/8/8/8/8/8/K6R", "Rh1-h8", SH_KEEPKINGONTHEEDGE), 0u) << "a check";
}

TEST(WhiteMoveDoubt, AKingWithoutAMoveIsNoDoubt) {
    EXPECT_EQ(Doubt("k7/p1P5/P7/8/8/8/6PP/K7", "g2-g3", SH_KEEPKINGONTHEEDGE), 0u);
}

bool Sweeps(std::string_view placement, std::string_view moves) {
    CHeuristicLine line(placement, 21, SH_SWEEPINGWHITEROOK | SH_3MOVESTOMATE);
    line.Play(moves);
    const bool bSweeps = StillSweeps(line.Now());
    (void)FindDoubtAfterWhiteMove(line.Now());
    EXPECT_EQ(line.Has(SH_SWEEPINGWHITEROOK), bSweeps);
    EXPECT_TRUE(line.Has(SH_3MOVESTOMATE));
    EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
    return bSweeps;
}

TEST(WhiteMoveDoubt, TheRookSweepsAlongTheFirstRank) {
    constexpr const char* kRook = "k7/8/8/4p3/3P4/8/3p4/R6K";
    EXPECT_TRUE(Sweeps(kRook, "Ra1-d1"));
    EXPECT_FALSE(Sweeps(kRook, "Ra1-a2"));
    EXPECT_TRUE(Sweeps(kRook, "Kh1-g1"));
    EXPECT_FALSE(Sweeps(kRook, "d4:e5")) << "a capture that has nothing to do with it";
    EXPECT_TRUE(Sweeps("k7/8/8/8/8/8/8/R3n2K", "Ra1:e1"));
    EXPECT_TRUE(Sweeps("k7/8/8/8/8/8/3pK3/R7", "Ke2:d2")) << "a pawn that was about to promote";
}

TEST(WhiteMoveDoubt, AKingRecedesWhenHeGoesFurtherOffForNothing) {
    CHeuristicLine line("k7/8/2K5/8/8/8/8/8", 9, 0), takes("k7/8/2K5/3p4/8/8/8/8", 9, 0);
    const auto recedes = [](CHeuristicLine& l, std::string_view text) {
        return RecedesFromBlackKing(l.Now(), ParseMove(text, true));
    };
    EXPECT_TRUE(recedes(line, "Kc6-d5"));
    EXPECT_FALSE(recedes(line, "Kc6-c7"));
    EXPECT_FALSE(recedes(takes, "Kc6:d5"));
}

} // namespace
} // namespace quillon::test
