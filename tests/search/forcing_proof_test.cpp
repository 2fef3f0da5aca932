// The proof by checks against a search of its own over the reference rules, in which White gives nothing but checks.

#include "search/forcing_proof.h"

#include <gtest/gtest.h>

#include "search/search_truth.h"

namespace quillon::test {
namespace {

/// Do checks alone mate in at most nMoves? nLeft bounds the positions reached; at 0 the answer means nothing.
bool ChecksMate(const reference::Position& position, int nMoves, long& nLeft) {
    for (const reference::Move& move : reference::LegalMoves(position)) {
        const reference::Position child = reference::Play(position, move);
        if (--nLeft <= 0)
            return false;
        if (!reference::InCheck(child))
            continue;
        const std::vector<reference::Move> evasions = reference::LegalMoves(child);
        const bool bAllLose =
            nMoves == 1 ? evasions.empty() : std::ranges::all_of(evasions, [&](const reference::Move& evasion) {
                return ChecksMate(reference::Play(child, evasion), nMoves - 1, nLeft);
            });
        if (bAllLose)
            return true;
    }
    return false;
}

std::optional<bool> ChecksMate(const std::string& placement, int nMoves, long nMost) {
    long nLeft = nMost;
    const bool bMates = ChecksMate(reference::ProblemFromFen(placement), nMoves, nLeft);
    return bMates || nLeft > 0 ? std::optional(bMates) : std::nullopt;
}

bool ProveAndCompare(const std::string& placement, int nPlies, int nPass) {
    CSearchedPosition line(placement, nPlies, nPass);
    const CUntouched before(line.Root());
    const bool bProved = ProveByForcing(line.Root());
    EXPECT_TRUE(before.Holds()) << placement;
    if (bProved) {
        const auto truth = MatesWithin(placement, MovesOf(nPlies));
        EXPECT_TRUE(truth.value_or(true)) << placement << " has no mate within " << nPlies << " plies";
    }
    return bProved;
}

TEST(ForcingProof, SuccessIsAProof) {
    std::mt19937_64 rng(3301);
    int proved = 0;
    for (int i = 0; i < Samples(3000); ++i)
        proved += ProveAndCompare(AnyPlacement(rng, i, 4 + i % 8), 3 + 2 * (i % 4), 1 + i % 2) ? 1 : 0;
    EXPECT_GT(proved, 0);
}

TEST(ForcingProof, FindsEveryShortMateByChecks) {
    std::mt19937_64 rng(3302);
    int compared = 0, mates = 0;
    for (int i = 0; i < Samples(2000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 5);
        const int moves = 2 + i % 2;
        const auto truth = ChecksMate(placement, moves, 3000); // the proof has its bound too
        if (!truth)
            continue;
        EXPECT_EQ(ProveAndCompare(placement, 2 * moves - 1, 2), *truth) << placement << " in " << moves;
        ++compared;
        mates += *truth ? 1 : 0;
    }
    EXPECT_GT(compared, 0);
    EXPECT_GT(mates, 0);
}

/// Mates that need five checks or more, far beyond what a full search of the position costs.
TEST(ForcingProof, FindsLongMatesByChecks) {
    std::mt19937_64 rng(3303);
    int found = 0;
    for (int i = 0; i < 40 * Samples(300) && found < 3; ++i) {
        const std::string placement = reference::RandomMatingPlacement(rng, 6 + i % 5);
        const auto shorter = ChecksMate(placement, 3, 3000);
        if (!shorter || *shorter || !ChecksMate(placement, 4, 6000).value_or(false))
            continue;
        ++found;
        EXPECT_FALSE(ProveAndCompare(placement, 5, 2)) << placement;
        EXPECT_TRUE(ProveAndCompare(placement, 7, 2)) << placement;
        EXPECT_TRUE(ProveAndCompare(placement, 31, 2)) << placement << ": more plies than needed";
    }
    EXPECT_EQ(found, 3);
}

TEST(ForcingProof, PlaysNothingButChecks) {
    const auto placement = "4R3/8/8/8/8/8/8/k2K4"; // the key Kd1-c2 is quiet
    EXPECT_EQ(MatesWithin(placement, 2), true);
    EXPECT_FALSE(ProveAndCompare(placement, 3, 2));
}

TEST(ForcingProof, AnEvasionMayBeTheCheck) {
    const auto placement = "k7/8/K1q5/8/8/8/1R6/8"; // White, in check, has no check that answers it
    EXPECT_FALSE(ProveAndCompare(placement, 5, 2));
    const auto answer = "k3r3/7Q/1K6/8/8/8/8/8"; // Qh7-a7 mates
    EXPECT_TRUE(ProveAndCompare(answer, 3, 2));
    const auto crossed = "7k/5Q2/8/7K/8/8/8/7q"; // in check by the queen
    EXPECT_EQ(ProveAndCompare(crossed, 5, 2), ChecksMate(crossed, 3, 100000).value_or(false));
}

TEST(ForcingProof, StalemateIsNoMate) {
    const auto placement = "7k/5K2/8/8/8/8/8/1Q6"; // Qb1-h1 mates; without it Qg6 would stalemate
    EXPECT_TRUE(ProveAndCompare(placement, 3, 2));
    EXPECT_FALSE(ProveAndCompare("k7/8/1K6/8/8/8/8/6B1", 9, 2)) << "a bishop never mates";
}

/// A queen can check for ever; the bound on positions ends the look.
TEST(ForcingProof, EndsWhateverTheStipulation) {
    for (const char* placement :
         {"6k1/8/8/8/8/8/8/KQ6", "r1bqk2r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPPQPPP/RNB2RK1", "4k3/8/8/8/8/8/QQQ5/QQQ4K"})
        for (const int plies : {21, 201, 597}) {
            CSearchedPosition line(placement, plies);
            const CUntouched before(line.Root());
            const bool bProved = ProveByForcing(line.Root());
            EXPECT_TRUE(before.Holds()) << placement;
            EXPECT_EQ(bProved, reference::Placement(reference::FromFen(placement)).starts_with("4k3")) << placement;
        }
}

TEST(ForcingProof, AStopEndsIt) {
    CSearchedPosition line("4k3/8/8/8/8/8/QQQ5/QQQ4K", 9);
    EXPECT_TRUE(ProveByForcing(line.Root()));
    line.Context().m_nStopRequest = kStopRequest;
    const CUntouched before(line.Root());
    EXPECT_FALSE(ProveByForcing(line.Root()));
    EXPECT_TRUE(before.Holds());
}

// ---- the register

constexpr const char* kQuietEnding = "8/8/8/8/2k5/8/8/K6R"; // no mate by checks

TEST(ForcingProof, TakesAMateFromTheRegister) {
    for (const char* evasion : {"Kc4-d3", "Kc4-d5", "Kc4-c3", "Kc4-b3", "Kc4-b5", "Kc4-c5"}) {
        CRealRegister known;
        CSearchedPosition line(kQuietEnding, 25);
        line.Analysis().m_pRegister = &known;
        EXPECT_FALSE(ProveByForcing(line.Root()));
        // All replies to Rh1-h4 but one are known as mates within what is left: that one is missing.
        for (const char* reply : {"Kc4-d3", "Kc4-d5", "Kc4-c3", "Kc4-b3", "Kc4-b5", "Kc4-c5"}) {
            CSearchedPosition after(kQuietEnding, 25);
            after.Play("Rh1-h4").Play(reply);
            if (std::string(reply) != evasion)
                known.Insert(after.Now(), 21, MR_MATE);
        }
        EXPECT_FALSE(ProveByForcing(line.Root())) << evasion;
        CSearchedPosition after(kQuietEnding, 25);
        after.Play("Rh1-h4").Play(evasion);
        known.Insert(after.Now(), 23, MR_MATE);
        EXPECT_TRUE(ProveByForcing(line.Root())) << evasion;
        EXPECT_FALSE(line.Context().m_bAdditionalMovesUsed) << "the proof runs at the real length";
    }
}

TEST(ForcingProof, BelievesARegisterThatSaysNoMate) {
    CRecordingRegister known;
    known.m_nAnswer = MR_NOMATE;
    CSearchedPosition line("4k3/8/8/8/8/8/QQQ5/QQQ4K", 11);
    EXPECT_TRUE(ProveByForcing(line.Root()));
    line.Analysis().m_pRegister = &known;
    EXPECT_FALSE(ProveByForcing(line.Root()));
    ASSERT_FALSE(known.m_asked.empty());
    EXPECT_TRUE(known.m_stored.empty()) << "failure proves nothing, so nothing is stored";
}

} // namespace
} // namespace quillon::test
