// What --explain tells of a solve, and the options that bear on heuristics and passes.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TWords = std::vector<std::string>;

constexpr const char* kQueen = "8/8/8/8/8/2k5/8/KQ6";    // no mate in four
constexpr const char* kShort = "8/8/8/8/8/1K5Q/1p6/kn6"; // a mate in three
constexpr const char* kKnown = "8/p5p1/4K2p/2p2Pb1/P1NkN1p1/1P1B4/p1P3P1/8";

/// `quillon solve --fen ... --moves N` with more words.
TProgramResult Solve(const char* fen, int nMoves, TWords more) {
    TWords words{"solve", "--fen", fen, "--moves", std::to_string(nMoves)};
    words.insert(words.end(), more.begin(), more.end());
    return RunQuillon(words);
}

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

/// Does `first` stand before `second`?
bool IsBefore(const std::string& text, const std::string& first, const std::string& second) {
    return Has(text, first) && text.find(first) < text.find(second) && Has(text, second);
}

nlohmann::json ObjectOf(const TProgramResult& result) { return nlohmann::json::parse(result.m_out); }

// ---- the plan

TEST(Explain, ASetMadeByHandIsListedPassByPass) {
    const TProgramResult result =
        Solve(kQueen, 4, {"--explain", "--heuristics", "SH_SAVEQUEEN/ROOK,SH_AREKINGSNEAR,SH_DONTRECEDEBLACKKING"});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_TRUE(IsBefore(result.m_out,
                         "Heuristics chosen by hand: SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING, SH_SAVEQUEEN/ROOK",
                         "Plan:\nPass 1: SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING, SH_SAVEQUEEN/ROOK"))
        << result.m_out;
    EXPECT_TRUE(IsBefore(result.m_out, "\n\nPass 1b: SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING,  QuickMode\n",
                         "\n\nPass 1c: SH_DONTRECEDEBLACKKING,  QuickMode\n"));
    EXPECT_TRUE(IsBefore(result.m_out, "The last pass, 2, runs without heuristics.\n", "Passes:\n"));
    EXPECT_TRUE(Has(result.m_out, "no key  without heuristics\n"));
}

TEST(Explain, TheEnginesOwnChoiceNamesItsRules) {
    const TProgramResult result = Solve("8/8/8/8/8/2K5/Q7/4k3", 8, {"--explain"});
    EXPECT_TRUE(IsBefore(result.m_out, "Initial set of heuristics: SH_", "  because: ")) << result.m_out;
    EXPECT_TRUE(IsBefore(result.m_out, "  because: ", "Best-first proof: found a mate after ")) << result.m_out;
    EXPECT_TRUE(IsBefore(result.m_out, "  because: ", "Plan:\nPass 1: SH_"));
}

TEST(Explain, AShortProblemDoesWithoutItsSet) {
    const TProgramResult result = Solve(kQueen, 4, {"--explain"});
    EXPECT_TRUE(IsBefore(result.m_out, "  because: ", "Left out: SH_")) << result.m_out;
    EXPECT_TRUE(IsBefore(result.m_out, "(a problem of this length is solved faster without)",
                         "The only pass, 2, runs without heuristics.\n"))
        << result.m_out;
}

TEST(Explain, AShortProblemHasOnePassAlone) {
    for (const TWords& more : {TWords{"--explain"}, TWords{"--explain", "--no-pass2"}}) {
        const TProgramResult result = Solve(kShort, 3, more);
        EXPECT_TRUE(IsBefore(result.m_out, "Initial set of heuristics: none\nPlan:\nNo heuristics selected.\n",
                             "The only pass, 2, runs without heuristics.\n"))
            << result.m_out;
    }
}

TEST(Explain, TellsThePassOfEachKey) {
    const TProgramResult result = Solve(kShort, 3, {"--explain", "--heuristics", "SH_DONTRECEDEBLACKKING"});
    EXPECT_TRUE(IsBefore(result.m_out, "Passes:\n", "! found in pass ")) << result.m_out;
    EXPECT_FALSE(Has(Solve(kShort, 3, {}).m_out, "Passes:\n")) << "only when asked for";
    EXPECT_EQ(Solve(kShort, 3, {"--explain", "--quiet"}).OutLines().size(), 1u);
}

