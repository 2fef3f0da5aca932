#pragma once
// TChessboard: the one position record of the engine.
//
// A flat, trivially copyable record of 144 bytes. The search never unmakes a move: to try one it copies the parent into
// the next slot of the thread's stack, links the copy to its parent and applies the move to the copy. Everything the
// hot path asks of a position is held here and kept current by the two move makers (makers.h).
//
// Lifetime: a record is a slot of a stack and is overwritten when a sibling is tried. Nothing keeps a pointer to a slot
//           beyond the call that made it, except the children linked to it.
// Threads:  a record belongs to the stack of one thread.

#include <array>
#include <cstdint>
#include <type_traits>

#include "core/figures.h"
#include "core/move.h"
#include "core/square.h"

namespace quillon {

struct TAnalysis;
struct TSearchContext;

/// Values of m_whiteChecker and m_blackChecker that are no square.
inline constexpr std::int8_t kNoChecker = -1;
inline constexpr std::int8_t kDoubleCheck = 64;

// Bits of m_wKingState that the chess core sets. 0x800, 0x1000 and 0x4000 are about precalculated data
// (precalc_at_hand.h); the others belong to the heuristics.
inline constexpr std::uint16_t kNarrowPlay = 0x4;         // the initial analysis: little room for both sides
inline constexpr std::uint16_t kBareBlackKing = 0x400;    // Black has a bare king and White can still mate
inline constexpr std::uint16_t kPrecalcCanAnswer = 0x800; // precalculated data can answer for this material

// Bits of m_wBlackState.
inline constexpr std::uint16_t kBlackPromotionsMask = 0x3; // number of black promotions so far, at most 3
inline constexpr int kRingShift = 3;                       // bits 3 and 4: ring of the black king
inline constexpr std::uint16_t kRingMask = 3u << kRingShift;
inline constexpr std::uint16_t kWhiteQueenPromoted = 0x80;   // a white pawn has promoted to a queen
inline constexpr std::uint16_t kEdgeRelaxed = 0x100;         // the edge heuristics are relaxed in this line
inline constexpr std::uint16_t kMinorMaterial = 0x400;       // White is down to minor-figure material
inline constexpr std::uint16_t kRookPawnWrongBishop = 0x800; // rook pawn whose corner the bishops do not control

// Bits of m_bySideState.
inline constexpr std::uint8_t kBishopModeMask = 0x3; // 1, 2: a black bishop was taken off; 3: see the heuristics
inline constexpr int kWhiteCapturesShift = 2;        // bits 2 and 3: white figures captured so far, at most 3
inline constexpr std::uint8_t kWhiteCapturesMask = 3u << kWhiteCapturesShift;
inline constexpr int kBlackCapturesShift = 4; // bits 4 and 5: black figures captured so far, at most 3
inline constexpr std::uint8_t kBlackCapturesMask = 3u << kBlackCapturesShift;

struct TChessboard {
    std::array<TFigure, kSquares> m_board;   // figure code per square
    TAnalysis* m_pAnalysis;                  // shared by all threads of the analysis; not owned
    std::array<TSquare, 8> m_blockedFigures; // black figures held by SH_DONTLETFIGUREUNBLOCK, 255 for a gone one
    TChessboard* m_pPrevious;                // parent, null in the root: the chain is the history of the game
    TSearchContext* m_pContext;              // owner of the stack this record is a slot of
    TMove m_lastMove;                        // the move that led here; unset in the root
    std::uint16_t m_nMoves;                  // plies still to play: odd = White to move, mate in n starts at 2n - 1
    std::uint16_t m_nInitialMoves;           // m_nMoves of the root of this run
    std::uint32_t m_nHeuristics;             // heuristic flags in force here (heuristic_parameters.h)
    std::uint32_t m_nHeurParams;             // signature of flags and parameters; part of a register key
    std::uint16_t m_wKingState;              // see the bits above
    std::uint16_t m_wBlackState;             // see the bits above
    std::uint8_t m_bySideState;              // see the bits above
    std::uint8_t m_byPass;                   // 1 in a pass with heuristics, 2 in the pass without
    std::int8_t m_whiteKingFile, m_whiteKingRank; //
    std::int8_t m_blackKingFile, m_blackKingRank; //
    std::int8_t m_whiteChecker;                   // black figure that checks the white king, kNoChecker, kDoubleCheck
    std::int8_t m_blackChecker;                   // the same for the black king

    // Figures on the board. The ten are cleared and summed together.
    std::uint8_t m_whiteQueens, m_blackQueens, m_whiteRooks, m_blackRooks, m_whiteBishops, m_blackBishops;
    std::uint8_t m_whiteKnights, m_blackKnights, m_whitePawns, m_blackPawns;

