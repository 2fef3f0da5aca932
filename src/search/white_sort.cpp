// The order of White's moves: the one that most likely mates comes first.
//
//   1 nesting               4 pawn about to promote    7 register        10 the root's list
//   2 single queen          5 sort indications         8 score
//   3 stored tree           6 main variant             9 sort, worst moves cut   11 the order that is expected

#include "search/move_sort.h"

#include <algorithm>
#include <bitset>

#include "core/attacks.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/mask_attacks.h"
#include "core/queries.h"
#include "core/search_context.h"
#include "heuristics/search_hooks.h"
#include "search/analysis.h"
#include "search/expected_white_moves.h"
#include "search/hints.h"
#include "search/move_score.h"
#include "search/precalc_use.h"
#include "search/register_use.h"
#include "search/sort_indications.h"

namespace quillon {

namespace {

constexpr int kAskedReplyPlies = 11;  // from here on the register is asked about the replies to a move
constexpr int kMostAskedReplies = 12; // a move that leaves more is not worth the questions
constexpr int kUncutMoves = 24;       // SH_SKIPWORSTWHITEMOVES spares shorter lists
constexpr int kLeastMovesAfterCut = 25;
constexpr int kAlmostBest = 8;
constexpr int kHintZero = 5; // a hint of so many moves bears on no score

enum class ESortKind { Simple, Short, Full };

class CWhiteSort {
  public:
    CWhiteSort(TChessboard& p, int count, TMove* list, ESortKind kind)
        : m_p(p), m_list(list), m_count(count), m_kind(kind) {}

    TWhiteSort Run() {
        if (m_kind != ESortKind::Simple) {
            DetectSingleQueen(m_p);                                 // 2
            m_storedTree = OrderByStoredTree(m_p, m_count, m_list); // 3
            if (m_storedTree == EStoredTree::Mates && m_p.m_pPrevious != nullptr)
                return {m_count, true};           // the root's other moves are wanted all the same
            m_bPromotionFirst = IsPromotionDue(); // 4
        }
        for (int i = 0; i < m_count; ++i)
            if (Take(m_list[i]))
                return {m_kept, true};
        if (m_bIndicated)
            LowerComputedScores();
        SortByScore(m_list, m_kept); // 9
        const int best = CountBest();
        const bool bLeftOut = CutWorst();
        if (!m_bIndicated)
            PutHintsFirst(m_p, m_kept, m_list);
        if (IsWideRoot()) // 10
            ReorderRootMoves(m_p, m_kept, m_list);
        return {m_kept, false, IsFallbackDue(), bLeftOut, best};
    }

  private:
    /// Moves whose score is within two major points of the first's.
    [[nodiscard]] int CountBest() const {
        const auto behind = [&](const TMove& move) { return ScoreOf(move) > ScoreOf(m_list[0]) + kAlmostBest; };
        return static_cast<int>(std::find_if(m_list, m_list + m_kept, behind) - m_list);
    }

    /// Steps 5 to 8 for one move: true if it mates for certain.
    bool Take(const TMove listed) {
        const TMove move = {listed.m_nFrom, listed.m_nTo, listed.m_nPromotion, 0};
        TChessboard* const child = CopyToChild(&m_p);
        TMove made = move;
        if (MakeWhiteMove(*child, made) == 0)
            return false;
        int score = kScoreMostComputed;
        const bool bIndicated = IsIndicated(*child, move, score);
        if (!bIndicated) {
            switch (AskAboutReplies(*child)) {
            case MR_MATE:
                if (m_p.m_pPrevious != nullptr)
                    return true;
                score = kScoreMated; // the root's other moves are wanted all the same
                break;
            case MR_NOMATE:
                score = kScoreKnownNoMate;
                break;
            default:
                score = Score(move, listed);
            }
        }
        m_list[m_kept] = move;
        m_computed[static_cast<std::size_t>(m_kept)] = !bIndicated;
        SetScore(m_list[m_kept++], score);
        return false;
    }

    // Steps 5, 6.
    bool IsIndicated(const TChessboard& child, const TMove& move, int& score) {
        if (m_kind == ESortKind::Simple)
            return false;
        if (const int indicated = IndicatedScore(child, move); indicated != kNotIndicated) {
            m_bIndicated = true;
            score = indicated;
            if (score != kScoreKnownNoMate)
                m_nLastIndicated = std::max(m_nLastIndicated, score);
            return true;
        }
        if (!IsMainVariantMove(m_p, move))
            return false;
        m_bIndicated = true;
        score = kScoreFirst;
        return true;
    }

