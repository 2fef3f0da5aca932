#include "search/sort_indications.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/search_context.h"
#include "search/analysis.h"
#include "search/move_score.h"

namespace quillon {

namespace {

/// White's moves played before the position. Trials of the short-mate search have fewer plies left than were played.
int WhiteMovesPlayed(const TChessboard& b) {
    return (b.m_nInitialMoves - b.m_nMoves + 1) / 2 - b.m_pContext->m_nQuickerSpare;
}

/// Number of White's move that led to the position, the first of the line being 1.
int MoveNumber(const TChessboard& child) { return WhiteMovesPlayed(child); }

/// Can Black take the figure that has just moved, en passant included?
bool IsCapturable(const TChessboard& child) {
    const TSquare square = child.m_lastMove.m_nTo;
    TSquare capturer = kNoSquare;
    if (FindBlackCapturer(child, FileOf(square), RankOf(square), capturer))
        return true;
    if (KingSteps(square, BlackKingSquare(child)) == 1 && !IsAttackedByWhite(child, FileOf(square), RankOf(square)))
        return true;
    return child.m_board[square] == kWhitePawn && IsEnPassantAvailable(child);
}

bool ChecksEnough(const SortIndication& wanted, const TChessboard& child) {
    if (wanted.m_nCheck == 0)
        return true;
    return wanted.m_nCheck == 1 ? child.m_blackChecker != kNoChecker : child.m_blackChecker == kDoubleCheck;
}

bool IsCapture(const TChessboard& child) {
    return WhiteMen(child) + BlackMen(child) != WhiteMen(*child.m_pPrevious) + BlackMen(*child.m_pPrevious);
}

bool Applies(const SortIndication& wanted, const TChessboard& child, const TMove& move) {
    const TFigure figure = child.m_pPrevious->m_board[move.m_nFrom];
    if (wanted.m_nMove != 0 && wanted.m_nMove != MoveNumber(child))
        return false;
    if (wanted.m_figure != kNoFigure && wanted.m_figure != figure)
        return false;
    if ((wanted.m_nFrom != kNoSquare && wanted.m_nFrom != move.m_nFrom) || wanted.m_nTo != move.m_nTo)
        return false;
    if (wanted.m_nCapture != kMayCapture && (wanted.m_nCapture == kMustCapture) != IsCapture(child))
        return false;
    if (wanted.m_nPromotion != kNoFigure && wanted.m_nPromotion != PromotionKind(move))
        return false;
    return ChecksEnough(wanted, child) && !(wanted.m_bOnlyIfNotCapturable && IsCapturable(child));
}

} // namespace

int IndicatedScore(const TChessboard& child, const TMove& move) {
    const TAnalysis& analysis = *child.m_pAnalysis;
    if (analysis.m_sortIndications.empty() || MoveNumber(child) > analysis.m_nSortIndicationLevels)
        return kNotIndicated;
    int place = 0;
    for (const SortIndication& wanted : analysis.m_sortIndications) {
        if (Applies(wanted, child, move))
            return wanted.m_bWorst ? kScoreKnownNoMate : std::min(kScoreFirst + place, kScoreLastIndicated);
        ++place;
    }
    return kNotIndicated;
}

bool IsMainVariantMove(const TChessboard& p, const TMove& move) {
    if ((p.m_wKingState & kFollowsMainVariant) == 0)
        return false;
    const std::vector<TVariantMove>& variant = p.m_pAnalysis->m_mainVariant;
    const auto place = static_cast<std::size_t>(std::max(WhiteMovesPlayed(p), 0));
    return place < variant.size() && variant[place].m_figure == p.m_board[move.m_nFrom] &&
           variant[place].m_nTo == move.m_nTo;
}

} // namespace quillon
