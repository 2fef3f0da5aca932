#include "core/notation.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "core/chess_exception.h"
#include "core/fen.h"
#include "played_game.h"
#include "support/reference_chess.h"

namespace quillon {
namespace {

using test::CPlayedGame;

constexpr char kStart[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";

TSquare Sq(std::string_view text) { return String2Square(text); }

TMove MoveOf(std::string_view from, std::string_view to, TFigure promotion = 0) {
    return {Sq(from), Sq(to), promotion, 0};
}

template <class TCall> std::string FailureOf(TCall call) {
    try {
        static_cast<void>(call());
    } catch (const ChessException& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(WriteMove, LongNotation) {
    EXPECT_EQ(WriteMove(MoveOf("e2", "e4"), kWhitePawn, false), "e2-e4");
    EXPECT_EQ(WriteMove(MoveOf("e4", "d5"), kWhitePawn, true), "e4:d5");
    EXPECT_EQ(WriteMove(MoveOf("g1", "f3"), kWhiteKnight, false), "Ng1-f3");
    EXPECT_EQ(WriteMove(MoveOf("h8", "a1"), kBlackQueen, true), "Qh8:a1");
    EXPECT_EQ(WriteMove(MoveOf("a1", "a8"), kRook, false), "Ra1-a8") << "a kind alone will do";
    EXPECT_EQ(WriteMove(MoveOf("c1", "h6"), kWhiteBishop, true), "Bc1:h6");
    EXPECT_EQ(WriteMove(MoveOf("e1", "f1"), kWhiteKing, false), "Ke1-f1");
    EXPECT_EQ(WriteMove(MoveOf("e8", "d7"), kBlackKing, true), "Ke8:d7");
    EXPECT_EQ(WriteMove(MoveOf("e7", "e6"), kBlackPawn | kPawnMayNotAdvance, false), "e7-e6");
}

TEST(WriteMove, PromotionAppendsItsLetter) {
    EXPECT_EQ(WriteMove(MoveOf("e7", "d8", kQueen), kWhitePawn, true), "e7:d8Q");
    EXPECT_EQ(WriteMove(MoveOf("a2", "a1", kRook), kBlackPawn, false), "a2-a1R");
    EXPECT_EQ(WriteMove(MoveOf("h7", "h8", kBishop), kWhitePawn, false), "h7-h8B");
    EXPECT_EQ(WriteMove(MoveOf("h7", "g8", kKnight), kWhitePawn, true), "h7:g8N");
    EXPECT_EQ(WriteMove(MoveOf("h7", "h8", kKing), kWhitePawn, false), "h7-h8K");
    EXPECT_EQ(WriteMove(MoveOf("h7", "h8", kPawn), kWhitePawn, false), "h7-h8 ");
    EXPECT_EQ(WriteMove(MoveOf("h7", "h8", 3), kWhitePawn, false), "h7-h8E");
}

TEST(WriteMove, PromotionHasNoFigureLetter) {
    EXPECT_EQ(WriteMove(MoveOf("h7", "h8", kQueen), kWhiteQueen, false), "h7-h8Q");
}

TEST(WriteMove, UnknownFigurePrintsE) {
    EXPECT_EQ(WriteMove(MoveOf("a1", "a2"), kNoFigure, false), "Ea1-a2");
    EXPECT_EQ(WriteMove(MoveOf("a1", "a2"), kWhite | 5, false), "Ea1-a2");
}

TEST(WriteMove, MarksOfAMoveAreNoPromotion) {
    EXPECT_EQ(WriteMove(MoveOf("e2", "e4", kMoveMark), kWhitePawn, false), "e2-e4");
    EXPECT_EQ(WriteMove(MoveOf("e8", "e7", kMoveDefersEdgeCheck), kBlackKing, false), "Ke8-e7");
    EXPECT_EQ(WriteMove(MoveOf("e7", "e8", kMoveMark | kQueen), kWhitePawn, false), "e7-e8Q");
}

TEST(WriteMove, CastlingIsToldByTheTargetFile) {
    EXPECT_EQ(WriteMove(MoveOf("e1", "g1"), kWhiteKing, false), "0-0");
    EXPECT_EQ(WriteMove(MoveOf("e1", "c1"), kWhiteKing, false), "0-0-0");
    EXPECT_EQ(WriteMove(MoveOf("e8", "g8"), kBlackKing, true), "0-0") << "the separator does not count";
    EXPECT_EQ(WriteMove(MoveOf("e8", "c8"), kBlackKing, false), "0-0-0");
    EXPECT_EQ(WriteMove(MoveOf("d1", "b1"), kWhiteKing, false), "0-0-0");
    EXPECT_EQ(WriteMove(MoveOf("e1", "g1"), kWhiteRook, false), "Re1-g1");
}

TEST(WriteMove, NullMoveIsADash) {
    EXPECT_EQ(WriteMove(MoveOf("e8", "e8"), kBlackKing, false), "-");
    EXPECT_EQ(WriteMove(MoveOf("a1", "a1", kQueen), kNoFigure, true), "-");
}

TEST(WriteMove, FigureAndCaptureAreReadFromThePosition) {
    const TChessboard b = ChessboardFromFEN("3n3k/4P3/8/3pP3/8/5q2/8/4K2R");
    EXPECT_EQ(WriteMove(MoveOf("e7", "d8", kQueen), b), "e7:d8Q");
    EXPECT_EQ(WriteMove(MoveOf("e7", "e8", kKnight), b), "e7-e8N");
    EXPECT_EQ(WriteMove(MoveOf("e5", "d6"), b), "e5:d6") << "en passant";
    EXPECT_EQ(WriteMove(MoveOf("e5", "e6"), b), "e5-e6");
    EXPECT_EQ(WriteMove(MoveOf("h1", "h8"), b), "Rh1:h8");
    EXPECT_EQ(WriteMove(MoveOf("f3", "f8"), b), "Qf3-f8");
    EXPECT_EQ(WriteMove(MoveOf("d8", "e6"), b), "Nd8-e6") << "only a pawn captures on an empty square";
    EXPECT_EQ(WriteMove(MoveOf("e1", "g1"), b), "0-0");
    EXPECT_EQ(WriteMove(MoveOf("h8", "h8"), b), "-");
}

TEST(WriteTerseMove, SquaresOnly) {
    EXPECT_EQ(WriteTerseMove(MoveOf("e1", "g1")), "e1-g1");
    EXPECT_EQ(WriteTerseMove(MoveOf("e7", "d8", kQueen)), "e7-d8");
    EXPECT_EQ(WriteTerseMove(MoveOf("b2", "b2")), "b2-b2");
}

TEST(ParseMove, LongNotation) {
    EXPECT_TRUE(SameMove(ParseMove("e2-e4", true), MoveOf("e2", "e4")));
    EXPECT_TRUE(SameMove(ParseMove("e4:d5", false), MoveOf("e4", "d5")));
    EXPECT_TRUE(SameMove(ParseMove("Nf3-e5", true), MoveOf("f3", "e5")));
    EXPECT_TRUE(SameMove(ParseMove("E2-E4", true), MoveOf("e2", "e4")));
    EXPECT_TRUE(SameMove(ParseMove("ng1:h3", true), MoveOf("g1", "h3")));
    EXPECT_TRUE(SameMove(ParseMove("e7:d8Q", true), MoveOf("e7", "d8", kQueen)));
    EXPECT_TRUE(SameMove(ParseMove("a2-a1s", false), MoveOf("a2", "a1", kKnight)));
    EXPECT_TRUE(SameMove(ParseMove("Pa7-a8W", true), MoveOf("a7", "a8", kRook)));
    EXPECT_TRUE(SameMove(ParseMove("Tf3-e5", true), MoveOf("f3", "e5"))) << "a figure letter is dropped unread";
    EXPECT_TRUE(SameMove(ParseMove("Ke8-e8", false), MoveOf("e8", "e8")));
}

TEST(ParseMove, BlanksAtTheEndsAreTrimmed) {
    EXPECT_TRUE(SameMove(ParseMove("  e2-e4 ", true), MoveOf("e2", "e4")));
    EXPECT_TRUE(SameMove(ParseMove("\te7-e8B\t ", true), MoveOf("e7", "e8", kBishop)));
    EXPECT_TRUE(SameMove(ParseMove(" 0-0 ", true), MoveOf("e1", "g1")));
}

TEST(ParseMove, Castling) {
    EXPECT_TRUE(SameMove(ParseMove("0-0", true), MoveOf("e1", "g1")));
    EXPECT_TRUE(SameMove(ParseMove("0-0", false), MoveOf("e8", "g8")));
    EXPECT_TRUE(SameMove(ParseMove("0-0-0", true), MoveOf("e1", "c1")));
    EXPECT_TRUE(SameMove(ParseMove("0-0-0", false), MoveOf("e8", "c8")));
}

TEST(ParseMove, BadTextsAreRefused) {
    const struct {
        const char* m_text;
        const char* m_message;
    } rows[] = {
        {"", "Empty string"},
        {"  \t ", "Empty string"},
        {"-", "Improper string length"},
        {"7", "Improper string length"},
        {"e4", "Improper string length"},
        {"Ke1", "Improper string length"},
        {"e2e4", "Improper string length"},
        {"e2 - e4", "Improper string length"},
        {"0-0+", "Improper string length"},
        {"e7-e8=Q", "Improper string length"},
        {"e7-e8=", "Improper string length"},
        {"NNf3-e5", "Improper string length"},
        {"e2-e4+", "Improper string length"},
        {"e2.e4", "Improper full description of move"},
        {"e2xe4", "Improper full description of move"},
        {"e7=e8Q", "Improper full description of move"},
        {"e9-e4", "Error in String2Square() e9"},
        {"i2-e4", "Error in String2Square() i2"},
        {"e2-e0", "Error in String2Square() e0"},
        {"e2-44", "Error in String2Square() 44"},
        {"e2-e4x", "Unknown figure letter: x"},
        {"O-O", "Unknown figure letter: O"},
        {"e", "Unknown figure letter: e"},
        {"e2-\x01"
         "1",
         "Error in String2Square() \\x011"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailureOf([&] { return ParseMove(row.m_text, true); }), row.m_message) << row.m_text;
}

/// Every pair of squares, both colours, with and without capture, with every promotion: the text comes back as the
/// move.
TEST(ParseMove, ReadsWhatWriteMoveWrites) {
    constexpr std::array kFigures{kKing, kPawn, kBishop, kRook, kQueen, kKnight};
    constexpr std::array<TFigure, 5> kPromotions{0, kQueen, kRook, kBishop, kKnight};
    for (int from = 0; from < kSquares; ++from)
        for (int to = 0; to < kSquares; ++to)
            for (const TFigure figure : kFigures)
                for (const TFigure promotion : kPromotions)
                    for (const bool bCapture : {false, true}) {
                        // Of the king's long steps only castling is a move.
                        const bool bLongStep =
                            figure == kKing && promotion == 0 && AbsDiff(FileOf(from), FileOf(to)) > 1;
                        if (from == to || bLongStep)
                            continue;
                        const TMove move{static_cast<TSquare>(from), static_cast<TSquare>(to), promotion, 0};
                        ASSERT_TRUE(SameMove(ParseMove(WriteMove(move, figure, bCapture), true), move))
                            << WriteMove(move, figure, bCapture);
                    }
    for (const bool bWhite : {false, true})
        for (const TSquare to : {kG1, kC1}) {
            const auto rank = static_cast<TSquare>(bWhite ? 0 : 56);
            const TMove move{static_cast<TSquare>(kE1 + rank), static_cast<TSquare>(to + rank), 0, 0};
            EXPECT_TRUE(SameMove(ParseMove(WriteMove(move, kKing, false), bWhite), move));
        }
}

TEST(String2Square, AllSquaresInEitherCase) {
    for (int file = 0; file < 8; ++file)
        for (int rank = 0; rank < 8; ++rank) {
            const char digit = static_cast<char>('1' + rank);
            EXPECT_EQ(String2Square(std::string{static_cast<char>('a' + file), digit}), rank * 8 + file);
            EXPECT_EQ(String2Square(std::string{static_cast<char>('A' + file), digit}), rank * 8 + file);
        }
    EXPECT_EQ(String2Square("E4"), String2Square("e4"));
}

TEST(String2Square, AllOtherPairsAreRefused) {
    int squares = 0;
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second) {
            const std::string text{static_cast<char>(first), static_cast<char>(second)};
            squares += FailureOf([&] { return String2Square(text); }) == "no failure" ? 1 : 0;
        }
    EXPECT_EQ(squares, 128);
}

TEST(String2Square, MessageQuotesTheText) {
    EXPECT_EQ(FailureOf([] { return String2Square(""); }), "Error in String2Square() ");
    EXPECT_EQ(FailureOf([] { return String2Square("e"); }), "Error in String2Square() e");
    EXPECT_EQ(FailureOf([] { return String2Square("e44"); }), "Error in String2Square() e44");
    EXPECT_EQ(FailureOf([] { return String2Square("e9"); }), "Error in String2Square() e9");
    EXPECT_EQ(FailureOf([] { return String2Square("j1"); }), "Error in String2Square() j1");
    EXPECT_EQ(FailureOf([] {
                  return String2Square("\xE9"
                                       "4\n");
              }),
              "Error in String2Square() \\xE94\\x0A");
}

TEST(ParseSquares, SeparatorsAreBlanksTabsAndCommas) {
    EXPECT_EQ(ParseSquares("a1 h8"), (std::vector<TSquare>{kA1, kH8}));
    EXPECT_EQ(ParseSquares("a1,H8\te1, c8"), (std::vector<TSquare>{kA1, kH8, kE1, kC8}));
    EXPECT_EQ(ParseSquares("  a1  "), std::vector<TSquare>{kA1});
    EXPECT_EQ(ParseSquares("e4 e4"), (std::vector<TSquare>{Sq("e4"), Sq("e4")}));
    EXPECT_TRUE(ParseSquares("").empty());
    EXPECT_TRUE(ParseSquares(" , ").empty());
}

TEST(ParseSquares, BadSquareIsToldByItsIndex) {
    EXPECT_EQ(FailureOf([] { return ParseSquares("x1"); }), "Invalid square description at index 0");
    EXPECT_EQ(FailureOf([] { return ParseSquares("a1 h9"); }), "Invalid square description at index 3");
    EXPECT_EQ(FailureOf([] { return ParseSquares("a1, e44 e5"); }), "Invalid square description at index 4");
    EXPECT_EQ(FailureOf([] { return ParseSquares("a1;b2"); }), "Invalid square description at index 0");
    EXPECT_EQ(FailureOf([] { return ParseSquares("a1 b"); }), "Invalid square description at index 3");
}

TEST(FigureLetterToKind, EnglishAndPolishInEitherCase) {
    const struct {
        const char* m_letters;
        TFigure m_kind;
    } rows[] = {
        {"BbGg", kBishop}, {"HhQq", kQueen}, {"Kk", kKing}, {"NnSs", kKnight}, {"Pp", kPawn}, {"RrWw", kRook},
    };
    std::string known;
    for (const auto& row : rows)
        for (const char* letter = row.m_letters; *letter != 0; ++letter) {
            EXPECT_EQ(FigureLetterToKind(*letter), row.m_kind) << *letter;
            known += *letter;
        }
    for (int c = 0; c < 256; ++c)
        if (known.find(static_cast<char>(c)) == std::string::npos) {
            EXPECT_THROW(static_cast<void>(FigureLetterToKind(static_cast<char>(c))), ChessException) << c;
        }
}

TEST(FigureLetterToKind, MessageNamesTheLetter) {
    EXPECT_EQ(FailureOf([] { return FigureLetterToKind('z'); }), "Unknown figure letter: z");
    EXPECT_EQ(FailureOf([] { return FigureLetterToKind('\xE9'); }), "Unknown figure letter: \\xE9");
    EXPECT_EQ(FailureOf([] { return FigureLetterToKind('\0'); }), "Unknown figure letter: \\x00");
}

TEST(KindToLetter, AllKinds) {
    EXPECT_EQ(KindToLetter(kKing), 'K');
    EXPECT_EQ(KindToLetter(kQueen), 'Q');
    EXPECT_EQ(KindToLetter(kRook), 'R');
    EXPECT_EQ(KindToLetter(kBishop), 'B');
    EXPECT_EQ(KindToLetter(kKnight), 'N');
    EXPECT_EQ(KindToLetter(kPawn), ' ');
    for (const int other : {0, 3, 5, 9, 17, 31})
        EXPECT_EQ(KindToLetter(static_cast<TFigure>(other)), 'E') << other;
}

/// Outcome of a text on a position: the placement after it, "unreadable" or the message.
std::string Outcome(TChessboard& position, std::string_view text) {
    TChessboard child;
    std::string report = "left over";
    if (MakeMoveFromText(position, text, child, &report))
        return report.empty() ? WriteFEN(child, false) : "made, but: " + report;
    return report.empty() ? "unreadable" : report;
}

TEST(MakeMoveFromText, ChildIsThePositionAfterTheMove) {
    CPlayedGame game(kStart, 5);
    TChessboard child;
    ASSERT_TRUE(MakeMoveFromText(game.Now(), "e2-e4", child, nullptr));
    EXPECT_EQ(WriteFEN(child, false), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR");
    EXPECT_EQ(child.m_pPrevious, &game.Now());
    EXPECT_EQ(child.m_nMoves, 4);
    EXPECT_EQ(child.m_pContext, game.Now().m_pContext);
    EXPECT_TRUE(SameMove(child.m_lastMove, MoveOf("e2", "e4")));
    EXPECT_EQ(WriteFEN(game.Now(), false), kStart) << "the position stays";
}

TEST(MakeMoveFromText, FormsOfAMove) {
    CPlayedGame game(kStart);
    const std::string knight = "rnbqkbnr/pppppppp/8/8/8/5N2/PPPPPPPP/RNBQKB1R";
    for (const char* text : {"Ng1-f3", "  Ng1-f3 ", "Sg1:f3", "NG1-F3", "Ng1-f3+", "Ng1-f3!", "Ng1 f3"})
        EXPECT_EQ(Outcome(game.Now(), text), knight) << text;
    const std::string pawn = "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR";
    for (const char* text : {"e2-e4", "e2:e4", "e2xe4", "Pe2-e4", "pE2-E4", "\te2-e4"})
        EXPECT_EQ(Outcome(game.Now(), text), pawn) << text;
}

TEST(MakeMoveFromText, UnreadableTextsHaveNoMessage) {
    CPlayedGame game(kStart);
    for (const char* text : {"", "   ", "-", "e4", "Nf3", "e2e4", "Ng1f3", "ng1f3xx", "Ng1-f9", "e2-e", "Ne2-", "i2-e4",
                             "e2-e9", "Xg1-f3", "e2-e4x", "0-0+", "O-O-O", "hello, world", "e2\n-e4"})
        EXPECT_EQ(Outcome(game.Now(), text), "unreadable") << text;
}

TEST(MakeMoveFromText, FigureOnTheSourceMustBeTheOneNamed) {
    CPlayedGame game(kStart);
    EXPECT_EQ(Outcome(game.Now(), "g1-f3"), "unreadable") << "a knight without its letter";
    EXPECT_EQ(Outcome(game.Now(), "Bg1-f3"), "unreadable");
    EXPECT_EQ(Outcome(game.Now(), "Ne2-e4"), "unreadable");
    EXPECT_EQ(Outcome(game.Now(), "e3-e4"), "unreadable") << "an empty square";
    EXPECT_EQ(Outcome(game.Now(), "0-0-0"), "Illegal move");
}

TEST(MakeMoveFromText, CastlingTextIsNotARooksMove) {
    CPlayedGame game("4k3/8/8/8/8/8/8/K3R3");
    EXPECT_EQ(Outcome(game.Now(), "0-0"), "unreadable");
    EXPECT_EQ(Outcome(game.Now(), "Re1-g1"), "4k3/8/8/8/8/8/8/K5R1");
}

TEST(MakeMoveFromText, IllegalMoves) {
    CPlayedGame game("4k3/4r3/8/8/8/8/4B3/4K2R");
    for (const char* text : {"Be2-d3", "Be2-e3", "Ke1-e2", "Rh1-g2", "Ke8-d8", "Re7:e2", "Rh1-e1"})
        EXPECT_EQ(Outcome(game.Now(), text), "Illegal move") << text;
    EXPECT_EQ(Outcome(game.Now(), "Ke1-d1"), "4k3/4r3/8/8/8/8/4B3/3K3R");
}

TEST(MakeMoveFromText, CastlingOfTheSideToMove) {
    constexpr char fen[] = "r3k2r/8/8/8/8/8/8/R3K2R";
    CPlayedGame white(fen), black(fen, 4);
    EXPECT_EQ(Outcome(white.Now(), "0-0"), "r3k2r/8/8/8/8/8/8/R4RK1");
    EXPECT_EQ(Outcome(white.Now(), " 0-0-0"), "r3k2r/8/8/8/8/8/8/2KR3R");
    EXPECT_EQ(Outcome(black.Now(), "0-0"), "r4rk1/8/8/8/8/8/8/R3K2R");
    EXPECT_EQ(Outcome(black.Now(), "0-0-0 "), "2kr3r/8/8/8/8/8/8/R3K2R");
    EXPECT_EQ(Outcome(white.Now(), "Ke1-g1"), "r3k2r/8/8/8/8/8/8/R4RK1");
    EXPECT_EQ(Outcome(white.Play("Ke1-e2 Ke8-e7 Ke2-e1 Ke7-e8").Now(), "0-0"), "Illegal move");
}

TEST(MakeMoveFromText, PromotionLetterIsRead) {
    CPlayedGame game("3n3k/4P3/8/8/8/8/p7/1B2K3");
    const struct {
        const char* m_text;
        const char* m_outcome;
    } rows[] = {
        {"e7-e8", "3nQ2k/8/8/8/8/8/p7/1B2K3"},
        {"e7-e8Q", "3nQ2k/8/8/8/8/8/p7/1B2K3"},
        {"e7-e8r", "3nR2k/8/8/8/8/8/p7/1B2K3"},
        {"e7-e8=N", "3nN2k/8/8/8/8/8/p7/1B2K3"},
        {"e7-e8G+", "3nB2k/8/8/8/8/8/p7/1B2K3"},
        {"e7:d8S", "3N3k/8/8/8/8/8/p7/1B2K3"},
        {"e7-e8K", "Illegal move"},
        {"e7-e8P", "Illegal move"},
        {"e7-e8Z", "unreadable"},
        {"Bb1-a2Q", "Illegal move"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Outcome(game.Now(), row.m_text), row.m_outcome) << row.m_text;
    game.Play("Ke1-e2");
    EXPECT_EQ(Outcome(game.Now(), "a2-a1"), "3n3k/4P3/8/8/8/8/4K3/qB6");
    EXPECT_EQ(Outcome(game.Now(), "a2:b1R"), "3n3k/4P3/8/8/8/8/4K3/1r6");
}

TEST(MakeMoveFromText, EnPassantOnlyRightAfterTheDoubleStep) {
    CPlayedGame root("4k3/8/8/3pP3/8/8/8/4K3");
    EXPECT_EQ(Outcome(root.Now(), "e5:d6"), "Illegal move");
    CPlayedGame game("4k3/3p4/8/4P3/8/8/8/4K3", 6);
    game.Play("d7-d5");
    EXPECT_EQ(Outcome(game.Now(), "e5:d6"), "4k3/8/3P4/8/8/8/8/4K3");
    game.Play("Ke1-e2 Ke8-e7");
    EXPECT_EQ(Outcome(game.Now(), "e5:d6"), "Illegal move");
}

TEST(MakeMoveFromText, MovesThatOnlyTheSearchRefusesAreMade) {
    CPlayedGame game("8/8/8/8/8/7k/6n1/5B1K");
    EXPECT_EQ(Outcome(game.Now(), "Bf1:g2"), "8/8/8/8/8/7k/6B1/7K") << "no mate is possible any more";
}

TEST(MakeMoveFromText, NoPlyIsLeft) {
    CPlayedGame game("4k3/8/8/8/8/8/8/4K2R", 1);
    game.Play("Rh1-h8");
    EXPECT_EQ(Outcome(game.Now(), "Ke8-d7"), "Illegal move");
}

TEST(MakeMoveFromText, ReportMayBeNull) {
    CPlayedGame game(kStart);
    TChessboard child;
    EXPECT_FALSE(MakeMoveFromText(game.Now(), "e2-e5", child, nullptr));
    EXPECT_FALSE(MakeMoveFromText(game.Now(), "e2", child, nullptr));
}

TEST(FindPosFrom, KingIsFoundAtOnce) {
    CPlayedGame game("4k3/8/8/8/8/8/8/4K2R");
    EXPECT_EQ(FindPosFrom(game.Now(), kKing, Sq("e2")), kE1);
    EXPECT_EQ(FindPosFrom(game.Now(), kBlackKing, Sq("e2")), kE8);
    EXPECT_EQ(FindPosFrom(game.Now(), kWhiteKing, Sq("a8")), kE1) << "whatever the target";
}

TEST(FindPosFrom, PawnsComeFromBehind) {
    CPlayedGame game("4k3/8/8/1p6/P6p/3P2P1/1P2P3/4K3");
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("b3")), Sq("b2"));
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("b4")), Sq("b2"));
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("d4")), Sq("d3"));
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("a5")), Sq("a4"));
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("b5")), Sq("a4"));
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("h4")), Sq("g3"));
    for (const char* target : {"c4", "c3", "d2", "e5", "g5", "a6", "h3", "b1", "b8", "d3"})
        EXPECT_EQ(FailureOf([&] { return FindPosFrom(game.Now(), kPawn, Sq(target)); }), "Error in FindPosFrom()")
            << target;
}

