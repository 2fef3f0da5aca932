#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>

#include "app/version.h"
#include "cli/bench_command.h"
#include "cli/check_command.h"
#include "cli/convert_command.h"
#include "cli/generate_command.h"
#include "cli/help_formatter.h"
#include "cli/list_command.h"
#include "cli/output.h"
#include "cli/perft_command.h"
#include "cli/precalc_command.h"
#include "cli/probe_command.h"
#include "cli/regress_command.h"
#include "cli/show_command.h"
#include "cli/solve_command.h"
#include "cli/uci_command.h"
#include "cli/verify_command.h"
#include "heuristics/result_texts.h"
#include "library/text_decoding.h"

namespace quillon {

namespace {

constexpr const char* kProgramExamples = R"(
Examples:
  quillon solve                                  solve the sample library
  quillon solve problems.cp --all                every key of every problem
  quillon solve --fen "8/8/8/8/8/1K5Q/1p6/kn6" --moves 3
  quillon regress problems.cp --quick            hold the engine against a file

"quillon COMMAND --help" tells the options of a command.)";

EExitStatus FailUsage(const std::string& message, const std::string& command) {
    WriteDiagnostic(message);
    std::cerr << "Run \"quillon " + command + "--help\" for more information.\n";
    return EExitStatus::BadInput;
}

/// Help and version go to standard output; what is wrong with the command line is told in one line.
EExitStatus Explain(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(error, std::cout, std::cerr);
        WriteOutput("");
        return EExitStatus::Answered;
    }
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : commands.front()->get_name() + " ";
    return FailUsage(error.what(), command);
}

/// False, and it is told why, if the folder cannot be entered.
bool EnterFolder(const std::string& folder) {
    std::error_code failure;
    std::filesystem::current_path(folder, failure);
    if (failure)
        WriteDiagnostic("cannot work in " + folder + ": " + failure.message());
    return !failure;
}

EExitStatus Run(int argc, const char* const* argv) {
    CLI::App app{"Quillon solves direct-mate chess problems.", "quillon"};
    app.set_version_flag("--version", "quillon " + std::string(kVersion), "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.formatter(std::make_shared<CHelpFormatter>());
    std::string workDir;
    app.add_option("--work-dir", workDir, "Work in this folder, as if the program had been started there")
        ->type_name("DIR");
    std::string codePage;
    app.add_option("--code-page", codePage,
                   "Character set of problem files that do not name theirs, such as windows-1251. Without the option "
                   "that of the locale")
        ->type_name("NAME");
    app.fallthrough();            // also behind a command
    app.require_subcommand(0, 1); // a missing one is told below, an unknown one by its name
    app.footer(kProgramExamples);
    TChosenCommand chosen;
    AddSolveCommand(app, chosen);
    AddPerftCommand(app, chosen);
    AddShowCommand(app, chosen);
    AddListCommand(app, chosen);
    AddConvertCommand(app, chosen);
    AddCheckCommand(app, chosen);
    AddProbeCommand(app, chosen);
    AddPrecalcCommand(app, chosen);
    AddVerifyCommand(app, chosen);
    AddGenerateCommand(app, chosen);
    AddRegressCommand(app, chosen);
    AddBenchCommand(app, chosen);
    AddUciCommand(app, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return Explain(app, error);
    }
    if (!workDir.empty() && !EnterFolder(workDir))
        return EExitStatus::BadInput;
    if (!SetLegacyCodePage(codePage))
        return FailUsage("there is no character set " + codePage, "");
    return chosen ? chosen() : FailUsage("a command is needed", "");
}

} // namespace

int RunCommandLine(int argc, const char* const* argv) {
    try {
        return static_cast<int>(Run(argc, argv));
    } catch (const std::bad_alloc&) {
        WriteDiagnostic(kOutOfMemory);
    } catch (const std::exception& failure) {
        WriteDiagnostic(failure.what());
    }
    return static_cast<int>(EExitStatus::SystemFailure);
}

} // namespace quillon
