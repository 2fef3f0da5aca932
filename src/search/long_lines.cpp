#include "search/long_lines.h"

#include <algorithm>
#include <utility>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/mask_attacks.h"
#include "core/search_context.h"
#include "search/control.h"
#include "search/quicker_horizon.h"
#include "search/quicker_mate.h"

namespace quillon {

namespace {

constexpr int kFewReplies = 2;            // more than that, and a move forces nothing
constexpr int kMostForcingMoves = 6;      // tested in one position
constexpr int kMostTests = 60;            // of replies in one attempt
constexpr int kMostForcingDepth = 8;      // forcing moves in a row
constexpr std::uint16_t kLineHorizon = 5; // plies of a test behind a reply

constexpr int kShortestPlies = 3; // a move and a reply, and one ply to mate

constexpr int kShortestPromotionPlies = 23;
constexpr int kShortestForcingPlies = 18;
constexpr int kShortestQueenHuntPlies = 22;

/// While it lives, an attempt runs: nested searches look less deep, make no attempts, and get no allowance.
class CAttempt {
  public:
    explicit CAttempt(TSearchContext& context) : m_context(context) {
        context.m_nLineHorizon = kLineHorizon;
        context.m_nAdditionalMoves = context.m_nQuickerSpare = 0;
        context.m_bAdditionalMovesUsed = false;
    }
    ~CAttempt() { m_context.m_nLineHorizon = 0; }
    CAttempt(const CAttempt&) = delete;
    CAttempt& operator=(const CAttempt&) = delete;

  private:
    TSearchContext& m_context;
};

/// What a reply must not do for its line to stay forced.
enum class ERule { Any, StayInRing, KeepFlight };

/// Does the reply break the rule that its line is tested by?
bool IsAllowed(const TChessboard& child, const TChessboard& reply, ERule rule) {
    switch (rule) {
    case ERule::StayInRing:
        return BlackRing(reply) <= BlackRing(*child.m_pPrevious);
    case ERule::KeepFlight:
        return HasBlackKingFlight(reply, reply.m_blackKingFile, reply.m_blackKingRank);
    default:
        return true;
    }
}

int Figures(const TChessboard& b) { return WhiteMen(b) - b.m_whitePawns; }

/// Every square beside the black king holds one of its own men.
bool IsSmothered(const TChessboard& b) {
    return (KingAttacks(BlackKingSquare(b)) & ~BlackFigures(b.m_board.data())) == 0;
}

/// The forcing moves of a position, the most forcing first.
class CForcingMoves {
  public:
    explicit CForcingMoves(TChessboard& p) {
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(p, list);
        const bool bHuntQueen = p.m_nMoves >= kShortestQueenHuntPlies && p.m_blackQueens == 1;
        for (int i = 0; i < count; ++i) {
            const int rank = RankOfMove(p, list[i], bHuntQueen);
            if (rank != kQuiet && m_count < kMaxMoves)
                m_moves[m_count++] = {list[i].m_nFrom, list[i].m_nTo, list[i].m_nPromotion,
                                      static_cast<std::uint8_t>(rank)};
        }
        std::stable_sort(m_moves, m_moves + m_count,
                         [](const TMove& a, const TMove& b) { return a.m_nEnPassant < b.m_nEnPassant; });
    }

    [[nodiscard]] int Count() const { return std::min(m_count, kMostForcingMoves); }
    [[nodiscard]] TMove operator[](int i) const { return m_moves[i]; }

  private:
    enum : int { kWinsQueen, kChecks, kAttacksQueen, kQuiet };

    static int RankOfMove(TChessboard& p, TMove move, bool bHuntQueen) {
        const bool bWinsQueen = p.m_board[move.m_nTo] == kBlackQueen && p.m_blackQueens == 1;
        TChessboard* const child = CopyToChild(&p);
        if (MakeWhiteMove(*child, move) == 0)
            return kQuiet;
        if (bWinsQueen)
            return kWinsQueen;
        if (child->m_blackChecker != kNoChecker)
            return kChecks;
        return bHuntQueen && AttacksQueen(*child) ? kAttacksQueen : kQuiet;
    }

