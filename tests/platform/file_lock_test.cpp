#include "platform/file_lock.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/temporary_folder.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

TEST(FileLock, OneHolderAtATime) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "x.LOCK";
    CFileLock first, second;
    EXPECT_TRUE(first.Take(file));
    EXPECT_FALSE(second.Take(file));
    first.Release();
    EXPECT_FALSE(fs::exists(file));
    EXPECT_TRUE(second.Take(file));
    EXPECT_FALSE(first.Take(file));
    EXPECT_TRUE(first.Take(folder.Path() / "y.LOCK"));
}

TEST(FileLock, AKilledHolderKeepsNobodyOut) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "x.LOCK";
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        CFileLock lock;
        const char taken = lock.Take(file) ? 1 : 0;
        (void)!write(ready[1], &taken, 1);
        for (;;)
            pause();
    }
    char taken = 0;
    ASSERT_EQ(read(ready[0], &taken, 1), 1);
    EXPECT_EQ(taken, 1);
    CFileLock lock;
    EXPECT_FALSE(lock.Take(file));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(fs::exists(file));
    EXPECT_TRUE(lock.Take(file));
    close(ready[0]);
    close(ready[1]);
}

TEST(FileLock, WhereNoLockCanBeHadNobodyIsKeptOut) {
    const CTemporaryFolder folder;
    CFileLock lock;
    EXPECT_TRUE(lock.Take(folder.Path() / "none" / "x.LOCK"));
}

} // namespace
} // namespace quillon
