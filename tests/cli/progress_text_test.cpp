// How far a solve has come, and the line that tells it.

#include "cli/progress_text.h"

#include <gtest/gtest.h>
#include <thread>

#include "core/fen.h"
#include "heuristics/heuristic_set.h"
#include "support/reference_chess.h"

namespace quillon {
namespace {

constexpr const char* kManyKeys = "7k/8/6K1/8/8/8/8/1RRQRR2";
constexpr const char* kEndless = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";

class CNoQuestions : public INotifier {
  public:
    void Inform(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view) override { return true; }
};

TSolveRequest Request(const char* placement, int nMoves) {
    TSolveRequest request;
    request.m_board = ChessboardFromFEN(placement);
    request.m_nStipulation = nMoves;
    request.m_mode = ESolveMode::AllSolutions;
    return request;
}

int LegalMoves(const char* placement) {
    return static_cast<int>(reference::LegalMoves(reference::ProblemFromFen(placement)).size());
}

/// The progress at the moment of each key.
std::vector<TProgress> ProgressAtKeys(const TSolveRequest& request) {
    CSolve solve(request);
    std::vector<TProgress> seen;
    solve.SetSink([&](const TMove&, std::string_view, long, std::string_view pass) {
        seen.push_back(ReadProgress(solve, PliesOf(request.m_nStipulation), 1.0));
        EXPECT_EQ(seen.back().m_pass, pass);
    });
    CNoQuestions notifier;
    (void)solve.StartSolving(notifier);
    return seen;
}

TEST(ShortNumber, KeepsThreeDigitsOrMore) {
    const struct {
        std::uint64_t m_nNumber;
        const char* m_text;
    } rows[] = {{0, "0"},
                {999, "999"},
                {1000, "1.00k"},
                {9994, "9.99k"},
                {9995, "10.0k"},
                {99949, "99.9k"},
                {99950, "100k"},
                {999499, "999k"},
                {999500, "1.00M"},
                {123456789, "123M"},
                {1234567890, "1.23G"},
                {45600000000000, "45.6T"},
                {~std::uint64_t{0}, "18.4E"}};
    for (const auto& row : rows)
        EXPECT_EQ(ShortNumber(row.m_nNumber), row.m_text);
}

TEST(ProgressText, TellsPassMovePartAndSpeed) {
    TProgress progress{"1b", 3, 12, 0.2345, 12400000, 8.0, {}};
    EXPECT_EQ(ProgressText(progress), "Pass 1b, move 3 of 12, 23.4%, 8.0 s, 12.4M nodes, 1.55M/s");
    progress.m_register.m_bInUse = true;
    progress.m_register.m_nElements = 1200000;
    progress.m_register.m_nMegabytes = 130;
    EXPECT_EQ(ProgressText(progress),
              "Pass 1b, move 3 of 12, 23.4%, 8.0 s, 12.4M nodes, 1.55M/s, register 1.20M 130 MB");
}

TEST(ProgressText, BetweenPassesThereIsNoMove) {
    EXPECT_EQ(ProgressText({"1b", 20, 20, 1, 5, 2, {}, true}), "Best-first proof, 2.0 s");
    EXPECT_EQ(ProgressText({"", 0, 0, 0, 0, 0.5, {}, true}), "Best-first proof, 0.5 s");
}

TEST(ProgressText, SurvivesTheFirstMoment) {
    EXPECT_EQ(ProgressText({}), "Initial analysis, 0.0 s");
    EXPECT_EQ(ProgressText({"1", 1, 20, 0, 5, 0, {}}), "Pass 1, move 1 of 20, 0.0%, 0.0 s, 5 nodes, 0/s");
}

TEST(ReadProgress, BeforeTheStartThereIsNoPass) {
    const CSolve solve(Request(kManyKeys, 1));
    const TProgress progress = ReadProgress(solve, 1, 0.5);
    EXPECT_EQ(progress.m_pass, "");
    EXPECT_EQ(progress.m_nMoves, 0);
    EXPECT_EQ(progress.m_part, 0);
    EXPECT_EQ(progress.m_seconds, 0.5);
    EXPECT_FALSE(progress.m_register.m_bInUse);
}

TEST(ReadProgress, CountsTheMovesOfTheRoot) {
    const int count = LegalMoves(kManyKeys);
    const std::vector<TProgress> seen = ProgressAtKeys(Request(kManyKeys, 1));
    ASSERT_GT(seen.size(), 4u);
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].m_pass, "2");
        EXPECT_EQ(seen[i].m_nMoves, count);
        EXPECT_DOUBLE_EQ(seen[i].m_part, (seen[i].m_nMove - 1.0) / count) << "nothing below a mate in one";
        EXPECT_TRUE(i == 0 || seen[i].m_nMove > seen[i - 1].m_nMove);
    }
}

