#pragma once
// The settings of the program: a record, and the file options.ini that it is read from and written to.
//
// The file has one section, "chess"; docs/settings.md tells its keys. A key that is missing, or has nothing behind its
// "=", leaves the default. A number outside of what a key allows counts as the nearest one that it does.
//
// Threads: a record is filled at the start and then only read. The functions may be called from any thread: a file is
// read, changed and written by one of them at a time.

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "core/notifier.h"

namespace quillon {

/// Values of TSettings::m_nWarnAboutSecondInstance. Mind their order.
enum class ESecondInstance : int { Silent = 0, StatusText = 1, Box = 2 };

/// The keys in the order of reading. A field is named like its key.
struct TSettings {
    int m_nLanguageId = 1; // 0 Polish, 1 English, 2 Ukrainian
    bool m_bQuickMode = true;
    bool m_bWarningOnLichessDataRepetition = false;
    int m_nSchedulerLevels = 6; // 0 (no scheduler) to kMostSchedulerLevels; in the file 1 less
    bool m_bCheckTempRegCoherency = true;
    bool m_bCustomScheduler = true;
    int m_nObserverLevels = 0; // 0..65535
    int m_nLichessLevels = 1;  // White's first moves; 0 off, -1 off in the window too; up to 32767
    int m_nWarnAboutSecondInstanceOfProgram = static_cast<int>(ESecondInstance::Box);
    bool m_bPromptHeuristics = false;
    int m_nMaxMemRatioForTempReg = 20; // percent of the physical memory, 0..100
    bool m_bClearRegisterOnStartSolving = true;
    int m_nMaxMemRatioForPrecalculatedData = 20; // percent of the physical memory, 0..100
    bool m_bLetAnalyzeTheSameMoveInTwoThreads = true;
    bool m_bCommentCompatibilityMode = false;
    bool m_bShowMainVariant = true;
    int m_nUseMainVariantAsSortIndications = 0; // 0 no, 1 main variant, 2 other variants too
    bool m_bLogMoves = false;
    bool m_bRegisterInfoLog = false;
    bool m_bTryRelaxSpecialHeuristicsLog = false;
    int m_nMinimizeToTray = 2;                    // 0 no, 1 always, 2 with Ctrl held
    int m_nAskForGlobalRegisterRecompression = 0; // 0..m_nUseDataPackedForRandomAccess
    int m_nUseDataPackedForRandomAccess = 2;      // 0..2
    bool m_bGlobalRegisterForceDiskAccess = true;
    std::string m_precalcPath; // UTF-8, up to 260 characters
    bool m_bAskIfSaveAfterDecompressAllToMem = false;
    int m_nMultithreadingLevels = 1; // read as 0 or 1; see default_threads.h
    bool m_bLogToFileTmpRegLoad = false;
    bool m_bEnableManualEngineControl = false;
    bool m_bScalingWarningDismissed = false;
    int m_nUsePredefinedIndications = 0; // 0 no, 1 yes, 2 yes and mark such problems
    int m_nAutoSaveMinutes = 240;        // 0 off
    int m_nAutoSaveMB = 256;             // 0 off
    int m_nLastProcessedMsgId = 0;

    bool operator==(const TSettings&) const = default;
};

/// The folder that the process had when this was first asked for: the working folder of the program.
[[nodiscard]] const std::filesystem::path& WorkingFolder();

/// "options.ini" there.
[[nodiscard]] const std::filesystem::path& SettingsPath();

/// Reads the file.
///   notifier  hears when AskForGlobalRegisterRecompression exceeds UseDataPackedForRandomAccess and is lowered to it.
///   defaults  of the keys that are missing; of all if there is no file or it cannot be read.
[[nodiscard]] TSettings LoadSettings(INotifier& notifier, const TSettings& defaults = {},
                                     const std::filesystem::path& path = SettingsPath());

/// Writes the keys that the user can change together, in their fixed order; all else in the file stays. The file is
/// replaced in one step. Why it could not be is returned; the settings hold for the run all the same.
std::error_code SaveSettings(const TSettings& settings, const std::filesystem::path& path = SettingsPath());

/// Writes one key. For those that SaveSettings leaves out.
///   key     a name of docs/settings.md.
///   Errors  std::errc::invalid_argument also for an unknown key.
std::error_code SaveSetting(const TSettings& settings, std::string_view key,
                            const std::filesystem::path& path = SettingsPath());

/// Tells at the start that the full log of the analysis is on, if it is.
void WarnOfFullLog(const TSettings& settings, INotifier& notifier);

} // namespace quillon
