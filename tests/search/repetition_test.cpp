// Repetition of positions: which are found, which are treated, and what becomes of them in the nodes.

#include "search/repetition.h"

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace quillon::test {
namespace {

constexpr const char* kRook = "7k/8/8/8/8/8/8/KR6";
constexpr const char* kFourPlies = "Rb1-b2 Kh8-g8 Rb2-b1 Kg8-h8 Rb1-b2";
constexpr const char* kSixPlies = "Rb1-b2 Kh8-g8 Rb2-b3 Kg8-g7 Rb3-b1 Kg7-h8 Rb1-b2";

struct TFound {
    int m_nEarlier;
    bool m_bTreated;
    friend bool operator==(const TFound&, const TFound&) = default;
};
void PrintTo(const TFound& found, std::ostream* out) {
    *out << found.m_nEarlier << (found.m_bTreated ? " treated" : " left");
}

TFound Find(const TChessboard& child) {
    bool bTreated = true;
    const int earlier = FindRepetition(child, bTreated);
    return {earlier, bTreated};
}

constexpr TFound kNone{0, false};

TEST(Repetition, IsFoundFourPliesBack) {
    CSearchedPosition line(kRook, 21, 1);
    line.Play("Rb1-b2");
    EXPECT_EQ(Find(line.Now()), kNone) << "no grandparent";
    line.Play("Kh8-g8 Rb2-b1");
    EXPECT_EQ(Find(line.Now()), kNone) << "two plies back is not the same side's choice again";
    line.Play("Kg8-h8 Rb1-b2");
    EXPECT_EQ(Find(line.Now()), (TFound{20, true}));
}

TEST(Repetition, IsFoundFurtherBack) {
    CSearchedPosition line(kRook, 21, 1);
    line.Play(kSixPlies);
    EXPECT_EQ(Find(line.Now()), (TFound{20, true}));
}

TEST(Repetition, OtherBoardIsNone) {
    CSearchedPosition line(kRook, 21, 1);
    line.Play("Rb1-b2 Kh8-g8 Rb2-b1 Kg8-h8 Rb1-b3");
    EXPECT_EQ(Find(line.Now()), kNone);
}

/// The walk looks at the figure on each ply's target and at what stood there before; both are planted here, since no
/// board can repeat across such a move.
TEST(Repetition, PawnMovesAndCapturesEndTheWalk) {
    CSearchedPosition line("7k/8/8/8/8/8/4P3/KR6", 21, 1);
    line.Play(kFourPlies);
    TChessboard* const twoBack = line.Now().m_pPrevious->m_pPrevious;
    const TMove played = twoBack->m_lastMove;
    twoBack->m_lastMove.m_nTo = 12; // e2, where the pawn stands
    EXPECT_EQ(Find(line.Now()), kNone) << "a pawn's move";
    twoBack->m_lastMove = played;
    EXPECT_EQ(Find(line.Now()), (TFound{20, true}));
    twoBack->m_pPrevious->m_board[played.m_nTo] = kBlackPawn;
    EXPECT_EQ(Find(line.Now()), kNone) << "a capture";
}

TEST(Repetition, NullMovesCaptureNothing) {
    CSearchedPosition line(kRook, 21, 1);
    const auto Pass = [&line] {
        TChessboard* const child = CopyToChild(&line.Now());
        TMove null{SquareAt(7, 7), SquareAt(7, 7), 0, 0};
        EXPECT_EQ(MakeBlackMove(*child, null, false), kMoveStands);
        return child;
    };
    const auto Move = [](TChessboard* parent, TMove move) {
        TChessboard* const child = CopyToChild(parent);
        EXPECT_EQ(MakeWhiteMove(*child, move), 1);
        return child;
    };
    line.Play("Rb1-b2");
    TChessboard* b = Pass();
    b = Move(b, {SquareAt(1, 1), SquareAt(1, 0), 0, 0});
    TChessboard* const passed = CopyToChild(b);
    TMove null{SquareAt(7, 7), SquareAt(7, 7), 0, 0};
    EXPECT_EQ(MakeBlackMove(*passed, null, false), kMoveStands);
    b = Move(passed, {SquareAt(1, 0), SquareAt(1, 1), 0, 0});
    EXPECT_EQ(Find(*b), (TFound{20, true}));
}

TEST(Repetition, OtherCastlingsLeftMakeAnotherPosition) {
    constexpr const char* kRooks = "4k3/8/8/8/8/8/8/R3K2R";
    CSearchedPosition lost(kRooks, 21, 1);
    lost.Play("Ra1-a2 Ke8-e7 Rh1-h2 Ke7-e8 Rh2-h1");
    EXPECT_EQ(Find(lost.Now()), kNone) << "the king's rook has moved in between";
    CSearchedPosition kept(kRooks, 21, 1);
    kept.Play("Ra1-a2 Ke8-e7 Ra2-a3 Ke7-e8 Ra3-a2");
    EXPECT_EQ(Find(kept.Now()), (TFound{20, true}));
    CSearchedPosition black("r3k3/8/8/8/8/8/8/4K2R", 21, 1);
    black.Play("Rh1-h2 Ke8-e7 Rh2-h1 Ke7-e8 Rh1-h2");
    EXPECT_EQ(Find(black.Now()), kNone) << "Black may not castle any more";
}

TEST(Repetition, CountsWithinTheAnalysisOnlyAndWithItsParity) {
    CSearchedPosition line(kRook, 21, 1);
    line.Play(kFourPlies);
    line.Analysis().m_nAnalysisStart = 20;
    EXPECT_EQ(Find(line.Now()), (TFound{20, true}));
    line.Analysis().m_nAnalysisStart = 19;
    EXPECT_EQ(Find(line.Now()), kNone);
    line.Analysis().m_nAnalysisStart = 21;
    --line.Now().m_nMoves;
    EXPECT_EQ(Find(line.Now()), kNone);
}

// ---- which are treated

TEST(Repetition, QuickModeTreatsEveryOne) {
    for (const int plies : {9, 17, 21, 31}) {
        CSearchedPosition line(kRook, plies, 1);
        line.Play(kSixPlies);
        EXPECT_EQ(Find(line.Now()), (TFound{plies - 1, true})) << plies;
    }
}

TEST(Repetition, StrictCasesTreatItEarlyInTheLineOnly) {
    struct TRow {
        const char* m_pMoves;
        int m_nPlayed; // plies before the repeating move
        int m_nPlies;  // left to White before it
        bool m_bTreated;
    };
    for (const TRow& row : {TRow{kFourPlies, 4, 11, false}, TRow{kFourPlies, 4, 13, false},
                            TRow{kFourPlies, 4, 15, true}, TRow{kFourPlies, 4, 17, true}, TRow{kSixPlies, 6, 13, false},
                            TRow{kSixPlies, 6, 15, false}, TRow{kSixPlies, 6, 17, true}})
        for (const bool bSafeMode : {false, true}) {
            const int root = row.m_nPlies + row.m_nPlayed;
            CSearchedPosition line(kRook, root, bSafeMode ? 1 : 2);
            line.Analysis().m_bSafeMode = bSafeMode;
            line.Play(row.m_pMoves);
            EXPECT_EQ(Find(line.Now()), (TFound{root - 1, row.m_bTreated}))
                << row.m_nPlies << " plies left, " << row.m_nPlayed << " played";
        }
}

TEST(Repetition, StrictCasesTreatWhatKeepsRepeating) {
    constexpr const char* kTwice = "Rb1-b2 Kh8-g8 Rb2-b1 Kg8-h8 Rb1-b2 " // the position of ply 1 again at ply 5
                                   "Kh8-g8 Rb2-b3 Kg8-g7 Rb3-b1 Kg7-h8 Rb1-b2";
    CSearchedPosition line(kRook, 25, 2);
    line.Play(kTwice);
    EXPECT_EQ(Find(line.Now()), (TFound{20, true}));
    CSearchedPosition later(kRook, 23, 2);
    later.Play(kTwice);
    EXPECT_EQ(Find(later.Now()), (TFound{18, false})) << "not with 13 plies left";
    line.Analysis().m_nAnalysisStart = 22;
    EXPECT_EQ(Find(line.Now()), (TFound{20, false})) << "the earlier one lies outside the analysis";
}

/// In a trial m_nMoves was set anew on the way: the distance is counted by the chain.
TEST(Repetition, DistanceInATrialIsCountedAlongTheChain) {
    CSearchedPosition line(kRook, 31, 2);
    line.Play("Rb1-b2 Kh8-g8");
    line.Now().m_nMoves = 17;
    line.Play("Rb2-b1 Kg8-h8 Rb1-b2");
    ASSERT_EQ(line.Now().m_nMoves, 14);
    EXPECT_EQ(Find(line.Now()), (TFound{30, false})) << "by m_nMoves they are 16 plies apart";
    line.Context().m_nQuickerLevel = 1;
    EXPECT_EQ(Find(line.Now()), (TFound{30, true})) << "by the chain 4";
}

// ---- marks

TEST(RepetitionMarks, RiseAndNeverFall) {
    CSearchedPosition line(kRook, 21);
    EXPECT_EQ(RepetitionMark(line.Now(), 7), 0);
    RaiseRepetitionMark(line.Now(), 7, 12);
    RaiseRepetitionMark(line.Now(), 7, 10);
    EXPECT_EQ(RepetitionMark(line.Now(), 7), 12);
    EXPECT_EQ(line.Context().m_repetition[8], 12) << "the entry above the node's own number";
}

TEST(RepetitionMarks, AreClearedByTheMakers) {
    CSearchedPosition line(kRook, 21);
    line.Context().m_repetition.fill(99);
    line.Play("Rb1-b2 Kh8-g8");
    EXPECT_EQ(RepetitionMark(line.Now(), 20), 0);
    EXPECT_EQ(RepetitionMark(line.Now(), 19), 0);
    EXPECT_EQ(RepetitionMark(line.Now(), 18), 99);
}

// ---- in the nodes

constexpr const char* kNoMateSoon = "8/8/8/8/8/2k5/7R/K7";

TEST(RepetitionInNodes, QuickPassDoubtsWhereTheSafePassProves) {
    CSearchedPosition quick(kNoMateSoon, 7, 1);
    EXPECT_EQ(quick.Verdict(), MR_DOUBTFUL);
    CSearchedPosition safe(kNoMateSoon, 7, 1);
    safe.Analysis().m_bSafeMode = true;
    EXPECT_EQ(safe.Verdict(), MR_NOMATE);
    CSearchedPosition second(kNoMateSoon, 7, 2);
    EXPECT_EQ(second.Verdict(), MR_NOMATE);
}

/// One white move at a time (the king between g1 and h1), a black king at large.
constexpr const char* kShutIn = "k7/8/8/8/8/3p1p1p/3PpP1P/4B1K1";

/// What Black tries first, told by a hint of the ply.
void TellReply(CSearchedPosition& line, int nPlies, const char* move) {
    line.Context().m_hints[static_cast<std::size_t>(nPlies)] = ParseMove(move, false);
}

TEST(RepetitionInNodes, ALineThatGoesBackBeyondTheNodeIsPassedOnWithItsMark) {
    CSearchedPosition white(kShutIn, 9, 1);
    white.Play("Kg1-h1 Ka8-b8 Kh1-g1 Kb8-a8"); // the king's only move repeats
    EXPECT_EQ(white.Verdict(), MR_REPETITION);
    EXPECT_EQ(RepetitionMark(white.Now(), 5), 8) << "back to the position after the first move";
    CSearchedPosition black(kShutIn, 9, 1);
    black.Play("Kg1-h1 Ka8-b8 Kh1-g1");
    TellReply(black, 6, "Kb8-a8");
    EXPECT_EQ(black.Verdict(), MR_REPETITION);
    EXPECT_EQ(RepetitionMark(black.Now(), 6), 8);
    CSearchedPosition parent(kShutIn, 9, 1);
    parent.Play("Kg1-h1");
    TellReply(parent, 8, "Ka8-b8");
    TellReply(parent, 6, "Kb8-a8");
    EXPECT_EQ(parent.Verdict(), MR_DOUBTFUL) << "the repetition lies within this node's subtree";
}

class CRepetitionCounter : public INodeLog {
  public:
    void Move(const TChessboard&) override {}
    void Verdict(const TChessboard& node, TMateResult result) override {
        if (result != MR_REPETITION || IsWhiteToMove(node))
            return;
        ++m_nFound;
        m_nFewestPlies = std::min(m_nFewestPlies, node.m_nMoves + 1);
    }
    void Remark(const TChessboard&, const char*) override {}
    int m_nFound = 0;
    int m_nFewestPlies = 999; // left to White before a move that ended as a repetition
};

TEST(RepetitionInNodes, StrictPassSearchesItOnAtThirteenPlies) {
    CRepetitionCounter early;
    CSearchedPosition longer(kShutIn, 19, 2);
    longer.Analysis().m_pNodeLog = &early;
    longer.Play("Kg1-h1 Ka8-b8 Kh1-g1 Kb8-a8"); // 15 left
    EXPECT_EQ(longer.Verdict<kLoggingNode>(), MR_REPETITION);
    EXPECT_GT(early.m_nFound, 0);
    EXPECT_GT(early.m_nFewestPlies, 13);

    CRepetitionCounter late;
    CSearchedPosition shorter(kShutIn, 11, 2);
    shorter.Analysis().m_pNodeLog = &late;
    EXPECT_EQ(shorter.Verdict<kLoggingNode>(), MR_NOMATE);
    EXPECT_EQ(late.m_nFound, 0);
}

TEST(RepetitionInNodes, QuickPassEndsItAtAnyLength) {
    CRepetitionCounter log;
    CSearchedPosition line(kShutIn, 9, 1);
    line.Analysis().m_pNodeLog = &log;
    line.Play("Kg1-h1 Ka8-b8 Kh1-g1 Kb8-a8");
    EXPECT_EQ(line.Verdict<kLoggingNode>(), MR_REPETITION);
    EXPECT_EQ(log.m_nFound, 1) << "White's only move";
    EXPECT_EQ(log.m_nFewestPlies, 5);
    CSearchedPosition safe(kShutIn, 9, 1);
    safe.Analysis().m_bSafeMode = true;
    safe.Play("Kg1-h1 Ka8-b8 Kh1-g1 Kb8-a8");
    EXPECT_EQ(safe.Verdict(), MR_NOMATE);
}

} // namespace
} // namespace quillon::test
