#include "globalregister/verification/compute_expected.h"

#include <algorithm>

#include "core/fen.h"
#include "globalregister/verification/one_move_types.h"
#include "globalregister/verification/table_update.h"
#include "globalregister/verified_tables.h"

namespace quillon {
namespace {

using TNames = std::set<std::string>;

TEST(OneMoveTypes, ArePairsOfAMoveAndAReply) {
    EXPECT_EQ(TypesAfterOneMove("Q"), TNames{"Q"});
    EXPECT_EQ(TypesAfterOneMove("QR"), (TNames{"QR", "Q", "R"}));
    EXPECT_EQ(TypesAfterOneMove("Nn"), TNames{"Nn"}) << "one knight cannot mate a bare king";
    EXPECT_EQ(TypesAfterOneMove("Qrr"), (TNames{"Qrr", "Qr"}));
    EXPECT_EQ(TypesAfterOneMove("P"), (TNames{"P", "Q", "R"}));
}

TEST(OneMoveTypes, PawnsPromoteAndTake) {
    TNames expected{"Pp", "P", "Q", "R"};
    for (const char* const white : {"Q", "R", "B", "N", "P"})
        for (const char* const black : {"q", "r", "b", "n", "p"})
            expected.insert(std::string(white) + black);
    EXPECT_EQ(TypesAfterOneMove("Pp"), expected);
    EXPECT_TRUE(TypesAfterOneMove("PPpp").contains("PPq")) << "double step, en passant, and the other pawn promotes";
}

/// Tables with any elements, so that it can be seen which of them a position asks.
class ExpectedMate : public ::testing::Test {
  protected:
    /// elementOf(value of the field with this factor) of so many values.
    template <class TElementOf>
    void Write(const std::string& type, std::uint64_t nFactor, std::uint64_t nValues, TElementOf elementOf) {
        const TPositionIndexing indexing(type);
        TElements elements(indexing.GetSize());
        for (std::uint64_t i = 0; i < elements.size(); ++i)
            elements[i] = elementOf(i / nFactor % nValues);
        elements[0] = indexing.bHasPawns ? kFlagPawnRanks48 : 0;
        m_tables.Write(type, elements);
    }
    int Expected(const std::string& type, const std::string& fen) {
        const CRegisterUse data = m_tables.Use(type);
        CTableLengths lengths(*data, false);
        const COneMoveTables tables(lengths, m_tables.Registers());
        CExpectedMate expected(tables);
        EXPECT_TRUE(expected.SetPosition(data->GetIndex(ChessboardFromFEN(fen)))) << fen;
        return expected.ComputeExpected();
    }

    static constexpr std::uint64_t kPawns = 48; // squares of a pawn, from a2
    static constexpr std::uint64_t kBlackPawn = 64 * 32;
    static constexpr std::uint64_t kWhitePawn = kPawns * kBlackPawn;
    static constexpr std::uint64_t kFourthRank = 2, kFifthRank = 3; // counted from the second

    CVerifiedTables m_tables;
};

TEST_F(ExpectedMate, BlackMayTakeEnPassant) {
    // Only what has the white pawn on the fourth rank is mate in two.
    Write("Pp", kWhitePawn, kPawns,
          [](auto field) { return static_cast<std::uint8_t>(field / 8 == kFourthRank ? 2 : 0); });
    EXPECT_EQ(Expected("Pp", "k7/8/8/8/8/2p5/4P3/7K"), 5);
    EXPECT_EQ(Expected("Pp", "k7/8/8/8/2p5/8/4P3/7K"), 5) << "not beside it";
    EXPECT_EQ(Expected("Pp", "k7/8/8/8/3p4/8/4P3/7K"), 0) << "d4xe3";
    EXPECT_EQ(Expected("Pp", "k7/8/8/8/5p2/8/4P3/7K"), 0) << "f4xe3";
    EXPECT_EQ(Expected("Pp", "k7/8/8/5p2/8/8/4P3/7K"), 0) << "a plain capture";
}

TEST_F(ExpectedMate, WhiteMayTakeEnPassant) {
    // A black pawn that has gone two steps is safe but for the capture en passant, behind which all is mate in one.
    Write("Pp", kBlackPawn, kPawns,
          [](auto field) { return static_cast<std::uint8_t>(field / 8 == kFifthRank ? 0 : 1); });
    Write("P", 1, 2, [](auto) { return std::uint8_t{1}; });
    EXPECT_EQ(Expected("Pp", "8/4p3/8/3P4/8/8/k7/7K"), 5) << "e7-e5 d5xe6";
    EXPECT_EQ(Expected("Pp", "8/4p3/8/5P2/8/8/k7/7K"), 5) << "e7-e5 f5xe6";
    EXPECT_EQ(Expected("Pp", "8/4p3/8/2P5/8/8/k7/7K"), 0) << "e7-e5 cannot be taken";
}

TEST_F(ExpectedMate, BlackCannotCastle) {
    // All is mate in two but what has the black king where a castling from e8 puts it, however the board is folded.
    const std::set<std::uint64_t> castled{1, 6, 8, 15, 48, 55, 57, 62};
    Write("Qr", 10, 64, [&](auto field) { return static_cast<std::uint8_t>(castled.contains(field) ? 0 : 2); });
    Write("Q", 1, 2, [](auto) { return std::uint8_t{0}; });
    EXPECT_EQ(Expected("Qr", "4k2r/8/8/8/8/8/8/QK6"), 5);
}

TEST_F(ExpectedMate, IsTheLengthOfTheMatesOfARook) {
    m_tables.Write("R", ThreeMenElements("R"));
    const CRegisterUse data = m_tables.Use("R");
    CTableLengths lengths(*data, false);
    const COneMoveTables tables(lengths, m_tables.Registers());
    CExpectedMate expected(tables);
    for (std::uint64_t i = 1; i < data->GetSize(); i += 7) {
        if (!expected.SetPosition(i))
            continue;
        ASSERT_EQ(expected.ComputeExpected(), lengths.HalfMoves(i)) << i;
    }
}

// --- forms of a table

class TableLengths : public ::testing::Test {
  protected:
    TableLengths() : m_data("Q") { m_data.loadedFrom = m_folder.Path() / "Q.precalc"; }

