#include "core/makers.h"

#include <gtest/gtest.h>

#include "core/positions.h"

namespace quillon::test {
namespace {

bool HasBit(std::uint16_t state, std::uint16_t bit) { return (state & bit) != 0; }

/// Takes a black bishop off in thought: the opposite-bishops mode of every position of the line.
CLine WithBishopMode(std::string_view fen, std::uint8_t nMode) {
    CLine line(fen);
    line.Root().m_bySideState |= nMode;
    return line;
}

// ---- legality

TEST(WhiteMaker, RefusesAMoveThatLeavesTheKingInCheck) {
    CLine pinned("4r2k/8/8/8/8/8/4N3/4K3 w");
    EXPECT_EQ(pinned.Try("e2c3"), 0);
    EXPECT_EQ(pinned.Try("e1d1"), 1);
    CLine checked("4r2k/8/8/8/8/8/8/N3K3 w");
    EXPECT_EQ(checked.Try("a1b3"), 0);
    EXPECT_EQ(checked.Try("e1e2"), 0);
    EXPECT_EQ(checked.Try("e1d2"), 1);
}

TEST(WhiteMaker, KingMayNotRetreatAlongTheCheckingLine) {
    CLine line("4r2k/8/8/8/4K3/8/8/8 w");
    EXPECT_EQ(line.Try("e4e3"), 0);
    EXPECT_EQ(line.Try("e4d3"), 1);
}

TEST(WhiteMaker, KingMayNotTakeAGuardedFigureNorApproachTheKing) {
    CLine line("7k/8/8/8/8/8/2r5/1rK5 w");
    EXPECT_EQ(line.Try("c1b1"), 1);
    CLine guarded("7k/8/8/8/8/2r5/2r5/2K5 w");
    EXPECT_EQ(guarded.Try("c1c2"), 0);
    CLine kings("8/8/8/8/8/1k6/8/K7 w");
    EXPECT_EQ(kings.Try("a1a2"), 0);
    EXPECT_EQ(kings.Try("a1b1"), 1);
}

TEST(WhiteMaker, PinnedFigureMovesAlongItsLine) {
    CLine line("4r2k/8/8/8/8/8/4R3/4K3 w");
    EXPECT_EQ(line.Try("e2e5"), 1);
    EXPECT_EQ(line.Try("e2e8"), 1);
    EXPECT_EQ(line.Try("e2d2"), 0);
}

TEST(WhiteMaker, EnPassantThatOpensTheRankToTheKingIsRefused) {
    CLine line("7k/3p4/8/K3P2r/8/8/8/8 b");
    line.Play("d7d5");
    ASSERT_TRUE(line.Has("e5d6"));
    EXPECT_EQ(line.Try("e5d6"), 0);
    CLine safe("7k/3p4/8/4P2r/K7/8/8/8 b");
    safe.Play("d7d5");
    EXPECT_EQ(safe.Try("e5d6"), 1);
}

TEST(BlackMaker, EnPassantThatOpensTheRankToTheKingIsRefused) {
    CLine line("8/8/8/8/k3p2R/8/3P4/7K w");
    line.Play("d2d4");
    ASSERT_TRUE(line.Has("e4d3"));
    EXPECT_EQ(line.Try("e4d3"), kIllegalMove);
}

TEST(WhiteMaker, EnPassantByAPinnedPawnIsRefused) {
    CLine line("4r2k/3p4/8/4P3/8/8/8/4K3 b");
    line.Play("d7d5");
    EXPECT_EQ(line.Try("e5d6"), 0);
    EXPECT_EQ(line.Try("e5e6"), 1);
}

TEST(BlackMaker, RefusesWhatLeavesTheKingInCheckUnlessTheCallerVouches) {
    CLine line("4k3/4n3/8/8/8/8/8/4R2K b");
    EXPECT_EQ(line.Try(MoveOf("e7c6")), kIllegalMove);
    EXPECT_EQ(line.Try(MoveOf("e7c6"), true), kMoveStands);
    EXPECT_EQ(line.Try(MoveOf("e8d8")), kMoveStands);
}

TEST(Makers, CastlingOfAMovedRookIsRefused) {
    CLine white("4k3/p7/8/8/8/8/8/R3K2R w");
    white.Play("h1h2 a7a6 h2h1 a6a5");
    EXPECT_EQ(white.Try("e1g1"), 0);
    EXPECT_EQ(white.Try("e1c1"), 1);
    CLine black("r3k2r/8/8/8/8/8/P7/4K3 b");
    black.Play("a8b8 a2a3 b8a8 a3a4");
    EXPECT_EQ(black.Try("e8c8"), kIllegalMove);
    EXPECT_EQ(black.Try("e8g8"), kMoveStands);
}

// ---- the move itself

TEST(Makers, QuietMoveIsStoredAndCounted) {
    CLine line("7k/8/8/8/8/8/4P3/K7 w", 7);
    line.Context().m_repetition[7] = 5;
    line.Play("e2e4");
    const TChessboard& b = line.Now();
    EXPECT_EQ(b.m_nMoves, 6);
    EXPECT_EQ(b.m_nInitialMoves, 7);
    EXPECT_TRUE(SameMove(b.m_lastMove, MoveOf("e2e4")));
    EXPECT_EQ(b.m_lastMove.m_nEnPassant, 0);
    EXPECT_EQ(b.m_board[SquareOf("e2")], kNoFigure);
    EXPECT_EQ(b.m_board[SquareOf("e4")], kWhitePawn);
    EXPECT_EQ(line.Context().m_repetition[7], 0) << "the mark of the node that begins";
}

TEST(Makers, EnPassantRemovesThePawnAndMarksTheMove) {
    CLine white("7k/3p4/8/4P3/8/8/8/K7 b");
    white.Play("d7d5");
    TMove move = MoveOf("e5d6");
    ASSERT_EQ(MakeWhiteMove(*CopyToChild(&white.Now()), move), 1);
    EXPECT_EQ(move.m_nEnPassant, 1);
    white.Play("e5d6");
    EXPECT_EQ(white.Now().m_board[SquareOf("d5")], kNoFigure);
    EXPECT_EQ(white.Now().m_blackPawns, 0);
    EXPECT_EQ(white.Now().m_lastMove.m_nEnPassant, 1);
    CLine black("7k/8/8/8/4p3/8/3P4/K7 w");
    black.Play("d2d4 e4d3");
    EXPECT_EQ(black.Now().m_board[SquareOf("d4")], kNoFigure);
    EXPECT_EQ(black.Now().m_whitePawns, 0);
    EXPECT_EQ(black.Now().m_lastMove.m_nEnPassant, 1);
}

TEST(Makers, ByteThreeIsResetByAnOrdinaryMove) {
    CLine line("7k/8/8/8/8/3p4/4P3/K7 w");
    TMove move = MoveOf("e2d3");
    move.m_nEnPassant = 77; // a sort score
    ASSERT_EQ(MakeWhiteMove(*CopyToChild(&line.Root()), move), 1);
    EXPECT_EQ(move.m_nEnPassant, 0);
}

TEST(Makers, CastlingMovesTheRookAndItsListEntry) {
    CLine line("r3k2r/8/8/8/8/8/8/R3K2R w");
    line.Play("e1g1 e8c8");
    const TChessboard& b = line.Now();
    EXPECT_EQ(WriteFEN(b, false), "2kr3r/8/8/8/8/8/8/R4RK1");
    EXPECT_EQ(b.m_whiteRookSquares, (std::array<TSquare, 2>{kA1, kF1}));
    EXPECT_EQ(WhiteKingSquare(b), kG1);
    EXPECT_EQ(BlackKingSquare(b), kC8);
    CLine other("r3k2r/8/8/8/8/8/8/R3K2R w");
    other.Play("e1c1 e8g8");
    EXPECT_EQ(WriteFEN(other.Now(), false), "r4rk1/8/8/8/8/8/8/2KR3R");
    EXPECT_EQ(other.Now().m_whiteRookSquares, (std::array<TSquare, 2>{kD1, kH1}));
}

TEST(BlackMaker, RingFollowsTheKing) {
    CLine line("8/8/8/8/8/3k4/8/7K b");
    EXPECT_EQ(BlackRing(line.Root()), 2);
    line.Play("d3d4");
    EXPECT_EQ(BlackRing(line.Now()), 3);
    line.Play("h1h2 d4c3 h2h1 c3b2 h1h2 b2a2");
    EXPECT_EQ(BlackRing(line.Now()), 0);
}

// ---- checks

TEST(CheckDetection, EachKindChecksDirectly) {
    struct {
        const char *m_pFen, *m_pMove;
        const char* m_pChecker;
    } const rows[] = {
        {"7k/8/8/8/8/8/8/K5Q1 w", "g1h1", "h1"}, {"7k/8/8/8/8/8/8/K5R1 w", "g1h1", "h1"},
        {"7k/8/8/8/8/8/8/K1B5 w", "c1b2", "b2"}, {"7k/8/8/6N1/8/8/8/K7 w", "g5f7", "f7"},
        {"7k/8/6P1/8/8/8/8/K7 w", "g6g7", "g7"}, {"7k/8/8/8/8/8/8/K5Q1 w", "g1d4", "d4"},
    };
    for (const auto& row : rows) {
        CLine line(row.m_pFen);
        line.Play(row.m_pMove);
        EXPECT_EQ(line.Now().m_blackChecker, SquareOf(row.m_pChecker)) << row.m_pFen;
    }
}

TEST(CheckDetection, BlackChecksTheSameWay) {
    CLine line("k4q2/8/8/8/8/8/8/7K b");
    line.Play("f8h8");
    EXPECT_EQ(line.Now().m_whiteChecker, kH8);
    line.Play("h1g1");
    EXPECT_EQ(line.Now().m_whiteChecker, kNoChecker);
    line.Play("h8d4");
    EXPECT_EQ(line.Now().m_whiteChecker, SquareOf("d4"));
}

TEST(CheckDetection, NullCheckAfterAQuietReply) {
    CLine line("7k/8/8/8/8/8/8/K5R1 w");
    line.Play("g1h1");
    ASSERT_NE(line.Now().m_blackChecker, kNoChecker);
    line.Play("h8g8");
    EXPECT_EQ(line.Now().m_blackChecker, kNoChecker);
}

TEST(CheckDetection, WhiteOutOfCheckHasNoCheckerAnyMore) {
    CLine line("4r2k/8/8/8/8/8/8/4K3 w");
    line.Play("e1d1");
    EXPECT_EQ(line.Now().m_whiteChecker, kNoChecker);
}

TEST(CheckDetection, DiscoveredCheckNamesTheSliderBehind) {
    CLine line("4k3/8/8/8/4N3/8/8/K3R3 w");
    line.Play("e4c3");
    EXPECT_EQ(line.Now().m_blackChecker, kE1);
    CLine along("4k3/8/8/8/4R3/8/8/K3R3 w"); // moving along the line opens nothing
    along.Play("e4e2");
    EXPECT_EQ(along.Now().m_blackChecker, SquareOf("e2"));
}

TEST(CheckDetection, TwoCheckersAreADoubleCheck) {
    CLine line("4k3/8/8/8/4N3/8/8/K3R3 w");
    line.Play("e4f6");
    EXPECT_EQ(line.Now().m_blackChecker, kDoubleCheck);
    CLine black("k3r3/8/8/4n3/8/8/8/4K3 b");
    black.Play("e5f3");
    EXPECT_EQ(black.Now().m_whiteChecker, kDoubleCheck);
}

TEST(CheckDetection, CastledRookChecks) {
    CLine file("5k2/8/8/8/8/8/8/4K2R w");
    file.Play("e1g1");
    EXPECT_EQ(file.Now().m_blackChecker, kF1);
    CLine rank("8/8/8/8/8/8/8/2k1K2R w"); // along the first rank, over the square the king left
    rank.Play("e1g1");
    EXPECT_EQ(rank.Now().m_blackChecker, kF1);
    CLine none("6k1/8/8/8/8/8/8/4K2R w");
    none.Play("e1g1");
    EXPECT_EQ(none.Now().m_blackChecker, kNoChecker);
}

TEST(CheckDetection, EnPassantOpensLinesThroughBothPawns) {
    CLine rank("8/3p4/8/R3P2k/8/8/8/K7 b");
    rank.Play("d7d5 e5d6");
    EXPECT_EQ(rank.Now().m_blackChecker, SquareOf("a5"));
    CLine victim("6k1/3p4/8/4P3/8/1B6/8/K7 b"); // the double step closes the bishop's line, its capture opens it
    victim.Play("d7d5 e5d6");
    EXPECT_EQ(victim.Now().m_blackChecker, SquareOf("b3"));
    CLine source("7k/3p4/8/4P3/8/8/1B6/K7 b"); // a1-h8 passes the capturing pawn's square
    source.Play("d7d5 e5d6");
    EXPECT_EQ(source.Now().m_blackChecker, SquareOf("b2"));
}

TEST(CheckDetection, PromotedFigureChecksThroughThePawnsSquare) {
    CLine line("8/4P3/8/8/4k3/8/8/K7 w");
    line.Play("e7e8Q");
    EXPECT_EQ(line.Now().m_blackChecker, kE8);
    CLine knight("8/4P1k1/8/8/8/8/8/K7 w");
    knight.Play("e7e8N");
    EXPECT_EQ(knight.Now().m_blackChecker, kE8);
    CLine bishop("8/4P3/8/8/4k3/8/8/K7 w");
    bishop.Play("e7e8B");
    EXPECT_EQ(bishop.Now().m_blackChecker, kNoChecker);
}

// ---- mate still possible

TEST(BareKing, CaptureThatLeavesNoMatingMaterialIsRefused) {
    struct {
        const char *m_pName, *m_pFen, *m_pMove;
        bool m_bStands;
    } const rows[] = {
        {"lone bishop", "8/8/8/3p4/4B3/7k/8/K7 w", "e4d5", false},
        {"bare white king", "8/8/8/8/8/7k/1p6/K7 w", "a1b2", false},
        {"two bishops of one colour", "8/8/8/3p4/4B3/7k/8/K4B2 w", "e4d5", false},
        {"two bishops of opposite colours", "8/8/8/3p4/4B3/7k/8/K1B5 w", "e4d5", true},
        {"lone knight", "8/8/8/3p4/8/4N2k/8/K7 w", "e3d5", true},
        {"bishop and knight", "8/8/8/3p4/4B3/7k/8/K5N1 w", "e4d5", true},
        {"bishop and pawn", "8/8/8/3p4/4B3/7k/P7/K7 w", "e4d5", true},
        {"rook", "8/8/8/3p4/8/7k/8/K2R4 w", "d1d5", true},
        {"queen", "8/8/8/3p4/8/7k/8/K2Q4 w", "d1d5", true},
        {"pawn", "8/8/8/3p4/4P3/7k/8/K7 w", "e4d5", true},
    };
    for (const auto& row : rows) {
        CLine line(row.m_pFen);
        EXPECT_EQ(line.Try<kSolving>(row.m_pMove) != 0, row.m_bStands) << row.m_pName;
        if (row.m_bStands) {
            EXPECT_TRUE(HasBit(line.Tried().m_wKingState, kBareBlackKing)) << row.m_pName;
        }
        EXPECT_EQ(line.Try<kLegalityOnly>(row.m_pMove), 1) << row.m_pName << ": legal all the same";
    }
}

TEST(BareKing, BitWaitsForTheLastFigure) {
    CLine line("8/8/8/3p4/8/4N2k/p7/K7 w");
    line.Play("e3d5");
    EXPECT_FALSE(HasBit(line.Now().m_wKingState, kBareBlackKing));
    line.Play("h3h4 a1a2");
    EXPECT_TRUE(HasBit(line.Now().m_wKingState, kBareBlackKing));
}

// ---- rook's pawn and wrong bishop

TEST(RookPawnMark, IsSetWhenABishopDoesNotControlTheCorner) {
    struct {
        const char *m_pName, *m_pFen, *m_pMove;
        bool m_bMarked;
    } const rows[] = {
        {"h-pawn, light bishop", "k7/8/8/8/8/5B2/7P/K7 w", "h2h3", true},
        {"h-pawn, dark bishop", "k7/8/8/8/5B2/8/7P/K7 w", "h2h3", false},
        {"a-pawn, dark bishop", "7k/8/8/8/5B2/8/P7/K7 w", "a2a3", true},
        {"a-pawn, light bishop", "7k/8/8/8/8/5B2/P7/K7 w", "a2a3", false},
        {"bishops of both colours", "k7/8/8/8/5B2/5B2/7P/K7 w", "h2h3", false},
        {"two bishops of the wrong colour", "k7/8/8/8/8/5B2/6BP/K7 w", "h2h3", true},
        {"with a rook", "k7/8/8/8/8/5B2/7P/K1R5 w", "h2h3", false},
        {"with a knight", "k7/8/8/8/8/5B2/7P/K1N5 w", "h2h3", false},
        {"pawn on another file", "k7/8/8/8/8/5B2/6P1/K7 w", "g2g3", false},
        {"pawn captures to the rook's file", "k7/8/8/8/8/5B1p/6P1/K7 w", "g2h3", true},
        {"bishop captures", "k7/8/8/3p4/8/5B2/7P/K7 w", "f3d5", true},
        {"bishop moves quietly", "k7/8/8/8/8/5B2/7P/K7 w", "f3e2", false},
    };
    for (const auto& row : rows) {
        CLine line(row.m_pFen);
        line.Play(row.m_pMove);
        EXPECT_EQ(HasBit(line.Now().m_wBlackState, kRookPawnWrongBishop), row.m_bMarked) << row.m_pName;
    }
}

TEST(RookPawnMark, IsClearedWhenThePawnLeavesItsFile) {
    CLine line("k7/8/8/8/6p1/5B2/7P/K7 w");
    line.Play("h2h3");
    ASSERT_TRUE(HasBit(line.Now().m_wBlackState, kRookPawnWrongBishop));
    line.Play<kLegalityOnly>("a8a7 h3g4");
    EXPECT_FALSE(HasBit(line.Now().m_wBlackState, kRookPawnWrongBishop));
}

// ---- precalculated data

TEST(PrecalcBit, CapturesAndPromotionsWithTooManyFiguresClearIt) {
    CLine quiet("7k/pppp4/8/8/8/8/PPPP4/K7 w");
    quiet.Root().m_wKingState |= kPrecalcCanAnswer;
    quiet.Play("a2a3");
    EXPECT_TRUE(HasBit(quiet.Now().m_wKingState, kPrecalcCanAnswer)) << "the material is the same";
    CLine capture("7k/pppp4/1P6/8/8/8/1PPP4/K7 w");
    capture.Root().m_wKingState |= kPrecalcCanAnswer;
    capture.Play("b6a7");
    EXPECT_FALSE(HasBit(capture.Now().m_wKingState, kPrecalcCanAnswer));
    CLine black("7k/pppp4/1P6/8/8/8/1PPP4/K7 b");
    black.Root().m_wKingState |= kPrecalcCanAnswer;
    black.Play("a7b6");
    EXPECT_FALSE(HasBit(black.Now().m_wKingState, kPrecalcCanAnswer));
    CLine promotion("7k/Pppp4/8/8/8/8/1PPP4/K7 w");
    promotion.Root().m_wKingState |= kPrecalcCanAnswer;
    promotion.Play("a7a8Q");
    EXPECT_FALSE(HasBit(promotion.Now().m_wKingState, kPrecalcCanAnswer));
}

// ---- opposite bishops

TEST(BishopMode, WhiteKeepsOffTheSquaresOfTheRemovedBishop) {
    // Bit 0 of the mode is the colour of the removed bishop's squares: 1 light, 2 dark.
    CLine light = WithBishopMode("7k/8/8/8/8/8/8/K6B w", 1);
    EXPECT_EQ(light.Try("a1b1"), 0);
    EXPECT_EQ(light.Try("a1a2"), 0);
    EXPECT_EQ(light.Try("a1b2"), 1);
    CLine dark = WithBishopMode("7k/8/8/8/8/8/8/K6B w", 2);
    EXPECT_EQ(dark.Try("a1b1"), 1);
    EXPECT_EQ(dark.Try("a1a2"), 1);
    EXPECT_EQ(dark.Try("a1b2"), 0);
}

TEST(BishopMode, WhitePawnsDoNotStepTwice) {
    for (const std::uint8_t nMode : {std::uint8_t{1}, std::uint8_t{2}}) {
        CLine line = WithBishopMode("7k/8/8/8/8/8/P6P/K7 w", nMode);
        EXPECT_EQ(line.Try("a2a4"), 0);
        EXPECT_EQ(line.Try("h2h4"), 0);
        EXPECT_EQ(line.Try("a2a3") + line.Try("h2h3"), 1) << "one of the two squares is of the bishop's colour";
    }
}

TEST(BishopMode, RulesOfChessAloneKnowNoMode) {
    CLine line = WithBishopMode("7k/8/8/8/8/8/P7/K7 w", 1);
    EXPECT_EQ(line.Try<kLegalityOnly>("a2a4"), 1);
    EXPECT_EQ(line.Try<kLegalityOnly>("a1b1"), 1);
}

TEST(BishopMode, BlackPassesWithoutTouchingTheBoard) {
    CLine line = WithBishopMode("7k/p7/8/8/8/8/P7/K7 b", 1);
    line.Root().m_whiteChecker = 12;
    line.Context().m_repetition[line.Root().m_nMoves] = 3;
    const TChessboard before = line.Root();
    ASSERT_EQ(line.Try("h8h8"), kMoveStands);
    const TChessboard& after = line.Tried();
    EXPECT_EQ(after.m_board, before.m_board);
    EXPECT_EQ(WhiteMen(after), 1);
    EXPECT_EQ(BlackMen(after), 1);
    EXPECT_EQ(after.m_bySideState, before.m_bySideState);
    EXPECT_EQ(after.m_whiteChecker, kNoChecker);
    EXPECT_EQ(after.m_nMoves + 1, before.m_nMoves);
    EXPECT_TRUE(IsNullMove(after.m_lastMove));
    EXPECT_EQ(line.Context().m_repetition[before.m_nMoves], 0);
}

// ---- pawns that may not move

TEST(MarkedPawn, MayNotAdvanceButCapture) {
    CLine line("7k/4p3/3P4/8/8/8/8/K7 b");
    line.Root().m_board[SquareOf("e7")] |= kPawnMayNotAdvance;
    EXPECT_EQ(line.Try("e7e6"), kIllegalMove);
    EXPECT_EQ(line.Try("e7e5"), kIllegalMove);
    EXPECT_NE(line.Try("e7d6"), kIllegalMove);
    EXPECT_EQ(line.Try<kLegalityOnly>("e7e6"), kMoveStands) << "a legal move all the same";
}

TEST(MarkedPawn, MayCaptureInPassing) {
    CLine line("7k/8/8/8/4p3/8/3P4/K6R w");
    line.Root().m_board[SquareOf("e4")] |= kPawnMayNotAdvance;
    line.Play("d2d4");
    EXPECT_EQ(line.Try("e4d3"), kMoveStands);
    EXPECT_EQ(line.Try("e4e3"), kIllegalMove);
}

TEST(ForbiddenPly, NoPawnMovesThereOtherFiguresDo) {
    CLine line("7k/4p3/3P4/8/8/8/8/KR6 b");
    line.Context().m_nNoPawnMovePly = line.Root().m_nMoves;
    EXPECT_EQ(line.Try("e7e6"), kIllegalMove);
    EXPECT_EQ(line.Try("e7d6"), kIllegalMove);
    EXPECT_EQ(line.Try("h8g8"), kMoveStands);
    line.Context().m_nNoPawnMovePly = static_cast<std::uint16_t>(line.Root().m_nMoves - 2);
    EXPECT_EQ(line.Try("e7e6"), kMoveStands);
}

// ---- watched figures

TEST(WatchedFigures, CapturedOneIsCrossedOut) {
    CLine line("7k/8/8/3r4/4P3/8/8/K7 w");
    line.Root().m_blockedFigures[2] = SquareOf("d5");
    line.Root().m_blockedFigures[3] = kH8;
    line.Play("e4d5");
    EXPECT_EQ(line.Now().m_blockedFigures[2], kNoSquare);
    EXPECT_EQ(line.Now().m_blockedFigures[3], kH8);
}

TEST(WatchedFigures, PawnTakenInPassingIsCrossedOut) {
    CLine line("7k/3p4/8/4P3/8/8/8/K7 b");
    line.Play("d7d5");
    line.Now().m_blockedFigures[0] = SquareOf("d5");
    line.Play("e5d6");
    EXPECT_EQ(line.Now().m_blockedFigures[0], kNoSquare);
}

TEST(WatchedFigures, CastlingRookIsFollowed) {
    CLine kingSide("r3k2r/8/8/8/8/8/8/4K3 b");
    kingSide.Root().m_blockedFigures[0] = kH8;
    kingSide.Root().m_blockedFigures[1] = kA8;
    kingSide.Play("e8g8");
    EXPECT_EQ(kingSide.Now().m_blockedFigures[0], kF8);
    EXPECT_EQ(kingSide.Now().m_blockedFigures[1], kA8);
    CLine queenSide("r3k2r/8/8/8/8/8/8/4K3 b");
    queenSide.Root().m_blockedFigures[0] = kH8;
    queenSide.Root().m_blockedFigures[1] = kA8;
    queenSide.Play("e8c8");
    EXPECT_EQ(queenSide.Now().m_blockedFigures[0], kH8);
    EXPECT_EQ(queenSide.Now().m_blockedFigures[1], kD8);
}

TEST(WatchedFigures, StepIsFollowed) {
    CLine line("7k/8/8/3r4/8/8/8/K7 b");
    line.Root().m_blockedFigures[0] = SquareOf("d5");
    line.Play("d5d6");
    EXPECT_EQ(line.Now().m_blockedFigures[0], SquareOf("d6"));
}

TEST(WatchedFigures, OneThatGoesFurtherIsWatchedNoLonger) {
    CLine line("7k/8/8/3r4/8/8/8/K7 b");
    line.Root().m_blockedFigures[0] = SquareOf("d5");
    line.Root().m_blockedFigures[1] = kH8;
    line.Play("d5d7");
    EXPECT_EQ(line.Now().m_blockedFigures[0], kNoSquare);
    EXPECT_EQ(line.Now().m_blockedFigures[1], kH8);
}

} // namespace
} // namespace quillon::test
