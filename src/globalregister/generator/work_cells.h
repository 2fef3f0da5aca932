#pragma once
// The elements of a work table (generator_run.h), one class a form. Levels are counted in moves of White.
//
// kIndicesOf...: indices of one mark (level_marks.h). All marks together take less than a tenth of the table. A mark
// that is for more indices has more of them looked at in vain; where an element tells its level that costs next to
// nothing.
//
// Threads: any. Elements that share a byte are changed by atomic operations; who sets what was set already is told so.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>

namespace quillon {

/// Bytes.
class CByteCells {
  public:
    static constexpr unsigned kLongest = 126; // the longest mate that an element can hold
    static constexpr unsigned kIndicesOfNewWhite = 8;
    static constexpr unsigned kIndicesOfNewLost = 4;
    static constexpr unsigned kIndicesOfWaiting = 8;
    static constexpr bool kTellsLengths = true;
    static constexpr std::uint8_t kOpen = 0x7f;
    static constexpr std::uint8_t kLost = 0x80;

    explicit CByteCells(std::uint8_t* data) : m_data(data) {}

    /// Does White mate in at most n moves? What is open does not, however large n is.
    [[nodiscard]] bool IsWhiteWithin(std::uint64_t index, unsigned n) const {
        return White(index) - 1u < std::min(n, kLongest);
    }

    /// Has White's mate been found in the level of n moves? Forms that do not tell lengths say: has it been found?
    [[nodiscard]] bool IsWhiteOfLevel(std::uint64_t index, unsigned n) const {
        return n <= kLongest && White(index) == n;
    }
    [[nodiscard]] bool IsWhiteOpen(std::uint64_t index) const { return White(index) == kOpen; }
    [[nodiscard]] bool IsLost(std::uint64_t index) const { return (Load(index) & kLost) != 0; }

    /// False if that had been settled before.
    [[nodiscard]] bool SetWhite(std::uint64_t index, unsigned n) const {
        const std::atomic_ref<std::uint8_t> cell(m_data[index]);
        std::uint8_t value = cell.load(std::memory_order_relaxed);
        while ((value & kOpen) == kOpen)
            if (cell.compare_exchange_weak(value, static_cast<std::uint8_t>((value & kLost) | n),
                                           std::memory_order_relaxed))
                return true;
        return false;
    }
    [[nodiscard]] bool SetLost(std::uint64_t index) const {
        return (std::atomic_ref<std::uint8_t>(m_data[index]).fetch_or(kLost, std::memory_order_relaxed) & kLost) == 0;
    }

  private:
    [[nodiscard]] std::uint8_t Load(std::uint64_t index) const {
        return std::atomic_ref<std::uint8_t>(m_data[index]).load(std::memory_order_relaxed);
    }
    [[nodiscard]] unsigned White(std::uint64_t index) const { return Load(index) & kOpen; }

    std::uint8_t* m_data;
};

/// Words of two bytes, the lower first. Writers take turns. A reader between the two stores of a writer sees a length
/// that is not below the one being written, and nobody asks for the lengths of the level that is being made.
class CWordCells {
  public:
    static constexpr unsigned kLongest = 32766;
    static constexpr unsigned kIndicesOfNewWhite = 8;
    static constexpr unsigned kIndicesOfNewLost = 4;
    static constexpr unsigned kIndicesOfWaiting = 8;
    static constexpr bool kTellsLengths = true;
    static constexpr unsigned kOpen = 0x7fff;
    static constexpr unsigned kLost = 0x8000;

    explicit CWordCells(std::uint8_t* data) : m_data(data) {}

    [[nodiscard]] bool IsWhiteWithin(std::uint64_t index, unsigned n) const {
        return White(index) - 1u < std::min(n, kLongest);
    }
    [[nodiscard]] bool IsWhiteOfLevel(std::uint64_t index, unsigned n) const {
        return n <= kLongest && White(index) == n;
    }
    [[nodiscard]] bool IsWhiteOpen(std::uint64_t index) const { return White(index) == kOpen; }
    [[nodiscard]] bool IsLost(std::uint64_t index) const { return (Load(index) & kLost) != 0; }

    [[nodiscard]] bool SetWhite(std::uint64_t index, unsigned n) const {
        const std::lock_guard lock(Section());
        if (!IsWhiteOpen(index))
            return false;
        Store(index, (Load(index) & kLost) | n);
        return true;
    }
    [[nodiscard]] bool SetLost(std::uint64_t index) const {
        const std::lock_guard lock(Section());
        if (IsLost(index))
            return false;
        Store(index, Load(index) | kLost);
        return true;
    }

  private:
    [[nodiscard]] static std::mutex& Section() {
        static std::mutex section;
        return section;
    }
    [[nodiscard]] std::atomic_ref<std::uint8_t> Half(std::uint64_t index, unsigned which) const {
        return std::atomic_ref<std::uint8_t>(m_data[2 * index + which]);
    }
    [[nodiscard]] unsigned Load(std::uint64_t index) const {
        return Half(index, 0).load(std::memory_order_relaxed) |
               static_cast<unsigned>(Half(index, 1).load(std::memory_order_relaxed)) << 8;
    }
    void Store(std::uint64_t index, unsigned value) const {
        Half(index, 0).store(static_cast<std::uint8_t>(value & 0xff), std::memory_order_relaxed);
        Half(index, 1).store(static_cast<std::uint8_t>(value >> 8), std::memory_order_relaxed);
    }
    [[nodiscard]] unsigned White(std::uint64_t index) const { return Load(index) & kOpen; }

    std::uint8_t* m_data;
};

/// Bit data: the lengths are written elsewhere.
class CBitCells {
  public:
    static constexpr unsigned kLongest = 32766;
    static constexpr unsigned kIndicesOfNewWhite = 16;
    static constexpr unsigned kIndicesOfNewLost = 16;
    static constexpr unsigned kIndicesOfWaiting = 32;
    static constexpr bool kTellsLengths = false;

    explicit CBitCells(std::uint8_t* data) : m_data(data) {}

    /// n: the highest level that has been finished for White; 0: none.
    [[nodiscard]] bool IsWhiteWithin(std::uint64_t index, unsigned n) const { return n != 0 && Has(index, 1); }
    [[nodiscard]] bool IsWhiteOfLevel(std::uint64_t index, unsigned /*n*/) const { return Has(index, 1); }
    [[nodiscard]] bool IsWhiteOpen(std::uint64_t index) const { return !Has(index, 1); }
    [[nodiscard]] bool IsLost(std::uint64_t index) const { return Has(index, 2); }
    [[nodiscard]] bool SetWhite(std::uint64_t index, unsigned /*n*/) const { return Set(index, 1); }
    [[nodiscard]] bool SetLost(std::uint64_t index) const { return Set(index, 2); }

  private:
    [[nodiscard]] static std::uint8_t Mask(std::uint64_t index, unsigned bit) {
        return static_cast<std::uint8_t>(bit << (2 * (index % 4)));
    }
    [[nodiscard]] bool Has(std::uint64_t index, unsigned bit) const {
        return (std::atomic_ref<std::uint8_t>(m_data[index / 4]).load(std::memory_order_relaxed) & Mask(index, bit)) !=
               0;
    }
    [[nodiscard]] bool Set(std::uint64_t index, unsigned bit) const {
        const std::uint8_t mask = Mask(index, bit);
        return (std::atomic_ref<std::uint8_t>(m_data[index / 4]).fetch_or(mask, std::memory_order_relaxed) & mask) == 0;
    }

    std::uint8_t* m_data;
};

} // namespace quillon
