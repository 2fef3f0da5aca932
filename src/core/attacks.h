#pragma once
// Attack tests, capture tests and the mate test of the black king. Pure functions of the position.
//
// White is tested through the lists of white figures while they are valid, Black by scanning: the engine is asymmetric,
// White wants to mate and Black to escape.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// Attack by any figure of the colour, the king included, on the square (file, rank 0..7), whatever stands there.
/// Pins do not count.
[[nodiscard]] bool IsAttackedByBlack(const TChessboard& b, int file, int rank);
[[nodiscard]] bool IsAttackedByWhite(const TChessboard& b, int file, int rank);

/// Black's figures without the king.
[[nodiscard]] bool IsAttackedByBlackFigure(const TChessboard& b, int file, int rank);

/// IsAttackedByWhite that ignores the lists: right also while a figure is lifted off m_board for a test.
[[nodiscard]] bool IsAttackedByWhiteOnBoard(const TChessboard& b, int file, int rank);

/// Result of FindAttackers that is no square.
inline constexpr int kNoAttacker = 255;
inline constexpr int kManyAttackers = 64;

/// Scans all attackers of a square, the king not among them.
///   list  when not null receives a move per attacker (source, target = the square, no promotion), *count their number.
///   Returns kNoAttacker, the attacker's square, or kManyAttackers for two or more.
int FindBlackAttackers(const TChessboard& b, int file, int rank, TMove* list, int* count);
int FindWhiteAttackers(const TChessboard& b, int file, int rank, TMove* list, int* count);

/// Can a figure of that colour other than the king legally capture on the square? Pins are tested; the side's own check
/// is not. Writes the first found: pawns first, then knights, then sliders.
[[nodiscard]] bool FindBlackCapturer(const TChessboard& b, int file, int rank, TSquare& square);
[[nodiscard]] bool FindWhiteCapturer(const TChessboard& b, int file, int rank, TSquare& square);

/// All capturers, in the same order; `list` has room for kMaxMoves. Returns their number.
int ListBlackCapturers(const TChessboard& b, int file, int rank, TSquare* list);

/// Would the figure on (file, rank) uncover its own king by going to `target`? A move along the line of the pin, the
/// capture of the pinning figure included, stands. A king is never pinned.
[[nodiscard]] bool IsBlackFigurePinned(const TChessboard& b, int file, int rank, TSquare target);
[[nodiscard]] bool IsWhiteFigurePinned(const TChessboard& b, int file, int rank, TSquare target);

/// Does the black king stay out of attack when this en passant capture takes both pawns off their squares?
[[nodiscard]] bool IsLegalBlackEnPassant(const TChessboard& b, const TMove& move);

/// The mate test: has Black, in check (m_blackChecker is set), any legal move? m_lastMove and m_pPrevious tell whether
/// an en passant capture is possible.
[[nodiscard]] bool HasBlackEvasion(const TChessboard& b);

/// Has the black king, standing on (file, rank), a square to go to? It is lifted off for the test. Any position.
[[nodiscard]] bool HasBlackKingFlight(const TChessboard& b, int file, int rank);

/// Squares around the black king that hold no black figure and are not attacked by White, the king lifted off so that
/// x-rays through it count.
[[nodiscard]] int CountBlackKingFreeSquares(const TChessboard& b);

/// En passant is available: the last move was a pawn's double step, the side to move is not in check or in check from
/// that very pawn, and a pawn of the side to move stands beside it.
[[nodiscard]] bool IsEnPassantAvailable(const TChessboard& b);

} // namespace quillon
