#include "search/expected_white_moves.h"

#include "core/expected_move.h"
#include "core/search_context.h"
#include "search/analysis.h"

namespace quillon {

namespace {

/// White's moves made since the root.
std::size_t WhiteMovesMade(const TChessboard& p) {
    std::size_t made = 0;
    for (const TChessboard* b = &p; b->m_pPrevious != nullptr; b = b->m_pPrevious)
        made += IsWhiteToMove(*b) ? 0u : 1u;
    return made;
}

/// Trials, bounded looks and what else looks aside sort for another length. The sort that is told of is itself one sort
/// in progress.
bool IsMainSearch(const TSearchContext& context) {
    return context.m_nQuickerLevel == 0 && context.m_nLineHorizon == 0 && context.m_nSortNesting <= 1 &&
           context.m_nPositionsLeft == TSearchContext::kNoBound;
}

void MarkMissed(TMove& move) {
    for (std::uint8_t* const square : {&move.m_nFrom, &move.m_nTo})
        if (*square < kSquares) // what a file says of a square beyond the board needs no mark
            *square = static_cast<std::uint8_t>(*square + kExpectedMoveMissed);
}

} // namespace

void CExpectedWhiteMoves::Compare(const TChessboard& p, const TWhiteSort& sorted, const TMove* list) {
    if (!IsMainSearch(*p.m_pContext) || sorted.m_bMateFound || HasStopped())
        return;
    const std::size_t nMove = WhiteMovesMade(p);
    const std::lock_guard lock(m_mutex);
    if (nMove >= m_moves.size() || !IsOnLine(p, nMove))
        return;
    const bool bAsExpected = sorted.m_nMoves > 0 && IsMoveMeant(m_moves[nMove], list[0]);
    if (!bAsExpected)
        MarkMissed(m_moves[nMove]);
    if (!bAsExpected || (m_bNothingElse && nMove + 1 == m_moves.size()))
        Stop();
}

std::vector<TMove> CExpectedWhiteMoves::Moves() const {
    const std::lock_guard lock(m_mutex);
    return m_moves;
}

/// Walks back from the position, in which White is to make move nMove (from 0) of the line.
bool CExpectedWhiteMoves::IsOnLine(const TChessboard& p, std::size_t nMove) const {
    const auto& replies = p.m_pContext->m_moveIndex;
    for (const TChessboard* b = &p; b->m_pPrevious != nullptr; b = b->m_pPrevious) {
        if (!IsWhiteToMove(*b) && !IsMoveMeant(m_moves[--nMove], b->m_lastMove))
            return false;
        if (IsWhiteToMove(*b) && replies[b->m_pPrevious->m_nMoves].load(std::memory_order_relaxed) != 0)
            return false;
    }
    return true;
}

void CExpectedWhiteMoves::Stop() {
    if (!m_bStopped.exchange(true, std::memory_order_relaxed))
        m_stop();
}

} // namespace quillon
