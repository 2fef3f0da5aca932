#pragma once
// Which types of material a position can be of after one white move and Black's reply: the tables that one ply of
// looking up needs. Who makes tables finds out by itself what they need: a check that asked it would share its
// mistakes.

#include <set>
#include <string>
#include <string_view>

#include "core/chessboard.h"

namespace quillon {

/// Without its own type's name being left out: a quiet move and a quiet reply keep it. Types without a white man are
/// left out, for they have no mates and need no table.
///   typeName  of an ordinary type.
[[nodiscard]] std::set<std::string> TypesAfterOneMove(std::string_view typeName);

/// True where White cannot mate whatever Black does: with a bare king, or a lone bishop or knight against one. Such
/// material needs no table.
[[nodiscard]] inline bool CannotMate(const TChessboard& b) {
    const int nWhite = WhiteMen(b);
    return nWhite == 0 || (nWhite == 1 && BlackMen(b) == 0 && b.m_whiteBishops + b.m_whiteKnights == 1);
}

/// The same of a type's letters.
[[nodiscard]] inline bool CannotMate(std::string_view typeName) {
    return typeName.find_first_of("QRBNP") == std::string_view::npos || typeName == "B" || typeName == "N";
}

} // namespace quillon
