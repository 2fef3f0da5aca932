#include "heuristics/dynamic_relaxation.h"

#include <algorithm>

#include "core/queries.h"
#include "heuristics/capture_tests.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/king_edge.h"
#include "heuristics/white_promotion.h"
#include "search/analysis.h"

namespace quillon {

namespace {

/// Plies left at which a check deferred in `b` is due: White gets m_shDeferMoves moves.
std::uint16_t DeferredUntil(const TChessboard& b) {
    return static_cast<std::uint16_t>(std::max(1, b.m_nMoves - 2 * b.m_pContext->m_shDeferMoves));
}

/// A queen that has come of such a pawn is the event itself.
bool IsRelaxedByPawn(const TChessboard& b) {
    return b.m_pContext->m_bRelaxOnAdvancedPawn && ((b.m_wBlackState & kWhiteQueenPromoted) != 0 || HasAdvancedPawn(b));
}

/// One short of the count, a black man that hangs will be the last one.
bool IsRelaxedByCaptures(const TChessboard& b) {
    const TSearchContext& context = *b.m_pContext;
    if (context.m_nRelaxCaptures == 0)
        return false;
    const int missing = context.m_nRelaxCaptures - CaptureBalance(b);
    return missing <= 0 || (missing == 1 && HasLooseBlackMan(b, context.m_bRelaxCapturesInclPawns));
}

bool IsOffEdge(const TChessboard& b) {
    if ((b.m_nHeuristics & SH_KEEPKINGWITHINEXTEDGE) != 0 && BlackRing(b) > 1)
        return true;
    if ((b.m_nHeuristics & SH_KEEPKINGONTHEEDGE) == 0)
        return false;
    return IsStrictEdge(b) ? !IsBlackKingInCorner(b) : BlackRing(b) > 0;
}

/// Black took a queen or rook while SH_SAVEQUEENROOK is in force: from here on its check is running.
bool BeginsSaveCheck(const TChessboard& b) {
    return (b.m_nHeuristics & SH_SAVEQUEENROOK) != 0 && (b.m_wBlackState & kWhiteMajorFigureLost) == 0 &&
           b.m_pPrevious != nullptr && IsStraightSlider(b.m_pPrevious->m_board[b.m_lastMove.m_nTo], kWhite);
}

/// Black took a man while SH_DONTLOSEANYFIGURES is in force, and the rules have let the line go on.
bool ReleasesLosses(const TChessboard& b) {
    return (b.m_nHeuristics & SH_DONTLOSEANYFIGURES) != 0 && b.m_pPrevious != nullptr &&
           WhiteMen(b) < WhiteMen(*b.m_pPrevious);
}

/// The bits of a line in which the king has left his place with leave. A ban on his moves would from here on only judge
/// whether he moves again: without it the edge is what counts when the time is over.
std::uint16_t RelaxedEdgeBits(const TChessboard& b) {
    const bool bBan = (b.m_nHeuristics & SH_KEEPKINGONTHEEDGE) != 0 && IsStrictEdge(b);
    return static_cast<std::uint16_t>(bBan ? kEdgeRelaxed | kKingMoveBanSuspended : kEdgeRelaxed);
}

} // namespace

int CaptureBalance(const TChessboard& b) {
    const TRootMaterial& root = b.m_pAnalysis->m_rootMaterial;
    int balance = WhiteFigureCount(b) - root.m_nWhiteFigures + root.m_nBlackFigures - BlackFigureCount(b);
    if (b.m_pContext->m_bRelaxCapturesInclPawns)
        balance += b.m_whitePawns - root.m_nWhitePawns + root.m_nBlackPawns - b.m_blackPawns;
    return balance;
}

bool CanBalanceChange(const TChessboard& b) {
    const int men = BlackFigureCount(b) + (b.m_pContext->m_bRelaxCapturesInclPawns ? b.m_blackPawns : 0);
    return men != 0 || HasPawnInReachOfPromotion(b, (b.m_nMoves + 1) / 2);
}

EEdgeRelaxation FindRelaxation(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const TSearchContext& context = move.Context();
    const bool bDeferred = (b.m_wBlackState & kEdgeRelaxed) != 0;
    if ((bDeferred && b.m_nMoves >= context.m_shDeferMaxMoves) || IsRelaxedByPawn(b) || IsRelaxedByCaptures(b))
        return EEdgeRelaxation::Relaxed;
    if (bDeferred)
        return EEdgeRelaxation::Overdue; // the event for which it was deferred has not come
    if (context.m_shDeferMoves == 0 || (context.m_bSkipDeferIfNoBalanceChange && !CanBalanceChange(b)))
        return EEdgeRelaxation::None;
    return EEdgeRelaxation::Deferred;
}

void DeferEdgeCheck(CVerifiedMove& move) {
    if (move.Mark(kMoveDefersEdgeCheck))
        move.Context().m_shDeferMaxMoves = DeferredUntil(move.After());
}

void ApplyDeferredEdgeCheck(TChessboard& b) {
    const bool bSave = BeginsSaveCheck(b);
    const bool bEdge = b.m_pContext->m_shDeferMoves != 0 && (b.m_wBlackState & kEdgeRelaxed) == 0 && IsOffEdge(b);
    if (ReleasesLosses(b))
        b.m_wBlackState |= kLossesReleased; // no part of the signature: doubt of other lines is doubt here as well
    if (!bSave && !bEdge)
        return;
    if (bSave)
        b.m_wBlackState |= kWhiteMajorFigureLost;
    if (bEdge) {
        b.m_wBlackState |= RelaxedEdgeBits(b);
        b.m_pContext->m_shDeferMaxMoves = DeferredUntil(b);
    }
    b.m_nHeurParams = ComputeHeurParams(b);
}

} // namespace quillon
