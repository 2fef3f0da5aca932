// The register of one analysis: final results, doubt by heuristics, users, clearing, exchange.

#include "tempregister/aggregated_register.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "core/fen.h"
#include "platform/sleep.h"
#include "tempregister/chess_boards.h"
#include "tempregister/failing_allocation.h"
#include "tempregister/purge_progress.h"
#include "tempregister/register_folder.h"

namespace quillon::test {
namespace {

constexpr std::uint64_t kBudget = 16 << 20;
constexpr std::uint32_t kBuckets = 256;
constexpr std::uint32_t kHeuristics = 0x40;
constexpr std::uint32_t kParams = 9;
constexpr const char* kFEN = "8/8/8/8/7Q/n1K5/8/k7";

class AggregatedRegister : public testing::Test {
  protected:
    AggregatedRegister() {
        m_known.m_hooks.m_showMessage = [this](std::string_view text, std::string_view title) {
            m_shown += std::string(title) + ": " + std::string(text) + "|";
        };
    }

    void Insert(int nMoves, bool bMate) { m_known.Insert(static_cast<std::uint16_t>(nMoves), m_position, bMate); }
    void Doubt(int nMoves, std::uint32_t heuristics = kHeuristics) {
        m_known.InsertDoubtful(static_cast<std::uint16_t>(nMoves), m_position.m_board, heuristics, kParams);
    }
    [[nodiscard]] int Find(int nMoves, std::uint32_t heuristics = kHeuristics) {
        return m_known.Find(nMoves, m_position.m_board, heuristics, kParams);
    }
    void DoubtMany(std::size_t count, std::uint32_t heuristics) {
        for (const TBoardBytes& board : DifferentBoards(count, 3))
            m_known.InsertDoubtful(5, board, heuristics, kParams);
    }

