#include "app/regression.h"

#include <map>
#include <new>
#include <utility>

#include "app/timed_solve.h"
#include "core/chess_exception.h"
#include "heuristics/result_texts.h"

namespace quillon {

namespace {

constexpr std::size_t kStackBytes = 1u << 20; // of the threads that wait for solves
constexpr std::string_view kTitle = "Quillon";
constexpr const char* kOutOfMemory = "out of memory";

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

/// Puts a value back at the end.
class CTimeLimit {
  public:
    CTimeLimit(std::atomic<int>& limit, bool bQuick) : m_limit(limit), m_nBefore(limit.load()) {
        if (bQuick)
            limit.store(kQuickTimeLimitSeconds);
    }
    ~CTimeLimit() { m_limit.store(m_nBefore); }
    CTimeLimit(const CTimeLimit&) = delete;
    CTimeLimit& operator=(const CTimeLimit&) = delete;

  private:
    std::atomic<int>& m_limit;
    const int m_nBefore;
};

} // namespace

/// The log and the host hear of runs in the order of the problems. What ends early waits for those before it.
class CRegression::CReport {
  public:
    CReport(IRegressionHost& host, std::mutex& mutex, const std::filesystem::path& logPath)
        : m_host(host), m_mutex(mutex), m_logPath(logPath) {}

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
        run.m_bLogged = run.m_lines.empty() || AppendRegressionLog(run.m_lines, m_logPath);
        m_host.RunEnded(run);
    }

    IRegressionHost& m_host;
    std::mutex& m_mutex; // guards what follows
    const std::filesystem::path& m_logPath;
    std::size_t m_nFirst = 0; // problems that have been told of
    std::map<std::size_t, TProblemRuns> m_waiting;
};

CRegression::CRegression(IRegressionHost& host, TRegressionSetup setup) : m_host(host), m_setup(std::move(setup)) {}

CRegression::~CRegression() {
    Stop();
    m_thread.Join();
}

bool CRegression::Start(bool bQuick) {
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
    Begin(solveMirrors);
    Run(quick);
    Join();
}

void CRegression::Begin(bool bSolveMirrors) {
    m_bSolveMirrors.store(bSolveMirrors);
    m_nNext.store(0);
    m_bMayRun.store(true);
    m_bRunning.store(true);
}

void CRegression::Run(bool bQuick) {
    try {
        const CTimeLimit limit(TimeLimitSeconds, bQuick);
        SolveAll();
    } catch (...) {
        Fail(std::current_exception());
    }
    m_bRunning.store(false);
    m_bMayRun.store(false);
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
    CReport report(m_host, m_hostMutex, m_setup.m_logPath);
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

void CRegression::RunProblem(const ChessProblem& problem, std::size_t nPlace, CReport& report) {
    if (IsToRun(problem, nPlace, report))
        for (const TMirror mirror : RunsOf(problem, SolveMirrors())) {
            if (!m_bMayRun.load())
                break;
            report.Add(nPlace, RunOnce(problem, mirror));
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
    TRunName name{RunModeText({}), problem.id, mirror};
    try {
        ChessProblem solved = MirroredProblem(problem, mirror);
        const TSolveRequest request = MakeRequest(solved);
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
TSolveRequest CRegression::MakeRequest(const ChessProblem& problem) {
    const std::lock_guard lock(m_hostMutex);
    TSolveRequest request = m_host.MakeRequest(problem);
    request.m_bAllowThreadDemand = false;
    if ((problem.flags & kFlagExpectedSortWhiteMoves) != 0)
        request.m_expectedWhiteMoves = problem.expectedWhiteMoves;
    request.m_bExpectedWhiteMovesOnly = (problem.flags & kFlagExpectedSortWhiteMovesOnly) != 0;
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
