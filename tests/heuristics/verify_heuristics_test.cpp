// The gate as a whole: its order, its marks, and what holds of every rule.

#include "heuristics/verify_heuristics.h"

#include <bit>
#include <cstring>

#include <gtest/gtest.h>

#include "heuristics/heuristic_set.h"
#include "heuristics/search_hooks.h"
#include "heuristics/verified_position.h"

namespace quillon::test {
namespace {

TEST(VerifyHeuristics, WithoutHeuristicsOnlyTheLastRuleDoubts) {
    CMadeMove quiet("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    EXPECT_EQ(quiet.Verify(0), kNotDoubtful);
    CMadeMove rook("8/8/4k3/8/8/8/8/R6K", 7, "Kh1-h2 Ke6-d6");
    rook.After().m_byPass = 2;
    EXPECT_EQ(rook.Verify(0), kDoubtful);
    CMadeMove shortProblem("8/8/4k3/8/8/8/8/R6K", 5, "Kh1-h2 Ke6-d6");
    shortProblem.After().m_byPass = 2;
    EXPECT_EQ(shortProblem.Verify(0), kNotDoubtful);
}

TEST(VerifyHeuristics, TheFirstRuleThatDoubtsIsTheCause) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d7");
    line.Context().m_nKingNearCorner = 1;
    line.Context().m_bDontLetKingMove = false;
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGNEARCORNER | SH_KEEPKINGONTHEEDGE, SH_KEEPKINGNEARCORNER));
    EXPECT_TRUE(line.Doubts(SH_KEEPKINGONTHEEDGE | SH_ASSERTBLACKKINGSURROUNDED, SH_KEEPKINGONTHEEDGE));
    EXPECT_TRUE(line.Doubts(SH_AREKINGSNEAR | SH_KEEPKINGNEARCORNER, SH_AREKINGSNEAR));
}

TEST(VerifyHeuristics, NothingIsWrittenWhenNothingDoubts) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    line.Context().m_lastDoubtCause = 77;
    line.Context().m_bDontLetKingMove = false;
    EXPECT_EQ(line.Verify(SH_KEEPKINGONTHEEDGE), kNotDoubtful);
    EXPECT_EQ(line.Context().m_lastDoubtCause, 77u);
}

TEST(VerifyHeuristics, AStoppedRunLeavesTheQuestionOpen) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 11, "Ka1-b1 Ke8-d8");
    ASSERT_EQ(line.Verify(SH_KEEPKINGONTHEEDGE), kDoubtful);
    line.Context().m_nStopRequest.store(kStopRequest);
    EXPECT_EQ(line.Verify(SH_KEEPKINGONTHEEDGE), kUndecided);
    TMove move = line.After().m_lastMove;
    EXPECT_EQ(VerifyBlackMove(line.After(), move), 0);
}

TEST(VerifyBlackMove, TellsTheSortOfADoubt) {
    CMadeMove line("4k3/8/8/8/8/8/8/K6N", 7, "Ka1-b1 Ke8-d8");
    line.Under(SH_KEEPKINGONTHEEDGE);
    TMove move = line.After().m_lastMove;
    EXPECT_EQ(VerifyBlackMove(line.After(), move), 1);
    EXPECT_EQ(line.Context().m_lastDoubtCause, SH_KEEPKINGONTHEEDGE);
    line.Under(0);
    EXPECT_EQ(VerifyBlackMove(line.After(), move), 0);
}

/// An empty mask has to come to a proof, in whatever pass.
TEST(VerifyBlackMove, KeepsSilentWithoutHeuristics) {
    CMadeMove rook("8/8/4k3/8/8/8/8/R6K", 7, "Kh1-h2 Ke6-d6");
    ASSERT_EQ(rook.Verify(0), kDoubtful);
    TMove move = rook.After().m_lastMove;
    EXPECT_EQ(VerifyBlackMove(rook.After(), move), 0);
    rook.Under(SH_KEYLINE);
    EXPECT_EQ(VerifyBlackMove(rook.After(), move), 1);
}

/// Under the edge heuristic a king that walks off it is a doubt of the whole node; the pass without proves.
TEST(VerifyBlackMove, TurnsANodeIntoADoubtAndNeverIntoARefutation) {
    CSearchedPosition line("8/8/8/8/8/3k4/8/R3K2R", 9, 1);
    line.Context().m_bDontLetKingMove = false;
    line.Now().m_nHeuristics = SH_KEEPKINGONTHEEDGE;
    line.Now().m_nHeurParams = ComputeHeurParams(line.Now());
    line.Play("Ra1-a8");
    EXPECT_EQ(line.Verdict(), MR_DOUBTFUL);
    EXPECT_EQ(line.Context().m_lastDoubtCause, SH_KEEPKINGONTHEEDGE);
}

