// The run over the root: results, modes, passes, demands.

#include "heuristics/find_mate_root.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "core/notation.h"
#include "platform/clock.h"
#include "platform/processors.h"
#include "search/proof_guide.h"
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
    EXPECT_EQ(second.m_context->m_moveIndex[1].load(), all.m_run.m_moves.size() - 2) << "in the list of the pass";
}

// ---- passes

TEST(FindMateRoot, WithoutHeuristicsThereIsOnePass) {
    CRun run;
    run.Choose(0);
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

TEST(FindMateRoot, MatesOnTheMoveNeedNoPass) {
    CRun first;
    first.m_analysis.m_nSolveMode = kSingleSolution;
    EXPECT_EQ(first.Go(kManyKeys, 7), kSolutionsFound);
    ASSERT_GE(first.Keys().size(), 1u);
    EXPECT_EQ(first.m_run.m_solutions.front().m_pass, "");
    EXPECT_TRUE(first.m_run.m_passes.empty());
    EXPECT_FALSE(first.m_run.m_bStopped);

    const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(kManyKeys), 4, 1'000'000);
    ASSERT_TRUE(truth);
    CRun all;
    all.m_analysis.m_nSolveMode = kAllSolutions;
    EXPECT_EQ(all.Go(kManyKeys, 7), kSolutionsFound);
    std::vector<std::string> keys = all.Keys();
    std::ranges::sort(keys);
    EXPECT_EQ(keys, truth->keys);
    EXPECT_EQ(all.m_run.m_solutions.front().m_pass, "");
    EXPECT_NE(all.m_run.m_solutions.back().m_pass, "") << "the others take a search";
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

// ---- the plan of passes

constexpr const char* kTwoRooks = "8/8/8/3k4/8/8/8/K5RR"; // no mate in four

/// Names of the passes with the keys found in each: "1:0 1b:1 2:0".
std::string PassesAndKeys(const TRootRun& run) {
    std::string text;
    for (const TPassRecord& pass : run.m_passRecords)
        text += (text.empty() ? "" : " ") + pass.m_name + ":" + std::to_string(pass.m_nKeys);
    return text;
}

TEST(FindMateRoot, DropsAHeuristicAPass) {
    CRun run;
    run.m_analysis.m_bSafeMode = true;
    run.Choose(SH_DONTRECEDEBLACKKING | SH_SAVEQUEENROOK | SH_AREKINGSNEAR);
    EXPECT_EQ(run.Go(kNoMate, 7), kNoSolutionFound);
    EXPECT_EQ(run.m_run.m_passes, (std::vector<std::string>{"1", "1b", "1c", "2"}));
    EXPECT_EQ(PassesAndKeys(run.m_run), "1:0 1b:0 1c:0 2:0");
    EXPECT_EQ(run.m_run.m_passRecords[0].m_heuristics, "SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING, SH_SAVEQUEEN/ROOK");
    EXPECT_EQ(run.m_run.m_passRecords[1].m_heuristics, "SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING");
    EXPECT_EQ(run.m_run.m_passRecords[2].m_heuristics, "SH_DONTRECEDEBLACKKING");
    EXPECT_EQ(run.m_run.m_passRecords[3].m_heuristics, "");
    EXPECT_EQ(run.m_analysis.m_nPassesPlanned.load(), 4u);
    EXPECT_EQ(run.m_context->m_pRoot->m_byPass, 2);
    EXPECT_FALSE(HasOpenMoves(run.m_run));
    for (const TPassRecord& pass : run.m_run.m_passRecords)
        EXPECT_GE(pass.m_seconds, 0);
}

TEST(FindMateRoot, WithRelaxationOffThereIsOnePassWithHeuristics) {
    for (const bool bRunPass2 : {true, false}) {
        CRun run;
        run.m_context->m_bLetRelaxHeuristics = false;
        run.m_context->m_bRunPass2 = bRunPass2;
        run.Choose(SH_DONTRECEDEBLACKKING | SH_SAVEQUEENROOK | SH_AREKINGSNEAR);
        (void)run.Go(kNoMate, 7);
        EXPECT_EQ(PassesAndKeys(run.m_run), bRunPass2 ? "1:0 2:0" : "1:0");
        EXPECT_EQ(run.m_analysis.m_nPassesPlanned.load(), bRunPass2 ? 2u : 1u);
        EXPECT_EQ(HasOpenMoves(run.m_run), !bRunPass2);
        EXPECT_EQ(run.m_context->m_pRoot->m_nHeuristics, 0u);
    }
}

TEST(FindMateRoot, APassTellsItsKeys) {
    CRun run;
    run.m_analysis.m_nSolveMode = kAllSolutions;
    run.Choose(SH_DONTRECEDEBLACKKING | SH_AREKINGSNEAR);
    EXPECT_EQ(run.Go(kMateInThree, 5), kSolutionsFound);
    int keys = 0;
    for (const TPassRecord& pass : run.m_run.m_passRecords) {
        keys += pass.m_nKeys;
        if (pass.m_nKeys > 0) {
            EXPECT_EQ(pass.m_name, run.m_run.m_solutions.front().m_pass);
        }
    }
    EXPECT_EQ(keys, 1);
    EXPECT_EQ(run.m_run.m_passRecords.size(), run.m_run.m_passes.size());
}

/// A run that looks for duals and has found a key needs no further heuristics.
TEST(FindMateRoot, WithAKeyARunForDualsGoesToTheProof) {
    for (const std::uint8_t mode : {std::uint8_t{0}, kAllSolutions}) {
        CRun run;
        run.m_analysis.m_nSolveMode = mode;
        run.m_analysis.m_nStopFlags = kStopOnDual;
        run.Choose(SH_DONTRECEDEBLACKKING | SH_SAVEQUEENROOK | SH_AREKINGSNEAR);
        run.m_run.m_solutions.push_back({ParseMove("Ka1-a2", true), "Ka1-a2", ""}); // found before this run
        (void)run.Go(kNoMate, 7);
        EXPECT_EQ(PassesAndKeys(run.m_run), mode == 0 ? "1:0 2:0" : "1:0 1b:0 1c:0 2:0");
    }
}

TEST(FindMateRoot, WithAKeyARunMayBeToldToGoToTheProof) {
    for (const bool bKey : {false, true}) {
        CRun run;
        run.m_analysis.m_nSolveMode = kAllSolutions;
        run.m_run.m_bStopRelaxingOnSolution = true;
        run.Choose(SH_DONTRECEDEBLACKKING | SH_SAVEQUEENROOK | SH_AREKINGSNEAR);
        if (bKey)
            run.m_run.m_solutions.push_back({ParseMove("Ka1-a2", true), "Ka1-a2", ""}); // found before this run
        (void)run.Go(kNoMate, 7);
        EXPECT_EQ(PassesAndKeys(run.m_run), bKey ? "1:0 2:0" : "1:0 1b:0 1c:0 2:0");
        EXPECT_EQ(run.m_analysis.m_nPassesPlanned.load(), bKey ? 2u : 4u) << "what is left out is not announced";
    }
}

TEST(FindMateRoot, PassesThatTheClockGaveAreCountedWhenTheyCome) {
    CRun run;
    run.m_analysis.m_nStartTicks = TickCount64();
    run.Choose(SH_FINDFORCEDMATE | SH_DONTRECEDEBLACKKING);
    (void)run.Go(kTwoRooks, 7);
    std::string names, byClock;
    for (const TPassRecord& pass : run.m_run.m_passRecords) {
        names += pass.m_name + ' ';
        byClock += pass.m_bTimeDependent ? '*' : '.';
    }
    if (TickCount64() - run.m_analysis.m_nStartTicks < 1000) { // the machine was not stopped meanwhile
        EXPECT_EQ(names, "1 1b 1c 1d 2 ");
        EXPECT_EQ(byClock, ".**..");
        EXPECT_EQ(run.m_analysis.m_nPassesPlanned.load(), 5u) << "three were planned";
    }
    EXPECT_FALSE(HasOpenMoves(run.m_run));
    CRun late;
    late.m_analysis.m_nStartTicks = TickCount64() - 5000;
    late.Choose(SH_FINDFORCEDMATE | SH_DONTRECEDEBLACKKING);
    (void)late.Go(kTwoRooks, 7);
    EXPECT_EQ(PassesAndKeys(late.m_run), "1:0 1b:0 2:0");
    EXPECT_EQ(late.m_analysis.m_nPassesPlanned.load(), 3u);
}

/// A run of FindForcedMate keeps mask and signature of the root, and what it finds is true.
TEST(FindMateRoot, FindForcedMateRunsFindNothingThatIsNotThere) {
    std::mt19937_64 rng(91);
    for (int i = 0; i < Samples(60); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 3);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), 3, 60000);
        if (!truth)
            continue;
        CRun run;
        run.m_analysis.m_nSolveMode = kAllSolutions;
        run.m_context->m_nFfmWithOther = static_cast<std::int8_t>(i % 3 - 1);
        run.Choose(SH_FINDFORCEDMATE | SH_DONTRECEDEBLACKKING | SH_SAVEQUEENROOK);
        (void)run.Go(placement.c_str(), 5);
        std::vector<std::string> keys = run.Keys();
        std::ranges::sort(keys);
        EXPECT_EQ(keys, truth->keys) << placement;
        EXPECT_FALSE(HasOpenMoves(run.m_run)) << placement;
    }
}

