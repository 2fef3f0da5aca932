#include "cli/solve_report.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "cli/diagram.h"
#include "cli/explain_text.h"
#include "cli/output.h"
#include "core/fen.h"
#include "heuristics/result_texts.h"

namespace quillon {

namespace {

using TJson = nlohmann::ordered_json;

std::string Dumped(const TJson& object) { return object.dump(-1, ' ', false, TJson::error_handler_t::replace); }

const char* OutcomeName(EOutcome outcome) {
    switch (outcome) {
    case EOutcome::Mate:
        return "mate";
    case EOutcome::NoMate:
        return "no-mate";
    case EOutcome::Doubtful:
        return "doubtful";
    case EOutcome::Stopped:
        break;
    }
    return "stopped";
}

std::string Stipulation(int nMoves) { return "#" + std::to_string(nMoves); }

std::string SecondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", seconds);
    return text;
}

std::string CountText(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string NodesText(std::uint64_t count) { return CountText(count, "node", "nodes"); }

std::string PercentText(std::uint64_t part, std::uint64_t whole) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f%%", 100.0 * static_cast<double>(part) / static_cast<double>(whole));
    return text;
}

/// "1.Qd1-d8 Ke5-f5 2.Qd8-f6"
std::string VariantText(const std::vector<std::string>& moves) {
    std::string text;
    for (std::size_t i = 0; i < moves.size(); ++i) {
        text += text.empty() ? "" : " ";
        text += i % 2 == 0 ? std::to_string(i / 2 + 1) + "." : "";
        text += moves[i];
    }
    return text;
}

std::string KeyText(const TSolution& key) { return "1." + key.m_text + "!"; }

/// What the keys that were found amount to.
std::string CompletenessText(const TSolveReport& report) {
    const TSolvingResult& result = report.m_watched.m_result;
    const int wanted = WantedKeys(report.m_request);
    const std::size_t count = result.m_solutions.size();
    if (result.m_bComplete)
        return count == 1 ? "This is the only key (proved)." : "There are no other keys (proved).";
    if (wanted != 0 && static_cast<int>(count) >= wanted)
        return wanted == 1 ? "The search ended at the first key." : "Other keys may exist.";
    return "Other keys are not excluded: some moves were left in doubt.";
}

std::string StoppedText(const TWatchedResult& watched) {
    std::string text = watched.m_cause == EStopCause::TimeLimit ? "Stopped by the time limit" : kStoppedByUser;
    text += watched.m_result.m_solutions.empty() ? ", no key found so far." : "; other keys are not excluded.";
    return text;
}

std::string MateText(const TSolveReport& report) {
    const TSolvingResult& result = report.m_watched.m_result;
    std::string text = "Mate in " + std::to_string(report.m_request.m_nStipulation) + ": " +
                       CountText(result.m_solutions.size(), "key", "keys") + ".";
    if (!result.m_text.empty())
        text += " " + result.m_text + (result.m_text.ends_with('.') ? "" : ".");
    return text + " " + CompletenessText(report);
}

std::string VerdictText(const TSolveReport& report) {
    const TSolvingResult& result = report.m_watched.m_result;
    switch (OutcomeOf(result)) {
    case EOutcome::Mate:
        return MateText(report);
    case EOutcome::NoMate:
        return result.m_text + ". This is proved.";
    case EOutcome::Doubtful:
        return result.m_text + (result.m_text.ends_with('\n') ? "" : "\n") +
               "This is no proof: some moves were left in doubt.";
    case EOutcome::Stopped:
        break;
    }
    return StoppedText(report.m_watched);
}

std::string PassesText(const std::vector<std::string>& passes) {
    std::string text;
    for (const std::string& pass : passes)
        text += (text.empty() ? (passes.size() > 1 ? "Passes " : "Pass ") : ", ") + pass;
    return text.empty() ? text : text + "; ";
}

/// "Register: 1200 positions (20 of them doubtful) in 34 MB; 5000 lookups, 1000 hits (20.0%)", and what was thrown out.
std::string RegisterLine(const TRegisterFigures& figures) {
    if (!figures.m_bInUse)
        return {};
    std::string text = "Register: " + CountText(figures.m_nElements, "position", "positions");
    if (figures.m_nDoubtfulElements > 0)
        text += " (" + std::to_string(figures.m_nDoubtfulElements) + " of them doubtful)";
    text += " in " + std::to_string(figures.m_nMegabytes) + " MB; " +
            CountText(figures.m_nLookups, "lookup", "lookups") + ", " + CountText(figures.m_nHits, "hit", "hits");
    if (figures.m_nLookups > 0)
        text += " (" + PercentText(figures.m_nHits, figures.m_nLookups) + ")";
    if (figures.m_nEvictions > 0)
        text += "; " + CountText(figures.m_nEvictedElements, "position", "positions") + " thrown out in " +
                CountText(figures.m_nEvictions, "run", "runs");
    return text + "\n";
}

TJson RegisterObject(const TRegisterFigures& figures) {
    TJson object;
    object["elements"] = figures.m_nElements;
    object["doubtful"] = figures.m_nDoubtfulElements;
    object["lookups"] = figures.m_nLookups;
    object["hits"] = figures.m_nHits;
    object["evictions"] = figures.m_nEvictions;
    object["evicted"] = figures.m_nEvictedElements;
    object["megabytes"] = figures.m_nMegabytes;
    return object;
}

std::string AnswerLine(const TSolveReport& report) {
    if (report.m_answerCheck == EAnswerCheck::AsExpected)
        return "As expected.\n";
    if (report.m_answerCheck == EAnswerCheck::Differs)
        return DifferenceText(report.m_problem) + "\n";
    return {};
}

} // namespace

