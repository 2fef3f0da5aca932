#pragma once
// Head of a ".packed.lzw" file and of the image in memory. Numbers are little-endian.
//
//   offset  bytes  content
//   0       8      size of the file; bit 63 set: plain initial dictionary, clear: rich
//   8       8      elements of the table
//   16      4      elements of a block: 8192 or 16384
//   20      4      user word
//   24      2      flags, as the table's own first element has them
//   26      6      zero
//   32      8 each offsets of the blocks from the start of the file, then the blocks; the last may be shorter in
//   elements
//
// A block ends where the next one begins, the last one with the file.

#include <array>
#include <cstddef>
#include <cstdint>

namespace quillon {

inline constexpr std::size_t kPackedTableHeaderBytes = 32;
inline constexpr std::size_t kBlockOffsetBytes = 8;

struct TPackedTableHeader {
    std::uint64_t m_nFileSize = 0;
    bool m_bPlainDictionary = true;
    std::uint64_t m_nElements = 0;
    std::uint32_t m_nBlockElements = 0;
    std::uint32_t m_nUserWord = 0;
    std::uint16_t m_wFlags = 0;

    friend bool operator==(const TPackedTableHeader&, const TPackedTableHeader&) = default;
};

using TPackedTableHeaderBytes = std::array<std::uint8_t, kPackedTableHeaderBytes>;

[[nodiscard]] TPackedTableHeaderBytes EncodePackedTableHeader(const TPackedTableHeader& header);
[[nodiscard]] TPackedTableHeader DecodePackedTableHeader(const TPackedTableHeaderBytes& bytes);

/// Blocks of a table; 0 elements have none.
[[nodiscard]] constexpr std::uint64_t BlocksOf(std::uint64_t nElements, std::uint64_t nBlockElements) {
    return nElements / nBlockElements + (nElements % nBlockElements != 0);
}

} // namespace quillon
