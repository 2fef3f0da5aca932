#include "tempregister/subproblem_file.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace quillon {

namespace {

constexpr std::size_t kMovesOffset = 64;
constexpr std::size_t kMarkerOffset = 66;
constexpr std::size_t kMoveOffset = 68;
constexpr std::size_t kValueOffset = 72;

void Put(TSubproblemBytes& bytes, std::size_t offset, std::uint32_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::uint32_t Get(const TSubproblemBytes& bytes, std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
    return value;
}

// One bit for each letter of `text`, 1 for a capital, five bits a character, least significant first.
std::string Capitals(std::string_view text) {
    std::string digits;
    unsigned group = 0;
    unsigned bits = 0;
    for (const char c : text) {
        const bool bCapital = c >= 'A' && c <= 'Z';
        if (!bCapital && !(c >= 'a' && c <= 'z'))
            continue;
        group |= (bCapital ? 1u : 0u) << bits;
        if (++bits == 5) {
            digits += Alphanum5Digit(group);
            group = bits = 0;
        }
    }
    if (bits != 0)
        digits += Alphanum5Digit(group);
    return digits;
}

} // namespace

TSubproblemBytes EncodeSubproblem(const TSubproblemRecord& record) {
    TSubproblemBytes bytes{};
    std::copy(record.m_item.m_board.begin(), record.m_item.m_board.end(), bytes.begin());
    Put(bytes, kMovesOffset, record.m_info.nMoves, 2);
    Put(bytes, kMarkerOffset, record.m_info.nMarker, 2);
    Put(bytes, kMoveOffset, record.m_info.nMove, 4);
    Put(bytes, kValueOffset, record.m_info.bValue ? 1 : 0, 1);
    return bytes;
}

bool DecodeSubproblem(const TSubproblemBytes& bytes, TSubproblemRecord& record) {
    std::copy_n(bytes.begin(), record.m_item.m_board.size(), record.m_item.m_board.begin());
    record.m_info.nMoves = static_cast<std::uint16_t>(Get(bytes, kMovesOffset, 2));
    record.m_info.nMarker = static_cast<std::uint16_t>(Get(bytes, kMarkerOffset, 2));
    record.m_info.nMove = Get(bytes, kMoveOffset, 4);
    record.m_info.bValue = bytes[kValueOffset] != 0;
    const auto isCode = [](TFigure figure) { return figure == kNoFigure || IsFigureCode(figure); };
    return std::all_of(record.m_item.m_board.begin(), record.m_item.m_board.end(), isCode) &&
           record.m_info.nMarker == kMoveMarker && bytes[kValueOffset] <= 1;
}

bool WriteSubproblem(std::ostream& file, const TSubproblemRecord& record) {
    const TSubproblemBytes bytes = EncodeSubproblem(record);
    return static_cast<bool>(file.write(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

ERecordRead ReadSubproblem(std::istream& file, TSubproblemRecord& record) {
    TSubproblemBytes bytes{};
    file.read(reinterpret_cast<char*>(bytes.data()), bytes.size());
    if (file.gcount() == 0 && file.eof() && !file.bad())
        return ERecordRead::End;
    if (!file || !DecodeSubproblem(bytes, record))
        return ERecordRead::Damaged;
    return ERecordRead::Record;
}

bool MoveToBackup(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return true;
    std::filesystem::path backup = file;
    backup += kBackupExtension;
    std::filesystem::rename(file, backup, error);
    return !error;
}

std::filesystem::path SolvedPositionPath(const std::filesystem::path& folder, const TChessboardId& id,
                                         std::string_view extension) {
    const std::string name = ToAlphanum6(id);
    return folder / (name + "." + Capitals(name) + std::string(extension));
}

} // namespace quillon
