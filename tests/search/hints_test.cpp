// Hints change the order of the moves and nothing else: they are moves of the node, and the others keep their order.

#include "search/hints.h"

#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/move_sort.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

TMove MoveOf(const char* text, bool bWhite = true) { return ParseMove(text, bWhite); }

constexpr const char* kRookEnding = "8/8/8/8/8/2k5/7R/K7";

std::vector<std::string> Texts(const CHints& hints, const TChessboard& b) {
    std::vector<std::string> texts;
    for (int i = 0; i < hints.Count(); ++i)
        texts.push_back(WriteMove(hints.Moves()[i], b));
    return texts;
}

using TTexts = std::vector<std::string>;

// ---- what is kept

TEST(Hints, NothingIsKnownAtFirst) {
    CSearchedPosition line(kRookEnding, 9);
    EXPECT_EQ(CHints(line.Now()).Count(), 0);
    EXPECT_EQ(CHints().Count(), 0);
}

TEST(Hints, TheAnswerOfAPlyIsTriedAtTheSamePlyAgain) {
    CSearchedPosition line(kRookEnding, 9);
    KeepHint(line.Now(), MoveOf("Rh2-h8"));
    EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), TTexts{"Rh2-h8"});
    line.Now().m_nMoves = 7;
    EXPECT_EQ(CHints(line.Now()).Count(), 0) << "another ply";
}

TEST(Hints, TheAnswerToAMoveIsTriedAfterThatMoveAgain) {
    CSearchedPosition line(kRookEnding, 15);
    line.Play("Rh2-h4 Kc3-d3");
    KeepHint(line.Now(), MoveOf("Rh4-h5"));
    // Deeper in the line, after the same move of Black.
    line.Play("Ka1-a2 Kd3-c3 Ka2-a1 Kc3-d3");
    EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), TTexts{"Rh4-h5"});
    CSearchedPosition other(kRookEnding, 15);
    other.Context().m_answers = line.Context().m_answers;
    other.Play("Rh2-h4 Kc3-d2");
    EXPECT_EQ(CHints(other.Now()).Count(), 0) << "after another move";
}

TEST(Hints, BothAreTriedAndNoneTwice) {
    CSearchedPosition line(kRookEnding, 15);
    line.Play("Rh2-h3 Kc3-c4");
    KeepHint(line.Now(), MoveOf("Rh3-h4"));
    EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), TTexts{"Rh3-h4"}) << "both hints name it";
    line.Context().m_hints[line.Now().m_nMoves] = MoveOf("Rh3-g3");
    EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), (TTexts{"Rh3-g3", "Rh3-h4"}));
}

TEST(Hints, BlackHasHintsOfItsOwn) {
    CSearchedPosition line(kRookEnding, 15);
    line.Play("Rh2-h3");
    KeepHint(line.Now(), MoveOf("Kc3-c4", false));
    EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), TTexts{"Kc3-c4"});
    line.Play("Kc3-d4");
    EXPECT_EQ(CHints(line.Now()).Count(), 0) << "White's table knows nothing of it";
}

TEST(Hints, TellPromotionsApart) {
    const auto placement = "8/P7/8/8/8/2k5/7p/K7";
    for (const char* text : {"a7-a8Q", "a7-a8R", "a7-a8B", "a7-a8N"}) {
        CSearchedPosition line(placement, 15);
        line.Play("Ka1-b1 Kc3-d3");
        KeepHint(line.Now(), MoveOf(text));
        EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), TTexts{text});
        line.Context().m_hints.fill(TMove{}); // the answer alone
        EXPECT_EQ(Texts(CHints(line.Now()), line.Now()), TTexts{text});
    }
}

// ---- what is offered

TEST(Hints, OfferOnlyWhatAFigureOfTheSideCanMake) {
    const struct {
        const char* m_pName;
        const char* m_pMove;
        bool m_bOffered;
    } rows[] = {{"a move", "Rh2-h8", true},
                {"an empty source", "Rg1-g8", false},
                {"a black figure", "Kc3-c4", false},
                {"no move of a rook", "Rh2-g3", false},
                {"an own figure on the target", "Ra1-a1", false}};
    for (const auto& row : rows) {
        CSearchedPosition line(kRookEnding, 9);
        line.Context().m_hints[9] = MoveOf(row.m_pMove);
        EXPECT_EQ(CHints(line.Now()).Count(), row.m_bOffered ? 1 : 0) << row.m_pName;
    }
}

TEST(Hints, OfferNoMoveThatIsBlocked) {
    CSearchedPosition line("8/8/7p/8/8/2k5/7R/K7", 9);
    line.Context().m_hints[9] = MoveOf("Rh2-h8");
    EXPECT_EQ(CHints(line.Now()).Count(), 0);
    line.Context().m_hints[9] = MoveOf("Rh2-h6");
    EXPECT_EQ(CHints(line.Now()).Count(), 1);
}

/// Whatever earlier nodes have left behind, a hint is in the generator's list.
TEST(Hints, AreMovesOfTheGenerator) {
    std::mt19937_64 rng(8801);
    int offered = 0;
    for (int i = 0; i < Samples(3000); ++i) {
        CSearchedPosition line(AnyPlacement(rng, i, 4 + i % 12), 11);
        TChessboard& b = line.Now();
        if (b.m_whiteChecker != kNoChecker)
            continue;
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(b, list);
        for (int k = 0; k < 20; ++k) {
            b.m_pContext->m_hints[11] = {static_cast<std::uint8_t>(reference::DrawInt(rng, 64)),
                                         static_cast<std::uint8_t>(reference::DrawInt(rng, 64)),
                                         k % 5 == 0 ? kQueen : kNoFigure, 0};
            const CHints hints(b);
            ASSERT_LE(hints.Count(), 1);
            if (hints.Count() == 0)
                continue;
            ++offered;
            EXPECT_TRUE(std::any_of(list, list + count, [&](const TMove& m) { return SameMove(m, hints.Moves()[0]); }));
        }
    }
    EXPECT_GT(offered, 0);
}

