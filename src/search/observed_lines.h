#pragma once
// What observers see of the lines of running threads: for the first levels of a line the moves and the one in analysis.
//
//   1 A thread writes its own line, where a black node begins that is not deeper than an observer looks, and where the
//     deepest of them goes on to its next move: a handful of nodes in millions. Other nodes pay a comparison a move.
//   2 Lines belong to the analysis' CObservedLines and outlive the threads that use them: who reads one never meets
//     memory that is gone.
//   3 Readers take no lock and no thread waits for them. A line that was written meanwhile shows nothing.
// Threads: a line is begun and ended under the mutex of its CObservedLines. What is written in between is for its own
//          thread; reading is for all, at any time.

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

struct TAnalysis;
struct TSearchContext;

/// A move with what it takes to write it.
struct TObservedMove {
    TMove m_move{};
    TFigure m_figure = kNoFigure; // kind that moves
    bool m_bCapture = false;
};

/// The moves of one node, in the order of their analysis.
struct TObservedLevel {
    int m_nMoves = 0; // plies left in the node
    int m_nIndex = 0; // of the move in analysis, below m_moves.size()
    std::vector<TObservedMove> m_moves;
};

/// One level of a line, as its line writes and reads it.
class CObservedLevel {
  public:
    static constexpr int kMostMoves = 255; // more are not shown

    void Show(const TChessboard& node, const TMove* list, int nMoves, int nIndex);
    void SetIndex(int nIndex);
    void Clear();
    void CopyFrom(const CObservedLevel& other);

    /// Nothing for a level that is empty or holds what no node can show.
    [[nodiscard]] std::optional<TObservedLevel> Read() const;

  private:
    std::atomic<std::uint32_t> m_nHead{0}; // m_nMoves, count, index: 16, 8, 8 bits
    std::array<std::atomic<std::uint32_t>, kMostMoves> m_moves{};
};

/// The line of one thread. Its levels belong to one moment.
class CObservedLine {
  public:
    explicit CObservedLine(int nLevels);

    /// Number of the thread; nothing when none uses the line.
    [[nodiscard]] std::optional<std::uint32_t> Thread() const;

    /// The levels from the root downwards, up to the first that shows nothing; none when the line was being written.
    [[nodiscard]] std::vector<TObservedLevel> Read() const;

    /// Shows the line down to the black node `b`, which has just got its list.
    void Show(const TChessboard& b);

    /// Shows how far the moves of `b` have come, a black node of which Show is the last.
    void ShowLowestIndex(const TChessboard& b, int nIndex);

  private:
    friend class CObservedLines;
    class CWriting;
    static constexpr std::uint64_t kUnused = ~std::uint64_t{0};

    [[nodiscard]] static bool IsShown(const TChessboard& b);

    void Begin(const TSearchContext& context);
    void RefreshIndices(const TSearchContext& context, int nFrom, int nAbove);
    [[nodiscard]] CObservedLevel* Level(int nRoot, int nPlies) const;

    const int m_nLevels;
    const std::unique_ptr<CObservedLevel[]> m_levels;
    std::atomic<std::uint32_t> m_nVersion{0}; // odd while the line is being written
    std::atomic<std::uint64_t> m_nThread{kUnused};
    std::atomic<std::uint64_t> m_nShownTicks{0}; // when it was written last, ms
    const CObservedLine* m_pNext = nullptr;      // of all lines; set before the line is published
};

/// The lines of an analysis. Whoever observes it owns them, from before the start of the solve until behind its end.
class CObservedLines {
  public:
    /// nLevels: ObserverLevels, plies from the root on whose moves are shown; 0: none.
    explicit CObservedLines(int nLevels) : m_nLevels(nLevels) {}
    CObservedLines(const CObservedLines&) = delete;
    CObservedLines& operator=(const CObservedLines&) = delete;
    ~CObservedLines();

    [[nodiscard]] int Levels() const { return m_nLevels; }

    /// Gives the calling thread, of `context`, a line: it continues that of the context's source, whose thread waits.
    /// Without memory it stays unobserved.
    void Begin(TSearchContext& context);

    /// Takes it back.
    void End(TSearchContext& context);

    /// Numbers of the threads that have a line, ascending, each once: those that a scheduler lets take turns share one.
    [[nodiscard]] std::vector<std::uint32_t> Threads() const;

    /// The line of a thread, of several with its number that shown last; nothing when there is no such thread.
    [[nodiscard]] std::optional<std::vector<TObservedLevel>> Read(std::uint32_t nThread) const;

  private:
    CObservedLine* TakeLine();

    const int m_nLevels;
    std::mutex m_mutex;
    std::vector<CObservedLine*> m_free;                  // guarded by m_mutex
    std::atomic<const CObservedLine*> m_pFirst{nullptr}; // of all lines; they are only added
};

/// The line of a thread in a scope. Nothing happens when nobody observes.
class CObservedThread {
  public:
    CObservedThread(TAnalysis& analysis, TSearchContext& context);
    CObservedThread(const CObservedThread&) = delete;
    CObservedThread& operator=(const CObservedThread&) = delete;
    ~CObservedThread();

  private:
    CObservedLines* const m_pLines;
    TSearchContext& m_context;
};

/// A black node has published its list. For its own thread.
void ShowObservedLine(const TChessboard& b);

/// What a black node with exactly m_nObservedPlies left calls when it goes on to its next move: other nodes' moves are
/// told of by those below them.
void ShowLowestObservedIndex(const TChessboard& b, int nIndex);

} // namespace quillon
