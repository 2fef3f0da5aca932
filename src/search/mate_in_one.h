#pragma once
// Mate on the move, on figure masks. The squares around the black king tell which white moves can mate at all: a move
// that neither checks nor takes away every flight is dropped before it is made. What is left is made on masks and
// tested for an evasion.

#include <cstddef>

#include "core/mask_moves.h"
#include "core/mate_test.h"

namespace quillon {

/// One position's masks and what all candidates have in common.
class CMateInOne {
  public:
    /// Black is not in check.
    ///   nDoubleStep  square of the black pawn that has just made a double step, or kNoDoubleStep
    ///   castlings    squares to which White's king may castle, as far as rights and path go
    CMateInOne(const TFigureMasks& masks, int nDoubleStep, TMask castlings)
        : m(masks), m_occupied(masks.Occupied()), m_nDoubleStep(nDoubleStep), m_castlings(castlings) {
        const int king = m.m_nBlackKing;
        m_straightChecks = RookAttacks(king, m_occupied);
        m_diagonalChecks = BishopAttacks(king, m_occupied);
        FindFlights();
        FindDiscoverers();
    }

    [[nodiscard]] bool Find() { return AnyKnightMates() || AnySliderMates() || AnyPawnMates() || AnyKingMoveMates(); }

    /// Squares the black king can go to as things stand.
    [[nodiscard]] int CountFlights() const { return CountSquares(m_flights); }

  private:
    static constexpr int kMaxSliders = 16; // legal positions have at most eleven
    struct TSlider {
        int m_nSquare;
        bool m_bStraight, m_bDiagonal;
        TMask m_attacks;
    };

    void AddSlider(int square, bool bStraight, bool bDiagonal) {
        TMask attacks = 0;
        if (bStraight)
            attacks |= RookAttacks(square, m_occupied);
        if (bDiagonal)
            attacks |= BishopAttacks(square, m_occupied);
        m_protected |= attacks;
        if (m_nSliders < kMaxSliders)
            m_sliders[m_nSliders++] = {square, bStraight, bDiagonal, attacks};
    }

    /// White's attacks need no lifting of the black king here: it is not in check, so no slider looks through it.
    void FindFlights() {
        const TMask straight = m.m_white & m.m_straightSliders, diagonal = m.m_white & m.m_diagonalSliders;
        for (TMask sliders = straight | diagonal; sliders != 0;) {
            const int square = TakeSquare(sliders);
            AddSlider(square, (straight >> square) & 1, (diagonal >> square) & 1);
        }
        TMask attacks = m_protected | KingAttacks(m.m_nWhiteKing) | WhitePawnAttacks(m.m_white & m.m_pawns);
        for (TMask knights = m.m_white & m.m_knights; knights != 0;)
            attacks |= KnightAttacks(TakeSquare(knights));
        m_flights = KingAttacks(m.m_nBlackKing) & ~m.m_black & ~attacks;
    }

    /// White figures that stand alone between a white slider and the black king.
    void FindDiscoverers() {
        AddDiscoverers(m_straightChecks, m.m_straightSliders, true);
        AddDiscoverers(m_diagonalChecks, m.m_diagonalSliders, false);
    }
    void AddDiscoverers(TMask seen, TMask sliders, bool bStraight) {
        const TMask screens = seen & m.m_white;
        sliders &= m.m_white & ~seen;
        if (screens == 0 || sliders == 0)
            return;
        const int king = m.m_nBlackKing;
        TMask behind = sliders & (bStraight ? RookAttacks(king, m_occupied & ~screens)
                                            : BishopAttacks(king, m_occupied & ~screens));
        while (behind != 0)
            m_discoverers |= SquaresBetween(king, TakeSquare(behind)) & screens;
    }

    [[nodiscard]] bool IsDiscoverer(int square) const { return (m_discoverers >> square) & 1; }

    /// Can a figure that attacks these squares from `to` leave no flight? A figure that leaves a square which a slider
    /// protects may open that slider's line, so it is let through.
    [[nodiscard]] bool MayTakeFlights(int from, int to, TMask attacksFromTo) const {
        return (m_flights & ~(attacksFromTo | MaskOf(to))) == 0 || ((m_protected >> from) & 1) != 0;
    }

    bool AnyKnightMates() {
        const TMask checks = KnightAttacks(m.m_nBlackKing);
        for (TMask knights = m.m_white & m.m_knights; knights != 0;) {
            const int from = TakeSquare(knights);
            TMask targets = KnightAttacks(from) & ~m.m_white;
            if (!IsDiscoverer(from))
                targets &= checks;
            while (targets != 0) {
                const int to = TakeSquare(targets);
                if (MayTakeFlights(from, to, KnightAttacks(to)) && Mates(from, to, kKnight))
                    return true;
            }
        }
        return false;
    }

