#include "core/position_type.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "core/chess_exception.h"
#include "core/chessboard.h"
#include "core/fen.h"

namespace quillon {
namespace {

std::string TypeText(std::string_view fen) { return PositionTypeToString(GetPositionType(ChessboardFromFEN(fen))); }

template <class TCall> std::string FailureOf(TCall call) {
    try {
        static_cast<void>(call());
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(PositionType, NumberIsNibblesDoubled) {
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("k7/8/8/8/8/8/8/KR6")), 2u << 1);
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("kr6/8/8/8/8/8/8/K7")), 7u << 1);
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("k7/8/8/8/4p3/8/2R5/K6R")), 0x22au << 1);
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("7k/8/8/8/8/8/Q3P3/KRBN4")) & 1, 0u) << "bit 0 is free";
}

TEST(PositionType, EachFigureHasItsNibble) {
    const char* letters = "QRBNPqrbnp";
    for (unsigned i = 0; i < 10; ++i) {
        const std::string fen = std::string("7k/8/8/8/8/8/") + letters[i] + "7/4K3";
        EXPECT_EQ(GetPositionType(ChessboardFromFEN(fen)), (i + 1) << 1) << fen;
        EXPECT_EQ(TypeText(fen), std::string(1, letters[i]));
    }
}

TEST(PositionType, FiguresStandInFixedOrder) {
    EXPECT_EQ(TypeText("k7/8/8/8/4p3/8/2R5/K6R"), "RRp");
    EXPECT_EQ(TypeText("k7/8/8/8/PNBRQ3/8/8/7K"), "QRBNP");
    EXPECT_EQ(TypeText("8/8/7k/8/pnbrq3/8/8/6K1"), "qrbnp");
    EXPECT_EQ(TypeText("k7/8/8/pQ6/8/n7/P7/6K1"), "QPnp");
}

TEST(PositionType, BareKingsHaveNone) {
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("k7/8/8/8/8/8/8/7K")), 0u);
    EXPECT_EQ(TypeText("k7/8/8/8/8/8/8/7K"), "");
}

TEST(PositionType, FiveFiguresAreTheMost) {
    EXPECT_EQ(TypeText("k7/pppp4/8/8/8/8/7P/7K"), "Ppppp");
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("k7/pppp4/8/8/8/8/6PP/7K")), 0u);
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR")), 0u);
    EXPECT_EQ(GetPositionType(ChessboardFromFEN("k7/pppppp2/8/8/8/8/8/7K")), 0u);
}

TEST(PositionType, TextOfACustomType) {
    EXPECT_EQ(PositionTypeToString(0x2bcu << 1), "RXx");
    EXPECT_EQ(PositionTypeToString(0x1234567ull << 1), "QRBNPqr");
}

TEST(PositionType, NumbersThatAreNoTypeHaveNoText) {
    EXPECT_EQ(PositionTypeToString(0), "");
    EXPECT_EQ(PositionTypeToString(1), "");
    EXPECT_EQ(PositionTypeToString(0xdu << 1), "");
    EXPECT_EQ(PositionTypeToString(0x101u << 1), "");
    EXPECT_EQ(PositionTypeToString(0x11111111ull << 1), "") << "eight letters";
    EXPECT_EQ(PositionTypeToString(~TPositionType{0}), "");
}

/// The text is the sorted material, whatever the squares; equal material has the equal number.
TEST(PositionType, RandomMaterialPrintsSorted) {
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i) {
        const std::string_view letters = kTypeLetters.substr(0, 10);
        std::string material;
        TPositionType types[2] = {};
        for (int n = static_cast<int>(random() % 6); n > 0; --n)
            material += letters[random() % letters.size()];
        for (TPositionType& type : types) {
            std::shuffle(material.begin(), material.end(), random);
            TChessboard b = EmptyChessboard();
            std::size_t square = random() % 8;
            for (const char c : material) {
                const std::size_t index = letters.find(c);
                constexpr TFigure kinds[] = {kQueen, kRook, kBishop, kKnight, kPawn};
                PutFigure(b, static_cast<TSquare>(square),
                          static_cast<TFigure>(kinds[index % 5] | (index < 5 ? kWhite : kBlack)));
                square += 1 + random() % 8;
            }
            type = GetPositionType(b);
        }
        std::sort(material.begin(), material.end(), [&](char a, char b) { return letters.find(a) < letters.find(b); });
        ASSERT_EQ(PositionTypeToString(types[0]), material);
        ASSERT_EQ(types[0], types[1]);
    }
}

TEST(RemoveFromPosType, FirstOccurrenceGoes) {
    EXPECT_EQ(RemoveFromPosType("QRp", 'R'), "Qp");
    EXPECT_EQ(RemoveFromPosType("RRp", 'R'), "Rp");
    EXPECT_EQ(RemoveFromPosType("QRp", 'p'), "QR");
    EXPECT_EQ(RemoveFromPosType("p", 'p'), "");
}

TEST(RemoveFromPosType, MissingLetterIsRefused) {
    EXPECT_EQ(FailureOf([] { return RemoveFromPosType("QRp", 'b'); }),
              "Error in RemoveFromPosType: pos.type QRp does not contain b");
    EXPECT_EQ(FailureOf([] { return RemoveFromPosType("QRp", 'r'); }),
              "Error in RemoveFromPosType: pos.type QRp does not contain r");
    EXPECT_EQ(FailureOf([] { return RemoveFromPosType("", 'Q'); }),
              "Error in RemoveFromPosType: pos.type  does not contain Q");
}

TEST(GetIndexToRemove, FirstIndexThatFits) {
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("QRp", "Qp"), 1);
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("QRp", "Rp"), 0);
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("QRp", "QR"), 2);
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("RRp", "Rp"), 0);
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("QRRp", "QRp"), 1);
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("p", ""), 0);
}

TEST(GetIndexToRemove, NoneFits) {
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("QRp", "Qb"), -1);
    EXPECT_EQ(GetIndexToRemoveToObtainOtherPosType("QRp", "pR"), -1);
}

TEST(GetIndexToRemove, OtherLengthsAreRefused) {
    EXPECT_EQ(FailureOf([] { return GetIndexToRemoveToObtainOtherPosType("QRp", "QRp"); }),
              "Error in GetIndexToRemoveToObtainOtherPosType: QRp and QRp passed to function");
    EXPECT_EQ(FailureOf([] { return GetIndexToRemoveToObtainOtherPosType("QRp", "Q"); }),
              "Error in GetIndexToRemoveToObtainOtherPosType: QRp and Q passed to function");
    EXPECT_EQ(FailureOf([] { return GetIndexToRemoveToObtainOtherPosType("", ""); }),
              "Error in GetIndexToRemoveToObtainOtherPosType:  and  passed to function");
}

} // namespace
} // namespace quillon
