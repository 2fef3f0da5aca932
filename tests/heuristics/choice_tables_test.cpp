// The rule tables of the initial analysis, each rule with a position that it takes and one that it leaves.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "heuristics/choose_edge.h"
#include "heuristics/choose_forced_mate.h"
#include "heuristics/choose_miniature.h"
#include "heuristics/choose_patterns.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

/// A root and a choice that has not begun.
struct TChoosing {
    explicit TChoosing(std::string_view placement, int nPlies = 21)
        : m_position(placement, nPlies, 1), m_facts(TakePositionFacts(m_position.Root())) {}
    [[nodiscard]] bool Fired(std::string_view rule) const {
        return std::ranges::find(m_choice.m_fired, rule) != m_choice.m_fired.end();
    }
    TSearchContext& P() { return m_position.Context(); }

    CSearchedPosition m_position;
    TPositionFacts m_facts;
    TChoice m_choice{m_position.Root(), m_position.Context(), m_position.Analysis(), m_facts};
};

// --- The class of a position

TEST(PositionClass, WalkWithinTheCageIgnoresFigures) {
    CSearchedPosition shut("k7/pp6/8/8/8/8/7R/K7", 21, 1); // a way out along the eighth rank
    EXPECT_EQ(WalkWithinCage(shut.Root()).m_nSteps, 8) << "b8 first, then seven files or ranks";
    CSearchedPosition walled("kb6/pp6/8/8/8/8/8/K7", 21, 1);
    EXPECT_EQ(WalkWithinCage(walled.Root()).m_nSteps, 0);
    CSearchedPosition corner("k7/8/K7/8/8/8/8/1R6", 21, 1); // the king guards a7, b7; the rook only b8
    EXPECT_GT(WalkWithinCage(corner.Root()).m_nSteps, 1);
    EXPECT_EQ(WalkUnderGuard(corner.Root()).m_nSteps, 0);
}

TEST(PositionClass, GuardsLookThroughTheKing) {
    CSearchedPosition rook("7R/8/8/8/8/8/8/k1K5", 21, 1);
    EXPECT_GT(WalkUnderGuard(rook.Root()).m_nSteps, 0);
    CSearchedPosition edge("8/8/8/8/8/8/1R6/k3K3", 21, 1); // second rank barred, b2 is to be taken
    EXPECT_EQ(WalkUnderGuard(edge.Root()).m_reached & MaskOf(9), MaskOf(9));
}

TEST(PositionClass, ChecksAreLegalMovesThatCheck) {
    CSearchedPosition queen("7k/8/8/8/8/8/8/KQ6", 21, 1);
    EXPECT_EQ(CountWhiteChecks(queen.Root()), 4); // h1, h7, b2, b8
    CSearchedPosition pinned("r6k/8/8/8/8/8/R7/K7", 21, 1);
    EXPECT_EQ(CountWhiteChecks(pinned.Root()), 1) << "only by taking the rook that pins";
}

TEST(PositionClass, MaterialOfBothSides) {
    CSearchedPosition position("qr2b1nk/p7/8/8/8/8/PP6/KQRB1N2", 21, 1);
    EXPECT_EQ(WhiteMaterial(position.Root()), 22);
    EXPECT_EQ(BlackMaterial(position.Root()), 21);
}

TEST(PositionClass, TwinBishops) {
    EXPECT_TRUE(HasOnlyTwinBishops(CSearchedPosition("7k/8/8/8/8/8/8/B1B1K3", 21).Root()));
    EXPECT_FALSE(HasOnlyTwinBishops(CSearchedPosition("7k/8/8/8/8/8/8/BB2K3", 21).Root()));
    EXPECT_FALSE(HasOnlyTwinBishops(CSearchedPosition("7k/8/8/8/8/8/8/B3K3", 21).Root()));
    EXPECT_FALSE(HasOnlyTwinBishops(CSearchedPosition("7k/8/8/8/8/8/8/B1B1KN2", 21).Root()));
}

