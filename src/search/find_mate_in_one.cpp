// Mate on the move in a position of the recursion: on masks where the rules allow it, by making the moves where not.

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/mate_test.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "search/find_mate.h"
#include "search/mate_in_one.h"

namespace quillon {

namespace {

/// White in check, or a black bishop off the board: the maker knows the rules of both.
bool IsLeftToMaker(const TChessboard& b) { return b.m_whiteChecker != kNoChecker || BishopMode(b) != 0; }

bool FindByMaking(const TChessboard& b) {
    TMove list[kMaxMoves];
    const int count = b.m_whiteChecker != kNoChecker ? GenerateWhiteEvasions(b, list) : GenerateWhiteChecks(b, list);
    for (int i = 0; i < count; ++i) {
        TChessboard child = b;
        child.m_pPrevious = const_cast<TChessboard*>(&b);
        if (MakeWhiteMove(child, list[i]) != 0 && child.m_blackChecker != kNoChecker && !HasBlackEvasion(child))
            return true;
    }
    return false;
}

/// The black pawn that has just made a double step.
int DoubleStepOf(const TChessboard& b) {
    const int to = b.m_lastMove.m_nTo;
    const bool bDoubleStep = b.m_pPrevious != nullptr && b.m_lastMove.m_nFrom - to == 16 &&
                             KindOf(b.m_board[static_cast<std::size_t>(to)]) == kPawn;
    return bDoubleStep ? to : kNoDoubleStep;
}

/// Squares to which White's king may castle.
TMask CastlingTargets(const TChessboard& b) {
    if (WhiteKingSquare(b) != kE1 || (b.m_board[kA1] != kWhiteRook && b.m_board[kH1] != kWhiteRook))
        return 0;
    TMove list[kMaxMoves];
    const int count = GenerateWhiteFigureMoves(b, kE1, list);
    TMask targets = 0;
    for (int i = 0; i < count; ++i)
        if (AbsDiff(list[i].m_nTo, kE1) == 2)
            targets |= MaskOf(list[i].m_nTo);
    return targets;
}

CMateInOne LookOnMasks(const TChessboard& b) { return {TakeMasks(b), DoubleStepOf(b), CastlingTargets(b)}; }

} // namespace

TLookForMate LookForMateInOne(const TChessboard& b) {
    if (IsLeftToMaker(b))
        return {FindByMaking(b), CountBlackKingFreeSquares(b)};
    CMateInOne look = LookOnMasks(b);
    return {look.Find(), look.CountFlights()};
}

bool HasMateInOne(const TChessboard& b) { return IsLeftToMaker(b) ? FindByMaking(b) : LookOnMasks(b).Find(); }

bool FindMateInOne(TChessboard* p) { return HasMateInOne(*p); }

} // namespace quillon
