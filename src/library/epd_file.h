#pragma once
// The reader of EPD files: a position and its stipulation on one line.
//
//   PLACEMENT SIDE CASTLING EN-PASSANT [HALF-MOVES MOVE] { OPCODE { OPERAND } ; }
//
//   bm #N   mate in N moves        id "text"   the description
//   dm N    the same               all other operations are passed over, and so is a "bm" with a move
//
// Blank lines and lines that begin with "#" or "//" are skipped. Problems are numbered from 1 in the order of the
// lines, bad ones included, so that the number of a problem does not depend on whether another can be read.
//
// A problem is solved with every castling that the board allows and no en passant in the first move: the fields must be
// well-formed, and are not looked at.

#include <string>
#include <string_view>

#include "library/problem_file.h"

namespace quillon {

/// Reads every problem of the text. A line that cannot be read goes to onError, with its place, and the reading goes
/// on.
///   Errors  none of its own; what the callbacks throw ends the reading.
void ReadEpdProblems(std::string_view text, const TOnProblem& onProblem, const TOnError& onError);

/// The line of a problem: position, "bm #N", the description as "id", and the number of the problem as the comment
/// "c0". Quotes in the description become apostrophes.
///   Shape  problem: a direct mate; the format has no words for others.
[[nodiscard]] std::string EpdText(const ChessProblem& problem);

/// Could this be a line of an EPD file? Looks at the first word only.
[[nodiscard]] bool LooksLikeEpd(std::string_view line);

} // namespace quillon
