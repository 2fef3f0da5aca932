// The best-first proof and the guide made of it, held against the independent solver.

#include "search/proof_guide.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <utility>

#include "core/generation.h"
#include "platform/sleep.h"
#include "platform/thread.h"
#include "search/control.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr std::uint64_t kAmple = 1'000'000;
constexpr std::size_t kTable = std::size_t{1} << 20;

int PliesOfMate(int nMoves) { return 2 * nMoves - 1; }

/// Searches random positions for mates in `nMoves` and compares each outcome; returns how many have one.
int CompareOutcomes(std::uint64_t seed, int nMoves, int nCount, std::size_t nTableBytes, int nThreads = 1) {
    std::mt19937_64 rng(seed);
    int mates = 0;
    for (int i = 0; i < nCount; ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 4);
        const auto truth = reference::ShortestMate(reference::ProblemFromFen(placement), nMoves, 300'000);
        if (!truth)
            continue;
        CSearchedPosition line(placement, PliesOfMate(nMoves));
        CProofTable table(nTableBytes);
        std::uint64_t nodes = 0;
        const EProofResult result = SearchProof(line.Root(), table, kAmple, nodes, nThreads);
        EXPECT_EQ(result, *truth > 0 ? EProofResult::Proved : EProofResult::Refuted) << placement << " #" << nMoves;
        mates += *truth > 0;
    }
    return mates;
}

TEST(ProofSearch, TellsMatesInTwo) { EXPECT_GT(CompareOutcomes(1, 2, Samples(2000), kTable), Floor(50)); }
TEST(ProofSearch, TellsMatesInThree) { EXPECT_GT(CompareOutcomes(2, 3, Samples(600), kTable), Floor(10)); }
TEST(ProofSearch, TellsMatesInFour) { EXPECT_GT(CompareOutcomes(3, 4, Samples(60), kTable), Floor(2)); }
TEST(ProofSearch, ATableOfOneBucketIsEnough) { EXPECT_GT(CompareOutcomes(4, 3, Samples(150), 1), 3); }

TEST(ProofThreads, TwoTellMatesInThree) { EXPECT_GT(CompareOutcomes(12, 3, Samples(600), kTable, 2), Floor(10)); }
TEST(ProofThreads, FourTellMatesInThree) { EXPECT_GT(CompareOutcomes(13, 3, Samples(300), kTable, 4), Floor(5)); }
TEST(ProofThreads, EightTellMatesInFour) { EXPECT_GT(CompareOutcomes(14, 4, Samples(60), kTable, 8), Floor(2)); }
TEST(ProofThreads, FourFightForATableOfOneBucket) { EXPECT_GT(CompareOutcomes(15, 3, Samples(150), 1, 4), 3); }

/// A question that takes longer than anybody waits.
constexpr const char* kEndless = "4k3/1p1b1ppp/8/8/8/8/1P1B1PPP/4K3";

TEST(ProofThreads, TheyShareOneBound) {
    CSearchedPosition line(kEndless, 41);
    CProofTable table(kTable);
    std::uint64_t nodes = 0;
    EXPECT_EQ(SearchProof(line.Root(), table, 3000, nodes, 4), EProofResult::Open);
    EXPECT_GE(nodes, 3000u);
    EXPECT_LT(nodes, 3500u);
}

TEST(ProofThreads, WhatTheyCountReachesTheAnalysis) {
    CSearchedPosition line(kEndless, 41);
    line.Context().m_nTrialPositions = 100; // counted before, and reported once
    CProofTable table(kTable);
    std::uint64_t nodes = 0;
    EXPECT_EQ(SearchProof(line.Root(), table, 5000, nodes, 3), EProofResult::Open);
    FlushPositions(line.Context(), line.Analysis());
    EXPECT_GE(line.Analysis().m_nTrialPositions, nodes + 100);
    EXPECT_EQ(line.Context().m_nQuickerLevel, 0);
}

