#pragma once
// Boards told apart by a number, for tests that need many keys and no chess.

#include <array>
#include <cstddef>

#include "tempregister/register_item.h"

namespace quillon::test {

inline constexpr std::array<TFigure, 13> kCodes{
    kNoFigure,  kWhiteKing, kWhitePawn,   kWhiteBishop, kWhiteRook,  kWhiteQueen,  kWhiteKnight,
    kBlackKing, kBlackPawn, kBlackBishop, kBlackRook,   kBlackQueen, kBlackKnight,
};

/// The digits of `number` to the base 13 as figures, every third square from h1 on: files and ranks differ.
[[nodiscard]] inline TBoardBytes NumberedBoard(unsigned number) {
    TBoardBytes board{};
    for (std::size_t square = kH1; number != 0; number /= 13, square += 3)
        board[square] = kCodes[number % 13];
    return board;
}

} // namespace quillon::test
