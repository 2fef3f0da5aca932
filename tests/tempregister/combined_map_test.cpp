// The hash table of a register, rule by rule.

#include "tempregister/combined_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tempregister/bucket_count.h"
#include "tempregister/chess_boards.h"
#include "tempregister/failing_allocation.h"
#include "tempregister/numbered_boards.h"
#include "tempregister/tagged_bucket.h"

namespace quillon::test {
namespace {

/// One board in a table.
class CombinedMap : public testing::Test {
  protected:
    TInsertOutcome Insert(int nMoves, bool bMate, EContradiction contradiction = EContradiction::Repair) {
        return m_map.Insert(static_cast<std::uint16_t>(nMoves), kBoard, kHash, bMate, contradiction);
    }
    void InsertDoubtful(int nMoves, bool bFirstWord) {
        (void)m_map.InsertDoubtful(static_cast<std::uint16_t>(nMoves), kBoard, kHash, bFirstWord);
    }
    [[nodiscard]] int Find(int nMoves) const { return m_map.Find(nMoves, kBoard, kHash); }
    [[nodiscard]] int FindRange(int n1, int n2) const { return m_map.FindNotDoubtfulRange(n1, n2, kBoard, kHash); }
    [[nodiscard]] int FindWithNotDoubtful(int n1, int n2) const {
        return m_map.FindWithNotDoubtful(n1, n2, kBoard, kHash);
    }
    [[nodiscard]] TCombinedLengths Lengths() const { return m_map.Lengths(kBoard, kHash).value(); }

    const TBoardBytes kBoard = NumberedBoard(12345);
    const std::uint32_t kHash = BoardHash(kBoard);
    TRegisterCombinedMap m_map{16};
};

using TLengths = TCombinedLengths;

TEST_F(CombinedMap, AnEmptyTableAnswersNothingAndTakesNoMemory) {
    EXPECT_EQ(Find(5), kRegisterUnknown);
    EXPECT_EQ(FindRange(5, 9), kRegisterUnknown);
    EXPECT_EQ(FindWithNotDoubtful(5, 9), kRegisterUnknown);
    EXPECT_EQ(m_map.FindDoubtful(1, kBoard, kHash), kRegisterUnknown);
    EXPECT_EQ(m_map.RemoveNMovers(255, 255), 0u);
    EXPECT_EQ(m_map.MemoryInUse(), 0u);
}

TEST_F(CombinedMap, KeepsTheShortestMateAndTheLongestAbsence) {
    EXPECT_TRUE(Insert(11, true).m_bAdded);
    EXPECT_FALSE(Insert(9, true).m_bAdded);
    Insert(13, true);
    Insert(3, false);
    Insert(5, false);
    Insert(1, false);
    EXPECT_EQ(Lengths(), (TLengths{9, 5}));
    EXPECT_EQ(Find(11), kRegisterMate);
    EXPECT_EQ(Find(9), kRegisterMate);
    EXPECT_EQ(Find(7), kRegisterUnknown);
    EXPECT_EQ(Find(5), kRegisterNoMate);
    EXPECT_EQ(Find(1), kRegisterNoMate);
}

TEST_F(CombinedMap, AMateWinsOverALongerAbsence) {
    Insert(3, true);
    EXPECT_EQ(Insert(5, false).m_lengths, (TLengths{3, 1}));
    EXPECT_EQ(Lengths(), (TLengths{3, 1}));
}

TEST_F(CombinedMap, AMateInOnePlyLeavesNoAbsence) {
    Insert(1, true);
    for (const int nMoves : {1, 3, 21})
        EXPECT_EQ(Insert(nMoves, false).m_lengths, (TLengths{1, 0})) << nMoves;
}

TEST_F(CombinedMap, AContradictionToReportLeavesTheElementAsItIs) {
    Insert(5, true);
    const TInsertOutcome outcome = Insert(7, false, EContradiction::Report);
    EXPECT_TRUE(outcome.m_bIncoherent);
    EXPECT_EQ(Lengths(), (TLengths{5, 7}));
    for (const int nMoves : {5, 7}) // both hold: the absence is asked for first
        EXPECT_EQ(Find(nMoves), kRegisterNoMate);
    EXPECT_EQ(Find(9), kRegisterMate);
    EXPECT_FALSE(Insert(3, false).m_bIncoherent);
    EXPECT_EQ(Lengths(), (TLengths{5, 3}));
    EXPECT_FALSE(Insert(3, false, EContradiction::Report).m_bIncoherent);
}

TEST_F(CombinedMap, RangeTakesAMateWithinTheAllowanceOnly) {
    Insert(9, true);
    Insert(3, false);
    EXPECT_EQ(FindRange(3, 11), kRegisterNoMate);
    EXPECT_EQ(FindRange(9, 9), kRegisterMate);
    EXPECT_EQ(FindRange(11, 15), kRegisterMate);
    EXPECT_EQ(FindRange(5, 9), kRegisterQuicker);
    EXPECT_EQ(FindRange(5, 11), kRegisterQuicker);
    EXPECT_EQ(FindRange(5, 7), kRegisterUnknown);
}

TEST_F(CombinedMap, DoubtOnlyGrows) {
    InsertDoubtful(7, false);
    InsertDoubtful(5, false);
    InsertDoubtful(3, true);
    EXPECT_EQ(Lengths(), (TLengths{3, 7})); // neither word constrains the other
    InsertDoubtful(9, true);
    InsertDoubtful(11, false);
    EXPECT_EQ(Lengths(), (TLengths{9, 11}));
    EXPECT_EQ(m_map.FindDoubtful(11, kBoard, kHash), kRegisterDoubtful);
    EXPECT_EQ(m_map.FindDoubtful(13, kBoard, kHash), kRegisterUnknown);
}

TEST_F(CombinedMap, NotDoubtfulNeedsTheSecondLength) {
    InsertDoubtful(9, true);
    EXPECT_EQ(m_map.FindDoubtful(1, kBoard, kHash), kRegisterUnknown);
    EXPECT_EQ(FindWithNotDoubtful(3, 9), kRegisterMate);
    EXPECT_EQ(FindWithNotDoubtful(3, 11), 0);
    InsertDoubtful(5, false);
    EXPECT_EQ(FindWithNotDoubtful(5, 9), 0);
    EXPECT_EQ(FindWithNotDoubtful(7, 9), kRegisterMate);
}

// ---- crowded buckets

/// A table with one bucket, and boards whose h files hold all there is: empty, white, black.
class CrowdedBucket : public testing::Test {
  protected:
    void Insert(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_TRUE(
                m_map.Insert(LengthOf(i), m_boards[i], BoardHash(m_boards[i]), true, EContradiction::Repair).m_bAdded);
    }

