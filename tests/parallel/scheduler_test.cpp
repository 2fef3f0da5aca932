// The scheduler on nodes that only act as if they searched.

#include "parallel/scheduler.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "parallel/search_thread.h"
#include "parallel/threaded_solve.h"
#include "platform/sleep.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/repetition.h"

namespace quillon::test {
namespace {

constexpr int kPlies = 41;

/// What the search of a move is like.
struct TActed {
    int m_nSteps = 0; // of a millisecond; negative: without end, and for a worker alone
    TMateResult m_result = MR_NOMATE;
    bool m_bThrows = false;
    int m_nMark = 0;
    bool m_bDeaf = false; // asks for no pause: it is between two nodes
};

struct TScript {
    std::vector<TActed> m_moves;
    std::atomic<int> m_nAwake{0}, m_nMostAwake{0};
    std::array<std::atomic<int>, 256> m_steps{};
    std::array<std::atomic<bool>, 256> m_bHere{}; // begun in the node's own thread
    std::thread::id m_nodesThread;
};
TScript* g_script;

/// One step, awake. Pausing is cooperative: a second thread may be in its last one.
void Step(std::size_t move) {
    const int awake = ++g_script->m_nAwake;
    int most = g_script->m_nMostAwake;
    while (awake > most && !g_script->m_nMostAwake.compare_exchange_weak(most, awake)) {
    }
    SleepMs(1);
    ++g_script->m_steps[move];
    --g_script->m_nAwake;
}

/// A node whose only move has the script's number as its target.
TMateResult Act(TChessboard* p) {
    TSearchContext& context = *p->m_pContext;
    EXPECT_EQ(std::exchange(context.m_byResumeList, std::uint8_t{0}), 2);
    EXPECT_EQ(context.m_nResumeCount, 1);
    const std::size_t move = context.m_pResumeList[0].m_nTo;
    const TActed& acted = g_script->m_moves[move];
    const bool bHere = std::this_thread::get_id() == g_script->m_nodesThread;
    g_script->m_bHere[move] = bHere;
    if (bHere && acted.m_nSteps < 0) {
        ADD_FAILURE() << "no worker for move " << move; // nothing would ever end it
        return acted.m_result;
    }
    for (int i = 0; i != acted.m_nSteps; ++i) {
        if (!acted.m_bDeaf && PauseOrStop(*p))
            return MR_NOMATE;
        Step(move);
    }
    if (acted.m_bThrows)
        throw std::runtime_error("acted");
    RaiseRepetitionMark(*p, p->m_nMoves, acted.m_nMark);
    return acted.m_result;
}

class CScheduled {
  public:
    explicit CScheduled(std::vector<TActed> moves) {
        g_script = &m_script;
        m_script.m_moves = std::move(moves);
        for (std::size_t i = 0; i < m_script.m_moves.size(); ++i)
            m_list.push_back({0, static_cast<TSquare>(i), 0, 0});
        m_analysis.m_nSchedulerLevels = 6;
        m_analysis.m_nQuantumSecondMs = 1;
        TChessboard* const root = MakeRoot(*m_context, m_analysis, ChessboardFromFEN("8/8/8/8/8/8/8/K6k"), kPlies, 1);
        m_node = CopyToChild(CopyToChild(root));
        m_node->m_nMoves -= 2;
        m_node = &(RootSlot(*m_context, kPlies - 2) = *m_node);
    }

    TMateResult Run() {
        m_script.m_nodesThread = std::this_thread::get_id();
        TScheduler scheduler(*m_node, nullptr, 1);
        scheduler.TakeMoves(m_list.data(), static_cast<int>(m_list.size()));
        return scheduler.Run(&Act);
    }

    [[nodiscard]] std::uint32_t Threads() const { return m_analysis.m_nFinishedThreads; }

