// Trials of 1, 3, 5, ... plies up to a horizon, each a run of the ordinary recursion on the re-labelled position; then
// a few attempts at long forced lines (long_lines.h).
//
// While a trial of k plies runs inside a position with m plies left, any mate within m plies would do. So answers of
// the register and of precalculated data may exceed the trial by m_nAdditionalMoves white moves.

#include "search/quicker_mate.h"

#include <algorithm>

#include "core/search_context.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/search_hooks.h"
#include "search/analysis.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/forcing_proof.h"
#include "search/long_lines.h"
#include "search/quicker_horizon.h"
#include "search/repetition.h"

namespace quillon {

namespace {

constexpr int kLongestHorizonWithAttempts = 13; // a longer one has looked deep enough
constexpr int kLeastSpareForAllowance = 14;     // plies between trial and stipulation

/// The allowance is told to be granted only where one white figure faces none.
bool IsAllowanceGranted(const TChessboard& p) {
    if (!p.m_pContext->m_bAllowAdditionalAlways)
        return true;
    return WhiteMen(p) - p.m_whitePawns == 1 && BlackMen(p) == p.m_blackPawns;
}

/// With one ply left a trial would be the very node that follows.
constexpr int kShortestSearched = 3;

/// With three plies left and nothing in force there is one trial, the mate on the move: it needs none of the setting
/// up.
bool IsMateInOneAll(const TChessboard& p) {
    return p.m_nMoves == 3 && p.m_nHeuristics == 0 && (p.m_wBlackState & kCappedByContext) == 0 &&
           p.m_pContext->m_nAdditionalMoves == 0 && p.m_pAnalysis->m_shLookForQuickerMateDepth < 0;
}

/// The search inside one position: nesting depth and allowance are put back on every way out.
class CQuickerSearch {
  public:
    explicit CQuickerSearch(TChessboard& p) : m_p(p), m_context(*p.m_pContext), m_m(p.m_nMoves) {
        if (++m_context.m_nQuickerLevel == 1) {
            m_context.m_nQuickerStart = p.m_nMoves;
            m_context.m_pQuickerRoot = &p;
            m_context.m_bAdditionalMovesUsed = false; // an answer of an earlier search is not this one's
        }
    }
    ~CQuickerSearch() {
        if (--m_context.m_nQuickerLevel == 0)
            m_context.m_nQuickerSpare = m_context.m_nAdditionalMoves = 0;
    }
    CQuickerSearch(const CQuickerSearch&) = delete;
    CQuickerSearch& operator=(const CQuickerSearch&) = delete;

    bool Run() {
        const int d = QuickerHorizon(m_p);
        if (d == kQuickerSearchRefused)
            return false;
        bool bForcingDue = IsForcingProofEligible();
        for (int k = 1; k <= d; k += 2) {
            if (bForcingDue && (k >= m_m / 3 || k >= d - 1)) {
                bForcingDue = false;
                if (RunForcingProof())
                    return true;
            }
            if (RunTrial(k, d))
                return true;
            if (IsStopping(m_p))
                return false;
        }
        return d > 0 && d <= kLongestHorizonWithAttempts && IsOutermost() && DropPromotionMark(FindLongLine(m_p));
    }

  private:
    [[nodiscard]] bool IsOutermost() const { return m_context.m_nQuickerLevel == 1; }

    [[nodiscard]] bool IsForcingProofEligible() const {
        const int shortest = (m_p.m_wKingState & kNarrowPlay) != 0 ? 13 : 11;
        return m_p.m_byPass == 1 && m_p.m_whiteChecker == kNoChecker && !m_context.m_bNoForcingProof &&
               m_m > shortest && (m_p.m_nHeuristics & SH_SWEEPINGWHITEROOK) == 0 && m_p.m_bWhiteListsValid != 0 &&
               IsOutermost();
    }

    /// At the real length, as a part of the main search.
    bool RunForcingProof() {
        --m_context.m_nQuickerLevel;
        const bool bProved = ProveByForcing(m_p);
        ++m_context.m_nQuickerLevel;
        return DropPromotionMark(bProved);
    }

    /// A line that was not tried as a node says nothing of other promotions of Black's last move.
    bool DropPromotionMark(bool bProved) {
        m_context.m_bUnderPromotionEqual = false;
        return bProved;
    }

    /// One run of the recursion with k plies. The whole record is put back: a node may change heuristics and marks.
    bool RunTrial(int k, int d) {
        const TChessboard saved = m_p;
        const int spare = (m_m - k) / 2;
        const std::int16_t additional = m_context.m_nAdditionalMoves, spareBefore = m_context.m_nQuickerSpare;
        SetAllowance(k, d, spare);
        const std::uint16_t mark = RepetitionMark(m_p, m_m);
        RepetitionMark(m_p, k) = mark;
        m_p.m_nMoves = static_cast<std::uint16_t>(k);
        if ((m_p.m_nHeuristics & SH_FINDFORCEDMATE) != 0) // the trial's nodes take all moves: a forced node's doubt
            DropForcedMate();                             // is none of theirs
        const TMateResult result = FindMateWhite(&m_p, true);
        m_p = saved;
        RepetitionMark(m_p, m_m) = mark; // a trial of the full length has used the very entry
        if (!IsOutermost()) {
            m_context.m_nAdditionalMoves = additional;
            m_context.m_nQuickerSpare = spareBefore;
        }
        return result > 0;
    }

    void DropForcedMate() {
        m_p.m_nHeuristics &= ~SH_FINDFORCEDMATE;
        m_p.m_nHeurParams = ComputeHeurParams(m_p);
    }

    void SetAllowance(int k, int d, int spare) {
        if (!IsOutermost()) {
            m_context.m_nQuickerSpare = static_cast<std::int16_t>(m_context.m_nQuickerSpare + spare);
            if (m_context.m_nAdditionalMoves != 0)
                m_context.m_nAdditionalMoves = static_cast<std::int16_t>(m_context.m_nAdditionalMoves + spare);
            return;
        }
        m_context.m_nQuickerSpare = static_cast<std::int16_t>(spare);
        if (k + 6 == d && m_m - k > kLeastSpareForAllowance && (m_p.m_wKingState & kPrecalcCanAnswer) == 0 &&
            IsAllowanceGranted(m_p)) {
            m_context.m_bAdditionalMovesUsed = false;
            m_context.m_nAdditionalMoves = static_cast<std::int16_t>(spare);
        } else if (m_context.m_nAdditionalMoves != 0) {
            m_context.m_nAdditionalMoves = static_cast<std::int16_t>(spare);
        }
    }

    TChessboard& m_p;
    TSearchContext& m_context;
    const int m_m;
};

} // namespace

bool FindQuickerMate(TChessboard* p) {
    if (p->m_pContext->m_bNoQuicker || p->m_nMoves < kShortestSearched)
        return false;
    if (IsMateInOneAll(*p)) {
        if (p->m_pContext->m_nQuickerLevel == 0)
            p->m_pContext->m_bAdditionalMovesUsed = false;
        CountTrialPosition(*p->m_pContext, *p->m_pAnalysis);
        return FindMateInOne(p);
    }
    return CQuickerSearch(*p).Run();
}

} // namespace quillon
