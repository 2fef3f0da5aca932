// The words of the UCI protocol.

#include <gtest/gtest.h>
#include <limits>

#include "cli/uci_text.h"
#include "core/figures.h"

namespace quillon {
namespace {

using TWords = std::vector<std::string>;

TEST(UciText, WordsAreSeparatedByAnyBlanks) {
    EXPECT_EQ(WordsOf("  go \t mate  3 \r"), (TWords{"go", "mate", "3"}));
    EXPECT_EQ(WordsOf(" \t\r"), TWords{});
    EXPECT_EQ(WordsOf(""), TWords{});
}

TEST(UciText, NumbersAreWholeWords) {
    EXPECT_EQ(ReadNumber("12"), 12);
    EXPECT_EQ(ReadNumber("-3"), -3);
    EXPECT_EQ(ReadNumber("+7"), 7);
    for (const char* word : {"", "+", "-", "1x", "x", "1.5", "+-1", "0x10", "--1"})
        EXPECT_EQ(ReadNumber(word), std::nullopt) << word;
}

TEST(UciText, NumbersOutOfRangeAreTheNearest) {
    EXPECT_EQ(ReadNumber("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(ReadNumber("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
}

TEST(UciText, MovesAreWrittenInCoordinates) {
    EXPECT_EQ(UciMove({kE1, kG1, 0, 0}), "e1g1");
    EXPECT_EQ(UciMove({SquareAt(1, 6), SquareAt(0, 7), kKnight, 0}), "b7a8n");
    EXPECT_EQ(UciMove({SquareAt(1, 6), SquareAt(1, 7), kQueen, 0}), "b7b8q");
}

TEST(UciText, EveryMoveIsReadAsItIsWritten) {
    for (int from = 0; from < kSquares; ++from)
        for (int to = 0; to < kSquares; ++to)
            for (const TFigure kind : {kNoFigure, kQueen, kRook, kBishop, kKnight}) {
                const TMove move{static_cast<std::uint8_t>(from), static_cast<std::uint8_t>(to), kind, 0};
                const auto read = ReadUciMove(UciMove(move));
                ASSERT_TRUE(read && SameMove(*read, move)) << UciMove(move);
            }
    EXPECT_EQ(ReadUciMove("E7E8Q")->m_nPromotion, kQueen);
}

TEST(UciText, WhatIsNoMoveIsNotRead) {
    for (const char* word :
         {"", "e2", "e2e", "e2e9", "i2e4", "e2e4k", "e2e4p", "e2e4qq", "0000", "e2-e4", "\x80\xff\x01\x02"})
        EXPECT_FALSE(ReadUciMove(word)) << word;
}

TEST(UciGo, TakesItsWordsInAnyOrder) {
    const TUciGo go = ReadGo({"nodes", "500", "INFINITE", "mate", "3", "depth", "7", "movetime", "20"});
    EXPECT_EQ(go.m_nodes, 500);
    EXPECT_TRUE(go.m_bInfinite);
    EXPECT_EQ(go.m_mate, 3);
    EXPECT_EQ(go.m_depth, 7);
    EXPECT_EQ(go.m_msMove, 20);
    EXPECT_TRUE(go.m_unused.empty());
}

TEST(UciGo, TellsWhatItDoesNotUse) {
    const TUciGo go = ReadGo({"searchmoves", "e2e4", "mate", "x", "nodes"});
    EXPECT_EQ(go.m_unused, (TWords{"searchmoves", "e2e4", "mate", "x", "nodes"}));
    EXPECT_EQ(go.m_mate, std::nullopt);
    EXPECT_EQ(go.m_nodes, std::nullopt);
}

TEST(UciGo, TheTimeIsThatOfTheMoveOrAShareOfTheClock) {
    EXPECT_EQ(TimeOf(ReadGo({}), true), std::nullopt);
    EXPECT_EQ(TimeOf(ReadGo({"movetime", "1500"}), true), 1500);
    const TUciGo clocks = ReadGo({"wtime", "60000", "btime", "30000", "winc", "0", "binc", "1000"});
    EXPECT_EQ(TimeOf(clocks, true), 2000);
    EXPECT_EQ(TimeOf(clocks, false), 1750);
    EXPECT_EQ(TimeOf(ReadGo({"wtime", "10000", "movestogo", "2"}), true), 5000);
    EXPECT_EQ(TimeOf(ReadGo({"wtime", "10000"}), false), std::nullopt);
}

TEST(UciGo, TheShareNeverPassesTheClock) {
    for (const char* left : {"-50", "0", "30", "100", "1000", "99999999999999999999"})
        for (const char* moves : {"-1", "0", "1", "40"}) {
            const TUciGo go = ReadGo({"wtime", left, "winc", "5000", "movestogo", moves});
            const auto ms = TimeOf(go, true);
            ASSERT_TRUE(ms);
            EXPECT_GE(*ms, 1);
            EXPECT_LE(*ms, std::max<std::int64_t>(*go.m_msWhite, 10)) << left << " " << moves;
        }
}

TEST(UciOption, NameAndValueMayHaveSeveralWords) {
    const TUciOption option = ReadOption("setoption \tname Some  Long\tName value A b");
    EXPECT_EQ(option.m_name, "some long name");
    EXPECT_EQ(option.m_value, "A b");
    EXPECT_EQ(ReadOption("NAME Clear Hash").m_name, "clear hash");
    EXPECT_EQ(ReadOption("value 3").m_name, "");
    EXPECT_EQ(ReadOption("").m_name, "");
}

TEST(UciOption, BlanksInsideAValueStay) {
    EXPECT_EQ(ReadOption("setoption name Path Value  /My  Tables\tof value 5 \r").m_value, "/My  Tables\tof value 5");
    EXPECT_EQ(ReadOption("setoption name Path value \t\r").m_value, "");
    EXPECT_EQ(ReadOption("setoption name Path value").m_value, "");
}

TEST(UciInfo, HasWhatIsKnown) {
    EXPECT_EQ(InfoLine({3, 2, 1000, 500, {{kE1, kG1, 0, 0}, {kE8, kE8 - 8, 0, 0}}}),
              "info depth 3 score mate 2 nodes 1000 nps 2000 time 500 pv e1g1 e8e7");
    EXPECT_EQ(InfoLine({1, 0, 7, 0, {}}), "info depth 1 nodes 7 nps 7000 time 0");
}

TEST(UciInfo, TextsOfOthersStayOnOneLineAndAreCut) {
    EXPECT_EQ(InfoString("a\nb\x1b").find_first_of("\n\x1b"), std::string::npos);
    EXPECT_LT(InfoString(std::string(100000, 'x')).size(), 300u);
}

} // namespace
} // namespace quillon
