// Edge cases of the two nodes.

#include <set>

#include <gtest/gtest.h>

#include "core/generation.h"
#include "core/queries.h"
#include "heuristics/find_mate_root.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

std::set<std::string> Keys(const char* placement, int nMoves) {
    const auto context = NewSearchContext();
    TAnalysis analysis;
    analysis.m_nSolveMode = kAllSolutions;
    TRootRun run;
    (void)FindMateRoot(*context, analysis, ChessboardFromFEN(placement), 2 * nMoves - 1, run, true, false);
    std::set<std::string> keys;
    for (const TSolution& solution : run.m_solutions)
        keys.insert(solution.m_text);
    return keys;
}

/// The moves made, and those made in one node of interest.
class CMoveLog : public INodeLog {
  public:
    explicit CMoveLog(const TChessboard* pOnly = nullptr) : m_pOnly(pOnly) {}
    void Move(const TChessboard& child) override {
        if (m_pOnly == nullptr || child.m_pPrevious == m_pOnly)
            m_moves.push_back(WriteTerseMove(child.m_lastMove) + PromotionLetter(child.m_lastMove));
    }
    void Verdict(const TChessboard&, TMateResult) override {}
    void Remark(const TChessboard&, const char*) override {}

    std::vector<std::string> m_moves;

  private:
    static std::string PromotionLetter(const TMove& move) {
        return PromotionKind(move) != 0 ? std::string(1, KindToLetter(PromotionKind(move))) : std::string();
    }
    const TChessboard* m_pOnly;
};

// ---- the end of the line

TEST(BlackNode, WithNoPlyLeftTellsMateFromTheRest) {
    const struct {
        const char* m_pName;
        const char* m_pPlacement;
        const char* m_pMove;
        TMateResult m_nExpected;
    } rows[] = {
        {"mate", "7k/8/6K1/8/8/8/8/1Q6", "Qb1-b8", MR_MATE},
        {"check with a flight", "7k/8/8/6K1/8/8/8/1Q6", "Qb1-b8", MR_NOMATE},
        {"check with a capture", "r6k/8/6K1/8/8/8/8/1Q6", "Qb1-b8", MR_NOMATE},
        {"stalemate", "7k/5K2/8/8/8/8/8/1Q6", "Qb1-g6", MR_NOMATE},
        {"quiet", "7k/8/8/8/8/8/8/KQ6", "Qb1-b3", MR_NOMATE},
    };
    for (const auto& row : rows) {
        CSearchedPosition line(row.m_pPlacement, 1);
        line.Play(row.m_pMove);
        EXPECT_EQ(line.Verdict(), row.m_nExpected) << row.m_pName;
        EXPECT_EQ(reference::IsMate(reference::FromFen(PlacementOf(line.Now()) + " b")), row.m_nExpected == MR_MATE)
            << row.m_pName;
    }
}

TEST(BlackNode, StalemateWithPliesLeftIsNoMate) {
    for (const int plies : {3, 5, 7, 11}) {
        CSearchedPosition line("7k/5K2/8/8/8/8/8/1Q6", plies);
        line.Play("Qb1-g6");
        EXPECT_EQ(line.Verdict(), MR_NOMATE) << plies;
    }
}

TEST(BlackNode, MateWithPliesLeftIsMate) {
    for (const int plies : {3, 5, 7, 11}) {
        CSearchedPosition line("7k/8/6K1/8/8/8/8/1Q6", plies);
        line.Play("Qb1-b8");
        EXPECT_EQ(line.Verdict(), MR_MATE) << plies;
    }
}

TEST(BlackNode, PassesInABishopModeInsteadOfBeingStalemated) {
    CSearchedPosition line("7k/5K2/8/8/8/8/8/1Q6", 5);
    line.Play("Qb1-g6");
    line.Now().m_bySideState |= 1;
    EXPECT_EQ(line.Verdict(), MR_MATE) << "after the null move White mates";
}

/// With White's last figure captured nothing below the capture is looked at.
TEST(BlackNode, AnEscapeForCertainEndsTheNode) {
    CMoveLog log;
    CSearchedPosition line("8/8/8/8/7p/8/4NK1p/7k", 9);
    line.Analysis().m_pNodeLog = &log;
    line.Play("Ne2-g3");
    EXPECT_EQ(line.Verdict<kLoggingNode>(), MR_NOMATE);
    EXPECT_EQ(log.m_moves, std::vector<std::string>{"h4-g3"});
}

// ---- keys of every kind

