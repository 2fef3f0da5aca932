// Small files, damaged in many ways: whatever the bytes are, the readers come to an end, and what they say has a place.

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "library/epd_file.h"
#include "library/problem_reading.h"
#include "library/text_decoding.h"

namespace quillon {
namespace {

using namespace quillon::testing;

const std::string kLibrary = "UTF-8\n//!default #2 AllSolutions\n"
                             "1 #2 THREADS 4^2 GUICHECK 3 SafeMode\n//#TAGS\n//#sea snake\n"
                             "//!VARIANTS\n//!{Main variant} Qd1-d8 Ke5-f5[only] Qd8-f6\n//!ENDVARIANTS\n"
                             "//@SortIndications: 1.Qd1-d8; ~3.Qd8:f6+\n{\n\tDescription: Z\xC5\x82oty {x}\n"
                             "\tFEN: 8/8/8/4k3/8/8/8/3QK3\n\tAnswer:  Qd1-d8, 0-0\n}\n"
                             "/* between */\n2 s#3 Requires RRk // why\n{\nW: Ke1, Qd1\nB: Ke5, a7\nSWM: a7-a8Q\n}\n"
                             "3\n{ D: x\nFEN: 8/8/8/4k3/8/8/8/3QK3 }\n";

const std::string kEpd = "# a comment\n8/8/8/4k3/8/8/8/3QK3 w - - bm #3; id \"Z\xC5\x82oty; 1920\";\n"
                         "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 dm 2;\n";

/// Bytes that mean something to a reader.
constexpr std::string_view kTelling = "{}()/*#:;,-0129sKQ\"\n\r\t \xA0\xC5!@^_";

std::string Mutated(std::string text, std::mt19937& random) {
    const auto below = [&random](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    };
    for (std::size_t nChanges = 1 + below(4); nChanges > 0 && !text.empty(); --nChanges) {
        const std::size_t at = below(text.size());
        const std::size_t length = below(std::min<std::size_t>(text.size() - at, 40)) + 1;
        switch (below(6)) {
        case 0:
            text[at] = static_cast<char>(below(256));
            break;
        case 1:
            text[at] = kTelling[below(kTelling.size())];
            break;
        case 2:
            text.insert(at, 1, kTelling[below(kTelling.size())]);
            break;
        case 3:
            text.erase(at, length);
            break;
        case 4:
            text.insert(below(text.size()), text.substr(at, length));
            break;
        default:
            text.resize(at);
            break;
        }
    }
    return text;
}

/// Number of lines of a text, the last one counting even without its line feed.
int LinesOf(std::string_view text) { return 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n')); }

void ExpectSound(const TReading& reading, const std::string& text) {
    for (const ProblemFileError& error : reading.m_errors) {
        EXPECT_GE(error.Line(), 1);
        EXPECT_LE(error.Line(), LinesOf(text));
        EXPECT_GE(error.Column(), 1);
        EXPECT_LE(static_cast<std::size_t>(error.Column()), text.size() + 1);
        EXPECT_STRNE(error.what(), "");
    }
    for (const auto& problem : reading.m_problems) {
        ASSERT_NE(problem->originalPosition, nullptr);
        EXPECT_EQ(problem->originalPosition->m_nMoves, problem->plies);
        EXPECT_EQ(problem->originalPosition->m_blackChecker, kNoChecker);
        EXPECT_TRUE(IsValidUtf8(problem->description));
        EXPECT_GE(problem->line, 1);
    }
}

TEST(Mutations, TheFilesAreSoundBeforeTheyAreDamaged) {
    EXPECT_TRUE(Read(kLibrary).Errors().empty());
    EXPECT_EQ(Read(kLibrary).Ids(), (std::vector<int>{1, 2, 3}));
    TReading epd;
    ReadEpdProblems(kEpd, Problems(epd), Errors(epd));
    EXPECT_TRUE(epd.Errors().empty());
    EXPECT_EQ(epd.Ids().size(), 2u);
}

TEST(Mutations, OfALibraryAreReadOrRefusedWithAPlace) {
    std::mt19937 random(20240229);
    std::size_t nRefused = 0;
    std::size_t nRead = 0;
    for (int i = 0; i < 20'000; ++i) {
        const std::string text = Mutated(kLibrary, random);
        const TReading reading = Read(text);
        ExpectSound(reading, text);
        if (::testing::Test::HasFailure())
            FAIL() << text;
        // A failure costs at least one lexeme, so there are no more of them than bytes.
        ASSERT_LE(reading.m_errors.size() + reading.m_problems.size(), text.size());
        nRefused += reading.m_errors.size();
        nRead += reading.m_problems.size();
    }
    EXPECT_GT(nRefused, 5'000u);
    EXPECT_GT(nRead, 20'000u);
}

TEST(Mutations, StrictAndTolerantReadingStumbleOverTheSameFirstFailure) {
    std::mt19937 random(7);
    for (int i = 0; i < 3'000; ++i) {
        const std::string text = Mutated(kLibrary, random);
        const TReading reading = Read(text);
        const auto first = std::find_if(reading.m_errors.begin(), reading.m_errors.end(),
                                        [](const ProblemFileError& error) { return !error.IsWarning(); });
        const std::string strict = StrictError(text);
        ASSERT_EQ(strict.empty(), first == reading.m_errors.end()) << text;
        if (!strict.empty()) {
            ASSERT_EQ(strict, reading.Errors()[static_cast<std::size_t>(first - reading.m_errors.begin())]) << text;
        }
    }
}

TEST(Mutations, OfAnEpdFileAreReadOrRefusedWithAPlace) {
    std::mt19937 random(1);
    std::size_t nRefused = 0;
    std::size_t nRead = 0;
    for (int i = 0; i < 20'000; ++i) {
        const std::string text = Mutated(kEpd, random);
        TReading reading;
        ReadEpdProblems(text, Problems(reading), Errors(reading));
        ExpectSound(reading, text);
        if (::testing::Test::HasFailure())
            FAIL() << text;
        nRefused += reading.m_errors.size();
        nRead += reading.m_problems.size();
    }
    EXPECT_GT(nRefused, 5'000u);
    EXPECT_GT(nRead, 10'000u);
}

/// Cut anywhere, a file still yields every problem that stands whole before the cut.
TEST(Mutations, ACutFileKeepsTheProblemsBeforeTheCut) {
    for (std::size_t nLength = 0; nLength <= kLibrary.size(); ++nLength) {
        const std::string text = kLibrary.substr(0, nLength);
        const TReading reading = Read(text);
        ExpectSound(reading, text);
        // Each of the three bodies ends with the bracket of a line of its own, or of the last line.
        const std::size_t ends[] = {kLibrary.find("\n}\n") + 2, kLibrary.find("\n}\n", kLibrary.find("2 s#3")) + 2,
                                    kLibrary.rfind('}') + 1};
        const auto nWhole = static_cast<std::size_t>(
            std::count_if(std::begin(ends), std::end(ends), [&](std::size_t end) { return end <= nLength; }));
        EXPECT_EQ(reading.m_problems.size(), nWhole) << text;
    }
}

} // namespace
} // namespace quillon
