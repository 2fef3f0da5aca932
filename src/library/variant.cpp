#include "library/variant.h"

#include <algorithm>

#include "core/notation.h"
#include "library/ascii.h"
#include "library/one_line.h"
#include "library/problem_language.h"

namespace quillon {

namespace {

/// Takes the name off the front of the text.
std::string TakeName(std::string_view& text) {
    const auto open = text.find('{');
    const auto close = text.find('}');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return {};
    std::string name(text.substr(open + 1, close - open - 1));
    text.remove_prefix(close + 1);
    return name;
}

/// Takes everything before `count` off the front and returns it.
std::string_view Take(std::string_view& text, std::size_t count) {
    const std::string_view taken = text.substr(0, count);
    text.remove_prefix(taken.size());
    return taken;
}

/// The comment that `text` begins with, if it begins with "["; the brackets are taken too.
std::string_view TakeComment(std::string_view& text) {
    if (!text.starts_with('['))
        return {};
    text.remove_prefix(1);
    const std::string_view comment = Take(text, text.find(']'));
    Take(text, 1);
    return comment;
}

std::string_view WithoutSigns(std::string_view move) {
    const auto last = move.find_last_not_of("+x");
    return last == std::string_view::npos ? std::string_view() : move.substr(0, last + 1);
}

} // namespace

std::string FormatVariantLine(const Variant& variant, bool bWithComments) {
    const std::string_view name =
        IsMainVariantName(variant.name) ? MainVariantName(ELanguage::English) : std::string_view(variant.name);
    std::string line = "{" + OneLineWithout(name, '}') + "}";
    for (const VariantMove& move : variant.moves) {
        line += " " + move.text;
        if (bWithComments && !move.comment.empty())
            line += "[" + OneLineWithout(move.comment, ']') + "]";
    }
    return line;
}

void ParseVariantLine(Variant& variant, std::string_view text) {
    text = text.substr(0, text.find('\n'));
    variant.name = TakeName(text);
    variant.moves.clear();
    for (;;) {
        const auto first = std::find_if(text.begin(), text.end(), IsAsciiAlphanumeric);
        text.remove_prefix(static_cast<std::size_t>(first - text.begin()));
        if (text.empty())
            return;
        const std::string_view moveText = Take(text, text.find_first_of(" ["));
        const std::string_view comment = TakeComment(text);
        const bool bWhite = variant.moves.size() % 2 == 0;
        const TMove move = ParseMove(WithoutSigns(moveText), bWhite);
        variant.moves.push_back({move, std::string(moveText), std::string(comment)});
    }
}

} // namespace quillon
