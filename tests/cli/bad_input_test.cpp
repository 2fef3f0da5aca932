// Command lines and positions that cannot be used: one clear line, and exit status 2.

#include <gtest/gtest.h>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;

struct TBadCase {
    const char* m_label;
    std::vector<std::string> m_arguments;
    const char* m_message; // a part of the first line of standard error
};

void PrintTo(const TBadCase& bad, std::ostream* out) { *out << bad.m_label; }

class BadInput : public ::testing::TestWithParam<TBadCase> {};

TEST_P(BadInput, IsToldInOneLine) {
    const TProgramResult result = RunQuillon(GetParam().m_arguments);
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_out, "");
    const std::string line = result.m_err.substr(0, result.m_err.find('\n'));
    EXPECT_EQ(line.substr(0, 9), "quillon: ");
    EXPECT_NE(line.find(GetParam().m_message), std::string::npos) << line;
}

std::vector<std::string> Position(const char* fen) { return {"solve", "--fen", fen, "--moves", "2"}; }

constexpr const char* kGoodFen = "8/8/8/8/8/1K5Q/1p6/kn6";

INSTANTIATE_TEST_SUITE_P(
    Positions, BadInput,
    ::testing::Values(
        TBadCase{"EmptyFen", Position(""), "FEN"},
        TBadCase{"RankTooLong", Position("8/8/8/8/8/1K5Q/1p6/kn7"), "too many files in rank 1"},
        TBadCase{"RankTooShort", Position("8/8/8/8/8/1K4Q/1p6/kn6"), "too few files in rank 3"},
        TBadCase{"RanksTooFew", Position("8/8/8/8/1K5Q/1p6/kn6"), "fewer than eight ranks"},
        TBadCase{"RanksTooMany", Position("8/8/8/8/8/8/1K5Q/1p6/kn6"), "more than eight ranks"},
        TBadCase{"UnknownLetter", Position("8/8/8/8/8/1K5X/1p6/kn6"), "unknown letter 'X' in rank 3"},
        TBadCase{"NoBlackKing", Position("8/8/8/8/8/1K5Q/1p6/1n6"), "number of kings"},
        TBadCase{"NoWhiteKing", Position("8/8/8/8/8/7Q/1p6/kn6"), "number of kings"},
        TBadCase{"TwoWhiteKings", Position("8/8/8/7K/8/1K5Q/1p6/kn6"), "number of kings"},
        TBadCase{"PawnOnTheFirstRank", Position("8/8/8/8/8/1K5Q/8/kP6"), "Pawns cannot occupy"},
        TBadCase{"PawnOnTheLastRank", Position("7p/8/8/8/8/1K5Q/8/kn6"), "Pawns cannot occupy"},
        TBadCase{"BothKingsInCheck", Position("k6R/8/8/8/8/8/8/K6r"), "Both kings attacked"},
        TBadCase{"KingsSideBySide", Position("8/8/8/8/8/8/1K6/k7"), "kings"},
        TBadCase{"BlackInCheck", Position("k6R/8/8/8/8/8/8/K7"), "Black is in check with White to move."},
        TBadCase{"BlackToMove", Position("8/8/8/8/8/1K5Q/1p6/kn6 b - - 0 1"), "Black is to move"},
        TBadCase{"UnknownSide", Position("8/8/8/8/8/1K5Q/1p6/kn6 x - - 0 1"), "side to move 'x'"},
        TBadCase{"NeitherFenNorId", Position("hello!"), "neither a FEN"},
        TBadCase{"ShowBadFen", {"show", "--fen", "8/8"}, "fewer than eight ranks"},
        TBadCase{"PerftBadFen", {"perft", "--fen", "8/8", "--depth", "2"}, "fewer than eight ranks"},
        TBadCase{"PerftTooManyMen",
                 {"perft", "--fen", "QQQQQKnk/Q4QnP/Q5QQ/Q6Q/Q6Q/Q6Q/Q6Q/QQQQQQQQ", "--depth", "1"},
                 "More than 16 figures of one colour."},
        TBadCase{"PerftBlackInCheck", {"perft", "--fen", "k6R/8/8/8/8/8/8/K7", "--depth", "2"}, "Black is in check"},
        TBadCase{"PerftWhiteInCheck", {"perft", "--fen", "7k/8/8/8/8/8/8/K6r b", "--depth", "2"}, "White is in check"}),
    [](const auto& param) { return param.param.m_label; });

