// The moves that have been played in a problem without a stipulation.

#include "core/notation.h"
#include "library/ascii.h"
#include "library/played_line.h"
#include "library/problem_parser.h"

namespace quillon {

namespace {

[[nodiscard]] bool CanBeginMove(std::string_view lexeme) {
    return lexeme == "0" || lexeme.size() == 2 || lexeme.size() == 3;
}

void ExpectZero(TProblemParser& parser) {
    const std::string_view zero = NextLexeme(parser);
    if (zero != "0")
        parser.m_position.Fail("Incorrect castling symbol: " + std::string(zero));
}

/// Behind the "0" that begins a castling.
TMove ReadCastling(TProblemParser& parser, bool bWhite) {
    Expect(parser, "-", "Hyphen expected.");
    ExpectZero(parser);
    const bool bLong = PeekToken(parser.m_position) == "-";
    if (bLong) {
        static_cast<void>(NextLexeme(parser));
        ExpectZero(parser);
    }
    return ParseMove(bLong ? "0-0-0" : "0-0", bWhite);
}

/// Fails with `what` and the lexeme, which was read last, if it does not begin with a square at `index`.
TSquare ToSquare(const TProblemParser& parser, const std::string& lexeme, std::size_t index, const char* what) {
    const std::string_view square = std::string_view(lexeme).substr(index, 2);
    if (square.size() != 2 || square[0] < 'A' || square[0] > 'H' || square[1] < '1' || square[1] > '8')
        parser.m_position.Fail(what + lexeme);
    return SquareAt(square[0] - 'A', square[1] - '1');
}

/// A move whose first lexeme has been read.
TMove ReadMove(TProblemParser& parser, std::string_view first, bool bWhite) {
    if (first == "0")
        return ReadCastling(parser, bWhite);
    const std::string from = ToUpperAscii(first);
    TMove move{ToSquare(parser, from, from.size() - 2, "Invalid 'from' position: "), 0, 0, 0};
    const std::string_view separator = NextLexeme(parser);
    if (separator != "-" && separator != ":")
        parser.m_position.Fail("Invalid lexem encountered: " + std::string(separator));
    const std::string to = ToUpperAscii(NextLexeme(parser));
    constexpr const char* kInvalidTo = "Invalid 'to' position: ";
    if (to.size() != 2 && to.size() != 3)
        parser.m_position.Fail(kInvalidTo + to);
    move.m_nTo = ToSquare(parser, to, 0, kInvalidTo);
    if (to.size() == 3)
        move.m_nPromotion = AtLexeme(parser, [&] { return FigureLetterToKind(to.back()); });
    return move;
}

void ReadMoves(TProblemParser& parser) {
    CPlayedLine line;
    line.Start(*parser.m_problem.originalPosition);
    for (;;) {
        const CTextPosition before = parser.m_position;
        const std::string_view lexeme = NextLexeme(parser);
        if (!CanBeginMove(lexeme)) {
            parser.m_position = before;
            return;
        }
        const TMove move = ReadMove(parser, lexeme, IsWhiteToMove(line.Position()));
        if (!PlayOn(parser.m_problem, line, move))
            parser.m_position.Fail("Illegal move: " + WriteTerseMove(move));
    }
}

} // namespace

void ParsePlayedMoves(TProblemParser& parser) {
    if (parser.m_problem.kind != kNoStipulation)
        return;
    const CTextPosition before = parser.m_position;
    if (ToUpperAscii(NextLexeme(parser)) != "MOVES") {
        parser.m_position = before;
        return;
    }
    Expect(parser, ":", "Colon expected after Moves section start.");
    ReadMoves(parser);
}

} // namespace quillon
