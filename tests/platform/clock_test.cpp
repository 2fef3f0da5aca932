#include "platform/clock.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace quillon {

TEST(Clock, TicksAdvanceByTheMillisecondsThatPass) {
    const std::uint64_t before = TickCount64();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const std::uint64_t passed = TickCount64() - before;
    EXPECT_GE(passed, 29u);
    EXPECT_LT(passed, 30'000u);
}

TEST(Clock, SleepCostsNoProcessorTime) {
    const double before = ProcessCpuSeconds();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_LT(ProcessCpuSeconds() - before, 0.15);
}

TEST(Clock, WorkOfEveryThreadCostsProcessorTime) {
    const double before = ProcessCpuSeconds();
    std::thread worker([] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        while (std::chrono::steady_clock::now() < end) {
        }
    });
    worker.join();
    EXPECT_GT(ProcessCpuSeconds() - before, 0.01); // little of it, on a machine that is busy with others
}

} // namespace quillon
