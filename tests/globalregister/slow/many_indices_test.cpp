// Every index of every type of four men, 200 million, and ten million of five to seven men.

#include <gtest/gtest.h>

#include "../indexing_walk.h"

namespace quillon {
namespace {

TEST(PositionIndexing, EveryIndexOfFourMenNamesItsPosition) {
    for (const std::string& type : indexing_reference::TypesOf(2))
        EXPECT_EQ(WalkIndices(type, 0, 1), indexing_reference::CountPlacements(type)) << type;
}

TEST(PositionIndexing, MillionsOfIndicesOfFiveToSevenMenNameTheirPositions) { SampleIndices(404, 5000, 2000); }

} // namespace
} // namespace quillon