// --- Tables as data

struct TCase {
    const char* m_rule;
    const char* m_placement; // the rule takes it
    const char* m_other;     // the rule leaves it
    int m_nPlies = 21;
};

void CheckTable(const std::vector<TCase>& cases, void (*choose)(TChoice&)) {
    for (const TCase& row : cases) {
        TChoosing taken(row.m_placement, row.m_nPlies), left(row.m_other, row.m_nPlies);
        choose(taken.m_choice);
        choose(left.m_choice);
        EXPECT_TRUE(taken.Fired(row.m_rule)) << row.m_rule << ": " << row.m_placement;
        EXPECT_FALSE(left.Fired(row.m_rule)) << row.m_rule << ": " << row.m_other;
    }
}

TEST(ChooseMiniature, EachRule) {
    CheckTable(
        {
            {"miniature: the kings have to meet", "8/8/8/3k4/8/8/8/K6R", "8/8/8/3k4/8/8/8/K6Q"},
            {"miniature: bare black king", "8/8/8/3k4/8/8/8/K6R", "8/8/8/3k4/7p/8/8/K6R"},
            {"miniature: the last heavy figure decides", "8/8/8/3k4/8/8/8/K6R", "8/8/8/3k4/8/8/8/K4NNR"},
            {"miniature: black queen in play", "8/8/3q4/3k4/8/8/8/K6R", "8/8/3r4/3k4/8/8/8/K6R"},
            {"miniature: promoted figures of a shut cage", "k7/p1K5/8/8/8/7p/8/8", "k7/8/8/8/8/7p/8/K7"},
            {"miniature: black pawn about to queen", "k7/8/8/8/8/7p/8/K6B", "k7/8/7p/8/8/8/8/K6B"},
            {"miniature: lone white bishop", "8/8/8/3k4/8/8/8/K6B", "8/8/8/3k4/8/8/8/K5NB"},
        },
        ChooseForMiniature);
}

TEST(ChooseMiniature, NothingForManyFigures) {
    TChoosing many("qrbnk3/rbn5/8/8/8/8/8/K6R");
    ChooseForMiniature(many.m_choice);
    EXPECT_TRUE(many.m_choice.m_fired.empty());
}

TEST(ChooseMiniature, QueensGoEarlyWhereTheyAreLikely) {
    TChoosing queen("8/8/3q4/3k4/8/8/8/K6R");
    ChooseForMiniature(queen.m_choice);
    EXPECT_TRUE(queen.P().m_bQueenCheckRelaxable);
    TChoosing one("k7/8/8/8/8/7p/8/K6R"), two("k7/8/8/8/8/6pp/8/K6R");
    ChooseForMiniature(one.m_choice);
    ChooseForMiniature(two.m_choice);
    EXPECT_FALSE(one.P().m_bPromotedQueenRelaxable);
    EXPECT_TRUE(two.P().m_bPromotedQueenRelaxable);
}

TEST(ChooseWatchedFigures, EachRule) {
    CheckTable(
        {
            {"watched figures: all that are shut in, the king too", "krb5/pp1p4/2p5/8/8/8/8/K6R",
             "k1b5/pp6/8/8/8/8/8/K6R"},
            {"watched figures: those that cannot move beside the king", "kn1r4/2pp4/p1p5/K7/8/8/8/8",
             "k1n5/8/8/8/8/8/8/K6R"},
        },
        ChooseWatchedFigures);
}

TEST(ChooseWatchedFigures, FiguresAndDropList) {
    // Kh1 in his cage with Bg1 beside him; Ba8 is shut in far away.
    TChoosing cage("bn6/1pp5/1P6/8/8/8/K5pp/6bk");
    ChooseWatchedFigures(cage.m_choice);
    EXPECT_TRUE(cage.m_choice.Has(SH_DONTLETFIGUREUNBLOCK));
    const auto& watched = cage.P().m_BlockedFigures;
    EXPECT_NE(std::ranges::find(watched, kA8), watched.end());
    EXPECT_EQ(cage.P().m_DropList[0], kA8);
    EXPECT_FALSE(cage.P().m_bBlockedPawns);
    EXPECT_FALSE(cage.P().m_bBlockedFiguresByHand);
    EXPECT_EQ(cage.P().m_nDropThreshold, cage.P().m_nBlockedFigures);
}

