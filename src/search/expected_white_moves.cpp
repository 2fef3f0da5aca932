#include "search/expected_white_moves.h"

#include <algorithm>

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
    if (!IsMainSearch(*p.m_pContext) || HasStopped())
        return;
    const std::lock_guard lock(m_mutex);
    const std::optional<std::size_t> left = LeftAt(p);
    if (m_bNothingElse && (m_moves.empty() || (left && IsOver(*left))))
        Stop();
    if (left)
        return;
    const std::size_t nMove = WhiteMovesMade(p);
    if (nMove >= m_moves.size() || sorted.m_bMateFound)
        return;
    m_compared[nMove] = true;
    const bool bAsExpected = sorted.m_nMoves > 0 && IsMoveMeant(m_moves[nMove], list[0]);
    if (!bAsExpected)
        MarkMissed(m_moves[nMove]);
    if (!bAsExpected || (m_bNothingElse && nMove + 1 == m_moves.size()))
        Stop();
}

void CExpectedWhiteMoves::RootMoveEnded() {
    if (m_bNothingElse)
        Stop();
}

std::vector<TMove> CExpectedWhiteMoves::Moves() const {
    const std::lock_guard lock(m_mutex);
    return m_moves;
}

bool CExpectedWhiteMoves::HasCompared() const {
    const std::lock_guard lock(m_mutex);
    return std::ranges::find(m_compared, true) != m_compared.end();
}

/// Where the moves that were made have left the line: the number (from 0) of the first white move that was another one,
/// or was not answered with the first reply. White's moves behind the end of the line are none of it.
std::optional<std::size_t> CExpectedWhiteMoves::LeftAt(const TChessboard& p) const {
    const auto& replies = p.m_pContext->m_moveIndex;
    std::optional<std::size_t> left;
    std::size_t nMove = WhiteMovesMade(p);
    for (const TChessboard* b = &p; b->m_pPrevious != nullptr; b = b->m_pPrevious) {
        const bool bReply = IsWhiteToMove(*b); // it led to b, and was made behind White's move nMove - 1
        if (bReply && replies[b->m_pPrevious->m_nMoves].load(std::memory_order_relaxed) != 0)
            left = nMove - 1;
        if (!bReply && --nMove < m_moves.size() && !IsMoveMeant(m_moves[nMove], b->m_lastMove))
            left = nMove;
    }
    return left;
}

/// The search comes back to the line only where it has tried moves before the sort.
bool CExpectedWhiteMoves::IsOver(std::size_t nLeftAt) const {
    return nLeftAt < m_compared.size() && m_compared[nLeftAt];
}

void CExpectedWhiteMoves::Stop() {
    if (!m_bStopped.exchange(true, std::memory_order_relaxed))
        m_stop();
}

} // namespace quillon
