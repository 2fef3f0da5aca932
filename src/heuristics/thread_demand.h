#pragma once
// When the root of a long problem shows that more threads than asked for would pay, the driver asks the user for them.

#include <cstdint>

namespace quillon {

/// What the root's sorted move list tells.
struct TThreadDemandInput {
    int m_nThreads;      // threads asked for, >= 1
    int m_nMoves;        // white moves of the root
    int m_nGoodMoves;    // moves sorted among the best; 0 where that is all of them and none stands out
    int m_nForcingMoves; // moves that check, capture or promote: some of them are good whatever their score
    int m_nProcessors;   // hardware processors
    bool m_bPawnsOnly;   // no figures other than kings and pawns stand
    bool m_bLineChecker; // White is in check, by one rook or queen
};

/// The number of threads demanded, more than asked for and up to 127; 0 for no demand.
[[nodiscard]] int ComputeThreadDemand(const TThreadDemandInput& input);

} // namespace quillon
