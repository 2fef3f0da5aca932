// Runs that are stopped, paused, killed or out of disk, and taken up again.

#include "globalregister/generator/generate.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "globalregister/generate_fixture.h"
#include "globalregister/precalc_format.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

TEST_F(GenerateTables, AStoppedRunIsTakenUpFromAnyLevel) {
    const std::string question = "File already exists and contains up to #4.\nTo continue filling in the data from the "
                                 "next level, select 'Yes' or to fill in the contents from the current #4 select 'No'.";
    for (const int nLevel : {1, 8, 19})
        for (const bool bNext : {true, false}) {
            m_host = {};
            const TGenerateReport stopped = MakeUpTo("Q", nLevel);
            ASSERT_EQ(stopped.m_status, EGenerateStatus::Cancelled) << nLevel;
            ASSERT_EQ(m_host.m_boxes.m_asked, TTexts{"\nShould partially generated file(s) be removed from disk?"});
            EXPECT_EQ(ReadWholeFile(Beside("Q", ".iter")), (TElements{static_cast<std::uint8_t>(nLevel), 0, 0, 0}));
            m_host.m_answers = {EThreeWay::Yes};
            m_host.m_boxes.m_answers = {false, bNext};
            ASSERT_EQ(Make("Q").m_status, EGenerateStatus::Done) << nLevel;
            ASSERT_EQ(m_host.m_boxes.m_asked.size(), 2u);
            if (nLevel == 8) {
                EXPECT_EQ(m_host.m_boxes.m_asked[1], question);
            }
            ExpectWhole("Q");
            fs::remove(Plain("Q"));
        }
}

TEST_F(GenerateTables, AStoppedRunLeavesNothingOnRequest) {
    m_host.m_boxes.m_answers = {true};
    const TGenerateReport report = MakeUpTo("R", 4);
    EXPECT_EQ(report.m_status, EGenerateStatus::Cancelled);
    EXPECT_EQ(report.m_nLevels, 0u) << "nothing is there any more";
    EXPECT_EQ(report.m_nMate, 0u);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.Path() / "Precalc"), {}), 0);
}

/// What a restart has not replaced yet is not of its run.
TEST_F(GenerateTables, ARestartThatIsGivenUpAtOnceLeavesTheTableBefore) {
    ASSERT_EQ(MakeUpTo("R", 4).m_nLevels, 4u);
    const TElements before = Table("R");
    m_options.m_existing = EExistingTable::Restart;
    m_host.m_boxes.m_asked.clear();
    m_host.m_boxes.m_answers = {true};
    CGlobalRegisters registers(m_precalc, m_host, m_nQuota);
    TGeneratorControl control;
    control.m_nPause = kGeneratorBreaks;
    const TGenerateReport report = Generate("R", m_options, m_host, registers, control);
    EXPECT_EQ(report.m_status, EGenerateStatus::Cancelled);
    EXPECT_EQ(m_host.m_boxes.m_asked.size(), 1u);
    EXPECT_EQ(report.m_nLevels, 4u);
    EXPECT_TRUE(Table("R") == before);
    EXPECT_EQ(ReadWholeFile(Beside("R", ".iter")), (TElements{4, 0, 0, 0}));
}

/// What has been saved is there, and told.
TEST_F(GenerateTables, AFailureTellsWhatTheTableHas) {
    m_options.m_onFileStep = [this, nSaves = 0](std::string_view step) mutable {
        if (step == "next" && ++nSaves == 6)
            fs::create_directory(Beside("Q", ".NEW"));
    };
    const TGenerateReport report = Make("Q");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_EQ(report.m_nLevels, 5u);
    EXPECT_EQ(report.m_nMate, 3u);
}

/// The save under way ends, then nothing goes on, and the time does not count.
TEST_F(GenerateTables, APausedRunStandsStill) {
    constexpr auto kPause = std::chrono::milliseconds(300);
    std::atomic<int> nSaves = 0;
    int nSavesInPause = 0;
    std::jthread user;
    m_options.m_onFileStep = [&](std::string_view step) {
        if (step != "next" || ++nSaves != 4)
            return;
        PauseGenerator(*m_control);
        user = std::jthread([&] {
            std::this_thread::sleep_for(kPause);
            nSavesInPause = nSaves;
            ResumeGenerator(*m_control);
        });
    };
    const auto start = std::chrono::steady_clock::now();
    const TGenerateReport report = Make("Q");
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    user.join();
    EXPECT_EQ(nSavesInPause, 4);
    EXPECT_GT(nSaves, 10);
    EXPECT_LE(report.m_seconds, wall.count() - 0.29);
    ExpectWhole("Q");
}

TEST_F(GenerateTables, AStopInAPauseStaysAStop) {
    TGeneratorControl control;
    PauseGenerator(control);
    EXPECT_EQ(control.m_nPause, kGeneratorPaused);
    control.m_nPause = kGeneratorBreaks;
    ResumeGenerator(control);
    EXPECT_EQ(control.m_nPause, kGeneratorBreaks);
    PauseGenerator(control);
    EXPECT_EQ(control.m_nPause, kGeneratorBreaks);
}

/// Nobody has gone on: the time until the stop is one of the pause.
TEST_F(GenerateTables, APauseThatAStopEndsIsInNoTime) {
    constexpr auto kPause = std::chrono::milliseconds(300);
    m_host.m_boxes.m_answers = {true};
    m_options.m_onFileStep = [&](std::string_view step) {
        if (step != "next" || m_control->m_nPause != kGeneratorGoesOn)
            return;
        PauseGenerator(*m_control);
        std::this_thread::sleep_for(kPause);
        m_control->m_nPause = kGeneratorBreaks;
    };
    const auto start = std::chrono::steady_clock::now();
    const TGenerateReport report = Make("Q");
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(report.m_status, EGenerateStatus::Cancelled);
    EXPECT_LE(report.m_seconds, wall.count() - 0.29);
}

