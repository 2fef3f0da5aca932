// Whole regression runs, with a host that notes what it is told.

#include "app/regression.h"

#include <chrono>
#include <condition_variable>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "core/generation.h"
#include "core/notation.h"
#include "library/problem_file.h"
#include "platform/sleep.h"
#include "platform/temporary_folder.h"
#include "search/move_sort.h"

namespace quillon {
namespace {

constexpr const char* kMate = "{ FEN: kbK5/pp6/1P6/8/8/8/8/R7\n";       // #2, Ra1-a6
constexpr const char* kMateInThree = "{ FEN: 8/8/8/8/8/1K5Q/1p6/kn6\n"; // Kb3-c2
constexpr const char* kHopelessPosition = "{ FEN: rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR\n";
const std::string kHopeless = std::string(kHopelessPosition) + "}\n"; // in 20: days

class CNotingHost : public IRegressionHost {
  public:
    explicit CNotingHost(const std::string& text) {
        ReadProblemText(text, m_library, [](const ProblemFileError&) {});
    }

    void Inform(std::string_view text, std::string_view) override { m_informed.emplace_back(text); }
    [[nodiscard]] bool AskYesNo(std::string_view text, std::string_view) override {
        m_asked.emplace_back(text);
        return false;
    }
    [[nodiscard]] EAnswer AskYesNoCancel(std::string_view text, std::string_view) override {
        m_asked.emplace_back(text);
        if (m_onAsk)
            m_onAsk();
        return m_answer;
    }
    [[nodiscard]] bool IsSolving() const override { return m_bSolving; }
    [[nodiscard]] const TProblemMap& Library() const override { return m_library; }

    void ShowProblem(std::int32_t id) override {
        const std::lock_guard lock(m_mutex);
        m_shown.push_back(id);
        m_changed.notify_all();
        if (m_onShow)
            m_onShow();
    }

    [[nodiscard]] TSolveRequest MakeRequest(const ChessProblem& problem) override {
        if (problem.kind != kDirectMate)
            throw ChessException("no direct mate");
        TSolveRequest request;
        request.m_board = *problem.originalPosition;
        request.m_nStipulation = StipulationMoves(problem);
        request.m_mode =
            (problem.flags & kFlagAllSolutions) != 0 ? ESolveMode::AllSolutions : ESolveMode::FirstSolution;
        request.m_bBruteForce = (problem.flags & kFlagBruteForce) != 0;
        request.m_nMemoryBudgetMB = 16;
        request.m_nThreads = std::max<int>(problem.threads, 1);
        request.m_bAllowThreadDemand = true;
        return request;
    }

    void RunEnded(const TRegressionRun& run) override {
        m_runs.push_back(run);
        if (m_onRun)
            m_onRun();
    }
    void RegressionEnded() override { ++m_nEnds; }

    void WaitForShown(std::size_t nProblems) {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::minutes(1), [&] { return m_shown.size() >= nProblems; });
        ASSERT_GE(m_shown.size(), nProblems);
    }

    EAnswer m_answer = EAnswer::No;
    bool m_bSolving = false;
    TProblemMap m_library;
    std::vector<std::string> m_informed, m_asked;
    std::vector<std::int32_t> m_shown;
    std::vector<TRegressionRun> m_runs;
    std::function<void()> m_onAsk, m_onShow, m_onRun;
    int m_nEnds = 0;

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
};

class Regression : public ::testing::Test {
  protected:
    [[nodiscard]] TRegressionSetup Setup(int nJobs = 1) const {
        TRegressionSetup setup;
        setup.m_nJobs = nJobs;
        setup.m_logPath = LogPath();
        return setup;
    }
    [[nodiscard]] std::filesystem::path LogPath() const { return m_folder.Path() / kRegressionLogName; }

    /// The log, times as "T".
    [[nodiscard]] std::string Log(const std::string& name = kRegressionLogName) const {
        std::ostringstream text;
        text << std::ifstream(m_folder.Path() / name, std::ios::binary).rdbuf();
        return std::regex_replace(text.str(), std::regex("[0-9]+ msec"), "T msec");
    }

