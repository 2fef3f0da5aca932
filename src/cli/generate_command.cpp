#include "cli/generate_command.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/generate_host.h"
#include "cli/option_values.h"
#include "cli/output.h"
#include "cli/precalc_data.h"
#include "cli/solve_settings.h"
#include "cli/user_signals.h"
#include "core/chess_exception.h"
#include "globalregister/generator/table_making.h"
#include "globalregister/precalc_files.h"
#include "platform/interrupt.h"
#include "platform/processors.h"
#include "platform/save_file.h"
#include "platform/terminal.h"
#include "platform/thread.h"

namespace quillon {

namespace {

using TGenerateClock = std::chrono::steady_clock;

constexpr std::size_t kGenerateStackBytes = std::size_t{8} << 20;
constexpr int kMostGenerateThreads = 1024;
constexpr int kMostGenerateMB = 1 << 24;
constexpr auto kGenerateWatchStep = std::chrono::milliseconds(20);
constexpr auto kGenerateProgressStep = std::chrono::milliseconds(200);
constexpr const char* kGenerationPaused = "paused; to go on: fg, or SIGCONT";

constexpr const char* kGenerateExamples = R"(
Examples:
  quillon generate Q R P                          three types, to Precalc here
  quillon generate QRr --with-subtypes --precalc DIR
  quillon generate QRr --continue --precalc DIR   goes on where it was stopped
  quillon generate QR --pack=lz4                  a packed form beside the table
  quillon generate "KQkp(b3)+Pa2"                 men behind + never move

TYPE is the letters of the men besides the kings, White's in capitals, as QRr.
A table is made from those of simpler types: what captures and promotions lead
to. Those that are missing are named, or made first with --with-subtypes.

The files go to DIR/Precalc, into its folder for so many men where there is
one. After each level of a table its state is saved. Ctrl+C gives up the level
under way and keeps that state; a second one ends the program, which costs no
more. Packing a table that is finished ends first. Ctrl+Z pauses, `fg` or
SIGCONT goes on; a pause is in no time that is told. SIGUSR1 writes to standard
error how far it has come.

A finished table counts in whatever form and folder it is: it is not made
again beside its packed form. With --restart it is, and what is replaced stays
as ".BAK", packed forms too; an unfinished table does so only where there is
no ".BAK" yet.

Settings that keep data packed or on disk do not hold for this run: it needs
them in memory. Nobody is asked anything: without an option that says so nothing
is replaced or removed.

Exit status: 0 all tables are there, 1 some are unfinished, 2 bad usage, missing
types, a file in the way or one that contradicts itself, a table that packing
makes no smaller, 3 a failure of the system (memory, disk).)";

struct TGenerateCommandOptions {
    std::vector<std::string> m_types;
    TGenerateOptions m_run;
    TGenerateAnswers m_answers;
    std::optional<std::string> m_folder;
    int m_nMegabytes = 0; // 0: not given
    std::string m_pack;
    bool m_bContinue = false, m_bRestart = false, m_bProgress = false;
};

/// Asked for by Ctrl+C, Ctrl+Z and the like. Handlers refer to it as long as the program runs.
TUserSignals g_generateSignals;

/// A run on a thread of its own, while the caller's shows the progress and obeys the user's signals.
class CWatchedGeneration {
  public:
    CWatchedGeneration(const TGenerateOptions& options, CGenerateHost& host, CGlobalRegisters& registers,
                       CProgressLine& line)
        : m_options(options), m_host(host), m_registers(registers), m_line(line),
          m_suspension(g_generateSignals, line,
                       {[this] { PauseGenerator(m_control); }, [this] { ResumeGenerator(m_control); },
                        [] { return true; }, kGenerationPaused}) {}

    void Run(const std::vector<std::string>& types) {
        CThread thread(kGenerateStackBytes, [this, &types] { Generate(types); });
        try {
            while (!WaitForEnd())
                Watch();
        } catch (...) { // the thread is joined on the way, and nobody would be there to end it
            m_control.m_nPause.store(kGeneratorBreaks, std::memory_order_relaxed);
            throw;
        }
        thread.Join();
        m_line.Erase();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

  private:
    void Generate(const std::vector<std::string>& types) {
        SetThreadPriority(m_options.m_nThreadPriority);
        try {
            (void)GenerateMany(types, m_options, m_host, m_registers, m_control);
        } catch (...) {
            m_failure = std::current_exception();
        }
        const std::lock_guard lock(m_mutex);
        m_bDone = true;
        m_changed.notify_one();
    }

    [[nodiscard]] bool WaitForEnd() {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kGenerateWatchStep, [this] { return m_bDone; });
    }

    void Watch() {
        if (g_generateSignals.m_nInterrupts.load(std::memory_order_relaxed) > 0)
            m_control.m_nPause.store(kGeneratorBreaks, std::memory_order_relaxed);
        if (g_generateSignals.m_jobs.m_nReports.exchange(0) > 0)
            m_line.WriteReport(m_host.ProgressText() + "\n");
        m_suspension.Obey();
        if (!m_line.IsShown() || TGenerateClock::now() < m_nextProgress)
            return;
        m_line.Show(m_host.ProgressText());
        m_nextProgress = TGenerateClock::now() + kGenerateProgressStep;
    }

