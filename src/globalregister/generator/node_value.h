#pragma once
// What one position of a material is worth, by one look at the moves of the side to move. Moves that keep the material
// are told by the caller; captures and promotions lead to data that are finished. Everything is counted in moves of
// White.
//
// Double steps of pawns: an element of a table is a position without a right to capture in passing, so where a double
// step gives that right the element of the position reached is not the whole answer.
//   Black's   White may have a capture in passing besides the moves of that element: he has the better of both
//   White's   Black may have one besides his moves there: all of them are looked at (WhiteDoubleStepMates)

#include <algorithm>
#include <limits>
#include <optional>

#include "globalregister/generator/material.h"

namespace quillon {

/// Black has a move after which White does not mate.
inline constexpr unsigned kNotLost = std::numeric_limits<unsigned>::max();

/// White has no such move.
inline constexpr unsigned kNoMateFound = std::numeric_limits<unsigned>::max();

/// Neither is certain: a look ended at an answer that takes more moves than were asked for.
inline constexpr unsigned kMoreThanAsked = kNotLost - 1;

/// The position after a white move, a double step apart: men on their squares, the moved man too.
[[nodiscard]] inline TPlacement AfterWhiteMove(const CMaterial& material, const TPlacement& p, std::size_t man,
                                               int from, int to) {
    TPlacement after = p;
    const TFigure kind = man == kNoMan ? kKing : KindOf(material.Figure(man));
    static_cast<TFigureMasks&>(after) = WithWhiteMove(p, from, to, kind);
    if (man != kNoMan)
        after.m_men[man] = static_cast<TSquare>(to);
    return after;
}

/// The same placement as one of the material that a conversion leads to; the masks are right already.
[[nodiscard]] inline TPlacement Converted(const TConversion& conversion, const TPlacement& after) {
    TPlacement p;
    static_cast<TFigureMasks&>(p) = after;
    for (std::size_t man = 0; man < conversion.m_to->Men(); ++man)
        p.m_men[man] = after.m_men[conversion.m_from[man]];
    return p;
}

/// Moves in which White mates after a black move that keeps the material, by finished data.
struct TFinishedData {
    const CMaterial& m_material;
    const TPlacement& m_placement;

