#pragma once
// The keys of options.ini as a table.

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string_view>
#include <variant>

#include "app/settings.h"
#include "search/analysis.h"

namespace quillon {

/// What becomes of a number that was read. The second argument stands in the file for the default.
using TAccept = int (*)(int number, int defaultNumber);

template <int nLeast, int nMost> constexpr int Nearest(int number, int) { return std::clamp(number, nLeast, nMost); }

template <int nLeast, int nMost> constexpr int KnownOrDefault(int number, int defaultNumber) {
    return number < nLeast || number > nMost ? defaultNumber : number;
}

constexpr int OneUnlessZero(int number, int) { return number != 0 ? 1 : 0; }

inline constexpr int kMostInt = std::numeric_limits<int>::max();
inline constexpr TAccept kAny = Nearest<std::numeric_limits<int>::min(), kMostInt>;
inline constexpr TAccept kNotNegative = Nearest<0, kMostInt>;
inline constexpr TAccept kUpTo2 = Nearest<0, 2>;
inline constexpr TAccept kPercent = Nearest<0, 100>;

using TSettingField = std::variant<bool TSettings::*, int TSettings::*, std::string TSettings::*>;

struct TSettingKey {
    const char* m_name;
    TSettingField m_field;
    TAccept m_accept = nullptr; // of a number
    int m_nHeldMore = 0;        // by so much the number in memory exceeds the one in the file
};

inline constexpr std::array kSettingKeys{
    TSettingKey{"LanguageId", &TSettings::m_nLanguageId, KnownOrDefault<0, 2>},
    TSettingKey{"QuickMode", &TSettings::m_bQuickMode},
    TSettingKey{"WarningOnLichessDataRepetition", &TSettings::m_bWarningOnLichessDataRepetition},
    TSettingKey{"SchedulerLevels", &TSettings::m_nSchedulerLevels, Nearest<-1, kMostSchedulerLevels - 1>, 1},
    TSettingKey{"CheckTempRegCoherency", &TSettings::m_bCheckTempRegCoherency},
    TSettingKey{"CustomScheduler", &TSettings::m_bCustomScheduler},
    TSettingKey{"ObserverLevels", &TSettings::m_nObserverLevels, Nearest<0, 65535>},
    TSettingKey{"LichessLevels", &TSettings::m_nLichessLevels, Nearest<-1, 32767>},
    TSettingKey{"WarnAboutSecondInstanceOfProgram", &TSettings::m_nWarnAboutSecondInstanceOfProgram, kUpTo2},
    TSettingKey{"PromptHeuristics", &TSettings::m_bPromptHeuristics},
    TSettingKey{"MaxMemRatioForTempReg", &TSettings::m_nMaxMemRatioForTempReg, kPercent},
    TSettingKey{"ClearRegisterOnStartSolving", &TSettings::m_bClearRegisterOnStartSolving},
    TSettingKey{"MaxMemRatioForPrecalculatedData", &TSettings::m_nMaxMemRatioForPrecalculatedData, kPercent},
    TSettingKey{"LetAnalyzeTheSameMoveInTwoThreads", &TSettings::m_bLetAnalyzeTheSameMoveInTwoThreads},
    TSettingKey{"CommentCompatibilityMode", &TSettings::m_bCommentCompatibilityMode},
    TSettingKey{"ShowMainVariant", &TSettings::m_bShowMainVariant},
    TSettingKey{"UseMainVariantAsSortIndications", &TSettings::m_nUseMainVariantAsSortIndications, kUpTo2},
    TSettingKey{"LogMoves", &TSettings::m_bLogMoves},
    TSettingKey{"RegisterInfoLog", &TSettings::m_bRegisterInfoLog},
    TSettingKey{"TryRelaxSpecialHeuristicsLog", &TSettings::m_bTryRelaxSpecialHeuristicsLog},
    TSettingKey{"MinimizeToTray", &TSettings::m_nMinimizeToTray, kUpTo2},
    TSettingKey{"AskForGlobalRegisterRecompression", &TSettings::m_nAskForGlobalRegisterRecompression, kUpTo2},
    TSettingKey{"UseDataPackedForRandomAccess", &TSettings::m_nUseDataPackedForRandomAccess, kUpTo2},
    TSettingKey{"GlobalRegisterForceDiskAccess", &TSettings::m_bGlobalRegisterForceDiskAccess},
    TSettingKey{"PrecalcPath", &TSettings::m_precalcPath},
    TSettingKey{"AskIfSaveAfterDecompressAllToMem", &TSettings::m_bAskIfSaveAfterDecompressAllToMem},
    TSettingKey{"MultithreadingLevels", &TSettings::m_nMultithreadingLevels, OneUnlessZero},
    TSettingKey{"LogToFileTmpRegLoad", &TSettings::m_bLogToFileTmpRegLoad},
    TSettingKey{"EnableManualEngineControl", &TSettings::m_bEnableManualEngineControl},
    TSettingKey{"ScalingWarningDismissed", &TSettings::m_bScalingWarningDismissed},
    TSettingKey{"UsePredefinedIndications", &TSettings::m_nUsePredefinedIndications, kUpTo2},
    TSettingKey{"AutoSaveMinutes", &TSettings::m_nAutoSaveMinutes, kNotNegative},
    TSettingKey{"AutoSaveMB", &TSettings::m_nAutoSaveMB, kNotNegative},
    TSettingKey{"LastProcessedMsgId", &TSettings::m_nLastProcessedMsgId, kAny},
};

/// What SaveSettings writes, in this order.
inline constexpr std::array<std::string_view, 24> kSavedKeys{
    "QuickMode",
    "SchedulerLevels",
    "CustomScheduler",
    "ObserverLevels",
    "LichessLevels",
    "WarnAboutSecondInstanceOfProgram",
    "PromptHeuristics",
    "MaxMemRatioForTempReg",
    "ClearRegisterOnStartSolving",
    "GlobalRegisterForceDiskAccess",
    "MaxMemRatioForPrecalculatedData",
    "CommentCompatibilityMode",
    "ShowMainVariant",
    "UseMainVariantAsSortIndications",
    "LogMoves",
    "LetAnalyzeTheSameMoveInTwoThreads",
    "RegisterInfoLog",
    "TryRelaxSpecialHeuristicsLog",
    "MinimizeToTray",
    "MultithreadingLevels",
    "EnableManualEngineControl",
    "UsePredefinedIndications",
    "AutoSaveMinutes",
    "AutoSaveMB",
};

/// Place in the table; its size for an unknown name.
[[nodiscard]] constexpr std::size_t IndexOfSettingKey(std::string_view name) {
    std::size_t index = 0;
    while (index < kSettingKeys.size() && name != kSettingKeys[index].m_name)
        ++index;
    return index;
}

static_assert(std::ranges::all_of(kSavedKeys,
                                  [](std::string_view name) { return IndexOfSettingKey(name) < kSettingKeys.size(); }));

} // namespace quillon
