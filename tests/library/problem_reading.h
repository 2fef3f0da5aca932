#pragma once
// Verbs of the tests of problem files: read a text, look at what came out.

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "library/problem_file.h"

namespace quillon::testing {

/// A body with nothing special about it: White to move, mates exist.
inline constexpr std::string_view kPlainBody = "{\n\tFEN: 8/8/8/4k3/8/8/8/3QK3\n}\n";

/// Everything a tolerant reading handed out.
struct TReading {
    std::vector<std::unique_ptr<ChessProblem>> m_problems;
    std::vector<ProblemFileError> m_errors; // warnings too

    [[nodiscard]] std::vector<int> Ids() const {
        std::vector<int> ids;
        for (const auto& problem : m_problems)
            ids.push_back(problem->id);
        return ids;
    }

    /// "line:column message" of each failure and warning.
    [[nodiscard]] std::vector<std::string> Errors() const {
        std::vector<std::string> lines;
        for (const ProblemFileError& error : m_errors)
            lines.push_back(std::to_string(error.Line()) + ":" + std::to_string(error.Column()) + " " + error.what());
        return lines;
    }
};

/// Both callbacks of a reader, which fill `reading`.
inline TOnProblem Problems(TReading& reading) {
    return [&reading](std::unique_ptr<ChessProblem> problem) { reading.m_problems.push_back(std::move(problem)); };
}
inline TOnError Errors(TReading& reading) {
    return [&reading](const ProblemFileError& error) { reading.m_errors.push_back(error); };
}

inline TReading Read(std::string_view text) {
    TReading reading;
    ReadProblems(text, Problems(reading), Errors(reading));
    return reading;
}

/// The one problem of a text that has no fault; an empty board and a test failure otherwise.
inline std::unique_ptr<ChessProblem> ReadOne(std::string_view text) {
    TReading reading = Read(text);
    EXPECT_EQ(reading.Errors(), std::vector<std::string>());
    EXPECT_EQ(reading.m_problems.size(), 1u);
    if (!reading.m_problems.empty())
        return std::move(reading.m_problems.front());
    auto problem = std::make_unique<ChessProblem>();
    problem->originalPosition = std::make_unique<TChessboard>(EmptyChessboard());
    return problem;
}

/// The same for a body, without its brackets, of a mate in two.
inline std::unique_ptr<ChessProblem> ReadBody(std::string_view body) {
    return ReadOne("UTF-8\n1 #2\n{\n" + std::string(body) + "\n}\n");
}

/// "line:column message" of the failure that ends a strict reading; empty if there is none.
inline std::string StrictError(std::string_view text) {
    TProblemMap library;
    try {
        ReadProblemText(text, library, [](const ProblemFileError&) {});
    } catch (const ProblemFileError& error) {
        return std::to_string(error.Line()) + ":" + std::to_string(error.Column()) + " " + error.what();
    }
    return {};
}

/// The message alone.
inline std::string StrictMessage(std::string_view text) {
    const std::string error = StrictError(text);
    return error.empty() ? error : error.substr(error.find(' ') + 1);
}

/// The message of the failure in a body, without its brackets, of a mate in two.
inline std::string BodyMessage(std::string_view body) {
    return StrictMessage("1 #2\n{\n" + std::string(body) + "\n}\n");
}

} // namespace quillon::testing
