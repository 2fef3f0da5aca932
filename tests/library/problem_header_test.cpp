// Number, stipulation and run options of a problem, and the sections between them and the body.

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;

std::unique_ptr<ChessProblem> ReadHeader(std::string_view header) {
    return ReadOne("UTF-8\n" + std::string(header) + "\n" + std::string(kPlainBody));
}

std::string HeaderError(std::string_view header) {
    return StrictError(std::string(header) + "\n" + std::string(kPlainBody));
}

/// The problem of a header that is read with warnings, and "line:column message" of each.
struct TOddHeader {
    std::unique_ptr<ChessProblem> m_problem;
    std::vector<std::string> m_warnings;
};

TOddHeader ReadOdd(std::string_view header) {
    TReading reading = Read(std::string(header) + "\n" + std::string(kPlainBody));
    EXPECT_EQ(reading.m_problems.size(), 1u) << header;
    for (const ProblemFileError& error : reading.m_errors) {
        EXPECT_TRUE(error.IsWarning());
        EXPECT_EQ(error.ProblemId(), 1);
    }
    return {std::move(reading.m_problems.at(0)), reading.Errors()};
}

ProblemFlags FlagsOf(std::string_view options) { return ReadHeader("1 #2 " + std::string(options))->flags; }

TEST(ProblemHeader, DirectMate) {
    const auto problem = ReadHeader("117 #5");
    EXPECT_EQ(problem->id, 117);
    EXPECT_EQ(problem->kind, kDirectMate);
    EXPECT_EQ(problem->plies, 9);
    EXPECT_EQ(StipulationMoves(*problem), 5);
    EXPECT_EQ(problem->flags, 0u);
    EXPECT_EQ(problem->originalPosition->m_nMoves, 9);
    EXPECT_EQ(problem->originalPosition->m_nInitialMoves, 9);
    EXPECT_EQ(problem->line, 2);
}

TEST(ProblemHeader, Selfmate) {
    const auto problem = ReadHeader("7 s#5");
    EXPECT_EQ(problem->kind, kSelfmate);
    EXPECT_EQ(problem->plies, 11);
    EXPECT_EQ(StipulationMoves(*problem), 5);
    EXPECT_EQ(problem->originalPosition->m_nMoves, 11);
}

TEST(ProblemHeader, WithoutStipulation) {
    const auto problem = ReadHeader("7 SafeMode");
    EXPECT_EQ(problem->kind, kNoStipulation);
    EXPECT_EQ(problem->plies, 255);
    EXPECT_EQ(StipulationMoves(*problem), 0);
    EXPECT_EQ(problem->flags, kFlagSafeMode);
    EXPECT_EQ(problem->originalPosition->m_nMoves, 255);
    EXPECT_EQ(problem->originalPosition->m_nInitialMoves, 255);
}

TEST(ProblemHeader, OnlyASmallSIsASelfmate) {
    EXPECT_EQ(HeaderError("7 S#5"), "1:3 Opening bracket expected { or unrecognized option encountered: S");
    EXPECT_EQ(HeaderError("7 s 5"), "1:3 Opening bracket expected { or unrecognized option encountered: S");
}

TEST(ProblemHeader, LengthOfTheStipulation) {
    EXPECT_EQ(ReadHeader("1 #1")->plies, 1);
    EXPECT_EQ(ReadHeader("1 #299")->plies, 597);
    EXPECT_EQ(ReadHeader("1 s#299")->plies, 599);
    EXPECT_EQ(HeaderError("1 #0"), "1:4 Stipulation out of range (1 to 299 moves): 0");
    EXPECT_EQ(HeaderError("1 #300"), "1:4 Stipulation out of range (1 to 299 moves): 300");
    EXPECT_EQ(HeaderError("1 s#300"), "1:5 Stipulation out of range (1 to 299 moves): 300");
    EXPECT_EQ(HeaderError("1 #32769"), "1:4 Stipulation out of range (1 to 299 moves): 32769");
    EXPECT_EQ(HeaderError("1 #99999999999999999999"), "1:4 Stipulation out of range (1 to 299 moves): 2000000000");
}

