#pragma once
// Finished tables of endgame data against the reference, element by element.

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "core/square.h"
#include "globalregister/piece_letters.h"
#include "globalregister/position_indexing.h"
#include "globalregister/table_files.h"
#include "support/retrograde_reference.h"

namespace quillon {

/// The kings and the men of the type's letters, as the reference wants them.
inline std::array<int, 5> SquaresOf(const std::string& type, const TChessboard& b) {
    std::array<int, 5> squares{WhiteKingSquare(b), BlackKingSquare(b)};
    std::array<bool, kSquares> taken{};
    for (std::size_t letter = 0; letter < type.size(); ++letter) {
        std::size_t square = 0;
        while (taken[square] || b.m_board[square] != FigureOfLetter(type[letter]))
            ++square;
        taken[square] = true;
        squares[letter + 2] = static_cast<int>(square);
    }
    return squares;
}

/// Every element of a table of at most five men.
inline void ExpectElementsOfReference(const std::string& type, const TElements& elements,
                                      const reference::RetrogradeTable& reference) {
    const TPositionIndexing indexing(type);
    ASSERT_EQ(elements.size(), indexing.GetSize()) << type;
    TChessboard b = EmptyChessboard();
    std::uint64_t nWrong = 0, nFirstWrong = 0;
    int nLongest = 0;
    for (std::uint64_t index = 1; index < elements.size(); ++index) {
        int nExpected = 0;
        if (indexing.GetPositionByIndex(index, b)) {
            const std::array<int, 5> squares = SquaresOf(type, b);
            nExpected = reference.MateIn({squares.data(), type.size() + 2});
        }
        nLongest = std::max(nLongest, nExpected);
        if (elements[index] != nExpected && nWrong++ == 0)
            nFirstWrong = index;
    }
    EXPECT_EQ(nWrong, 0u) << type << ", first " << nFirstWrong << ", which has "
                          << static_cast<int>(elements[nFirstWrong]);
    EXPECT_EQ(nLongest, reference.LongestMate()) << type;
}

} // namespace quillon