    /// Step 7. The register holds positions with White to move, so a move is judged by the positions behind its
    /// replies: all mated, and the move mates; one not mated, and it does not.
    TMateResult AskAboutReplies(TChessboard& child) {
        if (m_kind == ESortKind::Simple || m_p.m_nMoves < kAskedReplyPlies || IsBishopRemoved(m_p) ||
            !IsRegisterInForce(m_p))
            return MR_NONE;
        TMove replies[kMaxMoves];
        const int count = GenerateBlackMoves(child, replies);
        if (count > kMostAskedReplies)
            return MR_NONE;
        TMateResult verdict = MR_MATE;
        bool bAnyLegal = false;
        for (int i = 0; i < count; ++i) {
            TChessboard* const reply = CopyToChild(&child);
            const int stands = MakeBlackMove(*reply, replies[i], false);
            if (stands == kIllegalMove)
                continue;
            bAnyLegal = true;
            const TMateResult known =
                stands == kCertainEscape ? MR_NOMATE : AskRegisterAboutReply(*reply, child.m_nMoves);
            if (known == MR_NOMATE)
                return MR_NOMATE;
            if (known != MR_MATE)
                verdict = MR_NONE;
        }
        if (!bAnyLegal)
            return child.m_blackChecker != kNoChecker ? MR_MATE : MR_NOMATE;
        return verdict;
    }

    /// Step 8, in the child that the move has made.
    int Score(const TMove& move, const TMove& listed) {
        const TChessboard& child = *ChildSlot(m_p);
        TScore score;
        if (m_storedTree != EStoredTree::Silent && listed.m_nEnPassant != kNoStoredHint)
            score.m_nMinor += listed.m_nEnPassant - kHintZero;
        const int base = PromotionKind(move) == kQueen ? -1 : 0;
        ScoreCapture(score, move);
        const bool bCheck = child.m_blackChecker != kNoChecker;
        if (bCheck)
            score.m_nMajor -= 4;
        ScoreKeySquare(score, move);
        if (m_kind == ESortKind::Simple)
            return score.Value(base);
        ScoreNet(score, child, bCheck);
        ScorePawn(score, move);
        if (m_kind == ESortKind::Full)
            ScoreKing(score, child, move);
        return score.Value(base);
    }

    void ScoreCapture(TScore& score, const TMove& move) const {
        const int value = CaptureValue(m_p.m_board[move.m_nTo]);
        if (value == 0)
            return;
        score.m_nMajor -= m_p.m_whitePawns <= 1 ? 3 * value / 2 : value / 2;
        if (KingSteps(move.m_nTo, WhiteKingSquare(m_p)) == 1)
            score.m_nMajor -= 3;
    }

    /// SH_KEYSQUARE: a move to the key square comes early, and so does one that brings the king nearer to it.
    void ScoreKeySquare(TScore& score, const TMove& move) const {
        const TSquare key = m_p.m_pContext->m_nKeySquare;
        if ((m_p.m_nHeuristics & SH_KEYSQUARE) == 0 || key >= kSquares)
            return;
        if (move.m_nTo == key)
            score.m_nMajor -= 6;
        else if (m_p.m_board[move.m_nFrom] == kWhiteKing)
            score.m_nMajor -= 2 * (KingSteps(move.m_nFrom, key) - KingSteps(move.m_nTo, key));
    }

    /// How tight the net round the black king is: its free squares, Black's replies, a threat to mate at once.
    void ScoreNet(TScore& score, const TChessboard& child, bool bCheck) const {
        TMove replies[kMaxMoves];
        const int count = GenerateBlackMoves(child, replies);
        score.m_nMinor += std::min(count, 40) / 2;
        score.m_nMajor += 2 * CountBlackKingFreeSquares(child);
        if (!bCheck && HasMateInOne(child))
            score.m_nMajor -= 6;
    }

    void ScorePawn(TScore& score, const TMove& move) const {
        if (m_p.m_board[move.m_nFrom] != kWhitePawn)
            return;
        const int rank = RankOf(move.m_nTo);
        if (m_bPromotionFirst && PromotionKind(move) == kQueen && IsCaptureAnswered(move.m_nTo))
            score.m_nMajor -= 8;
        if (rank >= 5 && rank < 7 && IsPathFree(move.m_nTo))
            score.m_nMajor -= 2 * (rank - 4);
    }

    /// Whatever takes on the square, White takes back; the move is made.
    [[nodiscard]] bool IsCaptureAnswered(TSquare square) const {
        const TChessboard& child = *ChildSlot(m_p);
        TSquare capturer = kNoSquare;
        const bool bByFigure = FindBlackCapturer(child, FileOf(square), RankOf(square), capturer);
        const bool bByKing = KingSteps(square, BlackKingSquare(child)) == 1;
        return (!bByFigure && !bByKing) || IsAttackedByWhite(child, FileOf(square), RankOf(square));
    }

    /// The watched figures are all let go: with fallback the node is run once more without watching any.
    [[nodiscard]] bool IsFallbackDue() const {
        return m_p.m_pContext->m_bHeuristicsFallback && AreAllFiguresUnblocked(m_p);
    }

