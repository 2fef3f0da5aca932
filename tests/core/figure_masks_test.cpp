#include "core/figure_masks.h"

#include <gtest/gtest.h>

#include <random>

#include "core/mask_attacks.h"
#include "core/positions.h"

namespace quillon::test {
namespace {

using TBoard = std::array<TFigure, kSquares>;

TBoard RandomBytes(std::mt19937_64& rng) {
    TBoard board;
    for (TFigure& figure : board)
        figure = static_cast<TFigure>(reference::DrawInt(rng, 256));
    return board;
}

/// A random set of squares, of any density.
TMask RandomMask(std::mt19937_64& rng) {
    TMask mask = rng();
    for (int n = reference::DrawInt(rng, 4); n > 0; --n)
        mask &= rng();
    return mask;
}

template <int nBit> void ExpectPlane(const TBoard& board) {
    TMask expected = 0;
    for (int square = 0; square < kSquares; ++square)
        if (((board[static_cast<std::size_t>(square)] >> nBit) & 1) != 0)
            expected |= MaskOf(square);
    ASSERT_EQ(CBoardPlanes(board.data()).Plane<nBit>(), expected) << "bit " << nBit;
    ASSERT_EQ(BitPlanePortable(board.data(), nBit), expected) << "bit " << nBit;
}

TEST(Masks, SquaresAreCounted) {
    std::mt19937_64 rng(62);
    EXPECT_EQ(CountSquares(0), 0);
    EXPECT_EQ(CountSquares(~TMask{0}), 64);
    for (int i = 0; i < 5000; ++i) {
        const TMask mask = RandomMask(rng);
        int expected = 0;
        for (int square = 0; square < kSquares; ++square)
            expected += (mask & MaskOf(square)) != 0;
        ASSERT_EQ(CountSquares(mask), expected) << mask;
    }
}

TEST(BoardPlanes, BothFormsAreTheSquaresWithTheBit) {
    std::mt19937_64 rng(61);
    for (int round = 0; round < 2000; ++round) {
        const TBoard board = RandomBytes(rng);
        ExpectPlane<0>(board);
        ExpectPlane<1>(board);
        ExpectPlane<2>(board);
        ExpectPlane<3>(board);
        ExpectPlane<4>(board);
        ExpectPlane<5>(board);
        ExpectPlane<6>(board);
        ExpectPlane<7>(board);
    }
}

TEST(BoardPlanes, ColoursArePlanesOfTheBoard) {
    std::mt19937_64 rng(62);
    for (int round = 0; round < 500; ++round) {
        const TBoard board = RandomBytes(rng);
        ASSERT_EQ(WhiteFigures(board.data()), BitPlanePortable(board.data(), 6));
        ASSERT_EQ(BlackFigures(board.data()), BitPlanePortable(board.data(), 7));
    }
}

TEST(FigureMasks, HoldTheFiguresOfThePosition) {
    CLine line("r2k4/1p2q3/8/2b5/4N3/5P2/1B6/R2QK3 w");
    const TFigureMasks masks = TakeMasks(line.Root());
    const auto maskOf = [](std::string_view squares) {
        TMask mask = 0;
        for (const std::string& square : Words(squares))
            mask |= MaskOf(SquareOf(square));
        return mask;
    };
    EXPECT_EQ(masks.m_white, maskOf("a1 d1 e1 b2 f3 e4"));
    EXPECT_EQ(masks.m_black, maskOf("a8 d8 b7 e7 c5"));
    EXPECT_EQ(masks.m_pawns, maskOf("f3 b7"));
    EXPECT_EQ(masks.m_knights, maskOf("e4"));
    EXPECT_EQ(masks.m_diagonalSliders, maskOf("b2 d1 c5 e7"));
    EXPECT_EQ(masks.m_straightSliders, maskOf("a1 d1 a8 e7"));
    EXPECT_EQ(masks.m_nWhiteKing, kE1);
    EXPECT_EQ(masks.m_nBlackKing, kD8);
    EXPECT_EQ(masks.Occupied(), masks.m_white | masks.m_black);
}

TEST(FigureMasks, TakingSquaresEmptiesAMaskFromBelow) {
    TMask mask = MaskOf(3) | MaskOf(17) | MaskOf(63);
    EXPECT_EQ(LowestSquare(mask), 3);
    EXPECT_EQ(TakeSquare(mask), 3);
    EXPECT_EQ(TakeSquare(mask), 17);
    EXPECT_EQ(TakeSquare(mask), 63);
    EXPECT_EQ(mask, 0u);
}

/// Squares seen from a square by steps of (files, ranks): one step, or on until something stands in the way.
TMask Walked(int square, const std::vector<std::pair<int, int>>& steps, TMask occupied, bool bSlides) {
    TMask mask = 0;
    for (const auto& [files, ranks] : steps) {
        int file = FileOf(square) + files, rank = RankOf(square) + ranks;
        while (IsOnBoard(file, rank)) {
            mask |= MaskOf(SquareAt(file, rank));
            if (!bSlides || (occupied & MaskOf(SquareAt(file, rank))) != 0)
                break;
            file += files;
            rank += ranks;
        }
    }
    return mask;
}

const std::vector<std::pair<int, int>> kStraight{{0, 1}, {0, -1}, {1, 0}, {-1, 0}};
const std::vector<std::pair<int, int>> kDiagonal{{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
const std::vector<std::pair<int, int>> kAllRound{{0, 1}, {0, -1}, {1, 0}, {-1, 0}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
const std::vector<std::pair<int, int>> kKnightSteps8{{1, 2},   {2, 1},   {2, -1}, {1, -2},
                                                     {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};

TEST(MaskAttacks, SlidersSeeWhatAWalkAlongTheRaysSees) {
    std::mt19937_64 rng(63);
    for (int round = 0; round < 3000; ++round) {
        const TMask occupied = RandomMask(rng);
        for (int square = 0; square < kSquares; ++square) {
            ASSERT_EQ(RookAttacks(square, occupied), Walked(square, kStraight, occupied, true));
            ASSERT_EQ(BishopAttacks(square, occupied), Walked(square, kDiagonal, occupied, true));
        }
    }
}

TEST(MaskAttacks, SlidersDoNotMindTheirOwnSquare) {
    std::mt19937_64 rng(64);
    for (int round = 0; round < 200; ++round) {
        const TMask occupied = RandomMask(rng);
        for (int square = 0; square < kSquares; ++square) {
            ASSERT_EQ(RookAttacks(square, occupied | MaskOf(square)), RookAttacks(square, occupied & ~MaskOf(square)));
            ASSERT_EQ(BishopAttacks(square, occupied | MaskOf(square)),
                      BishopAttacks(square, occupied & ~MaskOf(square)));
        }
    }
}

TEST(MaskAttacks, KingsKnightsAndPawnsStep) {
    for (int square = 0; square < kSquares; ++square) {
        EXPECT_EQ(KingAttacks(square), Walked(square, kAllRound, 0, false));
        EXPECT_EQ(KnightAttacks(square), Walked(square, kKnightSteps8, 0, false));
        EXPECT_EQ(WhitePawnAttacks(MaskOf(square)), Walked(square, {{-1, 1}, {1, 1}}, 0, false));
        EXPECT_EQ(BlackPawnAttacks(MaskOf(square)), Walked(square, {{-1, -1}, {1, -1}}, 0, false));
    }
}

TEST(MaskAttacks, PawnsOfASetAttackTogether) {
    std::mt19937_64 rng(65);
    for (int round = 0; round < 500; ++round) {
        const TMask pawns = RandomMask(rng);
        TMask white = 0, black = 0;
        for (TMask rest = pawns; rest != 0;) {
            const TMask pawn = MaskOf(TakeSquare(rest));
            white |= WhitePawnAttacks(pawn);
            black |= BlackPawnAttacks(pawn);
        }
        ASSERT_EQ(WhitePawnAttacks(pawns), white);
        ASSERT_EQ(BlackPawnAttacks(pawns), black);
    }
}

TEST(MaskAttacks, SquaresBetweenLieOnTheCommonLine) {
    for (int a = 0; a < kSquares; ++a)
        for (int b = 0; b < kSquares; ++b) {
            const int files = FileOf(b) - FileOf(a), ranks = RankOf(b) - RankOf(a);
            TMask expected = 0;
            if (files == 0 || ranks == 0 || AbsDiff(files, 0) == AbsDiff(ranks, 0)) {
                const int n = KingSteps(a, b);
                for (int i = 1; i < n; ++i)
                    expected |= MaskOf(SquareAt(FileOf(a) + files / n * i, RankOf(a) + ranks / n * i));
            }
            ASSERT_EQ(SquaresBetween(a, b), expected) << a << ' ' << b;
        }
}

} // namespace
} // namespace quillon::test
