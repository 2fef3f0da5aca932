// Pause and stop as the nodes obey them.

#include "search/control.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "heuristics/find_mate_root.h"
#include "search/register_use.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

using TClock = std::chrono::steady_clock;

constexpr const char* kEndless = "r1bqkbnr/pppppppp/n7/8/8/N7/PPPPPPPP/R1BQKBNR"; // mate in many moves: never done
constexpr const char* kShort = "8/8/8/8/7Q/n1K5/8/k7";                            // mate in three

double SecondsSince(TClock::time_point start) { return std::chrono::duration<double>(TClock::now() - start).count(); }

/// Runs the root's node on a thread of its own.
class CRunning {
  public:
    CRunning(const char* placement, int nPlies) : m_line(placement, nPlies) {
        m_thread = std::thread([this] {
            m_nVerdict = m_line.Verdict();
            m_bDone = true;
        });
    }
    ~CRunning() {
        m_line.Context().m_nStopRequest = kStopRequest;
        Join();
    }
    void Join() {
        if (m_thread.joinable())
            m_thread.join();
    }
    CSearchedPosition m_line;
    std::atomic<bool> m_bDone{false};
    std::atomic<int> m_nVerdict{99};

  private:
    std::thread m_thread;
};

void SleepMilliseconds(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

TEST(Control, StopRequestEndsALongRunWithinATenthOfASecond) {
    double best = 99;
    for (int attempt = 0; attempt < 5 && best > 0.1; ++attempt) { // a busy machine may be late once
        CRunning running(kEndless, 31);
        SleepMilliseconds(50);
        EXPECT_FALSE(running.m_bDone);
        const auto start = TClock::now();
        running.m_line.Context().m_nStopRequest = kStopRequest;
        running.Join();
        best = std::min(best, SecondsSince(start));
        EXPECT_EQ(running.m_nVerdict, MR_NOMATE);
    }
    EXPECT_LE(best, 0.1);
}

TEST(Control, CommandForAllThreadsStops) {
    CRunning running(kEndless, 31);
    SleepMilliseconds(20);
    GiveCommand(running.m_line.Analysis(), kStopCommand, kAllThreads);
    running.Join();
    EXPECT_TRUE(running.m_bDone);
    EXPECT_EQ(running.m_nVerdict, MR_NOMATE);
}

TEST(Control, CommandForThisThreadStops) {
    CSearchedPosition line(kEndless, 31);
    line.Context().m_nThreadNumber = 3;
    GiveCommand(line.Analysis(), kStopCommand, 3);
    EXPECT_TRUE(PauseOrStop(line.Now()));
    EXPECT_TRUE(IsStopping(line.Now()));
    EXPECT_EQ(line.Verdict(), MR_NOMATE);
}

/// A command has an addressee: the others go on and believe their own verdicts.
TEST(Control, CommandForAnotherThreadChangesNothing) {
    for (const std::uint8_t command : {kPauseCommand, kStopCommand}) {
        CSearchedPosition line(kShort, 5);
        GiveCommand(line.Analysis(), command, 7);
        EXPECT_TRUE(IsControlPending(line.Now()));
        EXPECT_FALSE(PauseOrStop(line.Now()));
        EXPECT_FALSE(IsStopping(line.Now())) << int{command};
        EXPECT_EQ(line.Verdict(), MR_MATE);
        CSearchedPosition doubtful("8/8/2k5/8/3K4/8/7R/8", 3, 1);
        doubtful.Now().m_nHeuristics = SH_DONTRECEDEBLACKKING;
        GiveCommand(doubtful.Analysis(), command, 7);
        EXPECT_EQ(doubtful.Verdict(), MR_DOUBTFUL) << int{command};
    }
}

TEST(Control, RootRunGoesOnUnderAnotherThreadsStop) {
    const auto context = NewSearchContext();
    TAnalysis analysis;
    TRootRun run;
    analysis.m_nSolveMode = kAllSolutions;
    GiveCommand(analysis, kStopCommand, 7);
    EXPECT_EQ(FindMateRoot(*context, analysis, ChessboardFromFEN(kShort), 5, run, true, false), kSolutionsFound);
    EXPECT_FALSE(run.m_bStopped);
    EXPECT_FALSE(HasOpenMoves(run));
}

TEST(Control, NothingIsStoredAfterAStop) {
    /// Raises the stop itself after so many entries.
    class CStopping : public CRecordingRegister {
      public:
        void Insert(const TChessboard& position, int nMoves, TMateResult verdict) override {
            EXPECT_EQ(position.m_pContext->m_nStopRequest.load(), kRunRequest);
            CRecordingRegister::Insert(position, nMoves, verdict);
            if (m_stored.size() == 20)
                position.m_pContext->m_nStopRequest = kStopRequest;
        }
    } known;
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 11);
    line.Analysis().m_pRegister = &known;
    EXPECT_EQ(line.Verdict(), MR_NOMATE);
    EXPECT_EQ(known.m_stored.size(), 20u);
}

TEST(Control, StoppedRootLeavesItsMovesOpen) {
    const auto context = NewSearchContext();
    TAnalysis analysis;
    TRootRun run;
    context->m_nStopRequest = kStopRequest;
    EXPECT_EQ(FindMateRoot(*context, analysis, ChessboardFromFEN(kShort), 5, run, true, false), kNoSolutionFound);
    EXPECT_TRUE(run.m_bStopped);
    ASSERT_FALSE(run.m_moves.empty());
    for (const TRootMove& move : run.m_moves)
        EXPECT_EQ(move.m_nResult, kRootMoveNotTried);
}

TEST(Control, PausedRunWaitsAndGoesOn) {
    for (const bool bByCommand : {false, true}) {
        CSearchedPosition line(kShort, 5);
        const auto Set = [&](bool bPause) {
            if (bByCommand)
                GiveCommand(line.Analysis(), bPause ? kPauseCommand : kNoCommand, kAllThreads);
            else
                line.Context().m_nStopRequest = bPause ? kPauseRequest : kRunRequest;
        };
        Set(true);
        std::atomic<bool> bDone{false};
        TMateResult verdict = MR_NONE;
        std::thread run([&] {
            verdict = line.Verdict();
            bDone = true;
        });
        SleepMilliseconds(60);
        EXPECT_FALSE(bDone);
        Set(false);
        run.join();
        EXPECT_EQ(verdict, MR_MATE);
    }
}

TEST(Control, AStopEndsAPause) {
    CSearchedPosition line(kShort, 5);
    line.Context().m_nStopRequest = kPauseRequest;
    std::thread run([&] { EXPECT_EQ(line.Verdict(), MR_NOMATE); });
    SleepMilliseconds(20);
    line.Context().m_nStopRequest = kStopRequest;
    run.join();
}

TEST(Control, CommandsOfManyThreadsComeThroughWhole) {
    CSearchedPosition line(kShort, 5);
    std::vector<std::thread> givers;
    for (std::uint16_t n = 0; n < 4; ++n)
        givers.emplace_back([&line, n] {
            for (int i = 0; i < 200; ++i)
                GiveCommand(line.Analysis(), i % 2 == 0 ? kPauseCommand : kNoCommand, n);
        });
    for (std::thread& giver : givers)
        giver.join();
    EXPECT_EQ(line.Analysis().m_nControlLock.load(), 0);
    EXPECT_LT(line.Analysis().m_nCommandThread.load(), 4);
}

} // namespace
} // namespace quillon::test
