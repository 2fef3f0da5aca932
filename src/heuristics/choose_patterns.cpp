#include "heuristics/choose_patterns.h"

#include <algorithm>

#include "core/generation.h"
#include "core/lines.h"
#include "core/makers.h"
#include "core/mask_attacks.h"
#include "core/queries.h"
#include "heuristics/black_mobility.h"
#include "heuristics/chosen_figures.h"
#include "heuristics/king_edge.h"

namespace quillon {

namespace {

constexpr int kLongPlies = 21;     // shorter problems do without patterns of manoeuvre
constexpr int kSeaSnakePlies = 41; // a queen's way up takes its time
constexpr int kSecondRank = 1, kThirdRank = 2;
constexpr int kSweptPawns = 3;     // black pawns before the first rank that make a rook sweep it
constexpr int kTiedBlackMoves = 6; // with no more moves Black lives on the pinned figure

// --- The main diagonal

/// Has White a legal move that puts a diagonal figure on one of these squares?
bool CanPutDiagonalFigureOn(TChessboard& root, TMask squares) {
    TMove list[kMaxMoves];
    const int count = GenerateWhiteMoves(root, list);
    for (int i = 0; i < count; ++i) {
        TMove move = list[i];
        if ((squares & MaskOf(move.m_nTo)) == 0 || !IsDiagonalSlider(root.m_board[move.m_nFrom], kWhite))
            continue;
        TChessboard* const child = CopyToChild(&root);
        if (MakeWhiteMove<kLegalityOnly>(*child, move) != 0)
            return true;
    }
    return false;
}

bool HasFigureOnMainDiagonal(const TChoice& c) {
    return c.m_facts.m_nMoveCategory < kConfinedCategory && FindFigureOnMainDiagonal(c.m_root) != kNoSquare;
}
void KeepFigureOnMainDiagonal(TChoice& c) {
    c.Set(SH_DONTLEAVEMAINDIAGONAL);
    c.m_context.m_nBlackFigureOnMainDiagonal = FindFigureOnMainDiagonal(c.m_root);
    c.ForceSafeMode();
}
constexpr TChoiceRule kMainDiagonalRule{"pattern: black figure on the main diagonal", HasFigureOnMainDiagonal,
                                        KeepFigureOnMainDiagonal};

// --- The sea snake

struct TPendulum {
    TSquare m_nFrom = kNoSquare, m_nTo = kNoSquare;
};

/// The only black queen's only move, if her step to a neighbouring square is all that Black can do.
TPendulum FindPendulum(const TChessboard& b) {
    if (b.m_blackQueens != 1 || CountBlackMoves(b) != 1)
        return {};
    for (int square = 0; square < kSquares; ++square) {
        const auto at = static_cast<TSquare>(square);
        if (b.m_board[at] != kBlackQueen)
            continue;
        TMove list[kMaxMoves];
        const int count = GenerateBlackFigureMoves(b, at, list);
        for (int i = 0; i < count; ++i)
            if (b.m_board[list[i].m_nTo] == kNoFigure && KingSteps(at, list[i].m_nTo) == 1)
                return {at, list[i].m_nTo};
    }
    return {};
}

TSquare FindWhiteQueen(const TChessboard& b) {
    return static_cast<TSquare>(std::ranges::find(b.m_board, kWhiteQueen) - b.m_board.begin());
}

/// The empty square nearest to the black king from which a queen would attack him along an open line; the first of
/// equals. kNoSquare if he is closed in on all sides.
TSquare FindApproachSquare(const TChessboard& b) {
    const TFigureMasks masks = TakeMasks(b);
    const TMask lines =
        (RookAttacks(masks.m_nBlackKing, masks.Occupied()) | BishopAttacks(masks.m_nBlackKing, masks.Occupied())) &
        ~masks.Occupied();
    TSquare best = kNoSquare;
    for (TMask left = lines; left != 0;) {
        const auto square = static_cast<TSquare>(TakeSquare(left));
        if (best == kNoSquare || KingSteps(square, masks.m_nBlackKing) < KingSteps(best, masks.m_nBlackKing))
            best = square;
    }
    return best;
}

bool IsSeaSnake(const TChoice& c) {
    return c.m_facts.m_nPlies >= kSeaSnakePlies && c.m_root.m_whiteQueens == 1 && c.m_facts.m_nWhiteFigures == 1 &&
           c.m_facts.m_nFreeSquares == 0 && FindPendulum(c.m_root).m_nFrom != kNoSquare &&
           FindApproachSquare(c.m_root) != kNoSquare;
}
void SetSeaSnake(TChoice& c) {
    const TPendulum pendulum = FindPendulum(c.m_root);
    c.Set(SH_SEASNAKE);
    c.m_context.m_bSeaSnake = true;
    c.m_context.m_nSeaSnakeApproach = FindApproachSquare(c.m_root);
    c.m_context.m_nSeaSnakeTurnBack = FindWhiteQueen(c.m_root);
    c.m_context.m_nSeaSnakePendulum1 = pendulum.m_nFrom;
    c.m_context.m_nSeaSnakePendulum2 = pendulum.m_nTo;
}
constexpr TChoiceRule kSeaSnakeRule{"pattern: sea snake", IsSeaSnake, SetSeaSnake};

// --- Figures that cannot be spared

bool CanSpareNoFigure(const TChoice& c) {
    const TPositionFacts& f = c.m_facts;
    return f.m_nWhiteMaterial < f.m_nBlackMaterial && c.m_root.m_whitePawns < 3 && f.m_nWhiteHeavy == 0 &&
           f.m_nWhiteFigures == 2 && f.m_nMoveCategory >= 2;
}
void SaveEveryFigure(TChoice& c) {
    c.Clear(SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_SAVEQUEENROOK | SH_DONTLETBLACKQUEENCHECKTWICE |
            SH_ASSERTBLACKKINGSURROUNDED);
    c.Set(SH_DONTLOSEANYFIGURES);
    c.m_context.m_nSaveFiguresMode = 2;
    c.ForceSafeMode();
}
constexpr TChoiceRule kSavedFiguresRule{"pattern: no figure can be spared", CanSpareNoFigure, SaveEveryFigure};

// --- Zugzwang, key figure, sweeping rook

/// While it lives, what is searched is none of the passes: the register of the analysis, if there is one, knows.
class CSideAnalysis {
  public:
    explicit CSideAnalysis(const TAnalysis& analysis)
        : m_pRegister(analysis.m_pRegister), m_bBefore(m_pRegister != nullptr && m_pRegister->SetSideAnalysis(true)) {}
    ~CSideAnalysis() {
        if (m_pRegister != nullptr)
            m_pRegister->SetSideAnalysis(m_bBefore);
    }
    CSideAnalysis(const CSideAnalysis&) = delete;
    CSideAnalysis& operator=(const CSideAnalysis&) = delete;

