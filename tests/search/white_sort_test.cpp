// The order of White's moves: what becomes of the list, and in which classes it comes. The scores inside a class are
// rules of thumb and are not looked at.

#include <set>

#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/move_score.h"
#include "search/move_sort.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

enum class EKind { Simple, Short, Full };
constexpr EKind kKinds[] = {EKind::Simple, EKind::Short, EKind::Full};

struct TSorted {
    int m_nGenerated = 0;
    TWhiteSort m_sort{};
    TMove m_list[kMaxMoves];
};

TSorted Sort(TChessboard& p, EKind kind) {
    TSorted sorted;
    sorted.m_nGenerated = GenerateWhiteMoves(p, sorted.m_list);
    sorted.m_sort = kind == EKind::Simple ? SortWhiteMovesSimple(p, sorted.m_nGenerated, sorted.m_list)
                                          : SortWhiteMoves(p, sorted.m_nGenerated, sorted.m_list, kind == EKind::Short);
    return sorted;
}

std::vector<std::string> Texts(const TChessboard& p, const TSorted& sorted) {
    std::vector<std::string> texts;
    for (int i = 0; i < sorted.m_sort.m_nMoves; ++i)
        texts.push_back(WriteMove(sorted.m_list[i], p));
    return texts;
}

std::set<std::string> LegalTexts(const reference::Position& position) {
    std::set<std::string> texts;
    for (const reference::Move& move : reference::LegalMoves(position))
        texts.insert(reference::LongNotation(position, move));
    return texts;
}

/// Can White still mate in at most two moves behind the move, against every reply?
bool MatesSoonAfter(const reference::Position& position, const std::string& text) {
    const reference::Position child = reference::Play(position, reference::MoveFromNotation(position, text));
    if (reference::IsMate(child))
        return true;
    const auto replies = reference::LegalMoves(child);
    return !replies.empty() && std::ranges::all_of(replies, [&](const reference::Move& reply) {
        return reference::ForcesMate(reference::Play(child, reply), 1);
    });
}

// ---- the list

/// Each legal move once; only moves that can no longer mate may be missing.
TEST(WhiteSort, LeavesTheLegalMovesEachOnce) {
    std::mt19937_64 rng(6601);
    int illegal = 0;
    for (int i = 0; i < Samples(2000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 12);
        const reference::Position position = reference::ProblemFromFen(placement);
        const std::set<std::string> legal = LegalTexts(position);
        CSearchedPosition line(placement, 9 + 2 * (i % 5), 1 + i % 2);
        const CUntouched before(line.Root());
        const TSorted sorted = Sort(line.Root(), kKinds[i % 3]);
        EXPECT_TRUE(before.Holds()) << placement;
        const std::vector<std::string> texts = Texts(line.Root(), sorted);
        const std::set<std::string> kept(texts.begin(), texts.end());
        EXPECT_EQ(kept.size(), texts.size()) << placement << ": a move comes twice";
        EXPECT_TRUE(std::ranges::includes(legal, kept)) << placement << ": an illegal move";
        for (const std::string& text : legal)
            if (!kept.contains(text)) {
                EXPECT_FALSE(MatesSoonAfter(position, text)) << placement << ' ' << text << " was refused";
            }
        EXPECT_FALSE(sorted.m_sort.m_bMateFound || sorted.m_sort.m_bRetry || sorted.m_sort.m_bLeftOut) << placement;
        illegal += sorted.m_nGenerated - sorted.m_sort.m_nMoves;
    }
    EXPECT_GT(illegal, 0);
}

TEST(WhiteSort, IllegalMovesFallOffTheEnd) {
    const auto placement = "4r2k/8/8/8/8/8/4R3/4K3"; // the rook is pinned: it may move on the file alone
    for (const EKind kind : kKinds) {
        CSearchedPosition line(placement, 15);
        const TSorted sorted = Sort(line.Root(), kind);
        EXPECT_LT(sorted.m_sort.m_nMoves, sorted.m_nGenerated);
        for (const std::string& text : Texts(line.Root(), sorted))
            EXPECT_TRUE(text[0] == 'K' || text[4] == 'e') << text;
    }
}

TEST(WhiteSort, WithoutALegalMoveTheListIsEmpty) {
    // Stalemated, and mated.
    for (const char* placement : {"8/8/8/8/8/5k2/5p2/5K2", "8/8/8/8/8/5k2/6q1/6K1"})
        for (const EKind kind : kKinds) {
            CSearchedPosition line(placement, 15);
            const TSorted sorted = Sort(line.Root(), kind);
            EXPECT_EQ(sorted.m_sort.m_nMoves, 0) << placement;
            EXPECT_FALSE(sorted.m_sort.m_bMateFound);
        }
}

