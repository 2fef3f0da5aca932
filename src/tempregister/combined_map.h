#pragma once
// TRegisterCombinedMap: the hash table of a register of a running analysis, for up to hundreds of millions of elements.
//
// Only positions with White to move are kept: who moves is no part of the key, so lengths of both parities for one
// board would contradict each other. All lengths are plies left.
//
// A bucket is one tagged word:
//   bit 63        1: the pointer is to a LargeBucket. 0: to a SmallBucket, or null for an empty bucket
//   bits 48..62   not used here, kept by every update
//   bits 0..47    the pointer, its upper bits by sign extension
//
// Threads: none of its own. The owning register holds the shared side of its combinedLock for the look-ups and the
//          exclusive side for everything else; MemoryInUse may be read without it.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/large_pages.h"
#include "tempregister/bucket_pool.h"
#include "tempregister/register_item.h"

namespace quillon {

/// Answers of the look-ups: the values of TMateResult that the search gives them.
inline constexpr std::int8_t kRegisterNoMate = 0;
inline constexpr std::int8_t kRegisterDoubtful = 0; // of FindDoubtful
inline constexpr std::int8_t kRegisterMate = 1;
inline constexpr std::int8_t kRegisterQuicker = 2;
inline constexpr std::int8_t kRegisterUnknown = -2;

/// What to do when a proved mate and a proved absence of mate meet in one element.
enum class EContradiction : std::uint8_t {
    Repair, // the mate wins
    Report, // leave the element as it is and say so
};

/// What an insert came to.
struct TInsertOutcome {
    bool m_bAdded = false;      // a new element
    bool m_bIncoherent = false; // a contradiction that was to be reported
    TCombinedLengths m_lengths; // of the element now
};

/// Hears of a long purge while it is under way.
class IPurgeProgress {
  public:
    /// Called every so many buckets with the number of elements removed since the last call. Must not throw.
    virtual void Removed(std::uint32_t removed) = 0;

  protected:
    ~IPurgeProgress() = default;
};

class TRegisterCombinedMap {
  public:
    /// An empty table.
    ///   nBuckets  a power of two. The array itself is made by the first insert.
    explicit TRegisterCombinedMap(std::uint32_t nBuckets);
    TRegisterCombinedMap(const TRegisterCombinedMap&) = delete;
    TRegisterCombinedMap& operator=(const TRegisterCombinedMap&) = delete;
    ~TRegisterCombinedMap();

    /// Register of final results: kRegisterNoMate, kRegisterMate or kRegisterUnknown.
    ///   hash  BoardHash of the board, here and below.
    [[nodiscard]] std::int8_t Find(int nMoves, const TBoardBytes& board, std::uint32_t hash) const;

    /// Register of doubtful results: kRegisterDoubtful if the board is doubtful up to nMoves, else kRegisterUnknown.
    [[nodiscard]] std::int8_t FindDoubtful(int nMoves, const TBoardBytes& board, std::uint32_t hash) const;

    /// Register of doubtful results: kRegisterMate if the board is not doubtful up to n2 (asked only where it is not
    /// doubtful up to n1), 0 for any other known board, kRegisterUnknown for an unknown one.
    [[nodiscard]] std::int8_t FindWithNotDoubtful(int n1, int n2, const TBoardBytes& board, std::uint32_t hash) const;

    /// Register of final results, for lengths from n1 to n2: kRegisterNoMate within n1, kRegisterMate within n1,
    /// kRegisterQuicker for a mate longer than n1 but within n2, or kRegisterUnknown. A mate longer than n2 is no
    /// answer: the caller has not that many plies.
    [[nodiscard]] std::int8_t FindNotDoubtfulRange(int n1, int n2, const TBoardBytes& board, std::uint32_t hash) const;

    /// All that is known of the board, if anything is stored of it.
    [[nodiscard]] std::optional<TCombinedLengths> Lengths(const TBoardBytes& board, std::uint32_t hash) const;

