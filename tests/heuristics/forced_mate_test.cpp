// FindForcedMate: the run behind a root move, its mask, its horizon, and that whatever it claims is true.

#include "heuristics/forced_mate.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "core/generation.h"
#include "heuristics/heuristic_signature.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

// White mates in three: Ra1-a7, then the king to f7 or g6, then the rook. Quiet moves throughout.
constexpr const char* kQuietMate = "7k/8/8/5K2/8/8/8/R7";

/// A root with SH_FINDFORCEDMATE in its mask.
class CForced : public CSearchedPosition {
  public:
    CForced(std::string_view placement, int nPlies, int nCode, std::uint32_t others = 0)
        : CSearchedPosition(placement, nPlies, 1) {
        Context().m_nFfmDepth = Context().m_nFfmStartDepth = static_cast<std::uint8_t>(nCode);
        Root().m_nHeuristics = SH_FINDFORCEDMATE | others;
        Root().m_nHeurParams = ComputeHeurParams(Root());
    }

    /// The run behind a root move; MR_NONE if the move does not stand.
    TMateResult Try(TMove move, bool bLog = false) {
        TChessboard* const child = CopyToChild(&Root());
        return MakeWhiteMove(*child, move) == 0 ? MR_NONE : FindForcedMateRoot(*child, bLog);
    }
    TMateResult Try(std::string_view text, bool bLog = false) { return Try(ParseMove(text, true), bLog); }
};

TEST(FindForcedMate, FindsAMateByChecks) {
    CForced ladder("8/8/8/4k3/8/R7/1R6/6K1", 7, 2); // the rooks drive the king up, check by check
    EXPECT_EQ(ladder.Try("Rb2-b5"), MR_DOUBTFUL);   // too short by far
    CForced edge("4k3/R7/8/8/8/8/1R6/6K1", 5, 2);
    EXPECT_EQ(edge.Try("Rb2-b8"), MR_MATE);
}

TEST(FindForcedMate, ADeeperCodeFindsWhatAShallowerLeavesInDoubt) {
    // Two rooks against a bare king in the middle: the mate needs quiet moves that threaten nothing at once.
    const auto mates = [](int nCode) {
        CForced line("8/8/8/8/8/2k5/8/QK6", 9, nCode);
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(line.Root(), list);
        return std::count_if(list, list + count, [&](const TMove& move) { return line.Try(move) == MR_MATE; });
    };
    EXPECT_LE(mates(2), mates(5));
}

TEST(FindForcedMate, LeftOutMovesAreDoubtNotRefutation) {
    CForced line(kQuietMate, 9, 2);
    line.Analysis().m_shLookForQuickerMateDepth = 0; // no help from the short-mate search
    EXPECT_EQ(line.Try("Kf5-e4"), MR_DOUBTFUL);      // mates in time, but by quiet moves
    CForced all(kQuietMate, 9, 2);
    all.Context().m_bFfmPreliminary = true; // the preliminary pass takes all moves
    all.Analysis().m_shLookForQuickerMateDepth = 0;
    EXPECT_EQ(all.Try("Kf5-f6"), MR_MATE);
}

TEST(FindForcedMate, ALostQueenIsRefutedForCertain) {
    CForced line("8/8/8/8/8/2k5/1Q6/7K", 7, 5);
    EXPECT_EQ(line.Try("Qb2-b3"), MR_NOMATE); // the maker tells that nothing is left to mate with
}

/// Writes verdicts down.
class CVerdicts : public INodeLog {
  public:
    void Move(const TChessboard&) override {}
    void Verdict(const TChessboard& node, TMateResult result) override {
        m_verdicts.push_back({node.m_nMoves, result});
    }
    void Remark(const TChessboard&, const char*) override {}
    std::vector<std::pair<int, TMateResult>> m_verdicts;
};