    TAggregatedTemporaryChessboardRegister m_known{kBudget, kBuckets};
    TChessboard m_position = [] {
        TChessboard position = ChessboardFromFEN(kFEN);
        position.m_byPass = 1;
        return position;
    }();
    std::string m_shown;
};

TEST_F(AggregatedRegister, CountsWhatItHolds) {
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    Insert(5, true);
    Insert(3, false);
    EXPECT_EQ(m_known.GetElementsCount(), 1u);
    Doubt(7);
    DoubtMany(10, 1);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 11u);
    EXPECT_EQ(m_known.GetElementsCount(), 12u);
    EXPECT_EQ(m_known.Statistics().m_nElements, 12u);
    EXPECT_EQ(m_known.Statistics().m_nDoubtfulElements, 11u);
    EXPECT_EQ(m_known.Statistics().m_nInserts, 13u);
    EXPECT_GT(m_known.Statistics().m_nBytes, 3 * kBuckets * sizeof(std::uint64_t));
}

TEST_F(AggregatedRegister, CountsLookUps) {
    Insert(5, true);
    Doubt(3);
    (void)Find(5);
    (void)Find(3);
    (void)Find(1, 0);
    const TRegisterStatistics statistics = m_known.Statistics();
    EXPECT_EQ(statistics.m_nLookups, 3u);
    EXPECT_EQ(statistics.m_nHits, 2u);
}

TEST_F(AggregatedRegister, WithoutARegisterOfTheHeuristicsTheFinalTableAnswers) {
    Insert(9, true);
    Doubt(5, 1);
    EXPECT_EQ(Find(9, 2), 1);
    EXPECT_EQ(Find(5, 2), -2);
    EXPECT_EQ(Find(5, 1), -1);
    EXPECT_EQ(m_known.FindNotDoubtful(3, 5, m_position.m_board, 2, kParams), -1);
}

TEST_F(AggregatedRegister, FindsTheShortestLengthOfAMate) {
    EXPECT_EQ(m_known.FindMateLength(9, m_position.m_board, 0, 0), -2);
    Insert(5, true);
    EXPECT_EQ(m_known.FindMateLength(13, m_position.m_board, 0, 0), 5);
    EXPECT_EQ(m_known.FindMateLength(5, m_position.m_board, 0, 0), 5);
    EXPECT_EQ(m_known.FindMateLength(3, m_position.m_board, 0, 0), -2);
    Insert(1, true);
    EXPECT_EQ(m_known.FindMateLength(7, m_position.m_board, 0, 0), 1);
}

TEST_F(AggregatedRegister, FindMateLengthPassesOtherAnswersOn) {
    Insert(5, false);
    EXPECT_EQ(m_known.FindMateLength(5, m_position.m_board, 0, 0), 0);
    Doubt(7);
    EXPECT_EQ(m_known.FindMateLength(7, m_position.m_board, kHeuristics, kParams), -1);
}

TEST_F(AggregatedRegister, NotDoubtfulIsToldBesideDoubt) {
    m_known.InsertDoubtfulState(9, m_position.m_board, kHeuristics, kParams, false);
    EXPECT_EQ(Find(9), -2);
    EXPECT_EQ(m_known.FindNotDoubtful(5, 9, m_position.m_board, kHeuristics, kParams), 1);
    EXPECT_EQ(m_known.FindNotDoubtful(5, 11, m_position.m_board, kHeuristics, kParams), 0);
    m_known.InsertDoubtfulState(5, m_position.m_board, kHeuristics, kParams, true);
    EXPECT_EQ(Find(5), -1);
    EXPECT_EQ(m_known.FindNotDoubtful(5, 9, m_position.m_board, kHeuristics, kParams), 0);
    TBoardBytes other = m_position.m_board;
    other[kE1] = kWhitePawn;
    EXPECT_EQ(m_known.FindNotDoubtful(5, 9, other, kHeuristics, kParams), -1);
}

// ---- contradictions

TEST_F(AggregatedRegister, InOrdinaryPlayTheMateWinsSilently) {
    Insert(3, true);
    Insert(5, false);
    EXPECT_EQ(Find(3), 1);
    EXPECT_EQ(Find(1), 0);
    EXPECT_EQ(m_shown, "");
}

TEST_F(AggregatedRegister, InThePassWithoutHeuristicsAContradictionIsShown) {
    m_position.m_byPass = 2;
    Insert(3, true);
    Insert(5, false);
    EXPECT_EQ(m_shown, "Error: " + std::string(kFEN) + "\n\nnMoves=5, bThereIsMate=0\nMovesMate=3, MovesNoMate=5|");
    EXPECT_EQ(Find(3), 0);
    EXPECT_EQ(Find(7), 1);
}

TEST_F(AggregatedRegister, ASideAnalysisShowsItInAnyPass) {
    m_known.bSideAnalysis = true;
    Insert(5, false);
    Insert(3, true);
    EXPECT_EQ(m_shown, "Error: " + std::string(kFEN) + "\n\nnMoves=3, bThereIsMate=1\nMovesMate=3, MovesNoMate=5|");
}

TEST_F(AggregatedRegister, NothingIsShownWithTheCheckOff) {
    const CRegisterFolder folder;
    RegisterOptions().m_bCheckTempRegCoherency = false;
    m_position.m_byPass = 2;
    Insert(3, true);
    Insert(5, false);
    EXPECT_EQ(m_shown, "");
}

TEST_F(AggregatedRegister, WhatIsLoadedIsRepairedInAnyPass) {
    m_known.bSideAnalysis = true;
    m_known.InsertLoaded(3, m_position.m_board, true);
    m_known.InsertLoaded(5, m_position.m_board, false);
    EXPECT_EQ(m_shown, "");
    EXPECT_EQ(Find(3), 1);
}

// ---- users of doubt

TEST_F(AggregatedRegister, DoubtOutlivesItsCountedUsers) {
    DoubtMany(500, kHeuristics);
    m_known.AddDoubtfulUser(kHeuristics, kParams);
    m_known.AddDoubtfulUser(kHeuristics, kParams);
    EXPECT_EQ(m_known.RemoveDoubtful(kHeuristics, kParams), 0u);
    EXPECT_EQ(m_known.RemoveDoubtful(kHeuristics, kParams), 0u);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 500u);
    EXPECT_EQ(m_known.RemoveDoubtful(kHeuristics, kParams), 500u);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 0u);
    EXPECT_EQ(m_known.RemoveDoubtful(kHeuristics, kParams), 0u);
}

