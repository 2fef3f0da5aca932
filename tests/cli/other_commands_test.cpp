// `quillon perft`, `show` and `bench`.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;

std::uint64_t Leaves(const std::string& fen, int nDepth) {
    std::vector<std::string> arguments{"perft", "--depth", std::to_string(nDepth), "--json"};
    if (!fen.empty())
        arguments.insert(arguments.end(), {"--fen", fen});
    const TProgramResult result = RunQuillon(arguments);
    EXPECT_EQ(result.m_nStatus, 0) << result.m_err;
    return TJson::parse(result.m_out, nullptr, false)["leaves"];
}

TEST(PerftCommand, KnownCounts) {
    EXPECT_EQ(Leaves("", 0), 1u);
    EXPECT_EQ(Leaves("", 1), 20u);
    EXPECT_EQ(Leaves("", 4), 197281u);
    EXPECT_EQ(Leaves("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 3), 97862u);
}

TEST(PerftCommand, LeadingZerosDoNotMakeAnOctalNumber) {
    const TProgramResult result = RunQuillon({"perft", "--depth", "010", "--fen", "k7/8/8/8/8/8/8/K7", "--json"});
    EXPECT_EQ(TJson::parse(result.m_out)["depth"], 10);
}

TEST(PerftCommand, BlackToMove) {
    EXPECT_EQ(Leaves("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", 3), 8902u);
    EXPECT_EQ(Leaves("r2q1rk1/pP1p2pp/Q4n2/bbp1p3/Np6/1B3NBn/pPPP1PPP/R3K2R b KQ - 0 1", 3), 9467u);
}

TEST(PerftCommand, DivideAddsUp) {
    const TProgramResult result = RunQuillon({"perft", "--depth", "3", "--divide", "--json"});
    const TJson object = TJson::parse(result.m_out);
    EXPECT_EQ(object["divide"].size(), 20u);
    EXPECT_EQ(object["divide"]["e2-e4"], 600);
    std::uint64_t sum = 0;
    for (const auto& [move, leaves] : object["divide"].items())
        sum += leaves.get<std::uint64_t>();
    EXPECT_EQ(sum, 8902u);
}

TEST(PerftCommand, ForAPerson) {
    const TProgramResult result = RunQuillon({"perft", "--depth", "1", "--divide"});
    const std::vector<std::string> lines = result.OutLines();
    ASSERT_EQ(lines.size(), 21u) << result.m_out;
    EXPECT_NE(std::find(lines.begin(), lines.end(), "Ng1-f3: 1"), lines.end());
    EXPECT_EQ(lines.back().substr(0, 10), "20 leaves;");
}

TEST(PerftCommand, FieldsThatAreNotFollowedAreNotedOnce) {
    const TProgramResult result = RunQuillon({"perft", "--depth", "1", "--fen", "4k2r/8/8/3pP3/8/8/8/4K3 w - d6 0 1"});
    EXPECT_EQ(result.m_err, "quillon: note: all castlings that the board allows are possible, whatever the castling "
                            "field says; note: no en passant capture is possible in the first move, whatever the en "
                            "passant field says\n");
    EXPECT_EQ(result.m_out.substr(0, 9), "6 leaves;");
}

TEST(ShowCommand, TellsWhatAPositionIs) {
    const TProgramResult result = RunQuillon({"show", "--fen", "r3k2r/8/8/8/8/8/8/R3K3"});
    EXPECT_EQ(result.m_nStatus, 0);
    for (const char* line : {"\n  8 | r . . . k . . r |\n", "\n  1 | R . . . K . . . |\n", "\nTo move:        White\n",
                             "\nFEN:            r3k2r/8/8/8/8/8/8/R3K3 w Qkq - 0 1\n", "\nPosition type:  Rrr (",
                             "\nCastlings:      White 0-0-0; Black 0-0, 0-0-0\n", "\nCheck:          none\n"})
        EXPECT_NE(result.m_out.find(line), std::string::npos) << line << result.m_out;
}

TEST(ShowCommand, BlackToMoveInCheck) {
    const TProgramResult result = RunQuillon({"show", "--fen", "k6R/8/8/8/8/8/8/K7 b"});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_NE(result.m_out.find("FEN:            k6R/8/8/8/8/8/8/K7 b - - 0 1\n"), std::string::npos) << result.m_out;
    EXPECT_NE(result.m_out.find("Check:          Black is in check\n"), std::string::npos) << result.m_out;
    const TProgramResult white = RunQuillon({"show", "--fen", "k6R/8/8/8/8/8/8/K7 w"});
    EXPECT_NE(white.m_out.find("which cannot be"), std::string::npos) << white.m_out;
}

TEST(ShowCommand, MoreFiguresThanAPositionTypeHas) {
    const TProgramResult result = RunQuillon({"show", "--fen", "k7/pppppp2/8/8/8/8/8/K7"});
    EXPECT_NE(result.m_out.find("Position type:  none (more than five"), std::string::npos) << result.m_out;
    EXPECT_NE(RunQuillon({"show", "--fen", "k7/8/8/8/8/8/8/K7"}).m_out.find("none (bare kings)"), std::string::npos);
}

/// A bench takes seconds; the tests share one.
const TProgramResult& FirstBench() {
    static const TProgramResult result = RunQuillon({"bench"});
    return result;
}

TEST(BenchCommand, EveryRunHasTheSameFingerprint) {
    const TProgramResult &first = FirstBench(), second = RunQuillon({"bench"});
    ASSERT_EQ(first.m_nStatus, 0) << first.m_err;
    const std::vector<std::string> a = first.OutLines(), b = second.OutLines();
    ASSERT_GT(a.size(), 30u);
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i].find("econd") == std::string::npos) {
            EXPECT_EQ(a[i], b[i]);
        }
    EXPECT_EQ(a.back().substr(0, 7), "Bench: ");
    EXPECT_EQ(a[a.size() - 2].substr(0, 13), "Fingerprint: ");
}

TEST(BenchCommand, SumsTheNodesOfItsProblems) {
    const TProgramResult& result = FirstBench();
    std::uint64_t sum = 0;
    for (const std::string& line : result.OutLines())
        if (line.find(" nodes  #") != std::string::npos)
            sum += std::stoull(line);
    EXPECT_EQ("Bench: " + std::to_string(sum), result.OutLines().back());
    EXPECT_EQ(result.m_out.find("doubtful"), std::string::npos) << result.m_out;
}

} // namespace
} // namespace quillon
