#include "heuristics/look_aside.h"

#include <algorithm>
#include <cassert>

#include "core/queries.h"
#include "core/search_context.h"
#include "heuristics/heuristic_signature.h"
#include "search/find_mate.h"
#include "search/repetition.h"

namespace quillon {

namespace {

/// While it lives a look aside of so many plies runs. Its positions are none of the main search; an allowance of a
/// trial around it is not its own.
class CAside {
  public:
    CAside(TSearchContext& context, int nSpare)
        : m_context(context), m_nSpare(context.m_nQuickerSpare), m_nAdditional(context.m_nAdditionalMoves),
          m_bAdditionalUsed(context.m_bAdditionalMovesUsed), m_bUnderPromotionEqual(context.m_bUnderPromotionEqual) {
        ++context.m_nQuickerLevel;
        context.m_nQuickerSpare = static_cast<std::int16_t>(m_nSpare + nSpare);
        context.m_nAdditionalMoves = 0;
    }
    ~CAside() {
        --m_context.m_nQuickerLevel;
        m_context.m_nQuickerSpare = m_nSpare;
        m_context.m_nAdditionalMoves = m_nAdditional;
        m_context.m_bAdditionalMovesUsed = m_bAdditionalUsed;
        m_context.m_bUnderPromotionEqual = m_bUnderPromotionEqual; // of the line, not of this look
    }
    CAside(const CAside&) = delete;
    CAside& operator=(const CAside&) = delete;

  private:
    TSearchContext& m_context;
    const std::int16_t m_nSpare, m_nAdditional;
    const bool m_bAdditionalUsed, m_bUnderPromotionEqual;
};

bool FindMateAside(const TChessboard& b, int nPlies, ELookAside kind) {
    TSearchContext& context = *b.m_pContext;
    TChessboard copy = b;
    copy.m_nMoves = static_cast<std::uint16_t>(nPlies);
    copy.m_nHeuristics = kind == ELookAside::Proof ? 0 : b.m_nHeuristics & ~SH_FINDFORCEDMATE;
    copy.m_byPass = copy.m_nHeuristics == 0 ? 2 : b.m_byPass;
    copy.m_nHeurParams = ComputeHeurParams(copy);
    std::uint16_t& mark = RepetitionMark(copy, nPlies);
    const std::uint16_t markOfLine = mark;
    mark = 0;
    const CAside aside(context, std::max(0, (b.m_nMoves - nPlies) / 2));
    const bool bMate = FindMateWhite(&copy, false) == MR_MATE;
    mark = markOfLine;
    return bMate;
}

} // namespace

bool HasMateWithin(const TChessboard& b, int nPlies, ELookAside kind) {
    assert((nPlies & 1) == 1);
    if (HasMateInOne(b))
        return true;
    for (int k = 3; k <= nPlies; k += 2)
        if (FindMateAside(b, k, kind))
            return true;
    return false;
}

TChessboard WithBlackPassing(const TChessboard& child) {
    assert(child.m_blackChecker == kNoChecker && child.m_nMoves > 0);
    TChessboard passed = child;
    passed.m_pPrevious = const_cast<TChessboard*>(&child);
    const TSquare king = BlackKingSquare(child);
    passed.m_lastMove = {king, king, 0, 0};
    passed.m_whiteChecker = kNoChecker;
    --passed.m_nMoves;
    return passed;
}

bool ThreatensMate(const TChessboard& child, int nPlies, ELookAside kind) {
    const int nLeft = std::min(nPlies, child.m_nMoves - 1);
    return nLeft > 0 && HasMateWithin(WithBlackPassing(child), nLeft, kind);
}

} // namespace quillon
