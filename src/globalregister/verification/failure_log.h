#pragma once
// The log of faulty elements of a table, "PrecalcFailures<type>.txt": one line a fault, "index,FEN,stored,computed",
// with both lengths in half-moves (0 no mate, -1 unknown). A second pass over such a log writes one of its own, with
// "_pass2".

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "globalregister/system_failure.h"

namespace quillon {

struct TPrecalcFault {
    std::uint64_t m_nIndex = 0;
    std::string m_fen;
    int m_nStored = 0;   // half-moves
    int m_nComputed = 0; // half-moves
};

/// A file cannot be written.
class CWriteFailure : public CSystemFailure {
  public:
    using CSystemFailure::CSystemFailure;
};

[[nodiscard]] std::string FailureLogName(std::string_view typeName, bool bSecondPass);

/// A log that is written. A file of its name is emptied.
class CFailureLog {
  public:
    ///   Errors  CWriteFailure "Cannot open file " with the name.
    explicit CFailureLog(const std::filesystem::path& path);

    /// Adds a line; it is in the file when this returns.
    ///   Errors  CWriteFailure "Error writing to file: " with the name.
    void Write(const TPrecalcFault& fault);

  private:
    std::filesystem::path m_path;
    std::ofstream m_file;
};

/// The indices of a log, ascending, each once.
///   Errors  CDiskFailure "Cannot open file " with the name; ChessException: a line without an index below nElements.
[[nodiscard]] std::vector<std::uint64_t> ReadFailureLog(const std::filesystem::path& path, std::uint64_t nElements);

} // namespace quillon
