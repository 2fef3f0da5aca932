// The OR node: one white move that mates is enough.
//
//   1 precalculated data     4 edge short cut      7 moves: by m lazily, or all and a sort    9 try each move (below)
//   2 register               5 progress hook       8 threads of the multithreading levels    10 next stage, verdict
//   3 count; mate in one     6 bishop mode
//
// A move, step 9 (with three plies left it is looked at on masks between b and c):
//   a control               c copy, make       e heuristic checks     g recursion
//   b receding white king   d repetition       f publish the index    h mate: store, return     i other answers

#include <algorithm>
#include <cassert>
#include <optional>
#include <utility>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/queries.h"
#include "heuristics/forced_mate.h"
#include "heuristics/forcing_moves.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/search_hooks.h"
#include "platform/clock.h"
#include "search/analysis.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/hints.h"
#include "search/move_sort.h"
#include "search/node_log.h"
#include "search/precalc_use.h"
#include "search/proof_guide.h"
#include "search/quick_refutation.h"
#include "search/register_use.h"
#include "search/repetition.h"
#include "search/search_hooks.h"

namespace quillon {

namespace {

constexpr int kLongestUntreatedRepetition = 13; // strict cases: with this many plies or fewer repetitions are searched

int PliesPlayed(const TChessboard& b) { return b.m_nInitialMoves - b.m_nMoves; }

/// Lazy nodes with fewer plies try the checks where the figures' turn comes.
constexpr int kChecksFirstPlies = 5;

/// With so many plies left a move is first looked at on masks.
constexpr int kQuicklyRefutedPlies = 3;

/// How a node comes by its moves.
enum class EMoves { Lazy, Whole };

/// Below 9 plies no list is worth sorting; a crowd of queens is.
bool IsLazyLength(const TChessboard& b) { return b.m_nMoves < 9 && !(b.m_nMoves == 7 && b.m_whiteQueens >= 3); }

/// The lengths at which the sort leaves the expensive knowledge out.
bool IsShortLength(const TChessboard& b) {
    const int m = b.m_nMoves;
    const int heavy = b.m_whiteQueens + b.m_whiteRooks + b.m_blackBishops;
    return m < 11 || (m < 13 && (b.m_wKingState & 0x20) == 0 && heavy < 4) ||
           (m == 13 && (b.m_wKingState & kNarrowPlay) != 0);
}

/// With cheap-sort heuristics in force a short node is sorted (simply) only if White has much to choose from.
bool IsSimpleSortWorthwhile(const TChessboard& b) {
    const int near = KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) < 4 ? 1 : 0;
    return b.m_nMoves > 8 && b.m_whiteQueens + b.m_whiteRooks + b.m_whiteBishops + b.m_whiteKnights + near > 3;
}

/// The moves of a white node, stage by stage.
class CWhiteMoves {
  public:
    explicit CWhiteMoves(TChessboard& b) : m_b(b), m_bChecksDue(b.m_nMoves >= kChecksFirstPlies) {}

    /// A move of the guide (proof_guide.h): the only one of a stage before all others.
    bool TakeGuidesMove() {
        const CProofGuide* const guide = m_b.m_pAnalysis->m_pGuide;
        m_bGuided = guide != nullptr && guide->IsProved() && m_b.m_pContext->m_nQuickerLevel == 0 &&
                    m_b.m_pContext->m_byResumeList == 0 && guide->Suggest(m_b, m_guided);
        if (!m_bGuided)
            return false;
        m_list[0] = m_guided;
        m_nCount = 1;
        return true;
    }

    /// Step 7.
    ///   bForcing  the node is one of a FindForcedMate run, and on the forcing moves.
    void Choose(bool bForcing) {
        m_bForcing = bForcing;
        if (m_b.m_pContext->m_byResumeList != 0)
            TakeResumeList();
        else if (bForcing)
            TakeForcingMoves();
        else if ((m_b.m_nHeuristics & kGeneratingHeuristics) == 0 || !TakeHeuristicMoves())
            ChooseByLength();
        if (m_mode == EMoves::Whole)
            DropGuidesMove();
    }