    [[nodiscard]] unsigned operator()(std::size_t man, int /*from*/, int to) const {
        TMenSquares men = m_material.MenOf(m_placement);
        men.m_squares[man == kNoMan ? kMaxTypeLetters : man] = static_cast<TSquare>(to);
        return m_material.WhiteMatesIn(men);
    }
};

/// Black to move, his king's side not in the way: White's king is not attacked.
template <class TQuiet> class CBlackNode {
  public:
    ///   nDoubleStep  the square of the white pawn that has just made a double step, or kNoDoubleStep.
    ///   quiet        called for a move that keeps the material with the man (kNoMan: the king), from and to: moves in
    ///                which White mates then, 0 if he does not (yet).
    ///   nMost        the look ends at the first answer that takes more moves than this.
    CBlackNode(const CMaterial& material, const TPlacement& p, int nDoubleStep, const TQuiet& quiet,
               unsigned nMost = kNotLost)
        : m_material(material), m_p(p), m_nDoubleStep(nDoubleStep), m_quiet(quiet), m_nMost(nMost) {}

    /// Moves in which White mates against the best defence: 0 if Black is mated, kNotLost if a move saves him,
    /// kMoreThanAsked.
    [[nodiscard]] unsigned Value() {
        const TMask occupied = m_p.Occupied();
        const TMask attacked = WhiteAttacks(m_p, occupied & ~MaskOf(m_p.m_nBlackKing));
        m_bInCheck = (attacked & MaskOf(m_p.m_nBlackKing)) != 0;
        const TMask flights = KingAttacks(m_p.m_nBlackKing) & ~m_p.m_black & ~attacked;
        if (!QuietKingMoves(flights & ~m_p.m_white) || !QuietMoves() || !KingCaptures(flights & m_p.m_white) ||
            !Conversions() || !EnPassant())
            return m_nLongest > m_nMost ? kMoreThanAsked : kNotLost;
        if (!m_bHasMove)
            return m_bInCheck ? 0 : kNotLost;
        return m_nLongest;
    }

  private:
    // Enters the answer to one legal move; false: it saves Black, or ends the look.
    [[nodiscard]] bool Answered(unsigned nMoves) {
        m_bHasMove = true;
        m_nLongest = std::max(m_nLongest, nMoves);
        return nMoves != 0 && nMoves <= m_nMost;
    }

    [[nodiscard]] bool QuietKingMoves(TMask targets) {
        if (m_material.IsBlackKingFrozen() && targets != 0)
            return false;
        while (targets != 0)
            if (!Answered(m_quiet(kNoMan, m_p.m_nBlackKing, TakeSquare(targets))))
                return false;
        return true;
    }

    [[nodiscard]] bool IsBlackMan(std::size_t man) const { return IsBlack(m_material.Figure(man)); }

    // A man off the lines of his king uncovers nothing.
    [[nodiscard]] bool IsLegal(std::size_t man, int to) const {
        const int from = m_p.m_men[man];
        if (!m_bInCheck &&
            kDirectionBetween[static_cast<std::size_t>(from)][static_cast<std::size_t>(m_p.m_nBlackKing)] ==
                kNoDirection)
            return true;
        return WhiteCheckers(WithBlackMove(m_p, from, to, KindOf(m_material.Figure(man)))) == 0;
    }

    [[nodiscard]] bool QuietMoves() {
        for (std::size_t man = 0; man < m_material.Men(); ++man)
            if (IsBlackMan(man) && !QuietMovesOf(man))
                return false;
        return true;
    }

    [[nodiscard]] bool QuietMovesOf(std::size_t man) {
        const int from = m_p.m_men[man];
        const TFigure kind = KindOf(m_material.Figure(man));
        TMask targets = kind == kPawn ? BlackPawnSteps(from, m_p.Occupied()) & ~kRank1
                                      : AttacksOf(kind, from, m_p.Occupied()) & ~m_p.Occupied();
        while (targets != 0) {
            const int to = TakeSquare(targets);
            if (!IsLegal(man, to))
                continue;
            if (m_material.IsFrozen(man))
                return false;
            unsigned nMoves = m_quiet(man, from, to);
            if (kind == kPawn && from - to == 16)
                nMoves = WithWhiteEnPassant(man, from, to, nMoves);
            if (!Answered(nMoves))
                return false;
        }
        return true;
    }

    [[nodiscard]] bool KingCaptures(TMask targets) {
        while (targets != 0) {
            const int to = TakeSquare(targets);
            TPlacement after = m_p;
            after.m_nBlackKing = to;
            if (m_material.IsBlackKingFrozen() || !Answered(ValueAfter(after, to, kNoMan, kNoPromotion)))
                return false;
        }
        return true;
    }

    // Captures by men, and promotions.
    [[nodiscard]] bool Conversions() {
        for (std::size_t man = 0; man < m_material.Men(); ++man) {
            if (!IsBlackMan(man))
                continue;
            const int from = m_p.m_men[man];
            const bool bPawn = KindOf(m_material.Figure(man)) == kPawn;
            TMask targets =
                bPawn ? (BlackPawnAttacks(MaskOf(from)) & m_p.m_white) | (BlackPawnSteps(from, m_p.Occupied()) & kRank1)
                      : AttacksOf(KindOf(m_material.Figure(man)), from, m_p.Occupied()) & m_p.m_white;
            while (targets != 0) {
                const int to = TakeSquare(targets);
                if (IsLegal(man, to) && !ConversionAnswered(man, to, bPawn && RankOf(to) == 0))
                    return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool ConversionAnswered(std::size_t man, int to, bool bPromotes) {
        if (m_material.IsFrozen(man))
            return false;
        TPlacement after = m_p;
        after.m_men[man] = static_cast<TSquare>(to);
        if (!bPromotes)
            return Answered(ValueAfter(after, to, kNoMan, kNoPromotion));
        for (std::size_t kind = 0; kind < kPromotionKinds.size(); ++kind)
            if (!Answered(ValueAfter(after, to, man, kind)))
                return false;
        return true;
    }

    // The squares of `after` are right, its masks need not be.
    [[nodiscard]] unsigned ValueAfter(const TPlacement& after, int to, std::size_t promoted, std::size_t kind) const {
        const std::size_t captured = m_material.ManOn(m_p, to);
        const TConversion& conversion = m_material.Conversion(captured, promoted, kind);
        if (conversion.m_to == nullptr || (captured != kNoMan && m_material.IsFrozen(captured)))
            return 0;
        return conversion.m_to->WhiteMatesIn(conversion.m_to->MenOf(Converted(conversion, after)));
    }

    [[nodiscard]] bool EnPassant() {
        if (m_nDoubleStep == kNoDoubleStep)
            return true;
        const int to = m_nDoubleStep - 8;
        for (TMask pawns = SquaresBeside(m_nDoubleStep) & PawnsOf(m_p, m_p.m_black); pawns != 0;) {
            const int from = TakeSquare(pawns);
            TFigureMasks masks = WithBlackMove(m_p, from, to, kPawn);
            masks.m_white &= ~MaskOf(m_nDoubleStep);
            masks.m_pawns &= ~MaskOf(m_nDoubleStep);
            if (WhiteCheckers(masks) != 0)
                continue;
            const std::size_t man = m_material.ManOn(m_p, from);
            TPlacement after = m_p;
            after.m_men[man] = static_cast<TSquare>(to);
            if (m_material.IsFrozen(man) || !Answered(ValueAfter(after, m_nDoubleStep, kNoMan, kNoPromotion)))
                return false;
        }
        return true;
    }

    // White after Black's double step: by the moves of the element (nMoves, 0 for no mate), or by a capture in passing.
    [[nodiscard]] unsigned WithWhiteEnPassant(std::size_t stepped, int from, int to, unsigned nMoves) const;

    const CMaterial& m_material;
    const TPlacement& m_p;
    const int m_nDoubleStep;
    const TQuiet& m_quiet;
    const unsigned m_nMost;
    bool m_bInCheck = false;
    bool m_bHasMove = false;
    unsigned m_nLongest = 0;
};

/// Black to move in material whose data are finished: as CBlackNode::Value.
[[nodiscard]] inline unsigned BlackLosesIn(const TConversion& conversion, const TPlacement& after,
                                           unsigned nMost = kNotLost) {
    const TPlacement p = Converted(conversion, after);
    const TFinishedData quiet{*conversion.m_to, p};
    return CBlackNode<TFinishedData>(*conversion.m_to, p, kNoDoubleStep, quiet, nMost).Value();
}

template <class TQuiet>
unsigned CBlackNode<TQuiet>::WithWhiteEnPassant(std::size_t stepped, int from, int to, unsigned nMoves) const {
    const TFigureMasks masks = WithBlackMove(m_p, from, to, kPawn);
    for (TMask pawns = SquaresBeside(to) & PawnsOf(m_p, m_p.m_white); pawns != 0;) {
        const int capturer = TakeSquare(pawns);
        const std::size_t man = m_material.ManOn(m_p, capturer);
        const TConversion& conversion = m_material.Conversion(stepped, kNoMan, kNoPromotion);
        TPlacement after = m_p;
        static_cast<TFigureMasks&>(after) = WithWhiteMove(masks, capturer, to + 8, kPawn, true);
        after.m_men[man] = static_cast<TSquare>(to + 8);
        if (conversion.m_to == nullptr || m_material.IsFrozen(man) || IsWhiteKingAttacked(after))
            continue;
        const unsigned lost = BlackLosesIn(conversion, after);
        if (lost != kNotLost && (nMoves == 0 || lost + 1 < nMoves))
            nMoves = lost + 1;
    }
    return nMoves;
}

/// White to move: his captures and promotions.
class CWhiteConversions {
  public:
    CWhiteConversions(const CMaterial& material, const TPlacement& p) : m_material(material), m_p(p) {}

    /// Does one of them mate in at most n (>= 1) moves? Then the number of moves of such a mate; kNoMateFound if none
    /// of them ever mates; kMoreThanAsked if that may be.
    [[nodiscard]] unsigned Value(unsigned n) {
        m_nMost = n;
        if (!m_material.IsWhiteKingFrozen())
            Captures(kNoMan, kKing, m_p.m_nWhiteKing, KingAttacks(m_p.m_nWhiteKing));
        for (std::size_t man = 0; man < m_material.Men() && m_nBest > m_nMost; ++man) {
            if (!IsWhite(m_material.Figure(man)) || m_material.IsFrozen(man))
                continue;
            const int from = m_p.m_men[man];
            const TFigure kind = KindOf(m_material.Figure(man));
            if (kind != kPawn) {
                Captures(man, kind, from, AttacksOf(kind, from, m_p.Occupied()));
                continue;
            }
            Captures(man, kind, from, WhitePawnAttacks(MaskOf(from)));
            for (TMask targets = WhitePawnSteps(from, m_p.Occupied()) & kRank8; targets != 0;)
                Promotions(man, from, TakeSquare(targets), kNoMan);
        }
        return m_nBest;
    }

  private:
    void Captures(std::size_t man, TFigure kind, int from, TMask targets) {
        for (targets &= m_p.m_black; targets != 0 && m_nBest > m_nMost;) {
            const int to = TakeSquare(targets);
            const std::size_t captured = m_material.ManOn(m_p, to);
            if (captured == kNoMan || m_material.IsFrozen(captured))
                continue;
            if (kind == kPawn && RankOf(to) == 7)
                Promotions(man, from, to, captured);
            else
                TryMove(man, from, to, kind, m_material.Conversion(captured, kNoMan, kNoPromotion));
        }
    }

    void Promotions(std::size_t man, int from, int to, std::size_t captured) {
        for (std::size_t kind = 0; kind < kPromotionKinds.size(); ++kind)
            TryMove(man, from, to, kPromotionKinds[kind], m_material.Conversion(captured, man, kind));
    }

    void TryMove(std::size_t man, int from, int to, TFigure kind, const TConversion& conversion) {
        if (conversion.m_to == nullptr)
            return;
        TPlacement after = m_p;
        static_cast<TFigureMasks&>(after) = WithWhiteMove(m_p, from, to, kind);
        if (man != kNoMan)
            after.m_men[man] = static_cast<TSquare>(to);
        if (IsWhiteKingAttacked(after))
            return;
        const unsigned lost = BlackLosesIn(conversion, after, m_nMost - 1);
        if (lost != kNotLost)
            m_nBest = std::min(m_nBest, lost == kMoreThanAsked ? kMoreThanAsked : lost + 1);
    }

    const CMaterial& m_material;
    const TPlacement& m_p;
    unsigned m_nMost = 0;
    unsigned m_nBest = kNoMateFound;
};

/// White pawns' double steps that give Black a right to capture in passing: from-squares of the movable ones.
[[nodiscard]] inline TMask InvitingPawns(const TPlacement& p) {
    constexpr TMask kRank2 = kRank1 << 8;
    const TMask empty = ~p.Occupied();
    TMask pawns = PawnsOf(p, p.m_white) & kRank2 & empty >> 8 & empty >> 16;
    TMask inviting = 0;
    while (pawns != 0) {
        const int from = TakeSquare(pawns);
        if (InvitesEnPassant(p, from + 16))
            inviting |= MaskOf(from);
    }
    return inviting;
}

} // namespace quillon
