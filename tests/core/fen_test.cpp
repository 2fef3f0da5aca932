#include "core/fen.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "core/chess_exception.h"
#include "played_game.h"
#include "support/reference_chess.h"

namespace quillon {
namespace {

using test::CPlayedGame;

constexpr char kStart[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";
constexpr char kCastles[] = "r3k2r/8/8/8/8/8/8/R3K2R";

TFigure At(const TChessboard& b, std::string_view square) { return b.m_board[String2Square(square)]; }

std::string FailureOf(std::string_view text) {
    TChessboard b = EmptyChessboard();
    try {
        static_cast<void>(ReadFEN(b, text));
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(ReadFEN, PlacementRunsFromRankEightToRankOne) {
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, "K7/1q6/2R5/3b4/4N3/5p2/6P1/7k"));
    EXPECT_EQ(At(b, "a8"), kWhiteKing);
    EXPECT_EQ(At(b, "b7"), kBlackQueen);
    EXPECT_EQ(At(b, "c6"), kWhiteRook);
    EXPECT_EQ(At(b, "d5"), kBlackBishop);
    EXPECT_EQ(At(b, "e4"), kWhiteKnight);
    EXPECT_EQ(At(b, "f3"), kBlackPawn);
    EXPECT_EQ(At(b, "g2"), kWhitePawn);
    EXPECT_EQ(At(b, "h1"), kBlackKing);
    EXPECT_EQ(std::count(b.m_board.begin(), b.m_board.end(), kNoFigure), 56);
}

TEST(ReadFEN, AllTwelveLettersAreRead) {
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, "8/8/8/8/8/8/KQRBNP2/kqrbnp2"));
    const std::array white{kWhiteKing, kWhiteQueen, kWhiteRook, kWhiteBishop, kWhiteKnight, kWhitePawn};
    const std::array black{kBlackKing, kBlackQueen, kBlackRook, kBlackBishop, kBlackKnight, kBlackPawn};
    for (int file = 0; file < 6; ++file) {
        EXPECT_EQ(b.m_board[SquareAt(file, 1)], white[static_cast<std::size_t>(file)]);
        EXPECT_EQ(b.m_board[SquareAt(file, 0)], black[static_cast<std::size_t>(file)]);
    }
}

TEST(ReadFEN, RunsOfEmptySquaresAddUp) {
    TChessboard b = EmptyChessboard();
    static_cast<void>(ReadFEN(b, "44/8/8/8/8/8/8/1111K21"));
    EXPECT_EQ(At(b, "e1"), kWhiteKing);
    EXPECT_EQ(WriteFEN(b, false), "8/8/8/8/8/8/8/4K3");
}

TEST(ReadFEN, OldBoardIsOverwritten) {
    TChessboard b = ChessboardFromFEN(kStart);
    static_cast<void>(ReadFEN(b, "8/8/8/8/8/8/8/K6k"));
    EXPECT_EQ(WriteFEN(b, false), "8/8/8/8/8/8/8/K6k");
}

TEST(ReadFEN, OtherFieldsAreNotTouched) {
    TChessboard b = ChessboardFromFEN(kStart);
    b.m_nMoves = 7;
    b.m_wKingState = kBareBlackKing;
    static_cast<void>(ReadFEN(b, "8/8/8/8/8/8/8/K6k b - E3 0 1"));
    EXPECT_EQ(b.m_nMoves, 7);
    EXPECT_EQ(b.m_wKingState, kBareBlackKing);
    EXPECT_EQ(b.m_whitePawns, 8);
}

TEST(ReadFEN, BadTextNamesThePlace) {
    const struct {
        std::string_view m_text;
        const char* m_message;
    } rows[] = {
        {"", "FEN: the figure field is empty"},
        {" ", "FEN: the figure field is empty"},
        {" 8/8/8/8/8/8/8/K6k w - - 0 1", "FEN: the figure field is empty"},
        {"8/8/8/8/8/8/8", "FEN: fewer than eight ranks"},
        {"8/8/8/8/8/8/8 w - -", "FEN: fewer than eight ranks"},
        {"8", "FEN: fewer than eight ranks"},
        {"8/8/8/8/8/8/8/8/8", "FEN: more than eight ranks"},
        {"8/8/8/8/8/8/8/8/", "FEN: more than eight ranks"},
        {"8/8/8/8/8/8/8/", "FEN: too few files in rank 1"},
        {"/8/8/8/8/8/8/8", "FEN: too few files in rank 8"},
        {"8//8/8/8/8/8/8", "FEN: too few files in rank 7"},
        {"8/7/8/8/8/8/8/8", "FEN: too few files in rank 7"},
        {"8/8/8/7K/8/7/8/8", "FEN: too few files in rank 3"},
        {"8/8/8/8K/8/8/8/8", "FEN: too many files in rank 5"},
        {"8/8/8/K8/8/8/8/8", "FEN: too many files in rank 5"},
        {"8/8/8/88888888888888888888/8/8/8/8", "FEN: too many files in rank 5"},
        {"8/8/8/8/8/8/8/PPPPPPPPP", "FEN: too many files in rank 1"},
        {"8/8/8/8/8/9/8/8", "FEN: improper digit '9' in rank 3"},
        {"0K7/8/8/8/8/8/8/8", "FEN: improper digit '0' in rank 8"},
        {"8/8/8/8/8/8/8/x7", "FEN: unknown letter 'x' in rank 1"},
        {"8/8/8/8/8/4S3/8/8", "FEN: unknown letter 'S' in rank 3"},
        {"8/8/8/8/8/8/8/K6k\n", "FEN: unknown letter '\\x0A' in rank 1"},
        {"8/8/8/8/8/8/8/\xC3\xA9"
         "7",
         "FEN: unknown letter '\\xC3' in rank 1"},
        {"8/8/\x7F/8", "FEN: unknown letter '\\x7F' in rank 6"},
        {"8/8/8/8/8/8/8/K6k x - - 0 1", "FEN: improper side to move 'x'"},
        {"8/8/8/8/8/8/8/K6k W - - 0 1", "FEN: improper side to move 'W'"},
        {"8/8/8/8/8/8/8/K6k white", "FEN: improper side to move 'white'"},
        {"8/8/8/8/8/8/8/K6k \x01", "FEN: improper side to move '\\x01'"},
        {std::string_view("8/8/8/8/8/8/8/K6k\0", 18), "FEN: unknown letter '\\x00' in rank 1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailureOf(row.m_text), row.m_message) << row.m_text;
}

TEST(ReadFEN, BadTextLeavesTheBoard) {
    TChessboard b = ChessboardFromFEN(kStart);
    EXPECT_THROW(static_cast<void>(ReadFEN(b, "K7/8/8/8/8/8/8/k6")), ChessException);
    EXPECT_THROW(static_cast<void>(ReadFEN(b, "K7/8/8/8/8/8/8/k7 x")), ChessException);
    EXPECT_EQ(WriteFEN(b, false), kStart);
}

TEST(ReadFEN, CastlingWeightsAndSide) {
    const struct {
        const char* m_fields;
        int m_nWhite, m_nBlack;
        char m_cSide;
    } rows[] = {
        {"", 3, 3, 'w'},
        {" ", 3, 3, 'w'},
        {" \t ", 3, 3, 'w'},
        {" w", 0, 0, 'w'},
        {" b", 0, 0, 'b'},
        {" w KQkq - 0 1", 3, 3, 'w'},
        {" w - - 0 1", 0, 0, 'w'},
        {" b K - 0 1", 1, 0, 'b'},
        {" w Q - 0 1", 2, 0, 'w'},
        {" w k - 0 1", 0, 1, 'w'},
        {" w q - 0 1", 0, 2, 'w'},
        {" w Kq E3 12 40", 1, 2, 'w'},
        {" b qk e6", 0, 3, 'b'},
        {"   b   Qk   -", 2, 1, 'b'},
        {"\tb\tKQ\t-\t0\t1", 3, 0, 'b'},
        {" KQ", 3, 0, 'w'},
        {" - - 0 1", 0, 0, 'w'},
        {" b - b3 0 1", 0, 0, 'b'},
    };
    for (const auto& row : rows) {
        TChessboard b = EmptyChessboard();
        const TFenFields fields = ReadFEN(b, std::string(kCastles) + row.m_fields);
        EXPECT_EQ(fields.m_nCastlingWhite, row.m_nWhite) << row.m_fields;
        EXPECT_EQ(fields.m_nCastlingBlack, row.m_nBlack) << row.m_fields;
        EXPECT_EQ(fields.m_cSideToMove, row.m_cSide) << row.m_fields;
        EXPECT_EQ(WriteFEN(b, false), kCastles) << row.m_fields;
    }
}

TEST(ChessboardFromFEN, DerivedFieldsAreFilled) {
    const TChessboard b = ChessboardFromFEN("4k3/8/8/8/8/8/4Q3/R3K2n b - - 3 9");
    EXPECT_EQ(BlackKingSquare(b), kE8);
    EXPECT_EQ(WhiteKingSquare(b), kE1);
    EXPECT_EQ(b.m_whiteQueens, 1);
    EXPECT_EQ(b.m_whiteRooks, 1);
    EXPECT_EQ(b.m_blackKnights, 1);
    EXPECT_EQ(b.m_blackChecker, String2Square("e2"));
    EXPECT_EQ(b.m_pPrevious, nullptr);
}

TEST(ChessboardFromFEN, IllegalPositionsAreRefused) {
    EXPECT_THROW(static_cast<void>(ChessboardFromFEN("8/8/8/8/8/8/8/K7")), ChessException);
    EXPECT_THROW(static_cast<void>(ChessboardFromFEN("k6P/8/8/8/8/8/8/K7")), ChessException);
    EXPECT_THROW(static_cast<void>(ChessboardFromFEN("kR6/8/8/8/8/8/8/Kr6")), ChessException);
}

TEST(WriteFEN, ShortFormIsThePlacement) {
    EXPECT_EQ(WriteFEN(EmptyChessboard(), false), "8/8/8/8/8/8/8/8");
    for (const char* fen : {kStart, kCastles, "1K1R4/Bp1Np2B/4p3/2pkN2p/1q1p4/1r1p3n/2P2Pn1/b2R4", "7k/8/8/8/8/8/8/K7"})
        EXPECT_EQ(WriteFEN(ChessboardFromFEN(fen), false), fen);
}

TEST(WriteFEN, UnknownKindPrintsE) {
    TChessboard b = EmptyChessboard();
    b.m_board[kA1] = kWhite | 3;
    b.m_board[kC1] = kBlack | 5;
    b.m_board[kH8] = 17;
    EXPECT_EQ(WriteFEN(b, false), "7E/8/8/8/8/8/8/E1e5");
}

TEST(WriteFEN, MarkOfAPawnDoesNotShow) {
    TChessboard b = EmptyChessboard();
    b.m_board[String2Square("d5")] = kBlackPawn | kPawnMayNotAdvance;
    EXPECT_EQ(WriteFEN(b, false), "8/8/8/3p4/8/8/8/8");
}

TEST(WriteFEN, FullFormOfARoot) {
    EXPECT_EQ(WriteFEN(CPlayedGame(kStart).Now(), true), std::string(kStart) + " w KQkq - 0 1");
    EXPECT_EQ(WriteFEN(CPlayedGame(kStart, 6).Now(), true), std::string(kStart) + " b KQkq - 0 1");
    EXPECT_EQ(WriteFEN(CPlayedGame("4k2r/8/8/8/8/8/8/R3K3").Now(), true), "4k2r/8/8/8/8/8/8/R3K3 w Qk - 0 1");
    EXPECT_EQ(WriteFEN(CPlayedGame("k7/8/8/8/8/8/8/R6K").Now(), true), "k7/8/8/8/8/8/8/R6K w - - 0 1");
}

TEST(WriteFEN, DoubleStepWritesTheSquarePassedOverInCapitals) {
    CPlayedGame game(kStart, 9);
    game.Play("e2-e4");
    EXPECT_EQ(WriteFEN(game.Now(), true), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq E3 0 1");
    game.Play("c7-c5");
    EXPECT_EQ(WriteFEN(game.Now(), true), "rnbqkbnr/pp1ppppp/8/2p5/4P3/8/PPPP1PPP/RNBQKBNR w KQkq C6 0 2");
    game.Play("Ng1-f3");
    EXPECT_EQ(WriteFEN(game.Now(), true), "rnbqkbnr/pp1ppppp/8/2p5/4P3/5N2/PPPP1PPP/RNBQKB1R b KQkq - 0 2");
    game.Play("d7-d6");
    EXPECT_EQ(WriteFEN(game.Now(), true), "rnbqkbnr/pp2pppp/3p4/2p5/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 0 3");
}

TEST(WriteFEN, LastMoveOfARootIsNotRead) {
    CPlayedGame game("4k3/8/8/3pP3/8/8/8/4K3");
    game.Root().m_lastMove = {String2Square("d7"), String2Square("d5"), 0, 0};
    EXPECT_EQ(WriteFEN(game.Now(), true), "4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1");
}

TEST(WriteFEN, TwoRanksOfAFigureAreNoDoubleStep) {
    EXPECT_EQ(WriteFEN(CPlayedGame("k7/8/8/8/8/8/4R3/K7").Play("Re2-e4").Now(), true), "k7/8/8/8/4R3/8/8/K7 b - - 0 1");
}

TEST(WriteFEN, RookThatReturnsHasLostItsRight) {
    EXPECT_EQ(WriteFEN(CPlayedGame(kCastles).Play("Rh1-h3 Ke8-e7 Rh3-h1 Ke7-e8").Now(), true),
              std::string(kCastles) + " w Q - 0 3");
}

TEST(WriteFEN, RookThatReplacesACapturedOneHasNoRight) {
    CPlayedGame game("4k3/8/8/8/8/6n1/7R/R3K2R");
    game.Play("Ra1-b1 Ng3:h1 Rh2:h1 Ke8-e7");
    EXPECT_EQ(WriteFEN(game.Now(), true), "8/4k3/8/8/8/8/8/1R2K2R w - - 0 3");
}

TEST(WriteFEN, RookThatArrivesAtHomeHasNoRight) {
    EXPECT_EQ(WriteFEN(CPlayedGame("4k3/8/8/8/8/8/R7/4K3").Play("Ra2-a1").Now(), true),
              "4k3/8/8/8/8/8/8/R3K3 b - - 0 1");
}

TEST(WriteFEN, KingThatMovedHasLostBothRights) {
    EXPECT_EQ(WriteFEN(CPlayedGame(kCastles).Play("Ke1-e2 Ra8-b8 Ke2-e1").Now(), true),
              "1r2k2r/8/8/8/8/8/8/R3K2R b k - 0 2");
    EXPECT_EQ(WriteFEN(CPlayedGame(kCastles).Play("0-0 0-0-0").Now(), true), "2kr3r/8/8/8/8/8/8/R4RK1 w - - 0 2");
}

TEST(WriteFEN, RandomBoardsComeBack) {
    constexpr std::array kCodes{kWhiteKing, kWhitePawn, kWhiteBishop, kWhiteRook, kWhiteQueen, kWhiteKnight,
                                kBlackKing, kBlackPawn, kBlackBishop, kBlackRook, kBlackQueen, kBlackKnight};
    std::mt19937 random(20240613);
    for (int i = 0; i < 5000; ++i) {
        TChessboard b = EmptyChessboard();
        const auto filled = random() % 101; // percent
        for (TFigure& figure : b.m_board)
            if (random() % 100 < filled)
                figure = kCodes[random() % kCodes.size()];
        TChessboard copy = EmptyChessboard();
        static_cast<void>(ReadFEN(copy, WriteFEN(b, false)));
        ASSERT_EQ(copy.m_board, b.m_board) << WriteFEN(b, false);
    }
}

/// The reference keeps castling rights and the en passant square as state of its position instead of reading a chain of
/// moves. It counts the clock that the engine writes as 0.
TEST(WriteFEN, RandomGamesAgreeWithTheReference) {
    std::mt19937 random(7);
    for (int nGame = 0; nGame < 60; ++nGame) {
        const char* start = nGame % 2 == 0 ? kStart : kCastles;
        CPlayedGame game(start);
        reference::Position position = reference::ProblemFromFen(start);
        for (int ply = 0; ply < 80; ++ply) {
            const auto moves = reference::LegalMoves(position);
            if (moves.empty())
                break;
            const auto move = moves[random() % moves.size()];
            ASSERT_NO_THROW(game.Play(reference::LongNotation(position, move))) << reference::ToFen(position);
            position = reference::Play(position, move);
            position.halfMovesSinceCaptureOrPawnMove = 0;
            std::string expected = reference::ToFen(position);
            if (position.enPassant != reference::kNoSquare) {
                const std::size_t file = expected.size() - std::to_string(position.moveNumber).size() - 5;
                expected[file] = static_cast<char>(std::toupper(expected[file]));
            }
            ASSERT_EQ(WriteFEN(game.Now(), true), expected);
        }
    }
}

} // namespace
} // namespace quillon
