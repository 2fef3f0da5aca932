// What is said of the register of solved positions.

#include <csignal>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>

#include "cli/program_run.h"
#include "cli/solve_report.h"
#include "core/fen.h"
#include "platform/sleep.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;

class RegisterReport : public ::testing::Test {
  protected:
    RegisterReport() {
        SetStipulation(m_problem, kDirectMate, 7);
        m_request.m_board = ChessboardFromFEN("8/8/8/8/8/1K5Q/1p6/kn6");
        m_request.m_nStipulation = 7;
        m_watched.m_result.m_verdict = EVerdict::NoMate;
        m_watched.m_result.m_bComplete = true;
        m_watched.m_result.m_nPositions = 24;
    }

    [[nodiscard]] TSolveReport Report() const { return {m_problem, m_request, m_watched, false, false, std::nullopt}; }

    /// The lines behind that of nodes and time.
    [[nodiscard]] std::string LastLines() const {
        const std::string text = ResultText(Report());
        return text.substr(text.find("24 nodes; 0.000 s\n") + 18);
    }

    ChessProblem m_problem;
    TSolveRequest m_request;
    TWatchedResult m_watched;
    TRegisterFigures& m_figures = m_watched.m_result.m_register;
};

TEST_F(RegisterReport, NothingIsSaidWithoutARegister) { EXPECT_EQ(LastLines(), ""); }

TEST_F(RegisterReport, OneLineBehindNodesAndTime) {
    m_figures = {true, 1200, 0, 5000, 1000, 0, 0, 34};
    EXPECT_EQ(LastLines(), "Register: 1200 positions in 34 MB; 5000 lookups, 1000 hits (20.0%)\n");
    m_figures = {true, 1200, 20, 5000, 1, 3, 400, 34};
    EXPECT_EQ(LastLines(), "Register: 1200 positions (20 of them doubtful) in 34 MB; 5000 lookups, 1 hit (0.0%); "
                           "400 positions thrown out in 3 runs\n");
}

TEST_F(RegisterReport, ARegisterThatNobodyAskedHasNoPercentage) {
    m_figures = {true, 1, 0, 0, 0, 1, 1, 1};
    EXPECT_EQ(LastLines(), "Register: 1 position in 1 MB; 0 lookups, 0 hits; 1 position thrown out in 1 run\n");
}

TEST_F(RegisterReport, JsonAlwaysHasTheObject) {
    EXPECT_NE(JsonText(Report()).find(R"("register":{"elements":0,"doubtful":0,"lookups":0,"hits":0,"evictions":0,)"
                                      R"("evicted":0,"megabytes":0})"),
              std::string::npos);
    m_figures = {true, 1, 2, 3, 4, 5, 6, 7};
    const auto figures = TJson::parse(JsonText(Report()))["register"];
    EXPECT_EQ(figures.dump(), R"({"elements":1,"doubtful":2,"lookups":3,"hits":4,"evictions":5,"evicted":6,)"
                              R"("megabytes":7})");
}

TEST_F(RegisterReport, QuietStaysQuiet) {
    m_figures = {true, 1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(QuietText(Report()), "#7 no-mate (24 nodes, 0.000 s)\n");
}

// ---- the program

/// Mate in three, asked for as a mate in six or less, without what makes it so short that no position is met twice.
std::vector<std::string> MateInSix(std::vector<std::string> more) {
    more.insert(more.begin(), {"solve", "--fen", "8/8/8/8/8/1K5Q/1p6/kn6", "--moves", "6", "--brute-force"});
    return more;
}

TEST(RegisterOfTheProgram, IsOfTheMemoryThatIsGranted) {
    const TJson with = TJson::parse(RunQuillon(MateInSix({"--memory", "16", "--json"})).m_out);
    EXPECT_GT(with["register"]["elements"], 0);
    EXPECT_GT(with["register"]["lookups"], with["register"]["hits"]);
    EXPECT_GT(with["register"]["hits"], 0);
    EXPECT_GT(with["register"]["megabytes"], 0);
    const TJson without = TJson::parse(RunQuillon(MateInSix({"--memory", "0", "--json"})).m_out);
    for (const auto& [name, figure] : without["register"].items())
        EXPECT_EQ(figure, 0) << name;
    EXPECT_EQ(with["result"], "mate");
    EXPECT_EQ(without["keys"], with["keys"]);
}

TEST(RegisterOfTheProgram, IsTheLastLineForAPerson) {
    const std::vector<std::string> with = RunQuillon(MateInSix({"--memory", "16"})).OutLines();
    EXPECT_EQ(with.back().substr(0, 10), "Register: ") << with.back();
    const std::vector<std::string> without = RunQuillon(MateInSix({"--memory", "0"})).OutLines();
    EXPECT_EQ(without.back().substr(0, 8), "Pass 2; ") << without.back();
}

TEST(RegisterOfTheProgram, IsShownWhileItGrows) {
    CProgramRun run({"solve", "--fen", "8/5p2/4k1p1/3n4/8/2BNKN2/PP6/8", "--moves", "20", "--brute-force", "--memory",
                     "16", "--progress"});
    ASSERT_TRUE(run.WaitForError("Pass 2, 0."));
    const std::regex state(R"(A Pass 2 Safe mode ON TR=[1-9][0-9]*MB GR=0MB Thrds=1 )");
    const std::regex trace(R"(SH:0h,TR:[1-9][0-9]*\(0\) 1\.)");
    const auto isTold = [&] {
        const std::string told = run.ErrorSoFar();
        return std::regex_search(told, state) && std::regex_search(told, trace);
    };
    for (int i = 0; i < 300 && !isTold(); ++i) {
        run.Signal(SIGUSR1);
        SleepMs(100);
    }
    EXPECT_TRUE(isTold()) << run.ErrorSoFar();
    run.Signal(SIGINT);
    EXPECT_EQ(run.Finish().m_nStatus, 1);
}

} // namespace
} // namespace quillon
