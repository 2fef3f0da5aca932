#include "tempregister/combined_map.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <new>
#include <utility>

#include "tempregister/tagged_bucket.h"

namespace quillon {

namespace {

std::int64_t BytesOfArray(std::uint32_t size) { return std::int64_t{size} * std::int64_t{sizeof(std::uint64_t)}; }

void Lower(std::uint16_t& length, std::uint16_t nMoves) {
    if (length == 0 || nMoves < length)
        length = nMoves;
}

void Raise(std::uint16_t& length, std::uint16_t nMoves) { length = std::max(length, nMoves); }

// The count stands at the end of the block: the elements need not wait for it.
void PrefetchSmall(std::uint64_t word) {
    constexpr std::size_t kCacheLine = 64;
    constexpr std::size_t kFirstLines = 4;
    const auto* block = PointerOf<const std::byte>(word);
    for (std::size_t i = 0; i < kFirstLines; ++i)
        __builtin_prefetch(block + i * kCacheLine);
}

// The longest absence of mate that a proved mate leaves room for.
std::uint16_t LongestBelow(std::uint16_t nMovesMate) {
    return static_cast<std::uint16_t>(nMovesMate <= 2 ? 0 : nMovesMate - 2);
}

} // namespace

TRegisterCombinedMap::TRegisterCombinedMap(std::uint32_t nSize) : nBuckets(nSize) {
    assert(std::has_single_bit(nSize));
}

TRegisterCombinedMap::~TRegisterCombinedMap() { Free(); }

void TRegisterCombinedMap::CountBytes(std::int64_t difference) {
    // Only the holder of the lock writes: no read-modify-write is needed.
    m_nBytes.store(m_nBytes.load(std::memory_order_relaxed) + static_cast<std::uint64_t>(difference),
                   std::memory_order_relaxed);
}

std::span<TCombinedElement> TRegisterCombinedMap::ElementsOf(TTaggedWord word) {
    if (IsLarge(word)) {
        return PointerOf<LargeBucket>(word)->Elements();
    }
    SmallBucket* bucket = PointerOf<SmallBucket>(word);
    return bucket == nullptr ? std::span<TCombinedElement>()
                             : std::span(bucket->elements.data(), static_cast<std::size_t>(bucket->nElements));
}

std::uint64_t& TRegisterCombinedMap::BucketOf(std::uint32_t hash) {
    if (buckets.empty()) {
        buckets.resize(nBuckets);
        CountBytes(BytesOfArray(nBuckets));
    }
    return buckets[hash & (nBuckets - 1)];
}

// ---- looking up

TCombinedLengths* TRegisterCombinedMap::FindIn(TTaggedWord word, const TBoardBytes& board) {
    if (IsLarge(word)) {
        return PointerOf<LargeBucket>(word)->Find(board);
    }
    if (word == 0)
        return nullptr;
    PrefetchSmall(word);
    for (TCombinedElement& element : ElementsOf(word))
        if (SameBoard(element.first.m_board, board))
            return &element.second;
    return nullptr;
}

const TCombinedLengths* TRegisterCombinedMap::FindElement(const TBoardBytes& board, std::uint32_t hash) const {
    if (buckets.empty())
        return nullptr;
    return const_cast<TRegisterCombinedMap*>(this)->FindIn(buckets[hash & (nBuckets - 1)], board);
}

std::int8_t TRegisterCombinedMap::Find(int nMoves, const TBoardBytes& board, std::uint32_t hash) const {
    const TCombinedLengths* known = FindElement(board, hash);
    if (known == nullptr)
        return kRegisterUnknown;
    if (known->nMovesNoMate != 0 && nMoves <= known->nMovesNoMate)
        return kRegisterNoMate;
    return known->nMovesMate != 0 && nMoves >= known->nMovesMate ? kRegisterMate : kRegisterUnknown;
}

std::int8_t TRegisterCombinedMap::FindDoubtful(int nMoves, const TBoardBytes& board, std::uint32_t hash) const {
    const TCombinedLengths* known = FindElement(board, hash);
    const bool bDoubtful = known != nullptr && known->nMovesNoMate != 0 && nMoves <= known->nMovesNoMate;
    return bDoubtful ? kRegisterDoubtful : kRegisterUnknown;
}

std::int8_t TRegisterCombinedMap::FindWithNotDoubtful(int n1, int n2, const TBoardBytes& board,
                                                      std::uint32_t hash) const {
    const TCombinedLengths* known = FindElement(board, hash);
    if (known == nullptr)
        return kRegisterUnknown;
    const bool bDoubtful = known->nMovesNoMate != 0 && n1 <= known->nMovesNoMate;
    return !bDoubtful && known->nMovesMate != 0 && n2 <= known->nMovesMate ? kRegisterMate : 0;
}

std::int8_t TRegisterCombinedMap::FindNotDoubtfulRange(int n1, int n2, const TBoardBytes& board,
                                                       std::uint32_t hash) const {
    const TCombinedLengths* known = FindElement(board, hash);
    if (known == nullptr)
        return kRegisterUnknown;
    if (known->nMovesNoMate != 0 && n1 <= known->nMovesNoMate)
        return kRegisterNoMate;
    if (known->nMovesMate == 0)
        return kRegisterUnknown;
    if (n1 >= known->nMovesMate)
        return kRegisterMate;
    return known->nMovesMate <= n2 ? kRegisterQuicker : kRegisterUnknown;
}

std::optional<TCombinedLengths> TRegisterCombinedMap::Lengths(const TBoardBytes& board, std::uint32_t hash) const {
    const TCombinedLengths* known = FindElement(board, hash);
    return known == nullptr ? std::nullopt : std::optional(*known);
}

// ---- inserting

TInsertOutcome TRegisterCombinedMap::Insert(std::uint16_t nMoves, const TBoardBytes& board, std::uint32_t hash,
                                            bool bThereIsMate, EContradiction contradiction) {
    assert((nMoves & 1) != 0);
    TTaggedWord& word = BucketOf(hash);
    TCombinedLengths* known = FindIn(word, board);
    if (known == nullptr) {
        const TCombinedLengths lengths = bThereIsMate ? TCombinedLengths{nMoves, 0} : TCombinedLengths{0, nMoves};
        Add(word, {TChessboardRegisterItem{board}, lengths});
        return {true, false, lengths};
    }
    TCombinedLengths now = *known;
    if (bThereIsMate)
        Lower(now.nMovesMate, nMoves);
    else
        Raise(now.nMovesNoMate, nMoves);
    const bool bContradiction = now.nMovesMate != 0 && now.nMovesNoMate >= now.nMovesMate;
    if (bContradiction && contradiction == EContradiction::Repair)
        now.nMovesNoMate = LongestBelow(now.nMovesMate);
    *known = now;
    return {false, bContradiction && contradiction == EContradiction::Report, now};
}

bool TRegisterCombinedMap::InsertDoubtful(std::uint16_t nMoves, const TBoardBytes& board, std::uint32_t hash,
                                          bool bFirstWord) {
    assert((nMoves & 1) != 0);
    TTaggedWord& word = BucketOf(hash);
    if (TCombinedLengths* known = FindIn(word, board)) {
        Raise(bFirstWord ? known->nMovesMate : known->nMovesNoMate, nMoves);
        return false;
    }
    Add(word, {TChessboardRegisterItem{board}, bFirstWord ? TCombinedLengths{nMoves, 0} : TCombinedLengths{0, nMoves}});
    return true;
}

// The element must not be there yet.
void TRegisterCombinedMap::Add(TTaggedWord& word, const TCombinedElement& element) {
    if (!IsLarge(word)) {
        SmallBucket* bucket = PointerOf<SmallBucket>(word);
        if (bucket == nullptr) {
            bucket = NewSmallBucket();
            word = WithPointer(word, bucket, false);
            CountBytes(kSmallBytes);
        }
        if (bucket->nElements < kSmallBucketElements) {
            bucket->elements[static_cast<std::size_t>(bucket->nElements++)] = element;
            return;
        }
        ConvertToLarge(word);
    }
    AddToLarge(*PointerOf<LargeBucket>(word), element);
}

void TRegisterCombinedMap::AddToLarge(LargeBucket& bucket, const TCombinedElement& element) {
    const std::int64_t before = BytesOf(bucket);
    bucket.Insert(element);
    CountBytes(BytesOf(bucket) - before);
}

void TRegisterCombinedMap::ConvertToLarge(TTaggedWord& word) {
    SmallBucket* small = PointerOf<SmallBucket>(word);
    LargeBucket* large = NewLargeBucket();
    static_assert(kLargeBucketStart > kSmallBucketElements, "none of the inserts below needs memory");
    for (const TCombinedElement& element : small->elements)
        large->Insert(element);
    word = WithPointer(word, large, true);
    CountBytes(BytesOf(*large) - kSmallBytes);
    FreeBucket(small);
}

// ---- emptying

std::uint32_t TRegisterCombinedMap::EmptyBucket(TTaggedWord& word) noexcept {
    const auto removed = static_cast<std::uint32_t>(ElementsOf(word).size());
    if (IsLarge(word)) {
        LargeBucket* bucket = PointerOf<LargeBucket>(word);
        CountBytes(-BytesOf(*bucket));
        FreeBucket(bucket);
    } else if (SmallBucket* bucket = PointerOf<SmallBucket>(word)) {
        CountBytes(-kSmallBytes);
        FreeBucket(bucket);
    }
    word = WithoutBucket(word);
    return removed;
}

void TRegisterCombinedMap::EmptyAll(TBuckets& table, IPurgeProgress* progress) {
    constexpr std::size_t kReportEvery = 1024; // buckets
    std::uint32_t removed = 0;
    std::uint32_t reported = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        removed += EmptyBucket(table[i]);
        if (progress != nullptr && (i + 1) % kReportEvery == 0)
            progress->Removed(removed - std::exchange(reported, removed));
    }
}

