#include "platform/in_parts.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "platform/thread.h"

namespace quillon {
namespace {

/// How often each index was worked on, whatever the parts.
std::vector<int> Visits(std::size_t nCount, int nParts) {
    std::vector<std::atomic<int>> visits(nCount);
    InParts(nCount, nParts, [&](std::size_t begin, std::size_t end) {
        ASSERT_LE(begin, end);
        ASSERT_LE(end, nCount);
        for (std::size_t i = begin; i < end; ++i)
            ++visits[i];
    });
    return {visits.begin(), visits.end()};
}

TEST(InParts, EveryIndexIsWorkedOnOnce) {
    for (const std::size_t count : {0u, 1u, 2u, 5u, 16u, 17u, 1000u})
        for (const int parts : {-1, 0, 1, 2, 3, 8, 16, 40})
            EXPECT_EQ(Visits(count, parts), std::vector<int>(count, 1)) << count << " in " << parts;
}

TEST(InParts, ThreadsShareTheWork) {
    std::mutex mutex;
    std::set<std::thread::id> threads;
    std::size_t largest = 0;
    InParts(1000, 4, [&](std::size_t begin, std::size_t end) {
        const std::lock_guard lock(mutex);
        threads.insert(std::this_thread::get_id());
        largest = std::max(largest, end - begin);
    });
    EXPECT_EQ(threads.size(), 4u);
    EXPECT_TRUE(threads.contains(std::this_thread::get_id()));
    EXPECT_EQ(largest, 250u);
    EXPECT_EQ(LiveThreads(), 0);
}

TEST(InParts, TheCallerDoesWhatNoThreadIsThereFor) {
    for (const int refused : {1, 2, 5}) {
        RefuseThreads(refused);
        EXPECT_EQ(Visits(1000, 4), std::vector<int>(1000, 1)) << refused;
        RefuseThreads(0);
    }
    // The system may have no more when some have been started.
    std::atomic<std::size_t> done{0};
    InParts(1000, 8, [&done](std::size_t begin, std::size_t end) {
        RefuseThreads(100);
        done += end - begin;
    });
    RefuseThreads(0);
    EXPECT_EQ(done, 1000u);
}

} // namespace
} // namespace quillon
