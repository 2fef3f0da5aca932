#include "globalregister/generator/table_geometry.h"

#include <algorithm>
#include <numeric>

#include "globalregister/board_by_index.h"

namespace quillon {

CTableGeometry::CTableGeometry(const TGlobalRegister& table, const CMaterial& material)
    : m_table(table), m_material(material), m_nSize(table.GetSize()), m_bCustom(table.custom.has_value()),
      m_bStrides(!m_bCustom && !table.bUseCombinations) {
    if (m_bStrides)
        ListOrders();
}

// All permutations of the men that move equal men only, but the one that moves none.
void CTableGeometry::ListOrders() {
    TOrder order;
    std::iota(order.begin(), order.end(), std::uint8_t{0});
    const auto men = order.begin() + static_cast<std::ptrdiff_t>(m_material.Men());
    while (std::next_permutation(order.begin(), men)) {
        bool bOnlyEqual = true;
        for (std::size_t man = 0; man < m_material.Men(); ++man)
            bOnlyEqual = bOnlyEqual && m_material.Figure(man) == m_material.Figure(order[man]);
        if (bOnlyEqual)
            m_otherOrders.push_back(order);
    }
}

void CTableGeometry::Mirror(TMenSquares& men) const {
    for (std::size_t man = 0; man < m_material.Men(); ++man)
        men.m_squares[man] = SquareAt(RankOf(men.m_squares[man]), FileOf(men.m_squares[man]));
    men.m_squares[kMaxTypeLetters] = SquareAt(RankOf(men.BlackKing()), FileOf(men.BlackKing()));
    m_material.SortEqualMen(men);
}

bool CTableGeometry::AreSorted(const TMenSquares& men) const {
    for (std::size_t man = 1; man < m_material.Men(); ++man)
        if (m_material.Figure(man) == m_material.Figure(man - 1) && men.m_squares[man] < men.m_squares[man - 1])
            return false;
    return true;
}

bool CTableGeometry::PlacementOf(std::uint64_t index, TPlacement& p) const {
    if (m_bCustom)
        return index != 0 && CustomPlacementOf(index, p);
    TMenSquares men;
    if (!m_table.GetMenByIndex(index, men) || !AreSorted(men))
        return false;
    p = m_material.PlacementOf(men);
    if (!HasMirroredForm(men))
        return true;
    Mirror(men);
    return index <= m_table.IndexOfFolded(men);
}

std::uint64_t CTableGeometry::IndexOf(const TPlacement& p) const {
    if (!m_bCustom)
        return m_table.IndexOfMen(m_material.MenOf(p));
    const std::uint64_t index = m_table.GetIndex(BoardOf(p));
    return index == 0 ? kNoIndex : index;
}

std::uint64_t CTableGeometry::IndexAfter(const TPlacement& p, std::uint64_t index, std::size_t man, int from,
                                         int to) const {
    if (m_bStrides) {
        const std::uint64_t factor = man == kNoMan ? m_table.WhiteKingSquares() : m_table.strides[man];
        return index + static_cast<std::uint64_t>(std::int64_t{to} - from) * factor;
    }
    TPlacement after = p;
    if (man == kNoMan)
        after.m_nBlackKing = to;
    else
        after.m_men[man] = static_cast<TSquare>(to);
    return IndexOf(after);
}

std::uint64_t CTableGeometry::CanonicalOf(const TPlacement& p, std::uint64_t index) const {
    return ForAliases(p, index, [](std::uint64_t) {});
}

bool CTableGeometry::CustomPlacementOf(std::uint64_t index, TPlacement& p) const {
    TChessboard b = EmptyChessboard();
    if (!m_table.GetPositionByIndex(index, b))
        return false;
    for (std::size_t man = m_material.Men(); man-- > 0;) // those that are frozen take their squares first
        for (std::size_t square = 0; square < b.m_board.size(); ++square) {
            const bool bFrozen = m_table.custom->frozenSquares.contains(static_cast<std::int8_t>(square));
            if (b.m_board[square] == m_material.Figure(man) && bFrozen == m_material.IsFrozen(man)) {
                p.m_men[man] = static_cast<TSquare>(square);
                b.m_board[square] = kNoFigure;
                break;
            }
        }
    m_material.SetMasks(p, WhiteKingSquare(b), BlackKingSquare(b));
    return true;
}

// Board and kings are all that an index needs.
TChessboard CTableGeometry::BoardOf(const TPlacement& p) const {
    TChessboard b = EmptyChessboard();
    static_cast<void>(PlacePiece(b, static_cast<TSquare>(p.m_nWhiteKing), kWhiteKing));
    static_cast<void>(PlacePiece(b, static_cast<TSquare>(p.m_nBlackKing), kBlackKing));
    for (std::size_t man = 0; man < m_material.Men(); ++man)
        static_cast<void>(PlacePiece(b, p.m_men[man], m_material.Figure(man)));
    return b;
}

} // namespace quillon
