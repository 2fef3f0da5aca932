#include "parallel/group_shape.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr std::size_t kLeastStack = std::size_t{1} << 20;
constexpr std::size_t kStackOfPly = 2048;

} // namespace

int GroupSize(int nMoves, int nWanted, int nLimit) {
    const int n = std::min(nMoves, nWanted);
    return std::min(nLimit > 0 && nLimit < n ? nLimit : n, kMostThreadsOfGroup);
}

std::uint64_t FirstThreadNumber(int nLevel, std::uint32_t nParent, int nWanted, int nSize) {
    const auto size = static_cast<std::uint64_t>(nSize);
    std::uint64_t base = static_cast<std::uint64_t>(nWanted), parents = 0;
    for (int level = 1; level < nLevel; ++level) {
        if (base > kLastThreadNumber)
            return std::uint64_t{kLastThreadNumber} + 1;
        parents = base;
        base = parents * (size + 1);
    }
    // (nParent - parents) * size + base, in an order in which nothing is negative: where a forced move has left a level
    // without a group, the parent's number lies below those of its level.
    return nParent * size + (base - parents * size);
}

std::vector<std::vector<TMove>> DealMoves(const TMove* moves, int nMoves, int nThreads) {
    std::vector<std::vector<TMove>> hands(static_cast<std::size_t>(nThreads));
    for (int j = 0; j < nMoves; ++j)
        hands[static_cast<std::size_t>(j % nThreads)].push_back(moves[j]);
    return hands;
}

std::size_t ThreadStackBytes(int nPlies) {
    return std::max(kLeastStack, static_cast<std::size_t>(nPlies) * kStackOfPly);
}

} // namespace quillon
