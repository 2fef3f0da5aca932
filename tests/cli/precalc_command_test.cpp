// `quillon probe`, `quillon precalc`, and precalculated data in `quillon solve`.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "cli/precalc_data.h"
#include "cli/program_run.h"
#include "cli/solve_settings.h"
#include "globalregister/table_files.h"
#include "platform/lowered_limit.h"

namespace quillon {
namespace {

using namespace quillon::testing;

// Rook against king, mate in fourteen.
constexpr const char* kRookEnding = "8/8/8/3k4/8/8/8/K3R3";

class PrecalcCommands : public ::testing::Test {
  protected:
    PrecalcCommands() { WriteElements(Table(), ThreeMenElements("R")); }

    [[nodiscard]] std::string Folder() const { return m_folder.Path().string(); }
    [[nodiscard]] std::string Table(const std::string& extension = "") const {
        return Folder() + "/Precalc/R.precalc" + extension;
    }
    void Cut() {
        TElements elements = ThreeMenElements("R");
        elements.pop_back();
        WriteElements(Table(), elements);
    }
    /// A custom type whose positions have all the same element; its path.
    std::string WriteCustom(std::uint8_t element = 5) {
        const std::string path = Folder() + "/CustomPrecalc/Rk_+Kc2+Pa2+p_a3.precalc";
        TElements elements(TPositionIndexing("Rk+Kc2+Pa2+pa3").GetSize(), element);
        elements[0] = 0; // the flags
        WriteElements(path, elements);
        return path;
    }
    void ExpectFailure(const std::vector<std::string>& arguments, const std::string& message, int nStatus = 2) {
        const TProgramResult result = RunQuillon(arguments);
        EXPECT_EQ(result.m_nStatus, nStatus) << message;
        EXPECT_EQ(result.m_out, "") << message;
        EXPECT_EQ(result.m_err, "quillon: " + message + "\n");
    }

