#include "core/mate_test.h"

#include <gtest/gtest.h>

#include <bit>

#include "core/attacks.h"
#include "core/positions.h"

namespace quillon::test {
namespace {

int DoubleStepOf(const reference::Position& truth) {
    return truth.enPassant == reference::kNoSquare ? kNoDoubleStep : truth.enPassant + 8;
}

bool IsMated(std::string_view fen) { return IsBlackMated(TakeMasks(CLine(fen).Root()), kNoDoubleStep); }

TEST(MateTest, BlackInCheckHasAnEvasionExactlyWhenTheReferenceHasAMove) {
    int nChecks = 0, nMates = 0;
    WalkRandomGames<kLegalityOnly>(31, 1500, 40, [&](CLine& line, const reference::Position& truth) {
        if (truth.toMove != reference::Side::White)
            return;
        for (const reference::Move move : reference::LegalMoves(truth)) {
            const reference::Position after = reference::Play(truth, move);
            const bool bMate = reference::IsMate(after);
            ASSERT_NE(line.Try<kLegalityOnly>(TextOf(move)), 0);
            const TFigureMasks masks = TakeMasks(line.Tried());
            ASSERT_EQ(IsBlackMated(masks, DoubleStepOf(after)), bMate) << TextOf(move);
            if (!reference::InCheck(after))
                continue;
            ASSERT_EQ(HasBlackEvasion(line.Tried()), !bMate) << TextOf(move);
            ++nChecks;
            nMates += bMate ? 1 : 0;
        }
    });
    EXPECT_GT(nChecks, 20000);
    EXPECT_GT(nMates, 1000);
}

TEST(MateTest, MatesAreFoundInMatingDiagrams) {
    std::mt19937_64 rng(32);
    int nMates = 0;
    for (int round = 0; round < 3000; ++round) {
        const std::string placement = reference::RandomMatingPlacement(rng, 4 + round % 9);
        const reference::Position truth = reference::ProblemFromFen(placement);
        CLine line(placement);
        for (const reference::Move move : reference::LegalMoves(truth)) {
            const bool bMate = reference::IsMate(reference::Play(truth, move));
            ASSERT_NE(line.Try<kLegalityOnly>(TextOf(move)), 0);
            if (line.Tried().m_blackChecker != kNoChecker) {
                ASSERT_EQ(HasBlackEvasion(line.Tried()), !bMate) << placement << ' ' << TextOf(move);
            }
            nMates += bMate ? 1 : 0;
        }
    }
    EXPECT_GT(nMates, 500);
}

TEST(MateTest, CheckersAndAttackedSquaresAreThoseOfTheReference) {
    WalkRandomGames<kLegalityOnly>(33, 400, 40, [&](CLine& line, const reference::Position& truth) {
        const TFigureMasks masks = TakeMasks(line.Now());
        const TMask attacks = WhiteAttacks(masks, masks.Occupied());
        for (int square = 0; square < kSquares; ++square)
            ASSERT_EQ((attacks & MaskOf(square)) != 0,
                      reference::CountAttackers(truth, square, reference::Side::White, 1) > 0)
                << TextOf(static_cast<TSquare>(square));
        const int blackKing = reference::KingSquare(truth, reference::Side::Black);
        ASSERT_EQ(std::popcount(WhiteCheckers(masks)),
                  reference::CountAttackers(truth, blackKing, reference::Side::White));
        ASSERT_EQ(IsWhiteKingAttacked(masks), reference::InCheck(truth, reference::Side::White));
    });
}

TEST(MateTest, AttacksLookThroughALiftedKing) {
    CLine line("8/8/8/8/R3k3/8/8/K7 b");
    const TFigureMasks masks = TakeMasks(line.Root());
    EXPECT_EQ(WhiteAttacks(masks, masks.Occupied()) & MaskOf(SquareOf("f4")), 0u);
    EXPECT_NE(WhiteAttacks(masks, masks.Occupied() & ~MaskOf(SquareOf("e4"))) & MaskOf(SquareOf("f4")), 0u);
}

TEST(MateTest, OwnFiguresOfTheAttackerAreGuarded) {
    EXPECT_TRUE(IsMated("k7/1Q6/2K5/8/8/8/8/8 b"));
    EXPECT_FALSE(IsMated("k7/1Q6/8/3K4/8/8/8/8 b"));
}

TEST(MateTest, DoubleCheckLeavesOnlyTheKing) {
    // Knight f6 and rook e1 both give check. The rook g6 could take the knight, the bishop h4 as well.
    EXPECT_TRUE(IsMated("3rkr2/3p1p2/5Nr1/8/7b/8/8/K3R3 b"));
    EXPECT_FALSE(IsMated("3rkr2/3p1p2/5Nr1/8/7b/8/8/KR6 b"));
}

TEST(MateTest, PinnedFigureDoesNotHelp) {
    // The knight c6 could step between king and rook, if the bishop a4 did not pin it.
    EXPECT_FALSE(IsMated("3rkr2/5p2/1Nn5/8/8/1B6/8/K3R3 b"));
    EXPECT_TRUE(IsMated("3rkr2/5p2/1Nn5/8/B7/8/8/K3R3 b"));
}

TEST(MateTest, PawnsHelpByStepAndDoubleStep) {
    EXPECT_TRUE(IsMated("7k/7p/8/8/8/8/8/B5RK b"));
    EXPECT_FALSE(IsMated("7k/5p1p/8/8/8/8/8/B5RK b"));  // f7-f6
    EXPECT_FALSE(IsMated("7k/4p2p/8/8/8/8/8/B5RK b"));  // e7-e5
    EXPECT_TRUE(IsMated("7k/4p2p/4N3/8/8/8/8/B5RK b")); // the way of the double step is closed
}

TEST(MateTest, PawnsTakeTheChecker) {
    EXPECT_TRUE(IsMated("8/8/8/k7/1Q6/K7/8/5B2 b"));
    EXPECT_FALSE(IsMated("8/8/8/k1p5/1Q6/K7/8/5B2 b"));
}

TEST(MateTest, EnPassantMayBeTheOnlyDefence) {
    CLine line("1R6/8/8/k7/p7/2K5/1P6/5B2 w");
    line.Play("b2b4");
    ASSERT_EQ(line.Now().m_blackChecker, SquareOf("b4"));
    EXPECT_TRUE(HasBlackEvasion(line.Now()));
    EXPECT_FALSE(IsBlackMated(TakeMasks(line.Now()), SquareOf("b4")));
    EXPECT_TRUE(IsBlackMated(TakeMasks(line.Now()), kNoDoubleStep));
    EXPECT_EQ(line.StandingMoves(), TTexts{"a4b3"});
}

TEST(MateTest, EnPassantByAPinnedPawnIsNoDefence) {
    CLine line("1R6/8/8/k7/p7/2K5/1P6/R4B2 w");
    line.Play("b2b4");
    EXPECT_FALSE(HasBlackEvasion(line.Now()));
    EXPECT_EQ(line.StandingMoves(), TTexts{});
}

TEST(MateTest, PositionWithTheSamePawnButWithoutTheDoubleStepIsMate) {
    // The root has no history, so the pawn b4 cannot be taken in passing.
    CLine root("1R6/8/8/k7/pP6/2K5/8/5B2 b");
    EXPECT_FALSE(HasBlackEvasion(root.Now()));
}

} // namespace
} // namespace quillon::test
