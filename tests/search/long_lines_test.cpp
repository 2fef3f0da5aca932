// The attempts at long forced lines: success is a proof, attempts do not nest and leave nothing behind.

#include "search/long_lines.h"

#include <gtest/gtest.h>

#include "search/quicker_mate.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

constexpr const char* kForced = "8/7k/1R6/8/8/8/8/R6K"; // Ra1-a7 leaves two replies, and Rb6-b8 mates

/// Runs the attempts as the outermost short-mate search does.
bool Attempt(CSearchedPosition& line) {
    TChessboard& p = line.Now();
    line.Context().m_nQuickerLevel = 1;
    const TChessboard record = p;
    const std::uint16_t mark = RepetitionMark(p, p.m_nMoves);
    const bool bFound = FindLongLine(p);
    EXPECT_EQ(line.Context().m_nQuickerLevel, 1);
    EXPECT_EQ(line.Context().m_nLineHorizon, 0);
    EXPECT_EQ(line.Context().m_nAdditionalMoves, 0);
    EXPECT_EQ(std::memcmp(&record, &p, sizeof p), 0) << "the record has changed";
    EXPECT_EQ(RepetitionMark(p, p.m_nMoves), mark);
    line.Context().m_nQuickerLevel = 0;
    return bFound;
}

bool Attempt(const std::string& placement, int nPlies, int nPass = 2) {
    CSearchedPosition line(placement, nPlies, nPass);
    return Attempt(line);
}

/// The mate has to exist within the stipulation. A short one is looked for first: it costs the reference solver less.
void ExpectProof(const std::string& placement, int nPlies) {
    for (const int moves : {3, 5, 7, MovesOf(nPlies)})
        if (moves <= MovesOf(nPlies) && MatesWithin(placement, moves, 400000).value_or(true))
            return;
    ADD_FAILURE() << placement << " is said to be mated within " << nPlies << " plies";
}

TEST(LongLines, SuccessIsAProof) {
    std::mt19937_64 rng(4401);
    int found = 0, failed = 0;
    for (int i = 0; i < Samples(400); ++i) {
        const std::string placement =
            i % 2 == 0 ? reference::RandomMatingPlacement(rng, 4 + i % 6) : AnyPlacement(rng, i, 5 + i % 6);
        const int plies = 19 + 2 * (i % 5);
        if (!Attempt(placement, plies, 1 + i % 2)) {
            ++failed;
            continue;
        }
        ++found;
        ExpectProof(placement, plies);
    }
    EXPECT_GT(found, 0);
    EXPECT_GT(failed, 0);
}

TEST(LongLines, SuccessBehindPromotionsIsAProof) {
    std::mt19937_64 rng(4402);
    int found = 0;
    for (int i = 0; i < Samples(300); ++i) {
        const std::string placement = reference::RandomPawnPlacement(rng, 8 + i % 3);
        if (!Attempt(placement, 23 + 2 * (i % 2)))
            continue;
        ++found;
        ExpectProof(placement, 23);
    }
    EXPECT_GT(found, 0);
}

TEST(LongLines, SuccessAgainstASmotheredKingIsAProof) {
    // The black king in its corner, shut in by its own men; a knight and a queen near by, a black defender or none.
    std::mt19937_64 rng(4403);
    int found = 0, failed = 0;
    for (int i = 0; i < Samples(300); ++i) {
        std::string board(64, '1');
        board[7] = 'k';
        board[6] = 'r';
        board[14] = board[15] = 'p';
        board[static_cast<std::size_t>(8 + reference::DrawInt(rng, 6))] = i % 3 == 0 ? 'n' : '1';
        board[static_cast<std::size_t>(16 + reference::DrawInt(rng, 24))] = 'N';
        board[static_cast<std::size_t>(40 + reference::DrawInt(rng, 8))] = i % 2 == 0 ? 'Q' : 'R';
        board[static_cast<std::size_t>(56 + reference::DrawInt(rng, 8))] = 'K';
        std::string placement;
        for (std::size_t rank = 0; rank < 8; ++rank)
            placement += (rank == 0 ? "" : "/") + board.substr(8 * rank, 8);
        const int plies = 5 + 2 * (i % 6);
        if (!Attempt(placement, plies)) {
            ++failed;
            continue;
        }
        ++found;
        EXPECT_TRUE(MatesWithin(placement, MovesOf(plies), 400000).value_or(true)) << placement << ' ' << plies;
    }
    EXPECT_GT(found, 0);
    EXPECT_GT(failed, 0);
}

