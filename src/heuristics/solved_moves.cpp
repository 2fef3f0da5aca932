#include "heuristics/solved_moves.h"

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/precalc_use.h"

namespace quillon {

namespace {

/// Have the data a mate in time for the root? Then they know what follows its moves too, but for captures.
bool IsMateByData(const TChessboard& root) {
    const std::uint16_t n = HalfMovesByData(root);
    return n != 0 && n != kUnknownHalfMoves && n <= root.m_nMoves;
}

} // namespace

std::vector<TMove> FindSolvedMoves(TChessboard& root) {
    const bool bDataMate = IsMateByData(root);
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(root, list);
    std::vector<TMove> solved;
    for (int i = 0; i < count; ++i) {
        TMove move = list[i];
        TChessboard* const child = CopyToChild(&root);
        if (MakeWhiteMove(*child, move) == 0)
            continue;
        const bool bMatesAtOnce = child->m_blackChecker != kNoChecker && !HasBlackEvasion(*child);
        if (bMatesAtOnce || (bDataMate && MatesByData(*child, root.m_nMoves)))
            solved.push_back({list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion, 0});
    }
    return solved;
}

} // namespace quillon