TEST_F(AggregatedRegister, AnEmptiedRegisterOfDoubtIsReadyForMore) {
    Doubt(5);
    EXPECT_EQ(m_known.RemoveDoubtful(kHeuristics, kParams), 1u);
    EXPECT_EQ(Find(5), -2);
    Doubt(7);
    EXPECT_EQ(Find(7), -1);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 1u);
}

TEST_F(AggregatedRegister, OnlyDoubtWithoutUsersIsUnused) {
    DoubtMany(30, 1);
    DoubtMany(20, 2);
    DoubtMany(10, 3);
    for (const std::uint32_t heuristics : {1u, 1u, 2u})
        m_known.AddDoubtfulUser(heuristics, kParams);
    EXPECT_EQ(m_known.RemoveUnusedDoubtful(), 0u);
    (void)m_known.RemoveDoubtful(1, kParams);
    (void)m_known.RemoveDoubtful(2, kParams);
    EXPECT_EQ(m_known.RemoveUnusedDoubtful(), 20u); // of 2; 1 has a user left, 3 was never counted
    EXPECT_EQ(m_known.GetDoubtfulCount(), 40u);
}

// ---- as a whole

TEST_F(AggregatedRegister, ClearingByMode) {
    const auto fill = [this] {
        Insert(5, true);
        Doubt(7);
    };
    fill();
    m_known.Clear(1, true);
    EXPECT_EQ(Find(7), -1);
    EXPECT_EQ(m_known.GetElementsCount(), 1u);
    fill();
    m_known.Clear(-1, true);
    EXPECT_EQ(Find(7), 1);
    EXPECT_EQ(m_known.GetElementsCount(), 1u);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 0u);
    fill();
    m_known.Clear(0, false);
    EXPECT_EQ(Find(7), -2);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    EXPECT_EQ(m_known.Statistics().m_nBytes, 0u);
    fill();
    EXPECT_EQ(Find(5), 1);
}

TEST(PurgeProgress, RepaintsOnlyAfterAWhile) {
    constexpr std::uint32_t kLongEnoughMs = 610;
    std::atomic<std::uint32_t> counter = 100;
    int repaints = 0;
    const std::function<void()> repaint = [&] { ++repaints; };
    CPurgeProgress progress(counter, repaint);
    SleepMs(kLongEnoughMs);
    progress.Removed(7);
    EXPECT_EQ(counter, 93u);
    EXPECT_EQ(repaints, 1);

    const std::function<void()> nothing;
    CPurgeProgress quiet(counter, nothing);
    quiet.Removed(3);
    SleepMs(kLongEnoughMs);
    quiet.Removed(1);
    EXPECT_EQ(counter, 89u);
}

TEST(CombinedMapPurge, TellsOfEveryThousandBuckets) {
    struct TProgress final : IPurgeProgress {
        void Removed(std::uint32_t removed) override { m_reports.push_back(removed); }
        std::vector<std::uint32_t> m_reports;
    } progress;
    TRegisterCombinedMap map(4096);
    const std::vector<TBoardBytes> boards = DifferentBoards(2000, 13);
    for (const TBoardBytes& board : boards)
        (void)map.InsertDoubtful(5, board, BoardHash(board), false);
    map.Clear(&progress);
    EXPECT_EQ(progress.m_reports.size(), 4u);
    EXPECT_EQ(std::accumulate(progress.m_reports.begin(), progress.m_reports.end(), 0u), boards.size());
}

