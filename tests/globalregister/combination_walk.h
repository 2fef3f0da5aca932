#pragma once
// Walks all combinations of a mapping in lexicographic order, made here by counting up.

#include <array>
#include <cstdint>
#include <gtest/gtest.h>

#include "globalregister/combination_mapping.h"

namespace quillon {

inline void WalkCombinations(bool bPawns, int nMen, std::uint64_t nCount) {
    const CMappingCombinationIndexIntoSetBase& mapping = CombinationMapping(bPawns, static_cast<std::size_t>(nMen));
    ASSERT_EQ(mapping.GetCount(), nCount);
    const int n = bPawns ? 48 : 64, first = bPawns ? 8 : 0;
    std::array<int, 5> set{0, 1, 2, 3, 4};
    std::array<unsigned char, 5> squares{};
    for (std::uint64_t index = 0; index < nCount; ++index) {
        bool bSame = true;
        for (std::size_t i = 0; i < static_cast<std::size_t>(nMen); ++i) {
            bSame = bSame && mapping.GetSet(index)[i] == set[i];
            squares[i] = static_cast<unsigned char>(set[i] + first);
        }
        ASSERT_TRUE(bSame) << index;
        ASSERT_EQ(mapping.GetIndex(squares.data()), index);
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

} // namespace quillon
