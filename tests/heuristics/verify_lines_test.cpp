// Rules about lines of the board, and about squares of one colour.

#include <gtest/gtest.h>

#include "heuristics/verified_position.h"
#include "heuristics/verify_lines.h"

namespace quillon::test {
namespace {

// ---- key line, key diagonal

TEST(KeyLine, MovesAlongTheFileAreDoubtful) {
    CMadeMove along("k7/8/8/4r3/8/8/8/K6N", 9, "Ka1-b1 Re5-e7");
    EXPECT_FALSE(along.Doubts(SH_KEYLINE)) << "no file was named";
    along.Analysis().m_nKeyLine = 4;
    EXPECT_TRUE(along.Doubts(SH_KEYLINE));
    along.Analysis().m_nKeyLine = 3;
    EXPECT_FALSE(along.Doubts(SH_KEYLINE));
}

TEST(KeyLine, OtherMovesAreNot) {
    CMadeMove off("k7/8/8/4r3/8/8/8/K6N", 9, "Ka1-b1 Re5-h5");
    off.Analysis().m_nKeyLine = 4;
    EXPECT_FALSE(off.Doubts(SH_KEYLINE));
    CMadeMove king("8/8/8/4k3/8/8/8/K6N", 9, "Ka1-b1 Ke5-e6");
    king.Analysis().m_nKeyLine = 4;
    EXPECT_FALSE(king.Doubts(SH_KEYLINE));
}

TEST(KeyDiagonal, MovesAlongItAreDoubtful) {
    CMadeMove along("7k/1b6/8/8/8/8/8/K5N1", 9, "Ka1-b1 Bb7-d5");
    EXPECT_FALSE(along.Doubts(SH_KEYDIAGONAL)) << "no diagonal was named";
    along.Analysis().m_wKeyDiagonal = 56 | 7 << 8; // a8-h1
    EXPECT_TRUE(along.Doubts(SH_KEYDIAGONAL));
    CMadeMove off("7k/1b6/8/8/8/8/8/K5N1", 9, "Ka1-b1 Bb7-a6");
    off.Analysis().m_wKeyDiagonal = 56 | 7 << 8;
    EXPECT_FALSE(off.Doubts(SH_KEYDIAGONAL));
}

TEST(KeyDiagonal, EndsWhereItWasSaidToEnd) {
    const std::uint16_t diagonal = static_cast<std::uint16_t>(String2Square("b7") | String2Square("d5") << 8);
    for (const char* inside : {"b7", "c6", "d5"})
        EXPECT_TRUE(IsOnKeyDiagonal(diagonal, String2Square(inside))) << inside;
    for (const char* outside : {"a8", "e4", "b6", "c5", "h7"})
        EXPECT_FALSE(IsOnKeyDiagonal(diagonal, String2Square(outside))) << outside;
    EXPECT_FALSE(IsOnKeyDiagonal(kNoKeyDiagonal, 63));
}

// ---- main diagonal

constexpr std::uint32_t kDiagonalAndEdge = SH_DONTLEAVEMAINDIAGONAL | SH_KEEPKINGONTHEEDGE;

CMadeMove& Named(CMadeMove& line, std::string_view square) {
    line.Context().m_nBlackFigureOnMainDiagonal = String2Square(square);
    return line;
}

TEST(MainDiagonal, TheNamedFigureMayNotLeaveIt) {
    CMadeMove line("7k/6n1/8/8/8/8/8/K6N", 7, "Ka1-b1 Ng7-f5");
    EXPECT_FALSE(line.Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL)) << "none was named";
    EXPECT_TRUE(Named(line, "g7").Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL));
    line.Context().m_bDontLetKingMove = false;
    EXPECT_FALSE(line.Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL)) << "only beside the strict edge";
}

TEST(MainDiagonal, OtherFiguresAndMovesOnItAreFree) {
    CMadeMove other("7k/6n1/8/8/8/8/8/K5nN", 7, "Ka1-b1 Ng1-f3");
    EXPECT_FALSE(Named(other, "g7").Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL));
    CMadeMove onIt("7k/6b1/8/8/8/8/8/1K5N", 9, "Kb1-c1 Bg7-e5");
    EXPECT_FALSE(Named(onIt, "g7").Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL));
    onIt.Play("Kc1-b1 Be5-c7");
    EXPECT_TRUE(onIt.Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL)) << "it has gone later";
}

TEST(MainDiagonal, DefendedItTakesPartInTheDefence) {
    CMadeMove line("7k/6n1/6p1/8/8/8/8/K6N", 7, "Ka1-b1 Ng7-f5");
    EXPECT_FALSE(Named(line, "g7").Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL));
}

TEST(MainDiagonal, AMateInTwoIsTheException) {
    CMadeMove line("7k/8/R7/2R4K/8/8/1n6/8", 7, "Kh5-h4 Nb2-d1");
    EXPECT_FALSE(Named(line, "b2").Doubts(kDiagonalAndEdge, SH_DONTLEAVEMAINDIAGONAL)) << "Ra7 and Rc8";
}

// ---- sea snake

TEST(SeaSnake, AQueenOutOfReachIsDoubtful) {
    CMadeMove line("7k/8/8/8/1q6/8/8/K6N", 9, "Ka1-a2 Qb4-c5");
    EXPECT_TRUE(line.Doubts(SH_SEASNAKE));
    EXPECT_NE(line.Move().m_nPromotion & kMoveMark, 0);
    CMadeMove attacked("7k/8/8/8/1q6/8/8/K1R5", 9, "Ka1-a2 Qb4-c5");
    EXPECT_FALSE(attacked.Doubts(SH_SEASNAKE));
    EXPECT_EQ(attacked.Move().m_nPromotion & kMoveMark, 0);
    CMadeMove king("7k/8/8/8/1q6/8/8/K6N", 9, "Ka1-a2 Kh8-g8");
    EXPECT_FALSE(king.Doubts(SH_SEASNAKE));
}

