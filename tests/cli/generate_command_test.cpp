// `quillon generate`.

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

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
    EXPECT_EQ(Generate({"Q", "--continue"}).m_nStatus, 3); // no table of that size
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
