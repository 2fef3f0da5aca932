#pragma once
// What the making of tables tells and asks.

#include <cstdint>
#include <string>
#include <string_view>

namespace quillon {

inline constexpr std::string_view kErrorTitle = "Error";
inline constexpr std::string_view kQuestionTitle = "Question";

inline constexpr std::string_view kSlowOptionEnd =
    " slows down data generation process.\nDo you want to continue?\n\nNOTE: Select CANCEL, to continue with changed "
    "setting to force unpack data to memory (for better performance)";

[[nodiscard]] inline std::string PackedDataQuestion() {
    return "Option to use compressed data \"random access\" (ini: UseDataPackedForRandomAccess) is on - it" +
           std::string(kSlowOptionEnd);
}
[[nodiscard]] inline std::string DiskAccessQuestion() {
    return "Option to use data from disk (ini: GlobalRegisterForceDiskAccess) without loading to memory is on - it "
           "SIGNIFICANTLY" +
           std::string(kSlowOptionEnd);
}

inline constexpr std::string_view kSecondRootBegin = "There is an additional PrecalcPath = ";

[[nodiscard]] inline std::string SecondRootQuestion(const std::string& path) {
    return std::string(kSecondRootBegin) + path + "\nDo you want to continue?";
}

inline constexpr std::string_view kPawnAnalysisQuestion = "Should short analysis for unblocked black pawns be used?";

[[nodiscard]] inline std::string PendingSaveText(const std::string& mark) {
    return "The following file exists: " + mark +
           "\n\nThis indicates a failure during save.\nGeneration cannot be continued.";
}

[[nodiscard]] inline std::string OtherRunText(const std::string& lock) {
    return "Another process is making or mending this table: " + lock + " is locked by it";
}
[[nodiscard]] inline std::string SecondRootTableText(const std::string& file) {
    return "The following file exists: " + file +
           "\n\nIt is in the folder PrecalcPath, which nothing is written to, and would be taken before a new one.";
}
[[nodiscard]] inline std::string SecondRootInTheMakingText(const std::string& file) {
    return "A table in the making: " + file +
           "\n\nIt is in the folder PrecalcPath, which nothing is written to. While it is there, no table of its type "
           "counts as finished.";
}

/// Behind kErrorReadingFile and the file.
inline constexpr std::string_view kNoTable = " (it is no whole table of its type)";
inline constexpr std::string_view kOnlyArchive = " (an archive, which has to be unpacked first)";

inline constexpr std::string_view kNoMemoryForTable = "Not enough memory to allocate buffer for data generation.";
inline constexpr std::string_view kNoDetailsFile = "Cannot create file (not enough disk space?)";

inline constexpr std::string_view kContinueQuestion = "File already exists. Continue filling data?";

/// With which level an unfinished table is taken up.
///   nMoves  the mates that it has.
[[nodiscard]] inline std::string LevelQuestion(std::uint32_t nMoves, bool bOneOfMany) {
    return std::string(bOneOfMany ? "The file" : "File") + " already exists and contains up to #" +
           std::to_string(nMoves) +
           ".\nTo continue filling in the data from the next level, select 'Yes' or to fill in the contents from the "
           "current #" +
           std::to_string(nMoves) + " select 'No'.";
}

inline constexpr std::string_view kErrorReadingFile = "Error reading file ";
inline constexpr std::string_view kErrorReadingData =
    "Error reading register data from disk (not enough memory? UseDataPackedForRandomAccess off?)";
inline constexpr std::string_view kNoRegisterFound = "No global register found for position type ";
inline constexpr std::string_view kErrorDuringGeneration = "An error occurred during data generation";
inline constexpr std::string_view kErrorDuringCompression = "An error occurred during data compression";
inline constexpr std::string_view kRemoveQuestion = "\nShould partially generated file(s) be removed from disk?";

} // namespace quillon
