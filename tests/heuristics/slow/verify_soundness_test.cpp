// What the rules may never do: turn into a mate or a refutation what plain chess does not call so.

#include <gtest/gtest.h>

#include "heuristics/random_set.h"
#include "heuristics/verified_position.h"

namespace quillon::test {
namespace {

/// The bits whose rules act on black moves alone.
constexpr std::uint32_t kRuleBits[] = {SH_3MOVESTOMATE,
                                       SH_SAVEQUEENROOK,
                                       SH_KEEPKINGONTHEEDGE,
                                       SH_KEEPKINGWITHINEXTEDGE,
                                       SH_KEEPKINGNEARCORNER,
                                       SH_DONTLETPROMOTEDQUEENMOVE,
                                       SH_DONTLETPROMOTEDFIGUREMOVE,
                                       SH_KEYLINE,
                                       SH_DONTLETBLACKQUEENCHECKTWICE,
                                       SH_DONTLOSEANYFIGURES,
                                       SH_AREKINGSNEAR,
                                       SH_ASSERTBLACKKINGSURROUNDED,
                                       SH_CAPTUREKNIGHT,
                                       SH_SWEEPINGWHITEROOK};

void SetParameters(CSearchedPosition& line, std::mt19937_64& rng) {
    CRandomSetMaker(rng, line.Root()).DrawParameters(line.Context());
    line.Analysis().m_nKeyLine = static_cast<std::uint8_t>(reference::Draw(rng, 8));
    const TChessboard& root = line.Root();
    line.Analysis().m_rootMaterial = {static_cast<std::uint8_t>(WhiteFigureCount(root)),
                                      static_cast<std::uint8_t>(BlackFigureCount(root)), root.m_whitePawns,
                                      root.m_blackPawns};
}

struct TTally {
    int m_nMate = 0, m_nNoMate = 0, m_nDoubtful = 0, m_nMissed = 0;
};

void Compare(const std::string& placement, int nMoves, bool bRegister, std::mt19937_64& rng, TTally& tally) {
    CSearchedPosition line(placement, 2 * nMoves - 1, 1);
    CRecordingRegister known;
    known.m_bRemembers = true;
    if (bRegister)
        line.Analysis().m_pRegister = &known;
    SetParameters(line, rng);
    for (int i = 0; i < 3; ++i)
        line.Now().m_nHeuristics |= kRuleBits[reference::Draw(rng, std::size(kRuleBits))];
    line.Now().m_nHeurParams = ComputeHeurParams(line.Now());

    const auto shortest = reference::ShortestMate(reference::ProblemFromFen(placement), nMoves, 400000);
    if (!shortest)
        return;
    const TMateResult verdict = line.Verdict();
    if (verdict == MR_MATE) {
        EXPECT_NE(*shortest, 0) << placement << " #" << nMoves << ", mask " << line.Root().m_nHeuristics;
        ++tally.m_nMate;
    } else if (verdict == MR_NOMATE) {
        EXPECT_EQ(*shortest, 0) << placement << " #" << nMoves << ", mask " << line.Root().m_nHeuristics;
        ++tally.m_nNoMate;
    } else {
        ++tally.m_nDoubtful;
        tally.m_nMissed += *shortest != 0;
    }
}

void ExpectAllKinds(const TTally& tally) {
    EXPECT_GT(tally.m_nMate, 10);
    EXPECT_GT(tally.m_nNoMate, 10);
    EXPECT_GT(tally.m_nDoubtful, 10);
    EXPECT_GT(tally.m_nMissed, 0) << "doubt that cost nothing shows nothing";
}

TEST(RulesOnBlackMoves, NeverProveWhatIsNotSo) {
    std::mt19937_64 rng(5501);
    TTally tally;
    for (int i = 0; i < Samples(500); ++i)
        Compare(AnyPlacement(rng, i, 4 + i % 4), 3 + i % 2, false, rng, tally);
    ExpectAllKinds(tally);
}

/// From ten plies on doubts go through the register, under mask and signature.
TEST(RulesOnBlackMoves, NeverProveWhatIsNotSoThroughTheRegister) {
    std::mt19937_64 rng(5503);
    TTally tally;
    for (int i = 0; i < Samples(150); ++i)
        Compare(AnyPlacement(rng, i, 3 + i % 2), 6, true, rng, tally);
    ExpectAllKinds(tally);
}

} // namespace
} // namespace quillon::test
