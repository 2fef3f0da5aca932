#pragma once
// Simple packing: runs of equal elements in short blocks, quick to read at random.
//
//   offset  bytes   content
//   0       4       size of all of this
//   4       4       number of blocks
//   8       4 each  offsets of the blocks from the start of this, then the blocks: each covers 2048 elements
//
// A byte b from 128 to 254 repeats the element before it b - 126 more times; any other byte is an element. The first
// byte of a block is an element. A table with elements from 128 to 254 cannot be packed like this.
//
// Its file has the extension ".packed.lz4" and is one block or container of the long form (packed_block.h) around this.
//
// Threads: functions of their arguments.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillon {

inline constexpr std::uint64_t kSimpleBlockElements = 2048;

/// No table of so many elements takes more when it is packed.
[[nodiscard]] std::uint64_t MostSimpleBytes(std::uint64_t nElements);

/// None if an element has no form here or the result has 4 GB or more.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> PackSimple(std::span<const std::uint8_t> table);

/// All of it; none if what is packed is damaged or has more or fewer than nElements elements.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> UnpackSimple(std::span<const std::uint8_t> packed,
                                                                    std::uint64_t nElements);

/// True if every block has its elements, begins with one, and ends where the next one begins, the last at the end: then
/// each of nElements elements is there. One pass.
[[nodiscard]] bool IsWholeSimple(std::span<const std::uint8_t> packed, std::uint64_t nElements);

/// Where the first block of a whole one begins.
[[nodiscard]] std::size_t SimpleStreamStart(std::span<const std::uint8_t> packed);

/// The element at `index`; none if what is packed has no such element or is damaged.
[[nodiscard]] std::optional<std::uint8_t> SimpleElement(std::span<const std::uint8_t> packed, std::uint64_t index);

} // namespace quillon