TEST(ChooseForcedMate, EachRule) {
    CheckTable(
        {
            {"forced mate: check after check", "3q4/8/8/3k4/8/8/8/K6R", "8/8/8/3k4/8/8/8/K6R"},
            {"forced mate: left out, White manoeuvres", "8/8/3qq3/3k4/8/8/8/K6B", "8/8/3qq3/3k4/8/8/8/K5BB"},
            {"forced mate: a queen's long way", "8/8/8/3k4/8/8/8/K6Q", "8/8/8/3k4/8/8/8/K6R", 31},
            {"forced mate: a long way", "8/8/8/3k4/8/8/8/K6R", "8/8/8/3k4/8/8/8/K6Q", 31},
            {"forced mate: checks at hand", "8/8/8/3k4/8/8/8/K6R", "8/8/8/3kp3/8/8/8/K6B"},
        },
        ChooseForcedMate);
}

TEST(ChooseForcedMate, NotInShortProblemsNorInAShutCage) {
    TChoosing brief("8/8/8/3k4/8/8/8/K6R", 9), shut("kb6/pp6/8/8/8/8/8/K6R");
    ChooseForcedMate(brief.m_choice);
    ChooseForcedMate(shut.m_choice);
    EXPECT_TRUE(brief.m_choice.m_fired.empty());
    EXPECT_TRUE(shut.m_choice.m_fired.empty());
}

TEST(ChooseForcedMate, CheckAfterCheckKeepsTheOtherHeuristics) {
    TChoosing forced("3q4/8/8/3k4/8/8/8/K6R");
    ASSERT_TRUE(MustGiveChecks(forced.m_choice));
    ChooseForcedMate(forced.m_choice);
    EXPECT_TRUE(forced.m_choice.Has(SH_FINDFORCEDMATE));
    EXPECT_EQ(forced.P().m_nFfmWithOther, 1);
    EXPECT_EQ(forced.P().m_nFfmDepth, 2);
    EXPECT_EQ(forced.P().m_nFfmRelaxations, 1) << "one figure against many moves";
    EXPECT_TRUE(forced.Fired("forced mate: one figure against many moves"));
}

TEST(ChooseForcedMate, FaceToFaceAllowsTwoSteps) {
    // Rook and pawns 9 against queen and five pawns 14: behind by half, but not by double; kings two apart.
    TChoosing close("3q4/ppppp3/8/8/k1K5/8/PPPP4/7R");
    ChooseForcedMate(close.m_choice);
    EXPECT_TRUE(close.Fired("forced mate: Black ahead, kings face to face"));
    EXPECT_EQ(close.P().m_nFfmRelaxations, 2);
    TChoosing apart("3q4/ppppp3/8/8/k3K3/8/PPPP4/7R");
    ChooseForcedMate(apart.m_choice);
    EXPECT_FALSE(apart.Fired("forced mate: Black ahead, kings face to face"));
}

TEST(ChooseForcedMate, InitialPassInVeryLongProblemsNearTheEdge) {
    TChoosing edge("3k4/8/8/8/8/8/8/K6R", 61), inside("8/8/8/3k4/8/8/8/K6R", 61), brief("3k4/8/8/8/8/8/8/K6R", 59);
    for (TChoosing* choosing : {&edge, &inside, &brief})
        ChooseForcedMate(choosing->m_choice);
    EXPECT_TRUE(edge.P().m_bFfmPreliminary);
    EXPECT_FALSE(inside.P().m_bFfmPreliminary);
    EXPECT_FALSE(brief.P().m_bFfmPreliminary);
}

