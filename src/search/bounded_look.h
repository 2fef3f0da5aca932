#pragma once
// A look that may cost so many positions and no more: when they are used up, the thread stops as on request, and goes
// on when the look is over.

#include <cstdint>

#include "search/analysis.h"

namespace quillon {

/// Bounds what the thread of `context` searches while it lives. Looks do not nest.
class CBoundedLook {
  public:
    CBoundedLook(TSearchContext& context, TAnalysis& analysis, std::uint64_t nMostPositions) : m_context(context) {
        FlushPositions(context, analysis); // what was searched before does not count
        context.m_nPositionsLeft = nMostPositions;
    }
    ~CBoundedLook() { GoOn(); }
    CBoundedLook(const CBoundedLook&) = delete;
    CBoundedLook& operator=(const CBoundedLook&) = delete;

    /// Verdicts found since are none.
    [[nodiscard]] bool IsUsedUp() const { return m_context.m_nPositionsLeft == 0; }

    /// Takes the bound off. A stop or pause that others ask for stays.
    void GoOn() {
        m_context.m_nPositionsLeft = TSearchContext::kNoBound;
        std::uint8_t used = kBoundRequest;
        m_context.m_nStopRequest.compare_exchange_strong(used, kRunRequest, std::memory_order_relaxed);
    }

  private:
    TSearchContext& m_context;
};

} // namespace quillon