    bool Next() {
        if (m_mode == EMoves::Whole)
            return std::exchange(m_bWholeListDue, false);
        if (std::exchange(m_bHintsDue, false) && TakeHints())
            return true;
        if (std::exchange(m_bChecksDue, false) && TakeChecks())
            return true;
        m_nCount = GenerateNextWhiteFigure(m_b, m_nNextSquare, m_list);
        if (m_nCount == 0)
            return false;
        m_nCount = m_hints.DropFrom(m_list, m_nCount);
        DropChecks();
        DropGuidesMove();
        return true;
    }

    /// The same list once more, after the node's heuristics have changed.
    void Repeat() {
        m_bWholeListDue = true;
        m_nNextSquare = 0;
        m_hints = {};
        m_nChecks = 0;
    }

    TMove m_list[kMaxMoves];
    int m_nCount = 0;
    bool m_bForcing = false;
    bool m_bLeftOut = false;   // a generator of a heuristic left moves out
    bool m_bMateFound = false; // the sort established a mate
    bool m_bRetry = false;     // the sort found watched figures unblocked
    std::uint8_t m_byResumed = 0;
    int m_nBest = 0; // so many at the head of the list were sorted among the best

  private:
    void TakeResumeList() {
        TSearchContext& context = *m_b.m_pContext;
        m_byResumed = std::exchange(context.m_byResumeList, std::uint8_t{0});
        m_nCount = context.m_nResumeCount;
        std::copy_n(context.m_pResumeList, m_nCount, m_list);
        m_mode = EMoves::Whole;
    }

    /// The replies to a check are all there; of other moves those left out could mate as well.
    void TakeForcingMoves() {
        m_nCount = GenerateForcingMoves(m_b, m_list);
        OrderWholeList();
        if (m_b.m_whiteChecker == kNoChecker)
            m_bLeftOut = true;
    }

    bool TakeHeuristicMoves() {
        const THeuristicMoves moves = GenerateByHeuristics(m_b, m_list);
        m_bLeftOut = moves.m_bDoubtful;
        if (moves.m_nCount < 0)
            return false;
        m_nCount = moves.m_nCount;
        OrderWholeList();
        return true;
    }

    /// A list that is no longer all moves, sorted as all moves of this length would be.
    void OrderWholeList() {
        m_mode = EMoves::Whole;
        if (IsLazyLength(m_b) || (m_b.m_nHeuristics & SH_USEBLOCKBLACKPAWNSLEVEL) != 0)
            PutHintsFirst(m_b, m_nCount, m_list);
        else
            Take(SortWhiteMoves(m_b, m_nCount, m_list, IsShortLength(m_b)));
    }

    void ChooseByLength() {
        const bool bInCheck = m_b.m_whiteChecker != kNoChecker;
        if (IsLazyLength(m_b)) {
            m_mode = bInCheck ? EMoves::Whole : EMoves::Lazy;
            if (bInCheck)
                GenerateAllWithHints();
            return;
        }
        const bool bShort = IsShortLength(m_b) || m_b.m_nMoves == 7;
        if ((m_b.m_nHeuristics & SH_USEBLOCKBLACKPAWNSLEVEL) != 0) {
            GenerateAllWithHints(); // used as generated
        } else if (!bShort || (m_b.m_nHeuristics & kCheapSortHeuristics) == 0) {
            GenerateAll();
            Take(SortWhiteMoves(m_b, m_nCount, m_list, bShort));
        } else if (IsSimpleSortWorthwhile(m_b)) {
            GenerateAll();
            Take(SortWhiteMovesSimple(m_b, m_nCount, m_list));
        } else if (bInCheck) {
            GenerateAllWithHints();
        } else {
            m_mode = EMoves::Lazy;
        }
    }

    void GenerateAll() {
        m_mode = EMoves::Whole;
        m_nCount = GenerateWhiteMoves(m_b, m_list);
    }

