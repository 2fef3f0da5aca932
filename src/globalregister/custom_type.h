#pragma once
// Custom position types: material of which a part never moves. Text, as in "KQkp(b7)+Pa2b3+pg4":
//
//   the movable pieces, letters of "KQRBNPkqrbnp" in this order; a movable black pawn tells the square it starts from
//   in brackets; then, for each kind of piece that is frozen, "+", its letter, and its squares.
//
// A movable black pawn can stand on its start square and on those ahead of it, down to the second rank, that are not
// frozen. Each side has one king, movable or frozen.

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/figures.h"
#include "core/square.h"

namespace quillon {

struct TFrozenPiece {
    TSquare m_square;
    TFigure m_figure;
};

struct TMovablePiece {
    char m_letter;
    TSquare m_start = kNoSquare; // of a black pawn
};

struct TCustomType {
    std::vector<TMovablePiece> m_movable; // in the order of the text
    std::vector<TFrozenPiece> m_frozen;
};

/// True for a text of the custom form, false for the letters of an ordinary type.
[[nodiscard]] bool IsCustomType(std::string_view typeName);

///   Errors  ChessException "Error in custom position type " with the text and the reason.
[[nodiscard]] TCustomType ParseCustomType(std::string_view typeName);

} // namespace quillon
