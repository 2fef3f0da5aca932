// Checks are tried with 3, 5, 7, ... plies, so that a short line is found at the price of a short line, until the
// stipulation or the bound on positions is reached. A position with a register-safe board is looked up: any mate that
// is known within the plies left will do.

#include "search/forcing_proof.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/register_use.h"

namespace quillon {

namespace {

constexpr int kMostPositions = 4000; // of one proof: about the price of a trial of five plies

class CForcingProof {
  public:
    explicit CForcingProof(TChessboard& p) : m_p(p), m_nLeft(kMostPositions) {}

    bool Run() {
        const std::uint16_t m = m_p.m_nMoves;
        bool bProved = false;
        for (std::uint16_t k = 3; k <= m && !bProved && m_nLeft > 0; k = static_cast<std::uint16_t>(k + 2)) {
            m_p.m_nMoves = k;
            bProved = CheckAndMate(m_p);
        }
        m_p.m_nMoves = m;
        return bProved;
    }

  private:
    [[nodiscard]] bool IsOver(const TChessboard& b) const {
        return m_nLeft <= 0 || (IsControlPending(b) && IsStopping(b));
    }

    /// White's turn: one check that leaves no way out.
    bool CheckAndMate(TChessboard& b) {
        --m_nLeft;
        if (b.m_nMoves == 1)
            return FindMateInOne(&b);
        const TMateResult known = AskRegister(b);
        if (known >= MR_NOMATE)
            return known == MR_MATE;
        TMove list[kMaxMoves];
        const int count = b.m_whiteChecker != kNoChecker ? GenerateWhiteMoves(b, list) : GenerateWhiteChecks(b, list);
        for (int i = 0; i < count && !IsOver(b); ++i) {
            TChessboard* const child = CopyToChild(&b);
            if (MakeWhiteMove(*child, list[i]) != 0 && child->m_blackChecker != kNoChecker && AllEvasionsLose(*child))
                return true;
        }
        return false;
    }

    /// Black's turn, in check.
    bool AllEvasionsLose(TChessboard& b) {
        TMove list[kMaxMoves];
        const int count = GenerateBlackEvasions(b, list);
        for (int i = 0; i < count; ++i) {
            if (IsOver(b))
                return false;
            TChessboard* const child = CopyToChild(&b);
            const int made = MakeBlackMove(*child, list[i], false);
            if (made == kCertainEscape || (made != kIllegalMove && !CheckAndMate(*child)))
                return false;
        }
        return !IsOver(b);
    }

    TChessboard& m_p;
    int m_nLeft;
};

} // namespace

bool ProveByForcing(TChessboard& p) { return CForcingProof(p).Run(); }

} // namespace quillon
