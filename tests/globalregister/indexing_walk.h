#pragma once
// Walks over all indices of a type, from index to position and back.

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "globalregister/position_indexing.h"
#include "indexing_reference.h"
#include "support/random_positions.h"

namespace quillon {

/// Of every `step`-th index from `first` on.
///   Result  how many of them name a position.
inline std::uint64_t WalkIndices(const std::string& type, std::uint64_t first, std::uint64_t step) {
    const TPositionIndexing indexing(type);
    TChessboard b = EmptyChessboard();
    std::uint64_t nPositions = 0, nWrong = 0, nFirstWrong = 0;
    for (std::uint64_t index = first; index < indexing.GetSize(); index += step) {
        if (!indexing.GetPositionByIndex(index, b))
            continue;
        ++nPositions;
        if (indexing.GetIndex(b) != indexing_reference::InOrder(type, index) && nWrong++ == 0)
            nFirstWrong = index;
    }
    EXPECT_EQ(nWrong, 0u) << type << ", first " << nFirstWrong;
    return nPositions;
}

/// Letters of few kinds, so that groups of equal men come up.
inline std::string RandomType(std::mt19937_64& rng, std::size_t nLetters) {
    std::string type;
    while (type.size() < nLetters)
        type += type.empty() || reference::Draw(rng, 2) == 0 ? indexing_reference::kLetters[reference::Draw(rng, 10)]
                                                             : type.back();
    std::ranges::sort(type, {}, [](char letter) { return indexing_reference::kLetters.find(letter); });
    return type;
}

/// Indices drawn at random of nTypes types of five to seven men, half of those that can have combinations with them.
inline void SampleIndices(std::uint64_t seed, int nTypes, int nOfEach) {
    std::mt19937_64 rng(seed);
    TChessboard b = EmptyChessboard();
    for (int i = 0; i < nTypes; ++i) {
        TPositionIndexing indexing(RandomType(rng, 3 + reference::Draw(rng, 3)));
        const bool bGrouped = reference::Draw(rng, 2) == 0 && indexing.SetupCombinations();
        for (int k = 0; k < nOfEach; ++k) {
            const std::uint64_t index = reference::Draw(rng, indexing.GetSize());
            if (!indexing.GetPositionByIndex(index, b))
                continue;
            const std::uint64_t expected = bGrouped ? index : indexing_reference::InOrder(indexing.typeName, index);
            ASSERT_EQ(indexing.GetIndex(b), expected) << indexing.typeName << ' ' << index;
        }
    }
}

} // namespace quillon
