// The texts of the end of a solve, word for word.

#include "heuristics/result_texts.h"

#include <gtest/gtest.h>

namespace quillon::test {
namespace {

struct TMode {
    std::uint8_t m_nSolveMode;
    std::uint32_t m_nStopFlags;
    const char* m_pSummary;
    const char* m_pStopped;
};

constexpr TMode kModes[] = {
    {kSingleSolution, 0, "* Search for single solution\n", ""},
    {0, kStopOnDual, "* Search for no more than 2 solutions\n",
     "Search for solutions has been stopped after detection of dual."},
    {0, kStopOn3Solutions, "* Search for no more than 3 solutions\n",
     "Search for solutions has been stopped after finding 3 solutions"},
    {0, kStopOn4Solutions, "* Search for no more than 4 solutions\n",
     "Search for solutions has been stopped after finding 4 solutions"},
    {kAllSolutions, 0, "* Search for all solutions\n", ""},
};

TEST(ResultTexts, NameTheMode) {
    for (const TMode& mode : kModes) {
        TAnalysis analysis;
        analysis.m_nSolveMode = mode.m_nSolveMode;
        analysis.m_nStopFlags = mode.m_nStopFlags;
        EXPECT_EQ(ModeText(analysis, false), mode.m_pSummary);
    }
}

TEST(ResultTexts, NameThePhaseOfAHybridRun) {
    const std::string head =
        "* Hybrid brute force - first heuristical search for single solution, then brute force search for dual(s)\n";
    const std::string first = "  - now running the first (heuristical) phase of hybrid brute force (no solution found "
                              "yet)\n";
    const std::string second = "  - now running the second (brute force) phase of hybrid brute force (at least one "
                               "solution already found)\n";
    TAnalysis analysis;
    analysis.m_nHybridPhase = kHybridHeuristical;
    EXPECT_EQ(ModeText(analysis, false), head + first);
    analysis.m_nHybridPhase = kHybridBruteForce;
    EXPECT_EQ(ModeText(analysis, true), head + second);
}

TEST(ResultTexts, CountSolutions) {
    for (const TMode& mode : kModes) {
        TAnalysis analysis;
        analysis.m_nSolveMode = mode.m_nSolveMode;
        analysis.m_nStopFlags = mode.m_nStopFlags;
        EXPECT_EQ(SolutionCountText(analysis, 1, false), "");
        EXPECT_EQ(SolutionCountText(analysis, 3, false), "More than one solution found: 3");
        if (*mode.m_pStopped != '\0') {
            EXPECT_EQ(SolutionCountText(analysis, 4, true), mode.m_pStopped);
        } else {
            EXPECT_EQ(SolutionCountText(analysis, 1, true), "");
        }
    }
}

TEST(ResultTexts, NothingFound) {
    const std::string head = "Not found any solutions for #7";
    const std::string relax = "\t* there was only one pass with heuristcs (relaxation of heuristics was switched off "
                              "by user's request)\n";
    const std::string pass2 = "\t* pass without heuristics has been skipped (on user's request)\n";
    EXPECT_EQ(NothingFoundText(7, false, false), head);
    EXPECT_EQ(NothingFoundText(7, true, false), head + "\n\nNote:\n" + relax);
    EXPECT_EQ(NothingFoundText(7, false, true), head + "\n\nNote:\n" + pass2);
    EXPECT_EQ(NothingFoundText(7, true, true), head + "\n\nNote:\n" + relax + pass2);
}

TEST(ResultTexts, NoSolution) {
    const std::string text = NoSolutionText(5, 12.34, false);
    EXPECT_TRUE(text.starts_with("No solution found ("));
    EXPECT_NE(text.find("#5"), std::string::npos);
    EXPECT_NE(text.find("or less) "), std::string::npos);
    EXPECT_TRUE(text.ends_with(" sec.)"));
    EXPECT_EQ(NoSolutionText(5, 12.34, true),
              text + " NOTE: Pass without heuristics is currently switched off (see heuristics selection dialog box)");
}

TEST(ResultTexts, OthersWordForWord) {
    EXPECT_EQ(EngineEndText(false, "problem 7"), "Engine has completed: problem 7");
    EXPECT_EQ(EngineEndText(true, "problem 7"), "Engine stopped: problem 7");
    EXPECT_EQ(ThreadDemandQuestion(6), "Engine wants to force a different number of threads (6). Do you accept it?");
    EXPECT_STREQ(kMateSearchTitle, "Mate search result");
    EXPECT_STREQ(kAnalysisResultTitle, "Result of analysis");
    EXPECT_STREQ(kStoppedByUser, "Analysis stopped by user");
    EXPECT_STREQ(kStoppedByUserSuffix, " (stopped by user)");
    EXPECT_STREQ(kFromRegisterSuffix, " (from register)");
    EXPECT_STREQ(kInitialCheckPending, "initial position check pending...");
    EXPECT_STREQ(kTooManyProblems, "Too many problems being solved at the same time.");
    EXPECT_STREQ(kBruteForceQuestion,
                 "Brute force run is a run without any heuristics and with many settings overridden for optimized "
                 "search to exclude existence of any solutions.\n\nDo you want to continue?");
    EXPECT_STREQ(kRepetitionNote,
                 "Program detected position repetition\nFor optimization reasons every postion repetition is treated "
                 "as preventing mate and, thus, program terminates analysis in such case.");
}

TEST(ResultTexts, AnalysisOfABlackMove) {
    EXPECT_STREQ(kNoDefence, "Not found any defence against mate. The best looks: ");
    EXPECT_STREQ(kOnlyReplyToShortMateNoDefence,
                 "The only reply that prevents short mate (not a defence against mate) : ");
    EXPECT_STREQ(kRefutedWith, "Mate in the requested stipulation was refuted with: ");
    EXPECT_STREQ(kOnlyReplyToShortMate, "The only reply that prevents short mate: ");
    EXPECT_STREQ(kOnlyReplyNoDefence, "The only reply (not a defence against mate) : ");
    EXPECT_STREQ(kOnlyReply, "The only reply: ");
    EXPECT_STREQ(kEquivalentMoves, "\nEquivalent moves: ");
    EXPECT_STREQ(kNoValidMove, "No valid move found");
    EXPECT_STREQ(kMovesFound, "The following moves have been found:");
}

} // namespace
} // namespace quillon::test