/// The second phase leaves out the key that the first one has found.
TEST(ReadProgress, CountsOnlyWhatThePassHasToDo) {
    TSolveRequest request = Request(kManyKeys, 1);
    request.m_bHybrid = true;
    request.m_heuristics.emplace().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    const std::vector<TProgress> seen = ProgressAtKeys(request);
    ASSERT_GT(seen.size(), 4u);
    EXPECT_EQ(seen.front().m_pass, "1");
    EXPECT_EQ(seen.front().m_nMoves, LegalMoves(kManyKeys));
    EXPECT_EQ(seen.back().m_pass, "2");
    EXPECT_EQ(seen.back().m_nMoves, LegalMoves(kManyKeys) - 1);
}

// ---- the part that is done

class DonePartOf : public ::testing::Test {
  protected:
    void Show(int nPly, int nIndex, int nCount) {
        const auto slot = static_cast<std::size_t>(nPly);
        m_context->m_moveIndexShown[slot] = static_cast<std::uint8_t>(nIndex);
        m_context->m_moveCount[slot] = static_cast<std::uint8_t>(nCount);
    }
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
};

TEST_F(DonePartOf, TheRootAlone) {
    EXPECT_EQ(DonePart(*m_context, 9), 0.0);
    Show(9, 3, 12);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12);
}

TEST_F(DonePartOf, RepliesDivideTheShareOfTheirMove) {
    Show(9, 3, 12);
    Show(8, 1, 4);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48);
    Show(7, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48 + 1.0 / 96);
    Show(6, 4, 5);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48 + 1.0 / 96 + 4.0 / 480);
    Show(5, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12 + 1.0 / 48 + 1.0 / 96 + 4.0 / 480) << "four plies are enough";
}

TEST_F(DonePartOf, APlyThatShowsNothingEndsIt) {
    Show(9, 3, 12);
    Show(7, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 3.0 / 12);
}

TEST_F(DonePartOf, AnyValueIsSurvived) {
    Show(9, 12, 12);
    EXPECT_EQ(DonePart(*m_context, 9), 0.0);
    Show(9, 11, 12);
    Show(8, 255, 254);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 9), 11.0 / 12);
    Show(0, 1, 2);
    EXPECT_DOUBLE_EQ(DonePart(*m_context, 0), 0.5) << "no ply below";
    EXPECT_EQ(DonePart(*m_context, kStackSlots), 0.0);
}

/// Read from another thread while the solve runs, as the command line does it.
TEST(ReadProgress, AnyMomentGivesAPart) {
    CSolve solve(Request(kEndless, 20));
    CNoQuestions notifier;
    std::thread run([&] { (void)solve.StartSolving(notifier); });
    std::uint64_t nodes = 0;
    for (int i = 0; i < 100; ++i) {
        const TProgress progress = ReadProgress(solve, PliesOf(20), 0.01 * i);
        EXPECT_GE(progress.m_part, 0.0);
        EXPECT_LT(progress.m_part, 1.0);
        EXPECT_LE(progress.m_nMove, progress.m_nMoves);
        EXPECT_GE(progress.m_nPositions, nodes);
        nodes = progress.m_nPositions;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    solve.RequestStop();
    run.join();
    EXPECT_GT(nodes, 0u);
}

} // namespace
} // namespace quillon
