// Looks aside: proofs of short mates and threats, and nothing left behind.

#include "heuristics/look_aside.h"

#include <cstring>

#include <gtest/gtest.h>

#include "core/makers.h"
#include "search/repetition.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

constexpr const char* kMateInTwo = "7k/8/5K2/8/8/8/8/R7"; // Kf6-f7

TEST(LookAside, FindsAMateWithinThePliesAndNoLongerOne) {
    CSearchedPosition line(kMateInTwo, 9);
    EXPECT_FALSE(HasMateWithin(line.Now(), 1));
    EXPECT_TRUE(HasMateWithin(line.Now(), 3));
    EXPECT_TRUE(HasMateWithin(line.Now(), 7));
}

TEST(LookAside, AThreatNeedsAPassAndTime) {
    CSearchedPosition line(kMateInTwo, 5);
    TMove move = ParseMove("Kf6-f7", true);
    TChessboard& child = *CopyToChild(&line.Now());
    ASSERT_EQ(MakeWhiteMove(child, move), 1);
    EXPECT_TRUE(ThreatensMate(child, 1));
    CSearchedPosition quiet(kMateInTwo, 5);
    move = ParseMove("Ra1-b1", true);
    TChessboard& after = *CopyToChild(&quiet.Now());
    ASSERT_EQ(MakeWhiteMove(after, move), 1);
    EXPECT_FALSE(ThreatensMate(after, 1));
    EXPECT_TRUE(ThreatensMate(after, 3));
    after.m_nMoves = 2; // one ply behind the pass
    EXPECT_FALSE(ThreatensMate(after, 3));
}

TEST(LookAside, APassIsANullMoveThatCostsAPly) {
    CSearchedPosition line(kMateInTwo, 5);
    line.Play("Ra1-b1");
    const TChessboard passed = WithBlackPassing(line.Now());
    EXPECT_TRUE(IsNullMove(passed.m_lastMove));
    EXPECT_EQ(passed.m_nMoves, line.Now().m_nMoves - 1);
    EXPECT_EQ(passed.m_pPrevious, &line.Now());
    EXPECT_EQ(passed.m_board, line.Now().m_board);
}

TEST(LookAside, AgreesWithTheReference) {
    std::mt19937_64 rng(3510);
    int mates = 0;
    for (int i = 0; i < Samples(250); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 4);
        const int nMoves = 1 + i % 3;
        const auto truth = MatesWithin(placement, nMoves);
        if (!truth)
            continue;
        CSearchedPosition line(placement, 2 * nMoves + 1);
        EXPECT_EQ(HasMateWithin(line.Now(), 2 * nMoves - 1), *truth) << placement << " " << nMoves;
        mates += *truth ? 1 : 0;
    }
    EXPECT_GT(mates, 5);
}

TEST(LookAside, UnderHeuristicsItFindsNothingThatIsNotThere) {
    std::mt19937_64 rng(3511);
    for (int i = 0; i < Samples(150); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 4);
        CSearchedPosition line(placement, 7, 1);
        line.Root().m_nHeuristics = SH_FINDFORCEDMATE | SH_DONTRECEDEBLACKKING | SH_ASSERTBLACKKINGSURROUNDED;
        const auto truth = MatesWithin(placement, 2);
        if (truth && HasMateWithin(line.Now(), 3, ELookAside::UnderHeuristics)) {
            EXPECT_TRUE(*truth) << placement;
        }
    }
}

TEST(LookAside, LeavesPositionAndContextAsTheyWere) {
    CSearchedPosition line(kMateInTwo, 9, 1);
    TSearchContext& context = line.Context();
    context.m_bUnderPromotionEqual = true;
    context.m_nQuickerLevel = 1;
    context.m_nAdditionalMoves = 3;
    context.m_nQuickerSpare = 2;
    RepetitionMark(line.Now(), 5) = 4711;
    const TChessboard before = line.Now();
    (void)HasMateWithin(line.Now(), 5);
    EXPECT_EQ(std::memcmp(&before, &line.Now(), sizeof before), 0);
    EXPECT_TRUE(context.m_bUnderPromotionEqual);
    EXPECT_EQ(context.m_nQuickerLevel, 1);
    EXPECT_EQ(context.m_nAdditionalMoves, 3);
    EXPECT_EQ(context.m_nQuickerSpare, 2);
    EXPECT_FALSE(context.m_bAdditionalMovesUsed);
    EXPECT_EQ(RepetitionMark(line.Now(), 5), 4711);
}

} // namespace
} // namespace quillon::test
