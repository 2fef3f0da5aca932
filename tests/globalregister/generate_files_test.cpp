#include "globalregister/generator/generator_files.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "globalregister/packed/little_endian.h"
#include "globalregister/table_files.h"
#include "platform/save_file.h"
#include "platform/temporary_folder.h"

namespace quillon {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kFinished = 99; // stands for the finished table
constexpr std::size_t kBytes = 5000;

/// The table as this level leaves it.
TElements StateOf(std::uint32_t nLevel) { return TElements(kBytes, static_cast<std::uint8_t>(nLevel)); }

struct TKilled {};

class GeneratorFiles : public testing::TestWithParam<bool> { // true: bit data
  protected:
    [[nodiscard]] fs::path Plain() const { return m_folder->Path() / "X.precalc"; }
    [[nodiscard]] fs::path Details() const { return m_folder->Path() / "X.precalc.details"; }
    [[nodiscard]] fs::path Beside(const char* extension) const { return Plain() += extension; }

    /// Bit data have them from the start.
    void MakeDetails(CGeneratorFiles& files) const {
        if (GetParam()) {
            ASSERT_TRUE(files.CreateDetails(2 * kBytes, 3, 1));
        }
    }

    [[nodiscard]] CGeneratorFiles Files(TFileStep onStep = {}) const {
        return CGeneratorFiles({Plain(), GetParam() ? Details() : fs::path()}, std::move(onStep));
    }

    /// Two levels, and the end. What is there before is kept.
    void MakeAll(CGeneratorFiles files) const {
        files.KeepOld(Plain());
        MakeDetails(files);
        for (const std::uint32_t nLevel : {1u, 2u})
            ASSERT_EQ(files.Save(StateOf(nLevel), nLevel), "");
        ASSERT_EQ(files.Finish(StateOf(kFinished)), "");
    }

    /// The level that the files have, kFinished for a finished table; nothing if there is none.
    [[nodiscard]] std::optional<std::uint32_t> LevelOfFiles() const {
        const std::optional<std::uint32_t> nLevel = Files().ReadLevel();
        return nLevel || !fs::exists(Plain()) ? nLevel : std::optional(kFinished);
    }

    std::unique_ptr<CTemporaryFolder> m_folder = std::make_unique<CTemporaryFolder>();
};

INSTANTIATE_TEST_SUITE_P(Forms, GeneratorFiles, testing::Bool());

TEST_P(GeneratorFiles, AfterASaveTableAndLevelStand) {
    CGeneratorFiles files = Files();
    EXPECT_EQ(files.ReadLevel(), std::nullopt);
    if (GetParam()) {
        ASSERT_TRUE(files.CreateDetails((std::uint64_t{5} << 20) / 4, 3, 1));
        EXPECT_EQ(files.DetailsNow(), fs::path(Details()) += ".NEW");
    }
    ASSERT_EQ(files.Save(StateOf(7), 0x0304), "");
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(7));
    EXPECT_EQ(ReadWholeFile(Beside(".iter")), (TElements{4, 3, 0, 0}));
    EXPECT_EQ(files.ReadLevel(), 0x0304u);
    EXPECT_FALSE(fs::exists(Beside(".SAVE_PENDING")));
    EXPECT_FALSE(fs::exists(Beside(".BIT_DATA")) || fs::exists(Beside(".NEW")));
    if (GetParam()) {
        const TElements details = ReadWholeFile(Details()).value();
        EXPECT_EQ(details.size(), (std::uint64_t{5} << 20) / 4);
        EXPECT_EQ(details[0], 3);
        EXPECT_EQ(std::count(details.begin(), details.end(), 0), static_cast<std::ptrdiff_t>(details.size()) - 1);
    }
    ASSERT_EQ(files.Finish(StateOf(8)), "");
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(8));
    EXPECT_FALSE(fs::exists(Beside(".iter")));
}

TEST_P(GeneratorFiles, WhatWasThereIsKeptOnce) {
    WriteElements(Plain(), {1, 2, 3});
    WriteElements(Details(), {4, 5});
    MakeAll(Files());
    EXPECT_EQ(ReadWholeFile(Beside(".BAK")), (TElements{1, 2, 3}));
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(kFinished));
    EXPECT_EQ(fs::exists(Details().string() + ".BAK"), GetParam());
}

