#include "cli/regress_command.h"

#include <CLI/CLI.hpp>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/regression.h"
#include "cli/console_notifier.h"
#include "cli/option_values.h"
#include "cli/output.h"
#include "cli/precalc_data.h"
#include "cli/problem_source.h"
#include "cli/regress_report.h"
#include "cli/solve_options.h"
#include "cli/solve_report.h"
#include "cli/solve_settings.h"
#include "core/chess_exception.h"
#include "globalregister/active_registers.h"
#include "platform/interrupt.h"
#include "platform/memory_info.h"
#include "platform/sleep.h"
#include "platform/terminal.h"

namespace quillon {

namespace {

constexpr int kMostJobs = 256;
constexpr int kLongestLimitSeconds = 1'000'000'000; // 31 years
constexpr std::uint32_t kRegressWatchStepMs = 20;
constexpr int kStepsToProgress = 12;
constexpr const char* kNoRunOfOtherKinds = "only direct mates are solved";

constexpr const char* kRegressExamples = R"(
Examples:
  quillon regress problems.cp                    every problem as given
  quillon regress problems.cp --mirrors          and its mirrored copies
  quillon regress problems.cp --quick --jobs 4   64 seconds a problem, four at a time

Solves the problems of the file in the order of their numbers and holds what is
found against what they expect: the answer, the order of White's moves. The lines
go to standard output and to the file RegressionTest.log in the working folder;
the log before stays as RegressionTest.log.BAK. A problem that requires data
which are not there is left out and told. With --jobs all problems share the
data, but for those that forbid them, and what one says of the memory for them
does not count. Ctrl+C stops the run, and the log keeps what was done; a second
one ends the program.

Exit status: 0 all that was run is as expected, 1 something failed, was left in
doubt, ran into the time limit or was stopped, 2 bad input or usage, 3 failure of
the system (memory, disk, a log that cannot be written).)";

struct TRegressOptions {
    std::string m_file;
    std::vector<std::string> m_ids;
    bool m_bQuick = false;
    bool m_bMirrors = false;
    bool m_bNoMirrors = false;
    int m_nJobs = 1;
    TPrecalcChoice m_precalc;
    std::optional<int> m_limitSeconds;
    std::optional<std::string> m_threads;
    bool m_bJson = false;
    bool m_bProgress = false;
};

/// Asked for by Ctrl+C. The handler refers to it as long as the program runs.
std::atomic<int> g_nRegressInterrupts{0};

/// The regression's view of the command line.
class CRegressHost : public IRegressionHost {
  public:
    CRegressHost(const TRegressOptions& options, TProblemMap library, CProgressLine& line)
        : m_options(options), m_library(std::move(library)), m_line(line), m_notifier(line) {
        m_solveOptions.m_threads = options.m_threads;
        m_totals.m_nProblems = m_totals.m_nNotRun = static_cast<int>(m_library.size());
        m_settings = LoadSettings(m_notifier, CommandLineDefaults());
        ApplyRegisterSettings(m_settings);
        m_registers.emplace(MakePrecalcOptions(m_settings, options.m_precalc), m_notifier, QuotaFor(nullptr));
        m_active.emplace(*m_registers);
    }

    [[nodiscard]] const TSettings& Settings() const { return m_settings; }
    [[nodiscard]] const TRegressTotals& Totals() const { return m_totals; }
    [[nodiscard]] bool IsLogLost() const { return m_bLogLost; }

    /// "problem 12 of 94": how far the run has come. From any thread.
    [[nodiscard]] std::string ProgressText() const {
        return "problem " + std::to_string(m_nBegun.load()) + " of " + std::to_string(m_totals.m_nProblems);
    }

    // ---- what the run asks

    void Inform(std::string_view text, std::string_view title) override {
        CConsoleNotifier(m_line).Inform(text, title);
    }
    [[nodiscard]] bool AskYesNo(std::string_view, std::string_view) override { return false; }

