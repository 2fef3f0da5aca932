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

[[nodiscard]] bool ReadAt(std::fstream& file, std::uint64_t offset, std::uint8_t* bytes, std::size_t nBytes) {
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(file.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(nBytes)));
}

} // namespace

std::filesystem::path PlainFileOf(const TGlobalRegister& data, const TPrecalcFolders& folders) {
    const std::filesystem::path second = GetFileName(data, folders, {EPrecalcKind::Plain, false, true});
    if (!second.empty() && second.parent_path() == data.loadedFrom.parent_path())
        return second;
    return GetFileName(data, folders, {EPrecalcKind::Plain, false, false});
}

CTableUpdate::CTableUpdate(CTableLengths& lengths, const std::filesystem::path& plain)
    : m_lengths(lengths), m_bPairs(lengths.Data().bBitData), m_plain(plain), m_file(plain, kUpdate) {
    if (m_bPairs)
        m_details.open(DetailsBeside(plain), kUpdate);
}

// What is replaced is read from the file: data that are read from there tell no marks. Of bit data the length is
// written first: a pair without a length would be of no use.
EElementWrite CTableUpdate::Write(std::uint64_t index, int nMoves) {
    m_fileAtFault = m_bPairs ? DetailsBeside(m_plain) : m_plain;
    std::fstream& file = m_bPairs ? m_details : m_file;
    const std::size_t nBytes = m_lengths.Data().nElementSize;
    std::array<std::uint8_t, 2> bytes{};
    if (!ReadAt(file, nBytes * index, bytes.data(), nBytes))
        return EElementWrite::Failed;
    const std::uint16_t element = m_lengths.ElementFor(LoadLittleEndian<std::uint16_t>(bytes.data()), nMoves);
    if (element == 0)
        return EElementWrite::NoRoom;
    StoreLittleEndian(bytes.data(), element);
    if (!WriteAt(file, nBytes * index, bytes.data(), nBytes))
        return EElementWrite::Failed;
    m_fileAtFault = m_plain;
    if (m_bPairs && !WritePair(index))
        return EElementWrite::Failed;
    m_lengths.SetElement(index, element);
    return EElementWrite::Done;
}

bool CTableUpdate::WritePair(std::uint64_t index) {
    const std::uint64_t offset = index / kPairsOfAByte;
    std::uint8_t pairs = 0;
    if (!ReadAt(m_file, offset, &pairs, 1))
        return false;
    AddToBitPair(&pairs, index % kPairsOfAByte, 1);
    return WriteAt(m_file, offset, &pairs, 1);
}

} // namespace quillon
