#include "platform/job_signals.h"

#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace quillon {

namespace {

using namespace std::chrono_literals;

TJobSignals g_counts;

/// Runs in a process of its own, for handlers are not given back; its status tells the counts: suspends, continues and
/// reports, one bit or two each.
int StatusOf(void (*body)()) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(g_counts.m_nSuspends + 4 * g_counts.m_nContinues + 16 * g_counts.m_nReports);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

TEST(JobSignals, AreCountedAndDoNothingElse) {
    EXPECT_EQ(StatusOf([] { InstallJobSignals(g_counts); }), 0);
    EXPECT_EQ(StatusOf([] {
                  InstallJobSignals(g_counts);
                  g_counts.m_bWatched = true;
                  std::raise(SIGTSTP);
                  std::raise(SIGTSTP);
                  std::raise(SIGCONT);
                  std::raise(SIGUSR1);
                  std::raise(SIGUSR1);
                  std::raise(SIGUSR1);
              }),
              2 + 4 + 16 * 3);
}

TEST(JobSignals, TheLaterOfSuspendAndContinueHolds) {
    EXPECT_EQ(StatusOf([] {
                  InstallJobSignals(g_counts);
                  g_counts.m_bWatched = true;
                  std::raise(SIGCONT);
                  std::raise(SIGTSTP);
              }),
              1);
}

/// Alone in its session the process is let run on; that the signal was not counted shows what became of it.
TEST(JobSignals, WhileNobodyWatchesASuspendIsTheSystems) {
    EXPECT_EQ(StatusOf([] {
                  setsid();
                  InstallJobSignals(g_counts);
                  std::raise(SIGTSTP);
              }),
              0);
}

TEST(JobSignals, ASuspendThatIsIgnoredStaysSo) {
    EXPECT_EQ(StatusOf([] {
                  std::signal(SIGTSTP, SIG_IGN);
                  InstallJobSignals(g_counts);
                  std::raise(SIGTSTP);
                  std::raise(SIGCONT);
              }),
              4);
}

TEST(StopProcess, ReturnsAtOnceWhereNobodyCouldContinueIt) {
    EXPECT_EQ(StatusOf([] {
                  setsid(); // alone in its session
                  InstallJobSignals(g_counts);
                  g_counts.m_bWatched = true;
                  StopProcess();
                  std::raise(SIGTSTP); // is counted again
              }),
              1);
}

TEST(StopProcess, StopsUntilTheProcessIsContinued) {
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        InstallJobSignals(g_counts);
        StopProcess();
        for (int ms = 0; ms < 5000 && g_counts.m_nContinues == 0; ++ms)
            std::this_thread::sleep_for(1ms);
        _exit(g_counts.m_nSuspends + 4 * g_counts.m_nContinues);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
    EXPECT_TRUE(WIFSTOPPED(status) && WSTOPSIG(status) == SIGTSTP);
    kill(child, SIGCONT);
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 4);
}

} // namespace quillon
