#include "search/proof_table.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <new>

#include "core/packed_move.h"
#include "core/search_context.h"
#include "platform/in_parts.h"

namespace quillon {

namespace {

// Odd constants of splitmix64 (S. Vigna, public domain).
constexpr std::uint64_t kMultiplier1 = 0xbf58476d1ce4e5b9u;
constexpr std::uint64_t kMultiplier2 = 0x94d049bb133111ebu;

// Eight squares without the marks that heuristics leave on pawns.
constexpr std::uint64_t kUnmarked = 0x0101010101010101u * static_cast<TFigure>(~kPawnMayNotAdvance);

// As an entry has room for.
constexpr std::uint64_t kMostPlies = 0x3ff;
static_assert(kStackSlots <= kMostPlies);
constexpr int kNumberBits = 29;
constexpr std::uint64_t kMostNumber = (std::uint64_t{1} << kNumberBits) - 1;
static_assert(kInfiniteNumber <= kMostNumber);
constexpr int kMostWorkBits = 63;
static_assert(2 * kNumberBits + std::bit_width(unsigned{kMostWorkBits}) <= 64);

constexpr std::uint16_t kNoMove = 0;

bool IsEmpty(std::uint32_t phi, std::uint32_t delta) { return phi == 0 && delta == 0; }

/// Odd plies: White moves, and his aim is what fewer plies make harder; even plies: the reverse.
bool HoldsFor(std::uint32_t phi, std::uint32_t delta, int nKnownPlies, int nPlies) {
    const bool bWhite = (nPlies & 1) != 0;
    const bool bMate = bWhite ? phi == 0 : delta == 0;
    const bool bNoMate = bWhite ? delta == 0 : phi == 0;
    return (bMate && nKnownPlies <= nPlies) || (bNoMate && nKnownPlies >= nPlies);
}

/// Raises what is left at least by the open numbers of the same position with other plies.
void Raise(TProofNumbers& atLeast, const TProofNumbers& numbers, int nKnownPlies, int nPlies) {
    const bool bWhite = (nPlies & 1) != 0;
    if (bWhite == (nKnownPlies > nPlies))
        atLeast.m_phi = std::max(atLeast.m_phi, numbers.m_phi);
    else
        atLeast.m_delta = std::max(atLeast.m_delta, numbers.m_delta);
}

std::uint8_t BitsOfWork(std::uint64_t nWork) {
    return static_cast<std::uint8_t>(std::min(static_cast<int>(std::bit_width(nWork)), kMostWorkBits));
}

std::uint64_t WorkOf(std::uint8_t nBits) { return nBits == 0 ? 0 : std::uint64_t{1} << (nBits - 1); }

/// Changes the upper half, where most of the key stands, with whichever bit of the numbers changes.
std::uint64_t SealOf(std::uint64_t numbers) { return numbers * kMultiplier1; }

} // namespace

// The words are mixed each for itself, so that the processor works on several at once.
std::uint64_t HashBoard(const TChessboard& b) {
    std::uint64_t hash = 0;
    std::uint64_t place = 0x9e3779b97f4a7c15u; // odd, another one for each word
    for (std::size_t i = 0; i < kSquares; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, b.m_board.data() + i, sizeof word);
        word = (word & kUnmarked) * kMultiplier1;
        hash += (word ^ word >> 32) * place;
        place *= kMultiplier2;
    }
    hash = (hash ^ hash >> 32) * kMultiplier2;
    return hash ^ hash >> 29;
}

CProofTable::CProofTable(std::size_t nBytes)
    : m_nFirstBits(BitsOfBucket(nBytes)), m_nBuckets(std::size_t{1} << m_nFirstBits), m_mask(m_nBuckets - 1),
      m_buckets(Allocate(m_nBuckets)) {
    std::uninitialized_value_construct_n(m_buckets.get(), m_nBuckets);
}

int CProofTable::BitsOfBucket(std::size_t nBytes) {
    return std::countr_zero(std::bit_floor(std::max<std::size_t>(nBytes / sizeof(TBucket), 1)));
}

CProofTable::TBuckets CProofTable::Allocate(std::size_t nBuckets) {
    return {CLargePageAllocator<TBucket>().allocate(nBuckets), {nBuckets}};
}

void CProofTable::Grow(std::size_t nBytes, int nThreads) {
    const std::size_t count = std::size_t{1} << std::min(BitsOfBucket(nBytes), m_nFirstBits + kGrowthBits);
    if (count <= m_nBuckets)
        return;
    TBuckets grown = Allocate(count);
    InParts(m_nBuckets, nThreads, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            Spread(i, grown.get(), count);
    });
    m_buckets = std::move(grown);
    m_nBuckets = count;
    m_mask = count - 1;
}

/// The buckets that take the place of one are as far apart as the table was large, so all of memory is read and written
/// in order.
void CProofTable::Spread(std::size_t nBucket, TBucket* grown, std::size_t nGrown) const {
    for (std::size_t i = nBucket; i < nGrown; i += m_nBuckets)
        ::new (grown + i) TBucket();
    const TBucket& bucket = m_buckets[nBucket];
    for (std::size_t place = 0; place < bucket.m_entries.size(); ++place) {
        const TRecord entry = bucket.m_entries[place].Read();
        if (IsEmpty(entry.m_phi, entry.m_delta))
            continue;
        // Only the new bits: an entry in which two stores have met tells any.
        const std::size_t more = (entry.m_key & (kMostGrowth - 1)) << m_nFirstBits & (nGrown - m_nBuckets);
        grown[nBucket | more].m_entries[place].Take(bucket.m_entries[place]);
    }
}