// ---- scores

TEST(WhiteSort, ComputedScoresStayInTheirClassAndAscend) {
    std::mt19937_64 rng(6602);
    for (int i = 0; i < Samples(1500); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 16);
        CSearchedPosition line(placement, 9 + 2 * (i % 8));
        const TSorted sorted = Sort(line.Root(), kKinds[i % 3]);
        for (int k = 0; k < sorted.m_sort.m_nMoves; ++k) {
            const int score = ScoreOf(sorted.m_list[k]);
            EXPECT_TRUE(score >= kScoreMated && score <= kScoreMostComputed) << placement << ' ' << score;
            EXPECT_TRUE(k == 0 || ScoreOf(sorted.m_list[k - 1]) <= score) << placement;
        }
    }
}

TEST(WhiteSort, ScoresAreClamped) {
    EXPECT_EQ(ClampScore(-1000), kScoreMated);
    EXPECT_EQ(ClampScore(1000), kScoreMostComputed);
    EXPECT_EQ(ClampScore(kScoreFirst), kScoreMated);
    EXPECT_EQ(ClampScore(kScoreIllegal), kScoreMostComputed);
    EXPECT_EQ(ClampScore(0), 0);
    EXPECT_EQ((TScore{.m_nMajor = 3, .m_nMinor = -2}.Value(-1)), 9);
    EXPECT_EQ((TScore{.m_nMajor = 100, .m_nMinor = 0}.Value(0)), kScoreMostComputed);
    EXPECT_EQ((TScore{.m_nMajor = -100, .m_nMinor = 0}.Value(0)), kScoreMated);
    static_assert(kScoreFirst == -128 && kScoreMated == -127 && kScoreKnownNoMate == 125 && kScoreIllegal == 127);
}

TEST(WhiteSort, ValuesOfCapturedFigures) {
    for (const TFigure colour : {kWhite, kBlack}) {
        EXPECT_EQ(CaptureValue(colour | kKing), 10);
        EXPECT_EQ(CaptureValue(colour | kPawn), 1);
        EXPECT_EQ(CaptureValue(colour | kBishop), 3);
        EXPECT_EQ(CaptureValue(colour | kRook), 5);
        EXPECT_EQ(CaptureValue(colour | kQueen), 9);
        EXPECT_EQ(CaptureValue(colour | kKnight), 3);
    }
    EXPECT_EQ(CaptureValue(kNoFigure), 0);
}

TEST(WhiteSort, SortByScoreReadsSignedBytesAndIsStable) {
    std::mt19937_64 rng(6603);
    for (int i = 0; i < 500; ++i) {
        const int count = reference::DrawInt(rng, 60);
        std::vector<TMove> list(static_cast<std::size_t>(count) + 1);
        for (int k = 0; k < count; ++k) {
            list[static_cast<std::size_t>(k)] = {static_cast<std::uint8_t>(k), 0, 0, 0};
            SetScore(list[static_cast<std::size_t>(k)],
                     i % 2 == 0 ? reference::DrawInt(rng, 256) - 128 : reference::DrawInt(rng, 4) - 2);
        }
        std::vector<TMove> expected(list.begin(), list.end() - 1);
        std::ranges::stable_sort(expected, {}, [](const TMove& m) { return ScoreOf(m); });
        SortByScore(list.data(), count);
        for (std::size_t k = 0; k < expected.size(); ++k)
            ASSERT_EQ(list[k].m_nFrom, expected[k].m_nFrom);
    }
}

TEST(WhiteSort, TheSimpleSortTakesCapturesAndChecksFirst) {
    CSearchedPosition line("4k3/8/8/q7/8/8/6K1/R6R", 9);
    const TSorted sorted = Sort(line.Root(), EKind::Simple);
    EXPECT_EQ(WriteMove(sorted.m_list[0], line.Root()), "Ra1:a5");
    std::set<std::string> checks;
    for (int i = 1; i <= 3; ++i)
        checks.insert(WriteMove(sorted.m_list[i], line.Root()));
    EXPECT_EQ(checks, (std::set<std::string>{"Ra1-e1", "Rh1-e1", "Rh1-h8"}));
}

// ---- the register

constexpr const char* kRookEnding = "8/8/8/8/8/2k5/7R/K7"; // Black has at most eight replies to any move