TEST_F(GenerateTables, AStopIsOfAllTypesThatAreLeft) {
    CGlobalRegisters registers(m_precalc, m_host, m_nQuota);
    TGeneratorControl control;
    control.m_bStop = true;
    const auto reports = GenerateMany({"R", "Q"}, m_options, m_host, registers, control);
    ASSERT_EQ(reports.size(), 2u);
    for (const TGenerateReport& report : reports)
        EXPECT_EQ(report.m_status, EGenerateStatus::Cancelled);
    EXPECT_EQ(m_host.m_ended, (TTexts{"Q", "R"}));
    EXPECT_FALSE(fs::exists(Plain("Q")));
}

/// At some steps of saves, and at those of the end.
TEST_F(GenerateTables, AKilledRunIsTakenUp) {
    m_options.m_existing = EExistingTable::Continue;
    int nSteps = 0;
    m_options.m_onFileStep = [&](std::string_view) { ++nSteps; };
    (void)Make("Q");
    ASSERT_GT(nSteps, 100);
    for (int nKill = 0; nKill < nSteps; nKill += nKill < nSteps - 6 ? 29 : 1) {
        fs::remove_all(m_folder.Path() / "Precalc");
        m_options.m_onFileStep = [nStep = 0, nKill](std::string_view) mutable {
            if (nStep++ == nKill)
                throw TRunKilled{};
        };
        EXPECT_THROW((void)Make("Q"), TRunKilled);
        m_options.m_onFileStep = {};
        ASSERT_EQ(Make("Q").m_status, EGenerateStatus::Done) << nKill;
        ExpectWhole("Q");
    }
}

/// Without any help of the process that is killed.
TEST_F(GenerateTables, AProcessThatIsKilledIsTakenUp) {
    using namespace std::chrono;
    m_options.m_existing = EExistingTable::Continue;
    const auto start = steady_clock::now();
    (void)Make("Q");
    const long usual = std::max<long>(duration_cast<microseconds>(steady_clock::now() - start).count(), 1000);
    std::mt19937 random(5);
    for (int i = 0; i < 5; ++i) {
        fs::remove_all(m_folder.Path() / "Precalc");
        const pid_t child = fork();
        if (child == 0) {
            (void)Make("Q");
            _exit(0);
        }
        std::this_thread::sleep_for(microseconds(std::uniform_int_distribution<long>(0, usual)(random)));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        ASSERT_EQ(Make("Q").m_status, EGenerateStatus::Done) << i;
        ExpectWhole("Q");
    }
}

TEST_F(GenerateTables, AFullDiskIsToldAndTheRunTakenUp) {
    MakeUpTo("R", 3);
    m_options.m_existing = EExistingTable::Continue;
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{20000, 20000};
        setrlimit(RLIMIT_FSIZE, &limit);
        FailAtFileSizeLimit();
        const TGenerateReport report = Make("R");
        const bool bTold =
            m_host.m_boxes.m_told == TTexts{"Error: Error writing to file: " + Beside("R", ".NEW").string()};
        _exit(report.m_status == EGenerateStatus::Failed && report.m_bSystemFailed && bTold ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadWholeFile(Beside("R", ".iter")), (TElements{3, 0, 0, 0}));
    EXPECT_EQ(Make("R").m_status, EGenerateStatus::Done);
    ExpectWhole("R");
}

/// The byte of the flags has room for the bits of two positions, which some types of bit data have there.
TEST_F(GenerateTables, BitsBesideTheFlagsDoNotKeepATableFromBeingTakenUp) {
    MakeUpTo("Q", 6);
    TElements table = Table("Q");
    for (const std::uint8_t bits : TElements{0x10, 0x40, 0xf0}) {
        table[0] = bits;
        WriteElements(Plain("Q"), table);
        WriteElements(Beside("Q", ".iter"), {6, 0, 0, 0});
        m_options.m_existing = EExistingTable::Continue;
        EXPECT_EQ(Make("Q").m_status, EGenerateStatus::Done);
        TElements expected = Expected("Q");
        expected[0] = bits;
        EXPECT_TRUE(Table("Q") == expected) << static_cast<int>(bits);
    }
}

/// All answers of Black promote to what is mate in 127, which in a byte stands for "open". Shorter mates of those types
/// are there, so that 127 is not taken for that.
TEST_F(GenerateTables, AMateThatIsTooLongForItsTableEndsTheRun) {
    for (const char* const type : {"Q", "Qq", "Qr", "Qb", "Qn"}) {
        TElements elements(TPositionIndexing(type).GetSize(), 127);
        for (std::uint8_t n = 0; n < 127; ++n)
            elements[n] = n;
        WriteElements(Plain(type), elements);
    }
    TElements nothingFound(TPositionIndexing("Qp").GetSize(), 127);
    nothingFound[0] = kFlagPawnRanks48;
    WriteElements(Plain("Qp"), nothingFound);
    WriteElements(Beside("Qp", ".iter"), {253, 0, 0, 0});
    m_options.m_existing = EExistingTable::Continue;
    const TGenerateReport report = Make("Qp");
    EXPECT_EQ(report.m_status, EGenerateStatus::Failed);
    EXPECT_FALSE(report.m_bSystemFailed);
    EXPECT_EQ(m_host.m_boxes.m_told,
              TTexts{"Error: An error occurred during data generation.\nQp: a mate is longer than "
                     "its table can tell"});
    EXPECT_EQ(report.m_nLevels, 253u);
    EXPECT_TRUE(Table("Qp") == nothingFound);
}

} // namespace
} // namespace quillon
