// How moves are dealt to threads.

#include "parallel/group_shape.h"

#include <set>

#include <gtest/gtest.h>

namespace quillon::test {
namespace {

std::vector<TMove> SomeMoves(int nMoves) {
    std::vector<TMove> moves;
    for (int i = 0; i < nMoves; ++i)
        moves.push_back({static_cast<std::uint8_t>(i % 64), static_cast<std::uint8_t>(i / 64), 0, 0});
    return moves;
}

TEST(GroupShape, NoThreadWithoutAMove) {
    EXPECT_EQ(GroupSize(3, 4, 0), 3);
    const std::vector<TMove> moves = SomeMoves(3);
    const auto hands = DealMoves(moves.data(), 3, GroupSize(3, 4, 0));
    ASSERT_EQ(hands.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_EQ(hands[i].size(), 1u);
        EXPECT_TRUE(SameMove(hands[i][0], moves[i]));
    }
}

TEST(GroupShape, SixtyFourAtMost) {
    EXPECT_EQ(GroupSize(65, 64, 0), 64);
    EXPECT_EQ(GroupSize(200, 127, 0), 64);
    const auto hands = DealMoves(SomeMoves(65).data(), 65, 64);
    EXPECT_EQ(hands[0].size(), 2u);
    for (std::size_t i = 1; i < 64; ++i)
        EXPECT_EQ(hands[i].size(), 1u);
}

TEST(GroupShape, ALimitCountsFromOneToTheSize) {
    EXPECT_EQ(GroupSize(20, 8, 4), 4);
    EXPECT_EQ(GroupSize(20, 8, 1), 1);
    EXPECT_EQ(GroupSize(20, 8, 0), 8);
    EXPECT_EQ(GroupSize(20, 8, 8), 8);
    EXPECT_EQ(GroupSize(20, 8, 12), 8);
}

TEST(GroupShape, MovesAreDealtLikeCards) {
    const std::vector<TMove> moves = SomeMoves(40);
    const auto hands = DealMoves(moves.data(), 40, 7);
    for (std::size_t j = 0; j < 40; ++j)
        EXPECT_TRUE(SameMove(hands[j % 7].at(j / 7), moves[j]));
}

TEST(GroupShape, EveryThreadOfTheTreeHasItsOwnNumber) {
    for (const int wanted : {2, 3, 4, 16}) {
        std::set<std::uint64_t> used;
        std::vector<std::uint32_t> level;
        for (int i = 0; i < wanted; ++i) {
            used.insert(static_cast<std::uint64_t>(i));
            level.push_back(static_cast<std::uint32_t>(i));
        }
        std::size_t count = level.size();
        for (int depth = 1; depth <= 3; ++depth) {
            std::vector<std::uint32_t> next;
            for (const std::uint32_t parent : level)
                for (int i = 0; i < wanted; ++i) {
                    const std::uint64_t number =
                        FirstThreadNumber(depth, parent, wanted, wanted) + static_cast<std::uint64_t>(i);
                    used.insert(number);
                    next.push_back(static_cast<std::uint32_t>(number));
                }
            level = next;
            count += level.size();
            EXPECT_EQ(used.size(), count) << wanted << " threads, level " << depth;
        }
    }
}

TEST(GroupShape, NumbersBeyondTheLastMeanNoThreads) {
    EXPECT_LE(FirstThreadNumber(2, 127, 64, 64), kLastThreadNumber);
    EXPECT_GT(FirstThreadNumber(5, 500'000, 64, 64), kLastThreadNumber);
    EXPECT_GT(FirstThreadNumber(200, 1, 127, 64), kLastThreadNumber);
    EXPECT_GT(FirstThreadNumber(2, 1, 4, 4), kLastThreadNumber); // of a thread that is of no group one level up
}

TEST(GroupShape, StacksGrowWithTheLengthFromAMegabyteOn) {
    EXPECT_EQ(ThreadStackBytes(40), std::size_t{1} << 20);
    EXPECT_EQ(ThreadStackBytes(600), 1'228'800u);
}

} // namespace
} // namespace quillon::test
