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

/// The rule as it is told, step by step and with negative numbers.
std::int64_t FirstNumberAsTold(int nLevel, std::int64_t parent, std::int64_t wanted, std::int64_t size) {
    std::int64_t b = wanted, p = 0;
    for (int i = 1; i < nLevel; ++i) {
        p = b;
        b = p * (size + 1);
    }
    return (parent - p) * size + b;
}

TEST(GroupShape, NumbersOfAGroup) {
    EXPECT_EQ(FirstThreadNumber(1, 0, 4, 4), 4u);
    EXPECT_EQ(FirstThreadNumber(1, 3, 4, 2), 10u) << "a capped group";
    EXPECT_EQ(FirstThreadNumber(2, 4, 4, 4), 20u);
    EXPECT_EQ(FirstThreadNumber(2, 1, 4, 4), 8u) << "of a thread of the root, behind a forced move";
    for (int level = 1; level <= 4; ++level)
        for (const int wanted : {2, 3, 16})
            for (int size = 2; size <= wanted; ++size)
                for (std::uint32_t parent = 0; parent < 300; parent += 7)
                    ASSERT_EQ(static_cast<std::int64_t>(FirstThreadNumber(level, parent, wanted, size)),
                              FirstNumberAsTold(level, parent, wanted, size))
                        << level << " " << parent << " " << wanted << " " << size;
}

/// What the search does not mind, and who gives commands by number should know.
TEST(GroupShape, ALevelLeftOutMayRepeatNumbers) {
    EXPECT_EQ(FirstThreadNumber(3, 1, 4, 4), FirstThreadNumber(2, 5, 4, 4));
}

TEST(GroupShape, EveryThreadOfAFullTreeHasItsOwnNumber) {
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
}

TEST(GroupShape, StacksGrowWithTheLengthFromAMegabyteOn) {
    EXPECT_EQ(ThreadStackBytes(40), std::size_t{1} << 20);
    EXPECT_EQ(ThreadStackBytes(600), 1'228'800u);
}

} // namespace
} // namespace quillon::test
