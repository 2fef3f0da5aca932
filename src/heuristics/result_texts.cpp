#include "heuristics/result_texts.h"

#include <cstdio>

namespace quillon {

std::string SolutionCountText(const TAnalysis& analysis, int nSolutions, bool bStoppedAtLimit) {
    const bool bSingle = (analysis.m_nSolveMode & kSingleSolution) != 0;
    if (bStoppedAtLimit && !bSingle) {
        if ((analysis.m_nStopFlags & kStopOnDual) != 0)
            return "Search for solutions has been stopped after detection of dual.";
        if ((analysis.m_nStopFlags & kStopOn3Solutions) != 0)
            return "Search for solutions has been stopped after finding 3 solutions";
        if ((analysis.m_nStopFlags & kStopOn4Solutions) != 0)
            return "Search for solutions has been stopped after finding 4 solutions";
    }
    return nSolutions > 1 ? "More than one solution found: " + std::to_string(nSolutions) : std::string{};
}

std::string NothingFoundText(int nStipulation, bool bNoRelaxation, bool bNoPass2) {
    std::string text = "Not found any solutions for #" + std::to_string(nStipulation);
    if (bNoRelaxation || bNoPass2)
        text += "\n\nNote:\n";
    if (bNoRelaxation)
        text += "\t* there was only one pass with heuristcs (relaxation of heuristics was switched off by user's "
                "request)\n";
    if (bNoPass2)
        text += "\t* pass without heuristics has been skipped (on user's request)\n";
    return text;
}

std::string NoSolutionText(int nStipulation, double seconds, bool bNoPass2) {
    char time[48];
    std::snprintf(time, sizeof time, " (%.1f sec.)", seconds);
    std::string text = "No solution found (#" + std::to_string(nStipulation) + " or less)" + time;
    if (bNoPass2)
        text += " NOTE: Pass without heuristics is currently switched off (see heuristics selection dialog box)";
    return text;
}

std::string EngineEndText(bool bStopped, const std::string& problem) {
    return (bStopped ? "Engine stopped: " : "Engine has completed: ") + problem;
}

std::string ThreadDemandQuestion(int nThreads) {
    return "Engine wants to force a different number of threads (" + std::to_string(nThreads) + "). Do you accept it?";
}

std::string ModeText(const TAnalysis& analysis, bool bAnySolution) {
    if (analysis.m_nHybridPhase != kNotHybrid) {
        std::string text = "* Hybrid brute force - first heuristical search for single solution, then brute force "
                           "search for dual(s)\n";
        if (analysis.m_nHybridPhase == kHybridHeuristical && !bAnySolution)
            text += "  - now running the first (heuristical) phase of hybrid brute force (no solution found yet)\n";
        else
            text += "  - now running the second (brute force) phase of hybrid brute force (at least one solution "
                    "already found)\n";
        return text;
    }
    switch (SolutionLimit(analysis)) {
    case 1:
        return "* Search for single solution\n";
    case 2:
        return "* Search for no more than 2 solutions\n";
    case 3:
        return "* Search for no more than 3 solutions\n";
    case 4:
        return "* Search for no more than 4 solutions\n";
    default:
        return "* Search for all solutions\n";
    }
}

} // namespace quillon
