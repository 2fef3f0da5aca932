// Thousands of diagrams under all conditions that may change the work and not the answer, and longer mates, in which
// the registers are in force. A solve without register and short-mate search stands beside the reference solver, which
// follows as far as it can.

#include "search/quicker_mate.h"
#include "search/register_comparison.h"

namespace quillon::test {
namespace {

struct TBatch {
    std::uint64_t m_nSeed;
    int m_nMoves, m_nCount;
    int m_nLeastMen, m_nMostMen;
    std::uint64_t m_nMaxNodes; // of the reference solver
    bool m_bOnlyKnown;         // diagrams too large for the reference solver are passed over
};

/// Small diagrams for long mates: a pawn to promote, or a king already on the edge.
std::string SmallPlacement(std::mt19937_64& rng, int i, int nMen) {
    return i % 3 == 0 ? reference::RandomPawnPlacement(rng, nMen) : reference::RandomMatingPlacement(rng, nMen);
}

void Compare(const TBatch& batch) {
    std::mt19937_64 rng(batch.m_nSeed);
    CComparison comparison;
    comparison.m_bJudgesEntries = batch.m_nMoves >= 6;
    int compared = 0, mates = 0, judged = 0;
    for (int i = 0; compared < batch.m_nCount && i < 20 * batch.m_nCount; ++i) {
        const int men = batch.m_nLeastMen + reference::DrawInt(rng, batch.m_nMostMen - batch.m_nLeastMen + 1);
        const std::string placement = batch.m_nMoves >= 5 ? SmallPlacement(rng, i, men) : AnyPlacement(rng, i, men);
        const auto truth =
            reference::SolveAllWithTable(reference::ProblemFromFen(placement), batch.m_nMoves, batch.m_nMaxNodes);
        if (!truth && batch.m_bOnlyKnown)
            continue;
        ++compared;
        const TAnswer bare = comparison.Solve(placement, batch.m_nMoves, kBare);
        ASSERT_TRUE(bare.m_bSettled) << placement;
        if (truth) {
            ++judged;
            EXPECT_EQ(bare.m_keys, truth->keys) << placement << " #" << batch.m_nMoves;
        }
        comparison.ExpectKeys(placement, batch.m_nMoves, bare.m_keys);
        mates += bare.m_keys.empty() ? 0 : 1;
    }
    EXPECT_EQ(compared, batch.m_nCount);
    EXPECT_GT(judged, 0);
    EXPECT_GT(mates, 0);
    if (batch.m_nMoves >= 6) {
        EXPECT_GT(comparison.m_nAnswers, 0u);
        EXPECT_GT(comparison.m_nJudged, 0);
    }
}

TEST(RegisterDifferentialSlow, MatesInTwo) { Compare({921, 2, Samples(2500), 4, 12, 100000, true}); }
TEST(RegisterDifferentialSlow, MatesInThree) { Compare({922, 3, Samples(1500), 4, 8, 150000, true}); }
TEST(RegisterDifferentialSlow, MatesInFour) { Compare({923, 4, Samples(500), 4, 6, 150000, true}); }
TEST(RegisterDifferentialSlow, MatesInFive) { Compare({924, 5, Samples(150), 4, 5, 200000, false}); }
TEST(RegisterDifferentialSlow, MatesInSix) { Compare({925, 6, Samples(80), 4, 5, 300000, false}); }
TEST(RegisterDifferentialSlow, MatesInSeven) { Compare({926, 7, Samples(25), 4, 4, 500000, false}); }

/// Short-mate searches deep in a long problem, where answers may exceed the trial: whatever the register has stored
/// under a length is true for it.
TEST(RegisterDifferentialSlow, EntriesOfLongAnalysesAreTrue) {
    std::mt19937_64 rng(927);
    int judged = 0, used = 0;
    for (int i = 0; i < Samples(600); ++i) {
        const std::string placement = SmallPlacement(rng, i, 4 + i % 2);
        CRealRegister known;
        CSearchedPosition line(placement, 19 + 2 * (i % 6), 1 + i % 2);
        line.Analysis().m_pRegister = &known;
        line.Analysis().m_shLookForQuickerMateDepth = static_cast<std::int16_t>(i % 3 == 0 ? -1 : 5 + 2 * (i % 2));
        for (int look = 0; look < 3; ++look) // the later ones lean on what the first have stored
            if (FindQuickerMate(&line.Root())) {
                EXPECT_TRUE(MatesWithin(placement, MovesOf(line.Root().m_nMoves), 400000).value_or(true)) << placement;
            }
        used += line.Context().m_bAdditionalMovesUsed ? 1 : 0;
        judged += ExpectTrueEntries(known.m_stored, 100, 60000);
    }
    EXPECT_GT(judged, 0);
    EXPECT_GT(used, 0);
}

} // namespace
} // namespace quillon::test
