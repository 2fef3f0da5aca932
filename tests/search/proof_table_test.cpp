#include "search/proof_table.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr TMove kMove{12, 28, 0, 0};
constexpr std::uint64_t kHash = 0x123456789abcdef0;

TEST(ProofTable, WhatWasStoredIsFoundUnderItsPlies) {
    CProofTable table(1 << 16);
    table.Store(kHash, 9, {7, 11}, kMove);
    const CProofTable::TFound found = table.Find(kHash, 9);
    ASSERT_TRUE(found.m_bKnown);
    EXPECT_EQ(found.m_numbers.m_phi, 7u);
    EXPECT_EQ(found.m_numbers.m_delta, 11u);
    EXPECT_TRUE(SameMove(found.m_move, kMove));
    EXPECT_FALSE(table.Find(kHash, 11).m_bKnown);
    EXPECT_FALSE(table.Find(kHash, 8).m_bKnown) << "the other side to move";
    EXPECT_FALSE(table.Find(kHash ^ std::uint64_t{1} << 40, 9).m_bKnown);
}

TEST(ProofTable, AMateHoldsForMorePliesAndItsAbsenceForFewer) {
    CProofTable table(1 << 16);
    table.Store(kHash, 9, kReachesAim, kMove); // White mates
    EXPECT_TRUE(table.Find(kHash, 11).m_bKnown);
    EXPECT_FALSE(table.Find(kHash, 7).m_bKnown);
    table.Store(kHash + 1, 9, kMissesAim, kMove); // White does not
    EXPECT_TRUE(table.Find(kHash + 1, 7).m_bKnown);
    EXPECT_FALSE(table.Find(kHash + 1, 11).m_bKnown);
    table.Store(kHash + 2, 8, kMissesAim, kMove); // Black does not get through: White mates
    EXPECT_TRUE(table.Find(kHash + 2, 10).m_bKnown);
    EXPECT_FALSE(table.Find(kHash + 2, 6).m_bKnown);
    table.Store(kHash + 3, 8, kReachesAim, kMove);
    EXPECT_TRUE(table.Find(kHash + 3, 6).m_bKnown);
    EXPECT_FALSE(table.Find(kHash + 3, 10).m_bKnown);
}

TEST(ProofTable, AFullBucketKeepsTheMatesAndTheMostWork) {
    CProofTable table(1); // one bucket of four
    const auto hash = [](std::uint64_t i) { return i << 33; };
    table.Store(hash(1), 9, kReachesAim, kMove);
    for (std::uint64_t i = 2; i < 10; ++i)
        table.Store(hash(i), 9, {static_cast<std::uint32_t>(i), 5}, kMove);
    EXPECT_TRUE(table.Find(hash(1), 9).m_bKnown);
    EXPECT_TRUE(table.Find(hash(9), 9).m_bKnown) << "the last one stored";
    EXPECT_FALSE(table.Find(hash(2), 9).m_bKnown) << "the least work";
}

TEST(ProofTable, TheHashTellsBoardsApartButNotMarksOnPawns) {
    TChessboard b = ChessboardFromFEN("8/8/3p4/8/4k3/8/8/4K3");
    const std::uint64_t hash = HashBoard(b);
    b.m_board[43] |= kPawnMayNotAdvance;
    EXPECT_EQ(HashBoard(b), hash);
    std::set<std::uint64_t> hashes;
    std::set<std::string> placements;
    std::mt19937_64 rng(17);
    for (int i = 0; i < 20'000; ++i) {
        const std::string placement = AnyPlacement(rng, i, 3 + i % 9);
        placements.insert(placement);
        hashes.insert(HashBoard(ChessboardFromFEN(placement)));
    }
    EXPECT_EQ(hashes.size(), placements.size());
}

} // namespace
} // namespace quillon::test
