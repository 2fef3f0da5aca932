#include "library/lexer.h"

#include <algorithm>
#include <cstring>

#include "core/printable.h"
#include "library/ascii.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t\n\r\xA0";
constexpr std::string_view kSortIndications = "//@SortIndications";

/// Length of the lexeme that `rest` (not empty, no blank, no comment) begins with.
std::size_t LexemeLength(std::string_view rest) {
    if (!IsAsciiAlphanumeric(rest.front()))
        return 1;
    const auto end = std::find_if_not(rest.begin(), rest.end(),
                                      [](char c) { return IsAsciiAlphanumeric(c) || c == '^' || c == '_'; });
    return static_cast<std::size_t>(end - rest.begin());
}

/// Does a line comment carry data? `rest` begins with "//".
bool IsSpecialComment(std::string_view rest) {
    if (rest.size() < 3)
        return false;
    return rest[2] == '!' || rest[2] == '#' || (rest[2] == '@' && StartsWithNoCase(rest, kSortIndications));
}

/// Offset of the end mark of the comment that `rest` begins with; npos if it is not closed.
std::size_t FindCommentEnd(std::string_view rest) { return rest[1] == '*' ? rest.find("*/", 2) : rest.find('\n', 2); }

std::size_t EndMarkLength(std::string_view rest) { return rest[1] == '*' ? 2 : 1; }

} // namespace

std::string_view CTextPosition::RestOfLine() const {
    const std::string_view rest = Rest();
    return rest.substr(0, rest.find('\n'));
}

std::string_view CTextPosition::LineSoFar() const {
    return m_text.substr(m_here.m_nLineStart, m_here.m_nOffset - m_here.m_nLineStart);
}

void CTextPosition::Advance(std::size_t nBytes) {
    const std::size_t end = m_here.m_nOffset + std::min(nBytes, m_text.size() - m_here.m_nOffset);
    while (m_here.m_nOffset < end) {
        const char* from = m_text.data() + m_here.m_nOffset;
        const void* lineFeed = std::memchr(from, '\n', end - m_here.m_nOffset);
        if (!lineFeed)
            break;
        m_here.m_nOffset += static_cast<std::size_t>(static_cast<const char*>(lineFeed) - from) + 1;
        m_here.m_nLineStart = m_here.m_nOffset;
        ++m_here.m_nLine;
    }
    m_here.m_nOffset = end;
}

CTextPosition CTextPosition::LexemeStart() const {
    CTextPosition start = *this;
    start.m_here = m_lexeme;
    return start;
}

std::string CTextPosition::Shown(const std::string& message) {
    constexpr std::size_t kLongest = 300;
    const std::string text = Printable(std::string_view(message).substr(0, kLongest));
    return message.size() > kLongest ? text + "..." : text;
}

void CTextPosition::Fail(const std::string& message) const { throw ProblemFileError(Shown(message), LexemePlace()); }

std::string_view NextLexeme(CTextPosition& position, bool bRequired, bool bKeepSpecialComments) {
    for (;;) {
        position.Advance(position.Rest().find_first_not_of(kBlanks));
        position.MarkLexeme();
        const std::string_view rest = position.Rest();
        if (rest.empty()) {
            if (bRequired)
                position.Fail("Unexpected end of file.");
            return {};
        }
        if (rest.front() != '/') {
            const std::string_view lexeme = rest.substr(0, LexemeLength(rest));
            position.Advance(lexeme.size());
            return lexeme;
        }
        if (rest.size() < 2 || (rest[1] != '*' && rest[1] != '/'))
            position.Fail("Unexpected lexem (slash).");
        const std::size_t end = FindCommentEnd(rest);
        if (end == std::string_view::npos) {
            if (bRequired)
                position.Fail("Unexpected end of file before comment closed.");
            position.Advance(rest.size());
            return {};
        }
        if (bKeepSpecialComments && IsSpecialComment(rest)) {
            position.Advance(end);
            return rest.substr(0, end);
        }
        position.Advance(end + EndMarkLength(rest));
    }
}

std::string_view NextToken(CTextPosition& position, bool bRequired, bool bKeepSpecialComments) {
    const std::string_view lexeme = NextLexeme(position, bRequired, bKeepSpecialComments);
    return lexeme.substr(0, lexeme.find('\r'));
}

std::string_view NextIdentifier(CTextPosition& position) {
    const std::string_view lexeme = NextToken(position, true, false);
    if (lexeme.empty() || !IsAsciiAlphanumeric(lexeme.front()))
        position.Fail("Alphanumeric identifier expected. Found: " + std::string(lexeme));
    return lexeme;
}

std::string_view NextWord(CTextPosition& position) {
    position.Advance(position.Rest().find_first_not_of(" \t"));
    position.MarkLexeme();
    const std::string_view rest = position.Rest();
    const std::string_view word = rest.substr(0, rest.find_first_of(" \t\n\r"));
    position.Advance(word.size());
    return word;
}

std::string_view PeekToken(CTextPosition position) { return NextToken(position, true, true); }

} // namespace quillon
