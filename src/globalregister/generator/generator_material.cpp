#include "globalregister/generator/generator_material.h"

#include <algorithm>
#include <string>

#include "core/chess_exception.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

bool HasManyOfAKind(const TChessboard& b) {
    const bool bQueens = b.m_whiteQueens >= 2 || b.m_blackQueens >= 2;
    const std::uint8_t others[] = {b.m_whiteRooks,   b.m_blackRooks,   b.m_whiteBishops,
                                   b.m_blackBishops, b.m_whiteKnights, b.m_blackKnights};
    return bQueens || std::ranges::any_of(others, [](std::uint8_t nMen) { return nMen >= 3; });
}

} // namespace

TGeneratorMaterial InitForGenerator(std::string_view typeName) {
    TGeneratorMaterial material{EmptyChessboard()};
    for (const char letter : typeName) {
        const TFigure figure = FigureOfLetter(letter);
        if (figure == kNoFigure || KindOf(figure) == kKing)
            throw ChessException("Error in InitForGenerator");
        ++CounterOf(material.m_scratch, figure);
        ++material.m_nLetters;
    }
    material.m_bOrdinary = !HasManyOfAKind(material.m_scratch);
    return material;
}

// A king alone never mates. With one bishop or knight he needs a black man that takes a square from its own king.
bool CanWhiteMate(std::string_view typeName) {
    const std::size_t nWhite =
        typeName.size() -
        static_cast<std::size_t>(std::ranges::count_if(typeName, [](char letter) { return letter >= 'a'; }));
    if (nWhite == 0)
        return false;
    return typeName != "B" && typeName != "N";
}

} // namespace quillon
