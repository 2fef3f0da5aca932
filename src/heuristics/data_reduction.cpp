#include "heuristics/data_reduction.h"

#include <array>

namespace quillon {

namespace {

using TWhiteCounts = std::array<std::uint8_t, 5>; // the cheapest first

void SetWhiteCounts(TChessboard& b, const TWhiteCounts& counts) {
    b.m_whitePawns = counts[0];
    b.m_whiteKnights = counts[1];
    b.m_whiteBishops = counts[2];
    b.m_whiteRooks = counts[3];
    b.m_whiteQueens = counts[4];
}

/// The next way to take men away, as a number that is counted down; false after the last, none being left.
bool StepDown(TWhiteCounts& counts, const TWhiteCounts& all) {
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
        if (counts[kind] != 0) {
            --counts[kind];
            return true;
        }
        counts[kind] = all[kind];
    }
    return false;
}

} // namespace

bool LowerCountersToData(TChessboard& b, bool (*isAvailable)(TPositionType)) {
    if (BlackMen(b) >= kMaxTypeMen)
        return false; // too many even with a single white man
    const TWhiteCounts all{b.m_whitePawns, b.m_whiteKnights, b.m_whiteBishops, b.m_whiteRooks, b.m_whiteQueens};
    for (TWhiteCounts counts = all; StepDown(counts, all);) {
        SetWhiteCounts(b, counts);
        if (WhiteMen(b) > 0 && WhiteMen(b) + BlackMen(b) <= kMaxTypeMen && isAvailable(GetPositionType(b)))
            return true;
    }
    SetWhiteCounts(b, all);
    return false;
}

} // namespace quillon
