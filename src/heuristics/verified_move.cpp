#include "heuristics/verified_move.h"

#include <algorithm>
#include <cassert>

#include "core/attacks.h"
#include "core/queries.h"
#include "heuristics/look_aside.h"
#include "search/control.h"

namespace quillon {

CVerifiedMove::CVerifiedMove(TChessboard& after, TMove* deferMove)
    : m_after(after), m_before(*after.m_pPrevious), m_deferMove(deferMove) {
    assert(IsWhiteToMove(after));
    if (IsNullMove(after.m_lastMove))
        return;
    m_moved = WithoutMark(after.m_board[To()]);
    m_captured = after.m_lastMove.m_nEnPassant != 0 ? kWhitePawn : m_before.m_board[To()];
}

int CVerifiedMove::FreeSquares() {
    if (m_nFreeSquares < 0)
        m_nFreeSquares = CountBlackKingFreeSquares(m_after);
    return m_nFreeSquares;
}

bool CVerifiedMove::AllowsMateInOne() {
    if (m_nMateInOne < 0)
        m_nMateInOne = HasMateInOne(m_after) ? 1 : 0;
    return m_nMateInOne != 0;
}

ERuling CVerifiedMove::DoubtfulUnlessShortMate(int nPlies) {
    if (AllowsMateInOne())
        return ERuling::NotDoubtful;
    const int nWithin = std::min<int>(nPlies, m_after.m_nMoves);
    if (nWithin >= 3 && HasMateWithin(m_after, nWithin))
        return ERuling::NotDoubtful;
    return IsStopping(m_after) ? ERuling::Undecided : ERuling::Doubtful;
}

bool CVerifiedMove::Mark(std::uint8_t marks) {
    if (m_deferMove == nullptr)
        return false;
    m_deferMove->m_nPromotion |= marks;
    return true;
}

TFigure CVerifiedMove::TakenThereBefore() const {
    if (!IsCapture() || m_before.m_pPrevious == nullptr || m_before.m_lastMove.m_nTo != To())
        return kNoFigure;
    return m_before.m_pPrevious->m_board[To()];
}

} // namespace quillon