    CTemporaryFolder m_folder;
};

TEST_F(PrecalcCommands, SolveIsAnsweredByTheData) {
    const TProgramResult mate =
        RunQuillon({"solve", "--fen", kRookEnding, "--moves", "14", "--all", "--json", "--precalc", Folder()});
    EXPECT_EQ(mate.m_nStatus, 0) << mate.m_err;
    const auto object = nlohmann::json::parse(mate.m_out);
    EXPECT_EQ(object["result"], "mate");
    EXPECT_EQ(object["nodes"], 0);
    EXPECT_EQ(object["variant"].size(), 27u) << "the whole variant comes from the data";
    const TProgramResult none =
        RunQuillon({"solve", "--fen", kRookEnding, "--moves", "13", "--quiet", "--precalc", Folder() + "/Precalc"});
    EXPECT_EQ(none.m_out.find("#13 no-mate"), 0u) << none.m_out;
    const TProgramResult here =
        RunQuillon({"solve", "--fen", kRookEnding, "--moves", "14", "--quiet", "--work-dir", Folder()});
    EXPECT_EQ(here.m_out.find("#14 mate"), 0u) << here.m_out;
}

TEST_F(PrecalcCommands, SolveGoesOnWithoutDataThatAreNotWhole) {
    Cut();
    const TProgramResult result = RunQuillon({"solve", "--fen", "8/7R/8/8/8/1K6/8/k7", "--moves", "11", "--quiet",
                                              "--heuristics", "none", "--precalc", Folder()});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(result.m_out.find("#11 mate 1.Rh7-h1!"), 0u) << result.m_out;
    EXPECT_EQ(result.m_err, "quillon: Warning: Data file size and/or its header seems improper: " + Table() +
                                " File size=40959 Expected file size=40960\n");
}

TEST_F(PrecalcCommands, QuotaIsThatOfTheCommandLineTheProblemOrTheSettings) {
    TSettings settings;
    settings.m_nMaxMemRatioForPrecalculatedData = 0;
    ChessProblem problem;
    TPrecalcChoice choice;
    EXPECT_EQ(PrecalcQuota(settings, choice, &problem), 0u);
    settings.m_nMaxMemRatioForPrecalculatedData = 20;
    EXPECT_GT(PrecalcQuota(settings, choice, &problem), 1u << 20);
    problem.globRegMB = 3;
    EXPECT_EQ(PrecalcQuota(settings, choice, &problem), 3u << 20);
    problem.flags = kFlagNoGlobReg;
    EXPECT_EQ(PrecalcQuota(settings, choice, &problem), 0u);
    choice.m_memoryMB = 7;
    EXPECT_EQ(PrecalcQuota(settings, choice, &problem), 0u) << "the problem forbids data";
    problem.flags = 0;
    EXPECT_EQ(PrecalcQuota(settings, choice, &problem), 7u << 20);
}

TEST_F(PrecalcCommands, ProbeTellsTheLength) {
    const auto probe = [this](const std::string& fen, bool bJson = false) {
        std::vector<std::string> arguments{"probe", "--fen", fen, "--precalc", Folder()};
        if (bJson)
            arguments.push_back("--json");
        return RunQuillon(arguments);
    };
    const TProgramResult mate = probe(kRookEnding);
    EXPECT_EQ(mate.m_nStatus, 0);
    EXPECT_EQ(mate.m_out, "Position type:  R\nIndex:          2910\n#14 in current position\n");
    WriteElements(Folder() + "/Precalc/B.precalc", TElements(40960, 0));
    EXPECT_EQ(probe("8/8/8/3k4/8/8/8/K3B3").m_out,
              "Position type:  B\nIndex:          2910\nNo checkmate in this position\n");
    const auto object = nlohmann::json::parse(probe(kRookEnding, true).m_out);
    EXPECT_EQ(object["result"], "mate");
    EXPECT_EQ(object["moves"], 14);
    EXPECT_EQ(object["type"], "R");
    const TProgramResult castling = probe("8/8/8/3k4/8/8/8/4K2R");
    EXPECT_EQ(castling.m_nStatus, 1);
    EXPECT_NE(castling.m_out.find("No data on this position"), std::string::npos);
    EXPECT_EQ(probe("8/8/8/3k4/8/8/8/4K2R w - -").m_nStatus, 0);
    EXPECT_NE(probe("8/8/8/3k4/8/8/8/K3R3 b").m_out.find("No information about positions before Black's move"),
              std::string::npos);
    const TProgramResult queen = probe("8/8/8/3k4/8/8/8/K3Q3");
    EXPECT_EQ(queen.m_nStatus, 1);
    EXPECT_EQ(queen.m_out, "Position type:  Q\nNo info on positions of this type\n");
    EXPECT_EQ(probe("8/8/8/3k4/8/8/8/K3Q3 b").m_out,
              "Position type:  Q\nNo info about positions before Black's move\n");
    EXPECT_EQ(probe("8/8/8/3k4/8/8/8/K3R3 b").m_out,
              "Position type:  R\nIndex:          2910\nNo information about positions before Black's move\n");
}

TEST_F(PrecalcCommands, ProbeGoesToAnIndex) {
    const auto probe = [this](const std::string& type, const std::string& index,
                              const char* more = "--precalc-memory=9") {
        return RunQuillon({"probe", "--type", type, "--index", index, "--precalc", Folder(), more});
    };
    const TProgramResult mate = probe("R", "2910");
    EXPECT_EQ(mate.m_nStatus, 0);
    EXPECT_EQ(mate.m_out, "Position:       8/8/8/3k4/8/8/8/K3R3\nPosition type:  R\nIndex:          2910\n#14 in "
                          "current position\n");
    const auto object = nlohmann::json::parse(probe("R", "2910", "--json").m_out);
    EXPECT_EQ(object["fen"], "8/8/8/3k4/8/8/8/K3R3 w");
    EXPECT_EQ(object["index"], 2910);
    EXPECT_EQ(object["moves"], 14);
    for (const char* const text : {"12a", "-1", "1.5", "x", "+3", "0x10", " 1"}) {
        const TProgramResult result = probe("R", text);
        EXPECT_EQ(result.m_nStatus, 2) << text;
        EXPECT_EQ(result.m_err, "quillon: Expected a integer number\n") << text;
    }
    for (const char* const text : {"0", "40960", "99999999999999999999"})
        EXPECT_EQ(probe("R", text).m_nStatus, 2) << text;
    EXPECT_EQ(probe("Q", "7").m_nStatus, 1) << "no data";
    EXPECT_EQ(probe("K", "7").m_nStatus, 2);
    EXPECT_EQ(RunQuillon({"probe", "--precalc", Folder()}).m_nStatus, 2);
    EXPECT_EQ(RunQuillon({"probe", "--type", "R", "--precalc", Folder()}).m_nStatus, 2);
    EXPECT_EQ(probe("R", "2910", "--fen=8/8/8/3k4/8/8/8/K3R3").m_nStatus, 2);
}

// They prove mates, which may not be the quickest, and nothing else.
TEST_F(PrecalcCommands, ProbeTellsWhatCustomTypesProve) {
    const auto probe = [this](const std::string& fen, const char* format) {
        return RunQuillon({"probe", "--fen", fen, "--precalc", Folder(), format});
    };
    (void)WriteCustom(5);
    constexpr const char* kOfType = "8/8/8/4k3/8/p7/P1K5/7R";
    const auto mate = nlohmann::json::parse(probe(kOfType, "--json").m_out);
    EXPECT_EQ(mate["type"], "Rk+Kc2+Pa2+pa3");
    EXPECT_EQ(mate["result"], "mate");
    EXPECT_EQ(mate["moves_at_most"], 5);
    EXPECT_FALSE(mate.contains("moves"));
    const TProgramResult text = RunQuillon({"probe", "--fen", kOfType, "--precalc", Folder()});
    EXPECT_EQ(text.m_nStatus, 0);
    EXPECT_NE(text.m_out.find("\nMate in at most 5 moves in current position\n"), std::string::npos) << text.m_out;
    EXPECT_EQ(nlohmann::json::parse(probe(kRookEnding, "--json").m_out)["moves"], 14) << "exact data come first";
    EXPECT_EQ(probe("8/8/8/4k3/8/p7/PK6/7R", "--json").m_nStatus, 1) << "the king is not on its square";
    (void)WriteCustom(0);
    const TProgramResult none = probe(kOfType, "--json");
    EXPECT_EQ(none.m_nStatus, 1);
    EXPECT_EQ(nlohmann::json::parse(none.m_out)["result"], "unknown") << "no mate is none of their answers";
}

TEST_F(PrecalcCommands, ListAndStatus) {
    EXPECT_EQ(RunQuillon({"precalc", "list", "--precalc", Folder()}).m_out,
              "R       plain           40960         " + Table() + "\n");
    const auto listed = nlohmann::json::parse(RunQuillon({"precalc", "list", "--json", "--precalc", Folder()}).m_out);
    EXPECT_EQ(listed["elements"], 40960);
    EXPECT_EQ(listed["form"], "plain");
    EXPECT_EQ(listed["searched"], true);
    WriteElements(Folder() + "/Precalc/R.precalc.details.packed.lzw", {0});
    const TProgramResult two = RunQuillon({"precalc", "list", "--json", "--precalc", Folder()});
    ASSERT_EQ(two.OutLines().size(), 2u);
    EXPECT_EQ(nlohmann::json::parse(two.OutLines()[1])["searched"], false) << "no load reads it";
    const std::string custom = WriteCustom();
    EXPECT_NE(RunQuillon({"precalc", "list", "--precalc", Folder()}).m_out.find(custom + "\n"), std::string::npos);
    const TProgramResult all = RunQuillon({"precalc", "status", "--precalc", Folder()});
    EXPECT_EQ(all.m_nStatus, 0);
    EXPECT_EQ(all.m_out, "Current size of global register in memory: 0 MB\nR 0 MB AllocCount=0 LastAccess 0 sec(s). "
                         "ago\nRk+Kc2+Pa2+pa3 0 MB AllocCount=0 LastAccess 0 sec(s). ago\n0 register(s) pending.\n");
    const TProgramResult customs =
        RunQuillon({"precalc", "status", "Rk+Kc2+Pa2+pa3", "KQk+Pa2", "--precalc", Folder(), "--json"});
    EXPECT_EQ(customs.m_nStatus, 1);
    const auto types = nlohmann::json::parse(customs.m_out)["types"];
    ASSERT_EQ(types.size(), 2u);
    EXPECT_EQ(types[0], nlohmann::json::parse(R"({"type":"Rk+Kc2+Pa2+pa3","loaded":true,"bytes":3721})"));
    EXPECT_EQ(types[1], nlohmann::json::parse(R"({"type":"KQk+Pa2","loaded":false,"bytes":0})"));
    const TProgramResult status = RunQuillon({"precalc", "status", "R", "QR", "--precalc", Folder()});
    EXPECT_EQ(status.m_nStatus, 1);
    EXPECT_EQ(status.m_out, "Current size of global register in memory: 0 MB\nQR unavailable/redundant/not enough "
                            "memory\nR 0 MB AllocCount=0 LastAccess 0 sec(s). ago\n0 register(s) pending.\n");
}

TEST_F(PrecalcCommands, FormsAreConvertedBothWays) {
    const std::pair<const char*, const char*> forms[] = {
        {"lzw", ".packed.lzw"}, {"lz4", ".lz4"}, {"archive", ".packed.lz4"}, {"simple", ".packed.lz4"}};
    for (const auto& [form, extension] : forms) {
        const TProgramResult packed = RunQuillon({"precalc", "pack", Table(), "--form", form, "--force", "--json"});
        ASSERT_EQ(packed.m_nStatus, 0) << form << packed.m_err;
        EXPECT_EQ(nlohmann::json::parse(packed.m_out)["bytes_before"], 40960);
        const std::string copy = Folder() + "/R.precalc";
        const TProgramResult unpacked =
            RunQuillon({"precalc", "unpack", Table(extension), "--output", copy, "--force"});
        EXPECT_EQ(unpacked.m_nStatus, 0) << form << unpacked.m_err;
        EXPECT_EQ(ReadWholeFile(copy), ThreeMenElements("R")) << form;
    }
}

// The user's only copy of a table must outlive every mistake.
TEST_F(PrecalcCommands, NothingOverwritesItsSourceOrAForeignFile) {
    const TElements whole = ThreeMenElements("R");
    std::filesystem::create_hard_link(Table(), Table(".packed.lzw"));
    EXPECT_EQ(RunQuillon({"precalc", "pack", Table(), "--force"}).m_nStatus, 2);
    std::filesystem::remove(Table(".packed.lzw"));
    for (const std::string& target : {Folder() + "/Precalc/./R.precalc", Folder() + "/Precalc/R.precalc.lz4",
                                      Folder() + "/Precalc/Q.precalc.packed.lzw", Folder() + "/notes.txt"}) {
        EXPECT_EQ(RunQuillon({"precalc", "pack", Table(), "--force", "--output", target}).m_nStatus, 2) << target;
        EXPECT_EQ(ReadWholeFile(Table()), whole) << target;
    }
    WriteElements(Table(".iter"), {1, 0, 0, 0});
    ExpectFailure({"precalc", "pack", Table()}, Table() + ": its table was left unfinished");
    std::filesystem::remove(Table(".iter"));
    WriteLzw(Table(".packed.lzw"), whole);
    const auto old = ReadWholeFile(Table(".packed.lzw"));
    {
        const CSmallDisk full;
        ExpectFailure({"precalc", "pack", Table(), "--force"}, Table(".packed.lzw") + ": cannot be written", 3);
        ExpectFailure({"precalc", "unpack", Table(".packed.lzw"), "--force"}, Table() + ": cannot be written", 3);
    }
    EXPECT_EQ(ReadWholeFile(Table(".packed.lzw")), old);
    EXPECT_EQ(ReadWholeFile(Table()), whole);
}

TEST_F(PrecalcCommands, ATableThatDoesNotBecomeSmallerIsNoFaultOfTheDisk) {
    TElements elements(40960);
    std::mt19937_64 rng(7);
    std::ranges::generate(elements, [&rng] { return static_cast<std::uint8_t>(rng() % 251); });
    elements[0] = 0; // the flags
    WriteElements(Table(), elements);
    ExpectFailure({"precalc", "pack", Table()}, Table() + ": does not become smaller in this form");
    EXPECT_FALSE(std::filesystem::exists(Table(".packed.lzw")));
    const TProgramResult generated = RunQuillon({"generate", "R", "--pack", "--precalc", Folder()});
    EXPECT_EQ(generated.m_nStatus, 2) << generated.m_err;
}

// Without them there would be no data at all; nothing is written.
TEST_F(PrecalcCommands, DataStayPackedWhereMemoryIsShort) {
    m_folder.Write("options.ini", "[chess]\nUseDataPackedForRandomAccess=0\nAskIfSaveAfterDecompressAllToMem=1\n");
    WriteLzw(Folder() + "/Precalc/QQ.precalc.packed.lzw", TElements(TPositionIndexing("QQ").GetSize(), 0));
    const auto run = [this](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--precalc-memory", "1", "--work-dir", Folder()});
        return RunQuillon(arguments);
    };
    constexpr const char* kTwoQueens = "7k/8/8/8/8/8/8/KQQ5";
    EXPECT_EQ(run({"precalc", "status", "QQ"}).m_nStatus, 0);
    EXPECT_EQ(run({"probe", "--fen", kTwoQueens}).m_out.find("Position type:  QQ\n"), 0u);
    EXPECT_NE(run({"probe", "--fen", kTwoQueens}).m_out.find("No checkmate in this position"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Folder() + "/Precalc/QQ.precalc"));
}

TEST_F(PrecalcCommands, WrongInputIsToldInOneLine) {
    const std::string packed = Table(".packed.lzw");
    ASSERT_EQ(RunQuillon({"precalc", "pack", Table()}).m_nStatus, 0);
    ExpectFailure({"precalc", "pack", Table()}, packed + ": exists already; --force replaces it");
    ExpectFailure({"precalc", "pack", packed}, packed + ": is packed already");
    ExpectFailure({"precalc", "unpack", Table()}, Table() + ": not a packed file");
    ExpectFailure({"precalc", "unpack", Folder() + "/none"}, Folder() + "/none: no such file");
    ExpectFailure({"precalc", "list", "--precalc", Folder() + "/none"},
                  "no folder with precalculated data: " + Folder() + "/none");
    ExpectFailure({"solve", "--precalc", Folder() + "/none"},
                  "no folder with precalculated data: " + Folder() + "/none");
    ExpectFailure({"precalc", "status", "xyz", "--precalc", Folder()}, "Error in position type: xyz");
    Cut();
    ExpectFailure({"precalc", "pack", Table(), "--force"},
                  Table() + ": has 40959 bytes, a table of its type has 40960");
    TElements bytes = ReadWholeFile(packed).value();
    bytes.resize(bytes.size() - 50);
    WriteElements(packed, bytes);
    ExpectFailure({"precalc", "unpack", packed, "--force"}, packed + ": not a whole file of this form");
    m_folder.Write("letter.txt", "x");
    ExpectFailure({"precalc", "pack", Folder() + "/letter.txt"},
                  Folder() + "/letter.txt: not the name of a file of precalculated data");
    EXPECT_EQ(RunQuillon({"solve", "--precalc-memory", "-1"}).m_nStatus, 2);
    for (const char* const noData : {"list", "missing"}) // they load nothing
        EXPECT_EQ(RunQuillon({"precalc", noData, "--help"}).m_out.find("--precalc-memory"), std::string::npos);
    EXPECT_NE(RunQuillon({"precalc", "status", "--help"}).m_out.find("--precalc-memory"), std::string::npos);
    EXPECT_EQ(RunQuillon({"precalc"}).m_nStatus, 2);
}

} // namespace
} // namespace quillon
