#pragma once
// What a register has done so far, and the counters behind it.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "tempregister/register_lock.h"

namespace quillon {

struct TRegisterStatistics {
    std::uint64_t m_nElements = 0; // doubtful ones included
    std::uint64_t m_nDoubtfulElements = 0;
    std::uint64_t m_nLookups = 0;
    std::uint64_t m_nHits = 0;            // lookups with an answer, doubt included
    std::uint64_t m_nInserts = 0;         // verdicts taken, new elements or not
    std::uint64_t m_nEvictions = 0;       // sweeps for room, unused doubt included
    std::uint64_t m_nEvictedElements = 0; // by them
    std::uint64_t m_nBytes = 0;           // of the tables
};

/// Counts lookups. Each thread counts in one of a few stripes, so that threads do not fight for one cache line.
///   Threads any. A sum is not of one moment.
class CLookupCounter {
  public:
    void Count(bool bHit) {
        TStripe& stripe = m_stripes[ThisThreadNumber() % kStripes];
        (bHit ? stripe.m_nHits : stripe.m_nMisses).fetch_add(1, std::memory_order_relaxed);
    }

    [[nodiscard]] std::uint64_t Hits() const { return Sum(&TStripe::m_nHits); }
    [[nodiscard]] std::uint64_t Misses() const { return Sum(&TStripe::m_nMisses); }

  private:
    static constexpr std::size_t kStripes = 16;
    static constexpr std::size_t kCacheLine = 64;

    struct alignas(kCacheLine) TStripe {
        std::atomic<std::uint64_t> m_nHits = 0;
        std::atomic<std::uint64_t> m_nMisses = 0;
    };

    [[nodiscard]] std::uint64_t Sum(std::atomic<std::uint64_t> TStripe::*counter) const {
        std::uint64_t sum = 0;
        for (const TStripe& stripe : m_stripes)
            sum += (stripe.*counter).load(std::memory_order_relaxed);
        return sum;
    }

    std::array<TStripe, kStripes> m_stripes;
};

} // namespace quillon