    bool AnySliderMates() {
        for (std::size_t i = 0; i < m_nSliders; ++i)
            if (SliderMates(m_sliders[i]))
                return true;
        return false;
    }

    bool SliderMates(const TSlider& slider) {
        const int from = slider.m_nSquare;
        TMask checks = 0;
        if (slider.m_bStraight)
            checks |= m_straightChecks;
        if (slider.m_bDiagonal)
            checks |= m_diagonalChecks;
        TMask targets = slider.m_attacks & ~m.m_white;
        if (!IsDiscoverer(from))
            targets &= checks;
        const TFigure kind =
            static_cast<TFigure>((slider.m_bStraight ? kRook : 0) | (slider.m_bDiagonal ? kBishop : 0));
        while (targets != 0) {
            const int to = TakeSquare(targets);
            if (m_flights == 0 || MayTakeFlights(from, to, SliderAttacks(kind, from, to)))
                if (Mates(from, to, kind))
                    return true;
        }
        return false;
    }

    /// Attacks of a slider that has gone from one square to another, through the black king.
    [[nodiscard]] TMask SliderAttacks(TFigure kind, int from, int to) const {
        const TMask occupied = m_occupied & ~MaskOf(from) & ~MaskOf(m.m_nBlackKing);
        TMask attacks = 0;
        if ((kind & kRook) != 0)
            attacks |= RookAttacks(to, occupied);
        if ((kind & kBishop) != 0)
            attacks |= BishopAttacks(to, occupied);
        return attacks;
    }

    bool AnyPawnMates() {
        const TMask pawns = m.m_white & m.m_pawns;
        const TMask directSquares = BlackPawnAttacks(MaskOf(m.m_nBlackKing));
        // Pawns that may check: by promotion, by discovery, en passant, or from a square in front of the black king.
        TMask candidates = pawns & ((kRank1 << 48) | m_discoverers | EnPassantCapturers());
        const TMask steps = directSquares & ~m_occupied;
        candidates |= pawns & (steps >> 8);
        candidates |= pawns & (steps >> 16) & (kRank1 << 8);
        candidates |= pawns & BlackPawnAttacks(directSquares & m.m_black);
        while (candidates != 0)
            if (PawnMates(TakeSquare(candidates), directSquares))
                return true;
        return false;
    }

    [[nodiscard]] TMask EnPassantCapturers() const {
        return m_nDoubleStep == kNoDoubleStep ? 0 : SquaresBeside(MaskOf(m_nDoubleStep));
    }

    static TMask SquaresBeside(TMask square) { return ((square & ~kFileA) >> 1) | ((square & ~kFileH) << 1); }

    bool PawnMates(int from, TMask directSquares) {
        const TMask pawn = MaskOf(from);
        TMask targets = pawn << 8 & ~m_occupied;
        targets |= (targets & kRank3) << 8 & ~m_occupied;
        targets |= WhitePawnAttacks(pawn) & m.m_black;
        while (targets != 0)
            if (PawnMoveMates(from, TakeSquare(targets), directSquares))
                return true;
        return (EnPassantCapturers() & pawn) != 0 && Mates(from, m_nDoubleStep + 8, kPawn, true);
    }

    bool PawnMoveMates(int from, int to, TMask directSquares) {
        if (to >= kA8)
            return Mates(from, to, kQueen) || Mates(from, to, kRook) || Mates(from, to, kBishop) ||
                   Mates(from, to, kKnight);
        const bool bMayCheck = IsDiscoverer(from) || ((directSquares >> to) & 1) != 0;
        return bMayCheck && Mates(from, to, kPawn);
    }

    /// The king mates by discovery or by castling.
    bool AnyKingMoveMates() {
        const int king = m.m_nWhiteKing;
        TMask targets = m_castlings;
        if (IsDiscoverer(king))
            targets |= KingAttacks(king) & ~m.m_white;
        while (targets != 0)
            if (Mates(king, TakeSquare(targets), kKing))
                return true;
        return false;
    }

    /// Makes the move on a copy of the masks: is it legal, and mate?
    [[nodiscard]] bool Mates(int from, int to, TFigure kind, bool bEnPassant = false) const {
        const TFigureMasks after = WithWhiteMove(m, from, to, kind, bEnPassant);
        const bool bDoubleStep = kind == kPawn && to - from == 16;
        return IsBlackMated(after, bDoubleStep ? to : kNoDoubleStep) && !IsWhiteKingAttacked(after);
    }

    TFigureMasks m;
    TMask m_occupied;
    int m_nDoubleStep;
    TMask m_castlings;
    TMask m_straightChecks = 0, m_diagonalChecks = 0; // squares from which a slider sees the black king
    TMask m_flights = 0;                              // squares the black king can go to as things stand
    TMask m_protected = 0;                            // squares White's sliders look at
    TMask m_discoverers = 0;
    TSlider m_sliders[kMaxSliders];
    std::size_t m_nSliders = 0;
};

} // namespace quillon
