#include "search/expected_white_moves.h"

#include <gtest/gtest.h>

#include "core/expected_move.h"
#include "core/generation.h"
#include "search/bounded_look.h"
#include "search/move_score.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kPlacement = "8/8/8/8/8/1K5Q/1p6/kn6";
constexpr int kPlies = 11;

TMove FirstSorted(TChessboard& p) {
    TMove list[kMaxMoves];
    const int nMoves = GenerateWhiteMoves(p, list);
    const TWhiteSort sorted = SortWhiteMoves(p, nMoves, list, false);
    if (sorted.m_nMoves == 0 || sorted.m_bMateFound)
        throw std::logic_error("a position for these tests has a sorted list");
    return list[0];
}

/// A legal move that is not the first of the sorted list.
TMove AnotherMove(TChessboard& p) {
    TMove list[kMaxMoves];
    const int nMoves = GenerateWhiteMoves(p, list);
    const TWhiteSort sorted = SortWhiteMoves(p, nMoves, list, false);
    return list[sorted.m_nMoves - 1];
}

bool IsMarked(const TMove& move) { return move.m_nFrom >= kSquares && move.m_nTo >= kSquares; }

/// A position whose analysis expects moves.
struct TExpecting {
    TExpecting(CSearchedPosition& position, std::vector<TMove> moves, bool bNothingElse = false)
        : m_position(position), m_expected(std::move(moves), bNothingElse, [this] { ++m_nStops; }) {
        m_position.Analysis().m_pExpectedWhiteMoves = &m_expected;
    }
    ~TExpecting() { m_position.Analysis().m_pExpectedWhiteMoves = nullptr; }

    CSearchedPosition& m_position;
    int m_nStops = 0;
    CExpectedWhiteMoves m_expected;
};

// ---- the root

TEST(ExpectedWhiteMoves, TheMoveThatIsSortedFirstPasses) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {FirstSorted(position.Root())});
    (void)FirstSorted(position.Root());
    EXPECT_FALSE(IsMarked(expecting.m_expected.Moves()[0]));
    EXPECT_EQ(expecting.m_nStops, 0);
}

TEST(ExpectedWhiteMoves, AnotherMoveIsMarkedAndStopsTheSolveOnce) {
    CSearchedPosition position(kPlacement, kPlies);
    const TMove other = AnotherMove(position.Root());
    TExpecting expecting(position, {other, other});
    (void)FirstSorted(position.Root());
    (void)FirstSorted(position.Root());
    const std::vector<TMove> marked = expecting.m_expected.Moves();
    EXPECT_EQ(marked[0].m_nFrom, other.m_nFrom + 64);
    EXPECT_EQ(marked[0].m_nTo, other.m_nTo + 64);
    EXPECT_FALSE(IsMarked(marked[1]));
    EXPECT_EQ(expecting.m_nStops, 1);
    EXPECT_TRUE(expecting.m_expected.HasStopped());
}

TEST(ExpectedWhiteMoves, ARunForThemAloneStopsBehindTheLastOne) {
    CSearchedPosition position(kPlacement, kPlies);
    const TMove first = FirstSorted(position.Root());
    TExpecting one(position, {first}, true);
    (void)FirstSorted(position.Root());
    EXPECT_EQ(one.m_nStops, 1);
    EXPECT_FALSE(IsMarked(one.m_expected.Moves()[0]));

    TExpecting two(position, {first, first}, true);
    (void)FirstSorted(position.Root());
    EXPECT_EQ(two.m_nStops, 0) << "the second has not been compared";
}

TEST(ExpectedWhiteMoves, ASquareBeyondTheBoardIsNoMoveOfTheList) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {{250, 3, 0, 0}});
    (void)FirstSorted(position.Root());
    EXPECT_EQ(expecting.m_expected.Moves()[0].m_nFrom, 250) << "the mark must not bring it back to the board";
    EXPECT_EQ(expecting.m_expected.Moves()[0].m_nTo, 3 + 64);
    EXPECT_EQ(expecting.m_nStops, 1);
}

TEST(ExpectedWhiteMoves, TheCheapSortIsComparedToo) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {{0, 0, 0, 0}});
    TMove list[kMaxMoves];
    (void)SortWhiteMovesSimple(position.Root(), GenerateWhiteMoves(position.Root(), list), list);
    EXPECT_EQ(expecting.m_nStops, 1);
}

TEST(ExpectedWhiteMoves, ATrialOfAnotherLengthSaysNothing) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {AnotherMove(position.Root())}, true);
    position.Context().m_nQuickerLevel = 1;
    (void)FirstSorted(position.Root());
    EXPECT_EQ(expecting.m_nStops, 0);
}

