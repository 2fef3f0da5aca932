#pragma once
// A black move made in a pass with heuristics, and the word of the rules on it.

#include <string_view>

#include <gtest/gtest.h>

#include "heuristics/heuristic_signature.h"
#include "heuristics/verified_move.h"
#include "heuristics/verify_heuristics.h"
#include "search/searched_position.h"

namespace quillon::test {

class CMadeMove {
  public:
    /// nPlies: plies left in the root, odd; `moves` begin with White and end with Black.
    CMadeMove(std::string_view placement, int nPlies, std::string_view moves = "") : m_line(placement, nPlies, 1) {
        const TChessboard& root = m_line.Root();
        Analysis().m_rootMaterial = {static_cast<std::uint8_t>(WhiteFigureCount(root)),
                                     static_cast<std::uint8_t>(BlackFigureCount(root)), root.m_whitePawns,
                                     root.m_blackPawns};
        m_line.Play(moves);
    }

    CMadeMove& Play(std::string_view moves) {
        m_line.Play(moves);
        return *this;
    }

    /// Watches the black figure that stands on `now` for SH_DONTLETFIGUREUNBLOCK, before any move was made.
    CMadeMove& Watch(std::string_view initial, std::string_view now) {
        Context().m_bBlockedFiguresByHand = true;
        Context().m_nBlockedFigures = 1;
        Context().m_BlockedFigures[0] = String2Square(initial);
        m_line.Now().m_blockedFigures[0] = String2Square(now);
        return *this;
    }

    [[nodiscard]] TSearchContext& Context() { return m_line.Context(); }
    [[nodiscard]] TAnalysis& Analysis() { return m_line.Analysis(); }
    [[nodiscard]] TChessboard& After() { return m_line.Now(); }
    [[nodiscard]] TChessboard& Before() { return *After().m_pPrevious; }
    [[nodiscard]] TMove& Move() { return m_move; }
    [[nodiscard]] CVerifiedMove Verified() { return CVerifiedMove(After(), &m_move); }

    CMadeMove& Under(std::uint32_t bits) {
        for (TChessboard* p = &After(); p != nullptr; p = p->m_pPrevious) {
            p->m_nHeuristics = bits;
            p->m_nHeurParams = ComputeHeurParams(*p);
        }
        return *this;
    }

    [[nodiscard]] int Verify(std::uint32_t bits) {
        Under(bits);
        m_move = After().m_lastMove;
        return VerifyHeuristics(After(), &m_move);
    }

    /// Doubtful, and by that very heuristic?
    [[nodiscard]] bool Doubts(std::uint32_t bits, std::uint32_t cause) {
        Context().m_lastDoubtCause = 0;
        const int answer = Verify(bits);
        EXPECT_TRUE(answer == kDoubtful || answer == kNotDoubtful);
        if (answer == kDoubtful) {
            EXPECT_EQ(Context().m_lastDoubtCause, cause);
        }
        return answer == kDoubtful;
    }
    [[nodiscard]] bool Doubts(std::uint32_t bit) { return Doubts(bit, bit); }

  private:
    CSearchedPosition m_line;
    TMove m_move{};
};

} // namespace quillon::test