    /// The log of a run over these problems.
    std::string Run(const std::string& text, bool bMirrors = false, int nJobs = 1) {
        CNotingHost host(text);
        CRegression(host, Setup(nJobs)).RunRegression(bMirrors, false);
        return Log();
    }

    CTemporaryFolder m_folder;
};

// ---- the lines of a run

TEST_F(Regression, ProblemsInTheOrderOfTheirNumbers) {
    EXPECT_EQ(Run(std::string("3 #2 ") + kMate + "}\n1 #2 " + kMate + "Answer: Ra1-a6 }\n2 #1 " + kMate +
                  "Answer: Ra1-a6 }\n"),
              "[Threads = 1, Quick mode] Test #1 ok (T msec).\n"
              "[Threads = 1, Quick mode] Test #2 failed:\n\tfound:\n\tshould be:\nRa1-a6\n"
              "[Threads = 1, Quick mode] Prob.#3 Ra1-a6 (T msec).\n");
}

TEST_F(Regression, MirroredCopiesHaveTheMirroredAnswer) {
    EXPECT_EQ(
        Run(std::string("1 #2 ") + kMate + "Answer: Ra1-a6 }\n2 #2 NoMirror " + kMate + "}\n3 #2 " + kMate + "}\n",
            true),
        "[Threads = 1, Quick mode] Test #1 ok (T msec).\n"
        "[Threads = 1, Quick mode] Test #1 M1 ok (T msec).\n"
        "[Threads = 1, Quick mode] Prob.#2 Ra1-a6 (T msec).\n"
        "[Threads = 1, Quick mode] Prob.#3 Ra1-a6 (T msec).\n"
        "[Threads = 1, Quick mode] Prob.#3 M1 Rh1-h6 (T msec).\n");
}

TEST_F(Regression, EveryCopyOfABoardWithoutPawnsIsSolved) {
    const std::string log = Run("1 #1 { FEN: 7k/8/6K1/8/8/8/8/R7\nAnswer: Ra1-a8 }", true);
    for (const char* const name :
         {"#1 ok", "#1 M1 ok", "#1 M2 ok", "#1 M3 ok", "#1 M4 ok", "#1 M5 ok", "#1 M6 ok", "#1 M7 ok"})
        EXPECT_NE(log.find(name), std::string::npos) << name << "\n" << log;
}

TEST_F(Regression, AProblemForItsCopiesOnlyIsLeftOutWithoutThem) {
    CNotingHost host(std::string("1 #2 MirrorOnly ") + kMate + "}");
    CRegression(host, Setup()).RunRegression(false, false);
    EXPECT_EQ(Log(), "");
    ASSERT_EQ(host.m_runs.size(), 1u);
    EXPECT_EQ(host.m_runs[0].m_outcome, ERegressionOutcome::Skipped);
    EXPECT_TRUE(host.m_shown.empty());
}

TEST_F(Regression, AnUnmetRequirementSkipsTheProblemAndNothingElse) {
    CNotingHost host(std::string("1 #2 Requires QR ") + kMate + "}\n2 #2 " + kMate + "Answer: Ra1-a6 }");
    CRegression(host, Setup()).RunRegression(true, false);
    EXPECT_EQ(Log(), "Requires clause not satisfied\n[Threads = 1, Quick mode] Test #2 ok (T msec).\n"
                     "[Threads = 1, Quick mode] Test #2 M1 ok (T msec).\n");
    EXPECT_EQ(host.m_shown, std::vector<std::int32_t>{2});
}

TEST_F(Regression, AnErrorOfASolveEndsThatSolve) {
    EXPECT_EQ(Run(std::string("1 s#2 THREADS 2 SafeMode ") + kMate + "}\n2 #2 " + kMate + "Answer: Ra1-a6 }"),
              "[Threads = 2, Safe mode] Test #1 failed: no direct mate\n"
              "[Threads = 1, Quick mode] Test #2 ok (T msec).\n");
}

TEST_F(Regression, BruteForceNeedsNobodysConsent) {
    CNotingHost host(std::string("1 #2 BruteForce ") + kMate + "Answer: Ra1-a6 }");
    CRegression(host, Setup()).RunRegression(false, false);
    EXPECT_EQ(Log(), "[Brute force] Test #1 ok (T msec).\n");
    EXPECT_TRUE(host.m_asked.empty());
}

TEST_F(Regression, ChecksOfTheBestDefenceAreToldAsNotRun) {
    EXPECT_EQ(Run(std::string("1 #2 GUICHECK ") + kMate + "Answer: Ra1-a6 }"),
              "[Threads = 1, Quick mode] Test #1 ok (T msec).\n[Threads = 1, Quick mode] Test #1: best defence and "
              "auxiliary mate not checked (the analysis is not available).\n");
}

// ---- the order of White's moves

/// White's legal moves in the order in which the sort leaves them, in long notation.
std::vector<std::string> SortedMoves(const char* placement, int nPlies) {
    const auto context = NewSearchContext();
    TAnalysis analysis;
    TChessboard& root = *MakeRoot(*context, analysis, ChessboardFromFEN(placement), nPlies, 2);
    TMove list[kMaxMoves];
    const int nMoves = SortWhiteMoves(root, GenerateWhiteMoves(root, list), list, nPlies <= 5).m_nMoves;
    std::vector<std::string> texts;
    for (int i = 0; i < nMoves; ++i)
        texts.push_back(WriteMove(list[i], root));
    return texts;
}

TEST_F(Regression, TheOrderAloneIsToldForEachCopy) {
    const std::vector<std::string> moves = SortedMoves("8/8/8/8/8/1K5Q/1p6/kn6", 5);
    const std::string head = std::string("1 #3 ") + kMateInThree + "ExpectedSortWhiteMovesOnly: ";
    EXPECT_EQ(Run(head + moves[0] + " }", true),
              "[Threads = 1, Quick mode] Test #1 ok (T msec) - ExpectedSortWhiteMovesOnly.\n"
              "[Threads = 1, Quick mode] Test #1 M1 ok (T msec) - ExpectedSortWhiteMovesOnly.\n");
    std::filesystem::remove(LogPath());
    EXPECT_EQ(Run(head + moves[1] + " }", true),
              "[Threads = 1, Quick mode] Test #1 failed: ExpectedSortWhiteMoves failed: move 1\n"
              "[Threads = 1, Quick mode] Test #1 M1 failed: ExpectedSortWhiteMoves failed: move 1\n");
}

TEST_F(Regression, AnOrderThatHoldsLetsTheSolveGoOn) {
    const std::vector<std::string> moves = SortedMoves("8/8/8/8/8/1K5Q/1p6/kn6", 5);
    EXPECT_EQ(Run(std::string("1 #3 ") + kMateInThree + "SWM: " + moves[0] + " }\n2 #3 " + kMateInThree +
                  "SWM: " + moves[1] + " }"),
              "[Threads = 1, Quick mode] Prob.#1 Kb3-c2 (T msec).\n"
              "[Threads = 1, Quick mode] Test #2 failed: ExpectedSortWhiteMoves failed: move 1\n");
}

TEST_F(Regression, TheSecondMoveOfTheLineIsComparedBehindTheFirst) {
    constexpr const char* kPlacement = "n1rb4/1p3p1p/1p6/1R5K/8/p3p1PN/1PP1R3/N6k";
    EXPECT_EQ(Run(std::string("1 #7 { FEN: ") + kPlacement +
                  "\nExpectedSortWhiteMovesOnly: " + SortedMoves(kPlacement, 13)[0] + ", a8-a8 }"),
              "[Threads = 1, Quick mode] Test #1 failed: ExpectedSortWhiteMoves failed: move 2\n");
}

TEST_F(Regression, TheOrderAloneIsComparedWithoutSolving) {
    constexpr const char* kStart = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";
    EXPECT_EQ(Run(std::string("1 #20 { FEN: ") + kStart +
                  "\nExpectedSortWhiteMovesOnly: " + SortedMoves(kStart, 39)[0] + " }"),
              "[Threads = 1, Quick mode] Test #1 ok (T msec) - ExpectedSortWhiteMovesOnly.\n");
}

TEST_F(Regression, TheMainVariantIsNoPartOfTheComparison) {
    constexpr const char* kQueen = "{ FEN: 8/8/5Q2/8/8/8/8/2K3k1\nSWM: Qf6-f3, Qf3-f2 }\n";
    const std::string log = Run(std::string("1 #7 ") + kQueen + "2 #8 THREADS 2 " + kQueen);
    EXPECT_NE(log.find("Prob.#1 Qf6-f3 ("), std::string::npos) << log;
    EXPECT_NE(log.find("[Threads = 2, Quick mode] Prob.#2 Q"), std::string::npos) << log; // of several keys any
}

TEST_F(Regression, TheSecondMoveIsComparedInASolveThatGoesOn) {
    EXPECT_EQ(Run("1 #8 { FEN: 8/8/5Q2/8/8/8/8/2K3k1\nSWM: Qf6-f3, Kc1-b1 }"),
              "[Threads = 1, Quick mode] Test #1 failed: ExpectedSortWhiteMoves failed: move 2\n");
}

TEST_F(Regression, AnOrderThatNoSortHasMetIsNoPass) {
    const std::string only = "ExpectedSortWhiteMovesOnly: Ra1-a6 }\n";
    CNotingHost host(std::string("1 #2 ") + kMate + only + "2 #20 " + kHopelessPosition +
                     "ExpectedSortWhiteMovesOnly: }");
    CRegression(host, Setup()).RunRegression(false, false);
    const std::string text = ": the order of White's moves was not compared (no position was sorted).\n";
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Test #1" + text + "[Threads = 1, Quick mode] Test #2" + text);
    EXPECT_EQ(host.m_runs[0].m_outcome, ERegressionOutcome::Doubtful);
}

// ---- the limit, stops, failures

TEST_F(Regression, TheTimeLimitEndsASolveAndIsTold) {
    CNotingHost host(std::string("1 #20 ") + kHopeless + "2 #2 " + kMate + "Answer: Ra1-a6 }");
    CRegression regression(host, Setup());
    regression.TimeLimitSeconds.store(1);
    regression.RunRegression(false, false);
    EXPECT_EQ(Log(), "Solving time limit hit: 1 seconds\n[Threads = 1, Quick mode] Test #2 ok (T msec).\n");
    EXPECT_EQ(host.m_runs[0].m_outcome, ERegressionOutcome::TimeLimit);
}

TEST_F(Regression, AQuickRunHasItsLimitAndPutsTheOldOneBack) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    CRegression regression(host, Setup());
    regression.TimeLimitSeconds.store(7);
    int nLimit = 0;
    bool bRunning = false;
    host.m_onShow = [&] {
        nLimit = regression.TimeLimitSeconds.load();
        bRunning = regression.RegressionRunning();
    };
    ASSERT_TRUE(regression.Start(true));
    regression.Join();
    EXPECT_EQ(nLimit, 64);
    EXPECT_TRUE(bRunning);
    EXPECT_FALSE(regression.RegressionRunning());
    EXPECT_EQ(regression.TimeLimitSeconds.load(), 7);
    EXPECT_TRUE(host.m_asked.empty());
    EXPECT_FALSE(regression.SolveMirrors());
    EXPECT_EQ(host.m_nEnds, 1);
}

