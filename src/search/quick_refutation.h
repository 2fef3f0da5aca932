#pragma once
// Refuting a white move with three plies left without making it: most of them are quiet and threaten nothing, and then
// almost any reply leaves White without a mate on the move. The reply that refuted last is tried on figure masks, which
// costs a third of two makers and two nodes.

#include "core/mate_test.h"
#include "core/search_context.h"

namespace quillon {

enum class EQuickLook {
    Unknown, // says nothing
    Illegal,
    Refuted, // Black has a legal reply after which White has no mate on the move
};

/// The test of the moves of one white node with three plies left.
class CQuickRefutation {
  public:
    /// The node's position; it outlives this.
    explicit CQuickRefutation(const TChessboard& b);

    /// Checks, castling, promotions and en passant are not looked at.
    ///   move  pseudo-legal
    [[nodiscard]] EQuickLook Look(const TMove& move);

  private:
    [[nodiscard]] bool RefutesByHint(const TFigureMasks& afterWhite, const TMove& hint) const;
    [[nodiscard]] bool RefutesByFlight(const TFigureMasks& afterWhite);

    [[nodiscard]] bool MayCheck(const TMove& move, TFigure kind) const;
    [[nodiscard]] bool MayExposeKing(const TMove& move, TFigure kind) const;

    const TChessboard& m_b;
    TFigureMasks m_masks;
    TMask m_straightChecks, m_diagonalChecks; // squares from which a slider checks
    TMask m_screens;                          // figures that a slider's line to the black king may lie behind
    TMask m_shields;                          // figures that a black slider's line to the white king may lie behind
    bool m_bUsable;
};

} // namespace quillon
