// The verdict and the set of keys do not depend on the number of threads and levels.

#include "parallel/threaded_solve.h"

#include <chrono>
#include <thread>
#include <tuple>

#include "parallel/observed_solve.h"
#include "search/control.h"
#include "tempregister/search_register.h"

namespace quillon::test {
namespace {

/// Long enough for groups below the root; the keys by one thread stand in the sample library.
struct TLong {
    const char* m_placement;
    int m_nMoves;
    const char* m_key;
};
constexpr TLong kLong[] = {
    {"7k/5p2/3K1P1p/7P/1p6/1P6/8/8", 10, "Kd6-e7"},
    {"7k/5p2/5P1p/2K4P/8/8/8/8", 11, "Kc5-d6"},
    {"k7/2p5/p1P4p/P6P/2K5/8/8/8", 12, "Kc4-d5"},
};

TEST(ThreadedSolve, RandomProblemsHaveTheKeysOfTheReference) {
    const CNothingLeft nothing;
    std::mt19937_64 rng(5101);
    int keys = 0;
    for (int i = 0; i < Few(60); ++i) {
        const int moves = 2 + i % 3;
        const TJudgedProblem problem = RandomProblem(rng, moves, 5, 60'000);
        const TTree tree = kTrees[static_cast<std::size_t>(i) % std::size(kTrees)];
        CAgreeing notifier;
        CSolve solve(AllKeys(problem.m_placement, moves, tree));
        const TSolvingResult result = solve.StartSolving(notifier);
        EXPECT_TRUE(result.m_bComplete) << problem.m_placement;
        EXPECT_EQ(SortedKeys(result), problem.m_keys) << problem.m_placement << " " << tree.m_nThreads;
        keys += static_cast<int>(problem.m_keys.size());
    }
    EXPECT_GT(keys, Floor(20));
}

/// More moves are allowed than it takes: the groups of the levels are at work, and every key of the mate is one still.
TEST(ThreadedSolve, LevelsGiveTheKeysOfOneThread) {
    const CNothingLeft nothing;
    std::mt19937_64 rng(5102);
    int below = 0; // solves that formed groups below the root
    for (int i = 0; i < Few(6); ++i) {
        const std::string placement = reference::RandomPawnPlacement(rng, 3);
        CAgreeing notifier;
        CSolve one(AllKeys(placement, 8, {1, 1}));
        const TSolvingResult truth = one.StartSolving(notifier);
        ASSERT_TRUE(truth.m_bComplete) << placement;
        for (const TTree tree : {TTree{4, 3}, TTree{2, 2}}) {
            if (Few(5) < 5 && tree.m_nThreads == 2)
                continue;
            CSolve many(AllKeys(placement, 8, tree));
            const TSolvingResult result = many.StartSolving(notifier);
            EXPECT_EQ(result.m_verdict, truth.m_verdict) << placement;
            EXPECT_TRUE(result.m_bComplete) << placement;
            EXPECT_EQ(SortedKeys(result), SortedKeys(truth)) << placement << " " << tree.m_nThreads;
            const std::uint64_t atRoot = static_cast<std::uint64_t>(tree.m_nThreads) * result.m_passes.size();
            below += many.Analysis().m_nFinishedThreads > atRoot ? 1 : 0;
        }
    }
    EXPECT_GT(below, 0);
}

/// The one move of the root is tried by the driver itself; the levels below have their groups all the same.
TEST(ThreadedSolve, ASingleRootMoveHasGroupsBelowIt) {
    const CNothingLeft nothing;
    CAgreeing notifier;
    // White in check can only take the rook; behind it all is free.
    const char* const placement = "7k/5ppb/8/8/8/8/r6P/K7";
    ASSERT_EQ(reference::LegalMoves(reference::ProblemFromFen(placement)).size(), 1u);
    CSolve solve(AllKeys(placement, 9, {3, 3}));
    const TSolvingResult result = solve.StartSolving(notifier);
    EXPECT_EQ(result.m_verdict, EVerdict::NoMate);
    EXPECT_GT(solve.Analysis().m_nFinishedThreads, 0u);
}

TEST(ThreadedSolve, LongProblemsHaveTheirKeyOnAnyTree) {
    const CNothingLeft nothing;
    int taken = 0;
    for (const TLong& problem : kLong)
        for (const TTree tree : kTrees) {
            if (++taken % 5 != 0 && Few(5) < 5)
                continue; // a solve takes seconds there
            CAgreeing notifier;
            CSolve solve(AllKeys(problem.m_placement, problem.m_nMoves, tree));
            const TSolvingResult result = solve.StartSolving(notifier);
            EXPECT_EQ(SortedKeys(result), std::vector<std::string>{problem.m_key})
                << problem.m_placement << " " << tree.m_nThreads << "^" << tree.m_nLevels;
            EXPECT_TRUE(result.m_bComplete);
            CSolve shorter(AllKeys(problem.m_placement, problem.m_nMoves - 1, tree));
            EXPECT_EQ(shorter.StartSolving(notifier).m_verdict, EVerdict::NoMate) << problem.m_placement;
        }
}

TEST(ThreadedSolve, AStopEndsAllThreadsSoonAndGivesNoVerdict) {
    const CNothingLeft nothing;
    for (const TTree tree : kTrees) {
        TSolveRequest request = AllKeys("r1bqkbnr/pppppppp/n7/8/8/N7/PPPPPPPP/R1BQKBNR", 12, tree);
        request.m_bRunPass2 = true;
        CSolve solve(request);
        CAgreeing notifier;
        TSolvingResult result;
        CThread thread(std::size_t{64} << 20, [&] { result = solve.StartSolving(notifier); });
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        const auto start = std::chrono::steady_clock::now();
        solve.RequestStop();
        thread.Join();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_LT(seconds, 5) << tree.m_nThreads << "^" << tree.m_nLevels; // a tenth on an idle machine
        EXPECT_EQ(result.m_verdict, EVerdict::Stopped);
        EXPECT_FALSE(result.m_bComplete);
    }
}

/// Commanded, a stop need not be passed on from level to level. Taken back with the start that it ends.
TEST(ThreadedSolve, AStopIsACommandToAllThreadsUntilItHasEndedAStart) {
    const CNothingLeft nothing;
    CSolve solve(Endless({2, 2}));
    CAgreeing notifier;
    solve.RequestStop();
    EXPECT_EQ(solve.Analysis().m_nCommand, kStopCommand);
    EXPECT_EQ(solve.Analysis().m_nCommandThread, kAllThreads);
    EXPECT_EQ(solve.StartSolving(notifier).m_verdict, EVerdict::Stopped);
    EXPECT_EQ(solve.Analysis().m_nCommand, kNoCommand);
}

/// The driver's own thread is not asked: whoever is in a node, of whatever level, finds the command.
TEST(ScheduledSolve, AStopByCommandAloneEndsTheThreadsOfAllLevels) {
    TSolveRequest request = Endless({2, 3});
    request.m_nSchedulerLevels = 6;
    CObservedSolve run(request, 3);
    TAnalysis& analysis = run.m_solve.Analysis();
    ASSERT_TRUE(run.WaitUntil([&] { return analysis.m_nSchedulerThreads != 0; }));
    GiveCommand(analysis, kStopCommand, kAllThreads);
    ASSERT_TRUE(run.WaitUntil([&] { return run.m_bDone.load(); }));
    EXPECT_EQ(run.m_result.m_verdict, EVerdict::Stopped);
}

/// Mates in ten are the shortest that a scheduler has a part in.
TEST(ScheduledSolve, HasTheKeysOfOneThread) {
    const CNothingLeft nothing;
    std::mt19937_64 rng(5104);
    std::uint64_t threads = 0;
    for (int i = 0; i < Few(12); ++i) {
        const std::string placement = reference::RandomPawnPlacement(rng, 2);
        CAgreeing notifier;
        CSolve one(AllKeys(placement, 10, {1, 1}));
        const TSolvingResult truth = one.StartSolving(notifier);
        ASSERT_TRUE(truth.m_bComplete) << placement;
        const TTree tree = kTrees[static_cast<std::size_t>(i) % std::size(kTrees)];
        CSolve many(Juggled(AllKeys(placement, 10, i % 2 == 0 ? TTree{1, 1} : tree), rng));
        const TSolvingResult result = many.StartSolving(notifier);
        EXPECT_EQ(result.m_verdict, truth.m_verdict) << placement;
        EXPECT_TRUE(result.m_bComplete) << placement;
        EXPECT_EQ(SortedKeys(result), SortedKeys(truth)) << placement;
        threads += i % 2 == 0 ? many.Analysis().m_nFinishedThreads.load() : 0; // of the scheduler alone
    }
    EXPECT_GT(threads, 0u);
}

TEST(ScheduledSolve, LongProblemsHaveTheirKeyOnAnyTree) {
    const CNothingLeft nothing;
    std::mt19937_64 rng(5105);
    int taken = 0;
    for (const TLong& problem : kLong)
        for (const TTree tree : {TTree{1, 1}, TTree{2, 1}, TTree{4, 2}}) {
            if (++taken % 4 != 0 && Few(5) < 5)
                continue;
            CAgreeing notifier;
            CSolve solve(Juggled(AllKeys(problem.m_placement, problem.m_nMoves, tree), rng));
            const TSolvingResult result = solve.StartSolving(notifier);
            EXPECT_EQ(SortedKeys(result), std::vector<std::string>{problem.m_key}) << problem.m_placement;
            EXPECT_TRUE(result.m_bComplete);
            CSolve shorter(Juggled(AllKeys(problem.m_placement, problem.m_nMoves - 1, tree), rng));
            EXPECT_EQ(shorter.StartSolving(notifier).m_verdict, EVerdict::NoMate) << problem.m_placement;
        }
}

/// A register that is full all the time forgets while others look things up.
TEST(ScheduledSolve, EvictionsAllTheTimeChangeNoVerdict) {
    const CNothingLeft nothing;
    std::mt19937_64 rng(5106);
    for (const bool bShorter : {false, true}) {
        TAggregatedTemporaryChessboardRegister known(1 << 20, 256);
        known.nMaxElements = 150; // of the thousand that these solves prove
        CSearchRegister searched(known);
        CSolve solve(Juggled(AllKeys(kLong[1].m_placement, bShorter ? 10 : 11, {4, 2}), rng));
        solve.SetPlanSink([&](const TPlanReport&) { solve.Analysis().m_pRegister = &searched; });
        CAgreeing notifier;
        const TSolvingResult result = solve.StartSolving(notifier);
        EXPECT_EQ(SortedKeys(result), bShorter ? std::vector<std::string>{} : std::vector<std::string>{kLong[1].m_key});
        EXPECT_TRUE(result.m_bComplete);
        EXPECT_GT(known.Statistics().m_nEvictions, 0u); // a fast machine is done before another is let through
        EXPECT_GT(known.Statistics().m_nHits, 0u);
    }
}

TEST(ScheduledSolve, WithoutLevelsThereIsNoScheduler) {
    TSolveRequest request = AllKeys(kLong[1].m_placement, 11, {1, 1});
    request.m_bCustomScheduler = true;
    CSolve solve(request);
    CAgreeing notifier;
    (void)solve.StartSolving(notifier);
    EXPECT_EQ(solve.Analysis().m_nFinishedThreads, 0u);
    EXPECT_FALSE(solve.Analysis().m_bCustomScheduler);
}

/// Stops, pauses and manual commands at random moments cost keys at most; they never make one, nor a refutation.
TEST(ThreadedSolve, CommandsAtRandomMomentsLeaveNoFalseVerdict) {
    const CNothingLeft nothing;
    constexpr int kMostNumbers = 24; // threads of the root and of the levels below it
    std::mt19937_64 rng(5103);
    int commands = 0, proofs = 0;
    for (int i = 0; i < Few(40); ++i) {
        const TLong& problem = kLong[static_cast<std::size_t>(i) % std::size(kLong)];
        const bool bShorter = i % 4 == 3;
        const TTree tree = kTrees[static_cast<std::size_t>(reference::DrawInt(rng, 7))];
        const int moves = problem.m_nMoves - (bShorter ? 1 : 0);
        const TSolveRequest plain = AllKeys(problem.m_placement, moves, tree);
        CSolve solve(i % 3 == 1 ? Juggled(plain, rng) : plain);
        CAgreeing notifier;
        TSolvingResult result;
        std::atomic<bool> bDone{false};
        CThread thread(std::size_t{64} << 20, [&] {
            result = solve.StartSolving(notifier);
            bDone = true;
        });
        const bool bStop = i % 5 == 4, bPausesOnly = i % 8 == 0;
        for (int n = 0; n < 100 && !bDone; ++n) {
            std::this_thread::sleep_for(std::chrono::microseconds(reference::DrawInt(rng, 3000)));
            ++commands;
            switch (reference::DrawInt(rng, bPausesOnly ? 2 : 7)) {
            case 0:
                solve.Pause();
                break;
            case 1:
                // Odd numbers, for the end of a pause of one thread takes back its stop as well.
                GiveCommand(solve.Analysis(), kPauseCommand,
                            reference::Chance(rng, 50)
                                ? kAllThreads
                                : static_cast<std::uint16_t>(2 * reference::DrawInt(rng, 10) + 1));
                break;
            case 2:
                if (bStop && reference::Chance(rng, 20))
                    solve.RequestStop();
                break;
            case 3: // of one thread with an even number, and the next command comes at once
                if (i % 5 == 2 && reference::Chance(rng, 20))
                    GiveCommand(solve.Analysis(), kStopCommand,
                                static_cast<std::uint16_t>(2 * reference::DrawInt(rng, kMostNumbers / 2)));
                [[fallthrough]];
            default: {
                TManualCommand command;
                command.m_nThread = reference::Chance(rng, 50)
                                        ? kAllThreads
                                        : static_cast<std::uint16_t>(reference::DrawInt(rng, kMostNumbers));
                const int deepest = reference::Chance(rng, 50) ? 4 : 2 * moves - 2;
                command.m_nPlies = static_cast<std::uint16_t>(2 * moves - 1 - reference::DrawInt(rng, deepest));
                command.m_skipTarget = {static_cast<std::uint8_t>(reference::DrawInt(rng, kSquares)),
                                        static_cast<std::uint8_t>(reference::DrawInt(rng, kSquares)), 0, 0};
                command.m_nMoveOrderAction = static_cast<std::uint8_t>(reference::DrawInt(rng, 3));
                command.m_nSkipAction = static_cast<std::uint8_t>(reference::DrawInt(rng, 4));
                GiveManualCommand(solve.Analysis(), command);
            }
            }
            std::this_thread::sleep_for(std::chrono::microseconds(reference::DrawInt(rng, 500)));
            solve.Resume();
            if (solve.Analysis().m_nCommand == kPauseCommand)
                GiveCommand(solve.Analysis(), kNoCommand, solve.Analysis().m_nCommandThread);
        }
        thread.Join();
        const std::vector<std::string> keys = SortedKeys(result);
        if (bShorter) {
            EXPECT_TRUE(keys.empty()) << problem.m_placement;
        } else {
            EXPECT_NE(result.m_verdict, EVerdict::NoMate) << problem.m_placement;
            const std::vector<std::string> truth{problem.m_key};
            EXPECT_TRUE(keys == truth || (keys.empty() && !result.m_bComplete)) << problem.m_placement;
        }
        proofs += result.m_bComplete ? 1 : 0;
    }
    EXPECT_GT(commands, Floor(40));
    EXPECT_GT(proofs, 0);
}

/// The threads of a group know nothing of nodes above their own: who waits for them has to look.
TEST(ThreadedSolve, AManualCommandReachesAThreadThatWaitsForItsGroup) {
    CObservedSolve run(Endless({2, 2}), 4);
    ASSERT_TRUE(run.WaitForState([](const TProgressState& state) { return state.m_nRunningThreads > 2; }));
    for (const std::uint16_t thread : {std::uint16_t{0}, std::uint16_t{1}, kAllThreads}) {
        TManualCommand command;
        command.m_nThread = thread;
        command.m_nPlies = PliesOf(kEndlessMoves);
        command.m_nSkipAction = kSkipToNext;
        GiveManualCommand(run.m_solve.Analysis(), command);
        EXPECT_TRUE(run.WaitUntil([&] { return run.m_solve.Analysis().m_nCommand == kNoCommand; })) << thread;
    }
    EXPECT_FALSE(run.m_bDone);
}

/// The main variant follows the guide's key all the same, which one thread tries first.
TEST(ThreadedSolve, TheKeysOfThreadsStandInOrder) {
    constexpr const char* kManyKeys = "7k/8/6K1/8/8/8/8/1RRQRR2";
    CAgreeing notifier;
    CSolve one(AllKeys(kManyKeys, 4, {}));
    const std::vector<std::string> variant = one.StartSolving(notifier).m_variant;
    ASSERT_FALSE(variant.empty());
    for (int i = 0; i < 5; ++i) {
        CSolve solve(AllKeys(kManyKeys, 4, {4, 1}));
        const TSolvingResult result = solve.StartSolving(notifier);
        EXPECT_GT(result.m_solutions.size(), 20u);
        ASSERT_FALSE(result.m_variant.empty());
        EXPECT_EQ(result.m_variant.front(), variant.front());
        EXPECT_NE(result.m_variant.front(), result.m_solutions.front().m_text);
        EXPECT_TRUE(std::ranges::is_sorted(result.m_solutions, {}, [](const TSolution& key) {
            return std::tuple(key.m_move.m_nFrom, key.m_move.m_nTo, PromotionKind(key.m_move));
        }));
    }
}

TEST(ThreadedSolve, AStopForOneThreadLeavesTheOthersRunning) {
    const CNothingLeft nothing;
    CSolve solve(AllKeys(kLong[1].m_placement, 11, {4, 1}));
    CAgreeing notifier;
    GiveCommand(solve.Analysis(), kStopCommand, 2);
    const TSolvingResult result = solve.StartSolving(notifier);
    EXPECT_FALSE(result.m_bStopped);
    EXPECT_TRUE(result.m_bComplete); // they took over what it had begun
    EXPECT_EQ(SortedKeys(result), std::vector<std::string>{"Kc5-d6"});
}

/// What the root's threads give back the first of them takes over, in the driver's own thread. A stop of a thread that
/// never comes about ends with the solve.
TEST(ThreadedSolve, AStopOfOneThreadDoesNotMeanTheNextOfItsNumber) {
    const CNothingLeft nothing;
    CSolve solve(AllKeys(kLong[1].m_placement, 11, {2, 1}));
    CAgreeing notifier;
    for (const std::uint16_t thread : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{60000}})
        GiveCommand(solve.Analysis(), kStopCommand, thread);
    for (int start = 0; start < 2; ++start) {
        const TSolvingResult result = solve.StartSolving(notifier);
        EXPECT_EQ(solve.Analysis().m_nCommand, kNoCommand);
        EXPECT_FALSE(result.m_bStopped);
        EXPECT_TRUE(result.m_bComplete);
        EXPECT_EQ(SortedKeys(result), std::vector<std::string>{"Kc5-d6"});
    }
}

/// A stop ends the start that it was given in, whoever has given it, and none that comes behind.
TEST(ThreadedSolve, AStoppedSolveMayBeStartedAgain) {
    const CNothingLeft nothing;
    for (const TTree tree : {TTree{1, 1}, TTree{2, 2}})
        for (const int thread : {-1, 0, 1, int{kAllThreads}}) {
            CSolve solve(AllKeys(kLong[1].m_placement, 11, tree));
            CAgreeing notifier;
            if (thread < 0)
                solve.RequestStop();
            else
                GiveCommand(solve.Analysis(), kStopCommand, static_cast<std::uint16_t>(thread));
            GiveCommand(solve.Analysis(), kPauseCommand, 60000); // a thread that never comes about
            const TSolvingResult first = solve.StartSolving(notifier);
            EXPECT_EQ(solve.Analysis().m_nCommand, kNoCommand);
            const bool bAll = thread < 0 || thread == kAllThreads || (thread == 0 && tree.m_nThreads == 1);
            if (!bAll || tree.m_nThreads == 1) { // several may have found the key before the stop is passed on to them
                EXPECT_EQ(first.m_verdict, bAll ? EVerdict::Stopped : EVerdict::Mate) << thread;
            }
            const TSolvingResult second = solve.StartSolving(notifier);
            EXPECT_TRUE(second.m_bComplete) << thread;
            EXPECT_EQ(SortedKeys(second), std::vector<std::string>{"Kc5-d6"}) << thread;
        }
}

TEST(ThreadedSolve, StartsAndStopsLeaveNothingBehind) {
    const CNothingLeft nothing;
    for (int i = 0; i < Few(200); ++i) {
        CSolve solve(AllKeys(kLong[0].m_placement, 12, kTrees[static_cast<std::size_t>(i) % std::size(kTrees)]));
        CAgreeing notifier;
        CThread thread(std::size_t{64} << 20, [&] { (void)solve.StartSolving(notifier); });
        std::this_thread::sleep_for(std::chrono::microseconds(i * 37 % 4000));
        solve.RequestStop();
    }
}

} // namespace
} // namespace quillon::test
