// How the nodes use the register of solved positions: when they ask, what they believe, what they store.

#include "search/register_use.h"

#include <gtest/gtest.h>

#include "core/generation.h"
#include "heuristics/find_mate_root.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kRookEnding = "8/8/8/8/8/2k5/7R/K7"; // no mate within five moves
constexpr const char* kMateInThree = "8/8/8/8/7Q/n1K5/8/k7";

TEST(RegisterUse, ShortAnalysesNeitherReadNorWrite) {
    for (const int plies : {1, 3, 5, 7, 9}) {
        CRecordingRegister known;
        CSearchedPosition line(plies > 5 ? "8/8/8/8/7Q/n1K5/8/k7" : "7k/8/5K2/8/8/8/8/1Q6", plies);
        line.Analysis().m_pRegister = &known;
        (void)line.Verdict();
        EXPECT_TRUE(known.m_asked.empty()) << plies;
        EXPECT_TRUE(known.m_stored.empty()) << plies;
    }
}

TEST(RegisterUse, NoQuestionOrEntryIsForFewerThanThreePlies) {
    CRecordingRegister known;
    CSearchedPosition line(kMateInThree, 11);
    line.Analysis().m_pRegister = &known;
    EXPECT_EQ(line.Verdict(), MR_MATE);
    ASSERT_FALSE(known.m_asked.empty());
    ASSERT_FALSE(known.m_stored.empty());
    for (const TRegisterCall& call : known.m_asked)
        EXPECT_TRUE(call.m_nPlies >= 3 && call.m_nPlies % 2 == 1) << call.m_nPlies;
    for (const TRegisterCall& call : known.m_stored)
        EXPECT_TRUE(call.m_nPlies >= 3 && call.m_nPlies % 2 == 1) << call.m_nPlies;
}

TEST(RegisterUse, ANodeThatMayNotUseItAsksNothingAboutItself) {
    CRecordingRegister known;
    known.m_nAnswer = MR_MATE;
    CSearchedPosition line(kRookEnding, 11);
    line.Analysis().m_pRegister = &known;
    EXPECT_EQ(FindMateWhite(&line.Now(), true), MR_MATE);
    ASSERT_EQ(known.m_asked.size(), 1u);
    EXPECT_EQ(known.m_asked.front().m_position, PlacementOf(line.Root()));
    known.m_asked.clear();
    (void)FindMateWhite(&line.Now(), false);
    ASSERT_FALSE(known.m_asked.empty());
    EXPECT_NE(known.m_asked.front().m_position, PlacementOf(line.Root()));
}

// ---- the answers are obeyed as told

struct TAnswer {
    TMateResult m_nTold;
    int m_nPass;
    TMateResult m_nExpected;
    std::uint32_t m_nCause;
};

TEST(RegisterUse, AnswersEndTheWhiteNode) {
    constexpr std::uint32_t kUntouched = 77;
    for (const TAnswer& row :
         {TAnswer{MR_MATE, 1, MR_MATE, kUntouched}, TAnswer{MR_MATE, 2, MR_MATE, kUntouched},
          TAnswer{MR_NOMATE, 1, MR_NOMATE, 0}, TAnswer{MR_NOMATE, 2, MR_NOMATE, 0},
          TAnswer{MR_DOUBTFUL, 1, MR_DOUBTFUL, 0xffffffff}, TAnswer{MR_DOUBTFUL, 2, MR_NONE, kUntouched},
          TAnswer{MR_QUICKER, 1, MR_MATE, kUntouched}, TAnswer{MR_NONE, 1, MR_NONE, kUntouched}}) {
        CRecordingRegister known;
        known.m_nAnswer = row.m_nTold;
        CSearchedPosition line(kRookEnding, 11, row.m_nPass);
        line.Analysis().m_pRegister = &known;
        line.Context().m_lastDoubtCause = kUntouched;
        EXPECT_EQ(AskRegister(line.Now()), row.m_nExpected) << int{row.m_nTold} << " in pass " << row.m_nPass;
        EXPECT_EQ(line.Context().m_lastDoubtCause, row.m_nCause) << int{row.m_nTold} << " in pass " << row.m_nPass;
        EXPECT_EQ(line.Context().m_bAdditionalMovesUsed, row.m_nTold == MR_QUICKER);
        if (row.m_nExpected != MR_NONE) {
            EXPECT_EQ(line.Verdict(), row.m_nExpected);
        }
    }
}

