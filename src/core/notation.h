#pragma once
// The long move notation of variants, logs and problem files. Everything that fails throws ChessException unless said.

#include <string>
#include <string_view>
#include <vector>

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// "e2-e4", "e4:d5", "Ng1-f3", "a7-a8Q", "0-0"; "-" for a null move.
///   movedFigure  figure that moves, with or without colour.
[[nodiscard]] std::string WriteMove(const TMove& move, TFigure movedFigure, bool bCapture);

/// The same, with figure and capture (en passant too) read from the position before the move.
[[nodiscard]] std::string WriteMove(const TMove& move, const TChessboard& before);

/// The log's terse form: squares only, "e2-e4".
[[nodiscard]] std::string WriteTerseMove(const TMove& move);

/// The inverse of WriteMove, for variants in problem files. No position is looked at, and a figure letter in front is
/// dropped unread, whatever the language.
[[nodiscard]] TMove ParseMove(std::string_view text, bool bWhite);

/// "e4".
[[nodiscard]] std::string SquareText(TSquare square);

/// Square of a file letter (either case) and a rank digit: "e4".
[[nodiscard]] TSquare String2Square(std::string_view text);

/// A list of squares separated by blanks, tabs or commas. A bad one throws "Invalid square description at index " with
/// the zero-based index of its first character.
[[nodiscard]] std::vector<TSquare> ParseSquares(std::string_view text);

/// English and Polish letters in either case: B G, H Q, K, N S, P, R W.
[[nodiscard]] TFigure FigureLetterToKind(char letter);

/// English letter of a kind: K, Q, R, B, N, a blank for a pawn, E for anything else.
[[nodiscard]] char KindToLetter(TFigure kind);

/// Makes the move on the position: `child`, another record, becomes the position after it, linked to `position`. The
/// figure letter of a figure other than a pawn is needed; a promotion without a letter is to a queen. Legal is what the
/// rules of chess allow, whatever heuristics are in force. `position` has a context, which no search is using.
///   report   may be null
///   Returns  false without a message when the text cannot be read or names another figure than stands on the source;
///            false with "Illegal move" when the move is not legal or no ply is left. `child` is then undefined.
[[nodiscard]] bool MakeMoveFromText(TChessboard& position, std::string_view text, TChessboard& child,
                                    std::string* report);

/// The square from which `figure` (a code, or a kind: then of the side to move) can arrive on `target`: the first of
/// the candidates, searched backwards from the target, whose move the maker accepts by the rules of chess. A king's
/// square is returned at once, whatever the target. `position` has a context, which no search is using.
///   Errors   "Error in FindPosFrom()"
[[nodiscard]] TSquare FindPosFrom(TChessboard& position, TFigure figure, TSquare target);

} // namespace quillon
