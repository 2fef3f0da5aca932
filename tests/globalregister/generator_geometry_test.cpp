// All numbers of a position: whatever a lookup can meet is among those that the generator enters, and one of them is
// the one it works on.

#include <algorithm>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "globalregister/board_by_index.h"
#include "globalregister/generator/level_marks.h"
#include "globalregister/generator/table_geometry.h"
#include "globalregister/generator/work_cells.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

// The men of a type at random; none if they do not find room.
bool PlaceAtRandom(const TPositionIndexing& indexing, std::mt19937& random, bool bKingOnDiagonal, TChessboard& b) {
    b = EmptyChessboard();
    const auto square = [&] { return static_cast<TSquare>(random() % kSquares); };
    const auto file = static_cast<int>(random() % 8);
    const TSquare king = bKingOnDiagonal ? SquareAt(file, random() % 2 == 0 ? file : 7 - file) : square();
    bool bPlaced = PlacePiece(b, king, kWhiteKing) && PlacePiece(b, square(), kBlackKing);
    for (const char letter : indexing.typeName)
        bPlaced = bPlaced && PlacePiece(b, square(), FigureOfLetter(letter));
    return bPlaced && KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) > 1;
}

// The board under one of the eight symmetries: bits 1 files, 2 ranks, 4 diagonal.
TChessboard Transformed(const TChessboard& b, unsigned symmetry) {
    TChessboard result = EmptyChessboard();
    for (int square = 0; square < kSquares; ++square) {
        int file = FileOf(square), rank = RankOf(square);
        file = (symmetry & 1) != 0 ? 7 - file : file;
        rank = (symmetry & 2) != 0 ? 7 - rank : rank;
        if ((symmetry & 4) != 0)
            std::swap(file, rank);
        const TFigure figure = b.m_board[static_cast<std::size_t>(square)];
        if (figure != kNoFigure)
            static_cast<void>(PlacePiece(result, SquareAt(file, rank), figure));
    }
    return result;
}

TPlacement PlacementOfBoard(const CMaterial& material, const TChessboard& b) {
    TPlacement p;
    std::set<int> taken;
    for (std::size_t man = 0; man < material.Men(); ++man)
        for (int square = 0; square < kSquares; ++square)
            if (b.m_board[static_cast<std::size_t>(square)] == material.Figure(man) && taken.insert(square).second) {
                p.m_men[man] = static_cast<TSquare>(square);
                break;
            }
    material.SetMasks(p, WhiteKingSquare(b), BlackKingSquare(b));
    return p;
}

void ExpectAliasesOf(const TGlobalRegister& table, const CTableGeometry& geometry, const TChessboard& b) {
    const TPlacement p = PlacementOfBoard(geometry.Material(), b);
    std::set<std::uint64_t> aliases;
    const std::uint64_t canonical =
        geometry.ForAliases(p, geometry.IndexOf(p), [&](std::uint64_t alias) { aliases.insert(alias); });
    std::set<std::string> same;
    for (unsigned symmetry = 0; symmetry < 8; ++symmetry) {
        const TChessboard transformed = Transformed(b, symmetry);
        same.insert(std::string(transformed.m_board.begin(), transformed.m_board.end()));
        const bool bSameTable = !table.bHasPawns || symmetry < 2; // pawns tell the ends of the board apart
        ASSERT_TRUE(!bSameTable || aliases.contains(table.GetIndex(transformed))) << table.typeName << " " << symmetry;
    }
    std::set<std::uint64_t> worked;
    TChessboard decoded = EmptyChessboard();
    TPlacement placement;
    for (const std::uint64_t alias : aliases) {
        ASSERT_TRUE(table.GetPositionByIndex(alias, decoded));
        ASSERT_EQ(same.count(std::string(decoded.m_board.begin(), decoded.m_board.end())), 1u) << table.typeName;
        if (geometry.PlacementOf(alias, placement))
            worked.insert(alias);
    }
    ASSERT_EQ(worked, std::set<std::uint64_t>{canonical}) << table.typeName;
}

} // namespace

