// `quillon generate`.

#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "cli/generate_host.h"
#include "cli/program_run.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TGeneratedJson = nlohmann::ordered_json;

class GenerateCommand : public ::testing::Test {
  protected:
    [[nodiscard]] std::string Folder() const { return m_folder.Path().string(); }
    [[nodiscard]] std::string Table(const std::string& name) const { return Folder() + "/Precalc/" + name; }

    [[nodiscard]] std::vector<std::string> Arguments(std::vector<std::string> more) const {
        std::vector<std::string> arguments{"generate", "--precalc", Folder(), "--threads", "2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    [[nodiscard]] TProgramResult Generate(std::vector<std::string> more) const {
        return RunQuillon(Arguments(std::move(more)));
    }

    CTemporaryFolder m_folder;
};

TEST_F(GenerateCommand, MakesTablesThatProbeReads) {
    const TProgramResult result = Generate({"R", "Q", "--json", "--pack=lz4"});
    ASSERT_EQ(result.m_nStatus, 0) << result.m_err;
    const std::vector<std::string> lines = result.OutLines();
    ASSERT_EQ(lines.size(), 2u);
    const TGeneratedJson queen = TGeneratedJson::parse(lines[0]), rook = TGeneratedJson::parse(lines[1]);
    EXPECT_EQ(queen["type"], "Q");
    EXPECT_EQ(queen["mate"], 10);
    EXPECT_EQ(rook["mate"], 16);
    EXPECT_EQ(rook["result"], "made");
    EXPECT_EQ(rook["packed"], true);
    EXPECT_TRUE(rook["given_up"].is_null());
    EXPECT_EQ(rook["file"], Table("R.precalc"));
    EXPECT_EQ(rook["bytes"], 40960);
    EXPECT_GT(rook["levels"], 30);
    EXPECT_GT(rook["positions"], 20'000);
    EXPECT_GE(rook["seconds"], 0);
    EXPECT_TRUE(std::filesystem::exists(Table("R.precalc.lz4")));
    EXPECT_TRUE(ReadWholeFile(Table("R.precalc")) == ThreeMenElements("R"));
    const TProgramResult probe = RunQuillon({"probe", "--fen", "8/8/8/3k4/8/8/8/K3R3", "--precalc", Folder()});
    EXPECT_NE(probe.m_out.find("#14 in current position"), std::string::npos) << probe.m_out;
}

TEST_F(GenerateCommand, WhatIsThereStays) {
    TElements old(40960, 1);
    old[0] = 0;
    WriteElements(Table("Q.precalc"), old);
    const TProgramResult there = Generate({"Q"});
    EXPECT_EQ(there.m_nStatus, 0);
    EXPECT_EQ(there.m_out, "Q: " + Table("Q.precalc") + " exists already\n");
    WriteElements(Table("Q.precalc.iter"), {7, 0, 0, 0});
    const TProgramResult unfinished = Generate({"Q"});
    EXPECT_EQ(unfinished.m_nStatus, 1);
    EXPECT_EQ(unfinished.m_err, "quillon: Q: " + Table("Q.precalc") +
                                    " is not finished and contains up to #4; --continue goes on with it, --restart "
                                    "makes it anew\n");
    EXPECT_EQ(TGeneratedJson::parse(Generate({"Q", "--json"}).m_out)["result"], "unfinished");
    WriteElements(Table("Q.precalc"), {1, 2, 3});
    EXPECT_EQ(Generate({"Q", "--continue"}).m_nStatus, 2); // no table of that size
    EXPECT_EQ(ReadWholeFile(Table("Q.precalc")), (TElements{1, 2, 3}));
    EXPECT_EQ(Generate({"Q", "--restart"}).m_nStatus, 0);
    EXPECT_TRUE(ReadWholeFile(Table("Q.precalc")) == ThreeMenElements("Q"));
    EXPECT_EQ(ReadWholeFile(Table("Q.precalc.BAK")), (TElements{1, 2, 3}));
    WriteElements(Table("Q.precalc"), {1, 2, 3});
    const TProgramResult wrong = Generate({"Q"});
    EXPECT_EQ(wrong.m_nStatus, 2);
    EXPECT_EQ(wrong.m_err,
              "quillon: Error: Error reading file " + Table("Q.precalc") + " (it is no whole table of its type)\n");
}

TEST_F(GenerateCommand, MissingTypesAreNamedOrMade) {
    const TProgramResult missing = Generate({"P", "--json"});
    EXPECT_EQ(missing.m_nStatus, 2);
    EXPECT_EQ(missing.m_err, "quillon: Error: No global register found for position type Q, R\n");
    EXPECT_EQ(TGeneratedJson::parse(missing.m_out)["missing"], TGeneratedJson::array({"Q", "R"}));
    const TProgramResult made = Generate({"P", "--with-subtypes"});
    EXPECT_EQ(made.m_nStatus, 0) << made.m_err;
    ASSERT_EQ(made.OutLines().size(), 3u);
    EXPECT_TRUE(made.OutLines()[2].starts_with("P: longest mate #28, ")) << made.m_out;
}

/// However far it has come: afterwards the tables are those of the rules.
TEST_F(GenerateCommand, AnInterruptedRunGoesOn) {
    CProgramRun run(Arguments({"B", "QR", "--with-subtypes", "--progress"}));
    ASSERT_TRUE(run.WaitForError(": level "));
    run.Signal(SIGUSR1);
    run.Signal(SIGINT);
    const TProgramResult stopped = run.Finish();
    EXPECT_EQ(stopped.m_nStatus, 1) << stopped.m_err;
    EXPECT_FALSE(std::filesystem::exists(Table("QR.precalc.SAVE_PENDING")));
    EXPECT_TRUE(!std::filesystem::exists(Table("QR.precalc")) || std::filesystem::exists(Table("QR.precalc.iter")));
    const TProgramResult goneOn = Generate({"B", "QR", "--with-subtypes", "--continue"});
    EXPECT_EQ(goneOn.m_nStatus, 0) << goneOn.m_err;
    EXPECT_FALSE(std::filesystem::exists(Table("QR.precalc.iter")));
    EXPECT_TRUE(ReadWholeFile(Table("Q.precalc")) == ThreeMenElements("Q"));
    EXPECT_TRUE(ReadWholeFile(Table("R.precalc")) == ThreeMenElements("R"));
}

/// The pause is in no time that is told.
TEST_F(GenerateCommand, APausedRunStandsStill) {
    const auto start = std::chrono::steady_clock::now();
    CProgramRun run(Arguments({"QR", "--with-subtypes", "--progress", "--json"}), {"", "", false, EProcessGroup::Own});
    ASSERT_TRUE(run.WaitForError("QR, 3 of 3: level "));
    run.Signal(SIGTSTP);
    ASSERT_TRUE(run.WaitForStop());
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    run.Signal(SIGCONT);
    EXPECT_TRUE(run.WaitForError("quillon: going on\n"));
    run.Signal(SIGINT);
    const TProgramResult result = run.Finish();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    const std::vector<std::string> lines = result.OutLines();
    ASSERT_EQ(lines.size(), 3u) << result.m_err;
    double told = 0;
    for (const std::string& line : lines)
        told += TGeneratedJson::parse(line)["seconds"].get<double>();
    EXPECT_LE(told, wall.count() - 0.4);
    const TGeneratedJson last = TGeneratedJson::parse(lines.back());
    EXPECT_EQ(last["given_up"].is_null(), last["result"] == "made") << "it may have been too late to give up a level";
}

TEST(GenerateHost, RateAndTimeLeftAreThoseOfTheLevelWithoutPauses) {
    CProgressLine line(false);
    CGenerateHost host(line, {});
    EXPECT_EQ(host.ProgressText(), "starting");
    TGenerateProgress progress{"QR", 2, 3, {7, 255, 0, 0}, 40'000'000, 100, 5.0};
    host.Progress(progress);
    EXPECT_EQ(host.ProgressText(), "QR, 2 of 3: level 7, 0.0%, 100 found");
    progress.m_level.m_nPermille = 250;
    progress.m_level.m_nFound = 23;
    progress.m_seconds = 15;
    host.Progress(progress);
    EXPECT_EQ(host.ProgressText(),
              "QR, 2 of 3: level 7, 25.0%, 123 found, 1.00 million a second, 0:30 left in the level");
}

TEST(GenerateHost, JsonTellsWhatIsNotKnownAsNull) {
    TGenerateReport report;
    report.m_status = EGenerateStatus::Done;
    report.m_bMade = report.m_bNotPacked = true;
    report.m_bPacked = false;
    report.m_nMate = report.m_nLevels = 9;
    report.m_nGivenUp = 0;
    const TGeneratedJson made = TGeneratedJson::parse(GenerateJson(report));
    EXPECT_EQ(made["result"], "made");
    EXPECT_EQ(made["packed"], false);
    EXPECT_TRUE(made["mate"].is_null()) << "not counted";
    EXPECT_TRUE(made["positions"].is_null());
    EXPECT_EQ(GenerateText(report).find("longest"), std::string::npos);
    report = {};
    report.m_status = EGenerateStatus::Cancelled;
    report.m_nLevels = 3;
    report.m_nMate = 2;
    report.m_nGivenUp = 4;
    const TGeneratedJson stopped = TGeneratedJson::parse(GenerateJson(report));
    EXPECT_EQ(stopped["given_up"], 4);
    EXPECT_EQ(stopped["mate"], 2);
    EXPECT_TRUE(stopped["packed"].is_null());
}

TEST_F(GenerateCommand, WrongUsageIsToldInOneLine) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"QX"}, "Error in InitForGenerator"},
        {{"QRBNPq"}, "not the letters of one to five men besides the kings: QRBNPq"},
        {{"Q", "--pack=zip"}, ""},
        {{"Q", "--continue", "--restart"}, ""},
        {{"Q", "--threads", "0"}, ""},
        {{}, ""}};
    for (const auto& [arguments, message] : cases) {
        const TProgramResult result = Generate(arguments);
        EXPECT_EQ(result.m_nStatus, 2);
        EXPECT_EQ(result.m_out, "");
        if (!message.empty()) {
            EXPECT_EQ(result.m_err, "quillon: " + message + "\n");
        }
    }
    EXPECT_EQ(RunQuillon({"generate", "Q", "--precalc", Folder() + "/none"}).m_nStatus, 2);
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path())) << "nothing was made";
    WriteElements(Folder() + "/R.precalc", ThreeMenElements("R")); // a folder Precalc would hide it
    EXPECT_EQ(Generate({"Q"}).m_nStatus, 2);
    EXPECT_FALSE(std::filesystem::exists(Folder() + "/Precalc"));
}

} // namespace
} // namespace quillon