/// Writes down what a run tells of its passes.
class CListeningRegister : public CRecordingRegister {
  public:
    void AddDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) override { Note('+', heuristics, params); }
    void ReleaseDoubtfulUser(std::uint32_t heuristics, std::uint32_t params) override { Note('-', heuristics, params); }
    void ForgetDoubt() override { m_heard += "forget"; }
    std::string m_heard;
    std::vector<std::uint32_t> m_params;

  private:
    void Note(char sign, std::uint32_t heuristics, std::uint32_t params) {
        m_heard += sign + std::to_string(heuristics) + ' ';
        m_params.push_back(params);
    }
};

TEST(FindMateRoot, TheRegisterHearsOfThePasses) {
    CRun run;
    CListeningRegister known;
    run.m_analysis.m_pRegister = &known;
    run.Choose(SH_DONTRECEDEBLACKKING | SH_AREKINGSNEAR);
    (void)run.Go(kNoMate, 7);
    EXPECT_EQ(known.m_heard, "+1025 -1025 +1024 -1024 forget");
    ASSERT_EQ(known.m_params.size(), 4u);
    EXPECT_EQ(known.m_params[0], known.m_params[1]);
    EXPECT_NE(known.m_params[0], 0u);
}

// ---- the guide's look before the pass without heuristics

