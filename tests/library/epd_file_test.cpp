#include "library/epd_file.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/search_context.h"
#include "library/problem_reading.h"
#include "library/random_library.h"
#include "library/text_decoding.h"

namespace quillon {
namespace {

using namespace quillon::testing;

using TIds = std::vector<int>;
using TLines = std::vector<std::string>;

constexpr const char* kPosition = "8/8/8/4k3/8/8/8/3QK3 w - - ";

TReading ReadEpd(std::string_view text) {
    TReading reading;
    ReadEpdProblems(text, Problems(reading), Errors(reading));
    return reading;
}

/// The problem of a position with these operations.
std::unique_ptr<ChessProblem> ReadOperations(std::string_view operations) {
    TReading reading = ReadEpd(kPosition + std::string(operations));
    EXPECT_EQ(reading.Errors(), TLines()) << operations;
    return reading.m_problems.empty() ? std::make_unique<ChessProblem>() : std::move(reading.m_problems.front());
}

std::string ErrorOf(std::string_view line) {
    const TReading reading = ReadEpd(line);
    EXPECT_TRUE(reading.m_problems.empty()) << line;
    return reading.m_errors.size() == 1 ? reading.Errors().front() : "not one failure";
}

std::string OperationError(std::string_view operations) { return ErrorOf(kPosition + std::string(operations)); }

TEST(EpdFile, ReadsPositionAndStipulation) {
    const auto problem = ReadOperations("bm #3;");
    EXPECT_EQ(problem->id, 1);
    EXPECT_EQ(problem->line, 1);
    EXPECT_EQ(problem->kind, kDirectMate);
    EXPECT_EQ(problem->plies, 5);
    EXPECT_EQ(problem->flags, 0u);
    EXPECT_EQ(problem->description, "");
    EXPECT_EQ(problem->originalPosition->m_board[kD1], kWhiteQueen);
    EXPECT_EQ(problem->originalPosition->m_nMoves, 5);
}

TEST(EpdFile, StipulationOfEitherOpcode) {
    for (const char* operations : {"bm #4;", "dm 4;", "dm 4", "bm #4", "dm 4; bm Qd8;", "bm Qd8 Qd7; dm 4;",
                                   "dm 4; bm #4;", ";; dm 4 ;;", "acd 3; ce 32763; dm 4; pv Qd8 Ke6;", "\tdm\t4\t;\r"})
        EXPECT_EQ(ReadOperations(operations)->plies, 7) << operations;
}

TEST(EpdFile, CountersOfAFullFenMayStandBetween) {
    EXPECT_EQ(ReadOperations("0 1 bm #4;")->plies, 7);
    EXPECT_EQ(ReadOperations("12 dm 4;")->plies, 7);
}

TEST(EpdFile, IdIsTheDescription) {
    EXPECT_EQ(ReadOperations("bm #4; id \"K. Author; 1920 // x\";")->description, "K. Author; 1920 // x");
    EXPECT_EQ(ReadOperations("id \" a \"; bm #4;")->description, "a");
    EXPECT_EQ(ReadOperations("id plain; bm #4;")->description, "plain");
    EXPECT_EQ(ReadOperations("id \"\"; bm #4;")->description, "");
    EXPECT_EQ(ReadOperations("id; bm #4;")->description, "");
}

TEST(EpdFile, DescriptionIsUtf8OrLegacyText) {
    ASSERT_TRUE(SetLegacyCodePage("windows-1250"));
    EXPECT_EQ(ReadOperations("id \"\xC5\x82\"; dm 2;")->description, "\xC5\x82");
    EXPECT_EQ(ReadOperations("id \"\xB3\"; dm 2;")->description, "\xC5\x82");
    ASSERT_TRUE(SetLegacyCodePage(""));
}

TEST(EpdFile, FieldsOfThePosition) {
    const std::string placement = "r3k2r/8/8/8/8/8/8/R3K2R ";
    for (const char* fields : {"w KQkq - dm 2;", "w Kq e6 dm 2;", "w - E3 dm 2;"})
        EXPECT_EQ(ReadEpd(placement + fields).Errors(), TLines()) << fields;
    EXPECT_EQ(ErrorOf(placement + "b KQkq - dm 2;"), "1:25 Black is to move; a problem starts with White to move.");
    EXPECT_EQ(ErrorOf(placement + "x KQkq - dm 2;"), "1:25 Side to move (w or b) expected. Found: x");
    EXPECT_EQ(ErrorOf(placement), "1:25 Side to move (w or b) expected. Found: ");
    EXPECT_EQ(ErrorOf(placement + "bm #2;"), "1:25 Side to move (w or b) expected. Found: bm");
    EXPECT_EQ(ErrorOf(placement + "w bm #2;"), "1:27 Castling field expected. Found: bm");
    EXPECT_EQ(ErrorOf(placement + "w"), "1:26 Castling field expected. Found: ");
    EXPECT_EQ(ErrorOf(placement + "w - bm #2;"), "1:29 En passant field expected. Found: bm");
    EXPECT_EQ(ErrorOf(placement + "w - e4 dm 2;"), "1:29 En passant field expected. Found: e4");
}

TEST(EpdFile, BadPlacements) {
    for (const char* placement : {"8/8/8/4k3/8/8/8", "8/8/8/4k3/8/8/8/3QK4", "8/8/8/4k3/8/8/8/3XK3", "hello"}) {
        const std::string error = ErrorOf(std::string(placement) + " w - - dm 2;");
        EXPECT_EQ(error.substr(0, 4), "1:1 ") << placement;
        EXPECT_GT(error.size(), 4u) << placement;
    }
}

TEST(EpdFile, PositionIsValidated) {
    EXPECT_EQ(ErrorOf("8/8/8/4k3/8/8/8/3Q4 w - - dm 2;"), "1:1 Illegal number of kings.");
    EXPECT_EQ(ErrorOf("  8/8/8/4k3/8/8/8/3KQ3 w - - dm 2;"), "1:3 Black is in check with White to move.");
    EXPECT_EQ(ErrorOf("8/8/8/8/8/8/4k3/3QK3 w - - dm 2;"), "1:1 Both kings attacked.");
    EXPECT_EQ(ErrorOf("8/8/8/4k3/8/8/8/P3K3 w - - dm 2;"),
              "1:1 Pawns cannot occupy 1st nor 8th line of the chessboard.");
}

TEST(EpdFile, Stipulations) {
    EXPECT_EQ(OperationError(""), "1:28 no stipulation (bm #N or dm N)");
    EXPECT_EQ(OperationError("bm Qd8;"), "1:35 no stipulation (bm #N or dm N)");
    EXPECT_EQ(OperationError("bm #0;"), "1:28 Stipulation out of range (1 to 299 moves): 0");
    EXPECT_EQ(OperationError("dm 300;"), "1:28 Stipulation out of range (1 to 299 moves): 300");
    EXPECT_EQ(OperationError("dm -3;"), "1:28 Invalid stipulation: -3");
    EXPECT_EQ(OperationError("dm;"), "1:28 Invalid stipulation: ");
    EXPECT_EQ(OperationError("bm #3x;"), "1:28 Invalid stipulation: 3x");
    EXPECT_EQ(OperationError("bm #3 id \"x\";"), "1:28 Semicolon expected after the stipulation. Found: id");
    EXPECT_EQ(OperationError("bm #3; dm 4;"), "1:35 Two stipulations: 3 and 4");
    EXPECT_EQ(ReadOperations("dm 299;")->plies, 597);
}

TEST(EpdFile, QuotesMustBeClosed) { EXPECT_EQ(OperationError("bm #3; id \"x;"), "1:38 Closing quote expected."); }

TEST(EpdFile, SkipsBlankLinesAndComments) {
    const TReading reading =
        ReadEpd("\xEF\xBB\xBF# comment\n\n   \r\n // another\n" + std::string(kPosition) + "dm 2;\r\n\n#\n");
    EXPECT_EQ(reading.Errors(), TLines());
    ASSERT_EQ(reading.Ids(), (TIds{1}));
    EXPECT_EQ(reading.m_problems[0]->line, 5);
}

TEST(EpdFile, APercentSignIsNoComment) { EXPECT_EQ(ErrorOf("% x").substr(0, 4), "1:1 "); }

TEST(EpdFile, GoesOnBehindABadLineAndNumbersItToo) {
    const std::string good = std::string(kPosition) + "dm 2;\n";
    const TReading reading = ReadEpd(good + "\n" + kPosition + "\n" + good + "rubbish\n" + good);
    EXPECT_EQ(reading.Ids(), (TIds{1, 3, 5}));
    ASSERT_EQ(reading.m_errors.size(), 2u);
    EXPECT_EQ(reading.m_errors[0].Line(), 3);
    EXPECT_EQ(reading.m_errors[0].ProblemId(), 2);
    EXPECT_EQ(reading.m_errors[1].Line(), 5);
    EXPECT_EQ(reading.m_errors[1].ProblemId(), 4);
}

TEST(EpdFile, NothingIsNothing) {
    EXPECT_TRUE(ReadEpd("").Ids().empty());
    EXPECT_TRUE(ReadEpd("\n\n").Errors().empty());
}

TEST(EpdFile, TellsWhatLooksLikeALine) {
    EXPECT_TRUE(LooksLikeEpd("8/8/8/4k3/8/8/8/3QK3 w - - dm 2;"));
    EXPECT_TRUE(LooksLikeEpd("  8/8/8/4k3/8/8/8/3QK3"));
    EXPECT_FALSE(LooksLikeEpd("// 8/8"));
    EXPECT_FALSE(LooksLikeEpd("117 #5"));
    EXPECT_FALSE(LooksLikeEpd("\tFEN: 8/8/8/4k3/8/8/8/3QK3"));
    EXPECT_FALSE(LooksLikeEpd(""));
}

TEST(EpdText, HoldsPositionStipulationAndDescription) {
    const auto problem = ReadOne("UTF-8 117 #5\n{\nDesc: A \"quoted\" one\nFEN: r3k3/8/8/8/8/8/8/R3K2R\n}\n");
    EXPECT_EQ(EpdText(*problem), "r3k3/8/8/8/8/8/8/R3K2R w KQq - bm #5; id \"A 'quoted' one\"; c0 \"117\";\n");
    EXPECT_EQ(EpdText(*ReadOne("2 #1\n" + std::string(kPlainBody))), "8/8/8/4k3/8/8/8/3QK3 w - - bm #1; c0 \"2\";\n");
}

TEST(EpdText, IsReadAsTheSameProblem) {
    CRandomLibrary random(3);
    for (int i = 0; i < 500; ++i) {
        auto problem = random.MakeProblem();
        SetStipulation(*problem, kDirectMate, 1 + i % kMaxStipulation);
        TReading reading;
        ReadEpdProblems(EpdText(*problem), Problems(reading), Errors(reading));
        ASSERT_EQ(reading.Errors(), std::vector<std::string>());
        ASSERT_EQ(reading.m_problems.size(), 1u);
        EXPECT_EQ(reading.m_problems[0]->plies, problem->plies);
        EXPECT_EQ(reading.m_problems[0]->originalPosition->m_board, problem->originalPosition->m_board);
        std::string description = problem->description;
        std::replace(description.begin(), description.end(), '"', '\'');
        EXPECT_EQ(reading.m_problems[0]->description, description);
    }
}

} // namespace
} // namespace quillon