    void GenerateAllWithHints() {
        GenerateAll();
        PutHintsFirst(m_b, m_nCount, m_list);
    }

    bool TakeHints() {
        m_hints = CHints(m_b);
        m_nCount = m_hints.Count();
        std::copy_n(m_hints.Moves(), m_nCount, m_list);
        DropGuidesMove();
        return m_nCount != 0;
    }

    /// Checks come before the figures in turn: a mate is mostly found through one.
    bool TakeChecks() {
        m_nChecks = m_hints.DropFrom(m_checks, GenerateWhiteChecks(m_b, m_checks));
        m_nCount = m_nChecks;
        std::copy_n(m_checks, m_nChecks, m_list);
        DropGuidesMove();
        return m_nCount != 0;
    }

    void DropChecks() {
        TMove* const end = std::remove_if(m_list, m_list + m_nCount, [&](const TMove& move) {
            return std::any_of(m_checks, m_checks + m_nChecks,
                               [&](const TMove& check) { return SameMove(check, move); });
        });
        m_nCount = static_cast<int>(end - m_list);
    }

    /// It has been tried.
    void DropGuidesMove() {
        if (!m_bGuided)
            return;
        TMove* const end =
            std::remove_if(m_list, m_list + m_nCount, [&](const TMove& move) { return SameMove(move, m_guided); });
        m_nCount = static_cast<int>(end - m_list);
    }

    void Take(const TWhiteSort& sort) {
        m_nCount = sort.m_nMoves;
        m_nBest = sort.m_nBest;
        m_bMateFound = sort.m_bMateFound;
        m_bRetry = sort.m_bRetry;
        m_bLeftOut = m_bLeftOut || sort.m_bLeftOut;
    }

