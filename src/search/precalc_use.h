#pragma once
// How the search uses precalculated data: which positions may be asked about, and what an answer means for a node.
//
// Data are exact for a position with White to move, whatever is in force: a node that they answer needs no search and
// no doubt. They know neither castling nor en passant, and nothing of a bishop that is off the board or a pawn that may
// not advance. Data of custom types, whose frozen men nobody moves or captures, prove a mate in time and nothing else.

#include <cstdint>

#include "core/chessboard.h"
#include "core/mate_result.h"
#include "core/move.h"
#include "core/precalc_at_hand.h"
#include "globalregister/precalc_format.h"

namespace quillon {

/// Half-moves to mate with White to move, as proved by the data of this material, exactly and so not of a custom type;
/// 0 no mate, kUnknownHalfMoves where there is no answer. May load them, if the position is deep enough
/// (IsWorthLoading).
[[nodiscard]] std::uint16_t HalfMovesByData(const TChessboard& b);

/// Answer of a white node from precalculated data, whatever its bits of such data say; MR_NONE: none.
/// Inside a short-mate search a mate that needs the additional moves counts and sets m_bAdditionalMovesUsed.
[[nodiscard]] TMateResult AskPrecalcDataAnyhow(const TChessboard& b);

/// The same for a node whose bits are kept by the makers.
[[nodiscard]] inline TMateResult AskPrecalcData(const TChessboard& b) {
    return (b.m_wKingState & (kPrecalcCanAnswer | kCustomDataMayMate)) == 0 ? MR_NONE : AskPrecalcDataAnyhow(b);
}

/// Do the data prove that a white move, made in `child`, mates within nPlies, itself counted, against every reply?
///   child  Black to move, in its slot of the context's stack.
[[nodiscard]] bool MatesByData(TChessboard& child, int nPlies);

/// What the data made of a list of White's moves.
enum class EStoredTree : std::uint8_t {
    Silent,  // nothing; the list is as it was
    Ordered, // sorted: byte 3 of each move is the number of moves until it mates, kNoStoredHint if it does not
    Mates,   // the same, and the first move mates in time
};

inline constexpr std::uint8_t kNoStoredHint = 255;

/// Orders the list of a node among the first moves of a long analysis by the data.
[[nodiscard]] EStoredTree OrderByStoredTree(TChessboard& p, int nMoves, TMove* list);

} // namespace quillon
