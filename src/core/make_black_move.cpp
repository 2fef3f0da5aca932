#include "core/attacks.h"
#include "core/certain_escapes.h"
#include "core/generation.h"
#include "core/maker_steps.h"
#include "core/makers.h"

namespace quillon {

using namespace maker_steps;

namespace {

/// A marked pawn may not advance straight ahead; captures stay allowed. A heuristic may forbid pawn moves of one ply.
bool IsRefusedPawnMove(const TChessboard& b, const TMove& move) {
    const TFigure pawn = b.m_board[move.m_nFrom];
    if ((pawn & kPawnMayNotAdvance) != 0 && FileOf(move.m_nFrom) == FileOf(move.m_nTo))
        return true;
    return b.m_nMoves == b.m_pContext->m_nNoPawnMovePly;
}

void TakeFromList(std::array<TSquare, 2>& list, TSquare square) {
    if (list[0] == square)
        list[0] = list[1];
}

/// Takes a captured figure out of its list while the lists are valid.
void TakeFromLists(TChessboard& b, TFigure kind, TSquare square) {
    if (kind == kRook)
        TakeFromList(b.m_whiteRookSquares, square);
    else if (kind == kBishop)
        TakeFromList(b.m_whiteBishopSquares, square);
    else if (kind == kKnight)
        TakeFromList(b.m_whiteKnightSquares, square);
}

void RecordCapture(TChessboard& b, TFigure captured, TSquare square) {
    --CounterOf(b, captured);
    const int count = (b.m_bySideState & kWhiteCapturesMask) >> kWhiteCapturesShift;
    if (count < 3) {
        b.m_pContext->m_capturedWhite[static_cast<std::size_t>(count)] = {captured, square};
        b.m_bySideState = static_cast<std::uint8_t>(b.m_bySideState + (1 << kWhiteCapturesShift));
    }
    if (b.m_bWhiteListsValid != 0)
        TakeFromLists(b, KindOf(captured), square);
    else
        RebuildWhiteLists(b);
}

void Promote(TChessboard& b, const TMove& move) {
    const TFigure figure = kBlack | PromotionKind(move);
    b.m_board[move.m_nTo] = figure;
    --b.m_blackPawns;
    ++CounterOf(b, figure);
    if ((b.m_wBlackState & kBlackPromotionsMask) < 3)
        ++b.m_wBlackState;
    b.m_pContext->m_bUnderPromotionEqual = false;
}

/// The rook's part of a castling. False if the rook or the king has moved before.
bool MoveCastlingRook(TChessboard& b, const TMove& move) {
    if (!HasBlackCastlingRight(ParentOf(b), move.m_nTo == kG8))
        return false;
    const TCastlingRook<TBlackSide> rook(move);
    b.m_board[rook.m_nFrom] = kNoFigure;
    b.m_board[rook.m_nTo] = kBlackRook;
    FollowBlockedFigure(b, rook.m_nFrom, rook.m_nTo);
    return true;
}

bool IsKingSafe(const TChessboard& b, const TMove& move) {
    if (b.m_blackChecker != kNoChecker)
        return !IsAttackedByWhite(b, b.m_blackKingFile, b.m_blackKingRank);
    if (UncoversOwnKing<TBlackSide>(b, move.m_nFrom))
        return false;
    return move.m_nEnPassant == 0 ||
           !UncoversOwnKing<TBlackSide>(b, SquareAt(FileOf(move.m_nTo), RankOf(move.m_nFrom)));
}

int MakeNullMove(TChessboard& b, const TMove& move) {
    FinishMove(b, move);
    b.m_whiteChecker = kNoChecker;
    return kMoveStands;
}

/// Watched figures follow a move of one step; one that goes further is watched no longer.
void FollowWatchedFigure(TChessboard& b, const TMove& move) {
    if (HasBlockedFigures(b))
        FollowBlockedFigure(b, move.m_nFrom, KingSteps(move.m_nFrom, move.m_nTo) == 1 ? move.m_nTo : kNoSquare);
}

} // namespace

// The steps, in order:
//   1 null move                    4 castling              7 check on White        10 heuristics' words
//   2 pawn refusals, en passant    5 captured figure       8 certain escapes
//   3 promotion                    6 legality              9 move and ply
// The check is found before the escapes are judged, since they may ask for a mate in two of the complete position.
template <TMakerRules kRules> int MakeBlackMove(TChessboard& b, TMove& move, bool bLegal) {
    if (IsNullMove(move)) // 1
        return MakeNullMove(b, move);

    const TFigure moved = b.m_board[move.m_nFrom];
    const bool bPawn = KindOf(moved) == kPawn;
    if (kRules.m_bUselessMoves && bPawn && IsRefusedPawnMove(b, move)) // 2
        return kIllegalMove;
    TFigure captured = b.m_board[move.m_nTo];
    TSquare captureSquare = move.m_nTo;
    move.m_nEnPassant = bPawn && captured == kNoFigure && FileOf(move.m_nFrom) != FileOf(move.m_nTo);
    if (move.m_nEnPassant != 0) {
        captureSquare = static_cast<TSquare>(move.m_nTo + 8);
        captured = b.m_board[captureSquare];
        b.m_board[captureSquare] = kNoFigure;
    }
    b.m_board[move.m_nTo] = moved;
    b.m_board[move.m_nFrom] = kNoFigure;

    const bool bKing = moved == kBlackKing;
    const bool bCastling = bKing && move.m_nFrom == kE8 && IsCastling(move);
    const bool bPromotion = PromotionKind(move) != 0;
    if (bPromotion) // 3
        Promote(b, move);
    if (bCastling && !MoveCastlingRook(b, move)) // 4
        return kIllegalMove;
    if (captured != kNoFigure) // 5
        RecordCapture(b, captured, captureSquare);

    if (bKing) { // 6
        if (!bLegal && IsAttackedByWhite(b, FileOf(move.m_nTo), RankOf(move.m_nTo)))
            return kIllegalMove;
        TBlackSide::SetKing(b, move.m_nTo);
    } else if (!bLegal && !IsKingSafe(b, move)) {
        return kIllegalMove;
    }

    DetectCheck<TBlackSide>(b, move, bCastling); // 7
    b.m_blackChecker = kNoChecker;
    FollowWatchedFigure(b, move);
    if (captured != kNoFigure || bPromotion)
        UpdatePrecalcBits(b);
    const bool bAsk = kRules.m_bUselessMoves && MayHaveEscaped(b, captured != kNoFigure);
    FinishMove(b, move);                 // 9
    if (bAsk && HasEscapedForCertain(b)) // 8
        return kCertainEscape;
    if (kRules.m_bUselessMoves && (move.m_nPromotion & kMoveDefersEdgeCheck) != 0) // 10
        ApplyDeferredEdgeCheck(b);
    return kMoveStands;
}

template int MakeBlackMove<kSolving>(TChessboard&, TMove&, bool);
template int MakeBlackMove<kLegalityOnly>(TChessboard&, TMove&, bool);

} // namespace quillon