    [[nodiscard]] bool IsWideRoot() const {
        constexpr int kWideMoves = 16, kFewFigures = 3;
        return m_p.m_pPrevious == nullptr && m_kept >= kWideMoves && WhiteMen(m_p) - m_p.m_whitePawns <= kFewFigures &&
               BlackMen(m_p) - m_p.m_blackPawns <= kFewFigures;
    }

    [[nodiscard]] bool IsPathFree(int square) const {
        for (int s = square + 8; s < kSquares; s += 8)
            if (m_p.m_board[static_cast<std::size_t>(s)] != kNoFigure)
                return false;
        return true;
    }

    /// A king that comes nearer helps; the file between the kings counts little.
    void ScoreKing(TScore& score, const TChessboard& child, const TMove& move) const {
        const int king = BlackKingSquare(m_p);
        if (m_p.m_board[move.m_nFrom] == kWhiteKing) {
            const int nearer = KingSteps(move.m_nFrom, king) - KingSteps(move.m_nTo, king);
            score.m_nMajor -= nearer;
            if (IsSlotBetweenPawns(move.m_nTo))
                score.m_nMajor += 3;
        }
        const int weight = m_p.m_board[move.m_nTo] != kNoFigure ? 2 : 1;
        score.m_nMinor += weight * AbsDiff(child.m_whiteKingFile, child.m_blackKingFile);
    }

    /// A square between two black pawns holds the white king up in play on the edge.
    [[nodiscard]] bool IsSlotBetweenPawns(int square) const {
        const int file = FileOf(square);
        return (m_p.m_nHeuristics & SH_KEEPKINGONTHEEDGE) != 0 && m_p.m_whiteRooks != 0 && file > 0 && file < 7 &&
               m_p.m_board[static_cast<std::size_t>(square - 1)] == kBlackPawn &&
               m_p.m_board[static_cast<std::size_t>(square + 1)] == kBlackPawn;
    }

    /// Step 4: in a small endgame after exchanges, with a way out for the black king, a promotion goes first (if
    /// whatever takes the promoted figure is taken back).
    [[nodiscard]] bool IsPromotionDue() const {
        if ((m_p.m_wKingState & kNarrowPlay) != 0 || m_p.m_pPrevious == nullptr || WhiteMen(m_p) + BlackMen(m_p) >= 6)
            return false;
        const TChessboard& before = *m_p.m_pPrevious;
        const bool bCaptured =
            before.m_board[m_p.m_lastMove.m_nTo] != kNoFigure ||
            (before.m_pPrevious != nullptr && before.m_pPrevious->m_board[before.m_lastMove.m_nTo] != kNoFigure);
        return bCaptured && HasBlackKingFlight(m_p, m_p.m_blackKingFile, m_p.m_blackKingRank);
    }

    /// With indications in force every computed score moves down by one, and none mixes with those of the indicated.
    void LowerComputedScores() {
        for (int i = 0; i < m_kept; ++i)
            if (m_computed[static_cast<std::size_t>(i)])
                SetScore(m_list[i], std::max(ScoreOf(m_list[i]) - 1, m_nLastIndicated + 1));
    }

    bool CutWorst() {
        if ((m_p.m_nHeuristics & SH_SKIPWORSTWHITEMOVES) == 0 || m_kept <= kUncutMoves)
            return false;
        const int before = m_kept;
        m_kept = std::max(m_kept * 4 / 5, kLeastMovesAfterCut);
        m_kept = std::min(m_kept, before);
        return m_kept < before;
    }

    TChessboard& m_p;
    TMove* m_list;
    int m_count;
    ESortKind m_kind;
    int m_kept = 0;
    bool m_bIndicated = false;
    int m_nLastIndicated = kScoreFirst;
    std::bitset<kMaxMoves> m_computed; // by place in the list, before it is sorted
    bool m_bPromotionFirst = false;
    EStoredTree m_storedTree = EStoredTree::Silent;
};

} // namespace

namespace {

TWhiteSort SortAs(ESortKind kind, TChessboard& p, int nMoves, TMove* list) {
    const CSortMark mark(p.m_pContext->m_nSortNesting); // 1
    const TWhiteSort sorted = CWhiteSort(p, nMoves, list, kind).Run();
    if (p.m_pAnalysis->m_pExpectedWhiteMoves != nullptr) [[unlikely]]
        p.m_pAnalysis->m_pExpectedWhiteMoves->Compare(p, sorted, list); // 11
    return sorted;
}

} // namespace

TWhiteSort SortWhiteMoves(TChessboard& p, int nMoves, TMove* list, bool bShort) {
    return SortAs(bShort ? ESortKind::Short : ESortKind::Full, p, nMoves, list);
}

TWhiteSort SortWhiteMovesSimple(TChessboard& p, int nMoves, TMove* list) {
    return SortAs(ESortKind::Simple, p, nMoves, list);
}

} // namespace quillon
