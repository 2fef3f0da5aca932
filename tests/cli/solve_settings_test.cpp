// The settings in a solve: what they are to the request, and a run of the program beside a file options.ini.

#include "cli/solve_settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "cli/program_run.h"
#include "core/fen.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TWords = std::vector<std::string>;
using TJson = nlohmann::ordered_json;

// ---- the request

class SolveSettings : public ::testing::Test {
  protected:
    SolveSettings() {
        SetStipulation(m_problem, kDirectMate, 3);
        SetOriginalPosition(m_problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    }

    [[nodiscard]] TSolveRequest Request() const {
        TSolveRequest request = MakeRequest(m_problem, m_options);
        ApplySettings(m_settings, m_problem, m_options, request);
        return request;
    }

    ChessProblem m_problem;
    TSolveOptions m_options;
    TSettings m_settings = CommandLineDefaults();
};

TEST_F(SolveSettings, WithoutAFileLeaveTheRequestAsItIs) {
    const TSolveRequest request = Request();
    EXPECT_FALSE(request.m_bSafeMode);
    EXPECT_FALSE(request.m_bUsePredefinedIndications);
    EXPECT_FALSE(request.m_bRelaxationLog);
    EXPECT_FALSE(request.m_bCustomScheduler);
    EXPECT_EQ(request.m_nSchedulerLevels, 0);
    EXPECT_EQ(request.m_nThreads, 1);
    EXPECT_EQ(request.m_nMultithreadingLevels, 1);
    EXPECT_EQ(request.m_nMemoryShare, 20);
    EXPECT_TRUE(request.m_bClearRegister);
    EXPECT_LT(request.m_nMemoryBudgetMB, 0);
    EXPECT_TRUE(request.m_sortIndications.empty());
    EXPECT_EQ(request.m_nLichessLevels, 1);
    EXPECT_TRUE(request.m_bUsePrecalculatedData);
    EXPECT_LT(request.m_nPrecalculatedBudgetMB, 0);
    EXPECT_FALSE(request.m_bStopRelaxingOnSolution);
}

TEST_F(SolveSettings, WhatTheProblemSaysOfDataAndPassesIsInTheRequest) {
    m_settings.m_nLichessLevels = 3;
    EXPECT_EQ(Request().m_nLichessLevels, 3);
    m_problem.lichessLevels = 0;
    m_problem.flags = kFlagNoGlobReg;
    m_problem.globRegMB = 512;
    m_problem.stopRelaxHeuristicsOnFirstSolution = true;
    const TSolveRequest request = Request();
    EXPECT_EQ(request.m_nLichessLevels, 0);
    EXPECT_FALSE(request.m_bUsePrecalculatedData);
    EXPECT_EQ(request.m_nPrecalculatedBudgetMB, 512);
    EXPECT_TRUE(request.m_bStopRelaxingOnSolution);
    m_problem.lichessLevels = kUnset;
    m_settings.m_nLichessLevels = -1;
    EXPECT_EQ(Request().m_nLichessLevels, 0);
}

TEST_F(SolveSettings, OfTheMemorySharedByJobs) {
    constexpr std::uint64_t kMachine = 16'000ull << 20;
    const auto megabytes = [&](int nPercent, int nJobs) {
        m_settings.m_nMaxMemRatioForTempReg = nPercent;
        TSolveRequest request = Request();
        ShareMemory(request, nJobs, kMachine);
        return request.m_nMemoryBudgetMB;
    };
    EXPECT_LT(megabytes(20, 1), 0) << "one job has what a solve has";
    EXPECT_EQ(megabytes(20, 2), 1600);
    EXPECT_EQ(megabytes(20, 64), 50) << "all jobs together take the share";
    EXPECT_EQ(megabytes(0, 3), 0) << "no register";
}

TEST_F(SolveSettings, HoldForWhatNobodyElseSays) {
    m_settings.m_bQuickMode = false;
    m_settings.m_nUsePredefinedIndications = 2;
    m_settings.m_bTryRelaxSpecialHeuristicsLog = true;
    m_settings.m_nSchedulerLevels = 6;
    m_settings.m_bCustomScheduler = true;
    m_settings.m_nMultithreadingLevels = 2;
    m_settings.m_nMaxMemRatioForTempReg = 55;
    m_settings.m_bClearRegisterOnStartSolving = false;
    const TSolveRequest request = Request();
    EXPECT_FALSE(request.m_bClearRegister);
    EXPECT_TRUE(request.m_bSafeMode);
    EXPECT_TRUE(request.m_bUsePredefinedIndications);
    EXPECT_TRUE(request.m_bRelaxationLog);
    EXPECT_EQ(request.m_nSchedulerLevels, 6);
    EXPECT_TRUE(request.m_bCustomScheduler);
    EXPECT_EQ(request.m_nMultithreadingLevels, 2);
    EXPECT_EQ(request.m_nMemoryShare, 55);
    m_settings.m_nMultithreadingLevels = 0;
    EXPECT_EQ(Request().m_nMultithreadingLevels, 1) << "the first move is level one";
}

TEST_F(SolveSettings, GiveWayToTheProblem) {
    m_settings.m_nSchedulerLevels = 6;
    m_settings.m_nMultithreadingLevels = 2;
    m_problem.schedulerLevels = 3;
    m_problem.threads = 4;
    m_problem.levels = 1;
    m_problem.flags = kFlagSafeMode;
    const TSolveRequest request = Request();
    EXPECT_EQ(request.m_nSchedulerLevels, 3);
    EXPECT_EQ(request.m_nThreads, 4);
    EXPECT_EQ(request.m_nMultithreadingLevels, 1);
    EXPECT_TRUE(request.m_bSafeMode);
    m_problem.schedulerLevels = 0;
    EXPECT_EQ(Request().m_nSchedulerLevels, 0) << "off is said, too";
}

TEST_F(SolveSettings, GiveWayToTheOptions) {
    m_settings.m_nSchedulerLevels = 6;
    m_settings.m_bCustomScheduler = true;
    m_settings.m_nMultithreadingLevels = 2;
    m_settings.m_nMaxMemRatioForTempReg = 55;
    m_options.m_schedulerLevels = 0;
    m_options.m_threads = "4";
    m_options.m_memoryMB = 64;
    const TSolveRequest request = Request();
    EXPECT_EQ(request.m_nSchedulerLevels, 0);
    EXPECT_FALSE(request.m_bCustomScheduler);
    EXPECT_EQ(request.m_nThreads, 4);
    EXPECT_EQ(request.m_nMultithreadingLevels, 1);
    EXPECT_EQ(request.m_nMemoryBudgetMB, 64);
}

TEST_F(SolveSettings, VariantsCanOrderTheMovesOfEveryProblem) {
    for (const char* const line : {"{Main variant} Kb3-c2 Ka1-a2 Qh3-a3", "{Other} Qh3-h8 Kb1-c1"}) {
        Variant variant;
        ParseVariantLine(variant, line);
        m_problem.variants[variant.name] = variant;
    }
    EXPECT_TRUE(Request().m_sortIndications.empty());
    m_settings.m_nUseMainVariantAsSortIndications = 1;
    const std::size_t main = Request().m_sortIndications.size();
    EXPECT_GT(main, 0u);
    m_settings.m_nUseMainVariantAsSortIndications = 2;
    EXPECT_GT(Request().m_sortIndications.size(), main);
    m_problem.useMainVariantAsSortIndications = 1;
    EXPECT_EQ(Request().m_sortIndications.size(), main) << "the problem says so";
}

// ---- the program

constexpr const char* kQueen = "8/8/8/8/8/2k5/8/KQ6";    // no mate in four
constexpr const char* kShort = "8/8/8/8/8/1K5Q/1p6/kn6"; // a mate in three
constexpr const char* kKnown = "8/p5p1/4K2p/2p2Pb1/P1NkN1p1/1P1B4/p1P3P1/8";

/// A working folder, with the program run in it.
class SettingsFile : public ::testing::Test {
  protected:
    void Settings(const std::string& lines) const { m_folder.Write("options.ini", "[chess]\n" + lines); }

