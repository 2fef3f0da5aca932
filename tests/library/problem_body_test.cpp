// Description and position of a problem.

#include <gtest/gtest.h>
#include <string>

#include "core/figures.h"
#include "library/problem_reading.h"
#include "library/text_decoding.h"

namespace quillon {
namespace {

using namespace quillon::testing;

constexpr const char* kPosition = "FEN: 8/8/8/4k3/8/8/8/3QK3";

constexpr std::size_t At(char file, int rank) { return static_cast<std::size_t>(SquareAt(file - 'a', rank - 1)); }

TEST(ProblemDescription, IsTheRestOfTheLine) {
    for (const char* name : {"D", "Desc", "DESCRIPTION", "description", "d"})
        EXPECT_EQ(ReadBody(std::string(name) + ":  K. Author, 1920 // {not} \"a\" /* comment\t \r\n" + kPosition)
                      ->description,
                  "K. Author, 1920 // {not} \"a\" /* comment")
            << name;
    EXPECT_EQ(ReadBody(std::string("Desc :x\n") + kPosition)->description, "x");
}

TEST(ProblemDescription, MayBeEmptyOrMissing) {
    EXPECT_EQ(ReadBody(std::string("Desc:\n") + kPosition)->description, "");
    EXPECT_EQ(ReadBody(kPosition)->description, "");
}

TEST(ProblemDescription, IsDecodedFromTheEncodingOfTheFile) {
    const std::string tail = std::string("\n") + kPosition + "\n}\n";
    EXPECT_EQ(ReadOne("UTF-8\n1 #2 { Desc: Z\xC5\x82oty" + tail)->description, "Z\xC5\x82oty");
    EXPECT_EQ(ReadOne("UTF-8\n1 #2 { Desc: bad \xFF byte" + tail)->description, "bad \xEF\xBF\xBD byte");
    ASSERT_TRUE(SetLegacyCodePage("windows-1250"));
    EXPECT_EQ(ReadOne("1 #2 { Desc: Z\xB3oty" + tail)->description, "Z\xC5\x82oty");
    EXPECT_EQ(ReadOne("1 #2 //#TAGS\n//#\xB3\n{" + tail)->tags, (std::set<std::string>{"\xC5\x82"}));
    ASSERT_TRUE(SetLegacyCodePage(""));
}

TEST(ProblemDescription, WantsAColon) {
    EXPECT_EQ(BodyMessage("Desc x\nFEN: 8/8/8/4k3/8/8/8/3QK3"), "Colon ':' expected after description identifier.");
}

TEST(ProblemPosition, FromFen) {
    const auto problem = ReadBody("fen : 8/8/8/4k3/8/8/8/3QK3");
    const TChessboard& board = *problem->originalPosition;
    EXPECT_EQ(board.m_board[At('e', 5)], kBlackKing);
    EXPECT_EQ(board.m_board[At('d', 1)], kWhiteQueen);
    EXPECT_EQ(board.m_board[At('e', 1)], kWhiteKing);
    EXPECT_EQ(WhiteMen(board), 1);
    EXPECT_EQ(board.m_whiteQueens, 1);
    EXPECT_EQ(board.m_pPrevious, nullptr);
}

TEST(ProblemPosition, FenFailures) {
    EXPECT_EQ(BodyMessage("FEN 8/8/8/4k3/8/8/8/3QK3"), "Colon ':' expected after FEN identifier.");
    EXPECT_EQ(BodyMessage("FEN:"), "Improper FEN code");
    EXPECT_EQ(BodyMessage("FEN:\n8/8/8/4k3/8/8/8/3QK3"), "Improper FEN code");
    EXPECT_EQ(BodyMessage("FEN: 8/8/8/4k3/8/8/3QK3"), "Improper FEN code");
    EXPECT_EQ(BodyMessage("FEN: 8/8/8/4k3/8/8/8/3QX3"), "Improper FEN code");
    EXPECT_EQ(StrictError("1 #2\n{\n\tFEN: 9/8\n}\n"), "3:7 Improper FEN code");
}

TEST(ProblemPosition, NothingElseOfAFenIsRead) {
    EXPECT_EQ(BodyMessage("FEN: 8/8/8/4k3/8/8/8/3QK3 w - - 0 1"), "Closing bracket expected.");
}

TEST(ProblemPosition, FigureListsEqualTheFen) {
    const auto fromFen = ReadBody(kPosition);
    for (const char* lists : {"W: Ke1, Qd1 B: Ke5", "White: Ke1,Qd1\nBlack: Ke5", "wh:hd1 , ke1 bl:ke5"})
        EXPECT_EQ(ReadBody(lists)->originalPosition->m_board, fromFen->originalPosition->m_board) << lists;
}

TEST(ProblemPosition, FigureLetters) {
    const auto problem = ReadBody("W: Ka1, Gb1, Bb2, Wc1, Rc2, Hd1, Qd2, Se1, Ne2, Pf2, g2 B: Kg8, h7");
    const TChessboard& board = *problem->originalPosition;
    EXPECT_EQ(board.m_board[At('b', 1)], kWhiteBishop);
    EXPECT_EQ(board.m_board[At('b', 2)], kWhiteBishop);
    EXPECT_EQ(board.m_board[At('c', 1)], kWhiteRook);
    EXPECT_EQ(board.m_board[At('c', 2)], kWhiteRook);
    EXPECT_EQ(board.m_board[At('d', 1)], kWhiteQueen);
    EXPECT_EQ(board.m_board[At('d', 2)], kWhiteQueen);
    EXPECT_EQ(board.m_board[At('e', 1)], kWhiteKnight);
    EXPECT_EQ(board.m_board[At('e', 2)], kWhiteKnight);
    EXPECT_EQ(board.m_board[At('f', 2)], kWhitePawn);
    EXPECT_EQ(board.m_board[At('g', 2)], kWhitePawn);
    EXPECT_EQ(board.m_board[At('h', 7)], kBlackPawn);
    EXPECT_EQ(board.m_board[At('g', 8)], kBlackKing);
}

TEST(ProblemPosition, FigureListFailures) {
    EXPECT_EQ(BodyMessage("Answer: Ka1-a2"), "White figures identifier expected (W, WH or WHITE).");
    EXPECT_EQ(BodyMessage(""), "Alphanumeric identifier expected. Found: }");
    EXPECT_EQ(BodyMessage("W Ke1"), "Colon ':' expected after white figures identifier.");
    EXPECT_EQ(BodyMessage("W: Ke1 Qd1 B: Ke5"), "Black figures identifier expected (B, BL or BLACK).");
    EXPECT_EQ(BodyMessage("W: Ke1 B Ke5"), "Colon expected after black figures identifier.");
    EXPECT_EQ(BodyMessage("W: Ke1, e B: Ke5"), "White figure specification is invalid: E");
    EXPECT_EQ(BodyMessage("W: Ke1 B: Ke5a"), "Black figure specification is invalid: KE5A");
    EXPECT_EQ(BodyMessage("W: Ki1 B: Ke5"), "White figure position is invalid: KI1");
    EXPECT_EQ(BodyMessage("W: Ke1 B: Ke9"), "Black figure position is invalid: KE9");
    EXPECT_EQ(BodyMessage("W: Ke1 B: e0"), "Black figure position is invalid: E0");
    EXPECT_EQ(BodyMessage("W: Ke1, Xd1 B: Ke5"), "Unknown figure letter: X");
    EXPECT_EQ(BodyMessage("W: Ke1 B: Qe1"), "Square E1 already occupied.");
    EXPECT_EQ(BodyMessage("W: Ke1, B: Ke5"), "White figure specification is invalid: B");
}

TEST(ProblemPosition, AListIsEmptyOnlyBeforeTheEndOfTheBody) {
    EXPECT_EQ(BodyMessage("W: Ke1 B:"), "Illegal number of kings.");
    EXPECT_EQ(BodyMessage("W: B: Ke5"), "White figure specification is invalid: B");
    EXPECT_EQ(BodyMessage("W:"), "Alphanumeric identifier expected. Found: }");
}

TEST(ProblemPosition, IsValidated) {
    EXPECT_EQ(BodyMessage("W: Ke1, Ke2 B: Ke5"), "Illegal number of kings.");
    EXPECT_EQ(BodyMessage("W: Ke1, a8 B: Ke5"), "Pawns cannot occupy 1st nor 8th line of the chessboard.");
    EXPECT_EQ(BodyMessage("W: Ke1 B: Ke2"), "Both kings attacked.");
    EXPECT_EQ(BodyMessage("W: Ke1, Ra5 B: Ke5"), "Black is in check with White to move.");
    EXPECT_EQ(StrictError("1 #2\n{\n\tFEN: 8/8/8/R3k3/8/8/8/4K3\n}\n"), "3:7 Black is in check with White to move.");
    EXPECT_EQ(ReadBody("W: Ke1 B: Ke5, Ra1")->originalPosition->m_whiteChecker, kA1); // White may be in check
}

TEST(ProblemBody, EndsWithItsBracket) {
    EXPECT_EQ(BodyMessage("FEN: 8/8/8/4k3/8/8/8/3QK3\nFoo"), "Closing bracket expected.");
    EXPECT_EQ(StrictError("1 #2\n{\nFEN: 8/8/8/4k3/8/8/8/3QK3\n"), "4:1 Unexpected end of file.");
    EXPECT_EQ(StrictError("1 #2 AllSolutions"), "1:18 Unexpected end of file.");
    EXPECT_EQ(StrictError("1 #2 { /* never closed }"), "1:8 Unexpected end of file before comment closed.");
}

TEST(ProblemBody, CommentsMayStandBetweenLexemes) {
    const auto problem = ReadBody("// here\nW /* and */ : Ke1, // there\n Qd1 B:/**/Ke5\n//! and everywhere\n");
    EXPECT_EQ(problem->originalPosition->m_board, ReadBody(kPosition)->originalPosition->m_board);
}

} // namespace
} // namespace quillon
