#include "globalregister/precalc_format.h"

#include <fstream>

namespace quillon {

namespace {

constexpr std::size_t kBitDataMen = 6;     // with the kings
constexpr std::size_t kWideElementMen = 6; // four besides the kings
constexpr std::size_t kCombinationMen = 6;
constexpr std::string_view kSmallBitDataType = "PPp";

} // namespace

std::uint16_t FlagsOf(const TPositionIndexing& indexing, bool bWideElements) {
    return static_cast<std::uint16_t>((indexing.bPawnRanks48 ? kFlagPawnRanks48 : 0) |
                                      (indexing.bUseCombinations ? kFlagCombinations : 0) |
                                      (bWideElements ? kFlagWideElements : 0));
}

std::size_t ElementSize(const TPositionIndexing& indexing, std::uint16_t wFlags) {
    return (wFlags & kFlagWideElements) != 0 && indexing.MenWithKings() >= kWideElementMen ? 2 : 1;
}

bool ApplyFlags(TPositionIndexing& indexing, std::uint16_t wFlags) {
    indexing.bPawnRanks48 = indexing.bHasPawns && (wFlags & kFlagPawnRanks48) != 0;
    const bool bCombinations =
        (wFlags & kFlagCombinations) != 0 && !indexing.custom && indexing.MenWithKings() >= kCombinationMen;
    return !bCombinations || indexing.SetupCombinations();
}

bool UsesBitData(const TPositionIndexing& indexing) {
    return !indexing.custom && (indexing.MenWithKings() >= kBitDataMen || indexing.typeName == kSmallBitDataType);
}

EPlainForm PlainFormOf(const TPositionIndexing& indexing, std::uint16_t wFlags, std::uint64_t nFileSize) {
    const std::uint64_t size = indexing.GetSize();
    if (nFileSize == size / kPairsOfAByte)
        return EPlainForm::BitData;
    return nFileSize == size * ElementSize(indexing, wFlags) ? EPlainForm::Elements : EPlainForm::Wrong;
}

std::optional<std::uint8_t> ReadFlags(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const int byte = file.get();
    if (!file)
        return std::nullopt;
    return static_cast<std::uint8_t>(byte);
}

std::string UnreadableWarning(const std::filesystem::path& path) {
    return "Data file is missing, damaged or cannot be read:\n\n" + path.string();
}

std::string FileSizeWarning(const std::filesystem::path& path, std::uint64_t nFileSize, std::uint64_t nExpectedSize) {
    return "Data file size and/or its header seems improper:\n\n" + path.string() +
           "\n\nFile size=" + std::to_string(nFileSize) + "\nExpected file size=" + std::to_string(nExpectedSize);
}

} // namespace quillon
