#pragma once
// FEN, both ways. Everything that fails throws ChessException.

#include <string>
#include <string_view>

#include "core/chessboard.h"

namespace quillon {

/// Castling rights of one colour as a weight: 1 king side, 2 queen side, 3 both.
inline constexpr int kCastlingKingSide = 1;
inline constexpr int kCastlingQueenSide = 2;
inline constexpr int kCastlingAll = 3;

/// What a FEN says besides the placement. Only a caller that cares (perft, input checks) looks at it: a problem is
/// always solved with White to move, all castlings that the board allows, and no en passant in the first move.
struct TFenFields {
    int m_nCastlingWhite = kCastlingAll; // all when the text has no field behind the placement
    int m_nCastlingBlack = kCastlingAll;
    char m_cSideToMove = 'w'; // 'w' or 'b'; 'w' when the field is missing
};

/// Reads the placement field (up to the first blank or tab) into m_board and the fields behind it; no other field of
/// the board is touched. Castling letters are looked for in everything behind the placement; a text may leave the side
/// to move out and go on with them.
///   Errors  ChessException naming the place, "FEN: unknown letter 'x' in rank 3", unless the placement describes eight
///           ranks of eight files and a side to move is "w" or "b". m_board is then as it was.
[[nodiscard]] TFenFields ReadFEN(TChessboard& b, std::string_view text);

/// A legal root from a FEN: ReadFEN, then RecountFigures and CheckNumberOfMen on a cleared record.
[[nodiscard]] TChessboard ChessboardFromFEN(std::string_view text);

/// bFull false: the placement only; "E" (of Black: "e") stands for a code of no known kind. True: side to move,
/// castling that still holds (the root is that of the context, or the head of the chain where there is no context), the
/// square passed over by a pawn's double step in capitals, whether or not a capture is possible, " 0", move number.
[[nodiscard]] std::string WriteFEN(const TChessboard& b, bool bFull);

} // namespace quillon
