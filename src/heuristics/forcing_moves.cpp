#include "heuristics/forcing_moves.h"

#include <algorithm>
#include <array>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "heuristics/forced_mate.h"
#include "heuristics/forced_mate_depth.h"
#include "heuristics/look_aside.h"
#include "heuristics/numbered_line.h"

namespace quillon {

namespace {

/// What a depth code counts as forcing, beside the stages that all share.
struct TForcingCode {
    int m_nThreatPlies; // a quiet move threatens mate within so many plies; 0: no quiet move does
    bool m_bWidened;    // a quiet move that shuts the black king in counts as well
};
constexpr TForcingCode kChecksOnly{0, false};
constexpr std::array<TForcingCode, kMaxForcedMateDepth + 1> kForcingCodes{{
    kChecksOnly, // 0
    kChecksOnly,
    kChecksOnly, // 2  "CheckOnly"
    {1, false},  // 3  "#1"
    {1, true},
    {3, false}, // 5  "#2"
    {3, true},
    {5, false}, // 7  "#3"
    {7, false},
    {9, false}, // 9  "#5"
}};
constexpr int kFirstCodeWithCaptures = 5;
constexpr int kRoomToAdvancePawns = 3; // free squares of the black king from which on pawn advances force nothing
constexpr int kShutIn = 1;             // free squares that are left to a king shut in

/// One list under construction.
class CForcingList {
  public:
    CForcingList(TChessboard& b, TMove* list)
        : m_b(b), m_context(*b.m_pContext), m_list(list), m_nFreeSquares(CountBlackKingFreeSquares(b)),
          m_nCode(std::min(m_context.m_nFfmDepth, kMaxForcedMateDepth)) {}

    int Run() {
        if (m_b.m_whiteChecker != kNoChecker)
            AddEvasions(); // no other move stands
        else
            AddForcing();
        return m_nCount;
    }

  private:
    void AddForcing() {
        const TForcingCode& code = kForcingCodes[static_cast<std::size_t>(m_nCode)];
        if (code.m_nThreatPlies == 0)
            AddChecks();
        if (m_nFreeSquares < kRoomToAdvancePawns)
            AddPawnAdvances();
        if (code.m_nThreatPlies != 0 && m_b.m_nMoves >= kFewestThreatPlies)
            AddThreats(code);
        if (m_b.m_blackQueens == 1 && m_b.m_blackRooks == 0)
            AddMovesAgainstQueen();
        if (m_b.m_whiteQueens >= 2)
            AddQueenCaptures();
        if (NeedsPromotion())
            AddPromotions();
        if (m_context.m_bFfmAddCaptures && m_nCode >= kFirstCodeWithCaptures)
            AddCapturesNextToKing();
        AddLineMove();
    }

    [[nodiscard]] bool IsListed(const TMove& move) const {
        return std::any_of(m_list, m_list + m_nCount, [&](const TMove& listed) { return SameMove(listed, move); });
    }
    void Add(const TMove& move) {
        if (!IsListed(move))
            m_list[m_nCount++] = {move.m_nFrom, move.m_nTo, move.m_nPromotion, 0};
    }
    void AddChecks() {
        TMove moves[kMaxMoves];
        const int count = GenerateWhiteChecks(m_b, moves);
        std::for_each(moves, moves + count, [&](const TMove& move) { Add(move); });
    }
    void AddEvasions() {
        TMove moves[kMaxMoves];
        const int count = GenerateWhiteEvasions(m_b, moves);
        std::for_each(moves, moves + count, [&](const TMove& move) { Add(move); });
    }

    /// The moves that are not listed yet and for which `wanted(move)` holds.
    template <class TWanted> void AddWanted(TWanted wanted) {
        TMove moves[kMaxMoves];
        const int count = GenerateWhiteMoves(m_b, moves);
        for (int i = 0; i < count; ++i)
            if (!IsListed(moves[i]) && wanted(moves[i]))
                Add(moves[i]);
    }

    /// The position after a move that stands; null for one that does not.
    const TChessboard* Make(TMove move) {
        TChessboard* const child = CopyToChild(&m_b);
        return MakeWhiteMove(*child, move) != 0 ? child : nullptr;
    }

