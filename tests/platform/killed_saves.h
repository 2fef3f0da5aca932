#pragma once
// Saves that are killed: what is on the disk afterwards must be whole.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace quillon {

/// Saves the versions from `first` on without end, in a process that is killed after a while.
template <class TSave> void SaveUntilKilled(TSave save, int first, long microseconds) {
    const pid_t child = fork();
    if (child == 0)
        for (int n = first;; ++n)
            if (!save(n))
                _exit(1);
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";
}

/// Kills as many saves as fit into seconds on any disk, at moments that are the same in every run as far as the disk
/// is.
///   save   saves version n; false if it could not.
///   check  looks at what the kill of a save of version n and those behind it has left.
template <class TSave, class TCheck> void KillSaves(TSave save, TCheck check) {
    constexpr int kMeasured = 5;
    const auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < kMeasured; ++n)
        EXPECT_TRUE(save(n));
    const auto taken = std::chrono::steady_clock::now() - start;
    const long each =
        std::max<long>(std::chrono::duration_cast<std::chrono::microseconds>(taken).count() / kMeasured, 1);
    const int nKills = static_cast<int>(std::clamp<long>(900'000 / each, 40, 300));
    std::mt19937 random(8);
    for (int i = 0; i < nKills && !::testing::Test::HasFailure(); ++i) {
        SaveUntilKilled(save, i, std::uniform_int_distribution<long>(0, 2 * each)(random));
        check(i);
    }
}

/// Removes what kills have left behind; returns how much there was.
inline int RemoveStrays(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> strays;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename().string().starts_with(".quillon-"))
            strays.push_back(entry.path());
    for (const auto& stray : strays)
        std::filesystem::remove(stray);
    return static_cast<int>(strays.size());
}

} // namespace quillon
