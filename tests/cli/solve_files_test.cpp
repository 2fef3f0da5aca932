// `quillon solve FILE`: libraries and EPD files, and the faults in them.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;

constexpr const char* kMateInThreeText = "FEN: 8/8/8/8/8/1K5Q/1p6/kn6\n";  // only Kb3-c2
constexpr const char* kTwoMatesInOneText = "FEN: k7/8/1K6/8/8/8/7R/4R3\n"; // Re1-e8 and Rh2-h8

std::string Problem(const std::string& header, const std::string& body) { return header + "\n{\n" + body + "}\n"; }

class SolveFiles : public ::testing::Test {
  protected:
    void Given(const std::string& name, const std::string& text) {
        m_folder.Write(name, text);
        m_path = m_folder.Path() / name;
    }

    [[nodiscard]] TProgramResult Solve(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"solve", m_path});
        return RunQuillon(options);
    }

    [[nodiscard]] std::vector<TJson> SolveJson(std::vector<std::string> options = {}) const {
        options.push_back("--json");
        std::vector<TJson> objects;
        for (const std::string& line : Solve(options).OutLines())
            objects.push_back(TJson::parse(line, nullptr, false));
        return objects;
    }

    [[nodiscard]] std::vector<int> SolvedIds(const std::vector<std::string>& options) const {
        std::vector<int> ids;
        for (const TJson& object : SolveJson(options))
            ids.push_back(object["id"]);
        return ids;
    }

    CTemporaryFolder m_folder;
    std::string m_path;
};

TEST_F(SolveFiles, ProblemsInTheOrderOfTheFile) {
    Given("a.cp", "UTF-8\n" + Problem("9 #3", kMateInThreeText) + Problem("2 #1", kTwoMatesInOneText));
    const std::vector<TJson> objects = SolveJson();
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0]["id"], 9);
    EXPECT_EQ(objects[0]["keys"], TJson({"Kb3-c2"}));
    EXPECT_EQ(objects[1]["id"], 2);
    EXPECT_EQ(objects[1]["result"], "mate");
}

TEST_F(SolveFiles, EpdFile) {
    Given("a.epd", "8/8/8/8/8/1K5Q/1p6/kn6 w - - bm #3; id \"first\";\nk7/8/1K6/8/8/8/7R/4R3 w - - dm 1;\n");
    const std::vector<TJson> objects = SolveJson({"--all"});
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0]["stipulation"], 3);
    EXPECT_EQ(objects[0]["keys"], TJson({"Kb3-c2"}));
    EXPECT_EQ(objects[1]["id"], 2);
    EXPECT_EQ(objects[1]["keys"].size(), 2u);
}

TEST_F(SolveFiles, ChosenIds) {
    std::string text = "UTF-8\n";
    for (const int id : {1, 2, 3, 5, 8, 13})
        text += Problem(std::to_string(id) + " #1", kTwoMatesInOneText);
    Given("a.cp", text);
    EXPECT_EQ(SolvedIds({"--id", "3"}), (std::vector<int>{3}));
    EXPECT_EQ(SolvedIds({"--id", "8,1-3"}), (std::vector<int>{1, 2, 3, 8}));
    EXPECT_EQ(SolvedIds({"--id", "2", "--id", "5-100"}), (std::vector<int>{2, 5, 8, 13}));
}

TEST_F(SolveFiles, ChosenIdThatIsNotThere) {
    Given("a.cp", "UTF-8\n" + Problem("1 #1", kTwoMatesInOneText));
    const TProgramResult result = Solve({"--id", "1,7", "--json"});
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_err, "quillon: " + m_path + ": there is no problem 7\n");
    EXPECT_EQ(result.OutLines().size(), 1u);
}

TEST_F(SolveFiles, OptionsOfTheProblemHold) {
    Given("a.cp", "UTF-8\n" + Problem("1 #1 AllSolutions", kTwoMatesInOneText) + Problem("2 #1", kTwoMatesInOneText) +
                      Problem("3 #2 StopOn3Sol", kTwoMatesInOneText));
    const std::vector<TJson> objects = SolveJson();
    ASSERT_EQ(objects.size(), 3u);
    EXPECT_EQ(objects[0]["keys"].size(), 2u);
    EXPECT_EQ(objects[1]["keys"].size(), 1u);
    EXPECT_EQ(objects[2]["keys"].size(), 3u);
}

