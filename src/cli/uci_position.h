#pragma once
// The "position" of the UCI protocol: a FEN or the start of a game, and the moves made from there.

#include <string>
#include <string_view>
#include <vector>

#include "cli/game_position.h"

namespace quillon {

struct TUciPosition {
    TGamePosition m_position;
    std::string m_note; // what the text asks for and is not done; empty if there is nothing
};

/// The position that a game begins with.
[[nodiscard]] TGamePosition StartOfGame();

/// A FEN. Fields behind the placement may be missing: White is to move then, every castling that the board shows is
/// possible, as in problems, and no en passant capture.
///   Errors  ChessException: the text, what RecountFigures finds, the side that is not to move in check.
[[nodiscard]] TUciPosition ReadGameFen(std::string_view text);

/// words: of the line, without "position".
///   Errors  ChessException: as ReadGameFen, an illegal move, neither "fen" nor "startpos".
[[nodiscard]] TUciPosition ReadUciPosition(const std::vector<std::string>& words);

} // namespace quillon
