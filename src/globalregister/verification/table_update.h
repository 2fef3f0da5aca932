#pragma once
// CTableUpdate: elements corrected in the plain file and in memory.

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "globalregister/precalc_file_name.h"
#include "globalregister/verification/table_lengths.h"

namespace quillon {

/// The plain file of a table, in the folder of the file that it was loaded from; there need not be one.
[[nodiscard]] std::filesystem::path PlainFileOf(const TGlobalRegister& data, const TPrecalcFolders& folders);

enum class EElementWrite : std::uint8_t {
    Done,
    NoRoom, // an element has none for the number
    Failed, // a file cannot be read or written: FileAtFault
};

class CTableUpdate {
  public:
    /// Opens the file for update; of bit data also that of the details.
    CTableUpdate(CTableLengths& lengths, const std::filesystem::path& plain);

    [[nodiscard]] bool IsOpen() const { return m_file.is_open() && (!m_bPairs || m_details.is_open()); }

    /// Stores a mate in so many moves. It is in the file when this returns.
    /// If not, memory is as it was.
    [[nodiscard]] EElementWrite Write(std::uint64_t index, int nMoves);

    /// Of the last write that failed.
    [[nodiscard]] const std::filesystem::path& FileAtFault() const { return m_fileAtFault; }

  private:
    [[nodiscard]] bool WritePair(std::uint64_t index);

    CTableLengths& m_lengths;
    const bool m_bPairs; // two bits an index, and details
    const std::filesystem::path m_plain;
    std::filesystem::path m_fileAtFault;
    std::fstream m_file;
    std::fstream m_details;
};

} // namespace quillon
