#pragma once
// Problems as games of PGN: the position in the tags SetUp and FEN, the variants of the problem as its moves.

#include <string>
#include <string_view>
#include <vector>

#include "library/chess_problem.h"
#include "library/played_line.h"

namespace quillon {

/// Plays a move that is legal in the line's position and returns its short notation: "Nbd7", "exd6", "a8=Q+", "O-O".
[[nodiscard]] std::string PlayInShortNotation(CPlayedLine& line, const TMove& move);

/// One problem as a game. The main variant is the game, other variants are variations of it, and so are expected keys
/// that no variant begins with; a problem without a stipulation has the moves that were played in it.
///   faults  gets a line for each variant that is not legal to its end: it stops there.
[[nodiscard]] std::string PgnText(const ChessProblem& problem, std::vector<std::string>& faults);

/// Plays the moves of a variant as far as they are legal.
///   Returns  the number of moves that are.
std::size_t PlayVariant(CPlayedLine& line, const TChessboard& start, const Variant& variant);

/// "Move 3 in the stored variant is invalid", with the name of the variant; nMove counts moves of both sides from 1.
[[nodiscard]] std::string InvalidVariantText(const Variant& variant, std::size_t nMove);

} // namespace quillon
