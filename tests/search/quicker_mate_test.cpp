// The short-mate search: what it proves is true, what it touched is put back, and a register may help it out.

#include "search/quicker_mate.h"

#include <set>

#include <gtest/gtest.h>

#include "search/quicker_horizon.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

constexpr const char* kMateInOne = "7k/8/6K1/8/8/8/8/1Q6";
constexpr const char* kMateInTwo = "4R3/8/8/8/8/8/8/k2K4"; // Kd1-c2

/// After Kd1-c2 Ka1-a2 White, with the pawn to promote, mates in five moves and no sooner.
constexpr const char* kPawnEnding = "8/8/P7/8/8/8/8/k2K4";
constexpr int kPawnEndingMoves = 5;

std::uint64_t TrialPositions(CSearchedPosition& line) {
    FlushPositions(line.Context(), line.Analysis());
    return line.Analysis().m_nTrialPositions.load();
}

// ---- proofs

struct TLook {
    int m_nPlies;
    int m_nSetting; // -1: the search chooses
    int m_nPass;
    std::uint32_t m_nHeuristics;
};

/// Runs a look and compares it with the rules. Returns what it said.
bool LookAndCompare(const std::string& placement, const TLook& look) {
    CSearchedPosition line(placement, look.m_nPlies, look.m_nPass);
    line.Analysis().m_shLookForQuickerMateDepth = static_cast<std::int16_t>(look.m_nSetting);
    TChessboard& p = line.Root();
    p.m_nHeuristics = look.m_nHeuristics;
    RepetitionMark(p, look.m_nPlies) = 0;
    const CUntouched before(p);
    const bool bFound = FindQuickerMate(&p);
    EXPECT_TRUE(before.Holds()) << placement << (bFound ? " after a success" : " after a failure");
    EXPECT_EQ(line.Context().m_nUncounted, 0u) << "positions of trials are counted apart";
    if (bFound) {
        const auto truth = MatesWithin(placement, MovesOf(look.m_nPlies));
        EXPECT_TRUE(truth.value_or(true)) << placement << " has no mate within " << look.m_nPlies << " plies";
    }
    return bFound;
}

TEST(QuickerMate, SuccessIsAProof) {
    std::mt19937_64 rng(2201);
    int found = 0, failed = 0;
    for (int i = 0; i < Samples(2000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 7);
        const TLook look{3 + 2 * (i % 3), -1, 1 + i % 2, 0};
        ++(LookAndCompare(placement, look) ? found : failed);
    }
    EXPECT_GT(found, 0);
    EXPECT_GT(failed, 0);
}

/// Heuristics in force make a trial doubtful, never wrong.
TEST(QuickerMate, SuccessIsAProofWhateverHeuristicsAreInForce) {
    std::mt19937_64 rng(2202);
    constexpr std::uint32_t kAny[] = {SH_DONTRECEDEBLACKKING, SH_SWEEPINGWHITEROOK, SH_SKIPWORSTWHITEMOVES,
                                      SH_KEEPKINGONTHEEDGE | SH_ZUGZWANG, SH_USEBLOCKBLACKPAWNSLEVEL};
    int found = 0;
    for (int i = 0; i < Samples(1200); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 6);
        const TLook look{5 + 2 * (i % 2), -1, 1, kAny[static_cast<std::size_t>(i) % std::size(kAny)]};
        found += LookAndCompare(placement, look) ? 1 : 0;
    }
    EXPECT_GT(found, 0);
}

/// Without heuristics a trial is exact: a failure up to a setting says that there is no mate within it.
TEST(QuickerMate, LooksAsFarAsTheSetting) {
    std::mt19937_64 rng(2203);
    int compared = 0, mates = 0;
    for (int i = 0; i < Samples(1500); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 5);
        const int setting = 1 + 2 * (i % 3);
        const auto truth = MatesWithin(placement, MovesOf(setting), 60000);
        if (!truth)
            continue;
        EXPECT_EQ(LookAndCompare(placement, {9, setting, 2, 0}), *truth) << placement << " within " << setting;
        ++compared;
        mates += *truth ? 1 : 0;
    }
    EXPECT_GT(compared, 0);
    EXPECT_GT(mates, 0);
}

