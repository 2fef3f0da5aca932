#pragma once
// "TryRelaxSpecialHeuristics.log": the steps of the plan as they are made, in the working folder.

#include <string>
#include <string_view>

#include "core/chessboard.h"

namespace quillon {

inline constexpr std::string_view kRelaxationLogName = "TryRelaxSpecialHeuristics.log";

/// The pass that a set belongs to: "1b Heur=4 HeurParams=24 SH_DONTLETKINGMOVE". Both numbers are signed 32-bit ones.
[[nodiscard]] std::string RelaxationLogLine(const TChessboard& board);

/// Appends a line to the log, if the analysis of the board asks for one. A log that cannot be written is no failure.
///   Threads any; lines stay whole.
void LogRelaxation(const TChessboard& board, std::string_view line);

} // namespace quillon