TEST_F(AggregatedRegister, AnotherNumberOfBucketsKeepsAllOrNothing) {
    Insert(5, true);
    DoubtMany(100, kHeuristics);
    m_known.SetBucketCount(2048, true);
    EXPECT_EQ(m_known.GetElementsCount(), 101u);
    EXPECT_EQ(Find(5), 1);
    EXPECT_GE(m_known.Statistics().m_nBytes, (2048 + 256) * sizeof(std::uint64_t));
    m_known.SetBucketCount(512, false);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 0u);
    EXPECT_EQ(Find(5), -2);
    EXPECT_EQ(m_known.Statistics().m_nBytes, (512 + 256) * sizeof(std::uint64_t)) << "the doubtful table starts small";
}

TEST_F(AggregatedRegister, SwappingExchangesContents) {
    TAggregatedTemporaryChessboardRegister other(kBudget, 1024);
    Insert(5, true);
    Doubt(3);
    m_known.AddDoubtfulUser(kHeuristics, kParams);
    const std::uint32_t move = 7;
    m_known.Insert(9, m_position.m_board, true, &move, false); // into the tree
    const std::uint64_t bytes = m_known.Statistics().m_nBytes;
    m_known.Swap(other);
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
    EXPECT_EQ(Find(5), -2);
    EXPECT_EQ(m_known.FindMate(9, m_position.m_board), kTreeUnknown);
    EXPECT_EQ(other.GetElementsCount(), 3u);
    EXPECT_EQ(other.GetDoubtfulCount(), 1u);
    EXPECT_EQ(other.FindMate(9, m_position.m_board), kTreeYes);
    EXPECT_EQ(other.Find(5, m_position.m_board, 0, 0), 1);
    EXPECT_EQ(other.Find(3, m_position.m_board, kHeuristics, kParams), -1);
    EXPECT_EQ(other.Statistics().m_nBytes, bytes);
    EXPECT_EQ(other.RemoveDoubtful(kHeuristics, kParams), 0u); // the user came along
    EXPECT_EQ(other.RemoveDoubtful(kHeuristics, kParams), 1u);
    other.Swap(m_known);
    EXPECT_EQ(Find(5), 1);
    m_known.Swap(m_known);
    EXPECT_EQ(Find(5), 1);
}

TEST_F(AggregatedRegister, AnElementThatFindsNoMemoryIsLostAndThatIsAll) {
    Insert(5, true);
    const std::vector<TBoardBytes> boards = DifferentBoards(200, 12);
    for (long allowed = 0; allowed < 8; ++allowed) {
        TAggregatedTemporaryChessboardRegister known(kBudget, 4);
        const CFailingAllocations failing(allowed);
        for (const TBoardBytes& board : boards) {
            known.InsertLoaded(301, board, true); // too long for an eviction to take
            known.InsertDoubtful(301, board, kHeuristics, kParams);
        }
        EXPECT_LT(known.GetElementsCount(), 2 * boards.size());
        std::uint32_t found = 0;
        for (const TBoardBytes& board : boards)
            found += known.FindFinal(301, board) == 1 ? 1 : 0;
        EXPECT_EQ(found, known.GetElementsCount() - known.GetDoubtfulCount());
    }
}

TEST_F(AggregatedRegister, LookUpsAllocateNothing) {
    Insert(5, true);
    Doubt(3);
    const long before = AllocationsOfThisThread();
    EXPECT_EQ(Find(5) + Find(3) + Find(1, 0), 1 - 1 - 2);
    EXPECT_EQ(m_known.FindRange(3, 5, m_position.m_board, 0, 0), 2);
    EXPECT_EQ(m_known.FindMateLength(9, m_position.m_board, 0, 0), 5);
    EXPECT_EQ(m_known.FindNotDoubtful(3, 5, m_position.m_board, kHeuristics, kParams), 0);
    EXPECT_EQ(AllocationsOfThisThread(), before);
}

// ---- passes and the memory of their doubt

