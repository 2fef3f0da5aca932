#include "core/chessboard.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "core/chess_exception.h"
#include "core/positions.h"

namespace quillon::test {
namespace {

TChessboard Board(std::string_view placement) {
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, placement));
    return b;
}

TChessboard Recounted(std::string_view placement) {
    TChessboard b = Board(placement);
    RecountFigures(b, true);
    return b;
}

/// The failure that set-up throws; empty if it does not.
std::string FailureOf(std::string_view placement) {
    TChessboard b = Board(placement);
    try {
        RecountFigures(b, true);
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return {};
}

bool AreListsValid(std::string_view placement) { return Recounted(placement).m_bWhiteListsValid != 0; }

// ---- encodings

TEST(FigureCodes, AreAsTheMasksNeedThem) {
    EXPECT_EQ(kWhiteKing, 65);
    EXPECT_EQ(kBlackKing, 129);
    EXPECT_EQ(kWhitePawn, 66);
    EXPECT_EQ(kBlackPawn, 130);
    EXPECT_EQ(kWhiteBishop, 68);
    EXPECT_EQ(kBlackBishop, 132);
    EXPECT_EQ(kWhiteRook, 72);
    EXPECT_EQ(kBlackRook, 136);
    EXPECT_EQ(kWhiteQueen, 76);
    EXPECT_EQ(kBlackQueen, 140);
    EXPECT_EQ(kWhiteKnight, 80);
    EXPECT_EQ(kBlackKnight, 144);
}

TEST(FigureCodes, QueenSlidesBothWaysRookAndBishopOneWay) {
    for (const TFigure colour : {kWhite, kBlack}) {
        const TFigure other = colour == kWhite ? kBlack : kWhite;
        for (const TFigure kind : {kKing, kPawn, kBishop, kRook, kQueen, kKnight}) {
            const auto figure = static_cast<TFigure>(colour | kind);
            EXPECT_EQ(IsDiagonalSlider(figure, colour), kind == kBishop || kind == kQueen);
            EXPECT_EQ(IsStraightSlider(figure, colour), kind == kRook || kind == kQueen);
            EXPECT_FALSE(IsDiagonalSlider(figure, other));
            EXPECT_FALSE(IsStraightSlider(figure, other));
        }
    }
}

TEST(FigureCodes, MarkedPawnIsAFigureOfItsKind) {
    const TFigure marked = kBlackPawn | kPawnMayNotAdvance;
    EXPECT_EQ(KindOf(marked), kPawn);
    EXPECT_TRUE(IsBlack(marked));
    EXPECT_TRUE(IsFigureCode(marked));
    EXPECT_EQ(WithoutMark(marked), kBlackPawn);
    EXPECT_FALSE(IsFigureCode(kWhitePawn | kPawnMayNotAdvance));
    EXPECT_FALSE(IsFigureCode(kNoFigure));
}

TEST(Squares, CountFilesThenRanks) {
    EXPECT_EQ(SquareOf("a1"), 0);
    EXPECT_EQ(SquareOf("h1"), 7);
    EXPECT_EQ(SquareOf("e1"), 4);
    EXPECT_EQ(SquareOf("a8"), 56);
    EXPECT_EQ(SquareOf("e8"), 60);
    EXPECT_EQ(SquareOf("h8"), 63);
    EXPECT_EQ(ColourOf(kA1), 0);
    EXPECT_EQ(ColourOf(kH1), 1);
    EXPECT_EQ(ColourOf(kA8), 1);
    EXPECT_EQ(ColourOf(kH8), 0);
    EXPECT_EQ(KingSteps(SquareOf("a1"), SquareOf("c8")), 7);
    EXPECT_EQ(KingSteps(SquareOf("e4"), SquareOf("d5")), 1);
}

TEST(Moves, EqualityLeavesMarksAndScoresOut) {
    const TMove move{1, 2, kQueen, 0};
    EXPECT_TRUE(SameMove(move, {1, 2, kQueen | kMoveMark | kMoveDefersEdgeCheck, 9}));
    EXPECT_FALSE(SameMove(move, {1, 2, kRook, 0}));
    EXPECT_FALSE(SameMove(move, {1, 3, kQueen, 0}));
    EXPECT_FALSE(SameMove(move, {0, 2, kQueen, 0}));
    EXPECT_TRUE(IsNullMove({60, 60, 0, 0}));
}

TEST(ChessboardRecord, FieldsStandInTheirOrder) {
    const std::size_t offsets[] = {offsetof(TChessboard, m_board),
                                   offsetof(TChessboard, m_pAnalysis),
                                   offsetof(TChessboard, m_blockedFigures),
                                   offsetof(TChessboard, m_pPrevious),
                                   offsetof(TChessboard, m_pContext),
                                   offsetof(TChessboard, m_lastMove),
                                   offsetof(TChessboard, m_nMoves),
                                   offsetof(TChessboard, m_nInitialMoves),
                                   offsetof(TChessboard, m_nHeuristics),
                                   offsetof(TChessboard, m_nHeurParams),
                                   offsetof(TChessboard, m_wKingState),
                                   offsetof(TChessboard, m_wBlackState),
                                   offsetof(TChessboard, m_bySideState),
                                   offsetof(TChessboard, m_byPass),
                                   offsetof(TChessboard, m_whiteKingFile),
                                   offsetof(TChessboard, m_whiteKingRank),
                                   offsetof(TChessboard, m_blackKingFile),
                                   offsetof(TChessboard, m_blackKingRank),
                                   offsetof(TChessboard, m_whiteChecker),
                                   offsetof(TChessboard, m_blackChecker),
                                   offsetof(TChessboard, m_whiteQueens),
                                   offsetof(TChessboard, m_blackQueens),
                                   offsetof(TChessboard, m_whiteRooks),
                                   offsetof(TChessboard, m_blackRooks),
                                   offsetof(TChessboard, m_whiteBishops),
                                   offsetof(TChessboard, m_blackBishops),
                                   offsetof(TChessboard, m_whiteKnights),
                                   offsetof(TChessboard, m_blackKnights),
                                   offsetof(TChessboard, m_whitePawns),
                                   offsetof(TChessboard, m_blackPawns),
                                   offsetof(TChessboard, m_whiteRookSquares),
                                   offsetof(TChessboard, m_whiteBishopSquares),
                                   offsetof(TChessboard, m_whiteKnightSquares),
                                   offsetof(TChessboard, m_whiteQueenSquare),
                                   offsetof(TChessboard, m_bWhiteListsValid)};
    EXPECT_TRUE(std::ranges::is_sorted(offsets));
    EXPECT_EQ(sizeof(TChessboard), 144u);
}

// ---- set-up

TEST(RecountFigures, CountsTheInitialArray) {
    const TChessboard b = Recounted("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR");
    EXPECT_EQ(b.m_whiteQueens, 1);
    EXPECT_EQ(b.m_blackQueens, 1);
    EXPECT_EQ(b.m_whiteRooks, 2);
    EXPECT_EQ(b.m_blackRooks, 2);
    EXPECT_EQ(b.m_whiteBishops, 2);
    EXPECT_EQ(b.m_blackBishops, 2);
    EXPECT_EQ(b.m_whiteKnights, 2);
    EXPECT_EQ(b.m_blackKnights, 2);
    EXPECT_EQ(b.m_whitePawns, 8);
    EXPECT_EQ(b.m_blackPawns, 8);
    EXPECT_EQ(WhiteKingSquare(b), kE1);
    EXPECT_EQ(BlackKingSquare(b), kE8);
    EXPECT_EQ(b.m_whiteRookSquares, (std::array<TSquare, 2>{kA1, kH1}));
    EXPECT_EQ(b.m_whiteKnightSquares, (std::array<TSquare, 2>{1, kG1}));
    EXPECT_EQ(b.m_whiteBishopSquares, (std::array<TSquare, 2>{kC1, kF1}));
    EXPECT_EQ(b.m_whiteQueenSquare, kD1);
    EXPECT_NE(b.m_bWhiteListsValid, 0);
    EXPECT_EQ(b.m_whiteChecker, kNoChecker);
    EXPECT_EQ(b.m_blackChecker, kNoChecker);
    EXPECT_EQ(WhiteMen(b), 15);
    EXPECT_EQ(BlackMen(b), 15);
}

TEST(RecountFigures, ForgetsWhatItCountedBefore) {
    TChessboard b = Recounted("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR");
    b.m_board.fill(kNoFigure);
    b.m_board[kA1] = kWhiteKing;
    b.m_board[kH8] = kBlackKing;
    RecountFigures(b, false);
    EXPECT_EQ(WhiteMen(b) + BlackMen(b), 0);
}

TEST(RecountFigures, MarkedPawnCountsAsPawn) {
    TChessboard b = Board("7k/3p4/8/8/8/8/8/K7");
    b.m_board[SquareOf("d7")] |= kPawnMayNotAdvance;
    RecountFigures(b, true);
    EXPECT_EQ(b.m_blackPawns, 1);
}

TEST(RecountFigures, ListsAreValidWithinTheirBounds) {
    EXPECT_TRUE(AreListsValid("7k/8/8/8/8/8/8/KQRRBBNN"));
    EXPECT_FALSE(AreListsValid("7k/8/8/8/8/8/8/KB1B4")) << "two bishops on squares of one colour";
    EXPECT_TRUE(AreListsValid("7k/8/8/8/8/8/8/KB2B3")) << "two bishops on squares of opposite colours";
    EXPECT_FALSE(AreListsValid("7k/8/8/8/8/8/8/KBB1B3")) << "a third bishop";
    EXPECT_FALSE(AreListsValid("7k/8/8/8/8/8/8/KR1RR3")) << "a third rook";
    EXPECT_FALSE(AreListsValid("7k/8/8/8/8/8/8/KNNN4")) << "a third knight";
    EXPECT_FALSE(AreListsValid("7k/8/8/8/8/8/8/KQQ5")) << "a second queen";
    EXPECT_TRUE(AreListsValid("qqrrrk2/bbnnn3/8/8/8/8/8/K7")) << "Black's figures have no lists";
}

TEST(RecountFigures, FailuresAreTold) {
    const std::string pawns = "Pawns cannot occupy 1st nor 8th line of the chessboard.";
    EXPECT_EQ(FailureOf("P6k/8/8/8/8/8/8/K7"), pawns);
    EXPECT_EQ(FailureOf("7k/8/8/8/8/8/8/K6P"), pawns);
    EXPECT_EQ(FailureOf("p6k/8/8/8/8/8/8/K7"), pawns);
    EXPECT_EQ(FailureOf("7k/8/8/8/8/8/8/K6p"), pawns);
    EXPECT_EQ(FailureOf("8/8/8/8/8/8/8/K7"), "Illegal number of kings.");
    EXPECT_EQ(FailureOf("7k/8/8/8/8/8/8/8"), "Illegal number of kings.");
    EXPECT_EQ(FailureOf("7k/8/8/8/8/8/8/K1K5"), "Illegal number of kings.");
    EXPECT_EQ(FailureOf("6kk/8/8/8/8/8/8/K7"), "Illegal number of kings.");
}

TEST(RecountFigures, BothKingsAttackedIsAFailureOneIsNot) {
    EXPECT_EQ(FailureOf("R6k/8/8/8/8/8/8/r6K"), "Both kings attacked.");
    EXPECT_EQ(FailureOf("R6k/8/8/8/8/8/8/7K"), "");
    EXPECT_EQ(FailureOf("7k/8/8/8/8/8/8/r6K"), "");
    EXPECT_EQ(FailureOf("8/8/8/8/8/8/6k1/7K"), "Both kings attacked.") << "the kings attack one another";
}

TEST(RecountFigures, TryTellsWithoutThrowing) {
    TChessboard good = Board("7k/8/8/8/8/8/8/K7"), bad = Board("8/8/8/8/8/8/8/K7");
    EXPECT_TRUE(TryRecountFigures(good, true));
    EXPECT_FALSE(TryRecountFigures(bad, true));
}

TEST(RecountFigures, CheckersAreOneSquareOrADoubleCheck) {
    EXPECT_EQ(Recounted("4r2k/8/8/8/8/8/8/4K3").m_whiteChecker, kE8);
    EXPECT_EQ(Recounted("4r2k/8/8/8/8/3n4/8/4K3").m_whiteChecker, kDoubleCheck);
    EXPECT_EQ(Recounted("7k/8/8/8/8/8/3p4/4K3").m_whiteChecker, SquareOf("d2"));
    EXPECT_EQ(Recounted("4k3/8/5N2/8/8/8/8/4K3").m_blackChecker, SquareOf("f6"));
    EXPECT_EQ(Recounted("4k3/3P4/8/8/8/8/8/4K3").m_blackChecker, SquareOf("d7"));
    EXPECT_EQ(Recounted("4k3/3P4/5N2/8/8/8/8/4K3").m_blackChecker, kDoubleCheck);
}

TEST(RecountFigures, RingIsTheDistanceOfTheBlackKingToTheEdge) {
    for (int square = 0; square < kSquares; ++square) {
        TChessboard b = EmptyChessboard();
        b.m_board[static_cast<std::size_t>(square)] = kBlackKing;
        b.m_board[square == kA1 || KingSteps(square, kA1) == 1 ? kH8 : kA1] = kWhiteKing;
        RecountFigures(b, true);
        const int file = FileOf(square), rank = RankOf(square);
        EXPECT_EQ(BlackRing(b), std::min({file, 7 - file, rank, 7 - rank}));
    }
    EXPECT_EQ(BlackRing(Recounted("8/8/8/8/3k4/8/8/K7")), 3);
    EXPECT_EQ(BlackRing(Recounted("8/8/8/7k/8/8/8/K7")), 0);
    EXPECT_EQ(BlackRing(Recounted("8/8/8/8/8/8/1k6/7K")), 1);
}

TEST(RecountFigures, CaptureCountsAreClearedTheBishopModeIsKept) {
    TChessboard b = Board("7k/8/8/8/8/8/8/K7");
    b.m_bySideState = 0xff;
    RecountFigures(b, false);
    EXPECT_EQ(b.m_bySideState, 0xc3);
}

TEST(RecountFigures, HeuristicsAreClearedWhenAskedFor) {
    TChessboard b = Board("7k/8/8/8/8/8/8/K7");
    b.m_wKingState = 0x1234;
    b.m_nHeuristics = 0x5678;
    RecountFigures(b, false);
    EXPECT_EQ(b.m_wKingState, 0x1234);
    EXPECT_EQ(b.m_nHeuristics, 0x5678u);
    RecountFigures(b, true);
    EXPECT_EQ(b.m_wKingState, 0);
    EXPECT_EQ(b.m_nHeuristics, 0u);
}

TEST(RecountFigures, MateInOneHasOnePlyAndItsEndNone) {
    CLine line("7k/8/6K1/8/8/8/8/R7 w", 1);
    EXPECT_TRUE(IsWhiteToMove(line.Root()));
    line.Play("a1a8");
    EXPECT_EQ(line.Now().m_nMoves, 0);
    EXPECT_FALSE(IsWhiteToMove(line.Now()));
}

// ---- lifting off and putting back

TEST(PutFigure, CountsTheFigureAndEntersItIntoItsList) {
    TChessboard b = Recounted("7k/8/8/8/8/8/8/K7");
    PutFigure(b, SquareOf("c3"), kWhiteRook);
    PutFigure(b, SquareOf("c4"), kWhiteQueen);
    PutFigure(b, SquareOf("c5"), kWhiteBishop);
    PutFigure(b, SquareOf("c6"), kWhiteKnight);
    PutFigure(b, SquareOf("c7"), kWhitePawn);
    PutFigure(b, SquareOf("d3"), kBlackRook);
    EXPECT_EQ(b.m_board[SquareOf("c3")], kWhiteRook);
    EXPECT_EQ(b.m_whiteRooks, 1);
    EXPECT_EQ(b.m_whiteRookSquares[0], SquareOf("c3"));
    EXPECT_EQ(b.m_whiteQueens, 1);
    EXPECT_EQ(b.m_whiteQueenSquare, SquareOf("c4"));
    EXPECT_EQ(b.m_whiteBishops, 1);
    EXPECT_EQ(b.m_whiteBishopSquares[0], SquareOf("c5"));
    EXPECT_EQ(b.m_whiteKnights, 1);
    EXPECT_EQ(b.m_whiteKnightSquares[0], SquareOf("c6"));
    EXPECT_EQ(b.m_whitePawns, 1);
    EXPECT_EQ(b.m_blackRooks, 1);
    EXPECT_NE(b.m_bWhiteListsValid, 0);
}

TEST(PutFigure, SecondOfAKindTakesTheSecondPlace) {
    TChessboard b = Recounted("7k/8/8/8/8/8/8/KRBN4");
    PutFigure(b, SquareOf("c3"), kWhiteRook);
    PutFigure(b, SquareOf("d4"), kWhiteBishop);
    PutFigure(b, SquareOf("e5"), kWhiteKnight);
    EXPECT_EQ(b.m_whiteRookSquares[1], SquareOf("c3"));
    EXPECT_EQ(b.m_whiteBishopSquares[1], SquareOf("d4"));
    EXPECT_EQ(b.m_whiteKnightSquares[1], SquareOf("e5"));
}

TEST(PutFigure, DoesNotValidateTheListsAgain) {
    TChessboard b = Recounted("7k/8/8/8/8/8/8/KRR5");
    PutFigure(b, SquareOf("c3"), kWhiteRook);
    EXPECT_EQ(b.m_whiteRooks, 3);
    EXPECT_NE(b.m_bWhiteListsValid, 0);
    EXPECT_EQ(b.m_whiteRookSquares, (std::array<TSquare, 2>{1, 2}));
    TChessboard invalid = Recounted("7k/8/8/8/8/8/8/KQQ5");
    PutFigure(invalid, SquareOf("c3"), kWhiteRook);
    EXPECT_EQ(invalid.m_whiteRooks, 1);
    EXPECT_EQ(invalid.m_bWhiteListsValid, 0);
}

TEST(PutFigure, KingMovesItsFileAndRankAndTheRing) {
    TChessboard b = Recounted("7k/8/8/8/8/8/8/K7");
    b.m_board[kH8] = b.m_board[kA1] = kNoFigure;
    PutFigure(b, SquareOf("d5"), kBlackKing);
    PutFigure(b, SquareOf("g2"), kWhiteKing);
    EXPECT_EQ(BlackKingSquare(b), SquareOf("d5"));
    EXPECT_EQ(BlackRing(b), 3);
    EXPECT_EQ(WhiteKingSquare(b), SquareOf("g2"));
    EXPECT_EQ(WhiteMen(b) + BlackMen(b), 0);
}

TEST(WhiteLists, EnlistingBeyondTheBoundsMakesThemInvalid) {
    TChessboard b = Recounted("7k/8/8/8/8/8/8/KQB5");
    EnlistWhiteFigure(b, SquareOf("d4"), kBishop); // c1 and d4 are dark
    EXPECT_EQ(b.m_whiteBishops, 2);
    EXPECT_EQ(b.m_bWhiteListsValid, 0);
    TChessboard opposite = Recounted("7k/8/8/8/8/8/8/KQB5");
    EnlistWhiteFigure(opposite, SquareOf("d5"), kBishop);
    EXPECT_NE(opposite.m_bWhiteListsValid, 0);
    EnlistWhiteFigure(opposite, SquareOf("d6"), kQueen);
    EXPECT_EQ(opposite.m_whiteQueens, 2);
    EXPECT_EQ(opposite.m_bWhiteListsValid, 0);
}

TEST(WhiteLists, RebuildingFillsThemOnlyWithinTheBounds) {
    TChessboard within = Recounted("7k/8/8/8/8/8/8/KQRRBBNN");
    within.m_bWhiteListsValid = 0;
    within.m_whiteRookSquares = {9, 9};
    RebuildWhiteLists(within);
    EXPECT_NE(within.m_bWhiteListsValid, 0);
    EXPECT_EQ(within.m_whiteRookSquares, (std::array<TSquare, 2>{2, 3}));
    for (const char* beyond : {"7k/8/8/8/8/8/8/KQQ5", "7k/8/8/8/8/8/8/KB1B4", "7k/8/8/8/8/8/8/KRRR4",
                               "7k/8/8/8/8/8/8/KNNN4", "7k/8/8/8/8/8/8/KBBB4"}) {
        TChessboard b = Recounted(beyond);
        RebuildWhiteLists(b);
        EXPECT_EQ(b.m_bWhiteListsValid, 0) << beyond;
    }
}

} // namespace
} // namespace quillon::test
