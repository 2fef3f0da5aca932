#pragma once
// What the generator of endgame data asks of a material before it starts.

#include <cstdint>
#include <string_view>

#include "core/chessboard.h"

namespace quillon {

/// What there is to know of a material before its run, for those who show it or ask about it. The run itself wants to
/// know only that the letters are right: its lookups are of one form for all materials (material.h).
struct TGeneratorMaterial {
    TChessboard m_scratch;      // an empty board with the counters of the type's men, kings apart
    bool m_bOrdinary = true;    // at most one queen and two rooks, bishops and knights a side
    std::size_t m_nLetters = 0; // men besides the kings
};

/// Reads the letters of an ordinary type.
///   Errors  ChessException "Error in InitForGenerator": a letter that is none of "QRBNPqrbnp".
[[nodiscard]] TGeneratorMaterial InitForGenerator(std::string_view typeName);

/// Is there any position of this ordinary type ("" for bare kings) in which White mates? False only where no sequence
/// of moves can end in mate: such material needs no table.
[[nodiscard]] bool CanWhiteMate(std::string_view typeName);

} // namespace quillon
