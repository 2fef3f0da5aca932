#pragma once
// What the threads of one best-first proof share beside its table: the count of positions, the end, and marks that tell
// them where the others are at work, so that they spread out.
//
// Threads: all members are for any thread at any time, relaxed but for the count of decisions: what the threads tell
//          one another in time saves work and decides nothing. The verdict is read after they have been joined.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "core/chessboard.h"

namespace quillon {

enum class EProofResult { Proved, Refuted, Open };

class CProofTeam {
  public:
    /// `root` is that of the calling thread: a pause or stop that its context is asked for holds for all. It outlives
    /// the team.
    CProofTeam(const TChessboard& root, int nThreads, std::uint64_t nMostNodes);

    /// One thread shares with nobody: it need not look at marks nor at what others have stored.
    [[nodiscard]] bool IsAlone() const { return m_nThreads == 1; }
    [[nodiscard]] int Threads() const { return m_nThreads; }

    /// Expanded positions. They are counted in lots, so that threads do not fight for the counter.
    [[nodiscard]] std::uint32_t Lot() const { return IsAlone() ? 1 : 16; }
    void CountNodes(std::uint32_t nNodes) { m_nNodes.fetch_add(nNodes, std::memory_order_relaxed); }
    [[nodiscard]] std::uint64_t Nodes() const { return m_nNodes.load(std::memory_order_relaxed); }

    /// Is the thread of `b` to leave? Sleeps during a pause.
    [[nodiscard]] bool IsOver(const TChessboard& b);

    /// Ends the search of all threads, with the root's verdict or without.
    void End() { m_bEnded.store(true, std::memory_order_relaxed); }
    void Decide(bool bMate) {
        m_result.store(bMate ? EProofResult::Proved : EProofResult::Refuted, std::memory_order_relaxed);
        End();
    }
    [[nodiscard]] EProofResult Result() const { return m_result.load(std::memory_order_relaxed); }

    /// The marks: how many threads are in a position or below it. Positions may share a mark, which misleads the order
    /// of work and nothing else.
    void Enter(std::uint64_t hash, int nPlies) { MarkOf(hash, nPlies).fetch_add(1, std::memory_order_relaxed); }
    void Leave(std::uint64_t hash, int nPlies) { MarkOf(hash, nPlies).fetch_sub(1, std::memory_order_relaxed); }
    [[nodiscard]] std::uint32_t ThreadsIn(std::uint64_t hash, int nPlies) {
        return MarkOf(hash, nPlies).load(std::memory_order_relaxed);
    }

    /// Counts the positions that were decided while several threads were in them. Who sees the new count sees what was
    /// stored before it was told.
    void TellDecision() { m_nDecisions.fetch_add(1, std::memory_order_release); }
    [[nodiscard]] std::uint32_t Decisions() const { return m_nDecisions.load(std::memory_order_acquire); }

  private:
    static constexpr std::size_t kMarks = std::size_t{1} << 14;

    [[nodiscard]] std::atomic<std::uint16_t>& MarkOf(std::uint64_t hash, int nPlies) {
        return m_marks[(hash ^ static_cast<std::uint64_t>(nPlies) * 0x9e37u) & (kMarks - 1)];
    }
    [[nodiscard]] bool IsCallerStopping(const TChessboard& b);

    const TSearchContext* const m_pCaller;
    const int m_nThreads;
    const std::uint64_t m_nMostNodes;
    std::atomic<std::uint64_t> m_nNodes{0};
    std::atomic<std::uint32_t> m_nDecisions{0};
    std::atomic<EProofResult> m_result{EProofResult::Open};
    std::atomic<bool> m_bEnded{false};
    std::array<std::atomic<std::uint16_t>, kMarks> m_marks{};
};

} // namespace quillon
