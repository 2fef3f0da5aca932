#include "library/problem_resync.h"

#include <algorithm>
#include <array>
#include <optional>

#include "library/ascii.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t";

void SkipBlanks(std::string_view& text) { text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size())); }

/// Takes digits off the front; false if there are none.
bool SkipDigits(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsAsciiDigit);
    const bool bAny = end != text.begin();
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
    return bAny;
}

/// The description of a body is free text: brackets and comment signs mean nothing in it.
bool LooksLikeDescription(std::string_view line) {
    line = Trimmed(line);
    const std::string_view word = line.substr(0, line.find_first_of(" \t:"));
    line.remove_prefix(word.size());
    SkipBlanks(line);
    constexpr std::array<std::string_view, 3> kNames{"D", "DESC", "DESCRIPTION"};
    return line.starts_with(':') && std::find(kNames.begin(), kNames.end(), ToUpperAscii(word)) != kNames.end();
}

/// Length of the comment that `rest` begins with; 1 if it is a mere slash.
std::size_t CommentLength(std::string_view rest) {
    const bool bBlock = rest.starts_with("/*");
    if (!bBlock && !rest.starts_with("//"))
        return 1;
    const auto end = bBlock ? rest.find("*/", 2) : rest.find('\n');
    return end == std::string_view::npos ? rest.size() : end + (bBlock ? 2 : 0);
}

bool IsAtLineStart(const CTextPosition& position) {
    return position.LineSoFar().find_first_not_of(kBlanks) == std::string_view::npos;
}

/// Passes over the text and notices brackets, comments and lines that look like the first of a problem.
class CNextProblemScan {
  public:
    CNextProblemScan(const CTextPosition& from, bool bInBody)
        : m_position(from), m_bInBody(bInBody), m_bLineStart(IsAtLineStart(from)) {}

    CTextPosition Run() {
        while (!m_found && !m_position.AtEnd()) {
            if (m_bLineStart)
                LookAtLine();
            else
                LookAtByte();
        }
        if (m_found)
            return *m_found;
        return m_candidate ? *m_candidate : m_position;
    }

  private:
    void LookAtLine() {
        m_bLineStart = false;
        const std::string_view line = m_position.RestOfLine();
        if (LooksLikeHeader(line)) {
            if (!m_bInBody)
                m_found = m_position;
            else if (!m_candidate)
                m_candidate = m_position;
        } else if (m_bInBody && LooksLikeDescription(line)) {
            m_position.Advance(line.size());
        }
    }

    void LookAtByte() {
        m_position.Advance(m_position.Rest().find_first_of("{}/\n"));
        if (m_position.AtEnd())
            return;
        const char c = m_position.Rest().front();
        if (c == '{') {
            m_found = m_candidate;
            m_bInBody = true;
        } else if (c == '}') {
            m_candidate.reset();
            m_bInBody = false;
        }
        m_position.Advance(c == '/' ? CommentLength(m_position.Rest()) : 1);
        m_bLineStart = c == '\n';
    }

    CTextPosition m_position;
    bool m_bInBody;
    bool m_bLineStart;
    std::optional<CTextPosition> m_candidate; // looks like a problem, but stands where a body has not been closed
    std::optional<CTextPosition> m_found;
};

/// Behind the first lexeme of a problem, or behind what cannot be read as a lexeme.
CTextPosition BehindFirstLexeme(CTextPosition position) {
    const std::size_t before = position.Offset();
    try {
        static_cast<void>(NextLexeme(position, true, false));
    } catch (const ProblemFileError&) {
        position.Advance(CommentLength(position.Rest()));
    }
    if (position.Offset() == before)
        position.Advance(1);
    return position;
}

} // namespace

bool LooksLikeHeader(std::string_view line) {
    SkipBlanks(line);
    if (!SkipDigits(line))
        return false;
    const bool bBlank = line.find_first_not_of(kBlanks) != 0;
    SkipBlanks(line);
    if (bBlank && line.starts_with('s'))
        line.remove_prefix(1);
    SkipBlanks(line);
    if (!line.starts_with('#'))
        return false;
    line.remove_prefix(1);
    SkipBlanks(line);
    return SkipDigits(line);
}

CTextPosition FindNextProblem(const CTextPosition& begin, const CTextPosition& reached, bool bInBody) {
    CTextPosition from = BehindFirstLexeme(begin);
    const CTextPosition lexeme = reached.LexemeStart();
    if (lexeme.Offset() > from.Offset())
        from = lexeme;
    return CNextProblemScan(from, bInBody).Run();
}

} // namespace quillon
