// Putting a value into the text of an ini file. The library that reads it would write it anew: without the notes at its
// end, without lines it does not understand, and with other line ends.

#include "app/ini_text.h"

#include <algorithm>

#include "app/ini_lines.h"
#include "library/one_line.h"

namespace quillon {

namespace {

bool SameName(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool IsHeaderOf(std::string_view words, std::string_view section) {
    return IsClosedIniHeader(words) && SameName(TrimmedIniText(words.substr(1, words.find(']') - 1)), section);
}

bool IsKey(std::string_view words, std::string_view key) {
    const std::size_t equals = words.find('=');
    return equals != std::string_view::npos && SameName(TrimmedIniText(words.substr(0, equals)), key);
}

/// Where in the text a value goes.
struct TIniPlace {
    TIniLine m_key;               // the line of the key; meaningful with m_bKey
    bool m_bKey = false;          //
    bool m_bSection = false;      //
    std::size_t m_sectionEnd = 0; // behind the last line of the section that says something
};

TIniPlace FindPlace(std::string_view text, std::string_view section, std::string_view key) {
    TIniPlace place;
    bool bWithin = false;  // in a section of that name
    bool bGrowing = false; // in the first one
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const TIniLine line = IniLineAt(text, begin);
        const std::string_view words = WordsOf(text, line);
        if (IsIniHeader(words)) {
            bWithin = IsHeaderOf(words, section);
            bGrowing = bWithin && !place.m_bSection;
            place.m_bSection |= bWithin;
        }
        if (bGrowing && !words.empty())
            place.m_sectionEnd = line.m_next;
        if (bWithin && !IsIniHeader(words) && IsKey(words, key)) {
            place.m_key = line;
            place.m_bKey = true;
            return place;
        }
        begin = line.m_next;
    }
    return place;
}

std::string WrittenValue(std::string_view value) {
    std::string written = OneLine(value);
    const bool bQuoted =
        written.size() >= 2 && written.front() == written.back() && (written.front() == '"' || written.front() == '\'');
    return bQuoted || TrimmedIniText(written).size() < written.size() ? '"' + written + '"' : written;
}

std::string LineEndOf(std::string_view text) {
    for (const char* const lineEnd : {"\r\n", "\n", "\r"})
        if (text.find(lineEnd) != std::string_view::npos)
            return lineEnd;
    return "\n";
}

bool EndsLine(std::string_view text) {
    return text.empty() || text == kIniByteOrderMark || kIniLineEnds.find(text.back()) != std::string_view::npos;
}

/// Puts a whole line in, ending the one before where it has no end.
void InsertLine(std::string& text, std::size_t place, const std::string& line) {
    const std::string lineEnd = LineEndOf(text);
    const bool bEnds = EndsLine(std::string_view(text).substr(0, place));
    text.insert(place, (bEnds ? "" : lineEnd) + line + lineEnd);
}

} // namespace

std::string WithIniValue(std::string text, std::string_view section, std::string_view key, std::string_view value) {
    const TIniPlace place = FindPlace(text, section, key);
    const std::string written = WrittenValue(value);
    if (place.m_bKey) {
        std::size_t begin = text.find('=', place.m_key.m_begin) + 1;
        begin = std::min(text.find_first_not_of(kIniBlanks, begin), place.m_key.m_end);
        text.replace(begin, place.m_key.m_end - begin, written);
        return text;
    }
    if (!place.m_bSection)
        InsertLine(text, text.size(), "[" + std::string(section) + "]");
    InsertLine(text, place.m_bSection ? place.m_sectionEnd : text.size(), std::string(key) + "=" + written);
    return text;
}

} // namespace quillon