TEST(GeneratorGeometry, AliasesAreAllNumbersOfAPosition) {
    std::mt19937 random(65);
    for (const char* const type : {"Q", "RR", "QRr", "RRrr", "BBB", "NNnnn", "PP", "RRp", "PPpp"}) {
        TGlobalRegister table(type);
        static_cast<void>(table.SetupCombinations()); // of those that are large enough
        const CMaterial material(type, &table);
        const CTableGeometry geometry(table, material);
        TChessboard b;
        for (int i = 0; i < 300; ++i)
            if (PlaceAtRandom(table, random, i % 3 == 0, b))
                ExpectAliasesOf(table, geometry, b);
    }
}

TEST(GeneratorGeometry, MoveOfAManLeadsToAnIndexOfThePositionAfterIt) {
    std::mt19937 random(66);
    for (const char* const type : {"RRr", "Pp", "RRbb"}) {
        TGlobalRegister table(type);
        static_cast<void>(table.SetupCombinations());
        const CMaterial material(type, &table);
        const CTableGeometry geometry(table, material);
        TPlacement p;
        for (int i = 0; i < 2000; ++i) {
            const std::uint64_t index = random() % table.GetSize();
            if (!geometry.PlacementOf(index, p))
                continue;
            const std::size_t man = random() % material.Men();
            const int to = 8 + static_cast<int>(random() % 48);
            if ((p.Occupied() & MaskOf(to)) != 0)
                continue;
            TPlacement after = p;
            after.m_men[man] = static_cast<TSquare>(to);
            const std::uint64_t reached = geometry.IndexAfter(p, index, man, p.m_men[man], to);
            std::set<std::uint64_t> aliases;
            static_cast<void>(geometry.ForAliases(after, reached, [&](std::uint64_t alias) { aliases.insert(alias); }));
            ASSERT_EQ(aliases.count(reached), 1u) << type << " " << index;
        }
    }
}

TEST(GeneratorCells, EachFormKeepsBothSidesApart) {
    std::vector<std::uint8_t> bytes(8, 0x7f), bits(2, 0), words;
    for (int i = 0; i < 8; ++i)
        words.insert(words.end(), {0xff, 0x7f});
    const auto expectKept = [](const auto& cells) {
        EXPECT_TRUE(cells.IsWhiteOpen(3));
        EXPECT_TRUE(cells.SetLost(3));
        EXPECT_FALSE(cells.SetLost(3));
        EXPECT_TRUE(cells.IsWhiteOpen(3));
        EXPECT_TRUE(cells.SetWhite(3, 5));
        EXPECT_FALSE(cells.SetWhite(3, 4));
        EXPECT_FALSE(cells.IsWhiteOpen(3));
        EXPECT_TRUE(cells.IsLost(3));
        EXPECT_TRUE(cells.IsWhiteWithin(3, 5));
        EXPECT_FALSE(cells.IsWhiteWithin(3, 0));
        EXPECT_TRUE(cells.IsWhiteOfLevel(3, 5));
        for (const std::uint64_t other : {2u, 4u}) {
            EXPECT_TRUE(cells.IsWhiteOpen(other));
            EXPECT_FALSE(cells.IsWhiteWithin(other, 100));
            EXPECT_FALSE(cells.IsLost(other));
        }
    };
    expectKept(CByteCells(bytes.data()));
    expectKept(CWordCells(words.data()));
    expectKept(CBitCells(bits.data()));
    EXPECT_FALSE(CByteCells(bytes.data()).IsWhiteWithin(3, 4));
    EXPECT_FALSE(CWordCells(words.data()).IsWhiteWithin(3, 4));
}

TEST(GeneratorMarks, WordsAreTakenOnce) {
    CLevelMarks marks(1000, 4);
    for (const std::uint64_t index : {0u, 5u, 7u, 999u})
        marks.Mark(index);
    std::set<std::uint64_t> seen;
    const auto see = [&](bool bTake) {
        seen.clear();
        for (std::uint64_t word = 0; word < marks.Words(); ++word)
            marks.ForIndices(word, marks.Word(word, bTake), [&](std::uint64_t index) { seen.insert(index); });
    };
    see(false);
    const std::set<std::uint64_t> expected{0, 1, 2, 3, 4, 5, 6, 7, 996, 997, 998, 999};
    EXPECT_EQ(seen, expected);
    see(true);
    EXPECT_EQ(seen, expected);
    see(true);
    EXPECT_TRUE(seen.empty());
}

} // namespace quillon
