#include "library/sort_indication.h"

#include <gtest/gtest.h>
#include <string>

#include "core/chess_exception.h"

namespace quillon {
namespace {

constexpr TSquare Square(char file, int rank) { return SquareAt(file - 'a', rank - 1); }

SortIndications Parse(std::string_view text) {
    SortIndications indications;
    ParseSortIndications(indications, text);
    return indications;
}

SortIndication ParseOne(std::string_view text) {
    const SortIndications indications = Parse(text);
    EXPECT_EQ(indications.size(), 1u) << text;
    return indications.empty() ? SortIndication() : *indications.begin();
}

std::string FailureOf(std::string_view text) {
    try {
        static_cast<void>(Parse(text));
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return {};
}

TEST(SortIndication, TargetAloneSaysNothingElse) {
    SortIndication expected;
    expected.m_nTo = Square('d', 8);
    EXPECT_EQ(ParseOne("d8"), expected);
    EXPECT_EQ(ParseOne(" D8 "), expected);
}

TEST(SortIndication, ReadsEveryPart) {
    SortIndication expected;
    expected.m_nMove = 3;
    expected.m_figure = kWhiteQueen;
    expected.m_nFrom = Square('d', 8);
    expected.m_nTo = Square('f', 6);
    expected.m_nCapture = kMustCapture;
    expected.m_nCheck = 1;
    expected.m_bWorst = true;
    EXPECT_EQ(ParseOne("~3. Qd8:f6+"), expected);
    EXPECT_EQ(ParseOne("~3.Hd8:f6+"), expected); // the Polish letter
}

TEST(SortIndication, SignsAtTheEnd) {
    EXPECT_EQ(ParseOne("Qd8+").m_nCheck, 1);
    EXPECT_EQ(ParseOne("Qd8++").m_nCheck, 2);
    EXPECT_EQ(ParseOne("Qd8").m_nCheck, 0);
    EXPECT_TRUE(ParseOne("Qd8*").m_bOnlyIfNotCapturable);
    EXPECT_FALSE(ParseOne("Qd8").m_bOnlyIfNotCapturable);
    EXPECT_TRUE(ParseOne("Qd8*++").m_bOnlyIfNotCapturable);
    EXPECT_EQ(ParseOne("Qd8*++").m_nCheck, 2);
}

TEST(SortIndication, ALetterBeforeADigitIsAFile) {
    EXPECT_EQ(ParseOne("b3-b4").m_figure, kNoFigure);
    EXPECT_EQ(ParseOne("b3-b4").m_nFrom, Square('b', 3));
    EXPECT_EQ(ParseOne("Bb3").m_figure, kWhiteBishop);
    EXPECT_EQ(ParseOne("Bb3").m_nFrom, kNoSquare);
}

TEST(SortIndication, SeparatorsSayWhetherItMayCapture) {
    EXPECT_EQ(ParseOne("d1-d8").m_nCapture, kMayCapture);
    EXPECT_EQ(ParseOne("d1:d8").m_nCapture, kMustCapture);
    EXPECT_EQ(ParseOne("d1>d8").m_nCapture, kMustNotCapture);
    EXPECT_EQ(ParseOne("R:d8").m_nCapture, kMustCapture);
    EXPECT_EQ(ParseOne("R>d8").m_nCapture, kMustNotCapture);
    EXPECT_EQ(ParseOne("-d8").m_nFrom, kNoSquare);
}

TEST(SortIndication, Castlings) {
    SortIndication expected;
    expected.m_nFrom = kE1;
    expected.m_nTo = kG1;
    expected.m_nCapture = kMustNotCapture;
    EXPECT_EQ(ParseOne("0-0"), expected);
    expected.m_nTo = kC1;
    expected.m_nMove = 2;
    EXPECT_EQ(ParseOne("2.0-0-0"), expected);
    EXPECT_EQ(FailureOf("K0-0"), "Invalid description of SortIndication: K0-0"); // a letter before a digit is a file
    EXPECT_EQ(FailureOf("0-1"), "Invalid description of SortIndication: 0-1");
}

TEST(SortIndication, Promotion) {
    EXPECT_EQ(ParseOne("a7-a8N").m_nPromotion, kKnight);
    EXPECT_EQ(ParseOne("Pa8w").m_nPromotion, kRook);
}

TEST(SortIndication, SplitsAtCommasElseAtSemicolons) {
    EXPECT_EQ(Parse("1.Qd1-d8; 3.Qd8:f6").size(), 2u);
    EXPECT_EQ(Parse("1.Qd1-d8, 3.Qd8:f6 , Kd2").size(), 3u);
    EXPECT_EQ(Parse("Kd2;Kd2").size(), 1u);
    EXPECT_EQ(FailureOf("Kd2; Ke2, Kf2"), "Move description too long (note that moves should be separated with a comma "
                                          "or semicolon)");
}

TEST(SortIndication, EmptyOnesFail) {
    for (const char* text : {"", "  ", "Kd2,", ",Kd2", "Kd2;;Ke2"})
        EXPECT_EQ(FailureOf(text), "Invalid description of SortIndication") << text;
}

TEST(SortIndication, BadOnesFailWithTheirText) {
    for (const char* text : {"Q", "Kd", "d9", "i4", "d0-d8", "d1-", "d1-d", "+", "~", "1.", "44"})
        EXPECT_EQ(FailureOf(std::string("Kd2, ") + text + " "),
                  std::string("Invalid description of SortIndication: ") + text)
            << text;
}

TEST(SortIndication, TooLongAndUnknownFigures) {
    EXPECT_EQ(FailureOf("Qd1-d8 Ke5"),
              "Move description too long (note that moves should be separated with a comma or semicolon)");
    EXPECT_EQ(FailureOf("Xd1"), "Unknown figure letter: X");
}

TEST(SortIndication, IsWrittenInTheSyntaxItIsReadIn) {
    for (const char* text : {"d8", "Qd8", "Pd8", "d1-d8", "Qd1-d8", "1.Qd1:d8", "~3.d1>d8*++", ":d8", "Q>d8+", "d7-d8Q",
                             "d7:d8N*", "0-0", "12.0-0-0+", "Ke1>g1", "d8P"}) {
        SortIndications read;
        ParseSortIndications(read, text);
        EXPECT_EQ(FormatSortIndications(read), text);
    }
    SortIndications several;
    ParseSortIndications(several, "3.Qd8:f6, 1.Qd1-d8 ,~ 2.Sb8");
    EXPECT_EQ(FormatSortIndications(several), "1.Qd1-d8; ~2.Nb8; 3.Qd8:f6");
    EXPECT_EQ(FormatSortIndications({}), "");
}

TEST(SortIndication, WhiteMovesOfAVariantAreIndications) {
    Variant variant;
    ParseVariantLine(variant, "{v} Qd1-d8 Ke5-f5 a7-a8N Kf5-e5 0-0");
    EXPECT_EQ(FormatSortIndications(IndicationsOf(variant)), "1.d1-d8; 2.a7-a8N; 3.e1-g1");
    EXPECT_TRUE(IndicationsOf(Variant{}).empty());
}

} // namespace
} // namespace quillon