TEST(Explain, IsAnObjectForPrograms) {
    const TProgramResult result =
        Solve(kQueen, 4, {"--json", "--explain", "--heuristics", "SH_AREKINGSNEAR,SH_DONTRECEDEBLACKKING"});
    EXPECT_EQ(result.OutLines().size(), 1u);
    const nlohmann::json explain = ObjectOf(result).at("explain");
    EXPECT_EQ(explain.at("heuristics"), "SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING,  QuickMode");
    EXPECT_EQ(explain.at("chosenByHand"), true);
    EXPECT_EQ(explain.at("safeModeForced"), false);
    EXPECT_TRUE(explain.at("rules").empty());
    EXPECT_TRUE(explain.at("leftOut").empty());
    EXPECT_EQ(explain.at("guided"), false);
    EXPECT_TRUE(explain.at("guideNodes").is_number_unsigned());
    EXPECT_EQ(explain.at("plan"), "Pass 1: SH_AREKINGSNEAR, SH_DONTRECEDEBLACKKING,  QuickMode\n\n"
                                  "Pass 1b: SH_DONTRECEDEBLACKKING,  QuickMode");
    ASSERT_EQ(explain.at("passes").size(), 3u);
    EXPECT_EQ(explain.at("passes").at(0).at("pass"), "1");
    EXPECT_EQ(explain.at("passes").at(1).at("heuristics"), "SH_DONTRECEDEBLACKKING,  QuickMode");
    EXPECT_EQ(explain.at("passes").at(2).at("heuristics"), "");
    EXPECT_EQ(explain.at("passes").at(2).at("keys"), 0);
    EXPECT_EQ(explain.at("passes").at(2).at("timeDependent"), false);
    EXPECT_GE(explain.at("passes").at(2).at("seconds"), 0.0);
    EXPECT_TRUE(explain.at("keys").empty());
    EXPECT_FALSE(ObjectOf(Solve(kShort, 3, {"--json"})).contains("explain"));
}

TEST(Explain, TheObjectTellsThePassOfEachKey) {
    const nlohmann::json object =
        ObjectOf(Solve(kShort, 3, {"--json", "--explain", "--heuristics", "SH_DONTRECEDEBLACKKING"}));
    const nlohmann::json& keys = object.at("explain").at("keys");
    ASSERT_EQ(object.at("keys").size(), 1u);
    EXPECT_EQ(keys.size(), 1u);
    const std::string pass = keys.at(object.at("keys").at(0).get<std::string>());
    EXPECT_EQ(pass, object.at("passes").back());
}

// ---- sets made by hand

TEST(HeuristicsOption, WhatCannotBeReadIsOneLineThatNamesThePlace) {
    const struct {
        const char* m_set;
        const char* m_line;
    } rows[] = {
        {"SH_FOO", "quillon: Heuristics, character 1: unknown heuristic \"SH_FOO\"\n"},
        {"SH_AREKINGSNEAR, SH_FOO", "quillon: Heuristics, character 18: unknown heuristic \"SH_FOO\"\n"},
        {"SH_KEYLINE(K)", "quillon: Heuristics, character 12: no file letter: \"K\"\n"},
        {"", "quillon: Heuristics, character 1: a heuristic is missing\n"},
    };
    for (const auto& row : rows) {
        const TProgramResult result = Solve(kShort, 3, {"--heuristics", row.m_set});
        EXPECT_EQ(result.m_nStatus, 2);
        EXPECT_EQ(result.m_out, "") << row.m_set;
        EXPECT_EQ(result.m_err, row.m_line);
    }
}

