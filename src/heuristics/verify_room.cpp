#include "heuristics/verify_room.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/lines.h"
#include "heuristics/king_edge.h"
#include "heuristics/king_net.h"
#include "heuristics/white_promotion.h"

namespace quillon {

namespace {

int WhiteMovesLeft(const TChessboard& b) { return (b.m_nMoves + 1) / 2; }

/// No pawn becomes a queen in the moves that are left.
bool IsPromotionTooFar(const TChessboard& b) { return !HasPawnInReachOfPromotion(b, WhiteMovesLeft(b)); }

bool HasRoomForThreeMoves(int ring, int nFree, int nRaise, bool bFirstRing) {
    return (ring == 1 && bFirstRing && nFree > 5 + nRaise) || (ring >= 2 && nFree > 4 + nRaise);
}

/// A single square more than the limit is let pass while Black has few figures and nothing was exchanged: such a king
/// has mostly stepped to where White will hold him again.
bool IsOneSquareInQuietLine(CVerifiedMove& move, int nLimit) {
    return !move.Context().m_bAssertBKSStrict && move.FreeSquares() == nLimit + 1 &&
           BlackFigureCount(move.After()) < 4 && IsQuietLine(move);
}

// A figure's move seldom takes away more than two squares.
constexpr int kSquaresAMoveTakes = 2;

constexpr int kLoneRookPlies = 5; // driving a king with room to the edge takes more than three moves
constexpr int kLongProblemPlies = 5;

bool IsLoneRook(const TChessboard& b) {
    return b.m_whiteRooks == 1 && b.m_whiteQueens + b.m_whiteBishops + b.m_whiteKnights == 0;
}

TSquare SquareOfRook(const TChessboard& b) {
    const auto found = std::find(b.m_board.begin(), b.m_board.end(), kWhiteRook);
    return static_cast<TSquare>(found - b.m_board.begin());
}

/// Beside the king the rook guards what it can; from afar, on no line with him, it guards two rows at most.
bool IsRookTooWeak(CVerifiedMove& move, TSquare rook) {
    const TSquare king = BlackKingSquare(move.After());
    if (KingSteps(rook, king) == 1)
        return move.FreeSquares() > 2;
    return DirectionBetween(rook, king) == kNoDirection && move.FreeSquares() > 3;
}

} // namespace

bool IsQuietLine(CVerifiedMove& move) {
    const TChessboard& before = move.Before();
    if (move.IsCapture())
        return false;
    return before.m_pPrevious == nullptr ||
           (before.m_lastMove.m_nEnPassant == 0 && before.m_pPrevious->m_board[before.m_lastMove.m_nTo] == kNoFigure);
}

ERuling DoubtsMateInThree(CVerifiedMove& move) {
    constexpr int kThreeMovesPlies = 5;
    const TChessboard& b = move.After();
    const int heavy = WhiteHeavyFigures(b);
    if (b.m_nMoves != kThreeMovesPlies || b.m_bWhiteListsValid == 0 || heavy >= 2 || BlackRing(b) == 0)
        return ERuling::NotDoubtful;
    const bool bFirstRing = heavy == 0 || b.m_whiteQueens == 0;
    if (!HasRoomForThreeMoves(BlackRing(b), move.FreeSquares(), heavy, bFirstRing) || !IsPromotionTooFar(b) ||
        CountBlackKingFreeSquares(move.Before()) <= 4 + heavy)
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

int SurroundedLimit(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    int limit = 2;
    if (!move.Context().m_bAssertBKSStrict) {
        limit = 3;
        if (BlackFigureCount(b) == 0 && WhiteFigureCount(b) > 2)
            limit = (move.IsCapture() ? 5 : 4) + (KingDistance(b) < 4 ? 1 : 0);
    }
    const bool bQueens = b.m_whiteQueens >= 3 && WhiteFigureCount(b) + BlackFigureCount(b) <= 4;
    return limit + (bQueens ? 1 : 0);
}

ERuling DoubtsUnsurroundedKing(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    if (IsSecondForcedMateCycle(b))
        return ERuling::NotDoubtful;
    const int limit = SurroundedLimit(move);
    const int excess = move.FreeSquares() - limit;
    if (excess <= 0 || IsOneSquareInQuietLine(move, limit) ||
        (excess <= kSquaresAMoveTakes && CanTakeAwaySquares(b, limit)))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

ERuling DoubtsLoneRook(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    // With more plies left the rook and its king can drive him: that is how the ending is won.
    if (b.m_nInitialMoves <= kLongProblemPlies || b.m_nMoves > kLoneRookPlies || !IsLoneRook(b) ||
        !IsPromotionTooFar(b))
        return ERuling::NotDoubtful;
    const TSquare rook = SquareOfRook(b);
    const bool bAlone =
        !IsAttackedByWhite(b, FileOf(rook), RankOf(rook)) && !IsAttackedByBlackFigure(b, FileOf(rook), RankOf(rook));
    return bAlone && IsRookTooWeak(move, rook) ? move.DoubtfulUnlessMateInOne() : ERuling::NotDoubtful;
}

} // namespace quillon