TEST(ProblemHeader, LengthMustBeginWithANumber) {
    const TOddHeader odd = ReadOdd("1 #2AllSolutions");
    EXPECT_EQ(odd.m_problem->plies, 3);
    EXPECT_EQ(odd.m_problem->flags, 0u);
    EXPECT_EQ(odd.m_warnings, (std::vector<std::string>{"1:4 Invalid stipulation: 2AllSolutions"}));
    EXPECT_EQ(HeaderError("1 #two"), "1:4 Invalid stipulation: two");
    EXPECT_EQ(HeaderError("1 #"), "2:1 Alphanumeric identifier expected. Found: {");
}

TEST(ProblemHeader, NumberOfTheProblem) {
    EXPECT_EQ(ReadHeader("0 #2")->id, 0);
    EXPECT_EQ(ReadHeader("2147483647 #2")->id, 2147483647);
    EXPECT_EQ(ReadHeader("12a #2")->id, 12);
    EXPECT_EQ(HeaderError("2147483648 #2"), "1:1 Problem number out of range: 2147483648");
    EXPECT_EQ(HeaderError("-1 #2"), "1:1 Alphanumeric identifier expected. Found: -");
}

TEST(ProblemHeader, PartsMayStandOnLinesOfTheirOwn) {
    const auto problem = ReadHeader("12 // a comment\n#\n3 /* another */ AllSolutions\n\nThreads\n4");
    EXPECT_EQ(problem->id, 12);
    EXPECT_EQ(problem->plies, 5);
    EXPECT_EQ(problem->flags, kFlagAllSolutions);
    EXPECT_EQ(problem->threads, 4);
}

TEST(ProblemOptions, EachSetsItsFlag) {
    const std::pair<const char*, ProblemFlags> kFlagOfOption[] = {{"NOMIRROR", 0x1},
                                                                  {"ALLSOLUTIONS", 0x2},
                                                                  {"STOPONDUAL", 0x8},
                                                                  {"STOPON3SOL", 0x10},
                                                                  {"USEMAINVARIANTASSORTINDICATIONS", 0x20},
                                                                  {"NOGLOBREG", 0x40},
                                                                  {"SAFEMODE", 0x80},
                                                                  {"MIRRORONLY", 0x100},
                                                                  {"GUICHECKBESTDEFENCE", 0x800},
                                                                  {"GUICHECK", 0x1000},
                                                                  {"GUICHECKBESTDEFENCEANDAUX", 0x1000},
                                                                  {"REQUIRESSYZYGY", 0x2000},
                                                                  {"ALLSOLUTIONSREQUIRESSYZYGY", 0x4000},
                                                                  {"STOPON4SOL", 0x8000},
                                                                  {"USEPREDEFINEDSETTINGS", 0x8000},
                                                                  {"HYBRIDBRUTEFORCE", 0x10000},
                                                                  {"BRUTEFORCE", 0x20000}};
    for (const auto& [option, flag] : kFlagOfOption)
        EXPECT_EQ(FlagsOf(option), flag) << option;
}

TEST(ProblemOptions, CaseDoesNotMatterAndFlagsAddUp) {
    EXPECT_EQ(FlagsOf("AllSolutions stoponDUAL BruteForce"), 0x2u | 0x8u | 0x20000u);
    EXPECT_EQ(FlagsOf("NoMirror NoMirror"), 0x1u);
}

TEST(ProblemOptions, NothingIsSetByDefault) {
    const auto problem = ReadHeader("1 #2");
    EXPECT_EQ(problem->threads, kUnsetCount);
    EXPECT_EQ(problem->levels, kUnsetCount);
    EXPECT_EQ(problem->schedulerLevels, -1);
    EXPECT_EQ(problem->lichessLevels, -1);
    EXPECT_EQ(problem->globRegMB, -1);
    EXPECT_FALSE(problem->stopRelaxHeuristicsOnFirstSolution);
    EXPECT_EQ(problem->useMainVariantAsSortIndications, 0);
    EXPECT_EQ(problem->guiCheckCount, 1u);
}

TEST(ProblemOptions, ThreadsAndLevels) {
    EXPECT_EQ(ReadHeader("1 #2 THREADS 4")->threads, 4);
    EXPECT_EQ(ReadHeader("1 #2 THREADS 4")->levels, kUnsetCount);
    const auto problem = ReadHeader("1 #2 THREADS 4^2 SafeMode");
    EXPECT_EQ(problem->threads, 4);
    EXPECT_EQ(problem->levels, 2);
    EXPECT_EQ(problem->flags, kFlagSafeMode);
    EXPECT_EQ(ReadHeader("1 #2 THREADS 255")->threads, kUnsetCount);
    EXPECT_EQ(ReadHeader("1 #2 THREADS 127")->threads, 127);
}

