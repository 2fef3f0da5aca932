#pragma once
// A line of moves played from the position of a problem by the rules of chess: White begins, every castling that the
// board shows is possible, no en passant in the first move.
//
// Threads: a line belongs to one thread at a time.

#include <cstddef>
#include <memory>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"
#include "library/chess_problem.h"

namespace quillon {

struct TSearchContext;

class CPlayedLine {
  public:
    /// No line is longer, in plies. The longest problem has one more, with which it ends.
    static constexpr int kMostPlies = 596;

    CPlayedLine();
    ~CPlayedLine();
    CPlayedLine(const CPlayedLine&) = delete;
    CPlayedLine& operator=(const CPlayedLine&) = delete;

    /// Begins a new line. `start` is a validated position with White to move; its plies do not matter.
    void Start(const TChessboard& start);

    /// The position reached. Its m_nMoves is odd if White is to move.
    [[nodiscard]] const TChessboard& Position() const { return *m_pPosition; }

    /// The position before the last move; of a line that has one.
    [[nodiscard]] const TChessboard& PositionBefore() const { return *m_pPosition->m_pPrevious; }

    /// Makes the move of that source, target and promotion; a promotion that is not told is to a queen. False, and
    /// nothing changes, if it is not legal or the line has kMostPlies.
    bool Play(TMove move);

    /// Moves of the side to move, in the order of generation.
    [[nodiscard]] std::vector<TMove> LegalMoves();

    /// Is the king of the side to move attacked?
    [[nodiscard]] bool IsInCheck() const;

  private:
    struct TState;
    std::unique_ptr<TState> m_state; // analysis and context of the move makers
    TChessboard* m_pPosition = nullptr;
};

/// Appends the position that the move leads to to the played positions of a problem. `line` stands on the current one.
///   Returns  false, and nothing changes, if the move is not legal or no ply is left.
bool PlayOn(ChessProblem& problem, CPlayedLine& line, TMove move);

} // namespace quillon
