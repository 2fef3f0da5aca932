// Every index of every type of four men: 200 million positions.

#include <gtest/gtest.h>

#include "../indexing_walk.h"

namespace quillon {
namespace {

TEST(PositionIndexing, EveryIndexOfFourMenNamesItsPosition) {
    for (const std::string& type : indexing_reference::TypesOf(2))
        EXPECT_EQ(WalkIndices(type, 0, 1), indexing_reference::CountPlacements(type)) << type;
}

} // namespace
} // namespace quillon
