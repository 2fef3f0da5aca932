// `quillon solve`: what it prints of problems that can be solved.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;

// Kb3-c2 is the only key: 1.Kb3-c2 Ka1-a2 2.Qh3-b3 Ka2-a1 3.Qb3:b2, and after 1...Nb1 moves 2.Qa3 mates at once.
constexpr const char* kMateInThree = "8/8/8/8/8/1K5Q/1p6/kn6";

// Mate at once by either rook, and by nothing else.
constexpr const char* kTwoMatesInOne = "k7/8/1K6/8/8/8/7R/4R3";

std::vector<std::string> Fen(const char* fen, int nMoves, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"solve", "--fen", fen, "--moves", std::to_string(nMoves)});
    return more;
}

TJson SolveJson(const std::vector<std::string>& arguments, const TProgramInput& input = {}) {
    const TProgramResult result = RunQuillon(arguments, input);
    EXPECT_EQ(result.OutLines().size(), 1u) << result.m_out << result.m_err;
    return TJson::parse(result.m_out, nullptr, false);
}

TEST(SolveJson, HasTheFieldsOfTheContractInTheirOrder) {
    const TJson object = SolveJson(Fen(kMateInThree, 3, {"--json", "--all"}));
    std::vector<std::string> names;
    for (const auto& [name, value] : object.items())
        names.push_back(name);
    EXPECT_EQ(names, (std::vector<std::string>{"id", "fen", "stipulation", "result", "keys", "complete", "variant",
                                               "passes", "nodes", "seconds", "register", "trialNodes"}));
}

TEST(SolveJson, OneKey) {
    const TJson object = SolveJson(Fen(kMateInThree, 3, {"--json", "--all"}));
    EXPECT_EQ(object["id"], 0);
    EXPECT_EQ(object["fen"], kMateInThree);
    EXPECT_EQ(object["stipulation"], 3);
    EXPECT_EQ(object["result"], "mate");
    EXPECT_EQ(object["keys"], TJson({"Kb3-c2"}));
    EXPECT_EQ(object["complete"], true);
    ASSERT_FALSE(object["variant"].empty());
    EXPECT_EQ(object["variant"][0], "Kb3-c2");
    EXPECT_EQ(object["variant"].size(), 5u);
    EXPECT_FALSE(object["passes"].empty());
    EXPECT_GT(object["nodes"], 0);
    EXPECT_GE(object["seconds"], 0.0);
}

TEST(SolveJson, ProvesThatThereIsNoMate) {
    const TJson object = SolveJson(Fen(kMateInThree, 2, {"--json"}));
    EXPECT_EQ(object["result"], "no-mate");
    EXPECT_EQ(object["keys"], TJson::array());
    EXPECT_EQ(object["complete"], true);
    EXPECT_EQ(object["variant"], TJson::array());
}

TEST(SolveJson, FirstKeyOrAll) {
    const TJson first = SolveJson(Fen(kTwoMatesInOne, 1, {"--json"}));
    EXPECT_EQ(first["result"], "mate");
    EXPECT_EQ(first["keys"].size(), 1u);
    EXPECT_EQ(first["complete"], false);
    TJson all = SolveJson(Fen(kTwoMatesInOne, 1, {"--json", "--all"}));
    std::sort(all["keys"].begin(), all["keys"].end());
    EXPECT_EQ(all["keys"], TJson({"Re1-e8", "Rh2-h8"}));
    EXPECT_EQ(all["complete"], true);
}

TEST(SolveJson, StopsOnTheNumberOfKeysThatIsAskedFor) {
    // A rook and a queen on an open board: far more than four ways.
    constexpr const char* kManyKeys = "k7/8/1K6/8/8/8/5Q1R/8";
    for (const int nKeys : {1, 2, 3, 4}) {
        const TJson object = SolveJson(Fen(kManyKeys, 2, {"--json", "--stop-on", std::to_string(nKeys)}));
        EXPECT_EQ(object["keys"].size(), static_cast<std::size_t>(nKeys));
        EXPECT_EQ(object["result"], "mate");
    }
}

TEST(SolveJson, WaysToSearchAgree) {
    for (const char* way : {"--hybrid", "--brute-force", "--safe", "--no-relax"}) {
        const TJson object = SolveJson(Fen(kMateInThree, 3, {"--json", "--all", way}));
        EXPECT_EQ(object["result"], "mate") << way;
        EXPECT_EQ(object["keys"], TJson({"Kb3-c2"})) << way;
    }
}

