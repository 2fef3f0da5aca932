#include "heuristics/known_compositions.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "core/chess_exception.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/known_compositions_table.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kPlacement = "kr5Q/3p4/2n5/8/8/8/8/K6B";

class CBoxes : public INotifier {
  public:
    void Inform(std::string_view text, std::string_view title) override { m_texts.emplace_back(text, title); }
    bool AskYesNo(std::string_view, std::string_view) override { return false; }
    std::vector<std::pair<std::string, std::string>> m_texts;
};

class KnownCompositions : public ::testing::Test {
  protected:
    std::string Fault(std::string_view word) {
        try {
            ApplyOptionWord(Board(), word);
        } catch (const ChessException& error) {
            return error.what();
        }
        return "none";
    }
    TChessboard& Board() { return m_position.Root(); }
    TSearchContext& P() { return m_position.Context(); }
    std::uint32_t Mask() { return Board().m_nHeuristics; }

    CSearchedPosition m_position{kPlacement, 21, 1};
    CBoxes m_boxes;
};

TEST_F(KnownCompositions, WatchedFiguresAreAddedAndPawnsKeptOut) {
    ApplyOptionWord(Board(), "DLFU(b8, \tC6,d7)");
    EXPECT_EQ(Mask(), SH_DONTLETFIGUREUNBLOCK);
    EXPECT_EQ(P().m_nBlockedFigures, 2);
    EXPECT_EQ(P().m_BlockedFigures[0], SquareAt(1, 7));
    EXPECT_EQ(P().m_BlockedFigures[1], SquareAt(2, 5));
    ApplyOptionWord(Board(), "DLFU(B8)");
    EXPECT_EQ(P().m_nBlockedFigures, 2) << "watched already";
    Board().m_nHeuristics = 0;
    P().m_nBlockedFigures = 0;
    ApplyOptionWord(Board(), "DLFU(d7)");
    EXPECT_EQ(Mask(), 0u) << "nothing to watch";
}

TEST_F(KnownCompositions, BadSquares) {
    EXPECT_EQ(Fault("DLFU(b8,x9)"), "Invalid square description at index 3");
    EXPECT_EQ(Fault("DLFU(e4)"), "Invalid square");
    EXPECT_EQ(Fault("DLFU(a1)"), "Invalid square");
    EXPECT_EQ(Fault("DLFU(a8)"), "Invalid square");
}

TEST_F(KnownCompositions, SafeModeInAnyCase) {
    for (const char* word : {"SafeMode", "safemode", "SAFEMODE"}) {
        m_position.Analysis().m_bSafeMode = false;
        ApplyOptionWord(Board(), word);
        EXPECT_TRUE(m_position.Analysis().m_bSafeMode) << word;
    }
}

TEST_F(KnownCompositions, OneOfTheThreeThatHoldTheKing) {
    constexpr std::uint32_t kAll = SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED;
    for (const auto& [word, bit] : {std::pair{"AssertBKS", SH_ASSERTBLACKKINGSURROUNDED},
                                    {"AssertBKS(strict)", SH_ASSERTBLACKKINGSURROUNDED},
                                    {"ExtEdge", SH_KEEPKINGWITHINEXTEDGE},
                                    {"DontLetKingMove", SH_KEEPKINGONTHEEDGE}}) {
        Board().m_nHeuristics = kAll | SH_3MOVESTOMATE;
        P().m_bDontLetKingMove = false;
        ApplyOptionWord(Board(), word);
        EXPECT_EQ(Mask(), bit | SH_3MOVESTOMATE) << word;
        EXPECT_EQ(P().m_bDontLetKingMove, bit == SH_KEEPKINGONTHEEDGE);
        if (bit == SH_ASSERTBLACKKINGSURROUNDED) {
            EXPECT_EQ(P().m_bAssertBKSStrict, std::string_view(word).ends_with("(strict)"));
        }
    }
}