TEST(SeaSnake, MayApplyOnlyAfterSomeMoves) {
    CMadeMove line("7k/8/8/8/1q6/8/8/K6N", 9, "Ka1-a2 Qb4-c5");
    line.Analysis().m_seaSnakeAfterMoves = {ParseMove("Nh1-g3", true)};
    EXPECT_FALSE(line.Doubts(SH_SEASNAKE));
    line.Analysis().m_seaSnakeAfterMoves.push_back(ParseMove("Ka1-a2", true));
    EXPECT_TRUE(line.Doubts(SH_SEASNAKE));
}

TEST(SeaSnake, IsNotAskedInsideAShortMateSearch) {
    CMadeMove line("7k/8/8/8/1q6/8/8/K6N", 9, "Ka1-a2 Qb4-c5");
    line.Context().m_nQuickerLevel = 1;
    EXPECT_FALSE(line.Doubts(SH_SEASNAKE));
}

TEST(SeaSnake, MateOnTheMoveIsTheException) {
    CMadeMove line("7k/8/8/8/1q6/8/4R3/3R2K1", 9, "Re2-e7 Qb4-b2");
    EXPECT_FALSE(line.Doubts(SH_SEASNAKE)) << "Rd8 mates";
}

// ---- sweeping rook: the promoted bishop

TEST(PromotedBishop, OnTheSquaresItsKingDoesNotStandOn) {
    CMadeMove other("8/7K/8/8/4k3/8/p7/8", 11, "Kh7-h6 a2-a1B Kh6-h5 Ba1-c3");
    EXPECT_TRUE(other.Doubts(SH_SWEEPINGWHITEROOK));
    CMadeMove same("8/7K/8/4k3/8/8/p7/8", 11, "Kh7-h6 a2-a1B Kh6-h5 Ba1-c3");
    EXPECT_FALSE(same.Doubts(SH_SWEEPINGWHITEROOK));
    CMadeMove original("8/7K/8/8/4k3/8/p7/6b1", 11, "Kh7-h6 a2-a1N Kh6-h5 Bg1-e3");
    EXPECT_FALSE(original.Doubts(SH_SWEEPINGWHITEROOK));
}

TEST(PromotedBishop, MateOnTheMoveIsTheException) {
    CMadeMove mate("8/1R6/8/8/8/8/p4K2/7k", 11, "Rb7-c7 a2-a1B Rc7-b7 Ba1-c3");
    EXPECT_FALSE(mate.Doubts(SH_SWEEPINGWHITEROOK)) << "Rh7 mates";
    CMadeMove none("8/1N6/8/8/8/8/p4K2/7k", 11, "Nb7-d6 a2-a1B Nd6-b7 Ba1-c3");
    EXPECT_TRUE(none.Doubts(SH_SWEEPINGWHITEROOK));
}

// ---- play on one colour

CMadeMove& WithoutBishop(CMadeMove& line, int mode) {
    line.After().m_bySideState = static_cast<std::uint8_t>((line.After().m_bySideState & ~kBishopModeMask) | mode);
    return line;
}

TEST(OneColourPlay, WhereWhiteCannotCheckIsDoubtful) {
    CMadeMove line("8/k1K5/8/8/8/8/8/4B3", 9, "Be1-f2 Ka7-a8");
    EXPECT_FALSE(line.Doubts(SH_ONECOLORPLAYPOSSIBLE)) << "no bishop was taken off";
    EXPECT_TRUE(WithoutBishop(line, 1).Doubts(SH_ONECOLORPLAYPOSSIBLE)) << "light a8, and nowhere else to go";
    EXPECT_FALSE(WithoutBishop(line, 2).Doubts(SH_ONECOLORPLAYPOSSIBLE)) << "play on the light squares";
    EXPECT_FALSE(WithoutBishop(line, 3).Doubts(SH_ONECOLORPLAYPOSSIBLE)) << "the bishop is on the board";
}

TEST(CanCheckFromColour, BishopsAndPawnsOnTheirOwnKnightsOnTheOther) {
    constexpr int kDark = 0, kLight = 1;
    CMadeMove bishop("7k/8/8/8/8/8/8/K1B5", 5), knight("7k/8/8/8/8/8/8/K1N5", 5), rook("7k/8/8/8/8/8/8/K1R5", 5),
        pawn("7k/8/8/8/8/8/2P5/K7", 5), none("7k/8/8/8/8/8/8/K7", 5);
    const TSquare dark = String2Square("h8"), light = String2Square("g8");
    EXPECT_TRUE(CanCheckFromColour(bishop.After(), kDark, dark));
    EXPECT_FALSE(CanCheckFromColour(bishop.After(), kDark, light));
    EXPECT_TRUE(CanCheckFromColour(pawn.After(), kLight, light));
    EXPECT_FALSE(CanCheckFromColour(pawn.After(), kLight, dark));
    EXPECT_TRUE(CanCheckFromColour(knight.After(), kDark, light));
    EXPECT_FALSE(CanCheckFromColour(knight.After(), kDark, dark));
    EXPECT_TRUE(CanCheckFromColour(rook.After(), kDark, light));
    EXPECT_FALSE(CanCheckFromColour(none.After(), kDark, dark));
}

} // namespace
} // namespace quillon::test