TEST(HeuristicsOption, WhatCannotBeReadIsToldOnceForAllProblems) {
    const TProgramInput two{"kbK5/pp6/1P6/8/8/8/8/R7 w - - bm #2;\nkbK5/pp6/1P6/8/8/8/8/R7 w - - bm #2;\n", ""};
    const TProgramResult result = RunQuillon({"solve", "-", "--heuristics", "SH_FOO"}, two);
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_out, "");
    EXPECT_EQ(std::count(result.m_err.begin(), result.m_err.end(), '\n'), 1);
}

TEST(HeuristicsOption, ASetThatDoesNotFitThePositionIsRefused) {
    const struct {
        const char* m_set;
        const char* m_message;
    } rows[] = {
        {"SH_DONTLETFIGUREUNBLOCK(D5)", "SH_DONTLETFIGUREUNBLOCK needs a black figure on D5"},
        {"SH_KEYWHITEFIGURE(B3)", "SH_KEYWHITEFIGURE needs a white queen, rook or bishop on B3"},
        {"SH_KEYWHITEFIGURE(H3)", "the key white figure on H3 pins no black figure"},
        {"SH_SEASNAKE", "Invalid piece (Sea snake - approach square)"},
        {"SH_SEASNAKE(D5,E6), SH_FINDFORCEDMATE(#1)", "FindForcedMate cannot be used together with SeaSnake."},
        {"SH_KEEPKINGONTHEEDGE(D3)",
         "Defer check is meaningful only when 'on advanced pawn' or 'on figure captured' selected."},
    };
    for (const auto& row : rows) {
        const TProgramResult result = Solve(kShort, 3, {"--heuristics", row.m_set});
        EXPECT_EQ(result.m_nStatus, 2);
        EXPECT_EQ(result.m_err, std::string("quillon: Heuristics: ") + row.m_message + "\n");
        EXPECT_FALSE(Has(result.m_out, "Mate in"));
        const TProgramResult json = Solve(kShort, 3, {"--json", "--heuristics", row.m_set});
        EXPECT_EQ(json.m_nStatus, 2);
        EXPECT_EQ(ObjectOf(json).at("result"), "error");
        EXPECT_TRUE(Has(ObjectOf(json).at("message"), row.m_message));
    }
}

TEST(HeuristicsOption, WatchedFiguresAreCheckedOnTheBoard) {
    const TProgramResult result = Solve(kShort, 3, {"--quiet", "--heuristics", "SH_DONTLETFIGUREUNBLOCK(B1)"});
    EXPECT_EQ(result.m_nStatus, 0) << result.m_err;
}

TEST(HeuristicsOption, NoneIsTheLastPassAlone) {
    const nlohmann::json object = ObjectOf(Solve(kQueen, 4, {"--json", "--heuristics", "none"}));
    EXPECT_EQ(object.at("passes"), nlohmann::json::parse(R"(["2"])"));
    EXPECT_EQ(object.at("result"), "no-mate");
}

// ---- the last pass

TEST(NoPass2Option, AbsenceIsNotProved) {
    const TProgramResult result =
        Solve(kQueen, 4, {"--explain", "--no-pass2", "--heuristics", "SH_DONTRECEDEBLACKKING"});
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_TRUE(IsBefore(result.m_out, "There is no pass without heuristics: absence of a solution cannot be proved.\n",
                         "Not found any solutions for #4\n\nNote:\n\t* pass without heuristics has been skipped (on "
                         "user's request)\nThis is no proof: some moves were left in doubt.\n"))
        << result.m_out;
    EXPECT_FALSE(Has(result.m_out, "No solution found"));
    EXPECT_EQ(
        ObjectOf(Solve(kQueen, 4, {"--json", "--no-pass2", "--heuristics", "SH_DONTRECEDEBLACKKING"})).at("result"),
        "doubtful");
}

/// Without the last pass the set is all there is, however short the problem.
TEST(NoPass2Option, AShortProblemKeepsItsSet) {
    const TProgramResult result =
        Solve("7k/8/8/8/8/8/5N2/6K1", 4, {"--json", "--explain", "--no-pass2"}); // a knight alone never mates
    const nlohmann::json object = ObjectOf(result);
    EXPECT_EQ(object.at("passes"), nlohmann::json::parse(R"(["1", "1b", "1c"])"));
    EXPECT_EQ(object.at("result"), "doubtful");
    EXPECT_TRUE(object.at("explain").at("leftOut").empty());
}

