#pragma once
// The inverse of heuristic_text.h: a heuristic set read from its printed text.
//
//   set    "none", or items separated by commas; commas within brackets belong to the item
//   item   name, or name "(" parameters ")"; names and parameters as printed, in upper or lower case
//          SH_DONTLETKINGMOVE and SH_DONTLETKINGMOVE(excptns) stand for the strict forms of SH_KEEPKINGONTHEEDGE
//   ends   QuickMode as an item, (CannotApplyDLFUDynamically) behind everything
//
// What the text leaves out has its value at the start of a solve, and what it does not show (how often the depth of
// SH_FINDFORCEDMATE may rise, for instance) too.

#include <cstdint>
#include <string_view>

#include "core/chessboard.h"
#include "core/heuristic_parameters.h"

namespace quillon {

struct TReadHeuristics {
    std::uint32_t m_nHeuristics = 0;
    THeuristicParameters m_parameters;
    std::uint8_t m_nKeyLine = kNoKeyLine;
    std::uint16_t m_wKeyDiagonal = kNoKeyDiagonal;
    std::uint8_t m_nBishopMode = 0; // marker of SH_ONECOLORPLAYPOSSIBLE
    bool m_bQuickMode = false;      // told in the text: the default, and no word against safe mode
};

/// Reads a set.
///   Errors  ChessException, one line that names the place: "Heuristics, character 9: unknown heuristic \"SH_FOO\"".
[[nodiscard]] TReadHeuristics ReadHeuristicsText(std::string_view text);

/// Puts a set that was read for `board` into the parameters of a solve: watched figures and key figure are looked up on
/// the board, the user's plan of passes (relaxation, fallback, last pass) and safe mode stay as they are.
///   Errors  ChessException: a named square holds no figure that the heuristic could mean, or the text told of a state
///           within a line that no root can have. Nothing is stored then.
void StoreReadHeuristics(const TReadHeuristics& read, const TChessboard& board, THeuristicParameters& parameters,
                         THeuristicAnalysisParameters& analysis);

} // namespace quillon
