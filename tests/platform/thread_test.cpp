#include "platform/thread.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <pthread.h>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "platform/sleep.h"

namespace quillon {

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

std::size_t StackOfThisThread() {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    void* address = nullptr;
    std::size_t bytes = 0;
    pthread_attr_getstack(&attributes, &address, &bytes);
    pthread_attr_destroy(&attributes);
    return bytes;
}

// Uses a kilobyte of stack a level; the result keeps the frames alive.
int UseKilobytes(int kilobytes) {
    volatile char frame[1024];
    frame[0] = static_cast<char>(kilobytes);
    if (kilobytes == 0)
        return 0;
    return UseKilobytes(kilobytes - 1) + (frame[0] == static_cast<char>(kilobytes) ? 1 : 0);
}

} // namespace

TEST(Thread, JoinMakesTheWorkOfTheBodyVisible) {
    int value = 0;
    CThread thread(kMegabyte, [&value] { value = 42; });
    EXPECT_TRUE(thread.IsJoinable());
    thread.Join();
    EXPECT_FALSE(thread.IsJoinable());
    EXPECT_EQ(value, 42);
}

TEST(Thread, StackIsAsLargeAsAsked) {
    std::size_t stack = 0;
    CThread(24 * kMegabyte, [&stack] { stack = StackOfThisThread(); }).Join();
    EXPECT_GE(stack, 24 * kMegabyte);
    EXPECT_LT(stack, 26 * kMegabyte);
}

TEST(Thread, StackOfAnOddOrTinySizeIsRoundedUp) {
    std::size_t stack = 0;
    CThread(kMegabyte + 1, [&stack] { stack = StackOfThisThread(); }).Join();
    EXPECT_GT(stack, kMegabyte);
    bool bRan = false;
    CThread(1, [&bRan] { bRan = true; }).Join();
    EXPECT_TRUE(bRan);
}

TEST(Thread, DeepRecursionFitsALargeStack) {
    int depth = 0;
    CThread(128 * kMegabyte, [&depth] { depth = UseKilobytes(32 * 1024); }).Join();
    EXPECT_EQ(depth, 32 * 1024);
}

TEST(Thread, DestructorWaitsForTheBody) {
    std::atomic<bool> bDone = false;
    {
        const CThread thread(kMegabyte, [&bDone] {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            bDone = true;
        });
    }
    EXPECT_TRUE(bDone);
}

TEST(Thread, MoveHandsTheThreadOver) {
    std::atomic<int> runs = 0;
    CThread first(kMegabyte, [&runs] { ++runs; });
    CThread second(std::move(first));
    // A moved-from thread is no thread, by contract.
    EXPECT_FALSE(first.IsJoinable()); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_TRUE(second.IsJoinable());
    second = CThread(kMegabyte, [&runs] { ++runs; });
    second.Join();
    EXPECT_EQ(runs, 2);
}

TEST(Thread, DefaultIsNoThread) {
    CThread thread;
    EXPECT_FALSE(thread.IsJoinable());
    thread.Join();
    EXPECT_FALSE(thread.IsJoinable());
}

TEST(Thread, StackThatCannotBeHadIsAnError) {
    bool bRan = false;
    EXPECT_THROW(CThread(std::size_t{1} << 60, [&bRan] { bRan = true; }), std::system_error);
    EXPECT_FALSE(bRan);
}

TEST(Thread, TheLivingAreCounted) {
    const int before = LiveThreads();
    std::atomic<bool> bGo{false};
    CThread thread(kMegabyte, [&bGo] {
        while (!bGo)
            SleepMs(1);
    });
    EXPECT_EQ(LiveThreads(), before + 1);
    CThread moved = std::move(thread);
    EXPECT_EQ(LiveThreads(), before + 1);
    bGo = true;
    moved.Join();
    EXPECT_EQ(LiveThreads(), before);
}

TEST(Thread, ALowerPriorityIsThatOfTheThreadAlone) {
    const int here = getpriority(PRIO_PROCESS, 0);
    int normal = -99, low = -99;
    CThread thread(kMegabyte, [&] {
        SetThreadPriority(0);
        normal = getpriority(PRIO_PROCESS, 0);
        SetThreadPriority(-1);
        low = getpriority(PRIO_PROCESS, 0);
    });
    thread.Join();
    EXPECT_EQ(normal, here);
    EXPECT_EQ(low, std::min(here + 5, 19));
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), here);
}

} // namespace quillon
