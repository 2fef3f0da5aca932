#include "heuristics/thread_demand.h"

#include <algorithm>

namespace quillon {

int ComputeThreadDemand(const TThreadDemandInput& in) {
    constexpr int kMostDemanded = 127;
    const int n = in.m_nThreads, moves = in.m_nMoves;
    int good = in.m_nGoodMoves;
    if (good < in.m_nFurtherCount)
        good += 2 * (in.m_nFurtherCount - good) / 3;

    if (n < moves && moves <= 2 * n && n < 2 * in.m_nProcessors) {
        const int demand = in.m_bPawnsOnly ? n * 3 / 2 : 2 * n;
        return std::min({demand, moves, 2 * in.m_nProcessors, kMostDemanded});
    }
    if (n < good) {
        const int demand = std::min((2 + (in.m_bLineChecker ? 1 : 0)) * n, 255);
        return std::min({demand, good, kMostDemanded});
    }
    if (good == 0 && moves > 8 * n)
        return n > 1 ? std::min(n + n / 2, kMostDemanded) : 0; // half of one more thread is none
    return 0;
}

} // namespace quillon
