#include "core/board_transform.h"

#include <gtest/gtest.h>
#include <random>

#include "core/fen.h"
#include "core/notation.h"

namespace quillon {
namespace {

TChessboard RandomBoard(std::mt19937& random) {
    constexpr TFigure kinds[] = {kKing, kPawn, kBishop, kRook, kQueen, kKnight};
    TChessboard b = EmptyChessboard();
    for (TFigure& figure : b.m_board)
        if (random() % 2 == 0)
            figure = static_cast<TFigure>(kinds[random() % 6] | (random() % 2 == 0 ? kWhite : kBlack));
    return b;
}

TEST(SwapColours, FiguresGoToTheOtherSideAndChangeColour) {
    TChessboard b = ChessboardFromFEN("1K1R4/Bp1Np2B/4p3/2pkN2p/1q1p4/1r1p3n/2P2Pn1/b2R4");
    SwapColours(b);
    EXPECT_EQ(WriteFEN(b, false), "B2r4/2p2pN1/1R1P3N/1Q1P4/2PKn2P/4P3/bP1nP2b/1k1r4");
}

TEST(SwapColours, MarkOfAPawnStays) {
    TChessboard b = EmptyChessboard();
    b.m_board[String2Square("b7")] = kBlackPawn | kPawnMayNotAdvance;
    SwapColours(b);
    EXPECT_EQ(b.m_board[String2Square("b2")], kWhitePawn | kPawnMayNotAdvance);
    EXPECT_EQ(b.m_board[String2Square("b7")], kNoFigure);
}

TEST(SwapColours, TwiceRestoresRandomBoards) {
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        const TChessboard before = RandomBoard(random);
        TChessboard b = before;
        SwapColours(b);
        ASSERT_NE(b.m_board, before.m_board);
        for (int square = 0; square < kSquares; ++square) {
            const TFigure figure = before.m_board[static_cast<TSquare>(square)];
            const TFigure swapped = b.m_board[SquareAt(FileOf(square), 7 - RankOf(square))];
            ASSERT_EQ(KindOf(swapped), KindOf(figure));
            ASSERT_EQ(IsWhite(swapped), IsBlack(figure));
            ASSERT_EQ(IsBlack(swapped), IsWhite(figure));
        }
        SwapColours(b);
        ASSERT_EQ(b.m_board, before.m_board);
    }
}

TEST(SwapColours, OtherFieldsAreLeftToTheCaller) {
    TChessboard b = ChessboardFromFEN("4k3/8/8/8/8/8/8/RQ2K3");
    SwapColours(b);
    EXPECT_EQ(b.m_whiteRooks, 1);
    RecountFigures(b, true);
    EXPECT_EQ(b.m_whiteRooks, 0);
    EXPECT_EQ(b.m_blackRooks, 1);
}

TEST(SwapColours, PrefixOfTheDescription) { EXPECT_EQ(kSwappedColoursPrefix, "B&Wh.swapped: "); }

TEST(Rotate90, FileBecomesRank) {
    // a1 goes to a8, a8 to h8, h8 to h1 and h1 to a1; (file, rank) of c2 is (2, 1), so it goes to (1, 5).
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, "r6q/8/8/8/8/8/2N5/K6b"));
    Rotate90(b);
    EXPECT_EQ(b.m_board[kA8], kWhiteKing);
    EXPECT_EQ(b.m_board[kH8], kBlackRook);
    EXPECT_EQ(b.m_board[kH1], kBlackQueen);
    EXPECT_EQ(b.m_board[kA1], kBlackBishop);
    EXPECT_EQ(b.m_board[String2Square("b6")], kWhiteKnight);
    EXPECT_EQ(WriteFEN(b, false), "K6r/8/1N6/8/8/8/8/b6q");
}

TEST(Rotate90, FourTurnsRestoreRandomBoards) {
    std::mt19937 random(2);
    for (int i = 0; i < 2000; ++i) {
        const TChessboard before = RandomBoard(random);
        TChessboard b = before;
        for (int turn = 0; turn < 4; ++turn) {
            Rotate90(b);
            if (turn == 1) {
                for (std::size_t square = 0; square < kSquares; ++square)
                    ASSERT_EQ(b.m_board[63 - square], before.m_board[square]) << "two turns are half a circle";
            }
        }
        ASSERT_EQ(b.m_board, before.m_board);
    }
}

TEST(RotatedDescription, TurnsAccumulate) {
    const std::string once = RotatedDescription("1st prize");
    EXPECT_EQ(once, "Rotated 90\xC2\xB0: 1st prize");
    const std::string twice = RotatedDescription(once);
    EXPECT_EQ(twice, "Rotated 180\xC2\xB0: 1st prize");
    const std::string thrice = RotatedDescription(twice);
    EXPECT_EQ(thrice, "Rotated 270\xC2\xB0: 1st prize");
    EXPECT_EQ(RotatedDescription(thrice), "1st prize");
}

TEST(RotatedDescription, EmptyDescription) {
    EXPECT_EQ(RotatedDescription(""), "Rotated 90\xC2\xB0: ");
    EXPECT_EQ(RotatedDescription("Rotated 270\xC2\xB0: "), "");
}

TEST(RotatedDescription, OnlyAWholePrefixAtTheFrontCounts) {
    EXPECT_EQ(RotatedDescription("Rotated 90: X"), "Rotated 90\xC2\xB0: Rotated 90: X");
    EXPECT_EQ(RotatedDescription("B&Wh.swapped: Rotated 90\xC2\xB0: X"),
              "Rotated 90\xC2\xB0: B&Wh.swapped: Rotated 90\xC2\xB0: X");
}

} // namespace
} // namespace quillon