TEST(FindForcedMate, TheEndOfItsDepthIsLoggedAndBecomesDoubt) {
    CVerdicts log;
    CForced line("7k/8/8/8/8/8/7P/K7", 9, 2); // no check, no threat, nothing
    line.Analysis().m_pNodeLog = &log;
    line.Analysis().m_shLookForQuickerMateDepth = 0;
    EXPECT_EQ(line.Try("Ka1-b1", true), MR_DOUBTFUL);
    ASSERT_FALSE(log.m_verdicts.empty());
    EXPECT_EQ(log.m_verdicts.front(), std::pair(7, MR_FFM_END));
    EXPECT_EQ(log.m_verdicts.back(), std::pair(7, MR_DOUBTFUL)); // what the black node makes of it
}

TEST(FindForcedMate, TheEndOfItsDepthIsDoubtInSafeModeToo) {
    CForced line("7k/8/8/8/8/8/7P/K7", 9, 2);
    line.Analysis().m_bSafeMode = true;
    EXPECT_EQ(line.Try("Ka1-b1"), MR_DOUBTFUL);
}

TEST(FindForcedMate, PutsMaskSignatureAndContextBack) {
    for (const int nWithOther : {-1, 0, 1}) {
        CForced line("7k/8/8/8/8/5K2/8/R7", 29, 3, SH_AREKINGSNEAR | SH_DONTRECEDEBLACKKING);
        line.Analysis().m_shLookForQuickerMateDepth = 1;
        TSearchContext& context = line.Context();
        context.m_nFfmWithOther = static_cast<std::int8_t>(nWithOther);
        TMove move = ParseMove("Kf3-f4", true);
        TChessboard& child = *CopyToChild(&line.Root());
        ASSERT_EQ(MakeWhiteMove(child, move), 1);
        const TChessboard before = child;
        context.m_nStopRequest = kStopRequest; // it is the way out that is looked at
        EXPECT_EQ(FindForcedMateRoot(child), MR_DOUBTFUL);
        EXPECT_EQ(std::memcmp(&before, &child, sizeof before), 0);
        EXPECT_FALSE(context.m_bFFM);
        EXPECT_EQ(context.m_nFfmHeldBack, 0u);
        EXPECT_EQ(context.m_nFfmHeldBackUntil, 0);
    }
}

/// Tells the masks under which doubt was stored, by plies left.
class CMaskedDoubt : public ITemporaryRegister {
  public:
    [[nodiscard]] TMateResult Find(const TChessboard&, int, int) override { return MR_NONE; }
    void Insert(const TChessboard&, int, TMateResult) override {}
    void InsertDoubtful(const TChessboard& position, int nMoves) override {
        m_doubt.insert({nMoves, position.m_nHeuristics});
        EXPECT_EQ(position.m_nHeurParams, ComputeHeurParams(position));
    }
    std::set<std::pair<int, std::uint32_t>> m_doubt;
};

std::set<std::pair<int, std::uint32_t>> MasksOfDoubt(int nWithOther, bool bCycleTwice = false,
                                                     bool bPreliminary = false) {
    CMaskedDoubt known;
    CForced line("7k/8/8/8/8/5K2/8/R7", 17, 2, SH_DONTRECEDEBLACKKING);
    line.Context().m_nFfmWithOther = static_cast<std::int8_t>(nWithOther);
    line.Context().m_bFfmCycleTwice = bCycleTwice;
    line.Context().m_bFfmPreliminary = bPreliminary;
    line.Analysis().m_pRegister = &known;
    line.Analysis().m_shLookForQuickerMateDepth = 0;
    (void)line.Try("Ra1-a7");
    return known.m_doubt;
}

TEST(FindForcedMate, OtherHeuristicsAreOffOrKeptForTheWholeRun) {
    for (const auto& [plies, mask] : MasksOfDoubt(0))
        EXPECT_EQ(mask, SH_FINDFORCEDMATE) << plies;
    for (const auto& [plies, mask] : MasksOfDoubt(1))
        EXPECT_EQ(mask, SH_FINDFORCEDMATE | SH_DONTRECEDEBLACKKING) << plies;
    EXPECT_EQ(MasksOfDoubt(0, true), MasksOfDoubt(1)) << "the first of two cycles";
    EXPECT_FALSE(MasksOfDoubt(0).empty());
    EXPECT_FALSE(MasksOfDoubt(1).empty());
}

