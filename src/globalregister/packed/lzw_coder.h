#pragma once
// CLzwCoder: codes blocks of a table, each for itself, from the plain initial dictionary. Codes form a bit stream,
// lowest bit first; each has the width in force before the entry of its step is added.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "globalregister/packed/lzw_dictionary.h"

namespace quillon {

template <class T> class CLzwCoder {
  public:
    ///   Errors  std::bad_alloc.
    explicit CLzwCoder(std::size_t nBlockElements);

    /// Appends the codes of a block, filled up to a byte.
    ///   Errors  false if an element is in no string of the dictionary: above 1023. What was appended is then of no
    ///   use.
    [[nodiscard]] bool Code(std::span<const T> block, std::vector<std::uint8_t>& packed);

  private:
    // A string is its longest part, which is a string too, and an element. The slots are found by hashing both.
    struct TString {
        std::uint32_t m_key = kNoKey;
        std::uint32_t m_code = 0;
    };
    static constexpr std::uint32_t kNoKey = ~std::uint32_t{0};
    static constexpr std::uint32_t kNoString = 0xffff; // what a single element is joined to
    static constexpr std::uint32_t kHashBits = 14;     // four slots a string

    [[nodiscard]] std::size_t SlotOf(std::uint32_t code, T element) const;
    void Insert(std::size_t slot, std::uint32_t code, T element);

    TLzwCodes m_initialCodes, m_codes;
    std::vector<TString> m_initialStrings, m_strings;
};

} // namespace quillon
