#include "core/packed_move.h"

#include <set>

#include <gtest/gtest.h>

namespace quillon::test {
namespace {

TEST(PackedMove, EveryMoveComesBackAndHasAWordOfItsOwn) {
    std::set<std::uint16_t> words;
    for (int from = 0; from < kSquares; ++from)
        for (int to = 0; to < kSquares; ++to)
            for (const TFigure kind : {kNoFigure, kQueen, kRook, kBishop, kKnight}) {
                const TMove move{static_cast<std::uint8_t>(from), static_cast<std::uint8_t>(to), kind, 0};
                EXPECT_TRUE(SameMove(UnpackMove(PackMove(move)), move));
                words.insert(PackMove(move));
            }
    EXPECT_EQ(words.size(), 64u * 64u * 5u);
}

TEST(PackedMove, MarksAndScoresAreLeftOut) {
    const TMove marked{12, 28, static_cast<std::uint8_t>(kQueen | kMoveMark | kMoveDefersEdgeCheck), 77};
    const TMove plain = UnpackMove(PackMove(marked));
    EXPECT_EQ(plain.m_nPromotion, kQueen);
    EXPECT_EQ(plain.m_nEnPassant, 0);
}

TEST(PackedMove, ANullMoveOnTheFirstSquareIsZero) { EXPECT_EQ(PackMove(TMove{}), 0); }

} // namespace
} // namespace quillon::test