TEST_F(KnownCompositions, PromotedQueen) {
    ApplyOptionWord(Board(), "DontLetPromotedQueenMove");
    EXPECT_EQ(Mask(), SH_DONTLETPROMOTEDQUEENMOVE);
    ApplyOptionWord(Board(), "DontLetPromotedQueenMove NO");
    EXPECT_EQ(Mask(), 0u);
    ApplyOptionWord(Board(), "DontLetPromotedQueenMove");
    ApplyOptionWord(Board(), "DontLetPromotedQueenMove at all NO");
    EXPECT_EQ(Mask(), 0u);
    EXPECT_EQ(Fault("DontLetPromotedQueenMoveNO"), "Unknown option: DontLetPromotedQueenMoveNO");
}

TEST_F(KnownCompositions, DepthOfTheShortMateSearch) {
    for (const auto& [word, depth] : {std::pair{"LFQMDepth(#3)", 5},
                                      {"LFQMDepth(3)", 3},
                                      {"LFQMDepth(0)", -1},
                                      {"LFQMDepth(#0)", -1},
                                      {"LFQMDepth(-4)", -1}}) {
        m_position.Analysis().m_shLookForQuickerMateDepth = 77;
        ApplyOptionWord(Board(), word);
        EXPECT_EQ(m_position.Analysis().m_shLookForQuickerMateDepth, depth) << word;
    }
    EXPECT_EQ(Fault("LFQMDepth(x)"), "Unknown option: LFQMDepth(x)");
}

TEST_F(KnownCompositions, UnknownWordsAreFaults) {
    for (const char* word : {"", "DLFU", "DLFU(b8", "extedge", "AssertBKS(loose)"})
        EXPECT_EQ(Fault(word), "Unknown option: " + std::string(word));
}

TEST_F(KnownCompositions, FaultsAreToldAndTheRestStands) {
    ApplyOptionWords(Board(), {"ExtEdge", "DLFU(q1)", "SafeMode"}, &m_boxes);
    ASSERT_EQ(m_boxes.m_texts.size(), 1u);
    EXPECT_EQ(m_boxes.m_texts[0].first,
              "Error occurred in ApplyPredefinedAdditionalHeuristics() : Invalid square description at index 0");
    EXPECT_EQ(Mask(), SH_KEEPKINGWITHINEXTEDGE);
    EXPECT_FALSE(m_position.Analysis().m_bSafeMode);
    EXPECT_EQ(Board().m_nHeurParams, ComputeHeurParams(Board()));
    ApplyOptionWords(Board(), {"nonsense"}, nullptr); // said to nobody
}

TEST_F(KnownCompositions, SortLineBecomesNumberedIndications) {
    AppendSortLine(Board(), " 1. Qh8-h7 d7-d6 2. Bh1:c6 ");
    ASSERT_EQ(m_position.Analysis().m_sortIndications.size(), 2u);
    const SortIndication& first = m_position.Analysis().m_sortIndications[0];
    EXPECT_EQ(first.m_nMove, 1);
    EXPECT_EQ(first.m_figure, kWhiteQueen);
    EXPECT_EQ(first.m_nFrom, kH8);
    EXPECT_EQ(first.m_nTo, SquareAt(7, 6));
    EXPECT_EQ(m_position.Analysis().m_sortIndications[1].m_nMove, 2);
}

TEST_F(KnownCompositions, SortLineTwiceAddsNothing) {
    AppendSortLine(Board(), "1. Qh8-h7 d7-d6");
    AppendSortLine(Board(), "1. Qh8-h7 Rb8-b7");
    EXPECT_EQ(m_position.Analysis().m_sortIndications.size(), 1u);
}

TEST_F(KnownCompositions, SortLineLongerThanTheProblemIsCut) {
    CSearchedPosition brief(kPlacement, 3, 1);
    AppendSortLine(brief.Root(), "1. Qh8-h7 d7-d6 2. Qh7-h8 d6-d5 3. Qh8-h7");
    EXPECT_EQ(brief.Analysis().m_sortIndications.size(), 2u);
}