TEST_P(GeneratorFiles, PackedFormsAreKeptToo) {
    for (const char* extension : {".lz4", ".packed.lzw", ".packed.lz4"}) {
        WriteElements(Beside(extension), {1, 2});
        WriteElements(Details().string() + extension, {3});
    }
    MakeAll(Files());
    for (const char* extension : {".lz4", ".packed.lzw", ".packed.lz4"}) {
        EXPECT_FALSE(fs::exists(Beside(extension))) << extension;
        EXPECT_EQ(ReadWholeFile(Beside(extension).string() + ".BAK"), (TElements{1, 2})) << extension;
        EXPECT_EQ(fs::exists(Details().string() + extension), !GetParam()) << extension;
    }
}

/// A finished table that has been kept is worth more than one in the making.
TEST_P(GeneratorFiles, AFinishedTableThatIsKeptStays) {
    for (const bool bFinished : {false, true}) {
        m_folder = std::make_unique<CTemporaryFolder>();
        WriteElements(Plain(), {1, 2, 3});
        WriteElements(Beside(".BAK"), {9});
        CGeneratorFiles files = Files();
        files.KeepOld(bFinished ? Plain() : fs::path());
        MakeDetails(files);
        ASSERT_EQ(files.Save(StateOf(1), 1), "");
        EXPECT_EQ(ReadWholeFile(Beside(".BAK")), bFinished ? (TElements{1, 2, 3}) : TElements{9});
        EXPECT_EQ(ReadWholeFile(Plain()), StateOf(1));
    }
}

/// A plain file that was cut is not worth what was kept of it before, though a packed form beside it is whole.
TEST_P(GeneratorFiles, OnlyTheFileThatIsFinishedReplacesWhatIsKept) {
    for (const char* extension : {"", ".lz4", ".packed.lzw"}) {
        WriteElements(Beside(extension), {1, 2});
        WriteElements(Beside(extension).string() + ".BAK", {9});
    }
    CGeneratorFiles files = Files();
    files.KeepOld(Beside(".packed.lzw"));
    MakeDetails(files);
    ASSERT_EQ(files.Save(StateOf(1), 1), "");
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(1));
    EXPECT_EQ(ReadWholeFile(Beside(".BAK")), TElements{9});
    EXPECT_EQ(ReadWholeFile(Beside(".lz4.BAK")), TElements{9});
    EXPECT_EQ(ReadWholeFile(Beside(".packed.lzw.BAK")), (TElements{1, 2}));
    EXPECT_FALSE(fs::exists(Beside(".lz4")) || fs::exists(Beside(".packed.lzw")));
}

/// Bits of an early level beside the lengths of a finished table would be read as finished.
TEST_P(GeneratorFiles, BitsAreKeptWithTheirLengthsOnly) {
    WriteElements(Beside(".lz4"), {1});
    WriteElements(Details(), {2});
    CGeneratorFiles first = Files();
    first.KeepOld(Beside(".lz4"));
    MakeDetails(first);
    ASSERT_EQ(first.Save(StateOf(1), 1), "");
    CGeneratorFiles second = Files();
    second.KeepOld({});
    MakeDetails(second);
    ASSERT_EQ(second.Save(StateOf(2), 2), "");
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(2));
    EXPECT_FALSE(fs::exists(Beside(".BAK")));
    EXPECT_EQ(ReadWholeFile(Beside(".lz4.BAK")), TElements{1});
    if (GetParam()) {
        EXPECT_EQ(ReadWholeFile(Details().string() + ".BAK"), TElements{2});
    }
}