TEST(FindPosFrom, DoubleStepNeedsAnEmptySquareBetween) {
    CPlayedGame game("4k3/3p4/8/8/8/4n3/4P3/4K3");
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kWhitePawn, Sq("e4"))), ChessException);
    EXPECT_EQ(FindPosFrom(game.Now(), kBlackPawn, Sq("d5")), Sq("d7")) << "a code tells the colour";
}

TEST(FindPosFrom, KindBelongsToTheSideToMove) {
    constexpr char fen[] = "4k2r/8/8/8/8/8/8/R3K3";
    CPlayedGame white(fen), black(fen, 4);
    EXPECT_EQ(FindPosFrom(white.Now(), kRook, Sq("d1")), kA1);
    EXPECT_EQ(FindPosFrom(black.Now(), kRook, Sq("f8")), kH8);
    EXPECT_THROW(static_cast<void>(FindPosFrom(white.Now(), kRook, Sq("f8"))), ChessException);
    EXPECT_EQ(FindPosFrom(white.Now(), kBlackRook, Sq("f8")), kH8);
    EXPECT_EQ(FindPosFrom(black.Now(), kWhiteRook, Sq("d1")), kA1);
}

TEST(FindPosFrom, PinnedFigureIsPassedOver) {
    CPlayedGame game("4r2k/8/8/8/8/2N5/4N3/4K3");
    EXPECT_EQ(FindPosFrom(game.Now(), kKnight, Sq("d1")), Sq("c3"));
    EXPECT_EQ(FindPosFrom(game.Now(), kKnight, Sq("d5")), Sq("c3"));
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kKnight, Sq("d4"))), ChessException);
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kKnight, Sq("g3"))), ChessException);
}

