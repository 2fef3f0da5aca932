#include "search/quick_refutation.h"

#include "core/mask_moves.h"
#include "search/mate_in_one.h"

namespace quillon {

namespace {

/// Castling would need its rights looked up: such positions take the ordinary way.
bool MayCastle(const TChessboard& b) {
    return WhiteKingSquare(b) == kE1 && (b.m_board[kA1] == kWhiteRook || b.m_board[kH1] == kWhiteRook);
}

/// Squares that a black figure of this kind could go to, pins not regarded; of a pawn neither the double step nor a
/// promotion.
TMask BlackTargets(const TFigureMasks& m, int from, TFigure kind) {
    const TMask occupied = m.Occupied();
    switch (kind) {
    case kKing:
        return KingAttacks(from) & ~m.m_black;
    case kKnight:
        return KnightAttacks(from) & ~m.m_black;
    case kPawn: {
        const TMask pawn = MaskOf(from);
        return ((pawn >> 8 & ~occupied) | (BlackPawnAttacks(pawn) & m.m_white)) & ~kRank1;
    }
    default: {
        TMask targets = 0;
        if ((kind & kRook) != 0)
            targets |= RookAttacks(from, occupied);
        if ((kind & kBishop) != 0)
            targets |= BishopAttacks(from, occupied);
        return targets & ~m.m_black;
    }
    }
}

bool IsBlackKingAttacked(const TFigureMasks& m) {
    return WhiteCheckers(m) != 0 || (KingAttacks(m.m_nWhiteKing) & MaskOf(m.m_nBlackKing)) != 0;
}

/// Is the reply legal, and has White no mate on the move behind it?
bool IsRefutation(const TFigureMasks& afterWhite, int from, int to, TFigure kind) {
    const TFigureMasks after = WithBlackMove(afterWhite, from, to, kind);
    return !IsBlackKingAttacked(after) && !CMateInOne(after, kNoDoubleStep, 0).Find();
}

} // namespace

CQuickRefutation::CQuickRefutation(const TChessboard& b)
    : m_b(b), m_masks(TakeMasks(b)), m_bUsable(BishopMode(b) == 0 && !MayCastle(b)) {
    const TMask occupied = m_masks.Occupied();
    m_straightChecks = RookAttacks(m_masks.m_nBlackKing, occupied);
    m_diagonalChecks = BishopAttacks(m_masks.m_nBlackKing, occupied);
    m_screens = m_straightChecks | m_diagonalChecks;
    m_shields = RookAttacks(m_masks.m_nWhiteKing, occupied) | BishopAttacks(m_masks.m_nWhiteKing, occupied);
}

/// Directly, or by leaving a line to the black king. Not exact: a screen may have nothing behind it.
bool CQuickRefutation::MayCheck(const TMove& move, TFigure kind) const {
    TMask squares = 0;
    if (kind == kKnight)
        squares = KnightAttacks(m_masks.m_nBlackKing);
    else if (kind == kPawn)
        squares = BlackPawnAttacks(MaskOf(m_masks.m_nBlackKing));
    if ((kind & kRook) != 0)
        squares |= m_straightChecks;
    if ((kind & kBishop) != 0)
        squares |= m_diagonalChecks;
    return ((squares >> move.m_nTo | m_screens >> move.m_nFrom) & 1) != 0;
}

bool CQuickRefutation::MayExposeKing(const TMove& move, TFigure kind) const {
    return kind == kKing || m_b.m_whiteChecker != kNoChecker || ((m_shields >> move.m_nFrom) & 1) != 0;
}

EQuickLook CQuickRefutation::Look(const TMove& move) {
    if (!m_bUsable || PromotionKind(move) != 0)
        return EQuickLook::Unknown;
    const TFigure kind = KindOf(m_b.m_board[move.m_nFrom]);
    const bool bDiagonalPawn = kind == kPawn && FileOf(move.m_nFrom) != FileOf(move.m_nTo);
    if (bDiagonalPawn && m_b.m_board[move.m_nTo] == kNoFigure)
        return EQuickLook::Unknown; // en passant
    const TFigureMasks after = WithWhiteMove(m_masks, move.m_nFrom, move.m_nTo, kind);
    if (MayCheck(move, kind) && WhiteCheckers(after) != 0)
        return EQuickLook::Unknown;
    if (MayExposeKing(move, kind) && IsWhiteKingAttacked(after))
        return EQuickLook::Illegal;
    const bool bRefuted = RefutesByHint(after, m_b.m_pContext->m_hints[2]) || RefutesByFlight(after);
    return bRefuted ? EQuickLook::Refuted : EQuickLook::Unknown;
}

bool CQuickRefutation::RefutesByHint(const TFigureMasks& afterWhite, const TMove& hint) const {
    if (IsNullMove(hint) || PromotionKind(hint) != 0 || ((afterWhite.m_black >> hint.m_nFrom) & 1) == 0)
        return false;
    const TFigure kind = KindOf(m_b.m_board[hint.m_nFrom]);
    return ((BlackTargets(afterWhite, hint.m_nFrom, kind) >> hint.m_nTo) & 1) != 0 &&
           IsRefutation(afterWhite, hint.m_nFrom, hint.m_nTo, kind);
}

bool CQuickRefutation::RefutesByFlight(const TFigureMasks& afterWhite) {
    const int king = afterWhite.m_nBlackKing;
    const TMask lifted = afterWhite.Occupied() & ~MaskOf(king);
    TMask flights = KingAttacks(king) & ~afterWhite.m_black & ~WhiteAttacks(afterWhite, lifted);
    while (flights != 0) {
        const int to = TakeSquare(flights);
        if (IsRefutation(afterWhite, king, to, kKing)) {
            m_b.m_pContext->m_hints[2] = {static_cast<std::uint8_t>(king), static_cast<std::uint8_t>(to), 0, 0};
            return true;
        }
    }
    return false;
}

} // namespace quillon