    TChessboard& m_b;
    EMoves m_mode = EMoves::Lazy;
    bool m_bHintsDue = true, m_bWholeListDue = true;
    int m_nNextSquare = 0;
    CHints m_hints; // those that were tried
    bool m_bGuided = false;
    TMove m_guided; // of the guide, if it knew one
    bool m_bChecksDue;
    int m_nChecks = 0;
    TMove m_checks[kMaxMoves]; // those that were tried
};

/// One white node: its moves, and what they have come to.
template <TNodeKind kKind> class CWhiteNode {
  public:
    explicit CWhiteNode(TChessboard* p)
        : m_p(p), m_context(*p->m_pContext), m_m(p->m_nMoves), m_bFirstPass(p->m_byPass == 1),
          m_bTreatsRepetition(!IsStrict(*p) || m_m > kLongestUntreatedRepetition), m_moves(*p) {}

    TMateResult Run() {
        if (m_moves.TakeGuidesMove()) {
            m_bOnGuidesMove = true;
            if (TryStage())
                return m_result;
            m_bOnGuidesMove = false;
        }
        ChooseMoves();
        if (m_moves.m_bMateFound) {
            Store(MR_MATE);
            return MR_MATE;
        }
        if (m_moves.m_bForcing && m_moves.m_bLeftOut && m_moves.m_nCount == 0 && !IsStopping(*m_p)) {
            Store(MR_DOUBTFUL);
            return Logged(MR_FFM_END);
        }
        TMateResult result = TryMoves();
        if (m_moves.m_bRetry && (m_p->m_nHeuristics & SH_DONTLETFIGUREUNBLOCK) != 0 && result != MR_MATE) {
            m_p->m_nHeuristics &= ~SH_DONTLETFIGUREUNBLOCK;
            m_p->m_nHeurParams = ComputeHeurParams(*m_p);
            m_nDoubtful = m_nDoubtfulBefore;
            m_nRepetitions = m_nRepetitionsBefore;
            m_moves.Repeat();
            result = TryMoves();
        }
        return result;
    }

  private:
    /// What was left out counts as one doubtful move; so may the guide's move already.
    void ChooseMoves() {
        m_moves.Choose(kKind.m_bForced && !TakesAllMoves(*m_p));
        if (m_moves.m_bLeftOut || IsBishopRemoved(*m_p))
            ++m_nDoubtful;
        m_nDoubtfulBefore = m_nDoubtful;
        m_nRepetitionsBefore = m_nRepetitions;
        // With an allowance the register may know a longer mate behind the reply that refutes.
        if (m_m == kQuicklyRefutedPlies && !m_moves.m_bForcing && m_context.m_nAdditionalMoves == 0)
            m_quickRefutation.emplace(*m_p);
    }

    TMateResult TryMoves() {
        while (m_moves.Next()) {
            if (IsThreadedLevel()) { // 8
                const int result = FindMateMultithreadingLevel(*m_p, m_moves.m_nCount, m_moves.m_list, &NodeOnItsOwn);
                if (result != kContinueHere) {
                    if (TakeOver(result))
                        return m_result;
                    continue;
                }
            }
            if (IsScheduled()) {
                const int result =
                    FindMateScheduled(*m_p, m_moves.m_nCount, m_moves.m_list, m_moves.m_nBest, &NodeOnItsOwn);
                if (result != kContinueHere) {
                    if (TakeOver(result))
                        return m_result;
                    continue;
                }
            }
            if (TryStage())
                return m_result;
        }
        return Conclude();
    }

    /// Step 9 for the moves of one stage: true if they have ended the node with m_result.
    bool TryStage() {
        Publish();
        for (int i = 0;; ++i) {
            if (IsControlPending(*m_p) && (Rearrange(i), PauseOrStop(*m_p))) // 9a
                return End(MR_NOMATE);
            if (i >= m_moves.m_nCount)
                break;
            if (TryMove(i))
                return End(MR_MATE);
            if (m_bStopped)
                return End(MR_REPETITION);
        }
        return false;
    }

    /// What a manual command leaves out may be what mates.
    void Rearrange(int& i) {
        int skipped = 0;
        if (i > 0 && ObeyManualCommand(*m_p, m_moves.m_list, m_moves.m_nCount, i, skipped))
            m_nDoubtful += skipped;
    }

    bool End(TMateResult result) {
        m_result = result;
        return true;
    }

    /// The root has threads of its own. A list that was handed in is a thread's share already; a bounded look counts
    /// the positions of one thread.
    [[nodiscard]] bool IsThreadedLevel() const {
        return m_p->m_pAnalysis->m_nMultithreadingLevels > 1 && m_moves.m_nCount >= 2 && PliesPlayed(*m_p) > 0 &&
               PliesPlayed(*m_p) / 2 <= m_p->m_pAnalysis->m_nMultithreadingLevels - 1 &&
               (m_m > 12 || (m_m > 10 && (m_p->m_wKingState & 0x20) != 0)) && m_context.m_nQuickerLevel == 0 &&
               m_moves.m_byResumed == 0 && m_context.m_nPositionsLeft == TSearchContext::kNoBound;
    }

    /// Below the multithreading levels, where time is well spent on a choice between moves.
    [[nodiscard]] bool IsScheduled() const {
        const TAnalysis& analysis = *m_p->m_pAnalysis;
        if (kKind.m_bLog || analysis.m_nSchedulerLevels == 0) [[likely]] // a log is to follow the order of the list
            return false;
        const int level = PliesPlayed(*m_p) / 2 + 1 - analysis.m_nMultithreadingLevels;
        return level >= 1 && (level <= analysis.m_nSchedulerLevels || analysis.m_bCustomScheduler) &&
               m_moves.m_nCount >= 2 && (m_m > 16 || (m_m > 14 && (m_p->m_wKingState & kNarrowPlay) == 0)) &&
               m_moves.m_byResumed == 0 && m_context.m_nQuickerLevel == 0 && !m_context.m_bFFM &&
               m_context.m_nPositionsLeft == TSearchContext::kNoBound &&
               ((m_p->m_nHeuristics & SH_SINGLEQUEENMATE) == 0 || IsStrict(*m_p));
    }

    static TMateResult NodeOnItsOwn(TChessboard* p) { return FindMateWhite<kKind>(p, false); }

    /// What the threads made of the list, as if it had been tried here: true if that ends the node.
    bool TakeOver(int result) {
        assert(result != kContinueHere);
        if (IsStopping(*m_p))
            return End(MR_NOMATE);
        if (result == MR_MATE) {
            Store(MR_MATE);
            return End(Logged(MR_MATE));
        }
        m_nDoubtful += result == MR_DOUBTFUL ? 1 : 0;
        m_nRepetitions += result <= MR_REPETITION ? 1 : 0;
        return false;
    }

    void Publish() {
        m_context.m_moveCount[m_p->m_nMoves].store(static_cast<std::uint8_t>(m_moves.m_nCount),
                                                   std::memory_order_relaxed);
        m_context.m_moveList[m_p->m_nMoves].store(m_moves.m_list, std::memory_order_relaxed);
    }

    void PublishIndex(int i) {
        m_context.m_moveIndex[m_p->m_nMoves].store(static_cast<std::uint8_t>(i), std::memory_order_relaxed);
        m_context.m_moveIndexShown[m_p->m_nMoves].store(static_cast<std::uint8_t>(i), std::memory_order_relaxed);
        m_context.m_moveCount[m_p->m_nMoves - 1u].store(0, std::memory_order_relaxed); // the last sibling's replies
    }

    void Doubt(std::uint32_t cause) {
        m_context.m_lastDoubtCause = cause;
        ++m_nDoubtful;
    }

    /// Steps 9b to 9i: true if the move mates.
    bool TryMove(int i) {
        TMove& move = m_moves.m_list[i];
        if (m_bFirstPass && (m_p->m_nHeuristics & SH_DONTRECEDEBLACKKING) != 0 && RecedesFromBlackKing(*m_p, move)) {
            Doubt(SH_DONTRECEDEBLACKKING); // 9b
            return false;
        }
        if constexpr (!kKind.m_bLog)
            if (m_quickRefutation && IsQuicklyRefuted(move))
                return false;
        TChessboard* const child = CopyToChild(m_p); // 9c
        if (MakeWhiteMove(*child, move) == 0)
            return false;
        if constexpr (kKind.m_bLog)
            m_p->m_pAnalysis->m_pNodeLog->Move(*child);
        if (m_bTreatsRepetition && IsTreatedRepetition(*child)) // 9d
            return false;
        if (m_bFirstPass && IsDoubtful(*child)) // 9e
            return false;
        PublishIndex(i); // 9f
        const TMateResult result = AskBlack(child);
        if (result == MR_MATE) {
            Mated(move, *child);
            return true;
        }
        Judge(result);
        return false;
    }

    bool IsQuicklyRefuted(const TMove& move) {
        switch (m_quickRefutation->Look(move)) {
        case EQuickLook::Refuted:
            CountPosition(m_context, *m_p->m_pAnalysis); // the one behind the reply
            return true;
        case EQuickLook::Illegal:
            return true;
        default:
            return false;
        }
    }

    bool IsTreatedRepetition(const TChessboard& child) {
        bool bTreated = false;
        const int backTo = FindRepetition(child, bTreated);
        if (!bTreated)
            return false;
        ++m_nRepetitions;
        RaiseRepetitionMark(*m_p, m_m, backTo);
        if constexpr (kKind.m_bLog)
            m_p->m_pAnalysis->m_pNodeLog->Verdict(child, MR_REPETITION);
        return true;
    }

    bool IsDoubtful(TChessboard& child) {
        const std::uint32_t cause = FindDoubtAfterWhiteMove(child);
        if (cause == 0)
            return false;
        Doubt(cause);
        if constexpr (kKind.m_bLog)
            m_p->m_pAnalysis->m_pNodeLog->Verdict(child, MR_DOUBTFUL);
        return true;
    }

    /// Step 9g: the recursion, first with the black king kept on the edge where that pattern holds. Behind the guide's
    /// move a mate is known already, which need not keep the pattern: a trial would look for another one, at length.
    TMateResult AskBlack(TChessboard* child) {
        if (m_m > 16 && !m_bOnGuidesMove && PliesPlayed(*m_p) < 10 && IsEdgeTrialWorthwhile(*child)) {
            const TMateResult result = TryOnTheEdge(child);
            RepetitionMark(*child, child->m_nMoves) = 0;
            if (result > 0)
                return result;
        }
        return FindMateBlack<kKind>(child);
    }

    TMateResult TryOnTheEdge(TChessboard* child) {
        const CEdgeTrial trial(*child);
        return FindMateBlack<kKind>(child);
    }

    /// Step 9h.
    void Mated(const TMove& move, const TChessboard& child) {
        if constexpr (kKind.m_bLog)
            m_p->m_pAnalysis->m_pNodeLog->Verdict(child, MR_MATE);
        KeepHint(*m_p, move);
        if ((m_p->m_nHeuristics & SH_ZUGZWANGTRIANGLES) != 0)
            m_context.m_zugzwangMove = move;
        if (m_p->m_pPrevious != nullptr && PromotionKind(m_p->m_lastMove) != 0) {
            m_context.m_bUnderPromotionEqual = move.m_nTo == m_p->m_lastMove.m_nTo;
            if (m_context.m_bUnderPromotionEqual)
                StoreOtherPromotions(*m_p);
        }
        Store(MR_MATE);
    }

    /// Step 9i.
    void Judge(TMateResult result) {
        if (result == MR_DOUBTFUL)
            ++m_nDoubtful;
        if (result > MR_REPETITION)
            return;
        RaiseRepetitionMark(*m_p, m_m, RepetitionMark(*m_p, m_m - 1));
        ++m_nRepetitions;
        if (IsStopping(*m_p)) {
            RepetitionMark(*m_p, m_m) = m_p->m_nInitialMoves;
            m_bStopped = true;
        }
    }

    // Step 10.
    TMateResult Conclude() {
        if (IsStopping(*m_p))
            return MR_NOMATE;
        return IsStrict(*m_p) ? ConcludeStrictly() : ConcludeQuickly();
    }

    void Store(TMateResult verdict) {
        assert(verdict != MR_NOMATE || !m_moves.m_bLeftOut);
        if (m_moves.m_byResumed <= 1)
            StoreVerdict(*m_p, verdict);
    }

    TMateResult Logged(TMateResult result) {
        if constexpr (kKind.m_bLog)
            m_p->m_pAnalysis->m_pNodeLog->Verdict(*m_p, result);
        return result;
    }

    TMateResult ConcludeStrictly() {
        const int mark = RepetitionMark(*m_p, m_m);
        if (m_nDoubtful != 0 && m_p->m_byPass >= 2)
            return Logged(MR_DOUBTFUL); // moves left out by command; a repetition would count as refuted
        if (m_m < mark) {
            RaiseRepetitionMark(*m_p, m_m, RepetitionMark(*m_p, m_m - 1));
            return Logged(MR_REPETITION);
        }
        if (m_nDoubtful == 0 && (mark == 0 || m_p->m_nHeuristics == 0)) {
            Store(MR_NOMATE); // a repetition within the subtree does not depend on the path to it
            if (mark == 0)
                return Logged(MR_NOMATE);
        }
        Logged(MR_DOUBTFUL);
        return m_nDoubtful != 0 || m_p->m_nHeuristics != 0 ? MR_DOUBTFUL : MR_NOMATE;
    }

    TMateResult ConcludeQuickly() {
        TMateResult result = MR_NOMATE;
        if (m_nRepetitions != 0) {
            ++m_nDoubtful;
            RaiseRepetitionMark(*m_p, m_m, RepetitionMark(*m_p, m_m - 1));
            result = MR_REPETITION;
        } else if (m_nDoubtful != 0) {
            result = MR_DOUBTFUL;
        }
        Store(m_nDoubtful == 0 ? MR_NOMATE : MR_DOUBTFUL);
        return Logged(result);
    }

    TChessboard* m_p;
    TSearchContext& m_context;
    int m_m;
    bool m_bFirstPass;
    bool m_bTreatsRepetition;
    bool m_bStopped = false;
    bool m_bOnGuidesMove = false; // the stage is that of the guide's move
    int m_nDoubtful = 0;
    int m_nDoubtfulBefore = 0, m_nRepetitionsBefore = 0; // the list was tried
    TMateResult m_result = MR_NOMATE;                    // of a stage that has ended the node
    int m_nRepetitions = 0;
    CWhiteMoves m_moves;
    std::optional<CQuickRefutation> m_quickRefutation; // with three plies left
};

/// Step 5.
void ShowProgress(const TChessboard& p) {
    TAnalysis& analysis = *p.m_pAnalysis;
    if (analysis.m_pProgressHook != nullptr)
        analysis.m_pProgressHook(p);
    analysis.m_nProgressTicks.store(TickCount64(), std::memory_order_relaxed);
}

/// The node is answered before it takes its list: one that was handed in was meant for it, and does not outlive it.
TMateResult AnsweredAtOnce(const TChessboard& p, TMateResult answer) {
    p.m_pContext->m_byResumeList = 0;
    return answer;
}

bool IsProgressPly(const TChessboard& p) { return (p.m_nMoves & 15) == 9 && (p.m_nMoves == 9 || PliesPlayed(p) > 8); }

} // namespace

