// A solve under signals: the report of SIGUSR1, Ctrl+Z and what continues it, Ctrl+C.

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using namespace std::chrono_literals;
using TClock = std::chrono::steady_clock;
using TJson = nlohmann::ordered_json;

constexpr const char* kHopelessFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kSoon = 10; // seconds; a sanitizer has its own work at the end of a process
#else
constexpr double kSoon = 1; // seconds; some 0.1 on an idle machine
#endif
constexpr int kAttempts = 5; // to be so soon: a busy machine may hold up any of them

std::vector<std::string> Hopeless(std::vector<std::string> more) {
    std::vector<std::string> arguments{"solve", "--fen", kHopelessFen, "--moves", "20",    "--heuristics",
                                       "none",  "--all", "--memory",   "64",      "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

double SecondsSince(TClock::time_point start) { return std::chrono::duration<double>(TClock::now() - start).count(); }

void WaitForPass(const CProgramRun& run) { ASSERT_TRUE(run.WaitForError("Pass 2, ")); }

TEST(Report, TellsTheStateOfASilentSolve) {
    CProgramRun run({"solve", "--fen", kHopelessFen, "--moves", "20", "--heuristics", "none", "--all", "--memory", "64",
                     "--threads", "4"});
    ASSERT_TRUE(run.WaitForOutput("#20")); // told by a program that hears signals
    const std::regex lineOfThread(R"(\n0\. SH:0h,TR:[0-9]+\([0-9]+\) 1\.[a-hN])"); // from within the pass
    for (int i = 0; i < 300 && !std::regex_search(run.ErrorSoFar(), lineOfThread); ++i) {
        run.Signal(SIGUSR1);
        std::this_thread::sleep_for(100ms);
    }
    run.Signal(SIGINT);
    const TProgramResult result = run.Finish();
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_TRUE(std::regex_search(result.m_err, std::regex(R"(A Pass 2 TR=[0-9]+MB GR=0MB Thrds=[1-4] )"
                                                           R"([0-9.]+% [0-9]+\n)")))
        << result.m_err;
    EXPECT_TRUE(std::regex_search(result.m_err, std::regex(R"(\n[1-4]thrd\(s\)\.\.\. [0-9]+ sec\(s\)\.\.\.\n0\. )")))
        << result.m_err;
    EXPECT_TRUE(std::regex_search(result.m_err, lineOfThread)) << result.m_err;
    EXPECT_NE(result.m_out.find("Analysis stopped by user"), std::string::npos) << result.m_out;
}

/// Under job control the process is stopped, as its shell expects; neither the clock of the solve nor its time limit
/// know of that.
TEST(Suspend, StopsTheProcessAndItsClock) {
    const auto start = TClock::now();
    // By brute force, which begins its pass at once: the time limit is to find it there.
    CProgramRun run(
        {"solve", "--fen", kHopelessFen, "--moves", "20", "--brute-force", "--json", "--time-limit", "2", "--progress"},
        {"", "", false, EProcessGroup::Own});
    WaitForPass(run);
    run.Signal(SIGTSTP);
    ASSERT_TRUE(run.WaitForStop());
    EXPECT_TRUE(run.WaitForError("quillon: paused, clock and time limit stand still; to go on: fg, or SIGCONT\n"));
    std::this_thread::sleep_for(600ms);
    run.Signal(SIGCONT);
    EXPECT_TRUE(run.WaitForError("quillon: going on\n"));
    const TProgramResult result = run.Finish();
    const double wall = SecondsSince(start);
    EXPECT_EQ(result.m_nStatus, 1);
    const double told = TJson::parse(result.m_out)["seconds"];
    EXPECT_GE(told, 1.5); // the limit counts from before the solve's thread has started
    EXPECT_LE(told, wall - 0.6);
}

/// Nobody could continue a stopped process there. It sleeps instead, and hears every signal.
TEST(Suspend, WithoutJobControlTheProcessWaits) {
    for (const int signal : {SIGCONT, SIGTSTP, SIGINT}) {
        CProgramRun run({"solve", "--fen", kHopelessFen, "--moves", "20", "--brute-force", "--progress"},
                        {"", "", false, EProcessGroup::OwnSession});
        WaitForPass(run);
        run.Signal(SIGTSTP);
        ASSERT_TRUE(run.WaitForError("the process cannot be stopped here and waits instead"));
        run.Signal(SIGUSR1);
        EXPECT_TRUE(run.WaitForError("sec(s)... paused\n"));
        run.Signal(signal);
        if (signal != SIGINT) {
            EXPECT_TRUE(run.WaitForError("quillon: going on\n"));
            run.Signal(SIGINT);
        }
        EXPECT_EQ(run.Finish().m_nStatus, 1);
    }
}

/// Does one of some attempts take no longer than is soon? An attempt returns how long it has taken.
template <class TAttempt> bool IsOnceSoon(TAttempt attempt) {
    for (int i = 0; i < kAttempts && !::testing::Test::HasFailure(); ++i)
        if (attempt() < kSoon)
            return true;
    return false;
}

TEST(Suspend, AnInterruptMeanwhileIsObeyedBehindIt) {
    EXPECT_TRUE(IsOnceSoon([] {
        CProgramRun run(Hopeless({"--threads", "4^2", "--progress"}), {"", "", false, EProcessGroup::Own});
        WaitForPass(run);
        run.Signal(SIGTSTP);
        EXPECT_TRUE(run.WaitForStop());
        run.Signal(SIGINT);
        run.Signal(SIGCONT);
        const auto start = TClock::now();
        const TProgramResult result = run.Finish();
        const double seconds = SecondsSince(start);
        EXPECT_EQ(result.m_nStatus, 1);
        EXPECT_EQ(TJson::parse(result.m_out)["result"], "stopped");
        return seconds;
    }));
}

TEST(Suspend, TakesEffectSoon) {
    EXPECT_TRUE(IsOnceSoon([] {
        CProgramRun run(Hopeless({"--threads", "4^2", "--progress"}), {"", "", false, EProcessGroup::Own});
        WaitForPass(run);
        const auto start = TClock::now();
        run.Signal(SIGTSTP);
        EXPECT_TRUE(run.WaitForStop());
        return SecondsSince(start);
    }));
}

TEST(Interrupt, ReachesAllThreadsSoon) {
    EXPECT_TRUE(IsOnceSoon([] {
        CProgramRun run(Hopeless({"--threads", "4^2", "--progress"}));
        WaitForPass(run);
        run.Signal(SIGINT);
        const auto start = TClock::now();
        EXPECT_EQ(run.Finish().m_nStatus, 1);
        return SecondsSince(start);
    }));
}

/// Nothing is told of a solve that has not begun, but the question does no harm.
TEST(Report, WhileProblemsAreReadEndsNothing) {
    CProgramRun run({"solve", "-", "--quiet"}, {"", "", true, EProcessGroup::OfTheTest});
    ASSERT_TRUE(run.WaitForHandler(SIGUSR1));
    run.Signal(SIGUSR1);
    run.Feed("8/8/8/8/7Q/n1K5/8/k7 w - - bm #3;\n");
    const TProgramResult result = run.Finish();
    EXPECT_EQ(result.m_nStatus, 0) << result.m_err;
    EXPECT_NE(result.m_out.find("Qh4-b4"), std::string::npos) << result.m_out;
}

/// What was begun before the pause ends behind it with the same answer.
TEST(Suspend, LeavesTheVerdictAsItIs) {
    const std::vector<std::string> arguments{"solve", "--fen", "7k/5p2/5P1p/2K4P/8/8/8/8", "--moves", "11",
                                             "--all", "--json"};
    CProgramRun run(arguments, {"", "", false, EProcessGroup::Own});
    for (int i = 0; i < 3; ++i) {
        std::this_thread::sleep_for(30ms);
        run.Signal(SIGTSTP); // as early as it is, or too late: then the process just ends or stops by itself
        std::this_thread::sleep_for(60ms);
        run.Signal(SIGCONT);
    }
    std::this_thread::sleep_for(300ms); // the last suspend may take effect behind its continue
    run.Signal(SIGCONT);
    const TJson object = TJson::parse(run.Finish().m_out);
    EXPECT_EQ(object["keys"], TJson::array({"Kc5-d6"}));
    EXPECT_EQ(object["complete"], true);
}

} // namespace
} // namespace quillon
