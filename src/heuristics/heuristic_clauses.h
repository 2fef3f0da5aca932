#pragma once
// What a problem of a library says about heuristics: "SH_SEASNAKE OFF", "SH_DONTLETFIGUREUNBLOCK(a7,b8)".

#include <cstdint>
#include <map>
#include <string>

#include "core/chessboard.h"

namespace quillon {

/// Bit of a heuristic -> "OFF", or what its clause has between the brackets.
using THeuristicClauses = std::map<std::uint32_t, std::string>;

/// Changes the set of the root, as the initial analysis has chosen it, in rising order of the bits. "OFF" clears a bit,
/// anything else sets it; of the three that hold the black king the last one holds. The squares of
/// SH_DONTLETFIGUREUNBLOCK become the watched figures, as far as black figures that can be watched stand there; without
/// squares those of the analysis stay. A heuristic that means nothing without a parameter is set only where the
/// analysis has found one.
///   Returns  the bits that were set.
///   Errors   those of ParseSetOfSquares.
std::uint32_t ApplyHeuristicClauses(TChessboard& root, const THeuristicClauses& clauses);

} // namespace quillon
