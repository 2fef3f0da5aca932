// Sort indications: which moves each field picks out, and where the sort puts them.

#include "search/sort_indications.h"

#include <gtest/gtest.h>

#include "core/generation.h"
#include "search/move_score.h"
#include "search/move_sort.h"
#include "search/search_truth.h"

namespace quillon::test {
namespace {

SortIndication Indicate(TFigure figure, const char* from, const char* to) {
    SortIndication wanted;
    wanted.m_figure = figure;
    wanted.m_nFrom = *from != '\0' ? String2Square(from) : kNoSquare;
    wanted.m_nTo = String2Square(to);
    return wanted;
}

std::string SquareText(TSquare square) {
    return {static_cast<char>('a' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
}

/// A position and the moves that indications pick out of its list.
class CIndicated {
  public:
    CIndicated(std::string_view placement, int nPlies, std::vector<SortIndication> wanted) : m_line(placement, nPlies) {
        m_line.Analysis().m_sortIndications = std::move(wanted);
    }

    CSearchedPosition& Line() { return m_line; }

    /// Texts of the moves whose indicated score is `score`.
    [[nodiscard]] std::vector<std::string> MovesOfScore(int score) {
        std::vector<std::string> texts;
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(m_line.Now(), list);
        for (int i = 0; i < count; ++i) {
            TMove move = list[i];
            TChessboard* const child = CopyToChild(&m_line.Now());
            if (MakeWhiteMove(*child, move) != 0 && IndicatedScore(*child, list[i]) == score)
                texts.push_back(WriteMove(list[i], m_line.Now()));
        }
        std::ranges::sort(texts);
        return texts;
    }

    /// The list in the sort's order.
    [[nodiscard]] std::vector<std::string> Sorted(bool bShort = false) {
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(m_line.Now(), list);
        const TWhiteSort sort = SortWhiteMoves(m_line.Now(), count, list, bShort);
        std::vector<std::string> texts;
        for (int i = 0; i < sort.m_nMoves; ++i)
            texts.push_back(WriteMove(list[i], m_line.Now()));
        return texts;
    }

  private:
    CSearchedPosition m_line;
};

using TTexts = std::vector<std::string>;
constexpr const char* kTwoRooks = "4k3/8/8/8/8/R7/8/4K2R"; // both rooks reach h3

TTexts First(const char* placement, const SortIndication& wanted, int nPlies = 11) {
    return CIndicated(placement, nPlies, {wanted}).MovesOfScore(kScoreFirst);
}

// ---- fields

TEST(SortIndications, WithoutOnesNoMoveIsPickedOut) {
    CIndicated none(kTwoRooks, 11, {});
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(none.Line().Now(), list);
    EXPECT_EQ(none.MovesOfScore(kNotIndicated).size(), static_cast<std::size_t>(count));
}

TEST(SortIndications, NoSourceMeansEveryFigureOfTheKind) {
    EXPECT_EQ(First(kTwoRooks, Indicate(kWhiteRook, "", "h3")), (TTexts{"Ra3-h3", "Rh1-h3"}));
    EXPECT_EQ(First(kTwoRooks, Indicate(kWhiteRook, "a3", "h3")), TTexts{"Ra3-h3"});
    EXPECT_EQ(First(kTwoRooks, Indicate(kWhiteRook, "h1", "h3")), TTexts{"Rh1-h3"});
    EXPECT_EQ(First(kTwoRooks, Indicate(kWhiteKing, "", "h3")), TTexts{});
}

TEST(SortIndications, NoFigureMeansAnyFigure) {
    const auto placement = "4k3/8/8/8/8/3R4/4P3/4K3"; // rook and pawn reach e3
    EXPECT_EQ(First(placement, Indicate(kNoFigure, "", "e3")), (TTexts{"Rd3-e3", "e2-e3"}));
    EXPECT_EQ(First(placement, Indicate(kWhitePawn, "", "e3")), TTexts{"e2-e3"});
}

TEST(SortIndications, ACaptureMayBeDemandedOrRuledOut) {
    for (const auto& [placement, bCapture] :
         {std::pair{"4k3/8/8/8/8/R6p/8/4K3", true}, std::pair{"4k3/8/8/8/8/R7/8/4K3", false}}) {
        SortIndication wanted = Indicate(kWhiteRook, "", "h3");
        EXPECT_EQ(First(placement, wanted).size(), 1u);
        wanted.m_nCapture = kMustCapture;
        EXPECT_EQ(First(placement, wanted).size(), bCapture ? 1u : 0u);
        wanted.m_nCapture = kMustNotCapture;
        EXPECT_EQ(First(placement, wanted).size(), bCapture ? 0u : 1u);
    }
}

TEST(SortIndications, AnEnPassantCaptureIsACapture) {
    SortIndication wanted = Indicate(kWhitePawn, "e5", "d6");
    wanted.m_nCapture = kMustCapture;
    CIndicated indicated("4k3/3p4/8/4P3/8/8/8/4K3", 13, {wanted});
    indicated.Line().Play("Ke1-e2 d7-d5");
    EXPECT_EQ(indicated.MovesOfScore(kScoreFirst), TTexts{"e5:d6"});
}

TEST(SortIndications, ACheckMayBeDemanded) {
    const struct {
        const char* m_pName;
        const char* m_pPlacement;
        int m_nChecks;
    } rows[] = {{"quiet", "4k3/8/8/8/3N4/8/8/4K3", 0},
                {"check", "5k2/6p1/8/8/3N4/8/8/4K3", 1},
                {"double check", "4k3/8/8/8/4N3/8/8/K3R3", 2}};
    const char* const targets[] = {"c6", "e6", "f6"};
    for (std::size_t i = 0; i < std::size(rows); ++i)
        for (int demanded = 0; demanded <= 2; ++demanded) {
            SortIndication wanted = Indicate(kWhiteKnight, "", targets[i]);
            wanted.m_nCheck = static_cast<std::uint8_t>(demanded);
            EXPECT_EQ(First(rows[i].m_pPlacement, wanted).size(), demanded <= rows[i].m_nChecks ? 1u : 0u)
                << rows[i].m_pName << ' ' << demanded;
        }
}

TEST(SortIndications, APromotionMayBeNamed) {
    const auto placement = "8/P7/8/8/8/2k5/8/K7";
    EXPECT_EQ(First(placement, Indicate(kWhitePawn, "", "a8")).size(), 4u) << "any promotion";
    const struct {
        TFigure m_kind;
        const char* m_pText;
    } rows[] = {{kQueen, "a7-a8Q"}, {kRook, "a7-a8R"}, {kBishop, "a7-a8B"}, {kKnight, "a7-a8N"}};
    for (const auto& row : rows) {
        SortIndication wanted = Indicate(kWhitePawn, "", "a8");
        wanted.m_nPromotion = row.m_kind;
        const TTexts picked = First(placement, wanted);
        EXPECT_TRUE(picked.empty() ? row.m_kind == kBishop || row.m_kind == kKnight : picked == TTexts{row.m_pText})
            << row.m_pText << ": only a promotion that cannot mate may be refused";
    }
}

TEST(SortIndications, ASafeMoveMayBeDemanded) {
    const struct {
        const char* m_pName;
        const char* m_pPlacement;
        const char* m_pTo;
        TFigure m_figure;
        bool m_bCapturable;
    } rows[] = {
        {"safe", "4k3/8/8/8/8/R7/8/4K3", "h3", kWhiteRook, false},
        {"by a pawn", "4k3/8/8/8/6p1/R7/8/4K3", "h3", kWhiteRook, true},
        {"by a bishop", "2b1k3/8/8/8/8/R7/8/4K3", "h3", kWhiteRook, true},
        {"by a pinned bishop", "4k3/4b3/8/8/8/R7/4R3/4K3", "b3", kWhiteRook, false},
        {"by the king", "8/8/8/8/7k/R7/8/4K3", "h3", kWhiteRook, true},
        {"by the king, protected", "8/8/8/8/7k/R7/6K1/8", "h3", kWhiteRook, false},
        {"en passant", "4k3/8/8/8/3p4/8/4P3/K7", "e4", kWhitePawn, true},
        {"beside no pawn", "4k3/8/8/8/2p5/8/4P3/K7", "e4", kWhitePawn, false},
    };
    for (const auto& row : rows) {
        SortIndication wanted = Indicate(row.m_figure, "", row.m_pTo);
        EXPECT_EQ(First(row.m_pPlacement, wanted).size(), 1u) << row.m_pName;
        wanted.m_bOnlyIfNotCapturable = true;
        EXPECT_EQ(First(row.m_pPlacement, wanted).size(), row.m_bCapturable ? 0u : 1u) << row.m_pName;
    }
}

TEST(SortIndications, TheNumberOfTheMoveCountsFromTheRoot) {
    for (int number = 0; number <= 3; ++number) {
        SortIndication wanted = Indicate(kWhiteRook, "", "h3");
        wanted.m_nMove = number;
        EXPECT_EQ(First(kTwoRooks, wanted).size(), number <= 1 ? 2u : 0u) << number;
        CIndicated second(kTwoRooks, 13, {wanted});
        second.Line().Play("Ke1-d1 Ke8-d8");
        EXPECT_EQ(second.MovesOfScore(kScoreFirst).size(), number == 0 || number == 2 ? 2u : 0u) << number;
    }
}

TEST(SortIndications, AreAskedAtTheFirstLevelsOnly) {
    for (int levels = 0; levels <= 3; ++levels) {
        CIndicated indicated(kTwoRooks, 13, {Indicate(kWhiteRook, "", "h3")});
        indicated.Line().Analysis().m_nSortIndicationLevels = static_cast<std::uint8_t>(levels);
        EXPECT_EQ(indicated.MovesOfScore(kScoreFirst).size(), levels >= 1 ? 2u : 0u) << levels;
        indicated.Line().Play("Ke1-d1 Ke8-d8");
        EXPECT_EQ(indicated.MovesOfScore(kScoreFirst).size(), levels >= 2 ? 2u : 0u) << levels;
    }
}

TEST(SortIndications, TheFirstOneThatAppliesDecides) {
    SortIndication worst = Indicate(kWhiteRook, "", "h3");
    worst.m_bWorst = true;
    const SortIndication best = Indicate(kWhiteRook, "a3", "h3");
    CIndicated worstFirst(kTwoRooks, 11, {worst, best});
    EXPECT_EQ(worstFirst.MovesOfScore(kScoreKnownNoMate).size(), 2u);
    CIndicated bestFirst(kTwoRooks, 11, {best, worst});
    EXPECT_EQ(bestFirst.MovesOfScore(kScoreFirst), TTexts{"Ra3-h3"});
    EXPECT_EQ(bestFirst.MovesOfScore(kScoreKnownNoMate), TTexts{"Rh1-h3"});
}

// ---- the sort

/// Source and target of a legal move of the position.
SortIndication DrawIndication(std::mt19937_64& rng, const std::string& placement) {
    const auto moves = reference::LegalMoves(reference::ProblemFromFen(placement));
    const reference::Move& move = moves[static_cast<std::size_t>(reference::Draw(rng, moves.size()))];
    SortIndication wanted;
    wanted.m_nFrom = move.from;
    wanted.m_nTo = move.to;
    return wanted;
}

TEST(SortIndications, TheIndicatedMoveComesFirst) {
    std::mt19937_64 rng(5501);
    for (int i = 0; i < Samples(300); ++i) {
        const std::string placement = AnyPlacement(rng, i, 5 + i % 8);
        SortIndication wanted = DrawIndication(rng, placement);
        CIndicated indicated(placement, 15, {wanted});
        const TTexts picked = indicated.MovesOfScore(kScoreFirst);
        const TTexts sorted = indicated.Sorted(i % 2 == 0);
        ASSERT_LE(picked.size(), sorted.size());
        TTexts front(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(picked.size()));
        std::ranges::sort(front);
        EXPECT_EQ(front, picked) << placement;
    }
}

TEST(SortIndications, TheMoveToAvoidComesLast) {
    std::mt19937_64 rng(5502);
    for (int i = 0; i < Samples(300); ++i) {
        const std::string placement = AnyPlacement(rng, i, 5 + i % 8);
        SortIndication wanted = DrawIndication(rng, placement);
        wanted.m_bWorst = true;
        CIndicated indicated(placement, 15, {wanted});
        const TTexts picked = indicated.MovesOfScore(kScoreKnownNoMate);
        const TTexts sorted = indicated.Sorted();
        ASSERT_LE(picked.size(), sorted.size());
        if (picked.empty())
            continue;
        TTexts back(sorted.end() - static_cast<std::ptrdiff_t>(picked.size()), sorted.end());
        std::ranges::sort(back);
        EXPECT_EQ(back, picked) << placement;
    }
}

TEST(SortIndications, SeveralComeInTheirOrder) {
    const SortIndication one = Indicate(kWhiteRook, "h1", "h8"), two = Indicate(kWhiteKing, "e1", "d1"),
                         three = Indicate(kWhiteRook, "a3", "a4"), four = Indicate(kWhiteKing, "e1", "f2");
    for (const auto& order :
         {std::vector{one, two}, std::vector{two, one}, std::vector{three, two}, std::vector{one, two, three},
          std::vector{three, two, one}, std::vector{four, three, two, one}, std::vector{two, four, one, three}}) {
        CIndicated indicated(kTwoRooks, 15, order);
        const TTexts sorted = indicated.Sorted();
        for (std::size_t i = 0; i < order.size(); ++i)
            EXPECT_EQ(sorted[i].substr(sorted[i].size() - 2), SquareText(order[i].m_nTo))
                << i << " of " << order.size();
    }
}

/// Whatever its computed score, a move that is not indicated stays behind.
TEST(SortIndications, ATemptingMoveStaysBehindTheIndicated) {
    const auto placement = "4k2q/8/8/8/8/R7/8/4K2R"; // Rh1:h8 wins the queen with check
    for (const char* target : {"a4", "b3", "a8", "a1"}) {
        CIndicated indicated(placement, 15, {Indicate(kWhiteRook, "a3", target)});
        const TTexts sorted = indicated.Sorted();
        EXPECT_EQ(sorted.front(), std::string("Ra3-") + target);
    }
    CIndicated two(placement, 15, {Indicate(kWhiteRook, "a3", "a4"), Indicate(kWhiteRook, "a3", "b3")});
    const TTexts sorted = two.Sorted();
    EXPECT_EQ((TTexts{sorted[0], sorted[1]}), (TTexts{"Ra3-a4", "Ra3-b3"}));
}

TEST(SortIndications, HintsDoNotComeBeforeTheIndicated) {
    CIndicated indicated(kTwoRooks, 15, {Indicate(kWhiteRook, "a3", "a4")});
    indicated.Line().Context().m_hints[15] = {kE1, static_cast<std::uint8_t>(String2Square("d2")), 0, 0};
    EXPECT_EQ(indicated.Sorted().front(), "Ra3-a4");
}

TEST(SortIndications, ChangeNoVerdict) {
    std::mt19937_64 rng(5503);
    for (int i = 0; i < Samples(60); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 2);
        const auto truth = MatesWithin(placement, 5, 60000);
        if (!truth)
            continue;
        CSearchedPosition line(placement, 9);
        for (int k = 0; k < 6; ++k) {
            SortIndication wanted;
            wanted.m_nTo = static_cast<TSquare>(reference::DrawInt(rng, 64));
            wanted.m_bWorst = k % 2 == 0;
            line.Analysis().m_sortIndications.push_back(wanted);
        }
        EXPECT_EQ(line.Verdict() == MR_MATE, *truth) << placement;
    }
}

// ---- the main variant

TEST(MainVariantHint, ItsMoveComesFirstWhereItIsFollowed) {
    for (const bool bFollowed : {false, true}) {
        CSearchedPosition line(kTwoRooks, 15);
        line.Root().m_wKingState = static_cast<std::uint16_t>(bFollowed ? kFollowsMainVariant : 0);
        line.Analysis().m_mainVariant = {{kWhiteKing, String2Square("d1")}, {kWhiteRook, String2Square("b3")}};
        const TMove key = {kE1, String2Square("d1"), 0, 0}, later = {String2Square("a3"), String2Square("b3"), 0, 0};
        EXPECT_EQ(IsMainVariantMove(line.Now(), key), bFollowed);
        EXPECT_FALSE(IsMainVariantMove(line.Now(), later)) << "not at this ply";
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(line.Now(), list);
        (void)SortWhiteMoves(line.Now(), count, list, false);
        if (bFollowed) {
            EXPECT_TRUE(SameMove(list[0], key));
        }
        line.Play("Ke1-d1 Ke8-d8");
        EXPECT_EQ(IsMainVariantMove(line.Now(), later), bFollowed);
        line.Play("Ra3-b3 Kd8-c8");
        EXPECT_FALSE(IsMainVariantMove(line.Now(), later)) << "the variant has ended";
    }
}

TEST(MainVariantHint, FigureAndTargetHaveToMatch) {
    CSearchedPosition line(kTwoRooks, 15);
    line.Root().m_wKingState = kFollowsMainVariant;
    line.Analysis().m_mainVariant = {{kWhiteRook, String2Square("h3")}};
    for (const char* from : {"a3", "h1"})
        EXPECT_TRUE(IsMainVariantMove(line.Now(), {String2Square(from), String2Square("h3"), 0, 0})) << from;
    EXPECT_FALSE(IsMainVariantMove(line.Now(), {String2Square("a3"), String2Square("a4"), 0, 0}));
    EXPECT_FALSE(IsMainVariantMove(line.Now(), {kE1, String2Square("h3"), 0, 0}));
}

} // namespace
} // namespace quillon::test
