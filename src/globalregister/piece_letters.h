#pragma once
// The letters of a position type and the figures they stand for.

#include <cstddef>
#include <iterator>
#include <string_view>

#include "core/figures.h"

namespace quillon {

/// Pieces in the order in which a type names them.
inline constexpr std::string_view kPieceLetters = "KQRBNPkqrbnp";

inline constexpr TFigure kPieceFigures[] = {
    kWhiteKing, kWhiteQueen, kWhiteRook, kWhiteBishop, kWhiteKnight, kWhitePawn,
    kBlackKing, kBlackQueen, kBlackRook, kBlackBishop, kBlackKnight, kBlackPawn,
};
static_assert(std::size(kPieceFigures) == kPieceLetters.size());

/// kNoFigure for a letter that stands for no piece.
[[nodiscard]] constexpr TFigure FigureOfLetter(char letter) {
    const std::size_t place = kPieceLetters.find(letter);
    return place == std::string_view::npos ? kNoFigure : kPieceFigures[place];
}

[[nodiscard]] constexpr bool IsPawnLetter(char letter) { return letter == 'P' || letter == 'p'; }

} // namespace quillon
