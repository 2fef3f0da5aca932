#pragma once
// The steps of the plan of passes: a table of rules in a fixed order. The first that decides makes the step.
//
// What goes first: runs of their own kind (FindForcedMate), then what fits rare positions only, then the strict forms
// of what confines the black king, then the watched figures, then the general ones, cheapest doubt last. A heuristic is
// mostly weakened before it goes.

#include <array>
#include <string_view>

#include "heuristics/relaxation.h"

namespace quillon {

struct TRelaxationRule {
    std::string_view m_name;
    ERelaxation (*m_pApply)(TRelaxation&);
};

// ---- relaxation_forced_mate.cpp

/// The cycle of FindForcedMate: deeper by a code, as often as is allowed, then without it.
ERelaxation RelaxForcedMate(TRelaxation& r);

// ---- relaxation_watched_figures.cpp

/// Parked figures come back; the other rules still run.
ERelaxation BringBackParkedFigures(TRelaxation& r);
/// Watched figures and key figure one at a time: first the key figure alone, then the watched ones.
ERelaxation SwapKeyFigureAndWatched(TRelaxation& r);
/// The listed figures leave the watched set: before the edge heuristics are touched where that set is large.
ERelaxation DropFiguresEarly(TRelaxation& r);
ERelaxation DropFigures(TRelaxation& r);
/// The key figure goes early when the black king sits in a corner and the figure can be exchanged.
ERelaxation RelaxExchangeableKeyFigure(TRelaxation& r);
ERelaxation RelaxKeyFigure(TRelaxation& r);
/// The watched set counts as the effective one.
ERelaxation MakeWatchedEffective(TRelaxation& r);

// ---- relaxation_edge.cpp

ERelaxation ReplaceEdgeBySurrounded(TRelaxation& r);
/// The black king may not move: figures parked for one pass, then exceptions allowed, then the edge line instead.
ERelaxation RelaxStrictEdge(TRelaxation& r);
ERelaxation RelaxSurrounded(TRelaxation& r);
/// With no edge in force: watched figures, extended edge, then the general heuristics one by one, then all that is
/// left.
ERelaxation RelaxWithoutEdge(TRelaxation& r);
/// The edge goes, and what the position suggests takes its place.
ERelaxation ReplaceEdge(TRelaxation& r);

// ---- relaxation_rules.cpp

ERelaxation RelaxSweepingRook(TRelaxation& r);
ERelaxation RelaxZugzwang(TRelaxation& r);
ERelaxation RelaxSeaSnake(TRelaxation& r);
ERelaxation RelaxOneColorPlay(TRelaxation& r);
ERelaxation RelaxNearCorner(TRelaxation& r);
ERelaxation RelaxMainDiagonal(TRelaxation& r);
ERelaxation RelaxQueenChecks(TRelaxation& r);
ERelaxation RelaxPromotedQueen(TRelaxation& r);
ERelaxation RelaxSingleQueenMate(TRelaxation& r);
/// Losing figures matters less where pawns decide; where figures do, it goes only if a pawn gets through or few are
/// left.
ERelaxation RelaxSavedFiguresByType(TRelaxation& r);
ERelaxation RelaxSavedFigures(TRelaxation& r);

inline constexpr std::array kRelaxationRules{
    TRelaxationRule{"parked figures come back", BringBackParkedFigures},        // 1
    TRelaxationRule{"key figure and watched figures", SwapKeyFigureAndWatched}, // 2
    TRelaxationRule{"FindForcedMate", RelaxForcedMate},                         // 3
    TRelaxationRule{"sweeping white rook", RelaxSweepingRook},                  // 4
    TRelaxationRule{"zugzwang", RelaxZugzwang},                                 // 5
    TRelaxationRule{"sea snake", RelaxSeaSnake},                                // 6
    TRelaxationRule{"one color play", RelaxOneColorPlay},                       // 7
    TRelaxationRule{"king near corner", RelaxNearCorner},                       // 8
    TRelaxationRule{"edge to surrounded", ReplaceEdgeBySurrounded},             // 9
    TRelaxationRule{"figures dropped early", DropFiguresEarly},                 // 10
    TRelaxationRule{"main diagonal", RelaxMainDiagonal},                        // 11
    TRelaxationRule{"exchangeable key figure", RelaxExchangeableKeyFigure},     // 12
    TRelaxationRule{"strict edge", RelaxStrictEdge},                            // 13
    TRelaxationRule{"figures dropped", DropFigures},                            // 14
    TRelaxationRule{"key figure", RelaxKeyFigure},                              // 15
    TRelaxationRule{"black queen checks", RelaxQueenChecks},                    // 16
    TRelaxationRule{"promoted queen", RelaxPromotedQueen},                      // 17
    TRelaxationRule{"effective watched set", MakeWatchedEffective},             // 18
    TRelaxationRule{"single queen mate", RelaxSingleQueenMate},                 // 19
    TRelaxationRule{"saved figures by type", RelaxSavedFiguresByType},          // 20
    TRelaxationRule{"surrounded", RelaxSurrounded},                             // 21
    TRelaxationRule{"saved figures", RelaxSavedFigures},                        // 22
    TRelaxationRule{"without edge", RelaxWithoutEdge},                          // 23
    TRelaxationRule{"edge", ReplaceEdge},                                       // 24
};

} // namespace quillon
