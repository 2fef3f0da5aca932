#pragma once
// Free text on its way into a format of lines.

#include <algorithm>
#include <string>
#include <string_view>

namespace quillon {

/// The text with a blank for each line end (or NUL) in it, so that it stays one line of the file and no more.
[[nodiscard]] inline std::string OneLine(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
    return line;
}

/// The same without the character that would close the text.
[[nodiscard]] inline std::string OneLineWithout(std::string_view text, char closing) {
    std::string line = OneLine(text);
    std::erase(line, closing);
    return line;
}

} // namespace quillon
