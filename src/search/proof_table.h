#pragma once
// The table of a best-first proof: what is known of a position with so many plies left, as proof and disproof numbers.
//
// A cache. What it loses has to be searched again, and two positions with the same 55 bits of hash (fewer in a table
// made small) are taken for one: the proof it serves only orders moves, so neither bears on a verdict.
//
// Threads: any number may find and store at once, without a lock. An entry is two words, and each of them is read and
//          written whole (relaxed). The first is sealed with the second: if they are of two stores that met, the seal
//          does not fit and the entry is another position's for everybody. So a race costs an entry, never a wrong one.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "core/chessboard.h"
#include "core/move.h"
#include "platform/large_pages.h"
#include "platform/prefetch.h"

namespace quillon {

/// Numbers of a position as its mover sees it: phi leaves to decide that he reaches his aim, delta that he does not.
/// White's aim is mate within the plies left, Black's to get through them. phi 0: he does; delta 0: he does not.
struct TProofNumbers {
    std::uint32_t m_phi = 1;
    std::uint32_t m_delta = 1;
};
inline constexpr std::uint32_t kInfiniteNumber = 1u << 28;

inline constexpr TProofNumbers kReachesAim{0, kInfiniteNumber};
inline constexpr TProofNumbers kMissesAim{kInfiniteNumber, 0};

[[nodiscard]] constexpr bool IsDecided(const TProofNumbers& numbers) {
    return numbers.m_phi == 0 || numbers.m_delta == 0;
}

/// Hash of the 64 squares. Castling, en passant and the side to move are left out: the first two may cost an order, the
/// last is told by the parity of the plies left.
[[nodiscard]] std::uint64_t HashBoard(const TChessboard& b);

class CProofTable {
  public:
    /// At least one bucket; at most `nBytes` otherwise. Throws std::bad_alloc.
    explicit CProofTable(std::size_t nBytes);

    [[nodiscard]] std::size_t Bytes() const { return m_nBuckets * sizeof(TBucket); }

    /// Becomes as large as a new table of `nBytes`, at most kMostGrowth times as large as it was made, and keeps what
    /// it knows; in between it takes both. No other thread is at the table.
    ///   nThreads  that share the work: to touch new memory takes its time.
    ///   Errors    std::bad_alloc; the table is then as it was.
    void Grow(std::size_t nBytes, int nThreads = 1);

    struct TFound {
        TProofNumbers m_numbers;
        TMove m_move{};            // the best one; source = target for none: an estimate, if the numbers are open
        std::uint64_t m_nWork = 0; // as stored, down to a power of two; 0 for an estimate
        bool m_bKnown = false;     // else the numbers mean nothing

        // What is left at least, as other numbers of plies tell: with fewer plies it is no easier for White to mate,
        // with more of them no easier for Black to get through. Not set with a verdict.
        TProofNumbers m_atLeast{0, 0};
    };

    /// For the position with `nPlies` left: its own numbers, or a verdict for another number of plies that holds here
    /// too (White mates in fewer, or not even in more).
    [[nodiscard]] TFound Find(std::uint64_t hash, int nPlies) const;

    /// Asked early, Find costs no wait for the memory.
    void Prefetch(std::uint64_t hash) const { quillon::Prefetch(&BucketOf(hash)); }

    /// The entry that took the least work gives way.
    ///   nWork  positions that were expanded for the numbers, at least 1. It is kept down to a power of two: of many
    ///          visits those count that are not far shorter than all before them.
    void Store(std::uint64_t hash, int nPlies, const TProofNumbers& numbers, const TMove& move, std::uint64_t nWork);

    /// For a position that is not in the table, and was not searched yet: kept only where that costs no other its
    /// place, and the first to give way.
    void StoreEstimate(std::uint64_t hash, int nPlies, const TProofNumbers& numbers);

    static constexpr int kGrowthBits = 6;
    static constexpr std::size_t kMostGrowth = std::size_t{1} << kGrowthBits;

  private:
    /// What an entry says.
    struct TRecord {
        std::uint64_t m_key = 0;
        std::uint32_t m_phi = 0, m_delta = 0; // both 0: empty
        std::uint16_t m_nPlies = 0;
        std::uint16_t m_move = 0;     // packed
        std::uint8_t m_nWorkBits = 0; // that the number has
    };

    //  names    key (bits 63..26), plies (25..16), move (15..0); xor the seal of the numbers
    //  numbers  work (63..58), delta (57..29), phi (28..0)
    class CEntry {
      public:
        [[nodiscard]] TRecord Read() const;
        void Write(const TRecord& record);
        void Take(const CEntry& other); // as it stands

      private:
        std::atomic<std::uint64_t> m_names{0}, m_numbers{0}; // all 0: empty
    };
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

    struct TBucket {
        std::array<CEntry, 4> m_entries;
    };
    static_assert(sizeof(TBucket) == 64);

    struct TRelease {
        std::size_t m_nCount;
        void operator()(TBucket* buckets) const noexcept {
            CLargePageAllocator<TBucket>().deallocate(buckets, m_nCount);
        }
    };
    using TBuckets = std::unique_ptr<TBucket[], TRelease>;
    static_assert(std::is_trivially_destructible_v<TBucket>);

    /// The upper half of the hash, and below it the bits that tell the bucket when the table has grown.
    [[nodiscard]] std::uint64_t KeyOf(std::uint64_t hash) const {
        return hash >> 32 << kGrowthBits | (hash >> m_nFirstBits & (kMostGrowth - 1));
    }
    [[nodiscard]] TBucket& BucketOf(std::uint64_t hash) const { return m_buckets[hash & m_mask]; }

    [[nodiscard]] static int BitsOfBucket(std::size_t nBytes);
    [[nodiscard]] static TBuckets Allocate(std::size_t nBuckets);
    void Spread(std::size_t nBucket, TBucket* grown, std::size_t nGrown) const;

    int m_nFirstBits;       // of the hash: they tell the bucket in the table as it was made
    std::size_t m_nBuckets; // a power of two
    std::uint64_t m_mask;
    TBuckets m_buckets;
};

} // namespace quillon
