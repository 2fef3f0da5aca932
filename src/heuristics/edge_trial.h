#pragma once
// A trial with SH_KEEPKINGONTHEEDGE added: where the black king stands on the edge and cannot leave it at once, White
// often mates without ever letting him go. If it does, that is a mate; if not, nothing is lost but the time.

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"
#include "core/search_context.h"

namespace quillon {

/// SH_KEEPKINGONTHEEDGE is in force because of such a trial, not as a choice of the pass.
[[nodiscard]] inline bool IsEdgeTrialRunning(const TChessboard& b) {
    return (b.m_nHeuristics & SH_KEEPKINGONTHEEDGE) != 0 && b.m_pContext->m_bEdgeTrial;
}

/// Should the position after a white move be tried so first? Only behind White's second move (each trial could double
/// the work below it), in a pass that has heuristics but none of the edge, with a king on the edge, not in check, who
/// has no free square off the edge, against a heavy figure.
[[nodiscard]] bool IsEdgeTrialWorthwhile(const TChessboard& child);

/// While it lives the trial runs.
class CEdgeTrial {
  public:
    explicit CEdgeTrial(TChessboard& child);
    ~CEdgeTrial();
    CEdgeTrial(const CEdgeTrial&) = delete;
    CEdgeTrial& operator=(const CEdgeTrial&) = delete;

  private:
    TChessboard& m_child;
    const std::uint32_t m_nHeuristics, m_nHeurParams;
    const bool m_bEdgeTrial;
};

} // namespace quillon
