// Positions of games: FENs with their fields, moves from there, and the legal moves by an independent rule book.

#include <gtest/gtest.h>
#include <random>
#include <set>

#include "cli/uci_position.h"
#include "cli/uci_text.h"
#include "core/chess_exception.h"
#include "support/reference_chess.h"

namespace quillon {
namespace {

constexpr const char* kManyCastlings = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R";

std::string Text(const reference::Move& move) {
    const TFigure kind = move.promotion == 'Q'   ? kQueen
                         : move.promotion == 'R' ? kRook
                         : move.promotion == 'B' ? kBishop
                         : move.promotion == 'N' ? kKnight
                                                 : kNoFigure;
    return UciMove({move.from, move.to, kind, 0});
}

std::set<std::string> MovesOf(const TGamePosition& position) {
    std::set<std::string> texts;
    for (const TGameMove& move : LegalMoves(position))
        texts.insert(UciMove(move.m_move));
    return texts;
}

std::set<std::string> MovesOf(const reference::Position& position) {
    std::set<std::string> texts;
    for (const reference::Move& move : reference::LegalMoves(position))
        texts.insert(Text(move));
    return texts;
}

std::uint64_t CountLeaves(const TGamePosition& position, int nDepth) {
    const std::vector<TGameMove> moves = LegalMoves(position);
    if (nDepth == 1)
        return moves.size();
    std::uint64_t count = 0;
    for (const TGameMove& move : moves)
        count += CountLeaves(move.m_after, nDepth - 1);
    return count;
}

TGamePosition Fen(const std::string& fen) { return ReadGameFen(fen).m_position; }

std::string ErrorOf(const std::string& command) {
    try {
        (void)ReadUciPosition(WordsOf(command));
        return "";
    } catch (const ChessException& failure) {
        return failure.what();
    }
}

TEST(GamePosition, CountsLeavesByTheRules) {
    for (const char* fields :
         {" w KQkq - 0 1", " w Kq - 0 1", " w Qk - 0 1", " w - - 0 1", " b KQkq - 0 1", " b Qk - 0 1"}) {
        const std::string fen = std::string(kManyCastlings) + fields;
        EXPECT_EQ(CountLeaves(Fen(fen), 3), reference::Perft(reference::FromFen(fen), 3)) << fen;
    }
    for (const char* fen : {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1",
                            "8/8/8/8/k2Pp2Q/8/8/3K4 b - d3 0 1", "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
                            "r3k2r/8/8/8/8/8/8/R3K2R b kq - 0 1"})
        EXPECT_EQ(CountLeaves(Fen(fen), 3), reference::Perft(reference::FromFen(fen), 3)) << fen;
}

TEST(GamePosition, TheSameMovesWithColoursSwapped) {
    for (const char* fen : {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w Kq - 0 1",
                            "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "8/8/8/8/k2Pp2Q/8/8/3K4 b - d3 0 1"}) {
        const TGamePosition position = Fen(fen);
        const TGamePosition swapped = WithColoursSwapped(position);
        EXPECT_EQ(WithColoursSwapped(swapped), position);
        std::set<std::string> back;
        for (const TGameMove& move : LegalMoves(swapped))
            back.insert(UciMove(WithColoursSwapped(move.m_move)));
        EXPECT_EQ(back, MovesOf(position)) << fen;
    }
}

TEST(GamePosition, KnowsCheck) {
    EXPECT_TRUE(IsInCheck(Fen("4k3/8/8/8/8/8/8/K3R3 b - - 0 1")));
    EXPECT_FALSE(IsInCheck(Fen("4k3/8/8/8/8/8/4p3/K3R3 b - - 0 1")));
    EXPECT_TRUE(IsInCheck(Fen("4k3/8/8/8/8/8/1p6/K2R4 w - - 0 1")));
}

TEST(GamePosition, KnowsWhoCannotMate) {
    for (const char* fen :
         {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "4k3/8/8/8/8/8/8/4KB2 w - - 0 1",
          "4k3/8/8/8/8/8/8/4KB2 b - - 0 1", "4k3/ppq5/8/8/8/8/8/4K3 w - - 0 1"})
        EXPECT_FALSE(HasMatingMaterial(Fen(fen))) << fen;
    for (const char* fen :
         {"4k3/8/8/8/8/8/P7/4K3 w - - 0 1", "4k3/8/8/8/8/8/8/4KNN1 w - - 0 1", "4k3/8/8/8/8/8/8/4KR2 w - - 0 1",
          "4k3/p7/8/8/8/8/8/4KN2 w - - 0 1", "4kb2/8/8/8/8/8/P7/4K3 b - - 0 1"})
        EXPECT_TRUE(HasMatingMaterial(Fen(fen))) << fen;
}

TEST(GameFen, FieldsMayBeMissing) {
    const TGamePosition position = Fen("r3k2r/8/8/8/8/8/8/R3K2R");
    EXPECT_TRUE(position.m_bWhiteToMove);
    EXPECT_EQ(position.m_nCastlingWhite, kCastlingAll);
    EXPECT_EQ(position.m_nCastlingBlack, kCastlingAll);
    EXPECT_EQ(position.m_nDoubleStep, kNoSquare);
}

TEST(GameFen, CastlingIsWhatFieldAndBoardBothHave) {
    const TGamePosition position = Fen("r3k3/8/8/8/8/8/8/R3K2R w Kkq - 0 1");
    EXPECT_EQ(position.m_nCastlingWhite, kCastlingKingSide);
    EXPECT_EQ(position.m_nCastlingBlack, kCastlingQueenSide);
}

TEST(GameFen, TheEnPassantSquareNamesThePawn) {
    EXPECT_EQ(Fen("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1").m_nDoubleStep, SquareAt(3, 4));
    EXPECT_EQ(Fen("4k3/8/8/8/3pP3/8/8/4K3 b - E3 0 1").m_nDoubleStep, SquareAt(4, 3));
}

TEST(GameFen, AnImpossibleEnPassantSquareIsNotedAndDropped) {
    for (const char* square : {"e6", "d5", "d3", "xx", "d", "d6d6"}) {
        const TUciPosition read = ReadGameFen(std::string("4k3/8/8/3pP3/8/8/8/4K3 w - ") + square + " 0 1");
        EXPECT_EQ(read.m_position.m_nDoubleStep, kNoSquare) << square;
        EXPECT_NE(read.m_note.find(square), std::string::npos) << read.m_note;
    }
    EXPECT_EQ(ReadGameFen("4k3/3p4/8/3pP3/8/8/8/4K3 w - d6 0 1").m_position.m_nDoubleStep, kNoSquare);
}

TEST(UciPosition, MistakesAreTold) {
    EXPECT_NE(ErrorOf(""), "");
    EXPECT_NE(ErrorOf("fen"), "");
    EXPECT_NE(ErrorOf("moves e2e4"), "");
    EXPECT_NE(ErrorOf("fen 8/8/8/8/8/8/8/8 w - - 0 1"), "");
    EXPECT_NE(ErrorOf("fen 4k3/8/8/8/8/8/8/4K3 x - - 0 1"), "");
    EXPECT_NE(ErrorOf("fen 4k3/8/8/8/8/8/8/4K3 w HA - 0 1"), "");
    EXPECT_NE(ErrorOf("fen 4k3/8/8/8/8/8/4R3/4K3 w - - 0 1"), "");
    EXPECT_NE(ErrorOf("fen 4k3/8/8/8/8/8/4r3/4K3 b - - 0 1"), "");
    EXPECT_EQ(ErrorOf("startpos moves e2e5"), "illegal move: e2e5");
    EXPECT_EQ(ErrorOf("startpos moves e2e4 e2e4"), "illegal move: e2e4");
    EXPECT_EQ(ErrorOf("startpos moves hello"), "not a move: hello");
    EXPECT_EQ(ErrorOf("StartPos Moves E2E4 e7e5"), "");
}

TEST(UciPosition, TheLastDoubleStepCounts) {
    const auto moves = [](const std::string& command) { return MovesOf(ReadUciPosition(WordsOf(command)).m_position); };
    EXPECT_TRUE(moves("startpos moves e2e4 a7a6 e4e5 d7d5").contains("e5d6"));
    EXPECT_FALSE(moves("startpos moves e2e4 d7d5 e4e5 a7a6").contains("e5d6"));
    EXPECT_FALSE(moves("startpos moves e2e4 a7a6 e4e5 d7d6 a2a3 d6d5").contains("e5d6"));
}

TEST(UciPosition, AKingOrRookThatHasMovedDoesNotCastle) {
    const std::string start = "fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves ";
    const auto moves = [&](const std::string& played) {
        return MovesOf(ReadUciPosition(WordsOf(start + played)).m_position);
    };
    EXPECT_TRUE(moves("a1b1 a8b8").contains("e1g1"));
    EXPECT_FALSE(moves("a1b1 a8b8 b1a1 b8a8").contains("e1c1"));
    EXPECT_FALSE(moves("e1e2 e8e7 e2e1 e7e8").contains("e1g1"));
    EXPECT_FALSE(moves("h1h8 e8d7 h8h1 a8a1").contains("e1c1"));
    const auto castled = ReadUciPosition(WordsOf(start + "e1g1 e8c8")).m_position;
    EXPECT_EQ(castled.m_board[kF1], kWhiteRook);
    EXPECT_EQ(castled.m_board[kD8], kBlackRook);
    EXPECT_EQ(castled.m_nCastlingWhite | castled.m_nCastlingBlack, 0);
}

TEST(UciPosition, Promotions) {
    const auto read = ReadUciPosition(WordsOf("fen 1n2k3/P7/8/8/8/8/7p/4K1N1 w - - 0 1 moves a7b8n h2g1q"));
    EXPECT_EQ(read.m_position.m_board[SquareAt(1, 7)], kWhiteKnight);
    EXPECT_EQ(read.m_position.m_board[kG1], kBlackQueen);
    EXPECT_NE(ErrorOf("fen 4k3/P7/8/8/8/8/8/4K3 w - - 0 1 moves a7a8"), "");
}

/// Whole games by the rule book: at the end both know the same board and the same moves.
TEST(UciPosition, FollowsRandomGames) {
    std::mt19937 random(20261121);
    for (int nGame = 0; nGame < 40; ++nGame) {
        reference::Position game = reference::FromFen("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
        std::string command = "startpos moves";
        for (int nPlies = static_cast<int>(random() % 120); nPlies > 0 && reference::HasLegalMove(game); --nPlies) {
            const std::vector<reference::Move> moves = reference::LegalMoves(game);
            const reference::Move move = moves[random() % moves.size()];
            command += " " + Text(move);
            game = reference::Play(game, move);
        }
        const TGamePosition position = ReadUciPosition(WordsOf(command)).m_position;
        ASSERT_EQ(MovesOf(position), MovesOf(game)) << command;
        EXPECT_EQ(Fen(reference::ToFen(game)), position) << command;
    }
}

} // namespace
} // namespace quillon
