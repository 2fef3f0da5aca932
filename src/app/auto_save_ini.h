#pragma once
// What stands beside a register that was saved by itself: a small ini file that tells which run it belongs to, and the
// problem as a library file. By the first a later start of the program sees that the run was cut off, by the second it
// can go on with it.
//
// Threads: any; no two at once for one file.

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace quillon {

/// The keys of section "AutoSave", in the order of writing. A field is named like its key.
struct TAutoSaveIni {
    std::string m_FEN;      // full
    int m_nStipulation = 0; // N of "#N"
    std::string m_description;
    bool m_bHybridBruteForce = false;
    bool m_bAllSolutions = false;
    int m_nMaxMemRatioForPrecalculatedData = 20; // the setting at the time of the write, in percent
    int m_nMaxMemRatioPerProblem = 20;           // MaxMemRatioForTempReg at the time of the write
    std::optional<int> m_processId;              // of the writer; none: there is no file, or nobody has signed it
    std::string m_processFileName;               // of its executable

    bool operator==(const TAutoSaveIni&) const = default;
};

/// "AutoSave.tmpReg" -> "AutoSave.tmpReg.ini"
[[nodiscard]] std::filesystem::path AutoSaveIniPath(const std::filesystem::path& registerPath);

/// "AutoSave.tmpReg" -> "AutoSave.cp"
[[nodiscard]] std::filesystem::path AutoSaveProblemPath(const std::filesystem::path& registerPath);

/// Missing keys leave the defaults, and so does a file that cannot be read.
[[nodiscard]] TAutoSaveIni ReadAutoSaveIni(const std::filesystem::path& iniPath);

/// Replaces the file by one of exactly these keys.
[[nodiscard]] std::error_code WriteAutoSaveIni(const std::filesystem::path& iniPath, const TAutoSaveIni& ini);

/// Signs a file anew for a process that goes on with the run; the other keys stay.
[[nodiscard]] std::error_code SignAutoSaveIni(const std::filesystem::path& iniPath, int nProcessId,
                                              const std::string& processFileName);

/// The problem as a library of one problem. A run that is both is a hybrid one.
[[nodiscard]] std::string AutoSaveProblemText(const TAutoSaveIni& ini);

/// Writes that text.
[[nodiscard]] std::error_code WriteAutoSaveProblem(const std::filesystem::path& problemPath, const TAutoSaveIni& ini);

} // namespace quillon
