#include "heuristics/one_colour_play.h"

#include <algorithm>

#include "core/generation.h"
#include "core/makers.h"
#include "core/mask_attacks.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "heuristics/heuristic_signature.h"

namespace quillon {

namespace {

/// Mode by the colour of the bishop's squares (as ColourOf): bit 0 of the mode is that colour.
constexpr std::uint8_t kModeOfDark = 2, kModeOfLight = 1;

bool HasMaterial(const TChessboard& b) {
    return b.m_blackBishops == 1 && b.m_blackQueens + b.m_blackRooks + b.m_blackKnights == 0 && b.m_whiteBishops == 1 &&
           b.m_whiteQueens + b.m_whiteRooks + b.m_whiteKnights == 0;
}

TSquare BlackBishop(const TChessboard& b) {
    return static_cast<TSquare>(std::ranges::find(b.m_board, kBlackBishop) - b.m_board.begin());
}

/// All white men, the king among them, on squares of the other colour.
bool AvoidsColour(const TChessboard& b, int colour) {
    for (int s = 0; s < kSquares; ++s)
        if (IsWhite(b.m_board[static_cast<std::size_t>(s)]) && ColourOf(s) == colour)
            return false;
    return true;
}

/// Squares where the bishop would have no move, all its neighbours taken by black men.
TMask StuckSquares(const TChessboard& b) {
    const TMask black = BlackFigures(b.m_board.data());
    const int colour = RemovedBishopColour(b);
    TMask stuck = 0;
    for (int s = 0; s < kSquares; ++s)
        if (ColourOf(s) == colour && b.m_board[static_cast<std::size_t>(s)] == kNoFigure &&
            (BishopAttacks(s, ~TMask{0}) & ~black) == 0)
            stuck |= MaskOf(s);
    return stuck;
}

} // namespace

bool IsPromotionOutOfReach(const TChessboard& b) {
    for (int s = 0; s < kSquares; ++s)
        if (b.m_board[static_cast<std::size_t>(s)] == kWhitePawn && 7 - RankOf(s) <= b.m_blackPawns)
            return false;
    return true;
}

bool CanBlackMoveWhereverBishopIs(const TChessboard& b) {
    const TMask stuck = StuckSquares(b);
    if (stuck == 0)
        return true;
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(b, list);
    for (int i = 0; i < count; ++i) {
        const TMask way = SquaresBetween(list[i].m_nFrom, list[i].m_nTo) | MaskOf(list[i].m_nTo);
        TChessboard child = b;
        child.m_pPrevious = const_cast<TChessboard*>(&b);
        if ((way & stuck) == 0 && MakeBlackMove<kLegalityOnly>(child, list[i], false) != kIllegalMove)
            return true;
    }
    return false;
}

void DetectOppositeBishops(TChessboard& b) {
    if (BishopMode(b) != 0 || !HasMaterial(b) || b.m_whiteChecker != kNoChecker)
        return;
    const TSquare bishop = BlackBishop(b);
    const int colour = ColourOf(bishop);
    if (!AvoidsColour(b, colour) || !IsPromotionOutOfReach(b))
        return;
    b.m_board[bishop] = kNoFigure;
    --b.m_blackBishops;
    std::ranges::replace(b.m_blockedFigures, bishop, kNoSquare);
    b.m_bySideState = static_cast<std::uint8_t>(b.m_bySideState | (colour == 0 ? kModeOfDark : kModeOfLight));
    b.m_nHeurParams = ComputeHeurParams(b);
}

// The further mode, a bishop that stays on the board, is never set: with it all moves are searched as they are.
bool IsRefusedByBishopMode(const TChessboard&, const TMove&) { return false; }

// What White captures in a bishop mode is a figure that was promoted since: the bishop itself lives on squares that
// White does not enter. The mode stands.
void CorrectBishopMode(TChessboard&) {}

} // namespace quillon