    [[nodiscard]] TProgramResult Run(TWords words) const {
        words.insert(words.begin(), {"--work-dir", m_folder.Path().string()});
        return RunQuillon(words);
    }

    [[nodiscard]] TProgramResult Solve(const char* fen, int nMoves, TWords more) const {
        more.insert(more.begin(), {"solve", "--fen", fen, "--moves", std::to_string(nMoves)});
        return Run(more);
    }

    /// Without what differs from run to run.
    [[nodiscard]] TJson ObjectOf(const TProgramResult& result) const {
        TJson object = TJson::parse(result.m_out);
        object.erase("seconds");
        return object;
    }

    [[nodiscard]] std::string PlanOf(const char* fen, const TWords& words) const {
        return ObjectOf(Solve(fen, 4, words))["explain"]["plan"];
    }

    [[nodiscard]] int LinesOfLog() const {
        std::ifstream file(m_folder.Path() / "TryRelaxSpecialHeuristics.log");
        int count = 0;
        for (std::string line; std::getline(file, line);)
            ++count;
        return count;
    }

    CTemporaryFolder m_folder;
};

TEST_F(SettingsFile, SwitchesToSafeModeAsTheOptionDoes) {
    const TWords set{"--heuristics", "SH_SAVEQUEEN/ROOK,SH_DONTRECEDEBLACKKING", "--explain", "--json"};
    TWords asked = set;
    asked.emplace_back("--safe");
    const std::string quick = PlanOf(kQueen, set);
    const std::string safe = PlanOf(kQueen, asked);
    EXPECT_NE(quick, safe);
    Settings("QuickMode=1\n");
    EXPECT_EQ(PlanOf(kQueen, set), quick);
    Settings("QuickMode=0\n");
    EXPECT_EQ(PlanOf(kQueen, set), safe);
}

TEST_F(SettingsFile, SwitchesTheLogOfThePlanOn) {
    const TWords set{"--heuristics", "SH_SAVEQUEEN/ROOK,SH_DONTRECEDEBLACKKING"};
    EXPECT_EQ(Solve(kQueen, 4, set).m_nStatus, 0);
    EXPECT_EQ(LinesOfLog(), 0) << "without a file";
    Settings("TryRelaxSpecialHeuristicsLog=0\n");
    EXPECT_EQ(Solve(kQueen, 4, set).m_nStatus, 0);
    EXPECT_EQ(LinesOfLog(), 0);
    Settings("TryRelaxSpecialHeuristicsLog=1\n");
    EXPECT_EQ(Solve(kQueen, 4, set).m_nStatus, 0);
    EXPECT_EQ(LinesOfLog(), 4) << "two steps, a line before and behind each";
}

TEST_F(SettingsFile, SwitchesTheLogOfTheRegisterOn) {
    const auto solve = [&] { // its 400,000 nodes fill the register on every machine
        return Solve(kShort, 7, {"--all", "--brute-force", "--memory", "1", "--quiet"});
    };
    const std::filesystem::path log = m_folder.Path() / "registerInfo.log";
    Settings("RegisterInfoLog=0\n");
    EXPECT_EQ(solve().m_nStatus, 0);
    EXPECT_FALSE(std::filesystem::exists(log));
    Settings("RegisterInfoLog=1\n");
    EXPECT_EQ(solve().m_nStatus, 0);
    EXPECT_TRUE(std::filesystem::exists(log));
}

TEST_F(SettingsFile, GrantsMemory) {
    const TWords six{"--brute-force", "--json"};
    EXPECT_GT(ObjectOf(Solve(kShort, 6, six))["register"]["elements"], 0);
    Settings("MaxMemRatioForTempReg=0\n");
    EXPECT_EQ(ObjectOf(Solve(kShort, 6, six))["register"]["elements"], 0);
    EXPECT_GT(ObjectOf(Solve(kShort, 6, {"--brute-force", "--json", "--memory", "16"}))["register"]["elements"], 0)
        << "the option is stronger";
}

TEST_F(SettingsFile, BringsStoredSettingsOfKnownCompositions) {
    const TWords explain{"--explain", "--json",       "--time-limit",
                         "1",         "--heuristics", "SH_AREKINGSNEAR, SH_DONTLETPROMOTEDQUEENMOVE"};
    TWords asked = explain;
    asked.emplace_back("--predefined");
    const std::string plain = PlanOf(kKnown, explain);
    const std::string byOption = PlanOf(kKnown, asked);
    EXPECT_NE(plain, byOption);
    Settings("UsePredefinedIndications=0\n");
    EXPECT_EQ(PlanOf(kKnown, explain), plain);
    Settings("UsePredefinedIndications=1\n");
    EXPECT_EQ(PlanOf(kKnown, explain), byOption);
}

TEST_F(SettingsFile, WithASchedulerFindsTheSameKeys) {
    const TWords words{"--json", "--all", "--threads", "2"};
    const TJson without = ObjectOf(Solve(kShort, 3, words));
    Settings("SchedulerLevels=5\nCustomScheduler=1\nMultithreadingLevels=2\n");
    const TJson with = ObjectOf(Solve(kShort, 3, words));
    EXPECT_EQ(with["keys"], without["keys"]);
    EXPECT_EQ(with["complete"], true);
}

TEST_F(SettingsFile, ThatContradictsItselfIsWarnedOf) {
    Settings("AskForGlobalRegisterRecompression=2\nUseDataPackedForRandomAccess=1\n");
    const TProgramResult result = Solve(kShort, 3, {"--quiet"});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_NE(result.m_err.find("Warning: Value of parameter AskForGlobalRegisterRecompression should not be greater "
                                "than UseDataPackedForRandomAccess."),
              std::string::npos)
        << result.m_err;
}

TEST_F(SettingsFile, ThatSaysNothingChangesNothing) {
    const TWords words{"--json"};
    const TJson without = ObjectOf(Solve(kQueen, 4, words));
    for (const char* const text : {"", "\xFF\xFE[", "[chess", "[chess]\nNoSuchKey=1\n", "QuickMode=0\n"}) {
        m_folder.Write("options.ini", text);
        EXPECT_EQ(ObjectOf(Solve(kQueen, 4, words)), without) << text;
    }
}

TEST_F(SettingsFile, FilesAreFoundFromTheWorkingFolder) {
    m_folder.Write("one.cp", "7 #3\n{\n\tFEN: 8/8/8/8/8/1K5Q/1p6/kn6\n}\n");
    const TProgramResult result = Run({"solve", "one.cp", "--quiet"});
    EXPECT_EQ(result.m_nStatus, 0) << result.m_err;
    EXPECT_EQ(result.m_out.substr(0, 9), "7 #3 mate");
}

TEST_F(SettingsFile, TheFolderMayBeNamedBehindTheCommand) {
    Settings("MaxMemRatioForTempReg=0\n");
    const TProgramResult result = RunQuillon(
        {"solve", "--fen", kShort, "--moves", "6", "--brute-force", "--json", "--work-dir", m_folder.Path().string()});
    EXPECT_EQ(ObjectOf(result)["register"]["elements"], 0);
}

TEST(WorkDirOption, MustBeAFolder) {
    const CTemporaryFolder folder;
    folder.Write("file", "");
    for (const std::string& dir : {(folder.Path() / "missing").string(), (folder.Path() / "file").string()}) {
        const TProgramResult result = RunQuillon({"--work-dir", dir, "solve", "--fen", kShort, "--moves", "3"});
        EXPECT_EQ(result.m_nStatus, 2);
        EXPECT_EQ(result.m_err.rfind("quillon: cannot work in " + dir + ": ", 0), 0u) << result.m_err;
        EXPECT_EQ(result.m_out, "");
    }
    EXPECT_EQ(RunQuillon({"--work-dir"}).m_nStatus, 2);
}

} // namespace
} // namespace quillon