    static bool AttacksQueen(const TChessboard& child) {
        const auto queen = std::find(child.m_board.begin(), child.m_board.end(), kBlackQueen) - child.m_board.begin();
        return queen < kSquares &&
               IsAttackedByWhite(child, FileOf(static_cast<int>(queen)), RankOf(static_cast<int>(queen)));
    }

    TMove m_moves[kMaxMoves];
    int m_count = 0;
};

/// The attempts of one position. They share a number of tests, so that a fruitless one stays cheap.
class CLineSearch {
  public:
    explicit CLineSearch(TChessboard& p) : m_p(p) {}

    bool Run() { return FindPromotionLine() || FindSmotheringLine() || FindForcingLine(); }

  private:
    /// Few figures and a pawn about to promote: each promotion is tested.
    bool FindPromotionLine() {
        if (m_p.m_nMoves < kShortestPromotionPlies || Figures(m_p) > 2 || WhiteMen(m_p) + BlackMen(m_p) + 2 <= 7 ||
            !HasPawnOnSeventh(m_p))
            return false;
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(m_p, list);
        return std::any_of(list, list + count, [&](const TMove& move) {
            return PromotionKind(move) != 0 && ProvesMate(m_p, move, ERule::Any, 0);
        });
    }

    /// A king shut in by its own men: moves after which it stays so.
    bool FindSmotheringLine() {
        if (!IsSmothered(m_p))
            return false;
        TMove list[kMaxMoves];
        const int count = GenerateWhiteMoves(m_p, list);
        return std::any_of(list, list + count,
                           [&](const TMove& move) { return ProvesMate(m_p, move, ERule::StayInRing, 0); });
    }

    bool FindForcingLine() { return m_p.m_nMoves >= kShortestForcingPlies && Forces(m_p, kMostForcingDepth); }

    /// Does one of the forcing moves of `b` mate, by further ones if need be?
    bool Forces(TChessboard& b, int nDepth) {
        const CForcingMoves moves(b);
        for (int i = 0; i < moves.Count() && m_nTestsLeft > 0; ++i)
            if (ProvesMate(b, moves[i], ERule::KeepFlight, nDepth))
                return true;
        return false;
    }

    /// Is the move answered only by few replies, and does White mate behind each?
    bool ProvesMate(TChessboard& b, TMove move, ERule rule, int nDepth) {
        TChessboard& child = *CopyToChild(&b);
        if (MakeWhiteMove(child, move) == 0)
            return false;
        TMove replies[kMaxMoves];
        const int count = GenerateBlackMoves(child, replies);
        const int legal = CountReplies(child, replies, count, rule);
        if (legal == 0)
            return child.m_blackChecker != kNoChecker; // mate, or stalemate
        if (legal > kFewReplies)
            return false;
        for (int i = 0; i < count; ++i)
            if (Make(child, replies[i]) != kIllegalMove && !IsMated(*ChildSlot(child), nDepth))
                return false;
        return !IsStopping(b);
    }

    bool IsMated(TChessboard& reply, int nDepth) {
        if (--m_nTestsLeft < 0)
            return false;
        return FindQuickerMate(&reply) || (nDepth > 0 && reply.m_nMoves >= kShortestPlies && Forces(reply, nDepth - 1));
    }

    /// Legal replies; more than kFewReplies are not counted further. One that escapes or breaks the rule counts as
    /// many.
    static int CountReplies(TChessboard& child, const TMove* replies, int count, ERule rule) {
        int legal = 0;
        for (int i = 0; i < count && legal <= kFewReplies; ++i) {
            const int made = Make(child, replies[i]);
            if (made == kCertainEscape || (made != kIllegalMove && !IsAllowed(child, *ChildSlot(child), rule)))
                return kFewReplies + 1;
            legal += made != kIllegalMove ? 1 : 0;
        }
        return legal;
    }

    static int Make(TChessboard& child, TMove move) { return MakeBlackMove(*CopyToChild(&child), move, false); }

    TChessboard& m_p;
    int m_nTestsLeft = kMostTests;
};

} // namespace

bool FindLongLine(TChessboard& p) {
    TSearchContext& context = *p.m_pContext;
    // With a bishop off the board Black may pass, which no list of replies tells.
    if (context.m_nLineHorizon != 0 || p.m_nMoves < kShortestPlies || IsBishopRemoved(p))
        return false;
    const CAttempt attempt(context);
    return CLineSearch(p).Run();
}

} // namespace quillon
