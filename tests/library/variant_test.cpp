#include "library/variant.h"

#include <gtest/gtest.h>

#include "core/chess_exception.h"
#include "core/square.h"

namespace quillon {
namespace {

constexpr TSquare Square(char file, int rank) { return SquareAt(file - 'a', rank - 1); }

Variant Parse(std::string_view text) {
    Variant variant;
    ParseVariantLine(variant, text);
    return variant;
}

std::string FailureOf(std::string_view text) {
    try {
        static_cast<void>(Parse(text));
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return {};
}

void ExpectMove(const VariantMove& move, TSquare from, TSquare to, std::string_view text, std::string_view comment) {
    EXPECT_EQ(move.move.m_nFrom, from);
    EXPECT_EQ(move.move.m_nTo, to);
    EXPECT_EQ(move.text, text);
    EXPECT_EQ(move.comment, comment);
}

TEST(VariantLine, ReadsNameMovesAndComments) {
    const Variant variant = Parse("{Main variant} Qd1-d8 Ke5-f5[only move] Qd8-f6");
    EXPECT_EQ(variant.name, "Main variant");
    ASSERT_EQ(variant.moves.size(), 3u);
    ExpectMove(variant.moves[0], kD1, kD8, "Qd1-d8", "");
    ExpectMove(variant.moves[1], Square('e', 5), Square('f', 5), "Ke5-f5", "only move");
    ExpectMove(variant.moves[2], kD8, Square('f', 6), "Qd8-f6", "");
}

TEST(VariantLine, WithoutBothBracesHasNoName) {
    EXPECT_EQ(Parse("e2-e4").name, "");
    EXPECT_EQ(Parse("e2-e4").moves.size(), 1u);
    EXPECT_EQ(Parse("}{ e2-e4").name, "");
    EXPECT_NE(FailureOf("{name e2-e4"), ""); // the name is read as a move
}

TEST(VariantLine, NameAloneHasNoMoves) {
    EXPECT_EQ(Parse("{x}").name, "x");
    EXPECT_TRUE(Parse("{x}").moves.empty());
    EXPECT_TRUE(Parse("").moves.empty());
}

TEST(VariantLine, CastlingIsOfTheSideToMove) {
    const Variant variant = Parse("{c} 0-0 0-0-0 0-0-0 0-0");
    ASSERT_EQ(variant.moves.size(), 4u);
    ExpectMove(variant.moves[0], kE1, kG1, "0-0", "");
    ExpectMove(variant.moves[1], kE8, kC8, "0-0-0", "");
    ExpectMove(variant.moves[2], kE1, kC1, "0-0-0", "");
    ExpectMove(variant.moves[3], kE8, kG8, "0-0", "");
}

TEST(VariantLine, SignsBehindAMoveAreKeptInItsTextOnly) {
    const Variant variant = Parse("{s} Qd1-d8+ Ke5-f5x++ a7:b8Q+[!]");
    ASSERT_EQ(variant.moves.size(), 3u);
    ExpectMove(variant.moves[0], kD1, kD8, "Qd1-d8+", "");
    ExpectMove(variant.moves[1], Square('e', 5), Square('f', 5), "Ke5-f5x++", "");
    ExpectMove(variant.moves[2], Square('a', 7), Square('b', 8), "a7:b8Q+", "!");
    EXPECT_EQ(variant.moves[2].move.m_nPromotion, kQueen);
}

TEST(VariantLine, CommentsMayHoldMovesAndRunToTheEnd) {
    const Variant variant = Parse("{c} e2-e4[Ke1 [ e7-e5] Kd2-d3[never closed Kd3");
    ASSERT_EQ(variant.moves.size(), 2u);
    ExpectMove(variant.moves[0], Square('e', 2), Square('e', 4), "e2-e4", "Ke1 [ e7-e5");
    ExpectMove(variant.moves[1], Square('d', 2), Square('d', 3), "Kd2-d3", "never closed Kd3");
}

TEST(VariantLine, EndsAtTheLineFeed) { EXPECT_EQ(Parse("{n} e2-e4\nrubbish").moves.size(), 1u); }

TEST(VariantLine, WhatCannotBeReadFails) {
    EXPECT_EQ(FailureOf("{n} x+"), "Empty string");
    EXPECT_NE(FailureOf("{n} e2-e"), "");
    EXPECT_NE(FailureOf("{n} e2-e9"), "");
    EXPECT_NE(FailureOf("{n} hello-world"), "");
}

} // namespace
} // namespace quillon
