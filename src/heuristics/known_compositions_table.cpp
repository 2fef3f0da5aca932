#include "heuristics/known_compositions_table.h"

#include <algorithm>
#include <array>

namespace quillon {

namespace {

constexpr std::array kOptionWords{
    TKnownRow{"8/p5p1/4K2p/2p2Pb1/P1NkN1p1/1P1B4/p1P3P1/8", "DontLetPromotedQueenMove NO"},
    TKnownRow{"r5k1/1p1p2p1/N7/1p4N1/1p4p1/8/7Q/bK4n1", "LFQMDepth(#3)"},
};

constexpr std::array kSortLines{
    TKnownRow{"6Q1/8/8/5r2/2p5/4K3/7p/7k", "1. Qg8-h7 Rf5-g5 2. Ke3-f3 c4-c3 3. Qh7-c2 "},
};

// Stages of one ending, the cage on h1.
constexpr std::array kEndings{
    TKnownRow{"8/8/8/8/3N1p2/6pB/5pPb/3K1k1n", "Nd4-f3"},
    TKnownRow{"8/8/8/8/5p2/5NpB/3K1pPb/5k1n", "Kd2-d1"},
    TKnownRow{"8/8/8/8/8/5NpB/3K1pPb/5k1n", "Kd2-d1"},
};

constexpr bool IsSorted(std::span<const TKnownRow> rows) {
    return std::ranges::is_sorted(rows, {}, &TKnownRow::m_placement);
}
static_assert(IsSorted(kOptionWords) && IsSorted(kSortLines) && IsSorted(kEndings));

} // namespace

std::span<const TKnownRow> KnownOptionWords() { return kOptionWords; }
std::span<const TKnownRow> KnownSortLines() { return kSortLines; }
std::span<const TKnownRow> KnownEndings() { return kEndings; }

} // namespace quillon
