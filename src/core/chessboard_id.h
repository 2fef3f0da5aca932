#pragma once
// TChessboardId: the compact position id, 42 bytes. Printed after each move of a log, pasted by users, a file name.
//
//   squares a1 (0) to h8 (63): an empty one is one 0 bit; an occupied one is one 1 bit and four bits of short code,
//   least significant first: K 0, k 1, P 2, p 3, Q 4, q 5, R 6, r 7, B 8, b 9, N 10, n 11.
//
// The id holds only the board: no side to move, no rights.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/chessboard.h"

namespace quillon {

struct TChessboardId {
    std::uint16_t m_nBits = 0;             // bits in use
    std::array<std::uint8_t, 40> m_bits{}; // least significant bit of a byte first
};
static_assert(sizeof(TChessboardId) == 42);

/// Appends one bit. Throws ChessException "Exception in TChessboardId" beyond byte 39.
void AppendBit(TChessboardId& id, bool bBit);

/// Throws "Unknown figure code" for a byte outside the twelve codes, "Exception in TChessboardId" for too many figures.
[[nodiscard]] TChessboardId MakeChessboardId(const TChessboard& b);

/// Six bits a character, least significant first: 0-9, a-z, A-Z, "(", ")".
[[nodiscard]] std::string ToAlphanum6(const TChessboardId& id);

/// Five bits a character: 0-9, a-v. For short keys in file names and links.
[[nodiscard]] std::string ToAlphanum5(const TChessboardId& id);

/// One character of each; throw "Error in ToAlphanum6", "Error in ToAlphanum5" for a value that has none.
[[nodiscard]] char Alphanum6Digit(unsigned value);
[[nodiscard]] char Alphanum5Digit(unsigned value);

/// Reads a pasted id into m_board; no other field is touched. Throws "Wrong chessboard id" when bits run out, a
/// character is no digit or something is left over, "Unknown figure short code" above 11.
void ReadChessboardId(TChessboard& b, std::string_view text);

} // namespace quillon
