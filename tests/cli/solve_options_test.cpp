// The request that the options of `solve` make.

#include "cli/solve_options.h"

#include <gtest/gtest.h>

#include "cli/solve_settings.h"
#include "core/fen.h"

namespace quillon {
namespace {

/// What the engine is asked when the command line has these words behind `solve`.
TSolveRequest RequestOf(std::vector<std::string> words) {
    CLI::App command;
    TSolveOptions options;
    AddSolveOptions(command, options);
    std::reverse(words.begin(), words.end()); // as the parser takes them
    command.parse(words);
    ChessProblem problem;
    SetStipulation(problem, kDirectMate, 3);
    SetOriginalPosition(problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    return MakeRequest(problem, options);
}

TEST(ProblemOptions, ItsSortIndicationsGoWithTheRequest) {
    ChessProblem problem;
    SetStipulation(problem, kDirectMate, 3);
    SetOriginalPosition(problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    EXPECT_TRUE(MakeRequest(problem, {}).m_sortIndications.empty());
    ParseSortIndications(problem.sortIndications, "1.Kb3-c2; ~Qh3-h8");
    const TSolveRequest request = MakeRequest(problem, {});
    ASSERT_EQ(request.m_sortIndications.size(), 2u);
    EXPECT_NE(request.m_sortIndications[0].m_bWorst, request.m_sortIndications[1].m_bWorst);
}

TEST(ProblemOptions, ItsVariantsOrderMovesIfItSaysSo) {
    ChessProblem problem;
    SetStipulation(problem, kDirectMate, 3);
    SetOriginalPosition(problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    for (const char* line : {"{Main variant} Kb3-c2 Nb1-d2 Qh3-a3", "{other} Qh3-h8"}) {
        Variant variant;
        ParseVariantLine(variant, line);
        problem.variants.emplace(variant.name, variant);
    }
    EXPECT_TRUE(MakeRequest(problem, {}).m_sortIndications.empty());
    problem.useMainVariantAsSortIndications = 1;
    EXPECT_EQ(MakeRequest(problem, {}).m_sortIndications.size(), 2u);
    problem.useMainVariantAsSortIndications = 2;
    EXPECT_EQ(MakeRequest(problem, {}).m_sortIndications.size(), 3u);
}

TEST(ProblemOptions, ItsHeuristicClausesHoldUnlessASetIsGiven) {
    ChessProblem problem;
    SetStipulation(problem, kDirectMate, 3);
    SetOriginalPosition(problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    problem.heuristicClauses = {{SH_SEASNAKE, "OFF"}};
    problem.flags = kFlagUsePredefinedSettings;
    EXPECT_EQ(MakeRequest(problem, {}).m_heuristicClauses, problem.heuristicClauses);
    EXPECT_TRUE(MakeRequest(problem, {}).m_bUsePredefinedIndications);
    TSolveOptions options;
    options.m_heuristics = "none";
    EXPECT_TRUE(MakeRequest(problem, options).m_heuristicClauses.empty());
}

TEST(MemoryOption, IsABudgetInMebibytes) {
    EXPECT_EQ(RequestOf({"--memory", "64"}).m_nMemoryBudgetMB, 64);
    EXPECT_EQ(RequestOf({"--memory", "0"}).m_nMemoryBudgetMB, 0);
    EXPECT_EQ(RequestOf({"--memory=1048576"}).m_nMemoryBudgetMB, 1048576);
    EXPECT_EQ(RequestOf({"--memory", "0100"}).m_nMemoryBudgetMB, 100) << "no octal numbers";
}

TEST(MemoryOption, WithoutItAFifthOfTheMemoryServes) {
    const TSolveRequest request = RequestOf({});
    EXPECT_LT(request.m_nMemoryBudgetMB, 0);
    EXPECT_EQ(request.m_nMemoryShare, 20);
}

TEST(ShortMateDepthOption, IsInMoves) {
    const struct {
        const char* m_moves;
        int m_nPlies;
    } rows[] = {{"0", 0}, {"1", 1}, {"2", 3}, {"7", 13}, {"16", 31}};
    for (const auto& row : rows)
        EXPECT_EQ(RequestOf({"--short-mate-depth", row.m_moves}).m_shLookForQuickerMateDepth, row.m_nPlies);
}

TEST(ShortMateDepthOption, WithoutItTheEngineChooses) {
    EXPECT_EQ(RequestOf({}).m_shLookForQuickerMateDepth, kDefaultQuickerMateDepth);
}

TEST(SolveOptions, OutOfRangeIsRefused) {
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"--memory", "-1"},
                                               {"--memory", "1048577"},
                                               {"--memory", "64MB"},
                                               {"--memory", "1.5"},
                                               {"--memory", ""},
                                               {"--memory"},
                                               {"--short-mate-depth", "17"},
                                               {"--short-mate-depth", "-1"},
                                               {"--short-mate-depth", "#3"},
                                               {"--short-mate-depth"},
                                               {"--short-mate-depth", "3", "--brute-force"}})
        EXPECT_THROW((void)RequestOf(words), CLI::ParseError) << ::testing::PrintToString(words);
}

/// The number of levels may be the problem's or the settings' own.
TEST(SchedulerOptions, TheCustomOneIsAskedForByItself) {
    ChessProblem problem;
    SetStipulation(problem, kDirectMate, 3);
    SetOriginalPosition(problem, ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6"));
    problem.schedulerLevels = 3;
    TSolveOptions options;
    options.m_bCustomScheduler = true;
    TSolveRequest request = MakeRequest(problem, options);
    ApplySettings(CommandLineDefaults(), problem, options, request);
    EXPECT_EQ(request.m_nSchedulerLevels, 3);
    EXPECT_TRUE(request.m_bCustomScheduler);
    options.m_bCustomScheduler = false;
    request = MakeRequest(problem, options);
    ApplySettings(CommandLineDefaults(), problem, options, request);
    EXPECT_FALSE(request.m_bCustomScheduler);
    options.m_schedulerLevels = 0;
    EXPECT_EQ(MakeRequest(problem, options).m_nSchedulerLevels, 0) << "the command line is stronger";
}

} // namespace
} // namespace quillon
