#include "library/pgn_text.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/notation.h"
#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

std::string PgnOf(const std::string& problem) {
    std::vector<std::string> faults;
    const std::string text = PgnText(*ReadOne("UTF-8\n" + problem), faults);
    EXPECT_EQ(faults, std::vector<std::string>());
    return text;
}

/// The moves alone.
std::string MovesOf(const std::string& problem) {
    const std::string text = PgnOf(problem);
    const auto begin = text.find("\n\n") + 2;
    return text.substr(begin, text.size() - begin - 1);
}

std::string Problem(const std::string& fen, const std::string& variants, const std::string& behind = "",
                    const std::string& header = "1 #9") {
    return header + "\n//!VARIANTS\n" + variants + "//!ENDVARIANTS\n{\nFEN: " + fen + "\n" + behind + "\n}\n";
}

/// The short notation of one move.
std::string Short(const std::string& fen, const std::string& move) {
    const std::string moves = MovesOf(Problem(fen, "//!{v} " + move + "\n"));
    return moves.substr(3, moves.rfind(' ') - 3);
}

TEST(Pgn, ShortNotation) {
    EXPECT_EQ(Short("4k3/8/8/8/8/8/4P3/4K3", "e2-e4"), "e4");
    EXPECT_EQ(Short("4k3/8/8/3p4/4P3/8/8/4K3", "e4:d5"), "exd5");
    EXPECT_EQ(Short("7k/4P3/8/8/8/8/8/4K3", "e7-e8N"), "e8=N");
    EXPECT_EQ(Short("3r3k/4P3/8/8/8/8/8/4K3", "e7:d8"), "exd8=Q+"); // a promotion without a figure is to a queen
    EXPECT_EQ(Short("4k3/8/8/8/8/8/8/R3K2R", "0-0"), "O-O");
    EXPECT_EQ(Short("4k3/8/8/8/8/8/8/R3K2R", "0-0-0"), "O-O-O");
    EXPECT_EQ(Short("k7/8/1K6/8/8/8/7R/4R3", "Re1-e8"), "Re8#");
    EXPECT_EQ(Short("7k/5K2/8/8/8/8/8/6Q1", "Qg1-g6"), "Qg6"); // stalemate is no mate
    EXPECT_EQ(Short("4k3/8/8/3b4/8/2N5/8/4K3", "Nc3:d5"), "Nxd5");
}

TEST(Pgn, FiguresThatCouldBeMeantAreToldApart) {
    EXPECT_EQ(Short("4k3/8/8/8/8/1N3N2/8/K7", "Nb3-d2"), "Nbd2");
    EXPECT_EQ(Short("4k3/8/8/1N6/8/1N6/8/K7", "Nb3-d4"), "N3d4");
    EXPECT_EQ(Short("1k6/8/8/8/4Q2Q/8/8/K6Q", "Qh4-e1"), "Qh4e1");
    // A figure that is pinned cannot be meant.
    EXPECT_EQ(Short("4r2k/8/8/8/4N3/8/2N5/4K3", "Nc2-d4"), "Nd4");
    EXPECT_EQ(Short("4r2k/8/8/8/4N3/8/8/N3K3", "Na1-c2"), "Nc2");
    EXPECT_EQ(Short("4r2k/8/8/8/4N3/8/4K3/N7", "Na1-c2"), "Nc2");
}

TEST(Pgn, AGameHasThePositionInItsTags) {
    EXPECT_EQ(
        PgnOf("7 s#3\n//#TAGS\n//#model mate\n//#own\n{\nDesc: A \"quoted\" back\\slash\nFEN: "
              "r3k3/8/8/8/8/8/8/R3K2R\n}\n"),
        "[Event \"A \\\"quoted\\\" back\\\\slash\"]\n[Site \"?\"]\n[Date \"????.??.??\"]\n[Round \"7\"]\n"
        "[White \"?\"]\n[Black \"?\"]\n[Result \"*\"]\n[SetUp \"1\"]\n"
        "[FEN \"r3k3/8/8/8/8/8/8/R3K2R w KQq - 0 1\"]\n[Stipulation \"s#3\"]\n[Themes \"model mate, own\"]\n\n*\n");
}

TEST(Pgn, VariantsAreVariationsOfTheMainVariant) {
    const std::string fen = "8/8/8/4k3/8/8/8/3QK3";
    EXPECT_EQ(
        MovesOf(Problem(fen, "//!{a first} Qd1-d8 Ke5-e4 Ke1-e2\n//!{b} Qd1-d8[again] Ke5-f5 Qd8-f8\n//!{c} Ke1-e2\n"
                             "//!{Main variant} Qd1-d8[key] Ke5-f5 Qd8-f6\n")),
        "1. Qd8 {key; again} (1. Ke2) 1... Kf5 (1... Ke4 2. Ke2) 2. Qf6+ (2. Qf8+) *");
}

TEST(Pgn, KeysOfTheAnswerAreVariationsToo) {
    const std::string fen = "k7/8/1K6/8/8/8/7R/4R3";
    EXPECT_EQ(MovesOf("1 #1\n{\nFEN: " + fen + "\nAnswer: Re1-e8, Rh2-h8\n}\n"), "1. Re8# (1. Rh8#) 1-0");
    EXPECT_EQ(MovesOf(Problem(fen, "//!{Main variant} Re1-e8\n", "A: Re1-e8")), "1. Re8# 1-0");
}

TEST(Pgn, MovesThatWerePlayedAreTheGame) {
    EXPECT_EQ(MovesOf("7\n{\nFEN: 4k3/8/8/8/8/8/8/R3K3\nMoves: Ra1-a8 Ke8-d7\n}\n"), "1. Ra8+ Kd7 *");
}

TEST(Pgn, LinesAreShort) {
    std::string variant = "//!{v}";
    for (int i = 0; i < 40; ++i)
        variant += " Ke1-e2[a word] Ke8-e7 Ke2-e1 Ke7-e8";
    const std::string text = PgnOf(Problem("4k3/8/8/8/8/8/8/R3K3", variant + "\n"));
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        EXPECT_LE(end - at, 79u);
        at = end + 1;
    }
    EXPECT_EQ(text.find("  "), std::string::npos);
}

TEST(Pgn, CommentsStayComments) {
    EXPECT_EQ(MovesOf(Problem("4k3/8/8/8/8/8/8/4K3", "//!{v} Ke1-e2[a } b  {c] Ke8-e7\n")),
              "1. Ke2 {a ) b {c} 1... Ke7 *");
}

/// Two million words take a moment, not their square.
TEST(Pgn, ALongCommentIsWrittenInLinearTime) {
    std::string words = "x";
    for (int n = 0; n < 21; ++n)
        words += " " + words;
    const std::string text = MovesOf(Problem("8/8/8/4k3/8/8/8/R3K3", "//!{v} Ra1-a5[" + words + "]\n"));
    EXPECT_EQ(std::count(text.begin(), text.end(), 'x'), 1 << 21);
}

TEST(Pgn, AVariantStopsWhereItIsIllegal) {
    std::vector<std::string> faults;
    const auto problem = ReadOne(Problem("4k3/8/8/8/8/8/8/4K3", "//!{v} Ke1-e2 Ke8-e6 Ke2-e3\n"));
    const std::string text = PgnText(*problem, faults);
    EXPECT_EQ(faults, (std::vector<std::string>{"Move 2 in the stored variant is invalid: \"v\""}));
    EXPECT_NE(text.find("\n1. Ke2 *\n"), std::string::npos);
}

} // namespace
} // namespace quillon
