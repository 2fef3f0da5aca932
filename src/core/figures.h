#pragma once
// Figure codes: what one byte of a board holds.
//
//   bit 7   black figure                 bits 0..4  kind
//   bit 6   white figure                 0          empty square
//   bit 5   mark: a black pawn that carries it may not advance straight ahead
//
// A queen is literally rook and bishop together, so a slider test is one mask.

#include <cstdint>

namespace quillon {

using TFigure = std::uint8_t;

inline constexpr TFigure kNoFigure = 0;
inline constexpr TFigure kKing = 1;
inline constexpr TFigure kPawn = 2;
inline constexpr TFigure kBishop = 4;
inline constexpr TFigure kRook = 8;
inline constexpr TFigure kQueen = kRook | kBishop;
inline constexpr TFigure kKnight = 16;

inline constexpr TFigure kKindMask = 0x1f;
inline constexpr TFigure kPawnMayNotAdvance = 0x20;
inline constexpr TFigure kWhite = 0x40;
inline constexpr TFigure kBlack = 0x80;

inline constexpr TFigure kWhiteKing = kWhite | kKing;
inline constexpr TFigure kWhitePawn = kWhite | kPawn;
inline constexpr TFigure kWhiteBishop = kWhite | kBishop;
inline constexpr TFigure kWhiteRook = kWhite | kRook;
inline constexpr TFigure kWhiteQueen = kWhite | kQueen;
inline constexpr TFigure kWhiteKnight = kWhite | kKnight;
inline constexpr TFigure kBlackKing = kBlack | kKing;
inline constexpr TFigure kBlackPawn = kBlack | kPawn;
inline constexpr TFigure kBlackBishop = kBlack | kBishop;
inline constexpr TFigure kBlackRook = kBlack | kRook;
inline constexpr TFigure kBlackQueen = kBlack | kQueen;
inline constexpr TFigure kBlackKnight = kBlack | kKnight;

[[nodiscard]] constexpr TFigure KindOf(TFigure figure) { return figure & kKindMask; }
[[nodiscard]] constexpr bool IsWhite(TFigure figure) { return (figure & kWhite) != 0; }
[[nodiscard]] constexpr bool IsBlack(TFigure figure) { return static_cast<std::int8_t>(figure) < 0; }

/// The figure without mark 32, as two boards of the same position may differ in it.
[[nodiscard]] constexpr TFigure WithoutMark(TFigure figure) {
    return static_cast<TFigure>(figure & ~kPawnMayNotAdvance);
}

/// Sliders of `colour` (kWhite or kBlack) along diagonals: bishops and queens.
[[nodiscard]] constexpr bool IsDiagonalSlider(TFigure figure, TFigure colour) {
    return (figure & (colour | kBishop)) == (colour | kBishop);
}

/// Sliders of `colour` along ranks and files: rooks and queens.
[[nodiscard]] constexpr bool IsStraightSlider(TFigure figure, TFigure colour) {
    return (figure & (colour | kRook)) == (colour | kRook);
}

/// True for the six kinds of either colour, with or without the pawn mark; false for any other byte.
[[nodiscard]] constexpr bool IsFigureCode(TFigure figure) {
    const TFigure kind = KindOf(figure);
    const TFigure colour = figure & (kWhite | kBlack);
    const bool bKind =
        kind == kKing || kind == kPawn || kind == kBishop || kind == kRook || kind == kQueen || kind == kKnight;
    const bool bMark = (figure & kPawnMayNotAdvance) == 0 || WithoutMark(figure) == kBlackPawn;
    return bKind && bMark && (colour == kWhite || colour == kBlack);
}

} // namespace quillon
