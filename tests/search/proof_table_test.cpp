#include "search/proof_table.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "platform/thread.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr TMove kMove{12, 28, 0, 0};
constexpr std::uint64_t kHash = 0x123456789abcdef0;

TEST(ProofTable, WhatWasStoredIsFoundUnderItsPlies) {
    CProofTable table(1 << 16);
    table.Store(kHash, 9, {7, 11}, kMove, 1);
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
    table.Store(kHash, 9, kReachesAim, kMove, 1); // White mates
    EXPECT_TRUE(table.Find(kHash, 11).m_bKnown);
    EXPECT_FALSE(table.Find(kHash, 7).m_bKnown);
    table.Store(kHash + 1, 9, kMissesAim, kMove, 1); // White does not
    EXPECT_TRUE(table.Find(kHash + 1, 7).m_bKnown);
    EXPECT_FALSE(table.Find(kHash + 1, 11).m_bKnown);
    table.Store(kHash + 2, 8, kMissesAim, kMove, 1); // Black does not get through: White mates
    EXPECT_TRUE(table.Find(kHash + 2, 10).m_bKnown);
    EXPECT_FALSE(table.Find(kHash + 2, 6).m_bKnown);
    table.Store(kHash + 3, 8, kReachesAim, kMove, 1);
    EXPECT_TRUE(table.Find(kHash + 3, 6).m_bKnown);
    EXPECT_FALSE(table.Find(kHash + 3, 10).m_bKnown);
}

constexpr std::uint64_t OtherKey(std::uint64_t n) { return kHash ^ n << 40; } // in the same bucket

TEST(ProofTable, AnEstimateTakesNobodysPlace) {
    CProofTable table(1); // one bucket of four entries
    for (std::uint64_t n = 0; n < 4; ++n)
        table.Store(OtherKey(n), 9, {1, 1}, kMove, 1);
    table.StoreEstimate(OtherKey(4), 9, {50, 50});
    EXPECT_FALSE(table.Find(OtherKey(4), 9).m_bKnown);
    for (std::uint64_t n = 0; n < 4; ++n)
        EXPECT_TRUE(table.Find(OtherKey(n), 9).m_bKnown) << n;
}

TEST(ProofTable, AnEstimateIsTheFirstToGiveWay) {
    CProofTable table(1);
    table.StoreEstimate(OtherKey(0), 9, {50, 60});
    const CProofTable::TFound estimate = table.Find(OtherKey(0), 9);
    ASSERT_TRUE(estimate.m_bKnown);
    EXPECT_EQ(estimate.m_numbers.m_phi, 50u);
    EXPECT_EQ(estimate.m_numbers.m_delta, 60u);
    EXPECT_TRUE(IsNullMove(estimate.m_move));
    for (std::uint64_t n = 1; n < 5; ++n)
        table.Store(OtherKey(n), 9, {1, 1}, kMove, 1);
    EXPECT_FALSE(table.Find(OtherKey(0), 9).m_bKnown);
    for (std::uint64_t n = 1; n < 5; ++n)
        EXPECT_TRUE(table.Find(OtherKey(n), 9).m_bKnown) << n;
}

TEST(ProofTable, WhatIsSearchedReplacesItsEstimate) {
    CProofTable table(1 << 16);
    table.StoreEstimate(kHash, 9, {1, 5});
    table.Store(kHash, 9, {7, 11}, kMove, 1);
    const CProofTable::TFound found = table.Find(kHash, 9);
    EXPECT_EQ(found.m_numbers.m_phi, 7u);
    EXPECT_TRUE(SameMove(found.m_move, kMove));
}

TEST(ProofTable, OtherPliesTellWhatIsLeftAtLeast) {
    CProofTable table(1 << 16);
    table.Store(kHash, 9, {20, 30}, kMove, 1);  // White to move: phi for mate, delta against
    table.Store(kHash, 13, {10, 40}, kMove, 1); // with more plies mate is nearer
    const auto left = [&](int nPlies) { return table.Find(kHash, nPlies).m_atLeast; };
    EXPECT_EQ(left(7).m_phi, 20u);
    EXPECT_EQ(left(7).m_delta, 0u);
    EXPECT_EQ(left(11).m_phi, 10u);
    EXPECT_EQ(left(11).m_delta, 30u);
    EXPECT_EQ(left(15).m_phi, 0u);
    EXPECT_EQ(left(15).m_delta, 40u);
    EXPECT_FALSE(table.Find(kHash, 11).m_bKnown);
    EXPECT_EQ(left(10).m_phi, 0u) << "the other side to move";
    table.Store(kHash + 1, 8, {20, 30}, kMove, 1); // Black to move: phi against mate, delta for it
    EXPECT_EQ(table.Find(kHash + 1, 6).m_atLeast.m_delta, 30u);
    EXPECT_EQ(table.Find(kHash + 1, 6).m_atLeast.m_phi, 0u);
    EXPECT_EQ(table.Find(kHash + 1, 10).m_atLeast.m_phi, 20u);
}

