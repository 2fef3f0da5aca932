// The order of Black's moves: the one that most likely refutes comes first.
//
//   1 sort root, nesting      3 effort by plies left     5 full effort: mates in two      7 the list
//   2 pattern of the king     4 each move: make, register, heuristics, score             6 sort, checks first
//
// A wrong guess costs the search of a reply that White answers; a right one saves all the others.

#include "search/move_sort.h"

#include <algorithm>

#include "core/attacks.h"
#include "core/makers.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "heuristics/search_hooks.h"
#include "search/find_mate.h"
#include "search/hints.h"
#include "search/move_score.h"
#include "search/register_use.h"
#include "search/repetition.h"

namespace quillon {

namespace {

constexpr int kFullEffortPlies = 14;
constexpr int kReducedEffortPlies = 8;
constexpr int kRegisterPlies = 6;        // with fewer, searching the first guess is cheaper than asking for all
constexpr int kSpecialDefencePlies = 34; // from here on Black's counter-chances weigh more
constexpr int kMateInTwoPenalty = 5;
constexpr std::uint8_t kCheckMark = 0x40; // of byte 2 while the list is being sorted: the move checks White

enum class EEffort { None, Reduced, Full };

EEffort EffortOf(const TChessboard& p) {
    if (p.m_nMoves < kReducedEffortPlies || p.m_pContext->m_nSortNesting > 1)
        return EEffort::None;
    return p.m_nMoves >= kFullEffortPlies ? EEffort::Full : EEffort::Reduced;
}

class CBlackSort {
  public:
    CBlackSort(TChessboard& p, int count, TMove* list, bool bKeepMated)
        : m_p(p), m_context(*p.m_pContext), m_list(list), m_count(count), m_effort(EffortOf(p)),
          m_bAsk(p.m_nMoves >= kRegisterPlies), m_bKeepMated(bKeepMated) {}

    TBlackSort Run() {
        if (m_context.m_pSortRoot == nullptr)
            m_context.m_pSortRoot = &m_p; // 1
        const TMateResult verdict = ScoreAll();
        if (verdict < 0)
            return {m_kept, verdict, m_bAnyMated, m_deciding};
        if (m_effort == EEffort::Full)
            PutOffMatesInTwo();
        SortByScore(m_list, m_kept); // 6
        if (m_effort == EEffort::Reduced)
            PutChecksFirst();
        TakeMarksOff();
        PutHintsFirst(m_p, m_kept, m_list);
        return {m_kept, MR_MATE, m_bAnyMated, {}};
    }

  private:
    /// Step 4: the moves that stand, scored, at the front of the list.
    TMateResult ScoreAll() {
        for (int i = 0; i < m_count; ++i) {
            const TMove move = {m_list[i].m_nFrom, m_list[i].m_nTo, m_list[i].m_nPromotion, 0};
            TChessboard* const child = CopyToChild(&m_p);
            TMove made = move;
            const int stands = MakeBlackMove(*child, made, false);
            if (stands == kIllegalMove)
                continue;
            m_deciding = move;
            if (stands == kCertainEscape)
                return MR_NONE;
            if (m_bAsk) {
                const TMateResult known = AskRegisterAboutReply(*child, m_p.m_nMoves);
                if (known == MR_NOMATE)
                    return MR_NONE;
                if (known == MR_DOUBTFUL)
                    return MR_DOUBTFUL;
                if (known == MR_MATE && !m_bKeepMated) {
                    m_bAnyMated = true;
                    continue;
                }
            }
            const TMateResult verdict = VerifyReply(*child, m_list[i]);
            const std::uint8_t marks = m_list[i].m_nPromotion & (kMoveDefersEdgeCheck | kMoveMark);
            if (verdict != MR_MATE) {
                m_deciding.m_nPromotion |= static_cast<std::uint8_t>(marks & kMoveMark); // it is not to be deferred
                return verdict;
            }
            m_list[m_kept] = move;
            m_list[m_kept].m_nPromotion |= marks;
            SetScore(m_list[m_kept], Score(*child, move));
            if (child->m_whiteChecker != kNoChecker)
                m_list[m_kept].m_nPromotion |= kCheckMark;
            ++m_kept;
        }
        return MR_MATE;
    }

    /// The heuristics' word on a reply, in the pass with heuristics.
    TMateResult VerifyReply(TChessboard& child, TMove& move) {
        if (m_p.m_byPass != 1)
            return MR_MATE;
        const int doubt = VerifyBlackMove(child, move);
        if (doubt == 0)
            return MR_MATE;
        const auto verdict = static_cast<TMateResult>(-doubt);
        if (verdict == MR_REPETITION)
            RaiseRepetitionMark(m_p, m_p.m_nMoves, RepetitionMark(m_p, m_p.m_nMoves - 1));
        return verdict;
    }

    [[nodiscard]] int Score(const TChessboard& child, const TMove& move) const {
        TScore score;
        const TFigure captured = m_p.m_board[move.m_nTo];
        score.m_nMajor -= CaptureValue(captured);
        if (PromotionKind(move) == kQueen)
            score.m_nMajor -= 6;
        score.m_nMinor -= RefutingWorth(m_p, move);
        if (child.m_whiteChecker != kNoChecker)
            score.m_nMajor -= CheckWorth();
        if (m_effort == EEffort::None)
            return score.Value(0);
        // Room for the king is what a mating net lacks.
        score.m_nMajor -= 2 * CountBlackKingFreeSquares(child);
        if (m_p.m_board[move.m_nFrom] == kBlackKing)
            score.m_nMinor -= 2 * BlackRing(child);
        if (HasMateInOne(child))
            score.m_nMajor += 12;
        return score.Value(0);
    }

    /// A check leaves White few moves; in long lines Black's counter-chances weigh more.
    [[nodiscard]] int CheckWorth() const {
        if (m_effort == EEffort::None)
            return 4;
        return m_p.m_nMoves >= kSpecialDefencePlies ? 12 : 8;
    }

    /// Step 5: a defence that does not even stop a mate in two need not be tried early.
    void PutOffMatesInTwo() {
        for (int i = 0; i < m_kept; ++i) {
            TMove move = m_list[i];
            TChessboard* const child = CopyToChild(&m_p);
            if (MakeBlackMove(*child, move, true) != kIllegalMove && HasMateInTwo(*child))
                SetScore(m_list[i], std::min(ScoreOf(m_list[i]) + kMateInTwoPenalty, kScoreMostComputed));
        }
    }

    void PutChecksFirst() {
        int front = 0;
        for (int i = 0; i < m_kept; ++i)
            if ((m_list[i].m_nPromotion & kCheckMark) != 0) {
                std::rotate(m_list + front, m_list + i, m_list + i + 1);
                ++front;
            }
    }

    void TakeMarksOff() {
        for (int i = 0; i < m_kept; ++i)
            m_list[i].m_nPromotion &= static_cast<std::uint8_t>(~kCheckMark);
    }

    TChessboard& m_p;
    TSearchContext& m_context;
    TMove* m_list;
    int m_count;
    int m_kept = 0;
    EEffort m_effort;
    bool m_bAsk;
    bool m_bKeepMated;
    TMove m_deciding{};
    bool m_bAnyMated = false;
};

} // namespace

TBlackSort SortBlackMoves(TChessboard& p, int nMoves, TMove* list, bool bKeepMated) {
    const CSortMark mark(p.m_pContext->m_nSortNesting);
    return CBlackSort(p, nMoves, list, bKeepMated).Run();
}

} // namespace quillon
