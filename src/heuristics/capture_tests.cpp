#include "heuristics/capture_tests.h"

#include <cstddef>

#include "core/attacks.h"
#include "core/mask_attacks.h"

namespace quillon {

namespace {

bool IsAttackedByWhiteOn(const TChessboard& b, int square) {
    return IsAttackedByWhite(b, FileOf(square), RankOf(square));
}
bool IsAttackedByBlackOn(const TChessboard& b, int square) {
    return IsAttackedByBlack(b, FileOf(square), RankOf(square));
}
TFigure FigureOn(const TChessboard& b, int square) { return b.m_board[static_cast<std::size_t>(square)]; }

} // namespace

bool CanWhiteCaptureOn(const TChessboard& b, TSquare square) {
    TSquare capturer = kNoSquare;
    if (FindWhiteCapturer(b, FileOf(square), RankOf(square), capturer))
        return true;
    return KingSteps(WhiteKingSquare(b), square) == 1 && !IsAttackedByBlackOn(b, square);
}

bool HasLooseBlackMan(const TChessboard& b, bool bPawns) {
    for (TMask men = BlackFigures(b.m_board.data()); men != 0;) {
        const int square = TakeSquare(men);
        const TFigure kind = KindOf(FigureOn(b, square));
        if (kind != kKing && (bPawns || kind != kPawn) && IsAttackedByWhiteOn(b, square) &&
            !IsAttackedByBlackOn(b, square))
            return true;
    }
    return false;
}

int CountBlackRooksEnPrise(const TChessboard& b) {
    if (b.m_blackRooks == 0)
        return 0;
    int count = 0;
    for (TMask men = BlackFigures(b.m_board.data()); men != 0;) {
        const int square = TakeSquare(men);
        if (FigureOn(b, square) == kBlackRook && CanWhiteCaptureOn(b, static_cast<TSquare>(square)))
            ++count;
    }
    return count;
}

bool IsHeldBySafeWhiteMan(const TChessboard& b, TSquare square) {
    TMove holders[kMaxMoves];
    int count = 0;
    FindWhiteAttackers(b, FileOf(square), RankOf(square), holders, &count);
    for (int i = 0; i < count; ++i)
        if (!IsAttackedByBlackFigure(b, FileOf(holders[i].m_nFrom), RankOf(holders[i].m_nFrom)))
            return true;
    return false;
}

} // namespace quillon
