#pragma once
// The two move makers. They apply a pseudo-legal move to a copy of the parent (search_context.h, CopyToChild), prove it
// legal, keep every derived field current and detect check from the moved figure and one discovered ray.

#include "core/chessboard.h"
#include "core/move.h"

namespace quillon {

/// What a maker does besides the rules of chess. Named values of a template parameter.
struct TMakerRules {
    bool m_bUselessMoves; // White: refuse moves after which mate is impossible on material, and moves that a heuristic
                          // in force forbids. Black: recognise certain escapes.
};
inline constexpr TMakerRules kSolving{true};
inline constexpr TMakerRules kLegalityOnly{false};

/// Returns 1 if the move stands, 0 if it is illegal or of no use. After 0 the position is in an undefined state and the
/// caller abandons the slot. Sets byte 3 of `move`.
template <TMakerRules kRules = kSolving> int MakeWhiteMove(TChessboard& b, TMove& move);

/// Results of MakeBlackMove.
inline constexpr int kIllegalMove = 0;
inline constexpr int kMoveStands = 1;
inline constexpr int kCertainEscape = -1; // the move stands and Black has thereby escaped for certain

/// bLegal: the caller guarantees legality (the list came through the black move sort); the king-safety test is skipped.
template <TMakerRules kRules = kSolving> int MakeBlackMove(TChessboard& b, TMove& move, bool bLegal);

extern template int MakeWhiteMove<kSolving>(TChessboard&, TMove&);
extern template int MakeWhiteMove<kLegalityOnly>(TChessboard&, TMove&);
extern template int MakeBlackMove<kSolving>(TChessboard&, TMove&, bool);
extern template int MakeBlackMove<kLegalityOnly>(TChessboard&, TMove&, bool);

} // namespace quillon
