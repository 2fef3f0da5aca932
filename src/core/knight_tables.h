#pragma once
// Knight steps. A class tells how near a square lies to the edges; each class has its row of square differences, padded
// to eight by repeating the last one, so that "does a knight stand a knight's move from here" is eight unconditional
// probes.

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/square.h"

namespace quillon {

inline constexpr int kKnightClasses = 25;

/// Class of each square, a1 first.
inline constexpr std::array<std::uint8_t, kSquares> KnightClass{
    19, 20, 8, 8, 8, 8, 23, 24, //
    17, 18, 4, 4, 4, 4, 21, 22, //
    5,  3,  0, 0, 0, 0, 2,  7,  //
    5,  3,  0, 0, 0, 0, 2,  7,  //
    5,  3,  0, 0, 0, 0, 2,  7,  //
    5,  3,  0, 0, 0, 0, 2,  7,  //
    11, 12, 1, 1, 1, 1, 15, 16, //
    9,  10, 6, 6, 6, 6, 13, 14,
};

/// Knight moves from a square of the class.
inline constexpr std::array<std::uint8_t, kKnightClasses> KnightCount{8, 6, 6, 6, 6, 4, 4, 4, 4, 2, 3, 3, 4,
                                                                      3, 2, 4, 3, 3, 4, 2, 3, 4, 3, 3, 2};

namespace knight_detail {

constexpr auto MakeDeltas() {
    constexpr std::array<int, 8> kAll{-17, -15, -10, -6, 6, 10, 15, 17};
    std::array<std::array<std::int8_t, 8>, kKnightClasses> table{};
    for (int square = 0; square < kSquares; ++square) {
        auto& row = table[KnightClass[static_cast<std::size_t>(square)]];
        std::size_t n = 0;
        for (const int delta : kAll) {
            const int target = square + delta;
            if (target < 0 || target >= kSquares || AbsDiff(FileOf(target), FileOf(square)) > 2)
                continue;
            row[n++] = static_cast<std::int8_t>(delta);
        }
        for (std::size_t i = n; i < 8; ++i)
            row[i] = row[n - 1];
    }
    return table;
}

} // namespace knight_detail

inline constexpr auto KnightDeltas = knight_detail::MakeDeltas();

[[nodiscard]] constexpr const std::array<std::int8_t, 8>& KnightDeltasOf(int square) {
    return KnightDeltas[KnightClass[static_cast<std::size_t>(square)]];
}
[[nodiscard]] constexpr int KnightCountOf(int square) {
    return KnightCount[KnightClass[static_cast<std::size_t>(square)]];
}

/// Does the figure (a code with colour) stand a knight's move from the square?
template <class TBoard> [[nodiscard]] bool HasKnightStep(const TBoard& board, int square, std::uint8_t knight) {
    int hits = 0;
    for (const int delta : KnightDeltasOf(square))
        hits += board[static_cast<std::size_t>(square + delta)] == knight;
    return hits != 0;
}

} // namespace quillon
