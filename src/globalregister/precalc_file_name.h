#pragma once
// Where the files of a type are, and what they are called.
//
//   folder   <installation>/Precalc, or its sub-folder "<men>pieces-pawns" or "<men>pieces+pawns" (men with the kings)
//            where there is one; the second root has the same sub-folders. Custom types: <installation>/CustomPrecalc
//   name     the type with "_" after each lower-case letter, for file systems that do not tell capitals; then
//   ".precalc",
//            for lengths beside bit data ".details", and the extension of the kind
//   custom   letters in brackets and squares have no "_"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "globalregister/position_indexing.h"

namespace quillon {

enum class EPrecalcKind : std::uint8_t {
    Plain,     // array of elements, or bit data
    Lz4,       // the plain file as one packed block or container
    PackedLzw, // packed for random access
    PackedLz4, // packed in large buckets, for archives
};

inline constexpr std::array kPrecalcKinds{EPrecalcKind::Plain, EPrecalcKind::Lz4, EPrecalcKind::PackedLzw,
                                          EPrecalcKind::PackedLz4};
inline constexpr std::array<std::string_view, 4> kPrecalcExtensions{"", ".lz4", ".packed.lzw", ".packed.lz4"};

inline constexpr std::string_view kPrecalcFolder = "Precalc";
inline constexpr std::string_view kCustomPrecalcFolder = "CustomPrecalc";

inline constexpr std::string_view kTableExtension = ".precalc";
inline constexpr std::string_view kDetailsExtension = ".details";

/// Appended to the name of a plain file, or of the file that they are about.
inline constexpr std::string_view kSavePendingExtension = ".SAVE_PENDING"; // a save that has not ended
inline constexpr std::string_view kBitDataExtension = ".BIT_DATA";         // bit data while it is written
inline constexpr std::string_view kIterationExtension = ".iter";           // the last level of an unfinished table
inline constexpr std::string_view kPackingLogExtension = ".log";           // beside a ".packed.lz4"
inline constexpr std::string_view kReplacedExtension = ".BAK";

struct TPrecalcFolders {
    std::filesystem::path m_installation;
    std::filesystem::path m_secondRoot; // empty: not configured
};

struct TPrecalcFile {
    EPrecalcKind m_kind = EPrecalcKind::Plain;
    bool m_bDetails = false;
    bool m_bSecondRoot = false;
};

/// The type's name without folder and extensions.
[[nodiscard]] std::string PrecalcBaseName(std::string_view typeName);

/// The path of a file, whether it exists or not; empty for a second root that is not configured, and for custom types
/// there, which have one folder only.
///   explicitPath  a file chosen by name, empty for none: it is the file of the kind whose extension it carries. The
///   other
///                 kinds get a name with "_SKIPTHIS", which does not exist.
[[nodiscard]] std::filesystem::path GetFileName(const TPositionIndexing& indexing, const TPrecalcFolders& folders,
                                                const TPrecalcFile& file,
                                                const std::filesystem::path& explicitPath = {});

/// The kind that a file's extension tells.
[[nodiscard]] EPrecalcKind KindOfFile(const std::filesystem::path& path);

/// The type that a file name tells, details and kind apart; none for names of another form.
[[nodiscard]] std::optional<std::string> TypeOfFile(const std::filesystem::path& path);

} // namespace quillon
