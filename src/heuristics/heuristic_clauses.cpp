#include "heuristics/heuristic_clauses.h"

#include <algorithm>
#include <span>

#include "core/search_context.h"
#include "core/set_of_squares.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/heuristic_signature.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr std::string_view kOff = "OFF";
constexpr std::uint32_t kHoldKing = SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED;

/// Has the heuristic what it cannot do without?
bool HasParameter(const TChessboard& root, std::uint32_t bit) {
    const TSearchContext& p = *root.m_pContext;
    switch (bit) {
    case SH_KEYLINE:
        return root.m_pAnalysis->m_nKeyLine != kNoKeyLine;
    case SH_KEYDIAGONAL:
        return root.m_pAnalysis->m_wKeyDiagonal != kNoKeyDiagonal;
    case SH_KEYSQUARE:
        return p.m_nKeySquare < kSquares;
    case SH_KEYWHITEFIGURE:
        return p.m_nKeyWhiteFigure < kSquares && p.m_nPinnedFigure < kSquares;
    case SH_KEEPKINGNEARCORNER:
        return p.m_nKingNearCorner != 0;
    default:
        return true;
    }
}

void WatchFigures(TChessboard& root, std::vector<TSquare> squares) {
    std::erase_if(squares, [&](TSquare square) { return !CanBeWatched(root, square); });
    if (squares.empty() || root.m_byPass > 1)
        return;
    squares.resize(std::min<std::size_t>(squares.size(), kMaxBlockedFigures));
    SetWatchedFigures(*root.m_pContext, root, squares);
    root.m_pContext->m_bBlockedFiguresByHand = true;
}

} // namespace

std::uint32_t ApplyHeuristicClauses(TChessboard& root, const THeuristicClauses& clauses) {
    std::uint32_t nSet = 0;
    for (const auto& [bit, argument] : clauses) {
        if (argument == kOff) {
            root.m_nHeuristics &= ~bit;
            nSet &= ~bit;
            continue;
        }
        if (bit == SH_DONTLETFIGUREUNBLOCK)
            WatchFigures(root, ParseSetOfSquares(argument));
        if (!HasParameter(root, bit))
            continue;
        if ((bit & kHoldKing) != 0) {
            root.m_nHeuristics &= ~kHoldKing;
            nSet &= ~kHoldKing;
        }
        root.m_nHeuristics |= bit;
        nSet |= bit;
    }
    root.m_nHeurParams = ComputeHeurParams(root);
    return nSet;
}

} // namespace quillon
