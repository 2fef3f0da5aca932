#pragma once
// CLzwDecoder: decodes blocks of a table (lzw_dictionary.h), up to the element that is wanted.
//
// A string that is added while decoding is the string decoded before and one element more: it stands in the output
// already, so an entry is only a place there and a length. Nothing is copied for the dictionary, and nothing has to be
// put back before the next block.
//
// Threads: an object is used by one thread at a time.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "globalregister/packed/lzw_dictionary.h"

namespace quillon {

/// Bytes behind a block that are read, whatever they hold.
inline constexpr std::size_t kLzwReadAhead = 3;

template <class T> class CLzwDecoder {
  public:
    ///   Errors  std::bad_alloc.
    CLzwDecoder(std::size_t nBlockElements, bool bPlain);

    /// Decodes the first `nElements` elements of a block, at most nBlockElements; kLzwReadAhead bytes behind the block
    /// can be read.
    ///   Result  how many were decoded: no fewer, up to kMaxLzwString - 1 more; 0 if these are not the codes of so
    ///   many.
    [[nodiscard]] std::size_t Decode(std::span<const std::uint8_t> block, std::size_t nElements);

    /// The elements that were decoded last.
    [[nodiscard]] const T* Elements() const { return m_pool.data() + m_nInitialUsed; }

  private:
    struct TEntry {
        std::uint32_t m_nPlace; // in the pool
        std::uint32_t m_nLength;
    };

    TLzwCodes m_initialCodes;
    std::uint32_t m_nInitialUsed = 0;
    std::vector<TEntry> m_index; // by code
    std::vector<T> m_pool;       // the initial strings, then the decoded elements
};

} // namespace quillon
