#pragma once
// CLevelMarks: indices to be looked at, one bit for several consecutive ones.
//
// Threads: Mark from any. A word is taken by one thread.

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillon {

class CLevelMarks {
  public:
    /// nIndices of a mark: a power of two.
    CLevelMarks(std::uint64_t size, unsigned nIndices)
        : m_nSize(size), m_nShift(static_cast<unsigned>(std::countr_zero(nIndices))),
          m_words((size >> m_nShift) / 64 + 1) {}

    void Mark(std::uint64_t index) {
        const std::uint64_t group = index >> m_nShift;
        const std::uint64_t bit = std::uint64_t{1} << (group % 64);
        const std::atomic_ref<std::uint64_t> word(m_words[group / 64]);
        if ((word.load(std::memory_order_relaxed) & bit) == 0)
            word.fetch_or(bit, std::memory_order_relaxed);
    }

    [[nodiscard]] std::uint64_t Words() const { return m_words.size(); }
    [[nodiscard]] std::uint64_t Bytes() const { return m_words.size() * sizeof m_words[0]; }

    /// The marks of a word, which are cleared if `bTake`.
    [[nodiscard]] std::uint64_t Word(std::uint64_t word, bool bTake) {
        const std::atomic_ref<std::uint64_t> marks(m_words[word]);
        const std::uint64_t value = marks.load(std::memory_order_relaxed);
        if (bTake && value != 0)
            marks.store(0, std::memory_order_relaxed);
        return value;
    }

    /// visit(index) for the indices of these marks of a word.
    template <class TVisit> void ForIndices(std::uint64_t word, std::uint64_t marks, TVisit visit) const {
        while (marks != 0) {
            const auto bit = static_cast<std::uint64_t>(std::countr_zero(marks));
            marks &= marks - 1;
            const std::uint64_t first = (word * 64 + bit) << m_nShift;
            const std::uint64_t last = std::min(m_nSize, first + (std::uint64_t{1} << m_nShift));
            for (std::uint64_t index = first; index < last; ++index)
                visit(index);
        }
    }

    void Clear() { std::ranges::fill(m_words, 0); }

  private:
    std::uint64_t m_nSize;
    unsigned m_nShift;
    std::vector<std::uint64_t> m_words;
};

} // namespace quillon