TEST(NoRelaxOption, ThereIsOnePassWithHeuristics) {
    const TProgramResult result = Solve(kQueen, 4,
                                        {"--explain", "--no-relax", "--no-pass2", "--heuristics",
                                         "SH_DONTRECEDEBLACKKING,SH_SAVEQUEEN/ROOK,SH_AREKINGSNEAR"});
    EXPECT_TRUE(Has(result.m_out, "Heuristics are not relaxed.\n"));
    EXPECT_FALSE(Has(result.m_out, "Pass 1b"));
    EXPECT_TRUE(Has(result.m_out, "\n\nNote:\n\t* there was only one pass with heuristcs (relaxation of heuristics was "
                                  "switched off by user's request)\n\t* pass without heuristics has been skipped (on "
                                  "user's request)\n"))
        << result.m_out;
}

// ---- known compositions

TEST(PredefinedOption, StoredSettingsJoinTheChosenSet) {
    const TWords set{"--json", "--explain",    "--time-limit",
                     "2",      "--heuristics", "SH_AREKINGSNEAR, SH_DONTLETPROMOTEDQUEENMOVE"};
    TWords stored = set;
    stored.push_back("--predefined");
    const nlohmann::json without = ObjectOf(Solve(kKnown, 4, set)), with = ObjectOf(Solve(kKnown, 4, stored));
    EXPECT_TRUE(Has(without.at("explain").at("plan"), "Pass 1: SH_AREKINGSNEAR, SH_DONTLETPROMOTEDQUEENMOVE,"));
    EXPECT_TRUE(Has(with.at("explain").at("plan"), "Pass 1: SH_AREKINGSNEAR,  QuickMode"));
}

// ---- the log of the plan

class CWorkingFolder {
  public:
    CWorkingFolder() { std::filesystem::current_path(m_folder.Path()); }
    ~CWorkingFolder() { std::filesystem::current_path(m_before); }
    CWorkingFolder(const CWorkingFolder&) = delete;
    CWorkingFolder& operator=(const CWorkingFolder&) = delete;

    [[nodiscard]] std::vector<std::string> Log() const {
        std::ifstream file(m_folder.Path() / "TryRelaxSpecialHeuristics.log");
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

  private:
    const std::filesystem::path m_before = std::filesystem::current_path();
    CTemporaryFolder m_folder;
};

TEST(LogRelaxationOption, EachStepIsAppendedInTheWorkingFolder) {
    const CWorkingFolder folder;
    const TWords set{"--safe", "--heuristics", "SH_SAVEQUEEN/ROOK,SH_DONTRECEDEBLACKKING"};
    (void)Solve(kQueen, 4, set);
    EXPECT_TRUE(folder.Log().empty()) << "only when asked for";
    TWords logged = set;
    logged.push_back("--log-relaxation");
    (void)Solve(kQueen, 4, logged);
    const std::vector<std::string> lines = folder.Log();
    ASSERT_EQ(lines.size(), 4u) << "two steps, a line before and behind each";
    EXPECT_TRUE(lines[0].starts_with("1a Heur=17408 HeurParams=") &&
                lines[0].ends_with(" SH_DONTRECEDEBLACKKING, SH_SAVEQUEEN/ROOK"))
        << lines[0];
    EXPECT_TRUE(lines[1].starts_with("1b Heur=1024 HeurParams=") && lines[1].ends_with(" SH_DONTRECEDEBLACKKING"))
        << lines[1];
    EXPECT_EQ(lines[2], lines[1]);
    EXPECT_EQ(lines[3], "1c Heur=0 HeurParams=0 ");
    (void)Solve(kQueen, 4, logged);
    EXPECT_EQ(folder.Log().size(), 8u) << "appended";
}

} // namespace
} // namespace quillon
