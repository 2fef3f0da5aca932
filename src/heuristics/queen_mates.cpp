#include "heuristics/queen_mates.h"

#include <algorithm>

#include "core/generation.h"
#include "core/makers.h"
#include "core/mate_test.h"
#include "core/queries.h"

namespace quillon {

namespace {

TSquare FindFigure(const TChessboard& b, TFigure figure) {
    const auto found = std::find(b.m_board.begin(), b.m_board.end(), figure);
    return found == b.m_board.end() ? kNoSquare : static_cast<TSquare>(found - b.m_board.begin());
}

void LiftQueen(TFigureMasks& masks, TMask queen) {
    masks.m_white &= ~queen;
    masks.m_diagonalSliders &= ~queen;
    masks.m_straightSliders &= ~queen;
}

/// A queen on a square takes what stands there.
void PutQueen(TFigureMasks& masks, TMask queen) {
    masks.m_black &= ~queen;
    masks.m_pawns &= ~queen;
    masks.m_knights &= ~queen;
    masks.m_white |= queen;
    masks.m_diagonalSliders |= queen;
    masks.m_straightSliders |= queen;
}

} // namespace

int CountQueenMatingSquares(const TChessboard& b) {
    const TSquare queen = FindFigure(b, kWhiteQueen);
    if (queen == kNoSquare)
        return 0;
    TFigureMasks lifted = TakeMasks(b);
    LiftQueen(lifted, MaskOf(queen));
    int count = 0;
    for (TMask squares = ~lifted.m_white & ~MaskOf(lifted.m_nBlackKing); squares != 0;) {
        TFigureMasks placed = lifted;
        PutQueen(placed, MaskOf(TakeSquare(squares)));
        count += IsBlackMated(placed, kNoDoubleStep);
    }
    return count;
}

bool HasQueenCheck(const TChessboard& b) {
    if (b.m_whiteQueens == 0)
        return false;
    TMove list[kMaxMoves];
    const int count = b.m_whiteChecker == kNoChecker ? GenerateWhiteChecks(b, list) : GenerateWhiteEvasions(b, list);
    TChessboard parent = b;
    return std::any_of(list, list + count, [&](TMove move) {
        if (b.m_board[move.m_nFrom] != kWhiteQueen)
            return false;
        TChessboard child = parent;
        child.m_pPrevious = &parent;
        return MakeWhiteMove<kLegalityOnly>(child, move) != 0 && child.m_blackChecker != kNoChecker;
    });
}

bool GuardsKingAlone(const TChessboard& b) {
    constexpr int kMostHelpers = 2;
    const int helpers = b.m_whiteQueens - 1 + b.m_whiteRooks + b.m_whiteBishops + b.m_whiteKnights;
    if (b.m_blackRooks != 1 || b.m_whiteQueens == 0 || helpers > kMostHelpers)
        return false;
    const TSquare rook = FindFigure(b, kBlackRook);
    if (KingSteps(rook, BlackKingSquare(b)) != 1)
        return false;
    TChessboard without = b;
    without.m_board[rook] = kNoFigure;
    --without.m_blackRooks;
    // Taking the rook away may open a line of White's onto the king; then the rook was pinned and no guard.
    return TryRecountFigures(without, false) && without.m_blackChecker == kNoChecker && HasMateInOne(without) &&
           !HasMateInOne(b);
}

} // namespace quillon
