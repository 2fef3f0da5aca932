#pragma once
// CLevelWork: the work of a level on the indices of a table, for one form of its elements.
//
// The level of n moves of White. What a level finds follows from levels before it, so each position is looked at when
// something that it depends on has just been settled, and not at every level:
//   White mates in n  a quiet move leads to a position that Black has just been found to lose: un-moves from there,
//                     which need no further look (UnmoveWhite)
//                     a capture or promotion leads to one that finished data tell to be lost in n - 1, or a double step
//                     that Black may capture in passing leads to a loss: looked at forwards (TryConversions,
//                     TryDoubleSteps). Where that is not so yet but may be, the index waits
//   Black loses in n  all moves are answered, the last of them by a mate in n: if it is a quiet move, un-moves from
//   that
//                     mate lead here (UnmoveBlack); if it is a conversion, the index waits from when all quiet moves
//                     were answered on
// Un-moves are quiet moves backwards: kings and men to empty squares, pawns one or two squares back. When the state of
// a table is not known (at the start, after a resume, after a level that was stopped) all indices are looked at once.
//
// Threads: members are called by several at once, in phases that are told in generator_run.cpp.

#include <string>

#include "core/chess_exception.h"
#include "globalregister/generator/detail_queue.h"
#include "globalregister/generator/generator_run.h"
#include "globalregister/generator/level_marks.h"
#include "globalregister/generator/level_threads.h"
#include "globalregister/generator/node_value.h"
#include "globalregister/generator/table_geometry.h"
#include "globalregister/generator/work_cells.h"

