#pragma once
// TCustomIndexing: the numbering of the positions of a custom type (custom_type.h). One field a movable piece, kings
// too, the first letter's highest. The field of a black pawn is the number of steps it has come from its start square,
// that of another piece the number of its square among those not frozen. Nothing is folded.
//
// Of equal pieces the first letter has the lowest square; of black pawns on one file the one with the lower start. The
// other orders are indices that name the same position.
//
// Threads: GetIndex, GetPositionByIndex and GetSize only read.

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>
#include <vector>

#include "core/chessboard.h"
#include "globalregister/custom_type.h"

namespace quillon {

/// Letters of a custom type that have a field: 64 squares each make a number of 60 bits.
inline constexpr std::size_t kMaxCustomLetters = 10;

/// The answer of GetIndex for a position that is not of the custom type. No table is that large.
inline constexpr std::uint64_t kNoIndex = ~std::uint64_t{0};

struct TCustomIndexing {
    ///   Errors  ChessException for a text that is no custom type has more than kMaxCustomLetters movable pieces
    ///           or a pawn without a square.
    explicit TCustomIndexing(std::string_view typeName);

    /// kNoIndex unless the frozen pieces stand on their squares and the movable ones are the other men of the board.
    [[nodiscard]] std::uint64_t GetIndex(const TChessboard& b) const;

    /// As TPositionIndexing::GetPositionByIndex; the frozen pieces are placed, too.
    [[nodiscard]] bool GetPositionByIndex(std::uint64_t index, TChessboard& b) const;

    [[nodiscard]] std::uint64_t GetSize() const { return m_nSize; }

    [[nodiscard]] std::size_t Men() const { return m_fields.size() + m_type.m_frozen.size(); }

    [[nodiscard]] const TCustomType& Type() const { return m_type; }

    bool bHasPawns = false; // among the movable pieces
    std::size_t nFrozenSquares = 0;
    std::set<std::int8_t> frozenSquares;
    std::array<std::uint8_t, kSquares> squareRemap{}; // square to compact number, 255 at frozen squares

  private:
    struct TField {
        TFigure m_figure;
        std::vector<TSquare> m_squares;                // by value of the field
        std::array<std::uint8_t, kSquares> m_values{}; // by square; 255 where the piece cannot stand
    };

    void SetFrozen();
    [[nodiscard]] TField FieldOf(const TMovablePiece& piece) const;
    [[nodiscard]] std::vector<TSquare> SquaresOf(const TMovablePiece& piece) const;
    void OrderLetters();
    [[nodiscard]] bool AreFrozenInPlace(const TChessboard& b) const;

    TCustomType m_type;
    std::vector<TField> m_fields;      // per letter
    std::vector<std::size_t> m_taking; // letters in the order in which they take their squares from a board
    std::uint64_t m_nSize = 1;
};

} // namespace quillon
