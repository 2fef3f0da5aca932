#include "platform/interrupt.h"

#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>

namespace quillon {

namespace {

// Each case runs in a process of its own: handlers are not given back. That process ends with the count as its status.
std::atomic<int> g_count = 0;

[[noreturn]] void RaiseAll(std::initializer_list<int> signals) {
    InstallInterruptHandler(g_count);
    for (const int signal : signals)
        std::raise(signal);
    std::_Exit(g_count);
}

[[noreturn]] void RaiseTwiceWithTheFirstTakenBack() {
    InstallInterruptHandler(g_count);
    std::raise(SIGINT);
    g_count = 0;
    std::raise(SIGINT);
    std::_Exit(10 + g_count);
}

} // namespace

TEST(InterruptDeathTest, FirstSignalIsCountedOnly) {
    EXPECT_EXIT(RaiseAll({SIGINT}), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(RaiseAll({SIGTERM}), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(RaiseAll({}), testing::ExitedWithCode(0), "");
}

TEST(InterruptDeathTest, SecondSignalEndsTheProgram) {
    EXPECT_EXIT(RaiseAll({SIGINT, SIGINT}), testing::ExitedWithCode(130), "");
    EXPECT_EXIT(RaiseAll({SIGINT, SIGTERM}), testing::ExitedWithCode(130), "");
    EXPECT_EXIT(RaiseAll({SIGTERM, SIGINT}), testing::ExitedWithCode(130), "");
}

TEST(InterruptDeathTest, SignalAfterTheCountIsSetBackIsAFirstOne) {
    EXPECT_EXIT(RaiseTwiceWithTheFirstTakenBack(), testing::ExitedWithCode(11), "");
}

} // namespace quillon