TEST(QuickerMate, FindsTheMatesOfComposedPositionsAndNoShorterOnes) {
    int compared = 0;
    for (const TComposedPosition& row : ComposedPositions()) {
        if (row.m_nMoves > 4 || (row.m_nMoves == 4 && compared % 3 != 0))
            continue;
        const int plies = 2 * row.m_nMoves - 1;
        EXPECT_TRUE(LookAndCompare(row.m_placement, {plies + 6, plies, 2, 0})) << row.m_placement;
        EXPECT_FALSE(LookAndCompare(row.m_placement, {plies, plies - 2, 2, 0})) << row.m_placement << " is shorter";
        ++compared;
    }
    EXPECT_GT(compared, 40);
}

// ---- how far it looks

TEST(QuickerMate, WithThreePliesLooksForAMateOnTheMoveOnly) {
    EXPECT_FALSE(LookAndCompare(kMateInTwo, {3, -1, 2, 0}));
    EXPECT_TRUE(LookAndCompare(kMateInTwo, {3, 3, 2, 0})) << "a setting may reach the full length";
    EXPECT_TRUE(LookAndCompare(kMateInTwo, {5, -1, 2, 0}));
    EXPECT_TRUE(LookAndCompare(kMateInOne, {3, -1, 2, 0}));
}

TEST(QuickerMate, ASettingOfZeroSkipsTheTrials) {
    for (const int plies : {3, 9, 25}) {
        CSearchedPosition line(kMateInOne, plies);
        line.Analysis().m_shLookForQuickerMateDepth = 0;
        EXPECT_FALSE(FindQuickerMate(&line.Root()));
        EXPECT_EQ(TrialPositions(line), 0u) << plies;
    }
}

TEST(QuickerMate, DoesNothingDuringWorkThatMustNotNestIt) {
    CSearchedPosition line(kMateInOne, 9);
    line.Context().m_bNoQuicker = true;
    const CUntouched before(line.Root());
    EXPECT_FALSE(FindQuickerMate(&line.Root()));
    EXPECT_TRUE(before.Holds());
    EXPECT_EQ(TrialPositions(line), 0u);
    line.Context().m_bNoQuicker = false;
    EXPECT_TRUE(FindQuickerMate(&line.Root()));
}

/// From one ply upwards by two: what a register is asked about the position itself tells the lengths of the trials.
TEST(QuickerMate, TrialsGetLonger) {
    CRecordingRegister known;
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 15);
    line.Analysis().m_pRegister = &known;
    line.Analysis().m_shLookForQuickerMateDepth = 7;
    EXPECT_FALSE(FindQuickerMate(&line.Root()));
    std::vector<int> lengths;
    for (const TRegisterCall& call : known.m_asked)
        if (call.m_position == PlacementOf(line.Root()) && std::ranges::find(lengths, call.m_nPlies) == lengths.end())
            lengths.push_back(call.m_nPlies);
    EXPECT_EQ(lengths, (std::vector<int>{3, 5, 7}));
}

TEST(QuickerMate, AShortMateIsFoundAtThePriceOfAShortMate) {
    CSearchedPosition line(kMateInOne, 25);
    EXPECT_TRUE(FindQuickerMate(&line.Root()));
    EXPECT_EQ(TrialPositions(line), 1u);
}

TEST(QuickerMate, AStopMakesItAnswerFalse) {
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 25);
    line.Context().m_nStopRequest = kStopRequest;
    const CUntouched before(line.Root());
    EXPECT_FALSE(FindQuickerMate(&line.Root()));
    EXPECT_TRUE(before.Holds());
}

/// A setting above the plies left is the plies left, down to the last move.
TEST(QuickerMate, ALongSettingChangesNoVerdict) {
    std::mt19937_64 rng(2205);
    for (int i = 0; i < Samples(600); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 9);
        const int moves = 1 + i % 2;
        CSearchedPosition line(placement, 2 * moves - 1);
        line.Analysis().m_shLookForQuickerMateDepth = static_cast<std::int16_t>(1 + 2 * (i % 16));
        EXPECT_EQ(line.Verdict() == MR_MATE, MatesWithin(placement, moves).value()) << placement << " #" << moves;
    }
}

// ---- what is put back

