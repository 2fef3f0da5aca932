#include "globalregister/packed/packed_table_file.h"

#include <algorithm>
#include <fstream>
#include <new>
#include <system_error>
#include <vector>

#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/lzw_table_packer.h"
#include "globalregister/packed/packed_image.h"

namespace quillon {

namespace {

constexpr std::uint64_t kPieceElements = 0x1000000; // a multiple of both sizes of blocks

template <class T>
bool WritePieces(std::ostream& file, std::istream& source, TPackedTableHeader& header,
                 std::vector<std::uint64_t>& offsets) {
    CLzwTablePacker<T> packer(header.m_nBlockElements, 0);
    for (std::uint64_t first = 0; first < header.m_nElements; first += kPieceElements) {
        const std::uint64_t nElements = std::min(kPieceElements, header.m_nElements - first);
        std::vector<std::uint8_t> piece(nElements * sizeof(T));
        if (!ReadBytes(source, piece.data(), piece.size()) || !packer.Pack(piece, nElements) ||
            !WriteBytes(file, packer.Blocks().data(), packer.Blocks().size()))
            return false;
        for (const std::uint64_t start : packer.Starts())
            offsets.push_back(header.m_nFileSize + start);
        header.m_nFileSize += packer.Blocks().size();
    }
    return true;
}

template <class T> bool WriteFile(std::ostream& file, std::istream& source, TPackedTableHeader header) {
    const std::uint64_t nBlocks = BlocksOf(header.m_nElements, header.m_nBlockElements);
    std::vector<std::uint64_t> offsets(nBlocks, 0);
    if (!WritePackedTableHead(file, {0, false, 0, 0, 0, 0}, offsets))
        return false;
    offsets.clear();
    header.m_nFileSize = kPackedTableHeaderBytes + kBlockOffsetBytes * nBlocks;
    if (!WritePieces<T>(file, source, header, offsets))
        return false;
    file.seekp(0);
    return WritePackedTableHead(file, header, offsets);
}

} // namespace

template <class T>
bool WritePackedTableFile(const std::filesystem::path& path, std::istream& source, TPackedTableHeader header) {
    bool bWritten = false;
    try {
        std::ofstream file(path, std::ios::binary);
        bWritten = WriteFile<T>(file, source, header);
        file.close();
        bWritten = bWritten && static_cast<bool>(file);
    } catch (const std::bad_alloc&) {
    }
    std::error_code error;
    if (!bWritten)
        std::filesystem::remove(path, error);
    return bWritten;
}

template bool WritePackedTableFile<std::uint8_t>(const std::filesystem::path&, std::istream&, TPackedTableHeader);
template bool WritePackedTableFile<std::uint16_t>(const std::filesystem::path&, std::istream&, TPackedTableHeader);

} // namespace quillon
