#pragma once
// CLzwTablePacker: packs the blocks of a table one after the other, within the room that a table of that size may take.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "globalregister/packed/lzw_coder.h"

namespace quillon {

template <class T> class CLzwTablePacker {
  public:
    ///   nMinBlockBytes  a block takes at least so much room.
    CLzwTablePacker(std::size_t nBlockElements, std::size_t nMinBlockBytes);

    /// Packs nElements elements that repeat those of `pattern` (bytes, element_bytes.h), as a table of its own.
    ///   Errors  false: the blocks would take more than about a byte an element, or an element is above 1023.
    ///           std::bad_alloc.
    [[nodiscard]] bool Pack(std::span<const std::uint8_t> pattern, std::uint64_t nElements);

    /// Where each block starts in Blocks().
    [[nodiscard]] std::vector<std::uint64_t>& Starts() { return m_starts; }
    [[nodiscard]] std::vector<std::uint8_t>& Blocks() { return m_blocks; }

  private:
    [[nodiscard]] bool PackBlock(std::span<const std::uint8_t> pattern, std::uint64_t first, std::size_t nElements);
    void RepeatBlocks(std::uint64_t nBlocks);

    std::size_t m_nBlockElements;
    std::size_t m_nMinBlockBytes;
    CLzwCoder<T> m_coder;
    std::vector<T> m_elements; // of the block that is packed
    std::vector<std::uint64_t> m_starts;
    std::vector<std::uint8_t> m_blocks;
};

} // namespace quillon
