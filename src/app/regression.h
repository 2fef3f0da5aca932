#pragma once
// The regression run: every problem of the open library is solved, one after the other or several at a time, and what
// came of it goes to the log and is held against what the problem expects.
//
// Invariants
//   1 Lines stand in the log in the order of the problems' numbers, however many are solved at a time.
//   2 Nothing stays behind: behind a run the time limit is what it was, no thread lives.
//
// Threads: one thread starts a run and waits for it. Stop, and the reading functions, from any thread.

#include <atomic>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <mutex>

#include "app/regression_host.h"
#include "app/regression_log.h"
#include "app/required_materials.h"
#include "core/queries.h"
#include "platform/thread.h"

namespace quillon {

/// Time limit of a solve in a quick run, seconds.
inline constexpr int kQuickTimeLimitSeconds = 64;

inline constexpr std::string_view kRegressionQuestion =
    "Regression tests are usually a time-consuming operation (moreover it usually requires quite many "
    "precalculated/Nalimov data on disk)\n\nTest results will be written to file RegressionTest.log\n\nDo you want "
    "also to solve all mirror positions (except for positions with castling possibilities) ?";
inline constexpr std::string_view kSolvingIsPending = "Solving is pending.";

/// What the language command answers while a run lasts.
inline constexpr std::string_view kLanguageDuringRegression = "Language cannot be changed during regression test.";

struct TRegressionSetup {
    int m_nLichessLevels = 1; // the setting of this name
    int m_nJobs = 1;          // problems solved at a time, >= 1
    TIsTypeAvailable m_isTypeAvailable = IsPrecalcDataAvailable;
    std::filesystem::path m_logPath = RegressionLogPath();
};

class CRegression {
  public:
    ///   host  must outlive it.
    CRegression(IRegressionHost& host, TRegressionSetup setup);
    CRegression(const CRegression&) = delete;
    CRegression& operator=(const CRegression&) = delete;
    ~CRegression();

    /// The command of the user: asks about mirrors (not for a quick run), puts the old log aside and starts the run on
    /// a thread of its own. False if there is nothing to wait for.
    bool Start(bool bQuick);

    /// Waits for the run that was started.
    ///   Errors  what a function of the host threw; it has ended the run.
    void Join();

    /// The run, on the calling thread.
    ///   Errors  as Join.
    void RunRegression(bool solveMirrors, bool quick);

    /// Ends the run: what is being solved is stopped, what is done stays in the log.
    void Stop() { m_bMayRun.store(false); }

    [[nodiscard]] bool RegressionRunning() const { return m_bRunning.load(); }
    [[nodiscard]] bool SolveMirrors() const { return m_bSolveMirrors.load(); }

    /// The time limit of a solve, 0 for none. The window's solves have it too.
    std::atomic<int> TimeLimitSeconds{0};

  private:
    class CReport;
    void Begin(bool bSolveMirrors);
    void Run(bool bQuick);
    void SolveAll();
    void SolveShare(const std::vector<const ChessProblem*>& problems, CReport& report);
    void RunProblem(const ChessProblem& problem, std::size_t nPlace, CReport& report);
    [[nodiscard]] bool IsToRun(const ChessProblem& problem, std::size_t nPlace, CReport& report);
    [[nodiscard]] TRegressionRun RunOnce(const ChessProblem& problem, TMirror mirror);
    [[nodiscard]] TSolveRequest MakeRequest(const ChessProblem& problem, const ChessProblem& copy, TMirror mirror);
    void Fail(std::exception_ptr failure);

    IRegressionHost& m_host;
    const TRegressionSetup m_setup;

    std::atomic<bool> m_bMayRun{false}; // the stop flag; cleared, the run ends
    std::atomic<bool> m_bRunning{false};
    std::atomic<bool> m_bSolveMirrors{false};
    CThread m_thread;

    std::mutex m_hostMutex;              // the host and the question for data are called one at a time
    std::atomic<std::size_t> m_nNext{0}; // problems begun
    std::mutex m_failureMutex;
    std::exception_ptr m_failure; // the first one; guarded by m_failureMutex
};

} // namespace quillon