    // Squares of the white figures, in use while m_bWhiteListsValid: at most one queen, two rooks, two knights, two
    // bishops and, if two, on squares of opposite colours. Entries beyond the counts mean nothing.
    std::array<TSquare, 2> m_whiteRookSquares;
    std::array<TSquare, 2> m_whiteBishopSquares;
    std::array<TSquare, 2> m_whiteKnightSquares;
    TSquare m_whiteQueenSquare;
    std::uint8_t m_bWhiteListsValid;
};
static_assert(sizeof(void*) == 8, "the record is laid out for 64-bit machines");
static_assert(sizeof(TChessboard) == 144);
static_assert(std::is_trivially_copyable_v<TChessboard> && std::is_standard_layout_v<TChessboard>);

[[nodiscard]] constexpr TSquare WhiteKingSquare(const TChessboard& b) {
    return SquareAt(b.m_whiteKingFile, b.m_whiteKingRank);
}
[[nodiscard]] constexpr TSquare BlackKingSquare(const TChessboard& b) {
    return SquareAt(b.m_blackKingFile, b.m_blackKingRank);
}
[[nodiscard]] constexpr bool IsWhiteToMove(const TChessboard& b) { return (b.m_nMoves & 1) != 0; }

/// Is one of the heuristics of these bits in force?
[[nodiscard]] constexpr bool HasHeuristic(const TChessboard& b, std::uint32_t bits) {
    return (b.m_nHeuristics & bits) != 0;
}

/// Ring of the black king as the record holds it: 0 on the edge, 3 in the centre.
[[nodiscard]] constexpr int BlackRing(const TChessboard& b) { return (b.m_wBlackState & kRingMask) >> kRingShift; }

/// 0 none, 1 or 2 a black bishop was taken off the board by the opposite-bishops heuristic, 3 its further mode.
[[nodiscard]] constexpr int BishopMode(const TChessboard& b) { return b.m_bySideState & kBishopModeMask; }
[[nodiscard]] constexpr bool IsBishopRemoved(const TChessboard& b) { return BishopMode(b) == 1 || BishopMode(b) == 2; }

/// Colour (as ColourOf) of the squares that the bishop taken off the board lived on; for modes 1 and 2.
[[nodiscard]] constexpr int RemovedBishopColour(const TChessboard& b) { return b.m_bySideState & 1; }

/// Men besides the kings, pawns counted.
[[nodiscard]] constexpr int WhiteMen(const TChessboard& b) {
    return b.m_whiteQueens + b.m_whiteRooks + b.m_whiteBishops + b.m_whiteKnights + b.m_whitePawns;
}
[[nodiscard]] constexpr int BlackMen(const TChessboard& b) {
    return b.m_blackQueens + b.m_blackRooks + b.m_blackBishops + b.m_blackKnights + b.m_blackPawns;
}

/// The same without pawns.
[[nodiscard]] constexpr int WhiteFigureCount(const TChessboard& b) { return WhiteMen(b) - b.m_whitePawns; }
[[nodiscard]] constexpr int BlackFigureCount(const TChessboard& b) { return BlackMen(b) - b.m_blackPawns; }

/// The counter of a figure (code with colour). Kings have none.
[[nodiscard]] std::uint8_t& CounterOf(TChessboard& b, TFigure figure);

/// A cleared record: empty board, no links, no moves. Not a legal position yet.
[[nodiscard]] TChessboard EmptyChessboard();

/// Recomputes every derived field from m_board: counts, kings, lists, checkers, ring; clears the capture counts.
///   bClearHeuristics  also zeroes m_wKingState and m_nHeuristics.
///   Errors  ChessException: "Pawns cannot occupy 1st nor 8th line of the chessboard.", "Illegal number of kings.",
///           "Both kings attacked."
void RecountFigures(TChessboard& b, bool bClearHeuristics);

/// Refuses a board with more men of one colour than a game can have: only with at most 16 do all moves of a position
/// fit a list of kMaxMoves. For boards from outside; RecountFigures itself does not ask.
///   Errors  ChessException: "More than 16 figures of one colour."
void CheckNumberOfMen(const TChessboard& b);

/// The same as RecountFigures, false instead of an exception.
[[nodiscard]] bool TryRecountFigures(TChessboard& b, bool bClearHeuristics);

/// Puts a figure (code with colour) on an empty square and adjusts counters, kings, ring and, while valid and with
/// room, the lists. The lists are not validated again: callers use it to restore a figure that was lifted off.
void PutFigure(TChessboard& b, TSquare square, TFigure figure);

/// Enters a white figure other than king and pawn into the counters and lists: a second queen, a third figure of a kind
/// or a second bishop on squares of one colour makes the lists invalid.
void EnlistWhiteFigure(TChessboard& b, TSquare square, TFigure kind);

/// Fills the four lists from the board and sets m_bWhiteListsValid if the counters keep within the bounds above.
void RebuildWhiteLists(TChessboard& b);

} // namespace quillon
