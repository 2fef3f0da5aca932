#include "heuristics/relaxation_rules.h"

#include "heuristics/pawn_breakthrough.h"

namespace quillon {

namespace {

/// Do White's figures decide, rather than its pawns? They do when there are two of them, or a queen or rook.
bool DoFiguresDecide(const TChessboard& b) { return WhiteFigureCount(b) >= 2 || b.m_whiteQueens + b.m_whiteRooks > 0; }

/// So few, and so light, that a figure more or less is not what the play is about.
bool HasFewLightFigures(const TChessboard& b) {
    constexpr int kFew = 4;
    return b.m_whiteQueens == 0 && b.m_whiteRooks == 0 && WhiteFigureCount(b) < kFew;
}

} // namespace

ERelaxation RelaxSweepingRook(TRelaxation& r) { return TakeOffIfSet(r, SH_SWEEPINGWHITEROOK); }

ERelaxation RelaxZugzwang(TRelaxation& r) { return TakeOffIfSet(r, SH_ZUGZWANG); }

// The long journeys that the heuristic is about return to positions often, and quick mode doubts a repetition.
ERelaxation RelaxSeaSnake(TRelaxation& r) {
    if (r.Has(SH_SEASNAKE) && !r.m_parameters.m_bSeaSnakeKeepQuick)
        r.m_bSafeMode = true;
    return TakeOffIfSet(r, SH_SEASNAKE);
}

ERelaxation RelaxOneColorPlay(TRelaxation& r) {
    if (r.Has(SH_ONECOLORPLAYPOSSIBLE))
        r.m_board.m_bySideState = static_cast<std::uint8_t>(r.m_board.m_bySideState & ~kBishopModeMask);
    return TakeOffIfSet(r, SH_ONECOLORPLAYPOSSIBLE);
}

ERelaxation RelaxNearCorner(TRelaxation& r) { return TakeOffIfSet(r, SH_KEEPKINGNEARCORNER); }

ERelaxation RelaxMainDiagonal(TRelaxation& r) { return TakeOffIfSet(r, SH_DONTLEAVEMAINDIAGONAL); }

ERelaxation RelaxQueenChecks(TRelaxation& r) {
    return r.m_parameters.m_bQueenCheckRelaxable ? TakeOffIfSet(r, SH_DONTLETBLACKQUEENCHECKTWICE)
                                                 : ERelaxation::NotMine;
}

ERelaxation RelaxPromotedQueen(TRelaxation& r) {
    return r.m_parameters.m_bPromotedQueenRelaxable ? TakeOffIfSet(r, SH_DONTLETPROMOTEDQUEENMOVE)
                                                    : ERelaxation::NotMine;
}

ERelaxation RelaxSingleQueenMate(TRelaxation& r) { return TakeOffIfSet(r, SH_SINGLEQUEENMATE); }

ERelaxation RelaxSavedFiguresByType(TRelaxation& r) {
    const TChessboard& b = r.m_board;
    const bool bGoes =
        !DoFiguresDecide(b) || HasFreeWhitePawn(b) || (!r.Has(SH_ASSERTBLACKKINGSURROUNDED) && HasFewLightFigures(b));
    return bGoes ? TakeOffIfSet(r, SH_DONTLOSEANYFIGURES) : ERelaxation::NotMine;
}

ERelaxation RelaxSavedFigures(TRelaxation& r) { return TakeOffIfSet(r, SH_DONTLOSEANYFIGURES); }

} // namespace quillon
