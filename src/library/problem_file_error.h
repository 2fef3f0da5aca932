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
    enum class ESeverity {
        Error,
        RepeatedId, // a warning: an earlier problem has the same number and is replaced
        Warning,
    };

    ProblemFileError(const std::string& message, TTextPlace place, ESeverity severity = ESeverity::Error)
        : ChessException(message), m_place(place), m_severity(severity) {}

    [[nodiscard]] int Line() const { return m_place.m_nLine; }
    [[nodiscard]] int Column() const { return m_place.m_nColumn; }
    [[nodiscard]] TTextPlace Place() const { return m_place; }

    /// The problem that was being read; none when its number had not been read yet.
    [[nodiscard]] std::optional<std::int32_t> ProblemId() const { return m_problemId; }
    void SetProblemId(std::int32_t id) { m_problemId = id; }

    /// A warning does not end the reading: its problem is there, perhaps without something that the text has.
    [[nodiscard]] bool IsWarning() const { return m_severity != ESeverity::Error; }
    [[nodiscard]] ESeverity Severity() const { return m_severity; }

  private:
    TTextPlace m_place;
    std::optional<std::int32_t> m_problemId;
    ESeverity m_severity;
};

/// Where a message belongs, as far as it is known: "FILE:LINE:COLUMN: problem ID: ".
///   place  a line or column of 0 is unknown, and so is what stands behind it; fileName may be empty.
[[nodiscard]] inline std::string PlaceText(const std::string& fileName, TTextPlace place,
                                           std::optional<std::int32_t> problemId) {
    if (fileName.empty())
        return {};
    std::string text = fileName + ":";
    for (const int number : {place.m_nLine, place.m_nLine > 0 ? place.m_nColumn : 0})
        if (number > 0)
            text += std::to_string(number) + ":";
    return text + (problemId ? " problem " + std::to_string(*problemId) + ": " : " ");
}

/// The message with its place.
[[nodiscard]] inline std::string FailureText(const std::string& fileName, const ProblemFileError& error) {
    return PlaceText(fileName, error.Place(), error.ProblemId()) + (error.IsWarning() ? "warning: " : "") +
           error.what();
}

} // namespace quillon
