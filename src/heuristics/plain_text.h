#pragma once
// Small helpers of the readers and writers of heuristic texts. Their words are ASCII: the locale has no say.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "core/square.h"

namespace quillon {

[[nodiscard]] constexpr char UpperLetter(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

[[nodiscard]] constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// Small and capital letters being the same.
[[nodiscard]] constexpr bool EqualWords(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, UpperLetter, UpperLetter);
}

/// "D5"; empty for kNoSquare, and for any other byte that is no square.
[[nodiscard]] inline std::string SquareInCapitals(TSquare square) {
    if (square >= kSquares)
        return {};
    return {static_cast<char>('A' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
}

/// The square that a file letter in either case and a rank digit name; kNoSquare for anything else.
[[nodiscard]] constexpr TSquare SquareNamed(std::string_view text) {
    if (text.size() != 2)
        return kNoSquare;
    const int file = UpperLetter(text[0]) - 'A', rank = text[1] - '1';
    return file >= 0 && file < 8 && rank >= 0 && rank < 8 ? SquareAt(file, rank) : kNoSquare;
}

/// The text without blanks and tabs at its ends.
[[nodiscard]] constexpr std::string_view WithoutBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// A number of digits only, at most `nMax`; -1 for anything else.
[[nodiscard]] constexpr long DigitsValue(std::string_view text, long nMax) {
    long value = 0;
    for (const char c : text) {
        if (!IsDigit(c))
            return -1;
        value = 10 * value + (c - '0');
        if (value > nMax)
            return -1;
    }
    return text.empty() ? -1 : value;
}

/// The number a text begins with: blanks, a sign, digits; 0 if there are none. Held at +-2,000,000,000.
[[nodiscard]] constexpr long NumberInFront(std::string_view text) {
    constexpr long kBound = 2'000'000'000;
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const bool bNegative = text.starts_with('-');
    if (bNegative || text.starts_with('+'))
        text.remove_prefix(1);
    long value = 0;
    for (const char c : text) {
        if (!IsDigit(c))
            break;
        value = std::min(value * 10 + (c - '0'), kBound);
    }
    return bNegative ? -value : value;
}

/// The pieces between blanks and tabs.
[[nodiscard]] inline std::vector<std::string_view> CutAtBlanks(std::string_view text) {
    std::vector<std::string_view> pieces;
    while (!(text = WithoutBlanks(text)).empty()) {
        const auto end = std::min(text.find_first_of(" \t"), text.size());
        pieces.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return pieces;
}

} // namespace quillon
