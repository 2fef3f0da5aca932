#include "globalregister/position_indexing.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "indexing_reference.h"
#include "indexing_walk.h"
#include "support/random_positions.h"

namespace quillon {
namespace {

namespace ref = indexing_reference;

ref::TBoardText RandomBoard(std::mt19937_64& rng, std::string_view type) {
    ref::TBoardText board(64, '.');
    const auto put = [&](char man) {
        for (;;) {
            const std::size_t square = reference::Draw(rng, 64);
            if (board[square] == '.' && (!ref::IsPawn(man) || (square >= 8 && square < 56))) {
                board[square] = man;
                return;
            }
        }
    };
    put('K');
    put('k');
    for (const char letter : type)
        put(letter);
    return board;
}

bool AreKingsApart(const ref::TBoardText& board) {
    const int white = static_cast<int>(board.find('K')), black = static_cast<int>(board.find('k'));
    return std::max(std::abs(white % 8 - black % 8), std::abs(white / 8 - black / 8)) > 1;
}

// Board to index as the reference has it, and back to the folded board.
void CheckBoard(const TPositionIndexing& indexing, const ref::TBoardText& board) {
    TChessboard b = EmptyChessboard();
    ref::SetBoard(b, board);
    const std::uint64_t index = indexing.GetIndex(b);
    ASSERT_EQ(index, ref::Index(indexing.typeName, board, indexing.bUseCombinations)) << indexing.typeName << board;
    ASSERT_LT(index, indexing.GetSize()) << indexing.typeName << board;
    TChessboard back = EmptyChessboard();
    ASSERT_EQ(indexing.GetPositionByIndex(index, back), AreKingsApart(board)) << indexing.typeName << board;
    if (AreKingsApart(board)) {
        ASSERT_EQ(ref::TextOf(back), ref::Folded(board, ref::HasPawns(indexing.typeName)));
        ASSERT_EQ(ref::TextOf(back)[WhiteKingSquare(back)], 'K');
        ASSERT_EQ(ref::TextOf(back)[BlackKingSquare(back)], 'k');
    }
}

std::uint64_t IndexOf(const char* type, const char* fen) {
    return TPositionIndexing(type).GetIndex(ChessboardFromFEN(fen));
}

TEST(PositionIndexing, SizesAreTold) {
    EXPECT_EQ(TPositionIndexing("").GetSize(), 640u);
    EXPECT_EQ(TPositionIndexing("Q").GetSize(), 40960u);
    EXPECT_EQ(TPositionIndexing("QQ").GetSize(), 2621440u);
    EXPECT_EQ(TPositionIndexing("P").GetSize(), 98304u);
    EXPECT_EQ(TPositionIndexing("Pp").GetSize(), 32u * 64 * 48 * 48);
    TPositionIndexing old("Pp");
    old.bPawnRanks48 = false;
    EXPECT_EQ(old.GetSize(), 32u * 64 * 64 * 64) << "files of the first form count all squares";
    EXPECT_EQ(TPositionIndexing("QX").GetSize(), (32u * 64 * 64 * 64) >> 3);
}

TEST(PositionIndexing, SizesWithCombinations) {
    TPositionIndexing queens("QQrr");
    ASSERT_TRUE(queens.SetupCombinations());
    EXPECT_EQ(queens.GetSize(), 640u * 2016 * 2016);
    TPositionIndexing pawns("QPPPp");
    ASSERT_TRUE(pawns.SetupCombinations());
    EXPECT_EQ(pawns.GetSize(), 32ull * 64 * 64 * 17296 * 48);
    TPositionIndexing knights("NNNNN");
    ASSERT_TRUE(knights.SetupCombinations());
    EXPECT_EQ(knights.GetSize(), 640ull * 7624512);
    EXPECT_EQ(knights.groupSizes[0], 5);
    EXPECT_EQ(knights.groupCounts[0], 7624512u);
}

TEST(PositionIndexing, CombinationsAreForSixAndSevenMen) {
    TPositionIndexing five("QQr");
    EXPECT_FALSE(five.SetupCombinations());
    EXPECT_FALSE(five.bUseCombinations);
    TPositionIndexing six("QQrr");
    EXPECT_TRUE(six.SetupCombinations());
    EXPECT_TRUE(six.bUseCombinations);
    EXPECT_EQ(six.mappings[1], nullptr) << "only the head of a group has one";
    TPositionIndexing custom("KQQQQk+pa2");
    EXPECT_FALSE(custom.SetupCombinations());
}

TEST(PositionIndexing, Strides) {
    EXPECT_EQ(TPositionIndexing("QRr").strides, (std::array<std::uint64_t, 7>{640ull * 64 * 64, 640 * 64, 640}));
    EXPECT_EQ(TPositionIndexing("QPp").strides, (std::array<std::uint64_t, 7>{2048ull * 48 * 48, 2048 * 48, 2048}));
    TPositionIndexing grouped("QQrp");
    ASSERT_TRUE(grouped.SetupCombinations());
    EXPECT_EQ(grouped.strides, (std::array<std::uint64_t, 7>{2048ull * 48 * 64, 0, 2048 * 48, 2048}));
}

TEST(PositionIndexing, KingSlots) {
    // The black king on g7 stays apart from the folded white king; the slot is the index modulo 10 or 32.
    EXPECT_EQ(IndexOf("", "8/6k1/8/8/8/8/8/K7"), 54u * 10 + 0);
    EXPECT_EQ(IndexOf("", "8/6k1/8/8/3K4/8/8/8"), 54u * 10 + 9) << "d4";
    EXPECT_EQ(IndexOf("", "8/6k1/8/8/K7/8/8/8"), 54u * 10 + 3) << "a4 is swapped to d1, g7 stays";
    EXPECT_EQ(IndexOf("", "8/1k6/8/4K3/8/8/8/8") % 10, 9u) << "e5 is mirrored in both axes";
    EXPECT_EQ(IndexOf("", "8/1k6/8/4K3/8/8/8/8") / 10, 14u) << "b7 goes to g2";
    EXPECT_EQ(IndexOf("P", "8/6k1/8/8/8/8/P7/4K3"), (7u * 64 + 49) * 32 + 3) << "e1 is d1, a2 is h2, g7 is b7";
    EXPECT_EQ(IndexOf("P", "8/6k1/8/8/8/8/P7/K7"), 54u * 32) << "a pawn on a2 is field 0";
    EXPECT_EQ(IndexOf("P", "K7/6k1/8/8/8/8/P7/8"), 54u * 32 + 28);
}

TEST(PositionIndexing, EqualPiecesKeepTheOrderOfTheBoardBeforeFolding) {
    EXPECT_EQ(IndexOf("RR", "7k/8/8/8/8/8/8/KR1R4") / 640, 1u * 64 + 3);
    EXPECT_EQ(IndexOf("RR", "k7/8/8/8/8/8/8/4R1RK") / 640, 3u * 64 + 1) << "e1 comes before g1 and is d1";
}

TEST(PositionIndexing, IndexZeroIsNoPosition) {
    TChessboard b = EmptyChessboard();
    for (const std::size_t nLetters : {0, 1, 2, 3})
        for (const std::string& type : ref::TypesOf(nLetters))
            EXPECT_FALSE(TPositionIndexing(type).GetPositionByIndex(0, b)) << type;
}

TEST(PositionIndexing, RejectsIndicesOfNoPosition) {
    TChessboard b = EmptyChessboard();
    const TPositionIndexing queen("Q");
    EXPECT_TRUE(queen.GetPositionByIndex((5 * 64 + 63) * 10, b));
    EXPECT_FALSE(queen.GetPositionByIndex((63 * 64 + 63) * 10, b)) << "queen on the black king";
    EXPECT_FALSE(queen.GetPositionByIndex((0 * 64 + 63) * 10, b)) << "queen on the white king";
    EXPECT_FALSE(queen.GetPositionByIndex((5 * 64 + 9) * 10, b)) << "kings side by side";
    EXPECT_FALSE(queen.GetPositionByIndex((5 * 64 + 0) * 10, b)) << "kings on one square";
    EXPECT_FALSE(queen.GetPositionByIndex(queen.GetSize() + (5 * 64 + 63) * 10, b)) << "beyond the table";
    EXPECT_FALSE(TPositionIndexing("QX").GetPositionByIndex(((5 * 64 + 7) * 64 + 63) * 32, b)) << "no such piece";
}

TEST(PositionIndexing, RefusesTextsThatAreNoType) {
    for (const char* text : {"A", "RQ", "pP", "Q.", "QRr ", "QQQQQQQQ", "1"})
        EXPECT_THROW(TPositionIndexing{text}, ChessException) << text;
}

TEST(PositionIndexing, NumberOfTheTypeIsThatOfItsPositions) {
    EXPECT_EQ(TPositionIndexing("RRp").nPositionType, 0x22au << 1);
    for (const std::string& type : ref::TypesOf(3))
        EXPECT_EQ(PositionTypeToString(TPositionIndexing(type).nPositionType), type);
}

TEST(PositionIndexing, EveryIndexOfUpToThreeMenNamesItsPosition) {
    for (const std::size_t nLetters : {0, 1})
        for (const std::string& type : ref::TypesOf(nLetters))
            EXPECT_EQ(WalkIndices(type, 0, 1), ref::CountPlacements(type)) << type;
}

TEST(PositionIndexing, IndicesOfFourMenNameTheirPositions) {
    std::uint64_t first = 0;
    for (const std::string& type : ref::TypesOf(2)) // another part of each type
        EXPECT_GT(WalkIndices(type, first++, 127), 1000u) << type;
}

TEST(PositionIndexing, BoardsOfUpToFourMenAgreeWithTheReference) {
    std::mt19937_64 rng(401);
    for (const std::size_t nLetters : {0, 1, 2})
        for (const std::string& type : ref::TypesOf(nLetters)) {
            const TPositionIndexing indexing(type);
            for (int i = 0; i < 300; ++i)
                ASSERT_NO_FATAL_FAILURE(CheckBoard(indexing, RandomBoard(rng, type)));
        }
}

TEST(PositionIndexing, BoardsOfFiveToSevenMenAgreeWithTheReference) {
    std::mt19937_64 rng(402);
    for (int i = 0; i < 600; ++i) {
        const std::string type = RandomType(rng, 3 + reference::Draw(rng, 3));
        TPositionIndexing indexing(type);
        if (reference::Draw(rng, 2) == 0) {
            EXPECT_EQ(indexing.SetupCombinations(), type.size() >= 4);
        }
        for (int k = 0; k < 20; ++k)
            ASSERT_NO_FATAL_FAILURE(CheckBoard(indexing, RandomBoard(rng, type)));
    }
}

TEST(PositionIndexing, IndicesOfFiveToSevenMenNameTheirPositions) { SampleIndices(403, 600, 200); }

TEST(PositionIndexing, PawnMarkMakesNoDifference) {
    TChessboard b = ChessboardFromFEN("8/6k1/8/4p3/8/8/8/K7");
    const std::uint64_t index = TPositionIndexing("p").GetIndex(b);
    b.m_board[36] |= kPawnMayNotAdvance;
    EXPECT_EQ(TPositionIndexing("p").GetIndex(b), index);
}

} // namespace
} // namespace quillon
