#include "globalregister/precalc_read.h"

#include <array>
#include <fstream>
#include <system_error>

#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/simple_packing.h"
#include "platform/large_pages.h"
#include "platform/save_file.h"

namespace quillon {

bool Exists(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

std::optional<std::vector<std::uint8_t>> ReadWholeFile(const std::filesystem::path& path) {
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    if (error || !file)
        return std::nullopt;
    std::vector<std::uint8_t> content;
    content.reserve(size);
    PreferLargePages(content.data(), size); // before a page is touched: tables are read at random
    content.resize(size);
    if (!ReadBytes(file, content.data(), size))
        return std::nullopt;
    return content;
}

bool WriteWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> content) {
    return !SaveFile(path, {reinterpret_cast<const char*>(content.data()), content.size()}, false).m_error;
}

std::optional<TPackedTableHeader> ReadPackedHeader(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    TPackedTableHeaderBytes bytes{};
    if (!ReadBytes(file, bytes.data(), bytes.size()))
        return std::nullopt;
    return DecodePackedTableHeader(bytes);
}

std::optional<std::uint64_t> ReadUnpackedSize(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::array<std::uint8_t, kBlockHeaderBytes> head{};
    return ReadBytes(file, head.data(), head.size()) ? UnpackedSize(head) : std::nullopt;
}

std::optional<TPackedStart> ReadPackedStart(const std::filesystem::path& path) {
    const std::optional<std::uint64_t> size = ReadUnpackedSize(path);
    std::ifstream file(path, std::ios::binary);
    const std::optional<std::uint8_t> first = FirstUnpackedByte(file);
    return size && first ? std::optional(TPackedStart{*size, *first}) : std::nullopt;
}

std::optional<std::uint8_t> SimpleFlags(std::span<const std::uint8_t> simple) { return SimpleElement(simple, 0); }

} // namespace quillon