TEST(ProofTable, AFullBucketKeepsTheMostWork) {
    CProofTable table(1); // one bucket of four
    const auto known = [&](std::uint64_t n) { return table.Find(OtherKey(n), 9).m_bKnown; };
    for (const std::uint64_t work : {400u, 100u, 200u, 800u})
        table.Store(OtherKey(work), 9, {static_cast<std::uint32_t>(1000 - work), 5}, kMove, work);
    table.Store(OtherKey(1), 9, kReachesAim, kMove, 1);
    EXPECT_TRUE(known(1)) << "the last one stored";
    EXPECT_FALSE(known(100)) << "the least work";
    table.Store(OtherKey(2), 9, {1, 1}, kMove, 3000);
    EXPECT_FALSE(known(1)) << "found again by as little work";
    for (const std::uint64_t n : {400u, 200u, 800u, 2u})
        EXPECT_TRUE(known(n)) << n;
}

TEST(ProofTable, TheWorkIsToldDownToAPowerOfTwo) {
    CProofTable table(1 << 16);
    const auto told = [&](std::uint64_t work) {
        table.Store(kHash, 9, {kInfiniteNumber - 1, kInfiniteNumber - 2}, kMove, work);
        const CProofTable::TFound found = table.Find(kHash, 9);
        EXPECT_EQ(found.m_numbers.m_phi, kInfiniteNumber - 1);
        EXPECT_EQ(found.m_numbers.m_delta, kInfiniteNumber - 2);
        EXPECT_TRUE(SameMove(found.m_move, kMove));
        return found.m_nWork;
    };
    EXPECT_EQ(told(1), 1u);
    EXPECT_EQ(told(2), 2u);
    EXPECT_EQ(told(3), 2u);
    EXPECT_EQ(told(1'000'000), 1u << 19);
    EXPECT_EQ(told((std::uint64_t{1} << 62) + 5), std::uint64_t{1} << 62);
    EXPECT_EQ(told(~std::uint64_t{0}), std::uint64_t{1} << 62) << "as much as an entry has room for";
    table.Store(kHash, 9, kReachesAim, kMove, 70);
    EXPECT_EQ(table.Find(kHash, 9).m_nWork, 64u);
    EXPECT_EQ(table.Find(kHash, 9).m_numbers.m_delta, kInfiniteNumber);
    EXPECT_EQ(table.Find(kHash, 11).m_nWork, 64u) << "of the verdict that holds there, too";
    table.StoreEstimate(kHash + 1, 9, {7, 11});
    EXPECT_EQ(table.Find(kHash + 1, 9).m_nWork, 0u);
}

/// Each of the threads stores its own entries into the same few buckets: what is found is what some thread has stored.
TEST(ProofTable, ThreadsThatMeetInABucketLeaveNoMixedEntry) {
    CProofTable table(256);
    constexpr std::uint32_t kRounds = 20'000, kHashes = 24;
    const auto moveOf = [](std::uint32_t phi) { return TMove{static_cast<std::uint8_t>(phi % 64), 63, 0, 0}; };
    std::array<int, 4> mixed{}, found{};
    {
        std::array<CThread, 4> threads;
        for (std::uint32_t t = 0; t < threads.size(); ++t)
            threads[t] = CThread(std::size_t{1} << 20, [&, t] {
                for (std::uint32_t i = 0; i < kRounds; ++i) {
                    const std::uint64_t hash = (i * 7 + t) % kHashes * 0x100000001u;
                    const std::uint32_t phi = 1 + i % 97 + 100 * t;
                    table.Store(hash, 9, {phi, 3 * phi}, moveOf(phi), phi);
                    const CProofTable::TFound entry = table.Find((i * 5) % kHashes * 0x100000001u, 9);
                    if (!entry.m_bKnown)
                        continue;
                    ++found[t];
                    mixed[t] += entry.m_numbers.m_delta != 3 * entry.m_numbers.m_phi ||
                                !SameMove(entry.m_move, moveOf(entry.m_numbers.m_phi)) ||
                                entry.m_nWork != std::bit_floor(std::uint64_t{entry.m_numbers.m_phi});
                }
            });
    }
    for (std::size_t t = 0; t < found.size(); ++t) {
        EXPECT_EQ(mixed[t], 0);
        EXPECT_GT(found[t], 1000);
    }
}

