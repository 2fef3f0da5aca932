// The hash table against a std::map under long random sequences of operations.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "tempregister/chess_boards.h"
#include "tempregister/combined_map.h"
#include "tempregister/register_model.h"

namespace quillon::test {
namespace {

/// A table and its model, fed with the same operations.
class CTwins {
  public:
    CTwins(bool bDoubtful, std::uint32_t nBuckets, std::size_t boards, std::uint64_t seed)
        : m_bDoubtful(bDoubtful), m_random(seed), m_boards(DifferentBoards(boards, seed)), m_map(nBuckets) {}

    void Insert() {
        const TBoardBytes& board = AnyBoard();
        const auto nMoves = static_cast<std::uint16_t>(AnyLength());
        const bool bFirst = m_random.Below(2) != 0;
        const bool bNew = !m_model.m_entries.contains(board);
        if (m_bDoubtful) {
            m_model.InsertDoubtful(nMoves, board, bFirst);
            ASSERT_EQ(m_map.InsertDoubtful(nMoves, board, BoardHash(board), bFirst), bNew);
            return;
        }
        const bool bRepair = m_random.Below(10) != 0;
        m_model.Insert(nMoves, board, bFirst, bRepair);
        const TInsertOutcome outcome = m_map.Insert(nMoves, board, BoardHash(board), bFirst,
                                                    bRepair ? EContradiction::Repair : EContradiction::Report);
        const TModelEntry& entry = m_model.m_entries.at(board);
        ASSERT_EQ(outcome.m_bAdded, bNew);
        ASSERT_EQ(outcome.m_bIncoherent, !bRepair && entry.m_nMate != 0 && entry.m_nNoMate >= entry.m_nMate);
    }

    void Find() {
        const TBoardBytes& board = AnyBoard();
        const int nMoves = AnyLength();
        if (m_bDoubtful)
            ASSERT_EQ(m_map.FindDoubtful(nMoves, board, BoardHash(board)) == kRegisterDoubtful,
                      m_model.IsDoubtful(nMoves, board));
        else
            ASSERT_EQ(m_map.Find(nMoves, board, BoardHash(board)), m_model.Find(nMoves, board));
    }

    void Remove() {
        const int mateLimit = AnyLength();
        const int noMateLimit = m_random.Below(2) != 0 ? mateLimit : AnyLength();
        ASSERT_EQ(m_map.RemoveNMovers(mateLimit, noMateLimit), m_model.Remove(mateLimit, noMateLimit));
    }

    void Resize() {
        const bool bRehash = m_random.Below(4) != 0;
        const std::uint32_t nBuckets = 1u << m_random.Below(9);
        const bool bHadArray = m_map.MemoryInUse() != 0;
        const bool bKept = m_map.Resize(nBuckets, bRehash);
        ASSERT_EQ(bKept, bRehash || (!bHadArray && nBuckets != m_nBuckets));
        m_nBuckets = nBuckets;
        if (!bKept)
            m_model.m_entries.clear();
        ASSERT_EQ(m_map.BucketCount(), nBuckets);
    }

    void Clear() {
        m_random.Below(2) != 0 ? m_map.Clear() : m_map.Free();
        m_model.m_entries.clear();
    }

    void ExpectSameContents() {
        std::size_t elements = 0;
        m_map.ForEach([&](const TBoardBytes& board, const TCombinedLengths& lengths) {
            ++elements;
            const auto entry = m_model.m_entries.find(board);
            ASSERT_NE(entry, m_model.m_entries.end());
            EXPECT_EQ(lengths.nMovesMate, entry->second.m_nMate);
            EXPECT_EQ(lengths.nMovesNoMate, entry->second.m_nNoMate);
        });
        EXPECT_EQ(elements, m_model.m_entries.size());
        for (const TBoardBytes& board : m_boards)
            EXPECT_EQ(m_map.Lengths(board, BoardHash(board)).has_value(), m_model.m_entries.contains(board));
    }

    [[nodiscard]] std::uint32_t Draw(std::uint32_t bound) { return m_random.Below(bound); }

  private:
    const TBoardBytes& AnyBoard() { return m_boards[m_random.Below(static_cast<std::uint32_t>(m_boards.size()))]; }
    int AnyLength() { return 1 + 2 * static_cast<int>(m_random.Below(12)); }

    bool m_bDoubtful;
    CRandom m_random;
    std::vector<TBoardBytes> m_boards;
    TRegisterCombinedMap m_map;
    CRegisterModel m_model;
    std::uint32_t m_nBuckets = 0;
};

void RunOperations(CTwins& twins, int operations) {
    for (int i = 0; i < operations; ++i) {
        const std::uint32_t choice = twins.Draw(10000);
        if (choice < 5500)
            twins.Insert();
        else if (choice < 9970)
            twins.Find();
        else if (choice < 9985)
            twins.Remove();
        else if (choice < 9998)
            twins.Resize();
        else
            twins.Clear();
        if (testing::Test::HasFatalFailure())
            return;
        if (i % 20000 == 0)
            twins.ExpectSameContents();
    }
    twins.ExpectSameContents();
}

TEST(RegisterModel, FinalResultsAreThoseOfTheMap) {
    for (const std::uint64_t seed : {1u, 2u, 3u, 4u}) {
        CTwins twins(false, 64, 900, seed);
        RunOperations(twins, 60000);
    }
}

TEST(RegisterModel, DoubtfulResultsAreThoseOfTheMap) {
    for (const std::uint64_t seed : {5u, 6u}) {
        CTwins twins(true, 64, 900, seed);
        RunOperations(twins, 60000);
    }
}

TEST(RegisterModel, OneBucketHoldsWhatManyDo) {
    CTwins twins(false, 1, 150, 7);
    for (int i = 0; i < 20000; ++i) {
        i % 5 == 4 ? twins.Find() : twins.Insert();
        if (i % 1000 == 999)
            twins.Remove();
    }
    twins.ExpectSameContents();
}

} // namespace
} // namespace quillon::test
