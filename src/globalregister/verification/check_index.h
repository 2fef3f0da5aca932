#pragma once
// Checking elements of a table on several threads. Nothing is changed while that goes on, so what is found does not
// depend on the number of threads.
//
// The loop is a few lines over std::jthread and not one of a library for parallel loops: between any two elements it
// waits while the run is paused and ends when it is broken off, and the caller's thread is free for the user meanwhile.
// Chunks that are all as long need nobody to share them out better, and the program one library less.

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "globalregister/verification/compute_expected.h"
#include "globalregister/verification/failure_log.h"

namespace quillon {

/// What the user wants of a run.
enum class ERunState : std::uint8_t { Run, Pause = 1, Break = 3 };

/// One thread's part.
class CIndexChecker {
  public:
    /// nLimit  half-moves: of a table that is not finished what is stored as no mate may be one so long, or longer;
    ///         0: none may.
    CIndexChecker(const COneMoveTables& tables, int nLimit) : m_tables(tables), m_expected(tables), m_nLimit(nLimit) {}

    /// Adds a fault to m_faults, if there is one. An index that names no legal position has none.
    ///   Errors  as ComputeExpected.
    void CheckIndex(std::uint64_t index);

    std::vector<TPrecalcFault> m_faults;

  private:
    const COneMoveTables& m_tables;
    CExpectedMate m_expected;
    int m_nLimit;
};

class CCheckLoop {
  public:
    /// nThreads  at least 1.
    CCheckLoop(const COneMoveTables& tables, int nLimit, int nThreads);

    /// Checks these indices, or all from nFirst to nLast, exclusive, where the list is empty.
    ///   askState  asked at the beginning and about fifty times a second, on this thread.
    ///   Returns   the faults in the order of their indices; those found before a break or a failure.
    [[nodiscard]] std::vector<TPrecalcFault> Run(std::uint64_t nFirst, std::uint64_t nLast,
                                                 std::span<const std::uint64_t> indexes,
                                                 const std::function<ERunState()>& askState);

    /// Has a run been broken off?
    [[nodiscard]] bool IsBroken() const { return m_state.load(std::memory_order_relaxed) == ERunState::Break; }

    /// Indices that have been checked.
    [[nodiscard]] std::uint64_t Checked() const { return m_nChecked.load(std::memory_order_relaxed); }

    /// Throws what ended the last run, if it was a failure.
    void RethrowFailure() const {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

  private:
    struct TPart {
        std::uint64_t m_nLast;
        std::span<const std::uint64_t> m_indexes;
    };

    void Work(CIndexChecker& checker, const TPart& part);
    [[nodiscard]] bool CheckChunk(CIndexChecker& checker, const TPart& part, std::uint64_t nFirst);
    [[nodiscard]] bool MayGoOn() const;
    void Watch(const std::function<ERunState()>& askState);

    std::vector<std::unique_ptr<CIndexChecker>> m_checkers; // one a thread
    std::atomic<ERunState> m_state{ERunState::Run};
    std::atomic<bool> m_bFailed{false};
    std::atomic<std::uint64_t> m_nNext{0};
    std::atomic<std::uint64_t> m_nChecked{0};
    std::atomic<std::size_t> m_nWorking{0};
    std::mutex m_failureLock;
    std::exception_ptr m_failure; // the first; under m_failureLock while threads work
};

} // namespace quillon
