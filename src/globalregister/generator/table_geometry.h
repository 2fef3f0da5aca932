#pragma once
// CTableGeometry: indices of the table that is being made, and the placements they name.
//
// Several indices can name one position: equal men have as many orders as there are without combinations, and a white
// king on the long diagonal leaves two mirrored forms. A lookup may meet any of them, since mirroring disturbs the
// order that equal men had on the board. So one index of a position, the canonical one, is worked on, and what is found
// is entered at all of them at once (ForAliases). That is right at every moment that matters, because a level reads
// only what levels before it have entered: a half-entered position cannot be seen.
//   canonical   equal men ascending; of the two mirrored forms the lower index
//   aliases     all orders of equal men, of both mirrored forms
// Custom types have neither folding nor a fixed order: each of their indices is worked on by itself. Index 0, whose
// element holds the flags, would name a position of some of them: that one counts as outside the pattern.
//
// Threads: only reads.

#include <cstdint>
#include <vector>

#include "globalregister/generator/material.h"

namespace quillon {

class CTableGeometry {
  public:
    CTableGeometry(const TGlobalRegister& table, const CMaterial& material);

    [[nodiscard]] const CMaterial& Material() const { return m_material; }
    [[nodiscard]] std::uint64_t Size() const { return m_nSize; }

    /// The placement of an index; false if it names none, or is not the canonical one of its position.
    [[nodiscard]] bool PlacementOf(std::uint64_t index, TPlacement& p) const;

    /// One of the indices of a placement; kNoIndex if it is outside the pattern of a custom type.
    [[nodiscard]] std::uint64_t IndexOf(const TPlacement& p) const;

    /// The same after a move of this man (kNoMan: the black king) that keeps the material and leaves White's king in
    /// its place. `index` is one of `p`, whose white king is where an index has it.
    [[nodiscard]] std::uint64_t IndexAfter(const TPlacement& p, std::uint64_t index, std::size_t man, int from,
                                           int to) const;

    /// enter(index) for each index of the position; returns the canonical one. `index` is one of them.
    template <class TEnter> std::uint64_t ForAliases(const TPlacement& p, std::uint64_t index, TEnter enter) const {
        if (m_bCustom) {
            enter(index);
            return index;
        }
        TMenSquares men = m_material.MenOf(p);
        m_table.FoldMen(men);
        m_material.SortEqualMen(men);
        std::uint64_t canonical = EnterOrders(men, enter);
        if (HasMirroredForm(men)) {
            Mirror(men);
            canonical = std::min(canonical, EnterOrders(men, enter));
        }
        return canonical;
    }

    /// The canonical index.
    [[nodiscard]] std::uint64_t CanonicalOf(const TPlacement& p, std::uint64_t index) const;

  private:
    using TOrder = std::array<std::uint8_t, kMaxTypeLetters + 1>; // of each letter: the man that is put there

    // Equal men ascending. Returns the index of that order.
    template <class TEnter> std::uint64_t EnterOrders(const TMenSquares& men, TEnter& enter) const {
        const std::uint64_t sorted = m_table.IndexOfFolded(men);
        enter(sorted);
        for (const TOrder& order : m_otherOrders) {
            TMenSquares reordered = men;
            for (std::size_t man = 0; man < order.size(); ++man)
                reordered.m_squares[man] = men.m_squares[order[man]];
            enter(m_table.IndexOfFolded(reordered));
        }
        return sorted;
    }

    [[nodiscard]] bool HasMirroredForm(const TMenSquares& men) const {
        return !m_table.bHasPawns && FileOf(men.m_whiteKing) == RankOf(men.m_whiteKing);
    }
    void Mirror(TMenSquares& men) const;
    [[nodiscard]] bool AreSorted(const TMenSquares& men) const;
    void ListOrders();
    [[nodiscard]] bool CustomPlacementOf(std::uint64_t index, TPlacement& p) const;
    [[nodiscard]] TChessboard BoardOf(const TPlacement& p) const;

    const TGlobalRegister& m_table;
    const CMaterial& m_material;
    const std::uint64_t m_nSize;
    const bool m_bCustom;
    const bool m_bStrides; // a man's square has a factor of its own
    std::vector<TOrder> m_otherOrders;
};

} // namespace quillon
