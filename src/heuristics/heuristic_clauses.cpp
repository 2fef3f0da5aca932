#include "heuristics/heuristic_clauses.h"

#include <algorithm>
#include <span>

#include "core/chess_exception.h"
#include "core/notation.h"
#include "core/printable.h"
#include "core/search_context.h"
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

std::vector<TSquare> ParseSetOfSquares(std::string_view text) {
    constexpr std::string_view kSeparators = " \t\n\r\xA0,";
    const auto fail = [text] { throw ChessException("Error in ParseSetOfSquares: " + Printable(text)); };
    std::vector<TSquare> squares;
    for (std::size_t at = text.find_first_not_of(kSeparators); at != std::string_view::npos;
         at = text.find_first_not_of(kSeparators, at + 2)) {
        const char letter = text[at] >= 'a' && text[at] <= 'z' ? static_cast<char>(text[at] - 'a' + 'A') : text[at];
        const char digit = at + 1 < text.size() ? text[at + 1] : '\0';
        if (letter < 'A' || letter > 'H' || digit < '1' || digit > '8')
            fail();
        const TSquare square = SquareAt(letter - 'A', digit - '1');
        if (std::ranges::find(squares, square) == squares.end())
            squares.push_back(square);
    }
    return squares;
}

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
