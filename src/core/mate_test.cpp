#include "core/mate_test.h"

#include "core/attacks.h"

namespace quillon {

namespace {

/// Black figures that stand alone between their king and a white slider. Against a single check from elsewhere they can
/// do nothing: a pinned figure moves only along its own line.
TMask PinnedBlackFigures(const TFigureMasks& m) {
    const TMask occupied = m.Occupied();
    TMask pinners = 0;
    if (const TMask sliders = m.m_white & m.m_straightSliders) {
        const TMask seen = RookAttacks(m.m_nBlackKing, occupied);
        pinners |= RookAttacks(m.m_nBlackKing, occupied & ~(seen & m.m_black)) & sliders & ~seen;
    }
    if (const TMask sliders = m.m_white & m.m_diagonalSliders) {
        const TMask seen = BishopAttacks(m.m_nBlackKing, occupied);
        pinners |= BishopAttacks(m.m_nBlackKing, occupied & ~(seen & m.m_black)) & sliders & ~seen;
    }
    TMask pinned = 0;
    while (pinners != 0)
        pinned |= SquaresBetween(m.m_nBlackKing, TakeSquare(pinners)) & m.m_black;
    return pinned;
}

/// Black figures other than king and pawns that reach the square.
TMask BlackFiguresReaching(const TFigureMasks& m, int square) {
    const TMask occupied = m.Occupied();
    TMask reaching = KnightAttacks(square) & m.m_knights;
    if ((m.m_black & m.m_diagonalSliders) != 0)
        reaching |= BishopAttacks(square, occupied) & m.m_diagonalSliders;
    if ((m.m_black & m.m_straightSliders) != 0)
        reaching |= RookAttacks(square, occupied) & m.m_straightSliders;
    return reaching & m.m_black;
}

/// Black pawns that reach one of these empty squares by a step or a double step.
TMask BlackPawnsSteppingTo(const TFigureMasks& m, TMask squares) {
    const TMask pawns = m.m_black & m.m_pawns;
    const TMask empty = ~m.Occupied();
    constexpr TMask kRank5 = kRank1 << 32;
    const TMask single = (squares << 8) & pawns;
    const TMask twice = (((squares & kRank5) << 8) & empty) << 8 & pawns;
    return single | twice;
}

/// Black figures but the king that can capture the checker or step into its line, pins not regarded.
TMask BlackHelpers(const TFigureMasks& m, int checker) {
    TMask helpers = BlackFiguresReaching(m, checker) | (WhitePawnAttacks(MaskOf(checker)) & m.m_black & m.m_pawns);
    const TMask way = SquaresBetween(m.m_nBlackKing, checker);
    helpers |= BlackPawnsSteppingTo(m, way);
    for (TMask squares = way; squares != 0;)
        helpers |= BlackFiguresReaching(m, TakeSquare(squares));
    return helpers;
}

/// Tried out on a copy, since two pawns leave their squares at once.
bool HasEnPassantEvasion(const TFigureMasks& m, int doubleStep) {
    const TMask pawn = MaskOf(doubleStep);
    TMask beside = (((pawn & ~kFileA) >> 1) | ((pawn & ~kFileH) << 1)) & m.m_black & m.m_pawns;
    while (beside != 0) {
        const TMask capturer = MaskOf(TakeSquare(beside));
        TFigureMasks after = m;
        after.m_white &= ~pawn;
        after.m_black = (after.m_black & ~capturer) | pawn >> 8;
        after.m_pawns = (after.m_pawns & ~(pawn | capturer)) | pawn >> 8;
        if (WhiteCheckers(after) == 0)
            return true;
    }
    return false;
}

} // namespace

TMask WhiteAttacks(const TFigureMasks& m, TMask occupied) {
    TMask attacks = KingAttacks(m.m_nWhiteKing) | WhitePawnAttacks(m.m_white & m.m_pawns);
    for (TMask knights = m.m_white & m.m_knights; knights != 0;)
        attacks |= KnightAttacks(TakeSquare(knights));
    for (TMask sliders = m.m_white & m.m_diagonalSliders; sliders != 0;)
        attacks |= BishopAttacks(TakeSquare(sliders), occupied);
    for (TMask sliders = m.m_white & m.m_straightSliders; sliders != 0;)
        attacks |= RookAttacks(TakeSquare(sliders), occupied);
    return attacks;
}

TMask WhiteCheckers(const TFigureMasks& m) {
    const int king = m.m_nBlackKing;
    const TMask occupied = m.Occupied();
    TMask checkers = (KnightAttacks(king) & m.m_knights) | (BlackPawnAttacks(MaskOf(king)) & m.m_pawns);
    if ((m.m_white & m.m_diagonalSliders) != 0)
        checkers |= BishopAttacks(king, occupied) & m.m_diagonalSliders;
    if ((m.m_white & m.m_straightSliders) != 0)
        checkers |= RookAttacks(king, occupied) & m.m_straightSliders;
    return checkers & m.m_white;
}

bool IsWhiteKingAttacked(const TFigureMasks& m) {
    const int king = m.m_nWhiteKing;
    const TMask pawns = WhitePawnAttacks(MaskOf(king)) & m.m_black & m.m_pawns;
    return ((KingAttacks(king) & MaskOf(m.m_nBlackKing)) | pawns | BlackFiguresReaching(m, king)) != 0;
}

bool HasEvasion(const TFigureMasks& m, TMask checkers, int nDoubleStep) {
    const TMask lifted = m.Occupied() & ~MaskOf(m.m_nBlackKing);
    if ((KingAttacks(m.m_nBlackKing) & ~m.m_black & ~WhiteAttacks(m, lifted)) != 0)
        return true;
    if ((checkers & (checkers - 1)) != 0)
        return false;
    const TMask helpers = BlackHelpers(m, LowestSquare(checkers));
    if (helpers != 0 && (helpers & ~PinnedBlackFigures(m)) != 0)
        return true;
    return nDoubleStep != kNoDoubleStep && HasEnPassantEvasion(m, nDoubleStep);
}

bool IsBlackMated(const TFigureMasks& m, int nDoubleStep) {
    const TMask checkers = WhiteCheckers(m);
    return checkers != 0 && !HasEvasion(m, checkers, nDoubleStep);
}

bool HasBlackEvasion(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    const int to = b.m_lastMove.m_nTo;
    const bool bDoubleStep = b.m_pPrevious != nullptr && to - b.m_lastMove.m_nFrom == 16 &&
                             b.m_board[static_cast<std::size_t>(to)] == kWhitePawn;
    return HasEvasion(masks, WhiteCheckers(masks), bDoubleStep ? to : kNoDoubleStep);
}

} // namespace quillon
