#include "globalregister/generator/material.h"

#include <algorithm>
#include <cstring>
#include <utility>

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
    m_root->MakeConversionPlaces();
    ExploreMoves(*m_root, kWhite);
    ExploreBlackMoves(*m_root);
    LoadData();
    ListMissing();
}

CMaterial* CMaterials::MaterialOf(const std::string& letters) {
    std::unique_ptr<CMaterial>& material = m_materials[letters];
    if (!material) {
        material = std::make_unique<CMaterial>(letters, nullptr);
        material->MakeConversionPlaces();
    }
    return material.get();
}

void CMaterials::ExploreBlackMoves(CMaterial& material) {
    if (std::exchange(material.m_bBlackMovesExplored, true))
        return;
    ExploreMoves(material, kBlack);
    if (!material.HasPawnsOfBothColours())
        return;
    for (std::size_t man = 0; man < material.m_nMen; ++man)
        if (material.m_figures[man] == kBlackPawn)
            Explore(material, man, kNoMan, kNoPromotion, true);
}

// Captures, promotions, and both.
void CMaterials::ExploreMoves(CMaterial& material, TFigure mover) {
    const bool bBlackMoves = mover == kWhite; // those that answer
    for (std::size_t captured = 0; captured <= material.m_nMen; ++captured) {
        const bool bNone = captured == material.m_nMen;
        if (!bNone && material.IsOf(captured, mover))
            continue;
        const std::size_t gone = bNone ? kNoMan : captured;
        if (!bNone)
            Explore(material, gone, kNoMan, kNoPromotion, bBlackMoves);
        for (std::size_t man = 0; man < material.m_nMen; ++man)
            for (std::size_t kind = 0; kind < kPromotionKinds.size(); ++kind)
                if (material.IsOf(man, mover) && KindOf(material.m_figures[man]) == kPawn)
                    Explore(material, gone, man, kind, bBlackMoves);
    }
}

void CMaterials::Explore(CMaterial& material, std::size_t captured, std::size_t promoted, std::size_t kind,
                         bool bBlackMoves) {
    TConversion& conversion = material.m_conversions[material.ConversionPlace(captured, promoted, kind)];
    conversion.m_bExplored = true;
    std::vector<std::pair<TFigure, std::uint8_t>> men; // after it, and who they were
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
    for (std::size_t i = 0; i < men.size(); ++i) {
        letters += LetterOfFigure(men[i].first);
        conversion.m_from[i] = men[i].second;
    }
    CMaterial* const to = MaterialOf(letters);
    conversion.m_to = to;
    if (bBlackMoves)
        ExploreBlackMoves(*to);
}

// Small ones first: where memory is short, what is left on disk is the fewest.
void CMaterials::LoadData() {
    std::vector<std::pair<TPositionIndexing, CMaterial*>> wanted;
    for (const auto& [letters, material] : m_materials)
        if (material->m_bCanMate)
            wanted.emplace_back(letters, material.get());
    std::ranges::stable_sort(wanted, {}, [](const auto& type) { return type.first.GetSize(); });
    for (const auto& [type, material] : wanted) {
        m_uses.push_back(std::make_unique<CRegisterUse>(m_registers.GetRegisterForTool(type.nPositionType)));
        material->m_data = *m_uses.back() ? &**m_uses.back() : nullptr;
    }
    if (!m_root->IsCustom())
        return;
    EndAtPattern(*m_root);
    for (const auto& [letters, material] : m_materials)
        EndAtPattern(*material);
}

// Under a custom type what has no data leaves the pattern for good: no mate for either question that is asked about it.
void CMaterials::EndAtPattern(CMaterial& material) {
    for (TConversion& conversion : material.m_conversions)
        if (conversion.m_to != nullptr && conversion.m_to->m_bCanMate && conversion.m_to->m_data == nullptr)
            conversion.m_to = nullptr;
}

void CMaterials::ListMissing() {
    for (const TConversion& conversion : m_root->m_conversions)
        if (conversion.m_to != nullptr && conversion.m_to->m_bCanMate && conversion.m_to->m_data == nullptr &&
            std::ranges::find(m_missingTypes, conversion.m_to->m_name) == m_missingTypes.end())
            m_missingTypes.push_back(conversion.m_to->m_name);
    std::ranges::sort(m_missingTypes);
}

} // namespace quillon