TEST_F(Regression, AFullRunLeavesALimitThatIsSetMeanwhile) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    CRegression regression(host, Setup());
    regression.TimeLimitSeconds.store(7);
    host.m_onShow = [&] { regression.TimeLimitSeconds.store(3); };
    regression.RunRegression(false, false);
    EXPECT_EQ(regression.TimeLimitSeconds.load(), 3);
}

TEST_F(Regression, AStopEndsTheRunAndTheLogKeepsWhatWasDone) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}\n2 #20 " + kHopeless + "3 #2 " + kMate + "}");
    CRegression regression(host, Setup());
    regression.TimeLimitSeconds.store(9);
    ASSERT_TRUE(regression.Start(true));
    host.WaitForShown(2);
    regression.Stop();
    regression.Join();
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Prob.#1 Ra1-a6 (T msec).\n");
    EXPECT_EQ(host.m_shown, (std::vector<std::int32_t>{1, 2}));
    for (std::size_t i = 1; i < host.m_runs.size(); ++i) // none if the stop came before the solve began
        EXPECT_EQ(host.m_runs[i].m_outcome, ERegressionOutcome::Stopped);
    EXPECT_EQ(regression.TimeLimitSeconds.load(), 9);
    EXPECT_FALSE(regression.RegressionRunning());
}

