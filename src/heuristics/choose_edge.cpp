#include "heuristics/choose_edge.h"

#include <algorithm>
#include <array>

#include "heuristics/white_promotion.h"

namespace quillon {

namespace {

constexpr TMask kCornerSquares = MaskOf(9) | MaskOf(14) | MaskOf(49) | MaskOf(54); // b2, g2, b7, g7
constexpr int kAutoRelaxCaptures = 2;  // figures after whose loss Black's cage is another one
constexpr int kSurroundedSquares = 3;  // free squares of a king who counts as surrounded
constexpr int kFewFigures = 2;         // with no more White keeps a cage shut rather than breaks it open
constexpr int kCornerDistance = 3;     // squares from the corner within which he is near it
constexpr int kMostCornerDistance = 5; // that the heuristic knows

bool HasNoEdgeYet(const TChoice& c) { return !c.Has(SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE); }

// --- The frame: overwhelming force against a king on the edge

bool HasQueensAgainstEdge(const TChoice& c) {
    return HasNoEdgeYet(c) && c.m_facts.m_nRing == 0 && c.m_facts.m_nMoveCategory <= 1 && c.m_root.m_whiteQueens > 1;
}
/// Black is so far ahead that White lives on the cage alone, and it is shut.
bool LivesOnShutCage(const TChoice& c) {
    const int white = c.m_facts.m_nWhiteMaterial, black = c.m_facts.m_nBlackMaterial;
    return HasNoEdgeYet(c) && c.m_facts.m_nRing == 0 && c.m_facts.m_nMoveCategory == 0 &&
           ((white > 20 && 3 * white < 2 * black) || 2 * white < black) && c.m_facts.m_nFreeSquares == 0;
}

// --- Further rules, from tight to wide

/// Every way out is barred by his own men, White's pawns and White's king: nobody expects him to leave.
bool IsWalledIn(const TChoice& c) { return c.m_facts.m_nMoveCategory == 0 && c.m_facts.m_nWhiteFigures <= kFewFigures; }

/// The same, but White has the figures to break the cage open and mate him outside.
bool IsWalledInUntilOpened(const TChoice& c) { return c.m_facts.m_nMoveCategory == 0; }

/// He cannot move, but what keeps him there are White's figures, who also have other things to do.
bool IsHeldOnTheEdge(const TChoice& c) {
    return c.m_facts.m_nRing == 0 && c.m_facts.m_nFreeSquares == 0 && c.m_facts.m_nMoveCategory == 1;
}
void SetAlmostStrictEdge(TChoice& c) {
    SetStrictEdge(c);
    c.m_context.m_bAllowExceptions = true;
    c.m_context.m_bEdgeToAssertBks = true;
}

void SetPlainEdge(TChoice& c) {
    c.Set(SH_KEEPKINGONTHEEDGE);
    c.m_context.m_bDontLetKingMove = false;
    c.Clear(SH_ASSERTBLACKKINGSURROUNDED);
}
void SetEdgeWithCornerSquares(TChoice& c) {
    SetPlainEdge(c);
    c.m_context.m_bEdgeInclCornerSquares = true;
}

/// The cage is a stretch of the edge.
bool IsCageOnEdge(const TChoice& c) { return KeepsToEdge(c.m_facts.m_cage, false); }
bool IsCageInCorner(const TChoice& c) { return KeepsToEdge(c.m_facts.m_cage, true); }

/// White's heavy figures cut him off along the edge. A single figure has to mate him there. More of them let him come
/// one line inwards now and then.
bool IsCutOffOnEdge(const TChoice& c) { return c.m_facts.m_nWhiteHeavy > 0 && KeepsToEdge(c.m_facts.m_guarded, false); }
bool IsCutOffByOne(const TChoice& c) { return IsCutOffOnEdge(c) && c.m_facts.m_nWhiteFigures == 1; }

/// He can go no further than the line beside the edge. From that line itself he is driven inwards as often as not.
bool IsCageOnExtEdge(const TChoice& c) { return c.m_facts.m_cage.m_nRing <= 1; }
bool IsCutOffOnExtEdge(const TChoice& c) { return c.m_facts.m_nRing == 0 && c.m_facts.m_guarded.m_nRing <= 1; }

/// Somewhere on the board, but with hardly a square to go to.
bool IsSurrounded(const TChoice& c) {
    return c.m_facts.m_nFreeSquares <= kSurroundedSquares && c.m_facts.m_nWhiteFigures >= 2;
}
void AssertSurrounded(TChoice& c) {
    c.Set(SH_ASSERTBLACKKINGSURROUNDED);
    c.m_context.m_bAssertBKSStrict = c.m_facts.m_nFreeSquares == 0;
}

int CornerDistance(const TChessboard& b) { return kEdgeDistance[b.m_blackKingFile] + kEdgeDistance[b.m_blackKingRank]; }
bool IsNearCorner(const TChoice& c) { return CornerDistance(c.m_root) <= kCornerDistance; }
void KeepNearCorner(TChoice& c) {
    c.Set(SH_KEEPKINGNEARCORNER);
    c.m_context.m_nKingNearCorner =
        static_cast<std::int8_t>(std::min(CornerDistance(c.m_root) + 2, kMostCornerDistance));
}

constexpr std::array kEdgeRules{
    TChoiceRule{"edge: queens against a king on the edge", HasQueensAgainstEdge, SetStrictEdge},
    TChoiceRule{"edge: White lives on the shut cage", LivesOnShutCage, SetStrictEdge},
    TChoiceRule{"edge: walled in", IsWalledIn, SetStrictEdge},
    TChoiceRule{"edge: walled in until the cage is opened", IsWalledInUntilOpened, SetAlmostStrictEdge},
    TChoiceRule{"edge: held on the edge by figures", IsHeldOnTheEdge, SetAlmostStrictEdge},
    TChoiceRule{"edge: the cage is a stretch of the edge", IsCageOnEdge, SetPlainEdge},
    TChoiceRule{"edge: the cage is a corner", IsCageInCorner, SetEdgeWithCornerSquares},
    TChoiceRule{"edge: cut off on the edge by one figure", IsCutOffByOne, SetPlainEdge},
    TChoiceRule{"edge: cut off on the edge", IsCutOffOnEdge, SetBits<SH_KEEPKINGWITHINEXTEDGE>},
    TChoiceRule{"edge: the cage ends beside the edge", IsCageOnExtEdge, SetBits<SH_KEEPKINGWITHINEXTEDGE>},
    TChoiceRule{"edge: cut off beside the edge", IsCutOffOnExtEdge, SetBits<SH_KEEPKINGWITHINEXTEDGE>},
    TChoiceRule{"edge: surrounded", IsSurrounded, AssertSurrounded},
    TChoiceRule{"edge: near a corner", IsNearCorner, KeepNearCorner},
};

/// The strict edge lets the king go once Black is stripped and White still has enough to mate him anywhere.
void SetMatingForce(TChoice& c) {
    const bool bMinors = c.m_facts.m_nWhiteHeavy == 0 && c.m_facts.m_nWhiteFigures >= 2;
    c.m_context.m_nEdgeHeavyFigures = bMinors ? 0 : 1;
    c.m_context.m_nEdgeMinorFigures = bMinors ? 2 : 0;
}

/// The user lets the program relax the edge within a pass: when Black has lost the men that shut him in, or a pawn of
/// White's gets through.
void SetDynamicRelaxation(TChoice& c) {
    c.m_context.m_nRelaxCaptures = kAutoRelaxCaptures;
    c.m_context.m_bRelaxOnAdvancedPawn = HasAdvancedPawn(c.m_root);
}

} // namespace

bool KeepsToEdge(const TKingWalk& walk, bool bInclCornerSquares) {
    TMask squares = walk.m_reached & ~(bInclCornerSquares ? kCornerSquares : 0);
    while (squares != 0)
        if (const int square = TakeSquare(squares); RingOf(FileOf(square), RankOf(square)) > 0)
            return false;
    return true;
}

void SetStrictEdge(TChoice& c) {
    c.Set(SH_KEEPKINGONTHEEDGE);
    c.m_context.m_bDontLetKingMove = true;
    c.Clear(SH_ASSERTBLACKKINGSURROUNDED);
}

void ChooseEdge(TChoice& c) {
    if (!TakeFirstRule(kEdgeRules, c))
        return;
    if (c.Has(SH_KEEPKINGONTHEEDGE))
        SetMatingForce(c);
    if (c.m_context.m_bAutoDynRelax && c.Has(SH_KEEPKINGONTHEEDGE | SH_KEEPKINGWITHINEXTEDGE))
        SetDynamicRelaxation(c);
}

} // namespace quillon