TEST(FindPosFrom, SlidersStopAtTheFirstFigure) {
    CPlayedGame game("7k/8/1p3Q2/8/3R4/8/1P3B2/K7");
    EXPECT_EQ(FindPosFrom(game.Now(), kQueen, Sq("b6")), Sq("f6"));
    EXPECT_EQ(FindPosFrom(game.Now(), kBishop, Sq("e3")), Sq("f2"));
    EXPECT_EQ(FindPosFrom(game.Now(), kQueen, Sq("e5")), Sq("f6"));
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kBishop, Sq("c5"))), ChessException) << "rook between";
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kQueen, Sq("c3"))), ChessException) << "rook between";
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kRook, Sq("e5"))), ChessException) << "no rook's line";
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kBishop, Sq("f3"))), ChessException) << "no bishop's line";
}

TEST(FindPosFrom, OwnFigureAndKingAreNoTargets) {
    CPlayedGame game("7k/8/8/8/8/8/8/RN2K2R");
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kRook, Sq("b1"))), ChessException);
    EXPECT_THROW(static_cast<void>(FindPosFrom(game.Now(), kRook, Sq("h8"))), ChessException);
}

TEST(FindPosFrom, EnPassantAfterTheDoubleStep) {
    CPlayedGame game("4k3/3p4/8/2P1P3/8/8/8/4K3", 6);
    game.Play("d7-d5");
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("d6")), Sq("c5"));
    CPlayedGame root("4k3/8/8/2PpP3/8/8/8/4K3");
    root.Root().m_lastMove = MoveOf("d7", "d5"); // of a root it means nothing
    EXPECT_THROW(static_cast<void>(FindPosFrom(root.Now(), kPawn, Sq("d6"))), ChessException);
}