/// A parameter set that lets as many rules as possible speak.
void Tighten(CMadeMove& line, int i) {
    TSearchContext& context = line.Context();
    context.m_nKingNearCorner = static_cast<std::int8_t>(i % 3 == 0 ? -1 : 1 + i % 2);
    context.m_nSaveFiguresMode = static_cast<std::uint8_t>(i % 3);
    context.m_bSaveRookQueenStrict = i % 2 == 0;
    context.m_bDontLetKingMove = i % 3 != 0;
    context.m_bAllowExceptions = i % 5 == 0;
    context.m_bExtEdgeStrict = i % 2 == 0;
    context.m_bAssertBKSStrict = i % 4 == 0;
    context.m_shDeferMoves = static_cast<std::uint16_t>(i % 7 == 0 ? 1 : 0);
    context.m_nKeyWhiteFigure = line.After().m_lastMove.m_nTo;
    context.m_nBlackFigureOnMainDiagonal = line.After().m_lastMove.m_nFrom;
    line.Analysis().m_nKeyLine = static_cast<std::uint8_t>(FileOf(line.After().m_lastMove.m_nTo));
    line.Analysis().m_rootMaterial.m_nWhiteFigures =
        static_cast<std::uint8_t>(line.Analysis().m_rootMaterial.m_nWhiteFigures + 1);
}

/// A random white move and a random black reply; false if there is none.
bool PlayPair(CMadeMove& line, std::mt19937_64& rng, reference::Position& position) {
    for (int ply = 0; ply < 2; ++ply) {
        const auto moves = reference::LegalMoves(position);
        if (moves.empty())
            return false;
        const reference::Move move = moves[static_cast<std::size_t>(reference::Draw(rng, moves.size()))];
        line.Play(reference::LongNotation(position, move));
        position = reference::Play(position, move);
    }
    return true;
}

/// What may change in a record: a bit taken off the mask, and the signature with it.
bool IsSameButForMask(const TChessboard& a, TChessboard b) {
    b.m_nHeuristics = a.m_nHeuristics;
    b.m_nHeurParams = a.m_nHeurParams;
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(VerifyHeuristics, HoldsOfEveryRule) {
    std::mt19937_64 rng(4403);
    std::uint32_t doubted = 0;
    int mates = 0;
    for (int i = 0; i < Samples(2500); ++i) {
        const std::string placement = AnyPlacement(rng, i, 3 + i % 6);
        CMadeMove line(placement, 7);
        reference::Position position = reference::ProblemFromFen(placement);
        if (!PlayPair(line, rng, position))
            continue;
        const bool bMate = reference::ForcesMate(position, 1);
        mates += bMate;
        Tighten(line, i);
        for (std::uint32_t bit = 1; bit != 0; bit <<= 1) {
            if ((bit & kAllHeuristics) == 0)
                continue;
            const TChessboard after = line.After(), before = line.Before();
            const int answer = line.Verify(bit);
            ASSERT_TRUE(answer == kDoubtful || answer == kNotDoubtful);
            EXPECT_TRUE(IsSameButForMask(after, line.After()) && IsSameButForMask(before, line.Before())) << placement;
            EXPECT_EQ(line.Context().m_nVerifyDepth, 0);
            EXPECT_EQ(line.Context().m_nQuickerLevel, 0);
            EXPECT_EQ(line.After().m_nHeurParams, ComputeHeurParams(line.After()));
            EXPECT_FALSE(answer == kDoubtful && bMate) << placement << " " << HeuristicName(bit);
            if (answer == kDoubtful && line.Context().m_lastDoubtCause == bit)
                doubted |= bit;
        }
    }
    EXPECT_GT(mates, Floor(30));
    const std::uint32_t seldom = SH_DONTLETFIGUREUNBLOCK | SH_DONTLETPROMOTEDQUEENMOVE | SH_DONTLETPROMOTEDFIGUREMOVE |
                                 SH_KEYDIAGONAL | SH_DONTLETBLACKQUEENCHECKTWICE | SH_CAPTUREKNIGHT |
                                 SH_SWEEPINGWHITEROOK | SH_ONECOLORPLAYPOSSIBLE | SH_DONTLEAVEMAINDIAGONAL;
    const std::uint32_t expected = SH_3MOVESTOMATE | SH_SAVEQUEENROOK | SH_KEYLINE | SH_DONTLOSEANYFIGURES |
                                   SH_AREKINGSNEAR | SH_KEEPKINGNEARCORNER | SH_KEEPKINGONTHEEDGE |
                                   SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED | SH_KEYWHITEFIGURE |
                                   SH_SEASNAKE;
    EXPECT_EQ(doubted & ~seldom, expected);
}

} // namespace
} // namespace quillon::test
