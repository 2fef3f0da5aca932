#pragma once
// Walks over all indices of a type, from index to position and back.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "globalregister/position_indexing.h"
#include "indexing_reference.h"

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

} // namespace quillon
