// The body of a problem: description and position.

#include "core/fen.h"
#include "core/notation.h"
#include "library/ascii.h"
#include "library/problem_parser.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

std::string NextUpperIdentifier(TProblemParser& parser) { return ToUpperAscii(NextIdentifier(parser.m_position)); }

/// Consumes the identifier that opens the description, if it is that which follows.
bool OpensDescription(TProblemParser& parser) {
    const CTextPosition before = parser.m_position;
    const std::string identifier = NextUpperIdentifier(parser);
    if (identifier == "D" || identifier == "DESC" || identifier == "DESCRIPTION")
        return true;
    parser.m_position = before;
    return false;
}

/// The rest of the line is text: neither comments nor brackets mean anything in it.
void ReadDescription(TProblemParser& parser) {
    Expect(parser, ":", "Colon ':' expected after description identifier.");
    const std::string_view line = parser.m_position.RestOfLine();
    parser.m_position.Advance(line.size());
    parser.m_problem.description = TrimText(parser.Decode(line));
}

TChessboard ReadFenPosition(TProblemParser& parser) {
    Expect(parser, ":", "Colon ':' expected after FEN identifier.");
    const std::string_view word = NextWord(parser.m_position);
    TChessboard board = EmptyChessboard();
    try {
        if (word.empty())
            throw ChessException("no placement");
        static_cast<void>(ReadFEN(board, word));
    } catch (const ChessException&) {
        parser.m_position.Fail("Improper FEN code");
    }
    return board;
}

/// One colour of a list of figures.
struct TFigureColour {
    TFigure m_colour;
    const char* m_name; // in messages
};
constexpr TFigureColour kWhiteFigures{kWhite, "White"};
constexpr TFigureColour kBlackFigures{kBlack, "Black"};

/// Puts what an identifier such as "KE1" or, for a pawn, "E2" tells on the board.
void PlaceFigure(TProblemParser& parser, TChessboard& board, const TFigureColour& colour) {
    const CTextPosition& position = parser.m_position;
    const std::string identifier = NextUpperIdentifier(parser);
    const auto fail = [&](const char* what) {
        position.Fail(std::string(colour.m_name) + " figure " + what + " is invalid: " + identifier);
    };
    if (identifier.size() != 2 && identifier.size() != 3)
        fail("specification");
    const TFigure kind =
        identifier.size() == 2 ? kPawn : AtLexeme(parser, [&] { return FigureLetterToKind(identifier.front()); });
    const char file = identifier[identifier.size() - 2];
    const char rank = identifier.back();
    if (file < 'A' || file > 'H' || rank < '1' || rank > '8')
        fail("position");
    TFigure& square = board.m_board[SquareAt(file - 'A', rank - '1')];
    if (square != kNoFigure)
        position.Fail(std::string("Square ") + file + rank + " already occupied.");
    square = static_cast<TFigure>(colour.m_colour | kind);
}

/// A run of identifiers separated by commas; nothing if the body ends here.
void ReadFigures(TProblemParser& parser, TChessboard& board, const TFigureColour& colour) {
    if (PeekToken(parser.m_position) == "}")
        return;
    PlaceFigure(parser, board, colour);
    while (PeekToken(parser.m_position) == ",") {
        static_cast<void>(NextLexeme(parser));
        PlaceFigure(parser, board, colour);
    }
}

TChessboard ReadFigureLists(TProblemParser& parser) {
    TChessboard board = EmptyChessboard();
    Expect(parser, ":", "Colon ':' expected after white figures identifier.");
    ReadFigures(parser, board, kWhiteFigures);
    const std::string identifier = NextUpperIdentifier(parser);
    if (identifier != "B" && identifier != "BL" && identifier != "BLACK")
        parser.m_position.Fail("Black figures identifier expected (B, BL or BLACK).");
    Expect(parser, ":", "Colon expected after black figures identifier.");
    ReadFigures(parser, board, kBlackFigures);
    return board;
}

TChessboard ReadPosition(TProblemParser& parser) {
    const std::string identifier = NextUpperIdentifier(parser);
    if (identifier == "FEN")
        return ReadFenPosition(parser);
    if (identifier == "W" || identifier == "WH" || identifier == "WHITE")
        return ReadFigureLists(parser);
    parser.m_position.Fail("White figures identifier expected (W, WH or WHITE).");
}

} // namespace

void ParseBody(TProblemParser& parser) {
    if (OpensDescription(parser))
        ReadDescription(parser);
    const TChessboard board = ReadPosition(parser);
    AtLexeme(parser, [&] { SetOriginalPosition(parser.m_problem, board); });
    ParsePlayedMoves(parser);
    ParseExpectedAnswer(parser);
    Expect(parser, "}", "Closing bracket expected.");
    parser.m_bInBody = false;
}

} // namespace quillon