TEST_F(KnownCompositions, BadMoveOfASortLine) {
    for (const char* bad : {"1. Qh8-a2", "1. Nh8-h7", "1. Qh8-h7 Nc6-c5", "1. Qh8-h7 x"}) {
        m_boxes.m_texts.clear();
        ApplySortLines(Board(), {bad}, &m_boxes);
        ASSERT_EQ(m_boxes.m_texts.size(), 1u) << bad;
        EXPECT_EQ(m_boxes.m_texts[0],
                  std::pair(std::string("Error in predefined sort indications."), std::string("Error")));
        EXPECT_TRUE(m_position.Analysis().m_sortIndications.empty()) << bad;
    }
}

TEST_F(KnownCompositions, OnlyStoredPositionsAreKnown) {
    EXPECT_TRUE(IsKnownComposition("r5k1/1p1p2p1/N7/1p4N1/1p4p1/8/7Q/bK4n1"));
    EXPECT_TRUE(IsKnownComposition("6Q1/8/8/5r2/2p5/4K3/7p/7k"));
    EXPECT_TRUE(IsKnownComposition("8/8/8/8/8/5NpB/3K1pPb/5k1n"));
    EXPECT_FALSE(IsKnownComposition(kPlacement));
    EXPECT_FALSE(IsKnownComposition(""));
    EXPECT_FALSE(IsKnownComposition("6Q1/8/8/5r2/2p5/4K3/7p/7k w - -")) << "the board part is the key";
    EXPECT_EQ(KnownContinuations("8/8/8/8/8/5NpB/3K1pPb/5k1n").size(), 1u);
    EXPECT_TRUE(KnownContinuations(kPlacement).empty());
}

TEST_F(KnownCompositions, EveryRowOfTheTablesApplies) {
    const auto Check = [this](std::span<const TKnownRow> rows) {
        for (const TKnownRow& row : rows) {
            CSearchedPosition stored(row.m_placement, 99, 1);
            EXPECT_EQ(WriteFEN(stored.Root(), false), row.m_placement);
            ApplyPredefinedAdditionalHeuristics(stored.Root(), &m_boxes);
            EXPECT_TRUE(m_boxes.m_texts.empty()) << row.m_placement << ": " << row.m_text;
        }
    };
    Check(KnownOptionWords());
    Check(KnownSortLines());
    Check(KnownEndings());
}

TEST_F(KnownCompositions, StoredSettingsReachTheAnalysis) {
    CSearchedPosition depth("r5k1/1p1p2p1/N7/1p4N1/1p4p1/8/7Q/bK4n1", 21, 1);
    ApplyPredefinedAdditionalHeuristics(depth.Root(), &m_boxes);
    EXPECT_EQ(depth.Analysis().m_shLookForQuickerMateDepth, 5);
    CSearchedPosition queen("8/p5p1/4K2p/2p2Pb1/P1NkN1p1/1P1B4/p1P3P1/8", 21, 1);
    queen.Root().m_nHeuristics = SH_DONTLETPROMOTEDQUEENMOVE | SH_3MOVESTOMATE;
    ApplyPredefinedAdditionalHeuristics(queen.Root(), &m_boxes);
    EXPECT_EQ(queen.Root().m_nHeuristics, SH_3MOVESTOMATE);
    CSearchedPosition line("6Q1/8/8/5r2/2p5/4K3/7p/7k", 21, 1);
    ApplyPredefinedAdditionalHeuristics(line.Root(), &m_boxes);
    EXPECT_EQ(line.Analysis().m_sortIndications.size(), 3u);
    ApplyPredefinedAdditionalHeuristics(m_position.Root(), &m_boxes);
    EXPECT_TRUE(m_position.Analysis().m_sortIndications.empty());
}

} // namespace
} // namespace quillon::test
