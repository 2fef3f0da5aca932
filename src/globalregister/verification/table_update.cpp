#include "globalregister/verification/table_update.h"

#include <array>

#include "globalregister/packed/little_endian.h"
#include "globalregister/precalc_file_name.h"

namespace quillon {

namespace {

constexpr auto kUpdate = std::ios::in | std::ios::out | std::ios::binary;

[[nodiscard]] bool WriteAt(std::fstream& file, std::uint64_t offset, const std::uint8_t* bytes, std::size_t nBytes) {
    file.clear();
    file.seekp(static_cast<std::streamoff>(offset));
    file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(nBytes));
    return static_cast<bool>(file.flush());
}

} // namespace

std::filesystem::path PlainFileOf(const TGlobalRegister& data, const TPrecalcFolders& folders) {
    const std::filesystem::path second = GetFileName(data, folders, {EPrecalcKind::Plain, false, true});
    if (!second.empty() && second.parent_path() == data.loadedFrom.parent_path())
        return second;
    return GetFileName(data, folders, {EPrecalcKind::Plain, false, false});
}

CTableUpdate::CTableUpdate(CTableLengths& lengths, const std::filesystem::path& plain)
    : m_lengths(lengths), m_bPairs(lengths.Data().bBitData), m_file(plain, kUpdate) {
    if (m_bPairs)
        m_details.open(DetailsBeside(plain), kUpdate);
}

// Of bit data the length is written first: a pair without a length would be of no use.
bool CTableUpdate::Write(std::uint64_t index, int nMoves) {
    const std::uint16_t element = m_lengths.ElementFor(index, nMoves);
    std::array<std::uint8_t, 2> bytes{};
    StoreLittleEndian(bytes.data(), element);
    const std::size_t nBytes = m_lengths.Data().nElementSize;
    if (element == 0 || !WriteAt(m_bPairs ? m_details : m_file, nBytes * index, bytes.data(), nBytes) ||
        (m_bPairs && !WritePair(index)))
        return false;
    m_lengths.SetElement(index, element);
    return true;
}

bool CTableUpdate::WritePair(std::uint64_t index) {
    const std::uint64_t offset = index / kPairsOfAByte;
    m_file.clear();
    m_file.seekg(static_cast<std::streamoff>(offset));
    const int byte = m_file.get();
    if (!m_file)
        return false;
    auto pairs = static_cast<std::uint8_t>(byte);
    AddToBitPair(&pairs, index % kPairsOfAByte, 1);
    return WriteAt(m_file, offset, &pairs, 1);
}

} // namespace quillon