TEST_F(SolveFiles, CommandLineComesBeforeOptionsOfTheProblem) {
    Given("a.cp", "UTF-8\n" + Problem("1 #1 AllSolutions", kTwoMatesInOneText));
    EXPECT_EQ(SolveJson({"--stop-on", "1"}).at(0)["keys"].size(), 1u);
}

TEST_F(SolveFiles, ExpectedAnswer) {
    Given("a.cp", "UTF-8\n" + Problem("1 #3 AllSolutions", std::string(kMateInThreeText) + "A: Kb3-c2\n"));
    const TProgramResult result = Solve();
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_NE(result.m_out.find("\nAs expected.\n"), std::string::npos) << result.m_out;
}

TEST_F(SolveFiles, DifferentAnswer) {
    Given("a.cp", "UTF-8\n" + Problem("1 #1 AllSolutions", std::string(kTwoMatesInOneText) + "A: Re1-e8\n") +
                      Problem("2 #3", std::string(kMateInThreeText) + "A: Qh3-h1, Kb3-a3\n"));
    const TProgramResult result = Solve();
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_NE(result.m_out.find("DIFFERS from the expected answer: Re1-e8\n"), std::string::npos) << result.m_out;
    EXPECT_NE(result.m_out.find("DIFFERS from the expected answer: Qh3-h1, Kb3-a3\n"), std::string::npos);
    EXPECT_NE(result.m_out.find("2 differing"), std::string::npos);
    const TProgramResult json = Solve({"--json"});
    EXPECT_EQ(json.m_nStatus, 1);
    EXPECT_NE(json.m_err.find("quillon: " + m_path + ":2: problem 1: DIFFERS from the expected answer: Re1-e8\n"),
              std::string::npos)
        << json.m_err;
}

TEST_F(SolveFiles, SummaryCountsEveryKindOfResult) {
    Given("a.cp", "UTF-8\n" + Problem("1 #3", kMateInThreeText) + Problem("2 #2", kMateInThreeText) +
                      Problem("3 s#2", kMateInThreeText) + Problem("4 #1", kTwoMatesInOneText));
    const TProgramResult result = Solve({"--quiet"});
    EXPECT_EQ(result.m_nStatus, 2);
    const std::vector<std::string> lines = result.OutLines();
    ASSERT_EQ(lines.size(), 4u) << result.m_out;
    EXPECT_EQ(lines[0].substr(0, 20), "1 #3 mate 1.Kb3-c2! ");
    EXPECT_EQ(lines[1].substr(0, 13), "2 #2 no-mate ");
    EXPECT_EQ(lines[3].substr(0, lines[3].find(';')),
              "4 problems: 2 solved, 1 without a solution, 0 doubtful, 0 stopped, 1 error");
}

/// The first thing that anybody sees of the program. Its longest mates are found in seconds or, where the best-first
/// proof goes astray, not at all.
void SolveSampleLibrary(const std::string& threads) {
    std::vector<std::string> options = {"solve", "--quiet", "--time-limit", "60", "--threads", threads};
    std::string problems = "164";
#ifndef __OPTIMIZE__ // the checking builds take ten times as long
    options.insert(options.end(), {"--id", "1-60,162"});
    problems = "61";
#endif
    const TProgramResult result = RunQuillon(options);
    EXPECT_EQ(result.m_nStatus, 0) << result.m_err;
    ASSERT_FALSE(result.OutLines().empty());
    const std::string summary = result.OutLines().back();
    const std::string expected = problems + " problems: " + problems +
                                 " solved, 0 without a solution, 0 doubtful, 0 stopped, 0 errors; 0 differing from the "
                                 "expected answer;";
    EXPECT_EQ(summary.substr(0, expected.size()), expected);
}

TEST(SampleLibrary, IsSolvedInSeconds) { SolveSampleLibrary("1"); }
TEST(SampleLibrary, IsSolvedInSecondsByTwoThreads) { SolveSampleLibrary("2"); }