TEST(FindPosFrom, Promotion) {
    CPlayedGame game("3n3k/4P3/8/8/8/8/8/4K3");
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("e8")), Sq("e7"));
    EXPECT_EQ(FindPosFrom(game.Now(), kPawn, Sq("d8")), Sq("e7"));
    EXPECT_EQ(KindOf(game.Now().m_board[Sq("e7")]), kPawn) << "the position stays";
}

TEST(FindPosFrom, BadFiguresAndTargets) {
    CPlayedGame game(kStart);
    for (const int figure : {0, 3, 17, 32, 34, 63, 64, 0x40 | 17, 0x80 | 31, 0x80})
        EXPECT_EQ(FailureOf([&] { return FindPosFrom(game.Now(), static_cast<TFigure>(figure), Sq("e4")); }),
                  "Error in FindPosFrom()")
            << figure;
    EXPECT_EQ(FailureOf([&] { return FindPosFrom(game.Now(), kPawn, kNoSquare); }), "Error in FindPosFrom()");
    EXPECT_EQ(FailureOf([&] { return FindPosFrom(game.Now(), kKing, 64); }), "Error in FindPosFrom()");
}

TEST(FindPosFrom, BehindTheLastMove) {
    CPlayedGame game("4k3/8/8/8/8/8/n7/4K2R", 1);
    game.Play("Rh1-h7");
    ASSERT_EQ(game.Now().m_nMoves, 0);
    EXPECT_EQ(FindPosFrom(game.Now(), kKnight, Sq("c3")), Sq("a2"));
}