TEST(WhiteSort, AMoveWithAllItsRepliesKnownMatedEndsTheNode) {
    for (const EKind kind : kKinds) {
        CRecordingRegister known;
        known.m_nAnswer = MR_MATE;
        CSearchedPosition line(kRookEnding, 17);
        line.Analysis().m_pRegister = &known;
        line.Play("Rh2-h3 Kc3-c4");
        const TSorted sorted = Sort(line.Now(), kind);
        EXPECT_EQ(sorted.m_sort.m_bMateFound, kind != EKind::Simple);
        EXPECT_EQ(known.m_asked.empty(), kind == EKind::Simple) << "the cheap order asks nobody";
    }
}

/// The root wants all its keys: there no mate ends the sort.
TEST(WhiteSort, TheRootsListIsComplete) {
    for (const EKind kind : kKinds) {
        CRecordingRegister known;
        CSearchedPosition line(kRookEnding, 15);
        const TSorted before = Sort(line.Root(), kind);
        known.m_nAnswer = MR_MATE;
        line.Analysis().m_pRegister = &known;
        const TSorted sorted = Sort(line.Root(), kind);
        EXPECT_FALSE(sorted.m_sort.m_bMateFound);
        EXPECT_EQ(sorted.m_sort.m_nMoves, before.m_sort.m_nMoves);
        if (kind != EKind::Simple) {
            EXPECT_EQ(ScoreOf(sorted.m_list[0]), kScoreMated);
        }
    }
}

TEST(WhiteSort, AnEndedNodeIsAMateAndStored) {
    CRecordingRegister known;
    known.m_nAnswer = MR_MATE;
    CSearchedPosition line(kRookEnding, 17);
    line.Analysis().m_pRegister = &known;
    line.Play("Rh2-h3 Kc3-c4");
    EXPECT_EQ(FindMateWhite(&line.Now(), false), MR_MATE);
    ASSERT_EQ(known.m_stored.size(), 1u);
    EXPECT_EQ(known.m_stored[0].m_position, PlacementOf(line.Now()));
    EXPECT_EQ(known.m_stored[0].m_nVerdict, MR_MATE);
    EXPECT_EQ(known.m_stored[0].m_nPlies, 15);
}

TEST(WhiteSort, MovesKnownNotToMateComeLast) {
    // One reply to every rook's move along the rank is known to escape.
    CRealRegister known;
    std::set<std::string> refuted;
    for (const char* move : {"Rh2-g2", "Rh2-f2", "Rh2-h3"}) {
        CSearchedPosition after(kRookEnding, 15);
        after.Play(move).Play("Kc3-c4");
        known.Insert(after.Now(), 13, MR_NOMATE);
        refuted.insert(move);
    }
    for (const EKind kind : {EKind::Short, EKind::Full}) {
        CSearchedPosition line(kRookEnding, 15);
        line.Analysis().m_pRegister = &known;
        const TSorted sorted = Sort(line.Root(), kind);
        EXPECT_FALSE(sorted.m_sort.m_bMateFound);
        const std::vector<std::string> texts = Texts(line.Root(), sorted);
        ASSERT_GE(texts.size(), 3u);
        for (int i = 0; i < sorted.m_sort.m_nMoves; ++i)
            if (refuted.contains(texts[static_cast<std::size_t>(i)])) {
                EXPECT_EQ(ScoreOf(sorted.m_list[i]), kScoreKnownNoMate) << texts[static_cast<std::size_t>(i)];
            }
        // Others may share the class: a rook that is taken refutes itself.
        const auto first = std::ranges::find_if(texts, [&](const std::string& text) { return refuted.contains(text); });
        for (auto i = first - texts.begin(); i < sorted.m_sort.m_nMoves; ++i)
            EXPECT_EQ(ScoreOf(sorted.m_list[i]), kScoreKnownNoMate) << texts[static_cast<std::size_t>(i)];
    }
}

/// What is true for the registers' rules (no short analysis, no removed bishop) holds in the sort too.
TEST(WhiteSort, AsksNobodyInAShortAnalysisOrABishopMode) {
    for (const bool bBishopMode : {false, true}) {
        CRecordingRegister known;
        known.m_nAnswer = MR_MATE;
        CSearchedPosition line(kRookEnding, bBishopMode ? 15 : 9);
        line.Analysis().m_pRegister = &known;
        line.Root().m_bySideState = bBishopMode ? 1 : 0;
        const TSorted sorted = Sort(line.Root(), EKind::Full);
        EXPECT_FALSE(sorted.m_sort.m_bMateFound);
        EXPECT_TRUE(known.m_asked.empty());
    }
}

