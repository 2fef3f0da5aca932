// Each rule with positions on both sides of its limit.

#include "core/certain_escapes.h"

#include <gtest/gtest.h>

#include "core/positions.h"
#include "support/reference_solver.h"

namespace quillon::test {
namespace {

enum class EVerdict { Escaped, Undecided };
constexpr EVerdict kEscaped = EVerdict::Escaped, kUndecided = EVerdict::Undecided;

void PrintTo(EVerdict verdict, std::ostream* out) { *out << (verdict == kEscaped ? "escaped" : "undecided"); }

/// Asks about a position in which Black has just moved and White has nMoves moves left.
class CQuestion {
  public:
    CQuestion(std::string_view placement, int nMoves) : m_line(placement, 2 * nMoves - 1) {}

    CQuestion& BareKing() {
        m_line.Root().m_wKingState |= kBareBlackKing;
        return *this;
    }
    [[nodiscard]] EVerdict Verdict() { return HasEscapedForCertain(m_line.Root()) ? kEscaped : kUndecided; }
    [[nodiscard]] bool HasMark(std::uint16_t mark) { return (m_line.Root().m_wBlackState & mark) != 0; }

  private:
    CLine m_line;
};

struct TRow {
    const char* m_pName;
    const char* m_pPlacement;
    int m_nMoves; // white moves left
    EVerdict m_expected;
};

void ExpectRows(std::initializer_list<TRow> rows) {
    for (const TRow& row : rows)
        EXPECT_EQ(CQuestion(row.m_pPlacement, row.m_nMoves).Verdict(), row.m_expected) << row.m_pName;
}

// ---- when the rules are asked at all

TEST(EscapeRules, ApplyToThinWhiteMaterialOnly) {
    ExpectRows({
        {"lone king", "7k/8/8/8/8/8/8/K7", 2, kEscaped},
        {"with a queen", "7k/8/8/8/8/8/8/KQ6", 2, kUndecided},
        {"with a rook", "7k/8/8/8/8/8/8/KR6", 2, kUndecided},
        {"three knights", "8/8/8/3k4/8/8/8/KNNN4", 2, kUndecided},
        {"bishop and two knights", "8/8/8/3k4/8/8/8/KBNN4", 2, kUndecided},
        {"bishop and knight", "8/8/8/3k4/8/8/8/KBN5", 2, kUndecided},
        {"two bishops", "8/8/8/3k4/8/8/8/KBB5", 2, kUndecided},
    });
}

TEST(EscapeRules, AreSilentAtTheLastMove) {
    ExpectRows({{"one move", "7k/8/8/8/8/8/8/K7", 1, kUndecided}, {"two moves", "7k/8/8/8/8/8/8/K7", 2, kEscaped}});
}

TEST(EscapeRules, AreAskedAfterACapture) {
    CLine line("7k/8/8/8/3r4/3N4/8/K1B5 b");
    EXPECT_EQ(line.Try("d4d3"), kCertainEscape);
    EXPECT_EQ(line.Tried().m_nMoves + 1, line.Root().m_nMoves) << "the move stands";
    EXPECT_TRUE(SameMove(line.Tried().m_lastMove, MoveOf("d4d3")));
    EXPECT_EQ(line.Tried().m_whiteKnights, 0);
    EXPECT_EQ(line.Try(MoveOf("d4d3"), true), kCertainEscape) << "also when the caller vouches for the move";
    EXPECT_EQ(line.Try<kLegalityOnly>("d4d3"), kMoveStands) << "the rules of chess know no escape";
}

TEST(EscapeRules, AreNotAskedAfterAQuietMove) {
    CLine line("7k/8/8/8/3r4/8/8/K1B5 b");
    EXPECT_EQ(line.Try("d4d3"), kMoveStands);
}

TEST(EscapeRules, AreAskedAfterAPawnTakenInPassing) {
    CLine line("7k/8/8/8/4p3/8/3P4/K1B5 w");
    line.Play("d2d4");
    EXPECT_EQ(line.Try("e4d3"), kCertainEscape);
}

TEST(EscapeRules, AreAskedWhileAMarkStands) {
    for (const std::uint16_t mark : {kMinorMaterial, kRookPawnWrongBishop}) {
        CLine line("7k/8/8/8/3r4/8/8/K1B5 b");
        line.Root().m_wBlackState |= mark;
        EXPECT_EQ(line.Try("d4d3"), kCertainEscape) << mark;
    }
}

TEST(EscapeRules, AreAskedAfterAPromotionToBishopOrKnight) {
    struct {
        const char* m_pPromotion;
        int m_nResult;
    } const rows[] = {
        {"a7a8B", kCertainEscape}, {"a7a8N", kCertainEscape}, {"a7a8R", kMoveStands}, {"a7a8Q", kMoveStands}};
    for (const auto& row : rows) {
        CLine line("8/P6k/8/8/8/8/8/K7 w");
        line.Play(row.m_pPromotion);
        EXPECT_EQ(line.Try("h7g7"), row.m_nResult) << row.m_pPromotion;
    }
}

TEST(EscapeRules, NeedMoreThanTwoPliesBeforeTheMove) {
    CLine two("7k/8/8/8/3r4/3N4/8/K1B5 b", 2), four("7k/8/8/8/3r4/3N4/8/K1B5 b", 4);
    EXPECT_EQ(two.Try("d4d3"), kMoveStands);
    EXPECT_EQ(four.Try("d4d3"), kCertainEscape);
}

// ---- two knights

TEST(TwoKnights, AgainstABareKing) {
    ExpectRows({
        {"off the edge", "8/8/8/3k4/8/8/8/KN3N2", 3, kEscaped},
        {"on the edge, no mate in two", "7k/8/8/8/8/8/8/KN3N2", 3, kEscaped},
        {"on the edge, mate", "7k/8/6KN/4N3/8/8/8/8", 3, kUndecided},
    });
}

TEST(TwoKnights, AMateThatStandsOnTheBoardIsNotMissed) {
    CLine quiet("6k1/8/6K1/4N3/6N1/8/8/8 w"); // the mark stands from a capture before; Ne5-f7 mates
    quiet.Root().m_wBlackState |= kMinorMaterial;
    quiet.Play("g4h6");
    EXPECT_EQ(quiet.Try("g8h8"), kMoveStands);
    EXPECT_EQ(quiet.Try("g8f8"), kCertainEscape);
    CLine capture("6k1/8/6Kp/4N3/6N1/8/8/8 w");
    capture.Root().m_wBlackState |= kMinorMaterial;
    capture.Play("g4h6");
    EXPECT_EQ(capture.Try("g8h8"), kMoveStands);
}

TEST(TwoKnights, AgainstOneRook) {
    ExpectRows({
        {"off the edge", "7r/8/8/3k4/8/8/8/KN3N2", 3, kEscaped},
        {"on the edge, no mate in two", "6rk/8/8/8/8/K7/8/1N3N2", 3, kEscaped},
        {"on the edge, mate in one", "6rk/8/7K/4N3/8/8/8/1N6", 3, kUndecided},
        {"on the edge, mate in two", "5rk1/8/2N4K/4N3/8/8/8/8", 3, kUndecided},
        {"three rooks as one", "rr4rk/8/7K/4N3/8/8/8/1N6", 3, kUndecided},
        {"three rooks, no mate", "rr4rk/8/8/8/8/K7/8/1N3N2", 3, kEscaped},
    });
}

TEST(TwoKnights, AgainstQueens) {
    ExpectRows({
        {"off the edge", "7q/8/8/3k4/8/K7/8/1N3N2", 3, kEscaped},
        {"on the edge, no mate in one", "7k/7q/8/8/8/K7/8/1N3N2", 3, kEscaped},
        {"on the edge, mate in one", "5qk1/5N2/6K1/7N/8/8/8/8", 3, kUndecided},
        {"two queens, mate in one", "8/8/8/8/8/6N1/5Nqq/4K1k1", 3, kUndecided},
        {"two queens, no mate", "7k/6qq/8/8/8/K7/8/1N3N2", 3, kEscaped},
        {"queen and rook as one rook, mate", "1qkr4/8/2K3N1/8/1N6/8/8/8", 3, kUndecided},
        {"queen and rook, no mate", "7k/6qr/8/8/8/K7/8/1N3N2", 3, kEscaped},
    });
}

TEST(TwoKnights, OtherBlackMaterialIsNotDecided) {
    ExpectRows({
        {"bishop", "8/8/8/3k4/8/7b/8/KN3N2", 3, kUndecided},
        {"knight", "8/8/8/3k4/8/7n/8/KN3N2", 3, kUndecided},
        {"rook and bishop", "8/8/8/3k4/8/6rb/8/KN3N2", 3, kUndecided},
        {"pawn", "8/8/8/3k4/8/7p/8/KN3N2", 3, kUndecided},
        {"with a white pawn", "8/8/8/3k4/8/8/P7/KN3N2", 9, kUndecided},
    });
}

TEST(TwoKnights, MarkTheMaterial) {
    CQuestion question("8/8/8/3k4/8/7p/8/KN3N2", 3);
    EXPECT_EQ(question.Verdict(), kUndecided);
    EXPECT_TRUE(question.HasMark(kMinorMaterial));
}

// ---- pawns only

TEST(PawnRace, APawnThatPromotesInTimeMatters) {
    ExpectRows({
        {"no pawn", "7k/8/8/8/8/8/8/K7", 9, kEscaped},
        {"rank 7, two moves", "8/P7/8/8/8/8/7k/K7", 2, kUndecided},
        {"rank 6, two moves", "8/8/P7/8/8/8/7k/K7", 2, kUndecided},
        {"rank 5, three moves", "8/8/8/P7/8/8/7k/K7", 3, kUndecided},
        {"rank 5, two moves", "8/8/8/P7/8/8/7k/K7", 2, kEscaped},
        {"rank 4, four moves", "8/8/8/8/P7/8/7k/K7", 4, kUndecided},
        {"rank 4, three moves", "8/8/8/8/P7/8/7k/K7", 3, kEscaped},
        {"rank 3, five moves", "8/8/8/8/8/P7/7k/K7", 5, kUndecided},
        {"rank 3, four moves", "8/8/8/8/8/P7/7k/K7", 4, kEscaped},
        {"rank 2, five moves", "8/8/8/8/8/8/P6k/K7", 5, kUndecided},
        {"rank 2, four moves", "8/8/8/8/8/8/P6k/K7", 4, kEscaped},
        {"one of two", "8/8/8/P7/8/1P6/7k/K7", 3, kUndecided},
        {"neither of two", "8/8/8/8/P7/1P6/7k/K7", 3, kEscaped},
    });
}

TEST(PawnRace, APawnNearTheBlackKingMatters) {
    ExpectRows({
        {"as many files as moves and one", "8/8/3k4/8/P7/8/8/K7", 2, kUndecided},
        {"one file more", "8/8/4k3/8/P7/8/8/K7", 2, kEscaped},
        {"king three ranks ahead, two moves", "8/1k6/8/8/P7/8/8/7K", 2, kUndecided},
        {"king four ranks ahead, two moves", "1k6/8/8/8/P7/8/8/7K", 2, kEscaped},
        {"king four ranks ahead, three moves", "1k6/8/8/8/P7/8/8/7K", 3, kUndecided},
        {"double step, king four ranks ahead", "8/8/2k5/8/8/8/3P4/7K", 2, kUndecided},
        {"double step, king five ranks ahead", "8/2k5/8/8/8/8/3P4/7K", 2, kEscaped},
        {"double step, king five ranks ahead, three moves", "8/2k5/8/8/8/8/3P4/7K", 3, kUndecided},
        {"king beside, three moves", "8/8/8/8/3Pk3/8/8/7K", 3, kUndecided},
        {"king a rank behind, three moves", "8/8/8/8/3P4/4k3/8/7K", 3, kEscaped},
        {"king beside, two moves", "8/8/8/8/3Pk3/8/8/7K", 2, kEscaped},
    });
}

TEST(PawnRace, IsAskedOnePawnAtATime) {
    CLine line("8/8/8/P7/8/1P6/7k/K7 w", 5);
    EXPECT_TRUE(DoesPawnMatter(line.Root(), SquareOf("a5"), 3));
    EXPECT_FALSE(DoesPawnMatter(line.Root(), SquareOf("b3"), 3));
}

TEST(PawnRace, BehindTheKingAPawnMattersAtTheLastPly) {
    CLine last("8/8/8/8/3P4/4k3/8/7K w", 1), before("8/8/8/8/3P4/4k3/8/7K w", 3);
    EXPECT_TRUE(DoesPawnMatter(last.Root(), SquareOf("d4"), 1));
    EXPECT_FALSE(DoesPawnMatter(before.Root(), SquareOf("d4"), 2));
}

// ---- one minor figure

TEST(LoneBishop, NeedsTheKingShutIn) {
    ExpectRows({
        {"nothing round the king", "7k/8/8/8/3r4/8/8/KB6", 3, kEscaped},
        {"nothing round the king in the corner", "7k/8/8/8/8/8/8/KB6", 3, kEscaped},
        {"one, king in the middle", "8/8/3p4/3k4/8/8/8/KB6", 3, kEscaped},
        {"one, king on the edge", "5k2/5p2/8/8/8/8/8/KB6", 3, kEscaped},
        {"one, king in the corner", "7k/7p/8/8/8/8/8/KB6", 3, kUndecided},
        {"one, king in another corner", "8/8/8/8/8/8/p6K/k3B3", 3, kUndecided},
        {"one, king on g8", "6k1/6p1/8/8/8/8/8/KB6", 3, kUndecided},
        {"one, king on b8", "1k6/1p6/8/8/8/8/8/KB6", 3, kUndecided},
        {"one, king on g1", "8/8/8/8/8/8/6p1/KB4k1", 3, kEscaped},
        {"two, king in the middle", "8/8/3pp3/3k4/8/8/8/KB6", 3, kUndecided},
        {"with a pawn", "7k/8/8/8/8/8/P7/KB6", 9, kUndecided},
    });
}

TEST(LoneKnight, NeedsBlackFigures) {
    ExpectRows({
        {"bare king", "8/8/8/3k4/8/8/8/KN6", 3, kEscaped},
        {"one pawn elsewhere", "8/8/8/3k4/8/7p/8/KN6", 3, kEscaped},
        {"two pawns", "8/8/8/3k4/8/6pp/8/KN6", 3, kUndecided},
        {"one pawn on the king's rook file", "7k/7p/8/8/8/8/8/KN6", 3, kUndecided},
        {"one pawn on the king's rook file, a-file", "k7/p7/8/8/8/8/8/6KN", 3, kUndecided},
        {"one pawn beside the king's rook file", "7k/6p1/8/8/8/8/8/KN6", 3, kEscaped},
        {"one pawn on the king's inner file", "6k1/6p1/8/8/8/8/8/KN6", 3, kEscaped},
        {"pawn and figure", "8/8/8/3k4/8/6rp/8/KN6", 3, kUndecided},
        {"with a pawn", "8/8/8/3k4/8/8/P7/KN6", 9, kUndecided},
    });
}

TEST(LoneKnight, NeedsACrowdRoundAKingWithoutPawns) {
    ExpectRows({
        {"three round, kings near", "8/8/8/2nkn3/3b4/3K4/8/1N6", 3, kEscaped},
        {"four round, kings near", "8/8/3b4/2nkn3/3b4/3K4/8/1N6", 3, kUndecided},
        {"four round, kings apart", "8/8/3b4/2nkn3/3b4/8/8/KN6", 3, kEscaped},
        {"five round, kings apart", "8/8/3bb3/2nkn3/3b4/8/8/KN6", 3, kUndecided},
        {"edge and none, kings near", "3k4/8/3K4/8/8/8/8/1N4bb", 3, kEscaped},
        {"edge and one, kings near", "3kb3/8/3K4/8/8/8/8/1N5b", 3, kUndecided},
        {"edge and one, kings apart", "3kb3/8/8/3K4/8/8/8/1N5b", 3, kEscaped},
        {"edge and two, kings apart", "2bkb3/8/8/3K4/8/8/8/1N6", 3, kUndecided},
        {"corner and none, kings apart", "7k/8/8/8/8/8/8/KN4bb", 3, kUndecided},
    });
}

TEST(LoneKnight, AMateThatStandsOnTheBoardIsNotMissed) {
    ExpectRows({
        {"smothered by the bishop, mate in one", "k1K1N3/b7/8/8/8/8/8/8", 3, kUndecided},
        {"smothered by the bishop, no mate", "k1K4N/b7/8/8/8/8/8/8", 3, kEscaped},
    });
}

TEST(OneMinorFigure, MarksTheMaterial) {
    for (const char* placement : {"7k/7p/8/8/8/8/8/KB6", "7k/7p/8/8/8/8/8/KN6"}) {
        CQuestion question(placement, 3);
        EXPECT_EQ(question.Verdict(), kUndecided);
        EXPECT_TRUE(question.HasMark(kMinorMaterial)) << placement;
    }
    CQuestion pawn("8/P7/8/8/8/8/7k/K7", 2);
    EXPECT_EQ(pawn.Verdict(), kUndecided);
    EXPECT_FALSE(pawn.HasMark(kMinorMaterial));
}

// ---- a pawn against a bare king

struct TEndingRow {
    const char* m_pName;
    const char* m_pPlacement;
    bool m_bDraw;
};

TSquare FindFigure(const TChessboard& b, TFigure figure) {
    return static_cast<TSquare>(std::ranges::find(b.m_board, figure) - b.m_board.begin());
}

TEST(PawnEnding, DrawIsRecognised) {
    for (const TEndingRow& row : std::initializer_list<TEndingRow>{
             {"rook's pawn, king before it", "8/8/k7/8/P7/8/8/7K", true},
             {"rook's pawn, king a file off", "8/8/1k6/8/P7/8/8/7K", true},
             {"rook's pawn, king two files off", "8/8/2k5/8/P7/8/8/7K", false},
             {"rook's pawn, king on its rank", "8/8/8/8/Pk6/8/8/7K", true}, // by the king that is far from the file
             {"rook's pawn, king behind it", "8/8/8/8/P7/8/1k6/7K", false},
             {"h-pawn", "8/8/6k1/8/7P/8/8/K7", true},
             {"pawn at home", "8/8/8/8/8/3k4/3P4/7K", false},
             {"king right before the pawn", "8/8/8/3k4/3P4/8/8/7K", true},
             {"king two squares before the pawn", "8/8/3k4/8/3P4/3K4/8/8", true},
             {"king three squares before the pawn", "8/3k4/8/8/3P4/3K4/8/8", false},
             {"king on the last rank before the pawn", "3k4/8/3P4/8/8/8/8/7K", false},
             {"king on rank 7 before the pawn", "8/3k4/8/3P4/8/8/8/7K", true},
             {"pawn beyond rank 5", "8/4k3/3P4/8/8/8/8/7K", false},
             {"white king beyond", "8/8/2K5/4k3/3P4/8/8/8", false},
             {"white king off the free side", "8/8/8/4k3/3P4/6K1/8/8", true},
             {"white king on the free side beside", "8/8/8/4k3/3P4/2K5/8/8", true},
             {"white king on the free side ahead", "8/2K5/8/4k3/3P4/8/8/8", false},
             {"white king on the free side far ahead", "2K5/8/8/4k3/3P4/8/8/8", true},
             {"king on the pawn's rank, white king a rank below", "8/8/8/8/3Pk3/2K5/8/8", false},
             {"king on the pawn's rank, white king two ranks below", "8/8/8/8/3Pk3/8/2K5/8", true},
             {"mirrored: white king off the free side", "8/8/8/2k5/3P4/K7/8/8", true},
             {"mirrored: white king ahead", "8/4K3/8/2k5/3P4/8/8/8", false},
         }) {
        CLine line(row.m_pPlacement);
        EXPECT_EQ(IsDrawnPawnEnding(line.Root(), FindFigure(line.Root(), kWhitePawn)), row.m_bDraw) << row.m_pName;
    }
}

TEST(WrongBishopEnding, DrawIsRecognised) {
    for (const TEndingRow& row : std::initializer_list<TEndingRow>{
             {"king at the corner", "8/k7/8/8/P7/8/8/2B4K", true},
             {"bishop of the corner's colour", "8/k7/8/8/P7/8/8/1B5K", false},
             {"king two files off", "2k5/8/8/8/P7/8/8/2B4K", false},
             {"king on the pawn's rank", "8/8/8/8/Pk6/8/8/2B4K", false},
             {"pawn on another file", "8/k7/8/8/1P6/8/8/2B4K", false},
             {"king nearer to the gate by two steps", "8/4K3/1k6/8/P7/8/8/2B5", true},
             {"king nearer to the gate by one step", "8/3K4/1k6/8/P7/8/8/2B5", false},
             {"h-pawn, king at the corner", "8/7k/8/8/7P/8/8/K4B2", true},
             {"h-pawn, bishop of the corner's colour", "8/7k/8/8/7P/8/8/K1B5", false},
             {"h-pawn, king nearer by two steps", "8/3K4/6k1/8/7P/8/8/5B2", true},
             {"h-pawn, king nearer by one step", "8/4K3/6k1/8/7P/8/8/5B2", false},
         }) {
        CLine line(row.m_pPlacement);
        EXPECT_EQ(IsDrawnWrongBishopEnding(line.Root(), FindFigure(line.Root(), kWhitePawn),
                                           FindFigure(line.Root(), kWhiteBishop)),
                  row.m_bDraw)
            << row.m_pName;
    }
}

TEST(BareKingEscapes, NeedTheBit) {
    EXPECT_EQ(CQuestion("8/8/8/3k4/3P4/8/8/7K", 10).BareKing().Verdict(), kEscaped);
    EXPECT_EQ(CQuestion("8/8/8/3k4/3P4/8/8/7K", 10).Verdict(), kUndecided);
    EXPECT_EQ(CQuestion("8/8/1k6/8/P7/8/8/2B4K", 10).BareKing().Verdict(), kEscaped);
    EXPECT_EQ(CQuestion("8/8/1k6/8/P7/8/8/2B4K", 10).Verdict(), kUndecided);
}

TEST(BareKingEscapes, NeedExactlyOnePawnAndNoKnight) {
    EXPECT_EQ(CQuestion("8/8/8/3k4/3P4/3P4/8/7K", 10).BareKing().Verdict(), kUndecided);
    EXPECT_EQ(CQuestion("8/8/8/3k4/3P4/8/8/6NK", 10).BareKing().Verdict(), kUndecided);
    EXPECT_EQ(CQuestion("8/8/1k6/8/P7/8/8/2B1B2K", 10).BareKing().Verdict(), kUndecided);
}

// ---- rook's pawn and wrong bishop

TEST(RookPawnCorner, BlackHoldsTheCorner) {
    ExpectRows({
        {"king on rank 8, one pawn", "1k6/8/8/3p4/P7/8/8/K1B5", 10, kEscaped},
        {"king on rank 7, many pawns", "8/1k6/8/3ppp2/P7/8/8/K1B5", 10, kEscaped},
        {"king on rank 6", "8/8/1k6/3p4/P7/8/8/K1B5", 10, kUndecided},
        {"king two files off", "2k5/8/8/3p4/P7/8/8/K1B5", 10, kUndecided},
        {"black figure beside the king", "1k6/2p5/8/8/P7/8/8/K1B5", 10, kUndecided},
        {"pawn can capture", "1k6/8/8/1p6/P7/8/8/K1B5", 10, kUndecided},
        {"two bishops of the wrong colour", "1k6/8/8/3p4/P7/8/8/K1B1B3", 10, kEscaped},
        {"several pawns of the file", "1k6/8/P7/3p4/P7/8/8/K1B5", 10, kEscaped},
        {"bishop of the corner's colour", "1k6/8/8/3p4/P7/8/8/KB6", 10, kUndecided},
        {"bishops of both colours", "1k6/8/8/3p4/P7/8/8/KBB5", 10, kUndecided},
        {"a pawn on another file", "1k6/8/8/3p4/P7/8/6P1/K1B5", 10, kUndecided},
        {"pawns on both rook's files", "1k6/8/8/3p4/P6P/8/8/K1B5", 10, kUndecided},
        {"with a knight", "1k6/8/8/3p4/P7/8/8/K1BN4", 10, kUndecided},
        {"h-pawn", "6k1/8/8/3p4/7P/8/8/K4B2", 10, kEscaped},
    });
}

TEST(RookPawnCorner, TwoBlackPawnsMayHaveToOpenTheFile) {
    ExpectRows({
        {"no pawn ahead of White's", "1k6/8/8/8/P7/6pp/8/K1B5", 10, kEscaped},
        {"pawn ahead, another near the b-file", "1k6/8/1p6/8/P7/2p5/8/K1B5", 10, kUndecided},
        {"pawn ahead too far aside", "1k6/8/8/4p3/P7/6p1/8/K1B5", 2, kEscaped},
    });
}

TEST(RookPawnCorner, SetsItsMarkEvenWhenUndecided) {
    CQuestion question("8/8/1k6/3p4/P7/8/8/K1B5", 10);
    EXPECT_EQ(question.Verdict(), kUndecided);
    EXPECT_TRUE(question.HasMark(kRookPawnWrongBishop));
    CQuestion other("8/8/1k6/3p4/P7/8/8/KB6", 10);
    EXPECT_EQ(other.Verdict(), kUndecided);
    EXPECT_FALSE(other.HasMark(kRookPawnWrongBishop));
}

TEST(RookPawnCorner, ACaptureInPassingKeepsItUndecided) {
    CLine line("k7/1p6/8/P7/8/8/3n4/K3B3 b");
    line.Root().m_wBlackState |= kRookPawnWrongBishop;
    line.Root().m_board[SquareOf("a8")] = kNoFigure; // the king stands where no pawn is beside it
    PutFigure(line.Root(), SquareOf("b8"), kBlackKing);
    EXPECT_EQ(line.Try("b7b5"), kMoveStands);
    EXPECT_EQ(line.Try("d2b3"), kMoveStands) << "the pawn beside the king";
}

TEST(RookPawnCorner, MaterialIsTold) {
    const auto wrong = [](const char* placement, bool bAllPawns) {
        return IsRookPawnWithWrongBishop(CLine(placement).Root(), bAllPawns);
    };
    EXPECT_TRUE(wrong("1k6/8/8/8/P7/8/6P1/K1B5", false));
    EXPECT_FALSE(wrong("1k6/8/8/8/P7/8/6P1/K1B5", true));
    EXPECT_TRUE(wrong("1k6/8/8/8/P7/8/8/K1B5", true));
    EXPECT_FALSE(wrong("1k6/8/8/8/8/8/8/K1B5", true));
    EXPECT_FALSE(wrong("1k6/8/8/8/P7/8/8/K7", true));
    EXPECT_EQ(ColourOutOfBishopsReach(CLine("7k/8/8/8/8/8/8/K1B5").Root()), 1);
    EXPECT_EQ(ColourOutOfBishopsReach(CLine("7k/8/8/8/8/8/8/KB6").Root()), 0);
    EXPECT_EQ(ColourOutOfBishopsReach(CLine("6k1/8/8/8/8/8/8/KBB5").Root()), -1);
    EXPECT_EQ(ColourOutOfBishopsReach(CLine("7k/8/8/8/8/8/8/K7").Root()), -1);
}

// ---- against the reference

/// Asks about up to three captures of Black behind each white move; the white moves left after them are nMoves.
void ExpectEscapesHold(const std::string& placement, int nMoves, int& nEscapes) {
    CLine line(placement, 2 * nMoves + 1);
    const reference::Position truth = reference::ProblemFromFen(placement);
    int nAsked = 0;
    for (const reference::Move move : reference::LegalMoves(truth)) {
        if (line.Try(TextOf(move)) == 0)
            continue;
        const TChessboard before = line.Tried();
        const reference::Position afterWhite = reference::Play(truth, move);
        for (const reference::Move reply : reference::LegalMoves(afterWhite)) {
            if (!reference::IsCapture(afterWhite, reply) || nAsked == 3)
                continue;
            TChessboard parent = before, child = before;
            child.m_pPrevious = &parent;
            TMove answer = MoveOf(TextOf(reply));
            if (MakeBlackMove(child, answer, false) != kCertainEscape)
                continue;
            ++nAsked;
            EXPECT_FALSE(reference::ForcesMate(reference::Play(afterWhite, reply), nMoves)) << WriteFEN(child, false);
        }
    }
    nEscapes += nAsked;
}

TEST(EscapeRules, WhiteHasNoMateInTwoWhereBlackHasEscaped) {
    std::mt19937_64 rng(91);
    int nEscapes = 0;
    for (int round = 0; round < 3000; ++round)
        ExpectEscapesHold(reference::RandomMinorPlacement(rng, 4 + round % 5), 2, nEscapes);
    EXPECT_GT(nEscapes, 1000);
}

/// Random diagrams, White to move, as if Black had just captured.
TEST(EscapeRules, WhiteHasNoMateInThreeWhereBlackHasEscaped) {
    std::mt19937_64 rng(92);
    int nEscapes = 0;
    for (int round = 0; round < 3000; ++round) {
        const std::string placement = reference::RandomMinorPlacement(rng, 3 + round % 3);
        if (CQuestion(placement, 3).Verdict() != kEscaped)
            continue;
        ++nEscapes;
        const auto answer = reference::SolveAllWithTable(reference::ProblemFromFen(placement), 3, 3'000'000);
        EXPECT_TRUE(answer.has_value() && !answer->mateExists) << placement;
    }
    EXPECT_GT(nEscapes, 500);
}

} // namespace
} // namespace quillon::test
