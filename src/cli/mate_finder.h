#pragma once
// Mate in n from a position of a game, by whichever side is to move.
//
// The solver proper knows problems: White mates, every castling that the board shows is possible, and nobody captures
// en passant in the first move. What a game adds is done here, around whole solves, and no verdict is more than they
// prove.
//
// Black to move: the colours are changed over, and back in the line.
//
// En passant: each such capture is a key of its own, it mates if every reply to it is solved.
//
// Castling rights that the board shows and the game has lost: where neither side has any, the board is turned over from
// left to right, and no king on d1 castles. Where that would take rights away too, both boards are solved, and a
// verdict counts if the rights that are wrong speak against it: a mate in spite of castlings that Black has not, or
// without those that White has. What stays open then is played through by the rules if it is a mate in one or two, and
// in doubt if it is longer.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "cli/game_position.h"
#include "heuristics/solving_driver.h"

namespace quillon {

struct TMateAnswer {
    EVerdict m_verdict = EVerdict::Doubtful;
    std::vector<TMove> m_line; // legal moves, the key first, the last by the mating side; empty without a mate
    bool m_bToMate = false;    // the line ends in mate
};

/// White moves of a line that begins and ends with one: the length of the mate that it shows.
[[nodiscard]] constexpr int MovesOf(const std::vector<TMove>& line) { return static_cast<int>(line.size() + 1) / 2; }

/// Threads: one thread finds; RequestStop and Nodes may come from any.
class CMateFinder {
  public:
    /// request: threads and memory; position and stipulation are overwritten.
    CMateFinder(TSolveRequest request, INotifier& notifier) : m_request(std::move(request)), m_notifier(notifier) {}
    CMateFinder(const CMateFinder&) = delete;
    CMateFinder& operator=(const CMateFinder&) = delete;

    /// Can the side to move force mate in at most nMoves, 1..kMaxStipulation? A line that stops short of the mate is
    /// the key alone or so much as is sure.
    ///   Errors  ChessException: a request that cannot be run.
    [[nodiscard]] TMateAnswer FindMate(const TGamePosition& position, int nMoves);

    /// Prolongs the line of a mate in nMoves to the mate, by solves after each reply. What a stop or doubt leaves is
    /// shorter.
    void CompleteLine(const TGamePosition& position, int nMoves, TMateAnswer& answer);

    /// Gives back what the last solve holds. Not while something is being found.
    void Release() { m_solve.reset(); }

    /// Ends the running work and all that comes: a stop stays.
    void RequestStop();
    [[nodiscard]] bool IsStopping() const { return m_bStop.load(std::memory_order_relaxed); }

    /// Positions searched so far, those of short-mate searches included.
    [[nodiscard]] std::uint64_t Nodes() const;

  private:
    class CRunning;

    TMateAnswer FindWhiteMate(const TGamePosition& position, int nMoves);
    enum class EKeys { EnPassant, All };
    TMateAnswer TryKeys(const TGamePosition& position, int nMoves, EKeys keys);
    TMateAnswer BehindKey(const TGameMove& key, int nMoves);
    TMateAnswer ByProblem(const TGamePosition& position, int nMoves);
    TMateAnswer SolveProblem(const TGamePosition& position, int nMoves, bool bTurned);
    TSolvingResult Solve(const TChessboard& board, int nMoves);

    TSolveRequest m_request;
    INotifier& m_notifier;
    std::unique_ptr<CSolve> m_solve; // the last one: to give its memory back takes time, which has to suit the caller
    std::atomic<bool> m_bStop{false};

    mutable std::mutex m_mutex;    // guards the two below
    CSolve* m_pRunning = nullptr;  // the solve of this moment
    std::uint64_t m_nFinished = 0; // nodes of those before
};

} // namespace quillon
