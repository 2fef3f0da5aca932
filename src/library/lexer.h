#pragma once
// The lexer of problem libraries: blanks, two kinds of comments, lexemes.
//
// A lexeme is a run of ASCII letters, digits, "^" and "_" that begins with a letter or a digit, or a single other
// character. Blanks are space, tab, LF, CR and the byte 0xA0. "/*" opens a comment that ends at "*/", "//" one that
// ends at LF; comments are skipped like blanks. Some line comments carry data ("//!", "//#", "//@SortIndications"):
// where they are asked for they are lexemes, whole to the end of the line.
//
// Lexemes are views into the text, so the text must outlive them. The cost of each call is linear in the bytes it
// passes.

#include <cstddef>
#include <string>
#include <string_view>

#include "library/problem_file_error.h"

namespace quillon {

/// A place in a text that is being read. A copy is a bookmark: to put a lexeme back, assign the copy taken before it.
/// Also knows where the lexeme read last began: that is the place a message is about.
class CTextPosition {
  public:
    /// Line feeds ahead are counted from `nFirstLine` on, for a text that is a piece of a file.
    explicit CTextPosition(std::string_view text, int nFirstLine = 1)
        : m_text(text), m_here{0, 0, nFirstLine}, m_lexeme(m_here) {}

    [[nodiscard]] bool AtEnd() const { return m_here.m_nOffset == m_text.size(); }
    [[nodiscard]] std::size_t Offset() const { return m_here.m_nOffset; }
    [[nodiscard]] std::string_view Rest() const { return m_text.substr(m_here.m_nOffset); }

    /// What follows up to the next LF (excluded) or the end of the text.
    [[nodiscard]] std::string_view RestOfLine() const;

    /// What stands on the line before this place.
    [[nodiscard]] std::string_view LineSoFar() const;

    /// Moves on by nBytes, at most to the end of the text.
    void Advance(std::size_t nBytes);

    /// A lexeme begins here.
    void MarkLexeme() { m_lexeme = m_here; }

    /// The beginning of the lexeme read last.
    [[nodiscard]] CTextPosition LexemeStart() const;

    [[nodiscard]] TTextPlace Place() const { return PlaceOf(m_here); }
    [[nodiscard]] TTextPlace LexemePlace() const { return PlaceOf(m_lexeme); }

    /// Throws ProblemFileError with the place of the lexeme read last. What a message quotes comes from the text: bytes
    /// that cannot be printed are written as \xNN, and a message without end is cut.
    [[noreturn]] void Fail(const std::string& message) const;

    /// The message as Fail throws it.
    [[nodiscard]] static std::string Shown(const std::string& message);

  private:
    struct TMark {
        std::size_t m_nOffset;
        std::size_t m_nLineStart;
        int m_nLine;
    };

    [[nodiscard]] static TTextPlace PlaceOf(const TMark& mark) {
        return {mark.m_nLine, static_cast<int>(mark.m_nOffset - mark.m_nLineStart) + 1};
    }

    std::string_view m_text;
    TMark m_here;
    TMark m_lexeme;
};

/// The next lexeme; the position ends up behind it.
///   bRequired             clear: at the end of the text, or in a comment that never ends, the result is empty.
///   bKeepSpecialComments  set: a line comment "//!...", "//#..." or "//@SortIndications..." is a lexeme, LF excluded.
///   Errors  "Unexpected end of file." and "Unexpected end of file before comment closed." (bRequired set only),
///           "Unexpected lexem (slash).". A line comment too must be closed, by its LF.
[[nodiscard]] std::string_view NextLexeme(CTextPosition& position, bool bRequired, bool bKeepSpecialComments);

/// The next lexeme up to its first CR.
[[nodiscard]] std::string_view NextToken(CTextPosition& position, bool bRequired, bool bKeepSpecialComments);

/// The next lexeme, which must begin with a letter or a digit.
///   Errors  those of NextLexeme; "Alphanumeric identifier expected. Found: " and the lexeme.
[[nodiscard]] std::string_view NextIdentifier(CTextPosition& position);

/// Skips spaces and tabs; the bytes up to the next space, tab, LF or CR. May be empty; never fails.
[[nodiscard]] std::string_view NextWord(CTextPosition& position);

/// What NextToken would return, required and with special comments kept; the position stays.
[[nodiscard]] std::string_view PeekToken(CTextPosition position);

} // namespace quillon
