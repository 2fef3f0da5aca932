// The run over the root: results, modes, passes, demands.

#include "heuristics/find_mate_root.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/processors.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kManyKeys = "7k/8/6K1/8/8/8/8/1RRQRR2"; // mate on the move in more than four ways
constexpr const char* kNoMate = "8/8/8/8/8/2k5/7R/K7";
constexpr const char* kMateInThree = "8/8/8/8/7Q/n1K5/8/k7"; // one key: Qh4-b4

class CRun {
  public:
    [[nodiscard]] int Go(const char* placement, int nPlies, bool bFirstTime = true, bool bAllowDemand = false) {
        return FindMateRoot(*m_context, m_analysis, ChessboardFromFEN(placement), nPlies, m_run, bFirstTime,
                            bAllowDemand);
    }
    [[nodiscard]] std::vector<std::string> Keys() const {
        std::vector<std::string> keys;
        for (const TSolution& solution : m_run.m_solutions)
            keys.push_back(solution.m_text);
        return keys;
    }
    void Choose(std::uint32_t heuristics) {
        m_run.m_bChosenHeuristics = true;
        m_run.m_nChosenHeuristics = heuristics;
    }

    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    TAnalysis m_analysis;
    TRootRun m_run;
};

TEST(FindMateRoot, TellsSolutionsFromNone) {
    CRun mate;
    EXPECT_EQ(mate.Go(kMateInThree, 5), kSolutionsFound);
    EXPECT_EQ(mate.Keys(), std::vector<std::string>{"Qh4-b4"});
    CRun none;
    EXPECT_EQ(none.Go(kNoMate, 5), kNoSolutionFound);
    EXPECT_TRUE(none.Keys().empty());
    EXPECT_FALSE(HasOpenMoves(none.m_run));
}

TEST(FindMateRoot, ListsTheLegalMovesOfTheRoot) {
    std::mt19937_64 rng(12);
    for (int i = 0; i < 60; ++i) {
        const std::string placement = AnyPlacement(rng, i, 5 + i % 6);
        CRun run;
        run.m_analysis.m_nSolveMode = kAllSolutions;
        (void)run.Go(placement.c_str(), 1);
        EXPECT_EQ(run.m_run.m_moves.size(), reference::LegalMoves(reference::ProblemFromFen(placement)).size())
            << placement;
    }
}

TEST(FindMateRoot, KeepsAResultPerMove) {
    CRun run;
    run.m_analysis.m_nSolveMode = kAllSolutions;
    (void)run.Go(kMateInThree, 5);
    int mates = 0;
    for (const TRootMove& move : run.m_run.m_moves) {
        const bool bMates = move.m_nResult == kRootMoveMates;
        EXPECT_TRUE(bMates || move.m_nResult == kRootMoveRefuted);
        mates += bMates ? 1 : 0;
    }
    EXPECT_EQ(mates, 1);
    CRun first;
    (void)first.Go(kManyKeys, 1);
    EXPECT_EQ(first.m_run.m_moves.back().m_nResult, kRootMoveNotTried) << "the run ended at the first key";
}

TEST(FindMateRoot, StopsAtTheLimitOfItsMode) {
    const struct {
        std::uint8_t m_nSolveMode;
        std::uint32_t m_nStopFlags;
        int m_nLimit;
    } rows[] = {{kSingleSolution, 0, 1},   {0, kStopOnDual, 2},   {0, kStopOn3Solutions, 3},
                {0, kStopOn4Solutions, 4}, {kAllSolutions, 0, 0}, {kSingleSolution, kStopOn4Solutions, 1}};
    for (const auto& row : rows) {
        CRun run;
        run.m_analysis.m_nSolveMode = row.m_nSolveMode;
        run.m_analysis.m_nStopFlags = row.m_nStopFlags;
        EXPECT_EQ(SolutionLimit(run.m_analysis), row.m_nLimit);
        EXPECT_EQ(run.Go(kManyKeys, 1), kSolutionsFound);
        const auto truth = reference::SolveAll(reference::ProblemFromFen(kManyKeys), 1);
        const std::size_t expected = row.m_nLimit != 0 ? static_cast<std::size_t>(row.m_nLimit) : truth.keys.size();
        ASSERT_GT(truth.keys.size(), 4u);
        EXPECT_EQ(run.Keys().size(), expected);
        EXPECT_FALSE(run.m_run.m_bStopped) << "enough is no stop";
    }
}

