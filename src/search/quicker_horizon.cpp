#include "search/quicker_horizon.h"

#include <algorithm>

#include "core/generation.h"
#include "core/search_context.h"
#include "heuristics/search_hooks.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr int kLongestTrial = 13;              // mate in 7
constexpr int kUsualTrial = 11;                // mate in 6
constexpr int kQueensTrial = 9;                // mate in 5
constexpr std::uint16_t kQuickPosition = 0x20; // of m_wKingState: a class of position where long trials do not pay
constexpr std::uint16_t kBareKingPlay = 0x80;  // of m_wKingState
constexpr std::uint16_t kCappedLine = 0x200;   // of m_wBlackState
constexpr std::uint32_t kEdgePlay = SH_ASSERTBLACKKINGSURROUNDED | SH_KEEPKINGWITHINEXTEDGE | SH_KEEPKINGONTHEEDGE;

int MajorsAndMinors(const TChessboard& b) {
    return b.m_whiteQueens + b.m_whiteRooks + b.m_whiteBishops + b.m_whiteKnights;
}

int MenOnBoard(const TChessboard& b) { return WhiteMen(b) + BlackMen(b) + 2; }

/// The trials that this search is nested in have fewer plies left than were played.
int PliesPlayed(const TChessboard& b) { return b.m_nInitialMoves - b.m_nMoves - 2 * b.m_pContext->m_nQuickerSpare; }

bool Has(const TChessboard& b, std::uint32_t heuristics) { return (b.m_nHeuristics & heuristics) != 0; }

/// A long trial is not worth its price: the trees are too wide, or nothing cuts them.
bool IsCostly(const TChessboard& p) {
    if ((p.m_wKingState & kQuickPosition) != 0 || p.m_nHeuristics == 0)
        return true;
    if (p.m_whiteQueens >= 2 && MajorsAndMinors(p) - p.m_whiteQueens >= 3)
        return true;
    if (Has(p, kCheapSortHeuristics) || PliesPlayed(p) < 5)
        return false;
    const bool bLoneQueen = p.m_whiteQueens == 1 && MajorsAndMinors(p) == 1;
    const bool bKingsApart = KingSteps(WhiteKingSquare(p), BlackKingSquare(p)) >= 4;
    return p.m_whiteQueens == 0 || (bLoneQueen && bKingsApart && !IsQueenFarFromItsKing(p));
}

/// The square of the move that led to `p` captured a black queen there.
bool JustWonQueen(const TChessboard& p) {
    const TChessboard* const afterWhite = p.m_pPrevious;
    if (afterWhite == nullptr || afterWhite->m_pPrevious == nullptr)
        return false;
    return afterWhite->m_pPrevious->m_board[afterWhite->m_lastMove.m_nTo] == kBlackQueen;
}

/// Did the queen that White has just won come from a black promotion in this line? Its moves are walked back.
bool WasPromotedQueen(const TChessboard& p) {
    TSquare square = p.m_pPrevious->m_lastMove.m_nTo;
    for (const TChessboard* at = p.m_pPrevious->m_pPrevious; at->m_pPrevious != nullptr; at = at->m_pPrevious) {
        if (!IsWhiteToMove(*at) || at->m_lastMove.m_nTo != square)
            continue; // White's move, or a move of another figure
        if (PromotionKind(at->m_lastMove) != 0)
            return true;
        square = at->m_lastMove.m_nFrom;
    }
    return false;
}

/// A queen up out of nothing: the mate is near, and worth a longer look.
int LengthenAfterWonQueen(const TChessboard& p, int d) {
    const int m = p.m_nMoves;
    if (!JustWonQueen(p) || p.m_blackQueens != 0 || 2 * d > m + 1 || PliesPlayed(p) <= 2 || WasPromotedQueen(p))
        return d;
    const int figures = MajorsAndMinors(p);
    if (!Has(p, kCheapSortHeuristics) || p.m_whiteQueens == 0 || figures < 2 || figures > 3)
        return d;
    d += 6;
    while (d > m)
        d -= 2;
    return d;
}

bool JustPromotedToQueen(const TChessboard& p) {
    return p.m_pPrevious != nullptr && p.m_pPrevious->m_pPrevious != nullptr &&
           PromotionKind(p.m_pPrevious->m_lastMove) == kQueen;
}

