#include "library/problem_file.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "library/epd_file.h"
#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

using TIds = std::vector<int>;
using TLines = std::vector<std::string>;

/// A problem without a fault; `header` is all that stands before its body.
std::string Problem(std::string_view header) { return std::string(header) + "\n" + std::string(kPlainBody); }

TEST(ProblemFile, TextWithoutProblemsHasNone) {
    for (const char* text :
         {"", " \n\t", "UTF-8", "UTF-8\n\n", "// only a comment\n", "/* never closed", "//!default #2 X\n"}) {
        const TReading reading = Read(text);
        EXPECT_EQ(reading.Ids(), TIds()) << text;
        EXPECT_EQ(reading.Errors(), TLines()) << text;
    }
}

TEST(ProblemFile, ProblemsComeInTheOrderOfTheText) {
    const TReading reading = Read("UTF-8\n\n" + Problem("9 #3") + "\n" + Problem("4 s#2") + Problem("7"));
    EXPECT_EQ(reading.Ids(), (TIds{9, 4, 7}));
    EXPECT_EQ(reading.Errors(), TLines());
    EXPECT_EQ(reading.m_problems[0]->line, 3);
    EXPECT_EQ(reading.m_problems[1]->line, 8);
    EXPECT_EQ(reading.m_problems[2]->line, 12);
}

