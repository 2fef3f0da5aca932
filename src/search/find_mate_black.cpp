// The AND node: every black move has to be answered by mate.
//
//   1 pause, stop              4 moves: lazily by figure below 4 plies, else all, then the sort, which may rule at once
//   2 last move made: mated?   5 single-queen case          6 null move in a bishop mode       7 publish the list
//   3 sorted from 4 plies on   8 try each move (below)      9 next stage of the lazy list     10 mated, or stalemate
//
// A move, step 8:
//   a control          d pattern of the zugzwang triangles   g precalculated data, short-mate search
//   b copy             e opposite bishops                    h recursion
//   c make             f register                            i refuted: end the node     j mated: under-promotions

#include <algorithm>
#include <utility>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/queries.h"
#include "heuristics/forced_mate.h"
#include "heuristics/heuristic_signature.h"
#include "heuristics/search_hooks.h"
#include "search/analysis.h"
#include "search/control.h"
#include "search/find_mate.h"
#include "search/hints.h"
#include "search/move_sort.h"
#include "search/node_log.h"
#include "search/observed_lines.h"
#include "search/precalc_use.h"
#include "search/proof_guide.h"
#include "search/quicker_mate.h"
#include "search/register_use.h"
#include "search/repetition.h"
#include "search/search_hooks.h"

