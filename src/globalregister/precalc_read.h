#pragma once
// Files of precalculated data as bytes, and what their heads tell.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "globalregister/packed/packed_table_header.h"

namespace quillon {

/// Is there anything of this name? What cannot be asked for is not there.
[[nodiscard]] bool Exists(const std::filesystem::path& path);

/// None if the file cannot be read to its end.
///   Errors  std::bad_alloc.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> ReadWholeFile(const std::filesystem::path& path);

/// Replaces a file; false if that failed, the file is then as it was.
[[nodiscard]] bool WriteWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> content);

/// The head of a ".packed.lzw" file; none if it is too short or cannot be read.
[[nodiscard]] std::optional<TPackedTableHeader> ReadPackedHeader(const std::filesystem::path& path);

/// What the head of a block or container (packed_block.h) says that it unpacks to; none if the file is none.
[[nodiscard]] std::optional<std::uint64_t> ReadUnpackedSize(const std::filesystem::path& path);

/// Of a file that is a block or container: what it unpacks to, without unpacking it.
struct TPackedStart {
    std::uint64_t m_nUnpackedSize = 0;
    std::uint8_t m_nFirstByte = 0; // of a table its flags
};

/// None if the file is neither, or unpacks to nothing.
[[nodiscard]] std::optional<TPackedStart> ReadPackedStart(const std::filesystem::path& path);

/// The flags of a table in simple packing (simple_packing.h).
[[nodiscard]] std::optional<std::uint8_t> SimpleFlags(std::span<const std::uint8_t> simple);

} // namespace quillon
