#include "globalregister/combination_mapping.h"

#include <cassert>

namespace quillon {

namespace {

template <int N, int K, int M> const CMappingCombinationIndexIntoSetBase& Shared() {
    static const CMappingCombinationIndexIntoSet<N, K, unsigned char, M> mapping;
    return mapping;
}

using TShared = const CMappingCombinationIndexIntoSetBase& (*)();

constexpr TShared kOfFigures[] = {Shared<64, 2, 0>, Shared<64, 3, 0>, Shared<64, 4, 0>, Shared<64, 5, 0>};
constexpr TShared kOfPawns[] = {Shared<48, 2, 8>, Shared<48, 3, 8>, Shared<48, 4, 8>, Shared<48, 5, 8>};

} // namespace

const CMappingCombinationIndexIntoSetBase& CombinationMapping(bool bPawns, std::size_t nMen) {
    assert(nMen >= kMinGroup && nMen <= kMaxGroup);
    return (bPawns ? kOfPawns : kOfFigures)[nMen - kMinGroup]();
}

} // namespace quillon
