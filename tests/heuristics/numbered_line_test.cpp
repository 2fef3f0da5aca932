// A line told move by move: followed, and left.

#include "heuristics/numbered_line.h"

#include <gtest/gtest.h>

#include "core/generation.h"
#include "heuristics/forcing_moves.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kKings = "8/8/4k3/8/8/8/4K3/R7";

SortIndication Told(int nMove, TFigure figure, std::string_view square) {
    SortIndication told;
    told.m_nMove = nMove;
    told.m_figure = figure;
    told.m_nTo = String2Square(square);
    return told;
}

TMove MoveOf(std::string_view text) { return ParseMove(text, true); }

TEST(NumberedLine, NothingToldIsNoLine) {
    CSearchedPosition line(kKings, 9);
    EXPECT_FALSE(FollowsNumberedLine(line.Now()));
    EXPECT_FALSE(IsNumberedLineMove(line.Now(), MoveOf("Ra1-a5")));
}

TEST(NumberedLine, IsFollowedAsLongAsWhitePlaysIt) {
    CSearchedPosition line(kKings, 9);
    line.Analysis().m_sortIndications = {Told(1, kWhiteRook, "a5"), Told(2, kWhiteKing, "e3")};
    EXPECT_TRUE(FollowsNumberedLine(line.Now()));
    EXPECT_TRUE(IsNumberedLineMove(line.Now(), MoveOf("Ra1-a5")));
    EXPECT_FALSE(IsNumberedLineMove(line.Now(), MoveOf("Ke2-e3"))); // the second move
    line.Play("Ra1-a5 Ke6-d6");
    EXPECT_TRUE(FollowsNumberedLine(line.Now()));
    EXPECT_TRUE(IsNumberedLineMove(line.Now(), MoveOf("Ke2-e3")));
}

TEST(NumberedLine, IsLeftByAnotherMove) {
    CSearchedPosition line(kKings, 9);
    line.Analysis().m_sortIndications = {Told(1, kWhiteRook, "a5"), Told(2, kWhiteKing, "e3")};
    line.Play("Ra1-a4 Ke6-d6");
    EXPECT_FALSE(FollowsNumberedLine(line.Now()));
}

TEST(NumberedLine, AnIndicationForAnyMoveTellsNoLine) {
    CSearchedPosition line(kKings, 9);
    line.Analysis().m_sortIndications = {Told(0, kWhiteRook, "a5")};
    EXPECT_FALSE(IsNumberedLineMove(line.Now(), MoveOf("Ra1-a5")));
}

TEST(NumberedLine, AMoveToBeAvoidedIsNotTold) {
    CSearchedPosition line(kKings, 9);
    line.Analysis().m_sortIndications = {Told(1, kWhiteRook, "a5")};
    line.Analysis().m_sortIndications.front().m_bWorst = true;
    EXPECT_FALSE(IsNumberedLineMove(line.Now(), MoveOf("Ra1-a5")));
}

TEST(NumberedLine, TheMainVariantIsALine) {
    CSearchedPosition line(kKings, 9);
    line.Analysis().m_mainVariant = {{kWhiteRook, String2Square("a5")}, {kWhiteKing, String2Square("e3")}};
    line.Play("Ra1-a5 Ke6-d6");
    EXPECT_TRUE(FollowsNumberedLine(line.Now()));
    EXPECT_TRUE(IsNumberedLineMove(line.Now(), MoveOf("Ke2-e3")));
    EXPECT_FALSE(IsNumberedLineMove(line.Now(), MoveOf("Ke2-d3")));
}

TEST(NumberedLine, ItsNextMoveIsForcing) {
    CSearchedPosition line(kKings, 9, 1);
    line.Context().m_nFfmDepth = 2;
    TMove list[kMaxMoves];
    const int nChecks = GenerateForcingMoves(line.Now(), list);
    line.Analysis().m_sortIndications = {Told(1, kWhiteKing, "e3")};
    ASSERT_EQ(GenerateForcingMoves(line.Now(), list), nChecks + 1);
    EXPECT_EQ(WriteMove(list[nChecks], line.Now()), "Ke2-e3");
}

} // namespace
} // namespace quillon::test
