#include "heuristics/verify_edge.h"

#include <algorithm>

#include "core/generation.h"
#include "heuristics/capture_tests.h"
#include "heuristics/dynamic_relaxation.h"
#include "heuristics/king_edge.h"
#include "heuristics/king_net.h"

namespace quillon {

namespace {

constexpr int kFewestPliesForShortMate = 9; // with fewer the recursion itself is as quick
constexpr int kPliesBeforeFreeCaptures = 3;

bool IsOnRootSquare(CVerifiedMove& move) {
    return move.Context().m_pRoot != nullptr && move.To() == BlackKingSquare(*move.Context().m_pRoot);
}

/// The king has taken something on the way: once the play has begun that is a line of its own. In the sea-snake play a
/// minor figure may fall at once.
bool IsExcusedByCapture(CVerifiedMove& move) {
    if (!move.IsCapture())
        return false;
    const TChessboard& b = move.After();
    const TFigure kind = KindOf(move.Captured());
    return b.m_nInitialMoves - b.m_nMoves >= kPliesBeforeFreeCaptures ||
           (move.Has(SH_SEASNAKE) && (kind == kBishop || kind == kKnight));
}

/// The last word: mate in one, the deferred check, and a short mate where there is time for one.
ERuling Conclude(CVerifiedMove& move, EEdgeRelaxation relaxation, bool bShortMate) {
    if (move.AllowsMateInOne())
        return ERuling::NotDoubtful;
    if (relaxation == EEdgeRelaxation::Deferred) {
        DeferEdgeCheck(move);
        return ERuling::NotDoubtful;
    }
    return bShortMate ? move.DoubtfulUnlessShortMate(kShortMatePlies) : ERuling::Doubtful;
}

EEdgeRelaxation RelaxationOfEdge(CVerifiedMove& move) {
    return move.Context().m_bRelaxExtEdgeOnly ? EEdgeRelaxation::None : FindRelaxation(move);
}

bool IsExcusedFromStrictEdge(CVerifiedMove& move) {
    return IsExcusedByReturn(move) || IsMoveOfZugzwang(move) || IsBackHomeForGood(move) || IsExcusedByCapture(move);
}

ERuling DoubtsKingMove(CVerifiedMove& move) {
    if (!move.IsByKing() || IsExcusedFromStrictEdge(move))
        return ERuling::NotDoubtful;
    const TChessboard& b = move.After();
    if (IsBlackStripped(b))
        return BlackRing(b) == 0 ? ERuling::NotDoubtful : move.DoubtfulUnlessMateInOne();
    const EEdgeRelaxation relaxation = RelaxationOfEdge(move);
    if (relaxation == EEdgeRelaxation::Relaxed)
        return ERuling::NotDoubtful;
    return Conclude(move, relaxation, b.m_nMoves >= kFewestPliesForShortMate);
}

ERuling DoubtsLeftEdge(CVerifiedMove& move) {
    if (EdgeRing(move.After()) == 0)
        return ERuling::NotDoubtful;
    const EEdgeRelaxation relaxation = RelaxationOfEdge(move);
    return relaxation == EEdgeRelaxation::Relaxed ? ERuling::NotDoubtful : Conclude(move, relaxation, false);
}

/// The rook that sweeps along White's first rank is at work there.
bool IsRookSweeping(const TChessboard& b) {
    return std::find(b.m_board.begin(), b.m_board.begin() + 8, kWhiteRook) != b.m_board.begin() + 8;
}

/// A new black figure on the king's wing has changed the play there: where he stands is no longer the question.
bool HasPromotedOnKingsWing(CVerifiedMove& move) {
    const bool bKingSide = move.After().m_blackKingFile >= 4;
    return move.IsPromotion() && (FileOf(move.To()) >= 4) == bKingSide;
}

bool IsWithinExtendedEdge(CVerifiedMove& move) {
    const int ring = EdgeRing(move.After());
    if (!move.Context().m_bExtEdgeStrict)
        return ring < 2 || HasPromotedOnKingsWing(move);
    return ring == 0 || (ring == 1 && (!move.IsByKing() || EdgeRing(move.Before()) != 1));
}

} // namespace

ERuling DoubtsKingFarFromCorner(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const int limit = move.Context().m_nKingNearCorner;
    const int files = kEdgeDistance[b.m_blackKingFile], ranks = kEdgeDistance[b.m_blackKingRank];
    const bool bNear = limit > 0 ? files + ranks <= limit : std::max(files, ranks) <= -limit;
    return bNear ? ERuling::NotDoubtful : move.DoubtfulUnlessMateInOne();
}

ERuling DoubtsKingOffEdge(CVerifiedMove& move) {
    return IsStrictEdge(move.After()) ? DoubtsKingMove(move) : DoubtsLeftEdge(move);
}

ERuling DoubtsKingOffExtendedEdge(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    if (move.Has(SH_SWEEPINGWHITEROOK) && WhiteFigureCount(b) != 0 && !IsRookSweeping(b))
        return ERuling::NotDoubtful;
    if (IsWithinExtendedEdge(move))
        return ERuling::NotDoubtful;
    const EEdgeRelaxation relaxation = FindRelaxation(move);
    return relaxation == EEdgeRelaxation::Relaxed ? ERuling::NotDoubtful : Conclude(move, relaxation, false);
}

bool IsExcusedByReturn(CVerifiedMove& move) {
    return move.Context().m_bAllowExceptions && move.IsByKing() && !IsOnRootSquare(move) &&
           IsBlackKingForcedBack(move.After(), move.From());
}

bool IsBackHomeForGood(CVerifiedMove& move) {
    return move.IsByKing() && IsOnRootSquare(move) && IsHeldBySafeWhiteMan(move.After(), move.From());
}

bool IsMoveOfZugzwang(CVerifiedMove& move) {
    const TChessboard& before = move.Before();
    if (!move.Has(SH_DONTLETFIGUREUNBLOCK) || before.m_pPrevious == nullptr ||
        before.m_pPrevious->m_pPrevious == nullptr)
        return false;
    const TSquare last = before.m_pPrevious->m_lastMove.m_nTo; // Black's move before this one
    const auto& watched = before.m_blockedFigures;
    if (std::find(watched.begin(), watched.end(), last) == watched.end())
        return false;
    TMove list[kMaxMoves];
    return GenerateBlackFigureMoves(before, last, list) == 0;
}

bool IsBlackStripped(const TChessboard& b) {
    const TSearchContext& context = *b.m_pContext;
    if (context.m_nEdgeHeavyFigures + context.m_nEdgeMinorFigures == 0)
        return false;
    return b.m_blackQueens + b.m_blackRooks == 0 && b.m_blackBishops + b.m_blackKnights <= 1 &&
           WhiteHeavyFigures(b) >= context.m_nEdgeHeavyFigures &&
           b.m_whiteBishops + b.m_whiteKnights >= context.m_nEdgeMinorFigures;
}

} // namespace quillon