TEST(ChooseForcedMate, SeaSnakeForbidsIt) {
    TChoosing snake("8/8/8/3k4/8/8/8/K6R");
    snake.m_choice.Set(SH_SEASNAKE);
    ChooseForcedMate(snake.m_choice);
    EXPECT_FALSE(snake.m_choice.Has(SH_FINDFORCEDMATE));
}

TEST(ChooseEdge, EachRule) {
    CheckTable(
        {
            {"edge: queens against a king on the edge", "k1b5/p1p5/2P5/8/8/8/8/K5QQ", "k1b5/p1p5/2P5/8/8/8/8/K5Q1"},
            {"edge: White lives on the shut cage", "kb6/pp6/8/8/8/8/7q/K6R", "kb6/pp6/8/8/8/8/8/K6R"},
            {"edge: walled in", "kb6/pp6/8/8/8/8/8/K6R", "k7/pp6/8/8/8/8/8/K6R"},
            {"edge: walled in until the cage is opened", "kb6/pp6/8/8/8/8/8/KN4NR", "kb6/pp6/8/8/8/8/8/K5NR"},
            {"edge: held on the edge by figures", "k1b5/p1p5/p1P5/8/8/8/8/KR6", "k1b5/p1p5/p1P5/8/8/8/8/K1R5"},
            {"edge: the cage is a stretch of the edge", "k2b4/pppp4/8/8/8/8/8/K7", "k2b4/p1pp4/8/8/8/8/8/K7"},
            {"edge: the cage is a corner", "k1b5/p1p5/prp5/8/8/8/8/K7", "k7/p1p5/prp5/8/8/8/8/K7"},
            {"edge: cut off on the edge by one figure", "k7/7R/8/8/8/8/8/K7", "k7/8/7R/8/8/8/8/K7"},
            {"edge: cut off on the edge", "k7/7R/8/8/8/8/8/K5B1", "k7/7R/8/8/8/8/8/K7"},
            {"edge: cut off beside the edge", "k7/8/7R/8/8/8/8/K7", "8/1k6/8/8/8/8/8/K1R5"},
            {"edge: the cage ends beside the edge", "k1b5/2p5/2p5/ppp5/8/8/8/7K", "k1b5/2p5/2p5/pp6/8/8/8/7K"},
            {"edge: surrounded", "8/8/2ppp3/2pkp3/3p4/8/8/KBN5", "8/8/8/3k4/8/8/8/KBN5"},
            {"edge: near a corner", "8/1k6/8/8/8/8/8/K7", "8/8/8/3k4/8/8/8/K7"},
        },
        ChooseEdge);
}

TEST(ChooseEdge, StrictFormReplacesSurrounded) {
    TChoosing walled("kb6/pp6/8/8/8/8/8/K6R");
    walled.m_choice.Set(SH_ASSERTBLACKKINGSURROUNDED);
    walled.P().m_bDontLetKingMove = false;
    ChooseEdge(walled.m_choice);
    EXPECT_TRUE(walled.m_choice.Has(SH_KEEPKINGONTHEEDGE));
    EXPECT_TRUE(walled.P().m_bDontLetKingMove);
    EXPECT_FALSE(walled.m_choice.Has(SH_ASSERTBLACKKINGSURROUNDED));
}

TEST(ChooseEdge, MatingForceAfterWhichTheKingMayGo) {
    TChoosing heavy("kb6/pp6/8/8/8/8/8/K6R"), light("kb6/pp6/8/8/8/8/8/K4BN1");
    ChooseEdge(heavy.m_choice);
    ChooseEdge(light.m_choice);
    EXPECT_EQ(heavy.P().m_nEdgeHeavyFigures, 1);
    EXPECT_EQ(heavy.P().m_nEdgeMinorFigures, 0);
    EXPECT_EQ(light.P().m_nEdgeHeavyFigures, 0);
    EXPECT_EQ(light.P().m_nEdgeMinorFigures, 2);
}