    void ExpectElements(std::size_t first, std::size_t end) {
        for (std::size_t i = 0; i < m_boards.size(); ++i) {
            const auto lengths = m_map.Lengths(m_boards[i], BoardHash(m_boards[i]));
            ASSERT_EQ(lengths.has_value(), i >= first && i < end) << i;
            if (lengths) {
                EXPECT_EQ(lengths->nMovesMate, LengthOf(i)) << i;
            }
        }
    }

    static std::uint16_t LengthOf(std::size_t i) { return static_cast<std::uint16_t>(1 + 2 * i); }

    std::vector<TBoardBytes> m_boards = DifferentBoards(400, 77);
    TRegisterCombinedMap m_map{1};
};

TEST_F(CrowdedBucket, TheNinthElementConvertsItAndAllAreFound) {
    for (const std::size_t count : {8u, 9u, 10u}) {
        m_map.Clear();
        Insert(count);
        ExpectElements(0, count);
    }
}

TEST_F(CrowdedBucket, GrowsBeyondTheMarksItKeeps) {
    for (const std::size_t count : {12u, 13u, 95u, 96u, 97u, 98u, 400u}) {
        m_map.Clear();
        Insert(count);
        ExpectElements(0, count);
    }
}

TEST_F(CrowdedBucket, LosesTheShortestAndShrinksBelowItsMarksAgain) {
    for (const std::size_t count : {5u, 8u, 9u, 20u, 96u, 97u, 130u, 400u})
        for (const std::size_t removed :
             {std::size_t{1}, std::size_t{2}, std::size_t{3}, count / 2, count - 1, count}) {
            m_map.Clear();
            Insert(count);
            EXPECT_EQ(m_map.RemoveNMovers(LengthOf(removed) - 1, 0), removed);
            ExpectElements(removed, count);
            EXPECT_EQ(m_map.RemoveNMovers(LengthOf(removed) - 1, 0), 0u);
        }
}

TEST_F(CrowdedBucket, RemovesWithoutMemory) {
    for (const std::size_t count : {9u, 60u, 400u}) {
        m_map.Clear();
        Insert(count);
        std::uint32_t removed;
        {
            const CFailingAllocations failing;
            removed = m_map.RemoveNMovers(LengthOf(count / 2) - 1, 0);
        }
        EXPECT_EQ(removed, count / 2);
        ExpectElements(count / 2, count);
    }
}

TEST_F(CrowdedBucket, AnInsertWithoutMemoryLosesOneElementAndNoOther) {
    // Wherever memory runs out (a block, a header, its array, a larger array), what was there stays.
    for (std::size_t count = 0; count < 60; ++count) {
        m_map.Free();
        ReleaseFreeBuckets();
        Insert(count);
        bool bFailed = false;
        try {
            const CFailingAllocations failing;
            (void)m_map.Insert(LengthOf(count), m_boards[count], 0, true, EContradiction::Repair);
        } catch (const std::bad_alloc&) {
            bFailed = true;
        }
        ExpectElements(0, bFailed ? count : count + 1);
        if (count <= 8) {
            EXPECT_EQ(bFailed, count == 0 || count == 8) << count; // a block; a header
        }
    }
}

TEST_F(CrowdedBucket, ARehashWithoutMemoryLosesAllOrNothing) {
    for (long allowed = 0; allowed < 12; ++allowed) {
        m_map.Clear();
        (void)m_map.Resize(1, false);
        Insert(100);
        ReleaseFreeBuckets();
        bool bKept = true;
        bool bThrown = false;
        try {
            const CFailingAllocations failing(allowed);
            bKept = m_map.Resize(16, true);
        } catch (const std::bad_alloc&) {
            bThrown = true;
        }
        EXPECT_EQ(bThrown, allowed == 0);
        ExpectElements(0, bKept ? 100 : 0);
        EXPECT_EQ(m_map.BucketCount(), bThrown ? 1u : 16u);
    }
}

// ---- memory

TEST(CombinedMapMemory, ResizingKeepsAllElementsAndTheirLengths) {
    const std::vector<TBoardBytes> boards = DifferentBoards(3000, 5);
    TRegisterCombinedMap map(1024);
    for (std::size_t i = 0; i < boards.size(); ++i)
        (void)map.InsertDoubtful(static_cast<std::uint16_t>(1 + 2 * (i % 40)), boards[i], BoardHash(boards[i]),
                                 i % 2 != 0);
    for (const std::uint32_t nBuckets : {16u, 4096u, 1u, 256u, 256u}) {
        EXPECT_TRUE(map.Resize(nBuckets, true));
        for (std::size_t i = 0; i < boards.size(); ++i) {
            const auto length = static_cast<std::uint16_t>(1 + 2 * (i % 40));
            ASSERT_EQ(map.Lengths(boards[i], BoardHash(boards[i])),
                      i % 2 != 0 ? TCombinedLengths({length, 0}) : TCombinedLengths({0, length}));
        }
    }
    EXPECT_FALSE(map.Resize(512, false));
    std::size_t left = 0;
    map.ForEach([&](const TBoardBytes&, const TCombinedLengths&) { ++left; });
    EXPECT_EQ(left, 0u);
}

TEST(CombinedMapMemory, IsCountedAndComesBackInFull) {
    const std::vector<TBoardBytes> boards = DifferentBoards(2000, 6);
    TRegisterCombinedMap map(64);
    for (const TBoardBytes& board : boards)
        (void)map.InsertDoubtful(5, board, BoardHash(board), false);
    EXPECT_GT(map.MemoryInUse(), boards.size() * sizeof(TCombinedElement));
    EXPECT_LT(map.MemoryInUse(), boards.size() * sizeof(TCombinedElement) * 2);
    EXPECT_EQ(map.RemoveNMovers(5, 5), 2000u);
    map.Clear();
    EXPECT_EQ(map.MemoryInUse(), 64 * sizeof(std::uint64_t));
    map.Free();
    EXPECT_EQ(map.MemoryInUse(), 0u);
}

TEST(CombinedMapMemory, BucketsOfOneTableServeTheNext) {
    ReleaseFreeBuckets();
    const std::vector<TBoardBytes> boards = DifferentBoards(300, 8);
    const auto fill = [&](TRegisterCombinedMap& map) {
        for (const TBoardBytes& board : boards)
            (void)map.InsertDoubtful(5, board, BoardHash(board), false);
    };
    {
        TRegisterCombinedMap first(32);
        fill(first);
    }
    EXPECT_GT(FreeSmallBuckets(), 0u);
    EXPECT_GT(FreeLargeBuckets(), 0u);
    TRegisterCombinedMap second(32);
    fill(second);
    EXPECT_EQ(FreeLargeBuckets(), 0u);
    EXPECT_EQ(second.RemoveNMovers(5, 5), boards.size());
}

TEST(CombinedMapMemory, LookUpsAllocateNothing) {
    const std::vector<TBoardBytes> boards = DifferentBoards(2000, 9);
    TRegisterCombinedMap map(64);
    for (std::size_t i = 0; i < 1000; ++i)
        (void)map.InsertDoubtful(5, boards[i], BoardHash(boards[i]), false);
    const long before = AllocationsOfThisThread();
    int found = 0;
    for (const TBoardBytes& board : boards)
        found += map.FindDoubtful(5, board, BoardHash(board)) == kRegisterDoubtful ? 1 : 0;
    EXPECT_EQ(AllocationsOfThisThread(), before);
    EXPECT_EQ(found, 1000);
}

TEST(CombinedMapMemory, ASweepGivesBackWhatTheRestDoesNotNeed) {
    const std::vector<TBoardBytes> boards = DifferentBoards(6400, 10);
    TRegisterCombinedMap map(64); // about 100 elements each
    for (std::size_t i = 0; i < boards.size(); ++i)
        (void)map.InsertDoubtful(static_cast<std::uint16_t>(1 + 2 * (i % 100)), boards[i], BoardHash(boards[i]), false);
    std::size_t left = boards.size();
    for (const int length : {99, 149, 179, 193}) {
        left -= map.RemoveNMovers(0, length);
        EXPECT_EQ(left, boards.size() * static_cast<std::size_t>(199 - length) / 200) << length;
        EXPECT_LT(map.MemoryInUse(), left * sizeof(TCombinedElement) * 2 + 64 * (sizeof(SmallBucket) + 400)) << length;
    }
}

TEST(CombinedMapMemory, FreeListsCanBeTrimmed) {
    {
        const std::vector<TBoardBytes> boards = DifferentBoards(2000, 11);
        TRegisterCombinedMap map(128);
        for (const TBoardBytes& board : boards)
            (void)map.InsertDoubtful(5, board, BoardHash(board), false);
    }
    EXPECT_GT(FreeSmallBuckets(), 10u);
    EXPECT_GT(FreeLargeBuckets(), 10u);
    TrimFreeBuckets(20 * sizeof(SmallBucket));
    EXPECT_EQ(FreeSmallBuckets(), 10u);
    EXPECT_LE(FreeLargeBuckets(), 10u);
    ReleaseFreeBuckets();
    EXPECT_EQ(FreeSmallBuckets() + FreeLargeBuckets(), 0u);
}

TEST(TaggedBucket, UpdatesKeepTheOtherBits) {
    constexpr std::uint64_t kOther = 0x5a5aull << 48;
    SmallBucket small;
    std::uint64_t word = WithPointer(kOther, &small, false);
    EXPECT_FALSE(IsLarge(word));
    EXPECT_EQ(PointerOf<SmallBucket>(word), &small);
    word = WithPointer(word, &small, true);
    EXPECT_TRUE(IsLarge(word));
    EXPECT_EQ(PointerOf<SmallBucket>(word), &small);
    EXPECT_EQ(WithoutBucket(word), kOther);
}

TEST(BucketCount, FollowsLengthAndBudget) {
    EXPECT_EQ(BucketCount(13, 4096), 16384u);
    EXPECT_EQ(BucketCount(15, 4096), 0x80000u);
    EXPECT_EQ(BucketCount(21, 100000), 0x80000u);
    EXPECT_EQ(BucketCount(23, 8192), 0x80000u);
    EXPECT_EQ(BucketCount(23, 8193), 0x400000u);
}

TEST(BucketCount, FallsWithASmallBudgetThatItsBlocksMustNotExceed) {
    EXPECT_EQ(BucketCount(5, 0), kFewestBuckets);
    EXPECT_EQ(BucketCount(31, 1), kFewestBuckets); // 7973 elements
    EXPECT_EQ(BucketCount(31, 2), 512u);
    EXPECT_EQ(BucketCount(31, 525), 131072u); // 4186112 elements, a few less than eight for each of 0x80000
    EXPECT_EQ(BucketCount(31, 527), 0x80000u);
    for (std::uint64_t nBudgetMB = 1; nBudgetMB < 3000; nBudgetMB += 7)
        EXPECT_LE(std::uint64_t{BucketCount(31, nBudgetMB)} * sizeof(SmallBucket), nBudgetMB << 20) << nBudgetMB;
}

} // namespace
} // namespace quillon::test
