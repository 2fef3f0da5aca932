#include "heuristics/idle_figures.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

bool IsIdle(std::string_view placement, std::string_view square, std::uint32_t mask = SH_3MOVESTOMATE) {
    CHeuristicLine line(placement, 9, mask);
    return IsIdleFigure(line.Now(), String2Square(square));
}

TEST(IdleFigures, LookAtNothingBesideTheKing) {
    EXPECT_TRUE(IsIdle("7k/8/8/8/8/8/8/KR6", "b1"));
    EXPECT_FALSE(IsIdle("7k/8/8/8/8/8/8/K5R1", "g1")) << "the file beside the king";
    EXPECT_TRUE(IsIdle("7k/8/6p1/6P1/8/8/8/K5R1", "g1")) << "its view is blocked";
    EXPECT_FALSE(IsIdle("7k/8/8/8/8/8/1B6/K7", "b2")) << "the king himself";
    EXPECT_TRUE(IsIdle("7k/8/8/8/8/2P5/1B6/K7", "b2"));
    EXPECT_FALSE(IsIdle("7k/8/8/6N1/8/8/8/K7", "g5"));
    EXPECT_TRUE(IsIdle("7k/8/8/8/8/8/6N1/K7", "g2"));
    EXPECT_FALSE(IsIdle("7k/8/8/8/8/8/6Q1/K7", "g2"));
}

TEST(IdleFigures, InThePassWithoutHeuristicsEachIsBusy) { EXPECT_FALSE(IsIdle("7k/8/8/8/8/8/8/KR6", "b1", 0)); }

} // namespace
} // namespace quillon::test