    /// With little room round the black king a pawn's step takes the rest of it.
    void AddPawnAdvances() {
        AddWanted([&](const TMove& move) {
            return m_b.m_board[move.m_nFrom] == kWhitePawn && FileOf(move.m_nFrom) == FileOf(move.m_nTo) &&
                   !IsWhiteFigurePinned(m_b, FileOf(move.m_nFrom), RankOf(move.m_nFrom), move.m_nTo);
        });
    }

    void AddThreats(const TForcingCode& code) {
        AddChecks();
        AddWanted([&](const TMove& move) {
            const TChessboard* const child = Make(move);
            return child != nullptr && (child->m_blackChecker != kNoChecker || IsThreat(*child, code));
        });
    }

    [[nodiscard]] bool IsThreat(const TChessboard& child, const TForcingCode& code) const {
        if (HasMateInOne(child))
            return true;
        if (code.m_bWidened && ShutsKingIn(child))
            return true;
        const ELookAside kind = KeepsOtherHeuristics(m_context) ? ELookAside::UnderHeuristics : ELookAside::Proof;
        return code.m_nThreatPlies > 1 && ThreatensMate(child, code.m_nThreatPlies, kind);
    }

    /// It takes free squares from the black king and leaves one at most: the next check may be mate.
    [[nodiscard]] bool ShutsKingIn(const TChessboard& child) const {
        return m_nFreeSquares > kShutIn && CountBlackKingFreeSquares(child) <= kShutIn;
    }

    [[nodiscard]] TSquare BlackQueen() const {
        const auto found = std::find(m_b.m_board.begin(), m_b.m_board.end(), kBlackQueen);
        return static_cast<TSquare>(found - m_b.m_board.begin());
    }

    /// Black's queen is all that can disturb: to take it, or to attack it with a figure that is not lost for nothing,
    /// forces as a check does.
    void AddMovesAgainstQueen() {
        const TSquare queen = BlackQueen();
        const bool bAttacked = IsAttackedByWhite(m_b, FileOf(queen), RankOf(queen));
        AddWanted([&](const TMove& move) {
            if (move.m_nTo == queen)
                return true;
            const TChessboard* const child = bAttacked ? nullptr : Make(move);
            return child != nullptr && IsAttackedByWhite(*child, FileOf(queen), RankOf(queen)) &&
                   !IsLost(*child, move.m_nTo);
        });
    }

    /// Black takes the figure on the square and White does not take back.
    [[nodiscard]] static bool IsLost(const TChessboard& child, TSquare square) {
        return IsAttackedByBlack(child, FileOf(square), RankOf(square)) &&
               !IsAttackedByWhite(child, FileOf(square), RankOf(square));
    }

    /// White's queens outnumber whatever is left: a queen taken is a defence taken.
    void AddQueenCaptures() {
        AddWanted([&](const TMove& move) { return m_b.m_board[move.m_nTo] == kBlackQueen; });
    }

    /// White has little to mate with but the figure that a pawn becomes.
    [[nodiscard]] bool NeedsPromotion() const {
        return m_b.m_whiteQueens == 0 ||
               (m_b.m_whiteQueens == 1 && m_b.m_whiteRooks + m_b.m_whiteBishops + m_b.m_whiteKnights < 3);
    }
    void AddPromotions() {
        AddWanted([](const TMove& move) { return PromotionKind(move) != 0; });
    }

    void AddCapturesNextToKing() {
        const TSquare king = BlackKingSquare(m_b);
        AddWanted([&](const TMove& move) {
            const TFigure captured = m_b.m_board[move.m_nTo];
            return captured != kNoFigure && KindOf(captured) != kPawn && KingSteps(move.m_nTo, king) == 1;
        });
    }

    void AddLineMove() {
        if (FollowsNumberedLine(m_b))
            AddWanted([&](const TMove& move) { return IsNumberedLineMove(m_b, move); });
    }

    TChessboard& m_b;
    TSearchContext& m_context;
    TMove* m_list;
    int m_nCount = 0;
    int m_nFreeSquares;
    int m_nCode;
};

} // namespace

int GenerateForcingMoves(TChessboard& b, TMove* list) { return CForcingList(b, list).Run(); }

} // namespace quillon
