// Registers, short-mate search and hints change the work and not the answer: the same keys under all conditions, with
// the reference solver as the truth.

#include "search/register_comparison.h"

namespace quillon::test {
namespace {

struct TBatch {
    std::uint64_t m_nSeed;
    int m_nMoves, m_nCount;
    int m_nLeastMen, m_nMostMen;
    std::uint64_t m_nMaxNodes; // of the reference solver; larger trees are passed over
};

/// Returns how many diagrams had a key.
int Compare(const TBatch& batch, CComparison& comparison) {
    std::mt19937_64 rng(batch.m_nSeed);
    int compared = 0, mates = 0;
    for (int i = 0; compared < batch.m_nCount && i < 10 * batch.m_nCount; ++i) {
        const int men = batch.m_nLeastMen + reference::DrawInt(rng, batch.m_nMostMen - batch.m_nLeastMen + 1);
        const std::string placement = AnyPlacement(rng, i, men);
        const auto truth =
            reference::SolveAllWithTable(reference::ProblemFromFen(placement), batch.m_nMoves, batch.m_nMaxNodes);
        if (!truth)
            continue;
        ++compared;
        comparison.ExpectKeys(placement, batch.m_nMoves, truth->keys);
        mates += truth->mateExists ? 1 : 0;
    }
    EXPECT_EQ(compared, batch.m_nCount) << "too many diagrams were too large for the reference solver";
    return mates;
}

TEST(RegisterDifferential, MatesInOneAndTwo) {
    CComparison comparison;
    EXPECT_GT(Compare({901, 1, Samples(150), 4, 12, 1000}, comparison), 0);
    EXPECT_GT(Compare({902, 2, Samples(250), 4, 10, 100000}, comparison), 0);
    EXPECT_EQ(comparison.m_nAnswers, 0u) << "a short analysis asks no register";
}

TEST(RegisterDifferential, MatesInThreeAndFour) {
    CComparison comparison;
    EXPECT_GT(Compare({903, 3, Samples(150), 4, 7, 60000}, comparison), 0);
    EXPECT_GT(Compare({904, 4, Samples(40), 4, 5, 60000}, comparison), 0);
}

/// From six moves on the registers are in force.
TEST(RegisterDifferential, MatesInSixOfFewMen) {
    std::mt19937_64 rng(905);
    CComparison comparison;
    comparison.m_bJudgesEntries = true;
    const int count = Samples(40);
    int mates = 0, compared = 0;
    for (int i = 0; compared < count && i < 20 * count; ++i) {
        const std::string placement =
            i % 3 == 0 ? reference::RandomPawnPlacement(rng, 4) : reference::RandomMatingPlacement(rng, 4 + i % 2);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), 6, 100000);
        if (!truth)
            continue;
        ++compared;
        comparison.ExpectKeys(placement, 6, truth->keys);
        mates += truth->mateExists ? 1 : 0;
    }
    EXPECT_GT(mates, 0);
    EXPECT_GT(comparison.m_nAnswers, 0u);
    EXPECT_GT(comparison.m_nJudged, 0);
}

/// A register of 64 KB has to make room while one diagram is solved, and what it loses is only time.
TEST(RegisterDifferential, AFullRegisterLosesTimeAlone) {
    CComparison comparison;
    const auto placement = "8/8/8/8/8/2k5/7R/K7";
    const TAnswer bare = comparison.Solve(placement, 6, kBare);
    ASSERT_TRUE(bare.m_bSettled);
    comparison.ExpectKeys(placement, 6, bare.m_keys);
    EXPECT_GT(comparison.m_nEvictions, 0u);
    EXPECT_GT(comparison.m_nAnswers, 0u);
}

/// A root that has a mate on the move, or whose answers the register knows already, lists all its keys nevertheless.
TEST(RegisterDifferential, ARegisterTakesNoKeyFromTheRoot) {
    for (const char* placement : {"7k/1Q5n/6K1/7Q/8/8/8/8", "k7/1p6/1K6/8/1B6/8/3R4/8", "8/8/8/8/8/3Q4/2R4p/5K1k"}) {
        CComparison comparison;
        comparison.ExpectKeys(placement, 6, comparison.Solve(placement, 6, kBare).m_keys);
    }
    CRealRegister known;
    for (int run = 1; run <= 3; ++run) {
        const auto context = NewSearchContext();
        TAnalysis analysis;
        analysis.m_nSolveMode = kAllSolutions;
        analysis.m_pRegister = &known;
        TRootRun root;
        (void)FindMateRoot(*context, analysis, ChessboardFromFEN("8/8/P7/8/8/8/8/k2K4"), 11, root, true, false);
        ASSERT_EQ(root.m_solutions.size(), 1u) << "run " << run << " over the same register";
        EXPECT_EQ(root.m_solutions[0].m_text, "Kd1-c2");
    }
}

TEST(RegisterDifferential, ComposedPositionsKeepTheirKey) {
    CComparison comparison;
    int i = 0;
    for (const TComposedPosition& row : ComposedPositions())
        if (row.m_nMoves >= 3 && row.m_nMoves <= 6 && i++ % 6 == 0)
            comparison.ExpectKeys(row.m_placement, row.m_nMoves, {row.m_key});
    EXPECT_GT(i, 6);
}

} // namespace
} // namespace quillon::test
