#include "tempregister/bucket_count.h"

#include "tempregister/chessboard_register.h"
#include "tempregister/register_bucket.h"

namespace quillon {

namespace {

std::uint64_t ElementsOfBudget(std::uint64_t nBudgetMB) {
    constexpr std::uint64_t kMegabyte = 1024 * 1024;
    return nBudgetMB * kMegabyte / 100 * kPercentForElements / kBytesPerElement;
}

} // namespace

std::uint32_t BucketsByLength(int nPlies, std::uint64_t nBudgetMB) {
    constexpr int kShort = 15;
    constexpr int kLong = 23;
    constexpr std::uint64_t kModestBudgetMB = 8192;
    if (nPlies < kShort)
        return kShortAnalysisBuckets;
    return nPlies >= kLong && nBudgetMB > kModestBudgetMB ? kManyBuckets : kUsualBuckets;
}

std::uint32_t BucketCount(int nPlies, std::uint64_t nBudgetMB) {
    // A bucket takes the memory of eight elements as soon as it has one, and a crowded one a header besides: shared by
    // too few elements, that would be more than the budget. Where the usual number is too many, there are so few that
    // it weighs little.
    constexpr std::uint64_t kFewestElements = kSmallBucketElements;
    constexpr std::uint64_t kElementsOfReduced = 24;
    std::uint32_t nBuckets = BucketsByLength(nPlies, nBudgetMB);
    if (ElementsOfBudget(nBudgetMB) >= nBuckets * kFewestElements)
        return nBuckets;
    while (nBuckets > kFewestBuckets && ElementsOfBudget(nBudgetMB) < nBuckets * kElementsOfReduced)
        nBuckets /= 2;
    return nBuckets;
}

} // namespace quillon