void TRegisterCombinedMap::Clear(IPurgeProgress* progress) { EmptyAll(buckets, progress); }

void TRegisterCombinedMap::Free(IPurgeProgress* progress) {
    if (buckets.empty())
        return;
    Clear(progress);
    TBuckets().swap(buckets);
    CountBytes(-BytesOfArray(nBuckets));
}

// ---- another number of buckets

// False if memory ran out on the way; some elements are in one table then, some in the other, a few in both.
bool TRegisterCombinedMap::MoveAllTo(TBuckets& table) {
    try {
        for (TTaggedWord& word : buckets) {
            for (const TCombinedElement& element : ElementsOf(word))
                Add(table[BoardHash(element.first.m_board) & (table.size() - 1)], element);
            EmptyBucket(word);
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool TRegisterCombinedMap::Resize(std::uint32_t nNewBuckets, bool bRehash, IPurgeProgress* progress) {
    assert(std::has_single_bit(nNewBuckets));
    if (nNewBuckets == nBuckets) {
        if (!bRehash)
            Clear(progress);
        return bRehash;
    }
    if (buckets.empty()) {
        nBuckets = nNewBuckets;
        return true;
    }
    TBuckets table(nNewBuckets);
    const bool bKept = bRehash && MoveAllTo(table);
    if (!bKept) {
        EmptyAll(table, nullptr);
        EmptyAll(buckets, progress);
    }
    CountBytes(BytesOfArray(nNewBuckets) - BytesOfArray(nBuckets));
    buckets = std::move(table);
    nBuckets = nNewBuckets;
    nNextBucket = 0;
    return bKept;
}

void TRegisterCombinedMap::Swap(TRegisterCombinedMap& other) noexcept {
    std::swap(buckets, other.buckets);
    std::swap(nBuckets, other.nBuckets);
    std::swap(nNextBucket, other.nNextBucket);
    const std::uint64_t bytes = MemoryInUse();
    m_nBytes.store(other.MemoryInUse(), std::memory_order_relaxed);
    other.m_nBytes.store(bytes, std::memory_order_relaxed);
}

} // namespace quillon
