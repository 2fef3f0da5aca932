#pragma once
// What the search asks of the register of solved subpositions. The analysis owns one or none; with none, nothing is
// looked up and nothing stored.
//
// Threads: all operations may be called from every thread of an analysis at once.

#include <cstdint>

#include "core/chessboard.h"
#include "core/mate_result.h"

namespace quillon {

class ITemporaryRegister {
  public:
    virtual ~ITemporaryRegister() = default;

    /// What is known of the position with `nMoves` plies left. With nMaxMoves above nMoves an entry for any number of
    /// plies from nMoves to nMaxMoves serves: MR_QUICKER when more than nMoves were needed.
    /// MR_NONE when nothing is known. Doubt counts only under the same m_nHeuristics and m_nHeurParams.
    [[nodiscard]] virtual TMateResult Find(const TChessboard& position, int nMoves, int nMaxMoves) = 0;

    /// Stores a proved verdict, MR_MATE or MR_NOMATE. A verdict that finds no room is lost.
    virtual void Insert(const TChessboard& position, int nMoves, TMateResult verdict) = 0;

    /// Stores doubt, under the position's m_nHeuristics and m_nHeurParams.
    virtual void InsertDoubtful(const TChessboard& position, int nMoves) = 0;

    /// Memory is short: gives some of what it holds back.
    virtual void FreeMemory() {}

    /// A good moment to give some of it back before memory is short. Costs nothing to speak of while there is plenty.
    virtual void FreeMemoryEarly() {}

    /// A search beside the passes begins (true) or is over: in it a verdict that contradicts what is stored is told
    /// rather than repaired, whatever pass it belongs to. Returns what was in force before.
    virtual bool SetSideAnalysis(bool /*bOn*/) { return false; }

    // What a run tells of its passes. Only a register that keeps doubt apart by heuristics has to listen.

    /// A pass with these heuristics begins, in one thread more.
    virtual void AddDoubtfulUser(std::uint32_t /*heuristics*/, std::uint32_t /*params*/) {}

    /// It is over in one of them: doubt that no other still uses may be thrown away.
    virtual void ReleaseDoubtfulUser(std::uint32_t /*heuristics*/, std::uint32_t /*params*/) {}

    /// No doubt is of use any more: the pass without heuristics begins, or quick mode, which doubts too, has ended.
    virtual void ForgetDoubt() {}
};

} // namespace quillon