/// Random games played with the reference rules on one side and texts on the other.
class CNotationInGames : public ::testing::Test {
  protected:
    template <class TCheck> static void ForRandomPositions(unsigned seed, int nGames, TCheck check) {
        constexpr std::array kStarts{kStart, "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R",
                                     "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8", "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N"};
        std::mt19937 random(seed);
        for (int nGame = 0; nGame < nGames; ++nGame) {
            const char* fen = kStarts[static_cast<std::size_t>(nGame) % kStarts.size()];
            CPlayedGame game(fen);
            reference::Position position = reference::ProblemFromFen(fen);
            for (int ply = 0; ply < 60; ++ply) {
                const auto moves = reference::LegalMoves(position);
                if (moves.empty())
                    break;
                ASSERT_NO_FATAL_FAILURE(check(game.Now(), position, moves)) << reference::ToFen(position);
                const auto move = moves[random() % moves.size()];
                game.Play(reference::LongNotation(position, move));
                position = reference::Play(position, move);
            }
        }
    }

    static TFigure PromotionOf(const reference::Move& move) {
        return move.promotion == 0 ? kNoFigure : FigureLetterToKind(move.promotion);
    }
};

TEST_F(CNotationInGames, TextsOfLegalMovesAgreeWithTheReference) {
    ForRandomPositions(21, 24, [](TChessboard& b, const reference::Position& position, const auto& moves) {
        for (const reference::Move& move : moves) {
            const TMove told{move.from, move.to, PromotionOf(move), 0};
            const std::string text = WriteMove(told, b);
            ASSERT_EQ(text, reference::LongNotation(position, move));
            ASSERT_TRUE(SameMove(ParseMove(text, IsWhiteToMove(b)), told)) << text;
            ASSERT_EQ(Outcome(b, text), reference::Placement(reference::Play(position, move))) << text;
        }
    });
}

