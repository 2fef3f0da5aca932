// Keys of the engine replayed against every defence, its own moves judged by independent rules.

#include "heuristics/product_oracle.h"

#include <gtest/gtest.h>

#include "search/search_truth.h"

namespace quillon::test {
namespace {

constexpr std::uint64_t kAmple = 5'000;

reference::ProofReport Verify(const std::string& placement, int nMoves, const std::string& key,
                              CProductOracle& oracle) {
    return reference::VerifyMate(reference::ProblemFromFen(placement), nMoves, key, std::ref(oracle), kAmple);
}

TEST(VerifiedKeys, StandAgainstEveryDefence) {
    int verified = 0;
    for (const TComposedPosition& row : ComposedPositions()) {
        CProductOracle oracle(row.m_placement, row.m_nMoves);
        const reference::ProofReport report = Verify(row.m_placement, row.m_nMoves, row.m_key, oracle);
        EXPECT_EQ(report.fault, "") << row.m_placement << " #" << row.m_nMoves << ' ' << row.m_key;
        ++verified;
    }
    EXPECT_GT(verified, 90);
}

/// The proof alone carries the long problems: its moves mate as they stand.
TEST(VerifiedKeys, OfTheBestFirstProofStand) {
    int suggested = 0;
    for (const TComposedPosition& row : ComposedPositions()) {
        if (row.m_nMoves < 4)
            continue;
        CProductOracle oracle(row.m_placement, row.m_nMoves);
        ASSERT_TRUE(oracle.Guide(100'000)) << row.m_placement;
        EXPECT_EQ(Verify(row.m_placement, row.m_nMoves, row.m_key, oracle).fault, "") << row.m_placement;
        suggested += oracle.Suggested();
    }
    EXPECT_GT(suggested, 100);
}

TEST(VerifiedKeys, AWrongKeyFails) {
    int refuted = 0;
    for (const TComposedPosition& row : ComposedPositions()) {
        if (row.m_nMoves != 3)
            continue;
        const reference::Position root = reference::ProblemFromFen(row.m_placement);
        for (const reference::Move move : reference::LegalMoves(root)) {
            const std::string text = reference::LongNotation(root, move);
            CProductOracle oracle(row.m_placement, row.m_nMoves);
            if (text == row.m_key || (move.from + move.to) % 4 != 0)
                continue;
            EXPECT_EQ(Verify(row.m_placement, row.m_nMoves, text, oracle).verdict, reference::ProofVerdict::Failed)
                << row.m_placement << ' ' << text;
            ++refuted;
        }
    }
    EXPECT_GT(refuted, 50);
}

TEST(VerifiedKeys, ALengthTooShortFails) {
    for (const TComposedPosition& row : ComposedPositions()) {
        if (row.m_nMoves < 3 || row.m_nMoves > 4)
            continue;
        CProductOracle oracle(row.m_placement, row.m_nMoves - 1);
        EXPECT_EQ(Verify(row.m_placement, row.m_nMoves - 1, row.m_key, oracle).verdict, reference::ProofVerdict::Failed)
            << row.m_placement;
    }
}

/// After a double step the board does not tell all: the move in passing hangs on the move before.
TEST(VerifiedKeys, BehindDoubleStepsStand) {
    int verified = 0, inLine = 0;
    std::mt19937_64 rng(7020);
    for (int i = 0; i < Samples(1500); ++i) {
        const std::string placement = reference::RandomPawnPlacement(rng, 8);
        const auto problem = Judged(placement, 2, 5'000);
        if (!problem || problem->m_keys.empty() || reference::ForcesMate(reference::ProblemFromFen(placement), 1))
            continue;
        CProductOracle oracle(placement, 2);
        for (const std::string& key : problem->m_keys)
            EXPECT_EQ(Verify(placement, 2, key, oracle).fault, "") << placement << ' ' << key;
        ++verified;
        inLine += oracle.SolvedInLine();
    }
    EXPECT_GT(verified, Floor(5));
    EXPECT_GE(inLine, Floor(5));
}

} // namespace
} // namespace quillon::test
