#include "heuristics/verify_lines.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/king_flights.h"
#include "core/lines.h"
#include "heuristics/figure_origin.h"
#include "heuristics/king_edge.h"
#include "search/analysis.h"

namespace quillon {

namespace {

/// The figure named by the heuristic has made this move, and its line with the king is no diagonal any more.
bool HasLeftMainDiagonal(CVerifiedMove& move) {
    const TSquare named = move.Context().m_nBlackFigureOnMainDiagonal;
    const TDirection line = DirectionBetween(BlackKingSquare(move.After()), move.To());
    if (named >= kSquares || move.IsByKing() || (line != kNoDirection && !IsStraight(line)))
        return false;
    return OriginOfBlackFigure(move.After(), move.To()) == named;
}

/// Squares of White's play in a bishop mode are those that the bishop taken off did not reach.
int PlayColour(const TChessboard& b) { return 1 - RemovedBishopColour(b); }

/// Neither where he stands nor where he can go is the black king within White's reach.
bool IsKingOutOfReach(const TChessboard& b) {
    const int colour = PlayColour(b);
    if (CanCheckFromColour(b, colour, BlackKingSquare(b)))
        return false;
    for (TMask squares = BlackKingFreeSquares(TakeMasks(b)); squares != 0;)
        if (CanCheckFromColour(b, colour, static_cast<TSquare>(TakeSquare(squares))))
            return false;
    return true;
}

} // namespace

ERuling DoubtsMoveAlongKeyLine(CVerifiedMove& move) {
    const int file = move.After().m_pAnalysis->m_nKeyLine;
    const bool bAlong =
        IsStraightSlider(move.Moved(), kBlack) && FileOf(move.From()) == file && FileOf(move.To()) == file;
    return bAlong ? move.DoubtfulUnlessMateInOne() : ERuling::NotDoubtful;
}

bool IsOnKeyDiagonal(std::uint16_t diagonal, TSquare square) {
    const int a = diagonal & 0xff, b = diagonal >> 8;
    if (a >= kSquares || b >= kSquares)
        return false;
    if (square == a || square == b)
        return true;
    const TDirection line = DirectionBetween(a, b);
    return line != kNoDirection && !IsStraight(line) && DirectionBetween(a, square) == line &&
           DirectionBetween(square, b) == line;
}

ERuling DoubtsMoveAlongKeyDiagonal(CVerifiedMove& move) {
    const std::uint16_t diagonal = move.After().m_pAnalysis->m_wKeyDiagonal;
    const bool bAlong = IsDiagonalSlider(move.Moved(), kBlack) && IsOnKeyDiagonal(diagonal, move.From()) &&
                        IsOnKeyDiagonal(diagonal, move.To());
    return bAlong ? move.DoubtfulUnlessMateInOne() : ERuling::NotDoubtful;
}

ERuling DoubtsOpenedMainDiagonal(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    if (!move.Has(SH_KEEPKINGONTHEEDGE) || !IsStrictEdge(b) || !HasLeftMainDiagonal(move))
        return ERuling::NotDoubtful;
    // A figure that Black defends in its new place still takes part in the defence that the set counts on.
    if (IsAttackedByBlack(b, FileOf(move.To()), RankOf(move.To())))
        return ERuling::NotDoubtful;
    constexpr int kMateInTwoPlies = 3; // the diagonal it has opened decides at once, or not
    return move.DoubtfulUnlessShortMate(kMateInTwoPlies);
}

bool IsSeaSnakeInForce(const TChessboard& b) {
    const std::vector<TMove>& after = b.m_pAnalysis->m_seaSnakeAfterMoves;
    if (after.empty())
        return true;
    for (const TChessboard* p = &b; p->m_pPrevious != nullptr; p = p->m_pPrevious)
        if (std::any_of(after.begin(), after.end(), [&](const TMove& m) { return SameMove(m, p->m_lastMove); }))
            return true;
    return false;
}

ERuling DoubtsSeaSnakeQueen(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const bool bCase = move.Context().m_nQuickerLevel == 0 && move.Moved() == kBlackQueen &&
                       !IsAttackedByWhite(b, FileOf(move.To()), RankOf(move.To()));
    if (!bCase || move.AllowsMateInOne() || !IsSeaSnakeInForce(b))
        return ERuling::NotDoubtful;
    (void)move.Mark(kMoveMark);
    return move.DoubtfulUnlessShortMate(kShortMatePlies);
}

ERuling DoubtsPromotedBishopsColour(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    if (move.Moved() != kBlackBishop || ColourOf(move.To()) == ColourOf(BlackKingSquare(b)) ||
        !IsPromotedBlackFigure(b, move.To()))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessShortMate(kShortMatePlies);
}

bool CanCheckFromColour(const TChessboard& b, int colour, TSquare square) {
    if (b.m_whiteQueens + b.m_whiteRooks != 0)
        return true;
    // Bishops and pawns attack the colour they stand on, knights the other.
    return ColourOf(square) == colour ? b.m_whiteBishops + b.m_whitePawns != 0 : b.m_whiteKnights != 0;
}

ERuling DoubtsPlayOnOneColour(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    return IsBishopRemoved(b) && IsKingOutOfReach(b) ? move.DoubtfulUnlessMateInOne() : ERuling::NotDoubtful;
}

} // namespace quillon