/// A mate in eight at most with two rooks against a king, who has to walk. The guide comes when the plan is told: what
/// it searches, it searches behind the passes with heuristics.
class CLateGuide : public CRun {
  public:
    explicit CLateGuide(bool bRunPass2) {
        m_context->m_bLetRelaxHeuristics = false;
        m_context->m_bRunPass2 = bRunPass2;
        m_run.m_planSink = [this](const TPlanReport&) { m_run.m_pGuide = &m_guide; };
    }
    [[nodiscard]] int GoAgainstTheMate() {
        m_run.m_nInitialHeuristics = SH_KEEPKINGONTHEEDGE; // he may not move at all
        return Go("8/8/8/4k3/8/8/8/RR4K1", 15, false);
    }

    CProofGuide m_guide{std::size_t{1} << 20};
};

TEST(FindMateRoot, TheGuideLooksOnceMoreBeforeThePassWithoutHeuristics) {
    CLateGuide guided(true);
    EXPECT_EQ(guided.GoAgainstTheMate(), kSolutionsFound);
    EXPECT_EQ(guided.m_run.m_passes, (std::vector<std::string>{"1", "2"}));
    EXPECT_TRUE(guided.m_guide.IsProved());
    EXPECT_EQ(guided.m_analysis.m_pGuide, &guided.m_guide);
    EXPECT_TRUE(guided.m_run.m_leftOut.empty()) << "the set was in use as it was chosen";
}

