#include "heuristics/verify_material.h"

#include <array>

#include "core/attacks.h"
#include "core/precalc_at_hand.h"
#include "core/queries.h"
#include "heuristics/capture_tests.h"
#include "heuristics/data_reduction.h"
#include "heuristics/figure_origin.h"
#include "heuristics/heuristic_set.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/white_promotion.h"
#include "search/analysis.h"
#include "search/move_score.h"
#include "search/precalc_use.h"

namespace quillon {

namespace {

// --- SH_SAVEQUEENROOK

// With no more free squares the king is in a net that may hold without heavy figures. With more, none of the exceptions
// is a case: the loss of the last heavy figure is doubtful then, as the heuristic has it.
constexpr int kNetSquares = 2;

/// A lone bishop counts where the initial analysis says that it does the work of a heavy figure.
bool IsLostMajorBishop(CVerifiedMove& move) {
    return move.Captured() == kWhiteBishop && move.Before().m_whiteQueens == 0 && move.Context().m_bBishopIsMajor &&
           BlackFigureCount(move.After()) < 2 && move.FreeSquares() >= kNetSquares;
}

/// The plain form: every heavy figure counts. What takes it back, and another to mate with, rescue together.
ERuling DoubtsLossPlainly(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    if (!IsStraightSlider(move.Captured(), kWhite) && !IsLostMajorBishop(move))
        return ERuling::NotDoubtful;
    const bool bForceLeft = WhiteHeavyFigures(b) != 0 || HasAdvancedPawn(b);
    if (bForceLeft && CanWhiteCaptureOn(b, move.To()))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

/// The strict form's case: the last heavy figure is gone, or the queen, leaving rooks.
bool IsDecisiveLoss(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const bool bQueenForRook = KindOf(move.Captured()) == kQueen && b.m_whiteQueens == 0;
    if (!move.IsCapture() || (WhiteHeavyFigures(b) != 0 && !bQueenForRook))
        return false;
    return IsStraightSlider(move.Captured(), kWhite) || HasWhiteLostHeavyFigure(b);
}

/// White has had its move since the loss: it must have a heavy figure, or get one now.
ERuling DoubtsRunningCheck(CVerifiedMove& move) {
    if (WhiteHeavyFigures(move.After()) != 0 || move.AllowsMateInOne() || CanPromoteWithEffect(move.After()))
        return ERuling::NotDoubtful;
    return ERuling::Doubtful;
}

/// In the whole subtree of the parent the heuristic has nothing left to do: without its bit the positions there are one
/// with those of other lines for the register.
void TakeOffMask(CVerifiedMove& move) {
    for (TChessboard* b : {&move.Before(), &move.After()}) {
        b->m_nHeuristics &= ~SH_SAVEQUEENROOK;
        b->m_nHeurParams = ComputeHeurParams(*b);
    }
}

ERuling DoubtsLossStrictly(CVerifiedMove& move) {
    if ((move.After().m_wBlackState & kWhiteMajorFigureLost) != 0)
        return DoubtsRunningCheck(move);
    if (HasNothingToSave(move.Before())) {
        TakeOffMask(move);
        return ERuling::NotDoubtful;
    }
    if (!IsDecisiveLoss(move))
        return ERuling::NotDoubtful;
    if (move.AllowsMateInOne())
        return ERuling::NotDoubtful;
    if (move.FreeSquares() > kNetSquares)
        return ERuling::Doubtful;
    const bool bGoesOn = CanPromoteWithEffect(move.After()) || move.Mark(kMoveDefersEdgeCheck);
    return bGoesOn ? ERuling::NotDoubtful : ERuling::Doubtful;
}

// --- SH_DONTLOSEANYFIGURES

/// Figures that White may be short of before one more loss counts.
constexpr int kFiguresToSpare = 0;

constexpr int kHeavyValue = 4; // of the table of captures: rooks, queens, the king

// Mode 2 spares the pawns up to the fifth rank.
bool IsAdvancedSquare(TSquare square) { return (square & 56) > 39; }

/// Of a lost pawn: another one, as far on, remains to promote.
bool IsPawnReplaced(CVerifiedMove& move) { return HasPawnAsFarAs(move.After(), move.To()); }

// --- SH_REDUCTIONTOGLOBREGPOS

/// Takes those white men off the board for which the counters have been lowered.
void TakeUncountedMenOff(TChessboard& b) {
    std::array<int, kKindMask + 1> nSeen{};
    for (TFigure& man : b.m_board)
        if (IsWhite(man) && man != kWhiteKing && ++nSeen[KindOf(man)] > CounterOf(b, man))
            man = kNoFigure;
}

/// Do the data say that White does not mate in time from the position without the white men that keep it out of them?
/// A man that goes may leave the black king in check: of such a position they say nothing. The moves that a short-mate
/// search allows in addition are no matter here, and stay untouched.
bool HasNoMateReduced(TChessboard b) {
    if (!ArePrecalcDataAtHand() || !LowerCountersToData(b, IsPrecalcDataAvailable))
        return false;
    TakeUncountedMenOff(b);
    RebuildWhiteLists(b);
    if (IsAttackedByWhite(b, b.m_blackKingFile, b.m_blackKingRank))
        return false;
    const std::uint16_t n = HalfMovesByData(b);
    return n == 0 || (n != kUnknownHalfMoves && n > b.m_nMoves);
}

} // namespace

bool HasNothingToSave(const TChessboard& b) {
    const int figures = WhiteHeavyFigures(b) + (b.m_pContext->m_bBishopIsMajor ? b.m_whiteBishops : 0);
    return figures == 0 && !HasPawnInReachOfPromotion(b, b.m_nMoves / 2);
}

ERuling DoubtsLostHeavyFigure(CVerifiedMove& move) {
    return move.Context().m_bSaveRookQueenStrict ? DoubtsLossStrictly(move) : DoubtsLossPlainly(move);
}

bool IsCountedLoss(CVerifiedMove& move) {
    const bool bPawn = KindOf(move.Captured()) == kPawn;
    if (!move.IsCapture())
        return false;
    switch (move.Context().m_nSaveFiguresMode) {
    case 0: {
        const int least = move.After().m_pAnalysis->m_rootMaterial.m_nWhiteFigures - kFiguresToSpare - 1;
        return !bPawn && WhiteFigureCount(move.After()) < least;
    }
    case 1:
        return true;
    default:
        return !bPawn || IsAdvancedSquare(move.To());
    }
}

ERuling DoubtsLostFigure(CVerifiedMove& move) {
    if ((move.After().m_wBlackState & kLossesReleased) != 0 || !IsCountedLoss(move))
        return ERuling::NotDoubtful;
    if (CaptureValue(move.TakenThereBefore()) >= kHeavyValue) // it was an exchange, and a good one
        return ERuling::NotDoubtful;
    if (move.AllowsMateInOne())
        return ERuling::NotDoubtful;
    return KindOf(move.Captured()) == kPawn && IsPawnReplaced(move) ? ERuling::NotDoubtful : ERuling::Doubtful;
}

ERuling DoubtsLostKeyFigure(CVerifiedMove& move) {
    if (!move.IsCapture() || move.To() != move.Context().m_nKeyWhiteFigure)
        return ERuling::NotDoubtful;
    // A figure that took it can be taken in turn, and the square is White's again; a pawn is not worth that.
    if (KindOf(move.Moved()) != kPawn && IsAttackedByWhite(move.After(), FileOf(move.To()), RankOf(move.To())))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

ERuling DoubtsReducedMaterial(CVerifiedMove& move) {
    constexpr int kFewestPlies = 18;
    const TChessboard& b = move.After();
    if (b.m_nMoves < kFewestPlies || b.m_blackPawns >= 4 || WhiteFigureCount(b) + BlackFigureCount(b) >= 5 ||
        b.m_whiteKnights >= 2)
        return ERuling::NotDoubtful;
    return HasNoMateReduced(b) ? move.DoubtfulUnlessMateInOne() : ERuling::NotDoubtful;
}

} // namespace quillon
