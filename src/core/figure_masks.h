#pragma once
// Bit masks taken from the byte board on demand: one bit a square, a1 the lowest. The record holds no masks; where a
// node asks many questions of one position, taking them all at once (some thirty instructions) beats walking rays.

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/figures.h"
#include "core/square.h"

namespace quillon {

using TMask = std::uint64_t;

[[nodiscard]] constexpr TMask MaskOf(int square) { return TMask{1} << square; }
[[nodiscard]] constexpr int LowestSquare(TMask mask) { return std::countr_zero(mask); }

/// How many squares. Without an instruction of the processor for it std::popcount is a call of a function with a table.
[[nodiscard]] constexpr int CountSquares(TMask mask) {
#if defined(__POPCNT__) || defined(__ARM_NEON)
    return std::popcount(mask);
#else
    mask -= (mask >> 1) & 0x5555555555555555u;
    mask = (mask & 0x3333333333333333u) + ((mask >> 2) & 0x3333333333333333u);
    mask = (mask + (mask >> 4)) & 0x0f0f0f0f0f0f0f0fu;
    return static_cast<int>((mask * 0x0101010101010101u) >> 56);
#endif
}

/// Takes the lowest square out of a mask that is not empty.
inline int TakeSquare(TMask& mask) {
    const int square = LowestSquare(mask);
    mask &= mask - 1;
    return square;
}

/// The squares whose byte has this bit (0..7) set. Portable form: eight squares a multiplication.
[[nodiscard]] inline TMask BitPlanePortable(const TFigure* board, int bit) {
    TMask plane = 0;
    for (int rank = 0; rank < 8; ++rank) {
        std::uint64_t word = 0;
        for (int file = 0; file < 8; ++file)
            word |= static_cast<std::uint64_t>(board[rank * 8 + file]) << (8 * file);
        const std::uint64_t bits = (word >> bit) & 0x0101010101010101u;
        plane |= ((bits * 0x0102040810204080u) >> 56) << (8 * rank);
    }
    return plane;
}

/// The board in a form from which several planes are taken quickly.
class CBoardPlanes {
  public:
#if defined(__SSE2__)
    explicit CBoardPlanes(const TFigure* board) {
        for (int i = 0; i < 4; ++i)
            m_rows[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(board + 16 * i));
    }
    template <int nBit> [[nodiscard]] TMask Plane() const {
        return Row<nBit>(0) | Row<nBit>(1) << 16 | Row<nBit>(2) << 32 | Row<nBit>(3) << 48;
    }

  private:
    template <int nBit> [[nodiscard]] TMask Row(int i) const {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_slli_epi16(m_rows[i], 7 - nBit)));
    }
    __m128i m_rows[4];
#else
    explicit CBoardPlanes(const TFigure* board) : m_board(board) {}
    template <int nBit> [[nodiscard]] TMask Plane() const { return BitPlanePortable(m_board, nBit); }

  private:
    const TFigure* m_board;
#endif
};

[[nodiscard]] inline TMask WhiteFigures(const TFigure* board) { return CBoardPlanes(board).Plane<6>(); }
[[nodiscard]] inline TMask BlackFigures(const TFigure* board) { return CBoardPlanes(board).Plane<7>(); }

} // namespace quillon
