#include "heuristics/thread_demand.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr int kMostDemanded = 127;
constexpr int kFewForcingMoves = 2;

int GoodMoves(const TThreadDemandInput& in) {
    const int good = in.m_nGoodMoves, forcing = in.m_nForcingMoves;
    return good < forcing ? good + 2 * (forcing - good) / 3 : good;
}

int WantedThreads(const TThreadDemandInput& in) {
    const int n = in.m_nThreads, moves = in.m_nMoves, good = GoodMoves(in);
    if (n < moves && moves <= 2 * n && n < 2 * in.m_nProcessors) {
        const bool bSlowPlay = in.m_bPawnsOnly && in.m_nForcingMoves < kFewForcingMoves;
        return std::min({bSlowPlay ? n * 3 / 2 : 2 * n, moves, 2 * in.m_nProcessors});
    }
    if (n < good)
        return std::min((in.m_bLineChecker ? 3 : 2) * n, good);
    return good == 0 && moves > 8 * n ? n + n / 2 : 0;
}

} // namespace

/// Half of one more thread is none, and the most that may be demanded may be there already.
int ComputeThreadDemand(const TThreadDemandInput& in) {
    const int wanted = std::min(WantedThreads(in), kMostDemanded);
    return wanted > in.m_nThreads ? wanted : 0;
}

} // namespace quillon