    /// Register of final results: a shorter mate or a longer absence of mate replaces what is known.
    ///   Errors  std::bad_alloc: the element is lost, the table is as it was. The same for InsertDoubtful.
    TInsertOutcome Insert(std::uint16_t nMoves, const TBoardBytes& board, std::uint32_t hash, bool bThereIsMate,
                          EContradiction contradiction);

    /// Register of doubtful results: the length only ever grows. True for a new element.
    ///   bFirstWord  not doubtful up to nMoves; else doubtful up to nMoves.
    bool InsertDoubtful(std::uint16_t nMoves, const TBoardBytes& board, std::uint32_t hash, bool bFirstWord);

    /// Removes the elements with nMovesMate <= nMateLimit and nMovesNoMate <= nNoMateLimit; returns how many. Memory is
    /// not needed for it, though it helps.
    std::uint32_t RemoveNMovers(int nMateLimit, int nNoMateLimit);

    /// Empties all buckets into the free lists and keeps the array.
    void Clear(IPurgeProgress* progress = nullptr);

    /// The same, and gives the array back until the next insert.
    void Free(IPurgeProgress* progress = nullptr);

    /// Makes the number of buckets what is told, which is a power of two. False if the elements are gone.
    ///   bRehash  keep the elements. Where memory is short while they move to the new array, all of them are lost.
    ///   Errors   std::bad_alloc when there is no memory for the new array: nothing has changed then.
    bool Resize(std::uint32_t nNewBuckets, bool bRehash, IPurgeProgress* progress = nullptr);

    void Swap(TRegisterCombinedMap& other) noexcept;

    /// Calls visit(board bytes, lengths) for each element, in no order to rely on.
    template <typename TVisit> void ForEach(TVisit visit) const {
        for (const TTaggedWord word : buckets)
            for (const TCombinedElement& element : ElementsOf(word))
                visit(element.first.m_board, element.second);
    }

    /// Bytes of the array of buckets and of the storage in them, without the allocator's own share. Any thread.
    [[nodiscard]] std::uint64_t MemoryInUse() const { return m_nBytes.load(std::memory_order_relaxed); }

    [[nodiscard]] std::uint32_t BucketCount() const { return nBuckets; }

  private:
    using TTaggedWord = std::uint64_t;
    using TBuckets = std::vector<TTaggedWord, CLargePageAllocator<TTaggedWord>>;

    [[nodiscard]] static std::span<TCombinedElement> ElementsOf(TTaggedWord word);
    [[nodiscard]] TTaggedWord& BucketOf(std::uint32_t hash);
    [[nodiscard]] const TCombinedLengths* FindElement(const TBoardBytes& board, std::uint32_t hash) const;
    [[nodiscard]] TCombinedLengths* FindIn(TTaggedWord word, const TBoardBytes& board);

    void Add(TTaggedWord& word, const TCombinedElement& element);
    void AddToLarge(LargeBucket& bucket, const TCombinedElement& element);
    void ConvertToLarge(TTaggedWord& word);
    std::uint32_t EmptyBucket(TTaggedWord& word) noexcept;
    void EmptyAll(TBuckets& table, IPurgeProgress* progress);
    [[nodiscard]] bool MoveAllTo(TBuckets& table);
    void ConvertToSmall(TTaggedWord& word);
    std::uint32_t RemoveFromLarge(TTaggedWord& word, int nMateLimit, int nNoMateLimit);
    std::uint32_t RemoveFromSmall(TTaggedWord& word, int nMateLimit, int nNoMateLimit);
    std::uint32_t RemoveFromBucket(TTaggedWord& word, int nMateLimit, int nNoMateLimit);
    void CountBytes(std::int64_t difference);

    TBuckets buckets;              // empty while the table has no array
    std::uint32_t nBuckets;        // a power of two
    std::uint32_t nNextBucket = 0; // where the last sweep stopped
    std::atomic<std::uint64_t> m_nBytes = 0;
};

} // namespace quillon
