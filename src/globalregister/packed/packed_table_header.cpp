#include "globalregister/packed/packed_table_header.h"

#include "globalregister/packed/little_endian.h"

namespace quillon {

namespace {

constexpr std::uint64_t kPlainDictionaryBit = std::uint64_t{1} << 63;

} // namespace

TPackedTableHeaderBytes EncodePackedTableHeader(const TPackedTableHeader& header) {
    TPackedTableHeaderBytes bytes{};
    StoreLittleEndian(bytes.data(), header.m_nFileSize | (header.m_bPlainDictionary ? kPlainDictionaryBit : 0));
    StoreLittleEndian(bytes.data() + 8, header.m_nElements);
    StoreLittleEndian(bytes.data() + 16, header.m_nBlockElements);
    StoreLittleEndian(bytes.data() + 20, header.m_nUserWord);
    StoreLittleEndian(bytes.data() + 24, header.m_wFlags);
    return bytes;
}

TPackedTableHeader DecodePackedTableHeader(const TPackedTableHeaderBytes& bytes) {
    const auto size = LoadLittleEndian<std::uint64_t>(bytes.data());
    TPackedTableHeader header;
    header.m_nFileSize = size & ~kPlainDictionaryBit;
    header.m_bPlainDictionary = (size & kPlainDictionaryBit) != 0;
    header.m_nElements = LoadLittleEndian<std::uint64_t>(bytes.data() + 8);
    header.m_nBlockElements = LoadLittleEndian<std::uint32_t>(bytes.data() + 16);
    header.m_nUserWord = LoadLittleEndian<std::uint32_t>(bytes.data() + 20);
    header.m_wFlags = LoadLittleEndian<std::uint16_t>(bytes.data() + 24);
    return header;
}

} // namespace quillon
