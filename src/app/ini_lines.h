#pragma once
// The lines of an ini file as places in its text.

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quillon {

inline constexpr std::string_view kIniByteOrderMark = "\xEF\xBB\xBF";
inline constexpr std::string_view kIniBlanks{" \t\0", 3};
inline constexpr std::string_view kIniLineEnds = "\r\n";

struct TIniLine {
    std::size_t m_begin = 0;
    std::size_t m_end = 0;  // of what stands in it
    std::size_t m_next = 0; // where the next one begins
};

/// The line that begins at a place of the text.
[[nodiscard]] inline TIniLine IniLineAt(std::string_view text, std::size_t begin) {
    TIniLine line{begin, std::min(text.find_first_of(kIniLineEnds, begin), text.size()), 0};
    line.m_next = line.m_end;
    if (line.m_next < text.size())
        line.m_next += text.substr(line.m_end).starts_with("\r\n") ? 2 : 1;
    return line;
}

/// Where the first line begins.
[[nodiscard]] inline std::size_t FirstIniLine(std::string_view text) {
    return text.starts_with(kIniByteOrderMark) ? kIniByteOrderMark.size() : 0;
}

/// Without the blanks around it.
[[nodiscard]] inline std::string_view TrimmedIniText(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kIniBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kIniBlanks) + 1);
}

/// What stands in the line.
[[nodiscard]] inline std::string_view WordsOf(std::string_view text, const TIniLine& line) {
    return TrimmedIniText(text.substr(line.m_begin, line.m_end - line.m_begin));
}

[[nodiscard]] inline bool IsIniHeader(std::string_view words) { return words.starts_with('['); }

/// The header of a section that has a name; one without begins a section that nobody can ask for.
[[nodiscard]] inline bool IsClosedIniHeader(std::string_view words) {
    return IsIniHeader(words) && words.find(']') != std::string_view::npos;
}

} // namespace quillon