CProofTable::TRecord CProofTable::CEntry::Read() const {
    const std::uint64_t numbers = m_numbers.load(std::memory_order_relaxed);
    const std::uint64_t names = m_names.load(std::memory_order_relaxed) ^ SealOf(numbers);
    return {names >> 26,
            static_cast<std::uint32_t>(numbers & kMostNumber),
            static_cast<std::uint32_t>(numbers >> kNumberBits & kMostNumber),
            static_cast<std::uint16_t>(names >> 16 & kMostPlies),
            static_cast<std::uint16_t>(names),
            static_cast<std::uint8_t>(numbers >> 2 * kNumberBits)};
}

void CProofTable::CEntry::Write(const TRecord& record) {
    assert(record.m_phi <= kInfiniteNumber && record.m_delta <= kInfiniteNumber);
    const std::uint64_t numbers =
        (std::uint64_t{record.m_nWorkBits} << kNumberBits | record.m_delta) << kNumberBits | record.m_phi;
    const std::uint64_t names = record.m_key << 26 | std::uint64_t{record.m_nPlies} << 16 | record.m_move;
    m_names.store(names ^ SealOf(numbers), std::memory_order_relaxed);
    m_numbers.store(numbers, std::memory_order_relaxed);
}

void CProofTable::CEntry::Take(const CEntry& other) {
    m_names.store(other.m_names.load(std::memory_order_relaxed), std::memory_order_relaxed);
    m_numbers.store(other.m_numbers.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

CProofTable::TFound CProofTable::Find(std::uint64_t hash, int nPlies) const {
    TFound found;
    const std::uint64_t key = KeyOf(hash);
    for (const CEntry& stored : BucketOf(hash).m_entries) {
        const TRecord entry = stored.Read();
        if (entry.m_key != key || IsEmpty(entry.m_phi, entry.m_delta) || ((entry.m_nPlies ^ nPlies) & 1) != 0)
            continue;
        const bool bVerdict = HoldsFor(entry.m_phi, entry.m_delta, entry.m_nPlies, nPlies);
        const TProofNumbers numbers{entry.m_phi, entry.m_delta};
        if (bVerdict)
            return {numbers, UnpackMove(entry.m_move), WorkOf(entry.m_nWorkBits), true};
        if (entry.m_nPlies != nPlies) {
            if (!IsDecided(numbers))
                Raise(found.m_atLeast, numbers, entry.m_nPlies, nPlies);
        } else if (!found.m_bKnown) {
            // A thread that reads an entry while another renews it does not know the position again, and gives it a
            // second one. Store renews the first of them; the other grows stale, and a search that believed it would
            // come back time and again to what it has long worked on.
            found.m_numbers = numbers;
            found.m_move = UnpackMove(entry.m_move);
            found.m_nWork = WorkOf(entry.m_nWorkBits);
            found.m_bKnown = true;
        }
    }
    return found;
}

// Small numbers do not tell that an entry is of little worth: those on the way to a mate are small, and without them
// the search begins anew below their positions, time and again.
void CProofTable::Store(std::uint64_t hash, int nPlies, const TProofNumbers& numbers, const TMove& move,
                        std::uint64_t nWork) {
    TBucket& bucket = BucketOf(hash);
    const std::uint64_t key = KeyOf(hash);
    CEntry* victim = &bucket.m_entries[0];
    int least = kMostWorkBits + 1;
    for (CEntry& stored : bucket.m_entries) {
        const TRecord entry = stored.Read();
        if (entry.m_key == key && entry.m_nPlies == nPlies) {
            victim = &stored;
            break;
        }
        // Too many plies, often: two stores have met here.
        const bool bFree = IsEmpty(entry.m_phi, entry.m_delta) || entry.m_nPlies >= kStackSlots;
        const int worth = bFree ? -1 : entry.m_nWorkBits;
        if (worth < least) {
            least = worth;
            victim = &stored;
        }
    }
    victim->Write(
        {key, numbers.m_phi, numbers.m_delta, static_cast<std::uint16_t>(nPlies), PackMove(move), BitsOfWork(nWork)});
}

void CProofTable::StoreEstimate(std::uint64_t hash, int nPlies, const TProofNumbers& numbers) {
    const std::uint64_t key = KeyOf(hash);
    CEntry* free = nullptr;
    for (CEntry& stored : BucketOf(hash).m_entries) {
        const TRecord entry = stored.Read();
        if (entry.m_key == key && entry.m_nPlies == nPlies)
            return; // another thread was here meanwhile
        if (free == nullptr && IsEmpty(entry.m_phi, entry.m_delta))
            free = &stored;
    }
    if (free != nullptr)
        free->Write({key, numbers.m_phi, numbers.m_delta, static_cast<std::uint16_t>(nPlies), kNoMove, BitsOfWork(0)});
}

} // namespace quillon
