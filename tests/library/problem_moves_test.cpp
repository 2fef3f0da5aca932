// The moves played in a problem without a stipulation.

#include <gtest/gtest.h>
#include <string>

#include "core/fen.h"
#include "core/notation.h"
#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

constexpr const char* kCastlings = "r3k2r/P7/8/3pP3/8/8/8/R3K2R";

std::string Text(const std::string& moves, const std::string& fen = kCastlings, const std::string& header = "7") {
    return "UTF-8 " + header + "\n{\nFEN: " + fen + "\n" + moves + "\n}\n";
}

/// Placement after the moves.
std::string After(const std::string& moves, const std::string& fen = kCastlings) {
    return WriteFEN(*ReadOne(Text("Moves: " + moves, fen))->currentPosition, false);
}

std::string ErrorOf(const std::string& moves) { return StrictMessage(Text("Moves: " + moves)); }

TEST(PlayedMoves, AreMadeOnTheBoardWhiteFirst) {
    const auto problem = ReadOne(Text("Moves:  Ra1-d1 Ra8:a7 Rd1:d5"));
    ASSERT_EQ(problem->playedPositions.size(), 3u);
    EXPECT_EQ(problem->playedPositions[0]->m_pPrevious, problem->originalPosition.get());
    EXPECT_EQ(problem->playedPositions[1]->m_pPrevious, problem->playedPositions[0].get());
    EXPECT_EQ(problem->originalPosition->m_nMoves, 255);
    EXPECT_EQ(problem->currentPosition->m_nMoves, 252);
    EXPECT_EQ(WriteFEN(*problem->currentPosition, false), "4k2r/r7/8/3RP3/8/8/8/4K2R");
    EXPECT_EQ(problem->currentPosition->m_blackRooks, 2);
    EXPECT_EQ(problem->currentPosition->m_blackPawns, 0);
}

TEST(PlayedMoves, WithoutThemTheCurrentPositionIsTheOriginalOne) {
    const auto problem = ReadOne(Text(""));
    EXPECT_EQ(problem->currentPosition, problem->originalPosition.get());
    EXPECT_TRUE(ReadOne(Text("moves:"))->playedPositions.empty());
}

TEST(PlayedMoves, CastlingIsOfTheSideToMove) {
    EXPECT_EQ(After("0-0 0-0-0"), "2kr3r/P7/8/3pP3/8/8/8/R4RK1");
    EXPECT_EQ(After("0-0-0 0-0"), "r4rk1/P7/8/3pP3/8/8/8/2KR3R");
}

TEST(PlayedMoves, PromotionAndEnPassant) {
    EXPECT_EQ(After("a7-a8N", "4k3/P7/8/8/8/8/8/4K3"), "N3k3/8/8/8/8/8/8/4K3");
    EXPECT_EQ(After("a7-a8", "4k3/P7/8/8/8/8/8/4K3"), "Q3k3/8/8/8/8/8/8/4K3");
    EXPECT_EQ(After("Ke1-e2 d7-d5 e5:d6", "4k3/3p4/8/4P3/8/8/8/4K3"), "4k3/8/3P4/8/8/8/4K3/8");
}

TEST(PlayedMoves, EndAtWhatCannotBeginAMove) {
    const auto problem = ReadOne(Text("Moves: Ke1-e2\nAnswer: Qd1-d8"));
    EXPECT_EQ(problem->playedPositions.size(), 1u);
    EXPECT_EQ(problem->answer.size(), 1u);
    EXPECT_EQ(ErrorOf("Ke1-e2, Ke8-e7"), "Closing bracket expected.");
    EXPECT_EQ(ErrorOf("Ke1-e2 SWM: Ke1-e2"), "Invalid 'from' position: SWM");
}

TEST(PlayedMoves, BelongToProblemsWithoutAStipulation) {
    EXPECT_EQ(StrictMessage(Text("Moves: Ke1-e2", kCastlings, "7 #3")), "Closing bracket expected.");
}

TEST(PlayedMoves, CannotStandBehindTheAnswer) {
    EXPECT_EQ(StrictMessage(Text("Answer: Ke1-e2\nMoves: Ke1-e2")), "Invalid correct answer ('from' element): MOVES");
}

TEST(PlayedMoves, EachFaultHasItsMessage) {
    EXPECT_EQ(StrictMessage(Text("Moves Ke1-e2")), "Colon expected after Moves section start.");
    EXPECT_EQ(ErrorOf("0:0"), "Hyphen expected.");
    EXPECT_EQ(ErrorOf("0-1"), "Incorrect castling symbol: 1");
    EXPECT_EQ(ErrorOf("0-0-1"), "Incorrect castling symbol: 1");
    EXPECT_EQ(ErrorOf("Ki1-e2"), "Invalid 'from' position: KI1");
    EXPECT_EQ(ErrorOf("e9-e2"), "Invalid 'from' position: E9");
    EXPECT_EQ(ErrorOf("Ke1,e2"), "Invalid lexem encountered: ,");
    EXPECT_EQ(ErrorOf("Ke1-e0"), "Invalid 'to' position: E0");
    EXPECT_EQ(ErrorOf("Ke1-e2e3"), "Invalid 'to' position: E2E3");
    EXPECT_EQ(ErrorOf("a7-a8X"), "Unknown figure letter: X");
    EXPECT_EQ(ErrorOf("Ke1-e3"), "Illegal move: e1-e3");
    EXPECT_EQ(ErrorOf("e5:d6"), "Illegal move: e5-d6"); // no double step has been made
}

TEST(PlayedMoves, AreBoundByThePliesOfAPosition) {
    std::string moves;
    for (int i = 0; i < 64; ++i)
        moves += " Ke1-e2 Ke8-e7 Ke2-e1 Ke7-e8";
    const std::string position = "4k3/8/8/8/8/8/8/4K3";
    EXPECT_EQ(StrictMessage(Text("Moves:" + moves, position)), "Illegal move: e7-e8"); // the 256th
    const std::string shorter = moves.substr(0, moves.rfind(' '));
    EXPECT_EQ(ReadOne(Text("Moves:" + shorter, position))->currentPosition->m_nMoves, 0);
}

} // namespace
} // namespace quillon
