#include "globalregister/verification/table_lengths.h"

#include <mutex>
#include <optional>
#include <string>

#include "globalregister/disk_access.h"
#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/precalc_file_name.h"
#include "globalregister/precalc_read.h"
#include "globalregister/table_pieces.h"
#include "globalregister/table_position.h"
#include "globalregister/unfinished_look.h"

namespace quillon {

namespace {

constexpr std::uint8_t kWhiteMates = 1; // of a pair of bit data

/// The element that IsMateByIndex has made half-moves of.
std::uint32_t ElementOfHalfMoves(std::uint16_t halfMoves, std::size_t nElementSize) {
    if (halfMoves == kUnknownHalfMoves)
        return nElementSize == 1 ? kUnknownElement : kFirstUnknownWord;
    return (halfMoves + 1u) / 2;
}

} // namespace

CTableLengths::CTableLengths(TGlobalRegister& data, bool bInTheMaking)
    : m_data(data), m_bMarked(bInTheMaking && !data.bBitData),
      m_bLooksUnfinished(!bInTheMaking && quillon::LooksUnfinished(data)) {
    const bool bByte = data.nElementSize == 1;
    const std::uint32_t nFirstUnsettled = bByte ? kFirstUnsettledByte : kFirstUnsettledWord;
    m_nUnknown = m_bLooksUnfinished ? nFirstUnsettled : bByte ? kUnknownElement : kFirstUnknownWord;
    m_nLengthMask = m_bMarked ? nFirstUnsettled : 0xffff;
    const bool bOnDisk = data.diskStream.is_open();
    if (!data.bBitData && !bOnDisk && data.nRandomAccessKind == kPlainAccess)
        m_elements = data.data.data();
    if (data.bBitData && bOnDisk)
        m_pairs.open(data.loadedFrom, std::ios::binary);
    if (m_bMarked && !bByte && m_elements == nullptr)
        throw CNoRoom("Not enough memory for the table in the making of type " + data.typeName);
}

std::vector<std::filesystem::path> CTableLengths::Files() const {
    std::vector<std::filesystem::path> files{m_data.loadedFrom};
    if (m_data.bBitData)
        files.push_back(DetailsBeside(m_data.loadedFrom));
    return files;
}

std::uint64_t CTableLengths::HoldDetails(std::uint64_t nMost) {
    const std::uint64_t size = m_data.GetSize() * m_data.nElementSize;
    if (!ArePairsInMemory() || size > nMost)
        return 0;
    std::optional<std::vector<std::uint8_t>> details = ReadWholeFile(DetailsBeside(m_data.loadedFrom));
    if (!details)
        throw CDiskFailure("Error reading data of type " + m_data.typeName);
    if (details->size() != size)
        throw ChessException("Error reading data of type " + m_data.typeName);
    m_details = std::move(*details);
    m_elements = m_details.data();
    return size;
}

std::uint32_t CTableLengths::Element(std::uint64_t index) const {
    return m_data.nElementSize == 1 ? m_elements[index] : LoadLittleEndian<std::uint16_t>(m_elements + 2 * index);
}

int CTableLengths::LengthOf(std::uint32_t element) const {
    if (m_bMarked) {
        element &= m_nLengthMask;
        return element == 0 || element == m_nLengthMask ? 0 : static_cast<int>(2 * element - 1);
    }
    if (element >= m_nUnknown)
        return kUnknownLength;
    return element == 0 ? 0 : static_cast<int>(2 * element - 1);
}

// Of bit data that were too large for memory the stream on disk is that of the lengths.
int CTableLengths::OtherForm(std::uint64_t index) const {
    if (!ArePairsInMemory())
        return LengthOf(ElementOfHalfMoves(m_data.IsMateByIndex(index), m_data.nElementSize));
    if (!PairSaysMate(index))
        return 0;
    const int nLength = DetailHalfMoves(index);
    return nLength == 0 ? kUnknownLength : nLength;
}

int CTableLengths::DetailHalfMoves(std::uint64_t index) const {
    if (!ArePairsInMemory())
        return HalfMoves(index);
    return LengthOf(m_elements == nullptr ? ElementOfHalfMoves(m_data.DetailHalfMoves(index), m_data.nElementSize)
                                          : Element(index));
}

bool CTableLengths::PairSaysMate(std::uint64_t index) const {
    if (ArePairsInMemory())
        return (BitPair(m_data.data.data(), index) & kWhiteMates) != 0;
    std::uint8_t pairs = 0;
    const std::lock_guard lock(DiskAccessSection());
    m_pairs.clear();
    m_pairs.seekg(static_cast<std::streamoff>(index / kPairsOfAByte));
    if (!ReadBytes(m_pairs, &pairs, 1))
        throw CDiskFailure("Error reading data of type " + m_data.typeName);
    return (BitPair(&pairs, index % kPairsOfAByte) & kWhiteMates) != 0;
}

int CTableLengths::LongestMate() const {
    int nLongest = 0;
    for (std::uint64_t index = 1; index < m_data.GetSize(); ++index)
        if (const int n = HalfMoves(index); n > nLongest)
            if (TChessboard b = EmptyChessboard(); GetTablePosition(m_data, index, b))
                nLongest = n;
    return (nLongest + 1) / 2;
}

std::uint16_t CTableLengths::ElementFor(std::uint16_t stored, int nMoves) const {
    const std::uint32_t nMost = m_bMarked ? m_nLengthMask : m_nUnknown; // excluded
    const auto element = static_cast<std::uint32_t>(nMoves);
    if (element >= nMost)
        return 0;
    return static_cast<std::uint16_t>(element | (m_bMarked ? stored & ~m_nLengthMask : 0));
}

void CTableLengths::SetElement(std::uint64_t index, std::uint16_t element) {
    if (m_data.bBitData) {
        if (ArePairsInMemory())
            m_data.SetMateByIndex(index, kWhiteMates);
        if (!m_details.empty() && m_data.nElementSize == 1)
            m_details[index] = static_cast<std::uint8_t>(element);
        else if (!m_details.empty())
            StoreLittleEndian(m_details.data() + 2 * index, element);
    } else if (m_elements != nullptr) {
        m_data.SetMateByIndex(index, element);
    }
}

bool LooksUnfinished(const TGlobalRegister& data) {
    if (data.bCompactUnfinished || data.bAllSettled)
        return data.bCompactUnfinished;
    CUnfinishedLook look(data.nElementSize);
    const auto take = [&](const std::uint8_t* bytes, std::uint64_t first, std::uint64_t nElements) {
        look.Take(bytes, first, nElements);
    };
    if (data.diskStream.is_open())
        ForTablePieces(data.diskStream, data, take);
    else if (data.bBitData)
        ForTablePieces(data.detailStream, data, take);
    else if (data.nRandomAccessKind == kPlainAccess)
        take(data.data.data(), 0, data.GetSize());
    else
        for (std::uint64_t index = 1; index < data.GetSize(); ++index)
            look.TakeElement(ElementOfHalfMoves(data.IsMateByIndex(index), data.nElementSize));
    return look.IsUnfinished();
}

std::filesystem::path DetailsBeside(const std::filesystem::path& path) {
    std::string name = path.string();
    const std::string_view extension = kPrecalcExtensions[static_cast<std::size_t>(KindOfFile(path))];
    name.resize(name.size() - extension.size());
    return name + std::string(kDetailsExtension);
}

} // namespace quillon
