#include "library/problem_writer.h"

#include <gtest/gtest.h>
#include <string>

#include "library/problem_reading.h"
#include "library/random_library.h"

namespace quillon {
namespace {

using namespace quillon::testing;

TProblemMap ReadLibrary(std::string_view text) {
    TProblemMap library;
    ReadProblemText(text, library, [](const ProblemFileError&) {});
    return library;
}

std::string Rewritten(std::string_view text) { return FormatProblems(ReadLibrary(text), true); }

/// The first line of a problem with these options, once it has been read and written.
std::string HeaderAfter(const std::string& header) {
    const std::string text = Rewritten("UTF-8\n" + header + "\n" + std::string(kPlainBody));
    const auto begin = std::string_view("UTF-8\n\n\n").size();
    return text.substr(begin, text.find('\n', begin) - begin);
}

/// The lines between the brackets after the body has been read and written.
std::string BodyAfter(const std::string& body, const std::string& header = "1 #2") {
    const std::string text = Rewritten("UTF-8\n" + header + "\n{\n" + body + "\n}\n");
    const auto begin = text.find("{\n") + 2;
    return text.substr(begin, text.rfind("}\n") - begin);
}

const std::string kCanonical = "UTF-8\n\n\n117 #5 AllSolutions THREADS 4 Requires RRk\n//#TAGS\n//#miniature\n"
                               "//!VARIANTS\n//!{Main variant} Qd1-d8 Ke5-f5[only move] Qd8-f6\n//!ENDVARIANTS\n"
                               "//@SortIndications: 1.Qd1-d8; 3.Qd8:f6\n{\n\tDescription: Example\n"
                               "\tFEN: 8/8/8/4k3/8/8/8/3QK3\n\tAnswer:  Qd1-d8\n}\n";

TEST(ProblemWriter, CanonicalTextIsWrittenAsItWasRead) { EXPECT_EQ(Rewritten(kCanonical), kCanonical); }

TEST(ProblemWriter, ProblemsStandInTheOrderOfTheirNumbers) {
    const std::string body(kPlainBody);
    EXPECT_EQ(Rewritten("9 #2\n" + body + "3 s#4\n" + body + "7\n" + body),
              "UTF-8\n\n\n3 s#4\n" + body + "\n7 \n" + body + "\n9 #2\n" + body);
    EXPECT_EQ(FormatProblems({}, true), "UTF-8\n\n");
}

TEST(ProblemWriter, AProblemOfAnotherKindHasNoHeader) {
    TProblemMap library = ReadLibrary("1 #2 NoMirror\n" + std::string(kPlainBody));
    library.at(1)->kind = kHelpmate;
    EXPECT_EQ(FormatProblems(library, true), "UTF-8\n\n\n NoMirror\n" + std::string(kPlainBody));
}

TEST(ProblemWriter, OptionsHaveOneOrderAndSpelling) {
    EXPECT_EQ(HeaderAfter("1 #2 REQUIRES Qp bruteforce HYBRIDBRUTEFORCE allsolutionsrequiressyzygy requiressyzygy "
                          "safemode threads 3 guicheckbestdefence guicheck usemainvariantassortindications stopon3sol "
                          "stopondual allsolutions mirroronly nomirror ONLYIFAVAIL BB"),
              "1 #2 NoMirror MirrorOnly AllSolutions StopOnDual StopOn3Sol UseMainVariantAsSortIndications GUICHECK "
              "GUICHECKBESTDEFENCE THREADS 3 SAFEMODE RequiresSyzygy AllSolutionsRequiresSyzygy HybridBruteForce "
              "BruteForce Requires BB Requires Qp");
}

TEST(ProblemWriter, TwoWordsOfOneBitAreBothWritten) {
    EXPECT_EQ(HeaderAfter("1 #2 StopOn4Sol"), "1 #2 StopOn4Sol UsePredefinedSettings");
    EXPECT_EQ(HeaderAfter("1 #2 UsePredefinedSettings SafeMode"), "1 #2 StopOn4Sol SAFEMODE UsePredefinedSettings");
}

TEST(ProblemWriter, CountOfTheGuiCheckIsWrittenAboveOne) {
    EXPECT_EQ(HeaderAfter("1 #2 GUICHECK 3"), "1 #2 GUICHECK 3");
    EXPECT_EQ(HeaderAfter("1 #2 GUICHECKBESTDEFENCE 1"), "1 #2 GUICHECKBESTDEFENCE");
    EXPECT_EQ(HeaderAfter("1 #2 GUICHECKBESTDEFENCEANDAUX 2"), "1 #2 GUICHECK 2");
}

TEST(ProblemWriter, LevelsOfThreadsAreLost) {
    EXPECT_EQ(HeaderAfter("1 #2 THREADS 4^2"), "1 #2 THREADS 4");
    EXPECT_EQ(HeaderAfter("1 #2 THREADS 255"), "1 #2");
    EXPECT_EQ(HeaderAfter("1 #2 THREADS 0"), "1 #2 THREADS 0");
}

TEST(ProblemWriter, SomeOptionsAreNotWritten) {
    for (const char* option :
         {"SCHEDULERLEVELS 2", "LICHESSLEVELS 3", "NOGLOBREG", "GLOBREGMB 64", "ALLSOLUTIONSREQUIRES BB",
          "STOPRELAXHEURISTICSONFIRSTSOLUTION", "SH_SEASNAKE OFF", "SH_DONTLETFIGUREUNBLOCK(a7)"})
        EXPECT_EQ(HeaderAfter("1 #2 " + std::string(option)), "1 #2") << option;
}

TEST(ProblemWriter, DefaultClausesBecomeOptionsOfTheirProblems) {
    EXPECT_EQ(
        Rewritten("//!default #3 AllSolutions\n1 #3\n" + std::string(kPlainBody) + "2 #2\n" + std::string(kPlainBody)),
        "UTF-8\n\n\n1 #3 AllSolutions\n" + std::string(kPlainBody) + "\n2 #2\n" + std::string(kPlainBody));
}

TEST(ProblemWriter, AProblemWithoutAStipulationKeepsTwoBlanksBeforeItsOptions) {
    EXPECT_EQ(HeaderAfter("7 NoMirror"), "7  NoMirror");
}

TEST(ProblemWriter, BodiesHaveOneForm) {
    EXPECT_EQ(BodyAfter("D:  free text \nWHITE: Ke1, Qd1 BLACK: Ke5, a7"),
              "\tDescription: free text\n\tFEN: 8/p7/8/4k3/8/8/8/3QK3\n");
    EXPECT_EQ(BodyAfter("W: Ke1 B: Ke8 A: Ke1-e2 Ke1-d1"), "\tFEN: 4k3/8/8/8/8/8/8/4K3\n\tAnswer:  Ke1-e2,  Ke1-d1\n");
    EXPECT_EQ(BodyAfter("W: Ke1 B: Ke8 Solution:"), "\tFEN: 4k3/8/8/8/8/8/8/4K3\n\tAnswer: \n");
    EXPECT_EQ(BodyAfter("W: Ke1, Ra1, Rh1, a7 B: Ke8, Rb8 Answer: 0-0-0, 0-0, a7:b8S, a7-a8"),
              "\tFEN: 1r2k3/P7/8/8/8/8/8/R3K2R\n\tAnswer:  0-0-0,  0-0,  a7:b8N,  a7-a8\n");
}

TEST(ProblemWriter, ExpectedWhiteMovesAreNotWritten) {
    EXPECT_EQ(BodyAfter("W: Ke1 B: Ke8 SWM: Ke1-e2"), "\tFEN: 4k3/8/8/8/8/8/8/4K3\n");
    const auto problem = ReadOne(Rewritten("1 #2 {W: Ke1 B: Ke8 ExpectedSortWhiteMovesOnly: Ke1-e2}"));
    EXPECT_EQ(problem->flags, 0u);
    EXPECT_TRUE(problem->expectedWhiteMoves.empty());
}

TEST(ProblemWriter, PlayedMovesStandBehindThePosition) {
    EXPECT_EQ(BodyAfter("W: Ke1, Rh1 B: Ke8 Moves: 0-0 Ke8-e7 Rf1-f2", "7"),
              "\tFEN: 4k3/8/8/8/8/8/8/4K2R\n   Moves:     0-0 Ke8-e7 Rf1-f2\n");
}

TEST(ProblemWriter, AnswerAndMovesTogetherCannotBeReadBack) {
    const std::string text = Rewritten("7\n{\nW: Ke1 B: Ke8 Moves: Ke1-e2 Answer: Ke1-e2\n}\n");
    EXPECT_NE(text.find("\tAnswer:  Ke1-e2\n   Moves:     Ke1-e2\n}\n"), std::string::npos);
    EXPECT_EQ(StrictMessage(text), "Invalid correct answer ('from' element): MOVES");
}

TEST(ProblemWriter, VariantsCanGoWithoutTheirComments) {
    const TProblemMap library = ReadLibrary(kCanonical);
    EXPECT_NE(FormatProblems(library, false).find("//!{Main variant} Qd1-d8 Ke5-f5 Qd8-f6\n"), std::string::npos);
}

TEST(ProblemWriter, TheMainVariantHasItsEnglishName) {
    TProblemMap library;
    ReadProblemText(kCanonical, library, [](const ProblemFileError&) {},
                    {.m_language = ELanguage::Polish, .m_log = {}});
    EXPECT_EQ(library.at(117)->variants.count("Wariant główny"), 1u);
    EXPECT_EQ(FormatProblems(library, true), kCanonical);
}

TEST(ProblemWriter, TagsAreWrittenInTheLanguageTheyAreHeldIn) {
    TProblemMap library;
    ReadProblemText("UTF-8\n1 #2\n//#TAGS\n//#ideal mate\n" + std::string(kPlainBody), library,
                    [](const ProblemFileError&) {}, {.m_language = ELanguage::Polish, .m_log = {}});
    EXPECT_NE(FormatProblems(library, true).find("//#mat idealny\n"), std::string::npos);
}

TEST(ProblemWriter, ALegacyFileBecomesUtf8) {
    EXPECT_EQ(Rewritten("1 #2\n{\nDesc: wie\xBF"
                        "a\nW: Ke1 B: Ke8\n}\n"), // windows-1250
              "UTF-8\n\n\n1 #2\n{\n\tDescription: wieża\n\tFEN: 4k3/8/8/8/8/8/8/4K3\n}\n");
}

TEST(ProblemWriter, WhatALineCannotHoldIsLeftOut) {
    TProblemMap library = ReadLibrary(kCanonical);
    ChessProblem& problem = *library.at(117);
    problem.description = "two\nlines\r\n";
    problem.tags = {"a\nb"};
    Variant variant = problem.variants.at("Main variant");
    variant.name = "x}y\n";
    variant.moves[0].comment = "a]b\nc";
    problem.variants = {{variant.name, variant}};
    const auto read = ReadOne(FormatProblems(library, true));
    EXPECT_EQ(read->description, "two lines");
    EXPECT_EQ(read->tags, (std::set<std::string>{"a b"}));
    ASSERT_EQ(read->variants.count("xy "), 1u);
    EXPECT_EQ(read->variants.at("xy ").moves.at(0).comment, "ab c");
    EXPECT_EQ(read->variants.at("xy ").moves.size(), 3u);
}

// ---- round trips

TEST(RoundTrips, WhatIsWrittenIsReadAsTheSame) {
    CRandomLibrary random(19490417);
    for (int i = 0; i < 3'000; ++i) {
        const TProblemMap library = random.Make(1 + random.Below(4));
        const std::string text = FormatProblems(library, true);
        const TReading reading = Read(text);
        ASSERT_EQ(reading.Errors(), std::vector<std::string>()) << text;
        const TProblemMap again = ReadLibrary(text);
        ASSERT_EQ(Description(again), Description(library)) << text;
        ASSERT_EQ(FormatProblems(again, true), text);
    }
}

TEST(RoundTrips, LineEndsOfTheOtherSystemChangeNothing) {
    CRandomLibrary random(5);
    for (int i = 0; i < 300; ++i) {
        const TProblemMap library = random.Make(3);
        std::string text = FormatProblems(library, true);
        for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2))
            text.insert(at, 1, '\r');
        ASSERT_EQ(Description(ReadLibrary(text)), Description(library)) << text;
    }
}

/// Whatever has been read can be written and read again, and from then on stays the same.
TEST(RoundTrips, WritingTwiceChangesNothingMore) {
    const std::string odd = "//!default #2 AllSolutions\n1 #2 THREADS 4^2 SH_KEYLINE(a) GlobRegMB 3 GUICHECK SafeMode\n"
                            "//#TAGS\n//#  spaced  \n//!VARIANTS\n//!{} 0-0x++[a[b]0-0\n//!{m} [] e2-e4\n"
                            "//@SortIndications: ~1. Qd1:d8*++ , 0-0,>e4\n{D : text // and more\nW: Ke1 , d2 B: Ke8 "
                            "A: 0-0, z9-Q7q, Kj1-a1}";
    const std::string once = Rewritten(odd);
    EXPECT_EQ(Rewritten(once), once);
    const auto first = ReadOne(odd), second = ReadOne(once);
    EXPECT_EQ(MovesText(second->answer), MovesText(first->answer));
    EXPECT_EQ(second->tags, first->tags);
    EXPECT_EQ(second->sortIndications, first->sortIndications);
    EXPECT_EQ(second->description, "text // and more");
    EXPECT_EQ(second->variants.size(), 2u);
}

} // namespace
} // namespace quillon