TEST(FindForcedMate, ThePreliminaryPassKeepsTheOtherHeuristics) {
    const auto masks = MasksOfDoubt(-1, false, true); // all moves are taken: nothing else reduces the tree
    for (const auto& [plies, mask] : masks)
        EXPECT_EQ(mask, SH_FINDFORCEDMATE | SH_DONTRECEDEBLACKKING) << plies;
    EXPECT_FALSE(masks.empty());
}

TEST(FindForcedMate, OtherHeuristicsComeBackNearTheEnd) {
    CForced line("7k/8/8/8/8/5K2/8/R7", 29, 2, SH_DONTRECEDEBLACKKING);
    TSearchContext& context = line.Context();
    context.m_nFfmHeldBack = SH_DONTRECEDEBLACKKING;
    context.m_nFfmHeldBackUntil = 9;
    TChessboard b = line.Root();
    for (const auto& [plies, bDue] : {std::pair(12, false), std::pair(10, false), std::pair(8, true)}) {
        b.m_nMoves = static_cast<std::uint16_t>(plies);
        b.m_nHeuristics = SH_FINDFORCEDMATE;
        ReleaseHeldBackHeuristics(b);
        EXPECT_EQ((b.m_nHeuristics & SH_DONTRECEDEBLACKKING) != 0, bDue) << plies;
        EXPECT_TRUE(!bDue || b.m_nHeurParams == ComputeHeurParams(b));
    }
    b.m_nMoves = 6; // below, a heuristic that the line has dropped stays dropped
    b.m_nHeuristics = SH_FINDFORCEDMATE;
    ReleaseHeldBackHeuristics(b);
    EXPECT_EQ(b.m_nHeuristics, SH_FINDFORCEDMATE);
}

TEST(FindForcedMate, TheFirstMovesAreFreeTheMoreTheDeeperTheCode) {
    CForced line(kQuietMate, 29, 2);
    TChessboard b = line.Root();
    for (int code = 2; code <= 9; ++code) {
        line.Context().m_nFfmDepth = static_cast<std::uint8_t>(code);
        for (int plies = 29; plies >= 1; plies -= 2) {
            b.m_nMoves = static_cast<std::uint16_t>(plies);
            EXPECT_EQ(TakesAllMoves(b), 29 - plies < code - 2 || plies < 4) << code << " " << plies;
        }
    }
    line.Context().m_bFfmPreliminary = true;
    b.m_nMoves = 15;
    EXPECT_TRUE(TakesAllMoves(b));
}

TEST(FindForcedMate, ThePreliminaryPassExchangesTheEdge) {
    CForced line(kQuietMate, 29, 3, SH_KEEPKINGONTHEEDGE | SH_ASSERTBLACKKINGSURROUNDED | SH_3MOVESTOMATE);
    TChessboard& root = line.Root();
    const std::uint32_t before = root.m_nHeuristics;
    StartPreliminaryPass(root); // none is pending
    EXPECT_EQ(root.m_nHeuristics, before);
    line.Context().m_bFfmPreliminary = true;
    StartPreliminaryPass(root);
    EXPECT_EQ(root.m_nHeuristics, SH_FINDFORCEDMATE | SH_KEEPKINGWITHINEXTEDGE | SH_3MOVESTOMATE);
    EXPECT_EQ(line.Context().m_nFfmSavedHeuristics, before);
    EXPECT_EQ(root.m_nHeurParams, ComputeHeurParams(root));
}

/// Looks whether trials and forced nodes keep their doubt apart.
class CApart : public ITemporaryRegister {
  public:
    [[nodiscard]] TMateResult Find(const TChessboard& position, int, int) override {
        Look(position);
        return MR_NONE;
    }
    void Insert(const TChessboard&, int, TMateResult) override {}
    void InsertDoubtful(const TChessboard& position, int) override { Look(position); }
    int m_nTrials = 0, m_nForced = 0;

