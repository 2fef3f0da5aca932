#pragma once
// A problem in the mirror: what is true of the one is true of the other, so an engine has to find the same in both.
//
// Castling knows its side of the board and pawns their direction. A problem in which a castling is possible has no
// copies, and neither has one a copy in which a castling would become possible. With pawns on the board only the files
// can be mirrored; without, the board has seven copies.

#include <cstdint>
#include <vector>

#include "core/move.h"
#include "library/chess_problem.h"
#include "search/sort_indication.h"

namespace quillon {

/// The number of a mirrored copy, 1 to 7: the sum of what is mirrored, the axes before the diagonal. 0 is the problem
/// as given.
using TMirror = std::uint8_t;
inline constexpr TMirror kAsGiven = 0;
inline constexpr TMirror kMirrorFiles = 1;    // a goes to h
inline constexpr TMirror kMirrorRanks = 2;    // 1 goes to 8
inline constexpr TMirror kMirrorDiagonal = 4; // a8 goes to h1
inline constexpr TMirror kLastMirror = 7;

/// What is no square of the board stays as it is.
[[nodiscard]] TSquare MirrorSquare(TSquare square, TMirror mirror);
[[nodiscard]] TMove MirrorMove(TMove move, TMirror mirror);

/// The indications of the problem for its copy, in the same order: an indication that comes first sorts first.
[[nodiscard]] std::vector<SortIndication> MirrorIndications(std::vector<SortIndication> indications, TMirror mirror);

/// The copies that the problem has, in ascending order.
[[nodiscard]] std::vector<TMirror> MirrorsOf(const ChessProblem& problem);

/// The runs of the problem in a regression, kAsGiven among them: by what the problem says of mirrors, and whether the
/// run is to solve them. Without mirrors a problem that is there for its copies has none.
[[nodiscard]] std::vector<TMirror> RunsOf(const ChessProblem& problem, bool bSolveMirrors);

/// The copy, with all that a solve and its check look at: moves, squares and variants are mirrored with the board. Its
/// sort indications stand in the order of their own squares, which need not be that of the problem (MirrorIndications).
///   Errors  ChessException: the position cannot be used.
[[nodiscard]] ChessProblem MirroredProblem(const ChessProblem& problem, TMirror mirror);

} // namespace quillon