TEST(RegisterUse, AnswersAboutARepliesPositionEndTheBlackNode) {
    for (const int pass : {1, 2})
        for (const TMateResult told : {MR_MATE, MR_NOMATE, MR_DOUBTFUL}) {
            if (told == MR_DOUBTFUL && pass == 2)
                continue;
            CRecordingRegister known;
            known.m_nAnswer = told;
            CSearchedPosition line(kRookEnding, 11, pass);
            line.Analysis().m_pRegister = &known;
            line.Play("Rh2-h3");
            EXPECT_EQ(line.Verdict(), told) << "pass " << pass;
            if (told == MR_MATE) {
                EXPECT_GT(known.m_asked.size(), 1u) << "every reply is asked about";
            } else {
                EXPECT_EQ(known.m_asked.size(), 1u) << "one defence is enough";
            }
        }
}

TEST(RegisterUse, DoubtInThePassWithoutHeuristicsIsSearchedOn) {
    CRecordingRegister known;
    known.m_nAnswer = MR_DOUBTFUL;
    CSearchedPosition line(kMateInThree, 11, 2);
    line.Analysis().m_pRegister = &known;
    EXPECT_EQ(line.Verdict(), MR_MATE);
    EXPECT_GT(known.m_asked.size(), 1u);
}

TEST(RegisterUse, ATrialWithAdditionalMovesAsksFurther) {
    CRecordingRegister known;
    CSearchedPosition line(kRookEnding, 11);
    line.Analysis().m_pRegister = &known;
    EXPECT_EQ(AskRegister(line.Now()), MR_NONE);
    EXPECT_EQ(known.m_nAskedUpTo, 11);
    line.Context().m_nQuickerLevel = 1;
    line.Context().m_nAdditionalMoves = 3;
    EXPECT_EQ(AskRegister(line.Now()), MR_NONE);
    EXPECT_EQ(known.m_nAskedUpTo, 17);
    line.Now().m_nMoves = 1;
    known.m_asked.clear();
    (void)AskRegister(line.Now());
    EXPECT_EQ(known.m_asked.size(), 1u) << "such a trial asks at the last move too";
    known.m_asked.clear();
    (void)AskRegisterAboutReply(line.Now(), 2);
    EXPECT_EQ(known.m_asked.size(), 1u);
    line.Context().m_nQuickerLevel = 0;
    known.m_asked.clear();
    (void)AskRegisterAboutReply(line.Now(), 2);
    EXPECT_TRUE(known.m_asked.empty());
}

TEST(RegisterUse, AMateThatUsedAdditionalMovesIsStoredWithThem) {
    CRecordingRegister known;
    CSearchedPosition line(kRookEnding, 11);
    line.Analysis().m_pRegister = &known;
    line.Context().m_nAdditionalMoves = 2;
    StoreVerdict(line.Now(), MR_MATE);
    line.Context().m_bAdditionalMovesUsed = true;
    StoreVerdict(line.Now(), MR_MATE);
    StoreVerdict(line.Now(), MR_NOMATE);
    ASSERT_EQ(known.m_stored.size(), 3u);
    EXPECT_EQ(known.m_stored[0].m_nPlies, 11);
    EXPECT_EQ(known.m_stored[1].m_nPlies, 15);
    EXPECT_EQ(known.m_stored[2].m_nPlies, 11) << "a refutation holds for the plies searched";
}

// ---- positions whose board does not tell all

TEST(RegisterUse, AnAvailableEnPassantKeepsThePositionOut) {
    const struct {
        const char* m_pName;
        const char* m_pPlacement;
        const char* m_pMoves;
        bool m_bSafe;
    } rows[] = {
        {"capture possible", "4k3/3p4/8/4P3/8/8/8/4K3", "Ke1-d1 d7-d5", false},
        {"no pawn beside it", "4k3/3p4/8/6P1/8/8/8/4K3", "Ke1-d1 d7-d5", true},
        {"single step", "4k3/8/3p4/4P3/8/8/8/4K3", "Ke1-d1 d6-d5", true},
        {"after another move", "4k3/3p4/8/4P3/8/8/8/4K3", "Ke1-d1 d7-d5 Kd1-c1 Ke8-f8", true},
    };
    for (const auto& row : rows) {
        CRecordingRegister known;
        CSearchedPosition line(row.m_pPlacement, 19);
        line.Analysis().m_pRegister = &known;
        line.Play(row.m_pMoves);
        EXPECT_EQ(IsRegisterSafe(line.Now()), row.m_bSafe) << row.m_pName;
        (void)AskRegister(line.Now());
        StoreVerdict(line.Now(), MR_NOMATE);
        EXPECT_EQ(!known.m_asked.empty(), row.m_bSafe) << row.m_pName;
        EXPECT_EQ(!known.m_stored.empty(), row.m_bSafe) << row.m_pName;
    }
}

