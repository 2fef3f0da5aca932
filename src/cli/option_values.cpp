#include "cli/option_values.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace quillon {

namespace {

constexpr int kMostThreads = 127;
constexpr double kMostSeconds = 1e9;

/// A number of decimal digits; nothing when it is none or does not fit.
std::optional<int> ReadCount(std::string_view text) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [behind, failure] = std::from_chars(text.data(), end, value);
    if (failure != std::errc{} || behind != end || text.starts_with('-'))
        return std::nullopt;
    return value;
}

/// Begin and end of "M-K"; both the same for "N".
std::optional<TIdRange> ReadRange(std::string_view text) {
    const std::size_t dash = text.find('-');
    const std::optional<int> first = ReadCount(text.substr(0, dash));
    const std::optional<int> last = dash == std::string_view::npos ? first : ReadCount(text.substr(dash + 1));
    if (!first || !last || *first > *last)
        return std::nullopt;
    return TIdRange{*first, *last};
}

/// Digits with at most one point, at least one digit.
bool IsDecimal(std::string_view text) {
    return text.find_first_not_of("0123456789.") == std::string_view::npos &&
           std::count(text.begin(), text.end(), '.') <= 1 && text.find_first_of("0123456789") != std::string_view::npos;
}

bool IsThreadCount(std::string_view text) {
    const std::optional<int> count = ReadCount(text);
    return count && *count >= 1 && *count <= kMostThreads;
}

} // namespace

CLI::Validator WholeNumber(int nLeast, int nMost) {
    const auto check = [nLeast, nMost](std::string& text) -> std::string {
        const std::optional<int> value = ReadCount(text);
        if (!value || *value < nLeast || *value > nMost)
            return "a number from " + std::to_string(nLeast) + " to " + std::to_string(nMost) + " is wanted, not '" +
                   text + "'";
        text = std::to_string(*value); // leading zeros would mean an octal number to the option
        return {};
    };
    return {check, "", "whole number"};
}

CLI::Validator Seconds() {
    const auto check = [](std::string& text) -> std::string {
        double seconds = 0;
        if (IsDecimal(text))
            std::from_chars(text.data(), text.data() + text.size(), seconds);
        if (seconds > 0 && seconds <= kMostSeconds)
            return {};
        return "seconds above 0 are wanted, not '" + text + "'";
    };
    return {check, "", "seconds"};
}

CLI::Validator Threads() {
    const auto check = [](std::string& text) -> std::string {
        const std::size_t hat = text.find('^');
        if (IsThreadCount(text.substr(0, hat)) && (hat == std::string::npos || IsThreadCount(text.substr(hat + 1))))
            return {};
        return "a number of threads is wanted (4, or 4^2 for two levels of the search), not '" + text + "'";
    };
    return {check, "", "threads"};
}

CLI::Validator ProblemIds() {
    const auto check = [](std::string& text) -> std::string {
        if (ParseIds(text))
            return {};
        return "numbers of problems are wanted (7 or 1,5,10-20), not '" + text + "'";
    };
    return {check, "", "problems"};
}

std::optional<std::vector<TIdRange>> ParseIds(std::string_view text) {
    std::vector<TIdRange> ranges;
    for (;;) {
        const std::size_t comma = text.find(',');
        const std::optional<TIdRange> range = ReadRange(text.substr(0, comma));
        if (!range)
            return std::nullopt;
        ranges.push_back(*range);
        if (comma == std::string_view::npos)
            return ranges;
        text.remove_prefix(comma + 1);
    }
}

int ThreadsOf(std::string_view text) { return ReadCount(text.substr(0, text.find('^'))).value_or(1); }

int LevelsOf(std::string_view text) {
    const std::size_t hat = text.find('^');
    return hat == std::string_view::npos ? 1 : ReadCount(text.substr(hat + 1)).value_or(1);
}

} // namespace quillon