TEST_F(SolveFiles, BadProblemsAreReportedAndTheOthersSolved) {
    Given("a.cp", "UTF-8\n" + Problem("1 #3", kMateInThreeText) + Problem("2 #2", "FEN: 8/8/8/8/8/1K5Q/1p6/kn7\n") +
                      Problem("3 #1", kTwoMatesInOneText));
    const TProgramResult result = Solve({"--json"});
    EXPECT_EQ(result.m_nStatus, 2);
    const std::vector<std::string> lines = result.OutLines();
    ASSERT_EQ(lines.size(), 3u);
    const TJson bad = TJson::parse(lines[1]);
    EXPECT_EQ(bad["id"], 2);
    EXPECT_EQ(bad["result"], "error");
    EXPECT_EQ(bad["file"], m_path);
    EXPECT_EQ(bad["line"], 8);
    EXPECT_EQ(bad["column"], 6);
    EXPECT_FALSE(bad["message"].get<std::string>().empty());
    EXPECT_EQ(TJson::parse(lines[2])["id"], 3);
    EXPECT_EQ(result.m_err, "quillon: " + m_path + ":8:6: problem 2: " + bad["message"].get<std::string>() + "\n");
}

TEST_F(SolveFiles, OnlyDirectMatesAreSolved) {
    Given("a.cp", "UTF-8\n" + Problem("1 s#3", kMateInThreeText) + Problem("2", kMateInThreeText));
    const TProgramResult result = Solve();
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_err, "quillon: " + m_path + ":2: problem 1: only direct mates are solved\nquillon: " + m_path +
                                ":6: problem 2: only direct mates are solved\n");
}

TEST_F(SolveFiles, LaterProblemReplacesAnEarlierOneOfItsId) {
    Given("a.cp", "UTF-8\n" + Problem("1 #3", kMateInThreeText) + Problem("1 #1", kTwoMatesInOneText));
    const TProgramResult result = Solve({"--json"});
    EXPECT_EQ(result.m_nStatus, 0);
    ASSERT_EQ(result.OutLines().size(), 1u);
    EXPECT_EQ(TJson::parse(result.m_out)["stipulation"], 1);
    EXPECT_EQ(result.m_err, "quillon: " + m_path + ":6:1: problem 1: warning: WARINING: Problem id=1 redefinition - " +
                                "overwriting.\n");
}

TEST_F(SolveFiles, ControlCharactersDoNotReachTheTerminal) {
    Given("a.cp", "UTF-8\n" + Problem("1 #1", std::string("D: red \x1b[31m alert\n") + kTwoMatesInOneText));
    const TProgramResult result = Solve();
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(result.m_out.find('\x1b'), std::string::npos);
    EXPECT_NE(result.m_out.find("Problem 1: red \\x1B[31m alert\n"), std::string::npos) << result.m_out;
}

TEST_F(SolveFiles, FilesThatCannotBeRead) {
    m_path = m_folder.Path() / "missing.cp";
    const TProgramResult missing = Solve();
    EXPECT_EQ(missing.m_nStatus, 2);
    EXPECT_EQ(missing.m_err.substr(0, 9 + 20 + m_path.size()), "quillon: Error opening file: " + m_path);
    EXPECT_EQ(missing.m_out, "");

    m_path = m_folder.Path();
    EXPECT_EQ(Solve().m_nStatus, 2);

    Given("empty.cp", "");
    const TProgramResult empty = Solve({"--json"});
    EXPECT_EQ(empty.m_nStatus, 2);
    EXPECT_EQ(empty.m_err, "quillon: File cannot be empty. (" + m_path + ")\n");

    Given("binary.cp", std::string("1 #3\n\0\1\2\3", 9));
    const TProgramResult binary = Solve();
    EXPECT_EQ(binary.m_nStatus, 2);
    EXPECT_EQ(binary.m_err, "quillon: Not a text file: " + m_path + "\n");
}

TEST(SolveSampleLibrary, IsWhatIsSolvedWithoutAFile) {
    const TProgramResult result = RunQuillon({"solve", "--id", "1", "--json"});
    EXPECT_EQ(result.m_nStatus, 0) << result.m_err;
    ASSERT_EQ(result.OutLines().size(), 1u);
    const TJson object = TJson::parse(result.m_out);
    EXPECT_EQ(object["id"], 1);
    EXPECT_EQ(object["result"], "mate");
}

TEST_F(SolveFiles, TextWithoutAnyProblem) {
    Given("prose.txt", "It was a dark and stormy night.\n");
    const TProgramResult result = Solve();
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_out, "");
    EXPECT_EQ(std::count(result.m_err.begin(), result.m_err.end(), '\n'), 1) << result.m_err;
}

} // namespace
} // namespace quillon