TEST(Keys, OfEveryKind) {
    const struct {
        const char* m_pPlacement;
        int m_nMoves;
        const char* m_pKey;
    } rows[] = {
        {"8/8/3R4/7P/8/1p2k1B1/8/R3K2R", 2, "0-0"},
        {"4k3/8/8/8/5R2/p7/8/R3K2R", 2, "0-0-0"},
        {"8/8/8/6p1/p7/7R/8/2k1K2R", 2, "Rh3-h2"},   // and mates by castling short
        {"8/3RP3/2p5/8/8/8/8/R3K2k", 2, "Rd7-d2"},   // and mates by castling long
        {"4k2r/8/8/3p3N/8/1Q6/8/R3K3", 2, "Qb3-b7"}, // against Black's castling
        {"k7/1p1P4/8/2P2B2/8/8/7K/8", 3, "d7-d8Q"},
        {"8/1P4P1/7k/8/1K4P1/8/8/8", 3, "g7-g8R"}, // a queen would stalemate
        {"8/2P1k3/6K1/8/2PR4/3P4/8/8", 2, "c7-c8R"},
        {"8/3PR3/2k5/K3p3/3Q4/4P3/8/3N4", 1, "d7-d8N"},
        {"1b6/k1P2N2/2Q5/3K1P2/8/8/7b/8", 1, "c7-c8N"},
        {"6k1/4P3/8/3P1K2/8/8/4p3/2Q5", 2, "Kf5-g6"}, // against Black's promotions
    };
    for (const auto& row : rows) {
        const reference::Position position = reference::ProblemFromFen(row.m_pPlacement);
        const reference::Answer truth = reference::SolveAll(position, row.m_nMoves);
        ASSERT_EQ(truth.keys, std::vector<std::string>{row.m_pKey}) << row.m_pPlacement;
        EXPECT_EQ(Keys(row.m_pPlacement, row.m_nMoves), std::set<std::string>{row.m_pKey}) << row.m_pPlacement;
    }
}

TEST(Keys, EveryPromotionIsAKeyOfItsOwn) {
    const std::set<std::string> keys = Keys("7k/P7/6K1/8/8/8/8/8", 1);
    EXPECT_EQ(keys, (std::set<std::string>{"a7-a8Q", "a7-a8R"}));
}

/// White's first move in a diagram is never an en passant capture.
TEST(Keys, NoEnPassantInTheFirstMove) {
    const std::set<std::string> keys = Keys("4k3/8/8/3pP3/8/8/8/R3K3", 3);
    EXPECT_FALSE(keys.contains("e5:d6"));
}

// ---- what the white node does

TEST(WhiteNode, TakesAHandedListAndClearsTheMark) {
    CSearchedPosition line("7k/8/6K1/8/8/8/8/1Q6", 5);
    const TMove bad[] = {{SquareAt(1, 0), SquareAt(0, 0), 0, 0}};
    line.Context().m_pResumeList = bad;
    line.Context().m_nResumeCount = 1;
    line.Context().m_byResumeList = 1;
    CMoveLog log(&line.Root());
    line.Analysis().m_pNodeLog = &log;
    (void)line.Verdict<kLoggingNode>();
    EXPECT_EQ(log.m_moves, std::vector<std::string>{"b1-a1"});
    EXPECT_EQ(line.Context().m_byResumeList, 0);
}

TEST(WhiteNode, AListForLooksOnlyIsNotStored) {
    for (const std::uint8_t mark : {std::uint8_t{1}, std::uint8_t{2}}) {
        CRecordingRegister known;
        CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 11);
        line.Analysis().m_pRegister = &known;
        line.Context().m_pResumeList = nullptr;
        line.Context().m_nResumeCount = 0;
        line.Context().m_byResumeList = mark;
        EXPECT_EQ(line.Verdict(), MR_NOMATE);
        EXPECT_EQ(known.m_stored.size(), mark == 1 ? 1u : 0u);
    }
}

/// A king that goes away from the black king is doubtful under SH_DONTRECEDEBLACKKING, in the pass with heuristics
/// only.
TEST(WhiteNode, RecedingKingIsDoubtfulInTheFirstPassOnly) {
    for (const int pass : {1, 2}) {
        CSearchedPosition line("8/8/2k5/8/3K4/8/7R/8", 3, pass);
        line.Analysis().m_bSafeMode = true;
        line.Now().m_nHeuristics = SH_DONTRECEDEBLACKKING;
        EXPECT_EQ(line.Verdict(), pass == 1 ? MR_DOUBTFUL : MR_NOMATE);
        EXPECT_EQ(line.Context().m_lastDoubtCause, pass == 1 ? SH_DONTRECEDEBLACKKING : 0u);
    }
}

TEST(WhiteNode, AMateBesideADoubtfulMoveIsAMate) {
    CSearchedPosition line("7k/8/6K1/8/8/8/8/1Q6", 3, 1);
    line.Now().m_nHeuristics = SH_DONTRECEDEBLACKKING;
    EXPECT_EQ(line.Verdict(), MR_MATE);
}

