#pragma once
// What the user and the logs read of a heuristic set: "SH_3MOVESTOMATE, SH_KEEPKINGNEARCORNER(2M)".

#include <cstdint>
#include <string>
#include <string_view>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"

namespace quillon {

/// Parameters of a single bit, without the brackets; empty if it has none to show. Squares are written "D5", items are
/// separated by commas without blanks.
///   board   its context holds the parameters, the board itself the marker of SH_ONECOLORPLAYPOSSIBLE.
[[nodiscard]] std::string HeuristicParametersText(const TChessboard& board, std::uint32_t bit,
                                                  const THeuristicAnalysisParameters& analysis);

/// An item of the text as the user gets to see it: the strict forms of SH_KEEPKINGONTHEEDGE have names of their own,
/// any other item stays as it is.
[[nodiscard]] std::string_view ShownHeuristic(std::string_view item);

/// The whole set in one line: items in rising order of their bits, separated by ", ", then
///   " QuickMode"                      if asked for, in a pass with heuristics and without safe mode;
///   " (CannotApplyDLFUDynamically)"   if the program may not apply SH_DONTLETFIGUREUNBLOCK dynamically.
/// A set without heuristics can have the last two all the same, each with its leading blank.
[[nodiscard]] std::string HeuristicsText(const TChessboard& board, bool withQuickMode,
                                         const THeuristicAnalysisParameters& analysis);

} // namespace quillon