TEST_F(Regression, AFailureOfTheHostEndsTheRunAndReachesWhoWaits) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}\n2 #2 " + kMate + "}");
    host.m_onRun = [] { throw std::runtime_error("no output"); };
    CRegression regression(host, Setup());
    EXPECT_THROW(regression.RunRegression(false, true), std::runtime_error);
    EXPECT_EQ(host.m_runs.size(), 1u);
    EXPECT_EQ(regression.TimeLimitSeconds.load(), 0);
    EXPECT_FALSE(regression.RegressionRunning());
    host.m_onRun = {};
    EXPECT_NO_THROW(regression.RunRegression(false, false)) << "and the next run knows nothing of it";
}

TEST_F(Regression, AFailureOfTheHostThatNobodyHasWaitedForIsNoneOfTheNextRun) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    host.m_onRun = [] { throw std::runtime_error("no output"); };
    CRegression regression(host, Setup());
    ASSERT_TRUE(regression.Start(true));
    while (regression.RegressionRunning())
        SleepMs(1);
    host.m_onRun = {};
    ASSERT_TRUE(regression.Start(true));
    EXPECT_NO_THROW(regression.Join());
}

TEST_F(Regression, ALogThatCannotBeWrittenEndsNothing) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    TRegressionSetup setup = Setup();
    setup.m_logPath = m_folder.Path() / "none" / "there.log";
    CRegression(host, setup).RunRegression(false, false);
    ASSERT_EQ(host.m_runs.size(), 1u);
    EXPECT_FALSE(host.m_runs[0].m_bLogged);
    EXPECT_EQ(host.m_runs[0].m_keys, std::vector<std::string>{"Ra1-a6"});
}

