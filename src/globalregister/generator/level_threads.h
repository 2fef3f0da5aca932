#pragma once
// The threads of one level: chunks of work from a counter, until there is none, somebody wants them to end, or one of
// them fails.

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "globalregister/generator/generator_run.h"
#include "globalregister/system_failure.h"
#include "platform/clock.h"
#include "platform/sleep.h"
#include "platform/thread.h"

namespace quillon {

/// What a thread has to itself while it works.
struct TGeneratorThread {
    std::uint64_t m_nFound = 0;               // indices settled, not yet added to the level's number
    std::vector<std::uint64_t> m_doubleSteps; // found by White's double steps, entered after the threads have ended
    int m_nResult = kLevelDone;
};

class CLevelThreads {
  public:
    /// nPhases  times that Run is going to be called, each of which is as much of the progress.
    CLevelThreads(TGeneratorControl& control, const TGeneratorOptions& options, int nLevel, unsigned nPhases)
        : m_control(control), m_options(options), m_nLevel(nLevel), m_nPhases(nPhases),
          m_threads(static_cast<std::size_t>(std::max(options.m_nThreads, 1))) {}

    /// work(thread, first, last) over [0, nUnits) in chunks; not at all after a phase that has not been done.
    template <class TWork> void Run(std::uint64_t nUnits, std::uint64_t nChunk, const TWork& work) {
        m_nNext = 0;
        const auto loop = [&](TGeneratorThread& thread) {
            thread.m_nResult = Generate_MainLoop2(thread, nUnits, nChunk, work);
        };
        const auto loopOfOther = [&](TGeneratorThread& thread) {
            SetThreadPriority(m_options.m_nThreadPriority);
            loop(thread);
        };
        {
            std::vector<std::jthread> others;
            for (std::size_t i = 1; i < m_threads.size() && i * nChunk < nUnits; ++i)
                try {
                    others.emplace_back(loopOfOther, std::ref(m_threads[i]));
                } catch (const std::exception&) { // fewer threads do the same
                    break;
                }
            loop(m_threads.front());
        }
        ++m_nPhase;
    }

    /// Of any thread.
    void AddError(const std::exception& error) noexcept {
        if (IsOfSystem(error))
            m_bSystemFailed = true;
        m_bFailed = true;
        try { // memory may be short even for the text
            const std::lock_guard lock(m_errorLock);
            m_errors.emplace_back(error.what());
        } catch (const std::exception&) {
            m_bSystemFailed = true;
        }
    }

    [[nodiscard]] std::vector<TGeneratorThread>& Threads() { return m_threads; }

    /// Have all phases so far been done?
    [[nodiscard]] bool IsDone() const {
        return !m_bFailed.load(std::memory_order_relaxed) &&
               std::ranges::all_of(m_threads, [](const auto& thread) { return thread.m_nResult == kLevelDone; });
    }

    /// After the last phase.
    [[nodiscard]] TLevelResult Result() {
        TLevelResult result;
        for (const TGeneratorThread& thread : m_threads)
            result.m_nResult = std::min(result.m_nResult, thread.m_nResult);
        if (m_bFailed)
            result.m_nResult = std::min(result.m_nResult, kLevelStopped);
        result.m_nFound = m_nFound;
        result.m_errors = m_errors;
        result.m_bFailed = m_bFailed;
        result.m_bSystemFailed = m_bSystemFailed;
        return result;
    }

    /// The progress of a level that has been done, however short it was.
    void ShowEnd() {
        assert(m_nPhase == m_nPhases);
        if (m_options.m_onProgress)
            Tell(kWhole);
    }

    void AddFound(TGeneratorThread& thread) {
        m_nFound.fetch_add(thread.m_nFound, std::memory_order_relaxed);
        thread.m_nFound = 0;
    }

  private:
    static constexpr std::uint32_t kPauseMs = 100;
    static constexpr std::uint64_t kWhole = 1000; // permille

    // Returns the thread's result: that of the phase before, if that was not done.
    template <class TWork>
    [[nodiscard]] int Generate_MainLoop2(TGeneratorThread& thread, std::uint64_t nUnits, std::uint64_t nChunk,
                                         const TWork& work) {
        int nResult = thread.m_nResult;
        try {
            while (nResult == kLevelDone && (nResult = MayGoOn()) == kLevelDone) {
                const std::uint64_t first = m_nNext.fetch_add(nChunk, std::memory_order_relaxed);
                if (first >= nUnits)
                    break;
                const std::uint64_t last = std::min(nUnits, first + nChunk);
                work(thread, first, last);
                AddFound(thread);
                ShowProgress(last, nUnits);
            }
        } catch (const std::exception& error) {
            nResult = kLevelStopped;
            AddError(error);
        }
        return nResult;
    }

    // kLevelDone: the work goes on.
    [[nodiscard]] int MayGoOn() const {
        while (m_control.m_nPause.load(std::memory_order_relaxed) == kGeneratorPaused &&
               !m_control.m_bStop.load(std::memory_order_relaxed) && !m_bFailed.load(std::memory_order_relaxed))
            SleepMs(kPauseMs);
        if (m_control.m_nPause.load(std::memory_order_relaxed) == kGeneratorBreaks)
            return kLevelBroken;
        return m_control.m_bStop.load(std::memory_order_relaxed) || m_bFailed.load(std::memory_order_relaxed)
                   ? kLevelStopped
                   : kLevelDone;
    }

    void ShowProgress(std::uint64_t nDone, std::uint64_t nUnits) {
        const auto isTooEarly = [this] {
            return TickCount64() - m_nShownTicks.load(std::memory_order_relaxed) < m_options.m_nProgressMs;
        };
        if (!m_options.m_onProgress || isTooEarly())
            return;
        const std::unique_lock lock(m_progressLock, std::try_to_lock);
        if (!lock.owns_lock() || isTooEarly())
            return;
        m_nShownTicks.store(TickCount64(), std::memory_order_relaxed);
        Tell((kWhole * m_nPhase + kWhole * nDone / nUnits) / m_nPhases);
    }

    // A thread that took its part earlier may come here later than another.
    void Tell(std::uint64_t nPermille) {
        m_nShownPermille = std::max(m_nShownPermille, static_cast<unsigned>(nPermille));
        m_options.m_onProgress(
            {m_nLevel, m_options.m_nLevelLimit, m_nShownPermille, m_nFound.load(std::memory_order_relaxed)});
    }

    TGeneratorControl& m_control;
    const TGeneratorOptions& m_options;
    const int m_nLevel;
    const unsigned m_nPhases;
    unsigned m_nPhase = 0;
    std::vector<TGeneratorThread> m_threads;
    std::atomic<std::uint64_t> m_nNext{0};
    std::atomic<std::uint64_t> m_nFound{0};
    std::atomic<std::uint64_t> m_nShownTicks{TickCount64()};
    std::mutex m_progressLock;
    unsigned m_nShownPermille = 0; // under m_progressLock while threads work
    std::atomic<bool> m_bFailed{false};
    std::atomic<bool> m_bSystemFailed{false};
    std::mutex m_errorLock;
    std::vector<std::string> m_errors;
};

} // namespace quillon
