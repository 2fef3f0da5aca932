#include "library/tag_scan.h"

#include <algorithm>
#include <string_view>

#include "core/chess_exception.h"
#include "library/ascii.h"
#include "library/file_text.h"
#include "library/lexer.h"
#include "library/problem_file_error.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

constexpr std::string_view kTag = "//#";
constexpr std::string_view kFirstLine = "//#TAGS";
constexpr std::string_view kBlanks = " \t\xA0";

std::string_view TakeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line.substr(0, line.find('\r'));
}

/// Reads the run of tags that `text` begins with, by the same rules as the reader of problems: other comments between
/// them mean nothing. `text` begins behind them then.
void ReadRun(std::string_view& text, bool bUtf8, std::set<std::string>& tags) {
    CTextPosition position(text);
    for (;;) {
        CTextPosition next = position;
        try {
            const std::string_view token = NextToken(next, false, true);
            if (!token.starts_with(kTag))
                break;
            if (const std::string_view tag = token.substr(kTag.size()); !tag.empty())
                tags.insert(bUtf8 ? DecodeUtf8(tag) : DecodeLegacyText(tag));
        } catch (const ProblemFileError&) { // no lexeme at all
            break;
        }
        position = next;
    }
    text = position.Rest();
}

} // namespace

void AppendTagsFromFile(const std::filesystem::path& path, std::set<std::string>& tags) {
    std::string content;
    if (ReadFileText(path, content))
        throw ChessException("Error reading file.");
    content += '\n'; // the last line may have none, and is a tag all the same
    std::string_view text = content;
    const bool bUtf8 = TakeUtf8Mark(text);
    while (!text.empty()) {
        // Like the reader of problems: blanks in front of a line mean nothing.
        std::string_view line = TakeLine(text);
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        if (ToUpperAscii(Trimmed(line)) == kFirstLine)
            ReadRun(text, bUtf8, tags);
    }
}

} // namespace quillon
