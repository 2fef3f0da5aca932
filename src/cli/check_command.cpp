#include "cli/check_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/library_source.h"
#include "cli/output.h"
#include "core/chess_exception.h"
#include "library/library_check.h"

namespace quillon {

namespace {

using TJson = nlohmann::ordered_json;

constexpr const char* kCheckExamples = R"(
Examples:
  quillon check problems.cp
  quillon check problems.cp --json

Tells what cannot be read or is read in spite of a fault, numbers and positions
that are there twice (also mirrored), positions that no game can have, and
stored variants and answers with moves that are not legal.

Exit status: 0 nothing to tell, 1 something, 2 some problems cannot be read, or
bad usage.)";

struct TCheckOptions {
    std::string m_file;
    bool m_bJson = false;
};

/// A finding, or what the reader had to say, in the form they are told in.
struct TRemark {
    TTextPlace m_place;
    std::optional<std::int32_t> m_id;
    EFinding m_finding;
    std::string m_text;
};

EFinding FindingOf(const ProblemFileError& error) {
    switch (error.Severity()) {
    case ProblemFileError::ESeverity::Error:
        return EFinding::Unreadable;
    case ProblemFileError::ESeverity::RepeatedId:
        return EFinding::RepeatedId;
    case ProblemFileError::ESeverity::Warning:
        break;
    }
    return EFinding::Odd;
}

std::vector<TRemark> RemarksOn(const TLibrarySource& source) {
    std::vector<TRemark> remarks;
    for (const ProblemFileError& error : source.m_errors)
        remarks.push_back({error.Place(), error.ProblemId(), FindingOf(error), error.what()});
    for (TFinding& finding : CheckProblems(source.m_problems))
        remarks.push_back({{finding.m_nLine, 1}, finding.m_id, finding.m_finding, std::move(finding.m_text)});
    std::stable_sort(remarks.begin(), remarks.end(),
                     [](const TRemark& a, const TRemark& b) { return a.m_place.m_nLine < b.m_place.m_nLine; });
    return remarks;
}

std::string Line(const std::string& name, const TRemark& remark) {
    return WithoutControls(PlaceText(name, remark.m_place, remark.m_id) + remark.m_text) + "\n";
}

std::string PersonText(const TLibrarySource& source, const std::vector<TRemark>& remarks) {
    std::string text;
    for (const TRemark& remark : remarks)
        text += Line(source.m_name, remark);
    return text + std::to_string(source.m_problems.size()) + " problems read, " + std::to_string(remarks.size()) +
           (remarks.size() == 1 ? " remark\n" : " remarks\n");
}

std::string JsonText(const TLibrarySource& source, const std::vector<TRemark>& remarks) {
    TJson object;
    object["file"] = source.m_name;
    object["problems"] = source.m_problems.size();
    object["findings"] = TJson::array();
    for (const TRemark& remark : remarks) {
        TJson finding;
        finding["id"] = remark.m_id ? TJson(*remark.m_id) : TJson(nullptr);
        finding["line"] = remark.m_place.m_nLine;
        finding["column"] = remark.m_place.m_nColumn;
        finding["finding"] = FindingName(remark.m_finding);
        finding["message"] = remark.m_text;
        object["findings"].push_back(std::move(finding));
    }
    return object.dump(-1, ' ', false, TJson::error_handler_t::replace) + "\n";
}

EExitStatus RunCheck(const TCheckOptions& options) {
    try {
        const TLibrarySource source = ReadLibrarySource(options.m_file);
        const std::vector<TRemark> remarks = RemarksOn(source);
        WriteOutput(options.m_bJson ? JsonText(source, remarks) : PersonText(source, remarks));
        if (source.HasUnreadable())
            return EExitStatus::BadInput;
        return remarks.empty() ? EExitStatus::Answered : EExitStatus::Unanswered;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddCheckCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("check", "Check the problems of a library or EPD file");
    const auto options = std::make_shared<TCheckOptions>();
    command->add_option("FILE", options->m_file, "Problem library (.cp) or EPD file; - is standard input")->required();
    command->add_flag("--json", options->m_bJson, "One JSON object");
    command->footer(kCheckExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunCheck(*options); }; });
}

} // namespace quillon
