#pragma once
// ".packed.lz4" files: a table in buckets of 16 MB, each packed alone, for archives. Numbers are little-endian.
//
//   offset  bytes   content
//   0       8       size of the file
//   8       8       elements (bytes) of the table
//   16      8       size of a bucket, 0x1000000
//   24      2       flags, as the table's own first element has them
//   26      2       zero
//   28      4       "LZ4e"
//   32      8 each  offsets of the buckets from the start of the file, then the buckets: bodies of the long form
//                   (packed_block.h) without their headers

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <istream>
#include <optional>
#include <ostream>
#include <string_view>

namespace quillon {

inline constexpr std::uint64_t kBucketBytes = 0x1000000;
inline constexpr std::size_t kPackedLz4HeaderBytes = 32;

struct TPackedLz4Header {
    std::uint64_t m_nFileSize = 0;
    std::uint64_t m_nElements = 0;
    std::uint64_t m_nBucketBytes = kBucketBytes;
    std::uint16_t m_wFlags = 0;

    friend bool operator==(const TPackedLz4Header&, const TPackedLz4Header&) = default;
};

using TPackedLz4HeaderBytes = std::array<std::uint8_t, kPackedLz4HeaderBytes>;

[[nodiscard]] TPackedLz4HeaderBytes EncodePackedLz4Header(const TPackedLz4Header& header);

/// None without the mark "LZ4e" and the size of a bucket: not a file of buckets.
[[nodiscard]] std::optional<TPackedLz4Header> DecodePackedLz4Header(const TPackedLz4HeaderBytes& bytes);

/// Of a file; none as well if it is too short or cannot be read.
[[nodiscard]] std::optional<TPackedLz4Header> ReadPackedLz4Header(const std::filesystem::path& path);

/// Writes a file of nCount bytes of a table from `source`. Several buckets are packed at the same time.
///   log     takes a line after each bucket.
///   Errors  false, and the file is gone: a stream failed, or memory or threads are short.
[[nodiscard]] bool SavePackedLz4(const std::filesystem::path& path, std::istream& source, std::uint64_t nCount,
                                 std::uint16_t wFlags, const std::function<void(std::string_view)>& log,
                                 int nProcessors);

/// Writes the table of such a file to `table`.
///   Errors  false: the file is not whole or not one of buckets, or a stream failed. std::bad_alloc. What was written
///           to `table` is then of no use.
[[nodiscard]] bool UnpackPackedLz4(const std::filesystem::path& path, std::ostream& table);

} // namespace quillon
