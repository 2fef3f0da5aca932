// SH_ZUGZWANG: the way out and back to the stored position.

#include "heuristics/zugzwang_return.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"

namespace quillon::test {
namespace {

constexpr const char* kHome = "k7/p7/P1K5/8/7p/8/6PP/6R1";

class CLine : public CHeuristicLine {
  public:
    CLine() : CHeuristicLine(kHome, 31, SH_ZUGZWANG | SH_3MOVESTOMATE) {
        Analysis().m_zugzwangPositions["home"] = ChessboardFromFEN(kHome).m_board;
    }
};

TEST(ZugzwangReturn, CountsMenAway) {
    CHeuristicLine none(kHome, 31, SH_ZUGZWANG);
    EXPECT_EQ(CountMenAwayFromZugzwang(none.Now()), -1);
    CLine line;
    EXPECT_EQ(CountMenAwayFromZugzwang(line.Now()), 0);
    line.Play("Rg1-f1 h4-h3");
    EXPECT_EQ(CountMenAwayFromZugzwang(line.Now()), 1) << "Black's men do not count";
}

TEST(ZugzwangReturn, OfTwoStoredPositionsTheNearerCounts) {
    CLine line;
    line.Analysis().m_zugzwangPositions["other"] = ChessboardFromFEN("k7/p7/P1K5/8/7p/8/6PP/5R2").m_board;
    line.Play("Rg1-f1 h4-h3");
    EXPECT_EQ(CountMenAwayFromZugzwang(line.Now()), 0);
}

TEST(ZugzwangReturn, FromHomeWhatCanBeUndone) {
    CLine line;
    const auto moves = line.Generated();
    EXPECT_TRUE(moves.contains("Rg1-f1") && moves.contains("Kc6-c7"));
    EXPECT_FALSE(moves.contains("g2-g3") || moves.contains("h2-h3"));
    EXPECT_TRUE(line.m_bDoubtful);
}

TEST(ZugzwangReturn, OnTheWayTheWandererMoves) {
    CLine line;
    line.Play("Rg1-f1 h4-h3");
    const auto moves = line.Generated();
    EXPECT_TRUE(moves.contains("Rf1-g1")) << "home";
    EXPECT_TRUE(moves.contains("Rf1-e1")) << "further out";
    EXPECT_TRUE(moves.contains("Rf1-f8")) << "a check";
    EXPECT_FALSE(moves.contains("Kc6-c7")) << "a second man";
}

TEST(ZugzwangReturn, OffTheWayItEndsOnlyNearTheEnd) {
    const auto off = [](int nPlies) {
        CHeuristicLine line(kHome, nPlies, SH_ZUGZWANG | SH_3MOVESTOMATE);
        line.Analysis().m_zugzwangPositions["far"] = ChessboardFromFEN("k7/p7/8/8/7p/PKP5/8/R7").m_board;
        EXPECT_TRUE(line.Generated().empty());
        EXPECT_FALSE(line.m_bDoubtful);
        EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
        return line.Has(SH_ZUGZWANG);
    };
    EXPECT_TRUE(off(15));
    EXPECT_FALSE(off(13));
}

TEST(ZugzwangReturn, NoShortMateIsLookedForInTheStoredPosition) {
    CLine line;
    EXPECT_TRUE(RefusesQuickerSearch(line.Now()));
    line.Play("Rg1-f1 h4-h3");
    EXPECT_FALSE(RefusesQuickerSearch(line.Now()));
}

} // namespace
} // namespace quillon::test
