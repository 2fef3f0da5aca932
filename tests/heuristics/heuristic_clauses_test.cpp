#include "heuristics/heuristic_clauses.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "core/search_context.h"
#include "core/set_of_squares.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/initial_analysis.h"
#include "heuristics/solving_driver.h"

namespace quillon {
namespace {

constexpr const char* kPlacement = "kb6/p1p5/8/8/8/8/8/3QK3";

class HeuristicClauses : public ::testing::Test {
  protected:
    HeuristicClauses() {
        TChessboard board = EmptyChessboard();
        static_cast<void>(ReadFEN(board, kPlacement));
        RecountFigures(board, true);
        m_pRoot = MakeRoot(*m_context, m_analysis, board, 17, 1);
    }

    std::uint32_t Apply(std::uint32_t chosen, const THeuristicClauses& clauses) {
        m_pRoot->m_nHeuristics = chosen;
        m_nSet = ApplyHeuristicClauses(*m_pRoot, clauses);
        EXPECT_EQ(m_pRoot->m_nHeurParams, ComputeHeurParams(*m_pRoot));
        return m_pRoot->m_nHeuristics;
    }

    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
    TAnalysis m_analysis;
    TChessboard* m_pRoot = nullptr;
    std::uint32_t m_nSet = 0;
};

TEST_F(HeuristicClauses, OffClearsAndAnythingElseSets) {
    EXPECT_EQ(Apply(SH_SEASNAKE | SH_3MOVESTOMATE, {{SH_SEASNAKE, "OFF"}, {SH_AREKINGSNEAR, ""}}),
              SH_3MOVESTOMATE | SH_AREKINGSNEAR);
    EXPECT_EQ(m_nSet, SH_AREKINGSNEAR);
    EXPECT_EQ(Apply(SH_3MOVESTOMATE, {}), SH_3MOVESTOMATE);
}

TEST_F(HeuristicClauses, OneOfThreeHoldsTheBlackKing) {
    for (const std::uint32_t bit : {SH_KEEPKINGONTHEEDGE, SH_KEEPKINGWITHINEXTEDGE, SH_ASSERTBLACKKINGSURROUNDED})
        EXPECT_EQ(Apply(SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED, {{bit, ""}}),
                  bit);
    // In rising order of the bits the last one holds.
    EXPECT_EQ(Apply(0, {{SH_ASSERTBLACKKINGSURROUNDED, ""}, {SH_KEEPKINGONTHEEDGE, ""}}), SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(m_nSet, SH_ASSERTBLACKKINGSURROUNDED);
    EXPECT_EQ(Apply(0, {{SH_ASSERTBLACKKINGSURROUNDED, "OFF"}, {SH_KEEPKINGONTHEEDGE, ""}}), SH_KEEPKINGONTHEEDGE);
}

TEST_F(HeuristicClauses, SquaresBecomeTheWatchedFigures) {
    EXPECT_EQ(Apply(0, {{SH_DONTLETFIGUREUNBLOCK, "b8A7,h1b8"}}), SH_DONTLETFIGUREUNBLOCK);
    EXPECT_EQ(m_context->m_nBlockedFigures, 2); // nothing stands on h1
    EXPECT_EQ(m_context->m_BlockedFigures[0], SquareAt(1, 7));
    EXPECT_EQ(m_context->m_BlockedFigures[1], SquareAt(0, 6));
    EXPECT_TRUE(m_context->m_bBlockedFiguresByHand);
    EXPECT_TRUE(m_context->m_bBlockedPawns);
}

TEST_F(HeuristicClauses, BehindTheFirstPassTheWatchedFiguresStay) {
    m_pRoot->m_byPass = 2;
    Apply(0, {{SH_DONTLETFIGUREUNBLOCK, "b8"}});
    EXPECT_EQ(m_context->m_nBlockedFigures, 0);
}

TEST_F(HeuristicClauses, WithoutItsParameterAHeuristicIsNotSet) {
    EXPECT_EQ(Apply(0, {{SH_KEYLINE, "a"}, {SH_KEYDIAGONAL, ""}, {SH_KEYWHITEFIGURE, ""}, {SH_KEEPKINGNEARCORNER, ""}}),
              0u);
    m_context->m_nKingNearCorner = 2;
    EXPECT_EQ(Apply(0, {{SH_KEEPKINGNEARCORNER, ""}}), SH_KEEPKINGNEARCORNER);
}

TEST_F(HeuristicClauses, SetsOfSquares) {
    EXPECT_EQ(ParseSetOfSquares("a1 B2,\tc3\xA0h8\r\n"),
              (std::vector<TSquare>{kA1, SquareAt(1, 1), SquareAt(2, 2), SquareAt(7, 7)}));
    EXPECT_EQ(ParseSetOfSquares("a1a1A1"), (std::vector<TSquare>{kA1}));
    EXPECT_TRUE(ParseSetOfSquares(" , ").empty());
    for (const char* text : {"a", "i1", "a9", "a0", "1a", "a1b", "a-1"}) {
        try {
            static_cast<void>(ParseSetOfSquares(text));
            FAIL() << text;
        } catch (const ChessException& failure) {
            EXPECT_EQ(failure.what(), "Error in ParseSetOfSquares: " + std::string(text));
        }
    }
}

TEST_F(HeuristicClauses, TheInitialAnalysisAppliesThemLast) {
    const TInitialAnalysis plain = AnalyzeInitialPosition(*m_pRoot);
    ASSERT_NE(plain.m_nHeuristics & SH_3MOVESTOMATE, 0u);
    const THeuristicClauses clauses{{SH_3MOVESTOMATE, "OFF"}, {SH_AREKINGSNEAR, ""}};
    TInitialAnalysisRequest request;
    request.m_pClauses = &clauses;
    const TInitialAnalysis changed = AnalyzeInitialPosition(*m_pRoot, request);
    EXPECT_EQ(changed.m_nHeuristics, (plain.m_nHeuristics & ~SH_3MOVESTOMATE) | SH_AREKINGSNEAR);
    EXPECT_EQ(changed.m_nOfClauses, SH_AREKINGSNEAR);
}

class CSilent : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view) override { return true; }
};

/// The set of the first pass of a mate in four, as the plan tells it.
std::string InitialSet(TSolveRequest request) {
    TChessboard board = EmptyChessboard();
    static_cast<void>(ReadFEN(board, "8/8/8/8/8/1K5Q/1p6/kn6"));
    RecountFigures(board, true);
    request.m_board = board;
    request.m_nStipulation = 4;
    request.m_nMemoryBudgetMB = 0;
    request.m_mode = ESolveMode::AllSolutions;
    CSolve solve(request);
    std::string set;
    solve.SetPlanSink([&](const TPlanReport& plan) { set = plan.m_initialSet; });
    CSilent notifier;
    const TSolvingResult result = solve.StartSolving(notifier);
    EXPECT_EQ(result.m_verdict, EVerdict::Mate);
    EXPECT_TRUE(result.m_bComplete);
    return set;
}

TEST_F(HeuristicClauses, HoldInASolveUntilTheUserChooses) {
    TSolveRequest request;
    request.m_heuristicClauses = {{SH_AREKINGSNEAR, ""}};
    EXPECT_NE(InitialSet(request).find("SH_AREKINGSNEAR"), std::string::npos);
    request.m_bBruteForce = true;
    EXPECT_EQ(InitialSet(request), "");
    request.m_bBruteForce = false;
    request.m_heuristics = ReadHeuristicsText("none");
    EXPECT_EQ(InitialSet(request), "");
}

TEST_F(HeuristicClauses, SquaresThatCannotBeReadEndTheSolve) {
    TSolveRequest request;
    request.m_heuristicClauses = {{SH_DONTLETFIGUREUNBLOCK, "x9"}};
    EXPECT_THROW(static_cast<void>(InitialSet(request)), ChessException);
}

} // namespace
} // namespace quillon
