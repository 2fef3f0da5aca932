#include "globalregister/combination_mapping.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <vector>

#include "combination_walk.h"
#include "indexing_reference.h"
#include "support/random_positions.h"

namespace quillon {
namespace {

// Combinations drawn at random, numbered by adding up how many come before.
void CheckSamples(bool bPawns, std::size_t nMen, std::uint64_t nCount) {
    const CMappingCombinationIndexIntoSetBase& mapping = CombinationMapping(bPawns, nMen);
    ASSERT_EQ(mapping.GetCount(), nCount);
    std::mt19937_64 rng(61);
    for (int i = 0; i < 2000; ++i) {
        std::set<int> drawn;
        while (drawn.size() < nMen)
            drawn.insert(reference::DrawInt(rng, bPawns ? 48 : 64));
        const std::vector<int> members(drawn.begin(), drawn.end());
        std::vector<unsigned char> squares;
        for (const int member : members)
            squares.push_back(static_cast<unsigned char>(member + (bPawns ? 8 : 0)));
        const std::uint64_t index = indexing_reference::RankOfCombination(members, bPawns ? 48 : 64);
        ASSERT_EQ(mapping.GetIndex(squares.data()), index);
        ASSERT_TRUE(std::equal(members.begin(), members.end(), mapping.GetSet(index)));
    }
}

TEST(CombinationMapping, Figures) {
    WalkCombinations(false, 2, 2016);
    WalkCombinations(false, 3, 41664);
    CheckSamples(false, 4, 635376);
    CheckSamples(false, 5, 7624512);
}

TEST(CombinationMapping, Pawns) {
    WalkCombinations(true, 2, 1128);
    WalkCombinations(true, 3, 17296);
    CheckSamples(true, 4, 194580);
    CheckSamples(true, 5, 1712304);
}

TEST(CombinationMapping, TwoOfSixtyFour) {
    const unsigned char squares[] = {3, 10};
    EXPECT_EQ(CombinationMapping(false, 2).GetIndex(squares), 3u * (2 * 64 - 3 - 1) / 2 + 10 - 3 - 1);
}

} // namespace
} // namespace quillon
