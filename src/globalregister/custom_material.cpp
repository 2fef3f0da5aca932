#include "globalregister/custom_material.h"

#include "core/position_type.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

constexpr int kCountBits = 4; // no side has more than ten men of a kind

} // namespace

TMaterialKey MaterialOf(const TChessboard& b) {
    TMaterialKey key = 0;
    int shift = 0;
    for (const std::uint8_t count : FigureCounts(b)) {
        key += TMaterialKey{count} << shift;
        shift += kCountBits;
    }
    return key;
}

TMaterialKey MaterialOf(const TCustomType& type) {
    constexpr TFigure kFigures[] = {kWhiteQueen, kWhiteRook, kWhiteBishop, kWhiteKnight, kWhitePawn,
                                    kBlackQueen, kBlackRook, kBlackBishop, kBlackKnight, kBlackPawn};
    TMaterialKey key = 0;
    int shift = 0;
    for (const TFigure figure : kFigures) {
        for (const TMovablePiece& piece : type.m_movable)
            key += TMaterialKey{FigureOfLetter(piece.m_letter) == figure} << shift;
        for (const TFrozenPiece& piece : type.m_frozen)
            key += TMaterialKey{piece.m_figure == figure} << shift;
        shift += kCountBits;
    }
    return key;
}

} // namespace quillon
