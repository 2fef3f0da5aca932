#pragma once
// How a standing black king is confined: by his own men, by White, by the edge of the board. Pure functions of the
// board; they allocate nothing. A free square of the king is one of CountBlackKingFreeSquares (core/attacks.h).

#include "core/chessboard.h"

namespace quillon {

/// The king's cage is shut: he has no free square.
[[nodiscard]] bool IsBlackKingCaged(const TChessboard& b);

/// Black men on the squares around the king, and how many squares there are.
[[nodiscard]] int CountBlackMenAroundKing(const TChessboard& b);
[[nodiscard]] int CountSquaresAroundKing(const TChessboard& b);

/// Wedge: a white pawn stands beside the king and is protected. He can neither take it nor get round it at once, so the
/// net does not depend on White's figures.
[[nodiscard]] bool IsWedgedByPawn(const TChessboard& b);

/// Squares the king could come to by any number of moves while nothing else changes, his own not counted.
[[nodiscard]] int CountReachableSquares(const TChessboard& b);

/// Confinement: wherever he goes, he stays among a handful of squares.
[[nodiscard]] bool IsBlackKingConfined(const TChessboard& b);

/// The king is on the run: three or more free squares.
[[nodiscard]] bool IsBlackKingOnTheRun(const TChessboard& b);

/// The king stands on the edge or the line beside it, and none of his free squares lies further in.
[[nodiscard]] bool CanHoldExtEdge(const TChessboard& b);

/// The king is in a corner's two by two squares, and the three squares in front of it are shut by pawns: each is
/// covered by a white pawn, or holds a black one that a white pawn stops and that has nothing to take beside that. Then
/// the corner's inner square (b2, b7, g2, g7) is as safe for White as the edge.
[[nodiscard]] bool IsCornerShutByPawns(const TChessboard& b);

/// White pawns that wall the king in, in the seven files and seven rows around him: those in the row just below him
/// guard nothing that he could go to, and those in the row below that one count twice instead.
[[nodiscard]] int CountWhitePawnsAroundKing(const TChessboard& b);

} // namespace quillon
