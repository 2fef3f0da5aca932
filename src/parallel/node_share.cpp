#include "parallel/node_share.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

#include "search/analysis.h"
#include "search/control.h"
#include "search/hints.h"
#include "search/repetition.h"

namespace quillon {

namespace {

/// Marks of nodes that the thread does not stand in: those with fewer plies belong to it, those above to its creator.
void ClearMarksAbove(TSearchContext& context, int nMoves) {
    std::fill(context.m_repetition.begin() + nMoves + 2, context.m_repetition.end(), std::uint16_t{0});
    std::fill(context.m_repetitionSaved.begin() + nMoves + 2, context.m_repetitionSaved.end(), std::uint16_t{0});
}

} // namespace

void PrepareShare(const TChessboard& node, TNodeShare& share, std::uint32_t thread) {
    share.m_context = NewSearchContext();
    TSearchContext& context = *share.m_context;
    CloneSearchContext(*node.m_pContext, context);
    context.m_nThreadNumber = thread;
    context.m_nThreadPlies = node.m_nMoves;
    context.m_nStopRequest.store(kRunRequest, std::memory_order_relaxed);
    ClearMarksAbove(context, node.m_nMoves);
    share.m_pPosition = &RootSlot(context, node.m_nMoves);
}

/// A thread that was called away has no verdict; if nobody calls its creator away, that is doubt.
TShareVerdict SearchShare(TNodeShare& share, TNodeFunction node) {
    TSearchContext& context = *share.m_context;
    TChessboard& position = *share.m_pPosition;
    context.m_byResumeList = 2; // the verdict on a share is none on the node
    context.m_nResumeCount = static_cast<std::uint8_t>(share.m_moves.size());
    context.m_pResumeList = share.m_moves.data();
    RepetitionMark(position, position.m_nMoves) = 0;
    const TMateResult result = node(&position);
    if (result == MR_MATE)
        return {MR_MATE};
    if (IsStopping(position))
        return {MR_DOUBTFUL, 0, context.m_lastDoubtCause};
    return {result, RepetitionMark(position, position.m_nMoves), context.m_lastDoubtCause};
}

CNodeVerdict::CNodeVerdict(TChessboard& node) : m_node(node) { RepetitionMark(node, node.m_nMoves - 1) = 0; }

void CNodeVerdict::Add(const TShareVerdict& verdict) {
    assert(verdict.m_result != MR_MATE);
    RaiseRepetitionMark(m_node, m_node.m_nMoves, verdict.m_nMark);
    m_bRepetition = m_bRepetition || verdict.m_result <= MR_REPETITION;
    if (verdict.m_result != MR_DOUBTFUL)
        return;
    m_bDoubt = true;
    m_node.m_pContext->m_lastDoubtCause = verdict.m_nDoubtCause;
}

TMateResult CNodeVerdict::Result() const {
    if (m_bDoubt && (m_node.m_byPass >= 2 || !m_bRepetition))
        return MR_DOUBTFUL; // in the last pass a repetition may count as refuted, doubt never
    return m_bRepetition ? MR_REPETITION : MR_NOMATE;
}

void TakeMateFrom(const TChessboard& node, const TNodeShare& share) {
    const TSearchContext& context = *share.m_context;
    node.m_pContext->m_zugzwangMove = context.m_zugzwangMove;
    node.m_pContext->m_bUnderPromotionEqual = context.m_bUnderPromotionEqual;
    const std::size_t i = context.m_moveIndex[node.m_nMoves].load(std::memory_order_relaxed);
    if (i < share.m_moves.size())
        KeepHint(node, share.m_moves[i]);
}

} // namespace quillon
