#include "tempregister/bucket_pool.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <new>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "platform/large_pages.h"

namespace quillon {

namespace {

/// A flag that is free or taken, by atomic exchange.
class CSpinGuard {
  public:
    explicit CSpinGuard(std::atomic<std::uint32_t>& flag) : m_flag(flag) {
        while (m_flag.exchange(1, std::memory_order_acquire) != 0)
            while (m_flag.load(std::memory_order_relaxed) != 0)
                Pause();
    }
    CSpinGuard(const CSpinGuard&) = delete;
    CSpinGuard& operator=(const CSpinGuard&) = delete;
    ~CSpinGuard() { m_flag.store(0, std::memory_order_release); }

  private:
    static void Pause() {
#if defined(__SSE2__)
        _mm_pause();
#elif defined(__aarch64__)
        __asm__ __volatile__("yield");
#endif
    }

    std::atomic<std::uint32_t>& m_flag;
};

/// Never destroyed: registers of other static objects may still free their buckets.
template <typename TBucket> class CFreeList {
  public:
    /// Null when the list is empty.
    [[nodiscard]] TBucket* Pop() noexcept {
        const CSpinGuard guard(m_flag);
        return m_nEntries != 0 ? m_entries[--m_nEntries] : nullptr;
    }

    /// False when the list is full.
    [[nodiscard]] bool Push(TBucket* bucket) noexcept {
        const CSpinGuard guard(m_flag);
        if (m_nEntries == kFreeListRoom)
            return false;
        m_entries[m_nEntries++] = bucket;
        return true;
    }

    [[nodiscard]] std::size_t Size() noexcept {
        const CSpinGuard guard(m_flag);
        return m_nEntries;
    }

  private:
    std::atomic<std::uint32_t> m_flag = 0;
    std::size_t m_nEntries = 0;
    std::array<TBucket*, kFreeListRoom> m_entries{};
};

/// Places for the headers of large buckets, on large pages: a look-up waits for one of them. They are two cache lines
/// each and are kept for good.
class CHeaderPlaces {
  public:
    ///   Errors  std::bad_alloc
    [[nodiscard]] void* Take() {
        const CSpinGuard guard(m_flag);
        if (m_pFree == nullptr)
            AddLot();
        TPlace* place = m_pFree;
        m_pFree = place->m_pNext;
        return place;
    }

    void GiveBack(void* memory) noexcept {
        const CSpinGuard guard(m_flag);
        m_pFree = new (memory) TPlace{m_pFree};
    }

  private:
    struct TPlace {
        TPlace* m_pNext;
    };

    void AddLot() {
        constexpr std::size_t kLot = kLargePage / sizeof(LargeBucket);
        LargeBucket* const lot = CLargePageAllocator<LargeBucket>().allocate(kLot);
        for (std::size_t i = kLot; i != 0; --i)
            m_pFree = new (static_cast<void*>(lot + (i - 1))) TPlace{m_pFree};
    }

    std::atomic<std::uint32_t> m_flag = 0;
    TPlace* m_pFree = nullptr;
};

constinit CFreeList<SmallBucket> g_smallBuckets;
constinit CFreeList<LargeBucket> g_largeBuckets;
constinit CHeaderPlaces g_headerPlaces;

LargeBucket* MakeLargeBucket() {
    void* place = g_headerPlaces.Take();
    try {
        return new (place) LargeBucket;
    } catch (...) {
        g_headerPlaces.GiveBack(place);
        throw;
    }
}

void Destroy(SmallBucket* bucket) noexcept { delete bucket; }

void Destroy(LargeBucket* bucket) noexcept {
    bucket->~LargeBucket();
    g_headerPlaces.GiveBack(bucket);
}

template <typename TBucket> void ReleaseBeyond(CFreeList<TBucket>& list, std::size_t kept) noexcept {
    while (list.Size() > kept)
        if (TBucket* bucket = list.Pop())
            Destroy(bucket);
}

} // namespace

SmallBucket* NewSmallBucket() {
    SmallBucket* bucket = g_smallBuckets.Pop();
    return bucket != nullptr ? bucket : new SmallBucket;
}

LargeBucket* NewLargeBucket() {
    LargeBucket* bucket = g_largeBuckets.Pop();
    return bucket != nullptr ? bucket : MakeLargeBucket();
}

void FreeBucket(SmallBucket* bucket) noexcept {
    bucket->nElements = 0;
    if (!g_smallBuckets.Push(bucket))
        Destroy(bucket);
}

void FreeBucket(LargeBucket* bucket) noexcept {
    bucket->Clear();
    const bool bReusable = bucket->Capacity() >= kLargeBucketStart && bucket->Capacity() <= kLargestKeptArray;
    if (!bReusable || !g_largeBuckets.Push(bucket))
        Destroy(bucket);
}

std::size_t FreeSmallBuckets() { return g_smallBuckets.Size(); }
std::size_t FreeLargeBuckets() { return g_largeBuckets.Size(); }

void TrimFreeBuckets(std::uint64_t bytes) noexcept {
    constexpr std::size_t kLargeBytes = sizeof(LargeBucket) + kLargestKeptArray * sizeof(TCombinedElement);
    const std::uint64_t half = bytes / 2;
    ReleaseBeyond(g_smallBuckets, half / sizeof(SmallBucket));
    ReleaseBeyond(g_largeBuckets, half / kLargeBytes);
}

void ReleaseFreeBuckets() noexcept { TrimFreeBuckets(0); }

} // namespace quillon
