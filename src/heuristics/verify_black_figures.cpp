#include "heuristics/verify_black_figures.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/mask_attacks.h"
#include "heuristics/capture_tests.h"
#include "heuristics/figure_origin.h"
#include "heuristics/king_edge.h"
#include "heuristics/pawn_breakthrough.h"
#include "heuristics/white_promotion.h"

namespace quillon {

namespace {

// --- SH_DONTLETFIGUREUNBLOCK

/// Black has little left but blocked pawns and a shut-in king: every move of a watched pawn is forced.
bool IsForcedPawnPlay(CVerifiedMove& move) {
    return move.Context().m_bBlockedPawns && BlackFigureCount(move.After()) < 2 && move.FreeSquares() < 2;
}

/// The pinned figure of SH_KEYWHITEFIGURE that stays on the line between key figure and king stays pinned.
bool StaysOnKeyLine(CVerifiedMove& move) {
    const TSearchContext& context = move.Context();
    if (!move.Has(SH_KEYWHITEFIGURE) || context.m_nKeyWhiteFigure >= kSquares ||
        OriginOfBlackFigure(move.After(), move.To()) != context.m_nPinnedFigure)
        return false;
    const TSquare king = BlackKingSquare(move.After());
    const TDirection line = DirectionBetween(context.m_nKeyWhiteFigure, king);
    return line != kNoDirection && DirectionBetween(context.m_nKeyWhiteFigure, move.To()) == line;
}

/// A king that may not move at all is mated by others' captures too: Black has more rooks than White could take, and
/// what they capture changes little.
bool IsCaptureAmongRooks(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    return move.Has(SH_KEEPKINGONTHEEDGE) && IsStrictEdge(b) && move.IsCapture() &&
           b.m_blackRooks > CountBlackRooksEnPrise(b);
}

/// With pawns alone White wins the race or nothing: a free pawn, near enough, and no heavy figure that has come loose.
bool IsPawnRaceWon(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    return HasFreeWhitePawn(b) && HasPawnInReachOfPromotion(b, (b.m_nMoves + 1) / 2) &&
           !IsStraightSlider(move.Moved(), kBlack);
}

// --- promoted figures

/// A promoted figure beside its king, with White strong, is mostly a shield: it may move.
bool IsShield(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    return KingSteps(move.To(), BlackKingSquare(b)) < 2 && WhiteFigureCount(b) >= 2;
}

ERuling DoubtsPromoted(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const TSearchContext& context = move.Context();
    if (IsShield(move))
        return ERuling::NotDoubtful;
    if (!context.m_bDontLetPromotedStrict) {
        const bool bFree = BlackFigureCount(b) >= 2 || context.m_nDropThreshold < 2;
        if (move.Has(SH_SWEEPINGWHITEROOK) || !bFree || IsAttackedByWhite(b, FileOf(move.To()), RankOf(move.To())))
            return ERuling::NotDoubtful;
    }
    return move.DoubtfulUnlessMateInOne();
}

/// Black has promoted before this move, and what moves is no pawn (that is the promotion itself).
bool IsMoveAfterPromotion(CVerifiedMove& move) {
    return (move.After().m_wBlackState & kBlackPromotionsMask) != 0 && !move.IsPromotion() &&
           move.Moved() != kNoFigure && KindOf(move.Moved()) != kPawn;
}

// --- SH_DONTLETBLACKQUEENCHECKTWICE

/// Did the queen that has just moved also give check with Black's move before?
bool CheckedBefore(CVerifiedMove& move) {
    const TChessboard* const last = move.Before().m_pPrevious; // after Black's move before this one
    return last != nullptr && last->m_pPrevious != nullptr && last->m_lastMove.m_nTo == move.From() &&
           last->m_whiteChecker == static_cast<std::int8_t>(move.From());
}

bool IsStepOnEdge(CVerifiedMove& move) {
    return RingOf(FileOf(move.To()), RankOf(move.To())) == 0 && KingSteps(move.From(), move.To()) == 1;
}

/// On the line of the check, behind White's king: the queen looks through him.
bool IsBehindKing(const TChessboard& b, int square) {
    if (b.m_whiteChecker < 0 || b.m_whiteChecker >= kSquares)
        return false;
    const TDirection line = DirectionBetween(b.m_whiteChecker, WhiteKingSquare(b));
    return line != kNoDirection && DirectionBetween(WhiteKingSquare(b), square) == line;
}

} // namespace

TSquare InitialSquareOfMoved(CVerifiedMove& move) {
    const auto& watched = move.Before().m_blockedFigures;
    const auto found = std::find(watched.begin(), watched.end(), move.From());
    if (move.Moved() == kNoFigure || found == watched.end())
        return kNoSquare;
    const TSearchContext& context = move.Context();
    const auto i = static_cast<std::size_t>(found - watched.begin());
    const TSquare initial =
        context.m_bBlockedFiguresByHand ? context.m_BlockedFigures[i] : context.m_BlockedFiguresNow[i];
    return initial < kSquares ? initial : move.From();
}

ERuling DoubtsUnblockedFigure(CVerifiedMove& move) {
    const TSquare initial = InitialSquareOfMoved(move);
    const int allowed = move.Context().m_bBishopIsMajor ? 2 : 1; // that bishop still finds it two squares away
    if (initial == kNoSquare || KingSteps(initial, move.To()) <= allowed || IsForcedPawnPlay(move))
        return ERuling::NotDoubtful;
    const TChessboard& b = move.After();
    if (WhiteFigureCount(b) == 0)
        return IsPawnRaceWon(move) ? ERuling::NotDoubtful : move.DoubtfulUnlessMateInOne();
    if (IsCaptureAmongRooks(move) || StaysOnKeyLine(move) || CanWhiteCaptureOn(b, move.To()))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

ERuling DoubtsPromotedQueenMove(CVerifiedMove& move) {
    return IsMoveAfterPromotion(move) && move.Moved() == kBlackQueen ? DoubtsPromoted(move) : ERuling::NotDoubtful;
}

ERuling DoubtsPromotedFigureMove(CVerifiedMove& move) {
    const bool bCase = IsMoveAfterPromotion(move) && !move.IsByKing() && IsPromotedBlackFigure(move.After(), move.To());
    return bCase ? DoubtsPromoted(move) : ERuling::NotDoubtful;
}

bool CanKingStayClose(const TChessboard& b) {
    const TSquare white = WhiteKingSquare(b), black = BlackKingSquare(b);
    for (TMask steps = KingAttacks(white) & ~WhiteFigures(b.m_board.data()); steps != 0;) {
        const int square = TakeSquare(steps);
        if (KingSteps(square, black) <= 2 && !IsBehindKing(b, square) &&
            !IsAttackedByBlack(b, FileOf(square), RankOf(square)))
            return true;
    }
    return false;
}

ERuling DoubtsSecondQueenCheck(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const bool bChecks = move.Moved() == kBlackQueen && b.m_whiteChecker == static_cast<std::int8_t>(move.To());
    if (!bChecks || !CheckedBefore(move) || IsStepOnEdge(move) || CanWhiteCaptureOn(b, move.To()))
        return ERuling::NotDoubtful;
    if (b.m_whiteQueens < 2 && KingDistance(b) < 3 && CanKingStayClose(b))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

} // namespace quillon