// ---- lists

TEST(Hints, AreTakenOutOfTheListsThatComeAfterThem) {
    CSearchedPosition line(kRookEnding, 15);
    line.Play("Rh2-h3 Kc3-c4");
    TChessboard& b = line.Now();
    KeepHint(b, MoveOf("Rh3-h4"));
    line.Context().m_hints[b.m_nMoves] = MoveOf("Rh3-g3");
    TMove list[kMaxMoves], left[kMaxMoves];
    const int count = GenerateWhiteMoves(b, list);
    std::copy_n(list, count, left);
    const CHints hints(b);
    const int kept = hints.DropFrom(left, count);
    EXPECT_EQ(kept, count - 2);
    int at = 0;
    for (int i = 0; i < count; ++i) {
        const std::string text = WriteMove(list[i], b);
        if (text == "Rh3-h4" || text == "Rh3-g3")
            continue;
        EXPECT_TRUE(SameMove(list[i], left[at])) << "the others keep their order";
        ++at;
    }
    EXPECT_EQ(CHints().DropFrom(list, count), count);
}

TEST(Hints, ComeFirstInAListAndTheOthersKeepTheirOrder) {
    std::mt19937_64 rng(8802);
    for (int i = 0; i < Samples(500); ++i) {
        CSearchedPosition line(AnyPlacement(rng, i, 5 + i % 10), 11);
        TChessboard& b = line.Now();
        TMove list[kMaxMoves], before[kMaxMoves];
        const int count = GenerateWhiteMoves(b, list);
        std::copy_n(list, count, before);
        const int hinted = reference::DrawInt(rng, count);
        line.Context().m_hints[11] = list[hinted];
        PutHintsFirst(b, count, list);
        EXPECT_TRUE(SameMove(list[0], before[hinted]));
        for (int k = 1; k < count; ++k)
            EXPECT_TRUE(SameMove(list[k], before[k <= hinted ? k - 1 : k]));
    }
}

TEST(Hints, OutsideTheListChangeNothing) {
    CSearchedPosition line(kRookEnding, 11);
    TMove list[kMaxMoves], before[kMaxMoves];
    const int count = GenerateWhiteMoves(line.Now(), list);
    std::copy_n(list, count, before);
    line.Context().m_hints[11] = MoveOf("Rg1-g8");
    PutHintsFirst(line.Now(), count, list);
    for (int i = 0; i < count; ++i)
        EXPECT_TRUE(SameMove(list[i], before[i]));
}

TEST(Hints, ComeFirstInTheSorts) {
    CSearchedPosition line(kRookEnding, 15);
    for (const char* text : {"Rh2-h8", "Ka1-b1", "Rh2-b2"}) {
        line.Context().m_hints[15] = MoveOf(text);
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(line.Now(), list);
        (void)SortWhiteMoves(line.Now(), count, list, false);
        EXPECT_EQ(WriteMove(list[0], line.Now()), text);
    }
    line.Play("Rh2-h3");
    for (const char* text : {"Kc3-c4", "Kc3-b4", "Kc3-d2"}) {
        line.Context().m_hints[14] = MoveOf(text, false);
        TMove list[kMaxMoves];
        const int count = GenerateBlackMoves(line.Now(), list);
        (void)SortBlackMoves(line.Now(), count, list);
        EXPECT_EQ(WriteMove(list[0], line.Now()), text);
    }
}

// ---- verdicts

/// Tables full of nonsense, as no line of play would leave them: the verdict is the same.
TEST(Hints, ChangeNoVerdict) {
    std::mt19937_64 rng(8803);
    int mates = 0;
    for (int i = 0; i < Samples(900); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 5);
        const int moves = 2 + i % 2;
        const auto truth = MatesWithin(placement, moves, 60000);
        if (!truth)
            continue;
        CSearchedPosition line(placement, 2 * moves - 1, 1 + i % 2);
        line.Analysis().m_bSafeMode = true;
        for (TMove& hint : line.Context().m_hints)
            hint = {static_cast<std::uint8_t>(reference::DrawInt(rng, 64)),
                    static_cast<std::uint8_t>(reference::DrawInt(rng, 64)), i % 3 == 0 ? kKnight : kNoFigure, 0};
        for (auto& table : line.Context().m_answers)
            for (auto& answer : table)
                answer = static_cast<std::uint16_t>(reference::Draw(rng, 5 << 12)); // the fifth promotion is the last
        EXPECT_EQ(line.Verdict() == MR_MATE, *truth) << placement << " #" << moves;
        mates += *truth ? 1 : 0;
    }
    EXPECT_GT(mates, 0);
}

/// A hint left by a checking line may be illegal here: it is refused, and a pinned figure stays where it is.
TEST(Hints, AnIllegalOneIsNotPlayed) {
    const auto placement = "4r2k/8/8/8/8/8/4R3/4K3";
    CSearchedPosition line(placement, 3);
    line.Context().m_hints[3] = MoveOf("Re2-h2"); // would mate in no time, were it not pinned
    EXPECT_EQ(line.Verdict() == MR_MATE, MatesWithin(placement, 2).value());
}

} // namespace
} // namespace quillon::test