TEST(FindMateRoot, TellsEachSolutionOnce) {
    std::vector<std::string> told;
    CRun run;
    run.m_analysis.m_nSolveMode = kAllSolutions;
    run.m_run.m_nProblemId = 42;
    run.m_run.m_sink = [&](const TMove& move, std::string_view text, long id, std::string_view comment) {
        told.push_back(std::string(text) + ' ' + std::to_string(id) + ' ' + std::string(comment));
        EXPECT_NE(move.m_nFrom, move.m_nTo);
    };
    (void)run.Go(kMateInThree, 5);
    EXPECT_EQ(told, std::vector<std::string>{"Qh4-b4 42 2"});
    (void)run.Go(kMateInThree, 5, false);
    EXPECT_EQ(told.size(), 1u) << "a second run over the same solve knows it already";
    EXPECT_EQ(run.Keys().size(), 1u);
}

// ---- what the display reads

TEST(PassIndex, NamesThePass) {
    EXPECT_EQ(PassNameOf(0), "");
    EXPECT_EQ(PassNameOf(PassIndex(1, 0)), "1");
    EXPECT_EQ(PassNameOf(PassIndex(1, 1)), "1b");
    EXPECT_EQ(PassNameOf(PassIndex(1, 25)), "1z");
    EXPECT_EQ(PassNameOf(PassIndex(1, 255)), "1+255");
    EXPECT_EQ(PassNameOf(PassIndex(2, 0)), "2");
    EXPECT_EQ(PassNameOf(PassIndex(2, 3)), "2");
}

TEST(FindMateRoot, ShowsThePassThatRuns) {
    CRun run;
    run.Choose(SH_DONTRECEDEBLACKKING);
    run.m_analysis.m_nSolveMode = kAllSolutions;
    std::vector<std::string> shown;
    run.m_run.m_sink = [&](const TMove&, std::string_view, long, std::string_view pass) {
        shown.push_back(PassNameOf(run.m_analysis.m_nPassIndex.load()));
        EXPECT_EQ(shown.back(), pass);
    };
    EXPECT_EQ(run.m_analysis.m_nPassIndex.load(), 0u);
    EXPECT_EQ(run.Go(kManyKeys, 1), kSolutionsFound);
    EXPECT_EQ(shown.front(), "1");
    (void)run.Go(kNoMate, 7);
    EXPECT_EQ(run.m_run.m_passes.back(), "2");
    EXPECT_EQ(PassNameOf(run.m_analysis.m_nPassIndex.load()), "2");
}

/// Moves that an earlier pass has settled are no part of the next one.
TEST(FindMateRoot, ShowsTheMovesOfThePass) {
    CRun all;
    all.m_analysis.m_nSolveMode = kAllSolutions;
    (void)all.Go(kManyKeys, 1);
    EXPECT_EQ(all.m_context->m_moveCount[1].load(), all.m_run.m_moves.size());
    EXPECT_EQ(all.m_context->m_moveIndexShown[1].load(), all.m_run.m_moves.size() - 1);
    CRun second;
    second.m_analysis.m_nSolveMode = kAllSolutions;
    second.m_run.m_solutions.push_back(all.m_run.m_solutions.front());
    (void)second.Go(kManyKeys, 1);
    EXPECT_EQ(second.m_context->m_moveCount[1].load(), all.m_run.m_moves.size() - 1);
    EXPECT_EQ(second.m_context->m_moveIndexShown[1].load(), all.m_run.m_moves.size() - 2);
    EXPECT_EQ(second.m_context->m_moveIndex[1].load(), all.m_run.m_moves.size() - 1);
}

