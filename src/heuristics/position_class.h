#pragma once
// What kind of position the root is: the figures, the room of the black king, what White can force. The rules that
// choose heuristics read these facts; they are taken once a solve.

#include "core/chessboard.h"
#include "core/figure_masks.h"
#include "core/search_context.h"
#include "heuristics/material.h"
#include "search/analysis.h"

namespace quillon {

/// Where the black king could walk while nothing but him moves.
struct TKingWalk {
    int m_nSteps = 0;    // of the farthest square he can reach
    int m_nSquares = 0;  // that he can reach, his own not counted
    int m_nRing = 0;     // innermost ring he reaches, his own counted: 0 while he keeps to the edge
    TMask m_reached = 0; // these squares and his own
};

/// The walk over squares that hold no black man and that White's pawns and king do not guard. White's figures come and
/// go; what stops this walk is the cage itself.
[[nodiscard]] TKingWalk WalkWithinCage(const TChessboard& b);

/// The walk over squares that hold no black man and that nothing of White's guards as it stands.
[[nodiscard]] TKingWalk WalkUnderGuard(const TChessboard& b);

/// White's legal moves that give check.
[[nodiscard]] int CountWhiteChecks(TChessboard& root);

/// Has White a bare king and two bishops of one colour? Then it can mate nobody.
[[nodiscard]] bool HasOnlyTwinBishops(const TChessboard& b);

/// Figures are queens, rooks, bishops and knights; heavy ones queens and rooks.
struct TPositionFacts {
    int m_nPlies = 0; // left, odd
    int m_nWhiteMaterial = 0, m_nBlackMaterial = 0;
    int m_nWhiteFigures = 0, m_nBlackFigures = 0;
    int m_nWhiteHeavy = 0;
    int m_nRing = 0; // of the black king
    bool m_bCorner = false;
    int m_nKingDistance = 0;
    int m_nFreeSquares = 0; // of the black king
    int m_nBlackMenAroundKing = 0;
    TKingWalk m_cage, m_guarded;
    int m_nMoveCategory = 0; // steps of the walk within the cage
    int m_nWhiteChecks = 0;
    int m_nBlackMoves = 0; // legal ones, were Black to move
};

/// Takes the facts of a root, White to move.
[[nodiscard]] TPositionFacts TakePositionFacts(TChessboard& root);

/// Writes what the search and the plan of passes want to know of the root: material, class, counts.
void StorePositionFacts(const TChessboard& root, const TPositionFacts& facts, TSearchContext& context,
                        TAnalysis& analysis);

} // namespace quillon
