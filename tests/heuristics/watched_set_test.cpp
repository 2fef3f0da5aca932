// The set of watched black figures as the plan makes it smaller.

#include "heuristics/watched_set.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr int kPlies = 21;
constexpr const char* kQueenRookBishopKnight = "qrbn3k/8/8/8/8/8/8/K7";

/// Watches squares of the root, in the order told.
class CWatched {
  public:
    explicit CWatched(const char* placement, std::initializer_list<const char*> squares)
        : m_position(placement, kPlies, 1) {
        for (const char* square : squares)
            Parameters().m_BlockedFigures[static_cast<std::size_t>(Parameters().m_nBlockedFigures++)] =
                String2Square(square);
        Parameters().m_BlockedFiguresNow = Parameters().m_BlockedFigures;
        WriteWatchedSquares(Root(), Parameters());
    }
    [[nodiscard]] TChessboard& Root() { return m_position.Root(); }
    [[nodiscard]] THeuristicParameters& Parameters() { return m_position.Context(); }
    [[nodiscard]] std::string Squares() {
        std::string text;
        for (int i = 0; i < Parameters().m_nBlockedFigures; ++i) {
            const TSquare square = Parameters().m_BlockedFigures[static_cast<std::size_t>(i)];
            EXPECT_EQ(Root().m_blockedFigures[static_cast<std::size_t>(i)], square);
            EXPECT_EQ(Parameters().m_BlockedFiguresNow[static_cast<std::size_t>(i)], square);
            text += std::string(1, static_cast<char>('a' + FileOf(square))) + std::to_string(RankOf(square) + 1) + ' ';
        }
        for (std::size_t i = static_cast<std::size_t>(Parameters().m_nBlockedFigures); i < 8; ++i)
            EXPECT_EQ(Root().m_blockedFigures[i], kNoSquare);
        return text;
    }
    void List(std::initializer_list<const char*> squares) {
        for (const char* square : squares)
            Parameters().m_DropList[Parameters().m_nDropCount++] = String2Square(square);
    }

  private:
    CSearchedPosition m_position;
};

TEST(WatchedSet, ListedFiguresAreDropped) {
    CWatched watched(kQueenRookBishopKnight, {"a8", "b8", "c8", "d8"});
    watched.List({"a8", "c8", "h5"});
    EXPECT_TRUE(DropListedFigures(watched.Root(), watched.Parameters()));
    EXPECT_EQ(watched.Squares(), "d8 b8 ") << "the last figure takes the place of the one that goes";
    EXPECT_EQ(watched.Parameters().m_nPreviousBlockedCount, 4);
    EXPECT_EQ(watched.Parameters().m_nDropCount, 0);
    EXPECT_FALSE(DropListedFigures(watched.Root(), watched.Parameters())) << "the list is used up";
    EXPECT_EQ(watched.Squares(), "d8 b8 ");
    EXPECT_EQ(watched.Parameters().m_nPreviousBlockedCount, 4) << "nothing was dropped this time";
}

TEST(WatchedSet, DroppingAllOrNoneIsNoSuccess) {
    CWatched all(kQueenRookBishopKnight, {"a8", "b8"});
    all.List({"b8", "a8"});
    EXPECT_FALSE(DropListedFigures(all.Root(), all.Parameters()));
    EXPECT_EQ(all.Squares(), "");
    CWatched none(kQueenRookBishopKnight, {"a8", "b8"});
    none.List({"c8"});
    EXPECT_FALSE(DropListedFigures(none.Root(), none.Parameters()));
    EXPECT_EQ(none.Squares(), "a8 b8 ");
}

TEST(WatchedSet, ReducesToTheHeavyFiguresBesideAQueen) {
    CWatched watched(kQueenRookBishopKnight, {"d8", "b8", "c8", "a8"});
    EXPECT_TRUE(ReduceToHeavyFigures(watched.Root(), watched.Parameters()));
    EXPECT_EQ(watched.Squares(), "a8 b8 ") << "in the order of the squares";
    EXPECT_FALSE(ReduceToHeavyFigures(watched.Root(), watched.Parameters())) << "nothing is left to leave out";
}

TEST(WatchedSet, ReducesOnlyWhereItMakesSense) {
    CWatched noQueen(kQueenRookBishopKnight, {"b8", "c8", "d8"});
    EXPECT_FALSE(ReduceToHeavyFigures(noQueen.Root(), noQueen.Parameters()));
    EXPECT_EQ(noQueen.Squares(), "b8 c8 d8 ");
    CWatched noMinor(kQueenRookBishopKnight, {"a8", "b8"});
    EXPECT_FALSE(ReduceToHeavyFigures(noMinor.Root(), noMinor.Parameters()));
    CWatched one(kQueenRookBishopKnight, {"c8"});
    EXPECT_FALSE(ReduceToHeavyFigures(one.Root(), one.Parameters()));
    CWatched below(kQueenRookBishopKnight, {"a8", "c8"});
    below.Root().m_nMoves -= 2; // a position within a run
    EXPECT_FALSE(ReduceToHeavyFigures(below.Root(), below.Parameters()));
}

TEST(WatchedSet, StopsForGood) {
    CWatched watched(kQueenRookBishopKnight, {"a8", "c8"});
    watched.Root().m_nHeuristics = SH_DONTLETFIGUREUNBLOCK | SH_AREKINGSNEAR;
    watched.Parameters().m_bDlfuDynamic = true;
    StopWatching(watched.Root(), watched.Parameters());
    EXPECT_EQ(watched.Root().m_nHeuristics, SH_AREKINGSNEAR);
    EXPECT_FALSE(watched.Parameters().m_bDlfuDynamic);
    EXPECT_FALSE(watched.Parameters().m_bApplyDlfuDynamically);
}

} // namespace
} // namespace quillon::test
