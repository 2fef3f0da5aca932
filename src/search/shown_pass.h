#pragma once
// What an observer is told of a pass when it begins.

#include <cstdint>
#include <string>

namespace quillon {

/// Written before it is published (TAnalysis::m_pShownPass), never changed, kept until the solve is gone: any thread
/// may read it meanwhile.
struct TShownPass {
    int m_nPass = 0;        // 1 with heuristics, 2 without
    int m_nRelaxations = 0; // so far
    std::uint32_t m_nHeuristics = 0;
    std::string m_heuristics; // HeuristicsText with quick mode; empty for none
    bool m_bSafeMode = false;
    bool m_bThreadsForced = false; // the engine asked for more threads and got them
    std::uint8_t m_nSolveMode = 0;
    int m_nThreads = 1; // that share the root's moves
    int m_nRootPlies = 0;
};

} // namespace quillon