TEST(SolveJson, PositionIdStandsForAFen) {
    const TProgramResult shown = RunQuillon({"show", "--fen", kMateInThree});
    const std::string label = "Position id:    ";
    const std::size_t at = shown.m_out.find(label);
    ASSERT_NE(at, std::string::npos);
    const std::size_t begin = at + label.size();
    const std::string id = shown.m_out.substr(begin, shown.m_out.find('\n', begin) - begin);
    const TJson object = SolveJson(Fen(id.c_str(), 3, {"--json"}));
    EXPECT_EQ(object["fen"], kMateInThree);
    EXPECT_EQ(object["result"], "mate");
}

TEST(SolveJson, DescriptionAndPlaceOfAProblemComeFromItsFile) {
    const TJson object =
        SolveJson({"solve", "-", "--json"}, {"UTF-8\n117 #3\n{\nFEN: 8/8/8/8/8/1K5Q/1p6/kn6\n}\n", ""});
    EXPECT_EQ(object["id"], 117);
    EXPECT_EQ(object["result"], "mate");
}

TEST(SolveText, ForAPerson) {
    const TProgramResult result = RunQuillon(Fen(kMateInThree, 3, {"--all"}));
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(result.m_err, "");
    const std::string& text = result.m_out;
    EXPECT_NE(text.find("  8 | . . . . . . . . |\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  3 | . K . . . . . Q |\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  1 | k n . . . . . . |\n"), std::string::npos) << text;
    EXPECT_NE(text.find("      a b c d e f g h\n"), std::string::npos) << text;
    EXPECT_NE(text.find("#3   8/8/8/8/8/1K5Q/1p6/kn6\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\n1.Kb3-c2!\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nMain variant: 1.Kb3-c2 Ka1-a2 2.Qh3-b3 Ka2-a1 3.Qb3:b2\n"), std::string::npos) << text;
    EXPECT_NE(text.find("only key (proved)"), std::string::npos) << text;
}

TEST(SolveText, NoMateIsSaidToBeProved) {
    const TProgramResult result = RunQuillon(Fen(kMateInThree, 2));
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_NE(result.m_out.find("No solution found (#2 or less)"), std::string::npos) << result.m_out;
    EXPECT_NE(result.m_out.find("This is proved."), std::string::npos) << result.m_out;
}

TEST(SolveText, QuietIsOneLine) {
    const TProgramResult result = RunQuillon(Fen(kMateInThree, 3, {"--quiet"}));
    ASSERT_EQ(result.OutLines().size(), 1u) << result.m_out;
    EXPECT_EQ(result.m_out.substr(0, 18), "#3 mate 1.Kb3-c2! ");
}

TEST(SolveText, CastlingAndPromotionInLongNotation) {
    // The rook must be guarded against Ka1-a2 only by the castling: 1.Rg2 Ka1 2.0-0 mate.
    const TProgramResult castling = RunQuillon(Fen("8/4B1N1/6R1/8/5p2/8/8/1k2K2R", 2, {"--all"}));
    EXPECT_NE(castling.m_out.find("1.Rg6-g2!\nMain variant: 1.Rg6-g2 Kb1-a1 2.0-0\n"), std::string::npos)
        << castling.m_out;
    const TProgramResult promotion = RunQuillon(Fen("8/R1P1k2P/6Kp/8/4B3/8/8/8", 2, {"--all"}));
    EXPECT_NE(promotion.m_out.find("1.c7-c8N!"), std::string::npos) << promotion.m_out;
}

TEST(SolveThreads, MoreThanOneGiveTheSameAnswer) {
    const TProgramResult one = RunQuillon(Fen(kMateInThree, 3, {"--threads", "1", "--all", "--quiet"}));
    for (const char* threads : {"2", "4", "4^2", "16^3"}) {
        const TProgramResult more = RunQuillon(Fen(kMateInThree, 3, {"--threads", threads, "--all", "--quiet"}));
        EXPECT_EQ(more.m_nStatus, 0);
        EXPECT_EQ(more.m_err, "");
        EXPECT_EQ(more.m_out.substr(0, 18), one.m_out.substr(0, 18));
    }
}

TEST(SolveCastlingField, IsNotedWhereItIsNotFollowed) {
    constexpr const char* kCastlingMate = "8/4B1N1/6R1/8/5p2/8/8/1k2K2R";
    const std::string full = kCastlingMate;
    EXPECT_EQ(RunQuillon(Fen((full + " w K - 0 1").c_str(), 2)).m_err, "");
    EXPECT_EQ(RunQuillon(Fen((full + " w").c_str(), 2)).m_err,
              "quillon: note: all castlings that the board allows are possible, whatever the castling field says\n");
    const TProgramResult without = RunQuillon(Fen((full + " w - - 0 1").c_str(), 2));
    EXPECT_NE(without.m_err.find("all castlings that the board allows"), std::string::npos);
    EXPECT_EQ(without.m_nStatus, 0);
}

} // namespace
} // namespace quillon
