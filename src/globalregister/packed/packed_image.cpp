#include "globalregister/packed/packed_image.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <system_error>

#include "globalregister/disk_access.h"
#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"

namespace quillon {

void CPackedImage::Empty() {
    m_header = {0, true, 0, m_header.m_nBlockElements, 0, 0};
    m_offsets = {};
    m_blocks = {};
    m_stream.close();
}

std::uint64_t CPackedImage::FirstBlockAt() const {
    return kPackedTableHeaderBytes + kBlockOffsetBytes * m_offsets.size();
}

std::uint64_t CPackedImage::EndOf(std::size_t block) const {
    return block + 1 < m_offsets.size() ? m_offsets[block + 1] : m_header.m_nFileSize;
}

std::size_t CPackedImage::ElementsOf(std::size_t block) const {
    const std::uint64_t nBefore = std::uint64_t{block} * m_header.m_nBlockElements;
    return static_cast<std::size_t>(std::min<std::uint64_t>(m_header.m_nBlockElements, m_header.m_nElements - nBefore));
}

bool CPackedImage::Load(const std::filesystem::path& path, bool bStream) {
    Empty();
    try {
        std::error_code error;
        const std::uint64_t nFileSize = std::filesystem::file_size(path, error);
        if (!error) {
            m_stream.open(path, std::ios::binary);
            if (m_stream && Read(nFileSize, bStream))
                return true;
        }
    } catch (const std::bad_alloc&) {
    }
    Empty();
    return false;
}

bool CPackedImage::Read(std::uint64_t nFileSize, bool bStream) {
    if (!ReadHeader(nFileSize) || !ReadOffsets())
        return false;
    if (bStream)
        return true;
    const std::uint64_t nBlockBytes = nFileSize - FirstBlockAt();
    m_blocks.resize(nBlockBytes + kPadding);
    const bool bRead = ReadBytes(m_stream, m_blocks.data(), nBlockBytes);
    m_stream.close();
    return bRead;
}

// Counts are believed only after they are found to fit into the file.
bool CPackedImage::ReadHeader(std::uint64_t nFileSize) {
    TPackedTableHeaderBytes bytes;
    if (!ReadBytes(m_stream, bytes.data(), bytes.size()))
        return false;
    const TPackedTableHeader header = DecodePackedTableHeader(bytes);
    if (header.m_nFileSize != nFileSize || header.m_nBlockElements != m_header.m_nBlockElements)
        return false;
    m_header = header;
    return BlocksOf(header.m_nElements, header.m_nBlockElements) <=
           (nFileSize - kPackedTableHeaderBytes) / kBlockOffsetBytes;
}

bool CPackedImage::ReadOffsets() {
    m_offsets.resize(BlocksOf(m_header.m_nElements, m_header.m_nBlockElements));
    std::vector<std::uint8_t> bytes(m_offsets.size() * kBlockOffsetBytes);
    if (!ReadBytes(m_stream, bytes.data(), bytes.size()))
        return false;
    for (std::size_t block = 0; block < m_offsets.size(); ++block)
        m_offsets[block] = LoadLittleEndian<std::uint64_t>(bytes.data() + block * kBlockOffsetBytes);
    return m_offsets.empty() || (m_offsets.front() >= FirstBlockAt() && std::ranges::is_sorted(m_offsets) &&
                                 m_offsets.back() <= m_header.m_nFileSize);
}

bool CPackedImage::Save(const std::filesystem::path& path, std::uint16_t wFlags) {
    if (IsStreaming())
        return false;
    m_header.m_wFlags = wFlags;
    std::ofstream file(path, std::ios::binary);
    const std::uint64_t nBlockBytes = m_blocks.empty() ? 0 : m_blocks.size() - kPadding;
    const bool bWritten =
        WritePackedTableHead(file, m_header, m_offsets) && WriteBytes(file, m_blocks.data(), nBlockBytes);
    file.close();
    return bWritten && static_cast<bool>(file);
}

void CPackedImage::Take(std::uint64_t nElements, const std::vector<std::uint64_t>& starts,
                        std::vector<std::uint8_t> blocks, std::size_t nReserve) {
    blocks.resize(blocks.size() + nReserve + kPadding);
    Empty();
    m_offsets = starts;
    for (std::uint64_t& offset : m_offsets)
        offset += FirstBlockAt();
    m_blocks = std::move(blocks);
    m_header.m_nElements = nElements;
    m_header.m_nFileSize = FirstBlockAt() + m_blocks.size() - kPadding;
}

std::span<const std::uint8_t> CPackedImage::BytesOf(std::size_t block, std::vector<std::uint8_t>& input) {
    const auto size = static_cast<std::size_t>(EndOf(block) - m_offsets[block]);
    if (!IsStreaming())
        return {m_blocks.data() + (m_offsets[block] - FirstBlockAt()), size};
    input.resize(std::max(input.size(), size + kPadding));
    const std::lock_guard lock(DiskAccessSection());
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(m_offsets[block]));
    if (!m_stream || !ReadBytes(m_stream, input.data(), size))
        throw CDiskFailure("Error reading packed data from disk");
    return {input.data(), size};
}

bool WritePackedTableHead(std::ostream& file, const TPackedTableHeader& header,
                          std::span<const std::uint64_t> offsets) {
    const TPackedTableHeaderBytes bytes = EncodePackedTableHeader(header);
    std::vector<std::uint8_t> table(offsets.size() * kBlockOffsetBytes);
    for (std::size_t block = 0; block < offsets.size(); ++block)
        StoreLittleEndian(table.data() + block * kBlockOffsetBytes, offsets[block]);
    return WriteBytes(file, bytes.data(), bytes.size()) && WriteBytes(file, table.data(), table.size());
}

} // namespace quillon
