#pragma once
// What a solve prints: for a person, in one line a problem, or as JSON.

#include <cstdint>
#include <optional>
#include <string>

#include "cli/answer_check.h"
#include "cli/watched_solve.h"
#include "library/chess_problem.h"

namespace quillon {

/// The answer to a problem. A run that was cut short before it had what it was to find is Stopped, keys or not.
enum class EOutcome { Mate, NoMate, Doubtful, Stopped };

[[nodiscard]] EOutcome OutcomeOf(const TSolvingResult& result);

/// All there is to say of a problem that was solved.
struct TSolveReport {
    const ChessProblem& m_problem;
    const TSolveRequest& m_request;
    const TWatchedResult& m_watched;
    bool m_bExplain = false;                   // tell of the plan and the passes as well
    bool m_bFromFile = false;                  // the problem has a number
    std::optional<EAnswerCheck> m_answerCheck; // none: no answer is expected
};

/// One object, without a line end; the names of its fields are a contract.
[[nodiscard]] std::string JsonText(const TSolveReport& report);

/// The same for a problem that is not solved.
///   file, nLine, nColumn  empty and 0 where there are none; then they are left out.
[[nodiscard]] std::string JsonErrorText(std::optional<int> id, const std::string& message, const std::string& file,
                                        int nLine, int nColumn);

/// For a person, several lines. The head is printed before the solve begins.
[[nodiscard]] std::string HeadText(const ChessProblem& problem, bool bFromFile);
[[nodiscard]] std::string ResultText(const TSolveReport& report);

/// For a person, one line.
[[nodiscard]] std::string QuietText(const TSolveReport& report);

/// "DIFFERS from the expected answer: ...".
[[nodiscard]] std::string DifferenceText(const ChessProblem& problem);

/// The number of keys at which the run ends by itself; 0 if it looks for all of them.
[[nodiscard]] int WantedKeys(const TSolveRequest& request);

/// Numbers of a whole run.
struct TSolveTotals {
    int m_nProblems = 0, m_nSolved = 0, m_nNoSolution = 0, m_nDoubtful = 0, m_nStopped = 0, m_nErrors = 0;
    int m_nDiffering = 0, m_nNotStarted = 0;
    std::uint64_t m_nPositions = 0;
    double m_seconds = 0;
};

[[nodiscard]] std::string SummaryText(const TSolveTotals& totals);

} // namespace quillon
