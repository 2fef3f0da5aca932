#pragma once
// ProblemFileError: what is wrong in a text of problems, and where.

#include <cstdint>
#include <optional>
#include <string>

#include "core/chess_exception.h"

namespace quillon {

/// A place in a text: line and column, both from 1. The column counts bytes.
struct TTextPlace {
    int m_nLine = 1;
    int m_nColumn = 1;

    friend bool operator==(const TTextPlace&, const TTextPlace&) = default;
};

/// what() is the message alone: the caller knows the name of the file and puts message and place together.
class ProblemFileError : public ChessException {
  public:
    enum class ESeverity { Error, Warning };

    ProblemFileError(const std::string& message, TTextPlace place, ESeverity severity = ESeverity::Error)
        : ChessException(message), m_place(place), m_severity(severity) {}

    [[nodiscard]] int Line() const { return m_place.m_nLine; }
    [[nodiscard]] int Column() const { return m_place.m_nColumn; }
    [[nodiscard]] TTextPlace Place() const { return m_place; }

    /// The problem that was being read; none when its number had not been read yet.
    [[nodiscard]] std::optional<std::int32_t> ProblemId() const { return m_problemId; }
    void SetProblemId(std::int32_t id) { m_problemId = id; }

    /// A warning does not end the reading, and no problem is lost by what it tells.
    [[nodiscard]] bool IsWarning() const { return m_severity == ESeverity::Warning; }

  private:
    TTextPlace m_place;
    std::optional<std::int32_t> m_problemId;
    ESeverity m_severity;
};

/// The message with all that is known of its place: "FILE:LINE:COLUMN: problem ID: MESSAGE".
[[nodiscard]] inline std::string FailureText(const std::string& fileName, const ProblemFileError& error) {
    const std::string problem = error.ProblemId() ? "problem " + std::to_string(*error.ProblemId()) + ": " : "";
    return fileName + ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column()) + ": " + problem +
           error.what();
}

} // namespace quillon
