#include "core/castling.h"

#include "core/fen.h"
#include "core/generation.h"

namespace quillon {

namespace {

int RooksAtHome(const TChessboard& b, TFigure king, TFigure rook, TSquare kingHome, TSquare farRook, TSquare nearRook) {
    if (b.m_board[kingHome] != king)
        return 0;
    return (b.m_board[farRook] == rook ? kCastlingQueenSide : 0) +
           (b.m_board[nearRook] == rook ? kCastlingKingSide : 0);
}

} // namespace

int WhiteCastlingsOnBoard(const TChessboard& b) { return RooksAtHome(b, kWhiteKing, kWhiteRook, kE1, kA1, kH1); }
int BlackCastlingsOnBoard(const TChessboard& b) { return RooksAtHome(b, kBlackKing, kBlackRook, kE8, kA8, kH8); }

int WhiteCastlingsLeft(const TChessboard& b) {
    if (WhiteCastlingsOnBoard(b) == 0)
        return 0;
    return (HasWhiteCastlingRight(b, false) ? kCastlingQueenSide : 0) +
           (HasWhiteCastlingRight(b, true) ? kCastlingKingSide : 0);
}

int BlackCastlingsLeft(const TChessboard& b) {
    if (BlackCastlingsOnBoard(b) == 0)
        return 0;
    return (HasBlackCastlingRight(b, false) ? kCastlingQueenSide : 0) +
           (HasBlackCastlingRight(b, true) ? kCastlingKingSide : 0);
}

} // namespace quillon
