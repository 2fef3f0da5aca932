#include "library/tag_scan.h"

#include <algorithm>
#include <string_view>

#include "core/chess_exception.h"
#include "library/ascii.h"
#include "library/file_text.h"
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

} // namespace

void AppendTagsFromFile(const std::filesystem::path& path, std::set<std::string>& tags) {
    std::string content;
    if (ReadFileText(path, content))
        throw ChessException("Error reading file.");
    std::string_view text = content;
    const bool bUtf8 = Trimmed(text.substr(0, text.find('\n')), " \t\xEF\xBB\xBF").starts_with("UTF-8");
    bool bTags = false;
    while (!text.empty()) {
        // Like the reader of problems: blanks in front of a line mean nothing, and neither do empty lines.
        std::string_view line = TakeLine(text);
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        if (ToUpperAscii(Trimmed(line)) == kFirstLine && !bTags) {
            bTags = true;
        } else if (line.empty()) {
            continue;
        } else if (bTags && line.starts_with(kTag)) {
            const std::string_view tag = line.substr(kTag.size());
            if (!tag.empty())
                tags.insert(bUtf8 ? DecodeUtf8(tag) : DecodeLegacyText(tag));
        } else {
            bTags = false;
        }
    }
}

} // namespace quillon
