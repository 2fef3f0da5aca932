#include "app/regression.h"

#include <map>
#include <new>
#include <optional>
#include <utility>

#include "app/timed_solve.h"
#include "core/chess_exception.h"
#include "heuristics/result_texts.h"

namespace quillon {

namespace {

constexpr std::size_t kStackBytes = 1u << 20; // of the threads that wait for solves
constexpr std::string_view kTitle = "Quillon";

/// Nobody sits by to answer. Brute force is what the problem itself asks for.
class CUnattended : public INotifier {
  public:
    CUnattended(IRegressionHost& host, std::mutex& mutex) : m_host(host), m_mutex(mutex) {}

    void Inform(std::string_view text, std::string_view title) override {
        const std::lock_guard lock(m_mutex);
        m_host.Inform(text, title);
    }
    [[nodiscard]] bool AskYesNo(std::string_view text, std::string_view) override {
        return text == kBruteForceQuestion;
    }

  private:
    IRegressionHost& m_host;
    std::mutex& m_mutex;
};

/// The limit of a quick run; at its end the one before is put back.
class CQuickTimeLimit {
  public:
    explicit CQuickTimeLimit(std::atomic<int>& limit)
        : m_limit(limit), m_nBefore(limit.exchange(kQuickTimeLimitSeconds)) {}
    ~CQuickTimeLimit() { m_limit.store(m_nBefore); }
    CQuickTimeLimit(const CQuickTimeLimit&) = delete;
    CQuickTimeLimit& operator=(const CQuickTimeLimit&) = delete;

  private:
    std::atomic<int>& m_limit;
    const int m_nBefore;
};

} // namespace

/// The log and the host hear of runs in the order of the problems. What ends early waits for those before it. A host
/// that fails ends the regression and hears no more; what has been run still reaches the log.
class CRegression::CReport {
  public:
    explicit CReport(CRegression& regression) : m_regression(regression), m_mutex(regression.m_hostMutex) {}

    void Add(std::size_t nPlace, TRegressionRun run) {
        const std::lock_guard lock(m_mutex);
        if (nPlace == m_nFirst)
            Tell(run);
        else
            m_waiting[nPlace].m_runs.push_back(std::move(run));
    }

    /// The problem at this place has no more runs.
    void Close(std::size_t nPlace) {
        const std::lock_guard lock(m_mutex);
        m_waiting[nPlace].m_bClosed = true;
        while (!m_waiting.empty() && m_waiting.begin()->first == m_nFirst && TellWaiting(m_waiting.begin()->second)) {
            m_waiting.erase(m_waiting.begin());
            ++m_nFirst;
        }
    }

  private:
    struct TProblemRuns {
        std::vector<TRegressionRun> m_runs;
        bool m_bClosed = false;
    };

    bool TellWaiting(TProblemRuns& problem) {
        for (TRegressionRun& run : std::exchange(problem.m_runs, {}))
            Tell(run);
        return problem.m_bClosed;
    }

    void Tell(TRegressionRun& run) {
        run.m_bLogged = run.m_lines.empty() || AppendRegressionLog(run.m_lines, m_regression.m_setup.m_logPath);
        if (m_bHostFailed)
            return;
        try {
            m_regression.m_host.RunEnded(run);
        } catch (...) {
            m_bHostFailed = true;
            m_regression.Fail(std::current_exception());
        }
    }

