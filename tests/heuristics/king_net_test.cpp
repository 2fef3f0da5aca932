#include "heuristics/king_net.h"

#include <gtest/gtest.h>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "heuristics/verified_position.h"

namespace quillon::test {
namespace {

bool TakesAway(std::string_view placement, int nLimit) {
    CMadeMove line(placement, 5);
    return CanTakeAwaySquares(line.After(), nLimit);
}

TEST(CanTakeAwaySquares, ByARookOnTheNextFile) {
    EXPECT_TRUE(TakesAway("8/7k/5K2/8/8/8/8/1R6", 2)) << "Rh1";
    EXPECT_TRUE(TakesAway("8/7k/5K2/8/8/8/8/1R6", 1)) << "Rh1+, and g8 alone is left";
    EXPECT_FALSE(TakesAway("8/7k/5K2/8/8/8/8/1R6", 0));
    EXPECT_FALSE(TakesAway("8/7k/5K2/8/8/8/8/1N6", 2));
}

TEST(CanTakeAwaySquares, TheFigureMustNotBeTaken) {
    EXPECT_TRUE(TakesAway("7k/8/8/8/8/8/8/K5R1", 1));
    EXPECT_FALSE(TakesAway("7k/8/8/8/8/8/1b6/K7", 2)) << "no figure";
    // The queen beside the king takes all his squares, but one of them is hers.
    EXPECT_TRUE(TakesAway("7k/8/5K2/8/8/8/8/6Q1", 0)) << "Qg7 is protected";
}

TEST(CanTakeAwaySquares, NotInCheck) { EXPECT_FALSE(TakesAway("8/7k/5K2/8/3b4/8/8/1R6", 2)); }

bool ForcedBack(std::string_view placement, std::string_view home) {
    CMadeMove line(placement, 5);
    return IsBlackKingForcedBack(line.After(), String2Square(home));
}

TEST(IsBlackKingForcedBack, HasNoOtherSquare) {
    EXPECT_TRUE(ForcedBack("1k6/8/2K5/1N6/8/7B/8/8", "a8"));
    EXPECT_FALSE(ForcedBack("1k6/8/2K5/1N6/8/7B/8/8", "c8"));
    EXPECT_FALSE(ForcedBack("3k4/8/8/8/8/8/8/K6N", "e8"));
}

TEST(IsBlackKingForcedBack, ByACheck) {
    EXPECT_TRUE(ForcedBack("5k2/8/4K3/8/8/8/8/7R", "g7")) << "Rh8+";
    EXPECT_FALSE(ForcedBack("5k2/8/4K3/8/8/8/8/7R", "e8"));
    EXPECT_FALSE(ForcedBack("5k2/8/4K3/8/8/8/8/7N", "g7"));
}

/// Against plain making of moves: on small boards the masks tell what the makers tell.
TEST(CanTakeAwaySquares, AgreesWithTheMakers) {
    std::mt19937_64 rng(9101);
    int yes = 0, no = 0;
    for (int i = 0; i < Samples(600); ++i) {
        const std::string placement = AnyPlacement(rng, i, 3 + i % 5);
        CMadeMove line(placement, 5);
        TChessboard& b = line.After();
        if (b.m_whiteChecker != kNoChecker)
            continue;
        const int limit = i % 4;
        bool bExpected = false;
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(b, list);
        for (int m = 0; m < count && !bExpected; ++m) {
            const TFigure kind = KindOf(b.m_board[list[m].m_nFrom]);
            if (kind == kKing || kind == kPawn)
                continue;
            TChessboard child = b;
            child.m_pPrevious = &b;
            if (MakeWhiteMove<kLegalityOnly>(child, list[m]) == 0)
                continue;
            const int file = FileOf(list[m].m_nTo), rank = RankOf(list[m].m_nTo);
            const bool bTaken =
                IsAttackedByBlackFigure(child, file, rank) ||
                (KingSteps(list[m].m_nTo, BlackKingSquare(child)) == 1 && !IsAttackedByWhite(child, file, rank));
            bExpected = !bTaken && CountBlackKingFreeSquares(child) <= limit;
        }
        EXPECT_EQ(CanTakeAwaySquares(b, limit), bExpected) << placement << ", limit " << limit;
        ++(bExpected ? yes : no);
    }
    EXPECT_GT(yes, 20);
    EXPECT_GT(no, 20);
}

} // namespace
} // namespace quillon::test
