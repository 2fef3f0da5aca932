#include "platform/save_file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "platform/killed_saves.h"
#include "platform/lowered_limit.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

std::string ContentOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> NamesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

using TNames = std::vector<std::string>;

/// What the function returns when it runs in a process of its own, which may lose rights.
int InChild(const std::function<int()>& run) {
    const pid_t child = fork();
    if (child == 0)
        _exit(run());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(SaveFile, MakesANewFile) {
    const CTemporaryFolder folder;
    const TSaveResult result = SaveFile(folder.Path() / "a.cp", "content", true);
    EXPECT_FALSE(result.m_error) << result.m_error.message();
    EXPECT_TRUE(result.m_oldFile.empty());
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp"), "content");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a.cp"}));
}

TEST(SaveFile, ANewFileHasTheRightsOfTheUsersMask) {
    const CTemporaryFolder folder;
    const mode_t before = umask(027);
    static_cast<void>(SaveFile(folder.Path() / "a", "x", true));
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat((folder.Path() / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST(SaveFile, KeepsTheOldFileAndItsRights) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a.cp";
    folder.Write("a.cp", "first");
    chmod(file.c_str(), 0604);
    const TSaveResult result = SaveFile(file, "second", true);
    EXPECT_FALSE(result.m_error);
    EXPECT_EQ(result.m_oldFile.filename(), "a.cp.BAK");
    EXPECT_EQ(ContentOf(file), "second");
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp.BAK"), "first");
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0604u);
    static_cast<void>(SaveFile(file, "third", true));
    EXPECT_EQ(ContentOf(folder.Path() / "a.cp.BAK"), "second");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a.cp", "a.cp.BAK"}));
}

TEST(SaveFile, WithoutABackupTheOldFileIsGone) {
    const CTemporaryFolder folder;
    folder.Write("a", "first");
    EXPECT_FALSE(SaveFile(folder.Path() / "a", "second", false).m_error);
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a"}));
    EXPECT_EQ(ContentOf(folder.Path() / "a"), "second");
}

TEST(SaveFile, ABackupThatCannotBeReplacedHasSuccessors) {
    const CTemporaryFolder folder;
    folder.Write("a.BAK/in the way", ""); // a folder with something in it
    folder.Write("a.BAK1", "kept");
    for (const char* content : {"first", "second", "third"})
        EXPECT_FALSE(SaveFile(folder.Path() / "a", content, true).m_error);
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "a.BAK", "a.BAK1", "a.BAK2", "a.BAK3"}));
    EXPECT_EQ(ContentOf(folder.Path() / "a.BAK1"), "kept");
    EXPECT_EQ(ContentOf(folder.Path() / "a.BAK2"), "first");
    EXPECT_EQ(ContentOf(folder.Path() / "a.BAK3"), "second");
}

TEST(SaveFile, ABackupOfTheSameFileLeavesNothingBehind) {
    const CTemporaryFolder folder;
    folder.Write("a", "first");
    fs::create_hard_link(folder.Path() / "a", folder.Path() / "a.BAK"); // as a kill between two steps leaves it
    EXPECT_FALSE(SaveFile(folder.Path() / "a", "second", true).m_error);
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "a.BAK"}));
    EXPECT_EQ(ContentOf(folder.Path() / "a.BAK"), "first");
}

TEST(SaveFile, FollowsLinks) {
    const CTemporaryFolder folder;
    folder.Write("real/a", "first");
    fs::create_symlink("real/a", folder.Path() / "link");
    EXPECT_FALSE(SaveFile(folder.Path() / "link", "second", true).m_error);
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_EQ(ContentOf(folder.Path() / "real/a"), "second");
    EXPECT_EQ(ContentOf(folder.Path() / "real/a.BAK"), "first");
}

TEST(SaveFile, MakesTheFileThatALinkNames) {
    const CTemporaryFolder folder;
    folder.Write("real/other", "");
    fs::create_symlink("second", folder.Path() / "first");
    fs::create_symlink("real/a", folder.Path() / "second");
    EXPECT_FALSE(SaveFile(folder.Path() / "first", "content", true).m_error);
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "first"));
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "second"));
    EXPECT_EQ(ContentOf(folder.Path() / "real/a"), "content");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"first", "real", "second"}));
}