// ---- several at a time

TEST_F(Regression, WithJobsTheLogHasTheSameOrder) {
    std::string text, expected;
    for (int id = 1; id <= 24; ++id) {
        const bool bLong = id % 5 == 1; // ends after those behind it have ended
        text += std::to_string(id) + (bLong ? " #4 AllSolutions " : " #2 ") + (bLong ? kMateInThree : kMate) + "}\n";
        for (const std::string mirror : {"", " M1"})
            expected += "#" + std::to_string(id) + mirror + " ";
    }
    const std::string log = Run(text, true, 5);
    std::string order;
    const std::regex number("Prob\\.(#[0-9]+( M1)? )");
    for (std::sregex_iterator at(log.begin(), log.end(), number), end; at != end; ++at)
        order += (*at)[1].str();
    EXPECT_EQ(order, expected);
}

TEST_F(Regression, WhatHasBeenRunReachesTheLogWhenTheHostFails) {
    CNotingHost host("1 #20 " + kHopeless + "2 #2 " + kMate + "}");
    host.m_onRun = [] { throw std::runtime_error("no output"); };
    CRegression regression(host, Setup(2));
    regression.TimeLimitSeconds.store(1);
    EXPECT_THROW(regression.RunRegression(false, false), std::runtime_error);
    EXPECT_EQ(Log(), "Solving time limit hit: 1 seconds\n[Threads = 1, Quick mode] Prob.#2 Ra1-a6 (T msec).\n");
    EXPECT_EQ(host.m_runs.size(), 1u);
}

TEST_F(Regression, AStopEndsAllJobs) {
    CNotingHost host("1 #20 " + kHopeless + "2 #20 " + kHopeless + "3 #20 " + kHopeless);
    CRegression regression(host, Setup(2));
    ASSERT_TRUE(regression.Start(true));
    host.WaitForShown(2);
    regression.Stop();
    regression.Join();
    EXPECT_EQ(host.m_shown.size(), 2u);
    EXPECT_EQ(Log(), "");
}

// ---- the command

