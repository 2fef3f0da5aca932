#include "app/settings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "platform/temporary_folder.h"

namespace quillon {
namespace {

class CHeardNotifier : public INotifier {
  public:
    void Inform(std::string_view text, std::string_view title) override {
        m_heard.push_back(std::string(title) + ": " + std::string(text));
    }
    bool AskYesNo(std::string_view, std::string_view) override { return false; }

    std::vector<std::string> m_heard;
};

class Settings : public ::testing::Test {
  protected:
    [[nodiscard]] std::filesystem::path Path() const { return m_folder.Path() / "options.ini"; }
    void Write(const std::string& text) const {
        std::filesystem::remove(Path()); // some file systems wait for the disk when a file is emptied and written anew
        m_folder.Write("options.ini", text);
    }

    [[nodiscard]] std::string Written() const {
        std::ostringstream text;
        text << std::ifstream(Path(), std::ios::binary).rdbuf();
        return text.str();
    }

    TSettings Load() { return LoadSettings(m_notifier, {}, Path()); }

    /// Of a file with these lines in its section.
    TSettings LoadLines(const std::string& lines) {
        Write("[chess]\n" + lines);
        return Load();
    }

    [[nodiscard]] std::vector<std::string> FilesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
            names.push_back(entry.path().filename().string());
        return names;
    }