TEST(WhiteSort, DoubtIsNoVerdictOnAMove) {
    CRecordingRegister known;
    known.m_nAnswer = MR_DOUBTFUL;
    CSearchedPosition line(kRookEnding, 15, 1);
    line.Analysis().m_pRegister = &known;
    const TSorted sorted = Sort(line.Root(), EKind::Full);
    EXPECT_FALSE(sorted.m_sort.m_bMateFound);
    EXPECT_GT(sorted.m_sort.m_nMoves, 0);
}

/// With real entries, all true, the sort never claims a mate that is none.
TEST(WhiteSort, AMateItClaimsIsOne) {
    std::mt19937_64 rng(6604);
    int claimed = 0;
    for (int i = 0; i < Samples(120); ++i) {
        const std::string placement = reference::RandomMatingPlacement(rng, 4 + i % 2);
        const auto truth = MatesWithin(placement, 4, 60000);
        if (!truth)
            continue;
        CRealRegister known;
        CSearchedPosition line(placement, 11);
        line.Analysis().m_pRegister = &known;
        line.Root().m_nMoves = 7; // four moves within a long analysis
        (void)FindMateWhite(&line.Root(), false);
        line.Root().m_nMoves = 11;
        TChessboard before = line.Root(); // no root, where a sort claims nothing
        line.Root().m_pPrevious = &before;
        const TSorted sorted = Sort(line.Root(), EKind::Full);
        line.Root().m_pPrevious = nullptr;
        if (!sorted.m_sort.m_bMateFound)
            continue;
        ++claimed;
        EXPECT_TRUE(MatesWithin(placement, 6, 400000).value_or(true)) << placement;
    }
    EXPECT_GT(claimed, 0);
}

// ---- the worst moves cut

TEST(WhiteSort, CutsTheWorstMovesOfALongListOnRequest) {
    std::mt19937_64 rng(6605);
    std::set<int> seen;
    for (int i = 0; i < Samples(3000); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 16);
        const EKind kind = kKinds[i % 3];
        CSearchedPosition whole(placement, 15, 1), cut(placement, 15, 1);
        cut.Root().m_nHeuristics = SH_SKIPWORSTWHITEMOVES;
        const TSorted all = Sort(whole.Root(), kind), best = Sort(cut.Root(), kind);
        const int count = all.m_sort.m_nMoves;
        const int expected = count > 24 ? std::max(count * 4 / 5, 25) : count;
        EXPECT_EQ(best.m_sort.m_nMoves, expected) << placement << ": of " << count;
        EXPECT_EQ(best.m_sort.m_bLeftOut, expected < count) << placement;
        EXPECT_FALSE(all.m_sort.m_bLeftOut);
        for (int k = 0; k < best.m_sort.m_nMoves; ++k)
            ASSERT_TRUE(SameMove(best.m_list[k], all.m_list[k])) << placement << ": the others stay as they are";
        seen.insert(count);
    }
    for (const int count : {24, 25, 26, 30, 40}) // stay 24, 25; become 25, 25, 32
        EXPECT_TRUE(seen.contains(count)) << count;
}

/// A node that has left moves out may end in mate or doubt, and never as a proved no mate.
TEST(WhiteSort, ANodeWithMovesLeftOutProvesNoRefutation) {
    const auto placement = "8/8/4k3/8/8/8/8/KQR5"; // more than 24 moves
    for (const bool bCut : {false, true}) {
        CRecordingRegister known;
        known.m_nAnswer = MR_NOMATE; // every reply refutes at once
        CSearchedPosition line(placement, 15, 1);
        line.Analysis().m_pRegister = &known;
        line.Root().m_nHeuristics = bCut ? SH_SKIPWORSTWHITEMOVES : SH_KEYSQUARE;
        EXPECT_EQ(FindMateWhite(&line.Root(), false), bCut ? MR_DOUBTFUL : MR_NOMATE);
        ASSERT_EQ(known.m_stored.size(), 1u);
        EXPECT_EQ(known.m_stored[0].m_nVerdict, bCut ? MR_DOUBTFUL : MR_NOMATE);
    }
}

TEST(WhiteSort, ANodeWithAShortListIsNotCut) {
    CRecordingRegister known;
    known.m_nAnswer = MR_NOMATE;
    CSearchedPosition line(kRookEnding, 15, 1);
    line.Analysis().m_pRegister = &known;
    line.Root().m_nHeuristics = SH_SKIPWORSTWHITEMOVES;
    EXPECT_EQ(FindMateWhite(&line.Root(), false), MR_NOMATE);
}

} // namespace
} // namespace quillon::test
