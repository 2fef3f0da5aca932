#pragma once
// When the root of a long problem shows that more threads than asked for would pay, the driver asks the user for them.

#include <cstdint>

namespace quillon {

/// What the root's sorted move list tells.
struct TThreadDemandInput {
    int m_nThreads;      // threads asked for, >= 1
    int m_nMoves;        // white moves of the root
    int m_nGoodMoves;    // moves sorted as good
    int m_nFurtherCount; // count of a further evaluation of the root
    int m_nProcessors;   // hardware processors
    bool m_bPawnsOnly;   // no figures other than kings and pawns stand, and a further count is below 2
    bool m_bLineChecker; // exactly one black figure gives check along a line, and White's checking test fails
};

/// The number of threads demanded, 1..127; 0 for no demand.
[[nodiscard]] int ComputeThreadDemand(const TThreadDemandInput& input);

} // namespace quillon
