// The cycle of FindForcedMate: runs with ever more moves that count as forcing, each cheap compared with a pass that
// takes all moves.

#include <string>

#include "core/attacks.h"
#include "heuristics/black_mobility.h"
#include "heuristics/forced_mate_depth.h"
#include "heuristics/king_confinement.h"
#include "heuristics/king_edge.h"
#include "heuristics/queen_mates.h"
#include "heuristics/relaxation_clock.h"
#include "heuristics/relaxation_log.h"
#include "heuristics/relaxation_rules.h"

namespace quillon {

namespace {

constexpr int kCheckOnly = 2, kThreatOne = 3, kThreatOneMore = 4, kThreatTwo = 5, kThreatTwoMore = 6;

bool HasCode(const TRelaxation& r, int code) { return r.m_parameters.m_nFfmDepth == code; }

void SetCode(TRelaxation& r, int code) { r.m_parameters.m_nFfmDepth = static_cast<std::uint8_t>(code); }

/// Special queen test: with a single black queen and no black rook the moves against the queen are among the forcing
/// ones at every depth, and what "#1+" has more than "#1" is mostly these.
bool AreQueenMovesListedAnyway(const TChessboard& b) { return b.m_blackQueens == 1 && b.m_blackRooks == 0; }

/// The user's allowance: one code deeper a step.
bool DeepenAsAllowed(TRelaxation& r) {
    const THeuristicParameters& p = r.m_parameters;
    const int allowance = p.m_bFfmCycleTwice ? p.m_nFfmCycleRelaxations : p.m_nFfmRelaxations;
    if (p.m_nFfmDepth - p.m_nFfmStartDepth >= allowance || p.m_nFfmDepth >= kMaxForcedMateDepth)
        return false;
    SetCode(r, p.m_nFfmDepth + 1);
    if (HasCode(r, kThreatOneMore) && AreQueenMovesListedAnyway(r.m_board))
        SetCode(r, kThreatTwo);
    return true;
}

/// "#2" without a queen is worth widening to "#2+" where Black parries by checks, and where the problem is short.
bool WidenWithoutQueen(TRelaxation& r) {
    constexpr int kShortPlies = 22;
    const TChessboard& b = r.m_board;
    if (!HasCode(r, kThreatTwo) || b.m_whiteQueens != 0)
        return false;
    if (!(b.m_blackQueens > 0 && DefendsByChecks(b)) && b.m_nInitialMoves >= kShortPlies)
        return false;
    SetCode(r, kThreatTwoMore);
    return true;
}

/// Where the other heuristics stood beside the runs all the time, a confinement of the king that they lack may stand in
/// for the forcing moves: a ring of attacked squares if White has the figures for it and the king little room, else the
/// extended edge if it holds him. 0 for none.
std::uint32_t ReplacementOfForcedMate(const TRelaxation& r) {
    constexpr std::uint32_t kConfining =
        SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED | SH_KEEPKINGNEARCORNER;
    constexpr int kLittleRoom = 3;
    if (r.Has(kConfining))
        return 0;
    if (WhiteFigureCount(r.m_board) >= 2 && CountBlackKingFreeSquares(r.m_board) <= kLittleRoom)
        return SH_ASSERTBLACKKINGSURROUNDED;
    return CanHoldExtEdge(r.m_board) ? SH_KEEPKINGWITHINEXTEDGE : 0;
}

bool ReplaceBesideOthers(TRelaxation& r) {
    if (r.m_parameters.m_nFfmWithOther != 1)
        return false;
    const std::uint32_t replacement = ReplacementOfForcedMate(r);
    if (replacement == 0)
        return false;
    r.TakeOff(SH_FINDFORCEDMATE);
    r.Set(replacement);
    return true;
}

/// Is one more run beyond the allowance worth its time? Not in a corner full of stalemates, not where the king comes
/// out on top by what he takes, and not where the queen's checks have been tried by now.
bool IsWorthAnotherRun(const TRelaxation& r) {
    const TChessboard& b = r.m_board;
    const int figures = WhiteFigureCount(b);
    if (figures < 2 || (figures == 2 && b.m_whiteQueens != 0))
        return false;
    if (IsBlackKingInCorner(b) && figures > 3 && IsStalematePosition(b) && CountBlackMoves(b) <= 1)
        return false;
    return !IsBlackAheadAfterKingCapture(b) && !(figures >= 3 && HasQueenCheck(b));
}

// ---- the clock

constexpr std::int64_t kLimitMs = 1000, kNearLimitFromMs = 800, kNearLimitToMs = 1200;

void LogNearLimit(const TRelaxation& r, std::int64_t ms) {
    if (ms < kNearLimitFromMs || ms > kNearLimitToMs)
        return;
    LogRelaxation(r.m_board,
                  "Time dependent relaxation near the limit: calcTime=" + std::to_string(ms) +
                      " msec.; limit=1000 msec. " +
                      (ms < kLimitMs ? "(additional relaxation accepted)" : "(additional relaxation refused)"));
}

bool WerePassesQuick(const TRelaxation& r) {
    if (r.m_clock != ERelaxationClock::Stamp)
        return r.m_clock == ERelaxationClock::AlwaysQuick;
    const std::int64_t ms = MsUntilRelaxation(*r.m_board.m_pAnalysis, r.m_parameters.m_nRelaxations);
    LogNearLimit(r, ms);
    return ms < kLimitMs;
}

bool DeepenInTime(TRelaxation& r) {
    if (!IsWorthAnotherRun(r) || !WerePassesQuick(r) || r.m_parameters.m_nFfmDepth >= kThreatTwoMore ||
        (HasCode(r, kCheckOnly) && r.m_board.m_whiteQueens != 0))
        return false;
    SetCode(r, r.m_parameters.m_nFfmDepth + 1);
    if (HasCode(r, kThreatOne) || HasCode(r, kThreatTwo)) // there is time for the wider form at once
        SetCode(r, r.m_parameters.m_nFfmDepth + 1);
    return true;
}

/// The first of two cycles is followed by the second, without the other heuristics; the last by passes of their own.
void EndCycle(TRelaxation& r) {
    THeuristicParameters& p = r.m_parameters;
    if (!p.m_bFfmCycleTwice) {
        r.TakeOff(SH_FINDFORCEDMATE);
        return;
    }
    p.m_bFfmCycleTwice = false;
    p.m_nFfmWithOther = 0;
    p.m_nFfmDepth = p.m_nFfmStartDepth;
}

} // namespace

ERelaxation RelaxForcedMate(TRelaxation& r) {
    if (!r.Has(SH_FINDFORCEDMATE))
        return ERelaxation::NotMine;
    if (r.m_parameters.m_bFfmPreliminary) {
        r.m_parameters.m_bFfmPreliminary = false;
        r.m_board.m_nHeuristics = r.m_parameters.m_nFfmSavedHeuristics;
        return ERelaxation::Done;
    }
    if (DeepenAsAllowed(r) || WidenWithoutQueen(r) || ReplaceBesideOthers(r))
        return ERelaxation::Done;
    if (DeepenInTime(r))
        return ERelaxation::ByClock;
    EndCycle(r);
    return ERelaxation::Done;
}

} // namespace quillon
