#include "platform/sleep.h"

#include <chrono>
#include <csignal>
#include <sys/time.h>

#include <gtest/gtest.h>

namespace quillon {

namespace {

double MillisecondsOf(std::uint32_t sleep) {
    const auto start = std::chrono::steady_clock::now();
    SleepMs(sleep);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

volatile std::sig_atomic_t g_signals = 0;

} // namespace

TEST(Sleep, LastsAtLeastAsLongAsAsked) { EXPECT_GE(MillisecondsOf(25), 25.0); }

TEST(Sleep, OfZeroOnlyYields) {
    double shortest = MillisecondsOf(0);
    for (int i = 0; i < 20; ++i)
        shortest = std::min(shortest, MillisecondsOf(0));
    EXPECT_LT(shortest, 1.0);
}

TEST(Sleep, GoesOnAfterASignal) {
    struct sigaction count {};
    struct sigaction old {};
    count.sa_handler = [](int) { g_signals = g_signals + 1; };
    sigaction(SIGALRM, &count, &old);
    const itimerval every5ms{{0, 5000}, {0, 5000}};
    setitimer(ITIMER_REAL, &every5ms, nullptr);

    const double slept = MillisecondsOf(60);

    const itimerval off{};
    setitimer(ITIMER_REAL, &off, nullptr);
    sigaction(SIGALRM, &old, nullptr);
    EXPECT_GE(slept, 60.0);
    EXPECT_GT(g_signals, 0);
}

} // namespace quillon
