// The expected answer of a problem.

#include <gtest/gtest.h>
#include <string>

#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

std::unique_ptr<ChessProblem> ReadAnswer(std::string_view answer) {
    return ReadBody("FEN: 8/8/8/4k3/8/8/8/3QK3\n" + std::string(answer));
}

std::string AnswerMessage(std::string_view answer) {
    return BodyMessage("FEN: 8/8/8/4k3/8/8/8/3QK3\n" + std::string(answer));
}

/// Squares as numbers, promotion kind behind them.
std::string Written(const std::vector<TMove>& moves) {
    std::string text;
    for (const TMove& move : moves)
        text += (text.empty() ? "" : " ") + std::to_string(move.m_nFrom) + "-" + std::to_string(move.m_nTo) +
                (move.m_nPromotion != 0 ? "=" + std::to_string(move.m_nPromotion) : "");
    return text;
}

TEST(ProblemAnswer, KeysOfEverySpelling) {
    for (const char* name : {"Answer", "SOLUTION", "a"}) {
        const auto problem = ReadAnswer(std::string(name) + ":  Qd1-d8,  Ke1:e2");
        EXPECT_EQ(Written(problem->answer), "3-59 4-12") << name;
        EXPECT_EQ(problem->flags, kFlagAnswer) << name;
        EXPECT_TRUE(problem->expectedWhiteMoves.empty()) << name;
    }
}

TEST(ProblemAnswer, CommasAreOptional) {
    EXPECT_EQ(Written(ReadAnswer("A: Qd1-d8 e2-e4, f2-f3")->answer), "3-59 12-28 13-21");
    EXPECT_EQ(Written(ReadAnswer("A: , Qd1-d8,")->answer), "3-59");
    EXPECT_EQ(Written(ReadAnswer("A: ")->answer), "");
}

TEST(ProblemAnswer, FigureLettersAreNotChecked) {
    EXPECT_EQ(Written(ReadAnswer("A: Zd1-d8, d1-d8")->answer), "3-59 3-59");
}

TEST(ProblemAnswer, Promotions) {
    EXPECT_EQ(Written(ReadAnswer("A: a7-a8Q, b7:c8n, Pa7-a8w")->answer), "48-56=12 49-58=16 48-56=8");
    EXPECT_EQ(AnswerMessage("A: a7-a8x"), "Unknown figure letter: X");
}

TEST(ProblemAnswer, Castlings) {
    EXPECT_EQ(Written(ReadAnswer("A: 0-0, 0-0-0, Qd1-d8, 0-0")->answer), "4-6 4-2 3-59 4-6");
}

TEST(ProblemAnswer, CastlingFailures) {
    EXPECT_EQ(AnswerMessage("A: 0:0"), "Hyphen expected to separate correct answer elements");
    EXPECT_EQ(AnswerMessage("A: 0-1"), "Invalid correct answer: 1");
    EXPECT_EQ(AnswerMessage("A: 0-0 Qd1-d8"),
              "Comma should separate various solutions of the problem, but encountered: Qd1");
    EXPECT_EQ(AnswerMessage("A: 0-0-0-0"),
              "Comma should separate various solutions of the problem, but encountered: -");
    EXPECT_EQ(AnswerMessage("A: 0-0-5"), "Comma should separate various solutions of the problem, but encountered: -");
}

TEST(ProblemAnswer, MoveFailures) {
    EXPECT_EQ(AnswerMessage("A Qd1-d8"), "Colon expected after correct answer identifier.");
    EXPECT_EQ(AnswerMessage("A: Moves: Qd1-d8"), "Invalid correct answer ('from' element): MOVES");
    EXPECT_EQ(AnswerMessage("A: d"), "Invalid correct answer ('from' element): D");
    EXPECT_EQ(AnswerMessage("A: Qd1-d8+"), "Invalid correct answer ('from' element): +");
    EXPECT_EQ(AnswerMessage("A: Qd1d8"), "Invalid correct answer ('from' element): QD1D8");
    EXPECT_EQ(AnswerMessage("A: Qd1 d8"), "Hyphen expected to separate correct answer elements");
    EXPECT_EQ(AnswerMessage("A: Qd1-Qd8x"), "Invalid correct answer ('to' element): QD8X");
    EXPECT_EQ(AnswerMessage("A: Qd1-8"), "Invalid correct answer ('to' element): 8");
}

TEST(ProblemAnswer, SquaresAreReckonedInEightBitsAndNotChecked) {
    EXPECT_EQ(Written(ReadAnswer("A: a9-z1")->answer), "64-25");
    EXPECT_EQ(Written(ReadAnswer("A: a0-aa")->answer), "248-128"); // 8 * ('0' - '1') and 8 * ('A' - '1') in eight bits
}

TEST(ProblemAnswer, ExpectedWhiteMoves) {
    for (const char* name : {"ExpectedSortWhiteMoves", "SWM"}) {
        const auto problem = ReadAnswer(std::string(name) + ": Qd1-d8, Ke1-e2");
        EXPECT_EQ(Written(problem->expectedWhiteMoves), "3-59 4-12") << name;
        EXPECT_EQ(problem->flags, 0x200u) << name;
        EXPECT_TRUE(problem->answer.empty()) << name;
    }
    EXPECT_EQ(ReadAnswer("ExpectedSortWhiteMovesOnly: Qd1-d8")->flags, 0x200u | 0x400u);
}

TEST(ProblemAnswer, ThereIsOneSection) {
    // The name of a second one is taken for a square with its figure, and "Ke1" for a promotion to it.
    EXPECT_EQ(AnswerMessage("A: Qd1-d8 SWM: Ke1-e2"), "Unknown figure letter: 1");
    EXPECT_EQ(AnswerMessage("A: Qd1-d8 Solution: Ke1-e2"), "Invalid correct answer ('from' element): SOLUTION");
}

} // namespace
} // namespace quillon
