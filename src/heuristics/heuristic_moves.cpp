#include "heuristics/heuristic_moves.h"

#include "heuristics/heuristic_signature.h"
#include "heuristics/key_figure_moves.h"
#include "heuristics/sea_snake.h"
#include "heuristics/zugzwang_return.h"
#include "heuristics/zugzwang_triangles.h"

namespace quillon {

namespace {

constexpr int kLongestFreeKeyPlies = 7; // with so many plies left the key figure may move as well

THeuristicMoves TakeList(TChessboard& b, TMove* list) {
    int count = -1;
    if (HasHeuristic(b, SH_ZUGZWANGTRIANGLES))
        count = GenerateTriangleMoves(b, list);
    if (count < 0 && HasHeuristic(b, SH_SEASNAKE) && AppliesSeaSnake(b))
        count = GenerateSeaSnakeMoves(b, list);
    if (count < 0 && HasHeuristic(b, SH_ZUGZWANG))
        count = GenerateReturningMoves(b, list);
    if (count < 0 && HasHeuristic(b, SH_KEYWHITEFIGURE) && b.m_nMoves > kLongestFreeKeyPlies)
        count = GenerateKeyFigureMoves(b, list);
    return {count, count >= 0};
}

} // namespace

void ClearHeuristics(TChessboard& b, std::uint32_t bits) {
    b.m_nHeuristics &= ~bits;
    b.m_nHeurParams = ComputeHeurParams(b);
}

THeuristicMoves GenerateByHeuristics(TChessboard& b, TMove* list) {
    THeuristicMoves moves;
    if (b.m_whiteChecker == kNoChecker)
        moves = TakeList(b, list);
    if (HasHeuristic(b, SH_KEYWHITEFIGURE))
        moves.m_bDoubtful = true; // White plays round its key figure: no refutation of that is one of the position
    return moves;
}

} // namespace quillon