    const CNothingLeft m_nothing;
    TScript m_script;
    TAnalysis m_analysis;
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    std::vector<TMove> m_list;
    TChessboard* m_node = nullptr;
};

TEST(Scheduler, MovesThatEndWithinTheirQuantumShareAThread) {
    CScheduled node({{}, {}, {}, {}, {}});
    node.m_analysis.m_nQuantumSecondMs = 1000;
    EXPECT_EQ(node.Run(), MR_NOMATE);
    EXPECT_EQ(node.Threads(), 1u);
}

TEST(Scheduler, ALongFirstMoveDoesNotStarveTheThirdThatMates) {
    CScheduled node({{-1}, {-1}, {3, MR_MATE}});
    node.m_analysis.m_nQuantumSecondMs = 10; // turns of 250 ms and less
    EXPECT_EQ(node.Run(), MR_MATE);
    EXPECT_EQ(node.Threads(), 3u);
    EXPECT_GT(node.m_script.m_steps[0], 0);
    EXPECT_EQ(node.m_script.m_steps[2], 3);
}

TEST(Scheduler, AllMovesEndAndTheirVerdictsCount) {
    CScheduled refuted({{60}, {40}, {20}, {80}});
    EXPECT_EQ(refuted.Run(), MR_NOMATE);
    for (const auto& [move, steps] : {std::pair{0, 60}, {1, 40}, {2, 20}, {3, 80}})
        EXPECT_EQ(refuted.m_script.m_steps[static_cast<std::size_t>(move)], steps);
    CScheduled doubtful({{40}, {40, MR_DOUBTFUL}, {}});
    EXPECT_EQ(doubtful.Run(), MR_DOUBTFUL);
    CScheduled repeated({{40}, {10, MR_REPETITION, false, 41}, {}});
    EXPECT_EQ(repeated.Run(), MR_REPETITION);
    EXPECT_EQ(RepetitionMark(*repeated.m_node, repeated.m_node->m_nMoves), 41);
}

TEST(Scheduler, FewAreAwakeAtATime) {
    CScheduled node({{100}, {100}, {100}, {100}, {100}});
    node.m_analysis.m_nQuantumSecondMs = 4; // turns of 20 ms for the later ones
    EXPECT_EQ(node.Run(), MR_NOMATE);
    EXPECT_GT(node.Threads(), 2u);
    // One, and at most as many as have not yet come to the end of the step in which they were paused.
    EXPECT_LT(node.m_script.m_nMostAwake, 5);
}

TEST(Scheduler, WithoutThreadsTheNodeGoesOnAlone) {
    SetMostSchedulerThreads(0);
    CScheduled refuted({{5}, {5, MR_DOUBTFUL}, {5}});
    EXPECT_EQ(refuted.Run(), MR_DOUBTFUL);
    EXPECT_EQ(refuted.Threads(), 0u);
    CScheduled mated({{5}, {5, MR_MATE}, {-1}});
    EXPECT_EQ(mated.Run(), MR_MATE);
    SetMostSchedulerThreads(1);
    CScheduled first({{200}, {5}, {5, MR_DOUBTFUL}});
    EXPECT_EQ(first.Run(), MR_DOUBTFUL);
    EXPECT_EQ(first.Threads(), 1u);
    SetMostSchedulerThreads(-1);
    EXPECT_EQ(SchedulerThreads(), 0);
    EXPECT_GT(MostSchedulerThreads(), 1);
}

/// Counts how often it is told that memory is short.
class CFreedMemory : public ITemporaryRegister {
  public:
    TMateResult Find(const TChessboard&, int, int) override { return MR_NONE; }
    void Insert(const TChessboard&, int, TMateResult) override {}
    void InsertDoubtful(const TChessboard&, int) override {}
    void FreeMemory() override { ++m_nFreed; }
    int m_nFreed = 0;
};

TEST(Scheduler, AThreadThatIsRefusedTwiceIsAskedForAThirdTime) {
    CFreedMemory memory;
    CScheduled node({{5}, {5, MR_DOUBTFUL}});
    node.m_analysis.m_pRegister = &memory;
    RefuseThreads(2);
    EXPECT_EQ(node.Run(), MR_DOUBTFUL);
    EXPECT_EQ(memory.m_nFreed, 2);
    EXPECT_GT(node.Threads(), 0u);
    EXPECT_EQ(SchedulerThreads(), 0);
}

/// For some time the nodes go on alone, and nothing is thrown away for threads that are not to be had. What the system
/// had not once it may have later.
TEST(Scheduler, ASystemWithoutThreadsIsAskedAgainLater) {
    const int most = MostSchedulerThreads();
    CFreedMemory memory;
    SetExhaustedMs(600'000);
    RefuseThreads(3);
    CScheduled alone({{5}, {5, MR_DOUBTFUL}, {5}});
    alone.m_analysis.m_pRegister = &memory;
    EXPECT_EQ(alone.Run(), MR_DOUBTFUL);
    EXPECT_EQ(alone.Threads(), 0u);
    EXPECT_EQ(memory.m_nFreed, 2);
    EXPECT_EQ(MostSchedulerThreads(), most);
    SetExhaustedMs(500);
    CScheduled later({{5}, {5, MR_MATE}});
    EXPECT_EQ(later.Run(), MR_MATE);
    EXPECT_GT(later.Threads(), 0u);
}

TEST(Scheduler, AtTheLimitTheRegisterKeepsWhatItHas) {
    CFreedMemory memory;
    SetMostSchedulerThreads(0);
    CScheduled node({{5}, {5}});
    node.m_analysis.m_pRegister = &memory;
    EXPECT_EQ(node.Run(), MR_NOMATE);
    EXPECT_EQ(memory.m_nFreed, 0);
    SetMostSchedulerThreads(-1);
}

/// Does the system let a test have so many threads at a time? They need not do anything.
bool AreThreadsThere(int nThreads) {
    std::atomic<bool> bEnd{false};
    bool bThere = true;
    {
        std::vector<CThread> threads;
        try {
            while (static_cast<int>(threads.size()) < nThreads)
                threads.emplace_back(SearchStackBytes(kPlies), [&bEnd] { bEnd.wait(false); });
        } catch (const std::exception&) { // or memory for them
            bThere = false;
        }
        bEnd = true;
        bEnd.notify_all();
    }
    return bThere;
}

/// None of them ends: those behind the last worker find the node's thread alone.
TEST(Scheduler, MovesBeyondTheMostWorkersAreSearchedInTheNodesThread) {
    if (!AreThreadsThere(kMostWorkers))
        GTEST_SKIP() << "the system does not give " << kMostWorkers << " threads";
    SetMostSchedulerThreads(2 * kMostWorkers); // whatever memory there is
    std::vector<TActed> moves(kMostWorkers, {-1});
    moves.push_back({1});
    moves.push_back({1, MR_MATE});
    {
        CScheduled node(moves);
        node.m_analysis.m_nSchedulerLevels = 1; // the shortest turns
        EXPECT_EQ(node.Run(), MR_MATE);
        EXPECT_EQ(node.Threads(), static_cast<std::uint32_t>(kMostWorkers));
        EXPECT_FALSE(node.m_script.m_bHere[kMostWorkers - 1]);
        EXPECT_TRUE(node.m_script.m_bHere[kMostWorkers]);
        EXPECT_TRUE(node.m_script.m_bHere[kMostWorkers + 1]);
        EXPECT_EQ(node.m_script.m_steps[kMostWorkers], 1);
    }
    EXPECT_EQ(SchedulerThreads(), 0);
    SetMostSchedulerThreads(-1);
}

TEST(Scheduler, AMateOfAWorkerThatWasPausedCounts) {
    SetMostSchedulerThreads(1);
    CScheduled node({{100, MR_MATE, false, 0, true}, {300}});
    EXPECT_EQ(node.Run(), MR_MATE);
    SetMostSchedulerThreads(-1);
}

TEST(Scheduler, AFailureInTheNodesOwnThreadLeavesNoTrace) {
    SetMostSchedulerThreads(0);
    CScheduled node({{5}, {5, MR_NOMATE, true}});
    EXPECT_THROW((void)node.Run(), std::runtime_error);
    EXPECT_EQ(node.m_context->m_pScheduler, nullptr);
    SetMostSchedulerThreads(-1);
}

/// In too many schedulers a node goes on by itself, and its moves are searched all the same.
TEST(Scheduler, ANodeThatStandsInTooManyIsSearchedWithoutOne) {
    for (const int nesting : {0, kMostNestedSchedulers}) {
        const CNothingLeft nothing;
        TAnalysis analysis;
        analysis.m_nSchedulerLevels = 6;
        const auto context = NewSearchContext();
        TChessboard& node = *MakeRoot(*context, analysis, ChessboardFromFEN("k7/8/2K5/8/8/8/8/7R"), 19, 2);
        node.m_nInitialMoves = 23; // two moves of each side have been played
        std::deque<TScheduler> schedulers;
        for (int i = 0; i < nesting; ++i)
            context->m_pScheduler = &schedulers.emplace_back(node, context->m_pScheduler, 1);
        EXPECT_EQ(FindMateWhite<kPlainNode>(&node, false), MR_MATE) << nesting;
        EXPECT_EQ(analysis.m_nFinishedThreads == 0, nesting != 0);
    }
}

TEST(Scheduler, APausedNodeStandsStillAndGoesOn) {
    CScheduled node({{400}, {400}, {400}});
    TMateResult result = MR_NONE;
    CThread thread(std::size_t{1} << 20, [&] { result = node.Run(); });
    SleepMs(60);
    AskThread(*node.m_context, kPauseRequest);
    SleepMs(200); // long enough for every worker to notice
    const auto steps = [&] { return node.m_script.m_steps[0] + node.m_script.m_steps[1] + node.m_script.m_steps[2]; };
    const int before = steps();
    SleepMs(100);
    EXPECT_EQ(steps(), before);
    EXPECT_LT(before, 1200);
    AskThread(*node.m_context, kRunRequest);
    thread.Join();
    EXPECT_EQ(result, MR_NOMATE);
    EXPECT_EQ(steps(), 1200);
}

TEST(Scheduler, AStopEndsAllOfIt) {
    for (const bool bByCommand : {false, true}) {
        CScheduled node({{-1}, {-1}, {-1}});
        CThread thread(std::size_t{1} << 20, [&] { (void)node.Run(); });
        SleepMs(60);
        if (bByCommand)
            GiveCommand(node.m_analysis, kStopCommand, kAllThreads);
        else
            AskThread(*node.m_context, kStopRequest);
        thread.Join(); // or the test does not end
        EXPECT_TRUE(IsStopping(*node.m_node));
        EXPECT_EQ(SchedulerThreads(), 0);
    }
}

TEST(Scheduler, WhatAWorkerThrowsReachesTheNode) {
    CScheduled node({{-1}, {20, MR_NOMATE, true}, {-1}});
    EXPECT_THROW((void)node.Run(), std::runtime_error);
}

TEST(Scheduler, TheRangeBeginsBelowTheLevelsOfThreads) {
    CScheduled node({});
    node.m_analysis.m_nMultithreadingLevels = 2;
    for (int played = 4; played <= 16; played += 2) {
        node.m_node->m_nMoves = static_cast<std::uint16_t>(kPlies - played);
        EXPECT_EQ(TScheduler(*node.m_node, nullptr, 1).IsInRange(), played <= 14) << played;
    }
}

TEST(Scheduler, OutsideTheRangeNoMoveCountsAsLate) {
    CScheduled node({{}, {}, {}});
    for (const int played : {2, 14}) {
        node.m_node->m_nMoves = static_cast<std::uint16_t>(kPlies - played);
        TScheduler scheduler(*node.m_node, nullptr, 1);
        scheduler.TakeMoves(node.m_list.data(), 3);
        EXPECT_EQ(scheduler.Times().m_nCustomFrom, played == 2 ? 1 : 3);
    }
}

TEST(Scheduler, SchedulersOutsideTheRangeAreCounted) {
    CScheduled node({});
    const TScheduler inRange(*node.m_node, nullptr, 1);
    node.m_node->m_nMoves = kPlies - 14;
    const TScheduler first(*node.m_node, &inRange, 1), second(*node.m_node, &first, 1);
    EXPECT_EQ(inRange.CustomDepth(), 0);
    EXPECT_EQ(first.CustomDepth(), 1);
    EXPECT_EQ(second.CustomDepth(), 2);
    EXPECT_EQ(second.Nesting(), 3);
}

} // namespace
} // namespace quillon::test
