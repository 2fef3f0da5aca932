#include "heuristics/verify_kings.h"

#include "core/attacks.h"
#include "core/king_flights.h"
#include "core/lines.h"
#include "heuristics/capture_tests.h"
#include "heuristics/king_edge.h"

namespace quillon {

bool IsBlackKingDrawnNearer(const TChessboard& b) {
    if (BlackFigureCount(b) != 0)
        return false;
    for (TMask squares = BlackKingFreeSquares(TakeMasks(b)); squares != 0;)
        if (KingSteps(TakeSquare(squares), WhiteKingSquare(b)) < KingDistance(b))
            return true;
    return false;
}

ERuling DoubtsDistantKings(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const bool bWhitePromoted = PromotionKind(move.Before().m_lastMove) != 0 && move.Before().m_pPrevious != nullptr;
    if (b.m_whiteQueens != 0 || bWhitePromoted)
        return ERuling::NotDoubtful;
    const int limit = move.Context().m_nKingsNearBonus + 1 + (b.m_nMoves + 1) / 2;
    const int distance = KingDistance(b);
    // One step of the black king is a square that White's need not go.
    if (distance <= limit || (distance == limit + 1 && IsBlackKingDrawnNearer(b)))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

bool AreBlackKnightsSafe(const TChessboard& b) {
    if (b.m_blackKnights == 0)
        return false;
    for (int square = 0; square < kSquares; ++square)
        if (b.m_board[static_cast<std::size_t>(square)] == kBlackKnight &&
            CanWhiteCaptureOn(b, static_cast<TSquare>(square)))
            return false;
    return true;
}

ERuling DoubtsLivingKnight(CVerifiedMove& move) {
    const TChessboard& b = move.After();
    const bool bFaceToFace =
        KingDistance(b) == 2 && DirectionBetween(WhiteKingSquare(b), BlackKingSquare(b)) != kNoDirection;
    if (move.Context().m_nCaptureKnightMode != 0 || b.m_blackPawns != 0 || BlackRing(b) != 0 ||
        IsBlackKingInCorner(b) || !bFaceToFace || !AreBlackKnightsSafe(b))
        return ERuling::NotDoubtful;
    return move.DoubtfulUnlessMateInOne();
}

} // namespace quillon
