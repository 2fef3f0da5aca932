#pragma once
// The options of the registers and their log, "registerInfo.log".

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace quillon {

/// Process-wide options of the registers.
struct TRegisterOptions {
    bool m_bCheckTempRegCoherency = true; // report a contradiction where none can be explained
    bool m_bRegisterInfoLog = false;      // write the register log
    std::filesystem::path m_registerInfoLog = "registerInfo.log";
    std::filesystem::path m_solvedProblemsFolder =
        "SolvedProblemsDB"; // of the files of solved positions; may be absent
};

/// Threads: written before a run starts, only read while one is under way.
[[nodiscard]] TRegisterOptions& RegisterOptions();

/// What a line of the register log says.
struct TRegisterLogEntry {
    std::string_view m_text;
    int m_nParam1 = 0;
    int m_nParam2 = 0;
    std::uint32_t m_nElements = 0;
    std::uint32_t m_nDoubtfulElements = 0;
};

/// Appends the entry's two lines to the log, while that is on. A log that cannot be written is no failure of the
/// analysis: nothing happens then.
/// Threads: the two lines of an entry stay together; entries of one register are put in order by its logLock.
void AppendRegisterLog(const TRegisterLogEntry& entry);

} // namespace quillon