/// Searches until `stop` ends it.
template <typename TStop> void ExpectToEndSoon(int nThreads, std::uint32_t nAfterMs, TStop stop) {
    CSearchedPosition line(kEndless, 41);
    CProofTable table(kTable);
    std::atomic<bool> bEnded{false};
    std::uint64_t nodes = 0;
    EProofResult result = EProofResult::Proved;
    CThread search(std::size_t{8} << 20, [&] {
        result = SearchProof(line.Root(), table, ~std::uint64_t{0}, nodes, nThreads);
        bEnded = true;
    });
    SleepMs(nAfterMs);
    EXPECT_FALSE(bEnded);
    stop(line);
    const auto start = std::chrono::steady_clock::now();
    search.Join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)); // a busy machine, sanitizers
    EXPECT_EQ(result, EProofResult::Open);
}

void AskToStop(CSearchedPosition& line) { line.Context().m_nStopRequest = kStopRequest; }

TEST(ProofThreads, AStopOfTheCallerEndsAll) {
    for (const int threads : {1, 2, 4, 8})
        for (const std::uint32_t after : {0, 1, 5, 30})
            ExpectToEndSoon(threads, after, AskToStop);
}

TEST(ProofThreads, AStopOfTheAnalysisEndsAll) {
    for (const int threads : {2, 4})
        ExpectToEndSoon(threads, 20,
                        [](CSearchedPosition& line) { GiveCommand(line.Analysis(), kStopCommand, kAllThreads); });
}

TEST(ProofThreads, AStopEndsAPause) {
    ExpectToEndSoon(4, 20, [](CSearchedPosition& line) {
        line.Context().m_nStopRequest = kPauseRequest;
        SleepMs(50);
        AskToStop(line);
    });
}

TEST(ProofThreads, NobodyWorksDuringAPause) {
    ExpectToEndSoon(4, 20, [](CSearchedPosition& line) {
        line.Context().m_nStopRequest = kPauseRequest;
        SleepMs(300);
        const std::uint64_t before = line.Analysis().m_nTrialPositions;
        SleepMs(100);
        EXPECT_EQ(line.Analysis().m_nTrialPositions, before);
        AskToStop(line);
    });
}