TEST(ExpectedWhiteMoves, ABoundedLookSaysNothing) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {AnotherMove(position.Root())});
    const CBoundedLook look(position.Context(), position.Analysis(), 1000);
    (void)FirstSorted(position.Root());
    EXPECT_EQ(expecting.m_nStops, 0);
}

TEST(ExpectedWhiteMoves, ASortWithinASortSaysNothing) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {AnotherMove(position.Root())});
    const CSortMark mark(position.Context().m_nSortNesting);
    (void)FirstSorted(position.Root());
    EXPECT_EQ(expecting.m_nStops, 0);
}

// ---- further down the line

class ExpectedLine : public ::testing::Test {
  protected:
    ExpectedLine() {
        m_position.Play("Kb3-c2 Ka1-a2");
        SetReply(0);
    }

    void SetReply(int nIndex) { m_position.Context().m_moveIndex[kPlies - 1].store(static_cast<std::uint8_t>(nIndex)); }

    /// Does a comparison find fault with the second expected move, which no sort would bring first?
    bool IsCompared(const TMove& key) {
        TExpecting expecting(m_position, {key, {0, 0, 0, 0}});
        (void)FirstSorted(m_position.Now());
        return IsMarked(expecting.m_expected.Moves()[1]);
    }

    static constexpr TMove kKey{17, 10, 0, 0}; // Kb3-c2
    CSearchedPosition m_position{kPlacement, kPlies};
};

TEST_F(ExpectedLine, IsWhitesExpectedMovesAndTheFirstReplies) { EXPECT_TRUE(IsCompared(kKey)); }

TEST_F(ExpectedLine, IsLeftByAnotherReply) {
    SetReply(1);
    EXPECT_FALSE(IsCompared(kKey));
}

TEST_F(ExpectedLine, IsLeftByAnotherKey) { EXPECT_FALSE(IsCompared({17, 16, 0, 0})); }

TEST_F(ExpectedLine, EndsWithTheLastExpectedMove) {
    TExpecting expecting(m_position, {kKey});
    (void)FirstSorted(m_position.Now());
    EXPECT_EQ(expecting.m_nStops, 0);
}

TEST_F(ExpectedLine, TheSecondMoveEndsARunForThemAlone) {
    TExpecting expecting(m_position, {kKey, FirstSorted(m_position.Now())}, true);
    (void)FirstSorted(m_position.Now());
    EXPECT_EQ(expecting.m_nStops, 1);
    EXPECT_FALSE(IsMarked(expecting.m_expected.Moves()[1]));
}

/// Behind the comparison of the key, does a sort in the position on the board end a run for the order alone?
TEST_F(ExpectedLine, IsOverForARunForThemAloneOnceItHasBeenLeft) {
    const TMove key = FirstSorted(m_position.Root());
    TExpecting expecting(m_position, {key, {0, 0, 0, 0}, key}, true);
    SetReply(1);
    (void)FirstSorted(m_position.Now());
    EXPECT_EQ(expecting.m_nStops, 0) << "a move that is tried before the sort of the root";
    (void)FirstSorted(m_position.Root());
    EXPECT_EQ(expecting.m_nStops, 0);
    (void)FirstSorted(m_position.Now());
    EXPECT_EQ(expecting.m_nStops, 1);
    EXPECT_TRUE(expecting.m_expected.HasCompared());
    EXPECT_FALSE(IsMarked(expecting.m_expected.Moves()[1]));
}

TEST_F(ExpectedLine, ThatHasBeenLeftLetsAnotherSolveGoOn) {
    TExpecting expecting(m_position, {FirstSorted(m_position.Root()), kKey, kKey});
    SetReply(1);
    (void)FirstSorted(m_position.Root());
    (void)FirstSorted(m_position.Now());
    expecting.m_expected.RootMoveEnded();
    EXPECT_EQ(expecting.m_nStops, 0);
}

TEST_F(ExpectedLine, IsOverWhenAMoveOfTheRootHasEnded) {
    TExpecting expecting(m_position, {kKey, kKey}, true);
    EXPECT_FALSE(expecting.m_expected.HasCompared());
    expecting.m_expected.RootMoveEnded();
    EXPECT_EQ(expecting.m_nStops, 1);
    EXPECT_FALSE(expecting.m_expected.HasCompared());
}

TEST(ExpectedWhiteMoves, ARunForNoneAtAllEndsWithTheFirstSort) {
    CSearchedPosition position(kPlacement, kPlies);
    TExpecting expecting(position, {}, true);
    (void)FirstSorted(position.Root());
    EXPECT_EQ(expecting.m_nStops, 1);
    EXPECT_FALSE(expecting.m_expected.HasCompared());
}

} // namespace
} // namespace quillon::test
