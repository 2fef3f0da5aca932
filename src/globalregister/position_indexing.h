#pragma once
// TPositionIndexing: between a position of one type and the number of its element in the table of that type. Tables are
// files that outlive the program, so the numbering is a format.
//
//   without pawns  the white king is folded into the triangle a1-d1-d4 by mirroring files, ranks, and in the diagonal;
//                  index = ((s0 * 64 + s1) * 64 + ... ) * 64 + B, then * 10 + number of the white king's square there
//   with pawns     the white king is folded to the files a to d; a pawn's square counts from a2 and has 48 values;
//                  index = (fields as above * 64 + B) * 32 + rank(W) * 4 + file(W)
//   combinations   a group of K equal letters is one field, the number of the combination of its squares
//   custom types   one field a movable piece, kings too, first letter highest; no folding. A piece's field is the
//   number
//                  of its square among those not frozen, a black pawn's the steps it has come from its start square
//
// s0, s1 ... are the squares of the type's letters; of equal letters the first has the lowest square on the board
// before folding. W and B are the kings. The side to move is no part of an index.
//
// Without combinations two equal pieces have two orders of their squares, so several indices name one position; an
// index can also name none (kings side by side, two men on one square).
//
// Threads: GetIndex, GetPositionByIndex and GetSize only read.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/chessboard.h"
#include "core/position_type.h"
#include "globalregister/combination_mapping.h"
#include "globalregister/custom_indexing.h"

namespace quillon {

/// Letters of an ordinary type.
inline constexpr std::size_t kMaxTypeLetters = 7;

/// The men of a position of an ordinary type.
struct TMenSquares {
    /// Of the letters, in the order of the type; the last of the eight is the black king's. Unused ones are 0.
    std::array<TSquare, kMaxTypeLetters + 1> m_squares{};
    TSquare m_whiteKing = 0;

    [[nodiscard]] TSquare BlackKing() const { return m_squares[kMaxTypeLetters]; }
};

struct TPositionIndexing {
    /// Of an ordinary type ("QRp", "" for bare kings) or a custom one, with combinations off.
    ///   Errors  ChessException for a text that is neither.
    explicit TPositionIndexing(std::string_view type);

    /// Precondition for ordinary types: the position is of this type. Custom types: kNoIndex if it is not.
    [[nodiscard]] std::uint64_t GetIndex(const TChessboard& b) const {
        if (custom)
            return custom->GetIndex(b);
        return IndexOfBoard(b);
    }

    /// Fills m_board and the four king fields; what else a record holds stays as it is (RecountFigures).
    ///   Result  false when the index names no placement; the board then holds a part of one.
    [[nodiscard]] bool GetPositionByIndex(std::uint64_t index, TChessboard& b) const;

    /// The men of an index of an ordinary type: a sixth of the time of GetPositionByIndex.
    ///   Result  false when the index names no placement; the men then mean nothing.
    [[nodiscard]] bool GetMenByIndex(std::uint64_t index, TMenSquares& men) const;

    /// Mirrors the men of an ordinary type so that the white king stands where an index can have it.
    void FoldMen(TMenSquares& men) const;

    /// The index of folded men. Equal letters may have their squares in any order: without combinations each order has
    /// an index of its own.
    [[nodiscard]] std::uint64_t IndexOfFolded(const TMenSquares& men) const;

    /// The index that GetIndex gives a position with these men, if of equal letters the first has the lowest square.
    [[nodiscard]] std::uint64_t IndexOfMen(TMenSquares men) const {
        FoldMen(men);
        return IndexOfFolded(men);
    }

    /// Elements of the table.
    [[nodiscard]] std::uint64_t GetSize() const;

    /// Turns combinations on. Only for ordinary types of at least six men with the kings; false for others and when
    /// memory is short, and then nothing changes.
    [[nodiscard]] bool SetupCombinations();

    /// The factor of each letter's field; 0 for the letters of a group behind its head, and for custom types.
    void ComputeStrides(std::array<std::uint64_t, kMaxTypeLetters>& factors) const;

    /// The factor of the black king's field of an ordinary type: the number of squares of the folded white king.
    [[nodiscard]] std::uint64_t WhiteKingSquares() const { return bHasPawns ? 32 : 10; }

    /// Men of the type with the kings, frozen ones too.
    [[nodiscard]] std::size_t MenWithKings() const;

    std::string typeName;
    TPositionType nPositionType = 0; // 0 for bare kings, and for custom types until a manager numbers them
    std::array<bool, kMaxTypeLetters> bPawnSquares{}; // per letter of an ordinary type
    bool bHasPawns = false;
    bool bPawnRanks48 = false;     // pawns count 48 squares in GetSize; in an index they always do
    bool bHasSpecialPiece = false; // an "X" or "x": changes GetSize only, no position is of such a type
    bool bUseCombinations = false;
    std::vector<const CMappingCombinationIndexIntoSetBase*> mappings; // per letter; null where no group starts
    std::vector<std::uint8_t> groupSizes;                             // per letter; 0 where no group starts
    std::vector<std::uint64_t> groupCounts;                           // per letter; 0 where no group starts
    std::array<std::uint64_t, kMaxTypeLetters> strides{};
    std::optional<TCustomIndexing> custom; // of a custom type, which has no letters, groups or strides

  private:
    [[nodiscard]] std::uint64_t IndexOfBoard(const TChessboard& b) const;
    void SetLetters();
    [[nodiscard]] std::size_t RunFrom(std::size_t i) const;
    [[nodiscard]] std::uint64_t CollectSquares(const TChessboard& b) const;
    [[nodiscard]] std::uint64_t GroupedFields(std::uint8_t* squares) const;
    [[nodiscard]] bool TakeLetters(std::uint64_t fields, TMenSquares& men) const;

    static constexpr std::size_t kKinds = 11; // the ten kinds of pieces besides the kings, and everything else

    std::array<TFigure, kMaxTypeLetters> m_figures{};
    std::array<std::uint8_t, kKinds> m_firstLetter{}; // of each kind; kUnusedLane of a kind without letters
    std::uint64_t m_nPawnOffset = 0;                  // what pawn fields counted from a1 make too much
};

} // namespace quillon
