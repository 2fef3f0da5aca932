// The order of Black's moves: what becomes of the list, and the verdicts that a sort may give at once.

#include <set>

#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/move_score.h"
#include "search/move_sort.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

struct TSorted {
    int m_nGenerated = 0;
    TBlackSort m_sort{};
    TMove m_list[kMaxMoves];
};

TSorted Sort(TChessboard& p) {
    TSorted sorted;
    sorted.m_nGenerated = GenerateBlackMoves(p, sorted.m_list);
    sorted.m_sort = SortBlackMoves(p, sorted.m_nGenerated, sorted.m_list);
    return sorted;
}

std::vector<std::string> Texts(const TChessboard& p, const TSorted& sorted) {
    std::vector<std::string> texts;
    for (int i = 0; i < sorted.m_sort.m_nMoves; ++i)
        texts.push_back(WriteMove(sorted.m_list[i], p));
    return texts;
}

/// A random position with Black to move: one white move played. False if White has none that the engine plays.
bool PlayAnyMove(std::mt19937_64& rng, CSearchedPosition& line, reference::Position& position) {
    const auto moves = reference::LegalMoves(position);
    const reference::Move& move = moves[static_cast<std::size_t>(reference::Draw(rng, moves.size()))];
    line.Play(reference::LongNotation(position, move));
    position = reference::Play(position, move);
    return true;
}

constexpr int kRootPlies[] = {5, 7, 9, 11, 15, 17, 21, 35}; // all levels of effort

// ---- marks

TEST(BlackSort, HandsTheSeaSnakesMarkToItsCaller) {
    CSearchedPosition line("7k/8/8/8/1q6/8/8/K6N", 9, 1);
    line.Root().m_nHeuristics = SH_SEASNAKE;
    line.Play("Ka1-a2");
    const TSorted sorted = Sort(line.Now());
    EXPECT_EQ(sorted.m_sort.m_nVerdict, MR_DOUBTFUL);
    EXPECT_NE(sorted.m_sort.m_deciding.m_nPromotion & kMoveMark, 0);
}

// ---- the list

TEST(BlackSort, LeavesTheLegalMovesEachOnce) {
    std::mt19937_64 rng(7701);
    int illegal = 0, escapes = 0;
    for (int i = 0; i < Samples(2000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 12);
        CSearchedPosition line(placement, kRootPlies[i % 8], 1 + i % 2);
        reference::Position position = reference::ProblemFromFen(placement);
        ASSERT_TRUE(PlayAnyMove(rng, line, position));
        std::set<std::string> legal;
        for (const reference::Move& move : reference::LegalMoves(position))
            legal.insert(reference::LongNotation(position, move));
        const CUntouched before(line.Now());
        const TSorted sorted = Sort(line.Now());
        EXPECT_TRUE(before.Holds()) << placement;
        if (sorted.m_sort.m_nVerdict != MR_MATE) {
            EXPECT_EQ(sorted.m_sort.m_nVerdict, MR_NONE) << placement << ": without a register only an escape";
            ++escapes;
            continue;
        }
        EXPECT_FALSE(sorted.m_sort.m_bAnyMated);
        const std::vector<std::string> texts = Texts(line.Now(), sorted);
        const std::set<std::string> kept(texts.begin(), texts.end());
        EXPECT_EQ(kept.size(), texts.size()) << placement << ": a move comes twice";
        EXPECT_EQ(kept, legal) << reference::ToFen(position);
        illegal += sorted.m_nGenerated - sorted.m_sort.m_nMoves;
    }
    EXPECT_GT(illegal, 0);
    EXPECT_GT(escapes, 0);
}

/// An escape that the sort tells of is one: White has no mate behind it.
TEST(BlackSort, AnEscapeIsTrue) {
    std::mt19937_64 rng(7702);
    int escapes = 0;
    for (int i = 0; i < Samples(1500); ++i) {
        const std::string placement = AnyPlacement(rng, 4 * i, 3 + i % 4);
        CSearchedPosition line(placement, 7);
        reference::Position position = reference::ProblemFromFen(placement);
        ASSERT_TRUE(PlayAnyMove(rng, line, position));
        if (Sort(line.Now()).m_sort.m_nVerdict != MR_NONE)
            continue;
        const bool bEscapes = std::ranges::any_of(reference::LegalMoves(position), [&](const reference::Move& move) {
            const auto behind = reference::ShortestMate(reference::Play(position, move), 3, 100000);
            return !behind || *behind == 0;
        });
        EXPECT_TRUE(bEscapes) << reference::ToFen(position);
        ++escapes;
    }
    EXPECT_GT(escapes, 0);
}

