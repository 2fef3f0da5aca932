#pragma once
// The progress state of a running solve, as windows, the console and logs show it.
//
// Threads: everything is read without waiting from the analysis, from the contexts' move counters, from the lines that
//          threads show (search/observed_lines.h) and from the precalculated data in use, which stay the ones in use
//          until the observer is gone. What is torn, out of range or gone shows nothing.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "heuristics/solving_driver.h"
#include "search/observed_lines.h"

namespace quillon {

struct TProgressState {
    std::optional<std::uint32_t> m_thread; // whose moves are shown; none: all threads
    bool m_bThreadStopped = false;         // there is no such thread (any more)
    std::string m_status;                  // what is done outside passes; empty within one
    bool m_bPaused = false;                // all threads are told to sleep
    TShownPass m_pass;                     // the one begun last; its m_nPass is 0 before the first
    double m_part = 0;                     // of the pass that is done, from 0 to 1
    std::uint64_t m_nPasses = 0;           // planned so far
    std::uint64_t m_nPositions = 0;        // searched so far; the result leaves out those of the short-mate search
    TRegisterFigures m_register;
    std::uint64_t m_nGlobalRegisterMegabytes = 0; // of precalculated data
    std::uint32_t m_nRunningThreads = 0, m_nSchedulerThreads = 0;
    std::uint32_t m_nAwaitedThreads = 0;  // that share the root's moves and have not ended
    double m_seconds = 0;                 // since the observation began, without pauses
    std::vector<TObservedLevel> m_levels; // of m_thread, or of the one thread that there is; from the root downwards
};

class CObserver {
  public:
    /// From before the solve's start; neither is to be gone while the other is in use.
    ///   nObserverLevels  `ObserverLevels`: plies from the root on whose moves are shown; 0: none.
    CObserver(CSolve& solve, int nObserverLevels);
    CObserver(const CObserver&) = delete;
    CObserver& operator=(const CObserver&) = delete;
    /// The solve does not run any more.
    ~CObserver();

    /// The state of all threads, or with the moves of one. Any thread may call it, at any time.
    [[nodiscard]] TProgressState Read(std::optional<std::uint32_t> thread = std::nullopt) const;

    /// Numbers of the search threads at this moment, ascending.
    [[nodiscard]] std::vector<std::uint32_t> Threads() const { return m_lines.Threads(); }

    /// Since the observation began, without pauses.
    [[nodiscard]] double Seconds() const;

  private:
    void ReadPass(TProgressState& state) const;
    void ReadThreads(TProgressState& state) const;

    CSolve& m_solve;
    CObservedLines m_lines;
    const std::uint64_t m_nStart;
};

/// The part of the root's moves that the pass has behind it, from 0 to 1. The replies to the move under analysis divide
/// its share, and the plies below divide theirs; a ply whose index is out of range ends that.
[[nodiscard]] double DonePart(const TSearchContext& context, int nRootPly);

} // namespace quillon
