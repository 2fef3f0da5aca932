#include "core/attacks.h"
#include "core/certain_escapes.h"
#include "core/generation.h"
#include "core/maker_steps.h"
#include "core/makers.h"

namespace quillon {

using namespace maker_steps;

namespace {

/// White keeps off the squares that the bishop taken off the board controls.
bool IsOnRemovedBishopsColour(const TChessboard& b, TSquare target) {
    return ColourOf(target) == RemovedBishopColour(b);
}

bool IsRefusedByMode(const TChessboard& b, const TMove& move) {
    if (!IsBishopRemoved(b))
        return BishopMode(b) == 3 && IsRefusedByBishopMode(b, move);
    const bool bDoubleStep = b.m_board[move.m_nFrom] == kWhitePawn && move.m_nTo - move.m_nFrom == 16;
    return bDoubleStep || IsOnRemovedBishopsColour(b, move.m_nTo);
}

void ReplaceInList(std::array<TSquare, 2>& list, TSquare from, TSquare to) { list[list[0] == from ? 0 : 1] = to; }

/// Follows a moved white figure in its list.
void FollowInLists(TChessboard& b, TFigure kind, TSquare from, TSquare to) {
    if (b.m_bWhiteListsValid == 0)
        return;
    if (kind == kQueen)
        b.m_whiteQueenSquare = to;
    else if (kind == kRook)
        ReplaceInList(b.m_whiteRookSquares, from, to);
    else if (kind == kBishop)
        ReplaceInList(b.m_whiteBishopSquares, from, to);
    else if (kind == kKnight)
        ReplaceInList(b.m_whiteKnightSquares, from, to);
}

/// Moves king and, when castling, rook. False if illegal.
template <TMakerRules kRules> bool MoveKing(TChessboard& b, const TMove& move) {
    const bool bCastling = move.m_nFrom == kE1 && IsCastling(move);
    if (bCastling) {
        if (!HasWhiteCastlingRight(ParentOf(b), move.m_nTo == kG1))
            return false;
        const TCastlingRook<TWhiteSide> rook(move);
        b.m_board[rook.m_nFrom] = kNoFigure;
        b.m_board[rook.m_nTo] = kWhiteRook;
        FollowInLists(b, kRook, rook.m_nFrom, rook.m_nTo);
    }
    if (kRules.m_bUselessMoves && IsForbiddenToWhiteKing(b, move.m_nTo))
        return false;
    if (IsAttackedByBlack(b, FileOf(move.m_nTo), RankOf(move.m_nTo)))
        return false;
    TWhiteSide::SetKing(b, move.m_nTo);
    return true;
}

/// Is the white king safe after another figure has moved?
bool IsKingSafe(const TChessboard& b, const TMove& move) {
    if (b.m_whiteChecker != kNoChecker)
        return !IsAttackedByBlack(b, b.m_whiteKingFile, b.m_whiteKingRank);
    if (UncoversOwnKing<TWhiteSide>(b, move.m_nFrom))
        return false;
    return move.m_nEnPassant == 0 ||
           !UncoversOwnKing<TWhiteSide>(b, SquareAt(FileOf(move.m_nTo), RankOf(move.m_nFrom)));
}

void RecordCapture(TChessboard& b, TFigure captured, TSquare square) {
    --CounterOf(b, captured);
    const int count = (b.m_bySideState & kBlackCapturesMask) >> kBlackCapturesShift;
    if (count < 3) {
        b.m_pContext->m_capturedBlack[static_cast<std::size_t>(count)] = {captured, square};
        b.m_bySideState = static_cast<std::uint8_t>(b.m_bySideState + (1 << kBlackCapturesShift));
    }
    if (BishopMode(b) != 0 && KindOf(captured) != kPawn)
        CorrectBishopMode(b);
}

/// With Black's last figure gone: is there material left that can mate a bare king at all?
bool CanMateBareKing(const TChessboard& b) {
    if (b.m_whiteRooks + b.m_whiteQueens + b.m_whitePawns + b.m_whiteKnights != 0)
        return true;
    return b.m_whiteBishops >= 2 && ColourOutOfBishopsReach(b) == -1;
}

/// Keeps the mark of a rook pawn whose corner the bishops do not control.
void UpdateRookPawnMark(TChessboard& b) {
    if (b.m_whiteQueens + b.m_whiteRooks + b.m_whiteKnights != 0 || b.m_whiteBishops == 0)
        return;
    b.m_wBlackState =
        static_cast<std::uint16_t>(IsRookPawnWithWrongBishop(b, false) ? b.m_wBlackState | kRookPawnWrongBishop
                                                                       : b.m_wBlackState & ~kRookPawnWrongBishop);
}

void Promote(TChessboard& b, const TMove& move) {
    const TFigure kind = PromotionKind(move);
    b.m_board[move.m_nTo] = kWhite | kind;
    --b.m_whitePawns;
    EnlistWhiteFigure(b, move.m_nTo, kind);
    if (kind == kQueen)
        b.m_wBlackState |= kWhiteQueenPromoted;
}

} // namespace

// The steps, in order:
//   1 bishop mode refuses            5 king: castling, forbidden squares, attack    9 mate still possible?
//   2 capture, en passant            6 others: list, pin                           10 rook-pawn mark
//   3 arrival, promotion             7 in check: attack on the king                11 check on Black
//   4 departure                      8 captured figure                             12 ply  13 watched figures, data
template <TMakerRules kRules> int MakeWhiteMove(TChessboard& b, TMove& move) {
    if (kRules.m_bUselessMoves && BishopMode(b) != 0 && IsRefusedByMode(b, move)) // 1
        return 0;

    const TFigure moved = b.m_board[move.m_nFrom];
    TFigure captured = b.m_board[move.m_nTo]; // 2
    TSquare captureSquare = move.m_nTo;
    const bool bPawn = moved == kWhitePawn;
    move.m_nEnPassant = bPawn && captured == kNoFigure && FileOf(move.m_nFrom) != FileOf(move.m_nTo);
    if (move.m_nEnPassant != 0) {
        captureSquare = static_cast<TSquare>(move.m_nTo - 8);
        captured = b.m_board[captureSquare];
        b.m_board[captureSquare] = kNoFigure;
    }

    b.m_board[move.m_nTo] = moved;       // 3
    b.m_board[move.m_nFrom] = kNoFigure; // 4
    const bool bPromotion = PromotionKind(move) != 0;
    if (bPromotion)
        Promote(b, move);

    const bool bKing = moved == kWhiteKing;
    if (bKing) { // 5
        if (!MoveKing<kRules>(b, move))
            return 0;
    } else { // 6, 7
        if (!bPawn)
            FollowInLists(b, KindOf(moved), move.m_nFrom, move.m_nTo);
        if (!IsKingSafe(b, move))
            return 0;
    }

    if (captured != kNoFigure) { // 8, 9
        RecordCapture(b, captured, captureSquare);
        if (BlackMen(b) == 0) {
            if (kRules.m_bUselessMoves && !CanMateBareKing(b))
                return 0;
            b.m_wKingState |= kBareBlackKing;
        }
    }
    if (bPawn || captured != kNoFigure) // 10
        UpdateRookPawnMark(b);

    DetectCheck<TWhiteSide>(b, move, bKing && move.m_nFrom == kE1 && IsCastling(move)); // 11
    b.m_whiteChecker = kNoChecker;
    FinishMove(b, move);                               // 12
    if (captured != kNoFigure && HasBlockedFigures(b)) // 13
        FollowBlockedFigure(b, captureSquare, kNoSquare);
    if (captured != kNoFigure || bPromotion)
        UpdatePrecalcBits(b);
    return 1;
}

template int MakeWhiteMove<kSolving>(TChessboard&, TMove&);
template int MakeWhiteMove<kLegalityOnly>(TChessboard&, TMove&);

} // namespace quillon
