// The trial that keeps the black king on the edge.

#include "heuristics/edge_trial.h"

#include <cstring>

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"
#include "search/control.h"
#include "search/proof_guide.h"

namespace quillon::test {
namespace {

constexpr std::uint32_t kMask = SH_3MOVESTOMATE;

bool IsWorthwhile(std::string_view placement, std::string_view moves, std::uint32_t mask = kMask, int nPlies = 25) {
    CHeuristicLine line(placement, nPlies, mask);
    line.Play(moves);
    return IsEdgeTrialWorthwhile(line.Now());
}

TEST(EdgeTrial, IsMadeAgainstAKingThatCannotLeaveTheEdgeAtOnce) {
    constexpr const char* kCut = "k7/7R/8/8/8/8/6P1/7K"; // the rook guards the seventh rank
    EXPECT_TRUE(IsWorthwhile(kCut, "g2-g3"));
    EXPECT_TRUE(IsWorthwhile(kCut, "g2-g3 Ka8-b8 g3-g4"));
    EXPECT_FALSE(IsWorthwhile(kCut, "g2-g3 Ka8-b8 g3-g4 Kb8-a8 g4-g5")) << "too late in the line";
    EXPECT_FALSE(IsWorthwhile(kCut, "Rh7-h6")) << "he may leave the edge";
    EXPECT_FALSE(IsWorthwhile(kCut, "Rh7-h8")) << "he is in check";
    EXPECT_FALSE(IsWorthwhile("8/k6R/8/8/8/8/6P1/7K", "g2-g3")) << "he is not on the edge";
    EXPECT_FALSE(IsWorthwhile(kCut, "g2-g3", 0)) << "no heuristics";
    EXPECT_FALSE(IsWorthwhile(kCut, "g2-g3", SH_KEEPKINGWITHINEXTEDGE)) << "the pass has its own edge";
    EXPECT_FALSE(IsWorthwhile("k7/p1p5/P1P5/8/8/8/6P1/7K", "g2-g3")) << "no heavy figure";
}

TEST(EdgeTrial, SetsTheBitForItsTime) {
    CHeuristicLine line("k7/7R/8/8/8/8/6P1/7K", 25, kMask);
    line.Play("g2-g3");
    const TChessboard before = line.Now();
    EXPECT_FALSE(IsEdgeTrialRunning(line.Now()));
    {
        const CEdgeTrial trial(line.Now());
        EXPECT_TRUE(IsEdgeTrialRunning(line.Now()));
        EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
        EXPECT_FALSE(IsEdgeTrialWorthwhile(line.Now())) << "one at a time";
    }
    EXPECT_EQ(std::memcmp(&before, &line.Now(), sizeof before), 0);
    EXPECT_FALSE(line.Context().m_bEdgeTrial);
}

TEST(EdgeTrial, TheChoiceOfThePassIsNoTrial) {
    CHeuristicLine line("k7/7R/8/8/8/8/6P1/7K", 25, SH_KEEPKINGONTHEEDGE);
    EXPECT_FALSE(IsEdgeTrialRunning(line.Now()));
}

/// Counts where a trial could be made, and stops the search in one.
class CTrialLog : public INodeLog {
  public:
    void Move(const TChessboard& child) override {
        m_nWorthwhile += !IsWhiteToMove(child) && child.m_nMoves >= 16 && IsEdgeTrialWorthwhile(child);
        if (child.m_pContext->m_bEdgeTrial)
            child.m_pContext->m_nStopRequest = kStopRequest;
    }
    void Verdict(const TChessboard&, TMateResult) override {}
    void Remark(const TChessboard&, const char*) override {}
    int m_nWorthwhile = 0;
};

/// A mate that is known already need not keep the pattern: a trial would look for another one.
TEST(EdgeTrial, IsNotMadeBehindTheGuidesMove) {
    for (const char* const placement :
         {"8/B1N5/6N1/8/3QK3/Np4n1/2b1B1pk/8", "7N/7Q/8/8/5n1R/3K3P/1Rpp4/2k5", "kr5R/pp6/1K2PR2/8/8/3NR2B/8/8"}) {
        constexpr int kTriedPlies = 21;
        CSearchedPosition plain(placement, kTriedPlies);
        CProofGuide guide(std::size_t{16} << 20);
        ASSERT_EQ(guide.Search(plain.Root(), 20'000), EProofResult::Proved) << placement;
        for (const bool bGuided : {false, true}) {
            CHeuristicLine line(placement, kTriedPlies, kMask);
            CTrialLog log;
            line.Analysis().m_pNodeLog = &log;
            line.Analysis().m_pGuide = bGuided ? &guide : nullptr;
            const TMateResult result = FindMateWhite<kLoggingNode>(&line.Root(), false);
            EXPECT_GT(log.m_nWorthwhile, 0) << placement;
            EXPECT_EQ(line.Context().m_nStopRequest == kStopRequest, !bGuided) << placement;
            EXPECT_TRUE(!bGuided || result == MR_MATE) << placement;
        }
    }
}

} // namespace
} // namespace quillon::test
