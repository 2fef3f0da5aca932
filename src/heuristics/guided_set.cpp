#include "heuristics/guided_set.h"

#include <unordered_set>

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/search_hooks.h"
#include "heuristics/verify_heuristics.h"
#include "search/control.h"

namespace quillon {

namespace {

constexpr std::size_t kMostPositions = 20'000;

/// Black's replies are verified where the sort of black moves would do it.
constexpr int kShortestVerified = 4;

class CGuidedWalk {
  public:
    CGuidedWalk(const CProofGuide& guide, std::uint32_t mask) : m_guide(guide), m_left(mask) {}

    void Walk(TChessboard& p) {
        TMove move;
        if (m_left == 0 || m_seen.size() >= kMostPositions || IsStopping(p) || !m_guide.Suggest(p, move))
            return;
        if ((m_left & SH_DONTRECEDEBLACKKING) != 0 && RecedesFromBlackKing(p, move))
            m_left &= ~SH_DONTRECEDEBLACKKING;
        // A leaf mates whatever is doubted of Black's replies: a rule spares those that are mated on the move.
        if (m_guide.KnownPlies(p) <= kPliesOfLeaf || !m_seen.insert(HashBoard(p)).second)
            return;
        TChessboard* const child = CopyToChild(&p);
        if (MakeWhiteMove(*child, move) != 0)
            WalkReplies(*child);
    }

    [[nodiscard]] std::uint32_t Left() const { return m_left; }

  private:
    void WalkReplies(TChessboard& p) {
        TMove list[kMaxMoves];
        const int count = GenerateBlackMoves(p, list);
        for (int i = 0; i < count; ++i) {
            TChessboard* const child = CopyToChild(&p);
            if (MakeBlackMove<kLegalityOnly>(*child, list[i], false) == kIllegalMove)
                continue;
            if (p.m_nMoves >= kShortestVerified)
                Verify(*child);
            Walk(*child);
        }
    }

    void Verify(TChessboard& child) {
        for (std::uint32_t bits = m_left; bits != 0; bits &= bits - 1) {
            const std::uint32_t bit = bits & (~bits + 1);
            SetMask(child, bit);
            if (VerifyHeuristics(child, nullptr) != kNotDoubtful)
                m_left &= ~bit;
        }
        SetMask(child, 0);
    }

    /// A check may take a bit off the parent, so both get the mask.
    static void SetMask(TChessboard& child, std::uint32_t mask) {
        for (TChessboard* b : {&child, child.m_pPrevious}) {
            b->m_nHeuristics = mask;
            b->m_nHeurParams = ComputeHeurParams(*b);
        }
    }

    const CProofGuide& m_guide;
    std::uint32_t m_left;
    std::unordered_set<std::uint64_t> m_seen;
};

} // namespace

std::uint32_t HeuristicsAgainstGuide(TChessboard& root, const CProofGuide& guide, std::uint32_t mask) {
    const TChessboard saved = root;
    root.m_nHeuristics = root.m_nHeurParams = 0;
    root.m_byPass = 1;
    // The forced run tries the guide's moves besides its own. The other exchanges the board for one without a bishop,
    // of which the guide knows nothing.
    CGuidedWalk walk(guide, mask & ~(SH_FINDFORCEDMATE | SH_ONECOLORPLAYPOSSIBLE));
    walk.Walk(root);
    root = saved;
    return mask & ~(walk.Left() | SH_FINDFORCEDMATE);
}

} // namespace quillon
