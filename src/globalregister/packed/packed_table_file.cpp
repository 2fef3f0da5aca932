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

// Both are multiples of both sizes of blocks.
constexpr std::uint64_t kPieceElements = 0x100000; // in memory at a time
constexpr std::uint64_t kTotalElements =
    0x20000000; // whose blocks share their room, however little the first ones pack

template <class T>
EPackEnd WritePieces(std::ostream& file, std::istream& source, TPackedTableHeader& header,
                     std::vector<std::uint64_t>& offsets) {
    CLzwTablePacker<T> packer(header.m_nBlockElements, 0);
    std::uint64_t nRoom = 0;
    for (std::uint64_t first = 0; first < header.m_nElements; first += kPieceElements) {
        const std::uint64_t nRest = header.m_nElements - first;
        const std::uint64_t nElements = std::min(kPieceElements, nRest);
        if (first % kTotalElements == 0)
            nRoom = packer.RoomFor(std::min(kTotalElements, nRest));
        std::vector<std::uint8_t> piece(nElements * sizeof(T));
        if (!ReadBytes(source, piece.data(), piece.size()))
            return EPackEnd::StreamFailed;
        if (const EPackEnd end = packer.Pack(piece, nElements, nRoom); end != EPackEnd::Packed)
            return end;
        if (!WriteBytes(file, packer.Blocks().data(), packer.Blocks().size()))
            return EPackEnd::StreamFailed;
        for (const std::uint64_t start : packer.Starts())
            offsets.push_back(header.m_nFileSize + start);
        header.m_nFileSize += packer.Blocks().size();
        nRoom -= packer.Blocks().size();
    }
    return EPackEnd::Packed;
}

template <class T> EPackEnd WriteFile(std::ostream& file, std::istream& source, TPackedTableHeader header) {
    const std::uint64_t nBlocks = BlocksOf(header.m_nElements, header.m_nBlockElements);
    std::vector<std::uint64_t> offsets(nBlocks, 0);
    if (!WritePackedTableHead(file, {0, false, 0, 0, 0, 0}, offsets))
        return EPackEnd::StreamFailed;
    offsets.clear();
    header.m_nFileSize = kPackedTableHeaderBytes + kBlockOffsetBytes * nBlocks;
    if (const EPackEnd end = WritePieces<T>(file, source, header, offsets); end != EPackEnd::Packed)
        return end;
    file.seekp(0);
    return WritePackedTableHead(file, header, offsets) ? EPackEnd::Packed : EPackEnd::StreamFailed;
}

} // namespace

template <class T>
EPackEnd WritePackedTableFile(const std::filesystem::path& path, std::istream& source, TPackedTableHeader header) {
    EPackEnd end = EPackEnd::NoMemory;
    try {
        std::ofstream file(path, std::ios::binary);
        end = WriteFile<T>(file, source, header);
        file.close();
        if (end == EPackEnd::Packed && !file)
            end = EPackEnd::StreamFailed;
    } catch (const std::bad_alloc&) {
    }
    std::error_code error;
    if (end != EPackEnd::Packed)
        std::filesystem::remove(path, error);
    return end;
}

template EPackEnd WritePackedTableFile<std::uint8_t>(const std::filesystem::path&, std::istream&, TPackedTableHeader);
template EPackEnd WritePackedTableFile<std::uint16_t>(const std::filesystem::path&, std::istream&, TPackedTableHeader);

} // namespace quillon
