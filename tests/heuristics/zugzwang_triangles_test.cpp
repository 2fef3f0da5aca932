// SH_ZUGZWANGTRIANGLES: the king's triangle, and the pattern that a capture or a pawn move breaks.

#include "heuristics/zugzwang_triangles.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

constexpr const char* kTriangle = "k7/p7/P7/3K4/8/8/7P/R7";

TEST(ZugzwangTriangles, TheKingStaysWithinTheTriangle) {
    CHeuristicLine line(kTriangle, 21, SH_ZUGZWANGTRIANGLES);
    line.Context().m_nZugzwangTriangle1 = String2Square("d6");
    line.Context().m_nZugzwangTriangle2 = String2Square("c6");
    const auto moves = line.Generated();
    EXPECT_TRUE(moves.contains("Kd5-d6") && moves.contains("Kd5-c6") && moves.contains("Kd5-c5"));
    EXPECT_FALSE(moves.contains("Kd5-e4"));
    EXPECT_FALSE(moves.contains("h2-h3"));
    EXPECT_TRUE(line.m_bDoubtful);
    line.Context().m_zugzwangMove = ParseMove("h2-h3", true); // what won before is tried again
    EXPECT_TRUE(line.Generated().contains("h2-h3"));
}

TEST(ZugzwangTriangles, WithoutAStepOrWithoutATriangleAllMovesAreWanted) {
    CHeuristicLine line(kTriangle, 21, SH_ZUGZWANGTRIANGLES);
    EXPECT_TRUE(line.Generated().empty());
    line.Context().m_nZugzwangTriangle1 = String2Square("h8");
    line.Context().m_nZugzwangTriangle2 = String2Square("g8");
    EXPECT_TRUE(line.Generated().empty());
    EXPECT_FALSE(line.m_bDoubtful);
}

TEST(ZugzwangTriangles, TheStructureHasToStand) {
    CHeuristicLine line("k7/p6p/P7/3K4/8/8/6PP/R7", 21, SH_ZUGZWANGTRIANGLES);
    line.Play("Kd5-d6 Ka8-b8");
    EXPECT_TRUE(StillFitsZugzwangTriangles(line.Now()));
    CHeuristicLine pawn("k7/p6p/P7/3K4/8/8/6PP/R7", 21, SH_ZUGZWANGTRIANGLES);
    pawn.Play("Kd5-d6 h7-h6");
    EXPECT_FALSE(StillFitsZugzwangTriangles(pawn.Now()));
    CHeuristicLine capture("k7/p6p/P7/3K4/7r/8/6PP/R7", 21, SH_ZUGZWANGTRIANGLES);
    capture.Play("Kd5-d6 Rh4:h2");
    EXPECT_FALSE(StillFitsZugzwangTriangles(capture.Now()));
}

} // namespace
} // namespace quillon::test
