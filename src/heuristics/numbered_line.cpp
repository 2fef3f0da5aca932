#include "heuristics/numbered_line.h"

#include <algorithm>

#include "search/analysis.h"

namespace quillon {

namespace {

/// Number of White's next move in `b` or, after it, of the move just made; the first of the line is 1. Lines are told
/// for the main search, where plies left and plies played add up.
int NumberOfMove(const TChessboard& b) {
    const int played = b.m_nInitialMoves - b.m_nMoves;
    return IsWhiteToMove(b) ? played / 2 + 1 : (played + 1) / 2;
}

bool Tells(const SortIndication& told, const TChessboard& b, const TMove& move, int nMove) {
    return told.m_nMove == nMove && !told.m_bWorst && told.m_nTo == move.m_nTo &&
           (told.m_figure == kNoFigure || told.m_figure == b.m_board[move.m_nFrom]) &&
           (told.m_nFrom == kNoSquare || told.m_nFrom == move.m_nFrom) &&
           (told.m_nPromotion == kNoFigure || told.m_nPromotion == PromotionKind(move));
}

bool IsTold(const TChessboard& b, const TMove& move, int nMove) {
    const TAnalysis& analysis = *b.m_pAnalysis;
    const auto& variant = analysis.m_mainVariant;
    const auto place = static_cast<std::size_t>(nMove - 1);
    if (place < variant.size() && variant[place].m_figure == b.m_board[move.m_nFrom] &&
        variant[place].m_nTo == move.m_nTo)
        return true;
    return std::any_of(analysis.m_sortIndications.begin(), analysis.m_sortIndications.end(),
                       [&](const SortIndication& told) { return Tells(told, b, move, nMove); });
}

} // namespace

bool IsNumberedLineMove(const TChessboard& b, const TMove& move) { return IsTold(b, move, NumberOfMove(b)); }

bool FollowsNumberedLine(const TChessboard& b) {
    const TAnalysis& analysis = *b.m_pAnalysis;
    if (analysis.m_mainVariant.empty() && analysis.m_sortIndications.empty())
        return false;
    for (const TChessboard* at = &b; at->m_pPrevious != nullptr; at = at->m_pPrevious)
        if (!IsWhiteToMove(*at) && !IsTold(*at->m_pPrevious, at->m_lastMove, NumberOfMove(*at)))
            return false;
    return true;
}

} // namespace quillon
