#include "globalregister/custom_indexing.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "globalregister/position_indexing.h"
#include "indexing_reference.h"

namespace quillon {
namespace {

namespace ref = indexing_reference;

// Index to position and back over a whole type. An index comes back as itself, or, where equal pieces stand in another
// order, as one that names the same board.
void WalkCustomType(const char* type, std::uint64_t nBoards) {
    const TPositionIndexing indexing(type);
    TChessboard b = EmptyChessboard(), again = EmptyChessboard();
    std::set<ref::TBoardText> boards;
    std::uint64_t nOwn = 0;
    for (std::uint64_t index = 0; index < indexing.GetSize(); ++index) {
        if (!indexing.GetPositionByIndex(index, b))
            continue;
        const std::uint64_t back = indexing.GetIndex(b);
        ASSERT_TRUE(indexing.GetPositionByIndex(back, again)) << index;
        ASSERT_EQ(b.m_board, again.m_board) << index;
        nOwn += back == index;
        boards.insert(ref::TextOf(b));
    }
    EXPECT_EQ(nOwn, boards.size()) << "each board has one index of its own";
    EXPECT_EQ(boards.size(), nBoards);
}

TEST(CustomIndexing, FieldsOfTheFirstLetterAreHighest) {
    const TPositionIndexing indexing("KQk+Pa2h7");
    EXPECT_EQ(indexing.GetSize(), 62u * 62 * 62);
    EXPECT_EQ(indexing.custom->nFrozenSquares, 2u);
    EXPECT_EQ(indexing.custom->frozenSquares, (std::set<std::int8_t>{8, 55}));
    EXPECT_EQ(indexing.custom->squareRemap[8], 255);
    EXPECT_EQ(indexing.custom->squareRemap[9], 8);
    EXPECT_EQ(indexing.custom->squareRemap[63], 61);
    EXPECT_TRUE(IsCustomType("KQk+Pa2h7"));
    const TChessboard b = ChessboardFromFEN("7k/7P/8/8/8/8/PQ6/K7");
    EXPECT_EQ(indexing.GetIndex(b), (0u * 62 + 8) * 62 + 61) << "nothing is folded";
    EXPECT_EQ(indexing.MenWithKings(), 5u);
    EXPECT_FALSE(indexing.bHasPawns) << "frozen pawns are not counted";
}

TEST(CustomIndexing, MovablePawnCountsItsSteps) {
    const TPositionIndexing indexing("Kkp(c6)");
    EXPECT_EQ(indexing.GetSize(), 64u * 64 * 5);
    EXPECT_TRUE(indexing.bHasPawns);
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("k7/8/2p5/8/8/8/8/K7")), 56u * 5 + 0);
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("k7/8/8/8/8/8/2p5/K7")), 56u * 5 + 4);
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("k7/2p5/8/8/8/8/8/K7")), kNoIndex) << "behind its start";
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("k7/8/1p6/8/8/8/8/K7")), kNoIndex) << "on another file";
}

TEST(CustomIndexing, FrozenSquareShortensTheReach) {
    EXPECT_EQ(TPositionIndexing("KQkp(b3)+Pa2b3+pg4").GetSize(), 61u * 61 * 61 * 1);
    EXPECT_EQ(TPositionIndexing("Kkp(b7)+Pb3").GetSize(), 63u * 63 * 5);
}

TEST(CustomIndexing, OtherPositionsHaveNoIndex) {
    const TPositionIndexing indexing("KQk+Pa2");
    EXPECT_NE(indexing.GetIndex(ChessboardFromFEN("7k/8/8/8/8/8/PQ6/K7")), kNoIndex);
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("7k/8/8/8/8/P7/1Q6/K7")), kNoIndex) << "frozen pawn moved";
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("7k/8/8/8/8/8/PR6/K7")), kNoIndex) << "rook for queen";
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("7k/8/8/8/8/8/P7/K7")), kNoIndex) << "a man less";
    EXPECT_EQ(indexing.GetIndex(ChessboardFromFEN("7k/8/8/8/8/8/PQN5/K7")), kNoIndex) << "a man more";
}

TEST(CustomIndexing, EveryIndexOfAPawnAndKings) { WalkCustomType("Kkp(c4)", 3 * (3612 - 2 * 55)); }

TEST(CustomIndexing, TwoPawnsOfAFileDoNotPass) {
    // Nine pairs of squares with the lower pawn on c4 or below; the white king has 60 squares less the two of the
    // pawns.
    WalkCustomType("Kp(c6)p(c4)+kh8", 9 * 58);
}

TEST(CustomIndexing, RefusesTextsThatAreNoType) {
    for (const char* text :
         {"Kkp",        "Kkp(",         "Kkp(b",   "Kkp(b3",       "Kkp(i3)", "Kkp(b8)", "KkQ",      "KQ",
          "Qk",         "Kk+K",         "Kk+Ka1",  "Kk+",          "Kk+Z",    "Kk+Pa1",  "Kk+Pa2a2", "KkZ",
          "Kk+Pa2+pa2", "Kkp(b3)p(b3)", "KkP(b3)", "KQQQQQQQQQQk", "K\nk",    "(",       "+"})
        EXPECT_THROW(TPositionIndexing{text}, ChessException) << text;
}

} // namespace
} // namespace quillon
