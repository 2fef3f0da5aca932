#pragma once
// LZW of table blocks by a sorted list of strings: slow, and with none of the product's shortcuts.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillon::reference_lzw {

template <class T> using TString = std::vector<T>;

template <class T> class CDictionary {
  public:
    CDictionary(std::size_t nMaxEntries, bool bPlain) : m_nMaxEntries(nMaxEntries) {
        const T greatest = static_cast<T>(-1);
        for (std::uint32_t value = 0; value < (sizeof(T) == 1 ? 256u : 1024u); ++value) {
            Add({static_cast<T>(value)});
            if (!bPlain && value >= 1 && value <= 20)
                Add({static_cast<T>(value), greatest});
        }
        if (!bPlain && sizeof(T) == 2)
            Add({greatest});
        for (std::size_t length = 2; !bPlain && length <= 128; ++length)
            Add(TString<T>(length, greatest));
    }

    void Add(const TString<T>& string) {
        if (m_strings.size() >= m_nMaxEntries || string.size() > 255)
            return;
        const auto at = std::ranges::lower_bound(
            m_sorted, string, {}, [&](std::size_t code) -> const TString<T>& { return m_strings[code]; });
        m_sorted.insert(at, m_strings.size());
        m_strings.push_back(string);
        if (m_strings.size() == m_nNextWidthAt)
            m_nNextWidthAt = std::size_t{1} << ++m_nCodeBits;
    }

    /// The code of a string, -1 for none.
    [[nodiscard]] int Find(const TString<T>& string) const {
        const auto at = std::ranges::lower_bound(
            m_sorted, string, {}, [&](std::size_t code) -> const TString<T>& { return m_strings[code]; });
        return at != m_sorted.end() && m_strings[*at] == string ? static_cast<int>(*at) : -1;
    }

    [[nodiscard]] std::size_t CodeBits() const { return m_nCodeBits; }

  private:
    std::size_t m_nMaxEntries, m_nCodeBits = 0, m_nNextWidthAt = 1;
    std::vector<TString<T>> m_strings; // by code
    std::vector<std::size_t> m_sorted; // codes in the order of their strings
};

/// The bytes of a block; all its elements must be in the dictionary.
template <class T>
std::vector<std::uint8_t> Code(const std::vector<T>& block, std::size_t nBlockElements, bool bPlain) {
    CDictionary<T> dictionary(nBlockElements == 8192 ? 2048 : 4096, bPlain);
    std::vector<bool> bits;
    const auto emit = [&](int code) {
        for (std::size_t i = 0; i < dictionary.CodeBits(); ++i)
            bits.push_back((code >> i & 1) != 0);
    };
    TString<T> string;
    for (const T element : block) {
        TString<T> longer = string;
        longer.push_back(element);
        if (dictionary.Find(longer) >= 0) {
            string = longer;
            continue;
        }
        emit(dictionary.Find(string));
        dictionary.Add(longer);
        string = {element};
    }
    emit(dictionary.Find(string));
    std::vector<std::uint8_t> bytes((bits.size() + 7) / 8);
    for (std::size_t i = 0; i < bits.size(); ++i)
        bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] | bits[i] << (i % 8));
    return bytes;
}

} // namespace quillon::reference_lzw