TEST(SaveFile, ALinkThatLeadsNowhereStays) {
    const CTemporaryFolder folder;
    fs::create_symlink("none/a", folder.Path() / "link");
    fs::create_symlink("circle", folder.Path() / "circle");
    EXPECT_EQ(SaveFile(folder.Path() / "link", "content", true).m_error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(SaveFile(folder.Path() / "circle", "content", true).m_error, std::errc::too_many_symbolic_link_levels);
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "circle"));
}

TEST(SaveFile, TakesAPathWithoutAFolder) {
    const CTemporaryFolder folder;
    EXPECT_EQ(InChild([&] {
                  fs::current_path(folder.Path());
                  return SaveFile("a", "one", true).m_error || SaveFile("a", "two", true).m_error ? 1 : 0;
              }),
              0);
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "a.BAK"}));
}

TEST(SaveFile, AFullDeviceIsTold) {
    const TSaveResult result = SaveFile("/dev/full", "content", true);
    EXPECT_EQ(result.m_error, std::errc::no_space_on_device);
    EXPECT_EQ(result.m_step, ESaveStep::Write);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    EXPECT_FALSE(SaveFile("/dev/null", "content", true).m_error);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(SaveFile, BeyondTheLimitOnFilesTheOldOneStays) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a";
    folder.Write("a", "first");
    const TSaveResult result = [&] {
        const CSmallDisk small;
        return SaveFile(file, std::string(100'000, 'x'), true);
    }();
    EXPECT_EQ(result.m_error, std::errc::file_too_large);
    EXPECT_EQ(result.m_step, ESaveStep::Write);
    EXPECT_EQ(ContentOf(file), "first");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a"}));
}

TEST(SaveFile, OfSeveralFilesNoneChangesUnlessAllCanBeWritten) {
    const CTemporaryFolder folder;
    folder.Write("a", "first");
    folder.Write("b", "first");
    const std::string large(100'000, 'x');
    const TFileToSave files[] = {{folder.Path() / "a", "second"}, {folder.Path() / "b", large}};
    const TSaveResult result = [&] {
        const CSmallDisk small;
        return SaveFiles(files, true);
    }();
    EXPECT_EQ(result.m_error, std::errc::file_too_large);
    EXPECT_EQ(result.m_nFile, 1u);
    EXPECT_EQ(ContentOf(folder.Path() / "a"), "first");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "b"}));
    EXPECT_FALSE(SaveFiles(files, true).m_error);
    EXPECT_EQ(ContentOf(folder.Path() / "b"), large);
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "a.BAK", "b", "b.BAK"}));
}

TEST(SaveFile, LinksToOneFileGetTheContentOfTheFirst) {
    const CTemporaryFolder folder;
    const fs::path a = folder.Path() / "a", b = folder.Path() / "b";
    fs::create_symlink("a", b);
    const TFileToSave files[] = {{a, "first"}, {b, "second"}}, others[] = {{b, "third"}, {a, "fourth"}};
    for (const bool bThere : {false, true}) {
        EXPECT_EQ(fs::exists(a), bThere);
        EXPECT_FALSE(SaveFiles(files, true).m_error);
        EXPECT_EQ(ContentOf(a), "first");
        EXPECT_TRUE(fs::is_symlink(b));
    }
    EXPECT_FALSE(SaveFiles(others, true).m_error);
    EXPECT_EQ(ContentOf(a), "third");
    fs::remove(b);
    fs::create_hard_link(a, b); // each name has a file of its own afterwards
    EXPECT_FALSE(SaveFiles(files, true).m_error);
    EXPECT_EQ(ContentOf(a), "first");
    EXPECT_EQ(ContentOf(b), "second");
}

TEST(SaveFile, AFullDeviceAmongSeveralLeavesTheOthersAndTheirBackups) {
    const CTemporaryFolder folder;
    folder.Write("a", "first");
    folder.Write("a.BAK", "earlier");
    fs::create_symlink("/dev/full", folder.Path() / "b");
    const TFileToSave files[] = {{folder.Path() / "a", "second"}, {folder.Path() / "b", "second"}};
    const TSaveResult result = SaveFiles(files, true);
    EXPECT_EQ(result.m_error, std::errc::no_space_on_device);
    EXPECT_EQ(result.m_nFile, 1u);
    EXPECT_TRUE(result.m_saved.empty());
    EXPECT_EQ(ContentOf(folder.Path() / "a"), "first");
    EXPECT_EQ(ContentOf(folder.Path() / "a.BAK"), "earlier");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "a.BAK", "b"}));
}

