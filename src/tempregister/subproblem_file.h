#pragma once
// The file of a position's solved subpositions, "*.cspdb": records of 76 bytes with no head and no count.
//
//   offset  bytes  content
//   0       64     the board, a1 to h8, one figure code a square
//   64      2      nMoves, plies left: odd with White to move, even with Black
//   66      2      marker, 986
//   68      4      packed move (TMove, source in the lowest byte), 0 for none
//   72      1      the value, 0 or 1
//   73      3      zero
// Numbers are little-endian. The records stand in no order that a reader may rely on.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <ostream>
#include <string_view>

#include "core/chessboard_id.h"
#include "tempregister/chessboard_register.h"

namespace quillon {

inline constexpr std::size_t kSubproblemInfoBytes = 12;
inline constexpr std::size_t kSubproblemRecordBytes = kSquares + kSubproblemInfoBytes;

/// A save ends with failure once the file has this many records.
inline constexpr int kMaxSavedSubproblems = 13797;

inline constexpr std::string_view kSubproblemsExtension = ".cspdb";
inline constexpr std::string_view kProblemExtension = ".cpdb";
inline constexpr std::string_view kBackupExtension = ".BAK";

struct TSubproblemRecord {
    TChessboardRegisterItem m_item{};
    TSubproblemRegisterInfo<bool> m_info;
};

using TSubproblemBytes = std::array<std::uint8_t, kSubproblemRecordBytes>;

[[nodiscard]] TSubproblemBytes EncodeSubproblem(const TSubproblemRecord& record);

/// False for bytes that no writer of this format wrote: an unknown figure code, a wrong marker, a value above 1.
[[nodiscard]] bool DecodeSubproblem(const TSubproblemBytes& bytes, TSubproblemRecord& record);

/// Appends a record; false if the stream fails. What is buffered shows its failure only when the file is closed.
[[nodiscard]] bool WriteSubproblem(std::ostream& file, const TSubproblemRecord& record);

enum class ERecordRead { Record, End, Damaged };

/// Reads the next record. Damaged: the file ends within it, cannot be read, or holds what no writer wrote.
[[nodiscard]] ERecordRead ReadSubproblem(std::istream& file, TSubproblemRecord& record);

/// Moves a file out of the way of a new one, to its name with ".BAK" appended, over an older backup. True if nothing is
/// in the way now; what is no plain file stays.
[[nodiscard]] bool MoveToBackup(const std::filesystem::path& file);

/// The file of a position: its id, a dot, which letters of the id are capitals, the extension. The capitals are told
/// because there are file systems that do not.
[[nodiscard]] std::filesystem::path SolvedPositionPath(const std::filesystem::path& folder, const TChessboardId& id,
                                                       std::string_view extension);

} // namespace quillon