/// Wherever the first save is killed, what it keeps is the same: an unfinished table with its lengths.
TEST_P(GeneratorFiles, AKillChangesNothingOfWhatIsKept) {
    for (int nKill = 0; nKill < 20; ++nKill) {
        m_folder = std::make_unique<CTemporaryFolder>();
        WriteElements(Plain(), {1});
        WriteElements(Details(), {2});
        int nStep = -1;
        CGeneratorFiles files = Files([&](std::string_view) {
            if (++nStep == nKill)
                throw TKilled{};
        });
        try {
            files.KeepOld({});
            MakeDetails(files);
            ASSERT_EQ(files.Save(StateOf(1), 1), "");
        } catch (const TKilled&) {
            ASSERT_TRUE(Files().FinishPendingSave()) << nKill;
        }
        const bool bReplaced = ReadWholeFile(Plain()) == StateOf(1);
        EXPECT_EQ(fs::exists(Beside(".BAK")), bReplaced) << nKill;
        EXPECT_EQ(fs::exists(Details().string() + ".BAK"), bReplaced && GetParam()) << nKill;
    }
}

TEST_P(GeneratorFiles, ALevelWithoutATableTellsNothing) {
    WriteElements(Beside(".iter"), {4, 0, 0, 0});
    CGeneratorFiles files = Files();
    files.RemoveStrays();
    EXPECT_FALSE(fs::exists(Beside(".iter")));
    WriteElements(Plain(), StateOf(1));
    WriteElements(Beside(".iter"), {4, 0, 0, 0});
    files.RemoveStrays();
    EXPECT_EQ(files.ReadLevel(), 4u);
}

TEST_P(GeneratorFiles, LengthsAreNotMadeAfterAStop) {
    CGeneratorFiles files = Files();
    if (GetParam()) {
        EXPECT_FALSE(files.CreateDetails(2 * kBytes, 3, 1, [] { return true; }));
        EXPECT_TRUE(fs::is_empty(m_folder->Path()));
        EXPECT_TRUE(files.CreateDetails(2 * kBytes, 3, 1, [] { return false; }));
    }
    EXPECT_TRUE(files.Lock());
    EXPECT_FALSE(Files().Lock());
}

/// Wherever a run is killed, the next one finds a table and the level that it has, and nothing is lost for longer than
/// the level that was being saved.
TEST_P(GeneratorFiles, AKillBetweenAnyTwoStepsLeavesOneState) {
    std::uint32_t nLeast = 0;
    for (const bool bOldTable : {false, true}) {
        bool bKilled = true;
        nLeast = 0;
        for (int nKill = 0; bKilled; ++nKill) {
            ASSERT_LT(nKill, 100);
            m_folder = std::make_unique<CTemporaryFolder>();
            if (bOldTable)
                WriteElements(Plain(), StateOf(kFinished));
            bKilled = false;
            int nStep = 0;
            try {
                MakeAll(Files([&](std::string_view) {
                    if (nStep++ == nKill)
                        throw TKilled{};
                }));
            } catch (const TKilled&) {
                bKilled = true;
            }
            ASSERT_TRUE(Files().FinishPendingSave()) << nKill;
            EXPECT_FALSE(fs::exists(Beside(".SAVE_PENDING"))) << nKill;
            Files().RemoveStrays();
            const std::optional<std::uint32_t> nLevel = LevelOfFiles();
            const std::uint32_t nReached = nLevel.value_or(0);
            if (nLevel) {
                EXPECT_EQ(ReadWholeFile(Plain()), StateOf(*nLevel)) << nKill;
            }
            if (!bOldTable || nReached != kFinished || nLeast > 0) {
                EXPECT_GE(nReached, nLeast) << nKill; // later kills find later states
                nLeast = nReached;
            }
            if (GetParam() && nLevel && (!bOldTable || nReached != kFinished)) {
                EXPECT_TRUE(fs::exists(Details())) << nKill;
            }
            if (bOldTable && nReached < kFinished) {
                EXPECT_EQ(ReadWholeFile(Beside(".BAK")), StateOf(kFinished)) << nKill;
            }
        }
        EXPECT_EQ(nLeast, kFinished);
    }
}

