#include "globalregister/precalc_format.h"

#include <array>
#include <gtest/gtest.h>

#include "platform/temporary_folder.h"

namespace quillon {
namespace {

TEST(PrecalcFormat, ElementsAreMovesToMate) {
    EXPECT_EQ(HalfMovesOfByte(0), 0);
    EXPECT_EQ(HalfMovesOfByte(1), 1);
    EXPECT_EQ(HalfMovesOfByte(254), 507);
    EXPECT_EQ(HalfMovesOfByte(255), 65535) << "unknown";
    EXPECT_EQ(HalfMovesOfWord(0), 0);
    EXPECT_EQ(HalfMovesOfWord(255), 509) << "nothing special in two bytes";
    EXPECT_EQ(HalfMovesOfWord(545), 1089);
    EXPECT_EQ(HalfMovesOfWord(32767), 65533);
    for (const std::uint16_t word : {std::uint16_t{32768}, std::uint16_t{32769}, std::uint16_t{65535}})
        EXPECT_EQ(HalfMovesOfWord(word), 65535) << word;
}

TEST(PrecalcFormat, FourPairsAByteLowestFirst) {
    std::array<std::uint8_t, 2> data{};
    AddToBitPair(data.data(), 0, 3);
    AddToBitPair(data.data(), 1, 2);
    AddToBitPair(data.data(), 3, 1);
    AddToBitPair(data.data(), 6, 1);
    AddToBitPair(data.data(), 6, 2);
    EXPECT_EQ(data, (std::array<std::uint8_t, 2>{0b01'00'10'11, 0b00'11'00'00}));
    EXPECT_EQ(BitPair(data.data(), 0), 3);
    EXPECT_EQ(BitPair(data.data(), 1), 2);
    EXPECT_EQ(BitPair(data.data(), 2), 0);
    EXPECT_EQ(BitPair(data.data(), 3), 1);
    EXPECT_EQ(BitPair(data.data(), 6), 3);
}

TEST(PrecalcFormat, WideElementsAreForTypesOfFourMenAndMore) {
    EXPECT_EQ(ElementSize(TPositionIndexing("QRr"), kFlagWideElements), 1u);
    EXPECT_EQ(ElementSize(TPositionIndexing("QRrb"), kFlagWideElements), 2u);
    EXPECT_EQ(ElementSize(TPositionIndexing("QRrb"), kFlagPawnRanks48 | kFlagCombinations), 1u);
}

TEST(PrecalcFormat, FlagsMakeTheNumbering) {
    TPositionIndexing pawns("QPPp");
    EXPECT_EQ(FlagsOf(pawns, false), 1);
    ASSERT_TRUE(ApplyFlags(pawns, 3));
    EXPECT_EQ(pawns.GetSize(), 32ull * 64 * 64 * 1128 * 48);
    EXPECT_EQ(FlagsOf(pawns, true), 7);
    TPositionIndexing figures("QQrr");
    ASSERT_TRUE(ApplyFlags(figures, 1));
    EXPECT_FALSE(figures.bPawnRanks48) << "there are none";
    EXPECT_FALSE(figures.bUseCombinations);
    TPositionIndexing old("Qp");
    ASSERT_TRUE(ApplyFlags(old, 2));
    EXPECT_EQ(old.GetSize(), 32u * 64 * 64 * 64) << "without the flag pawns count 64 squares, with few men no groups";
    EXPECT_FALSE(old.bUseCombinations);
}

TEST(PrecalcFormat, PlainFilesAreKnownByTheirSize) {
    const TPositionIndexing five("QRr");
    EXPECT_EQ(PlainFormOf(five, 0, five.GetSize()), EPlainForm::Elements);
    EXPECT_EQ(PlainFormOf(five, 4, five.GetSize()), EPlainForm::Elements);
    EXPECT_EQ(PlainFormOf(five, 0, five.GetSize() / 4), EPlainForm::BitData);
    EXPECT_EQ(PlainFormOf(five, 0, five.GetSize() - 1), EPlainForm::Wrong);
    EXPECT_EQ(PlainFormOf(five, 0, 0), EPlainForm::Wrong);
    const TPositionIndexing six("QRrb");
    EXPECT_EQ(PlainFormOf(six, 4, six.GetSize() * 2), EPlainForm::Elements);
    EXPECT_EQ(PlainFormOf(six, 4, six.GetSize()), EPlainForm::Wrong);
    EXPECT_EQ(PlainFormOf(six, 0, six.GetSize()), EPlainForm::Elements);
}

TEST(PrecalcFormat, BitDataIsForSixMenAndOneSmallerType) {
    EXPECT_TRUE(UsesBitData(TPositionIndexing("QRrb")));
    EXPECT_TRUE(UsesBitData(TPositionIndexing("PPp")));
    EXPECT_FALSE(UsesBitData(TPositionIndexing("PPP")));
    EXPECT_FALSE(UsesBitData(TPositionIndexing("QRr")));
    EXPECT_FALSE(UsesBitData(TPositionIndexing("KQRBk+Pa2b3")));
}

TEST(PrecalcFormat, FlagsAreTheFirstByte) {
    const CTemporaryFolder folder;
    folder.Write("table", "\x03\x01");
    folder.Write("empty", "");
    EXPECT_EQ(ReadFlags(folder.Path() / "table"), 3);
    EXPECT_EQ(ReadFlags(folder.Path() / "empty"), std::nullopt);
    EXPECT_EQ(ReadFlags(folder.Path() / "missing"), std::nullopt);
}

TEST(PrecalcFormat, WarningAboutTheSize) {
    EXPECT_EQ(FileSizeWarning("Precalc/Q.precalc", 12, 40960),
              "Data file size and/or its header seems improper:\n\nPrecalc/Q.precalc\n\nFile size=12\nExpected file "
              "size=40960");
}

} // namespace
} // namespace quillon
