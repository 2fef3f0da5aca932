// The front end of a solve, from the request to the texts.

#include "heuristics/solving_driver.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "core/answering_notifier.h"
#include "core/chess_exception.h"
#include "heuristics/result_texts.h"
#include "platform/memory_info.h"
#include "search/searched_position.h"
#include "support/proof_verifier.h"
#include "tempregister/bucket_count.h"

namespace quillon::test {
namespace {

constexpr const char* kManyKeys = "7k/8/6K1/8/8/8/8/1RRQRR2";
constexpr const char* kNoMate = "8/8/8/8/8/2k5/7R/K7";
constexpr const char* kMateInThree = "8/8/8/8/7Q/n1K5/8/k7";
constexpr const char* kEndless = "r1bqkbnr/pppppppp/n7/8/8/N7/PPPPPPPP/R1BQKBNR";

using CAnswers = CAnsweringNotifier;

TSolveRequest Request(std::string_view placement, int nStipulation, ESolveMode mode = ESolveMode::FirstSolution) {
    TSolveRequest request;
    request.m_board = ChessboardFromFEN(placement);
    request.m_nStipulation = nStipulation;
    request.m_mode = mode;
    request.m_description = "the problem";
    return request;
}

TSolvingResult Solve(TSolveRequest request, CAnswers& answers) {
    CSolve solve(std::move(request));
    return solve.StartSolving(answers);
}
TSolvingResult Solve(TSolveRequest request) {
    CAnswers answers;
    TSolvingResult result = Solve(std::move(request), answers);
    EXPECT_TRUE(answers.m_questions.empty());
    return result;
}

std::vector<std::string> Keys(const TSolvingResult& result) {
    std::vector<std::string> keys;
    for (const TSolution& solution : result.m_solutions)
        keys.push_back(solution.m_text);
    return keys;
}

// ---- verdicts and modes

TEST(SolvingDriver, FindsTheKey) {
    const TSolvingResult result = Solve(Request(kMateInThree, 3));
    EXPECT_EQ(result.m_verdict, EVerdict::Mate);
    EXPECT_EQ(Keys(result), std::vector<std::string>{"Qh4-b4"});
    EXPECT_FALSE(result.m_bStopped);
    EXPECT_EQ(result.m_variant.size(), 5u);
    EXPECT_EQ(result.m_variant.front(), "Qh4-b4");
    EXPECT_GT(result.m_nPositions, 0u);
    EXPECT_EQ(result.m_logLine, "Engine has completed: the problem");
    EXPECT_EQ(result.m_title, kMateSearchTitle);
    EXPECT_EQ(result.m_text, "");
}

TEST(SolvingDriver, ProvesThatThereIsNone) {
    const TSolvingResult result = Solve(Request(kNoMate, 3));
    EXPECT_EQ(result.m_verdict, EVerdict::NoMate);
    EXPECT_TRUE(result.m_bComplete);
    EXPECT_TRUE(result.m_variant.empty());
    EXPECT_EQ(result.m_title, kAnalysisResultTitle);
    EXPECT_TRUE(result.m_text.starts_with("No solution found ("));
}

TEST(SolvingDriver, ModesLimitTheSolutions) {
    const auto truth = reference::SolveAll(reference::ProblemFromFen(kManyKeys), 1);
    const struct {
        ESolveMode m_mode;
        std::size_t m_nExpected;
        const char* m_pText;
        bool m_bComplete;
    } rows[] = {
        {ESolveMode::FirstSolution, 1, "", false},
        {ESolveMode::StopOnDual, 2, "Search for solutions has been stopped after detection of dual.", false},
        {ESolveMode::StopOn3, 3, "Search for solutions has been stopped after finding 3 solutions", false},
        {ESolveMode::StopOn4, 4, "Search for solutions has been stopped after finding 4 solutions", false},
        {ESolveMode::AllSolutions, truth.keys.size(), nullptr, true},
    };
    for (const auto& row : rows) {
        const TSolvingResult result = Solve(Request(kManyKeys, 1, row.m_mode));
        EXPECT_EQ(result.m_solutions.size(), row.m_nExpected);
        EXPECT_EQ(result.m_bComplete, row.m_bComplete);
        EXPECT_FALSE(result.m_bStopped);
        const std::string expected =
            row.m_pText != nullptr ? row.m_pText : "More than one solution found: " + std::to_string(truth.keys.size());
        EXPECT_EQ(result.m_text, expected);
    }
}

/// What a stopped node returned is no verdict: a pause or a resume must not make it one.
TEST(SolvingDriver, AStopOutlivesPauseAndResume) {
    CAnswers answers;
    CSolve solve(Request(kEndless, 20, ESolveMode::AllSolutions));
    solve.RequestStop();
    solve.Pause();
    solve.Resume();
    EXPECT_EQ(solve.StartSolving(answers).m_verdict, EVerdict::Stopped);
}

/// The first key found is the one that the user, or a known variant, names; a move to be avoided is found last.
TEST(SolvingDriver, TriesTheMovesFirstThatItIsToldOf) {
    for (const TSquare target : {TSquare{36}, TSquare{28}, TSquare{20}}) { // e5, e4, e3
        TSolveRequest indicated = Request(kManyKeys, 3);
        SortIndication indication;
        indication.m_nTo = target;
        indicated.m_sortIndications = {indication};
        ASSERT_EQ(Solve(indicated).m_solutions.size(), 1u);
        EXPECT_EQ(Solve(indicated).m_solutions.front().m_move.m_nTo, target);

        TSolveRequest known = Request(kManyKeys, 3);
        known.m_mainVariant = {{kWhiteRook, target}};
        ASSERT_EQ(Solve(known).m_solutions.size(), 1u);
        EXPECT_EQ(Solve(known).m_solutions.front().m_move.m_nTo, target);

        TSolveRequest avoided = Request(kManyKeys, 3, ESolveMode::AllSolutions);
        indication.m_bWorst = true;
        avoided.m_sortIndications = {indication};
        EXPECT_EQ(Solve(avoided).m_solutions.back().m_move.m_nTo, target);
    }
}

TEST(SolvingDriver, TellsSolutionsAsTheyAreFound) {
    TSolveRequest request = Request(kManyKeys, 1, ESolveMode::StopOn3);
    request.m_nProblemId = 9;
    CSolve solve(request);
    std::vector<std::string> told;
    solve.SetSink([&](const TMove&, std::string_view text, long id, std::string_view) {
        told.emplace_back(text);
        EXPECT_EQ(id, 9);
    });
    CAnswers answers;
    const TSolvingResult result = solve.StartSolving(answers);
    EXPECT_EQ(told, Keys(result));
}

// ---- requests that cannot be run

TEST(SolvingDriver, RefusesStipulationsOutOfRange) {
    for (const int moves : {-1, 0, kMaxStipulation + 1}) {
        CSolve solve(Request(kMateInThree, moves));
        CAnswers answers;
        EXPECT_THROW((void)solve.StartSolving(answers), ChessException) << moves;
    }
}

TEST(SolvingDriver, RefusesABlackKingInCheck) {
    CSolve solve(Request("7k/8/6K1/8/8/8/8/7R", 2));
    CAnswers answers;
    EXPECT_THROW((void)solve.StartSolving(answers), ChessException);
}

// ---- passes

TEST(SolvingDriver, ChosenHeuristicsAreFollowedByThePassWithoutAny) {
    TSolveRequest request = Request(kNoMate, 4);
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    const TSolvingResult both = Solve(request);
    EXPECT_EQ(both.m_passes, (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(both.m_verdict, EVerdict::NoMate);

    request.m_bRunPass2 = false;
    const TSolvingResult one = Solve(request);
    EXPECT_EQ(one.m_passes, std::vector<std::string>{"1"});
    EXPECT_EQ(one.m_verdict, EVerdict::Doubtful);
    EXPECT_FALSE(one.m_bComplete);
    EXPECT_EQ(one.m_text, "Not found any solutions for #4\n\nNote:\n\t* pass without heuristics has been skipped (on "
                          "user's request)\n");
    EXPECT_EQ(one.m_title, kMateSearchTitle);

    request.m_bLetRelaxHeuristics = false;
    const TSolvingResult rigid = Solve(request);
    EXPECT_EQ(rigid.m_text, "Not found any solutions for #4\n\nNote:\n\t* there was only one pass with heuristcs "
                            "(relaxation of heuristics was switched off by user's request)\n\t* pass without "
                            "heuristics has been skipped (on user's request)\n");
}

TEST(SolvingDriver, AProofInTheFirstPassStandsWithoutTheSecond) {
    TSolveRequest request = Request(kNoMate, 2);
    request.m_heuristics.emplace().m_nHeuristics = SH_AREKINGSNEAR;
    request.m_bRunPass2 = false;
    const TSolvingResult result = Solve(request);
    EXPECT_EQ(result.m_passes, std::vector<std::string>{"1"});
    EXPECT_EQ(result.m_verdict, EVerdict::NoMate);
    EXPECT_TRUE(result.m_text.ends_with(
        " NOTE: Pass without heuristics is currently switched off (see heuristics selection dialog box)"));
}

/// Without a set there is no other pass, whatever is asked for: that it has been left out would not be true.
TEST(SolvingDriver, APassWithoutHeuristicsThatRanIsNotToldAsSwitchedOff) {
    TSolveRequest request = Request(kNoMate, 2);
    request.m_bRunPass2 = false;
    const TSolvingResult result = Solve(request);
    EXPECT_EQ(result.m_passes, std::vector<std::string>{"2"});
    EXPECT_EQ(result.m_verdict, EVerdict::NoMate);
    EXPECT_TRUE(result.m_text.ends_with(" sec.)")) << result.m_text;
}

TEST(SolvingDriver, UnmetHeuristicsLeaveEverythingOpen) {
    TSolveRequest request = Request(kMateInThree, 3);
    request.m_nRequiredHeuristics = SH_AREKINGSNEAR;
    const TSolvingResult result = Solve(request);
    EXPECT_TRUE(result.m_passes.empty());
    EXPECT_TRUE(result.m_solutions.empty());
    EXPECT_EQ(result.m_verdict, EVerdict::Doubtful);
}

// ---- brute force and hybrid

TEST(SolvingDriver, BruteForceIsAskedAbout) {
    TSolveRequest request = Request(kMateInThree, 3);
    request.m_bBruteForce = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    CAnswers yes(true);
    const TSolvingResult run = Solve(request, yes);
    EXPECT_EQ(yes.m_questions, std::vector<std::string>{kBruteForceQuestion});
    EXPECT_EQ(run.m_passes, std::vector<std::string>{"2"}) << "no heuristics, whatever was chosen";
    EXPECT_EQ(run.m_verdict, EVerdict::Mate);

    CAnswers no(false);
    const TSolvingResult declined = Solve(request, no);
    EXPECT_EQ(no.m_questions.size(), 1u);
    EXPECT_TRUE(declined.m_bStopped);
    EXPECT_EQ(declined.m_verdict, EVerdict::Stopped);
    EXPECT_TRUE(declined.m_passes.empty());
    EXPECT_EQ(declined.m_nPositions, 0u);
}

TEST(SolvingDriver, HybridRunKeepsTheFirstPhasesSolution) {
    TSolveRequest request = Request(kManyKeys, 1);
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    const TSolvingResult all = Solve(request);
    const auto truth = reference::SolveAll(reference::ProblemFromFen(kManyKeys), 1);
    std::vector<std::string> keys = Keys(all);
    EXPECT_EQ(all.m_solutions.front().m_pass, "1");
    EXPECT_EQ(all.m_solutions.back().m_pass, "2");
    std::ranges::sort(keys);
    EXPECT_EQ(keys, truth.keys) << "each once";
    EXPECT_EQ(all.m_passes, (std::vector<std::string>{"1", "2"}));

    request.m_mode = ESolveMode::StopOnDual;
    EXPECT_EQ(Solve(request).m_solutions.size(), 2u);
}

TEST(SolvingDriver, HybridRunWithoutASolutionHasNoSecondPhase) {
    TSolveRequest request = Request(kNoMate, 3);
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    CSolve solve(request);
    CAnswers answers;
    const TSolvingResult result = solve.StartSolving(answers);
    EXPECT_EQ(result.m_passes, (std::vector<std::string>{"1", "2"})) << "both of the first phase";
    EXPECT_EQ(result.m_verdict, EVerdict::NoMate);
    EXPECT_EQ(solve.Analysis().m_nHybridPhase, kHybridHeuristical);
}

/// Its second phase has no heuristics at all, whatever the first was required to have.
TEST(SolvingDriver, WhatAHybridRunRequiresIsAskedOfItsFirstPhase) {
    TSolveRequest request = Request(kManyKeys, 1);
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    request.m_nRequiredHeuristics = SH_DONTRECEDEBLACKKING;
    const TSolvingResult result = Solve(request);
    EXPECT_EQ(result.m_passes, (std::vector<std::string>{"1", "2"}));
    EXPECT_TRUE(result.m_bComplete);
}

/// Depth of the short-mate search once the passes of a stored composition are planned.
int DepthOfKnownComposition(bool bBruteForce) {
    TSolveRequest request = Request("r5k1/1p1p2p1/N7/1p4N1/1p4p1/8/7Q/bK4n1", 4);
    request.m_bUsePredefinedIndications = true;
    request.m_bBruteForce = bBruteForce;
    CSolve solve(request);
    solve.SetPlanSink([&solve](const TPlanReport&) { solve.RequestStop(); });
    CAnswers answers;
    (void)solve.StartSolving(answers);
    return solve.Analysis().m_shLookForQuickerMateDepth;
}

TEST(SolvingDriver, BruteForceTakesNoStoredSettings) {
    EXPECT_EQ(DepthOfKnownComposition(false), 5) << "three moves";
    EXPECT_EQ(DepthOfKnownComposition(true), kDefaultQuickerMateDepth);
}

// ---- started again

std::vector<std::string> SetsOf(const TSolvingResult& result) {
    std::vector<std::string> sets;
    for (const TPassRecord& pass : result.m_passRecords)
        sets.push_back(pass.m_name + " " + pass.m_heuristics);
    return sets;
}

/// Starts the same solve twice and expects the same of both.
void ExpectTheSameTwice(const TSolveRequest& request) {
    CSolve solve(request);
    CAnswers answers;
    const TSolvingResult first = solve.StartSolving(answers);
    const std::string settings = solve.ShowAnalysisSettings();
    const TSolvingResult second = solve.StartSolving(answers);
    EXPECT_GE(first.m_passes.size(), 2u);
    EXPECT_EQ(SetsOf(first), SetsOf(second));
    EXPECT_EQ(Keys(first), Keys(second));
    EXPECT_EQ(first.m_verdict, second.m_verdict);
    EXPECT_EQ(first.m_variant, second.m_variant);
    EXPECT_EQ(settings, solve.ShowAnalysisSettings());
}

TEST(SolvingDriver, AHybridRunMayBeStartedAgain) {
    TSolveRequest request = Request(kManyKeys, 1);
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    ExpectTheSameTwice(request);
}

/// The first run relaxes the set step by step; the second starts from it as it was made.
TEST(SolvingDriver, ASetMadeByHandIsWholeInTheNextStart) {
    TSolveRequest request = Request(kNoMate, 4);
    request.m_heuristics = ReadHeuristicsText("SH_DONTLETKINGMOVE,SH_KEEPKINGWITHINEXTEDGE(strict),"
                                              "SH_ASSERTBLACKKINGSURROUNDED(strict),SH_FINDFORCEDMATE(#1)");
    request.m_bSafeMode = true;
    CSolve solve(request);
    CAnswers answers;
    std::vector<std::string> firstSets;
    for (int i = 0; i < 2; ++i) {
        firstSets.push_back(solve.StartSolving(answers).m_passRecords.front().m_heuristics);
        EXPECT_NE(solve.ShowAnalysisSettings().find(
                      "* Initial set of heuristics: SH_DONTLETKINGMOVE, SH_KEEPKINGWITHINEXTEDGE(strict), "
                      "SH_FINDFORCEDMATE(#1), SH_ASSERTBLACKKINGSURROUNDED(strict)\n"),
                  std::string::npos)
            << solve.ShowAnalysisSettings();
    }
    EXPECT_EQ(firstSets[0], firstSets[1]);
    EXPECT_TRUE(firstSets[0].starts_with("SH_DONTLETKINGMOVE, "));
}

/// Relaxing the sea snake turns safe mode on: the engine's word, and of this run only.
TEST(SolvingDriver, SafeModeThatAStepForcesIsToldAndEndsWithTheRun) {
    TSolveRequest request = Request(kNoMate, 4);
    request.m_heuristics = ReadHeuristicsText("SH_SEASNAKE(D5),SH_DONTRECEDEBLACKKING");
    CSolve solve(request);
    EXPECT_EQ(solve.ShowAnalysisSettings().find("> Safe Mode forced by engine\n"), std::string::npos);
    CAnswers answers;
    (void)solve.StartSolving(answers);
    EXPECT_NE(solve.ShowAnalysisSettings().find("> Safe Mode forced by engine\n"), std::string::npos);
    ExpectTheSameTwice(request);
}

/// A set is printed with it, and may be given as it was printed.
TEST(SolvingDriver, QuickModeInASetUndoesNoSafeMode) {
    for (const bool bSafeMode : {true, false}) {
        TSolveRequest request = Request(kNoMate, 4);
        request.m_heuristics = ReadHeuristicsText("SH_DONTRECEDEBLACKKING, QuickMode");
        request.m_bSafeMode = bSafeMode;
        const TSolvingResult result = Solve(request);
        EXPECT_EQ(result.m_passRecords.front().m_heuristics,
                  bSafeMode ? "SH_DONTRECEDEBLACKKING" : "SH_DONTRECEDEBLACKKING,  QuickMode");
    }
}

/// What the first start has proved the second looks up, unless it is to begin from nothing.
TEST(SolvingDriver, AFurtherStartMayUseTheRegister) {
    for (const bool bClear : {true, false}) {
        TSolveRequest request = Request("7k/5p2/5P1p/2K4P/8/8/8/8", 11, ESolveMode::AllSolutions);
        request.m_nMemoryBudgetMB = 16;
        request.m_bClearRegister = bClear;
        CSolve solve(request);
        std::vector<std::uint64_t> known; // before the first pass of each start, the analysis before it has stored some
        solve.SetPlanSink([&](const TPlanReport&) { known.push_back(solve.RegisterFigures().m_nElements); });
        CAnswers answers;
        const TSolvingResult first = solve.StartSolving(answers), second = solve.StartSolving(answers);
        EXPECT_EQ(Keys(first), std::vector<std::string>{"Kc5-d6"});
        EXPECT_EQ(Keys(second), Keys(first));
        EXPECT_TRUE(second.m_bComplete);
        EXPECT_GT(first.m_register.m_nElements, 0u);
        ASSERT_EQ(known.size(), 2u);
        if (bClear) {
            EXPECT_EQ(known[1], known[0]);
        } else {
            EXPECT_GE(known[1], first.m_register.m_nElements);
            EXPECT_LT(second.m_nPositions, first.m_nPositions);
        }
    }
}

// ---- thread demands

TEST(SolvingDriver, ADemandIsAskedOnceAndObeyed) {
    TSolveRequest request = Request("k7/8/8/8/8/1p5P/1P6/K6b", 8); // two moves of White
    request.m_bAllowThreadDemand = true;
    request.m_nMultithreadingLevels = 3;
    for (const bool bAccepted : {true, false}) {
        CSolve solve(request);
        CAnswers answers(bAccepted);
        std::thread stopper([&solve] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            solve.RequestStop();
        });
        const TSolvingResult result = solve.StartSolving(answers);
        stopper.join();
        EXPECT_EQ(
            answers.m_questions,
            std::vector<std::string>{"Engine wants to force a different number of threads (2). Do you accept it?"});
        EXPECT_EQ(solve.Analysis().m_nThreads, bAccepted ? 2 : 1);
        EXPECT_FALSE(result.m_passes.empty()) << "then the run";
        EXPECT_NE(solve.ShowAnalysisSettings().find(bAccepted ? "* Threads = 1 (but forced by engine to 2)"
                                                              : "* Threads = 1\n"),
                  std::string::npos);
        EXPECT_NE(solve.ShowAnalysisSettings().find(bAccepted ? "* Effective number of main threads = 2\n"
                                                              : "* Effective number of main threads = 1\n"),
                  std::string::npos)
            << "the groups below the root keep to one thread";
    }
}

TEST(SolvingDriver, NoDemandUnlessAllowedNorInShortProblems) {
    for (const bool bAllowed : {true, false}) {
        TSolveRequest request = Request("k7/8/8/8/8/1p5P/1P6/K6b", bAllowed ? 2 : 8);
        request.m_bAllowThreadDemand = bAllowed;
        CSolve solve(request);
        if (!bAllowed)
            solve.RequestStop();
        CAnswers answers;
        (void)solve.StartSolving(answers);
        EXPECT_TRUE(answers.m_questions.empty());
    }
}

TEST(SolvingDriver, AStopBeforeTheDemandKeepsTheQuestionBack) {
    TSolveRequest request = Request("k7/8/8/8/8/1p5P/1P6/K6b", 8);
    request.m_bAllowThreadDemand = true;
    CSolve solve(request);
    solve.RequestStop();
    CAnswers answers;
    const TSolvingResult result = solve.StartSolving(answers);
    EXPECT_TRUE(answers.m_questions.empty());
    EXPECT_NE(result.m_verdict, EVerdict::NoMate);
    EXPECT_TRUE(result.m_bStopped);
    EXPECT_EQ(result.m_verdict, EVerdict::Stopped);
}

// ---- stop and pause

TEST(SolvingDriver, AStopIsReported) {
    CSolve solve(Request(kEndless, 20));
    std::thread stopper([&solve] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        solve.RequestStop();
    });
    CAnswers answers;
    const TSolvingResult result = solve.StartSolving(answers);
    stopper.join();
    EXPECT_TRUE(result.m_bStopped);
    EXPECT_FALSE(result.m_bComplete);
    EXPECT_EQ(result.m_verdict, EVerdict::Stopped);
    EXPECT_EQ(result.m_text, "Analysis stopped by user");
    EXPECT_EQ(result.m_logLine, "Engine stopped: the problem");
    EXPECT_LT(result.m_seconds, 30);
}

/// Stopped from the sink: what was found so far is told.
TEST(SolvingDriver, AStopKeepsTheKeysFoundSoFar) {
    CSolve solve(Request(kManyKeys, 1, ESolveMode::AllSolutions));
    int told = 0;
    solve.SetSink([&](const TMove&, std::string_view, long, std::string_view) {
        if (++told == 2)
            solve.RequestStop();
    });
    CAnswers answers;
    const TSolvingResult result = solve.StartSolving(answers);
    EXPECT_EQ(result.m_verdict, EVerdict::Mate);
    EXPECT_TRUE(result.m_bStopped);
    EXPECT_FALSE(result.m_bComplete);
    EXPECT_EQ(result.m_solutions.size(), 2u);
    EXPECT_EQ(result.m_text, "More than one solution found: 2 (stopped by user)");
}

TEST(SolvingDriver, PauseAndResume) {
    CSolve solve(Request(kMateInThree, 3));
    solve.Pause();
    std::atomic<bool> bDone{false};
    TSolvingResult result;
    std::thread run([&] {
        CAnswers answers;
        result = solve.StartSolving(answers);
        bDone = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_FALSE(bDone);
    solve.Resume();
    run.join();
    EXPECT_EQ(result.m_verdict, EVerdict::Mate);
}

// ---- memory of the register

TEST(SolvingDriver, RegisterScaleGrowsWithTheProblem) {
    EXPECT_EQ(BucketsByLength(13, 100000), 0x4000u);
    EXPECT_EQ(BucketsByLength(15, 100000), 0x80000u);
    EXPECT_EQ(BucketsByLength(21, 100000), 0x80000u);
    EXPECT_EQ(BucketsByLength(23, 8192), 0x80000u);
    EXPECT_EQ(BucketsByLength(23, 8193), 0x400000u);
}

TEST(SolvingDriver, RegisterBudgetIsTheStoredOneOrAShare) {
    TSolveRequest request = Request(kMateInThree, 1);
    request.m_nMemoryBudgetMB = 3;
    CSolve stored(request);
    CAnswers answers;
    (void)stored.StartSolving(answers);
    EXPECT_EQ(stored.Analysis().m_nRegisterBudget, 3 << 20);
    EXPECT_EQ(stored.Analysis().m_nRegisterScale, 0x4000u);
    request.m_nMemoryBudgetMB = -1;
    request.m_nMemoryShare = 10;
    CSolve tenth(request);
    (void)tenth.StartSolving(answers);
    request.m_nMemoryShare = 20;
    CSolve fifth(request);
    (void)fifth.StartSolving(answers);
    EXPECT_GT(tenth.Analysis().m_nRegisterBudget, 0);
    EXPECT_NEAR(static_cast<double>(fifth.Analysis().m_nRegisterBudget),
                2.0 * static_cast<double>(tenth.Analysis().m_nRegisterBudget), 1 << 20);
}

TEST(SolvingDriver, ShareOfTheMemoryIsAFifthUnlessToldOtherwise) {
    CSolve solve(Request(kMateInThree, 1));
    CAnswers answers;
    (void)solve.StartSolving(answers);
    const auto fifth = static_cast<std::int64_t>(PhysicalMemory() / 5);
    EXPECT_LE(std::abs(solve.Analysis().m_nRegisterBudget - fifth), 1 << 20) << "whole MiB";
}

/// The guide's table and the register share the memory that was told.
TEST(SolvingDriver, TheGuideTakesItsShareOfTheBudget) {
    const struct {
        int m_nStipulation;
        std::int64_t m_nMemoryMB;
        std::int64_t m_nLeft;      // for the register
    } rows[] = {{3, 64, 64 << 20}, // too short for a guide
                {4, 64, 48 << 20},
                {4, 2, 3 << 19},
                {4, 1, 1 << 20}, // too little for two
                {4, 2048, std::int64_t{1920} << 20}};
    for (const auto& row : rows) {
        TSolveRequest request = Request(kMateInThree, row.m_nStipulation);
        request.m_nMemoryBudgetMB = row.m_nMemoryMB;
        CSolve solve(request);
        CAnswers answers;
        (void)solve.StartSolving(answers);
        EXPECT_EQ(solve.Analysis().m_nRegisterBudget, row.m_nLeft) << row.m_nStipulation << ' ' << row.m_nMemoryMB;
    }
    TSolveRequest brute = Request(kMateInThree, 4);
    brute.m_nMemoryBudgetMB = 64;
    brute.m_bBruteForce = true;
    CSolve solve(brute);
    CAnswers answers;
    (void)solve.StartSolving(answers);
    EXPECT_EQ(solve.Analysis().m_nRegisterBudget, 64 << 20);
}

// ---- the register

/// Mate in six or less.
TSolveRequest LongRequest(std::int64_t nMemoryMB, const char* placement = kMateInThree) {
    TSolveRequest request = Request(placement, 6);
    request.m_nMemoryBudgetMB = nMemoryMB;
    return request;
}

TEST(SolvingDriver, OnlyLongProblemsHaveARegister) {
    for (const int moves : {5, 6}) {
        TSolveRequest request = LongRequest(16);
        request.m_nStipulation = moves;
        CSolve solve(request);
        EXPECT_FALSE(solve.RegisterFigures().m_bInUse) << "not before the start";
        CAnswers answers;
        const TRegisterFigures figures = solve.StartSolving(answers).m_register;
        EXPECT_EQ(figures.m_bInUse, moves == 6);
        EXPECT_EQ(solve.Analysis().m_pRegister != nullptr, moves == 6);
        EXPECT_EQ(figures.m_nElements > 0, moves == 6);
        EXPECT_EQ(figures.m_nLookups > figures.m_nHits, moves == 6);
        EXPECT_EQ(figures.m_nHits > 0, moves == 6);
        EXPECT_EQ(figures.m_nMegabytes > 0, moves == 6);
        EXPECT_EQ(figures.m_nEvictions, 0u);
    }
}

TEST(SolvingDriver, WithoutABudgetThereIsNoRegister) {
    CSolve solve(LongRequest(0));
    CAnswers answers;
    const TSolvingResult result = solve.StartSolving(answers);
    EXPECT_FALSE(result.m_register.m_bInUse);
    EXPECT_EQ(result.m_register.m_nLookups, 0u);
    EXPECT_EQ(solve.Analysis().m_pRegister, nullptr);
    EXPECT_EQ(result.m_verdict, EVerdict::Mate);
}

/// What the register remembers must not change what is found.
TEST(SolvingDriver, KeysAreTheSameWithAndWithoutARegister) {
    std::mt19937_64 rng(31415);
    int asked = 0;
    for (int i = 0; i < 4; ++i) {
        const std::string placement = AnyPlacement(rng, i, 3 + i % 2);
        std::vector<std::string> expected;
        for (const std::int64_t memory : {0, 1, 64}) {
            TSolveRequest request = LongRequest(memory, placement.c_str());
            request.m_mode = ESolveMode::AllSolutions;
            const TSolvingResult result = Solve(request);
            std::vector<std::string> keys = Keys(result);
            std::ranges::sort(keys);
            EXPECT_TRUE(result.m_bComplete) << placement;
            if (memory == 0)
                expected = keys;
            EXPECT_EQ(keys, expected) << placement << " with " << memory << " MB";
            asked += result.m_register.m_nHits > 0 ? 1 : 0;
        }
    }
    EXPECT_GT(asked, 0);
}

TEST(SolvingDriver, TheRegisterOutlivesTheFirstPhaseOfAHybridRun) {
    TSolveRequest request = LongRequest(16);
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    CSolve solve(request);
    std::uint64_t elements = 0;
    std::vector<std::string> passes;
    solve.SetSink([&](const TMove&, std::string_view, long, std::string_view pass) {
        const std::uint64_t now = solve.RegisterFigures().m_nElements;
        EXPECT_GE(now, elements) << "nothing is dropped while there is room";
        elements = now;
        passes.emplace_back(pass);
    });
    CAnswers answers;
    (void)solve.StartSolving(answers);
    EXPECT_GT(elements, 0u);
    EXPECT_EQ(passes.front(), "1");
    EXPECT_EQ(passes.back(), "2");
}

TEST(SolvingDriver, EverySolveStartsWithAnEmptyRegister) {
    CSolve solve(LongRequest(16));
    CAnswers answers;
    EXPECT_GT(solve.StartSolving(answers).m_register.m_nElements, 0u);
    solve.RequestStop();
    const TSolvingResult stopped = solve.StartSolving(answers);
    EXPECT_TRUE(stopped.m_bStopped);
    EXPECT_TRUE(stopped.m_register.m_bInUse);
    EXPECT_EQ(stopped.m_register.m_nElements, 0u);
}

/// Told while the solve runs, from another thread.
TEST(SolvingDriver, AFullRegisterMakesRoom) {
    // Few men on an open board: almost every move leads to a new position.
    TSolveRequest request = Request("8/5p2/4k1p1/3n4/8/2BNKN2/PP6/8", 20);
    request.m_nMemoryBudgetMB = 1;
    CSolve solve(request);
    std::thread watcher([&solve] {
        for (int i = 0; i < 3000 && solve.RegisterFigures().m_nEvictions == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        solve.RequestStop();
    });
    CAnswers answers;
    const TRegisterFigures figures = solve.StartSolving(answers).m_register;
    watcher.join();
    EXPECT_GT(figures.m_nEvictions, 0u);
    EXPECT_GT(figures.m_nEvictedElements, 0u);
    EXPECT_LE(figures.m_nElements, (1u << 20) / 68) << "no element takes less than its 68 bytes";
    EXPECT_EQ(figures.m_nMegabytes, 1u);
}

// ---- the settings box

TEST(SolvingDriver, SettingsOfAPlainRun) {
    CSolve solve(Request(kMateInThree, 3));
    EXPECT_EQ(solve.ShowAnalysisSettings(),
              "* Search for single solution\n"
              "* Quick mode implicit heuristics is on, but it does not affect second pass (without heuristics), which "
              "is/will be run is safe mode\n"
              "* Default depth of search for short mate (typically #7, sometimes #6 or #8)\n"
              "* Threads = 1\n"
              "* Multithreading levels = 1\n"
              "* Effective number of main threads = 1\n"
              "* Scheduler is off\n"
              "* Custom scheduler is off\n"
              "* Initial set of heuristics: none\n");
}

TEST(SolvingDriver, SettingsOfAScheduler) {
    TSolveRequest request = Request(kMateInThree, 3);
    request.m_nThreads = 4;
    request.m_nMultithreadingLevels = 2;
    request.m_nSchedulerLevels = 6;
    request.m_bCustomScheduler = true;
    CSolve solve(request);
    EXPECT_NE(solve.ShowAnalysisSettings().find("* Scheduler is on: moves from 3 to 8 are 'juggled' by scheduler\n"
                                                "* Custom scheduler is on\n"),
              std::string::npos);
}

TEST(SolvingDriver, SettingsThatWereChanged) {
    TSolveRequest request = Request(kMateInThree, 3, ESolveMode::StopOn3);
    request.m_bSafeMode = true;
    request.m_shLookForQuickerMateDepth = 9;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    const std::string text = CSolve(request).ShowAnalysisSettings();
    for (const char* line :
         {"* Search for no more than 3 solutions\n", "* Safe mode is on (implicit quick mode heuristics is off)\n",
          "* Custom depth of search for short mate: #5\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
    EXPECT_NE(text.find("* Initial set of heuristics: SH_DONTRECEDEBLACKKING"), std::string::npos) << text;
}

// ---- the main variant in words

TEST(SolvingDriver, VariantIsALegalLineToMate) {
    std::mt19937_64 rng(2718);
    int lines = 0;
    for (int i = 0; i < Samples(400); ++i) {
        const int moves = 1 + i % 3;
        const std::string placement = AnyPlacement(rng, i, 4 + i % 4);
        const TSolvingResult result = Solve(Request(placement, moves));
        EXPECT_EQ(result.m_variant.empty(), result.m_solutions.empty()) << placement;
        if (result.m_variant.empty())
            continue;
        EXPECT_EQ(result.m_variant.front(), Keys(result).front());
        reference::Position position = reference::ProblemFromFen(placement);
        for (const std::string& text : result.m_variant) {
            ASSERT_NO_THROW(position = reference::Play(position, reference::MoveFromNotation(position, text)))
                << placement << ' ' << text;
        }
        EXPECT_TRUE(reference::IsMate(position)) << placement;
        ++lines;
    }
    EXPECT_GT(lines, 0);
}

/// A mate in 29 for which 45 moves are allowed: the proofs that tell the replies apart do not reach so far.
TEST(SolvingDriver, VariantOfALongMateIsAsLongAsItTakes) {
    constexpr const char* kCage = "8/p2p3p/6pP/5pPk/1p1p1P2/1P1P1P1p/KP5P/8";
    const TSolvingResult result = Solve(Request(kCage, 45));
    EXPECT_GE(result.m_variant.size(), 2u * 29 - 1);
    EXPECT_EQ(reference::FaultOfMatingLine(reference::ProblemFromFen(kCage), 45, result.m_variant), "")
        << testing::PrintToString(result.m_variant);
}

/// Behind an en passant capture the square of the captured pawn is empty: the mating move there is no capture.
TEST(SolvingDriver, VariantForgetsAPawnTakenEnPassant) {
    const TSolvingResult result = Solve(Request("7k/4N2p/7P/6P1/4p2Q/4K3/3P4/8", 2, ESolveMode::AllSolutions));
    const std::vector<std::string> keys = Keys(result);
    EXPECT_NE(std::ranges::find(keys, "d2-d4"), keys.end());
    EXPECT_EQ(result.m_variant.back(), "Qh4-d4");
}

} // namespace
} // namespace quillon::test
