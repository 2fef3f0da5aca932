#pragma once
// The recursive-descent parser of one problem. Only the reader of problem files uses it; problem_file.h is the door.
//
//   problem  = id stipulation { option } [ tags ] [ variants ] [ sort indications ] "{" body "}"
//   body     = [ description ] position [ played moves ] [ expected answer ]
//
// Each part begins where the one before it ended, and every failure is a ProblemFileError with the place of the lexeme
// that was not expected.

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/chess_exception.h"
#include "library/chess_problem.h"
#include "library/lexer.h"

namespace quillon {

/// Options that hold for every problem of N moves of a file: N -> options as written.
using TDefaultClauses = std::map<int, std::set<std::string>>;

/// What is being read, how far, and into what.
struct TProblemParser {
    ChessProblem& m_problem;
    CTextPosition m_position;
    bool m_bUtf8;           // the text is UTF-8; else in the legacy code page
    bool m_bPolish = false; // the language of what is wrong with sort indications
    bool m_bIdRead = false; // m_problem.id is that of the text
    bool m_bInBody = false; // the opening bracket has been read, the closing one not

    std::vector<ProblemFileError>
        m_warnings{}; // the problem can be read; a part of it may be lost, as a variant that another replaces

    [[nodiscard]] std::string Decode(std::string_view bytes) const;

    void Warn(const std::string& message, TTextPlace place) {
        m_warnings.emplace_back(message, place, ProblemFileError::ESeverity::Warning);
    }

    /// About the lexeme read last.
    void Warn(const std::string& message);
};

/// All of it; the position ends up behind the closing bracket. After a failure m_position is near the lexeme that
/// failed, never behind it.
void ParseWholeProblem(TProblemParser& parser, const TDefaultClauses& defaults);

// The parts, in their order.
void ParseHeader(TProblemParser& parser, const TDefaultClauses& defaults);
void ParseOptions(TProblemParser& parser);
void ParseSections(TProblemParser& parser);    // up to the opening bracket, included
void ParseBody(TProblemParser& parser);        // up to the closing bracket, included
void ParsePlayedMoves(TProblemParser& parser); // of a problem without a stipulation
void ParseExpectedAnswer(TProblemParser& parser);

/// The next lexeme of a body, of whatever kind.
[[nodiscard]] inline std::string_view NextLexeme(TProblemParser& parser) {
    return NextLexeme(parser.m_position, true, false);
}

/// Fails with `message` if the next lexeme is not `expected`.
inline void Expect(TProblemParser& parser, std::string_view expected, const std::string& message) {
    if (NextLexeme(parser) != expected)
        parser.m_position.Fail(message);
}

/// Runs `read`; what the chess core has against its input becomes a failure at the lexeme read last.
template <class TRead> decltype(auto) AtLexeme(const TProblemParser& parser, TRead read) {
    try {
        return read();
    } catch (const ProblemFileError&) {
        throw;
    } catch (const ChessException& failure) {
        parser.m_position.Fail(failure.what());
    }
}

} // namespace quillon
