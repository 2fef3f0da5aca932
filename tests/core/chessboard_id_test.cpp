#include "core/chessboard_id.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "core/notation.h"

namespace quillon {
namespace {

TChessboard BoardOf(std::string_view fen) {
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, fen));
    return b;
}

std::string FailureOfReading(std::string_view text) {
    TChessboard b = EmptyChessboard();
    try {
        ReadChessboardId(b, text);
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return "no failure";
}

/// The bits of an id as characters '0' and '1', told by the table of letters alone.
std::string ExpectedBits(std::string_view fen) {
    const std::string_view letters = "KkPpQqRrBbNn";
    std::string rows[8];
    std::size_t row = 7;
    for (const char c : fen) {
        if (c == '/')
            --row;
        else if (c >= '1' && c <= '8')
            rows[row].append(static_cast<std::size_t>(c - '0'), '0');
        else {
            const std::size_t code = letters.find(c);
            rows[row] += '1';
            for (const std::size_t weight : {1u, 2u, 4u, 8u})
                rows[row] += (code & weight) != 0 ? '1' : '0';
        }
    }
    std::string bits;
    for (const std::string& r : rows)
        bits += r;
    return bits;
}

std::string BitsOf(const TChessboardId& id) {
    std::string bits;
    for (unsigned i = 0; i < id.m_nBits; ++i)
        bits += ((id.m_bits[i / 8] >> (i % 8)) & 1) != 0 ? '1' : '0';
    return bits;
}

TChessboardId IdOfBits(std::string_view bits) {
    TChessboardId id;
    for (const char c : bits)
        AppendBit(id, c == '1');
    return id;
}

std::string RandomPlacement(std::mt19937& random, unsigned percent) {
    TChessboard b = EmptyChessboard();
    for (TFigure& figure : b.m_board) {
        constexpr TFigure kinds[] = {kKing, kPawn, kBishop, kRook, kQueen, kKnight};
        if (random() % 100 < percent)
            figure = static_cast<TFigure>(kinds[random() % 6] | (random() % 2 == 0 ? kWhite : kBlack));
    }
    return WriteFEN(b, false);
}

TEST(ChessboardId, StartsEmpty) {
    const TChessboardId id;
    EXPECT_EQ(id.m_nBits, 0);
    for (const std::uint8_t byte : id.m_bits)
        EXPECT_EQ(byte, 0);
    EXPECT_EQ(ToAlphanum6(id), "");
    EXPECT_EQ(ToAlphanum5(id), "");
}

TEST(ChessboardId, BitsFillBytesFromTheLeastSignificantOne) {
    const TChessboardId id = IdOfBits("0100000011");
    EXPECT_EQ(id.m_nBits, 10);
    EXPECT_EQ(id.m_bits[0], 2);
    EXPECT_EQ(id.m_bits[1], 3);
}

TEST(ChessboardId, BitsBeyondTheLastByteAreRefused) {
    TChessboardId id = IdOfBits(std::string(320, '1'));
    EXPECT_EQ(id.m_nBits, 320);
    EXPECT_EQ(id.m_bits[39], 255);
    try {
        AppendBit(id, false);
        FAIL() << "no failure";
    } catch (const ChessException& failure) {
        EXPECT_STREQ(failure.what(), "Exception in TChessboardId");
    }
    EXPECT_EQ(id.m_nBits, 320);
}

TEST(ChessboardId, TwoKingsTakeSeventyTwoBitsAndTwelveCharacters) {
    // White king on a1: bits 0 to 4. 62 empty squares: bits 5 to 66. Black king on h8: bits 67 to 71, value 1 + 2 in
    // the last group of six from its second bit on.
    const TChessboardId id = MakeChessboardId(BoardOf("7k/8/8/8/8/8/8/K7"));
    EXPECT_EQ(id.m_nBits, 72);
    EXPECT_EQ(ToAlphanum6(id), "100000000006");
    EXPECT_EQ(ToAlphanum5(id), "1000000000000c0");
}

TEST(ChessboardId, EachFigureHasItsShortCode) {
    const char* letters = "KkPpQqRrBbNn";
    for (unsigned code = 0; code < 12; ++code) {
        const std::string fen = std::string("8/8/8/8/8/8/8/") + letters[code] + "7";
        const TChessboardId id = MakeChessboardId(BoardOf(fen));
        EXPECT_EQ(id.m_nBits, 68);
        EXPECT_EQ(id.m_bits[0], 1 + 2 * code) << fen;
    }
}

TEST(ChessboardId, OtherBytesAreNoFigures) {
    // The mark of a pawn that may not advance is not part of the twelve codes either.
    for (const int code : {0x40, 0x80, 3, 0x40 | 3, 0x80 | 31, 0xc0 | kKing, kBlackPawn | kPawnMayNotAdvance}) {
        TChessboard b = EmptyChessboard();
        b.m_board[kE1] = static_cast<TFigure>(code);
        try {
            static_cast<void>(MakeChessboardId(b));
            FAIL() << code;
        } catch (const ChessException& failure) {
            EXPECT_STREQ(failure.what(), "Unknown figure code");
        }
    }
}

TEST(ChessboardId, DigitsOfSixBits) {
    const std::string_view digits = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ()";
    for (unsigned value = 0; value < 64; ++value)
        EXPECT_EQ(Alphanum6Digit(value), digits[value]);
    for (const unsigned value : {64u, 1000u, ~0u})
        EXPECT_THROW(static_cast<void>(Alphanum6Digit(value)), ChessException);
    try {
        static_cast<void>(Alphanum6Digit(64));
    } catch (const ChessException& failure) {
        EXPECT_STREQ(failure.what(), "Error in ToAlphanum6");
    }
}

TEST(ChessboardId, DigitsOfFiveBits) {
    const std::string_view digits = "0123456789abcdefghijklmnopqrstuv";
    for (unsigned value = 0; value < 32; ++value)
        EXPECT_EQ(Alphanum5Digit(value), digits[value]);
    for (const unsigned value : {32u, 64u, ~0u})
        EXPECT_THROW(static_cast<void>(Alphanum5Digit(value)), ChessException);
    try {
        static_cast<void>(Alphanum5Digit(32));
    } catch (const ChessException& failure) {
        EXPECT_STREQ(failure.what(), "Error in ToAlphanum5");
    }
}

TEST(ChessboardId, LastGroupMayBeShort) {
    EXPECT_EQ(ToAlphanum6(IdOfBits("1111111")), ")1");
    EXPECT_EQ(ToAlphanum6(IdOfBits("01")), "2");
    EXPECT_EQ(ToAlphanum5(IdOfBits("111110")), "v0");
    EXPECT_EQ(ToAlphanum5(IdOfBits("0101")), "a");
}

TEST(ChessboardId, BitsOfRandomBoardsFollowTheTable) {
    std::mt19937 random(3);
    for (unsigned i = 0; i < 2000; ++i) {
        const std::string fen = RandomPlacement(random, i % 101);
        ASSERT_EQ(BitsOf(MakeChessboardId(BoardOf(fen))), ExpectedBits(fen)) << fen;
    }
}

TEST(ChessboardId, TextOfRandomBoardsComesBack) {
    std::mt19937 random(4);
    for (unsigned i = 0; i < 5000; ++i) {
        const TChessboard b = BoardOf(RandomPlacement(random, i % 101));
        TChessboard copy = EmptyChessboard();
        ReadChessboardId(copy, ToAlphanum6(MakeChessboardId(b)));
        ASSERT_EQ(copy.m_board, b.m_board) << WriteFEN(b, false);
    }
}

TEST(ChessboardId, FullBoardJustFits) {
    const TChessboard b = BoardOf("nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn");
    const TChessboardId id = MakeChessboardId(b);
    EXPECT_EQ(id.m_nBits, 320);
    TChessboard copy = EmptyChessboard();
    ReadChessboardId(copy, ToAlphanum6(id));
    EXPECT_EQ(copy.m_board, b.m_board);
}

TEST(ChessboardId, ReadingTouchesOnlyTheBoard) {
    TChessboard b = ChessboardFromFEN("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR");
    b.m_nMoves = 5;
    ReadChessboardId(b, "100000000006");
    EXPECT_EQ(WriteFEN(b, false), "7k/8/8/8/8/8/8/K7");
    EXPECT_EQ(b.m_nMoves, 5);
    EXPECT_EQ(b.m_whitePawns, 8);
}

TEST(ChessboardId, WrongTextsAreRefused) {
    const struct {
        const char* m_text;
        const char* m_message;
    } rows[] = {
        {"", "Wrong chessboard id"},
        {"10000000000", "Wrong chessboard id"},       // runs out before h8
        {"1000000000060", "Wrong chessboard id"},     // a digit too many
        {"10000000000 ", "Wrong chessboard id"},      // no digit
        {"1000-0000006", "Wrong chessboard id"},      //
        {" 100000000006", "Wrong chessboard id"},     //
        {"0000000000g", "Wrong chessboard id"},       // a set bit behind the last square
        {"p0000000000", "Unknown figure short code"}, // 1, then 12
        {"v0000000000", "Unknown figure short code"}, // 1, then 15
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailureOfReading(row.m_text), row.m_message) << row.m_text;
}

TEST(ChessboardId, EmptyBoardIsElevenZeros) {
    TChessboard b = BoardOf("7k/8/8/8/8/8/8/K7");
    ReadChessboardId(b, "00000000000");
    EXPECT_EQ(WriteFEN(b, false), "8/8/8/8/8/8/8/8");
    EXPECT_EQ(ToAlphanum6(MakeChessboardId(b)), "00000000000");
}

TEST(ChessboardId, WrongTextLeavesTheBoard) {
    TChessboard b = BoardOf("7k/8/8/8/8/8/8/K7");
    EXPECT_THROW(ReadChessboardId(b, "3000000"), ChessException);
    EXPECT_THROW(ReadChessboardId(b, "300000000006Z"), ChessException);
    EXPECT_EQ(WriteFEN(b, false), "7k/8/8/8/8/8/8/K7");
}

TEST(ChessboardId, RandomTextsAreRefusedOrStandForThemselves) {
    const std::string_view digits = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ()";
    std::mt19937 random(5);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text(10 + random() % 8, '0');
        for (char& c : text)
            if (random() % 4 == 0)
                c = digits[random() % digits.size()];
        TChessboard b = EmptyChessboard();
        try {
            ReadChessboardId(b, text);
        } catch (const ChessException&) {
            continue;
        }
        ++accepted;
        ASSERT_EQ(ToAlphanum6(MakeChessboardId(b)), text);
    }
    EXPECT_GT(accepted, 50);
}

} // namespace
} // namespace quillon