namespace quillon {

template <class TCells> class CLevelWork {
  public:
    CLevelWork(TGlobalRegister& table, const CMaterial& material)
        : m_table(table), m_cells(table.data.data()), m_geometry(table, material),
          m_newWhite(m_geometry.Size(), TCells::kIndicesOfNewWhite),
          m_newLost(m_geometry.Size(), TCells::kIndicesOfNewLost),
          m_waitingWhite(m_geometry.Size(), TCells::kIndicesOfWaiting),
          m_waitingBlack(m_geometry.Size(), TCells::kIndicesOfWaiting) {}

    [[nodiscard]] const CTableGeometry& Geometry() const { return m_geometry; }
    [[nodiscard]] CLevelMarks& NewWhite() { return m_newWhite; }
    [[nodiscard]] CLevelMarks& NewLost() { return m_newLost; }
    [[nodiscard]] CLevelMarks& WaitingWhite() { return m_waitingWhite; }
    [[nodiscard]] CLevelMarks& WaitingBlack() { return m_waitingBlack; }

    void ClearMarks() {
        for (CLevelMarks* const marks : {&m_newWhite, &m_newLost, &m_waitingWhite, &m_waitingBlack})
            marks->Clear();
    }

    [[nodiscard]] std::uint64_t BytesOfMarks() const {
        return m_newWhite.Bytes() + m_newLost.Bytes() + m_waitingWhite.Bytes() + m_waitingBlack.Bytes();
    }

    /// Mates found may be of the level that begins already, since it has been begun before: where elements do not tell
    /// lengths, these are read from the details.
    void SetReadsLengths(bool bReads) { m_bReadsLengths = bReads; }

    /// Black is mated at this index: a loss in 0 moves. What a run before this one has entered is marked as well: it
    /// may have ended before any un-move.
    void TryMated(std::uint64_t index) {
        TPlacement p;
        if (m_geometry.PlacementOf(index, p) && !IsWhiteKingAttacked(p) && IsBlackMated(p, kNoDoubleStep))
            static_cast<void>(EnterLost(p, index)); // what the level after this one finds
    }

    /// White's captures and promotions; with bQuiet his other moves, too.
    void TryConversions(TGeneratorThread& thread, std::uint64_t index, unsigned n, bool bQuiet) {
        TPlacement p;
        if (!IsOpenWhitePosition(index, p))
            return;
        const unsigned value = CWhiteConversions(m_geometry.Material(), p).Value(n);
        if (value <= n || (bQuiet && FindQuietMove(p)))
            EnterWhite(thread, p, index, n);
        else if (value != kNoMateFound || InvitingPawns(p) != 0)
            m_waitingWhite.Mark(index);
    }

    /// White's double steps that give Black a capture in passing. What they find is kept for EnterDoubleSteps: entered
    /// at once, others would take it for what the level before has found.
    void TryDoubleSteps(TGeneratorThread& thread, std::uint64_t index, unsigned n) {
        TPlacement p;
        if (!IsOpenWhitePosition(index, p))
            return;
        for (TMask pawns = InvitingPawns(p); pawns != 0;)
            if (IsLostAfterDoubleStep(p, TakeSquare(pawns), n)) {
                thread.m_doubleSteps.push_back(index);
                return;
            }
    }

    void EnterDoubleSteps(TGeneratorThread& thread, unsigned n) {
        TPlacement p;
        for (const std::uint64_t index : thread.m_doubleSteps)
            if (m_geometry.PlacementOf(index, p))
                EnterWhite(thread, p, index, n);
        thread.m_doubleSteps.clear();
    }

    /// All positions from which a quiet move of White leads to this one, if Black loses it.
    void UnmoveWhite(TGeneratorThread& thread, std::uint64_t index, unsigned n) {
        TPlacement p;
        if (!m_cells.IsLost(index) || !m_geometry.PlacementOf(index, p))
            return;
        const TMask empty = ~p.Occupied();
        for (TMask from = KingAttacks(p.m_nWhiteKing) & empty & ~KingAttacks(p.m_nBlackKing); from != 0;)
            EnterUnmoved(thread, p, kNoIndex, kNoMan, p.m_nWhiteKing, TakeSquare(from), n);
        const CMaterial& material = m_geometry.Material();
        for (std::size_t man = 0; man < material.Men(); ++man) {
            if (!IsWhite(material.Figure(man)))
                continue;
            const int to = p.m_men[man];
            const TFigure kind = KindOf(material.Figure(man));
            TMask sources = kind == kPawn ? WhitePawnUnsteps(to, p.Occupied()) : AttacksOf(kind, to, ~empty) & empty;
            while (sources != 0) {
                const int from = TakeSquare(sources);
                if (kind != kPawn || to - from != 16 || !InvitesEnPassant(p, to))
                    EnterUnmoved(thread, p, m_geometry.IndexAfter(p, index, man, to, from), man, to, from, n);
            }
        }
    }

    /// Does Black lose at this index?
    void TryBlack(TGeneratorThread& thread, std::uint64_t index, unsigned n) {
        TPlacement p;
        if (!m_cells.IsLost(index) && m_geometry.PlacementOf(index, p) && !IsWhiteKingAttacked(p))
            TryBlackPosition(thread, p, index, n);
    }

    /// The positions from which a quiet move of Black leads to this one, if White mates in n.
    void UnmoveBlack(TGeneratorThread& thread, std::uint64_t index, unsigned n) {
        TPlacement p;
        if (!m_cells.IsWhiteOfLevel(index, n) || !m_geometry.PlacementOf(index, p))
            return;
        const TMask empty = ~p.Occupied();
        for (TMask from = KingAttacks(p.m_nBlackKing) & empty & ~KingAttacks(p.m_nWhiteKing); from != 0;)
            TryUnmoved(thread, p, index, kNoMan, p.m_nBlackKing, TakeSquare(from), n);
        const CMaterial& material = m_geometry.Material();
        for (std::size_t man = 0; man < material.Men(); ++man) {
            if (!IsBlack(material.Figure(man)))
                continue;
            const int to = p.m_men[man];
            const TFigure kind = KindOf(material.Figure(man));
            TMask sources = kind == kPawn ? BlackPawnUnsteps(to, p.Occupied()) : AttacksOf(kind, to, ~empty) & empty;
            while (sources != 0)
                TryUnmoved(thread, p, index, man, to, TakeSquare(sources), n);
        }
    }

    /// Black to move: moves in which White mates, if that is within nMoves half-moves (2n: n moves of White); more if
    /// captures, promotions or captures in passing need more, and nothing else; kNotLost if there is a move that is not
    /// answered.
    ///   index        of the placement; kNoIndex outside the pattern of a custom type.
    ///   nDoubleStep  the square of a white pawn that has just made a double step, or kNoDoubleStep.
    ///   Errors       ChessException: one half-move is no time for a move of each side; missing or damaged data.
    [[nodiscard]] unsigned FindMateByGlobalRegister(const TPlacement& p, std::uint64_t index, int nDoubleStep,
                                                    unsigned nMoves) const {
        if (nMoves == 1)
            throw ChessException("m_nMoves cannot be ==1 in FindMateByGlobalRegister");
        const TTableAnswers answers{*this, p, index, nMoves / 2};
        return CBlackNode<TTableAnswers>(m_geometry.Material(), p, nDoubleStep, answers).Value();
    }

  private:
    // White's answers after a black move, as far as the table has them: 1 for a mate in at most m_nWithin moves.
    struct TTableAnswers {
        const CLevelWork& m_work;
        const TPlacement& m_p;
        std::uint64_t m_nIndex; // of m_p; kNoIndex: outside the pattern
        unsigned m_nWithin;

        [[nodiscard]] unsigned operator()(std::size_t man, int from, int to) const {
            if (m_nIndex == kNoIndex)
                return 0;
            const std::uint64_t after = m_work.m_geometry.IndexAfter(m_p, m_nIndex, man, from, to);
            return after != kNoIndex && m_work.IsWhiteWithin(after, m_nWithin) ? 1 : 0;
        }
    };

    [[nodiscard]] bool IsWhiteWithin(std::uint64_t index, unsigned n) const {
        if (!m_cells.IsWhiteWithin(index, n))
            return false;
        return TCells::kTellsLengths || !m_bReadsLengths || !m_table.details || ReadBitData(m_table, index) <= n;
    }

    [[nodiscard]] bool IsOpenWhitePosition(std::uint64_t index, TPlacement& p) const {
        return m_cells.IsWhiteOpen(index) && m_geometry.PlacementOf(index, p) && WhiteCheckers(p) == 0;
    }

    void EnterWhite(TGeneratorThread& thread, const TPlacement& p, std::uint64_t index, unsigned n) {
        if (n > LongestMate())
            throw ChessException("Error in Generate_MainLoop2: no room for a mate in " + std::to_string(n) + " moves");
        if (m_table.details)
            QueueLengths(p, index, n);
        m_newWhite.Mark(m_geometry.ForAliases(
            p, index, [&](std::uint64_t alias) { thread.m_nFound += m_cells.SetWhite(alias, n) ? 1 : 0; }));
    }

    // An element of one byte has 255 for what is unknown.
    [[nodiscard]] unsigned LongestMate() const {
        return m_table.details && m_table.nElementSize == 1 ? kUnknownElement - 1u : TCells::kLongest;
    }

    // Before the bits: a bit without a length would be taken for settled by whoever runs the level again. Threads that
    // find the same position at once queue the same lengths.
    void QueueLengths(const TPlacement& p, std::uint64_t index, unsigned n) {
        static_cast<void>(m_geometry.ForAliases(p, index, [&](std::uint64_t alias) {
            if (m_cells.IsWhiteOpen(alias) && !SetBitData(m_table, alias, static_cast<std::uint16_t>(n)))
                throw CDetailFileFailure("Error in Generate_MainLoop2 in call to SetBitData()");
        }));
    }

    // The number of indices that are lost from now on.
    [[nodiscard]] std::uint64_t EnterLost(const TPlacement& p, std::uint64_t index) {
        std::uint64_t nFound = 0;
        m_newLost.Mark(
            m_geometry.ForAliases(p, index, [&](std::uint64_t alias) { nFound += m_cells.SetLost(alias) ? 1 : 0; }));
        return nFound;
    }

    // The man goes back from `to` to `from`; `index` is that of the position then, kNoIndex if it is still to be found.
    void EnterUnmoved(TGeneratorThread& thread, const TPlacement& p, std::uint64_t index, std::size_t man, int to,
                      int from, unsigned n) {
        if (index != kNoIndex && !m_cells.IsWhiteOpen(index))
            return;
        const TPlacement before = AfterWhiteMove(m_geometry.Material(), p, man, to, from);
        if (index == kNoIndex)
            index = m_geometry.IndexOf(before);
        if (m_cells.IsWhiteOpen(index) && WhiteCheckers(before) == 0)
            EnterWhite(thread, before, index, n);
    }

    void TryUnmoved(TGeneratorThread& thread, const TPlacement& p, std::uint64_t index, std::size_t man, int to,
                    int from, unsigned n) {
        const std::uint64_t before = m_geometry.IndexAfter(p, index, man, to, from);
        if (m_cells.IsLost(before))
            return;
        TPlacement unmoved = p;
        static_cast<TFigureMasks&>(unmoved) =
            WithBlackMove(p, to, from, man == kNoMan ? kKing : KindOf(m_geometry.Material().Figure(man)));
        if (man != kNoMan)
            unmoved.m_men[man] = static_cast<TSquare>(from);
        if (!IsWhiteKingAttacked(unmoved))
            TryBlackPosition(thread, unmoved, before, n);
    }

    // White's king stands where an index has it.
    void TryBlackPosition(TGeneratorThread& thread, const TPlacement& p, std::uint64_t index, unsigned n) {
        const unsigned value = FindMateByGlobalRegister(p, index, kNoDoubleStep, 2 * n);
        if (value <= n)
            thread.m_nFound += EnterLost(p, index);
        else if (value != kNotLost)
            m_waitingBlack.Mark(m_geometry.CanonicalOf(p, index));
    }

    [[nodiscard]] bool IsLostAfterDoubleStep(const TPlacement& p, int from, unsigned n) const {
        const CMaterial& material = m_geometry.Material();
        const std::size_t man = material.ManOn(p, from);
        if (material.IsFrozen(man))
            return false;
        const TPlacement after = AfterWhiteMove(material, p, man, from, from + 16);
        return !IsWhiteKingAttacked(after) &&
               FindMateByGlobalRegister(after, m_geometry.IndexOf(after), from + 16, 2 * (n - 1)) <= n - 1;
    }

    // Has White a quiet move to a position that Black loses?
    [[nodiscard]] bool FindQuietMove(const TPlacement& p) const {
        const CMaterial& material = m_geometry.Material();
        const TMask occupied = p.Occupied();
        if (!material.IsWhiteKingFrozen() && LeadsToLoss(p, kNoMan, p.m_nWhiteKing, KingAttacks(p.m_nWhiteKing)))
            return true;
        for (std::size_t man = 0; man < material.Men(); ++man) {
            if (!IsWhite(material.Figure(man)) || material.IsFrozen(man))
                continue;
            const int from = p.m_men[man];
            const TFigure kind = KindOf(material.Figure(man));
            if (LeadsToLoss(p, man, from,
                            kind == kPawn ? WhitePawnSteps(from, occupied) & ~kRank8 : AttacksOf(kind, from, occupied)))
                return true;
        }
        return false;
    }

    [[nodiscard]] bool LeadsToLoss(const TPlacement& p, std::size_t man, int from, TMask targets) const {
        const CMaterial& material = m_geometry.Material();
        const bool bPawn = man != kNoMan && KindOf(material.Figure(man)) == kPawn;
        for (targets &= ~p.Occupied(); targets != 0;) {
            const int to = TakeSquare(targets);
            if (bPawn && to - from == 16 && InvitesEnPassant(p, to))
                continue;
            const TPlacement after = AfterWhiteMove(material, p, man, from, to);
            if (IsWhiteKingAttacked(after))
                continue;
            const std::uint64_t index = m_geometry.IndexOf(after);
            if (index != kNoIndex && m_cells.IsLost(index))
                return true;
        }
        return false;
    }

    TGlobalRegister& m_table;
    const TCells m_cells;
    const CTableGeometry m_geometry;
    bool m_bReadsLengths = false;
    CLevelMarks m_newWhite, m_newLost;          // settled by the last level of each side
    CLevelMarks m_waitingWhite, m_waitingBlack; // to be looked at in the next level of each side
};

} // namespace quillon
