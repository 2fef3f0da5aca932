#include "heuristics/watched_set.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "core/search_context.h"

namespace quillon {

namespace {

/// One watched figure.
struct TWatched {
    TSquare m_nRoot, m_nNow, m_nOnBoard;
};

/// Index of the figure that stood on the square, or the count of figures.
int IndexOf(const THeuristicParameters& p, TSquare square) {
    int i = 0;
    while (i < p.m_nBlockedFigures && p.m_BlockedFigures[static_cast<std::size_t>(i)] != square)
        ++i;
    return i;
}

/// Takes one figure out: the last one gets its place.
void Drop(TChessboard& board, THeuristicParameters& p, int index) {
    const auto i = static_cast<std::size_t>(index), last = static_cast<std::size_t>(--p.m_nBlockedFigures);
    std::swap(p.m_BlockedFigures[i], p.m_BlockedFigures[last]);
    std::swap(p.m_BlockedFiguresNow[i], p.m_BlockedFiguresNow[last]);
    std::swap(board.m_blockedFigures[i], board.m_blockedFigures[last]);
    board.m_blockedFigures[last] = kNoSquare;
}

TFigure FigureInRoot(const TChessboard& board, TSquare square) {
    const TChessboard& root = board.m_pContext->m_pRoot != nullptr ? *board.m_pContext->m_pRoot : board;
    return square < kSquares ? root.m_board[square] : kNoFigure;
}

bool IsMinor(TFigure figure) { return KindOf(figure) == kBishop || KindOf(figure) == kKnight; }

} // namespace

void WriteWatchedSquares(TChessboard& root, const THeuristicParameters& p) {
    root.m_blockedFigures.fill(kNoSquare);
    std::copy_n(p.m_BlockedFigures.begin(), std::clamp<int>(p.m_nBlockedFigures, 0, kMaxBlockedFigures),
                root.m_blockedFigures.begin());
}

bool DropListedFigures(TChessboard& board, THeuristicParameters& p) {
    const int before = p.m_nBlockedFigures;
    for (std::size_t i = 0; i < std::min<std::size_t>(p.m_nDropCount, p.m_DropList.size()); ++i)
        if (const int index = IndexOf(p, p.m_DropList[i]); index < p.m_nBlockedFigures)
            Drop(board, p, index);
    if (p.m_nBlockedFigures < before)
        p.m_nPreviousBlockedCount = static_cast<std::uint8_t>(before);
    p.m_nDropCount = 0;
    return p.m_nBlockedFigures < before && p.m_nBlockedFigures > 0;
}

bool ReduceToHeavyFigures(TChessboard& board, THeuristicParameters& p) {
    if (p.m_nBlockedFigures < 2 || board.m_nMoves != board.m_nInitialMoves)
        return false;
    std::array<TWatched, kMaxBlockedFigures> kept{};
    std::size_t count = 0;
    bool bQueen = false;
    for (int square = 0; square < kSquares; ++square) {
        const auto i = static_cast<std::size_t>(IndexOf(p, static_cast<TSquare>(square)));
        const TFigure figure = FigureInRoot(board, static_cast<TSquare>(square));
        if (i == static_cast<std::size_t>(p.m_nBlockedFigures) || IsMinor(figure))
            continue;
        bQueen = bQueen || KindOf(figure) == kQueen;
        kept[count++] = {p.m_BlockedFigures[i], p.m_BlockedFiguresNow[i], board.m_blockedFigures[i]};
    }
    if (!bQueen || count == static_cast<std::size_t>(p.m_nBlockedFigures))
        return false;
    board.m_blockedFigures.fill(kNoSquare);
    for (std::size_t i = 0; i < count; ++i) {
        p.m_BlockedFigures[i] = kept[i].m_nRoot;
        p.m_BlockedFiguresNow[i] = kept[i].m_nNow;
        board.m_blockedFigures[i] = kept[i].m_nOnBoard;
    }
    p.m_nBlockedFigures = static_cast<std::int8_t>(count);
    return true;
}

void StopWatching(TChessboard& board, THeuristicParameters& p) {
    board.m_nHeuristics &= ~SH_DONTLETFIGUREUNBLOCK;
    p.m_bApplyDlfuDynamically = false;
    p.m_bDlfuDynamic = false;
}

} // namespace quillon
