#pragma once
// TMove: four bytes, passed by address and stored as one 32-bit word.
//
//   byte 0  source square
//   byte 1  target square
//   byte 2  bits 0..4  kind a pawn promotes to (12, 8, 4, 16), 0 for no promotion
//           bit 5      set by the black move sort: breaks a king-edge heuristic, the check is deferred
//           bit 7      mark of the heuristics, read on the parent's last move
//   byte 3  set by the move maker: 1 for an en passant capture, else 0;
//           while the move is in a list: its sort score
//
// A null move (Black passes; only in opposite-bishops mode) has source = target = the black king's square.

#include <cstdint>
#include <type_traits>

#include "core/figures.h"
#include "core/square.h"

namespace quillon {

/// No initialisers: a node's list of moves must not cost a clearing. Write TMove{} for a cleared one.
struct TMove {
    std::uint8_t m_nFrom;
    std::uint8_t m_nTo;
    std::uint8_t m_nPromotion; // kind and marks, see above; read the kind through PromotionKind
    std::uint8_t m_nEnPassant;
};
static_assert(sizeof(TMove) == 4 && std::is_trivially_copyable_v<TMove>);
static_assert(std::is_trivially_default_constructible_v<TMove>);

inline constexpr std::uint8_t kMoveDefersEdgeCheck = 0x20;
inline constexpr std::uint8_t kMoveMark = 0x80;

/// No legal position has more moves than this (218 are possible); lists have room for one null move more.
inline constexpr int kMaxMoves = 256;

[[nodiscard]] constexpr TFigure PromotionKind(const TMove& move) { return move.m_nPromotion & kKindMask; }
[[nodiscard]] constexpr bool IsNullMove(const TMove& move) { return move.m_nFrom == move.m_nTo; }

/// Same source, target and promotion kind; marks and scores do not count.
[[nodiscard]] constexpr bool SameMove(const TMove& a, const TMove& b) {
    return a.m_nFrom == b.m_nFrom && a.m_nTo == b.m_nTo && PromotionKind(a) == PromotionKind(b);
}

} // namespace quillon
