#pragma once
// How far a solve has come, and the line that tells it.

#include <cstdint>
#include <string>

#include "heuristics/solving_driver.h"

namespace quillon {

struct TProgress {
    std::string m_pass;             // "1", "1b", ..., "2"; empty while the initial analysis runs
    int m_nMove = 0;                // of this pass, from 1
    int m_nMoves = 0;               // of this pass; 0 while there is no pass
    double m_part = 0;              // of this pass, from 0 to 1
    std::uint64_t m_nPositions = 0; // searched so far, those of the short-mate search included
    double m_seconds = 0;           // since the start
    TRegisterFigures m_register;
    bool m_bGuide = false; // between passes: a mate is looked for that orders the moves
};

/// What the solve shows at this moment. The solve may be running on another thread: nothing is locked, and a number can
/// be of the moment before.
///   seconds  since the start of the solve.
[[nodiscard]] TProgress ReadProgress(const CSolve& solve, int nRootPly, double seconds);

/// The part of the root's moves that the pass has behind it, from 0 to 1. The replies to the move under analysis divide
/// its share, and the plies below divide theirs; a ply whose index is out of range ends that.
[[nodiscard]] double DonePart(const TSearchContext& context, int nRootPly);

/// "Pass 1b, move 3 of 12, 23.4%, 8.0 s, 12.4M nodes, 1.55M/s, register 1.20M 130 MB".
[[nodiscard]] std::string ProgressText(const TProgress& progress);

/// The number with three digits or more that count: "999", "12.3k", "1.23M", "45.6G".
[[nodiscard]] std::string ShortNumber(std::uint64_t number);

} // namespace quillon