    const TGenerateOptions& m_options;
    CGenerateHost& m_host;
    CGlobalRegisters& m_registers;
    CProgressLine& m_line;
    TGeneratorControl m_control;
    CSuspension m_suspension;
    TGenerateClock::time_point m_nextProgress{};

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bDone = false;         // guarded by m_mutex
    std::exception_ptr m_failure; // of the run's thread; read behind Join
};

/// The folder for what is made. One that has its files itself would lose them from sight with a folder Precalc in it.
TPrecalcFolders GenerateFolders(const TSettings& settings, const std::optional<std::string>& folder) {
    const TPrecalcFolders inPlace = MakePrecalcOptions(settings, {folder, std::nullopt}).m_folders;
    const TPrecalcFolders folders{folder.value_or("."), settings.m_precalcPath};
    if (folder && inPlace.m_secondRoot == std::filesystem::path(*folder) &&
        inPlace.m_secondRoot != folders.m_secondRoot && !FindPrecalcFiles(inPlace).empty())
        throw ChessException(*folder + " has its data without a folder " + std::string(kPrecalcFolder) +
                             ": move them into one first");
    return folders;
}

std::optional<ETableForm> PackForm(const std::string& name) {
    if (name.empty())
        return std::nullopt;
    return name == "lz4" ? ETableForm::Lz4 : ETableForm::Lzw; // the option takes no other word
}

EExitStatus RunGenerate(const TGenerateCommandOptions& options) {
    try {
        for (const std::string& type : options.m_types)
            CheckGeneratedType(type);
        CProgressLine line(options.m_bProgress || IsTerminal(EStream::Error));
        CGenerateHost host(line, options.m_answers);
        const TSettings settings = LoadSettings(host, CommandLineDefaults());
        TPrecalcOptions precalc = MakePrecalcOptions(settings, {options.m_folder, std::nullopt});
        precalc.m_folders = GenerateFolders(settings, options.m_folder);
        TGenerateOptions run = options.m_run;
        run.m_nMemoryBytes = static_cast<std::uint64_t>(options.m_nMegabytes) << 20;
        run.m_packForm = PackForm(options.m_pack);
        run.m_existing = options.m_bRestart                                ? EExistingTable::Restart
                         : options.m_bContinue || options.m_answers.m_bYes ? EExistingTable::Continue
                                                                           : EExistingTable::Leave;
        CGlobalRegisters registers(precalc, host, 0);
        InstallInterruptHandler(g_generateSignals.m_nInterrupts);
        InstallJobSignals(g_generateSignals.m_jobs);
        FailAtFileSizeLimit();
        CWatchedGeneration(run, host, registers, line).Run(options.m_types);
        return host.Status();
    } catch (const ChessException& failure) {
        WriteDiagnostic(failure.what());
        return EExitStatus::BadInput;
    }
}

} // namespace

void AddGenerateCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("generate", "Make precalculated endgame data");
    const auto options = std::make_shared<TGenerateCommandOptions>();
    options->m_run.m_nThreads = UsableProcessors();
    command->add_option("TYPE", options->m_types, "Letters of the men besides the kings, as QRr")->required();
    command->add_flag("--with-subtypes", options->m_run.m_bWithSubtypes, "Make the types that are missing first");
    command->add_option("--threads", options->m_run.m_nThreads, "Threads; without the option one for each processor")
        ->type_name("T")
        ->transform(WholeNumber(1, kMostGenerateThreads));
    command
        ->add_option(
            "--memory", options->m_nMegabytes,
            "Memory for the table and the data that it needs, in MiB. Without the option 90 % of the machine's")
        ->type_name("MB")
        ->transform(WholeNumber(1, kMostGenerateMB));
    command
        ->add_flag("--pack{lzw}", options->m_pack,
                   "Also pack the table, made now or before, as lzw, or with --pack=lz4 as lz4")
        ->check(CLI::IsMember({"lzw", "lz4"}));
    CLI::Option* const goOn =
        command->add_flag("--continue", options->m_bContinue, "Go on with unfinished tables from the next level");
    command->add_flag("--restart", options->m_bRestart, "Make tables anew that are there; the old ones stay as .BAK")
        ->excludes(goOn);
    command->add_flag("--remove-partial", options->m_answers.m_bRemovePartial,
                      "When stopped, remove the unfinished table");
    command->add_flag("--yes", options->m_answers.m_bYes, "Yes to all that is offered: to continue, to pack");
    command->add_option("--precalc", options->m_folder, "Folder with the folder Precalc; without it the working folder")
        ->type_name("DIR");
    command->add_flag("--json", options->m_answers.m_bJson, "One JSON object a type, on one line");
    command->add_flag("--progress", options->m_bProgress, "Show the progress also where standard error is no terminal");
    command->footer(kGenerateExamples);
    command->callback([options, &chosen] { chosen = [options] { return RunGenerate(*options); }; });
}

} // namespace quillon
