#include "globalregister/combination_mapping.h"

#include <array>
#include <gtest/gtest.h>

namespace quillon {
namespace {

// Walks all combinations in lexicographic order, made here by counting up, beside the mapping.
void CheckMapping(bool bPawns, int nMen, std::uint64_t nCount) {
    const CMappingCombinationIndexIntoSetBase& mapping = CombinationMapping(bPawns, static_cast<std::size_t>(nMen));
    ASSERT_EQ(mapping.GetCount(), nCount);
    const int n = bPawns ? 48 : 64, first = bPawns ? 8 : 0;
    std::array<int, 5> set{0, 1, 2, 3, 4};
    std::array<unsigned char, 5> squares{};
    const std::uint64_t nStep = 1 + nCount / 300000; // the largest take too long to compare all
    for (std::uint64_t index = 0; index < nCount; ++index) {
        bool bSame = true;
        for (std::size_t i = 0; i < static_cast<std::size_t>(nMen); ++i) {
            bSame = bSame && mapping.GetSet(index)[i] == set[i];
            squares[i] = static_cast<unsigned char>(set[i] + first);
        }
        if (index % nStep == 0 || index + 1 == nCount) {
            ASSERT_TRUE(bSame) << index;
            ASSERT_EQ(mapping.GetIndex(squares.data()), index);
        }
        int place = nMen - 1;
        while (place >= 0 && set[static_cast<std::size_t>(place)] == n - nMen + place)
            --place;
        if (place < 0) {
            ASSERT_EQ(index + 1, nCount);
            return;
        }
        int member = ++set[static_cast<std::size_t>(place)];
        for (++place; place < nMen; ++place)
            set[static_cast<std::size_t>(place)] = ++member;
    }
}

TEST(CombinationMapping, Figures) {
    CheckMapping(false, 2, 2016);
    CheckMapping(false, 3, 41664);
    CheckMapping(false, 4, 635376);
    CheckMapping(false, 5, 7624512);
}

TEST(CombinationMapping, Pawns) {
    CheckMapping(true, 2, 1128);
    CheckMapping(true, 3, 17296);
    CheckMapping(true, 4, 194580);
    CheckMapping(true, 5, 1712304);
}

TEST(CombinationMapping, TwoOfSixtyFour) {
    const unsigned char squares[] = {3, 10};
    EXPECT_EQ(CombinationMapping(false, 2).GetIndex(squares), 3u * (2 * 64 - 3 - 1) / 2 + 10 - 3 - 1);
}

} // namespace
} // namespace quillon
