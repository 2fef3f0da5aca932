#include "search/repetition.h"

#include <algorithm>

#include "core/castling.h"
#include "search/analysis.h"

namespace quillon {

namespace {

/// Can the move that led to `b` be undone? Pawn moves and captures cannot. The root was led to by none.
bool IsReversible(const TChessboard& b) {
    if (b.m_pPrevious == nullptr)
        return false;
    const TFigure moved = b.m_board[b.m_lastMove.m_nTo];
    if ((moved & 0x3f) == kPawn)
        return false;
    return IsNullMove(b.m_lastMove) || b.m_pPrevious->m_board[b.m_lastMove.m_nTo] == kNoFigure;
}

/// The position two plies back, if both plies can be undone.
const TChessboard* TwoPliesBack(const TChessboard* b) {
    if (!IsReversible(*b) || !IsReversible(*b->m_pPrevious))
        return nullptr;
    return b->m_pPrevious->m_pPrevious;
}

bool IsSamePosition(const TChessboard& a, const TChessboard& b) {
    return a.m_board == b.m_board && WhiteCastlingsLeft(a) == WhiteCastlingsLeft(b) &&
           BlackCastlingsLeft(a) == BlackCastlingsLeft(b);
}

/// The nearest earlier position of the line equal to `b`, from four plies back on.
const TChessboard* FindEarlier(const TChessboard& b) {
    const TChessboard* back = TwoPliesBack(&b);
    while (back != nullptr) {
        back = TwoPliesBack(back);
        if (back != nullptr && IsSamePosition(*back, b))
            return back;
    }
    return nullptr;
}

/// An earlier position counts with the parity of the later one and within this analysis.
bool Counts(const TChessboard& earlier, const TChessboard& later) {
    return ((earlier.m_nMoves ^ later.m_nMoves) & 1) == 0 && earlier.m_nMoves <= later.m_pAnalysis->m_nAnalysisStart;
}

/// Plies between two positions of a chain. Inside a trial of the short-mate search m_nMoves was set anew on the way, so
/// the chain itself is walked.
int Distance(const TChessboard& earlier, const TChessboard& later) {
    if (later.m_pContext->m_nQuickerLevel == 0)
        return earlier.m_nMoves - later.m_nMoves;
    int plies = 0;
    for (const TChessboard* p = &later; p != &earlier; p = p->m_pPrevious)
        ++plies;
    return plies;
}

bool RepeatsItself(const TChessboard& b) {
    const TChessboard* const earlier = FindEarlier(b);
    return earlier != nullptr && Counts(*earlier, b);
}

} // namespace

int FindRepetition(const TChessboard& child, bool& bTreated) {
    bTreated = false;
    const TChessboard* const earlier = FindEarlier(child);
    if (earlier == nullptr || !Counts(*earlier, child))
        return 0;
    const int m = child.m_nMoves + 1;
    bTreated = !IsStrict(child) || (m > 13 && (m > 15 || Distance(*earlier, child) < 5 || RepeatsItself(*earlier)));
    return earlier->m_nMoves;
}

std::uint16_t& RepetitionMark(const TChessboard& b, int nMoves) {
    return b.m_pContext->m_repetition[static_cast<std::size_t>(nMoves) + 1];
}

void RaiseRepetitionMark(const TChessboard& b, int nMoves, int value) {
    std::uint16_t& mark = RepetitionMark(b, nMoves);
    mark = std::max(mark, static_cast<std::uint16_t>(value));
}

} // namespace quillon