// ---- passes

TEST(FindMateRoot, WithoutHeuristicsThereIsOnePass) {
    CRun run;
    (void)run.Go(kNoMate, 7);
    EXPECT_EQ(run.m_run.m_passes, std::vector<std::string>{"2"});
    EXPECT_EQ(run.m_context->m_pRoot->m_byPass, 2);
    EXPECT_EQ(run.m_analysis.m_nPassesPlanned.load(), 1u);
}

TEST(FindMateRoot, AChosenSetIsFollowedByThePassWithoutAny) {
    CRun run;
    run.Choose(SH_DONTRECEDEBLACKKING);
    EXPECT_EQ(run.Go(kNoMate, 7), kNoSolutionFound);
    EXPECT_EQ(run.m_run.m_passes, (std::vector<std::string>{"1", "2"}));
    EXPECT_FALSE(HasOpenMoves(run.m_run));
    EXPECT_EQ(run.m_analysis.m_nPassesPlanned.load(), 2u);
    EXPECT_EQ(run.m_context->m_pRoot->m_nHeuristics, 0u);
}

TEST(FindMateRoot, WithoutTheSecondPassDoubtStays) {
    CRun run;
    run.Choose(SH_DONTRECEDEBLACKKING);
    run.m_context->m_bRunPass2 = false;
    EXPECT_EQ(run.Go(kNoMate, 7), kNoSolutionFound);
    EXPECT_EQ(run.m_run.m_passes, std::vector<std::string>{"1"});
    EXPECT_TRUE(HasOpenMoves(run.m_run));
    EXPECT_FALSE(run.m_run.m_bStopped);
}

TEST(FindMateRoot, APassThatSettlesAllIsTheLast) {
    CRun run;
    run.m_analysis.m_nSolveMode = kAllSolutions;
    run.Choose(SH_AREKINGSNEAR);
    (void)run.Go("7k/8/6K1/8/8/8/8/1Q6", 1);
    EXPECT_EQ(run.m_run.m_passes, std::vector<std::string>{"1"});
}

/// What a pass with a chosen set leaves open the last pass decides: together they find what is true.
TEST(FindMateRoot, PassesTogetherFindAllKeys) {
    std::mt19937_64 rng(55);
    for (int i = 0; i < Samples(60); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 3);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), 3, 60000);
        if (!truth)
            continue;
        CRun run;
        run.m_analysis.m_nSolveMode = kAllSolutions;
        run.Choose(SH_DONTRECEDEBLACKKING);
        (void)run.Go(placement.c_str(), 5);
        std::vector<std::string> keys = run.Keys();
        std::ranges::sort(keys);
        EXPECT_EQ(keys, truth->keys) << placement;
        EXPECT_FALSE(HasOpenMoves(run.m_run)) << placement;
    }
}

// ---- special results

TEST(FindMateRoot, UnmetHeuristicsEndTheRun) {
    CRun run;
    run.m_analysis.m_nRequiredHeuristics = SH_AREKINGSNEAR;
    EXPECT_EQ(run.Go(kMateInThree, 5), kRequiredHeuristicsUnmet);
    EXPECT_EQ(kRequiredHeuristicsUnmet, 127);
    EXPECT_TRUE(run.m_run.m_passes.empty());
    CRun met;
    met.m_analysis.m_nRequiredHeuristics = SH_AREKINGSNEAR;
    met.Choose(SH_AREKINGSNEAR | SH_DONTRECEDEBLACKKING);
    EXPECT_EQ(met.Go(kMateInThree, 5), kSolutionsFound);
    CRun partly;
    partly.m_analysis.m_nRequiredHeuristics = SH_AREKINGSNEAR | SH_KEYLINE;
    partly.Choose(SH_AREKINGSNEAR);
    EXPECT_EQ(partly.Go(kMateInThree, 5), kRequiredHeuristicsUnmet);
}