TEST(ProblemFile, LineEndsOfEitherSystem) {
    std::string text =
        "UTF-8\n//!default #2 AllSolutions\n" + Problem("1 #2") + Problem("2 #3 SafeMode\n//#TAGS\n//#x");
    for (std::size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', i + 2))
        text.insert(i, 1, '\r');
    const TReading reading = Read(text);
    EXPECT_EQ(reading.Errors(), TLines());
    ASSERT_EQ(reading.Ids(), (TIds{1, 2}));
    EXPECT_EQ(reading.m_problems[0]->flags, kFlagAllSolutions);
    EXPECT_EQ(reading.m_problems[1]->flags, kFlagSafeMode);
    EXPECT_EQ(reading.m_problems[1]->tags, (std::set<std::string>{"x"}));
    EXPECT_EQ(reading.m_problems[1]->line, 7);
}

TEST(ProblemFile, MarkMayBePrecededBySpacesTabsAndAByteOrderMark) {
    for (const char* mark : {"UTF-8", " \tUTF-8", "\xEF\xBB\xBF", "\xEF\xBB\xBFUTF-8\n", "UTF-8 "})
        EXPECT_EQ(Read(std::string(mark) + Problem("1 #2")).Ids(), (TIds{1})) << mark;
    EXPECT_EQ(Read("\nUTF-8\n" + Problem("1 #2")).Errors(),
              (TLines{"2:4 Opening bracket expected { or unrecognized option encountered: -"}));
}

TEST(ProblemFile, DefaultClausesHoldForEveryProblemOfTheirLength) {
    const TReading reading = Read("UTF-8\n//!default #2 ALLsolutions\n//!default #4 AllSolutions\n" + Problem("1 #2") +
                                  Problem("2 #3 SafeMode") + Problem("3 s#4") + Problem("4 #2 StopOnDual"));
    EXPECT_EQ(reading.Errors(), TLines());
    ASSERT_EQ(reading.Ids(), (TIds{1, 2, 3, 4}));
    EXPECT_EQ(reading.m_problems[0]->flags, kFlagAllSolutions);
    EXPECT_EQ(reading.m_problems[1]->flags, kFlagSafeMode);
    EXPECT_EQ(reading.m_problems[2]->flags, kFlagAllSolutions);
    EXPECT_EQ(reading.m_problems[3]->flags, kFlagAllSolutions | kFlagStopOnDual);
}

TEST(ProblemFile, DefaultClausesStandBeforeTheFirstProblem) {
    const TReading reading = Read(Problem("1 #2") + "//!default #2 AllSolutions\n" + Problem("2 #2"));
    EXPECT_EQ(reading.Errors(), TLines());
    EXPECT_EQ(reading.m_problems.at(1)->flags, 0u);
}

TEST(ProblemFile, OtherCommentsMayStandAmongTheDefaultClauses) {
    const TReading reading = Read("// a\n//!default #2 AllSolutions\n/* b */\n" + Problem("1 #2"));
    EXPECT_EQ(reading.m_problems.at(0)->flags, kFlagAllSolutions);
    // The first special comment of another kind ends them.
    EXPECT_EQ(Read("//!other\n//!default #2 AllSolutions\n" + Problem("1 #2")).m_problems.at(0)->flags, 0u);
}

TEST(ProblemFile, BadDefaultClauses) {
    const std::string problem = Problem("1 #2");
    for (const char* clause : {"//!default", "//!default #2", "//!default  #2 AllSolutions",
                               "//!default #2 AllSolutions ", "//!default #2 a b", "//!defaults"})
        EXPECT_EQ(StrictError(std::string(clause) + "\n" + problem), "1:1 Incorrect 'default' clause.") << clause;
    for (const char* clause : {"//!default 2 AllSolutions", "//!default #0 AllSolutions", "//!default #x AllSolutions"})
        EXPECT_EQ(StrictError(std::string(clause) + "\n" + problem), "1:1 Error in 'default' clause.") << clause;
}

TEST(ProblemFile, UnknownDefaultOptionFailsAtTheProblemsThatUseIt) {
    const TReading reading = Read("//!default #2 SafeMode\n" + Problem("1 #3") + Problem("2 #2") + Problem("3 #3"));
    EXPECT_EQ(reading.Ids(), (TIds{1, 3}));
    EXPECT_EQ(reading.Errors(), (TLines{"6:4 Unrecognizable option: SafeMode"}));
    EXPECT_EQ(reading.m_errors[0].ProblemId(), 2);
}

TEST(ProblemFile, ABadDefaultClauseKeepsNeitherTheOthersNorTheProblemsBack) {
    const TReading reading = Read("//!default oops\n//!default #2 AllSolutions\n" + Problem("1 #2"));
    EXPECT_EQ(reading.Errors(), (TLines{"1:1 Incorrect 'default' clause."}));
    EXPECT_FALSE(reading.m_errors[0].ProblemId().has_value());
    ASSERT_EQ(reading.Ids(), (TIds{1}));
    EXPECT_EQ(reading.m_problems[0]->flags, kFlagAllSolutions);
}

TEST(ProblemFile, ARepeatedNumberIsToldAndHandedOut) {
    const TReading reading = Read(Problem("1 #2") + Problem("1 #3"));
    EXPECT_EQ(reading.Ids(), (TIds{1, 1}));
    EXPECT_EQ(reading.Errors(), (TLines{"5:1 WARINING: Problem id=1 redefinition - overwriting."}));
    EXPECT_TRUE(reading.m_errors[0].IsWarning());
    EXPECT_EQ(reading.m_errors[0].ProblemId(), 1);
}

TEST(ProblemFile, ParseProblemReturnsThePlaceBehindTheProblem) {
    const std::string text = Problem("1 #2") + "2 #3";
    ChessProblem problem;
    const CTextPosition behind = ParseProblem(problem, CTextPosition(text), true, {{2, {"AllSolutions"}}});
    EXPECT_EQ(problem.id, 1);
    EXPECT_EQ(problem.flags, kFlagAllSolutions);
    EXPECT_EQ(behind.Rest(), "\n2 #3");
}

// ---- strict reading

TEST(StrictReading, LaterProblemsReplaceEarlierOnes) {
    TProblemMap library;
    TLines warnings;
    ReadProblemText(Problem("1 #2") + Problem("5 #2") + Problem("1 #3"), library,
                    [&](const ProblemFileError& warning) { warnings.emplace_back(warning.what()); });
    ASSERT_EQ(library.size(), 2u);
    EXPECT_EQ(library.at(1)->plies, 5);
    EXPECT_EQ(library.at(5)->plies, 3);
    EXPECT_EQ(warnings, (TLines{"WARINING: Problem id=1 redefinition - overwriting."}));
}

TEST(StrictReading, AFailureEndsItAndKeepsWhatWasStored) {
    TProblemMap library;
    try {
        ReadProblemText(Problem("1 #2") + Problem("2 #2 Foo") + Problem("3 #2"), library,
                        [](const ProblemFileError&) {});
        FAIL() << "nothing thrown";
    } catch (const ProblemFileError& error) {
        EXPECT_STREQ(error.what(), "Opening bracket expected { or unrecognized option encountered: FOO");
        EXPECT_EQ(error.Line(), 5);
        EXPECT_EQ(error.Column(), 6);
        EXPECT_EQ(error.ProblemId(), 2);
        EXPECT_FALSE(error.IsWarning());
    }
    EXPECT_EQ(library.size(), 1u);
    EXPECT_EQ(library.count(1), 1u);
}

TEST(StrictReading, FilesAreReadFromDisk) {
    const std::filesystem::path path = std::filesystem::path(::testing::TempDir()) / "quillon_strict_reading.cp";
    std::ofstream(path, std::ios::binary) << Problem("UTF-8 1 #2");
    TProblemMap library;
    ReadProblemFile(path, library, [](const ProblemFileError&) {});
    std::filesystem::remove(path);
    EXPECT_EQ(library.count(1), 1u);
    try {
        ReadProblemFile(path, library, [](const ProblemFileError&) {});
        FAIL() << "nothing thrown";
    } catch (const ChessException& failure) {
        EXPECT_EQ(failure.what(), "Error opening file: " + path.string());
    }
}

// ---- going on behind a bad problem

/// Numbers of the problems and messages of the others, for a text with a bad problem in the middle.
struct TBadProblem {
    const char* m_text;
    const char* m_error;
};

TEST(GoingOn, EveryOtherProblemIsRead) {
    const TBadProblem kBad[] = {
        {"2 #2 Foo\n{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n}\n",
         "5:6 Opening bracket expected { or unrecognized option encountered: FOO"},
        {"2 #2\n{\n\tFEN: 8/8\n\tAnswer: Qd1-d8\n}\n", "7:7 Improper FEN code"},
        {"2 #2\n{\n\tFEN: 8/8 }\n", "7:7 Improper FEN code"},
        {"2 #0\n{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n}\n", "5:4 Stipulation out of range (1 to 299 moves): 0"},
        {"99999999999 #2\n{\n}\n", "5:1 Problem number out of range: 99999999999"},
        {"rubbish that nobody knows\n", "5:9 Opening bracket expected { or unrecognized option encountered: THAT"},
        {"}\n", "5:1 Alphanumeric identifier expected. Found: }"},
        {"/ 5\n", "5:1 Unexpected lexem (slash)."},
        {"2 #2\n{\n\tDesc 2 #3\n}\n", "7:7 Colon ':' expected after description identifier."},
        {"2 #2\n//#TAGS\n//#x\n//!VARIANTS\n//!{a} x\n//!ENDVARIANTS\n{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n}\n",
         "9:1 Empty string"},
    };
    for (const TBadProblem& bad : kBad) {
        const TReading reading = Read(Problem("1 #2") + bad.m_text + Problem("3 #2"));
        EXPECT_EQ(reading.Ids(), (TIds{1, 3})) << bad.m_text;
        EXPECT_EQ(reading.Errors(), (TLines{bad.m_error})) << bad.m_text;
    }
}

TEST(GoingOn, ABodyWithoutItsClosingBracketDoesNotSwallowTheNextProblem) {
    for (const char* body : {"{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n", "{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n\tAnswer: Qd1-d8\n",
                             "{\n\tFEN: 8/8\n", "{\n", "{\n\tFEN: 8/8\n\tDesc: a { b\n", "{\n\tW: Ke1\n\tB: Ke5,\n"}) {
        const TReading reading = Read("1 #2\n" + std::string(body) + Problem("2 #2") + Problem("3 s#2"));
        EXPECT_EQ(reading.Ids(), (TIds{2, 3})) << body;
        ASSERT_EQ(reading.m_errors.size(), 1u) << body;
        EXPECT_EQ(reading.m_errors[0].ProblemId(), 1) << body;
    }
}

TEST(GoingOn, AHeaderInsideABrokenBodyIsNoProblem) {
    const TReading reading = Read("1 #2\n{\n\tFEN: 8/8\n\t2 #3\n}\n" + Problem("3 #2"));
    EXPECT_EQ(reading.Ids(), (TIds{3}));
    EXPECT_EQ(reading.Errors(), (TLines{"3:7 Improper FEN code"}));
}

TEST(GoingOn, AHeaderInsideABrokenBodyStaysOneWhateverFollows) {
    // The problem without a stipulation is no place to go on at; its opening bracket must not revive the false header.
    const TReading reading = Read("1 #2\n{\n\tFEN: 8/8\n\t2 #3\n}\n" + Problem("4") + Problem("3 #2"));
    EXPECT_EQ(reading.Ids(), (TIds{3}));
    EXPECT_EQ(reading.m_errors.size(), 1u);
}

TEST(GoingOn, WhatTheReaderHadPassedIsNotJudgedAgain) {
    const TReading reading = Read("1 #2 { Desc: a } b\n\tFEN: 8/8\n\t2 #3\n}\n" + Problem("3 #2"));
    EXPECT_EQ(reading.Ids(), (TIds{3}));
    EXPECT_EQ(reading.Errors(), (TLines{"2:7 Improper FEN code"}));
}

TEST(GoingOn, BehindABrokenBodyAHeaderNeedsNoBracket) {
    const TReading reading = Read("1 #2 { x }\n2 #2 Foo }\n" + Problem("3 #2"));
    EXPECT_EQ(reading.Ids(), (TIds{3}));
    ASSERT_EQ(reading.m_errors.size(), 2u);
    EXPECT_EQ(reading.m_errors[1].ProblemId(), 2);
}

TEST(GoingOn, AHeaderInsideACommentIsNoProblem) {
    const TReading reading = Read("1 #2 Foo\n/*\n" + Problem("2 #2") + "*/\n" + "// 3 #2 {\n" + Problem("4 #2"));
    EXPECT_EQ(reading.Ids(), (TIds{4}));
}

TEST(GoingOn, ADescriptionOfABrokenBodyIsFreeText) {
    const TReading reading = Read("1 #2\n{\n\tX: y\n\tDesc: } /* { // \n2 #2\n}\n" + Problem("3 #2"));
    EXPECT_EQ(reading.Ids(), (TIds{3}));
}

TEST(GoingOn, HeadersWithoutABodyAreEachReported) {
    const TReading reading = Read("1 #2\n2 #2\n" + Problem("3 #2") + "4 #2\n");
    EXPECT_EQ(reading.Ids(), (TIds{3}));
    EXPECT_EQ(reading.Errors(), (TLines{"2:1 Opening bracket expected { or unrecognized option encountered: 2",
                                        "3:1 Opening bracket expected { or unrecognized option encountered: 3",
                                        "8:1 Unexpected end of file."}));
}

TEST(GoingOn, ATruncatedHeaderInAnUnclosedBodyIsReported) {
    const TReading reading = Read("1 #2\n{\n\tFEN: 8/8\n2 #2\n");
    EXPECT_EQ(reading.Errors(), (TLines{"3:7 Improper FEN code", "5:1 Unexpected end of file."}));
}

TEST(GoingOn, IndentedHeadersAndSelfmatesAreFound) {
    const TReading reading =
        Read("1 #2 Foo {}\n  2  s# 2\n" + std::string(kPlainBody) + "bar baz\n\t3#2\n" + std::string(kPlainBody));
    EXPECT_EQ(reading.Ids(), (TIds{2, 3}));
    EXPECT_EQ(reading.m_errors.size(), 2u);
}

TEST(GoingOn, ABadFirstLexemeEndsTheReadingSomewhere) {
    EXPECT_EQ(Read("/").Errors(), (TLines{"1:1 Unexpected lexem (slash)."}));
    EXPECT_EQ(Read("}").Errors(), (TLines{"1:1 Alphanumeric identifier expected. Found: }"}));
    EXPECT_FALSE(Read("}").m_errors[0].ProblemId().has_value());
    EXPECT_EQ(Read("\xFF").Errors(), (TLines{"1:1 Alphanumeric identifier expected. Found: \\xFF"}));
}

TEST(GoingOn, ExceptionsOfTheCallbacksPass) {
    TReading reading;
    const auto refuse = [](std::unique_ptr<ChessProblem>) { throw std::runtime_error("enough"); };
    EXPECT_THROW(ReadProblems(Problem("1 #2"), refuse, Errors(reading)), std::runtime_error);
}

// ---- huge input

double SecondsToRead(const std::string& text) {
    const auto start = std::chrono::steady_clock::now();
    static_cast<void>(Read(text));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string Repeated(std::string_view text, std::size_t nBytes) {
    std::string repeated;
    while (repeated.size() < nBytes)
        repeated += text;
    return repeated;
}

/// A reader that passed what is left of the text again after each failure would need many minutes for these.
TEST(HugeInput, IsReadInTimeThatGrowsWithItsSize) {
    constexpr std::size_t kBytes = 500'000;
    const std::string body(kPlainBody);
    const std::vector<std::string> texts{
        Repeated("1 #2\n" + body, kBytes),
        Repeated("1 #2\n", kBytes),
        Repeated("1 #2 {\n", kBytes),
        Repeated("1 #2 { x\n", kBytes),
        Repeated("1 #2 { x }\n", kBytes),
        Repeated("1 #2 Foo\n" + body, kBytes),
        Repeated("1 #2\n{\nD: {\n", kBytes),
        Repeated("1 #2 /* {\n", kBytes),
        Repeated("/ ", kBytes),
        Repeated("//!default\n", kBytes),
        "1 #2 { x " + Repeated("\n1 #2", kBytes),
        "1 #2 { x " + Repeated("\nD: {", kBytes),
        "1 #2\n{\nDesc: " + std::string(kBytes, 'x') + "\n" + body.substr(2),
        "1 #2 " + std::string(kBytes, ' ') + body,
        "1 #2 " + Repeated("SafeMode ", kBytes) + body,
        "1 #2 {W: Ke1 B: Ke8 A: " + Repeated("e2-e4, ", kBytes) + "}",
        std::string(kBytes, '1') + " #2",
        std::string(kBytes, '{'),
    };
    for (const std::string& text : texts)
        EXPECT_LT(SecondsToRead(text), 30.0) << text.substr(0, 40);
}

TEST(HugeInput, OfFailuresOnlySoManyAreTold) {
    const std::string library = Repeated("1 #2 Foo\n", 200'000), epd = Repeated("8/8\n", 100'000);
    TReading reading = Read(library);
    ASSERT_EQ(reading.m_errors.size(), kMostFailures + 2u);
    EXPECT_STREQ(reading.m_errors.back().what(), "More than 20000 failures: the rest is not read.");
    EXPECT_EQ(reading.m_errors.back().Line(), kMostFailures + 2);
    reading = Read(Repeated("//!default\n", 300'000) + Problem("1 #2"));
    EXPECT_EQ(reading.m_errors.size(), kMostFailures + 2u);
    EXPECT_TRUE(reading.m_problems.empty());
    reading = {};
    ReadEpdProblems(epd, Problems(reading), Errors(reading));
    ASSERT_EQ(reading.m_errors.size(), kMostFailures + 2u);
    EXPECT_EQ(reading.m_errors.back().Line(), kMostFailures + 2);
}

TEST(HugeInput, WarningsDoNotEndTheReading) {
    constexpr std::size_t kProblems = 25'000;
    const std::string odd = "1 #2 THREADS x\n" + std::string(kPlainBody);
    std::string text;
    for (std::size_t i = 0; i < kProblems; ++i)
        text += odd;
    const TReading reading = Read(text + "1 #2 Foo\n");
    EXPECT_EQ(reading.m_problems.size(), kProblems);
    ASSERT_EQ(reading.m_errors.size(), kMostFailures + 2u);
    const ProblemFileError& last = reading.m_errors[reading.m_errors.size() - 2];
    EXPECT_TRUE(last.IsWarning());
    EXPECT_STREQ(last.what(), "More than 20000 warnings: the rest is not told.");
    EXPECT_FALSE(reading.m_errors.back().IsWarning()) << "failures are told all the same";
}

TEST(HugeInput, LinesOfTenMegabytes) {
    constexpr std::size_t kBytes = 10'000'000;
    const std::string word(kBytes, 'a'), body(kPlainBody);
    EXPECT_EQ(ReadBody("Desc: " + word + "\nFEN: 8/8/8/4k3/8/8/8/3QK3")->description.size(), kBytes);
    EXPECT_EQ(ReadOne("UTF-8\n1 #2\n//#TAGS\n//#" + word + "\n" + body)->tags.begin()->size(), kBytes);
    EXPECT_EQ(ReadOne("UTF-8\n1 #2\n//!VARIANTS\n//!{v} Ke1-e2[" + word + "]\n" + body)
                  ->variants.at("v")
                  .moves.at(0)
                  .comment.size(),
              kBytes);
    const std::string message = StrictMessage("1 #2 " + word + "\n" + body);
    EXPECT_TRUE(message.starts_with("Opening bracket expected { or unrecognized option encountered: AAA"));
    EXPECT_LT(message.size(), 400u);
}

} // namespace
} // namespace quillon