TEST(RegisterUse, CastlingsThatTheBoardOverstatesKeepThePositionOut) {
    const struct {
        const char* m_pName;
        const char* m_pPlacement;
        const char* m_pMoves;
        bool m_bSafe;
    } rows[] = {
        {"untouched", "4k3/8/8/8/8/8/8/R3K2R", "Ra1-a2 Ke8-e7", true},
        {"rook returned", "4k3/8/8/8/8/8/8/R3K2R", "Ra1-a2 Ke8-e7 Ra2-a1 Ke7-e8", false},
        {"king returned", "4k3/8/8/8/8/8/8/R3K2R", "Ke1-e2 Ke8-e7 Ke2-e1 Ke7-e8", false},
        {"king gone: the board claims nothing", "4k3/8/8/8/8/8/8/R3K2R", "Ke1-e2 Ke8-e7", true},
        {"rooks gone", "4k3/8/8/8/8/8/8/R3K2R", "Ra1-a2 Ke8-e7 Rh1-h2 Ke7-e8", true},
        {"black king returned", "r3k3/8/8/8/8/8/8/4K3", "Ke1-d1 Ke8-d8 Kd1-d2 Kd8-e8", false},
        {"black rook's move", "r3k3/8/8/8/8/8/8/4K3", "Ke1-d1 Ra8-b8", true},
    };
    for (const auto& row : rows) {
        CRecordingRegister known;
        CSearchedPosition line(row.m_pPlacement, 19);
        line.Analysis().m_pRegister = &known;
        line.Play(row.m_pMoves);
        EXPECT_EQ(IsRegisterSafe(line.Now()), row.m_bSafe) << row.m_pName;
        (void)AskRegister(line.Now());
        StoreVerdict(line.Now(), MR_MATE);
        EXPECT_EQ(!known.m_asked.empty(), row.m_bSafe) << row.m_pName;
        EXPECT_EQ(!known.m_stored.empty(), row.m_bSafe) << row.m_pName;
    }
}

TEST(RegisterUse, TheRootIsSafeWhateverItsBoard) {
    CSearchedPosition line("r3k2r/8/8/3pP3/8/8/8/R3K2R", 11);
    EXPECT_TRUE(IsRegisterSafe(line.Now()));
}

TEST(RegisterUse, NothingIsStoredWhileStoppingOrOnRequest) {
    CRecordingRegister known;
    CSearchedPosition line(kRookEnding, 11);
    line.Analysis().m_pRegister = &known;
    EXPECT_TRUE(MayStore(line.Now()));
    line.Context().m_bNoStore = true;
    EXPECT_FALSE(MayStore(line.Now()));
    line.Context().m_bNoStore = false;
    line.Context().m_nStopRequest = kStopRequest;
    EXPECT_FALSE(MayStore(line.Now()));
    StoreVerdict(line.Now(), MR_MATE);
    EXPECT_TRUE(known.m_stored.empty());
    line.Context().m_nStopRequest = kPauseRequest;
    EXPECT_TRUE(MayStore(line.Now())) << "a pause ends, and the verdict is as good as before";
}

// ---- the bishop that is off the board