EOutcome OutcomeOf(const TSolvingResult& result) {
    if (result.m_bStopped)
        return EOutcome::Stopped;
    switch (result.m_verdict) {
    case EVerdict::Mate:
        return EOutcome::Mate;
    case EVerdict::NoMate:
        return EOutcome::NoMate;
    case EVerdict::Stopped:
        return EOutcome::Stopped;
    case EVerdict::Doubtful:
        break;
    }
    return EOutcome::Doubtful;
}

int WantedKeys(const TSolveRequest& request) {
    switch (request.m_mode) {
    case ESolveMode::FirstSolution: // the second phase of a hybrid run is there for all the others
        return request.m_bHybrid ? 0 : 1;
    case ESolveMode::StopOnDual:
        return 2;
    case ESolveMode::StopOn3:
        return 3;
    case ESolveMode::StopOn4:
        return 4;
    case ESolveMode::AllSolutions:
        break;
    }
    return 0;
}

std::string JsonText(const TSolveReport& report) {
    const TSolvingResult& result = report.m_watched.m_result;
    std::vector<std::string> keys;
    for (const TSolution& key : result.m_solutions)
        keys.push_back(key.m_text);
    TJson object;
    object["id"] = report.m_request.m_nProblemId;
    object["fen"] = WriteFEN(report.m_request.m_board, false);
    object["stipulation"] = report.m_request.m_nStipulation;
    object["result"] = OutcomeName(OutcomeOf(result));
    object["keys"] = keys;
    object["complete"] = result.m_bComplete;
    object["variant"] = result.m_variant;
    object["passes"] = result.m_passes;
    object["nodes"] = result.m_nPositions;
    object["seconds"] = result.m_seconds;
    object["register"] = RegisterObject(result.m_register);
    object["trialNodes"] = result.m_nTrialPositions; // inside the short-mate search, which "nodes" leaves out
    if (report.m_bExplain)
        object["explain"] = ExplainObject(report.m_watched.m_plan, result);
    return Dumped(object);
}

std::string JsonErrorText(std::optional<int> id, const std::string& message, const std::string& file, int nLine,
                          int nColumn) {
    TJson object;
    object["id"] = id ? TJson(*id) : TJson(nullptr);
    object["result"] = "error";
    object["message"] = message;
    if (!file.empty())
        object["file"] = file;
    if (nLine > 0)
        object["line"] = nLine;
    if (nColumn > 0)
        object["column"] = nColumn;
    return Dumped(object);
}

std::string HeadText(const ChessProblem& problem, bool bFromFile) {
    std::string title = bFromFile ? "Problem " + std::to_string(problem.id) : std::string();
    if (!problem.description.empty())
        title += ": " + WithoutControls(problem.description);
    if (!title.empty())
        title += "\n";
    return title + DiagramText(*problem.originalPosition) + "  " + Stipulation(StipulationMoves(problem)) + "   " +
           WriteFEN(*problem.originalPosition, false) + "\n";
}

std::string ResultText(const TSolveReport& report) {
    const TSolvingResult& result = report.m_watched.m_result;
    std::string text;
    for (const TSolution& key : result.m_solutions)
        text += KeyText(key) + "\n";
    if (!result.m_variant.empty())
        text += "Main variant: " + VariantText(result.m_variant) + "\n";
    text += VerdictText(report) + "\n" + AnswerLine(report);
    return text + PassesText(result.m_passes) + NodesText(result.m_nPositions) + "; " + SecondsText(result.m_seconds) +
           "\n" + RegisterLine(result.m_register) + (report.m_bExplain ? PassRecordsText(result) : std::string());
}

std::string QuietText(const TSolveReport& report) {
    const TSolvingResult& result = report.m_watched.m_result;
    std::string text = report.m_bFromFile ? std::to_string(report.m_problem.id) + " " : std::string();
    text += Stipulation(report.m_request.m_nStipulation) + " " + OutcomeName(OutcomeOf(result));
    for (const TSolution& key : result.m_solutions)
        text += " " + KeyText(key);
    text += " (" + NodesText(result.m_nPositions) + ", " + SecondsText(result.m_seconds) + ")";
    if (report.m_answerCheck == EAnswerCheck::AsExpected)
        text += " as expected";
    if (report.m_answerCheck == EAnswerCheck::Differs)
        text += " " + DifferenceText(report.m_problem);
    return text + "\n";
}

std::string DifferenceText(const ChessProblem& problem) {
    return "DIFFERS from the expected answer: " + AnswerText(problem.answer, *problem.originalPosition);
}

std::string SummaryText(const TSolveTotals& totals) {
    std::string text = CountText(static_cast<std::uint64_t>(totals.m_nProblems), "problem", "problems") + ": " +
                       std::to_string(totals.m_nSolved) + " solved, " + std::to_string(totals.m_nNoSolution) +
                       " without a solution, " + std::to_string(totals.m_nDoubtful) + " doubtful, " +
                       std::to_string(totals.m_nStopped) + " stopped, " +
                       CountText(static_cast<std::uint64_t>(totals.m_nErrors), "error", "errors");
    if (totals.m_nNotStarted > 0)
        text += ", " + std::to_string(totals.m_nNotStarted) + " not started";
    return text + "; " + std::to_string(totals.m_nDiffering) + " differing from the expected answer; " +
           NodesText(totals.m_nPositions) + "; " + SecondsText(totals.m_seconds) + "\n";
}

} // namespace quillon