TEST(ChooseEdge, AutomaticRelaxationNeedsTheUsersWord) {
    TChoosing off("kb6/pp6/8/8/8/8/8/K6R"), on("kb6/pp6/6P1/8/8/8/8/K6R");
    on.P().m_bAutoDynRelax = true;
    ChooseEdge(off.m_choice);
    ChooseEdge(on.m_choice);
    EXPECT_EQ(off.P().m_nRelaxCaptures, 0);
    EXPECT_EQ(on.P().m_nRelaxCaptures, 2);
    EXPECT_TRUE(on.P().m_bRelaxOnAdvancedPawn);
}

TEST(ChooseEdge, CornerSquaresCountAsEdgeOnRequest) {
    TKingWalk walk;
    walk.m_reached = MaskOf(0) | MaskOf(9);
    EXPECT_FALSE(KeepsToEdge(walk, false));
    EXPECT_TRUE(KeepsToEdge(walk, true));
    walk.m_reached |= MaskOf(10);
    EXPECT_FALSE(KeepsToEdge(walk, true));
}

TEST(ChoosePatterns, FigureOnTheMainDiagonal) {
    struct TRow {
        const char* m_placement;
        TSquare m_figure;
    };
    for (const TRow& row : {TRow{"7k/6b1/8/8/8/2Q5/8/K7", SquareAt(6, 6)}, // pinned already
                            {"7k/6n1/8/8/8/8/3B4/K6R", SquareAt(6, 6)},    // the bishop comes to c3
                            {"7k/6n1/8/8/8/8/3B4/K7", kNoSquare},          // without a heavy figure
                            {"7k/6n1/8/8/8/8/2B5/K6R", kNoSquare},         // a bishop of the other colour
                            {"7k/6p1/8/8/8/2Q5/8/K7", kNoSquare},          // a pawn leaves no diagonal
                            {"6k1/5b2/8/8/8/2Q5/8/K7", kNoSquare},         // not in the corner
                            {"7k/6b1/5p2/8/8/2Q5/8/K7", kNoSquare}}) {     // a man in between
        EXPECT_EQ(FindFigureOnMainDiagonal(CSearchedPosition(row.m_placement, 21, 1).Root()), row.m_figure)
            << row.m_placement;
    }
}

TEST(ChoosePatterns, MainDiagonalForcesSafeMode) {
    TChoosing pinned("6rk/6bp/8/8/8/2Q5/8/K7"), wide("7k/6b1/8/8/8/2Q5/8/K7");
    ChooseMainDiagonal(pinned.m_choice);
    EXPECT_TRUE(pinned.m_choice.Has(SH_DONTLEAVEMAINDIAGONAL));
    EXPECT_EQ(pinned.P().m_nBlackFigureOnMainDiagonal, SquareAt(6, 6));
    EXPECT_TRUE(pinned.m_choice.m_bSafeModeForced);
    EXPECT_TRUE(pinned.m_position.Analysis().m_bSafeMode);
    ChooseMainDiagonal(wide.m_choice);
    EXPECT_FALSE(wide.m_choice.Has(SH_DONTLEAVEMAINDIAGONAL)) << "the king goes too far";
}

