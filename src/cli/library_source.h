#pragma once
// The problems of a file, for commands that look at whole libraries.

#include <memory>
#include <string>
#include <vector>

#include "library/chess_problem.h"
#include "library/problem_file_error.h"

namespace quillon {

/// What a file holds, in the order of its text.
struct TLibrarySource {
    std::string m_name; // for messages: the path as given, or "standard input"
    std::vector<std::unique_ptr<ChessProblem>> m_problems;
    std::vector<ProblemFileError> m_errors; // what cannot be read, and warnings

    /// Problems (or lines) that cannot be read.
    [[nodiscard]] bool HasUnreadable() const;

    /// Problems that have the id of an earlier one.
    [[nodiscard]] bool HasRepeatedIds() const;
};

/// Reads a library or an EPD file; "-" is standard input.
///   Errors  ChessException, which names the file.
[[nodiscard]] TLibrarySource ReadLibrarySource(const std::string& path);

/// Tells what cannot be read and what is odd, a line for each, on standard error.
void TellErrors(const TLibrarySource& source);

/// The problems by id: a later one replaces an earlier one of its id. The source has none left.
[[nodiscard]] TProblemMap ById(TLibrarySource& source);

} // namespace quillon
