#pragma once
// CLzwTablePacker: packs the blocks of a table one after the other, within the room that a table of that size may take.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "globalregister/packed/lzw_coder.h"

namespace quillon {

/// How packing a table ended.
enum class EPackEnd : std::uint8_t {
    Packed,
    ElementTooLarge, // above 1023: no code stands for it
    NotSmaller,      // the blocks would take more than about a byte an element
    StreamFailed,    // the table could not be read, or the packed one not be written
    NoMemory,
};

template <class T> class CLzwTablePacker {
  public:
    ///   nMinBlockBytes  a block takes at least so much room.
    CLzwTablePacker(std::size_t nBlockElements, std::size_t nMinBlockBytes);

    /// Packs nElements elements that repeat those of `pattern` (bytes, element_bytes.h), as a table of its own.
    ///   Returns  Packed, ElementTooLarge or NotSmaller.
    ///   Errors   std::bad_alloc.
    [[nodiscard]] EPackEnd Pack(std::span<const std::uint8_t> pattern, std::uint64_t nElements) {
        return Pack(pattern, nElements, RoomFor(nElements));
    }

    /// The same for a piece of a larger table, whose blocks may take nRoom bytes.
    [[nodiscard]] EPackEnd Pack(std::span<const std::uint8_t> pattern, std::uint64_t nElements, std::uint64_t nRoom);

    /// Bytes that the blocks of a table may take: no table is packed to become larger.
    [[nodiscard]] std::uint64_t RoomFor(std::uint64_t nElements) const;

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