/// Nor does a second kill, while the save is being ended, do more harm.
TEST_P(GeneratorFiles, AKillOfTheRecoveryIsRecoveredFrom) {
    CGeneratorFiles first = Files();
    MakeDetails(first);
    ASSERT_EQ(first.Save(StateOf(1), 1), "");
    const auto killAt = [](std::string_view wanted, int nTimes) {
        return [wanted = std::string(wanted), nTimes](std::string_view step) mutable {
            if (step == wanted && nTimes-- == 0)
                throw TKilled{};
        };
    };
    CGeneratorFiles second = Files(killAt("take place", 0));
    EXPECT_THROW((void)second.Save(StateOf(2), 2), TKilled);
    EXPECT_TRUE(fs::exists(Beside(".SAVE_PENDING")));
    EXPECT_EQ(Files().ReadLevel(), 1u);
    EXPECT_THROW((void)Files(killAt("write small", 0)).FinishPendingSave(), TKilled);
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(2));
    EXPECT_THROW((void)Files(killAt("remove", 0)).FinishPendingSave(), TKilled);
    EXPECT_TRUE(Files().FinishPendingSave());
    EXPECT_EQ(LevelOfFiles(), 2u);
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(2));
}

TEST_P(GeneratorFiles, AMarkThatTellsNothingStays) {
    WriteElements(Plain(), StateOf(3));
    for (const char* text :
         {"", "x", "Quillon save 1: level 2", "Quillon save 1: level 2, finished 0, keep 0, bytes 9\n",
          "Quillon save 1: level 2, finished 0, keep 0, bytes 5000\nmore"}) {
        m_folder->Write("X.precalc.SAVE_PENDING", text);
        EXPECT_FALSE(Files().FinishPendingSave()) << text;
    }
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(3));
    EXPECT_TRUE(CGeneratorFiles({m_folder->Path() / "none", {}}).FinishPendingSave());
}

TEST_P(GeneratorFiles, FailuresAreToldAndLeaveTheStateBefore) {
    CGeneratorFiles files = Files();
    MakeDetails(files);
    ASSERT_EQ(files.Save(StateOf(1), 1), "");
    const fs::path next = Beside(GetParam() ? ".BIT_DATA" : ".NEW");
    fs::create_directory(next);
    EXPECT_EQ(files.Save(StateOf(2), 2), "Cannot open file to write: " + next.string());
    fs::remove(next);
    fs::create_directory(Beside(".SAVE_PENDING.NEW"));
    EXPECT_EQ(files.Save(StateOf(2), 2), "Error writing to file: " + Beside(".SAVE_PENDING").string());
    EXPECT_FALSE(fs::exists(next));
    EXPECT_EQ(LevelOfFiles(), 1u);
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(1));
}

/// As on a full disk: the limit on file sizes is reached in the middle of the table.
TEST_P(GeneratorFiles, AFullDiskLeavesTheStateBefore) {
    CGeneratorFiles before = Files();
    MakeDetails(before);
    ASSERT_EQ(before.Save(TElements(100, 1), 1), "");
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        FailAtFileSizeLimit();
        CGeneratorFiles files = Files();
        const bool bDetailsFail = !files.CreateDetails(2 * kBytes, 3, 1);
        const std::string failure = files.Save(StateOf(2), 2);
        _exit(bDetailsFail && failure.starts_with("Error writing to file: ") ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadWholeFile(Plain()), TElements(100, 1));
    EXPECT_EQ(LevelOfFiles(), 1u);
    EXPECT_FALSE(fs::exists(Beside(".NEW")) || fs::exists(Beside(".BIT_DATA")) || fs::exists(Beside(".SAVE_PENDING")));
    EXPECT_FALSE(fs::exists(Details().string() + ".NEW"));
}

TEST_P(GeneratorFiles, ARunThatIsGivenUpLeavesNothing) {
    WriteElements(Plain(), StateOf(kFinished));
    CGeneratorFiles files = Files();
    files.RemovePartial();
    EXPECT_TRUE(fs::exists(Plain())) << "what is finished is not of this run";
    files.KeepOld(Plain());
    MakeDetails(files);
    files.RemovePartial();
    EXPECT_EQ(ReadWholeFile(Plain()), StateOf(kFinished)) << "nor is what no save has replaced yet";
    MakeDetails(files);
    ASSERT_EQ(files.Save(StateOf(1), 1), "");
    files.RemovePartial();
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder->Path()), {}), 1);
    EXPECT_EQ(ReadWholeFile(Beside(".BAK")), StateOf(kFinished));
}

} // namespace
} // namespace quillon
