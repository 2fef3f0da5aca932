#pragma once
// Stored settings of known compositions: what makes a first pass over them quicker. They are found by the board part of
// the FEN. A composition without a row is solved like any other position, only more slowly.

#include <string>
#include <string_view>
#include <vector>

#include "core/chessboard.h"
#include "core/notifier.h"

namespace quillon {

/// Are there stored settings of any kind for the position? Such problems are marked for the user.
[[nodiscard]] bool IsKnownComposition(std::string_view placement);

/// White moves known to continue the position, in long notation; empty if it is not stored.
[[nodiscard]] std::vector<std::string_view> KnownContinuations(std::string_view placement);

/// Applies one option word to mask, parameters and analysis of the root:
///   DLFU(squares)              these figures are watched too; a black pawn is passed over
///   SafeMode                   safe mode on
///   AssertBKS, AssertBKS(strict), ExtEdge, DontLetKingMove   this heuristic instead of the others of the three
///   DontLetPromotedQueenMove   the heuristic on; with " NO" behind it off
///   LFQMDepth(n), LFQMDepth(#n)   depth of the short-mate search in plies, in moves; below 1 the default
/// Errors  ChessException: "Invalid square description at index " and the index, "Invalid square" for one that holds no
///         black figure to watch, "Unknown option: " and the word.
void ApplyOptionWord(TChessboard& root, std::string_view word);

/// Appends the white moves of a line "1. Rb8-b5 Bd5-e4 2. Rb5-a5" from the root to the analysis' sort indications, each
/// for its move number. Plies beyond those the root has are left out, and what is there already is not added again.
///   Errors  ChessException "Error in predefined sort indications." unless every move is legal; nothing is added then.
void AppendSortLine(TChessboard& root, std::string_view line);

/// Looks the root up and applies what is stored. Faults of the tables are told to the notifier (null: not at all), and
/// the solve goes on.
void ApplyPredefinedAdditionalHeuristics(TChessboard& root, INotifier* pNotifier);

/// The same with words instead of the table's.
void ApplyOptionWords(TChessboard& root, const std::vector<std::string_view>& words, INotifier* pNotifier);
void ApplySortLines(TChessboard& root, const std::vector<std::string_view>& lines, INotifier* pNotifier);

inline constexpr const char* kOptionWordsFault = "Error occurred in ApplyPredefinedAdditionalHeuristics()";
inline constexpr const char* kSortLineFault = "Error in predefined sort indications.";
inline constexpr const char* kSortLineFaultTitle = "Error";

} // namespace quillon