    /// About mirrors. The options answer, so that scripts need nobody to sit by.
    [[nodiscard]] EAnswer AskYesNoCancel(std::string_view, std::string_view) override {
        return m_options.m_bMirrors ? EAnswer::Yes : EAnswer::No;
    }
    [[nodiscard]] bool IsSolving() const override { return false; }
    [[nodiscard]] const TProblemMap& Library() const override { return m_library; }
    void ShowProblem(std::int32_t) override { m_nBegun.fetch_add(1); }

    [[nodiscard]] TSolveRequest MakeRequest(const ChessProblem& problem) override {
        if (problem.kind != kDirectMate)
            throw ChessException(kNoRunOfOtherKinds);
        TSolveRequest request = quillon::MakeRequest(problem, m_solveOptions);
        ApplySettings(m_settings, problem, m_solveOptions, request);
        ShareMemory(request, m_options.m_nJobs, PhysicalMemory());
        AllowData(&problem);
        return request;
    }

    void RunEnded(const TRegressionRun& run) override {
        AllowData(nullptr); // what the next problem requires is asked before its own limit is known
        CountRun(m_totals, run);
        if (std::exchange(m_lastId, run.m_nId) != run.m_nId) // the runs of a problem come together
            --m_totals.m_nNotRun;
        if (run.m_outcome == ERegressionOutcome::Skipped) // it has not been shown
            m_nBegun.fetch_add(1);
        if (!run.m_bLogged && !std::exchange(m_bLogLost, true))
            m_line.WriteMessage(RegressionLogPath().string() + " cannot be written; the run goes on without it");
        m_line.WriteResult(m_options.m_bJson ? RunJson(run) : RunText(run));
    }

    void RegressionEnded() override { m_line.Erase(); }

  private:
    [[nodiscard]] std::uint64_t QuotaFor(const ChessProblem* problem) const {
        return PrecalcQuota(m_settings, m_options.m_precalc, problem);
    }

    /// As this problem allows, null for none. While others are searched the limit has to stay what it is.
    void AllowData(const ChessProblem* problem) {
        if (m_options.m_nJobs > 1)
            return;
        m_registers->SetQuota(QuotaFor(problem));
        SetActiveRegisters(&*m_registers);
    }

    const TRegressOptions& m_options;
    const TProblemMap m_library;
    CProgressLine& m_line;
    CConsoleNotifier m_notifier;
    TSolveOptions m_solveOptions;
    TSettings m_settings;
    std::optional<CGlobalRegisters> m_registers;
    std::optional<CActiveRegisters> m_active;
    TRegressTotals m_totals;
    std::optional<std::int32_t> m_lastId; // of the run told of last
    bool m_bLogLost = false;
    std::atomic<int> m_nBegun{0}; // problems, those left out among them
};

class CRegressCommand {
  public:
    explicit CRegressCommand(const TRegressOptions& options)
        : m_options(options), m_line(options.m_bProgress || IsTerminal(EStream::Error)) {}

    EExitStatus Run() {
        try {
            CRegressHost host(m_options, ReadLibrary(), m_line);
            InstallInterruptHandler(g_nRegressInterrupts);
            RunAll(host);
            m_line.WriteResult(m_options.m_bJson ? RegressTotalsJson(host.Totals()) : RegressTotalsText(host.Totals()));
            Worsen(StatusOf(host));
        } catch (const ChessException& failure) {
            WriteDiagnostic(failure.what());
            Worsen(EExitStatus::BadInput);
        }
        return m_status;
    }

  private:
    /// Tells what cannot be read. Of two problems of one number the later one counts.
    TProblemMap ReadLibrary() {
        TProblemSource source = ReadProblemSource(m_options.m_file, m_options.m_ids);
        for (const std::string& warning : source.m_warnings)
            WriteDiagnostic(warning);
        for (const std::string& missing : source.m_missing)
            Fail(missing);
        TProblemMap library;
        for (TSourceItem& item : source.m_items) {
            if (item.m_problem == nullptr)
                TellUnreadable(source, item);
            else
                library.insert_or_assign(item.m_problem->id, std::move(item.m_problem));
        }
        return library;
    }

