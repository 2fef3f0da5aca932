#pragma once
// The values of options: what is accepted, and how it is told when it is not.

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

/// Decimal digits of a number from nLeast to nMost, and nothing else: no sign, no hexadecimal, no octal.
[[nodiscard]] CLI::Validator WholeNumber(int nLeast, int nMost);

/// Seconds above 0, with an optional fraction: "20", "0.5", ".5".
[[nodiscard]] CLI::Validator Seconds();

/// Threads, and the levels of the search they may be started on: "4" or "4^2".
[[nodiscard]] CLI::Validator Threads();

/// Numbers of problems: "7", "1,5", "10-20", "1,5,10-20".
[[nodiscard]] CLI::Validator ProblemIds();

struct TIdRange {
    int m_nFirst = 0;
    int m_nLast = 0; // inclusive
};

/// Nothing if the text is no list of numbers and ranges.
[[nodiscard]] std::optional<std::vector<TIdRange>> ParseIds(std::string_view text);

/// The threads of a text that Threads() accepts.
[[nodiscard]] int ThreadsOf(std::string_view text);

/// And the levels: 1 without any.
[[nodiscard]] int LevelsOf(std::string_view text);

} // namespace quillon
