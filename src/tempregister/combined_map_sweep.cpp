// The sweep of the hash table that removes the shortest subproblems.

#include <algorithm>
#include <mutex>
#include <new>

#include "tempregister/combined_map.h"
#include "tempregister/tagged_bucket.h"

namespace quillon {

namespace {

// Up to so many elements are taken out of an array one at a time; for more, the rest is copied.
constexpr std::size_t kMostTakenOut = 2;

struct TLimits {
    int m_nMate;
    int m_nNoMate;

    [[nodiscard]] bool Cover(const TCombinedElement& element) const {
        return element.second.nMovesMate <= m_nMate && element.second.nMovesNoMate <= m_nNoMate;
    }
};

// The array that survivors are copied to. Swapped with the bucket's own, it serves for the next bucket.
//   Threads: one sweep at a time uses it.
class CScratch {
  public:
    // Takes the elements out of the bucket by copying the rest.
    //   Errors  std::bad_alloc: the bucket is as it was.
    void CopySurvivors(TSortedElements& bucket, std::size_t survivors, const TLimits& limits) {
        constexpr std::size_t kFewest = 8;
        const std::lock_guard guard(m_mutex);
        const std::size_t needed = std::min(bucket.capacity(), std::max(kFewest, survivors * 3 / 2));
        m_array.clear();
        ReleaseExcess(needed);
        m_array.reserve(needed);
        for (const auto& element : bucket)
            if (!limits.Cover(element))
                m_array.emplace_hint(m_array.end(), element);
        m_array.swap(bucket);
        m_array.clear();
    }

  private:
    // One huge bucket must not lend its array to all that come after it.
    void ReleaseExcess(std::size_t needed) {
        constexpr std::size_t kTimes = 16;
        constexpr std::size_t kBeyond = 33;
        if (m_array.capacity() > kTimes * needed && m_array.capacity() >= needed + kBeyond)
            TSortedElements().swap(m_array);
    }

    std::mutex m_mutex;
    TSortedElements m_array;
};

CScratch& Scratch() {
    static CScratch scratch;
    return scratch;
}

void TakeOut(TSortedElements& bucket, const TLimits& limits) {
    for (auto element = bucket.begin(); element != bucket.end();)
        element = limits.Cover(*element) ? bucket.erase(element) : element + 1;
}

// matches: elements that are to go, some but not all.
void RemoveSome(TSortedElements& bucket, std::size_t matches, const TLimits& limits) {
    if (matches <= kMostTakenOut) {
        TakeOut(bucket, limits);
        return;
    }
    try {
        Scratch().CopySurvivors(bucket, bucket.size() - matches, limits);
    } catch (const std::bad_alloc&) {
        TakeOut(bucket, limits);
    }
}

std::uint32_t RemoveFrom(LargeBucket& bucket, const TLimits& limits) {
    const auto matches = static_cast<std::size_t>(
        std::ranges::count_if(bucket.Elements(), [&](const auto& element) { return limits.Cover(element); }));
    if (matches == bucket.Size())
        bucket.Clear();
    else if (matches != 0)
        bucket.Change([&](TSortedElements& elements) { RemoveSome(elements, matches, limits); });
    return static_cast<std::uint32_t>(matches);
}

// The elements behind a removed one move down.
std::uint32_t RemoveFrom(SmallBucket& bucket, const TLimits& limits) {
    TCombinedElement* const first = bucket.elements.data();
    TCombinedElement* const last = first + bucket.nElements;
    TCombinedElement* const end =
        std::remove_if(first, last, [&](const auto& element) { return limits.Cover(element); });
    bucket.nElements = static_cast<std::uint64_t>(end - first);
    return static_cast<std::uint32_t>(last - end);
}

} // namespace

std::uint32_t TRegisterCombinedMap::RemoveFromLarge(TTaggedWord& word, int nMateLimit, int nNoMateLimit) {
    LargeBucket& bucket = *PointerOf<LargeBucket>(word);
    const std::int64_t before = BytesOf(bucket);
    const std::uint32_t removed = RemoveFrom(bucket, {nMateLimit, nNoMateLimit});
    CountBytes(BytesOf(bucket) - before);
    if (bucket.Size() == 0)
        EmptyBucket(word);
    else if (bucket.Size() <= kSmallBucketElements / 2)
        ConvertToSmall(word);
    return removed;
}

std::uint32_t TRegisterCombinedMap::RemoveFromSmall(TTaggedWord& word, int nMateLimit, int nNoMateLimit) {
    SmallBucket& bucket = *PointerOf<SmallBucket>(word);
    const std::uint32_t removed = RemoveFrom(bucket, {nMateLimit, nNoMateLimit});
    if (bucket.nElements == 0)
        EmptyBucket(word);
    return removed;
}

// Without memory for the block the bucket stays large.
void TRegisterCombinedMap::ConvertToSmall(TTaggedWord& word) {
    try {
        SmallBucket* small = NewSmallBucket();
        LargeBucket* large = PointerOf<LargeBucket>(word);
        std::ranges::copy(large->Elements(), small->elements.begin());
        small->nElements = large->Size();
        word = WithPointer(word, small, false);
        CountBytes(kSmallBytes - BytesOf(*large));
        FreeBucket(large);
    } catch (const std::bad_alloc&) {
    }
}

std::uint32_t TRegisterCombinedMap::RemoveFromBucket(TTaggedWord& word, int nMateLimit, int nNoMateLimit) {
    if (IsLarge(word))
        return RemoveFromLarge(word, nMateLimit, nNoMateLimit);
    return PointerOf<SmallBucket>(word) == nullptr ? 0 : RemoveFromSmall(word, nMateLimit, nNoMateLimit);
}

std::uint32_t TRegisterCombinedMap::RemoveNMovers(int nMateLimit, int nNoMateLimit) {
    if (buckets.empty())
        return 0;
    std::uint32_t removed = 0;
    for (std::uint32_t i = 0; i < nBuckets; ++i) {
        removed += RemoveFromBucket(buckets[nNextBucket], nMateLimit, nNoMateLimit);
        nNextBucket = (nNextBucket + 1) & (nBuckets - 1);
    }
    return removed;
}

} // namespace quillon
