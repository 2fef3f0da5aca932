// `quillon regress`: the output, the log, the exit status.

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>

#include "cli/program_run.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TRegressLine = nlohmann::ordered_json;
using TTexts = std::vector<std::string>;

constexpr const char* kGoodProblem = " #2 { FEN: kbK5/pp6/1P6/8/8/8/8/R7\nAnswer: Ra1-a6 }\n";
constexpr const char* kWrongProblem = " #2 { FEN: kbK5/pp6/1P6/8/8/8/8/R7\nAnswer: Ra1-a5 }\n";
constexpr const char* kEndlessProblem = " #20 { FEN: rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR }\n";

class RegressCommand : public ::testing::Test {
  protected:
    /// Runs the command over a library with this text, in a working folder of its own.
    TProgramResult Run(const std::string& text, const TTexts& options = {}) {
        m_folder.Write("a.cp", text);
        return RunQuillon(Arguments(options));
    }

    [[nodiscard]] TTexts Arguments(const TTexts& options) const {
        TTexts arguments{"--work-dir", m_folder.Path(), "regress", "a.cp"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }

    [[nodiscard]] std::string Content(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(m_folder.Path() / name, std::ios::binary).rdbuf();
        return WithoutMilliseconds(text.str());
    }
    [[nodiscard]] std::string Log() const { return Content("RegressionTest.log"); }

    static std::string WithoutMilliseconds(const std::string& text) {
        return std::regex_replace(text, std::regex("[0-9.]+( msec| s\n)"), "T$1");
    }

    CTemporaryFolder m_folder;
};

TEST_F(RegressCommand, TellsTheLinesOfTheLogAndTheTotals) {
    const TProgramResult result = Run("1" + std::string(kGoodProblem) + "2" + kWrongProblem +
                                      "3 #2 Requires Q { FEN: kbK5/pp6/1P6/8/8/8/8/R7 }\n");
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_EQ(result.m_err, "");
    const std::string head = "[Threads = 1, Quick mode] Test #1 ok (T msec).\n[Threads = 1, Quick mode] Test #2 "
                             "failed:\n\tfound:\nRa1-a6\n\tshould be:\nRa1-a5\n";
    EXPECT_EQ(
        WithoutMilliseconds(result.m_out),
        head + "#3: Requires clause not satisfied\n3 problems, 2 runs: 1 passed, 1 failed, 0 solved, 1 skipped; T s\n");
    EXPECT_EQ(Log(), head + "Requires clause not satisfied\n");
}

// A rook mates in fourteen: without the data that would take long. A problem that forbids them does not take them from
// the next one.
TEST_F(RegressCommand, SolvesWithDataAsSolveDoes) {
    WriteElements(m_folder.Path() / "Precalc/R.precalc", ThreeMenElements("R"));
    const std::string far = " #14 AllSolutions Requires R { FEN: 8/8/8/3k4/8/8/8/K3R3 }\n";
    const TProgramResult result =
        Run("1" + far + "2 #2 NOGLOBREG { FEN: kbK5/pp6/1P6/8/8/8/8/R7\nAnswer: Ra1-a6 }\n3" + far,
            {"--json", "--time-limit", "60"});
    EXPECT_EQ(result.m_nStatus, 0) << result.m_out;
    EXPECT_NE(result.m_out.find(R"("passed":1,"failed":0,"solved":2,"doubtful":0,"timeLimit":0)"), std::string::npos)
        << result.m_out << result.m_err;
    const TProgramResult none = Run("1" + far, {"--precalc-memory", "0"});
    EXPECT_NE(none.m_out.find("Requires clause not satisfied"), std::string::npos) << none.m_out;
}

// A table that knows of no mate shows who asks it.
TEST_F(RegressCommand, OfProblemsAtATimeNoneUsesDataThatItForbids) {
    WriteElements(m_folder.Path() / "Precalc/R.precalc", TElements(ThreeMenElements("R").size(), 0));
    const TProgramResult result = Run("1 #3 Requires R { FEN: 8/8/8/8/7R/3K4/8/1k6 }\n"
                                      "2 #3 NOGLOBREG Requires R { FEN: 8/8/8/8/7R/3K4/8/1k6 }\n",
                                      {"--jobs", "2", "--quick"});
    EXPECT_EQ(result.m_nStatus, 0) << result.m_out << result.m_err;
    EXPECT_NE(result.m_out.find("Prob.#1 No solution"), std::string::npos) << result.m_out;
    EXPECT_NE(result.m_out.find("Prob.#2 Kd3-c3"), std::string::npos) << result.m_out;
}

TEST_F(RegressCommand, AllAsExpectedIsStatusZeroAndTheOldLogStays) {
    m_folder.Write("RegressionTest.log", "old\n");
    EXPECT_EQ(Run("1" + std::string(kGoodProblem), {"--quick"}).m_nStatus, 0);
    EXPECT_EQ(Content("RegressionTest.log.BAK"), "old\n");
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Test #1 ok (T msec).\n");
}

TEST_F(RegressCommand, MirroredCopiesOnDemand) {
    const std::string one = "[Threads = 1, Quick mode] Test #1 ok (T msec).\n";
    EXPECT_EQ(Run("1" + std::string(kGoodProblem), {"--mirrors"}).m_nStatus, 0);
    EXPECT_EQ(Log(), one + "[Threads = 1, Quick mode] Test #1 M1 ok (T msec).\n");
    EXPECT_EQ(Run("1" + std::string(kGoodProblem), {"--no-mirrors"}).m_nStatus, 0);
    EXPECT_EQ(Log(), one);
}

TEST_F(RegressCommand, ForPrograms) {
    const TProgramResult result = Run("1" + std::string(kGoodProblem) + "2" + kWrongProblem, {"--json", "--mirrors"});
    EXPECT_EQ(result.m_nStatus, 1);
    ASSERT_EQ(result.OutLines().size(), 5u);
    const TRegressLine second = TRegressLine::parse(result.OutLines()[1]),
                       total = TRegressLine::parse(result.OutLines()[4]);
    EXPECT_EQ(second["id"], 1);
    EXPECT_EQ(second["mirror"], 1);
    EXPECT_EQ(second["outcome"], "passed");
    EXPECT_EQ(second["keys"], TRegressLine({"Rh1-h6"}));
    EXPECT_EQ(TRegressLine::parse(result.OutLines()[2])["outcome"], "failed");
    EXPECT_EQ(total["problems"], 2);
    EXPECT_EQ(total["runs"], 4);
    EXPECT_EQ(total["passed"], 2);
    EXPECT_EQ(total["failed"], 2);
}

TEST_F(RegressCommand, TheSampleLibraryIsAsExpected) {
    const TProgramResult result =
        RunQuillon({"--work-dir", m_folder.Path(), "regress", QUILLON_SOURCE_DIR "/data/sample_problems.cp", "--quick",
                    "--id", "1-12,40", "--jobs", "3"});
    EXPECT_EQ(result.m_nStatus, 0) << result.m_out;
    EXPECT_EQ(result.OutLines().size(), 14u);
    EXPECT_EQ(WithoutMilliseconds(result.OutLines().back() + "\n"),
              "13 problems, 13 runs: 13 passed, 0 failed, 0 solved; T s\n");
}

TEST_F(RegressCommand, ThreadsAndSettingsMakeTheMode) {
    m_folder.Write("options.ini", "[chess]\nQuickMode=0\n");
    EXPECT_EQ(Run("1" + std::string(kGoodProblem), {"--threads", "2^2"}).m_nStatus, 0);
    EXPECT_EQ(Log(), "[Threads = 2^2, Safe mode] Test #1 ok (T msec).\n");
}

TEST_F(RegressCommand, TheOnlineTablebaseIsASetting) {
    const std::string problem = "1 #2 RequiresSyzygy { FEN: kbK5/pp6/1P6/8/8/8/8/R7 }\n";
    EXPECT_EQ(Run(problem).m_nStatus, 0);
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Prob.#1 Ra1-a6 (T msec).\n");
    m_folder.Write("options.ini", "[chess]\nLichessLevels=0\n");
    EXPECT_EQ(Run(problem).m_nStatus, 0);
    EXPECT_EQ(Log(), "RequiresSyzygy not satisfied\n");
}

TEST_F(RegressCommand, TheTimeLimitIsStatusOne) {
    const TProgramResult result = Run("1" + std::string(kEndlessProblem), {"--time-limit", "1"});
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_EQ(WithoutMilliseconds(result.m_out),
              "#1: Solving time limit hit: 1 seconds\n1 problem, 1 run: 0 passed, 0 failed, 0 solved, 1 at the time "
              "limit; T s\n");
}

TEST_F(RegressCommand, AnInterruptKeepsWhatWasDone) {
    m_folder.Write("a.cp", "1" + std::string(kGoodProblem) + "2" + kEndlessProblem + "3" + kGoodProblem);
    CProgramRun run(Arguments({}));
    ASSERT_TRUE(run.WaitForOutput("Test #1 ok"));
    run.Signal(SIGINT);
    const TProgramResult result = run.Finish();
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Test #1 ok (T msec).\n");
    const std::regex totals("3 problems, 1 run: 1 passed, 0 failed, 0 solved, (1 stopped, 1|2) not run;");
    EXPECT_TRUE(std::regex_search(result.m_out, totals)) << result.m_out;
}

TEST_F(RegressCommand, ALogThatCannotBeWrittenIsToldOnce) {
    std::filesystem::create_directories(m_folder.Path() / "RegressionTest.log.BAK" / "in the way");
    std::filesystem::create_directories(m_folder.Path() / "RegressionTest.log");
    const TProgramResult result = Run("1" + std::string(kGoodProblem) + "2" + kWrongProblem);
    EXPECT_EQ(result.m_nStatus, 3);
    EXPECT_EQ(result.m_err, "quillon: " + (m_folder.Path() / "RegressionTest.log").string() +
                                " cannot be written; the run goes on without it\n");
    EXPECT_NE(result.m_out.find("1 passed, 1 failed"), std::string::npos) << result.m_out;
}

TEST_F(RegressCommand, BadInputIsStatusTwo) {
    const TProgramResult result = Run("1 #2 Foo { }\n2" + std::string(kGoodProblem));
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_NE(result.m_err.find(":1:6: problem 1: Opening bracket expected { or unrecognized option encountered: FOO"),
              std::string::npos)
        << result.m_err;
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Test #2 ok (T msec).\n") << "the others are run";
    const TProgramResult json = RunQuillon(Arguments({"--json"}));
    ASSERT_EQ(json.OutLines().size(), 3u);
    EXPECT_EQ(TRegressLine::parse(json.OutLines()[0])["result"], "error");

    EXPECT_EQ(RunQuillon(Arguments({"--quick", "--mirrors"})).m_nStatus, 2);
    EXPECT_EQ(RunQuillon(Arguments({"--jobs", "0"})).m_nStatus, 2);
    EXPECT_EQ(RunQuillon(Arguments({"--id", "77"})).m_nStatus, 2);
    EXPECT_EQ(RunQuillon({"regress"}).m_nStatus, 2);
    EXPECT_EQ(RunQuillon({"--work-dir", m_folder.Path(), "regress", "none.cp"}).m_nStatus, 2);
}

TEST_F(RegressCommand, AProblemOfAnotherKindFails) {
    const TProgramResult result = Run("1 s#2 { FEN: kbK5/pp6/1P6/8/8/8/8/R7 }\n");
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_EQ(Log(), "[Threads = 1, Quick mode] Test #1 failed: only direct mates are solved\n");
}

} // namespace
} // namespace quillon
