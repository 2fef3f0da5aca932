// SH_KEYSQUARE in the sort of white moves.

#include <algorithm>

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"
#include "search/move_sort.h"

namespace quillon::test {
namespace {

/// Place of a move in the sorted list.
int PlaceOf(std::string_view text, std::uint32_t mask, TSquare keySquare) {
    CHeuristicLine line("7k/7p/8/8/8/8/6PP/RR4K1", 21, mask);
    line.Context().m_nKeySquare = keySquare;
    TMove list[kMaxMoves];
    const int count = SortWhiteMoves(line.Now(), GenerateWhiteMoves(line.Now(), list), list, false).m_nMoves;
    const TMove wanted = ParseMove(text, true);
    const TMove* const found =
        std::find_if(list, list + count, [&](const TMove& move) { return SameMove(move, wanted); });
    return static_cast<int>(found - list);
}

TEST(KeySquare, AMoveToItComesEarlier) {
    const TSquare key = String2Square("d1");
    EXPECT_LT(PlaceOf("Rb1-d1", SH_KEYSQUARE, key), PlaceOf("Rb1-d1", SH_KEYLINE, key));
    EXPECT_EQ(PlaceOf("Rb1-d1", SH_KEYSQUARE, kNoSquare), PlaceOf("Rb1-d1", SH_KEYLINE, key)) << "none is named";
}

TEST(KeySquare, TheKingIsDrawnToIt) {
    const TSquare key = String2Square("d1");
    EXPECT_LT(PlaceOf("Kg1-f1", SH_KEYSQUARE, key), PlaceOf("Kg1-h1", SH_KEYSQUARE, key));
    EXPECT_LT(PlaceOf("Kg1-f1", SH_KEYSQUARE, key), PlaceOf("Kg1-f1", SH_KEYLINE, key));
}

} // namespace
} // namespace quillon::test
