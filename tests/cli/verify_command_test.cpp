// `quillon verify`, `quillon precalc missing` and `longest`.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/program_run.h"
#include "globalregister/table_files.h"

namespace quillon {
namespace {

using namespace quillon::testing;

class VerifyCommand : public ::testing::Test {
  protected:
    VerifyCommand() { Write("R", ThreeMenElements("R")); }

    void Write(const std::string& type, const TElements& elements) const {
        WriteElements(m_folder.Path() / "Precalc" / (type + ".precalc"), elements);
    }
    /// In the folder, where the logs go.
    [[nodiscard]] TProgramResult Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--work-dir", m_folder.Path().string()});
        return RunQuillon(arguments);
    }
    [[nodiscard]] std::uint64_t PlantOne() const {
        TElements elements = ThreeMenElements("R");
        const auto place = std::ranges::find(elements, 16);
        *place = 0;
        Write("R", elements);
        return static_cast<std::uint64_t>(place - elements.begin());
    }

    CTemporaryFolder m_folder;
};

const std::string kVerification = "Verification of precalculated data for position type R";

TEST_F(VerifyCommand, RightTable) {
    const TProgramResult right = Run({"verify", "R"});
    EXPECT_EQ(right.m_nStatus, 0);
    EXPECT_TRUE(right.m_out.starts_with(kVerification + " complete - all OK\nFile: ")) << right.m_out;
    EXPECT_TRUE(right.m_out.ends_with("R.precalc\n")) << right.m_out;
    EXPECT_EQ(right.m_err, "quillon: Information: Complete (0 fault(s) found, 0 fixable, 0 fixed)\n");
}

TEST_F(VerifyCommand, FaultIsToldAndMendedIfThatIsAskedFor) {
    const std::uint64_t nIndex = PlantOne();
    const TProgramResult told = Run({"verify", "R", "--json", "--threads", "2"});
    EXPECT_EQ(told.m_nStatus, 1);
    const auto object = nlohmann::json::parse(told.m_out);
    EXPECT_EQ(object["type"], "R");
    EXPECT_EQ(object["result"], "faults");
    EXPECT_EQ(object["faults"], 1);
    EXPECT_EQ(object["fixable"], 1);
    EXPECT_EQ(object["fixed"], 0);
    EXPECT_EQ(object["checked"], 40960);
    EXPECT_TRUE(object["file"].get<std::string>().ends_with("R.precalc"));
    EXPECT_EQ(object["not_looked_at"], nlohmann::json::array());
    EXPECT_EQ(object["second_pass"], false);
    EXPECT_EQ(object["log"], "PrecalcFailuresR.txt");
    const auto bytes = ReadWholeFile(m_folder.Path() / "PrecalcFailuresR.txt").value();
    const std::string log(bytes.begin(), bytes.end());
    EXPECT_EQ(log.find(std::to_string(nIndex) + ","), 0u) << log;
    EXPECT_TRUE(log.ends_with(" w - -,0,31\n")) << log;

    const TProgramResult mended = Run({"verify", "R", "--fix", "--second-pass"});
    EXPECT_EQ(mended.m_nStatus, 1) << "a fault was found";
    EXPECT_EQ(mended.m_err, "quillon: Information: Complete (1 fault(s) found, 1 fixable, 1 fixed)\n");
    EXPECT_TRUE(std::filesystem::exists(m_folder.Path() / "PrecalcFailuresR_pass2.txt"));
    EXPECT_EQ(ReadWholeFile(m_folder.Path() / "Precalc/R.precalc"), ThreeMenElements("R"));
}

TEST_F(VerifyCommand, WhatCannotBeVerified) {
    const TProgramResult none = Run({"verify", "Q"});
    EXPECT_EQ(none.m_nStatus, 2);
    EXPECT_EQ(none.m_err, "quillon: Information: No information about positions of this type\n");
    EXPECT_EQ(none.m_out, "");
    const TProgramResult noLog = Run({"verify", "R", "--second-pass"});
    EXPECT_EQ(noLog.m_nStatus, 2);
    EXPECT_EQ(noLog.m_err, "quillon: Error: Cannot open file PrecalcFailuresR.txt\n");
    EXPECT_EQ(Run({"verify", "KQk+Pa2"}).m_nStatus, 2);
    EXPECT_EQ(Run({"verify", "rR"}).m_nStatus, 2);
    EXPECT_EQ(Run({"verify"}).m_nStatus, 2);
    EXPECT_EQ(Run({"verify", "R", "--threads", "0"}).m_nStatus, 2);
}

TEST_F(VerifyCommand, ShortMemoryIsAFailureOfTheSystem) {
    Write("QR", {0}); // its size alone is too much
    const TProgramResult result = Run({"verify", "QR", "--unpack", "--memory", "1"});
    EXPECT_EQ(result.m_nStatus, 3);
    EXPECT_EQ(result.m_err,
              "quillon: Error: Not enough memory for the data of type QR. Allow more, or let data be read "
              "from disk (ini: GlobalRegisterForceDiskAccess).\n");
    EXPECT_EQ(result.m_out, "");
}

TEST_F(VerifyCommand, MissingTypes) {
    const TProgramResult three = Run({"precalc", "missing", "3"});
    EXPECT_EQ(three.m_nStatus, 1);
    EXPECT_EQ(three.m_out, "List of missing precalculated data for positions with 3 pieces :\nQ\nP\n");
    Write("Q", ThreeMenElements("Q"));
    TElements pawn(98304, 0);
    pawn[0] = 1; // its pawns have 48 squares
    Write("P", pawn);
    const TProgramResult all = Run({"precalc", "missing", "3", "--json"});
    EXPECT_EQ(all.m_nStatus, 0);
    EXPECT_EQ(all.m_out, "{\"pieces\":3,\"missing\":[]}\n");
    const auto four = nlohmann::json::parse(Run({"precalc", "missing", "4", "--json"}).m_out);
    EXPECT_EQ(four["missing"].size(), 40u) << "fifteen of White alone, a white and a black man in 25 ways";
    EXPECT_EQ(Run({"precalc", "missing", "8"}).m_nStatus, 2);
}

TEST_F(VerifyCommand, LongestMates) {
    const TProgramResult result = Run({"precalc", "longest", "R", "--limit", "2", "--json"});
    EXPECT_EQ(result.m_nStatus, 0);
    const auto object = nlohmann::json::parse(result.m_out);
    EXPECT_EQ(object["type"], "R");
    EXPECT_EQ(object["mate"], 16);
    ASSERT_EQ(object["positions"].size(), 2u);
    const std::string fen = object["positions"][1];
    const auto probed = nlohmann::json::parse(Run({"probe", "--fen", fen, "--json"}).m_out);
    EXPECT_EQ(probed["moves"], 16) << fen;
    EXPECT_NE(Run({"precalc", "longest", "R", "--limit", "2"}).m_out.find("\n#16 (2/2) " + fen + "\n"),
              std::string::npos);
    EXPECT_EQ(Run({"precalc", "longest", "Q"}).m_nStatus, 1);
    m_folder.Write("options.ini", "[chess]\nUseDataPackedForRandomAccess=0\nGlobalRegisterForceDiskAccess=0\n");
    Write("QR", {0}); // its size alone is too much
    const TProgramResult large = Run({"precalc", "longest", "QR", "--precalc-memory", "1"});
    EXPECT_EQ(large.m_nStatus, 3);
    EXPECT_EQ(large.m_err.find("quillon: Not enough memory for the data of type QR."), 0u) << large.m_err;
    Write("B", TElements(40960, 0));
    EXPECT_EQ(Run({"precalc", "longest", "B"}).m_out, "No checkmate in positions of this type\n");
}

} // namespace
} // namespace quillon