TEST(ChoosePatterns, SeaSnakeNeedsAPendulum) {
    // Black can only swing the queen from a8 to b8.
    constexpr const char* kSnake = "q1b4k/pb1p3P/p1pP1PP1/P1P5/8/8/8/2Q1K3";
    TChoosing snake(kSnake, 41);
    ASSERT_EQ(snake.m_facts.m_nBlackMoves, 1) << "the diagram";
    ChooseSeaSnake(snake.m_choice);
    EXPECT_TRUE(snake.m_choice.Has(SH_SEASNAKE));
    EXPECT_TRUE(snake.P().m_bSeaSnake);
    EXPECT_EQ(snake.P().m_nSeaSnakeApproach, SquareAt(6, 6));
    EXPECT_EQ(snake.P().m_nSeaSnakeTurnBack, kC1);
    EXPECT_EQ(snake.P().m_nSeaSnakePendulum1, kA8);
    EXPECT_EQ(snake.P().m_nSeaSnakePendulum2, SquareAt(1, 7));
    CheckTable(
        {
            {"pattern: sea snake", kSnake, "q1b4k/pb5P/p1pP1PP1/P1P5/8/8/8/2Q1K3", 41}, // the bishop can move as well
            {"pattern: sea snake", kSnake, "q1b4k/pb1p3P/p1pP1PP1/P1P5/8/8/8/2R1K3", 41},
            {"pattern: sea snake", kSnake, "q1b4k/pb1p4/p1pP1PP1/P1P5/8/8/8/2Q1K3", 41}, // the king can
        },
        ChooseSeaSnake);
    TChoosing brief(kSnake, 39);
    ChooseSeaSnake(brief.m_choice);
    EXPECT_FALSE(brief.m_choice.Has(SH_SEASNAKE));
}

TEST(ChoosePatterns, ZugzwangIsTheRootToReturnTo) {
    // Were it Black's move: 1...Ka8 2.b8Q mate... the king has no other square.
    constexpr const char* kZugzwang = "1k6/1P6/1K6/8/8/8/8/7B";
    TChoosing lost(kZugzwang);
    EXPECT_EQ(lost.m_facts.m_nBlackMoves, 0) << "that is stalemate, not zugzwang";
    ChoosePatterns(lost.m_choice);
    EXPECT_FALSE(lost.m_choice.Has(SH_ZUGZWANG));
    TChoosing zugzwang("k7/8/1K6/1P6/8/8/8/8");
    ASSERT_EQ(zugzwang.m_facts.m_nBlackMoves, 1);
    ChoosePatterns(zugzwang.m_choice);
    EXPECT_FALSE(zugzwang.m_choice.Has(SH_ZUGZWANG)) << "no mate in two";
    TChoosing rook("k7/8/1K6/8/8/8/8/6R1"); // 1...Kb8 2.Rg8 mate
    ChoosePatterns(rook.m_choice);
    EXPECT_TRUE(rook.m_choice.Has(SH_ZUGZWANG));
    EXPECT_EQ(rook.m_position.Analysis().m_zugzwangPositions.at(""), rook.m_position.Root().m_board);
    TChoosing brief("k7/8/1K6/8/8/8/8/6R1", 19);
    ChoosePatterns(brief.m_choice);
    EXPECT_FALSE(brief.m_choice.Has(SH_ZUGZWANG));
}

/// Counts what is stored inside a search beside the passes, and what outside one.
class CSideListener : public CRecordingRegister {
  public:
    void Insert(const TChessboard&, int, TMateResult) override { ++(m_bSide ? m_nInside : m_nOutside); }
    bool SetSideAnalysis(bool bOn) override { return std::exchange(m_bSide, bOn); }
    bool m_bSide = false;
    int m_nInside = 0, m_nOutside = 0;
};

TEST(ChoosePatterns, TheRegisterHearsOfASearchBesideThePasses) {
    for (const bool bBefore : {false, true}) {
        CSideListener known;
        known.m_bSide = bBefore;
        TChoosing rook("k7/8/1K6/8/8/8/8/6R1");
        rook.m_position.Analysis().m_pRegister = &known;
        ChoosePatterns(rook.m_choice);
        EXPECT_TRUE(rook.m_choice.Has(SH_ZUGZWANG));
        EXPECT_GT(known.m_nInside, 0);
        EXPECT_EQ(known.m_nOutside, 0);
        EXPECT_EQ(known.m_bSide, bBefore);
    }
}

