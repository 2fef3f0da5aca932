#pragma once
// The white moves that a problem expects to be sorted first: a test of the sort that runs inside a solve.
//
// The expected moves are White's moves of one line, the key first. Black answers each of them with the reply that the
// engine tries first. Whenever the main search has sorted the white moves of a position of that line, the first of them
// is held against the expected one. A position that is answered without a sort is not compared, and neither are those
// behind it.
//
// Threads: any, one solve. The search comes here only while something is expected.

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"
#include "search/move_sort.h"

namespace quillon {

/// Added to the squares of an expected move that was not sorted first. No square of the board has the bit.
inline constexpr std::uint8_t kExpectedMoveMissed = kSquares;

class CExpectedWhiteMoves {
  public:
    ///   bNothingElse  the solve is there for this comparison only: it is stopped as soon as the line has been compared
    ///                 to its end or has been left. It is to have one thread: of several, others are beside the line
    ///                 while it is being searched. A move that was not sorted first stops any solve.
    ///   stop          asks the solve to stop; called from the thread that has sorted.
    CExpectedWhiteMoves(std::vector<TMove> moves, bool bNothingElse, std::function<void()> stop)
        : m_stop(std::move(stop)), m_bNothingElse(bNothingElse), m_moves(std::move(moves)),
          m_compared(m_moves.size(), false) {}

    /// Takes the sorted list of `p`, White to move. A list that was left unsorted because a mate was found says
    /// nothing.
    void Compare(const TChessboard& p, const TWhiteSort& sorted, const TMove* list);

    /// A move of the root has been searched to its end: of the line there is nothing to come.
    void RootMoveEnded();

    /// The expected moves, those that were not sorted first marked.
    [[nodiscard]] std::vector<TMove> Moves() const;

    /// Has any of them been compared?
    [[nodiscard]] bool HasCompared() const;

    /// Has the comparison stopped the solve?
    [[nodiscard]] bool HasStopped() const { return m_bStopped.load(std::memory_order_relaxed); }

  private:
    [[nodiscard]] std::optional<std::size_t> LeftAt(const TChessboard& p) const;
    [[nodiscard]] bool IsOver(std::size_t nLeftAt) const;
    void Stop();

    const std::function<void()> m_stop;
    const bool m_bNothingElse;
    std::atomic<bool> m_bStopped{false};
    mutable std::mutex m_mutex;
    std::vector<TMove> m_moves;   // guarded by m_mutex
    std::vector<bool> m_compared; // the same; by place in m_moves
};

} // namespace quillon