/// With one ply left there is no room for a reply, however shut in the king is.
TEST(LongLines, NeedRoomForAReply) {
    const auto placement = "1Q6/8/2B5/1R6/K1R5/8/pp6/k6r";
    ASSERT_EQ(MatesWithin(placement, 2), false);
    CSearchedPosition shutIn(placement, 3);
    shutIn.Play("Qb8-e5 Rh1-b1"); // the king is shut in, and one ply is left
    EXPECT_FALSE(Attempt(shutIn));
    shutIn.Analysis().m_shLookForQuickerMateDepth = 13;
    EXPECT_FALSE(FindQuickerMate(&shutIn.Now()));
    CSearchedPosition line(placement, 3);
    line.Analysis().m_shLookForQuickerMateDepth = 3;
    line.Play("Qb8-e5");
    EXPECT_EQ(line.Verdict(), MR_NOMATE);
}

/// Checks first, with 18 plies or more; below that no forcing move is tried.
TEST(LongLines, ForcingMovesNeedALongStipulation) {
    const auto placement = kForced;
    ASSERT_EQ(MatesWithin(placement, 2), true);
    for (const int plies : {5, 11, 17})
        EXPECT_FALSE(Attempt(placement, plies)) << plies;
    for (const int plies : {19, 25, 99})
        EXPECT_TRUE(Attempt(placement, plies)) << plies;
}

TEST(LongLines, FindNothingWhereNothingIsForced) {
    for (const char* placement : {"8/8/8/8/2k5/8/8/K6R", "4k3/8/8/8/8/8/8/KB6", "k7/8/8/8/8/8/8/K6q"})
        EXPECT_FALSE(Attempt(placement, 25)) << placement;
}

TEST(LongLines, DoNotNest) {
    CSearchedPosition line(kForced, 25);
    line.Context().m_nLineHorizon = 5;
    line.Context().m_nQuickerLevel = 1;
    EXPECT_FALSE(FindLongLine(line.Root()));
    EXPECT_EQ(line.Context().m_nLineHorizon, 5) << "the attempt under way goes on";
}

TEST(LongLines, GiveNoAllowance) {
    CRecordingRegister known;
    CSearchedPosition line("7k/8/5K2/8/8/8/8/R7", 25); // Ra1-a8 leaves one reply, and no mate
    line.Analysis().m_pRegister = &known;
    line.Context().m_nAdditionalMoves = 6;
    line.Context().m_nQuickerSpare = 6;
    (void)Attempt(line);
    ASSERT_FALSE(known.m_asked.empty());
    EXPECT_EQ(known.m_nAskedUpTo, known.m_asked.back().m_nPlies) << "an answer may not exceed the plies asked for";
    EXPECT_EQ(line.Context().m_nQuickerSpare, 0);
}

TEST(LongLines, AStopMakesThemAnswerFalse) {
    CSearchedPosition line(kForced, 25);
    line.Context().m_nStopRequest = kStopRequest;
    EXPECT_FALSE(Attempt(line));
}

/// They come last in the short-mate search, and only where a horizon of at most 13 plies has found nothing.
TEST(LongLines, AreTriedBehindTheTrials) {
    CSearchedPosition line(kForced, 25);
    line.Analysis().m_shLookForQuickerMateDepth = 1; // of the trials, and of the looks behind the replies
    EXPECT_TRUE(FindQuickerMate(&line.Root()));
    line.Analysis().m_shLookForQuickerMateDepth = 0;
    EXPECT_FALSE(FindQuickerMate(&line.Root()));
}

} // namespace
} // namespace quillon::test