TEST(ProofThreads, AStopLeavesNoFalseVerdictInTheTable) {
    std::mt19937_64 rng(16);
    int compared = 0;
    for (int i = 0; i < Samples(200); ++i) {
        const std::string placement = AnyPlacement(rng, i, 5 + i % 3);
        const auto truth = reference::ShortestMate(reference::ProblemFromFen(placement), 3, 100'000);
        if (!truth)
            continue;
        CSearchedPosition line(placement, PliesOfMate(3));
        CProofTable table(kTable);
        std::uint64_t nodes = 0;
        CThread stopping(std::size_t{1} << 20, [&] {
            SleepMs(static_cast<std::uint32_t>(i % 3));
            AskToStop(line);
        });
        (void)SearchProof(line.Root(), table, kAmple, nodes, 3);
        stopping.Join();
        line.Context().m_nStopRequest = kRunRequest;
        EXPECT_EQ(SearchProof(line.Root(), table, kAmple, nodes),
                  *truth > 0 ? EProofResult::Proved : EProofResult::Refuted)
            << placement;
        ++compared;
    }
    EXPECT_GT(compared, 10);
}

/// A knight or two against pawns: whether Black has escaped for certain is searched for there, and a stop ends that
/// search, too. A small table has each position listed again and again.
TEST(ProofThreads, AStopIsNoEscapeFromAMinorPiece) {
    std::mt19937_64 rng(28);
    constexpr int kPlies = 19;
    int stopped = 0;
    for (int i = 0; i < 24; ++i) {
        const std::string placement = reference::RandomMinorPlacement(rng, 5 + i % 3);
        constexpr std::uint64_t kMostNodes = 1'000;
        std::uint64_t nodes = 0, undisturbed = 0;
        CSearchedPosition line(placement, kPlies);
        CProofTable fresh(kTable);
        const EProofResult truth = SearchProof(line.Root(), fresh, kMostNodes, undisturbed);
        CProofTable table(kTable / 64);
        CThread stopping(std::size_t{1} << 20, [&] {
            SleepMs(static_cast<std::uint32_t>(i % 5));
            AskToStop(line);
        });
        (void)SearchProof(line.Root(), table, kMostNodes, nodes, 1 + i % 3);
        stopping.Join();
        line.Context().m_nStopRequest = kRunRequest;
        stopped += nodes < kMostNodes;
        const EProofResult found = SearchProof(line.Root(), table, kMostNodes, nodes);
        EXPECT_TRUE(found == truth || found == EProofResult::Open || truth == EProofResult::Open) << placement;
    }
    EXPECT_GT(stopped, 0);
}

TEST(ProofThreads, AManualCommandDoesNotMeanTheProof) {
    CSearchedPosition line("8/8/4K3/8/8/3k4/8/Q7", 17);
    GiveCommand(line.Analysis(), kManualCommand, kAllThreads);
    CProofTable table(kTable);
    std::uint64_t nodes = 0;
    EXPECT_EQ(SearchProof(line.Root(), table, kAmple, nodes, 2), EProofResult::Proved);
}

TEST(ProofSearch, KeepsToItsBound) {
    CSearchedPosition line("8/8/8/8/8/2k5/8/KQ6", 19);
    CProofTable table(kTable);
    std::uint64_t nodes = 0;
    EXPECT_EQ(SearchProof(line.Root(), table, 50, nodes), EProofResult::Open);
    EXPECT_LE(nodes, 51u);
    EXPECT_GT(nodes, 40u);
}

TEST(ProofSearch, ALaterSearchGoesOnFromTheTable) {
    const char* const placement = "8/8/4K3/8/8/3k4/8/Q7";
    std::uint64_t whole = 0, parts = 0;
    CSearchedPosition line(placement, 17);
    CProofTable table(kTable);
    ASSERT_EQ(SearchProof(line.Root(), table, kAmple, whole), EProofResult::Proved);
    CProofTable other(kTable);
    CSearchedPosition again(placement, 17);
    int calls = 0;
    while (SearchProof(again.Root(), other, whole / 4 + 1, parts) == EProofResult::Open && calls < 100)
        ++calls;
    EXPECT_GT(calls, 0);
    EXPECT_LT(parts, 3 * whole) << "every call has begun anew";
}

/// What an entry is kept for.
TEST(ProofSearch, TheRootTellsHowManyPositionsItTook) {
    CSearchedPosition line("8/8/4K3/8/8/3k4/8/Q7", 17);
    CProofTable table(kTable);
    std::uint64_t nodes = 0;
    ASSERT_EQ(SearchProof(line.Root(), table, kAmple, nodes), EProofResult::Proved);
    EXPECT_EQ(table.Find(HashBoard(line.Root()), 17).m_nWork, std::bit_floor(nodes));
}

TEST(ProofSearch, AStopLeavesTheQuestionOpen) {
    CSearchedPosition line("7k/8/5K2/8/8/8/8/Q7", 9);
    line.Context().m_nStopRequest = kStopRequest;
    CProofTable table(kTable);
    std::uint64_t nodes = 0;
    EXPECT_EQ(SearchProof(line.Root(), table, kAmple, nodes), EProofResult::Open);
}

/// Plays the guide's moves against every reply; where it has none a short mate is left.
void FollowGuide(const CProofGuide& guide, const reference::Position& position, int nPlies) {
    const std::string placement = reference::Placement(position);
    CSearchedPosition line(placement, nPlies);
    TMove move;
    if (!guide.Suggest(line.Root(), move)) {
        ASSERT_LE(nPlies, 99);
        const auto left = reference::ShortestMate(position, (nPlies + 1) / 2, 1'000'000);
        ASSERT_TRUE(left && *left > 0) << placement;
        return;
    }
    const int known = guide.KnownPlies(line.Root());
    ASSERT_LE(known, nPlies);
    const std::string text = WriteMove(move, line.Root());
    const reference::Position after = reference::Play(position, reference::MoveFromNotation(position, text));
    for (const reference::Move& reply : reference::LegalMoves(after)) {
        FollowGuide(guide, reference::Play(after, reply), known - 2);
        if (::testing::Test::HasFatalFailure())
            return;
    }
    ASSERT_FALSE(reference::IsStalemate(after)) << placement;
}

/// Follows the proofs of random positions to their ends.
void FollowRandomProofs(std::uint64_t seed, int nProofs, int nThreads) {
    std::mt19937_64 rng(seed);
    int followed = 0;
    for (int i = 0; i < 4000 && followed < nProofs; ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 3);
        constexpr int kMoves = 4;
        CSearchedPosition line(placement, PliesOfMate(kMoves));
        CProofGuide guide(kTable);
        if (guide.Search(line.Root(), 20'000, nThreads) != EProofResult::Proved || guide.Positions() < 2)
            continue;
        EXPECT_TRUE(guide.IsProved());
        FollowGuide(guide, reference::ProblemFromFen(placement), PliesOfMate(kMoves));
        ++followed;
    }
    EXPECT_GE(followed, nProofs);
}

TEST(ProofGuide, ItsMovesMateWithinTheTold) { FollowRandomProofs(5, 20, 1); }

TEST(ProofThreads, TheMovesOfTwoMateWithinTheTold) { FollowRandomProofs(21, Samples(20), 2); }
TEST(ProofThreads, TheMovesOfFourMateWithinTheTold) { FollowRandomProofs(22, Samples(20), 4); }
TEST(ProofThreads, TheMovesOfEightMateWithinTheTold) { FollowRandomProofs(23, Samples(20), 8); }

TEST(ProofThreads, ALongMateOfThreeIsFollowedToItsEnd) {
    CSearchedPosition line("8/8/8/3k4/8/8/8/KQ6", 19);
    CProofGuide guide(std::size_t{16} << 20);
    ASSERT_EQ(guide.Search(line.Root(), kAmple, 3), EProofResult::Proved);
    EXPECT_GT(guide.Positions(), 10u);
    EXPECT_LE(guide.KnownPlies(line.Root()), 19);
    EXPECT_GE(guide.KnownPlies(line.Root()), 13) << "no queen mates from there in six moves";
    for (int i = 0; i < 8; ++i) // every start begins anew
        EXPECT_EQ(CProofGuide(kTable).Search(line.Root(), kAmple, 1 + i), EProofResult::Proved);
}

/// Nothing is searched twice: not what a shorter look has found, nor what the table knew before it grew.
TEST(ProofGuide, ALongerLookGoesOnWithAllThatIsKnown) {
    constexpr const char* kPlacement = "8/8/3p4/3k4/8/8/4P3/KQ6";
    constexpr int kPlies = 25;
    constexpr std::size_t kLargest = std::size_t{16} << 20; // the one before serves for 43,000 positions
    std::uint64_t atOnce = 0;
    CSearchedPosition line(kPlacement, kPlies);
    CProofTable table(kLargest);
    ASSERT_EQ(SearchProof(line.Root(), table, kAmple, atOnce), EProofResult::Proved);
    ASSERT_GT(atOnce, 50'000u);
    ASSERT_LT(atOnce, 70'000u); // so to begin anew with the second table would make it more than 7/5
    for (const std::uint64_t look : {std::uint64_t{20'000}, kAmple}) {
        CSearchedPosition again(kPlacement, kPlies);
        CProofGuide guide(kLargest);
        while (guide.Search(again.Root(), look) == EProofResult::Open && guide.Nodes() < 2 * atOnce) {
        }
        EXPECT_TRUE(guide.IsProved());
        EXPECT_LT(guide.Nodes(), atOnce * 7 / 5) << "in looks of " << look;
        EXPECT_GT(guide.Nodes(), atOnce / 2) << "in looks of " << look;
    }
}

/// Numbers that have grown to their cap tell no order, but neither do they end the work below them.
TEST(ProofSearch, NumbersAtTheirCapAreWorkedOn) {
    constexpr TProofNumbers kCapped{kInfiniteNumber - 1, kInfiniteNumber - 1};
    CSearchedPosition line("8/8/8/8/8/1K5Q/1p6/kn6", PliesOfMate(3));
    CProofTable table(kTable);
    TMove moves[kMaxMoves], replies[kMaxMoves];
    const int count = GenerateWhiteMoves(line.Root(), moves);
    for (int i = 0; i < count; ++i) {
        TChessboard* const child = CopyToChild(&line.Root());
        if (TMove made = moves[i]; MakeWhiteMove(*child, made) == 0)
            continue;
        table.Store(HashBoard(*child), child->m_nMoves, kCapped, moves[i], 1);
        const int answers = GenerateBlackMoves(*child, replies);
        for (int k = 0; k < answers; ++k) {
            TChessboard* const answered = CopyToChild(child);
            if (MakeBlackMove<kLegalityOnly>(*answered, replies[k], false) != kIllegalMove)
                table.Store(HashBoard(*answered), answered->m_nMoves, kCapped, replies[k], 1);
        }
    }
    std::uint64_t nodes = 0;
    EXPECT_EQ(SearchProof(line.Root(), table, 10'000, nodes), EProofResult::Proved);
}

/// Several times as many positions as the smallest of these tables has entries for.
TEST(ProofSearch, AFullTableDoesNotLeadAstray) {
    for (const std::size_t bytes : {kTable / 8, kTable, 4 * kTable}) {
        CSearchedPosition line("8/p2p3p/6pP/5pP1/1p1p1P1k/1P1P3p/KP3P1P/8", PliesOfMate(30));
        CProofTable table(bytes);
        std::uint64_t nodes = 0;
        EXPECT_EQ(SearchProof(line.Root(), table, 300'000, nodes), EProofResult::Proved) << bytes;
        EXPECT_GT(nodes, 4 * kTable / 8 / 16);
    }
}

TEST(ProofGuide, ALongMateIsFollowedToItsEnd) {
    CSearchedPosition line("8/8/8/3k4/8/8/8/KQ6", 19);
    CProofGuide guide(std::size_t{16} << 20);
    ASSERT_EQ(guide.Search(line.Root(), kAmple), EProofResult::Proved);
    EXPECT_GT(guide.Positions(), 10u);
    EXPECT_LE(guide.KnownPlies(line.Root()), 19);
    EXPECT_GE(guide.KnownPlies(line.Root()), 13) << "no queen mates from there in six moves";
}

/// Plays the guide's moves against every reply with all the plies that are left, as the search does: whatever proof a
/// position was first met in, each move brings mate nearer, and but for a mate on the move there is always one.
class CNearer {
  public:
    CNearer(const CProofGuide& guide, int nMost) : m_guide(guide), m_nLeft(nMost) {}

    void Follow(const reference::Position& position, int nPlies, int nKnownBefore) {
        const std::string placement = reference::Placement(position);
        CSearchedPosition line(placement, nPlies);
        TMove move;
        const bool bSuggests = m_guide.Suggest(line.Root(), move);
        const int known = m_guide.KnownPlies(line.Root());
        ASSERT_TRUE(!bSuggests || known < nKnownBefore) << placement << " " << nPlies << ": " << known;
        if (m_nLeft <= 0 || !m_seen.emplace(placement, nPlies).second)
            return;
        --m_nLeft;
        if (!bSuggests) {
            const int moves = nPlies < 5 ? (nPlies + 1) / 2 : 1;
            const auto left = reference::ShortestMate(position, moves, 1'000'000);
            ASSERT_TRUE(left && *left > 0) << placement << " " << nPlies;
            return;
        }
        const reference::Position after =
            reference::Play(position, reference::MoveFromNotation(position, WriteMove(move, line.Root())));
        for (const reference::Move& reply : reference::LegalMoves(after)) {
            Follow(reference::Play(after, reply), nPlies - 2, known);
            if (::testing::Test::HasFatalFailure())
                return;
        }
    }

    [[nodiscard]] bool IsWhole() const { return m_nLeft > 0; }

  private:
    const CProofGuide& m_guide;
    int m_nLeft;
    std::set<std::pair<std::string, int>> m_seen;
};

TEST(ProofGuide, ItNeverGoesRoundInCircles) {
    int followed = 0, whole = 0;
    for (const char* const placement :
         {"8/8/8/3k4/8/8/8/KQ6", "3k4/8/8/8/8/8/3P4/3K4", "K7/8/8/3k4/8/8/6p1/Q7", "8/5p2/8/3k4/8/8/1N6/KQ6"})
        for (const int plies : {19, 31, 45}) {
            CSearchedPosition line(placement, plies);
            CProofGuide guide(std::size_t{16} << 20);
            if (guide.Search(line.Root(), static_cast<std::uint64_t>(Samples(60'000))) != EProofResult::Proved)
                continue;
            CNearer nearer(guide, Samples(5000));
            nearer.Follow(reference::ProblemFromFen(placement), plies, plies + 1);
            ASSERT_FALSE(HasFatalFailure());
            ++followed;
            whole += nearer.IsWhole();
        }
    constexpr bool bAll = Samples(1000) == 1000;
    EXPECT_GT(followed, bAll ? 4 : 0);
    EXPECT_GT(whole, bAll ? 3 : 0);
}

/// A proof that is longer than the guide has room: the leaves take half of it, so that each reply to the key is
/// answered.
TEST(ProofGuide, TheLeavesLeaveRoomForWhatIsLonger) {
    CSearchedPosition line("8/8/7p/8/8/Q5p1/2k4K/8", PliesOfMate(10));
    CProofGuide guide(64 * 4 * 100); // a hundred positions
    ASSERT_EQ(guide.Search(line.Root(), kAmple), EProofResult::Proved);
    EXPECT_LE(guide.Positions(), 100u + 10u) << "those on the way are entered behind their replies";
    EXPECT_GT(guide.Positions(), 90u) << "full";
    TMove key;
    ASSERT_TRUE(guide.Suggest(line.Root(), key));
    line.Play(WriteMove(key, line.Root()));
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(line.Now(), list);
    int legal = 0;
    for (int i = 0; i < count; ++i) {
        TChessboard* const child = CopyToChild(&line.Now());
        if (MakeBlackMove<kLegalityOnly>(*child, list[i], false) == kIllegalMove)
            continue;
        ++legal;
        EXPECT_GT(guide.KnownPlies(*child), 0) << WriteMove(list[i], line.Now());
    }
    EXPECT_EQ(legal, 4);
}

/// What the table tells of without a move.
TEST(ProofSearch, FindsTheMoveOfAShortMate) {
    std::mt19937_64 rng(29);
    int mates[3] = {};
    for (int i = 0; i < Samples(1500); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 4);
        const reference::Position position = reference::ProblemFromFen(placement);
        const auto truth = reference::ShortestMate(position, 2, 100'000);
        if (!truth)
            continue;
        CSearchedPosition line(placement, 9);
        TMove move{1, 2, 0, 0};
        const bool bFound = FindShortMate(line.Root(), move);
        ASSERT_EQ(bFound, *truth > 0) << placement;
        ASSERT_EQ(line.Root().m_nMoves, 9);
        ++mates[std::max(*truth, 0)];
        if (!bFound) {
            ASSERT_EQ(move.m_nFrom, 1);
            continue;
        }
        const reference::Position after =
            reference::Play(position, reference::MoveFromNotation(position, WriteMove(move, line.Root())));
        const std::vector<reference::Move> replies = reference::LegalMoves(after);
        ASSERT_EQ(*truth == 1, replies.empty()) << placement << " the shortest";
        for (const reference::Move& reply : replies)
            ASSERT_TRUE(reference::ForcesMate(reference::Play(after, reply), 1)) << placement;
        line.Context().m_nStopRequest = kStopRequest;
        EXPECT_FALSE(FindShortMate(line.Root(), move)) << "stopped";
    }
    EXPECT_GT(mates[0], Floor(100));
    EXPECT_GT(mates[1], Floor(30));
    EXPECT_GT(mates[2], Floor(20));
}

TEST(ProofGuide, WithFewerPliesLeftItIsSilent) {
    CSearchedPosition line("8/8/8/3k4/8/8/8/KQ6", 19);
    CProofGuide guide(std::size_t{16} << 20);
    ASSERT_EQ(guide.Search(line.Root(), kAmple), EProofResult::Proved);
    TMove move{1, 2, 0, 0};
    line.Root().m_nMoves = static_cast<std::uint16_t>(guide.KnownPlies(line.Root()) - 2);
    EXPECT_FALSE(guide.Suggest(line.Root(), move));
    EXPECT_EQ(move.m_nFrom, 1);
    EXPECT_EQ(guide.KnownPlies(line.Root()), 0);
}

TEST(ProofGuide, WithoutAProofItSuggestsNothing) {
    CSearchedPosition line("8/8/8/3k4/8/8/8/KQ6", 7); // no mate in four
    CProofGuide guide(kTable);
    EXPECT_EQ(guide.Search(line.Root(), kAmple), EProofResult::Refuted);
    EXPECT_FALSE(guide.IsProved());
    TMove move;
    EXPECT_FALSE(guide.Suggest(line.Root(), move));
}

/// The guide knows a position by its board. After the black pawn's double step White mates by taking it in passing; on
/// the same board without that step there is nothing to take.
TEST(ProofGuide, NoPawnIsTakenInPassingThatDidNotJustStep) {
    CSearchedPosition line("7k/3p1K1p/4p2P/4P3/8/8/P7/8", PliesOfMate(4));
    CProofGuide guide(kTable);
    ASSERT_EQ(guide.Search(line.Root(), kAmple), EProofResult::Proved);
    TMove move;
    ASSERT_TRUE(guide.Suggest(line.Root(), move));
    line.Play(WriteMove(move, line.Root()) + " d7-d5");
    ASSERT_TRUE(guide.Suggest(line.Now(), move));
    ASSERT_EQ(FileOf(move.m_nTo), 3) << "taken in passing";
    line.Analysis().m_pGuide = &guide;
    EXPECT_EQ(line.Verdict(), MR_MATE);

    const std::string placement = PlacementOf(line.Now());
    ASSERT_FALSE(reference::ForcesMate(reference::ProblemFromFen(placement), 3));
    CSearchedPosition stood(placement, PliesOfMate(3));
    EXPECT_FALSE(guide.Suggest(stood.Root(), move));
    stood.Analysis().m_pGuide = &guide;
    EXPECT_EQ(stood.Verdict(), MR_NOMATE);
}

/// A guide that errs: the proof of another problem with the same squares, whose moves do not fit.
TEST(ProofGuide, AWrongGuideChangesNoVerdict) {
    std::mt19937_64 rng(6);
    int compared = 0;
    for (int i = 0; i < Samples(200); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 3);
        CSearchedPosition longer(placement, 9);
        CProofGuide guide(kTable);
        if (guide.Search(longer.Root(), 5'000) != EProofResult::Proved)
            continue;
        for (int plies = 5; plies <= 7; plies += 2) {
            CSearchedPosition plain(placement, plies), guided(placement, plies);
            guided.Analysis().m_pGuide = &guide;
            EXPECT_EQ(guided.Verdict(), plain.Verdict()) << placement << " " << plies;
            ++compared;
        }
    }
    EXPECT_GT(compared, 10);
}

} // namespace
} // namespace quillon::test