    void TellUnreadable(const TProblemSource& source, const TSourceItem& item) {
        if (m_options.m_bJson)
            WriteOutput(JsonErrorText(item.m_id, item.m_error, source.m_name, item.m_nLine, item.m_nColumn) + "\n");
        Fail(PlaceText(source.m_name, item) + item.m_error);
    }

    void RunAll(CRegressHost& host) {
        TRegressionSetup setup;
        setup.m_nLichessLevels = host.Settings().m_nLichessLevels;
        setup.m_nJobs = m_options.m_nJobs;
        setup.m_isTypeAvailable = IsTypeAvailable;
        CRegression regression(host, setup);
        regression.TimeLimitSeconds.store(m_options.m_limitSeconds.value_or(0));
        if (!regression.Start(m_options.m_bQuick))
            return;
        for (int step = 1; regression.RegressionRunning(); ++step) {
            if (g_nRegressInterrupts.load(std::memory_order_relaxed) > 0)
                regression.Stop();
            if (step % kStepsToProgress == 0)
                m_line.Show(host.ProgressText());
            SleepMs(kRegressWatchStepMs);
        }
        regression.Join();
    }

    static EExitStatus StatusOf(const CRegressHost& host) {
        const TRegressTotals& totals = host.Totals();
        if (host.IsLogLost())
            return EExitStatus::SystemFailure;
        const bool bAllAsExpected =
            totals.m_nFailed + totals.m_nDoubtful + totals.m_nTimeLimit + totals.m_nStopped + totals.m_nNotRun == 0;
        return bAllAsExpected ? EExitStatus::Answered : EExitStatus::Unanswered;
    }

    void Fail(const std::string& message) {
        WriteDiagnostic(message);
        Worsen(EExitStatus::BadInput);
    }

    void Worsen(EExitStatus status) { m_status = Graver(m_status, status); }

    const TRegressOptions& m_options;
    CProgressLine m_line;
    EExitStatus m_status = EExitStatus::Answered;
};

} // namespace

void AddRegressCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("regress", "Solve a library and hold it against what it expects");
    const auto options = std::make_shared<TRegressOptions>();
    command->add_option("FILE", options->m_file, "Problem library (.cp) or EPD file; - is standard input")->required();
    command->add_option("--id", options->m_ids, "Run only these problems: 7, or 1,5,10-20; may be repeated")
        ->type_name("N[,M-K]")
        ->allow_extra_args(false)
        ->check(ProblemIds());
    auto* const quick =
        command->add_flag("--quick", options->m_bQuick, "As given only, and no longer than 64 seconds each");
    auto* const mirrors =
        command->add_flag("--mirrors", options->m_bMirrors, "Solve the mirrored copies of the problems as well");
    mirrors->excludes(quick);
    command->add_flag("--no-mirrors", options->m_bNoMirrors, "Do not; so it is without either option")
        ->excludes(mirrors);
    command->add_option("--jobs", options->m_nJobs, "Problems that are solved at a time; they share the memory")
        ->type_name("N")
        ->transform(WholeNumber(1, kMostJobs));
    command->add_option("--time-limit", options->m_limitSeconds, "Stop a solve after so many seconds, a whole number")
        ->type_name("SECONDS")
        ->transform(WholeNumber(1, kLongestLimitSeconds))
        ->excludes(quick);
    command
        ->add_option("--threads", options->m_threads,
                     "Threads of each problem, as for solve; without the option the problem's own number, or one")
        ->type_name("T[^L]")
        ->check(Threads());
    AddPrecalcOptions(*command, options->m_precalc, "Data");
    command->add_flag("--json", options->m_bJson, "One JSON object a run, and one for the whole, each on one line");
    command->add_flag("--progress", options->m_bProgress,
                      "Show the live line of progress even if standard error is no terminal");
    command->footer(kRegressExamples);
    command->callback([options, &chosen] { chosen = [options] { return CRegressCommand(*options).Run(); }; });
}

} // namespace quillon
