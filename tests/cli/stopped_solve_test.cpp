// Solves that are cut short: by the time limit, and by Ctrl+C.

#include <csignal>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>

#include "cli/program_run.h"
#include "platform/interrupt.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;

// No machine proves in a minute whether White mates in twenty moves from the initial position.
constexpr const char* kHopelessFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";
constexpr const char* kHopelessProblem = "#20\n{\nFEN: rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR\n}\n";
constexpr const char* kEasyProblem = "#3\n{\nFEN: 8/8/8/8/8/1K5Q/1p6/kn6\n}\n";

std::string Library(const std::vector<const char*>& problems) {
    std::string text = "UTF-8\n";
    int id = 0;
    for (const char* problem : problems)
        text += std::to_string(++id) + " " + problem;
    return text;
}

TEST(TimeLimit, StopsTheSolve) {
    const TProgramResult result =
        RunQuillon({"solve", "--fen", kHopelessFen, "--moves", "20", "--time-limit", "0.3", "--json"});
    EXPECT_EQ(result.m_nStatus, 1);
    const TJson object = TJson::parse(result.m_out);
    EXPECT_EQ(object["result"], "stopped");
    EXPECT_EQ(object["keys"], TJson::array());
    EXPECT_EQ(object["complete"], false);
    EXPECT_GE(object["seconds"], 0.25);
    EXPECT_LT(object["seconds"], 30.0);
}

TEST(TimeLimit, IsThatOfEachProblem) {
    const TProgramResult result =
        RunQuillon({"solve", "-", "--time-limit", "0.2", "--quiet"}, {Library({kHopelessProblem, kEasyProblem}), ""});
    EXPECT_EQ(result.m_nStatus, 1);
    const std::vector<std::string> lines = result.OutLines();
    ASSERT_EQ(lines.size(), 3u) << result.m_out;
    EXPECT_EQ(lines[0].substr(0, 13), "1 #20 stopped");
    EXPECT_EQ(lines[1].substr(0, 19), "2 #3 mate 1.Kb3-c2!");
}

TEST(TimeLimit, IsNamedAsTheCause) {
    const TProgramResult result = RunQuillon({"solve", "--fen", kHopelessFen, "--moves", "20", "--time-limit", "0.2"});
    EXPECT_NE(result.m_out.find("Stopped by the time limit, no key found so far."), std::string::npos) << result.m_out;
}

TEST(TimeLimit, DoesNotTouchASolveThatEndsInTime) {
    const TProgramResult result = RunQuillon(
        {"solve", "--fen", "8/8/8/8/8/1K5Q/1p6/kn6", "--moves", "3", "--time-limit", "60", "--all", "--json"});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(TJson::parse(result.m_out)["complete"], true);
}

TEST(Interrupt, TheFirstStopsAndReports) {
    CProgramRun run({"solve", "-", "--brute-force", "--progress"},
                    {Library({kHopelessProblem, kEasyProblem, kEasyProblem}), ""});
    ASSERT_TRUE(run.WaitForError("Pass 2, "));
    run.Signal(SIGINT);
    const TProgramResult result = run.Finish();
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_NE(result.m_out.find("Analysis stopped by user"), std::string::npos) << result.m_out;
    EXPECT_EQ(result.m_out.find("Problem 2"), std::string::npos) << result.m_out;
    EXPECT_NE(result.m_out.find("1 stopped, 0 errors, 2 not started"), std::string::npos) << result.m_out;
}

TEST(Interrupt, TheSecondEndsTheProgram) {
    CProgramRun run({"solve", "--fen", kHopelessFen, "--moves", "20", "--brute-force", "--progress"});
    ASSERT_TRUE(run.WaitForError("Pass 2, "));
    run.Signal(SIGSTOP); // both wait while the program cannot obey the first
    run.Signal(SIGINT);
    run.Signal(SIGTERM);
    run.Signal(SIGCONT);
    EXPECT_EQ(run.Finish().m_nStatus, kInterruptedStatus);
}

TEST(Progress, NamesTheLookBeforeThePasses) {
    // Few men, so that the analysis before the look is short.
    CProgramRun run({"solve", "--fen", "4k3/1p1b1ppp/8/8/8/8/1P1B1PPP/4K3", "--moves", "20", "--progress"});
    EXPECT_TRUE(run.WaitForError("Best-first proof   "));
    run.Signal(SIGINT);
    EXPECT_EQ(run.Finish().m_nStatus, 1);
}

TEST(Progress, IsSilentWhereStandardErrorIsNoTerminal) {
    const TProgramResult result = RunQuillon({"solve", "--fen", kHopelessFen, "--moves", "20", "--time-limit", "0.7"});
    EXPECT_EQ(result.m_err, "");
}

TEST(Progress, IsShownWhenAskedForAndErasedAtTheEnd) {
    const TProgramResult result = RunQuillon(
        {"solve", "--fen", kHopelessFen, "--moves", "20", "--brute-force", "--time-limit", "0.7", "--progress"});
    // No terminal: the line of logs.
    EXPECT_TRUE(std::regex_search(result.m_err, std::regex(R"(Pass 2, [0-9]\.[0-9]% [1-9][0-9]*             \r)")))
        << result.m_err;
    EXPECT_EQ(result.m_err.back(), '\r');
    const std::string shown = result.m_err.substr(0, result.m_err.size() - 1);
    EXPECT_EQ(shown.substr(shown.rfind('\r')).find_first_not_of("\r "), std::string::npos) << result.m_err;
}

} // namespace
} // namespace quillon
