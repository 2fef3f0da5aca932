// Squares in the texts of heuristics; the worth of men.

#include "heuristics/plain_text.h"

#include <gtest/gtest.h>

#include <array>

#include "heuristics/material.h"

namespace quillon::test {
namespace {

TEST(PlainText, SquaresAreNamedInCapitals) {
    EXPECT_EQ(SquareInCapitals(0), "A1");
    EXPECT_EQ(SquareInCapitals(35), "D5");
    EXPECT_EQ(SquareInCapitals(63), "H8");
    EXPECT_EQ(SquareInCapitals(kNoSquare), "");
    EXPECT_EQ(SquareInCapitals(64), "");
}

TEST(PlainText, SquaresAreReadInEitherCase) {
    for (int square = 0; square < kSquares; ++square)
        EXPECT_EQ(SquareNamed(SquareInCapitals(static_cast<TSquare>(square))), square);
    EXPECT_EQ(SquareNamed("d5"), 35);
    for (const char* text : {"", "d", "d55", "5d", "i1", "a0", "a9", "d 5"})
        EXPECT_EQ(SquareNamed(text), kNoSquare) << text;
}

TEST(Material, OfEachMan) {
    const std::array worth{WorthOf(kWhiteQueen), WorthOf(kBlackRook), WorthOf(kWhiteBishop), WorthOf(kBlackKnight),
                           WorthOf(kBlackPawn),  WorthOf(kWhiteKing), WorthOf(kNoFigure)};
    EXPECT_EQ(worth, (std::array{9, 5, 3, 3, 1, 0, 0}));
}

} // namespace
} // namespace quillon::test
