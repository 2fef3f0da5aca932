#include "heuristics/heuristic_signature.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

#include "core/search_context.h"
#include "heuristics/heuristic_set.h"

namespace quillon {

namespace {

constexpr unsigned kSquareBits = 6; // a square is a digit to base 64

/// value * 2^bits modulo 2^32, for any count of bits: the language leaves shifts by 32 and more undefined.
constexpr std::uint32_t ShiftedLeft(std::uint32_t value, unsigned bits) { return bits < 32 ? value << bits : 0; }

/// A signed parameter as a summand modulo 2^32.
constexpr std::uint32_t Wrapped(int value) { return static_cast<std::uint32_t>(value); }

// The watched figures of SH_DONTLETFIGUREUNBLOCK. Set by hand they are told by their squares in the root. Otherwise
// the list of the dynamic application is in force: a figure that it holds away from its root square need not have an
// ordinal at all, so its square of that list is added as a digit.
struct TWatchedFigures {
    std::uint64_t m_squares = 0; // the watched squares, one bit each
    std::uint32_t m_digits = 0;  // squares of the figures whose two lists differ
    unsigned m_nDigitBits = 0;   // width of these digits
};

TWatchedFigures CollectWatchedFigures(const THeuristicParameters& p) {
    TWatchedFigures watched;
    const auto nFigures = static_cast<std::size_t>(std::clamp<int>(p.m_nBlockedFigures, 0, kMaxBlockedFigures));
    for (std::size_t i = 0; i < nFigures; ++i) {
        const TSquare square = p.m_bBlockedFiguresByHand ? p.m_BlockedFigures[i] : p.m_BlockedFiguresNow[i];
        if (square < kSquares)
            watched.m_squares |= std::uint64_t{1} << square;
        if (!p.m_bBlockedFiguresByHand && p.m_BlockedFigures[i] != p.m_BlockedFiguresNow[i]) {
            watched.m_digits = ShiftedLeft(watched.m_digits, kSquareBits) + square;
            watched.m_nDigitBits += kSquareBits;
        }
    }
    return watched;
}

/// Bit n for the nth black figure of the root, in square order, that stands on one of the squares. The king counts.
std::uint32_t OrdinalBits(const TChessboard& root, std::uint64_t squares, bool bPawns) {
    std::uint32_t bits = 0;
    unsigned ordinal = 0;
    for (unsigned square = 0; square < kSquares; ++square) {
        const TFigure figure = root.m_board[square];
        if (!IsBlack(figure) || (KindOf(figure) == kPawn && !bPawns))
            continue;
        if ((squares >> square & 1) != 0)
            bits |= ShiftedLeft(1, ordinal);
        ++ordinal;
    }
    return bits;
}

/// Black figures of the root that have an ordinal: as many bits as the ordinals need.
unsigned OrdinalCount(const TChessboard& root, bool bPawns) {
    constexpr unsigned kKings = 1;
    const auto figures =
        static_cast<unsigned>(root.m_blackQueens + root.m_blackRooks + root.m_blackBishops + root.m_blackKnights);
    return figures + (bPawns ? root.m_blackPawns : 0u) + kKings;
}

std::uint32_t BlockedFiguresPart(const TSearchContext& context) {
    assert(context.m_pRoot != nullptr);
    const TChessboard& root = *context.m_pRoot;
    const TWatchedFigures watched = CollectWatchedFigures(context);
    std::uint32_t v = ShiftedLeft(context.m_bBlockedFiguresByHand, OrdinalCount(root, context.m_bBlockedPawns));
    v |= OrdinalBits(root, watched.m_squares, context.m_bBlockedPawns);
    v += context.m_bBlockedFiguresEff;
    if (context.m_bBlockedFiguresByHand)
        return v;
    if (watched.m_nDigitBits == 0)
        return 2 * v + 1;
    return ShiftedLeft(v, watched.m_nDigitBits + 1) + watched.m_digits;
}

/// SH_KEEPKINGNEARCORNER: 2..6 for 1..5 squares, 0 and 1 for 2 and 1 moves.
constexpr std::uint32_t NearCornerDigit(int distance) {
    // Neither sign: the bit came without a distance. It takes the value of three bits that no distance has, lest its
    // results pass for those of a real one.
    constexpr std::uint32_t kNoDistance = 7;
    return distance == 0 ? kNoDistance : Wrapped(distance + (distance > 0 ? 1 : 2));
}

/// The value so far with the parameters of one bit appended; unchanged for a bit that has none, or whose parameters
/// have a place of their own before or behind the walk over the bits.
std::uint32_t AppendParameters(std::uint32_t v, std::uint32_t bit, const TChessboard& board,
                               const THeuristicParameters& p) {
    const bool bEdgeRelaxed = (board.m_wBlackState & kEdgeRelaxed) != 0;
    switch (bit) {
    case SH_KEEPKINGONTHEEDGE:
        v = 2 * v + (p.m_bDontLetKingMove && (board.m_wBlackState & kKingMoveBanSuspended) == 0);
        v = 2 * v + p.m_bAllowExceptions;
        v = 2 * v + bEdgeRelaxed;
        return 2 * v + p.m_bEdgeInclCornerSquares;
    case SH_ONECOLORPLAYPOSSIBLE:
        return 4 * v + Wrapped(BishopMode(board));
    case SH_ZUGZWANGTRIANGLES:
        return 4096 * v + 64u * p.m_nZugzwangTriangle1 + p.m_nZugzwangTriangle2;
    case SH_KEEPKINGWITHINEXTEDGE:
        return 16 * v + 8u * (p.m_nRelaxCaptures != 0) + 4u * p.m_bEdgeInclCornerSquares + 2u * p.m_bExtEdgeStrict +
               bEdgeRelaxed;
    case SH_SAVEQUEENROOK:
        return 4 * v + 2u * p.m_bSaveRookQueenStrict + ((board.m_wBlackState & kWhiteMajorFigureLost) != 0);
    case SH_DONTLOSEANYFIGURES:
        return 4 * v + p.m_nSaveFiguresMode;
    case SH_ASSERTBLACKKINGSURROUNDED:
        return 2 * v + p.m_bAssertBKSStrict;
    case SH_CAPTUREKNIGHT:
        return 2 * v + (p.m_nCaptureKnightMode != 0); // room for a flag only
    case SH_SKIPWORSTWHITEMOVES:
        return 2 * v + 1;
    case SH_KEEPKINGNEARCORNER:
        return 8 * v + NearCornerDigit(p.m_nKingNearCorner);
    default:
        return v;
    }
}

// Depth codes 2 to 9 fill three bits; the four ways to run with the other heuristics are told apart by their even
// remainders modulo 16, which leaves the last bit to the preliminary pass.
std::uint32_t AppendForcedMate(std::uint32_t v, const THeuristicParameters& p) {
    const std::uint32_t w = 8 * (8 * v + p.m_nFfmDepth);
    const std::uint32_t run = p.m_bFfmCycleTwice ? 2 * w - 18 : 2 * (w + Wrapped(p.m_nFfmWithOther)) - 28;
    return run + p.m_bFfmPreliminary;
}

} // namespace

std::uint32_t ComputeHeurParams(const TChessboard& board) noexcept {
    if (board.m_nHeuristics == 0)
        return 0;
    assert(board.m_pContext != nullptr);
    const TSearchContext& context = *board.m_pContext;

    std::uint32_t v = HasHeuristic(board, SH_DONTLETFIGUREUNBLOCK) ? BlockedFiguresPart(context) : 0;
    v = 2 * v + context.m_bApplyDlfuDynamically;
    if (HasHeuristic(board, SH_KEYWHITEFIGURE))
        v = 64 * v + context.m_nKeyWhiteFigure;
    for (std::uint32_t left = board.m_nHeuristics; left != 0; left &= left - 1)
        v = AppendParameters(v, left & (~left + 1), board, context);
    if (HasHeuristic(board, SH_FINDFORCEDMATE))
        v = AppendForcedMate(v, context);
    if (HasHeuristic(board, SH_SINGLEQUEENMATE))
        v = 4 * v + context.m_nSingleQueenMode;
    return v;
}

} // namespace quillon