/// All white figures but at most one stand idle: two pawns promote to do their work.
bool AreFiguresIdle(const TChessboard& p) {
    int busy = 0;
    for (int s = 0; s < kSquares; ++s) {
        const TFigure figure = p.m_board[static_cast<std::size_t>(s)];
        if (IsWhite(figure) && figure != kWhiteKing && figure != kWhitePawn &&
            !IsIdleFigure(p, static_cast<TSquare>(s)))
            ++busy;
    }
    return busy <= 1;
}

int AutomaticHorizon(const TChessboard& p) {
    const TSearchContext& context = *p.m_pContext;
    const int m = p.m_nMoves;
    // 1
    int d = std::min(m - 1, kLongestTrial);
    if (Has(p, SH_SWEEPINGWHITEROOK) && p.m_blackKingRank != 0 && context.m_nQuickerLevel <= 1)
        d = std::min(m, kLongestTrial);
    // 2
    if (IsCostly(p))
        d = std::min(d, kUsualTrial);
    // 3
    if (Has(p, SH_ZUGZWANG | SH_ONECOLORPLAYPOSSIBLE | SH_SWEEPINGWHITEROOK) &&
        (Has(p, SH_ONECOLORPLAYPOSSIBLE) || (p.m_wKingState & kBareKingPlay) != 0)) {
        const int half = d / 2;
        d = half + 3;
        if (d >= m || d > 7)
            d = half + 1;
    }
    if ((p.m_nHeuristics & (SH_ZUGZWANG | kEdgePlay)) == SH_ZUGZWANG || (p.m_wBlackState & kCappedLine) != 0)
        d = std::min(d, kUsualTrial);
    // 4
    if ((p.m_wBlackState & kCappedByContext) != 0) {
        if (Has(p, SH_ZUGZWANG)) {
            if (m == p.m_nInitialMoves - 2 && RefusesQuickerSearch(p))
                return kQuickerSearchRefused;
        } else {
            d = std::min<int>(d, context.m_nQuickerCap);
        }
    }
    // 5
    if (p.m_whiteQueens >= 3 && MenOnBoard(p) < 16 && d > kQueensTrial)
        d = kQueensTrial;
    // 6
    d = LengthenAfterWonQueen(p, d);
    // 7
    if (d < 14 && JustPromotedToQueen(p) && HasPawnOnSeventh(p) && AreFiguresIdle(p))
        d += 2;
    // 8
    if (!Has(p, SH_SEASNAKE | SH_FINDFORCEDMATE | kCheapSortHeuristics) && d > 12 && m - d < 5 && p.m_whiteQueens != 0)
        d -= 2;
    return d;
}

static_assert((SH_ZUGZWANG | SH_ONECOLORPLAYPOSSIBLE | SH_SWEEPINGWHITEROOK) == 0x8000000a);
static_assert((SH_ZUGZWANG | kEdgePlay) == 0x80080044);
static_assert((SH_SEASNAKE | SH_FINDFORCEDMATE | kCheapSortHeuristics) == 0x80802c4);

} // namespace

bool HasPawnOnSeventh(const TChessboard& b) {
    return std::find(b.m_board.begin() + 48, b.m_board.begin() + 56, kWhitePawn) != b.m_board.begin() + 56;
}

int ForcedRunHorizon(int nDepthCode) {
    constexpr int kThreatOfMateInTwo = 5; // the first code whose threats take more than one move
    return nDepthCode < kThreatOfMateInTwo ? 3 : nDepthCode;
}

int QuickerHorizon(const TChessboard& p) {
    const int setting = p.m_pAnalysis->m_shLookForQuickerMateDepth;
    int d = setting >= 0 ? setting : AutomaticHorizon(p);
    if (p.m_pContext->m_bFFM && setting < 0)
        d = std::min(d, ForcedRunHorizon(p.m_pContext->m_nFfmDepth));
    if (p.m_pContext->m_nLineHorizon != 0)
        d = std::min<int>(d, p.m_pContext->m_nLineHorizon);
    return std::min<int>(d, p.m_nMoves);
}

} // namespace quillon