TEST(ProblemOptions, WhatIsNoNumberOfThreadsIsWarnedOf) {
    const struct {
        const char* m_option;
        int m_nThreads, m_nLevels;
        const char* m_warning;
    } kRows[] = {
        {"THREADS", kUnsetCount, kUnsetCount, "2:1 Number expected after THREADS. Found: {"},
        {"THREADS many", kUnsetCount, kUnsetCount, "1:14 Number expected after THREADS. Found: many"},
        {"THREADS 4^", 4, kUnsetCount, "1:14 Number expected after THREADS. Found: "},
        {"THREADS 128", 127, kUnsetCount, "1:14 Number out of range after THREADS: 128"},
        {"THREADS 4^300", 4, 127, "1:14 Number out of range after THREADS: 300"},
    };
    for (const auto& row : kRows) {
        const TOddHeader odd = ReadOdd("1 #2 " + std::string(row.m_option));
        EXPECT_EQ(odd.m_problem->threads, row.m_nThreads) << row.m_option;
        EXPECT_EQ(odd.m_problem->levels, row.m_nLevels) << row.m_option;
        EXPECT_EQ(odd.m_warnings, (std::vector<std::string>{row.m_warning})) << row.m_option;
    }
}

TEST(ProblemOptions, OneWithoutItsArgumentIsWarnedOf) {
    for (const std::string option : {"THREADS", "SCHEDULERLEVELS", "LICHESSLEVELS", "GLOBREGMB"}) {
        const TOddHeader odd = ReadOdd("1 #2 SafeMode " + option + "\n//#TAGS\n//#x");
        EXPECT_EQ(odd.m_problem->tags.size(), 1u) << option;
        EXPECT_EQ(odd.m_problem->schedulerLevels, kUnset);
        EXPECT_EQ(odd.m_problem->lichessLevels, kUnset);
        EXPECT_EQ(odd.m_problem->globRegMB, kUnset);
        EXPECT_EQ(odd.m_warnings,
                  (std::vector<std::string>{"2:1 Number expected after " + option + ". Found: //#TAGS"}));
    }
    EXPECT_EQ(ReadOdd("1 #2 Requires").m_warnings,
              (std::vector<std::string>{"2:1 Material expected after REQUIRES. Found: {"}));
    EXPECT_TRUE(ReadOdd("1 #2 Requires").m_problem->requiredMaterials.empty());
    EXPECT_EQ(HeaderError("1 #2 SH_ZUGZWANG"), "2:1 Unexpected lexem after SH_ZUGZWANG: { (expected opening bracket or "
                                               "OFF)");
}