TEST(WhiteNode, CountsPositionsWithFewPliesLeft) {
    CSearchedPosition one("7k/8/6K1/8/8/8/8/1Q6", 1);
    (void)one.Verdict();
    FlushPositions(one.Context(), one.Analysis());
    EXPECT_EQ(one.Analysis().m_nPositions.load(), 1u);
    CSearchedPosition five("8/8/8/8/8/2k5/7R/K7", 5);
    (void)five.Verdict();
    FlushPositions(five.Context(), five.Analysis());
    EXPECT_GT(five.Analysis().m_nPositions.load(), 100u);
}

TEST(WhiteNode, ShowsProgressAtItsPlies) {
    static int s_nShown;
    static int s_nWrongPly;
    s_nShown = s_nWrongPly = 0;
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 9);
    line.Analysis().m_pProgressHook = [](const TChessboard& b) {
        ++s_nShown;
        s_nWrongPly += b.m_nMoves == 9 ? 0 : 1;
    };
    line.Context().m_nStopRequest = kStopRequest; // one visit is enough
    (void)line.Verdict();
    EXPECT_EQ(s_nShown, 1);
    EXPECT_EQ(s_nWrongPly, 0);
    EXPECT_NE(line.Analysis().m_nProgressTicks.load(), 0u);
}

TEST(Nodes, PublishTheirListsForTheProgressDisplay) {
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 5);
    EXPECT_EQ(line.Verdict(), MR_NOMATE);
    EXPECT_GT(line.Context().m_moveCount[4].load(), 0);
    EXPECT_NE(line.Context().m_moveList[4].load(), nullptr);
    EXPECT_EQ(line.Context().m_moveIndex[5].load(), line.Context().m_moveIndexShown[5].load());
}

// ---- under-promotions

std::vector<std::string> PromotionsTried(const char* placement) {
    CSearchedPosition line(placement, 5);
    line.Play("c4-c5");
    CMoveLog log(&line.Now());
    line.Analysis().m_pNodeLog = &log;
    (void)line.Verdict<kLoggingNode>();
    std::erase_if(log.m_moves, [](const std::string& move) { return !move.starts_with("a2-a1"); });
    return log.m_moves;
}

TEST(UnderPromotions, AreSkippedWhenTheMateCapturesThePromotedFigure) {
    // The rook has to take on a1 whatever comes, and mates on a8.
    EXPECT_EQ(PromotionsTried("7k/8/6K1/8/2P5/8/p7/2R5"), std::vector<std::string>{"a2-a1Q"});
}

TEST(UnderPromotions, AreTriedWhenTheMateLeavesTheFigureAlone) {
    // The rook cannot come to a1; it mates on d8 at once.
    EXPECT_EQ(PromotionsTried("7k/8/6K1/8/2P5/8/p7/1N1R4"),
              (std::vector<std::string>{"a2-a1Q", "a2-a1R", "a2-a1B", "a2-a1N"}));
}

// ---- both instantiations

TEST(NodeLog, TellsMovesAndVerdictsAndChangesNothing) {
    class CBook : public INodeLog {
      public:
        void Move(const TChessboard& child) override {
            ++m_nMoves;
            m_bLinked = m_bLinked && child.m_pPrevious != nullptr;
        }
        void Verdict(const TChessboard&, TMateResult result) override { ++m_verdicts[result]; }
        void Remark(const TChessboard&, const char* text) override { m_remarks.insert(text); }
        int m_nMoves = 0;
        bool m_bLinked = true;
        std::map<int, int> m_verdicts;
        std::set<std::string> m_remarks;
    };
    std::mt19937_64 rng(5150);
    CBook book;
    for (int i = 0; i < Samples(120); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 4);
        const int pass = 1 + i % 2;
        CSearchedPosition plain(placement, 5, pass), logging(placement, 5, pass);
        logging.Analysis().m_pNodeLog = &book;
        EXPECT_EQ(plain.Verdict(), logging.Verdict<kLoggingNode>()) << placement;
    }
    EXPECT_GT(book.m_nMoves, 0);
    EXPECT_TRUE(book.m_bLinked);
    EXPECT_GT(book.m_verdicts[MR_MATE], 0);
    EXPECT_GT(book.m_verdicts[MR_NOMATE], 0);
}

TEST(NodeLog, RemarksOnAMateKnownToTheRegister) {
    CRemarks log;
    CRecordingRegister known;
    known.m_nAnswer = MR_MATE;
    CSearchedPosition line("8/8/8/8/8/2k5/7R/K7", 11);
    line.Analysis().m_pRegister = &known;
    line.Analysis().m_pNodeLog = &log;
    line.Play("Rh2-h3");
    EXPECT_EQ(line.Verdict<kLoggingNode>(), MR_MATE);
    EXPECT_EQ(log.m_remarks, std::set<std::string>{"Mate found (pos.in temp.reg.)"});
}

} // namespace
} // namespace quillon::test
