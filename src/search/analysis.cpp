#include "search/analysis.h"

#include <cassert>

#include "core/maker_steps.h"
#include "search/sort_indications.h"

namespace quillon {

TChessboard* MakeRoot(TSearchContext& context, TAnalysis& analysis, const TChessboard& board, int nMoves, int nPass) {
    assert(nMoves >= 1 && nMoves <= 2 * kMaxStipulation - 1);
    TChessboard& root = RootSlot(context, nMoves);
    root = board;
    root.m_pAnalysis = &analysis;
    root.m_pContext = &context;
    root.m_pPrevious = nullptr;
    root.m_lastMove = {};
    root.m_nMoves = root.m_nInitialMoves = static_cast<std::uint16_t>(nMoves);
    root.m_byPass = static_cast<std::uint8_t>(nPass);
    if (!analysis.m_mainVariant.empty())
        root.m_wKingState |= kFollowsMainVariant;
    maker_steps::UpdatePrecalcBits(root);
    context.m_pRoot = &root;
    context.m_nThreadPlies = root.m_nMoves;
    context.m_nCalledBackTo = 0;
    context.m_pScheduler = nullptr;
    context.m_byResumeList = 0;
    context.m_repetition[root.m_nMoves + 1u] = 0;
    analysis.m_nAnalysisStart = root.m_nMoves;
    return &root;
}

} // namespace quillon
