// What Black could do if the move were his.

#include "heuristics/black_mobility.h"

#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr int kPlies = 21;

TEST(BlackMobility, CountsTheMovesOfTheSideThatWaits) {
    EXPECT_EQ(CountBlackMoves(CSearchedPosition("k7/p7/8/8/8/8/8/K7", kPlies).Root()), 4);
    EXPECT_EQ(CountBlackMoves(CSearchedPosition("k7/p7/P7/8/8/8/8/K7", kPlies).Root()), 1) << "b7 is guarded";
    EXPECT_EQ(CountBlackMoves(CSearchedPosition("k7/8/1K6/8/8/8/8/8", 1).Root()), 1) << "with a single ply left too";
}

TEST(BlackMobility, AgreesWithTheRulesOfChess) {
    std::mt19937_64 rng(8);
    for (int i = 0; i < Samples(80); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 6);
        CSearchedPosition position(placement, kPlies);
        TChessboard& root = position.Root();
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(root, list);
        for (int n = 0; n < count; ++n) {
            TMove move = list[n];
            TChessboard* const child = CopyToChild(&root);
            if (MakeWhiteMove<kLegalityOnly>(*child, move) == 0)
                continue;
            TMove replies[kMaxMoves];
            int legal = 0;
            const int generated = GenerateBlackMoves(*child, replies);
            for (int r = 0; r < generated; ++r) {
                TMove reply = replies[r];
                legal += MakeBlackMove<kLegalityOnly>(*CopyToChild(child), reply, false) != kIllegalMove;
            }
            ASSERT_EQ(CountBlackMoves(*child), legal) << placement << ' ' << WriteTerseMove(list[n]);
        }
    }
}

TEST(BlackMobility, HasNoMovesWhileWhiteIsInCheck) {
    EXPECT_EQ(CountBlackMoves(CSearchedPosition("k7/8/8/8/8/8/8/K6r", kPlies).Root()), 0);
}

TEST(BlackMobility, TellsStalematePlay) {
    CSearchedPosition bare("k7/8/8/8/8/8/8/K7", kPlies);
    EXPECT_EQ(CountMobileBlackMen(bare.Root()), 0);
    EXPECT_TRUE(IsStalematePosition(bare.Root()));
    EXPECT_TRUE(IsStalemateTrap(bare.Root()));
    CSearchedPosition one("k7/p7/8/8/8/8/8/K7", kPlies);
    EXPECT_FALSE(IsStalematePosition(one.Root()));
    EXPECT_TRUE(IsStalemateTrap(one.Root()));
    CSearchedPosition two("k7/p6p/8/8/8/8/8/K7", kPlies);
    EXPECT_EQ(CountMobileBlackMen(two.Root()), 2);
    EXPECT_FALSE(IsStalemateTrap(two.Root()));
}

TEST(BlackMobility, ADefenceByChecksNeedsASafeSquare) {
    EXPECT_TRUE(DefendsByChecks(CSearchedPosition("8/k7/8/8/8/8/7r/1K6", kPlies).Root()));
    EXPECT_FALSE(DefendsByChecks(CSearchedPosition("8/k7/8/8/8/8/6Br/1K6", kPlies).Root())) << "h1 is guarded";
    EXPECT_FALSE(DefendsByChecks(CSearchedPosition("8/k7/8/8/8/8/7b/1K6", kPlies).Root())) << "the wrong colour";
    EXPECT_FALSE(DefendsByChecks(CSearchedPosition("8/k7/8/8/8/1p6/8/K7", kPlies).Root())) << "a pawn's check";
}

TEST(BlackMobility, WeighsWhatTheKingCanTake) {
    EXPECT_TRUE(IsBlackAheadAfterKingCapture(CSearchedPosition("k7/1R6/8/8/7p/8/8/K7", kPlies).Root()));
    EXPECT_FALSE(IsBlackAheadAfterKingCapture(CSearchedPosition("k7/1R6/8/8/8/8/8/K7", kPlies).Root())) << "equal";
    EXPECT_FALSE(IsBlackAheadAfterKingCapture(CSearchedPosition("k7/1R6/8/8/7p/8/8/KR6", kPlies).Root()))
        << "protected";
    EXPECT_FALSE(IsBlackAheadAfterKingCapture(CSearchedPosition("k7/8/8/8/7p/8/8/K7", kPlies).Root()))
        << "ahead, but nothing to take";
}

TEST(BlackMobility, TellsAKingBoundToPawns) {
    EXPECT_TRUE(TakesOnlyPawnsWithKing(CSearchedPosition("k7/P7/8/8/8/8/8/KR6", kPlies).Root()));
    EXPECT_FALSE(TakesOnlyPawnsWithKing(CSearchedPosition("k7/8/8/8/8/8/8/KR6", kPlies).Root()));
    EXPECT_FALSE(TakesOnlyPawnsWithKing(CSearchedPosition("k7/P7/1K6/8/8/8/8/1R6", kPlies).Root())) << "no move";
}

TEST(BlackMobility, TellsAPawnThatCanStep) {
    EXPECT_TRUE(HasMobileBlackPawn(CSearchedPosition("k7/p7/8/8/8/8/8/K7", kPlies).Root()));
    EXPECT_FALSE(HasMobileBlackPawn(CSearchedPosition("k7/p7/P7/8/8/8/8/K7", kPlies).Root()));
    EXPECT_FALSE(HasMobileBlackPawn(CSearchedPosition("k7/8/8/8/8/8/8/K7", kPlies).Root()));
}

} // namespace
} // namespace quillon::test
