// A pause of all threads: nobody works, no clock goes, and the verdict is the same.

#include <chrono>
#include <thread>

#include "heuristics/relaxation_clock.h"
#include "parallel/observed_solve.h"
#include "platform/clock.h"
#include "search/control.h"
#include "search/helper_threads.h"

namespace quillon::test {
namespace {

TEST(AnalysisClock, StandsStillInAPauseOfAllThreads) {
    TAnalysis analysis;
    const std::uint64_t wall = TickCount64(), start = AnalysisTicks(analysis);
    PauseAll(analysis);
    const std::uint64_t stood = AnalysisTicks(analysis);
    SleepMs(40);
    EXPECT_EQ(AnalysisTicks(analysis), stood);
    PauseAll(analysis); // a second one changes nothing
    SleepMs(20);
    EXPECT_EQ(AnalysisTicks(analysis), stood);
    ResumeAll(analysis);
    SleepMs(20);
    const std::uint64_t went = AnalysisTicks(analysis) - start;
    EXPECT_GE(went, 20u);
    EXPECT_LE(went + 60, TickCount64() - wall);
}

TEST(AnalysisClock, GoesOnInAPauseOfOneThread) {
    TAnalysis analysis;
    const std::uint64_t start = AnalysisTicks(analysis);
    GiveCommand(analysis, kPauseCommand, 3);
    SleepMs(20);
    EXPECT_GE(AnalysisTicks(analysis) - start, 20u);
    ResumeAll(analysis); // is none of its
    EXPECT_EQ(analysis.m_nCommand, kPauseCommand);
}

/// Whatever takes the pause's place in the control record lets the threads go on, and the clock with them.
TEST(AnalysisClock, GoesOnWithTheNextCommand) {
    TAnalysis analysis;
    PauseAll(analysis);
    GiveCommand(analysis, kStopCommand, kAllThreads);
    const std::uint64_t start = AnalysisTicks(analysis);
    SleepMs(20);
    EXPECT_GE(AnalysisTicks(analysis) - start, 20u);
    PauseAll(analysis); // a stop stays
    SleepMs(20);
    EXPECT_GE(AnalysisTicks(analysis) - start, 40u);
    EXPECT_EQ(analysis.m_nCommand, kStopCommand);
}

TEST(AnalysisClock, StampsOfRelaxationLeaveThePauseOut) {
    TAnalysis analysis;
    const std::uint64_t wall = TickCount64();
    analysis.m_nStartTicks = AnalysisTicks(analysis);
    PauseAll(analysis);
    SleepMs(60);
    ResumeAll(analysis);
    const std::int64_t ms = MsUntilRelaxation(analysis, 1);
    EXPECT_GE(ms, 0);
    EXPECT_LE(ms + 60, static_cast<std::int64_t>(TickCount64() - wall));
}

constexpr int kObservedLevels = 2;

TEST(Pause, AllThreadsSleepAndTheClockStands) {
    const struct {
        TTree m_tree;
        int m_nSchedulerLevels;
        std::uint32_t m_nThreads; // that run sooner or later
    } rows[] = {{{1, 1}, 0, 1}, {{4, 2}, 0, 5}, {{2, 1}, 6, 2}};
    for (const auto& row : rows) {
        TSolveRequest request = Endless(row.m_tree);
        request.m_nSchedulerLevels = row.m_nSchedulerLevels;
        request.m_nQuantumSecondMs = 10;
        CObservedSolve run(request, kObservedLevels);
        TAnalysis& analysis = run.m_solve.Analysis();
        const std::uint32_t threads = row.m_nThreads;
        ASSERT_TRUE(run.WaitUntil([&] {
            return run.m_observer.Read().m_pass.m_nPass != 0 && run.m_observer.Read().m_nRunningThreads >= threads;
        }));
        const std::uint64_t start = TickCount64();
        run.m_solve.Pause();
        ASSERT_TRUE(run.WaitUntil(
            [&] { return analysis.m_nSleepingThreads >= analysis.m_nRunningThreads + analysis.m_nSchedulerThreads; }));
        EXPECT_LT(TickCount64() - start, 3000u); // a tenth of a second on an idle machine
        const TProgressState before = run.m_observer.Read();
        EXPECT_TRUE(before.m_bPaused);
        SleepMs(150);
        const TProgressState after = run.m_observer.Read();
        EXPECT_EQ(after.m_nPositions, before.m_nPositions);
        EXPECT_EQ(after.m_seconds, before.m_seconds);
        run.m_solve.Resume();
        EXPECT_FALSE(run.m_observer.Read().m_bPaused);
        EXPECT_TRUE(run.WaitUntil([&] { return run.m_observer.Read().m_nPositions > after.m_nPositions; }));
        run.m_solve.RequestStop();
        run.m_thread.Join();
        EXPECT_EQ(run.m_result.m_verdict, EVerdict::Stopped);
    }
}

TEST(Pause, AStopEndsIt) {
    CObservedSolve run(Endless({4, 2}), kObservedLevels);
    ASSERT_TRUE(run.WaitUntil([&] { return run.m_observer.Read().m_pass.m_nPass != 0; }));
    run.m_solve.Pause();
    SleepMs(50);
    EXPECT_FALSE(run.m_bDone);
    run.m_solve.RequestStop();
    run.m_thread.Join();
    EXPECT_EQ(run.m_result.m_verdict, EVerdict::Stopped);
}

/// Pauses at random moments: the keys stay, and what the solve took is what it took outside of them.
TEST(Pause, LeavesVerdictAndTimeAsTheyAre) {
    std::mt19937_64 rng(5301);
    for (const TTree tree : {TTree{1, 1}, TTree{4, 1}, TTree{4, 2}}) {
        const std::uint64_t start = TickCount64();
        CObservedSolve run(AllKeys("7k/5p2/5P1p/2K4P/8/8/8/8", 11, tree), kObservedLevels);
        std::uint64_t paused = 0;
        for (int i = 0; i < 4 && !run.m_bDone; ++i) {
            SleepMs(static_cast<std::uint32_t>(reference::DrawInt(rng, 30)));
            run.m_solve.Pause();
            const std::uint64_t from = TickCount64();
            SleepMs(static_cast<std::uint32_t>(20 + reference::DrawInt(rng, 60)));
            paused += run.m_bDone ? 0 : TickCount64() - from; // before it resumes: no more than the clock has left out
            run.m_solve.Resume();
        }
        run.m_thread.Join();
        EXPECT_EQ(SortedKeys(run.m_result), std::vector<std::string>{"Kc5-d6"});
        EXPECT_TRUE(run.m_result.m_bComplete);
        const double wall = static_cast<double>(TickCount64() - start) / 1000.0;
        EXPECT_LE(run.m_result.m_seconds, wall - static_cast<double>(paused) / 1000.0 + 0.02);
    }
}

/// The threads that help the guide wake up for it.
TEST(Pause, AStopEndsItInALookOfTheGuide) {
    TSolveRequest request = Endless({4, 1});
    request.m_mode = ESolveMode::FirstSolution;
    request.m_nMemoryBudgetMB = 64; // for the table of the guide
    CObservedSolve run(request, kObservedLevels);
    const TAnalysis& analysis = run.m_solve.Analysis();
    ASSERT_TRUE(run.WaitUntil([&] {
        return std::string_view(analysis.m_pStatusText.load()) == kGuideLooking &&
               static_cast<int>(analysis.m_nRunningThreads) >= ThreadsForLook(analysis);
    }));
    run.m_solve.Pause();
    ASSERT_TRUE(
        run.WaitUntil([&] { return static_cast<int>(analysis.m_nSleepingThreads) >= ThreadsForLook(analysis); }));
    run.m_solve.RequestStop();
    run.m_thread.Join(); // or the test does not end
    EXPECT_EQ(run.m_result.m_verdict, EVerdict::Stopped);
}

} // namespace
} // namespace quillon::test
