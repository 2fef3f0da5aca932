// Nodes under heuristics: whatever is in force, what they prove is true.

#include "heuristics/heuristic_moves.h"

#include <gtest/gtest.h>

#include "heuristics/heuristic_line.h"
#include "heuristics/heuristic_set.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

TEST(HeuristicMoves, InCheckAllRepliesAreWanted) {
    CHeuristicLine line("7k/8/8/8/8/8/2r5/2R1K2Q", 21, SH_SEASNAKE);
    EXPECT_FALSE(line.Generated().empty());
    line.Play("Rc1-b1 Rc2-c1");
    EXPECT_TRUE(line.Generated().empty());
}

TEST(HeuristicMoves, OneColourPlayHasNoListOfItsOwn) {
    CHeuristicLine line("k7/p7/8/8/2b5/K7/8/2B5", 21, SH_ONECOLORPLAYPOSSIBLE);
    EXPECT_TRUE(line.Generated().empty());
    EXPECT_FALSE(line.m_bDoubtful);
}

TEST(HeuristicMoves, ABitTakenOffTakesItsSignatureAlong) {
    CHeuristicLine line("k7/8/8/8/8/8/8/K7", 21, SH_KEYSQUARE | SH_SKIPWORSTWHITEMOVES);
    ClearHeuristics(line.Now(), SH_SKIPWORSTWHITEMOVES);
    EXPECT_EQ(line.Now().m_nHeuristics, SH_KEYSQUARE);
    EXPECT_EQ(line.Now().m_nHeurParams, ComputeHeurParams(line.Now()));
}

/// Parameters that the random sets use: squares of the board in place of those that a choice would name.
void NameSquares(CHeuristicLine& line, std::mt19937_64& rng) {
    TSearchContext& context = line.Context();
    const auto square = [&] { return static_cast<TSquare>(reference::DrawInt(rng, kSquares)); };
    context.m_nKeySquare = square();
    context.m_nKeyWhiteFigure = square();
    context.m_nPinnedFigure = square();
    context.m_nZugzwangTriangle1 = square();
    context.m_nZugzwangTriangle2 = square();
    context.m_nSeaSnakeApproach = square();
    context.m_bHeuristicsFallback = reference::Chance(rng, 50);
    context.m_bDlfuDynamic = context.m_bApplyDlfuDynamically = reference::Chance(rng, 50);
    context.m_bDontLetKingMove = reference::Chance(rng, 50);
    line.Analysis().m_zugzwangPositions[""] = line.Root().m_board;
}

struct TProofs {
    int m_nMates = 0, m_nRefuted = 0;
};

TProofs CheckProofs(std::uint64_t nSeed, int nMoves, int nMen, int nCount, std::uint64_t maxNodes, bool bRegister) {
    std::mt19937_64 rng(nSeed);
    TProofs proofs;
    for (int i = 0; i < nCount; ++i) {
        const std::string placement = AnyPlacement(rng, i, nMen + i % 3);
        // Few bits at a time: with many nearly everything is doubtful.
        std::uint32_t mask = 0;
        for (int bits = 1 + i % 3; bits > 0; --bits)
            mask |= std::uint32_t{1} << reference::DrawInt(rng, 32);
        mask &= kAllHeuristics & ~SH_FINDFORCEDMATE;
        if (mask == 0)
            continue;
        CHeuristicLine line(placement, 2 * nMoves - 1, 0);
        NameSquares(line, rng);
        CHeuristicLine::SetMask(line.Root(), mask);
        line.Analysis().m_bSafeMode = i % 4 == 0;
        CRealRegister known;
        if (bRegister)
            line.Analysis().m_pRegister = &known;
        const TMateResult verdict = line.Verdict();
        if (verdict == MR_MATE || verdict == MR_NOMATE) {
            const auto truth = MatesWithin(placement, nMoves, maxNodes);
            if (truth) {
                EXPECT_EQ(verdict == MR_MATE, *truth) << placement << " in " << nMoves << ", mask " << std::hex << mask;
                proofs.m_nMates += verdict == MR_MATE ? 1 : 0;
                proofs.m_nRefuted += verdict == MR_NOMATE ? 1 : 0;
            }
        }
        ExpectTrueEntries(known.m_stored, 40, 10000);
    }
    return proofs;
}

TEST(HeuristicMoves, WhateverIsInForceProofsAreTrue) {
    const TProofs proofs = CheckProofs(3540, 3, 5, Samples(400), 200000, false);
    EXPECT_GT(proofs.m_nMates, 10);
    EXPECT_GT(proofs.m_nRefuted, 50);
}

TEST(HeuristicMoves, SoTheyAreInLongLinesWithARegister) {
    const TProofs proofs = CheckProofs(3541, 6, 3, 6, 50000, true);
    EXPECT_GT(proofs.m_nMates + proofs.m_nRefuted, 0);
}

} // namespace
} // namespace quillon::test
