#include "tempregister/register_item.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/random_positions.h"
#include "tempregister/numbered_boards.h"

namespace quillon::test {
namespace {

// Every code that a square of a searched position can hold, the pawn that may not advance included.
std::vector<TFigure> AllCodes() {
    std::vector<TFigure> codes(kCodes.begin(), kCodes.end());
    codes.push_back(kBlackPawn | kPawnMayNotAdvance);
    return codes;
}

TChessboardRegisterItem With(TSquare square, TFigure figure) {
    TChessboardRegisterItem item{};
    item.m_board[square] = figure;
    return item;
}

// Few men, so that words are often equal and the decision falls late.
TBoardBytes RandomBoard(std::mt19937_64& rng, int nMen) {
    TBoardBytes board{};
    for (int i = 0; i < nMen; ++i)
        board[reference::Draw(rng, board.size())] = kCodes[reference::Draw(rng, kCodes.size())];
    return board;
}

std::uint32_t HashByDefinition(const TBoardBytes& board) {
    std::uint32_t hash = 0;
    for (std::uint32_t i = 0; i < 64; ++i)
        hash += board[i] * (i + 1) * (i + 1);
    return hash;
}

} // namespace

TEST(RegisterItem, BlackComesBeforeEmptyBeforeWhiteOnTheHFile) {
    for (int rank = 0; rank < 8; ++rank) {
        const auto h = static_cast<TSquare>(rank * 8 + 7);
        for (const TFigure white : {kWhiteKing, kWhitePawn, kWhiteKnight})
            for (const TFigure black : {kBlackKing, kBlackPawn, kBlackKnight}) {
                EXPECT_LT(With(h, black), With(h, kNoFigure));
                EXPECT_LT(With(h, kNoFigure), With(h, white));
                EXPECT_LT(With(h, black), With(h, white));
            }
    }
}

TEST(RegisterItem, LowerRankDecidesFirstAndWithinARankTheHigherFile) {
    TChessboardRegisterItem low = With(kA1, kWhiteKing);
    low.m_board[kH8] = kBlackKnight;
    EXPECT_GT(low, With(kH8, kWhiteKnight));
    TChessboardRegisterItem high = With(kG1, kWhitePawn);
    EXPECT_GT(high, With(kF1, kWhiteKnight));
    EXPECT_GT(With(kG1, kBlackKing), With(kG1, kWhiteKnight)); // below the top byte a code is a plain number
}

TEST(RegisterItem, OrderIsTransitiveOverEveryTripleOfCodes) {
    const std::vector<TFigure> codes = AllCodes();
    for (const TSquare square : {kA1, kG1, kH1, kH8})
        for (const TFigure a : codes)
            for (const TFigure b : codes) {
                EXPECT_EQ(With(square, a) == With(square, b), a == b);
                EXPECT_NE(With(square, a) < With(square, b), With(square, a) >= With(square, b));
                for (const TFigure c : codes) {
                    const bool bChain = With(square, a) < With(square, b) && With(square, b) < With(square, c);
                    EXPECT_TRUE(!bChain || With(square, a) < With(square, c))
                        << int{a} << ' ' << int{b} << ' ' << int{c};
                }
            }
}

TEST(RegisterItem, OrderIsTheWrappedSignExceptForWhiteAgainstBlackOnTheHFile) {
    std::mt19937_64 rng(20);
    int opposed = 0;
    for (int i = 0; i < 20000; ++i) {
        const TBoardBytes a = RandomBoard(rng, 40);
        const TBoardBytes b = RandomBoard(rng, 40);
        if (a == b || BoardWord(a, 0) == BoardWord(b, 0))
            continue;
        const bool bWrapped = static_cast<std::int64_t>(BoardWord(a, 0) - BoardWord(b, 0)) < 0;
        const bool bOpposed = (IsWhite(a[kH1]) && IsBlack(b[kH1])) || (IsBlack(a[kH1]) && IsWhite(b[kH1]));
        opposed += bOpposed ? 1 : 0;
        EXPECT_EQ(CompareBoards(a, b) < 0, bWrapped != bOpposed);
    }
    EXPECT_GT(opposed, 100);
}

TEST(RegisterItem, SortedItemsAreAllFoundByBinarySearch) {
    std::mt19937_64 rng(21);
    std::vector<TChessboardRegisterItem> items;
    items.reserve(20000);
    for (int i = 0; i < 20000; ++i)
        items.push_back({RandomBoard(rng, 6)});
    std::vector<TChessboardRegisterItem> sorted = items;
    std::sort(sorted.begin(), sorted.end());
    for (const TChessboardRegisterItem& item : items)
        ASSERT_TRUE(std::binary_search(sorted.begin(), sorted.end(), item));
}

TEST(RegisterItem, OneSquareMakesTheDifference) {
    std::mt19937_64 rng(22);
    for (std::size_t square = 0; square < 64; ++square) {
        const TBoardBytes board = RandomBoard(rng, 30);
        TBoardBytes other = board;
        EXPECT_TRUE(SameBoard(board, other));
        EXPECT_EQ(CompareBoards(board, other), std::strong_ordering::equal);
        other[square] ^= kWhitePawn;
        EXPECT_FALSE(SameBoard(board, other));
        EXPECT_NE(CompareBoards(board, other), std::strong_ordering::equal);
    }
}

TEST(RegisterItem, HashIsTheWeightedSumOfTheCodes) {
    EXPECT_EQ(BoardHash(TBoardBytes{}), 0u);
    EXPECT_EQ(BoardHash(With(kA1, kWhiteKing).m_board), 65u);
    EXPECT_EQ(BoardHash(With(kH1, kBlackKnight).m_board), 144u * 64);
    EXPECT_EQ(BoardHash(With(kH8, kWhiteQueen).m_board), 76u * 4096);
    TBoardBytes full;
    full.fill(0xff);
    EXPECT_EQ(BoardHash(full), 255u * (64u * 65 * 129 / 6)); // the largest that bytes can give
    EXPECT_EQ(BoardHashPlain(full), BoardHash(full));
}

TEST(RegisterItem, FastHashEqualsThePlainOne) {
    std::mt19937_64 rng(23);
    for (int i = 0; i < 20000; ++i) {
        TBoardBytes board;
        for (TFigure& figure : board)
            figure = static_cast<TFigure>(reference::Draw(rng, 256));
        ASSERT_EQ(BoardHash(board), HashByDefinition(board));
        ASSERT_EQ(BoardHashPlain(board), HashByDefinition(board));
    }
}

} // namespace quillon::test
