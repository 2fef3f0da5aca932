#include "globalregister/max_mates.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <optional>
#include <system_error>

#include "core/chess_exception.h"
#include "globalregister/disk_access.h"
#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/precalc_read.h"

namespace quillon {

namespace {

constexpr std::size_t kNumberBytes = sizeof(std::uint64_t);
constexpr std::uint32_t kFirstMark = 128; // in elements of one byte
constexpr std::uint64_t kPieceBytes = 1 << 20;
constexpr std::size_t kWantedIndexes = 2048; // at least so many are kept: a file with fewer has all

/// The greatest element so far, and where it stands.
class CMaximum {
  public:
    CMaximum(std::set<std::uint64_t>& indexes, std::size_t nLimit) : m_indexes(indexes), m_nLimit(nLimit) {
        m_indexes.clear();
    }
    void Take(std::uint64_t index, std::uint32_t element) {
        if (element == 0 || element < m_nGreatest || index == 0) // element 0 holds the flags
            return;
        if (element > m_nGreatest)
            m_indexes.clear();
        m_nGreatest = element;
        if (m_indexes.size() < m_nLimit)
            m_indexes.insert(m_indexes.end(), index);
    }
    [[nodiscard]] std::uint32_t Greatest() const { return m_nGreatest; }

  private:
    std::set<std::uint64_t>& m_indexes;
    const std::size_t m_nLimit;
    std::uint32_t m_nGreatest = 0;
};

std::uint64_t NumberAt(const std::vector<std::uint8_t>& content, std::size_t number) {
    return LoadLittleEndian<std::uint64_t>(content.data() + number * kNumberBytes);
}

/// None unless the file holds what is wanted and could be of this table.
std::optional<std::uint32_t> ReadCache(const std::filesystem::path& path, std::uint64_t nElements,
                                       std::set<std::uint64_t>& indexes, std::size_t nLimit) {
    const std::optional<std::vector<std::uint8_t>> content = ReadWholeFile(path);
    if (!content || content->size() < kNumberBytes || content->size() % kNumberBytes != 0)
        return std::nullopt;
    const std::size_t nIndexes = content->size() / kNumberBytes - 1;
    if (nIndexes >= kWantedIndexes && nIndexes < nLimit) // more were not wanted then
        return std::nullopt;
    const std::uint64_t nMoves = NumberAt(*content, 0);
    if (nMoves > UINT16_MAX || (nMoves != 0) != (nIndexes != 0))
        return std::nullopt;
    indexes.clear();
    for (std::size_t i = 0; i < std::min(nIndexes, nLimit); ++i) {
        if (NumberAt(*content, i + 1) >= nElements)
            return std::nullopt;
        indexes.insert(NumberAt(*content, i + 1));
    }
    return static_cast<std::uint32_t>(nMoves);
}

/// Was the first written before the second? Of what cannot be told: no.
bool IsOlder(const std::filesystem::path& first, const std::filesystem::path& second) {
    std::error_code firstError, secondError;
    const auto firstTime = std::filesystem::last_write_time(first, firstError);
    const auto secondTime = std::filesystem::last_write_time(second, secondError);
    return !firstError && !secondError && firstTime < secondTime;
}

/// A cache that cannot be written is none.
void WriteCache(const std::filesystem::path& path, std::uint32_t nMoves, const std::set<std::uint64_t>& indexes) {
    std::vector<std::uint8_t> content((indexes.size() + 1) * kNumberBytes);
    StoreLittleEndian(content.data(), std::uint64_t{nMoves});
    std::size_t at = 0;
    for (const std::uint64_t index : indexes)
        StoreLittleEndian(content.data() + (at += kNumberBytes), index);
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    (void)WriteWholeFile(path, content);
}

/// Which elements of one byte are no lengths: details have no marks.
std::uint32_t FirstMark(const TGlobalRegister& data) { return data.bBitData ? kUnknownElement : kFirstMark; }

void TakeElements(const std::uint8_t* bytes, std::uint64_t first, std::uint64_t nElements, const TGlobalRegister& data,
                  CMaximum& maximum) {
    const std::size_t nElementSize = data.nElementSize;
    for (std::uint64_t i = 0; i < nElements; ++i) {
        const std::uint32_t element = nElementSize == 1 ? bytes[i] : LoadLittleEndian<std::uint16_t>(bytes + 2 * i);
        if (nElementSize != 1 || element < FirstMark(data))
            maximum.Take(first + i, element);
    }
}

/// A table on disk, piece by piece: lookups of others may come between.
std::uint32_t ScanStream(std::ifstream& stream, const TGlobalRegister& data, CMaximum& maximum) {
    const std::uint64_t nPiece = kPieceBytes / data.nElementSize;
    std::vector<std::uint8_t> piece(kPieceBytes);
    for (std::uint64_t first = 0; first < data.GetSize(); first += nPiece) {
        const std::uint64_t nElements = std::min(nPiece, data.GetSize() - first);
        {
            const std::lock_guard lock(DiskAccessSection());
            stream.clear();
            stream.seekg(static_cast<std::streamoff>(first * data.nElementSize));
            if (!ReadBytes(stream, piece.data(), nElements * data.nElementSize))
                throw ChessException("Error reading data of type " + data.typeName);
        }
        TakeElements(piece.data(), first, nElements, data, maximum);
    }
    return maximum.Greatest();
}

std::uint32_t Scan(const TGlobalRegister& data, std::set<std::uint64_t>& indexes, std::size_t nLimit) {
    if (data.nRandomAccessKind == kPackedAccess && !data.diskStream.is_open())
        return data.packed->FindMaxAndIndexes(indexes, nLimit);
    CMaximum maximum(indexes, nLimit);
    if (data.diskStream.is_open())
        return ScanStream(data.diskStream, data, maximum);
    if (data.bBitData)
        return ScanStream(data.detailStream, data, maximum);
    if (data.nRandomAccessKind == kPlainAccess)
        TakeElements(data.data.data(), 0, data.GetSize(), data, maximum);
    else
        for (std::uint64_t index = 1; index < data.GetSize(); ++index)
            if (const std::uint16_t n = data.IsMateByIndex(index); n != kUnknownHalfMoves)
                maximum.Take(index, (n + 1u) / 2);
    return maximum.Greatest();
}

void AddOnce(std::vector<std::string>& types, std::string typeName) {
    std::ranges::sort(typeName, {}, [](char letter) { return kTypeLetters.find(letter); });
    if (std::ranges::find(types, typeName) == types.end())
        types.push_back(std::move(typeName));
}

void AddPromotions(std::string_view typeName, char pawn, std::string_view figures, std::vector<std::string>& types) {
    const std::size_t place = typeName.find(pawn);
    for (const char figure : place == std::string_view::npos ? "" : figures) {
        std::string promoted(typeName);
        promoted[place] = figure;
        AddOnce(types, std::move(promoted));
    }
}

} // namespace

std::uint32_t GetMaxMoves(const TGlobalRegister& data, const std::filesystem::path& installation,
                          std::set<std::uint64_t>& indexes, std::size_t nLimit, bool bUseCache) {
    const std::filesystem::path cache =
        installation / kMaxMatesFolder / (PrecalcBaseName(data.typeName) + std::string(kMaxMatesExtension));
    if (!bUseCache || data.bCompactUnfinished) // what a table in the making has today is no answer for tomorrow
        return Scan(data, indexes, nLimit);
    if (!IsOlder(cache, data.loadedFrom))
        if (const std::optional<std::uint32_t> known = ReadCache(cache, data.GetSize(), indexes, nLimit))
            return *known;
    const std::uint32_t nMoves = Scan(data, indexes, std::max(nLimit, kWantedIndexes));
    WriteCache(cache, nMoves, indexes);
    if (indexes.size() > nLimit)
        indexes.erase(std::next(indexes.begin(), static_cast<std::ptrdiff_t>(nLimit)), indexes.end());
    return nMoves;
}

std::vector<std::string> SubTypesOf(std::string_view typeName) {
    std::vector<std::string> types;
    AddPromotions(typeName, 'P', "BRQN", types);
    AddPromotions(typeName, 'p', "brqn", types);
    for (std::size_t i = 0; typeName.size() > 1 && i < typeName.size(); ++i)
        AddOnce(types, std::string(typeName).erase(i, 1));
    return types;
}

TSubMaterialMaximum MaxMovesOfSubTypes(std::string_view typeName, CGlobalRegisters& registers) {
    TSubMaterialMaximum maximum;
    for (const std::string& subType : SubTypesOf(typeName)) {
        const CRegisterUse data(registers.GetRegisterForTool(TPositionIndexing(subType).nPositionType));
        std::set<std::uint64_t> indexes;
        if (data)
            maximum.m_nMoves =
                std::max(maximum.m_nMoves, GetMaxMoves(*data, registers.Options().m_folders.m_installation, indexes,
                                                       kWantedIndexes, true));
        else
            maximum.m_missingTypes.push_back(subType);
    }
    return maximum;
}

} // namespace quillon
