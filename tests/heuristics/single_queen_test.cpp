// A white queen left alone.

#include "heuristics/single_queen.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

bool SavesQueen(std::string_view placement, std::string_view moves, std::uint32_t mask) {
    CHeuristicLine line(placement, 21, mask);
    line.Play(moves);
    DetectSingleQueen(line.Now());
    EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
    return line.Has(SH_SAVEQUEENROOK);
}

TEST(SingleQueen, SavesTheLastFigureAgainstANewQueenThatIsOutOfReach) {
    EXPECT_TRUE(SavesQueen("8/pppk4/8/8/8/K7/3p4/5N2", "Ka3-b2 d2-d1Q Nf1-h2 c7-c6", SH_3MOVESTOMATE));
    EXPECT_FALSE(SavesQueen("8/pppk4/8/8/8/K7/3p4/5R2", "Ka3-b2 d2-d1Q Rf1-f4 c7-c6", SH_3MOVESTOMATE)) << "a check";
}

TEST(SingleQueen, OtherwiseItIsSilent) {
    constexpr const char* kFigures = "1k6/ppp5/8/8/8/K7/3p4/5RB1";
    EXPECT_FALSE(SavesQueen(kFigures, "Ka3-b2 d2-d1Q Rf1-f2 c7-c6", SH_3MOVESTOMATE)) << "two figures";
    constexpr const char* kOne = "1k6/ppp5/8/8/8/K7/3p4/5R2";
    EXPECT_FALSE(SavesQueen(kOne, "Ka3-b2 d2-d1Q Rf1-f2 Qd1-d8", SH_3MOVESTOMATE)) << "the queen herself moved";
    EXPECT_FALSE(SavesQueen(kOne, "Ka3-b2 d2-d1R Rf1-f2 c7-c6", SH_3MOVESTOMATE)) << "no queen";
    EXPECT_FALSE(SavesQueen(kOne, "Ka3-b2 d2-d1Q Rf1-f2 c7-c6", 0)) << "no heuristics";
}

TEST(SingleQueen, DistanceOfTheQueenFromHerKing) {
    CHeuristicLine far("k7/8/8/8/8/8/8/K5Q1", 21, 0), near("k7/8/8/8/8/8/8/K2Q4", 21, 0),
        none("k7/8/8/8/8/8/8/K2R4", 21, 0);
    EXPECT_TRUE(IsQueenFarFromItsKing(far.Now()));
    EXPECT_FALSE(IsQueenFarFromItsKing(near.Now()));
    EXPECT_FALSE(IsQueenFarFromItsKing(none.Now()));
}

} // namespace
} // namespace quillon::test
