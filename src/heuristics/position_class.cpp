#include "heuristics/position_class.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/mask_attacks.h"
#include "core/mate_test.h"
#include "heuristics/black_mobility.h"
#include "heuristics/king_confinement.h"
#include "heuristics/king_edge.h"

namespace quillon {

namespace {

TKingWalk Walk(const TFigureMasks& masks, TMask forbidden) {
    const auto InnermostRing = [](TMask squares) {
        int ring = 0;
        while (squares != 0) {
            const int square = TakeSquare(squares);
            ring = std::max(ring, RingOf(FileOf(square), RankOf(square)));
        }
        return ring;
    };
    TKingWalk walk;
    TMask reached = MaskOf(masks.m_nBlackKing), frontier = reached;
    while (frontier != 0) {
        TMask next = 0;
        while (frontier != 0)
            next |= KingAttacks(TakeSquare(frontier));
        frontier = next & ~reached & ~forbidden;
        reached |= frontier;
        walk.m_nSteps += frontier != 0;
    }
    walk.m_nSquares = std::popcount(reached) - 1;
    walk.m_nRing = InnermostRing(reached);
    walk.m_reached = reached;
    return walk;
}

} // namespace

TKingWalk WalkWithinCage(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    const TMask guarded = WhitePawnAttacks(masks.m_pawns & masks.m_white) | KingAttacks(masks.m_nWhiteKing);
    return Walk(masks, masks.m_black | guarded);
}

TKingWalk WalkUnderGuard(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    // The king gives no cover against the figures that look through his square.
    const TMask guarded = WhiteAttacks(masks, masks.Occupied() & ~MaskOf(masks.m_nBlackKing));
    // A loose figure that he would have to walk to is gone when he arrives.
    const TMask figures = masks.m_white & ~masks.m_pawns & ~KingAttacks(masks.m_nBlackKing);
    return Walk(masks, masks.m_black | guarded | figures);
}

int CountWhiteChecks(TChessboard& root) {
    TMove list[kMaxMoves];
    const int count =
        root.m_whiteChecker == kNoChecker ? GenerateWhiteChecks(root, list) : GenerateWhiteMoves(root, list);
    int checks = 0;
    for (int i = 0; i < count; ++i) {
        TMove move = list[i];
        TChessboard* const child = CopyToChild(&root);
        if (MakeWhiteMove<kLegalityOnly>(*child, move) != 0 && child->m_blackChecker != kNoChecker)
            ++checks;
    }
    return checks;
}

bool HasOnlyTwinBishops(const TChessboard& b) {
    if (WhiteMen(b) != 2 || b.m_whiteBishops != 2)
        return false;
    int colours = 0;
    for (int square = 0; square < kSquares; ++square)
        if (b.m_board[static_cast<std::size_t>(square)] == kWhiteBishop)
            colours |= 1 << ColourOf(square);
    return colours != 3;
}

TPositionFacts TakePositionFacts(TChessboard& root) {
    TPositionFacts facts;
    facts.m_nPlies = root.m_nMoves;
    facts.m_nWhiteMaterial = WhiteMaterial(root);
    facts.m_nBlackMaterial = BlackMaterial(root);
    facts.m_nWhiteFigures = WhiteFigureCount(root);
    facts.m_nBlackFigures = BlackFigureCount(root);
    facts.m_nWhiteHeavy = WhiteHeavyFigures(root);
    facts.m_nRing = BlackRing(root);
    facts.m_bCorner = IsBlackKingInCorner(root);
    facts.m_nKingDistance = KingSteps(WhiteKingSquare(root), BlackKingSquare(root));
    facts.m_nFreeSquares = CountBlackKingFreeSquares(root);
    facts.m_nBlackMenAroundKing = CountBlackMenAroundKing(root);
    facts.m_cage = WalkWithinCage(root);
    facts.m_guarded = WalkUnderGuard(root);
    facts.m_nMoveCategory = facts.m_cage.m_nSteps;
    facts.m_nWhiteChecks = CountWhiteChecks(root);
    facts.m_nBlackMoves = CountBlackMoves(root);
    return facts;
}

void StorePositionFacts(const TChessboard& root, const TPositionFacts& facts, TSearchContext& context,
                        TAnalysis& analysis) {
    context.m_nWhiteMaterial = static_cast<std::uint16_t>(facts.m_nWhiteMaterial);
    context.m_nBlackMaterial = static_cast<std::uint16_t>(facts.m_nBlackMaterial);
    context.m_nClassFigures = static_cast<std::uint8_t>(facts.m_nWhiteFigures + facts.m_nBlackFigures);
    context.m_nMoveCategory = static_cast<std::uint8_t>(facts.m_nMoveCategory);
    context.m_nRootBlackQueens = root.m_blackQueens;
    context.m_nRootBlackRooks = root.m_blackRooks;
    context.m_nRootBlackBishops = root.m_blackBishops;
    context.m_nRootBlackKnights = root.m_blackKnights;
    analysis.m_rootMaterial = {static_cast<std::uint8_t>(facts.m_nWhiteFigures),
                               static_cast<std::uint8_t>(facts.m_nBlackFigures), root.m_whitePawns, root.m_blackPawns};
}

} // namespace quillon