template <TNodeKind kKind> TMateResult FindMateWhite(TChessboard* p, bool bUseRegister) {
    const int m = p->m_nMoves;
    const TMateResult exact = AskPrecalcData(*p); // 1
    if (exact != MR_NONE)
        return AnsweredAtOnce(*p, exact);
    if (bUseRegister) { // 2
        const TMateResult known = AskRegister(*p);
        if (known != MR_NONE)
            return AnsweredAtOnce(*p, known);
    }
    if (m < 4) { // 3
        CountPosition(*p->m_pContext, *p->m_pAnalysis);
        if (m == 1)
            return AnsweredAtOnce(*p, FindMateInOne(p) ? MR_MATE : MR_NOMATE);
    }
    if (m > 16 && PliesPlayed(*p) < 10 && !IsEdgeTrialRunning(*p) && BlackRing(*p) == 0) { // 4
        const TMateResult shortCut = ShortCutOnTheEdge(*p);
        if (shortCut > 0)
            return AnsweredAtOnce(*p, shortCut);
    }
    if (IsProgressPly(*p)) // 5
        ShowProgress(*p);
    if (IsBishopRemoved(*p) && p->m_whiteKnights != 0 && IsWonInBishopMode(*p)) // 6
        return AnsweredAtOnce(*p, MR_MATE);
    return CWhiteNode<kKind>(p).Run(); // 7 to 10
}

