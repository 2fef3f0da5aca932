#include "cli/solve_command.h"

#include <memory>
#include <new>
#include <optional>
#include <system_error>

#include "cli/console_notifier.h"
#include "cli/explain_text.h"
#include "cli/option_values.h"
#include "cli/output.h"
#include "cli/problem_source.h"
#include "cli/solve_options.h"
#include "cli/solve_report.h"
#include "cli/solve_settings.h"
#include "cli/watched_solve.h"
#include "core/chess_exception.h"
#include "globalregister/active_registers.h"
#include "heuristics/result_texts.h"
#include "library/problem_file_error.h"
#include "platform/interrupt.h"
#include "platform/terminal.h"

namespace quillon {

namespace {

constexpr const char* kDirectMatesOnly = "only direct mates are solved";
constexpr const char* kSolveExamples = R"(
Examples:
  quillon solve                                       the sample library
  quillon solve problems.cp --id 1,5,10-20            some problems of a library
  quillon solve problems.epd --all --time-limit 60    every key, a minute a problem
  quillon solve --fen "8/8/8/8/8/1K5Q/1p6/kn6" --moves 3

The side to move is White. Without --all or --stop-on, and without such an
option in the problem itself, a solve stops at the first key. Ctrl+C stops it
and tells what is known; a second one ends the program. Ctrl+Z pauses it, clock
and time limit with it; `fg` or SIGCONT goes on. SIGUSR1 writes the state of the
search to standard error.

The live line on a terminal, and the first line of that state:
  A Pass 1b SH(heuristics) Safe mode ON TR=130MB GR=0MB Thrds=4+2 23.4% 1200000
"A" is for all threads; the pass with its heuristics; the memory of the register
and of the precalculated data; the threads running, and those of the scheduler;
how much of the pass is done; nodes. Behind it the threads that share the key
moves, and the time: 4thrd(s)... 35 sec(s)...

What neither options nor the problem say is taken from options.ini in the
working folder, where there is one.

Exit status: 0 every problem has a mate or is proved to have none, 1 some
doubtful, stopped or differing from the expected answer, 2 bad input or usage,
3 failure of the system (memory, disk).)";

/// Asked for by Ctrl+C, Ctrl+Z and the like. Handlers refer to it as long as the program runs.
TUserSignals g_signals;

class CSolveCommand {
  public:
    explicit CSolveCommand(const TSolveOptions& options)
        : m_options(options), m_line(options.m_bProgress || IsTerminal(EStream::Error)) {}

    EExitStatus Run() {
        // A report that is asked for while problems and data are read comes with the first solve; without a handler the
        // signal would end the program. Ctrl+C does, as long as there is nothing to tell of.
        InstallJobSignals(g_signals.m_jobs);
        if (!CanReadHeuristics())
            return EExitStatus::BadInput;
        const std::optional<TProblemSource> source = ReadSource();
        if (!source)
            return EExitStatus::BadInput;
        m_fileName = source->m_name;
        for (const std::string& warning : source->m_warnings)
            WriteDiagnostic(warning);
        for (const std::string& missing : source->m_missing)
            Fail(missing);
        LoadRunSettings();
        if (!OpenPrecalcData())
            return EExitStatus::BadInput;
        InstallInterruptHandler(g_signals.m_nInterrupts);
        for (const TSourceItem& item : source->m_items)
            RunItem(item);
        if (!m_options.m_bJson && m_totals.m_nProblems + m_totals.m_nNotStarted > 1)
            WriteOutput((m_options.m_bQuiet ? "" : "\n") + SummaryText(m_totals));
        return m_status;
    }

  private:
    /// A set that cannot be read is the command line's fault: told once, whatever the number of problems.
    [[nodiscard]] bool CanReadHeuristics() const {
        try {
            if (m_options.m_heuristics)
                (void)ReadHeuristicsText(*m_options.m_heuristics);
            return true;
        } catch (const ChessException& failure) {
            WriteDiagnostic(failure.what());
            return false;
        }
    }

    void LoadRunSettings() {
        CConsoleNotifier notifier(m_line);
        m_settings = LoadSettings(notifier, CommandLineDefaults());
        ApplyRegisterSettings(m_settings);
    }

    bool OpenPrecalcData() {
        try {
            m_registers.emplace(MakePrecalcOptions(m_settings, m_options.m_precalc), m_notifier, 0);
            return true;
        } catch (const ChessException& failure) {
            WriteDiagnostic(failure.what());
            return false;
        }
    }

    std::optional<TProblemSource> ReadSource() {
        try {
            if (m_options.m_fen)
                return MakeFenSource(*m_options.m_fen, m_options.m_moves.value_or(1));
            return ReadProblemSource(m_options.m_file, m_options.m_ids);
        } catch (const ChessException& failure) {
            WriteDiagnostic(failure.what());
            return std::nullopt;
        }
    }