TEST(QuickerMate, KeepsTheRepetitionMarkOfThePly) {
    for (const int setting : {5, 9}) // a trial of the full length uses the very entry
        for (const char* placement : {"8/8/8/8/8/2k5/7R/K7", kMateInTwo}) {
            CSearchedPosition line(placement, 9);
            line.Analysis().m_shLookForQuickerMateDepth = static_cast<std::int16_t>(setting);
            RepetitionMark(line.Root(), 9) = 17;
            (void)FindQuickerMate(&line.Root());
            EXPECT_EQ(RepetitionMark(line.Root(), 9), 17) << placement << ' ' << setting;
        }
}

TEST(QuickerMate, PutsBackTheRecordInTheMiddleOfALine) {
    for (const char* moves : {"Rh2-h3 Kc3-d2", "Rh2-h3 Kc3-d2 Rh3-h2 Kd2-d1"})
        for (const int pass : {1, 2}) {
            CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 15, pass);
            line.Analysis().m_shLookForQuickerMateDepth = 7;
            line.Play(moves);
            line.Now().m_nHeuristics = pass == 1 ? SH_DONTRECEDEBLACKKING : 0;
            const CUntouched before(line.Now());
            (void)FindQuickerMate(&line.Now());
            EXPECT_TRUE(before.Holds()) << moves;
            EXPECT_EQ(line.Root().m_nMoves, 15);
        }
}

// ---- additional moves

/// The pawn ending with White to move and 17 plies left; trials end at seven plies, two short of the mate.
class AdditionalMoves : public testing::Test {
  protected:
    AdditionalMoves() { Place(19); }

    void Place(int nRootPlies) {
        m_line = std::make_unique<CSearchedPosition>(kPawnEnding, nRootPlies);
        m_line->Analysis().m_shLookForQuickerMateDepth = 7;
        m_line->Analysis().m_pRegister = &m_known;
        m_line->Play("Kd1-c2 Ka1-a2");
    }

    /// Tells the register the true length of the mate behind each reply to a6-a7.
    void TellWhatFollows() {
        for (const char* reply : {"Ka2-a1", "Ka2-a3"}) {
            CSearchedPosition after(kPawnEnding, 19);
            after.Play("Kd1-c2 Ka1-a2 a6-a7").Play(reply);
            const auto shortest =
                reference::ShortestMate(reference::ProblemFromFen(PlacementOf(after.Now())), kPawnEndingMoves, 500000);
            ASSERT_TRUE(shortest && *shortest > 0);
            m_known.Insert(after.Now(), 2 * *shortest - 1, MR_MATE);
        }
        m_known.m_stored.clear();
    }

    [[nodiscard]] bool Look() {
        m_line->Context().m_bAdditionalMovesUsed = false;
        const CUntouched before(m_line->Now());
        const bool bFound = FindQuickerMate(&m_line->Now());
        EXPECT_TRUE(before.Holds());
        return bFound;
    }
    [[nodiscard]] bool AreUsed() const { return m_line->Context().m_bAdditionalMovesUsed; }

    CRealRegister m_known;
    std::unique_ptr<CSearchedPosition> m_line;
};

TEST_F(AdditionalMoves, ThePositionIsAsDescribed) {
    const auto position = reference::ProblemFromFen(PlacementOf(m_line->Now()));
    EXPECT_EQ(reference::ShortestMate(position, kPawnEndingMoves, 500000), kPawnEndingMoves);
    EXPECT_FALSE(Look()) << "nothing is known yet";
    EXPECT_FALSE(AreUsed());
}

TEST_F(AdditionalMoves, AKnownLongerMateLetsATrialSucceed) {
    TellWhatFollows();
    EXPECT_TRUE(Look());
    EXPECT_TRUE(AreUsed());
    EXPECT_GT(m_known.m_nAnswers, 0u);
}

TEST_F(AdditionalMoves, WhatIsStoredMeanwhileIsNeverShorterThanTheMate) {
    TellWhatFollows();
    ASSERT_TRUE(Look());
    ASSERT_FALSE(m_known.m_stored.empty());
    EXPECT_GT(ExpectTrueEntries(m_known.m_stored, 400, 200000), 0);
}

TEST_F(AdditionalMoves, AreNotGrantedWhenLittleIsLeft) {
    Place(17); // fifteen plies: fourteen between the first trial and the stipulation
    TellWhatFollows();
    EXPECT_FALSE(Look());
    EXPECT_FALSE(AreUsed());
}

