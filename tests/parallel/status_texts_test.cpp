// The texts of a running solve, against texts written by hand.

#include "parallel/status_texts.h"

#include <gtest/gtest.h>

#include "search/analysis.h"

namespace quillon {
namespace {

TProgressState PassOneB() {
    TProgressState state;
    state.m_pass.m_nPass = 1;
    state.m_pass.m_nRelaxations = 1;
    state.m_pass.m_nHeuristics = 0x44;
    state.m_pass.m_heuristics = "SH_DONTLETKINGMOVE, SH_KEEPKINGWITHINEXTEDGE(A),  QuickMode";
    state.m_pass.m_nSolveMode = kAllSolutions;
    state.m_pass.m_nRootPlies = 23;
    state.m_part = 0.2345;
    state.m_nPositions = 12400000;
    state.m_nRunningThreads = 1;
    state.m_nAwaitedThreads = 1;
    state.m_register.m_nMegabytes = 130;
    state.m_register.m_nElements = 1200;
    state.m_register.m_nDoubtfulElements = 300;
    state.m_seconds = 35.9;
    return state;
}

TObservedMove Move(TFigure figure, TSquare from, TSquare to, bool bCapture = false) {
    return {{from, to, 0, 0}, figure, bCapture};
}

TEST(StatusLine, HasItsItemsInOrder) {
    EXPECT_EQ(StatusLine(PassOneB()), "A Pass 1b SH(SH_DONTLETKINGMOVE, SH_KEEPKINGWITHINEXTEDGE(A),  QuickMode) "
                                      "TR=130MB GR=0MB Thrds=1 23.4% 12400000");
}

TEST(StatusLine, APassWithoutHeuristicsNamesNone) {
    TProgressState state = PassOneB();
    state.m_pass = {};
    state.m_pass.m_nPass = 2;
    state.m_pass.m_nRelaxations = 4;
    EXPECT_EQ(StatusLine(state), "A Pass 2 TR=130MB GR=0MB Thrds=1 23.4% 12400000");
}

TEST(StatusLine, ShowsSafeModeThreadsAndGigabytes) {
    TProgressState state = PassOneB();
    state.m_thread = 17;
    state.m_pass.m_nRelaxations = 0;
    state.m_pass.m_heuristics = "SH_ZUGZWANG";
    state.m_pass.m_bSafeMode = true;
    state.m_register.m_nMegabytes = 1536;
    state.m_nGlobalRegisterMegabytes = 1023;
    state.m_nRunningThreads = 16;
    state.m_nSchedulerThreads = 4;
    state.m_nPositions = 123456789012345;
    EXPECT_EQ(StatusLine(state),
              "17 Pass 1 SH(SH_ZUGZWANG) Safe mode ON TR=1.5GB GR=1023MB Thrds=16+4 23.4% 123456789012345");
    state.m_pass.m_bThreadsForced = true;
    EXPECT_NE(StatusLine(state).find(" Thrds=16(forced)+4 "), std::string::npos);
    state.m_nSchedulerThreads = 0;
    EXPECT_NE(StatusLine(state).find(" Thrds=16(forced) "), std::string::npos);
}

TEST(StatusLine, OnlyTheSetIsCutForANarrowTerminal) {
    const TProgressState state = PassOneB();
    EXPECT_EQ(StatusLine(state, 79), "A Pass 1b SH(SH_DONTLETKINGMOVE, SH_...) TR=130MB GR=0MB Thrds=1 23.4% 12400000");
    EXPECT_EQ(StatusLine(state, 79).size(), 79u);
    EXPECT_EQ(StatusLine(state, 10), "A Pass 1b SH(...) TR=130MB GR=0MB Thrds=1 23.4% 12400000");
    EXPECT_EQ(StatusLine(state, 200), StatusLine(state));
}

TEST(StatusLine, OutsidePassesItTellsWhatIsDone) {
    TProgressState state;
    for (const char* text : {"initial position check pending...", "Initial position type check..."}) {
        state.m_status = text;
        EXPECT_EQ(StatusLine(state), std::string("A ") + text);
        EXPECT_EQ(RootLine(state), std::string(text) + "             \r");
    }
}

TEST(StatusLine, AThreadThatHasEndedIsStopped) {
    TProgressState state = PassOneB();
    state.m_thread = 3;
    state.m_bThreadStopped = true;
    EXPECT_EQ(StatusLine(state), "3 Thread stopped");
    EXPECT_EQ(ThreadTrace(state), "3. Thread stopped");
}

TEST(RootLine, OfOneThread) {
    EXPECT_EQ(RootLine(PassOneB()), "Pass 1b, 23.4% 12400000             \r");
    EXPECT_EQ(WithoutEnd(RootLine(PassOneB())), "Pass 1b, 23.4% 12400000");
}

TEST(RootLine, OfSeveralThreadsTellsThemAndWhatTheyLookFor) {
    TProgressState state = PassOneB();
    state.m_pass.m_nThreads = 4;
    EXPECT_EQ(RootLine(state), "Pass 1b,  4thrd(s) AllSolutions, 23.4% 12400000             \r");
    state.m_pass.m_nThreads = 16;
    state.m_pass.m_nSolveMode = kSingleSolution;
    EXPECT_EQ(RootLine(state), "Pass 1b, 16thrd(s) SnglSolution, 23.4% 12400000             \r");
    state.m_pass.m_nSolveMode = 0; // until two are found
    EXPECT_EQ(RootLine(state), "Pass 1b, 16thrd(s) 23.4% 12400000             \r");
}

TEST(WaitLine, TellsThreadsAndWholeSeconds) {
    TProgressState state = PassOneB();
    EXPECT_EQ(WaitLine(state), "1thrd(s)... 35 sec(s)...     \r");
    state.m_nAwaitedThreads = 4;
    EXPECT_EQ(WaitLine(state), "4thrd(s)... 35 sec(s)...     \r");
    state.m_nAwaitedThreads = 0; // before the passes
    state.m_nRunningThreads = 2;
    EXPECT_EQ(WaitLine(state), "2thrd(s)... 35 sec(s)...     \r");
}

TEST(ThreadTrace, ShowsMaskRegisterAndMoves) {
    TProgressState state = PassOneB();
    state.m_thread = 3;
    EXPECT_EQ(ThreadTrace(state), "3. SH:44h,TR:1200(300)");
    state.m_levels = {{23, 1, {Move(kKing, 35, 43), Move(kKing, 43, 52), Move(kPawn, 8, 16), Move(kPawn, 8, 24)}},
                      {22, 0, {Move(kKing, 63, 54)}},
                      {21, 2, {Move(kPawn, 8, 16), Move(kPawn, 8, 24), Move(kRook, 0, 56, true)}}};
    EXPECT_EQ(ThreadTrace(state), "3. SH:44h,TR:1200(300) 1.Kd6-e7 25.0% Kh8-g7 0.0% 2.Ra1:a8 66.7%");
}

} // namespace
} // namespace quillon
