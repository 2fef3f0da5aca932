#pragma once
// The packed block format of saved registers and precalculated tables. Numbers are little-endian.
//
// Block: header of 16 bytes, then the body.
//   offset  bytes  content
//   0       4      "LZ4 " 16-bit offsets; "LZ4e" with long offsets; "LZ42" as "LZ4 ", only read, size at 12
//   4       4      unpacked size
//   8       4      size of the block with this header
//   12      4      zero
//
// Body: sequences of a token byte, literals, and a match.
//   high nibble of the token   number of literals; 15: plus bytes that follow, up to and with the first below 255
//   literals                   if the body ends behind them, it is finished: the last sequence has no match
//   "LZ4 " match               offset, 2 bytes; low nibble + 4 is the length; 15: plus bytes that follow the offset
//   "LZ4e" match               low nibble below 15: the same. 15: a byte follows, its low 7 bits are added, and bytes
//                              behind it if they are 127; its high bit says that the offset has 3 bytes; then the
//                              offset
// A match repeats what was unpacked `offset` bytes before. Offsets are 4 or greater, and a match whose offset is below
// 16 is no longer than its offset: both sides copy 16 bytes at a time.
//
// Container: header of 32 bytes, then blocks, each but the last of the same unpacked size, a multiple of 16.
//   0  4  "lz4 ", "lz4e" if the blocks are "LZ4e"    8   4  reserved             16  16  reserved
//   4  4  unpacked size                              12  4  number of blocks
//
// Threads: functions of their arguments; packing may start threads and waits for them.

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <span>
#include <vector>

namespace quillon {

enum class EBlockForm : std::uint8_t {
    Short, // "LZ4 "
    Long,  // "LZ4e"
};

inline constexpr std::size_t kBlockHeaderBytes = 16;
inline constexpr std::size_t kContainerHeaderBytes = 32;

/// Sources of this size and more are packed in parallel, into a container.
inline constexpr std::size_t kParallelPackBytes = 0x200000;

/// Unpacking writes up to this much behind the end of the unpacked bytes.
inline constexpr std::size_t kUnpackSlack = 16;

/// Packs as "LZ4 ", or "lz4 " if the source is large and nProcessors > 1: then as many blocks.
///   Errors  false, and `packed` empty: the source or the result has 4 GB or more, or memory or threads are short.
[[nodiscard]] bool PackBlock(std::span<const std::uint8_t> source, std::vector<std::uint8_t>& packed, int nProcessors);
[[nodiscard]] bool PackBlock(std::span<const std::uint8_t> source, std::vector<std::uint8_t>& packed);

/// The same as "LZ4e" and "lz4e".
[[nodiscard]] bool PackBlockLong(std::span<const std::uint8_t> source, std::vector<std::uint8_t>& packed,
                                 int nProcessors);
[[nodiscard]] bool PackBlockLong(std::span<const std::uint8_t> source, std::vector<std::uint8_t>& packed);

/// Unpacks a block or container of any magic.
///   Errors  false, and `unpacked` empty: these bytes are not a whole stream of this format, or memory is short.
[[nodiscard]] bool UnpackBlock(std::span<const std::uint8_t> packed, std::vector<std::uint8_t>& unpacked);

/// The size that a block or container says that it unpacks to; none if the bytes begin with none of the magics. Its
/// first kBlockHeaderBytes are enough.
[[nodiscard]] std::optional<std::uint64_t> UnpackedSize(std::span<const std::uint8_t> packed);

/// The first byte that a block or container unpacks to, without unpacking it; none if it unpacks to nothing or is none.
///   packed  at its beginning.
[[nodiscard]] std::optional<std::uint8_t> FirstUnpackedByte(std::istream& packed);

/// True if the bytes begin with one of the four magics that are written.
[[nodiscard]] bool IsPackedBlock(std::span<const std::uint8_t> bytes);

/// Appends the body of `source`, without a header.
void PackBody(std::span<const std::uint8_t> source, EBlockForm form, std::vector<std::uint8_t>& packed);

/// Unpacks a body into exactly `size` bytes at `unpacked`, behind which kUnpackSlack bytes may be overwritten.
///   Errors  false: this is no body, or not one of that size.
[[nodiscard]] bool UnpackBody(std::span<const std::uint8_t> body, EBlockForm form, std::uint8_t* unpacked,
                              std::size_t size);

} // namespace quillon
