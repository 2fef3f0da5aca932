#include "heuristics/verify_heuristics.h"

#include <bit>

#include "core/search_context.h"
#include "heuristics/search_hooks.h"
#include "heuristics/verified_move.h"
#include "heuristics/verify_black_figures.h"
#include "heuristics/verify_edge.h"
#include "heuristics/verify_kings.h"
#include "heuristics/verify_lines.h"
#include "heuristics/verify_material.h"
#include "heuristics/verify_room.h"

namespace quillon {

namespace {

struct TRule {
    std::uint32_t m_nBits; // in force with any of these
    ERuling (*m_pDoubts)(CVerifiedMove&);
};

/// In the order in which they are asked.
constexpr TRule kRules[] = {
    {SH_3MOVESTOMATE, DoubtsMateInThree},
    {SH_SAVEQUEENROOK, DoubtsLostHeavyFigure},
    {SH_DONTLETFIGUREUNBLOCK, DoubtsUnblockedFigure},
    {SH_DONTLETPROMOTEDQUEENMOVE, DoubtsPromotedQueenMove},
    {SH_DONTLETPROMOTEDFIGUREMOVE, DoubtsPromotedFigureMove},
    {SH_KEYLINE, DoubtsMoveAlongKeyLine},
    {SH_KEYDIAGONAL, DoubtsMoveAlongKeyDiagonal},
    {SH_DONTLETBLACKQUEENCHECKTWICE, DoubtsSecondQueenCheck},
    {SH_DONTLOSEANYFIGURES, DoubtsLostFigure},
    {SH_AREKINGSNEAR, DoubtsDistantKings},
    {SH_KEEPKINGNEARCORNER, DoubtsKingFarFromCorner},
    {SH_KEEPKINGONTHEEDGE, DoubtsKingOffEdge},
    {SH_KEEPKINGWITHINEXTEDGE, DoubtsKingOffExtendedEdge},
    {SH_ASSERTBLACKKINGSURROUNDED, DoubtsUnsurroundedKing},
    {SH_CAPTUREKNIGHT, DoubtsLivingKnight},
    {SH_KEYWHITEFIGURE, DoubtsLostKeyFigure},
    {SH_REDUCTIONTOGLOBREGPOS | SH_ZUGZWANGTRIANGLES, DoubtsReducedMaterial},
    {SH_DONTLEAVEMAINDIAGONAL, DoubtsOpenedMainDiagonal},
    {SH_SEASNAKE, DoubtsSeaSnakeQueen},
    {SH_SWEEPINGWHITEROOK, DoubtsPromotedBishopsColour},
    {SH_ONECOLORPLAYPOSSIBLE, DoubtsPlayOnOneColour},
};

/// While it lives the thread is inside a check.
class CVerifyDepth {
  public:
    explicit CVerifyDepth(std::int8_t& depth) : m_depth(depth) { ++m_depth; }
    ~CVerifyDepth() { --m_depth; }
    CVerifyDepth(const CVerifyDepth&) = delete;
    CVerifyDepth& operator=(const CVerifyDepth&) = delete;

  private:
    std::int8_t& m_depth;
};

constexpr int AnswerOf(ERuling ruling) { return ruling == ERuling::Doubtful ? kDoubtful : kUndecided; }

/// Tells the cause of a doubt; the answer of the rule that had something to say.
int Conclude(CVerifiedMove& move, ERuling ruling, std::uint32_t cause) {
    if (ruling == ERuling::Doubtful)
        move.Context().m_lastDoubtCause = cause;
    return AnswerOf(ruling);
}

/// The rules of the bits. A rule may take a bit off the mask, so it is read anew.
int AskRules(CVerifiedMove& move) {
    for (const TRule& rule : kRules) {
        const std::uint32_t bits = move.After().m_nHeuristics & rule.m_nBits;
        if (bits == 0)
            continue;
        if (const ERuling ruling = rule.m_pDoubts(move); ruling != ERuling::NotDoubtful)
            return Conclude(move, ruling, std::bit_floor(bits));
    }
    return kNotDoubtful;
}

} // namespace

int VerifyHeuristics(TChessboard& board, TMove* deferMove) {
    const CVerifyDepth depth(board.m_pContext->m_nVerifyDepth);
    CVerifiedMove move(board, deferMove);
    if (board.m_nHeuristics != 0 && board.m_nMoves != 0)
        if (const int answer = AskRules(move); answer != kNotDoubtful)
            return answer;
    // The last rule needs no heuristic.
    const ERuling ruling = DoubtsLoneRook(move);
    return ruling == ERuling::NotDoubtful ? kNotDoubtful : Conclude(move, ruling, kLoneRookDoubt);
}

// Without heuristics the search has to prove. The sort does not come here in the pass without them, and an empty mask
// says the same of a line: a doubt of the last rule, which needs no heuristic, would keep both from their verdict.
int VerifyBlackMove(TChessboard& child, TMove& move) {
    if (child.m_nHeuristics == 0)
        return kNotDoubtful;
    return VerifyHeuristics(child, &move) == kDoubtful ? kDoubtful : kNotDoubtful;
}

} // namespace quillon