TEST(SaveFile, ABackupThatCannotHaveItsNameChangesNothing) {
    const CTemporaryFolder folder;
    const std::string longName(253, 'b'); // with the ending of a backup it would be too long
    folder.Write("a", "first");
    folder.Write("a.BAK", "earlier");
    folder.Write(longName, "first");
    const TFileToSave files[] = {{folder.Path() / "a", "second"}, {folder.Path() / longName, "second"}};
    const TSaveResult result = SaveFiles(files, true);
    EXPECT_EQ(result.m_error, std::errc::filename_too_long);
    EXPECT_EQ(result.m_step, ESaveStep::Backup);
    EXPECT_EQ(ContentOf(folder.Path() / "a"), "first");
    EXPECT_EQ(ContentOf(folder.Path() / "a.BAK"), "earlier");
    EXPECT_EQ(NamesIn(folder.Path()), (TNames{"a", "a.BAK", longName}));
    EXPECT_EQ(SaveFiles(files, false).m_saved, (std::vector<std::size_t>{0, 1}));
}

TEST(SaveFile, PlacesThatCannotBeWrittenAreTold) {
    const CTemporaryFolder folder;
    folder.Write("file", "");
    EXPECT_EQ(SaveFile(folder.Path(), "x", true).m_error, std::errc::is_a_directory);
    EXPECT_EQ(SaveFile(folder.Path() / "none" / "a", "x", true).m_error, std::errc::no_such_file_or_directory);
    const TSaveResult result = SaveFile(folder.Path() / "file" / "a", "x", true);
    EXPECT_EQ(result.m_error, std::errc::not_a_directory);
    EXPECT_EQ(result.m_step, ESaveStep::Open);
}

TEST(SaveFile, WithoutTheRightTheOldFileStays) {
    const CTemporaryFolder folder;
    folder.Write("folder/a", "first");
    folder.Write("file/a", "first");
    chmod((folder.Path() / "folder").c_str(), 0555);
    chmod((folder.Path() / "file/a").c_str(), 0444);
    chmod((folder.Path() / "file").c_str(), 0777);
    chmod(folder.Path().c_str(), 0755);
    const auto isRefused = [&](const char* name) {
        return InChild([&] {
            constexpr uid_t kNobody = 65534; // rights mean nothing to root
            if (geteuid() == 0 && setuid(kNobody) != 0)
                return 2;
            const TSaveResult result = SaveFile(folder.Path() / name, "second", true);
            return result.m_error == std::errc::permission_denied && result.m_step == ESaveStep::Open ? 0 : 1;
        });
    };
    EXPECT_EQ(isRefused("folder/a"), 0);
    EXPECT_EQ(isRefused("file/a"), 0);
    EXPECT_EQ(ContentOf(folder.Path() / "folder/a"), "first");
    EXPECT_EQ(ContentOf(folder.Path() / "file/a"), "first");
    chmod((folder.Path() / "folder").c_str(), 0755);
}

// ---- kills

/// Contents of different length, each of which tells which it is.
std::string Version(int n) {
    return std::string(static_cast<std::size_t>(20'000 + 7'000 * (n % 5)), static_cast<char>('a' + n % 5));
}

bool IsVersion(const std::string& content) { return !content.empty() && content == Version(content.front() - 'a'); }

TEST(SaveFile, KilledAtAnyMomentItLeavesTheOldOrTheNewFile) {
    const CTemporaryFolder folder;
    const fs::path file = folder.Path() / "a", backup = folder.Path() / "a.BAK";
    int nChanged = 0, nStrays = 0;
    std::string before;
    KillSaves([&](int n) { return !SaveFile(file, Version(n), true).m_error; },
              [&](int) {
                  const std::string after = ContentOf(file);
                  EXPECT_TRUE(IsVersion(after));
                  EXPECT_TRUE(IsVersion(ContentOf(backup)));
                  nChanged += after != std::exchange(before, after) ? 1 : 0;
                  nStrays += RemoveStrays(folder.Path());
              });
    // The kills fell between saves and within them.
    EXPECT_GT(nChanged, 0);
    EXPECT_GT(nStrays, 0);
}

} // namespace
} // namespace quillon
