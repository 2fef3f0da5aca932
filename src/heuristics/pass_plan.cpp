#include "heuristics/pass_plan.h"

#include "core/search_context.h"
#include "heuristics/heuristic_set.h"

namespace quillon {

TInitialAnalysis AnalyseInitialPosition(TChessboard& root) {
    ResetHeuristicParameters(*root.m_pContext);
    root.m_pContext->m_nRelaxations = 0;
    return {};
}

bool TryRelaxSpecialHeuristics(TChessboard&) { return false; }

int CountRelaxations(const TChessboard&) { return 0; }

std::string PassName(int nPass, int nRelaxations) {
    if (nPass >= 2)
        return std::to_string(nPass);
    std::string name = std::to_string(nPass);
    if (nRelaxations > 0)
        name += nRelaxations <= 25 ? std::string(1, static_cast<char>('a' + nRelaxations))
                                   : "+" + std::to_string(nRelaxations);
    return name;
}

} // namespace quillon
