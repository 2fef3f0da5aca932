#include "platform/large_pages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <vector>

namespace quillon::test {
namespace {

using TNumbers = std::vector<std::uint64_t, CLargePageAllocator<std::uint64_t>>;

TEST(LargePages, MemoryOfAnySizeHoldsItsContents) {
    for (const std::size_t count : {std::size_t{1}, kLargePage / 8 - 1, kLargePage / 8, kLargePage / 8 * 3 + 5}) {
        TNumbers numbers(count);
        EXPECT_EQ(std::accumulate(numbers.begin(), numbers.end(), std::uint64_t{0}), 0u);
        std::iota(numbers.begin(), numbers.end(), 7u);
        EXPECT_EQ(numbers.back(), count + 6);
    }
}

TEST(LargePages, WhatFillsOneBeginsAtOne) {
    const TNumbers numbers(kLargePage / 8);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(numbers.data()) % kLargePage, 0u);
}

TEST(LargePages, TheHintChangesNothingInMemoryOfAnyPlace) {
    std::vector<char> bytes(5 * kLargePage, 'x');
    PreferLargePages(bytes.data() + 13, bytes.size() - 29);
    PreferLargePages(bytes.data(), 0);
    EXPECT_EQ(bytes, std::vector<char>(5 * kLargePage, 'x'));
}

} // namespace
} // namespace quillon::test
