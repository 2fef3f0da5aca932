#pragma once
// What can be said against the problems of a library beyond that they can be read.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "library/chess_problem.h"

namespace quillon {

enum class EFinding : std::uint8_t {
    Unreadable,      // a problem or line that could not be read
    RepeatedId,      // an id that an earlier problem has; the earlier one is lost
    Duplicate,       // position and stipulation of earlier problems
    SamePosition,    // position of earlier problems, which have another stipulation
    MirrorTwin,      // position of earlier problems, left and right changed over
    IllegalPosition, // no game leads there: too many men of a kind
    NoMove,          // White has no legal move
    IllegalAnswer,   // an expected key that is no legal move
    IllegalVariant,  // a stored variant with a move that is not legal
    VariantTooLong,  // a stored variant longer than the stipulation
    Odd,             // what the reader passes over or takes for something else
    TooMany,         // so many findings that the rest is not told
};

/// The name for programs: "mirror-twin".
[[nodiscard]] std::string_view FindingName(EFinding finding);

struct TFinding {
    EFinding m_finding = EFinding::Unreadable;
    std::int32_t m_id = 0;
    int m_nLine = 0; // where the problem begins
    std::string m_text;
};

/// Looks at every problem, and at pairs of them. In the order of the problems; each has a position. After kMostFailures
/// findings (library/problem_file.h) the last one is TooMany.
[[nodiscard]] std::vector<TFinding> CheckProblems(const std::vector<std::unique_ptr<ChessProblem>>& problems);

} // namespace quillon
