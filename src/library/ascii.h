#pragma once
// Character classes of the text formats. They are ASCII whatever the locale says: the same file reads the same
// everywhere.

#include <algorithm>
#include <string>
#include <string_view>

namespace quillon {

[[nodiscard]] constexpr bool IsAsciiDigit(char c) { return c >= '0' && c <= '9'; }
[[nodiscard]] constexpr bool IsAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
[[nodiscard]] constexpr bool IsAsciiAlphanumeric(char c) { return IsAsciiLetter(c) || IsAsciiDigit(c); }
[[nodiscard]] constexpr char ToUpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

[[nodiscard]] inline std::string ToUpperAscii(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) { return ToUpperAscii(c); });
    return upper;
}

[[nodiscard]] inline bool AreAllDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsAsciiDigit);
}

/// True if `text` begins with `prefix`, small and capital letters being the same.
[[nodiscard]] inline bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), text.begin(), [](char a, char b) {
               return ToUpperAscii(a) == ToUpperAscii(b);
           });
}

/// The text without the characters of `blanks` at its ends.
[[nodiscard]] inline std::string_view Trimmed(std::string_view text, std::string_view blanks = " \t\r\n") {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The number a text begins with, as the C function atoi reads it: blanks, a sign, digits; 0 if there are none. A
/// number that is too large is held at +-2,000,000,000.
[[nodiscard]] inline int LeadingNumber(std::string_view text) {
    constexpr long long kBound = 2'000'000'000;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    const bool bNegative = text.starts_with('-');
    if (bNegative || text.starts_with('+'))
        text.remove_prefix(1);
    long long value = 0;
    for (const char c : text) {
        if (!IsAsciiDigit(c))
            break;
        value = std::min(value * 10 + (c - '0'), kBound);
    }
    return static_cast<int>(bNegative ? -value : value);
}

} // namespace quillon
