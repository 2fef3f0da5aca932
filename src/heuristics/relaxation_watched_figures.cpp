// The rules of the watched black figures (SH_DONTLETFIGUREUNBLOCK) and of the key figure, which often are in each
// other's way.

#include "heuristics/figure_exchange.h"
#include "heuristics/king_edge.h"
#include "heuristics/relaxation_rules.h"
#include "heuristics/watched_set.h"

namespace quillon {

namespace {

/// The two would be dropped together though only one of them is wrong: they are to be tried one at a time.
void PlanSwapBesideStrictEdge(TRelaxation& r) {
    if (r.Has(SH_KEEPKINGONTHEEDGE) && r.m_parameters.m_bDontLetKingMove && r.Has(SH_DONTLETFIGUREUNBLOCK))
        r.m_parameters.m_bKeyFigureSwapPending = true;
}

} // namespace

ERelaxation BringBackParkedFigures(TRelaxation& r) {
    if (r.m_parameters.m_bBlockedFiguresParked) {
        r.m_parameters.m_bBlockedFiguresParked = false;
        r.Set(SH_DONTLETFIGUREUNBLOCK);
        r.m_bFiguresCameBack = true;
    }
    return ERelaxation::NotMine;
}

ERelaxation SwapKeyFigureAndWatched(TRelaxation& r) {
    if (!r.m_parameters.m_bKeyFigureSwapPending)
        return ERelaxation::NotMine;
    if (r.Has(SH_DONTLETFIGUREUNBLOCK)) {
        r.TakeOff(SH_DONTLETFIGUREUNBLOCK);
        r.Set(SH_KEYWHITEFIGURE);
        return ERelaxation::NextPass;
    }
    r.TakeOff(SH_KEYWHITEFIGURE);
    r.Set(SH_DONTLETFIGUREUNBLOCK);
    r.m_parameters.m_bKeyFigureSwapPending = false;
    return ERelaxation::NotMine;
}

ERelaxation DropFiguresEarly(TRelaxation& r) {
    constexpr int kHighestThresholdOfLateDrop = 2;
    return r.m_parameters.m_nDropThreshold > kHighestThresholdOfLateDrop ? DropFigures(r) : ERelaxation::NotMine;
}

ERelaxation DropFigures(TRelaxation& r) {
    THeuristicParameters& p = r.m_parameters;
    if (!p.m_bDropBlockedFigures || (!r.Has(SH_DONTLETFIGUREUNBLOCK) && !p.m_bDlfuDynamic))
        return ERelaxation::NotMine;
    if (!DropListedFigures(r.m_board, p)) {
        StopWatching(r.m_board, p);
        p.m_bFallbackPending = p.m_bHeuristicsFallback;
    }
    return ERelaxation::Done;
}

ERelaxation RelaxExchangeableKeyFigure(TRelaxation& r) {
    if (!r.Has(SH_KEYWHITEFIGURE) || WhiteFigureCount(r.m_board) < 2 || !IsBlackKingInCorner(r.m_board) ||
        !CanBeExchanged(r.m_board, r.m_parameters.m_nKeyWhiteFigure))
        return ERelaxation::NotMine;
    r.TakeOff(SH_KEYWHITEFIGURE);
    PlanSwapBesideStrictEdge(r);
    return ERelaxation::Done;
}

ERelaxation RelaxKeyFigure(TRelaxation& r) {
    if (!r.Has(SH_KEYWHITEFIGURE))
        return ERelaxation::NotMine;
    r.TakeOff(SH_KEYWHITEFIGURE);
    PlanSwapBesideStrictEdge(r);
    return ERelaxation::NextPass;
}

// Without the heuristic, in force or to be applied on the way, the mark would give the same pass again.
ERelaxation MakeWatchedEffective(TRelaxation& r) {
    THeuristicParameters& p = r.m_parameters;
    const bool bWatched = r.Has(SH_DONTLETFIGUREUNBLOCK) || (p.m_bDlfuDynamic && r.m_board.m_nHeuristics != 0);
    if (p.m_nBlockedFigures <= 0 || p.m_bBlockedFiguresEff || !bWatched)
        return ERelaxation::NotMine;
    p.m_bBlockedFiguresEff = true;
    return ERelaxation::NextPass;
}

} // namespace quillon