/// A thread that reads an entry while another renews it does not know the position again, and gives it a second entry:
/// what is stored later is what is found, all the same.
TEST(ProofTable, APositionThatThreadsRenewAtOnceDoesNotGrowStale) {
    constexpr std::uint64_t kPositions = 20'000;
    constexpr std::uint32_t kStores = 50;
    const auto hashOf = [](std::uint64_t i) { return i * 0x9e3779b97f4a7c15u; };
    CProofTable table(std::size_t{4} << 20);
    {
        std::array<std::atomic<std::uint64_t>, 2> at{};
        std::array<CThread, 2> threads;
        for (std::size_t t = 0; t < threads.size(); ++t)
            threads[t] = CThread(std::size_t{1} << 20, [&, t] {
                for (std::uint64_t i = 0; i < kPositions; ++i) {
                    at[t].store(i, std::memory_order_relaxed);
                    for (int wait = 0; wait < 1000 && at[1 - t].load(std::memory_order_relaxed) < i; ++wait) {
                    }
                    for (std::uint32_t store = 0; store < kStores; ++store)
                        table.Store(hashOf(i), 9, {3 + store, 5}, kMove, 8);
                }
            });
    }
    std::uint64_t stale = 0;
    for (std::uint64_t i = 0; i < kPositions; ++i) {
        table.Store(hashOf(i), 9, {1, 11}, kMove, 8);
        stale += table.Find(hashOf(i), 9).m_numbers.m_phi != 1;
    }
    EXPECT_EQ(stale, 0u);
}

TEST(ProofTable, ItKeepsWhatItKnowsWhenItGrows) {
    constexpr std::size_t kFirst = std::size_t{64} << 10; // 4096 entries
    constexpr std::uint32_t kStored = 3000;
    for (const int threads : {1, 3}) {
        CProofTable table(kFirst);
        std::mt19937_64 rng(23);
        std::vector<std::uint64_t> hashes(kStored), others(kStored);
        for (std::vector<std::uint64_t>* const hashesOf : {&hashes, &others})
            std::ranges::generate(*hashesOf, std::ref(rng));
        const auto known = [&] {
            std::vector<std::uint32_t> found;
            for (std::uint32_t i = 0; i < kStored; ++i)
                if (const CProofTable::TFound entry = table.Find(hashes[i], 9 + 2 * (i % 3)); entry.m_bKnown) {
                    EXPECT_EQ(entry.m_numbers.m_phi, i + 1);
                    EXPECT_EQ(entry.m_numbers.m_delta, 2 * i + 1);
                    EXPECT_TRUE(SameMove(entry.m_move, kMove));
                    EXPECT_EQ(entry.m_nWork, std::bit_floor(std::uint64_t{i} + 1));
                    found.push_back(i);
                }
            return found;
        };
        for (std::uint32_t i = 0; i < kStored; ++i)
            table.Store(hashes[i], 9 + 2 * static_cast<int>(i % 3), {i + 1, 2 * i + 1}, kMove, i + 1);
        const std::vector<std::uint32_t> before = known();
        EXPECT_GT(before.size(), kStored * 3 / 4);
        for (const std::size_t times : {2u, 4u, 16u, 64u}) {
            table.Grow(times * kFirst, threads);
            EXPECT_EQ(table.Bytes(), times * kFirst);
            EXPECT_EQ(known(), before) << times << " times as large";
        }
        for (const std::uint64_t other : others)
            EXPECT_FALSE(table.Find(other, 9).m_bKnown);
        table.Store(others[0], 9, {7, 11}, kMove, 1);
        EXPECT_TRUE(table.Find(others[0], 9).m_bKnown);
    }
}

TEST(ProofTable, ItGrowsNoFurtherThanItsKeysTell) {
    CProofTable table(256);
    table.Grow(100); // no smaller
    EXPECT_EQ(table.Bytes(), 256u);
    table.Grow(1000);
    EXPECT_EQ(table.Bytes(), 512u);
    table.Grow(std::size_t{1} << 20);
    EXPECT_EQ(table.Bytes(), 256 * CProofTable::kMostGrowth);
}

/// What grows from one bucket are bits of the hash next to those that told the bucket: they stand in the key.
TEST(ProofTable, HashesThatPartWhenItGrowsWereTwoBefore) {
    CProofTable table(1);
    for (std::uint64_t i = 0; i < 4; ++i)
        table.Store(kHash ^ i, 9, {static_cast<std::uint32_t>(i) + 1, 5}, kMove, 1);
    for (const std::size_t bytes : {64u, 128u, 256u}) {
        table.Grow(bytes);
        for (std::uint64_t i = 0; i < 4; ++i)
            EXPECT_EQ(table.Find(kHash ^ i, 9).m_numbers.m_phi, i + 1) << bytes;
    }
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