TEST(ProblemOptions, OptionsWithANumber) {
    const auto problem = ReadHeader("1 #2 SchedulerLevels 0 LichessLevels 2 GlobRegMB 4096");
    EXPECT_EQ(problem->schedulerLevels, 0);
    EXPECT_EQ(problem->lichessLevels, 2);
    EXPECT_EQ(problem->globRegMB, 4096);
    EXPECT_EQ(ReadHeader("1 #2 SchedulerLevels 7x")->schedulerLevels, 7);
    EXPECT_EQ(ReadOdd("1 #2 LichessLevels many").m_problem->lichessLevels, 0);
    EXPECT_EQ(ReadOdd("1 #2 LichessLevels many").m_warnings,
              (std::vector<std::string>{"1:20 Number expected after LICHESSLEVELS. Found: many"}));
    EXPECT_EQ(HeaderError("1 #2 SCHEDULERLEVELS -1"),
              "1:23 Opening bracket expected { or unrecognized option encountered: 1");
    EXPECT_EQ(ReadOdd("1 #2 SCHEDULERLEVELS 99999").m_problem->schedulerLevels, 32767);
    EXPECT_EQ(ReadOdd("1 #2 SCHEDULERLEVELS 99999").m_warnings,
              (std::vector<std::string>{"1:22 Number out of range after SCHEDULERLEVELS: 99999"}));
    EXPECT_EQ(ReadOdd("1 #2 GLOBREGMB 9999999999").m_problem->globRegMB, 1'000'000'000);
}

TEST(ProblemOptions, OptionsThatSetAField) {
    EXPECT_EQ(ReadHeader("1 #2 UseMainVariantAsSortIndications")->useMainVariantAsSortIndications, 1);
    EXPECT_TRUE(ReadHeader("1 #2 StopRelaxHeuristicsOnFirstSolution")->stopRelaxHeuristicsOnFirstSolution);
}

TEST(ProblemOptions, RequiredMaterials) {
    const auto problem = ReadHeader("1 #2 Requires RRk OnlyIfAvail Qr Requires RRk AllSolutionsRequires BB");
    EXPECT_EQ(problem->requiredMaterials, (std::set<std::string>{"RRk", "Qr"}));
    EXPECT_EQ(problem->allSolutionsRequiredMaterials, (std::set<std::string>{"BB"}));
}

TEST(ProblemOptions, CountOfTheGuiCheckIsOptional) {
    EXPECT_EQ(ReadHeader("1 #2 GUICHECK 3")->guiCheckCount, 3u);
    EXPECT_EQ(ReadHeader("1 #2 GUICHECKBESTDEFENCE 2")->guiCheckCount, 2u);
    EXPECT_EQ(ReadHeader("1 #2 GUICHECK")->guiCheckCount, 1u);
    const auto problem = ReadHeader("1 #2 GUICHECK SAFEMODE");
    EXPECT_EQ(problem->guiCheckCount, 1u);
    EXPECT_EQ(problem->flags, kFlagGuiCheck | kFlagSafeMode);
    EXPECT_EQ(HeaderError("1 #2 GUICHECK 0"), "1:15 Opening bracket expected { or unrecognized option encountered: 0");
}

TEST(ProblemOptions, UnknownOnesFailInCapitals) {
    EXPECT_EQ(HeaderError("1 #2 AllSolutions Foo"),
              "1:19 Opening bracket expected { or unrecognized option encountered: FOO");
    EXPECT_EQ(HeaderError("1 #2 //!default #2 AllSolutions"),
              "1:6 Opening bracket expected { or unrecognized option encountered: //!DEFAULT #2 ALLSOLUTIONS");
    EXPECT_EQ(HeaderError("1 #2 )"), "1:6 Opening bracket expected { or unrecognized option encountered: )");
}

TEST(ProblemSections, Tags) {
    const auto problem = ReadHeader("1 #2\n//#TAGS\n//#miniature\n//#ideal mate\r\n//#\n// a comment\n//#miniature");
    EXPECT_EQ(problem->tags, (std::set<std::string>{"miniature", "ideal mate"}));
    EXPECT_EQ(ReadHeader("1 #2\n//#tags\n//#x")->tags, (std::set<std::string>{"x"}));
    EXPECT_TRUE(ReadHeader("1 #2\n//#TAGS")->tags.empty());
}

TEST(ProblemSections, TagsAreDecoded) {
    EXPECT_EQ(ReadHeader("1 #2\n//#TAGS\n//#w\xC4\x85\xC5\xBC wodny")->tags,
              (std::set<std::string>{"w\xC4\x85\xC5\xBC wodny"}));
}

TEST(ProblemSections, TagsOutsideTheirSectionAreNotMisread) {
    EXPECT_EQ(HeaderError("1 #2\n//#miniature"),
              "2:1 Opening bracket expected { or unrecognized option encountered: //#MINIATURE");
}

TEST(ProblemSections, Variants) {
    const auto problem = ReadHeader("1 #2\n//!VARIANTS\n//!{Main variant} Qd1-d8 Ke5-f5[only move] Qd8-f6\r\n"
                                    "//!{Try \xC5\x82} Ke1-e2\n//!ENDVARIANTS");
    ASSERT_EQ(problem->variants.size(), 2u);
    EXPECT_EQ(problem->variants.at("Main variant").moves.size(), 3u);
    EXPECT_EQ(problem->variants.at("Main variant").moves[1].comment, "only move");
    EXPECT_EQ(problem->variants.at("Main variant").moves[2].text, "Qd8-f6");
    EXPECT_EQ(problem->variants.at("Try \xC5\x82").moves.size(), 1u);
}

TEST(ProblemSections, OfTwoVariantsOfANameTheLaterIsKept) {
    const TOddHeader odd = ReadOdd("1 #2\n//!VARIANTS\n//!{a} Ke1-e2\n//!{a} Ke1-d2\n//!ENDVARIANTS");
    EXPECT_EQ(odd.m_problem->variants.at("a").moves.at(0).text, "Ke1-d2");
    EXPECT_EQ(odd.m_warnings, (std::vector<std::string>{"4:1 Variant \"a\" redefinition - overwriting."}));
}

TEST(ProblemSections, VariantsEndWithoutTheirEndMarkToo) {
    EXPECT_EQ(ReadHeader("1 #2\n//!VARIANTS\n//!{a} Ke1-e2\n")->variants.size(), 1u);
    EXPECT_TRUE(ReadHeader("1 #2\n//!VARIANTS\n//!EndVariants\n")->variants.empty());
}

TEST(ProblemSections, BadVariantHasAPlace) {
    EXPECT_EQ(HeaderError("1 #2\n//!VARIANTS\n//!{a} Ke1-e2 x\n"), "3:1 Empty string");
}

TEST(ProblemSections, SortIndicationsOfEveryMove) {
    const auto problem = ReadHeader("1 #2\n//@SortIndications: 1.Qd1-d8; 3.Qd8:f6");
    ASSERT_EQ(problem->sortIndications.size(), 2u);
    EXPECT_EQ(problem->sortIndications.begin()->m_nMove, 1);
    EXPECT_EQ(problem->sortIndications.rbegin()->m_nMove, 3);
    EXPECT_EQ(HeaderError("1 #2\n//@SortIndications: 1.Qz1\n"), "2:1 Invalid description of SortIndication: 1.Qz1");
}

TEST(ProblemSections, SortIndicationsWantTheirExactOpening) {
    EXPECT_EQ(HeaderError("1 #2\n//@sortindications: Kd2"), "2:1 Opening bracket expected.");
    EXPECT_EQ(HeaderError("1 #2\n//@SortIndications:Kd2"), "2:1 Opening bracket expected.");
    EXPECT_TRUE(ReadHeader("1 #2\n//@Something else")->sortIndications.empty());
}

TEST(ProblemSections, OutOfOrderFails) {
    EXPECT_EQ(HeaderError("1 #2\n//!VARIANTS\n//!ENDVARIANTS\n//#TAGS"), "4:1 Opening bracket expected.");
    EXPECT_EQ(HeaderError("1 #2\n//#TAGS\n//#x\nAllSolutions"), "4:1 Opening bracket expected.");
    EXPECT_EQ(HeaderError("1 #2\n//@SortIndications: Kd2\n//@SortIndications: Ke2"), "3:1 Opening bracket expected.");
}

TEST(ProblemSections, ACompleteProblemInTheOrderOfAWriter) {
    const auto problem = ReadOne("UTF-8\n\n\n117 #5 AllSolutions THREADS 4 Requires RRk\n//#TAGS\n//#miniature\n"
                                 "//!VARIANTS\n//!{Main variant} Qd1-d8 Ke5-f5[only move] Qd8-f6\n//!ENDVARIANTS\n"
                                 "//@SortIndications: 1.Qd1-d8; 3.Qd8:f6\n{\n\tDescription: Example\n"
                                 "\tFEN: 8/8/8/4k3/8/8/8/3QK3\n\tAnswer:  Qd1-d8\n}\n");
    EXPECT_EQ(problem->line, 4);
    EXPECT_EQ(problem->id, 117);
    EXPECT_EQ(problem->plies, 9);
    EXPECT_EQ(problem->threads, 4);
    EXPECT_EQ(problem->description, "Example");
    EXPECT_EQ(problem->tags.size(), 1u);
    EXPECT_EQ(problem->variants.size(), 1u);
    EXPECT_EQ(problem->sortIndications.size(), 2u);
    EXPECT_EQ(problem->flags, kFlagAllSolutions | kFlagAnswer);
    ASSERT_EQ(problem->answer.size(), 1u);
    EXPECT_EQ(problem->answer[0].m_nFrom, kD1);
    EXPECT_EQ(problem->answer[0].m_nTo, kD8);
}

} // namespace
} // namespace quillon