TEST(FindMateRoot, WithoutThatPassThereIsNothingToGuide) {
    CLateGuide guided(false);
    EXPECT_EQ(guided.GoAgainstTheMate(), kNoSolutionFound);
    EXPECT_EQ(guided.m_run.m_passes, std::vector<std::string>{"1"});
    EXPECT_EQ(guided.m_guide.Nodes(), 0u);
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

/// Of the moves that force at once two thirds count as good at least, whatever their order.
TEST(FindMateRoot, DemandsThreadsForGoodMoves) {
    const auto demand = [](const char* placement, int nThreads) {
        CRun run;
        run.m_analysis.m_nThreads = static_cast<std::uint8_t>(nThreads);
        run.m_context->m_nStopRequest = kStopRequest;
        return run.Go(placement, 15, true, true);
    };
    EXPECT_EQ(demand("8/2P1P1P1/8/8/8/7K/8/k7", 4), -8) << "twelve promotions";
    EXPECT_EQ(demand("6r1/5P1P/8/8/8/6K1/8/k7", 1), -3) << "the rook that checks can be taken in eight ways";
    EXPECT_EQ(demand("2b5/1P6/8/8/8/7K/8/k7", 1), -2) << "a bishop that checks, in four";
}

/// Refused, the engine relaxes without what the threads would have had time for.
TEST(FindMateRoot, WithoutTheThreadsItHasAskedForItDropsItsAids) {
    for (const bool bNoAids : {false, true}) {
        CRun run;
        run.m_run.m_bNoAids = bNoAids;
        run.m_run.m_bAnalysisOnly = true;
        EXPECT_EQ(run.Go("8/8/3q4/3k4/8/8/8/K6R", 9), kInitialAnalysisOnly);
        EXPECT_EQ(run.m_context->m_bQueenCheckRelaxable, !bNoAids);
    }
}

/// Where a queen alone plays against a rook alone a thread has its line for itself, as long as heuristics ask about it.
TEST(FindMateRoot, AQueenAgainstARookHasOneLevelOfThreads) {
    const struct {
        const char* m_placement;
        bool m_bSafeMode, m_bRunPass2;
        int m_nLevels;
    } rows[] = {{"8/8/8/3k4/8/6r1/8/K6Q", false, false, 1},  {"8/8/8/3k4/8/6r1/8/K6Q", false, true, 3},
                {"8/8/8/3k4/8/6r1/8/K6Q", true, false, 3},   {"8/8/8/3k4/8/6r1/8/KN5Q", false, false, 3},
                {"8/8/8/3k4/8/n5r1/8/K6Q", false, false, 3}, {"8/8/8/3k4/8/6r1/P6p/K6Q", false, false, 1}};
    for (const auto& row : rows) {
        CRun run;
        run.m_analysis.m_nMultithreadingLevels = 3;
        run.m_analysis.m_bSafeMode = row.m_bSafeMode;
        run.m_context->m_bRunPass2 = row.m_bRunPass2;
        run.Choose(SH_DONTRECEDEBLACKKING);
        (void)run.Go(row.m_placement, 7);
        EXPECT_EQ(run.m_run.m_passes.back(), row.m_bRunPass2 ? "2" : "1") << row.m_placement;
        EXPECT_EQ(run.m_analysis.m_nMultithreadingLevels, row.m_nLevels) << row.m_placement;
    }
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