TEST(BlackSort, WithoutALegalMoveTheListIsEmpty) {
    for (const auto& [placement, move] :
         {std::pair{"7k/5K2/8/8/8/8/8/1Q6", "Qb1-g6"}, std::pair{"7k/8/6K1/8/8/8/8/1Q6", "Qb1-b8"}})
        for (const int plies : kRootPlies) {
            CSearchedPosition line(placement, plies);
            line.Play(move);
            const TSorted sorted = Sort(line.Now());
            EXPECT_EQ(sorted.m_sort.m_nMoves, 0) << move;
            EXPECT_EQ(sorted.m_sort.m_nVerdict, MR_MATE) << "no verdict of its own: the node tells mate from stalemate";
            EXPECT_FALSE(sorted.m_sort.m_bAnyMated);
        }
}

TEST(BlackSort, ScoresStayInTheirClassAndNoMarkIsLeftBehind) {
    std::mt19937_64 rng(7703);
    for (int i = 0; i < Samples(1500); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 14);
        CSearchedPosition line(placement, kRootPlies[i % 8]);
        reference::Position position = reference::ProblemFromFen(placement);
        ASSERT_TRUE(PlayAnyMove(rng, line, position));
        const TSorted sorted = Sort(line.Now());
        if (sorted.m_sort.m_nVerdict != MR_MATE)
            continue;
        for (int k = 0; k < sorted.m_sort.m_nMoves; ++k) {
            const TMove& move = sorted.m_list[k];
            EXPECT_TRUE(ScoreOf(move) >= kScoreMated && ScoreOf(move) <= kScoreMostComputed) << placement;
            EXPECT_EQ(move.m_nPromotion & ~(kKindMask | kMoveDefersEdgeCheck), 0) << placement;
        }
    }
}

/// With 8 to 13 plies left checks come before everything else; each part ascends.
TEST(BlackSort, ChecksComeFirstAtReducedEffort) {
    std::mt19937_64 rng(7704);
    int mixed = 0;
    for (int i = 0; i < Samples(1000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 6 + i % 10);
        CSearchedPosition line(placement, 9 + 2 * (i % 3));
        reference::Position position = reference::ProblemFromFen(placement);
        ASSERT_TRUE(PlayAnyMove(rng, line, position));
        const TSorted sorted = Sort(line.Now());
        if (sorted.m_sort.m_nVerdict != MR_MATE)
            continue;
        std::vector<bool> checks;
        for (const std::string& text : Texts(line.Now(), sorted))
            checks.push_back(
                reference::InCheck(reference::Play(position, reference::MoveFromNotation(position, text))));
        EXPECT_TRUE(std::ranges::is_partitioned(checks, [](bool bCheck) { return bCheck; })) << placement;
        for (std::size_t k = 1; k < checks.size(); ++k)
            EXPECT_TRUE(checks[k] != checks[k - 1] || ScoreOf(sorted.m_list[k - 1]) <= ScoreOf(sorted.m_list[k]))
                << placement;
        mixed += std::ranges::find(checks, true) != checks.end() && std::ranges::find(checks, false) != checks.end();
    }
    EXPECT_GT(mixed, 0);
}

TEST(BlackSort, ADefenceThatStopsNoMateComesBehindOneThatDoes) {
    // Black's king may step in front of a mate on the move, or away from it.
    CSearchedPosition line("7k/8/5K2/8/8/8/8/1R6", 15);
    line.Play("Rb1-a1");
    const TSorted sorted = Sort(line.Now());
    EXPECT_EQ(Texts(line.Now(), sorted), (std::vector<std::string>{"Kh8-h7", "Kh8-g8"})) << "Kg8 is mated by Ra8";
}

/// The mark that a mate has captured a promoted figure is for the black node that made the promotion. Left behind by a
/// look aside, it would spare promotions of another node their analysis.
TEST(BlackSort, AMateInTwoFoundAsideLeavesNoMarkOfAPromotion) {
    CSearchedPosition line("8/1R6/8/8/8/7K/1p6/7k", 15);
    line.Play("Rb7-b8");
    line.Context().m_bUnderPromotionEqual = false;
    const TSorted sorted = Sort(line.Now()); // Rb8:b1 answers every promotion
    EXPECT_GT(sorted.m_sort.m_nMoves, 0);
    EXPECT_FALSE(line.Context().m_bUnderPromotionEqual);
}

// ---- the root of a thread's sorts

TEST(BlackSort, TheFirstOneOfAThreadIsRemembered) {
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 15);
    EXPECT_EQ(line.Context().m_pSortRoot, nullptr);
    line.Play("Rh2-h3");
    (void)Sort(line.Now());
    const TChessboard* const first = line.Context().m_pSortRoot;
    EXPECT_EQ(first, &line.Now());
    line.Play("Kc3-c4 Rh3-h2");
    (void)Sort(line.Now());
    EXPECT_EQ(line.Context().m_pSortRoot, first);
    EXPECT_EQ(line.Context().m_nSortNesting, 0);
}