TEST_F(CNotationInGames, AllOtherMovesAreIllegal) {
    ForRandomPositions(22, 8, [](TChessboard& b, const reference::Position&, const auto& moves) {
        for (int from = 0; from < kSquares; ++from)
            for (int to = 0; to < kSquares; ++to) {
                const TFigure figure = b.m_board[static_cast<TSquare>(from)];
                const bool bLegal = std::any_of(moves.begin(), moves.end(),
                                                [&](const auto& m) { return m.from == from && m.to == to; });
                if (figure == kNoFigure || bLegal)
                    continue;
                const TMove move{static_cast<TSquare>(from), static_cast<TSquare>(to), 0, 0};
                const std::string letter(KindOf(figure) == kPawn ? 0u : 1u, KindToLetter(KindOf(figure)));
                ASSERT_EQ(Outcome(b, letter + WriteTerseMove(move)), "Illegal move") << WriteTerseMove(move);
            }
    });
}

TEST_F(CNotationInGames, FindPosFromFindsALegalSourceOrNone) {
    ForRandomPositions(23, 24, [](TChessboard& b, const reference::Position&, const auto& moves) {
        for (const TFigure kind : {kPawn, kKnight, kBishop, kRook, kQueen})
            for (int target = 0; target < kSquares; ++target) {
                const auto arrives = [&](const reference::Move& m) {
                    return m.to == target && KindOf(b.m_board[m.from]) == kind;
                };
                const bool bAny = std::any_of(moves.begin(), moves.end(), arrives);
                TSquare from = kNoSquare;
                try {
                    from = FindPosFrom(b, kind, static_cast<TSquare>(target));
                } catch (const ChessException&) {
                }
                ASSERT_EQ(from != kNoSquare, bAny) << int{kind} << " to " << target;
                ASSERT_TRUE(!bAny ||
                            std::any_of(moves.begin(), moves.end(),
                                        [&](const reference::Move& m) { return arrives(m) && m.from == from; }))
                    << int{kind} << " to " << target;
            }
    });
}

} // namespace
} // namespace quillon