INSTANTIATE_TEST_SUITE_P(
    Usage, BadInput,
    ::testing::Values(
        TBadCase{"NoCommand", {}, "a command is needed"}, TBadCase{"UnknownCommand", {"frobnicate"}, "frobnicate"},
        TBadCase{"UnknownOption", {"solve", "--frobnicate"}, "--frobnicate"},
        TBadCase{"FenWithoutMoves", {"solve", "--fen", kGoodFen}, "--fen requires --moves"},
        TBadCase{"MovesWithoutFen", {"solve", "--moves", "3"}, "--moves requires --fen"},
        TBadCase{"FenAndFile", {"solve", "a.cp", "--fen", kGoodFen, "--moves", "3"}, "excludes --fen"},
        TBadCase{"FenAndId", {"solve", "--id", "1", "--fen", kGoodFen, "--moves", "3"}, "excludes --fen"},
        TBadCase{"NoMoves", {"solve", "--fen", kGoodFen, "--moves", "0"}, "a number from 1 to 299"},
        TBadCase{"TooManyMoves", {"solve", "--fen", kGoodFen, "--moves", "300"}, "a number from 1 to 299"},
        TBadCase{"MovesNoNumber", {"solve", "--fen", kGoodFen, "--moves", "3x"}, "not '3x'"},
        TBadCase{"MovesHuge", {"solve", "--fen", kGoodFen, "--moves", "99999999999999999999"}, "1 to 299"},
        TBadCase{"MovesMissing", {"solve", "--fen", kGoodFen, "--moves"}, "--moves"},
        TBadCase{"StopOnFive", {"solve", "--stop-on", "5"}, "a number from 1 to 4"},
        TBadCase{"StopOnAndAll", {"solve", "--stop-on", "2", "--all"}, "excludes"},
        TBadCase{"HybridAndBruteForce", {"solve", "--hybrid", "--brute-force"}, "excludes"},
        TBadCase{"QuietAndJson", {"solve", "--quiet", "--json"}, "excludes"},
        TBadCase{"NoTime", {"solve", "--time-limit", "0"}, "seconds above 0"},
        TBadCase{"TimeNoNumber", {"solve", "--time-limit", "nan"}, "seconds above 0"},
        TBadCase{
            "MemoryNegative", {"solve", "--memory", "-1"}, "--memory: a number from 0 to 1048576 is wanted, not '-1'"},
        TBadCase{"MemoryTooMuch", {"solve", "--memory", "1048577"}, "a number from 0 to 1048576"},
        TBadCase{"MemoryWithUnit", {"solve", "--memory", "64MB"}, "not '64MB'"},
        TBadCase{"MemoryHuge", {"solve", "--memory", "99999999999999999999"}, "a number from 0 to 1048576"},
        TBadCase{"MemoryMissing", {"solve", "--memory"}, "--memory"},
        TBadCase{"ShortMateTooDeep",
                 {"solve", "--short-mate-depth", "17"},
                 "--short-mate-depth: a number from 0 to 16 is wanted, not '17'"},
        TBadCase{"ShortMateNegative", {"solve", "--short-mate-depth", "-1"}, "a number from 0 to 16"},
        TBadCase{"ShortMateNoNumber", {"solve", "--short-mate-depth", "#3"}, "not '#3'"},
        TBadCase{"ShortMateInBruteForce", {"solve", "--short-mate-depth", "3", "--brute-force"}, "excludes"},
        TBadCase{"NoThreads", {"solve", "--threads", "0"}, "threads"},
        TBadCase{"ThreadsNoNumber", {"solve", "--threads", "two"}, "threads"},
        TBadCase{"ThreadsWithoutLevels", {"solve", "--threads", "2^"}, "threads"},
        TBadCase{"IdNoNumber", {"solve", "--id", "1,x"}, "numbers of problems"},
        TBadCase{"IdBackwards", {"solve", "--id", "9-3"}, "numbers of problems"},
        TBadCase{"IdEmpty", {"solve", "--id", ""}, "numbers of problems"},
        TBadCase{"TwoFiles", {"solve", "a.cp", "b.cp"}, "b.cp"}, TBadCase{"PerftWithoutDepth", {"perft"}, "--depth"},
        TBadCase{"PerftTooDeep", {"perft", "--depth", "41"}, "a number from 0 to 40"},
        TBadCase{"ShowWithoutFen", {"show"}, "--fen"}),
    [](const auto& param) { return param.param.m_label; });

TEST(BadFen, IsAnErrorObjectInJson) {
    const TProgramResult result = RunQuillon({"solve", "--fen", "8/8/8/8/8/8/8/8", "--moves", "2", "--json"});
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_out, "{\"id\":0,\"result\":\"error\",\"message\":\"Illegal number of kings.\"}\n");
    EXPECT_EQ(result.m_err, "quillon: Illegal number of kings.\n");
}

TEST(Help, IsOnStandardOutputAtEveryLevel) {
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"--help"}, {"solve", "--help"}, {"perft", "-h"}, {"show", "--help"}, {"bench", "--help"}}) {
        const TProgramResult result = RunQuillon(arguments);
        EXPECT_EQ(result.m_nStatus, 0);
        EXPECT_EQ(result.m_err, "");
        EXPECT_NE(result.m_out.find("Usage: quillon "), std::string::npos) << result.m_out;
    }
    EXPECT_NE(RunQuillon({"--help"}).m_out.find("Examples:"), std::string::npos);
    const std::string solveHelp = RunQuillon({"solve", "--help"}).m_out;
    for (const char* option : {"--time-limit SECONDS", "--memory MB", "--short-mate-depth N"})
        EXPECT_NE(solveHelp.find(option), std::string::npos) << option;
}

TEST(Version, IsANumberOfThreeParts) {
    const TProgramResult result = RunQuillon({"--version"});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(result.m_out.substr(0, 8), "quillon ");
    EXPECT_EQ(std::count(result.m_out.begin(), result.m_out.end(), '.'), 2) << result.m_out;
}

TEST(StandardOutput, FullDiskIsAFailureOfTheSystem) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"solve", "--fen", kGoodFen, "--moves", "2", "--json"},
                                               {"solve", "--fen", kGoodFen, "--moves", "2"},
                                               {"show", "--fen", kGoodFen},
                                               {"perft", "--depth", "1"},
                                               {"--help"}}) {
        const TProgramResult result = RunQuillon(arguments, {"", "/dev/full"});
        EXPECT_EQ(result.m_nStatus, 3) << arguments[0];
        EXPECT_NE(result.m_err.find("quillon: cannot write to standard output"), std::string::npos) << result.m_err;
    }
}

} // namespace
} // namespace quillon