// ---- the register

/// The rook ending after Rh2-h3, with a register that knows of the named replies.
class BlackSortRegister : public testing::Test {
  protected:
    static constexpr const char* kRoot = "8/8/8/8/8/2k5/7R/K7";
    static constexpr const char* kReplies[] = {"Kc3-b4", "Kc3-c4", "Kc3-d4", "Kc3-c2", "Kc3-d2"};

    void Tell(const char* reply, TMateResult verdict, int nPlies = 13) {
        CSearchedPosition after(kRoot, 15);
        after.Play("Rh2-h3").Play(reply);
        m_known.Insert(after.Now(), nPlies, verdict);
    }

    TSorted SortAfterKey(int nPass = 2) {
        m_line = std::make_unique<CSearchedPosition>(kRoot, 15, nPass);
        m_line->Analysis().m_pRegister = &m_known;
        m_line->Play("Rh2-h3");
        return Sort(m_line->Now());
    }

    CRealRegister m_known;
    std::unique_ptr<CSearchedPosition> m_line;
};

TEST_F(BlackSortRegister, KnowsNothingAtFirst) {
    const TSorted sorted = SortAfterKey();
    EXPECT_EQ(sorted.m_sort.m_nMoves, 5);
    EXPECT_EQ(sorted.m_sort.m_nVerdict, MR_MATE);
}

TEST_F(BlackSortRegister, AReplyKnownNotToBeMatedEndsTheNode) {
    for (const char* reply : kReplies) {
        m_known.m_known.Clear(0, true);
        Tell(reply, MR_NOMATE);
        EXPECT_EQ(SortAfterKey().m_sort.m_nVerdict, MR_NONE) << reply;
        EXPECT_EQ(m_line->Verdict(), MR_NOMATE) << reply;
        EXPECT_EQ(m_line->Context().m_lastDoubtCause, 0u);
    }
}

TEST_F(BlackSortRegister, RepliesKnownToBeMatedAreTakenOut) {
    std::set<std::string> told;
    for (const char* reply : kReplies) {
        Tell(reply, MR_MATE);
        told.insert(reply);
        const TSorted sorted = SortAfterKey();
        EXPECT_EQ(sorted.m_sort.m_nVerdict, MR_MATE);
        EXPECT_EQ(sorted.m_sort.m_nMoves, 5 - static_cast<int>(told.size()));
        EXPECT_TRUE(sorted.m_sort.m_bAnyMated) << "they are legal moves nevertheless";
        for (const std::string& text : Texts(m_line->Now(), sorted))
            EXPECT_FALSE(told.contains(text)) << text;
    }
    EXPECT_EQ(m_line->Verdict(), MR_MATE) << "no reply is left, and yet it is no stalemate";
}

TEST_F(BlackSortRegister, AMateThatIsTooLongIsNone) {
    for (const char* reply : kReplies)
        Tell(reply, MR_MATE, 15);
    const TSorted sorted = SortAfterKey();
    EXPECT_EQ(sorted.m_sort.m_nMoves, 5);
    EXPECT_FALSE(sorted.m_sort.m_bAnyMated);
}

TEST_F(BlackSortRegister, ARefutationForFewerPliesIsNone) {
    Tell("Kc3-c4", MR_NOMATE, 11);
    EXPECT_EQ(SortAfterKey().m_sort.m_nVerdict, MR_MATE);
}

TEST(BlackSortDoubt, ADoubtfulReplyMakesTheNodeDoubtfulInTheFirstPass) {
    for (const int pass : {1, 2}) {
        CRecordingRegister known;
        known.m_nAnswer = MR_DOUBTFUL;
        CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 15, pass);
        line.Analysis().m_pRegister = &known;
        line.Play("Rh2-h3");
        const TSorted sorted = Sort(line.Now());
        EXPECT_EQ(sorted.m_sort.m_nVerdict, pass == 1 ? MR_DOUBTFUL : MR_MATE);
        if (pass == 1) {
            EXPECT_EQ(line.Context().m_lastDoubtCause, ~std::uint32_t{0});
        }
    }
}

TEST(BlackSortDoubt, AnEscapeForCertainIsNoMate) {
    CSearchedPosition line("8/8/8/8/7p/8/4NK1p/7k", 9);
    line.Play("Ne2-g3"); // h4:g3 takes White's last figure
    EXPECT_EQ(Sort(line.Now()).m_sort.m_nVerdict, MR_NONE);
    EXPECT_EQ(line.Verdict(), MR_NOMATE);
    FlushPositions(line.Context(), line.Analysis());
    EXPECT_EQ(line.Analysis().m_nPositions + line.Analysis().m_nTrialPositions, 0u) << "nothing below is looked at";
}

} // namespace
} // namespace quillon::test