template TMateResult FindMateWhite<kPlainNode>(TChessboard*, bool);
template TMateResult FindMateWhite<kLoggingNode>(TChessboard*, bool);
template TMateResult FindMateWhite<kForcedNode>(TChessboard*, bool);
template TMateResult FindMateWhite<kLoggingForcedNode>(TChessboard*, bool);

bool HasMateInTwo(const TChessboard& b) {
    const bool bUnderPromotionEqual = b.m_pContext->m_bUnderPromotionEqual; // of the line, not of this look aside
    TChessboard copy = b;
    copy.m_nMoves = 3;
    copy.m_byPass = 2; // the answer has to be a proof, whatever is in force in the line
    copy.m_nHeuristics = copy.m_nHeurParams = 0;
    ++b.m_pContext->m_nQuickerLevel; // its positions are none of the main search, its trials none of their own
    const std::int16_t additional = std::exchange(b.m_pContext->m_nAdditionalMoves, std::int16_t{0}); // two, no more
    const bool bMate = FindMateWhite(&copy, false) == MR_MATE;
    b.m_pContext->m_nAdditionalMoves = additional;
    --b.m_pContext->m_nQuickerLevel;
    b.m_pContext->m_bUnderPromotionEqual = bUnderPromotionEqual;
    return bMate;
}

} // namespace quillon