TEST_F(AggregatedRegister, DoubtOfAReleasedUserIsGone) {
    m_known.AddDoubtfulUser(kHeuristics, kParams);
    m_known.AddDoubtfulUser(kHeuristics, kParams); // a second thread
    Doubt(7);
    m_known.ReleaseDoubtfulUser(kHeuristics, kParams);
    EXPECT_EQ(Find(7), kRegisterIsDoubtful) << "the other thread still uses it";
    m_known.ReleaseDoubtfulUser(kHeuristics, kParams);
    EXPECT_EQ(Find(7), kRegisterUnknown);
    EXPECT_EQ(m_known.GetDoubtfulCount(), 0u);
    m_known.ReleaseDoubtfulUser(kHeuristics, kParams); // nobody is counted: nothing to do
    EXPECT_EQ(m_known.GetElementsCount(), 0u);
}

TEST_F(AggregatedRegister, DoubtOfOtherSetsGoesOnlyWhenRoomIsNeeded) {
    constexpr std::uint32_t kOther = 0x80;
    m_known.AddDoubtfulUser(kHeuristics, kParams);
    Doubt(7);
    Doubt(9, kOther); // a line of the pass that has dropped a heuristic
    EXPECT_EQ(m_known.RemoveUnusedDoubtful(), 0u);
    m_known.ReleaseDoubtfulUser(kHeuristics, kParams);
    EXPECT_EQ(Find(7), kRegisterUnknown);
    EXPECT_EQ(Find(9, kOther), kRegisterIsDoubtful);
    EXPECT_EQ(m_known.RemoveUnusedDoubtful(), 1u);
    EXPECT_EQ(Find(9, kOther), kRegisterUnknown);
}

TEST(DoubtfulTables, ManySmallOnesTakeLittleMemory) {
    constexpr std::uint32_t kManyBuckets = 1 << 16;
    constexpr int kSets = 12;
    const auto boards = DifferentBoards(4, 17);
    TAggregatedTemporaryChessboardRegister known(64 << 20, kManyBuckets);
    known.InsertLoaded(5, boards[0], true);
    const std::uint64_t finalBytes = known.Statistics().m_nBytes;
    for (std::uint32_t set = 1; set <= kSets; ++set)
        for (const TBoardBytes& board : boards)
            known.InsertDoubtful(7, board, set, 0);
    EXPECT_EQ(known.GetDoubtfulCount(), kSets * boards.size());
    EXPECT_LT(known.Statistics().m_nBytes, 2 * finalBytes) << "a sixteenth of the buckets each";
    const std::uint64_t filled = known.Statistics().m_nBytes;
    for (std::uint32_t set = 1; set <= kSets; ++set)
        known.ReleaseDoubtfulUser(set, 0);
    EXPECT_LT(known.Statistics().m_nBytes, filled);
    EXPECT_LT(known.Statistics().m_nBytes, finalBytes + finalBytes / 8) << "an emptied one gives its array back";
}

/// The array of a table that fills grows by steps, and everything is found at every size.
TEST(DoubtfulTables, GrowAsTheyAreFilled) {
    constexpr std::uint32_t kBucketsOfFinal = 1 << 13;
    const auto boards = DifferentBoards(20000, 5);
    TAggregatedTemporaryChessboardRegister known(64 << 20, kBucketsOfFinal);
    std::uint64_t before = 0;
    for (std::size_t i = 0; i < boards.size(); ++i) {
        known.InsertDoubtful(static_cast<std::uint16_t>(5 + 2 * (i % 3)), boards[i], kHeuristics, kParams);
        if (i == 0)
            before = known.Statistics().m_nBytes;
    }
    EXPECT_EQ(known.GetDoubtfulCount(), boards.size());
    EXPECT_GE(known.Statistics().m_nBytes, before + (kBucketsOfFinal - 512) * sizeof(std::uint64_t));
    for (std::size_t i = 0; i < boards.size(); ++i) {
        const int doubtfulUpTo = 5 + 2 * static_cast<int>(i % 3);
        ASSERT_EQ(known.Find(doubtfulUpTo, boards[i], kHeuristics, kParams), kRegisterIsDoubtful) << i;
        ASSERT_EQ(known.Find(doubtfulUpTo + 2, boards[i], kHeuristics, kParams), kRegisterUnknown) << i;
    }
}

} // namespace
} // namespace quillon::test