    CTemporaryFolder m_folder;
    CHeardNotifier m_notifier;
};

/// How a value of the file is held. Numbers and booleans alike.
struct THeld {
    const char* m_value;
    int m_held;
};
struct TKeyRow {
    const char* m_key;
    int (*m_held)(const TSettings&);
    int m_default;
    std::vector<THeld> m_rows;
};

const std::vector<THeld> kBoolean = {{"0", 0},  {"1", 1},   {"2", 1},  {"-1", 1},    {"abc", 0},
                                     {"3x", 1}, {"0x0", 0}, {"00", 0}, {"\"1\"", 1}, {"", -1}};
const std::vector<THeld> kUpTo2 = {{"0", 0}, {"1", 1}, {"2", 2}, {"3", 2}, {"7", 2}, {"-1", 0}, {"no", 0}, {"", -1}};
const std::vector<THeld> kPercent = {{"0", 0},    {"35", 35},   {"100", 100}, {"101", 100}, {"-5", 0},
                                     {"50%", 50}, {"0x20", 32}, {"half", 0},  {"", -1}};
const std::vector<THeld> kCount = {{"0", 0}, {"60", 60}, {"-1", 0}, {"2147483647", 2147483647}, {"5 min", 5}, {"", -1}};

#define QUILLON_FIELD(field) [](const TSettings& s) { return static_cast<int>(s.field); }

const std::vector<TKeyRow> kKeyRows = {
    {"LanguageId", QUILLON_FIELD(m_nLanguageId), 1, {{"0", 0}, {"1", 1}, {"2", 2}, {"3", 1}, {"-1", 1}, {"", -1}}},
    {"QuickMode", QUILLON_FIELD(m_bQuickMode), 1, kBoolean},
    {"WarningOnLichessDataRepetition", QUILLON_FIELD(m_bWarningOnLichessDataRepetition), 0, kBoolean},
    {"SchedulerLevels",
     QUILLON_FIELD(m_nSchedulerLevels),
     6,
     {{"5", 6}, {"0", 1}, {"-1", 0}, {"8", 9}, {"9", 9}, {"-2", 0}, {"2147483647", 9}, {"-2147483648", 0}, {"", -1}}},
    {"CheckTempRegCoherency", QUILLON_FIELD(m_bCheckTempRegCoherency), 1, kBoolean},
    {"CustomScheduler", QUILLON_FIELD(m_bCustomScheduler), 1, kBoolean},
    {"ObserverLevels", QUILLON_FIELD(m_nObserverLevels), 0, {{"3", 3}, {"65535", 65535}, {"65536", 65535}, {"-1", 0}}},
    {"LichessLevels",
     QUILLON_FIELD(m_nLichessLevels),
     1,
     {{"0", 0}, {"-1", -1}, {"-2", -1}, {"32767", 32767}, {"40000", 32767}, {"x", 0}, {"", -1}}},
    {"WarnAboutSecondInstanceOfProgram", QUILLON_FIELD(m_nWarnAboutSecondInstanceOfProgram), 2, kUpTo2},
    {"PromptHeuristics", QUILLON_FIELD(m_bPromptHeuristics), 0, kBoolean},
    {"MaxMemRatioForTempReg", QUILLON_FIELD(m_nMaxMemRatioForTempReg), 20, kPercent},
    {"ClearRegisterOnStartSolving", QUILLON_FIELD(m_bClearRegisterOnStartSolving), 1, kBoolean},
    {"MaxMemRatioForPrecalculatedData", QUILLON_FIELD(m_nMaxMemRatioForPrecalculatedData), 20, kPercent},
    {"LetAnalyzeTheSameMoveInTwoThreads", QUILLON_FIELD(m_bLetAnalyzeTheSameMoveInTwoThreads), 1, kBoolean},
    {"CommentCompatibilityMode", QUILLON_FIELD(m_bCommentCompatibilityMode), 0, kBoolean},
    {"ShowMainVariant", QUILLON_FIELD(m_bShowMainVariant), 1, kBoolean},
    {"UseMainVariantAsSortIndications", QUILLON_FIELD(m_nUseMainVariantAsSortIndications), 0, kUpTo2},
    {"LogMoves", QUILLON_FIELD(m_bLogMoves), 0, kBoolean},
    {"RegisterInfoLog", QUILLON_FIELD(m_bRegisterInfoLog), 0, kBoolean},
    {"TryRelaxSpecialHeuristicsLog", QUILLON_FIELD(m_bTryRelaxSpecialHeuristicsLog), 0, kBoolean},
    {"MinimizeToTray", QUILLON_FIELD(m_nMinimizeToTray), 2, kUpTo2},
    {"AskForGlobalRegisterRecompression", QUILLON_FIELD(m_nAskForGlobalRegisterRecompression), 0, kUpTo2},
    {"UseDataPackedForRandomAccess", QUILLON_FIELD(m_nUseDataPackedForRandomAccess), 2, kUpTo2},
    {"GlobalRegisterForceDiskAccess", QUILLON_FIELD(m_bGlobalRegisterForceDiskAccess), 1, kBoolean},
    {"AskIfSaveAfterDecompressAllToMem", QUILLON_FIELD(m_bAskIfSaveAfterDecompressAllToMem), 0, kBoolean},
    {"MultithreadingLevels",
     QUILLON_FIELD(m_nMultithreadingLevels),
     1,
     {{"0", 0}, {"1", 1}, {"2", 1}, {"64", 1}, {"256", 1}, {"-1", 1}, {"x", 0}, {"", -1}}},
    {"LogToFileTmpRegLoad", QUILLON_FIELD(m_bLogToFileTmpRegLoad), 0, kBoolean},
    {"EnableManualEngineControl", QUILLON_FIELD(m_bEnableManualEngineControl), 0, kBoolean},
    {"ScalingWarningDismissed", QUILLON_FIELD(m_bScalingWarningDismissed), 0, kBoolean},
    {"UsePredefinedIndications", QUILLON_FIELD(m_nUsePredefinedIndications), 0, kUpTo2},
    {"AutoSaveMinutes", QUILLON_FIELD(m_nAutoSaveMinutes), 240, kCount},
    {"AutoSaveMB", QUILLON_FIELD(m_nAutoSaveMB), 256, kCount},
    {"LastProcessedMsgId", QUILLON_FIELD(m_nLastProcessedMsgId), 0, {{"17", 17}, {"-3", -3}, {"4294967295", -1}}},
};

#undef QUILLON_FIELD

TEST_F(Settings, EveryKeyHasItsDefaultWithoutAFile) {
    const TSettings settings = Load();
    for (const TKeyRow& row : kKeyRows)
        EXPECT_EQ(row.m_held(settings), row.m_default) << row.m_key;
    EXPECT_EQ(settings.m_precalcPath, "");
    EXPECT_EQ(m_notifier.m_heard, std::vector<std::string>());
    EXPECT_FALSE(std::filesystem::exists(Path())) << "reading makes no file";
}

TEST_F(Settings, EveryKeyIsConverted) {
    for (const TKeyRow& row : kKeyRows)
        for (const THeld& held : row.m_rows) {
            const bool bEmpty = std::string(held.m_value).empty(); // leaves the default
            const TSettings settings = LoadLines(std::string(row.m_key) + "=" + held.m_value + "\n");
            EXPECT_EQ(row.m_held(settings), bEmpty ? row.m_default : held.m_held) << row.m_key << "=" << held.m_value;
        }
}

TEST_F(Settings, AKeyChangesNoOther) {
    for (const TKeyRow& changed : kKeyRows) {
        const int value = changed.m_default == 1 ? 0 : 1;
        const TSettings settings = LoadLines(std::string(changed.m_key) + "=" + std::to_string(value) + "\n");
        EXPECT_NE(changed.m_held(settings), changed.m_default) << changed.m_key;
        for (const TKeyRow& row : kKeyRows)
            if (row.m_key != changed.m_key) {
                EXPECT_EQ(row.m_held(settings), row.m_default) << row.m_key << " by " << changed.m_key;
            }
    }
}

TEST_F(Settings, APathHasUpTo260Characters) {
    EXPECT_EQ(LoadLines("PrecalcPath=/data/precalc files\n").m_precalcPath, "/data/precalc files");
    EXPECT_EQ(LoadLines("PrecalcPath=\" C:\\x \"\n").m_precalcPath, " C:\\x ");
    EXPECT_EQ(LoadLines("PrecalcPath=\n").m_precalcPath, "");
    EXPECT_EQ(LoadLines("PrecalcPath=" + std::string(300, 'p')).m_precalcPath, std::string(260, 'p'));
    std::string letters;
    for (int i = 0; i < 260; ++i)
        letters += "\xC5\xBC"; // one letter of two bytes
    EXPECT_EQ(LoadLines("PrecalcPath=" + letters + "\xC5\xBC").m_precalcPath, letters);
}

TEST_F(Settings, RecompressionIsLoweredToWhatIsPacked) {
    const TSettings settings = LoadLines("AskForGlobalRegisterRecompression=2\nUseDataPackedForRandomAccess=1\n");
    EXPECT_EQ(settings.m_nAskForGlobalRegisterRecompression, 1);
    EXPECT_EQ(settings.m_nUseDataPackedForRandomAccess, 1);
    EXPECT_EQ(m_notifier.m_heard,
              std::vector<std::string>{"Warning: Value of parameter AskForGlobalRegisterRecompression should not be "
                                       "greater than UseDataPackedForRandomAccess."});
}

TEST_F(Settings, RecompressionUpToWhatIsPackedStays) {
    const TSettings settings = LoadLines("AskForGlobalRegisterRecompression=1\nUseDataPackedForRandomAccess=1\n");
    EXPECT_EQ(settings.m_nAskForGlobalRegisterRecompression, 1);
    EXPECT_EQ(m_notifier.m_heard, std::vector<std::string>());
}

TEST_F(Settings, MissingKeysTakeTheDefaultsOfTheCaller) {
    TSettings defaults;
    defaults.m_nSchedulerLevels = 0;
    defaults.m_nLanguageId = 2;
    defaults.m_bQuickMode = false;
    Write("[chess]\nQuickMode=1\nLanguageId=9\n");
    const TSettings settings = LoadSettings(m_notifier, defaults, Path());
    EXPECT_TRUE(settings.m_bQuickMode);
    EXPECT_EQ(settings.m_nSchedulerLevels, 0);
    EXPECT_EQ(settings.m_nLanguageId, 2) << "an unknown language is the default one";
}

TEST_F(Settings, WhatIsNoFileOfSettingsLeavesTheDefaults) {
    for (const std::string& text :
         {std::string(), std::string("\0\0\0\0", 4), std::string("QuickMode=0\n"), std::string("[chess"),
          std::string("[other]\nQuickMode=0"), std::string("\xFF\xFE[\0c\0h\0e\0s\0s\0]\0", 16),
          std::string(100000, '['), std::string(100000, '\n'), std::string("[chess]\nQuickM")}) {
        Write(text);
        EXPECT_EQ(Load(), TSettings()) << text.substr(0, 30);
    }
}

TEST_F(Settings, AFileThatWasCutAtAnyByteIsReadAsFarAsItGoes) {
    TSettings changed;
    changed.m_bQuickMode = false;
    changed.m_nAutoSaveMB = 12;
    ASSERT_FALSE(SaveSettings(changed, Path()));
    const std::string text = Written();
    for (std::size_t size = 0; size < text.size(); ++size) {
        Write(text.substr(0, size));
        const TSettings settings = Load();
        EXPECT_EQ(settings.m_bQuickMode, size < std::string("[chess]\nQuickMode=0").size());
    }
}

TEST_F(Settings, AFolderOrPipeOfThatNameIsNoFile) {
    std::filesystem::create_directory(Path());
    EXPECT_EQ(Load(), TSettings());
    EXPECT_TRUE(SaveSettings({}, Path()));
    std::filesystem::remove(Path());
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_EQ(Load(), TSettings()) << "and nobody waits for a writer";
    EXPECT_TRUE(SaveSettings({}, Path()));
}

TEST_F(Settings, AFileThatCannotBeReadIsNotOverwritten) {
    if (geteuid() == 0)
        Write(std::string((std::size_t{16} << 20) + 1, ' ')); // root may read all; so large no file of settings is
    else {
        Write("[x]\nA=1\n");
        std::filesystem::permissions(Path(), std::filesystem::perms::owner_write);
    }
    const auto size = std::filesystem::file_size(Path());
    EXPECT_EQ(Load(), TSettings());
    EXPECT_TRUE(SaveSettings({}, Path()));
    EXPECT_EQ(std::filesystem::file_size(Path()), size);
}

TEST_F(Settings, AreWrittenInTheirOrder) {
    EXPECT_FALSE(SaveSettings({}, Path()));
    EXPECT_EQ(Written(), "[chess]\n"
                         "QuickMode=1\n"
                         "SchedulerLevels=5\n"
                         "CustomScheduler=1\n"
                         "ObserverLevels=0\n"
                         "LichessLevels=1\n"
                         "WarnAboutSecondInstanceOfProgram=2\n"
                         "PromptHeuristics=0\n"
                         "MaxMemRatioForTempReg=20\n"
                         "ClearRegisterOnStartSolving=1\n"
                         "GlobalRegisterForceDiskAccess=1\n"
                         "MaxMemRatioForPrecalculatedData=20\n"
                         "CommentCompatibilityMode=0\n"
                         "ShowMainVariant=1\n"
                         "UseMainVariantAsSortIndications=0\n"
                         "LogMoves=0\n"
                         "LetAnalyzeTheSameMoveInTwoThreads=1\n"
                         "RegisterInfoLog=0\n"
                         "TryRelaxSpecialHeuristicsLog=0\n"
                         "MinimizeToTray=2\n"
                         "MultithreadingLevels=1\n"
                         "EnableManualEngineControl=0\n"
                         "UsePredefinedIndications=0\n"
                         "AutoSaveMinutes=240\n"
                         "AutoSaveMB=256\n");
    EXPECT_EQ(FilesInFolder(), std::vector<std::string>{"options.ini"}) << "no trace of the writing";
}

TEST_F(Settings, OddValuesAreWrittenBackAsTheyAreHeld) {
    TSettings settings = LoadLines("SchedulerLevels=5\nUseMainVariantAsSortIndications=7\nLichessLevels=-1\n");
    EXPECT_EQ(settings.m_nSchedulerLevels, 6);
    ASSERT_FALSE(SaveSettings(settings, Path()));
    EXPECT_EQ(Written().rfind("[chess]\nSchedulerLevels=5\nUseMainVariantAsSortIndications=2\nLichessLevels=-1\n", 0),
              0u);
    settings.m_nSchedulerLevels = 0;
    ASSERT_FALSE(SaveSettings(settings, Path()));
    EXPECT_NE(Written().find("SchedulerLevels=-1\n"), std::string::npos);
    EXPECT_EQ(Load(), settings);
}

TEST_F(Settings, WhatElseStandsInTheFileSurvives) {
    const std::string before = "; mine\r\n[other]\r\nQuickMode=7\r\n\r\n[Chess]\r\nLanguageId=0\r\nquickmode=1\r\n"
                               "PrecalcPath=/data\r\nwhat is this\r\n\r\n# the end";
    Write(before);
    TSettings settings = Load();
    settings.m_bQuickMode = false;
    ASSERT_FALSE(SaveSettings(settings, Path()));
    EXPECT_EQ(Written().rfind("; mine\r\n[other]\r\nQuickMode=7\r\n\r\n[Chess]\r\nLanguageId=0\r\nquickmode=0\r\n"
                              "PrecalcPath=/data\r\nwhat is this\r\n\r\n# the end\r\nSchedulerLevels=5\r\n",
                              0),
              0u)
        << Written();
    EXPECT_EQ(Load(), settings);
}

TEST_F(Settings, KeysOutsideTheDialogAreWrittenOneByOne) {
    TSettings settings;
    settings.m_nLanguageId = 2;
    settings.m_nLastProcessedMsgId = 17;
    settings.m_bScalingWarningDismissed = true;
    settings.m_precalcPath = " /my data";
    for (const char* const key : {"LanguageId", "LastProcessedMsgId", "ScalingWarningDismissed", "PrecalcPath"})
        EXPECT_FALSE(SaveSetting(settings, key, Path()));
    EXPECT_EQ(Written(), "[chess]\nLanguageId=2\nLastProcessedMsgId=17\nScalingWarningDismissed=1\n"
                         "PrecalcPath=\" /my data\"\n");
    EXPECT_EQ(Load(), settings);
    EXPECT_TRUE(SaveSetting(settings, "NoSuchKey", Path()));
}

TEST_F(Settings, EveryKeyIsReadBackAsItWasWritten) {
    std::string lines;
    for (const TKeyRow& row : kKeyRows)
        lines += std::string(row.m_key) + "=" + row.m_rows.front().m_value + "\n";
    const TSettings settings = LoadLines(lines);
    std::filesystem::remove(Path());
    ASSERT_FALSE(SaveSettings(settings, Path()));
    const std::string written = Written();
    for (const TKeyRow& row : kKeyRows)
        if (written.find("\n" + std::string(row.m_key) + "=") == std::string::npos) {
            ASSERT_FALSE(SaveSetting(settings, row.m_key, Path()));
        }
    EXPECT_EQ(Load(), settings);
}

TEST_F(Settings, WritersOfDifferentKeysLoseNothing) {
    TSettings settings;
    settings.m_nLastProcessedMsgId = 5;
    settings.m_nLanguageId = 0;
    {
        const auto save = [&](const char* key) {
            for (int i = 0; i < 5; ++i) {
                ASSERT_FALSE(SaveSetting(settings, key, Path()));
            }
        };
        const std::jthread message(save, "LastProcessedMsgId");
        save("LanguageId");
    }
    EXPECT_EQ(Load(), settings);
}

TEST_F(Settings, ALinkToTheFileStaysALink) {
    m_folder.Write("real.ini", "[chess]\nQuickMode=1\n");
    std::filesystem::create_symlink("real.ini", Path());
    TSettings settings = Load();
    settings.m_bQuickMode = false;
    ASSERT_FALSE(SaveSettings(settings, Path()));
    EXPECT_TRUE(std::filesystem::is_symlink(Path()));
    EXPECT_FALSE(Load().m_bQuickMode);
}

TEST_F(Settings, TheFullLogIsWarnedOf) {
    WarnOfFullLog(LoadLines("LogMoves=0\n"), m_notifier);
    EXPECT_EQ(m_notifier.m_heard, std::vector<std::string>());
    WarnOfFullLog(LoadLines("LogMoves=1\n"), m_notifier);
    EXPECT_EQ(m_notifier.m_heard,
              std::vector<std::string>{
                  "Warning: Program has been opened with the option to write log of full analysis - this option is not "
                  "recommended (it makes solving last much longer and produces large log files)"});
}

TEST_F(Settings, ThePathIsTakenOnce) {
    const std::filesystem::path before = std::filesystem::current_path();
    EXPECT_EQ(SettingsPath(), before / "options.ini");
    std::filesystem::current_path(m_folder.Path());
    EXPECT_EQ(SettingsPath(), before / "options.ini");
    EXPECT_EQ(WorkingFolder(), before);
    std::filesystem::current_path(before);
}

} // namespace
} // namespace quillon
