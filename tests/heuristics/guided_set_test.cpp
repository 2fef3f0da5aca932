// Which bits of a set the guide's mate tells against.

#include "heuristics/guided_set.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_signature.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr std::size_t kTable = std::size_t{1} << 20;
constexpr std::uint64_t kAmple = 1'000'000;

// Two rooks drive the king to the edge: he walks, and White loses nothing.
constexpr const char* kRooks = "8/8/8/4k3/8/8/8/RR4K1";
constexpr int kPlies = 15;

/// A root in a pass with heuristics, and a guide that has found its mate.
class CGuided {
  public:
    CGuided(std::string_view placement, int nPlies) : m_line(placement, nPlies, 2) {
        EXPECT_EQ(m_guide.Search(Root(), kAmple), EProofResult::Proved) << placement;
        Root().m_byPass = 1;
    }
    [[nodiscard]] TChessboard& Root() { return m_line.Root(); }
    [[nodiscard]] TSearchContext& Context() { return m_line.Context(); }
    [[nodiscard]] std::uint32_t Against(std::uint32_t mask) { return HeuristicsAgainstGuide(Root(), m_guide, mask); }

  private:
    CSearchedPosition m_line;
    CProofGuide m_guide{kTable};
};

TEST(GuidedSet, ReturnsWhatDoubtsTheMate) {
    CGuided rooks(kRooks, kPlies);
    EXPECT_EQ(rooks.Against(SH_KEEPKINGONTHEEDGE), SH_KEEPKINGONTHEEDGE) << "the king may not move, and has to";
}

TEST(GuidedSet, KeepsWhatFitsTheMate) {
    CGuided rooks(kRooks, kPlies);
    EXPECT_EQ(rooks.Against(SH_DONTLOSEANYFIGURES | SH_SAVEQUEENROOK), 0u);
}

TEST(GuidedSet, TellsTheBitsOfASetApart) {
    CGuided rooks(kRooks, kPlies);
    EXPECT_EQ(rooks.Against(SH_KEEPKINGONTHEEDGE | SH_DONTLOSEANYFIGURES | SH_SAVEQUEENROOK), SH_KEEPKINGONTHEEDGE);
}

TEST(GuidedSet, AsksByTheParametersOfTheContext) {
    CGuided rooks(kRooks, kPlies);
    rooks.Context().m_nKingNearCorner = 1;
    EXPECT_EQ(rooks.Against(SH_KEEPKINGNEARCORNER), SH_KEEPKINGNEARCORNER);
    rooks.Context().m_nKingNearCorner = 6; // no square is further from the nearest corner: the files and ranks added
    EXPECT_EQ(rooks.Against(SH_KEEPKINGNEARCORNER), 0u);
}

TEST(GuidedSet, TheForcedRunIsNeverGivenUp) {
    CGuided rooks(kRooks, kPlies);
    EXPECT_EQ(rooks.Against(SH_FINDFORCEDMATE), 0u);
    EXPECT_EQ(rooks.Against(SH_FINDFORCEDMATE | SH_KEEPKINGONTHEEDGE), SH_KEEPKINGONTHEEDGE);
}

/// It changes the board, and the guide knows nothing of boards without the bishop.
TEST(GuidedSet, PlayOnOneColourIsAlwaysGivenUp) {
    CGuided rooks(kRooks, kPlies);
    EXPECT_EQ(rooks.Against(SH_ONECOLORPLAYPOSSIBLE | SH_DONTLOSEANYFIGURES), SH_ONECOLORPLAYPOSSIBLE);
}

TEST(GuidedSet, LeavesTheRootAsItWas) {
    CGuided rooks(kRooks, kPlies);
    rooks.Root().m_nHeuristics = SH_KEEPKINGONTHEEDGE | SH_DONTLETFIGUREUNBLOCK;
    rooks.Root().m_blockedFigures[0] = String2Square("h7");
    rooks.Root().m_nHeurParams = ComputeHeurParams(rooks.Root());
    const TChessboard before = rooks.Root();
    const THeuristicParameters parameters = rooks.Context();
    (void)rooks.Against(SH_KEEPKINGONTHEEDGE | SH_SAVEQUEENROOK | SH_AREKINGSNEAR | SH_3MOVESTOMATE);
    const TChessboard& after = rooks.Root();
    EXPECT_EQ(after.m_nHeuristics, before.m_nHeuristics);
    EXPECT_EQ(after.m_nHeurParams, before.m_nHeurParams);
    EXPECT_EQ(after.m_byPass, before.m_byPass);
    EXPECT_EQ(after.m_blockedFigures, before.m_blockedFigures);
    EXPECT_EQ(after.m_board, before.m_board);
    EXPECT_EQ(after.m_wBlackState, before.m_wBlackState);
    EXPECT_EQ(after.m_nMoves, before.m_nMoves);
    EXPECT_TRUE(static_cast<const THeuristicParameters&>(rooks.Context()) == parameters);
}

/// No move of the walk is deferred, so nothing is written down of how long.
TEST(GuidedSet, LeavesTheTimeOfADeferredCheckAsItWas) {
    CGuided rooks(kRooks, kPlies);
    rooks.Context().m_shDeferMoves = 3;
    rooks.Context().m_shDeferMaxMoves = 99;
    EXPECT_EQ(rooks.Against(SH_KEEPKINGONTHEEDGE), 0u) << "the king's moves are let pass";
    EXPECT_EQ(rooks.Context().m_shDeferMaxMoves, 99);
}

} // namespace
} // namespace quillon::test