TEST(FindMateRoot, AnalysisAloneSolvesNothing) {
    CRun run;
    run.m_run.m_bAnalysisOnly = true;
    EXPECT_EQ(run.Go(kMateInThree, 7), -1);
    EXPECT_TRUE(run.m_run.m_passes.empty());
    EXPECT_TRUE(run.Keys().empty());
}

TEST(FindMateRoot, ShortProblemsGetNoInitialAnalysis) {
    for (const int plies : {1, 3, 5, 7}) {
        CRun run;
        run.m_context->m_nRelaxCaptures = 3; // the initial analysis resets it
        run.m_run.m_bAnalysisOnly = true;
        (void)run.Go(kMateInThree, plies);
        EXPECT_EQ(run.m_context->m_nRelaxCaptures, plies <= 5 ? 3 : 0) << plies;
    }
    CRun again;
    again.m_context->m_nRelaxCaptures = 3;
    again.m_run.m_bAnalysisOnly = true;
    (void)again.Go(kMateInThree, 9, false);
    EXPECT_EQ(again.m_context->m_nRelaxCaptures, 3) << "only on the first entry";
}

// ---- thread demands

TEST(FindMateRoot, DemandsThreadsOnceAndWhenAllowed) {
    constexpr const char* kManyMoves = "8/8/8/8/8/2k5/7R/K7"; // 16 white moves
    CRun run;
    run.m_analysis.m_nThreads = 8;
    run.m_context->m_nStopRequest = kStopRequest; // no search is wanted here
    const int processors = UsableProcessors();
    const int moves = static_cast<int>(reference::LegalMoves(reference::ProblemFromFen(kManyMoves)).size());
    const bool bApplies = 8 < moves && moves <= 16 && 8 < 2 * processors;
    const int wanted = bApplies ? -std::min({16, moves, 2 * processors}) : kNoSolutionFound;
    EXPECT_EQ(run.Go(kManyMoves, 15, true, false), kNoSolutionFound) << "not allowed";
    EXPECT_EQ(run.Go(kManyMoves, 13, true, true), kNoSolutionFound) << "too short";
    EXPECT_EQ(run.Go(kManyMoves, 15, true, true), wanted);
    EXPECT_EQ(run.m_analysis.m_bThreadsForced, bApplies);
    EXPECT_EQ(run.Go(kManyMoves, 15, true, true), kNoSolutionFound) << "once a solve";
}

TEST(FindMateRoot, DemandsTwoThreadsForTwoMoves) {
    CRun two;
    two.m_context->m_nStopRequest = kStopRequest;
    EXPECT_EQ(two.Go("k7/8/8/8/8/1p5P/1P6/K6b", 15, true, true), -2);
    CRun one;
    one.m_context->m_nStopRequest = kStopRequest;
    EXPECT_EQ(one.Go("k7/8/8/8/8/1p5p/1P5P/K6b", 15, true, true), kNoSolutionFound);
}

TEST(FindMateRoot, AContextMayForbidTheDemand) {
    CRun run;
    run.m_analysis.m_nThreads = 8;
    run.m_context->m_bNoThreadDemand = true;
    run.m_context->m_nStopRequest = kStopRequest;
    EXPECT_EQ(run.Go("8/8/8/8/8/2k5/7R/K7", 15, true, true), kNoSolutionFound);
}

TEST(FindMateRoot, ClearsAManualCommand) {
    CRun run;
    run.m_analysis.m_nCommand = kManualCommand;
    (void)run.Go(kMateInThree, 5);
    EXPECT_EQ(run.m_analysis.m_nCommand.load(), kNoCommand);
}

} // namespace
} // namespace quillon::test
