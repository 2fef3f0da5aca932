#pragma once
// Materials as the generator of endgame data sees them: the men of a table, and what captures and promotions make of
// them, each with its data.
//
// Threads: made by one thread, then only read.

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "globalregister/generator/placement.h"
#include "globalregister/global_registers.h"

namespace quillon {

class CMaterial;

/// What a capture, a promotion or both make of a material.
struct TConversion {
    const CMaterial* m_to = nullptr;                    // null: it leaves what tables tell of
    bool m_bExplored = false;                           // for the assertion that nothing else is asked for
    std::array<std::uint8_t, kMaxTypeLetters> m_from{}; // of each man there: its number here
};

inline constexpr std::array<TFigure, 4> kPromotionKinds{kQueen, kRook, kBishop, kKnight};
inline constexpr std::size_t kNoPromotion = 255; // instead of an index of kPromotionKinds

class CMaterial {
  public:
    /// Of an ordinary type. `data` may be null.
    CMaterial(std::string_view letters, const TGlobalRegister* data);

    /// Of a custom type: the movable men, then the frozen ones.
    CMaterial(const TCustomType& type, const TGlobalRegister& data);

    [[nodiscard]] std::size_t Men() const { return m_nMen; }
    [[nodiscard]] TFigure Figure(std::size_t man) const { return m_figures[man]; }
    [[nodiscard]] bool IsFrozen(std::size_t man) const { return m_nMovable <= man && man < m_nMen; }
    [[nodiscard]] bool IsWhiteKingFrozen() const { return m_bWhiteKingFrozen; }
    [[nodiscard]] bool IsBlackKingFrozen() const { return m_bBlackKingFrozen; }
    [[nodiscard]] const std::string& Name() const { return m_name; }
    [[nodiscard]] const TGlobalRegister* Data() const { return m_data; }
    [[nodiscard]] bool IsCustom() const { return m_bCustom; }
    [[nodiscard]] bool HasPawnsOfBothColours() const { return m_bWhitePawns && m_bBlackPawns; }

    /// The man on a square; kNoMan if there is none.
    [[nodiscard]] std::size_t ManOn(const TPlacement& p, int square) const {
        for (std::size_t man = 0; man < m_nMen; ++man)
            if (p.m_men[man] == square)
                return man;
        return kNoMan;
    }

    /// The masks of men on their squares.
    void SetMasks(TPlacement& p, int whiteKing, int blackKing) const;

    [[nodiscard]] TPlacement PlacementOf(const TMenSquares& men) const;

    /// The men of a placement of an ordinary material.
    [[nodiscard]] TMenSquares MenOf(const TPlacement& p) const;

    /// Puts equal men into the ascending order of their squares.
    void SortEqualMen(TMenSquares& men) const;

    /// Moves in which White, to move, mates; 0 if he does not. Equal men may have any order.
    ///   Errors  ChessException "No global register found for position type " and the type's text.
    [[nodiscard]] unsigned WhiteMatesIn(TMenSquares men) const;

    ///   captured  the man taken, or kNoMan;  promoted  the man that becomes a `kind` (index of kPromotionKinds), or
    ///   kNoMan with kNoPromotion. Not both are nothing.
    [[nodiscard]] const TConversion& Conversion(std::size_t captured, std::size_t promoted, std::size_t kind) const {
        const TConversion& conversion = m_conversions[ConversionPlace(captured, promoted, kind)];
        assert(conversion.m_bExplored);
        return conversion;
    }

  private:
    friend class CMaterials;

    [[nodiscard]] bool IsOf(std::size_t man, TFigure colour) const { return (m_figures[man] & colour) != 0; }
    void AddMan(TFigure figure);
    [[nodiscard]] std::size_t ConversionPlace(std::size_t captured, std::size_t promoted, std::size_t kind) const {
        const std::size_t promotion = promoted == kNoMan ? 0 : 1 + promoted * kPromotionKinds.size() + kind;
        return promotion * (m_nMen + 1) + (captured == kNoMan ? 0 : captured + 1);
    }
    void MakeConversionPlaces() { m_conversions.resize((1 + m_nMen * kPromotionKinds.size()) * (m_nMen + 1)); }

    std::string m_name;
    const TGlobalRegister* m_data = nullptr;
    std::array<TFigure, kMostMen + 2> m_figures{};
    std::size_t m_nMen = 0, m_nMovable = 0;
    bool m_bCustom = false, m_bCanMate = false;
    bool m_bWhitePawns = false, m_bBlackPawns = false;
    bool m_bEqualMen = false;
    bool m_bWhiteKingFrozen = false, m_bBlackKingFrozen = false;
    bool m_bBlackMovesExplored = false;
    std::vector<TConversion> m_conversions;
};

/// The material of a table and what looks at its positions lead to, the data of these held while this lives. A look
/// ends in data with White to move:
///   a move of Black   in what it leads to
///   a move of White   in what it leads to and in what moves of Black make of that; where both have pawns, White may
///                     capture in passing then, and Black moves once more
/// What only longer ways lead to, two promotions of White for one, is not loaded.
class CMaterials {
  public:
    ///   Errors  std::bad_alloc.
    CMaterials(const TGlobalRegister& table, CGlobalRegisters& registers);

    [[nodiscard]] const CMaterial& Root() const { return *m_root; }

    /// Types that the root turns into by one capture or promotion, that can mate, and that have no data.
    [[nodiscard]] const std::vector<std::string>& MissingTypes() const { return m_missingTypes; }

  private:
    [[nodiscard]] CMaterial* MaterialOf(const std::string& letters);
    void ExploreBlackMoves(CMaterial& material);
    void ExploreMoves(CMaterial& material, TFigure mover);
    void Explore(CMaterial& material, std::size_t captured, std::size_t promoted, std::size_t kind, bool bBlackMoves);
    void LoadData();
    static void EndAtPattern(CMaterial& material);
    void ListMissing();

    CGlobalRegisters& m_registers;
    std::unique_ptr<CMaterial> m_root;
    std::map<std::string, std::unique_ptr<CMaterial>> m_materials; // ordinary ones, by their letters
    std::vector<std::unique_ptr<CRegisterUse>> m_uses;
    std::vector<std::string> m_missingTypes;
};

} // namespace quillon
