#include "cli/list_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/library_source.h"
#include "cli/output.h"
#include "core/chess_exception.h"

namespace quillon {

namespace {

using TJson = nlohmann::ordered_json;

constexpr const char* kExamples = R"(
Examples:
  quillon list problems.cp
  quillon list problems.cp --json

A line tells the number of a problem, its stipulation, the men of White and of
Black, its description and its tags. Problems stand in the order of their
numbers.

Exit status: 0 every problem could be read, 2 some not, or bad usage.)";

struct TListOptions {
    std::string m_file;
    bool m_bJson = false;
};

struct TMenCount {
    int m_nWhite, m_nBlack; // kings included
};

TMenCount MenOf(const ChessProblem& problem) {
    return {WhiteMen(*problem.originalPosition) + 1, BlackMen(*problem.originalPosition) + 1};
}

std::string Left(std::string text, std::size_t nWidth) {
    text.resize(std::max(text.size(), nWidth), ' ');
    return text;
}

std::string Right(const std::string& text, std::size_t nWidth) {
    return std::string(nWidth - std::min(text.size(), nWidth), ' ') + text;
}

std::string TagsText(const ChessProblem& problem) {
    std::string text;
    for (const std::string& tag : problem.tags)
        text += (text.empty() ? "" : ", ") + tag;
    return text.empty() ? text : "[" + text + "]";
}

std::string Line(const ChessProblem& problem, std::size_t nIdWidth) {
    const TMenCount men = MenOf(problem);
    std::string line = Right(std::to_string(problem.id), nIdWidth) + "  " + Left(StipulationText(problem), 5) +
                       Left(std::to_string(men.m_nWhite) + "+" + std::to_string(men.m_nBlack), 5);
    for (const std::string& text : {problem.description, TagsText(problem)})
        if (!text.empty())
            line += "  " + WithoutControls(text);
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

std::string JsonLine(const ChessProblem& problem) {
    const TMenCount men = MenOf(problem);
    TJson object;
    object["id"] = problem.id;
    object["kind"] = KindName(problem);
    object["stipulation"] = problem.kind == kNoStipulation ? TJson(nullptr) : TJson(StipulationMoves(problem));
    object["men"] = men.m_nWhite + men.m_nBlack;
    object["white"] = men.m_nWhite;
    object["black"] = men.m_nBlack;
    object["tags"] = problem.tags;
    object["description"] = problem.description;
    object["line"] = problem.line;
    return object.dump(-1, ' ', false, TJson::error_handler_t::replace) + "\n";
}

std::size_t IdWidth(const TProblemMap& problems) {
    std::size_t nWidth = 4;
    for (const auto& [id, problem] : problems)
        nWidth = std::max(nWidth, std::to_string(id).size());
    return nWidth;
}

EExitStatus RunList(const TListOptions& options) {
    try {
        TLibrarySource source = ReadLibrarySource(options.m_file);
        TellErrors(source);
        const TProblemMap problems = ById(source);
        const std::size_t nIdWidth = IdWidth(problems);
        std::string text;
        for (const auto& [id, problem] : problems)
            text += options.m_bJson ? JsonLine(*problem) : Line(*problem, nIdWidth);
        WriteOutput(text);
        return source.HasUnreadable() ? EExitStatus::BadInput : EExitStatus::Answered;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddListCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("list", "List the problems of a library or EPD file");
    const auto options = std::make_shared<TListOptions>();
    command->add_option("FILE", options->m_file, "Problem library (.cp) or EPD file; - is standard input")->required();
    command->add_flag("--json", options->m_bJson, "One JSON object a problem, on one line");
    command->footer(kExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunList(*options); }; });
}

} // namespace quillon
