#pragma once
// The text of a problem library in its one canonical layout.
//
// The reader takes much that is never written, and some of what it has taken is not written back: heuristic clauses,
// SCHEDULERLEVELS, LICHESSLEVELS, NOGLOBREG, GLOBREGMB, ALLSOLUTIONSREQUIRES, STOPRELAXHEURISTICSONFIRSTSOLUTION, the
// levels of THREADS n^m, the expected white moves. What the text cannot hold is left out too: line ends within a
// description, tag, name or comment are written as blanks, "}" in the name of a variant and "]" in a comment not at
// all, and the reader trims a description. A problem without a stipulation that has both an answer and moves is written
// in an order in which it cannot be read back.

#include <string>
#include <vector>

#include "library/chess_problem.h"

namespace quillon {

/// A move of an answer as the reader takes it: in the notation of moves or, where that has no words for it, by its
/// squares. They may be beyond the board.
[[nodiscard]] std::string AnswerMoveText(const TMove& move, const TChessboard& board);

/// What of a problem is not written, by keyword: "SCHEDULERLEVELS", "heuristic clauses", ...; empty for nothing.
[[nodiscard]] std::vector<std::string> UnwrittenParts(const ChessProblem& problem);

/// Appends a problem, which has a position.
///   bWithComments  the moves of variants keep their comments.
void AppendProblemText(std::string& text, const ChessProblem& problem, bool bWithComments);

/// The whole file: the mark of its encoding, then the problems in ascending order of id.
[[nodiscard]] std::string FormatProblems(const TProblemMap& library, bool bWithComments);

} // namespace quillon