    CRegression& m_regression;
    std::mutex& m_mutex; // guards what follows
    bool m_bHostFailed = false;
    std::size_t m_nFirst = 0; // problems that have been told of
    std::map<std::size_t, TProblemRuns> m_waiting;
};

CRegression::CRegression(IRegressionHost& host, TRegressionSetup setup) : m_host(host), m_setup(std::move(setup)) {}

CRegression::~CRegression() {
    Stop();
    m_thread.Join();
}

bool CRegression::Start(bool bQuick) {
    const bool bLasted = RegressionRunning();
    if (!bLasted)
        m_bMayRun.store(true); // a stop that comes from here on, with the question open, ends the run
    bool bSolveMirrors = false;
    if (!bQuick) {
        const EAnswer answer = m_host.AskYesNoCancel(kRegressionQuestion, kTitle);
        if (answer == EAnswer::Cancel)
            return false;
        bSolveMirrors = answer == EAnswer::Yes;
    }
    if (RegressionRunning() || m_host.IsSolving()) {
        m_host.Inform(kSolvingIsPending, kTitle);
        return false;
    }
    m_thread.Join();
    if (bLasted)
        m_bMayRun.store(true);
    KeepPreviousRegressionLog(m_setup.m_logPath);
    Begin(bSolveMirrors);
    try {
        m_thread = CThread(kStackBytes, [this, bQuick] { Run(bQuick); });
    } catch (...) {
        m_bRunning.store(false);
        throw;
    }
    return true;
}

void CRegression::Join() {
    m_thread.Join();
    if (const std::exception_ptr failure = std::exchange(m_failure, nullptr))
        std::rethrow_exception(failure);
}

void CRegression::RunRegression(bool solveMirrors, bool quick) {
    m_bMayRun.store(true);
    Begin(solveMirrors);
    Run(quick);
    Join();
}

void CRegression::Begin(bool bSolveMirrors) {
    m_bSolveMirrors.store(bSolveMirrors);
    m_nNext.store(0);
    {
        const std::lock_guard lock(m_failureMutex);
        m_failure = nullptr; // of a run that nobody has waited for
    }
    m_bRunning.store(true);
}

void CRegression::Run(bool bQuick) {
    try {
        std::optional<CQuickTimeLimit> limit;
        if (bQuick)
            limit.emplace(TimeLimitSeconds);
        SolveAll();
    } catch (...) {
        Fail(std::current_exception());
    }
    m_bMayRun.store(false); // first: behind the end of a run it belongs to the next
    m_bRunning.store(false);
    try {
        m_host.RegressionEnded();
    } catch (...) {
        Fail(std::current_exception());
    }
}

void CRegression::SolveAll() {
    std::vector<const ChessProblem*> problems;
    for (const auto& [id, problem] : m_host.Library())
        problems.push_back(problem.get());
    CReport report(*this);
    std::vector<CThread> others;
    try {
        for (int job = 1; job < m_setup.m_nJobs; ++job)
            others.emplace_back(kStackBytes, [&] { SolveShare(problems, report); });
    } catch (...) { // no more threads are to be had: those that there are do the work
    }
    SolveShare(problems, report);
}

/// Takes the next problem until there is none.
void CRegression::SolveShare(const std::vector<const ChessProblem*>& problems, CReport& report) {
    try {
        while (m_bMayRun.load()) {
            const std::size_t nPlace = m_nNext.fetch_add(1);
            if (nPlace >= problems.size())
                return;
            RunProblem(*problems[nPlace], nPlace, report);
        }
    } catch (...) {
        Fail(std::current_exception());
    }
}

/// However it ends, those behind it are told of.
void CRegression::RunProblem(const ChessProblem& problem, std::size_t nPlace, CReport& report) {
    try {
        if (IsToRun(problem, nPlace, report))
            for (const TMirror mirror : RunsOf(problem, SolveMirrors())) {
                if (!m_bMayRun.load())
                    break;
                report.Add(nPlace, RunOnce(problem, mirror));
            }
    } catch (...) {
        Fail(std::current_exception());
    }
    report.Close(nPlace);
}

/// If it is, the problem has been shown.
bool CRegression::IsToRun(const ChessProblem& problem, std::size_t nPlace, CReport& report) {
    TRegressionRun leftOut;
    leftOut.m_nId = problem.id;
    {
        const std::lock_guard lock(m_hostMutex);
        leftOut.m_lines = UnmetRequirement(problem, m_setup.m_isTypeAvailable, m_setup.m_nLichessLevels);
        if (leftOut.m_lines.empty() && !RunsOf(problem, SolveMirrors()).empty()) {
            m_host.ShowProblem(problem.id);
            return true;
        }
    }
    report.Add(nPlace, std::move(leftOut));
    return false;
}

TRegressionRun CRegression::RunOnce(const ChessProblem& problem, TMirror mirror) {
    TRegressionRun run;
    run.m_nId = problem.id;
    run.m_mirror = mirror;
    TRunName name{RunModeText(problem), problem.id, mirror};
    try {
        ChessProblem solved = MirroredProblem(problem, mirror);
        const TSolveRequest request = MakeRequest(problem, solved, mirror);
        name.m_mode = RunModeText(request);
        CUnattended notifier(m_host, m_hostMutex);
        const int nLimitSeconds = TimeLimitSeconds.load();
        const TTimedResult timed = SolveInTime(request, notifier, nLimitSeconds, m_bMayRun);
        const TSolvingResult& result = timed.m_result;
        if (!result.m_expectedWhiteMoves.empty())
            solved.expectedWhiteMoves = result.m_expectedWhiteMoves;
        const TRunVerdict verdict = JudgeRun(name, solved, result, timed.m_end, nLimitSeconds);
        run.m_outcome = verdict.m_outcome;
        run.m_lines = verdict.m_line;
        if (verdict.m_outcome != ERegressionOutcome::Stopped)
            run.m_lines += BestDefenceLine(name, solved, result);
        for (const TSolution& key : result.m_solutions)
            run.m_keys.push_back(key.m_text);
        run.m_seconds = result.m_seconds;
        return run;
    } catch (const std::bad_alloc&) {
        run.m_lines = FailureLine(name, kOutOfMemory);
    } catch (const std::exception& failure) {
        run.m_lines = FailureLine(name, failure.what());
    }
    run.m_outcome = ERegressionOutcome::Failed;
    return run;
}

/// Of a run there are no questions: what the engine would ask for on its own stays as the problem has it.
TSolveRequest CRegression::MakeRequest(const ChessProblem& problem, const ChessProblem& copy, TMirror mirror) {
    const std::lock_guard lock(m_hostMutex);
    TSolveRequest request = m_host.MakeRequest(copy);
    if (mirror != kAsGiven)
        request.m_sortIndications = MirrorIndications(m_host.MakeRequest(problem).m_sortIndications, mirror);
    request.m_bAllowThreadDemand = false;
    if ((copy.flags & kFlagExpectedSortWhiteMoves) != 0)
        request.m_expectedWhiteMoves = copy.expectedWhiteMoves;
    request.m_bExpectedWhiteMovesOnly = (copy.flags & kFlagExpectedSortWhiteMovesOnly) != 0;
    return request;
}

/// A failure of the host ends the run.
void CRegression::Fail(std::exception_ptr failure) {
    Stop();
    const std::lock_guard lock(m_failureMutex);
    if (m_failure == nullptr)
        m_failure = std::move(failure);
}

} // namespace quillon
