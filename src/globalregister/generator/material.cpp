#include "globalregister/generator/material.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "core/chess_exception.h"
#include "globalregister/custom_type.h"
#include "globalregister/generator/generator_material.h"
#include "globalregister/piece_letters.h"

namespace quillon {

namespace {

char LetterOfFigure(TFigure figure) {
    const auto place = std::ranges::find(kPieceFigures, figure) - std::begin(kPieceFigures);
    return kPieceLetters[static_cast<std::size_t>(place)];
}

// The order of the men in the text of a type.
std::size_t PlaceInType(TFigure figure) { return kTypeLetters.find(LetterOfFigure(figure)); }

} // namespace

// --- one material

CMaterial::CMaterial(std::string_view letters, const TGlobalRegister* data)
    : m_name(letters), m_data(data), m_bCanMate(CanWhiteMate(letters)) {
    for (const char letter : letters)
        AddMan(FigureOfLetter(letter));
    m_nMovable = m_nMen;
    for (std::size_t man = 1; man < m_nMen; ++man)
        m_bEqualMen = m_bEqualMen || m_figures[man] == m_figures[man - 1];
}

CMaterial::CMaterial(const TCustomType& type, const TGlobalRegister& data)
    : m_name(data.typeName), m_data(&data), m_bCustom(true), m_bCanMate(true) {
    for (const TMovablePiece& piece : type.m_movable)
        if (KindOf(FigureOfLetter(piece.m_letter)) != kKing)
            AddMan(FigureOfLetter(piece.m_letter));
    m_nMovable = m_nMen;
    for (const TFrozenPiece& piece : type.m_frozen) {
        m_bWhiteKingFrozen = m_bWhiteKingFrozen || piece.m_figure == kWhiteKing;
        m_bBlackKingFrozen = m_bBlackKingFrozen || piece.m_figure == kBlackKing;
        if (KindOf(piece.m_figure) != kKing)
            AddMan(piece.m_figure);
    }
}

void CMaterial::AddMan(TFigure figure) {
    if (m_nMen == kMostMen)
        throw ChessException("Error in InitForGenerator");
    m_figures[m_nMen++] = figure;
    m_bWhitePawns = m_bWhitePawns || figure == kWhitePawn;
    m_bBlackPawns = m_bBlackPawns || figure == kBlackPawn;
}

void CMaterial::SetMasks(TPlacement& p, int whiteKing, int blackKing) const {
    static_cast<TFigureMasks&>(p) = {MaskOf(whiteKing), MaskOf(blackKing), 0, 0, 0, 0, whiteKing, blackKing};
    for (std::size_t man = 0; man < m_nMen; ++man) {
        const TMask square = MaskOf(p.m_men[man]);
        (IsWhite(m_figures[man]) ? p.m_white : p.m_black) |= square;
        mask_detail::SetKind(p, square, KindOf(m_figures[man]));
    }
}

TPlacement CMaterial::PlacementOf(const TMenSquares& men) const {
    TPlacement p;
    std::memcpy(p.m_men.data(), men.m_squares.data(), men.m_squares.size());
    SetMasks(p, men.m_whiteKing, men.BlackKing());
    return p;
}

TMenSquares CMaterial::MenOf(const TPlacement& p) const {
    TMenSquares men;
    std::memcpy(men.m_squares.data(), p.m_men.data(), men.m_squares.size());
    men.m_squares[kMaxTypeLetters] = static_cast<TSquare>(p.m_nBlackKing);
    men.m_whiteKing = static_cast<TSquare>(p.m_nWhiteKing);
    return men;
}

void CMaterial::SortEqualMen(TMenSquares& men) const {
    if (!m_bEqualMen)
        return;
    for (std::size_t i = 1; i < m_nMen; ++i)
        for (std::size_t j = i; j > 0 && m_figures[j] == m_figures[j - 1]; --j)
            if (men.m_squares[j] < men.m_squares[j - 1])
                std::swap(men.m_squares[j], men.m_squares[j - 1]);
}

unsigned CMaterial::WhiteMatesIn(TMenSquares men) const {
    if (!m_bCanMate)
        return 0;
    std::uint16_t halfMoves = kUnknownHalfMoves;
    if (m_data != nullptr) {
        SortEqualMen(men);
        halfMoves = m_data->ProvedHalfMovesByIndex(m_data->IndexOfMen(men));
    }
    if (halfMoves == kUnknownHalfMoves)
        throw ChessException("No global register found for position type " + m_name);
    return (halfMoves + 1u) / 2;
}

// --- all materials of a run

CMaterials::CMaterials(const TGlobalRegister& table, CGlobalRegisters& registers) : m_registers(registers) {
    m_root = table.custom ? std::make_unique<CMaterial>(ParseCustomType(table.typeName), table)
                          : std::make_unique<CMaterial>(table.typeName, &table);
    AddConversions(*m_root);
    ListMissing();
}

const CMaterial* CMaterials::MaterialOf(const std::string& letters) {
    if (const auto known = m_materials.find(letters); known != m_materials.end())
        return known->second.get();
    const TGlobalRegister* data = nullptr;
    if (CanWhiteMate(letters)) {
        m_uses.push_back(
            std::make_unique<CRegisterUse>(m_registers.GetRegisterForTool(TPositionIndexing(letters).nPositionType)));
        data = *m_uses.back() ? &**m_uses.back() : nullptr;
    }
    CMaterial& material = *(m_materials[letters] = std::make_unique<CMaterial>(letters, data));
    AddConversions(material);
    return &material;
}

void CMaterials::AddConversions(CMaterial& material) {
    const std::size_t nPromotions = 1 + material.m_nMen * kPromotionKinds.size();
    material.m_conversions.resize(nPromotions * (material.m_nMen + 1));
    for (std::size_t captured = 0; captured <= material.m_nMen; ++captured) {
        const std::size_t gone = captured == material.m_nMen ? kNoMan : captured;
        if (gone != kNoMan)
            AddConversion(material, gone, kNoMan, kNoPromotion);
        for (std::size_t man = 0; man < material.m_nMen; ++man)
            for (std::size_t kind = 0; kind < kPromotionKinds.size(); ++kind)
                if (man != gone && KindOf(material.m_figures[man]) == kPawn)
                    AddConversion(material, gone, man, kind);
    }
}

// Under a custom type what has no data leaves the pattern for good: no mate for either question that is asked about it.
void CMaterials::AddConversion(CMaterial& material, std::size_t captured, std::size_t promoted, std::size_t kind) {
    std::vector<std::pair<TFigure, std::uint8_t>> men;
    for (std::size_t man = 0; man < material.m_nMen; ++man)
        if (man != captured) {
            const TFigure figure = material.m_figures[man];
            const TFigure colour = figure & (kWhite | kBlack);
            men.emplace_back(man == promoted ? static_cast<TFigure>(colour | kPromotionKinds[kind]) : figure,
                             static_cast<std::uint8_t>(man));
        }
    if (men.size() > kMaxTypeLetters)
        return;
    std::ranges::stable_sort(men, {}, [](const auto& man) { return PlaceInType(man.first); });
    std::string letters;
    TConversion conversion;
    for (std::size_t i = 0; i < men.size(); ++i) {
        letters += LetterOfFigure(men[i].first);
        conversion.m_from[i] = men[i].second;
    }
    conversion.m_to = MaterialOf(letters);
    if (m_root->IsCustom() && conversion.m_to->m_bCanMate && conversion.m_to->m_data == nullptr)
        conversion.m_to = nullptr;
    material.m_conversions[material.ConversionPlace(captured, promoted, kind)] = conversion;
}

void CMaterials::ListMissing() {
    for (const TConversion& conversion : m_root->m_conversions)
        if (conversion.m_to != nullptr && conversion.m_to->m_bCanMate && conversion.m_to->m_data == nullptr &&
            std::ranges::find(m_missingTypes, conversion.m_to->m_name) == m_missingTypes.end())
            m_missingTypes.push_back(conversion.m_to->m_name);
    std::ranges::sort(m_missingTypes);
}

} // namespace quillon