  private:
    void Look(const TChessboard& position) {
        const bool bTrial = position.m_pContext->m_nQuickerLevel != 0;
        EXPECT_EQ((position.m_nHeuristics & SH_FINDFORCEDMATE) == 0, bTrial);
        (bTrial ? m_nTrials : m_nForced) += 1;
    }
};

TEST(FindForcedMate, TheShortMateSearchInsideKeepsItsDoubtApart) {
    CApart known;
    CForced line("7k/8/8/3p4/8/5K2/8/R7", 13, 3, SH_DONTRECEDEBLACKKING);
    line.Analysis().m_pRegister = &known;
    line.Analysis().m_shLookForQuickerMateDepth = 5;
    (void)line.Try("Ra1-a7");
    EXPECT_GT(known.m_nTrials, 0);
    EXPECT_GT(known.m_nForced, 0);
}

// --- Whatever it claims is true

struct TClaims {
    int m_nMates = 0, m_nRefuted = 0, m_nDoubtful = 0;
};

/// Every root move of random positions through the run; the reference solver judges what is claimed.
TClaims CheckClaims(int nCode, int nMoves, int nMen, int nPositions, bool bRegister) {
    std::mt19937_64 rng(static_cast<std::uint64_t>(3520 + 10 * nCode + nMoves));
    constexpr std::uint32_t kOthers[] = {0, SH_DONTRECEDEBLACKKING, SH_AREKINGSNEAR | SH_3MOVESTOMATE,
                                         SH_ASSERTBLACKKINGSURROUNDED | SH_KEEPKINGWITHINEXTEDGE};
    TClaims claims;
    for (int i = 0; i < nPositions; ++i) {
        const std::string placement =
            i % 2 == 0 ? reference::RandomMatingPlacement(rng, nMen + i % 3) : AnyPlacement(rng, i / 2, nMen + i % 3);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), nMoves, 400000);
        if (!truth)
            continue;
        CForced line(placement, 2 * nMoves - 1, nCode, kOthers[i % 4]);
        CRealRegister known;
        if (bRegister)
            line.Analysis().m_pRegister = &known;
        line.Context().m_nFfmWithOther = static_cast<std::int8_t>(i % 3 - 1);
        line.Analysis().m_bSafeMode = i % 5 == 0;
        line.Analysis().m_shLookForQuickerMateDepth = i % 2 == 0 ? 0 : -1;
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(line.Root(), list);
        for (int j = 0; j < count; ++j) {
            const TMateResult result = line.Try(list[j]);
            const std::string text = WriteMove(list[j], line.Root());
            const bool bKey = std::ranges::find(truth->keys, text) != truth->keys.end();
            if (result == MR_MATE || result == MR_NOMATE) {
                EXPECT_EQ(result == MR_MATE, bKey) << placement << " " << text << " code " << nCode << " in " << nMoves;
            }
            claims.m_nMates += result == MR_MATE;
            claims.m_nRefuted += result == MR_NOMATE;
            claims.m_nDoubtful += result == MR_DOUBTFUL;
        }
        ExpectTrueEntries(known.m_stored, 200, 20000);
    }
    return claims;
}

class ForcedMateClaims : public testing::TestWithParam<int> {};

TEST_P(ForcedMateClaims, MatesAndRefutationsOfShortProblemsAreTrue) {
    const TClaims claims = CheckClaims(GetParam(), 3, 4, Samples(40), false);
    EXPECT_GT(claims.m_nMates, 10);
    EXPECT_GT(claims.m_nRefuted + claims.m_nDoubtful, 50);
}

TEST_P(ForcedMateClaims, TheyAreTrueWithARegister) {
    const TClaims claims = CheckClaims(GetParam(), 6, 3, 2, true);
    EXPECT_GT(claims.m_nMates + claims.m_nRefuted + claims.m_nDoubtful, 0);
}

INSTANTIATE_TEST_SUITE_P(Codes, ForcedMateClaims, testing::Range(2, 10));

} // namespace
} // namespace quillon::test