    void RunItem(const TSourceItem& item) {
        if (g_signals.m_nInterrupts.load(std::memory_order_relaxed) > 0) {
            ++m_totals.m_nNotStarted;
            Worsen(EExitStatus::Unanswered);
            return;
        }
        ++m_totals.m_nProblems;
        if (!item.m_problem)
            ReportError(item, item.m_error);
        else if (item.m_problem->kind != kDirectMate)
            ReportError(item, kDirectMatesOnly);
        else
            SolveItem(item);
    }

    void SolveItem(const TSourceItem& item) {
        const ChessProblem& problem = *item.m_problem;
        const bool bFromFile = !m_options.m_fen;
        if (!m_options.m_bJson && !m_options.m_bQuiet)
            WriteOutput((m_totals.m_nProblems > 1 ? "\n" : "") + HeadText(problem, bFromFile));
        try {
            TSolveRequest request = MakeRequest(problem, m_options);
            ApplySettings(m_settings, problem, m_options, request);
            m_registers->SetQuota(PrecalcQuota(m_settings, m_options.m_precalc, &problem));
            const CActiveRegisters active(*m_registers);
            const TWatchedResult watched = SolveWatched(request, m_line, m_options.m_secondsLimit, g_signals,
                                                        [this](const TPlanReport& plan) { TellPlan(plan); });
            TSolveReport report{problem, request, watched, m_options.m_bExplain, bFromFile, std::nullopt};
            if ((problem.flags & kFlagAnswer) != 0)
                report.m_answerCheck = CheckAnswer(watched.m_result, problem.answer, WantedKeys(request));
            Print(report);
            Count(report);
        } catch (const ChessException& failure) {
            ReportError(item, failure.what());
        } catch (const std::bad_alloc&) { // the next problem may do with less
            ReportError(item, kOutOfMemory, EExitStatus::SystemFailure);
        } catch (const std::system_error& failure) { // no thread, for example
            ReportError(item, failure.what(), EExitStatus::SystemFailure);
        }
    }

    void TellPlan(const TPlanReport& plan) {
        if (!m_options.m_bExplain || m_options.m_bJson || m_options.m_bQuiet)
            return;
        m_line.Erase();
        WriteOutput(PlanText(plan));
    }

    void Print(const TSolveReport& report) const {
        if (m_options.m_bJson)
            WriteOutput(JsonText(report) + "\n");
        else
            WriteOutput(m_options.m_bQuiet ? QuietText(report) : ResultText(report));
        if (m_options.m_bJson && report.m_answerCheck == EAnswerCheck::Differs)
            WriteDiagnostic(PlaceText(m_fileName, {report.m_problem.line, 0}, report.m_problem.id) +
                            DifferenceText(report.m_problem));
    }

    void Count(const TSolveReport& report) {
        const TSolvingResult& result = report.m_watched.m_result;
        m_totals.m_nPositions += result.m_nPositions;
        m_totals.m_seconds += result.m_seconds;
        const EOutcome outcome = OutcomeOf(result);
        ++CounterOf(outcome);
        if (outcome == EOutcome::Doubtful || outcome == EOutcome::Stopped)
            Worsen(EExitStatus::Unanswered);
        if (report.m_answerCheck == EAnswerCheck::Differs) {
            ++m_totals.m_nDiffering;
            Worsen(EExitStatus::Unanswered);
        }
    }

    int& CounterOf(EOutcome outcome) {
        switch (outcome) {
        case EOutcome::Mate:
            return m_totals.m_nSolved;
        case EOutcome::NoMate:
            return m_totals.m_nNoSolution;
        case EOutcome::Doubtful:
            return m_totals.m_nDoubtful;
        case EOutcome::Stopped:
            break;
        }
        return m_totals.m_nStopped;
    }

    void ReportError(const TSourceItem& item, const std::string& message, EExitStatus status = EExitStatus::BadInput) {
        ++m_totals.m_nErrors;
        if (m_options.m_bJson)
            WriteOutput(JsonErrorText(item.m_id, message, m_fileName, item.m_nLine, item.m_nColumn) + "\n");
        Fail(PlaceText(m_fileName, item) + message, status);
    }

    void Fail(const std::string& message, EExitStatus status = EExitStatus::BadInput) {
        WriteDiagnostic(message);
        Worsen(status);
    }

    void Worsen(EExitStatus status) { m_status = Graver(m_status, status); }

    const TSolveOptions& m_options;
    CProgressLine m_line;
    CConsoleNotifier m_notifier{m_line}; // of loads, which may be several at a time
    TSettings m_settings = CommandLineDefaults();
    std::optional<CGlobalRegisters> m_registers;
    std::string m_fileName; // empty for --fen
    TSolveTotals m_totals;
    EExitStatus m_status = EExitStatus::Answered;
};

} // namespace

void AddSolveCommand(CLI::App& app, TChosenCommand& chosen) {
    CLI::App* const command = app.add_subcommand("solve", "Solve direct-mate problems");
    const auto options = std::make_shared<TSolveOptions>();
    AddSolveOptions(*command, *options);
    command->footer(kSolveExamples);
    command->callback([options, &chosen] { chosen = [options] { return CSolveCommand(*options).Run(); }; });
}

} // namespace quillon
