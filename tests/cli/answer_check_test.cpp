// Keys against the answer that a library expects.

#include "cli/answer_check.h"

#include <gtest/gtest.h>

#include "core/fen.h"

namespace quillon {
namespace {

constexpr TMove kE2E4{12, 28, 0, 0};
constexpr TMove kD2D4{11, 27, 0, 0};
constexpr TMove kA7A8{48, 56, 0, 0};
constexpr TMove kA7A8Queen{48, 56, kQueen, 0};
constexpr TMove kA7A8Knight{48, 56, kKnight, 0};

TSolvingResult Found(const std::vector<TMove>& keys, bool bComplete) {
    TSolvingResult result;
    for (const TMove& key : keys)
        result.m_solutions.push_back({key, "", "1"});
    result.m_bComplete = bComplete;
    return result;
}

TEST(AnswerCheck, SameKeysInAnyOrder) {
    EXPECT_EQ(CheckAnswer(Found({kD2D4, kE2E4}, true), {kE2E4, kD2D4}, 0), EAnswerCheck::AsExpected);
    EXPECT_EQ(CheckAnswer(Found({kE2E4}, false), {kE2E4}, 1), EAnswerCheck::AsExpected);
}

TEST(AnswerCheck, KeyThatIsNotExpected) {
    EXPECT_EQ(CheckAnswer(Found({kD2D4}, false), {kE2E4}, 1), EAnswerCheck::Differs);
    EXPECT_EQ(CheckAnswer(Found({kE2E4, kD2D4}, true), {kE2E4}, 0), EAnswerCheck::Differs);
    EXPECT_EQ(CheckAnswer(Found({kE2E4}, true), {}, 0), EAnswerCheck::Differs);
}

TEST(AnswerCheck, ExpectedKeyThatIsNone) {
    EXPECT_EQ(CheckAnswer(Found({kE2E4}, true), {kE2E4, kD2D4}, 0), EAnswerCheck::Differs);
    EXPECT_EQ(CheckAnswer(Found({}, true), {kE2E4}, 1), EAnswerCheck::Differs);
}

TEST(AnswerCheck, RunThatEndedAtItsLimit) {
    EXPECT_EQ(CheckAnswer(Found({kE2E4}, false), {kE2E4, kD2D4}, 1), EAnswerCheck::AsExpected);
}

TEST(AnswerCheck, RunWithoutAProofSaysNothing) {
    EXPECT_EQ(CheckAnswer(Found({}, false), {kE2E4}, 1), EAnswerCheck::NotComparable);
    EXPECT_EQ(CheckAnswer(Found({}, false), {}, 0), EAnswerCheck::NotComparable);
    EXPECT_EQ(CheckAnswer(Found({kE2E4}, false), {kE2E4, kD2D4}, 0), EAnswerCheck::NotComparable);
}

TEST(AnswerCheck, NoSolutionAsExpected) { EXPECT_EQ(CheckAnswer(Found({}, true), {}, 1), EAnswerCheck::AsExpected); }

TEST(AnswerCheck, PromotionWithoutAFigureIsToAQueen) {
    EXPECT_TRUE(IsMoveMeant(kA7A8, kA7A8Queen));
    EXPECT_TRUE(IsMoveMeant(kA7A8Knight, kA7A8Knight));
    EXPECT_FALSE(IsMoveMeant(kA7A8, kA7A8Knight));
    EXPECT_FALSE(IsMoveMeant(kA7A8Queen, kA7A8Knight));
}

TEST(AnswerText, NamesTheMoves) {
    const TChessboard board = ChessboardFromFEN("4k3/8/8/8/8/8/3PP3/4K3");
    EXPECT_EQ(AnswerText({kE2E4, kD2D4}, board), "e2-e4, d2-d4");
    EXPECT_EQ(AnswerText({}, board), "no solution");
    EXPECT_EQ(AnswerText({TMove{200, 3, 0, 0}}, board), "a move beyond the board");
}

} // namespace
} // namespace quillon
