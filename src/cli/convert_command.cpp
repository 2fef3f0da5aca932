#include "cli/convert_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "cli/file_settings.h"
#include "cli/library_source.h"
#include "cli/output.h"
#include "cli/problem_json.h"
#include "core/chess_exception.h"
#include "library/ascii.h"
#include "library/epd_file.h"
#include "library/pgn_text.h"
#include "library/problem_file_writer.h"
#include "library/problem_input.h"
#include "library/problem_writer.h"

namespace quillon {

namespace {

using TJson = nlohmann::ordered_json;

constexpr const char* kConvertExamples = R"(
Examples:
  quillon convert problems.cp problems.pgn
  quillon convert problems.epd problems.cp
  quillon convert problems.cp - --to json

The ending of OUT tells the format: .cp or .cpx a library, .epd, .pgn, .json.
An EPD file holds direct mates only. In PGN a problem is a game that begins
with its position; the main variant is the game, and other variants and the
expected keys are variations of it. A file that OUT replaces stays as OUT.BAK;
IN itself is not replaced while something in it is not understood.

Exit status: 0 all of it, 1 what the format cannot hold was left out, 2 some
problems cannot be read, or bad usage, 3 OUT could not be written whole.)";

struct TConvertOptions {
    std::string m_in, m_out, m_format;
};

/// A converted library, and what could not be part of it.
struct TConverted {
    std::string m_text;
    std::vector<std::string> m_leftOut; // a line each
};

void LeaveOut(TConverted& converted, const ChessProblem& problem, const std::string& what) {
    converted.m_leftOut.push_back("problem " + std::to_string(problem.id) + ": " + what);
}

TConverted ToLibrary(const TProblemMap& problems) {
    TConverted converted{FormatProblems(problems, true), {}};
    for (const auto& [id, problem] : problems)
        for (const std::string& part : UnwrittenParts(*problem))
            LeaveOut(converted, *problem, "left out: " + part);
    return converted;
}

TConverted ToEpd(const TProblemMap& problems) {
    TConverted converted;
    for (const auto& [id, problem] : problems) {
        if (problem->kind == kDirectMate)
            converted.m_text += EpdText(*problem);
        else
            LeaveOut(converted, *problem,
                     std::string("left out: an EPD file has no words for a ") + KindName(*problem));
    }
    return converted;
}

TConverted ToPgn(const TProblemMap& problems) {
    TConverted converted;
    for (const auto& [id, problem] : problems) {
        std::vector<std::string> faults;
        converted.m_text += (converted.m_text.empty() ? "" : "\n") + PgnText(*problem, faults);
        for (const std::string& fault : faults)
            LeaveOut(converted, *problem, fault);
    }
    return converted;
}

TConverted ToJson(const TProblemMap& problems) {
    TConverted converted{"[", {}};
    for (const auto& [id, problem] : problems)
        converted.m_text += (converted.m_text.size() > 1 ? ",\n" : "\n") +
                            ProblemObject(*problem).dump(-1, ' ', false, TJson::error_handler_t::replace);
    converted.m_text += "\n]\n";
    return converted;
}

struct TFormat {
    std::string_view m_name; // also the ending of its files
    TConverted (*m_convert)(const TProblemMap&);
};

constexpr std::array kFormats{TFormat{"cp", ToLibrary}, TFormat{"cpx", ToLibrary}, TFormat{"epd", ToEpd},
                              TFormat{"pgn", ToPgn}, TFormat{"json", ToJson}};

/// Errors  ChessException: the format is not known.
const TFormat& FormatOf(const TConvertOptions& options) {
    const std::string ending = std::filesystem::path(options.m_out).extension().string();
    const std::string name = !options.m_format.empty() ? options.m_format : ending.substr(ending.empty() ? 0 : 1);
    for (const TFormat& format : kFormats)
        if (ToUpperAscii(format.m_name) == ToUpperAscii(name))
            return format;
    throw ChessException("the format of the output is not known (cp, epd, pgn, json): " +
                         (name.empty() ? options.m_out : name));
}

/// What would be lost if nothing had the text but what was read of it; empty for nothing.
std::string WhatIsLost(const TLibrarySource& source) {
    if (source.HasUnreadable())
        return "problems that cannot be read";
    if (source.HasRepeatedIds())
        return "problems with a repeated id";
    return source.m_errors.empty() ? "" : "what the warnings name"; // such as a variant that another one replaces
}

/// What was not understood would be lost with the only file that has it.
void RefuseToLose(const TConvertOptions& options, const TLibrarySource& source, const TProblemFileOptions& files) {
    const std::string lost = WhatIsLost(source);
    if (lost.empty())
        return;
    const std::vector<std::filesystem::path> written = FilesOfLibrary(options.m_out, files);
    const bool bReplaced = std::ranges::any_of(written, [&](const std::filesystem::path& file) {
        std::error_code ignored;
        return std::filesystem::equivalent(source.m_name, file, ignored);
    });
    if (!bReplaced)
        return;
    throw ChessException(options.m_out + " is not written: " + lost + " would be lost");
}

EExitStatus Convert(const TConvertOptions& options) {
    const TFormat& format = FormatOf(options);
    TLibrarySource source = ReadLibrarySource(options.m_in);
    TellErrors(source);
    TProblemFileOptions files = SetFileOptions();
    files.m_bCommentCompatibility &= format.m_convert == ToLibrary && IsLibraryName(options.m_out);
    RefuseToLose(options, source, files);
    const TProblemMap problems = ById(source);
    const TConverted converted = format.m_convert(problems);
    if (options.m_out == "-")
        WriteOutput(converted.m_text);
    else if (files.m_bCommentCompatibility)
        WriteProblemFile(options.m_out, problems, files);
    else
        SaveTextFile(options.m_out, converted.m_text);
    for (const std::string& line : converted.m_leftOut)
        WriteDiagnostic(source.m_name + ": " + line);
    const EExitStatus status = converted.m_leftOut.empty() ? EExitStatus::Answered : EExitStatus::Unanswered;
    return source.HasUnreadable() ? EExitStatus::BadInput : status;
}

EExitStatus RunConvert(const TConvertOptions& options) {
    try {
        return Convert(options);
    } catch (const CSaveError& failure) {
        WriteDiagnostic(failure.what());
        return failure.IsOpened() ? EExitStatus::SystemFailure : EExitStatus::BadInput;
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddConvertCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("convert", "Write a library or EPD file in another format");
    const auto options = std::make_shared<TConvertOptions>();
    command->add_option("IN", options->m_in, "Problem library (.cp) or EPD file; - is standard input")->required();
    command->add_option("OUT", options->m_out, "File to write; - is standard output, with --to")->required();
    command->add_option("--to", options->m_format, "Format of OUT, whatever its ending: cp, epd, pgn, json")
        ->type_name("FORMAT");
    command->footer(kConvertExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunConvert(*options); }; });
}

} // namespace quillon
