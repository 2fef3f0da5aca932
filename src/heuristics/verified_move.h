#pragma once
// A black move that is being verified: the position after it, the one before it, and what the rules ask of them more
// than once. Mate in one and the free squares are counted when first asked for and then remembered.

#include <cstdint>

#include "core/chessboard.h"
#include "core/search_context.h"
#include "heuristics/material.h"

namespace quillon {

/// What a rule says of a black move.
enum class ERuling {
    NotDoubtful,
    Doubtful,
    Undecided, // the run was stopped while the rule looked for a mate
};

[[nodiscard]] inline int KingDistance(const TChessboard& b) {
    return KingSteps(WhiteKingSquare(b), BlackKingSquare(b));
}

inline constexpr int kShortMatePlies = 5; // a mate that excuses what a rule forbids

class CVerifiedMove {
  public:
    /// after      White to move, linked to its parent
    /// deferMove  the move in the list, which the rules may mark; may be null
    CVerifiedMove(TChessboard& after, TMove* deferMove);

    [[nodiscard]] TChessboard& After() { return m_after; }
    [[nodiscard]] TChessboard& Before() { return m_before; }
    [[nodiscard]] TSearchContext& Context() { return *m_after.m_pContext; }

    [[nodiscard]] TSquare From() const { return m_after.m_lastMove.m_nFrom; }
    [[nodiscard]] TSquare To() const { return m_after.m_lastMove.m_nTo; }

    /// What stands on the target now; kNoFigure if Black passed.
    [[nodiscard]] TFigure Moved() const { return m_moved; }
    [[nodiscard]] bool IsByKing() const { return m_moved == kBlackKing; }
    [[nodiscard]] bool IsPromotion() const { return PromotionKind(m_after.m_lastMove) != 0; }

    /// The white man that the move took, en passant too; kNoFigure for none.
    [[nodiscard]] TFigure Captured() const { return m_captured; }
    [[nodiscard]] bool IsCapture() const { return m_captured != kNoFigure; }

    [[nodiscard]] bool Has(std::uint32_t bits) const { return (m_after.m_nHeuristics & bits) != 0; }

    /// Free squares of the black king after the move.
    [[nodiscard]] int FreeSquares();

    /// "Unless immediate mate": the last word of nearly every rule.
    [[nodiscard]] bool AllowsMateInOne();
    [[nodiscard]] ERuling DoubtfulUnlessMateInOne() {
        return AllowsMateInOne() ? ERuling::NotDoubtful : ERuling::Doubtful;
    }

    /// The dearest question: a mate within nPlies (odd), or within the plies left if those are fewer. It takes the
    /// slots of the stack up to nPlies, and the position stands above the plies left.
    [[nodiscard]] ERuling DoubtfulUnlessShortMate(int nPlies);

    /// The move is to carry these marks when it is made; false if the caller has no move to mark.
    bool Mark(std::uint8_t marks);

    /// Did Black's capture empty the square that White's move before it had filled by taking a figure? Kind of what
    /// White took there, else kNoFigure.
    [[nodiscard]] TFigure TakenThereBefore() const;

  private:
    TChessboard& m_after;
    TChessboard& m_before;
    TMove* m_deferMove;
    TFigure m_moved = kNoFigure, m_captured = kNoFigure;
    int m_nFreeSquares = -1;
    int m_nMateInOne = -1; // not yet asked
};

} // namespace quillon