TEST_F(AdditionalMoves, AreNotGrantedWhereExactDataAnswer) {
    TellWhatFollows();
    m_line->Now().m_wKingState |= kPrecalcCanAnswer;
    EXPECT_FALSE(Look());
    EXPECT_FALSE(AreUsed());
}

TEST_F(AdditionalMoves, MayBeKeptForOneFigureAgainstNone) {
    TellWhatFollows();
    m_line->Context().m_bAllowAdditionalAlways = true;
    EXPECT_FALSE(Look()) << "a pawn is no figure";
    EXPECT_FALSE(AreUsed());
}

TEST_F(AdditionalMoves, AreGrantedToOneFigureAgainstNone) {
    // Mate in five by the queen. The register knows the position itself.
    CSearchedPosition line("8/8/8/8/3k4/8/8/KQ6", 25);
    line.Analysis().m_shLookForQuickerMateDepth = 7;
    line.Analysis().m_pRegister = &m_known;
    line.Context().m_bAllowAdditionalAlways = true;
    m_known.Insert(line.Root(), 19, MR_MATE);
    EXPECT_TRUE(FindQuickerMate(&line.Root()));
    EXPECT_TRUE(line.Context().m_bAdditionalMovesUsed);
}

TEST_F(AdditionalMoves, AreNotUsedWhenTheMateFitsTheTrial) {
    CSearchedPosition line(kMateInTwo, 25);
    line.Analysis().m_pRegister = &m_known;
    line.Analysis().m_shLookForQuickerMateDepth = 9; // granted from the trial of three plies on
    m_known.Insert(line.Root(), 3, MR_MATE);
    EXPECT_TRUE(FindQuickerMate(&line.Root()));
    EXPECT_FALSE(line.Context().m_bAdditionalMovesUsed);
}

/// An answer that would exceed the plies left in the position is none.
TEST_F(AdditionalMoves, NeverReachBeyondTheStipulation) {
    for (const int known : {23, 25, 27, 41}) {
        CRealRegister fresh;
        CSearchedPosition line("8/8/8/8/3k4/8/7p/K6R", 25);
        line.Analysis().m_pRegister = &fresh;
        line.Analysis().m_shLookForQuickerMateDepth = 7;
        fresh.Insert(line.Root(), known, MR_MATE);
        EXPECT_EQ(FindQuickerMate(&line.Root()), known <= 25) << known;
    }
}

TEST_F(AdditionalMoves, AreToldByTheLoggingNode) {
    for (const bool bKnown : {false, true}) {
        CRemarks log;
        if (bKnown)
            TellWhatFollows();
        CSearchedPosition line(kPawnEnding, 19);
        line.Analysis().m_shLookForQuickerMateDepth = bKnown ? 7 : 9;
        line.Analysis().m_pRegister = bKnown ? &m_known : nullptr;
        line.Analysis().m_pNodeLog = &log;
        line.Play("Kd1-c2"); // one reply
        EXPECT_EQ(line.Verdict<kLoggingNode>(), MR_MATE);
        EXPECT_EQ(log.m_remarks.contains("QuickerMate with AdditionalMoves found (with glob.reg./Nalimov lookup)"),
                  bKnown);
    }
}

/// Long analyses of small positions, with a register that learns: all it has stored is true.
TEST_F(AdditionalMoves, EntriesOfLongAnalysesAreTrue) {
    std::mt19937_64 rng(2204);
    int judged = 0, nUsed = 0;
    for (int i = 0; i < Samples(60); ++i) {
        const std::string placement = reference::RandomMatingPlacement(rng, 4 + i % 2);
        CRealRegister known;
        CSearchedPosition line(placement, 23 + 2 * (i % 2), 1 + i % 2);
        line.Analysis().m_pRegister = &known;
        line.Analysis().m_shLookForQuickerMateDepth = 7;
        line.Context().m_bAdditionalMovesUsed = false;
        (void)FindQuickerMate(&line.Root());
        (void)FindQuickerMate(&line.Root()); // leans on what the first look has stored
        nUsed += line.Context().m_bAdditionalMovesUsed ? 1 : 0;
        judged += ExpectTrueEntries(known.m_stored, 60, 60000);
    }
    EXPECT_GT(judged, 0);
    EXPECT_GT(nUsed, 0);
}

} // namespace
} // namespace quillon::test
