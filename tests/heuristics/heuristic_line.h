#pragma once
// A line under heuristics: a searched position in the pass with heuristics, with a mask and its signature.

#include <set>
#include <string>

#include "core/generation.h"
#include "heuristics/heuristic_moves.h"
#include "heuristics/heuristic_signature.h"
#include "search/searched_position.h"

namespace quillon::test {

class CHeuristicLine : public CSearchedPosition {
  public:
    CHeuristicLine(std::string_view placement, int nPlies, std::uint32_t mask)
        : CSearchedPosition(placement, nPlies, 1) {
        SetMask(Root(), mask);
    }

    static void SetMask(TChessboard& b, std::uint32_t mask) {
        b.m_nHeuristics = mask;
        b.m_nHeurParams = ComputeHeurParams(b);
    }

    [[nodiscard]] bool Has(std::uint32_t bits) { return (Now().m_nHeuristics & bits) != 0; }

    /// The moves that the heuristics' generators give for the position reached; nothing if all moves are wanted.
    [[nodiscard]] std::set<std::string> Generated() {
        TMove list[kMaxMoves];
        const THeuristicMoves moves = GenerateByHeuristics(Now(), list);
        m_bDoubtful = moves.m_bDoubtful;
        std::set<std::string> texts;
        for (int i = 0; i < moves.m_nCount; ++i)
            texts.insert(WriteMove(list[i], Now()));
        return texts;
    }
    bool m_bDoubtful = false; // what the last list said of the node
};

} // namespace quillon::test
