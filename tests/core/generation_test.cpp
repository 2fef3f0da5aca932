#include "core/generation.h"

#include <gtest/gtest.h>

#include "core/positions.h"

namespace quillon::test {
namespace {

TTexts WhiteFrom(CLine& line, std::string_view square) {
    return Listed(GenerateWhiteFigureMoves, line.Now(), SquareOf(square));
}
TTexts BlackFrom(CLine& line, std::string_view square) {
    return Listed(GenerateBlackFigureMoves, line.Now(), SquareOf(square));
}

// ---- order of emission

TEST(GeneratorOrder, KingGoesDownThenUpThenAside) {
    CLine white("8/8/8/7k/8/3K4/8/8 w");
    EXPECT_EQ(WhiteFrom(white, "d3"), Words("d3d2 d3c2 d3e2 d3d4 d3c4 d3e4 d3c3 d3e3"));
    CLine black("8/8/8/3k4/8/8/8/7K b");
    EXPECT_EQ(BlackFrom(black, "d5"), Words("d5d4 d5c4 d5e4 d5d6 d5c6 d5e6 d5c5 d5e5"));
}

TEST(GeneratorOrder, KingsCastlingComesLastKingSideFirst) {
    CLine white("4k3/8/8/8/8/8/8/R3K2R w");
    EXPECT_EQ(WhiteFrom(white, "e1"), Words("e1e2 e1d2 e1f2 e1d1 e1f1 e1g1 e1c1"));
    CLine black("r3k2r/8/8/8/8/8/8/4K3 b");
    EXPECT_EQ(BlackFrom(black, "e8"), Words("e8e7 e8d7 e8f7 e8d8 e8f8 e8g8 e8c8"));
}

TEST(GeneratorOrder, RookGoesUpDownRightLeft) {
    CLine white("8/3p4/8/8/1N1R1p2/8/3P4/K6k w");
    EXPECT_EQ(WhiteFrom(white, "d4"), Words("d4d5 d4d6 d4d7 d4d3 d4e4 d4f4 d4c4"));
    CLine black("8/3P4/8/8/1n1r1P2/8/3p4/K6k b");
    EXPECT_EQ(BlackFrom(black, "d4"), Words("d4d5 d4d6 d4d7 d4d3 d4e4 d4f4 d4c4"));
}

TEST(GeneratorOrder, BishopGoesAlongFourDiagonalsNearSquaresFirst) {
    CLine line("8/8/8/6p1/3B4/2P5/5p2/K6k w");
    EXPECT_EQ(WhiteFrom(line, "d4"), Words("d4e5 d4f6 d4g7 d4h8 d4c5 d4b6 d4a7 d4e3 d4f2"));
}

TEST(GeneratorOrder, QueenMovesAsRookThenAsBishop) {
    for (const char* square : {"d4", "a1", "h5", "e8"}) {
        CLine queen("7k/1p6/8/8/8/8/6P1/2K5 w"), rook = CLine("7k/1p6/8/8/8/8/6P1/2K5 w"),
                                                 bishop = CLine("7k/1p6/8/8/8/8/6P1/2K5 w");
        PutFigure(queen.Root(), SquareOf(square), kWhiteQueen);
        PutFigure(rook.Root(), SquareOf(square), kWhiteRook);
        PutFigure(bishop.Root(), SquareOf(square), kWhiteBishop);
        TTexts expected = WhiteFrom(rook, square);
        for (const std::string& move : WhiteFrom(bishop, square))
            expected.push_back(move);
        EXPECT_EQ(WhiteFrom(queen, square), expected) << square;
    }
}

TEST(GeneratorOrder, BlackQueenAlsoMovesAsRookFirst) {
    CLine line("k7/8/8/8/8/8/8/q1K5 b");
    const TTexts moves = BlackFrom(line, "a1");
    ASSERT_EQ(moves.size(), 15u);
    EXPECT_EQ(moves.front(), "a1a2");
    EXPECT_EQ(moves[7], "a1c1");
    EXPECT_EQ(moves.back(), "a1h8");
}

TEST(GeneratorOrder, KnightGoesByRisingSquare) {
    CLine line("7k/8/8/8/3N4/8/8/K7 w");
    EXPECT_EQ(WhiteFrom(line, "d4"), Words("d4c2 d4e2 d4b3 d4f3 d4b5 d4f5 d4c6 d4e6"));
}

TEST(GeneratorOrder, PawnStepsThenDoubleStepsThenCapturesLeftAndRight) {
    CLine white("7k/8/8/8/8/3p1p2/4P3/K7 w");
    EXPECT_EQ(WhiteFrom(white, "e2"), Words("e2e3 e2e4 e2d3 e2f3"));
    CLine black("7k/4p3/3P1P2/8/8/8/8/K7 b");
    EXPECT_EQ(BlackFrom(black, "e7"), Words("e7e6 e7e5 e7d6 e7f6"));
}

TEST(GeneratorOrder, PromotionsAppearFourTimesQueenFirstCapturesToo) {
    CLine white("3r1n1k/4P3/8/8/8/8/8/K7 w");
    EXPECT_EQ(WhiteFrom(white, "e7"), Words("e7e8Q e7e8R e7e8B e7e8N e7d8Q e7d8R e7d8B e7d8N e7f8Q e7f8R e7f8B e7f8N"));
    CLine black("7k/8/8/8/8/8/4p3/K2R1N2 b");
    EXPECT_EQ(BlackFrom(black, "e2"), Words("e2e1Q e2e1R e2e1B e2e1N e2d1Q e2d1R e2d1B e2d1N e2f1Q e2f1R e2f1B e2f1N"));
}

TEST(GeneratorOrder, FullListScansTheSquaresInOrder) {
    CLine line("6k1/8/8/8/3P4/1N6/8/K6R w");
    EXPECT_EQ(line.Moves(), Words("a1a2 a1b2 a1b1 h1h2 h1h3 h1h4 h1h5 h1h6 h1h7 h1h8 h1g1 h1f1 h1e1 h1d1 h1c1 h1b1 "
                                  "b3c1 b3d2 b3a5 b3c5 d4d5"));
}

TEST(GeneratorOrder, FigureByFigureGivesTheFullListInParts) {
    WalkRandomGames<kLegalityOnly>(41, 60, 40, [](CLine& line, const auto&) {
        const TChessboard& b = line.Now();
        const bool bWhite = IsWhiteToMove(b);
        if ((bWhite ? b.m_whiteChecker : b.m_blackChecker) != kNoChecker)
            return;
        TTexts parts;
        int square = 0;
        while (true) {
            TMove list[kMaxMoves];
            const int from = square;
            const int count =
                bWhite ? GenerateNextWhiteFigure(b, square, list) : GenerateNextBlackFigure(b, square, list);
            if (count == 0)
                break;
            ASSERT_GT(square, from);
            for (int i = 0; i < count; ++i) {
                ASSERT_EQ(list[i].m_nFrom + 1, square);
                parts.push_back(TextOf(list[i]));
            }
        }
        ASSERT_EQ(square, kSquares);
        ASSERT_EQ(parts, line.Moves());
    });
}

// ---- evasions

TEST(Evasions, KingThenCapturesThenInterpositionsFromTheKingOutwards) {
    CLine white("1R6/4B2k/2N5/8/K6r/8/1P6/8 w");
    EXPECT_EQ(white.Moves(), Words("a4a3 a4b3 a4a5 a4b5 a4b4 e7h4 b2b4 c6b4 e7b4 b8b4 c6d4"));
    CLine black("8/1p6/8/k6R/8/2n5/4b2K/1r6 b");
    EXPECT_EQ(black.Moves(), Words("a5a4 a5b4 a5a6 a5b6 a5b5 e2h5 b7b5 c3b5 e2b5 b1b5 c3d5"));
}

TEST(Evasions, PawnArrivalsOnTheLastRankAreFourPromotions) {
    CLine white("K6r/2P3P1/8/8/8/8/8/7k w");
    EXPECT_EQ(white.Moves(), Words("a8a7 a8b7 a8b8 g7h8Q g7h8R g7h8B g7h8N c7c8Q c7c8R c7c8B c7c8N "
                                   "g7g8Q g7g8R g7g8B g7g8N"));
    CLine black("7K/8/8/8/8/8/2p3p1/k6R b");
    EXPECT_EQ(black.Moves(), Words("a1a2 a1b2 a1b1 g2h1Q g2h1R g2h1B g2h1N c2c1Q c2c1R c2c1B c2c1N "
                                   "g2g1Q g2g1R g2g1B g2g1N"));
}

TEST(Evasions, DoubleCheckLeavesOnlyTheKing) {
    CLine white("4r2k/8/8/8/8/3n4/8/R3K1N1 w");
    ASSERT_EQ(white.Root().m_whiteChecker, kDoubleCheck);
    EXPECT_EQ(white.Moves(), Words("e1e2 e1d2 e1f2 e1d1 e1f1"));
    CLine black("r3k1n1/8/3N4/8/8/8/8/4R2K b");
    EXPECT_EQ(black.Moves(), Words("e8e7 e8d7 e8f7 e8d8 e8f8"));
}

TEST(Evasions, KnightAndPawnAreOnlyCaptured) {
    CLine knight("7k/8/8/8/8/2n5/8/K2BR3 w"); // the knight c3 does not check a1
    EXPECT_EQ(knight.Root().m_whiteChecker, kNoChecker);
    CLine check("7k/8/8/8/8/1n6/8/K2BR3 w");
    EXPECT_EQ(check.Moves(), Words("a1a2 a1b2 a1b1 d1b3"));
}

TEST(Evasions, CheckingPawnIsTakenInPassingLast) {
    CLine white("7k/3p4/8/2P1P3/4K3/8/8/8 b");
    white.Play("d7d5");
    ASSERT_EQ(white.Now().m_whiteChecker, SquareOf("d5"));
    EXPECT_EQ(white.Moves(), Words("e4e3 e4d3 e4f3 e4d5 e4f5 e4d4 e4f4 c5d6 e5d6"));
    CLine black("8/8/8/4k3/2p1p3/8/3P4/7K w");
    black.Play("d2d4");
    EXPECT_EQ(black.Moves(), Words("e5d4 e5f4 e5e6 e5d6 e5f6 e5d5 e5f5 c4d3 e4d3"));
}

TEST(Evasions, NoCastlingOutOfCheck) {
    CLine line("4k3/8/8/8/4r3/8/8/R3K2R w");
    EXPECT_FALSE(line.Has("e1g1"));
    EXPECT_FALSE(line.Has("e1c1"));
}

// ---- en passant

TEST(EnPassantGeneration, LegalAfterTheDoubleStepOnly) {
    CLine line("7k/3p4/8/4P3/8/8/8/K7 b");
    line.Play("d7d5");
    EXPECT_TRUE(line.Has("e5d6"));
    line.Play("a1a2 h8g8");
    EXPECT_FALSE(line.Has("e5d6"));
}

TEST(EnPassantGeneration, NeverInTheRoot) {
    CLine line("7k/8/8/3pP3/8/8/8/K7 w");
    line.Root().m_lastMove = MoveOf("d7d5"); // a root's last move means nothing
    EXPECT_FALSE(line.Has("e5d6"));
}

TEST(EnPassantGeneration, NotAfterTwoSingleSteps) {
    CLine line("7k/3p4/8/4P3/8/8/8/K7 b");
    line.Play("d7d6 a1a2 d6d5");
    EXPECT_FALSE(line.Has("e5d6"));
}

TEST(EnPassantGeneration, NotAfterAFiguresMoveOfTheSameSquares) {
    CLine line("3r3k/8/8/4P3/8/8/8/K7 b");
    line.Play("d8d7 a1a2 d7d5");
    EXPECT_FALSE(line.Has("e5d6"));
}

TEST(EnPassantGeneration, FollowsTheCaptureTowardsItsFile) {
    CLine left("5r1k/3p4/5p2/4P3/8/8/8/K7 b");
    left.Play("d7d5");
    EXPECT_EQ(WhiteFrom(left, "e5"), Words("e5e6 e5d6 e5f6"));
    CLine right("7k/5p2/3p4/4P3/8/8/8/K7 b");
    right.Play("f7f5");
    EXPECT_EQ(WhiteFrom(right, "e5"), Words("e5e6 e5d6 e5f6"));
}

TEST(EnPassantGeneration, BlackTakesOnTheThirdRank) {
    CLine line("7k/8/8/8/4p3/8/3P4/K7 w");
    line.Play("d2d4");
    EXPECT_EQ(BlackFrom(line, "e4"), Words("e4e3 e4d3"));
}

TEST(EnPassantGeneration, MarkedPawnsAreStillPawns) {
    CLine capturer("7k/8/8/8/4p3/8/3P4/K7 w");
    capturer.Root().m_board[SquareOf("e4")] |= kPawnMayNotAdvance;
    capturer.Play("d2d4");
    EXPECT_TRUE(capturer.Has("e4d3"));
    CLine victim("7k/3p4/8/4P3/8/8/8/K7 b");
    victim.Play("d7d5");
    victim.Now().m_board[SquareOf("d5")] |= kPawnMayNotAdvance;
    EXPECT_TRUE(victim.Has("e5d6"));
}

// ---- castling

TEST(CastlingGeneration, NeedsEmptySquaresBetween) {
    for (const char* fen : {"4k3/8/8/8/8/8/8/RN2K1NR w", "4k3/8/8/8/8/8/8/R1B1KB1R w", "4k3/8/8/8/8/8/8/R2QKB1R w"}) {
        CLine line(fen);
        EXPECT_FALSE(line.Has("e1g1")) << fen;
        EXPECT_FALSE(line.Has("e1c1")) << fen;
    }
}

TEST(CastlingGeneration, KingDoesNotPassNorReachAnAttackedSquare) {
    struct {
        const char* m_pFen;
        bool m_bKingSide, m_bQueenSide;
    } const rows[] = {
        {"4k3/8/8/8/8/8/5r2/R3K2R w", false, true}, // f1
        {"4k3/8/8/8/8/8/6r1/R3K2R w", false, true}, // g1
        {"4k3/8/8/8/8/8/3r4/R3K2R w", true, false}, // d1
        {"4k3/8/8/8/8/8/2r5/R3K2R w", true, false}, // c1
        {"4k3/8/8/8/8/8/1r6/R3K2R w", true, true},  // b1 is passed by the rook alone
        {"4k3/8/8/8/8/8/r6r/R3K2R w", true, true},  // the rooks may be attacked
        {"8/8/8/8/8/8/6k1/R3K2R w", false, true},   // the enemy king attacks too
    };
    for (const auto& row : rows) {
        CLine line(row.m_pFen);
        EXPECT_EQ(line.Has("e1g1"), row.m_bKingSide) << row.m_pFen;
        EXPECT_EQ(line.Has("e1c1"), row.m_bQueenSide) << row.m_pFen;
    }
}

TEST(CastlingGeneration, BlackIsTheMirror) {
    CLine both("r3k2r/1R6/8/8/8/8/8/4K3 b");
    EXPECT_TRUE(both.Has("e8g8"));
    EXPECT_TRUE(both.Has("e8c8"));
    CLine kingSide("r3k2r/2R5/8/8/8/8/8/4K3 b");
    EXPECT_TRUE(kingSide.Has("e8g8"));
    EXPECT_FALSE(kingSide.Has("e8c8"));
    CLine queenSide("r3k2r/6R1/8/8/8/8/8/4K3 b");
    EXPECT_FALSE(queenSide.Has("e8g8"));
    EXPECT_TRUE(queenSide.Has("e8c8"));
}

TEST(CastlingRight, RootDiagramAllowsWhateverTheBoardAllows) {
    CLine line("r3k2r/8/8/8/8/8/8/R3K2R w");
    for (const bool bKingSide : {true, false}) {
        EXPECT_TRUE(HasWhiteCastlingRight(line.Root(), bKingSide));
        EXPECT_TRUE(HasBlackCastlingRight(line.Root(), bKingSide));
    }
}

TEST(CastlingRight, RookThatLeftAndCameBackMayNotCastle) {
    CLine line("4k3/p7/8/8/8/8/8/R3K2R w");
    line.Play("h1h2 a7a6 h2h1 a6a5");
    EXPECT_FALSE(line.Has("e1g1"));
    EXPECT_TRUE(line.Has("e1c1"));
}

TEST(CastlingRight, KingThatLeftAndCameBackMayNotCastle) {
    CLine line("4k3/p7/8/8/8/8/8/R3K2R w");
    line.Play("e1e2 a7a6 e2e1 a6a5");
    EXPECT_FALSE(line.Has("e1g1"));
    EXPECT_FALSE(line.Has("e1c1"));
}

TEST(CastlingRight, RookThatLeavesForGoodFailsTheBoardTest) {
    CLine line("4k3/p7/8/8/8/8/8/R3K2R w");
    line.Play("h1h2 a7a6");
    EXPECT_FALSE(HasWhiteCastlingRight(line.Now(), true));
    EXPECT_TRUE(HasWhiteCastlingRight(line.Now(), false));
}

TEST(CastlingRight, RookCapturedOnItsHomeSquareAndReplacedMayNotCastle) {
    CLine line("4k3/8/8/8/8/6n1/p6R/R3K2R w");
    line.Play("e1d1 g3h1 h2h1 a2a1Q");
    EXPECT_FALSE(HasWhiteCastlingRight(line.Now(), true));
    CLine kept("4k3/p7/8/8/8/6n1/7R/R3K2R b");
    kept.Play("g3h1 h2h1 a7a6");
    EXPECT_FALSE(kept.Has("e1g1"));
    EXPECT_TRUE(kept.Has("e1c1"));
}

TEST(CastlingRight, RookArrivingWhereTheRootHadNoneMayNotCastle) {
    CLine line("4k3/p7/8/8/8/8/R7/4K2R w");
    line.Play("a2a1 a7a6");
    EXPECT_FALSE(line.Has("e1c1"));
    EXPECT_TRUE(line.Has("e1g1"));
}

TEST(CastlingRight, KingArrivingWhereTheRootHadNoneMayNotCastle) {
    CLine line("7k/p7/8/8/8/8/4K3/R6R w");
    line.Play("e2e1 a7a6");
    EXPECT_FALSE(line.Has("e1c1"));
    EXPECT_FALSE(line.Has("e1g1"));
}

TEST(CastlingRight, BlackRookThatLeftAndCameBackMayNotCastle) {
    CLine line("r3k2r/8/8/8/8/8/P7/4K3 b");
    line.Play("a8b8 a2a3 b8a8 a3a4");
    EXPECT_FALSE(line.Has("e8c8"));
    EXPECT_TRUE(line.Has("e8g8"));
}

TEST(CastlingRight, ComparesWithTheRootOfTheProblemNotOfTheRun) {
    // A nested run starts from a position inside the game; the diagram of the problem still decides.
    CLine line("4k3/p7/8/8/8/8/R7/4K2R w");
    line.Play("a2a1 a7a6");
    TChessboard nested = line.Now();
    nested.m_pPrevious = nullptr;
    EXPECT_FALSE(HasWhiteCastlingRight(nested, false));
    EXPECT_TRUE(HasWhiteCastlingRight(nested, true));
}

// ---- against the reference

class GeneratorsAgainstReference : public testing::TestWithParam<int> {};

TEST_P(GeneratorsAgainstReference, ListsFilteredByTheMakerAreTheLegalMoves) {
    int nEnPassants = 0, nCastlings = 0, nEvasions = 0;
    WalkRandomGames<kLegalityOnly>(
        4100u + static_cast<std::uint64_t>(GetParam()), 400, 40, [&](CLine& line, const reference::Position& truth) {
            const TTexts legal = SortedTexts(reference::LegalMoves(truth));
            const TTexts moves = line.Moves();
            ASSERT_EQ(line.StandingMoves(), legal);
            ASSERT_LE(moves.size(), 218u);
            nEvasions += reference::InCheck(truth) ? 1 : 0;
            for (const std::string& move : legal) {
                line.Try<kLegalityOnly>(move);
                nEnPassants += line.Tried().m_lastMove.m_nEnPassant;
                nCastlings += KindOf(line.Tried().m_board[SquareOf(move.substr(2))]) == kKing &&
                              AbsDiff(SquareOf(move), SquareOf(move.substr(2))) == 2;
            }
        });
    EXPECT_GT(nEnPassants, 20);
    EXPECT_GT(nCastlings, 100);
    EXPECT_GT(nEvasions, 1000);
}

TEST_P(GeneratorsAgainstReference, ChecksFilteredByTheMakerAreTheLegalMovesThatCheck) {
    int nChecks = 0;
    WalkRandomGames<kLegalityOnly>(
        4200u + static_cast<std::uint64_t>(GetParam()), 400, 40, [&](CLine& line, const reference::Position& truth) {
            if (truth.toMove != reference::Side::White)
                return;
            std::vector<reference::Move> checks = reference::LegalMoves(truth);
            std::erase_if(
                checks, [&](const reference::Move move) { return !reference::InCheck(reference::Play(truth, move)); });
            ASSERT_EQ(line.Standing(Listed(GenerateWhiteChecks, line.Now())), SortedTexts(checks));
            nChecks += static_cast<int>(checks.size());
        });
    EXPECT_GT(nChecks, 5000);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GeneratorsAgainstReference, testing::Values(1, 2, 3, 4));

// ---- checks by name

TTexts Checks(std::string_view fen) { return Listed(GenerateWhiteChecks, CLine(fen).Root()); }

TEST(CheckGeneration, CastledRookChecksOnTheFileOfItsArrival) {
    EXPECT_EQ(Checks("5k2/8/8/8/8/8/8/4K2R w"), Words("e1g1 h1h8 h1f1"));
    EXPECT_EQ(Checks("3k4/8/8/8/8/8/8/R3K3 w"), Words("a1a8 a1d1 e1c1"));
}

TEST(CheckGeneration, KingDiscoversByLeavingTheLine) {
    EXPECT_EQ(Sorted(Checks("k7/8/8/8/K7/8/8/R7 w")), Words("a4b3 a4b4 a4b5"));
}

TEST(CheckGeneration, EnPassantOpensARank) {
    CLine line("8/3p4/8/R3P2k/8/8/8/K7 b");
    line.Play("d7d5");
    EXPECT_EQ(Listed(GenerateWhiteChecks, line.Now()), Words("e5d6"));
}

TEST(CheckGeneration, PromotionChecksThroughThePawnsOwnSquare) {
    EXPECT_EQ(Checks("8/4P3/8/8/4k3/8/8/K7 w"), Words("e7e8Q e7e8R"));
}

TEST(CheckGeneration, FollowsTheSquaresInOrder) {
    // The king f6 stands between queen and king: of its moves those count that leave the diagonal.
    EXPECT_EQ(Checks("7k/8/5K2/6N1/3Q4/8/8/R7 w"), Words("a1a8 a1h1 d4d8 d4h4 g5f7 f6f5 f6f7 f6e7 f6e6 f6g6"));
}

} // namespace
} // namespace quillon::test