    void WriteFiles(const TElements& table, const TElements& details) {
        WriteElements(m_data.loadedFrom, table);
        WriteElements(DetailsBeside(m_data.loadedFrom), details);
        m_data.data = table;
    }

    CTemporaryFolder m_folder;
    TGlobalRegister m_data;
};

TEST_F(TableLengths, BitDataHaveTheirLengthsInTheDetails) {
    const std::uint64_t size = m_data.GetSize();
    TElements pairs(size / 4, 0), details(size, 0);
    AddToBitPair(pairs.data(), 9, 1);
    details[9] = 7;
    AddToBitPair(pairs.data(), 10, 3);
    AddToBitPair(pairs.data(), 11, 2); // of Black
    details[12] = 5;                   // without its bit
    WriteFiles(pairs, details);
    m_data.bBitData = true;
    m_data.detailStream.open(DetailsBeside(m_data.loadedFrom), std::ios::binary);
    CTableLengths lengths(m_data, false);
    EXPECT_EQ(lengths.HalfMoves(9), 13);
    EXPECT_EQ(lengths.HalfMoves(10), kUnknownLength) << "a bit without a length";
    EXPECT_EQ(lengths.HalfMoves(11), 0);
    EXPECT_EQ(lengths.HalfMoves(12), 0);
    EXPECT_TRUE(lengths.PairAgrees(9));
    EXPECT_FALSE(lengths.PairAgrees(10));
    EXPECT_TRUE(lengths.PairAgrees(11));
    EXPECT_FALSE(lengths.PairAgrees(12)) << "a length without a bit";
    EXPECT_EQ(lengths.DetailHalfMoves(12), 9);
    EXPECT_EQ(lengths.HoldDetails(size - 1), 0u) << "no room";
    EXPECT_EQ(lengths.HoldDetails(size), size);
    EXPECT_EQ(lengths.HalfMoves(9), 13);
    EXPECT_FALSE(lengths.PairAgrees(12));

    CTableUpdate update(lengths, m_data.loadedFrom);
    ASSERT_TRUE(update.IsOpen());
    EXPECT_EQ(update.Write(11, 254), EElementWrite::Done);
    EXPECT_EQ(update.Write(13, 255), EElementWrite::NoRoom) << "that is no length";
    EXPECT_EQ(lengths.HalfMoves(11), 507);
    EXPECT_EQ(lengths.HalfMoves(13), 0);
    AddToBitPair(pairs.data(), 11, 1);
    details[11] = 254;
    EXPECT_EQ(ReadWholeFile(m_data.loadedFrom), pairs) << "Black's bit stays";
    EXPECT_EQ(ReadWholeFile(DetailsBeside(m_data.loadedFrom)), details);
}

TEST_F(TableLengths, PairsThatAreNotInMemoryAreHeldAgainstTheDetails) {
    const std::uint64_t size = m_data.GetSize();
    TElements pairs(size / 4, 0), details(size, 0);
    AddToBitPair(pairs.data(), 9, 1);
    details[9] = 7;
    AddToBitPair(pairs.data(), 10, 3);
    details[12] = 5;
    WriteFiles(pairs, details);
    m_data.data.clear();
    m_data.bBitData = true;
    m_data.diskStream.open(DetailsBeside(m_data.loadedFrom), std::ios::binary);
    const CTableLengths lengths(m_data, false);
    EXPECT_EQ(lengths.HalfMoves(12), 9) << "the details alone answer";
    EXPECT_TRUE(lengths.PairAgrees(9));
    EXPECT_FALSE(lengths.PairAgrees(10));
    EXPECT_TRUE(lengths.PairAgrees(11));
    EXPECT_FALSE(lengths.PairAgrees(12));
}

TEST_F(TableLengths, MarksOfATableInTheMakingAreNoLengths) {
    TElements table(m_data.GetSize(), 0);
    table[5] = 127;
    table[6] = 3;
    WriteFiles(table, {});
    CTableLengths lengths(m_data, false);
    EXPECT_TRUE(lengths.LooksUnfinished());
    EXPECT_EQ(lengths.HalfMoves(5), kUnknownLength);
    EXPECT_EQ(lengths.HalfMoves(6), 5);
    for (std::uint8_t n = 1; n < 127; ++n)
        m_data.data[100 + n] = n;
    EXPECT_EQ(CTableLengths(m_data, false).HalfMoves(5), 253) << "a long mate with all shorter ones";
}

TEST_F(TableLengths, DetailsInTheMakingHaveNoMarks) {
    const std::uint64_t size = m_data.GetSize();
    TElements pairs(size / 4, 0), details(size, 0);
    for (const std::uint8_t length : std::initializer_list<std::uint8_t>{127, 130, 254}) {
        AddToBitPair(pairs.data(), length, 1);
        details[length] = length;
    }
    WriteFiles(pairs, details);
    m_data.bBitData = true;
    m_data.detailStream.open(DetailsBeside(m_data.loadedFrom), std::ios::binary);
    CTableLengths lengths(m_data, true);
    ASSERT_EQ(lengths.HoldDetails(size), size);
    EXPECT_EQ(lengths.HalfMoves(127), 253);
    EXPECT_EQ(lengths.HalfMoves(130), 259);
    EXPECT_EQ(lengths.HalfMoves(254), 507);
    CTableUpdate update(lengths, m_data.loadedFrom);
    EXPECT_EQ(update.Write(130, 128), EElementWrite::Done);
    EXPECT_EQ(lengths.HalfMoves(130), 255);
}

TEST_F(TableLengths, AFileThatCannotBeWrittenIsNamed) {
    WriteFiles(TElements(8, 0), {}); // the element would be behind its end
    CTableLengths lengths(m_data, true);
    CTableUpdate update(lengths, m_data.loadedFrom);
    EXPECT_EQ(update.Write(9, 3), EElementWrite::Failed);
    EXPECT_EQ(update.FileAtFault(), m_data.loadedFrom);
}

TEST_F(TableLengths, BitDataWithoutTheirDetailsInTheFile) {
    WriteFiles(TElements(m_data.GetSize() / 4, 0), {1, 2, 3});
    m_data.bBitData = true;
    EXPECT_THROW(CTableLengths(m_data, false), CSystemFailure) << "they are not open";
}

/// What stands in it may be wrong, what cannot be read is a failure of the system.
TEST_F(TableLengths, DetailsThatCannotBeHeld) {
    const std::uint64_t size = m_data.GetSize();
    WriteFiles(TElements(size / 4, 0), TElements(size, 0));
    m_data.bBitData = true;
    m_data.detailStream.open(DetailsBeside(m_data.loadedFrom), std::ios::binary);
    CTableLengths lengths(m_data, false);
    WriteElements(DetailsBeside(m_data.loadedFrom), {1, 2, 3});
    try {
        (void)lengths.HoldDetails(size);
        ADD_FAILURE();
    } catch (const ChessException& failure) {
        EXPECT_FALSE(IsOfSystem(failure));
    }
    std::filesystem::remove(DetailsBeside(m_data.loadedFrom));
    EXPECT_THROW((void)lengths.HoldDetails(size), CSystemFailure);
}

TEST_F(TableLengths, ElementsOfTwoBytes) {
    TElements table(2 * m_data.GetSize(), 0);
    table[6] = 0x2c; // 300
    table[7] = 0x01;
    table[8] = 0x01; // 32769
    table[9] = 0x80;
    WriteFiles(table, {});
    m_data.nElementSize = 2;
    CTableLengths lengths(m_data, false);
    EXPECT_EQ(lengths.HalfMoves(3), 599);
    EXPECT_EQ(lengths.HalfMoves(4), kUnknownLength);
    CTableUpdate update(lengths, m_data.loadedFrom);
    EXPECT_EQ(update.Write(5, 1000), EElementWrite::Done);
    EXPECT_EQ(lengths.HalfMoves(5), 1999);
    table[10] = 0xe8;
    table[11] = 0x03;
    EXPECT_EQ(ReadWholeFile(m_data.loadedFrom), table);
    CTableLengths making(m_data, true);
    EXPECT_EQ(making.HalfMoves(4), 1) << "with Black's mark";
}

} // namespace
} // namespace quillon
