// Every combination of the mappings that are too large for each test run.

#include <gtest/gtest.h>

#include "../combination_walk.h"

namespace quillon {
namespace {

TEST(CombinationMapping, EveryCombinationOfFourAndFive) {
    WalkCombinations(false, 4, 635376);
    WalkCombinations(false, 5, 7624512);
    WalkCombinations(true, 4, 194580);
    WalkCombinations(true, 5, 1712304);
}

} // namespace
} // namespace quillon