TEST(RegisterUse, TheRemovedBishopBelongsToTheKey) {
    for (const std::uint8_t mode : {std::uint8_t{1}, std::uint8_t{2}}) {
        CRecordingRegister known;
        CSearchedPosition line("7k/8/8/8/8/8/8/RB2K3", 11);
        line.Analysis().m_pRegister = &known;
        line.Now().m_bySideState = mode;
        StoreVerdict(line.Now(), MR_MATE);
        ASSERT_EQ(known.m_stored.size(), 1u);
        // a1 and c1 are dark, b1 and d1 light; a1 and b1 are taken.
        EXPECT_EQ(known.m_stored.front().m_position, mode == 1 ? "7k/8/8/8/8/8/8/RB1bK3" : "7k/8/8/8/8/8/8/RBb1K3");
        EXPECT_EQ(PlacementOf(line.Now()), "7k/8/8/8/8/8/8/RB2K3") << "the position itself stays as it is";
        known.m_asked.clear();
        (void)AskRegister(line.Now());
        ASSERT_EQ(known.m_asked.size(), 1u);
        EXPECT_EQ(known.m_asked.front().m_position, known.m_stored.front().m_position);
    }
}

// ---- promotions that a mate covers

TEST(RegisterUse, AMateByCaptureOfThePromotedFigureCoversTheOtherPromotions) {
    CRecordingRegister known;
    CSearchedPosition line("8/8/8/8/8/6k1/1p4P1/4K2R", 15);
    line.Analysis().m_pRegister = &known;
    line.Play("Ke1-e2 b2-b1R");
    StoreOtherPromotions(line.Now());
    ASSERT_EQ(known.m_stored.size(), 3u);
    std::vector<std::string> stored;
    for (const TRegisterCall& call : known.m_stored) {
        EXPECT_EQ(call.m_nVerdict, MR_MATE);
        EXPECT_EQ(call.m_nPlies, 13);
        stored.push_back(call.m_position);
    }
    std::ranges::sort(stored);
    EXPECT_EQ(stored, (std::vector<std::string>{"8/8/8/8/8/6k1/4K1P1/1b5R", "8/8/8/8/8/6k1/4K1P1/1n5R",
                                                "8/8/8/8/8/6k1/4K1P1/1q5R"}));
}

// ---- a register changes the work, not the answer

std::vector<std::string> KeysWith(ITemporaryRegister* known, const std::string& placement, int nMoves) {
    const auto context = NewSearchContext();
    TAnalysis analysis;
    analysis.m_nSolveMode = kAllSolutions;
    analysis.m_pRegister = known;
    TRootRun run;
    (void)FindMateRoot(*context, analysis, ChessboardFromFEN(placement), 2 * nMoves - 1, run, true, false);
    std::vector<std::string> keys;
    for (const TSolution& solution : run.m_solutions)
        keys.push_back(solution.m_text);
    std::ranges::sort(keys);
    return keys;
}

/// Six moves, so that the register is in force; bare endings, so that the reference solver can follow.
TEST(RegisterUse, VerdictsAndEntriesAgreeWithTheRules) {
    std::mt19937_64 rng(909);
    int entries = 0, mates = 0;
    const int count = Samples(75);
    for (int i = 0; i < count; ++i) {
        const std::string placement =
            i % 3 == 0 ? reference::RandomPawnPlacement(rng, 4) : reference::RandomMatingPlacement(rng, 4 + i % 2);
        const auto truth = reference::SolveAllWithTable(reference::ProblemFromFen(placement), 6, 200000);
        if (!truth)
            continue;
        CRecordingRegister known;
        known.m_bRemembers = true;
        EXPECT_EQ(KeysWith(&known, placement, 6), truth->keys) << placement;
        EXPECT_EQ(KeysWith(&known, placement, 6), truth->keys) << placement << ", with what the first run stored";
        mates += truth->mateExists ? 1 : 0;
        for (std::size_t k = 0; k < known.m_stored.size(); k += known.m_stored.size() / 40 + 1) {
            const TRegisterCall& entry = known.m_stored[k];
            if (entry.m_nVerdict == MR_DOUBTFUL)
                continue; // says nothing of the position
            const auto fact = reference::SolveAllWithTable(reference::ProblemFromFen(entry.m_position),
                                                           (entry.m_nPlies + 1) / 2, 50000);
            if (!fact)
                continue;
            EXPECT_EQ(entry.m_nVerdict == MR_MATE, fact->mateExists) << entry.m_position << ' ' << entry.m_nPlies;
            ++entries;
        }
    }
    EXPECT_GT(entries, 0);
    if (count >= 75) {
        EXPECT_GT(mates, 0);
    }
}

} // namespace
} // namespace quillon::test
