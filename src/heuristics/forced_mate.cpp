#include "heuristics/forced_mate.h"

#include "core/search_context.h"
#include "heuristics/forcing_moves.h"
#include "heuristics/heuristic_signature.h"
#include "search/control.h"
#include "search/find_mate.h"

namespace quillon {

namespace {

/// "Near the end" of a line is its last third; in a short problem a mate in five at least.
constexpr int kEndFraction = 3;
constexpr int kShortestEnd = 9;

/// From so many plies left on heuristics that were held back are in force.
int EndOfLine(const TChessboard& b) {
    const int third = b.m_nInitialMoves / kEndFraction;
    return third > kShortestEnd ? third : kShortestEnd;
}

/// The mask and the context of a run, put back when it ends.
class CForcedMateRun {
  public:
    explicit CForcedMateRun(TChessboard& child)
        : m_child(child), m_context(*child.m_pContext), m_nHeuristics(child.m_nHeuristics),
          m_nHeurParams(child.m_nHeurParams), m_bFFM(m_context.m_bFFM), m_nHeldBack(m_context.m_nFfmHeldBack),
          m_nHeldBackUntil(m_context.m_nFfmHeldBackUntil) {
        m_context.m_bFFM = true;
        m_context.m_nFfmHeldBack = 0;
        m_context.m_nFfmHeldBackUntil = 0;
        if (!KeepsOtherHeuristics(m_context))
            TakeOthersOff();
        child.m_nHeurParams = ComputeHeurParams(child);
    }
    ~CForcedMateRun() {
        m_child.m_nHeuristics = m_nHeuristics;
        m_child.m_nHeurParams = m_nHeurParams;
        m_context.m_bFFM = m_bFFM;
        m_context.m_nFfmHeldBack = m_nHeldBack;
        m_context.m_nFfmHeldBackUntil = m_nHeldBackUntil;
    }
    CForcedMateRun(const CForcedMateRun&) = delete;
    CForcedMateRun& operator=(const CForcedMateRun&) = delete;

  private:
    void TakeOthersOff() {
        const std::uint32_t others = m_child.m_nHeuristics & ~SH_FINDFORCEDMATE;
        const int until = EndOfLine(m_child);
        const bool bHoldBack = m_context.m_nFfmWithOther != 0;
        if (bHoldBack && m_child.m_nMoves <= until)
            return; // the end has begun already
        m_child.m_nHeuristics &= SH_FINDFORCEDMATE;
        if (!bHoldBack)
            return;
        m_context.m_nFfmHeldBack = others;
        m_context.m_nFfmHeldBackUntil = static_cast<std::uint16_t>(until);
    }

    TChessboard& m_child;
    TSearchContext& m_context;
    const std::uint32_t m_nHeuristics, m_nHeurParams;
    const bool m_bFFM;
    const std::uint32_t m_nHeldBack;
    const std::uint16_t m_nHeldBackUntil;
};

} // namespace

TMateResult FindForcedMateRoot(TChessboard& child, bool bLog) {
    const CForcedMateRun run(child);
    const TMateResult result = bLog ? FindMateBlack<kLoggingForcedNode>(&child) : FindMateBlack<kForcedNode>(&child);
    if (result == MR_MATE)
        return MR_MATE;
    if (IsStopping(child))
        return MR_DOUBTFUL;
    return result == MR_NOMATE || result == MR_NONE ? MR_NOMATE : MR_DOUBTFUL;
}

bool KeepsOtherHeuristics(const THeuristicParameters& parameters) {
    return parameters.m_bFfmCycleTwice || parameters.m_bFfmPreliminary || parameters.m_nFfmWithOther == 1;
}

void StartPreliminaryPass(TChessboard& root) {
    TSearchContext& context = *root.m_pContext;
    if (!context.m_bFfmPreliminary)
        return;
    context.m_nFfmSavedHeuristics = root.m_nHeuristics;
    root.m_nHeuristics &= ~(SH_KEEPKINGONTHEEDGE | SH_ASSERTBLACKKINGSURROUNDED);
    root.m_nHeuristics |= SH_KEEPKINGWITHINEXTEDGE;
    root.m_nHeurParams = ComputeHeurParams(root);
}

void ReleaseHeldBackHeuristics(TChessboard& b) {
    const TSearchContext& context = *b.m_pContext;
    // At one black node of the line only: a heuristic that the line drops below it stays dropped.
    const bool bDue = b.m_nMoves <= context.m_nFfmHeldBackUntil && b.m_nMoves + 2 > context.m_nFfmHeldBackUntil;
    if (!bDue || context.m_nFfmHeldBack == 0)
        return;
    b.m_nHeuristics |= context.m_nFfmHeldBack;
    b.m_nHeurParams = ComputeHeurParams(b);
}

bool TakesAllMoves(const TChessboard& b) {
    constexpr int kCodeWithoutOrdinaryMoves = 2;
    const TSearchContext& context = *b.m_pContext;
    const int played = b.m_nInitialMoves - b.m_nMoves;
    return context.m_bFfmPreliminary || b.m_nMoves < kFewestThreatPlies ||
           played < context.m_nFfmDepth - kCodeWithoutOrdinaryMoves;
}

} // namespace quillon
