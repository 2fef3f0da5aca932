#include "app/default_threads.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

std::string ThreadsOf(int nCores, int nProcessors, int nLevels = 1) {
    TSettings settings;
    settings.m_nMultithreadingLevels = nLevels;
    const TDefaultThreads threads = ComputeDefaultThreads(settings, nCores, nProcessors);
    return std::to_string(threads.m_nThreads) + "^" + std::to_string(threads.m_nLevels);
}

TEST(DefaultThreads, ManyCoresMakeTwoLevels) {
    EXPECT_EQ(ThreadsOf(8, 8), "4^2");
    EXPECT_EQ(ThreadsOf(6, 12), "4^2");
    EXPECT_EQ(ThreadsOf(16, 32), "4^2");
    EXPECT_EQ(ThreadsOf(24, 24), "4^2");
    EXPECT_EQ(ThreadsOf(25, 25), "5^2");
    EXPECT_EQ(ThreadsOf(128, 256), "11^2");
    EXPECT_EQ(ThreadsOf(8, 8, 0), "4^2") << "whatever the settings say";
}

TEST(DefaultThreads, FewCoresHaveAThreadEach) {
    EXPECT_EQ(ThreadsOf(6, 6), "6^1");
    EXPECT_EQ(ThreadsOf(6, 11), "6^1");
    EXPECT_EQ(ThreadsOf(4, 16), "4^1");
    EXPECT_EQ(ThreadsOf(2, 2), "2^1");
    EXPECT_EQ(ThreadsOf(1, 1), "1^1");
    EXPECT_EQ(ThreadsOf(7, 11, 0), "7^1") << "the first move is always shared";
    EXPECT_EQ(ThreadsOf(4, 4, 3), "4^3");
}

} // namespace
} // namespace quillon