namespace quillon {

namespace {

constexpr int kFirstSortedPly = 4; // nodes with fewer plies take their moves figure by figure

// The register has been asked about a reply before the short-mate search. From here on that search takes so long that
// another thread may have answered meanwhile.
constexpr int kAskedAgainPly = 10;

bool IsInCheck(const TChessboard& b) { return b.m_blackChecker != kNoChecker; }

/// The move by which a sort has ended the node.
template <TNodeKind kKind> void LogDeciding(TChessboard& b, TMove move) {
    if constexpr (kKind.m_bLog) {
        TChessboard* const child = CopyToChild(&b);
        if (MakeBlackMove(*child, move, true) != kIllegalMove)
            b.m_pAnalysis->m_pNodeLog->Move(*child);
    }
}

/// How a black node comes by its moves.
enum class EReplies {
    Lazy,            // the hints, then figure by figure
    HintsThenSorted, // the hints, then the sorted list
    Sorted,          // step 4 as it stands
    Whole,           // the evasions of a short node
};

/// With four plies left a hint refutes nearly always, and a sort that makes every move costs more than to try it.
EReplies RepliesOf(const TChessboard& b) {
    if (b.m_nMoves < kFirstSortedPly)
        return IsInCheck(b) ? EReplies::Whole : EReplies::Lazy;
    const bool bHints = b.m_nMoves == kFirstSortedPly && b.m_nHeuristics == 0 && !IsInCheck(b);
    return bHints ? EReplies::HintsThenSorted : EReplies::Sorted;
}

/// The moves of a black node, stage by stage.
template <TNodeKind kKind> class CBlackMoves {
  public:
    explicit CBlackMoves(TChessboard& b) : m_b(b), m_kind(RepliesOf(b)) {
        m_bHintsDue = m_kind == EReplies::Lazy || m_kind == EReplies::HintsThenSorted;
    }

    /// Step 6.
    void AddNullMove() {
        const TSquare king = BlackKingSquare(m_b);
        m_list[m_nCount++] = {king, king, 0, 0};
    }

    /// The next stage: false when there is none, or when the sort has ended the node (m_nVerdict).
    bool Next() {
        if (std::exchange(m_bHintsDue, false) && TakeHints())
            return true;
        if (m_kind == EReplies::Lazy)
            return NextFigure();
        return std::exchange(m_bWholeListDue, false) && TakeWholeList();
    }

    void AddNullMoveLast() { m_bNullMoveDue = true; }

    /// Step 8j: the promotions behind move i with its source and target need no analysis of their own.
    void DropOtherPromotions(int i) {
        const TMove done = m_list[i];
        TMove* const end = std::remove_if(m_list + i + 1, m_list + m_nCount, [&](const TMove& move) {
            return move.m_nFrom == done.m_nFrom && move.m_nTo == done.m_nTo;
        });
        m_nCount = static_cast<int>(end - m_list);
    }

    TMove m_list[kMaxMoves];
    int m_nCount = 0;
    bool m_bLegal = false;            // the sort has proved every move of the stage legal
    bool m_bAnyMated = false;         // it took out legal moves that are known to be mated
    TMateResult m_nVerdict = MR_MATE; // of the sort; negative: ends the node

  private:
    bool NextFigure() {
        m_nCount = m_hints.DropFrom(m_list, GenerateNextBlackFigure(m_b, m_nNextSquare, m_list));
        if (m_nCount != 0 || m_nNextSquare < kSquares)
            return true;
        return std::exchange(m_bNullMoveDue, false) && (AddNullMove(), true);
    }

    bool TakeWholeList() {
        m_nCount = m_hints.DropFrom(m_list, GenerateBlackMoves(m_b, m_list));
        if (m_kind == EReplies::Whole)
            PutHintsFirst(m_b, m_nCount, m_list);
        else if (!Sort())
            return false;
        if (m_bNullMoveDue)
            AddNullMove();
        return true;
    }

    /// Steps 3 and 4.
    bool Sort() {
        const TBlackSort sort = SortBlackMoves(m_b, m_nCount, m_list, kKind.m_bLog);
        if (sort.m_nVerdict < 0)
            LogDeciding<kKind>(m_b, sort.m_deciding);
        m_nCount = sort.m_nMoves;
        m_bLegal = true;
        m_bAnyMated = sort.m_bAnyMated;
        m_nVerdict = sort.m_nVerdict;
        return m_nVerdict >= 0;
    }

    bool TakeHints() {
        m_hints = CHints(m_b);
        m_nCount = m_hints.Count();
        std::copy_n(m_hints.Moves(), m_nCount, m_list);
        return m_nCount != 0;
    }

    TChessboard& m_b;
    EReplies m_kind;
    bool m_bHintsDue, m_bWholeListDue = true, m_bNullMoveDue = false;
    int m_nNextSquare = 0;
    CHints m_hints; // those that were tried
};

void Publish(const TChessboard& b, const TMove* list, int nCount) {
    TSearchContext& context = *b.m_pContext;
    context.m_moveCount[b.m_nMoves].store(static_cast<std::uint8_t>(nCount), std::memory_order_relaxed);
    context.m_moveList[b.m_nMoves].store(list, std::memory_order_relaxed);
    if (b.m_nMoves >= context.m_nObservedPlies) [[unlikely]]
        ShowObservedLine(b);
}

void PublishIndex(const TChessboard& b, int i) {
    TSearchContext& context = *b.m_pContext;
    context.m_moveIndex[b.m_nMoves].store(static_cast<std::uint8_t>(i), std::memory_order_relaxed);
    context.m_moveIndexShown[b.m_nMoves].store(static_cast<std::uint8_t>(i), std::memory_order_relaxed);
    context.m_moveCount[b.m_nMoves - 1u].store(0, std::memory_order_relaxed); // the last sibling's answers
    if (b.m_nMoves == context.m_nObservedPlies) [[unlikely]]
        ShowLowestObservedIndex(b, i);
}

/// Step 8d.
void CheckZugzwangTriangles(TChessboard& child) {
    if ((child.m_nHeuristics & SH_ZUGZWANGTRIANGLES) == 0 || StillFitsZugzwangTriangles(child))
        return;
    child.m_nHeuristics &= ~SH_ZUGZWANGTRIANGLES;
    child.m_nHeurParams = ComputeHeurParams(child);
}

/// Step 8e: worth a look at only in a long pass with heuristics, with bishops and pawns alone left to Black.
void CheckOppositeBishops(TChessboard& child, int q) {
    if ((child.m_nHeuristics & SH_ONECOLORPLAYPOSSIBLE) == 0)
        return;
    const bool bMaterial = child.m_blackBishops == 1 && child.m_whiteBishops == 1 &&
                           child.m_blackQueens + child.m_blackRooks + child.m_blackKnights == 0 &&
                           child.m_whiteRooks + child.m_whiteQueens == 0;
    if (child.m_byPass == 1 && BishopMode(child) == 0 && child.m_bWhiteListsValid != 0 && child.m_nMoves >= 13 &&
        q != child.m_nInitialMoves - 1 && bMaterial && child.m_whiteChecker == kNoChecker)
        DetectOppositeBishops(child);
}

template <TNodeKind kKind> TMateResult TryBlocked(TChessboard* child) {
    const CDynamicBlocking trial(*child);
    return FindMateWhite<kKind>(child, true);
}

/// Step 8h: the recursion, first with SH_DONTLETFIGUREUNBLOCK added where figures have just become blocked.
template <TNodeKind kKind> TMateResult AskWhite(TChessboard* child, int q) {
    if (q >= 17 && child->m_nInitialMoves - q < 7 && AreFiguresJustBlocked(*child)) {
        const TMateResult result = TryBlocked<kKind>(child);
        RepetitionMark(*child, child->m_nMoves) = 0;
        if (result > 0)
            return result;
    }
    return FindMateWhite<kKind>(child, q >= kAskedAgainPly);
}

/// The guide knows the mate, and knows no shorter one: trials would only come before it.
bool IsGuided(const TChessboard& child) {
    const CProofGuide* const guide = child.m_pAnalysis->m_pGuide;
    TMove move;
    return guide != nullptr && guide->IsProved() && child.m_pContext->m_nQuickerLevel == 0 &&
           guide->Suggest(child, move);
}

/// Steps 8d to 8h: what White makes of this reply.
template <TNodeKind kKind> TMateResult AnswerReply(TChessboard* child, int q) {
    CheckZugzwangTriangles(*child);
    CheckOppositeBishops(*child, q);
    const TMateResult known = AskRegisterAboutReply(*child, q);
    if (known != MR_NONE) {
        if constexpr (kKind.m_bLog)
            if (known == MR_MATE)
                child->m_pAnalysis->m_pNodeLog->Remark(*child, "Mate found (pos.in temp.reg.)");
        return known;
    }
    const TMateResult exact = AskPrecalcData(*child);
    if (exact != MR_NONE)
        return exact;
    if ((child->m_nHeuristics & SH_ZUGZWANGTRIANGLES) == 0 && !IsGuided(*child) && FindQuickerMate(child)) {
        if constexpr (kKind.m_bLog)
            if (child->m_pContext->m_bAdditionalMovesUsed)
                child->m_pAnalysis->m_pNodeLog->Remark(
                    *child, "QuickerMate with AdditionalMoves found (with glob.reg./Nalimov lookup)");
        return MR_MATE;
    }
    return AskWhite<kKind>(child, q);
}

/// Step 8i for an answer that depends on the path: it is passed on if the repetition went back beyond this node; else
/// the repetition lies within this subtree, and White has not mated there.
TMateResult JudgeRepetition(TChessboard& b, int nBackTo, TMateResult result) {
    if (nBackTo > b.m_nMoves) {
        RepetitionMark(b, b.m_nMoves) = static_cast<std::uint16_t>(nBackTo);
        return result;
    }
    return b.m_byPass == 1 ? MR_DOUBTFUL : MR_NOMATE;
}

/// Step 8i.
TMateResult JudgeReply(TChessboard& b, TMateResult result) {
    return result <= MR_REPETITION ? JudgeRepetition(b, RepetitionMark(b, b.m_nMoves - 1), result) : result;
}

/// Step 4's verdicts of the sort; a repetition that the sort found stands in this node's own mark.
TMateResult JudgeSort(TChessboard& b, TMateResult result) {
    if (result == MR_NONE)
        return MR_NOMATE;
    if (result <= MR_REPETITION && RepetitionMark(b, b.m_nMoves) <= b.m_nMoves)
        return MR_DOUBTFUL;
    return result;
}

template <TNodeKind kKind> TMateResult Logged(TChessboard& b, TMateResult result) {
    if constexpr (kKind.m_bLog)
        b.m_pAnalysis->m_pNodeLog->Verdict(b, result);
    return result;
}

} // namespace

template <TNodeKind kKind> TMateResult FindMateBlack(TChessboard* p) {
    if (IsControlPending(*p) && PauseOrStop(*p)) // 1
        return MR_NOMATE;
    if constexpr (kKind.m_bForced)
        ReleaseHeldBackHeuristics(*p);
    const int q = p->m_nMoves;
    if (q == 0) // 2
        return IsInCheck(*p) && !HasBlackEvasion(*p) ? MR_MATE : MR_NOMATE;

    CBlackMoves<kKind> moves(*p);    // 3, 4
    if (q == p->m_nInitialMoves - 1) // 5
        NoteSingleQueenTarget(*p);
    if (IsBishopRemoved(*p) && !IsInCheck(*p)) // 6
        moves.AddNullMoveLast();

    bool bAnyLegal = false, bPassed = false, bSkipped = false;
    while (moves.Next()) {                         // 9
        Publish(*p, moves.m_list, moves.m_nCount); // 7
        for (int i = 0; i < moves.m_nCount; ++i) { // 8
            if (IsControlPending(*p) && PauseOrStop(*p))
                return MR_NOMATE;
            TMove& move = moves.m_list[i];
            TChessboard* const child = CopyToChild(p);
            const int made = MakeBlackMove(*child, move, moves.m_bLegal);
            if (made == kIllegalMove)
                continue;
            bPassed = bPassed || IsNullMove(move);
            bAnyLegal = bAnyLegal || !IsNullMove(move);
            PublishIndex(*p, i);
            if constexpr (kKind.m_bLog)
                p->m_pAnalysis->m_pNodeLog->Move(*child);
            const TMateResult answer = made == kCertainEscape ? MR_NOMATE : AnswerReply<kKind>(child, q);
            if (answer != MR_MATE) {
                int next = i + 1, skipped = 0;
                if (IsControlPending(*p) && ObeyManualCommand(*p, moves.m_list, moves.m_nCount, next, skipped)) {
                    Publish(*p, moves.m_list, moves.m_nCount);
                    bSkipped = bSkipped || skipped > 0;
                    i = next - 1;
                    continue;
                }
                KeepHint(*p, move);
                if (q >= kFirstSortedPly)
                    KeepRefutation(*p, moves.m_list, i);
                return Logged<kKind>(*child, JudgeReply(*p, answer));
            }
            if (PromotionKind(move) != 0 && std::exchange(p->m_pContext->m_bUnderPromotionEqual, false)) {
                moves.DropOtherPromotions(i); // 8j
                Publish(*p, moves.m_list, moves.m_nCount);
            }
        }
    }
    if (moves.m_nVerdict < 0)
        return Logged<kKind>(*ChildSlot(*p), JudgeSort(*p, moves.m_nVerdict)); // of the move it has decided by
    if (bSkipped) // by a manual command: what was left out may refute
        return Logged<kKind>(*p, MR_DOUBTFUL);
    if (bPassed) // a pass is a move of the bishop that is off the board; where it may be stuck, Black may be stalemated
        return CanBlackMoveWhereverBishopIs(*p) ? MR_MATE : MR_NOMATE;
    return bAnyLegal || moves.m_bAnyMated || IsInCheck(*p) ? MR_MATE : MR_NOMATE; // 10
}

template TMateResult FindMateBlack<kPlainNode>(TChessboard*);
template TMateResult FindMateBlack<kLoggingNode>(TChessboard*);
template TMateResult FindMateBlack<kForcedNode>(TChessboard*);
template TMateResult FindMateBlack<kLoggingForcedNode>(TChessboard*);

} // namespace quillon
