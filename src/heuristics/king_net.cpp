#include "heuristics/king_net.h"

#include <bit>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/king_flights.h"
#include "core/makers.h"
#include "core/mask_attacks.h"
#include "core/mask_moves.h"
#include "core/mate_test.h"

namespace quillon {

namespace {

TMask TargetsOf(const TFigureMasks& m, int square) {
    const TMask figure = MaskOf(square), occupied = m.Occupied();
    TMask targets = 0;
    if ((m.m_knights & figure) != 0)
        targets |= KnightAttacks(square);
    if ((m.m_diagonalSliders & figure) != 0)
        targets |= BishopAttacks(square, occupied);
    if ((m.m_straightSliders & figure) != 0)
        targets |= RookAttacks(square, occupied);
    return targets & ~m.m_white & ~MaskOf(m.m_nBlackKing);
}

/// Is the square safe for the white figure that comes from `from`?
bool IsSafeFor(const TChessboard& b, const TFigureMasks& m, int from, int to) {
    if (IsWhiteFigurePinned(b, FileOf(from), RankOf(from), static_cast<TSquare>(to)))
        return false;
    if (IsAttackedByBlackFigure(b, FileOf(to), RankOf(to)))
        return false;
    const bool bKingReaches = (KingAttacks(m.m_nBlackKing) & MaskOf(to)) != 0;
    if (!bKingReaches)
        return true;
    const TFigureMasks after = WithWhiteMove(m, from, to, KindOf(b.m_board[static_cast<std::size_t>(from)]));
    return (WhiteAttacks(after, after.Occupied() & ~MaskOf(m.m_nBlackKing)) & MaskOf(to)) != 0;
}

enum class EAnswers { None, ReturnOnly, Others };

/// Black's legal answers to a check, `b` being the position after it.
EAnswers AnswersTo(TChessboard& b, TSquare home) {
    TMove list[kMaxMoves];
    const int count = GenerateBlackEvasions(b, list);
    EAnswers answers = EAnswers::None;
    for (int i = 0; i < count; ++i) {
        TChessboard child = b;
        child.m_pPrevious = &b;
        if (MakeBlackMove<kLegalityOnly>(child, list[i], false) == kIllegalMove)
            continue;
        if (child.m_board[list[i].m_nTo] != kBlackKing || list[i].m_nTo != home)
            return EAnswers::Others;
        answers = EAnswers::ReturnOnly;
    }
    return answers;
}

} // namespace

bool CanTakeAwaySquares(const TChessboard& b, int nLimit) {
    if (b.m_whiteChecker != kNoChecker)
        return false; // White has other cares
    const TFigureMasks m = TakeMasks(b);
    for (TMask figures = m.m_white & (m.m_knights | m.m_diagonalSliders | m.m_straightSliders); figures != 0;) {
        const int from = TakeSquare(figures);
        const TFigure kind = KindOf(b.m_board[static_cast<std::size_t>(from)]);
        for (TMask targets = TargetsOf(m, from); targets != 0;) {
            const int to = TakeSquare(targets);
            if (std::popcount(BlackKingFreeSquares(WithWhiteMove(m, from, to, kind))) <= nLimit &&
                IsSafeFor(b, m, from, to))
                return true;
        }
    }
    return false;
}

bool IsBlackKingForcedBack(TChessboard& b, TSquare home) {
    if ((BlackKingFreeSquares(TakeMasks(b)) & ~MaskOf(home)) == 0)
        return true;
    if (b.m_whiteChecker != kNoChecker || b.m_nMoves < 2)
        return false;
    TMove list[kMaxMoves];
    const int count = GenerateWhiteChecks(b, list);
    for (int i = 0; i < count; ++i) {
        TChessboard child = b;
        child.m_pPrevious = &b;
        if (MakeWhiteMove<kLegalityOnly>(child, list[i]) != 0 && child.m_blackChecker != kNoChecker &&
            AnswersTo(child, home) != EAnswers::Others)
            return true;
    }
    return false;
}

} // namespace quillon
