#pragma once
// The position that --fen names: a FEN, its placement alone, or a position id.

#include <string>
#include <string_view>

#include "core/chessboard.h"
#include "core/fen.h"

namespace quillon {

struct TGivenPosition {
    TChessboard m_board = {}; // validated (RecountFigures)
    TFenFields m_fields;
    std::string m_note; // what the text asks for and is not done; empty if there is nothing
};

/// Reads the text of --fen.
///   Errors  ChessException: the text, and what RecountFigures finds.
[[nodiscard]] TGivenPosition ReadGivenPosition(std::string_view text);

/// Fails with ChessException if the side that is not to move is in check.
void CheckSideToMove(const TGivenPosition& position);

} // namespace quillon
