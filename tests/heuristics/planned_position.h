#pragma once
// A root between two passes: its set, its parameters, and the steps of the plan.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "core/notation.h"
#include "heuristics/pass_plan.h"
#include "heuristics/relaxation_rules.h"
#include "search/searched_position.h"

namespace quillon::test {

inline constexpr int kPlannedPlies = 41;

class CPlannedPosition {
  public:
    explicit CPlannedPosition(std::string_view placement, std::uint32_t heuristics, int nPlies = kPlannedPlies)
        : m_position(placement, nPlies, 1) {
        Root().m_nHeuristics = heuristics;
    }

    [[nodiscard]] TChessboard& Root() { return m_position.Root(); }
    [[nodiscard]] THeuristicParameters& Parameters() { return m_position.Context(); }
    [[nodiscard]] TAnalysis& Analysis() { return m_position.Analysis(); }
    [[nodiscard]] CSearchedPosition& Position() { return m_position; }
    [[nodiscard]] std::uint32_t Mask() { return Root().m_nHeuristics; }
    [[nodiscard]] int Step() { return TryRelaxSpecialHeuristics(Root()); }

    /// Applies one rule alone.
    [[nodiscard]] ERelaxation Apply(ERelaxation (*pRule)(TRelaxation&), bool bFiguresCameBack = false) {
        TRelaxation step{Root(), Parameters(), Analysis().m_bSafeMode, ERelaxationClock::NeverQuick, bFiguresCameBack};
        return pRule(step);
    }

    /// Watches the figures on these squares ("a8 b8").
    void Watch(std::string_view squares) {
        for (const TSquare square : ParseSquares(squares))
            Parameters().m_BlockedFigures[static_cast<std::size_t>(Parameters().m_nBlockedFigures++)] = square;
        Parameters().m_BlockedFiguresNow = Parameters().m_BlockedFigures;
    }

  private:
    CSearchedPosition m_position;
};

} // namespace quillon::test
