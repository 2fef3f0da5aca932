// The white queen's checks and mating squares.

#include "heuristics/queen_mates.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr int kPlies = 21;

TEST(QueenMates, CountsTheSquaresSheMatesFrom) {
    // a7, b7 beside the king, and c8 to h8.
    EXPECT_EQ(CountQueenMatingSquares(ChessboardFromFEN("k7/8/1K6/8/8/8/8/7Q")), 8);
    EXPECT_EQ(CountQueenMatingSquares(ChessboardFromFEN("k7/8/1K6/8/8/8/8/7R")), 0) << "no queen";
    EXPECT_EQ(CountQueenMatingSquares(ChessboardFromFEN("8/8/8/3k4/8/8/8/K6Q")), 0) << "no help";
    EXPECT_EQ(CountQueenMatingSquares(ChessboardFromFEN("k6r/8/1K6/8/8/8/8/7Q")), 3) << "a7, b7, and on the rook's h8";
}

TEST(QueenMates, TellsACheckOfTheQueen) {
    EXPECT_TRUE(HasQueenCheck(CSearchedPosition("k7/8/1K6/8/8/8/8/7Q", kPlies).Root()));
    EXPECT_FALSE(HasQueenCheck(CSearchedPosition("k7/8/8/8/8/8/8/K6R", kPlies).Root())) << "a rook's check";
    EXPECT_FALSE(HasQueenCheck(CSearchedPosition("8/8/8/3k4/8/8/PP6/QK6", kPlies).Root())) << "she cannot move";
    EXPECT_FALSE(HasQueenCheck(CSearchedPosition("8/7k/8/8/1b6/8/3Q4/4K3", kPlies).Root())) << "she is pinned";
}

TEST(QueenMates, ALoneRookGuardsTheKing) {
    EXPECT_TRUE(GuardsKingAlone(CSearchedPosition("6rk/8/7K/8/8/8/8/6Q1", kPlies).Root()));
    EXPECT_FALSE(GuardsKingAlone(CSearchedPosition("7k/8/7K/8/8/8/8/6Q1", kPlies).Root())) << "no rook";
    EXPECT_FALSE(GuardsKingAlone(CSearchedPosition("r6k/8/7K/8/8/8/8/6Q1", kPlies).Root())) << "not beside him";
    EXPECT_FALSE(GuardsKingAlone(CSearchedPosition("6rk/8/8/8/8/8/K7/6Q1", kPlies).Root())) << "no mate without it";
    EXPECT_FALSE(GuardsKingAlone(CSearchedPosition("6rk/8/7K/8/8/8/8/BNR3Q1", kPlies).Root())) << "three others";
    EXPECT_FALSE(GuardsKingAlone(CSearchedPosition("6rk/8/7K/8/8/8/8/6R1", kPlies).Root())) << "no queen";
}

} // namespace
} // namespace quillon::test
