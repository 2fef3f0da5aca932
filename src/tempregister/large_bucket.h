#pragma once
// LargeBucket: the sorted elements of a crowded bucket, with a byte of mark for each.
//
// Elements lie far apart in memory, and a binary search waits for one after another. The marks stand beside the header:
// a look-up compares them all at once and then reads the one element that may be the wanted one, a miss mostly none.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <utility>

#include <boost/container/flat_map.hpp>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tempregister/register_element.h"

namespace quillon {

/// In the order of the keys. Data pointer, size, capacity.
using TSortedElements = boost::container::flat_map<TChessboardRegisterItem, TCombinedLengths>;
static_assert(sizeof(TSortedElements) == 3 * sizeof(void*));

/// Room that a large bucket starts with.
inline constexpr std::size_t kLargeBucketStart = 12;

/// A header keeps an array of up to so many elements when its bucket is emptied.
inline constexpr std::size_t kLargestKeptArray = 32;

/// A byte that differs for most boards of one bucket. It has nothing to do with the hash, which those boards share.
[[nodiscard]] inline std::uint8_t MarkOf(const TBoardBytes& board) {
    constexpr std::array<std::uint64_t, kBoardWords> kFactors{
        0x9e3779b97f4a7c15, 0xbf58476d1ce4e5b9, 0x94d049bb133111eb, 0xd6e8feb86659fd93,
        0xa0761d6478bd642f, 0xe7037ed1a0b428db, 0x8ebc6af09c88c6e3, 0x589965cc75374cc3};
    std::uint64_t sum = 0;
    for (int rank = 0; rank < kBoardWords; ++rank)
        sum += BoardWord(board, rank) * kFactors[static_cast<std::size_t>(rank)];
    sum = (sum ^ (sum >> 32)) * kFactors[0];
    return static_cast<std::uint8_t>(sum >> 56);
}

/// Two cache lines. Owned by one bucket; no locks of its own.
class alignas(64) LargeBucket {
  public:
    LargeBucket() { m_elements.reserve(kLargeBucketStart); }

    [[nodiscard]] std::span<TCombinedElement> Elements() {
        return m_elements.empty() ? std::span<TCombinedElement>() : std::span(&*m_elements.begin(), m_elements.size());
    }
    [[nodiscard]] std::size_t Size() const { return m_elements.size(); }
    [[nodiscard]] std::size_t Capacity() const { return m_elements.capacity(); }

    /// The lengths of a board; null if it is not there.
    [[nodiscard]] TCombinedLengths* Find(const TBoardBytes& board) {
        __builtin_prefetch(m_marks.data() + kMarks / 2); // the second line comes together with the first
        const std::uint8_t mark = MarkOf(board);
        if (Size() <= kMarks) [[likely]]
            return FindByMark(board, mark);
        const auto found = m_elements.find(TChessboardRegisterItem{board});
        return found == m_elements.end() ? nullptr : &found->second;
    }

    /// Adds an element that is not there yet.
    ///   Errors  std::bad_alloc: nothing has changed.
    void Insert(const TCombinedElement& element) {
        PrefetchElements();
        const std::uint8_t mark = MarkOf(element.first.m_board);
        if (Size() == Capacity())
            m_elements.reserve(Size() + Size() / kGrowth + 1);
        const auto place = m_elements.lower_bound(element.first);
        const auto index = static_cast<std::size_t>(place - m_elements.begin());
        m_elements.emplace_hint(place, element);
        InsertMark(index, mark);
    }

    void Clear() { m_elements.clear(); }

    /// Lets `change` do anything to the sorted elements, and gives back memory that they leave unused.
    template <typename TChange> void Change(TChange change) {
        change(m_elements);
        if (Capacity() > std::max(kLargeBucketStart, Size() * 2))
            Shrink();
        if (Size() <= kMarks)
            for (std::size_t i = 0; const TCombinedElement& element : Elements())
                m_marks[i++] = MarkOf(element.first.m_board);
    }

  private:
    static constexpr std::size_t kMarks = 96;

    // A full array grows by a quarter. Inserts wait for memory rather than for copying, and room that most buckets do
    // not use counts when there are half a million of them.
    static constexpr std::size_t kGrowth = 4;

    // Without memory for the smaller array the larger one stays.
    void Shrink() {
        try {
            TSortedElements smaller;
            smaller.reserve(std::max(kLargeBucketStart, Size() + Size() / kGrowth));
            smaller.insert(boost::container::ordered_unique_range, m_elements.begin(), m_elements.end());
            m_elements.swap(smaller);
        } catch (const std::bad_alloc&) {
        }
    }

    void PrefetchElements() const {
        constexpr std::size_t kCacheLine = 64;
        constexpr std::size_t kMostLines = 32; // more than the processor can wait for at once
        const auto* first = reinterpret_cast<const std::byte*>(m_elements.cbegin().get_ptr());
        const std::size_t bytes = std::min(Size() * sizeof(TCombinedElement), kMostLines * kCacheLine);
        for (std::size_t i = 0; i < bytes; i += kCacheLine)
            __builtin_prefetch(first + i);
    }

    void InsertMark(std::size_t index, std::uint8_t mark) {
        if (Size() > kMarks)
            return;
        std::copy_backward(m_marks.begin() + index, m_marks.begin() + Size() - 1, m_marks.begin() + Size());
        m_marks[index] = mark;
    }

    [[nodiscard]] TCombinedLengths* FindByMark(const TBoardBytes& board, std::uint8_t mark) {
        const std::span<TCombinedElement> elements = Elements();
        for (std::size_t first = 0; first < elements.size(); first += kBlock)
            for (std::uint32_t equal = EqualMarks(first, mark); equal != 0; equal &= equal - 1) {
                const std::size_t index = first + static_cast<std::size_t>(std::countr_zero(equal));
                if (index >= elements.size())
                    return nullptr;
                if (SameBoard(elements[index].first.m_board, board))
                    return &elements[index].second;
            }
        return nullptr;
    }

    static constexpr std::size_t kBlock = 16;
    static_assert(kMarks % kBlock == 0);

    // Bit i is set for mark first + i equal to `mark`.
    [[nodiscard]] std::uint32_t EqualMarks(std::size_t first, std::uint8_t mark) const {
#if defined(__SSE2__)
        const __m128i marks = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_marks.data() + first));
        const __m128i equal = _mm_cmpeq_epi8(marks, _mm_set1_epi8(static_cast<char>(mark)));
        return static_cast<std::uint32_t>(_mm_movemask_epi8(equal));
#else
        std::uint32_t equal = 0;
        for (std::size_t i = 0; i < kBlock; ++i)
            equal |= static_cast<std::uint32_t>(m_marks[first + i] == mark) << i;
        return equal;
#endif
    }

    TSortedElements m_elements;
    std::array<std::uint8_t, kMarks> m_marks{}; // of the elements in their order; kept while they are at most kMarks
};
static_assert(sizeof(LargeBucket) == 128);

} // namespace quillon