TEST(ChoosePatterns, SavedFigures) {
    CheckTable(
        {
            {"pattern: no figure can be spared", "8/3k4/8/pppr4/8/8/8/KN3N2", "8/3k4/8/pppr4/8/8/8/KN3R2"},
            {"pattern: no figure can be spared", "8/3k4/8/pppr4/8/8/8/KN3N2", "8/3k4/8/pppr4/PPP5/8/8/KN3N2"},
            {"pattern: no figure can be spared", "8/3k4/8/pppr4/8/8/8/KN3N2", "8/3k4/8/p7/8/8/8/KN3N2"},
        },
        ChooseSavedFigures);
}

TEST(ChoosePatterns, EachRule) {
    CheckTable(
        {
            {"pattern: key white figure", "kb6/pnp5/8/8/4B3/8/8/K7", "kb6/pbp5/8/8/4B3/8/8/K7"},
            {"pattern: rook sweeps the first rank", "k7/8/8/8/8/pppp4/8/K6R", "k7/8/8/8/8/pp6/8/K6R"},
            {"pattern: corner without an edge", "kb6/pp6/8/8/8/8/8/K6R", "1k6/8/8/8/8/8/8/K6R"},
        },
        ChoosePatterns);
}

TEST(ChoosePatterns, KeyFigures) {
    CSearchedPosition position("kbr5/pnp5/8/8/4B3/8/8/K7", 21, 1);
    const TKeyFigures keys = FindKeyFigures(position.Root());
    ASSERT_EQ(keys.m_nCount, 1u);
    EXPECT_EQ(keys.m_squares[0], SquareAt(4, 3));
    EXPECT_TRUE(IsTruePin(position.Root(), keys.m_squares[0], SquareAt(1, 6)));
    CSearchedPosition screened("kbr5/pnp5/2p5/8/4B3/8/8/K7", 21, 1);
    EXPECT_FALSE(IsTruePin(screened.Root(), SquareAt(4, 3), SquareAt(1, 6)));
    EXPECT_EQ(FindKeyFigures(CSearchedPosition("kbr5/pnp5/8/8/4R3/8/8/K7", 21, 1).Root()).m_nCount, 0u)
        << "a rook on a diagonal";
}

TEST(ChoosePatterns, AnotherKeyFigureWhereTheFirstPinsNothing) {
    // The rook on a1 looks at the knight a7 through its own pawn; the bishop on e4 pins the knight b7.
    constexpr const char* kTwo = "kb6/nnp5/8/p7/P3B3/8/8/R3K3";
    TChoosing two(kTwo);
    two.m_choice.Set(SH_KEYWHITEFIGURE | SH_DONTLETFIGUREUNBLOCK);
    two.P().m_nKeyWhiteFigure = kA1;
    two.P().m_nPinnedFigure = SquareAt(0, 6);
    RebuildKeyFigure(two.m_choice);
    EXPECT_EQ(two.P().m_nKeyWhiteFigure, SquareAt(4, 3));
    EXPECT_EQ(two.P().m_nPinnedFigure, SquareAt(1, 6));
    EXPECT_FALSE(two.P().m_bKeyFigureIsRook);
    EXPECT_TRUE(two.m_choice.m_bSafeModeForced);

    TChoosing snake(kTwo), alone(kTwo), solved(kTwo);
    solved.m_choice.Set(SH_KEYWHITEFIGURE | SH_DONTLETFIGUREUNBLOCK);
    solved.m_choice.m_bRootMoveSolved = true;
    snake.m_choice.Set(SH_KEYWHITEFIGURE | SH_DONTLETFIGUREUNBLOCK | SH_SEASNAKE);
    alone.m_choice.Set(SH_KEYWHITEFIGURE);
    for (TChoosing* other : {&snake, &alone, &solved}) {
        other->P().m_nKeyWhiteFigure = kA1;
        other->P().m_nPinnedFigure = SquareAt(0, 6);
        RebuildKeyFigure(other->m_choice);
        EXPECT_EQ(other->P().m_nKeyWhiteFigure, kA1);
        EXPECT_FALSE(other->m_choice.m_bSafeModeForced);
    }
}

} // namespace
} // namespace quillon::test
