#include "library/library_check.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "library/problem_reading.h"

namespace quillon {
namespace {

using namespace quillon::testing;
using TLines = std::vector<std::string>;

/// "id finding: text" of everything that is found.
TLines FindingsOn(std::string_view text) {
    const TReading reading = Read(text);
    EXPECT_EQ(reading.Errors(), TLines());
    TLines lines;
    for (const TFinding& finding : CheckProblems(reading.m_problems))
        lines.push_back(std::to_string(finding.m_id) + " " + std::string(FindingName(finding.m_finding)) + ": " +
                        finding.m_text);
    return lines;
}

std::string Problem(const std::string& header, const std::string& fen, const std::string& answer = "") {
    return "\n" + header + "\n{\nFEN: " + fen + "\n" + answer + "\n}\n";
}

const std::string kQueen = "8/8/8/4k3/8/8/8/3QK3";

TEST(LibraryCheck, HasNothingToSayOfSoundProblems) {
    EXPECT_EQ(FindingsOn(Problem("1 #2", kQueen, "Answer: Qd1-d8, Ke1-e2") + Problem("2 #2", "8/8/8/4k3/8/8/8/R3K3")),
              TLines());
}

TEST(LibraryCheck, PositionsThatAreThereTwice) {
    EXPECT_EQ(FindingsOn(Problem("1 #2", kQueen) + Problem("5 #2", kQueen) + Problem("6 s#2", kQueen) +
                         Problem("7 #3", kQueen)),
              (TLines{"5 duplicate: same position as problem 1",
                      "6 same-position: same position as problems 1, 5, which have another stipulation",
                      "7 same-position: same position as problems 1, 5, 6, which have another stipulation"}));
    EXPECT_EQ(FindingsOn(Problem("1 #2", kQueen) + Problem("2 #3", kQueen) + Problem("3 #3", kQueen)),
              (TLines{"2 same-position: same position as problem 1, which has another stipulation",
                      "3 duplicate: same position as problem 2",
                      "3 same-position: same position as problem 1, which has another stipulation"}));
}

TEST(LibraryCheck, ManyThatAreEqualAreNotAllNamed) {
    std::string text;
    for (int id = 1; id <= 12; ++id)
        text += Problem(std::to_string(id) + " #2", kQueen);
    const TLines lines = FindingsOn(text);
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines[9], "11 duplicate: same position as problems 1, 2, 3, 4, 5, 6, 7, 8, 9, 10");
    EXPECT_EQ(lines[10], "12 duplicate: same position as problems 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, ... (11)");
}

TEST(LibraryCheck, TooManyFindingsAreNotAllTold) {
    const auto stalemate = ReadOne(Problem("1 #2", "8/8/8/8/8/1q6/8/K1k5"));
    std::vector<std::unique_ptr<ChessProblem>> problems;
    for (int id = 0; id <= kMostFailures; ++id) {
        problems.push_back(std::make_unique<ChessProblem>());
        problems.back()->id = id;
        problems.back()->originalPosition = std::make_unique<TChessboard>(*stalemate->originalPosition);
    }
    const std::vector<TFinding> findings = CheckProblems(problems);
    ASSERT_EQ(findings.size(), kMostFailures + 1u);
    EXPECT_EQ(FindingName(findings.back().m_finding), "too-many");
    EXPECT_EQ(findings.back().m_text, "More than 20000 findings: the rest is not told.");
}

TEST(LibraryCheck, MirrorTwins) {
    EXPECT_EQ(FindingsOn(Problem("1 #2", kQueen) + Problem("2 #3", "8/8/8/3k4/8/8/8/3KQ3")),
              (TLines{"2 mirror-twin: mirrored position of problem 1"}));
    EXPECT_EQ(FindingsOn(Problem("1 #2", kQueen) + Problem("2 #3", "8/8/8/3k4/8/8/8/3KQ3") +
                         Problem("3 #2", "8/8/8/3k4/8/8/8/3KQ3") + Problem("4 #3", kQueen)),
              (TLines{"2 mirror-twin: mirrored position of problem 1",
                      "3 same-position: same position as problem 2, which has another stipulation",
                      "3 mirror-twin: mirrored position of problem 1",
                      "4 same-position: same position as problem 1, which has another stipulation",
                      "4 mirror-twin: mirrored position of problems 2, 3"}));
    // Castling has no mirror image.
    EXPECT_EQ(FindingsOn(Problem("1 #2", "8/8/8/4k3/8/8/8/4K2R") + Problem("2 #2", "8/8/8/3k4/8/8/8/R2K4")), TLines());
    // A symmetrical position is no twin of itself.
    EXPECT_EQ(FindingsOn(Problem("1 #2", "k7/8/8/8/8/8/8/K7") + Problem("2 #2", "7k/8/8/8/8/8/8/7K")),
              (TLines{"2 mirror-twin: mirrored position of problem 1"}));
}

TEST(LibraryCheck, PositionsThatNoGameCanHave) {
    EXPECT_EQ(FindingsOn(Problem("1 #2", "8/PPPPPPPP/P7/8/4k3/8/8/4K3")),
              (TLines{"1 illegal-position: illegal position: White has more men than a game can give"}));
    EXPECT_EQ(FindingsOn(Problem("1 #2", "nnn1k3/pppppppp/8/8/8/8/8/4K3")),
              (TLines{"1 illegal-position: illegal position: Black has more men than a game can give"}));
    EXPECT_EQ(FindingsOn(Problem("1 #2", "nnn1k3/1ppppppp/8/8/8/8/8/4K3")), TLines());
}

TEST(LibraryCheck, AWhiteSideThatCannotMove) {
    EXPECT_EQ(FindingsOn(Problem("1 #2", "8/8/8/8/8/1q6/8/K1k5")), (TLines{"1 no-move: White has no legal move"}));
}

TEST(LibraryCheck, AnswersThatAreIllegal) {
    EXPECT_EQ(FindingsOn(Problem("1 #2", kQueen, "A: Qd1-d8, Qd1-e3, h2-h9, 0-0")),
              (TLines{"1 illegal-answer: illegal move in the answer: Qd1-e3",
                      "1 illegal-answer: illegal move in the answer: h2-H9",
                      "1 illegal-answer: illegal move in the answer: 0-0"}));
}

TEST(LibraryCheck, Variants) {
    const auto withVariant = [](const std::string& moves) {
        return "1 #2\n//!VARIANTS\n//!{v} " + moves + "\n//!ENDVARIANTS\n" + std::string(kPlainBody);
    };
    EXPECT_EQ(FindingsOn(withVariant("Qd1-d8 Ke5-f5 Qd8-f6")), TLines());
    EXPECT_EQ(FindingsOn(withVariant("Qd1-d8 Ke5-f7 Qd8-f6")),
              (TLines{"1 illegal-variant: Move 2 in the stored variant is invalid: \"v\""}));
    EXPECT_EQ(FindingsOn(withVariant("Qd1-d8 Ke5-f5 Qd8-f6 Kf5-f7")),
              (TLines{"1 illegal-variant: Move 4 in the stored variant is invalid: \"v\"",
                      "1 variant-too-long: The stored variant is too long: 2 moves: \"v\""}));
    EXPECT_EQ(FindingsOn(withVariant("Qd1-d8 Ke5-f5 Ke1-e2 Kf5-g4 Ke2-e3")),
              (TLines{"1 variant-too-long: The stored variant is too long: 3 moves: \"v\""}));
}

} // namespace
} // namespace quillon
