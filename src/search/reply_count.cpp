#include "search/reply_count.h"

#include "core/king_flights.h"

namespace quillon {

namespace {

constexpr int kPromotions = 4;
constexpr TMask kRank7 = kRank1 << 48;

int CountPawnMoves(const TFigureMasks& m) {
    const TMask pawns = m.m_pawns & m.m_black, empty = ~m.Occupied();
    const TMask steps = pawns >> 8 & empty;
    const TMask doubleSteps = (pawns & kRank7) >> 16 & empty & steps >> 8;
    const TMask left = (pawns & ~kFileA) >> 9 & m.m_white, right = (pawns & ~kFileH) >> 7 & m.m_white;
    const int promotions = CountSquares(steps & kRank1) + CountSquares(left & kRank1) + CountSquares(right & kRank1);
    return CountSquares(steps) + CountSquares(doubleSteps) + CountSquares(left) + CountSquares(right) +
           (kPromotions - 1) * promotions;
}

} // namespace

TReplyCount CountRepliesOnMasks(const TFigureMasks& m) {
    const TMask occupied = m.Occupied();
    int count = CountPawnMoves(m);
    for (TMask knights = m.m_knights & m.m_black; knights != 0;)
        count += CountSquares(KnightAttacks(TakeSquare(knights)) & ~m.m_black);
    for (TMask sliders = m.m_straightSliders & m.m_black; sliders != 0;)
        count += CountSquares(RookAttacks(TakeSquare(sliders), occupied) & ~m.m_black);
    for (TMask sliders = m.m_diagonalSliders & m.m_black; sliders != 0;)
        count += CountSquares(BishopAttacks(TakeSquare(sliders), occupied) & ~m.m_black);
    return {count, CountSquares(BlackKingFreeSquares(m))};
}

} // namespace quillon