TEST_F(Regression, TheFullRunAsksAboutMirrors) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    host.m_answer = EAnswer::Yes;
    CRegression regression(host, Setup());
    ASSERT_TRUE(regression.Start(false));
    regression.Join();
    EXPECT_EQ(
        host.m_asked,
        std::vector<std::string>{
            "Regression tests are usually a time-consuming operation (moreover it usually requires quite many "
            "precalculated/Nalimov data on disk)\n\nTest results will be written to file RegressionTest.log\n\nDo "
            "you want also to solve all mirror positions (except for positions with castling possibilities) ?"});
    EXPECT_TRUE(regression.SolveMirrors());
    EXPECT_EQ(host.m_runs.size(), 2u);
}

TEST_F(Regression, AStopDuringTheQuestionEndsTheRun) {
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    CRegression regression(host, Setup());
    host.m_onAsk = [&] { regression.Stop(); };
    ASSERT_TRUE(regression.Start(false));
    regression.Join();
    EXPECT_TRUE(host.m_shown.empty());
    host.m_onAsk = {};
    ASSERT_TRUE(regression.Start(false));
    regression.Join();
    EXPECT_EQ(host.m_shown.size(), 1u);
}

TEST_F(Regression, CancelStartsNothingAndLeavesTheLog) {
    AppendRegressionLog("old\n", LogPath());
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    host.m_answer = EAnswer::Cancel;
    CRegression regression(host, Setup());
    EXPECT_FALSE(regression.Start(false));
    EXPECT_FALSE(regression.RegressionRunning());
    EXPECT_EQ(Log(), "old\n");
}

TEST_F(Regression, APendingSearchStartsNothing) {
    AppendRegressionLog("old\n", LogPath());
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    host.m_bSolving = true;
    CRegression regression(host, Setup());
    EXPECT_FALSE(regression.Start(true));
    EXPECT_EQ(host.m_informed, std::vector<std::string>{"Solving is pending."});
    EXPECT_EQ(Log(), "old\n");
}

TEST_F(Regression, ARunThatLastsIsAPendingSearch) {
    CNotingHost host("1 #20 " + kHopeless);
    CRegression regression(host, Setup());
    ASSERT_TRUE(regression.Start(true));
    host.WaitForShown(1);
    EXPECT_FALSE(regression.Start(true));
    EXPECT_EQ(host.m_informed, std::vector<std::string>{"Solving is pending."});
    regression.Stop();
    regression.Join();
}

TEST_F(Regression, TheLogBeforeStaysAsABackup) {
    m_folder.Write("RegressionTest.log.BAK", "older\n");
    AppendRegressionLog("old\n", LogPath());
    CNotingHost host(std::string("1 #2 ") + kMate + "}");
    CRegression regression(host, Setup());
    ASSERT_TRUE(regression.Start(true));
    regression.Join();
    EXPECT_EQ(Log("RegressionTest.log.BAK"), "old\n");
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Prob.#1 Ra1-a6 (T msec).\n");
}

// ---- the log

TEST_F(Regression, TextIsAppended) {
    EXPECT_TRUE(AppendRegressionLog("a\n", LogPath()));
    EXPECT_TRUE(AppendRegressionLog("b\n", LogPath()));
    EXPECT_EQ(Log(), "a\nb\n");
    EXPECT_FALSE(AppendRegressionLog("c\n", "/dev/full"));
}

TEST_F(Regression, ARenameThatFailsIsTriedThreeTimesMore) {
    AppendRegressionLog("old\n", LogPath());
    m_folder.Write("RegressionTest.log.BAK/in the way", "");
    std::vector<std::uint32_t> pauses;
    KeepPreviousRegressionLog(LogPath(), [&](std::uint32_t nMs) { pauses.push_back(nMs); });
    EXPECT_EQ(pauses, (std::vector<std::uint32_t>{0, 100, 200}));
    EXPECT_EQ(Log(), "old\n");

    pauses.clear();
    KeepPreviousRegressionLog(LogPath(), [&](std::uint32_t nMs) {
        pauses.push_back(nMs);
        std::filesystem::remove_all(LogPath().string() + ".BAK");
    });
    EXPECT_EQ(pauses, std::vector<std::uint32_t>{0});
    EXPECT_EQ(Log("RegressionTest.log.BAK"), "old\n");
}

TEST_F(Regression, WithoutALogThereIsNothingToWaitFor) {
    KeepPreviousRegressionLog(LogPath(), [](std::uint32_t) { FAIL(); });
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path()));
}

} // namespace
} // namespace quillon