  private:
    ITemporaryRegister* const m_pRegister;
    const bool m_bBefore;
};

/// Would White mate in two after every black move, were Black to move now?
bool IsLostIfBlackMoves(TChessboard& root) {
    const CSideAnalysis aside(*root.m_pAnalysis);
    TChessboard* const passed = CopyToChild(&root);
    passed->m_nMoves = static_cast<std::uint16_t>(root.m_nMoves - 1);
    passed->m_lastMove = {};
    TMove list[kMaxMoves];
    const int count = GenerateBlackMoves(*passed, list);
    bool bAnyLegal = false;
    for (int i = 0; i < count; ++i) {
        TMove move = list[i];
        TChessboard* const child = CopyToChild(passed);
        if (MakeBlackMove<kLegalityOnly>(*child, move, false) == kIllegalMove)
            continue;
        bAnyLegal = true;
        if (!HasMateInTwo(*child))
            return false;
    }
    return bAnyLegal;
}

bool IsZugzwang(const TChoice& c) {
    return c.m_facts.m_nPlies >= kLongPlies && c.m_root.m_whiteChecker == kNoChecker && c.m_facts.m_nBlackMoves <= 2 &&
           c.m_facts.m_nBlackMoves > 0 && c.m_facts.m_nWhiteFigures <= 2 && IsLostIfBlackMoves(c.m_root);
}
void ReturnToRoot(TChoice& c) {
    c.Set(SH_ZUGZWANG);
    c.m_analysis.m_zugzwangPositions[""] = c.m_root.m_board; // no moves lead to the root
}

bool HasKeyFigure(const TChoice& c) {
    if (c.m_facts.m_nPlies < kLongPlies || c.m_facts.m_nRing != 0 || c.m_facts.m_nMoveCategory > 1 ||
        c.m_facts.m_nBlackMoves > kTiedBlackMoves)
        return false;
    const TKeyFigures keys = FindKeyFigures(c.m_root);
    return keys.m_nCount > 0 &&
           KingSteps(FindPinnedByKeyFigure(c.m_root, keys.m_squares[0]), BlackKingSquare(c.m_root)) <= 2;
}
void TakeKeyFigure(TChoice& c) {
    const TSquare key = FindKeyFigures(c.m_root).m_squares[0];
    c.Set(SH_KEYWHITEFIGURE);
    SetKeyFigure(c.m_context, c.m_root, key, FindPinnedByKeyFigure(c.m_root, key));
}

int CountPawnsBeforeFirstRank(const TChessboard& b) {
    int pawns = 0;
    for (int square = SquareAt(0, kSecondRank); square < SquareAt(0, kThirdRank + 1); ++square)
        pawns += WithoutMark(b.m_board[static_cast<std::size_t>(square)]) == kBlackPawn;
    return pawns;
}

/// White's one rook keeps the first rank, where black pawns want to promote.
bool IsRookToSweep(const TChoice& c) {
    if (c.m_root.m_whiteRooks != 1 || c.m_root.m_whiteQueens != 0 || c.m_facts.m_nWhiteFigures > 2)
        return false;
    const auto rook = std::ranges::find(c.m_root.m_board, kWhiteRook) - c.m_root.m_board.begin();
    return RankOf(static_cast<int>(rook)) == 0 && CountPawnsBeforeFirstRank(c.m_root) >= kSweptPawns;
}

bool IsNearCornerWithoutEdge(const TChoice& c) {
    constexpr std::uint32_t kHolding = SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE | SH_ASSERTBLACKKINGSURROUNDED |
                                       SH_KEEPKINGNEARCORNER | SH_DONTLOSEANYFIGURES;
    return !c.Has(kHolding) && c.m_facts.m_bCorner && c.m_facts.m_nMoveCategory < kConfinedCategory;
}
void KeepWithinTwoMoves(TChoice& c) {
    c.Set(SH_KEEPKINGNEARCORNER);
    c.m_context.m_nKingNearCorner = -2;
}

constexpr std::array kPatternRules{
    TChoiceRule{"pattern: zugzwang, were it Black's move", IsZugzwang, ReturnToRoot},
    TChoiceRule{"pattern: key white figure", HasKeyFigure, TakeKeyFigure},
    TChoiceRule{"pattern: rook sweeps the first rank", IsRookToSweep, SetBits<SH_SWEEPINGWHITEROOK>},
    TChoiceRule{"pattern: corner without an edge", IsNearCornerWithoutEdge, KeepWithinTwoMoves},
};

// --- Key figure and watched figures together

/// The first key figure that pins indeed; kNoSquare for none.
TSquare FindTruePin(const TChessboard& b) {
    const TKeyFigures keys = FindKeyFigures(b);
    for (std::size_t i = 0; i < keys.m_nCount; ++i)
        if (IsTruePin(b, keys.m_squares[i], FindPinnedByKeyFigure(b, keys.m_squares[i])))
            return keys.m_squares[i];
    return kNoSquare;
}

bool NeedsOtherKeyFigure(const TChoice& c) {
    return c.Has(SH_KEYWHITEFIGURE) && c.Has(SH_DONTLETFIGUREUNBLOCK) && !c.Has(SH_SEASNAKE) && !c.m_bRootMoveSolved &&
           c.m_facts.m_nWhiteFigures >= 2 &&
           !IsTruePin(c.m_root, c.m_context.m_nKeyWhiteFigure, c.m_context.m_nPinnedFigure) &&
           FindKeyFigures(c.m_root).m_nCount > 1;
}
void TakeOtherKeyFigure(TChoice& c) {
    if (const TSquare key = FindTruePin(c.m_root); key != kNoSquare)
        SetKeyFigure(c.m_context, c.m_root, key, FindPinnedByKeyFigure(c.m_root, key));
    c.ForceSafeMode();
}
constexpr TChoiceRule kKeyFigureRule{"pattern: another key figure", NeedsOtherKeyFigure, TakeOtherKeyFigure};

} // namespace

TSquare FindFigureOnMainDiagonal(TChessboard& root) {
    const TSquare king = BlackKingSquare(root);
    if (!IsBlackKingInCorner(root) || root.m_whiteQueens + root.m_whiteRooks == 0)
        return kNoSquare;
    const TDirection inwards = kDirectionBetween[king][static_cast<std::size_t>(63 - king)];
    const auto figure = static_cast<TSquare>(king + kSteps[inwards]);
    if (!CanBeWatched(root, figure) || KindOf(root.m_board[figure]) == kPawn)
        return kNoSquare;
    const TSquare behind = FirstOnRay(root, figure, inwards);
    if (behind != kNoSquare && IsDiagonalSlider(root.m_board[behind], kWhite))
        return figure;
    TMask open = 0;
    for (int square = figure, n = kSquaresToEdge[inwards][figure]; n > 0; --n) {
        square += kSteps[inwards];
        if (static_cast<TSquare>(square) == behind)
            break;
        open |= MaskOf(square);
    }
    return CanPutDiagonalFigureOn(root, open) ? figure : kNoSquare;
}

void ChooseMainDiagonal(TChoice& c) { TakeFirstRule(std::span(&kMainDiagonalRule, 1), c); }
void ChooseSeaSnake(TChoice& c) { TakeFirstRule(std::span(&kSeaSnakeRule, 1), c); }
void ChooseSavedFigures(TChoice& c) { TakeFirstRule(std::span(&kSavedFiguresRule, 1), c); }
void ChoosePatterns(TChoice& c) { TakeAllRules(kPatternRules, c); }
void RebuildKeyFigure(TChoice& c) { TakeFirstRule(std::span(&kKeyFigureRule, 1), c); }

TKeyFigures FindKeyFigures(const TChessboard& b) {
    TKeyFigures keys;
    const TSquare king = BlackKingSquare(b);
    for (int square = 0; square < kSquares && keys.m_nCount < keys.m_squares.size(); ++square) {
        const auto at = static_cast<TSquare>(square);
        const TDirection direction = kDirectionBetween[at][king];
        if (direction == kNoDirection || !IsSliderAlong(b.m_board[at], kWhite, direction))
            continue;
        const TSquare pinned = FindPinnedByKeyFigure(b, at);
        if (pinned != kNoSquare && (SquaresBetween(at, king) & MaskOf(pinned)) != 0)
            keys.m_squares[keys.m_nCount++] = at;
    }
    return keys;
}

bool IsTruePin(const TChessboard& b, TSquare keyFigure, TSquare pinned) {
    const TFigureMasks masks = TakeMasks(b);
    return pinned < kSquares && keyFigure < kSquares &&
           (SquaresBetween(keyFigure, masks.m_nBlackKing) & masks.Occupied()) == MaskOf(pinned);
}

} // namespace quillon
