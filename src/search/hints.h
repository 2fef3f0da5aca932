#pragma once
// Hints: the moves tried first at a node, from what answered its siblings and cousins. They change nothing but the
// order and need no board knowledge: a threat stays a threat in most sibling lines, and a defence mostly meets the same
// answer.

#include <cstdint>

#include "core/chessboard.h"
#include "core/move.h"
#include "core/search_context.h"

namespace quillon {

/// Could the figure on the source square make the move here (pseudo-legal)? Asked of moves that are told by something
/// less than the whole position: taking in passing and castling depend on the way to it.
[[nodiscard]] bool CanMake(const TChessboard& b, const TMove& wanted);

/// The hints of one node, best first, that are moves its figures could make here (pseudo-legal); at most two.
class CHints {
  public:
    /// None.
    CHints() = default;

    /// Looks them up and proves that the figure on their source can make them.
    explicit CHints(const TChessboard& b);

    [[nodiscard]] int Count() const { return m_count; }
    [[nodiscard]] const TMove* Moves() const { return m_moves; }

    [[nodiscard]] bool Knows(const TMove& move) const;

    /// Takes the hints out of a list that comes after them; the order of the others stays. Returns the new count.
    int DropFrom(TMove* list, int count) const;

  private:
    TMove m_moves[2];
    int m_count = 0;
};

/// Brings the hints that are in the list to its front; the others keep their order.
void PutHintsFirst(const TChessboard& b, int nMoves, TMove* list);

/// This move answered the node: mate for White, a refutation for Black.
void KeepHint(const TChessboard& b, const TMove& move);

/// Move i of a black node's list refuted after the moves before it had failed.
void KeepRefutation(const TChessboard& b, const TMove* list, int i);

/// How well a black move of this figure to this square has refuted lately: 0 to 64 points of a sort score.
[[nodiscard]] int RefutingWorth(const TChessboard& b, const TMove& move);

} // namespace quillon
