// `quillon list`, `convert` and `check`.

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/program_run.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TJson = nlohmann::ordered_json;
using TLines = std::vector<std::string>;

constexpr const char* kLibrary = "UTF-8\n\n\n4 s#2\n{\n\tFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n\n"
                                 "117 #2\n//#TAGS\n//#ideal mate\n//#own\n{\n\tDescription: Z\xC5\x82oty\n"
                                 "\tFEN: 8/8/8/8/8/1K5Q/1p6/kn6\n\tAnswer:  Kb3-c2\n}\n";
constexpr const char* kBroken = "1 #2 Foo\n{\nFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n2 #2\n{\nFEN: 8/8/8/4k3/8/8/8/4K2Q\n}\n";
constexpr const char* kBrokenText =
    ":1:6: problem 1: Opening bracket expected { or unrecognized option encountered: FOO";

class LibraryCommands : public ::testing::Test {
  protected:
    std::string Given(const std::string& name, const std::string& text) const {
        m_folder.Write(name, text);
        return m_folder.Path() / name;
    }
    [[nodiscard]] std::string PathOf(const std::string& name) const { return m_folder.Path() / name; }
    [[nodiscard]] std::string ContentOf(const std::string& name) const {
        std::ifstream stream(m_folder.Path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    CTemporaryFolder m_folder;
};

TEST_F(LibraryCommands, ListTellsALineAProblem) {
    const TProgramResult result = RunQuillon({"list", Given("a.cp", kLibrary)});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(result.OutLines(), (TLines{"   4  s#2  2+1", " 117  #2   2+3    Z\xC5\x82oty  [ideal mate, own]"}));
}

TEST_F(LibraryCommands, ListForPrograms) {
    const TProgramResult result = RunQuillon({"list", Given("a.cp", kLibrary), "--json"});
    ASSERT_EQ(result.OutLines().size(), 2u);
    const TJson first = TJson::parse(result.OutLines()[0]), second = TJson::parse(result.OutLines()[1]);
    EXPECT_EQ(first["kind"], "selfmate");
    EXPECT_EQ(second["id"], 117);
    EXPECT_EQ(second["stipulation"], 2);
    EXPECT_EQ(second["men"], 5);
    EXPECT_EQ(second["white"], 2);
    EXPECT_EQ(second["tags"], TJson({"ideal mate", "own"}));
    EXPECT_EQ(second["description"], "Z\xC5\x82oty");
    EXPECT_EQ(second["line"], 9);
}

TEST_F(LibraryCommands, ListReadsStandardInputAndEpd) {
    const TProgramResult result =
        RunQuillon({"list", "-"}, {.m_text = "8/8/8/4k3/8/8/8/R3K3 w - - bm #3; id \"x\";\n", .m_outputPath = {}});
    EXPECT_EQ(result.OutLines(), (TLines{"   1  #3   2+1    x"}));
}

TEST_F(LibraryCommands, AProblemThatCannotBeReadIsToldWithItsPlace) {
    const std::string path = Given("a.cp", kBroken);
    const TProgramResult result = RunQuillon({"list", path});
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_EQ(result.m_err, "quillon: " + path + kBrokenText + "\n");
    EXPECT_EQ(result.OutLines(), (TLines{"   2  #2   2+1"}));
    EXPECT_EQ(RunQuillon({"list", PathOf("none.cp")}).m_nStatus, 2);
    EXPECT_EQ(RunQuillon({"list"}).m_nStatus, 2);
}

TEST_F(LibraryCommands, ConvertToALibraryWritesTheCanonicalText) {
    const std::string in = Given("a.cp", kLibrary);
    EXPECT_EQ(RunQuillon({"convert", in, PathOf("b.cp")}).m_nStatus, 0);
    EXPECT_EQ(ContentOf("b.cp"), kLibrary);
    EXPECT_EQ(RunQuillon({"convert", in, "-", "--to", "cp"}).m_out, kLibrary);
}

TEST_F(LibraryCommands, ConvertLeavesOutWhatAnEpdFileCannotHold) {
    const std::string in = Given("a.cp", kLibrary);
    const TProgramResult result = RunQuillon({"convert", in, PathOf("b.epd")});
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_EQ(result.m_err, "quillon: " + in + ": problem 4: left out: an EPD file has no words for a selfmate\n");
    EXPECT_EQ(ContentOf("b.epd"), "8/8/8/8/8/1K5Q/1p6/kn6 w - - bm #2; id \"Z\xC5\x82oty\"; c0 \"117\";\n");
}

TEST_F(LibraryCommands, ConvertFromEpd) {
    const std::string in = Given("a.epd", "8/8/8/4k3/8/8/8/R3K3 w - - bm #3; id \"x\";\n");
    EXPECT_EQ(RunQuillon({"convert", in, PathOf("b.cp")}).m_nStatus, 0);
    EXPECT_EQ(ContentOf("b.cp"), "UTF-8\n\n\n1 #3\n{\n\tDescription: x\n\tFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n");
}

TEST_F(LibraryCommands, ConvertToPgnAndJson) {
    const std::string in = Given("a.cp", kLibrary);
    const TProgramResult pgn = RunQuillon({"convert", in, "-", "--to", "PGN"});
    EXPECT_EQ(pgn.m_nStatus, 0);
    EXPECT_NE(pgn.m_out.find("[FEN \"8/8/8/8/8/1K5Q/1p6/kn6 w - - 0 1\"]\n"), std::string::npos);
    EXPECT_NE(pgn.m_out.find("\n1. Kc2 *\n"), std::string::npos);

    EXPECT_EQ(RunQuillon({"convert", in, PathOf("b.json")}).m_nStatus, 0);
    const TJson problems = TJson::parse(ContentOf("b.json"));
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_EQ(problems[1]["fen"], "8/8/8/8/8/1K5Q/1p6/kn6");
    EXPECT_EQ(problems[1]["answer"], TJson({"Kb3-c2"}));
    EXPECT_EQ(problems[1]["tags"], TJson({"ideal mate", "own"}));
}

TEST_F(LibraryCommands, ConvertKeepsTheFileItReplaces) {
    const std::string in = Given("a.cp", "1 #2\n{\nW: Ke1, Ra1 B: Ke5\n}\n");
    EXPECT_EQ(RunQuillon({"convert", in, in}).m_nStatus, 0);
    EXPECT_EQ(ContentOf("a.cp"), "UTF-8\n\n\n1 #2\n{\n\tFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n");
    EXPECT_EQ(ContentOf("a.cp.BAK"), "1 #2\n{\nW: Ke1, Ra1 B: Ke5\n}\n");
}

TEST_F(LibraryCommands, ConvertDoesNotLoseWhatItCannotRead) {
    const std::string in = Given("a.cp", kBroken);
    EXPECT_EQ(RunQuillon({"convert", in, in}).m_nStatus, 2);
    EXPECT_EQ(ContentOf("a.cp"), kBroken);
    EXPECT_EQ(RunQuillon({"convert", in, PathOf("b.cp")}).m_nStatus, 2);
    EXPECT_EQ(ContentOf("b.cp"), "UTF-8\n\n\n2 #2\n{\n\tFEN: 8/8/8/4k3/8/8/8/4K2Q\n}\n");
}

TEST_F(LibraryCommands, ConvertDoesNotLoseAProblemToOneOfItsId) {
    const std::string twice = "1 #2\n{\nW: Ke1, Ra1 B: Ke5\n}\n1 #3\n{\nW: Ke1, Ra1 B: Ke5\n}\n";
    const std::string in = Given("a.cp", twice);
    const TProgramResult result = RunQuillon({"convert", in, in});
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_NE(result.m_err.find("problems with a repeated id would be lost"), std::string::npos) << result.m_err;
    EXPECT_EQ(ContentOf("a.cp"), twice);
    EXPECT_EQ(RunQuillon({"convert", in, PathOf("b.cp")}).m_nStatus, 0);
}

TEST_F(LibraryCommands, ConvertTellsWhatALibraryDoesNotWrite) {
    const std::string in =
        Given("a.cp", "7 #9 THREADS 4^2 SCHEDULERLEVELS 3 SH_AREKINGSNEAR OFF\n{\nW: Ke1, Ra1 B: Ke5\n}\n");
    const TProgramResult result = RunQuillon({"convert", in, PathOf("b.cp")});
    EXPECT_EQ(result.m_nStatus, 1);
    const std::string place = "quillon: " + in + ": problem 7: left out: ";
    EXPECT_EQ(result.m_err,
              place + "heuristic clauses\n" + place + "the levels of THREADS\n" + place + "SCHEDULERLEVELS\n");
}

TEST_F(LibraryCommands, ConvertTellsWhereItCannotWrite) {
    const std::string in = Given("a.cp", kLibrary);
    const TProgramResult full = RunQuillon({"convert", in, "/dev/full", "--to", "cp"});
    EXPECT_EQ(full.m_nStatus, 3);
    EXPECT_EQ(full.m_err, "quillon: Error saving to file: /dev/full (No space left on device)\n");
    EXPECT_EQ(RunQuillon({"convert", in, PathOf("none/b.cp")}).m_nStatus, 2);
    const TProgramResult unknown = RunQuillon({"convert", in, PathOf("b.txt")});
    EXPECT_EQ(unknown.m_nStatus, 2);
    EXPECT_EQ(unknown.m_err, "quillon: the format of the output is not known (cp, epd, pgn, json): txt\n");
}

TEST_F(LibraryCommands, CheckHasNothingToSayOfASoundLibrary) {
    const TProgramResult result = RunQuillon({"check", Given("a.cp", kLibrary)});
    EXPECT_EQ(result.m_nStatus, 0);
    EXPECT_EQ(result.m_out, "2 problems read, 0 remarks\n");
}

TEST_F(LibraryCommands, CheckTellsWhatIsOdd) {
    const std::string path = Given("a.cp", std::string(kLibrary) + "5 #2\n{\nFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n");
    const TProgramResult result = RunQuillon({"check", path});
    EXPECT_EQ(result.m_nStatus, 1);
    EXPECT_EQ(result.OutLines(),
              (TLines{path + ":18:1: problem 5: same position as problem 4, which has another stipulation",
                      "3 problems read, 1 remark"}));
}

TEST_F(LibraryCommands, CheckForPrograms) {
    const TProgramResult result = RunQuillon({"check", Given("a.cp", kBroken), "--json"});
    EXPECT_EQ(result.m_nStatus, 2);
    const TJson object = TJson::parse(result.m_out);
    EXPECT_EQ(object["problems"], 1);
    ASSERT_EQ(object["findings"].size(), 1u);
    EXPECT_EQ(object["findings"][0]["finding"], "unreadable");
    EXPECT_EQ(object["findings"][0]["id"], 1);
    EXPECT_EQ(object["findings"][0]["line"], 1);
    EXPECT_EQ(object["findings"][0]["column"], 6);
}

TEST_F(LibraryCommands, WhatIsOddIsTold) {
    const std::string text = "7 #9 THREADS many\n{\nW: Ke1, Ra1 B: Ke5\n}\n";
    const std::string path = Given("a.cp", text);
    const std::string told = path + ":1:14: problem 7: ", message = "Number expected after THREADS. Found: many";
    EXPECT_EQ(RunQuillon({"list", path}).m_err, "quillon: " + told + "warning: " + message + "\n");
    const TProgramResult check = RunQuillon({"check", path});
    EXPECT_EQ(check.m_nStatus, 1);
    EXPECT_EQ(check.OutLines(), (TLines{told + message, "1 problems read, 1 remark"}));
    EXPECT_EQ(TJson::parse(RunQuillon({"check", path, "--json"}).m_out)["findings"][0]["finding"], "odd");
    EXPECT_EQ(RunQuillon({"convert", path, PathOf("b.cp")}).m_nStatus, 0);
    EXPECT_EQ(ContentOf("b.cp"), "UTF-8\n\n\n7 #9\n{\n\tFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n");
}

TEST_F(LibraryCommands, ConvertDoesNotLoseWhatAWarningIsAbout) {
    const std::string body = "\n{\nW: Ke1, Ra1 B: Ke5\n}\n", variants = "\n//!VARIANTS\n";
    for (const std::string& text :
         {"7 #9" + variants + "//!{a} Ra1-a5\n//!{a} Ra1-a6\n//!ENDVARIANTS" + body,
          "7 #9" + variants + "//!{Main variant} Ra1-a5\n//!{Wariant główny} Ra1-a6\n//!ENDVARIANTS" + body,
          "7 #9NoMirror" + body, "7 #9 THREADS NoMirror" + body}) {
        const std::string path = Given("a.cp", "UTF-8\n" + text);
        const TProgramResult result = RunQuillon({"convert", path, path});
        EXPECT_EQ(result.m_nStatus, 2) << text;
        EXPECT_TRUE(result.m_err.ends_with(path + " is not written: what the warnings name would be lost\n"))
            << result.m_err;
        EXPECT_EQ(ContentOf("a.cp"), "UTF-8\n" + text);
    }
}

// ---- what options.ini and the options of the program say about files

class SetLibraryCommands : public LibraryCommands {
  protected:
    void Settings(const std::string& lines) const { m_folder.Write("options.ini", "[chess]\n" + lines); }

    [[nodiscard]] TProgramResult RunThere(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--work-dir", m_folder.Path().string()});
        return RunQuillon(words);
    }

    static std::string WithVariant(const std::string& comment) {
        return "UTF-8\n\n\n7 #2\n//!VARIANTS\n//!{Main variant} Ra1-a5" + comment +
               "\n//!ENDVARIANTS\n{\n\tFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n";
    }
};

TEST_F(SetLibraryCommands, CommentsKeptApartAreReadAndWritten) {
    Given("a.cp", WithVariant(""));
    Given("a.cpx", WithVariant("[why]"));
    EXPECT_EQ(RunThere({"convert", "a.cp", "-", "--to", "cp"}).m_out, WithVariant(""));
    Settings("CommentCompatibilityMode=1\n");
    EXPECT_EQ(RunThere({"convert", "a.cp", "-", "--to", "cp"}).m_out, WithVariant("[why]"));
    EXPECT_EQ(RunThere({"convert", "a.cp", "b.cp"}).m_nStatus, 0);
    EXPECT_EQ(ContentOf("b.cp"), WithVariant(""));
    EXPECT_EQ(ContentOf("b.cpx"), WithVariant("[why]"));
    EXPECT_EQ(RunThere({"convert", "a.cp", "c.json"}).m_nStatus, 0);
    EXPECT_EQ(TJson::parse(ContentOf("c.json"))[0]["variants"][0]["moves"][0]["comment"], "why");
    EXPECT_NE(ContentOf("c.json"), "");
    EXPECT_EQ(ContentOf("c.jsonx"), "");
}

TEST_F(SetLibraryCommands, ALibraryWithoutATwinIsReadItself) {
    Settings("CommentCompatibilityMode=1\n");
    Given("a.cp", WithVariant("[why]"));
    EXPECT_EQ(RunThere({"convert", "a.cp", "a.cp"}).m_nStatus, 0);
    EXPECT_EQ(ContentOf("a.cp"), WithVariant(""));
    EXPECT_EQ(ContentOf("a.cpx"), WithVariant("[why]"));
}

TEST_F(SetLibraryCommands, ATwinWithWhatCannotBeReadIsNotReplaced) {
    Settings("CommentCompatibilityMode=1\n");
    Given("a.cp", kLibrary);
    Given("a.cpx", kBroken);
    const TProgramResult result = RunThere({"convert", "a.cp", "a.cp"});
    EXPECT_EQ(result.m_nStatus, 2);
    EXPECT_NE(result.m_err.find("quillon: a.cpx" + std::string(kBrokenText)), std::string::npos) << result.m_err;
    EXPECT_EQ(ContentOf("a.cpx"), kBroken);
    EXPECT_EQ(ContentOf("a.cp"), kLibrary);
}

TEST_F(SetLibraryCommands, KnownTagsHaveTheLanguageOfTheSettings) {
    Given("a.cp", kLibrary);
    EXPECT_EQ(TJson::parse(RunThere({"list", "a.cp", "--json"}).OutLines().at(1))["tags"],
              TJson({"ideal mate", "own"}));
    Settings("LanguageId=0\n");
    EXPECT_EQ(TJson::parse(RunThere({"list", "a.cp", "--json"}).OutLines().at(1))["tags"],
              TJson({"mat idealny", "own"}));
}

TEST_F(SetLibraryCommands, TextWithoutAMarkIsInTheCharacterSetOfTheOption) {
    Given("a.cp", "1 #2\n{\nDesc: \xB3\nFEN: 8/8/8/4k3/8/8/8/R3K3\n}\n");
    const auto description = [&](const std::string& codePage) {
        return TJson::parse(RunThere({"--code-page", codePage, "list", "a.cp", "--json"}).m_out)["description"];
    };
    EXPECT_EQ(description("windows-1250"), "\xC5\x82");
    EXPECT_EQ(description("windows-1251"), "\xD1\x96");
    const TProgramResult unknown = RunThere({"list", "a.cp", "--code-page", "nonesuch"});
    EXPECT_EQ(unknown.m_nStatus, 2);
    EXPECT_EQ(unknown.m_err.find("quillon: there is no character set nonesuch\n"), 0u) << unknown.m_err;
}

TEST_F(LibraryCommands, HelpNamesTheFiles) {
    EXPECT_NE(RunQuillon({"convert", "--help"}).m_out.find("Usage: quillon convert IN OUT [options]"),
              std::string::npos);
    EXPECT_NE(RunQuillon({"list", "--help"}).m_out.find("Usage: quillon list FILE [options]"), std::string::npos);
    EXPECT_NE(RunQuillon({"solve", "--help"}).m_out.find("Usage: quillon solve [FILE] [options]"), std::string::npos);
}

} // namespace
} // namespace quillon
