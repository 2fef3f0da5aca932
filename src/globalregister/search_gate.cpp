// Which nodes of a search may load data, and not only use those that are loaded.

#include "core/heuristic_parameters.h"
#include "globalregister/global_registers.h"

namespace quillon {

namespace {

/// Heuristics that bound the play so much that a lookup saves little.
constexpr std::uint32_t kBoundingHeuristics =
    SH_ASSERTBLACKKINGSURROUNDED | SH_DONTLETFIGUREUNBLOCK | SH_KEEPKINGWITHINEXTEDGE | SH_KEEPKINGONTHEEDGE;

constexpr int kFewMen = 2;  // besides the kings: their tables are small
constexpr int kEarlier = 6; // half-moves, when all solutions are wanted

constexpr int kMostMen = 7; // with the kings
constexpr int kMostMenWithFrozen = kSquares;
constexpr int kMostMenTight = 5;
constexpr int kMostMenTightUnpacked = 4;

/// Half-moves left from which on a load pays for any table, and for a small one.
struct TLeastHalfMoves {
    int m_nAny, m_nSmall;
};

bool IsDeepEnough(const TChessboard& b, bool bAllSolutions) {
    const bool bQueenPlay = b.m_whiteQueens != 0 && (b.m_nHeuristics & kBoundingHeuristics) == 0;
    const TLeastHalfMoves least = bQueenPlay ? TLeastHalfMoves{19, 15} : TLeastHalfMoves{21, 19};
    const int n = b.m_nMoves + (bAllSolutions ? kEarlier : 0);
    if (n >= least.m_nAny)
        return true;
    return n >= least.m_nSmall && b.m_whiteQueens != 0 && WhiteMen(b) + BlackMen(b) <= kFewMen;
}

} // namespace

bool IsWorthLoading(const TChessboard& b, const TSearchGate& gate, int nUsePacked, bool bFrozenMen) {
    const int nMen = WhiteMen(b) + BlackMen(b) + 2;
    const int nMostUsual = bFrozenMen ? kMostMenWithFrozen : kMostMen;
    const int nMost = !gate.m_bTightLimits ? nMostUsual : nUsePacked < 2 ? kMostMenTightUnpacked : kMostMenTight;
    return nMen <= nMost && IsDeepEnough(b, gate.m_bAllSolutions);
}

} // namespace quillon
