// The expected answer of a problem: the keys, or the best white moves.

#include <algorithm>
#include <array>

#include "core/notation.h"
#include "library/ascii.h"
#include "library/problem_parser.h"

namespace quillon {

namespace {

struct TAnswerSection {
    std::string_view m_name;
    ProblemFlags m_flags;
    std::vector<TMove> ChessProblem::*m_moves;
};

constexpr ProblemFlags kOnlyExpectedMoves = kFlagExpectedSortWhiteMoves | kFlagExpectedSortWhiteMovesOnly;

constexpr std::array kAnswerSections{
    TAnswerSection{"SOLUTION", kFlagAnswer, &ChessProblem::answer},
    TAnswerSection{"ANSWER", kFlagAnswer, &ChessProblem::answer},
    TAnswerSection{"A", kFlagAnswer, &ChessProblem::answer},
    TAnswerSection{"EXPECTEDSORTWHITEMOVES", kFlagExpectedSortWhiteMoves, &ChessProblem::expectedWhiteMoves},
    TAnswerSection{"SWM", kFlagExpectedSortWhiteMoves, &ChessProblem::expectedWhiteMoves},
    TAnswerSection{"EXPECTEDSORTWHITEMOVESONLY", kOnlyExpectedMoves, &ChessProblem::expectedWhiteMoves},
};

/// The index of a square in eight bits. Nothing else is asked of it here: a wrong answer must not keep a problem from
/// being solved.
std::uint8_t UncheckedSquare(std::string_view text) {
    return static_cast<std::uint8_t>(text[0] - 'A' + 8 * (text[1] - '1'));
}

/// Behind the "0" that begins a castling. It is always White's.
TMove ReadCastling(TProblemParser& parser) {
    Expect(parser, "-", "Hyphen expected to separate correct answer elements");
    const std::string_view zero = NextLexeme(parser);
    if (zero != "0")
        parser.m_position.Fail("Invalid correct answer: " + std::string(zero));

    CTextPosition ahead = parser.m_position;
    const bool bLong = NextLexeme(ahead, true, false) == "-" && NextLexeme(ahead, true, false) == "0";
    if (bLong)
        parser.m_position = ahead;

    const CTextPosition behind = parser.m_position;
    const std::string_view next = NextLexeme(parser);
    if (next != "}" && next != ",")
        parser.m_position.Fail("Comma should separate various solutions of the problem, but encountered: " +
                               std::string(next));
    parser.m_position = behind;
    return {kE1, bLong ? kC1 : kG1, 0, 0};
}

/// A move whose first lexeme has been read.
TMove ReadMove(TProblemParser& parser, std::string_view first) {
    if (first == "0")
        return ReadCastling(parser);
    const std::string from = ToUpperAscii(first);
    const std::string_view fromSquare = std::string_view(from).substr(from.size() > 2 ? 1 : 0);
    if (fromSquare.size() != 2)
        parser.m_position.Fail("Invalid correct answer ('from' element): " + from);

    const std::string_view separator = NextLexeme(parser);
    if (separator != "-" && separator != ":")
        parser.m_position.Fail("Hyphen expected to separate correct answer elements");

    const std::string to = ToUpperAscii(NextLexeme(parser));
    if (to.size() != 2 && to.size() != 3)
        parser.m_position.Fail("Invalid correct answer ('to' element): " + to);
    TMove move{UncheckedSquare(fromSquare), UncheckedSquare(to), 0, 0};
    if (to.size() == 3)
        move.m_nPromotion = AtLexeme(parser, [&] { return FigureLetterToKind(to.back()); });
    return move;
}

/// Moves up to the closing bracket, which is left for the caller. Commas between them are optional.
std::vector<TMove> ReadMoves(TProblemParser& parser) {
    std::vector<TMove> moves;
    for (;;) {
        CTextPosition before = parser.m_position;
        std::string_view lexeme = NextLexeme(parser);
        if (lexeme == ",") {
            before = parser.m_position;
            lexeme = NextLexeme(parser);
        }
        if (lexeme == "}") {
            parser.m_position = before;
            return moves;
        }
        moves.push_back(ReadMove(parser, lexeme));
    }
}

} // namespace

void ParseExpectedAnswer(TProblemParser& parser) {
    const CTextPosition before = parser.m_position;
    const std::string name = ToUpperAscii(NextLexeme(parser));
    const auto section = std::find_if(kAnswerSections.begin(), kAnswerSections.end(),
                                      [&](const TAnswerSection& candidate) { return candidate.m_name == name; });
    if (section == kAnswerSections.end()) {
        parser.m_position = before;
        return;
    }
    Expect(parser, ":", "Colon expected after correct answer identifier.");
    parser.m_problem.flags |= section->m_flags;
    parser.m_problem.*(section->m_moves) = ReadMoves(parser);
}

} // namespace quillon
