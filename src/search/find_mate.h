#pragma once
// The mate recursion: can White force mate within m_nMoves plies, against every defence?
//
// Two mutually recursive functions, an OR node with White to move (m_nMoves odd) and an AND node with Black to move. No
// evaluation, no bounds, no deepening: a result is exact or it is called doubtful. What answers most nodes before their
// moves are tried (register, precalculated data, short-mate search, heuristic checks) are named steps.
//
// Stack:   a node builds its children in slot m_nMoves of the thread's context.
// Stop:    a stopped thread returns MR_NOMATE upwards; who called must look at m_nStopRequest or the control record
// before
//          it believes a result, and every store does.

#include "core/chessboard.h"
#include "core/mate_result.h"

namespace quillon {

/// Compile-time choices of the two nodes.
struct TNodeKind {
    bool m_bLog = false;    // call the analysis' INodeLog for each move and verdict
    bool m_bForced = false; // a FindForcedMate run: White takes forcing moves only (heuristics/forced_mate.h)
};
inline constexpr TNodeKind kPlainNode{};
inline constexpr TNodeKind kLoggingNode{true};
inline constexpr TNodeKind kForcedNode{false, true};
inline constexpr TNodeKind kLoggingForcedNode{true, true};

/// White to move in `p`, m_nMoves odd.
///   bUseRegister  may the register answer for this very position?
///   Returns MR_MATE, MR_NOMATE, MR_DOUBTFUL, MR_REPETITION or MR_FFM_END.
template <TNodeKind kKind = kPlainNode> TMateResult FindMateWhite(TChessboard* p, bool bUseRegister);

/// Black to move in `p`, m_nMoves even; 0 plies: the mate test.
///   Returns the same, or MR_NONE (a sort found that Black escapes).
template <TNodeKind kKind = kPlainNode> TMateResult FindMateBlack(TChessboard* p);

/// White to move in `p`, m_nMoves = 1: is there a mate on the move?
[[nodiscard]] bool FindMateInOne(TChessboard* p);

/// What a look for a mate on the move finds on its way.
struct TLookForMate {
    bool m_bMate;
    int m_nFlights; // of the black king as things stand: free squares that White does not attack, 0..8
};

/// White to move in `b`, whose m_nMoves is not looked at: HasMateInOne (core/queries.h), and the flights.
[[nodiscard]] TLookForMate LookForMateInOne(const TChessboard& b);

extern template TMateResult FindMateWhite<kPlainNode>(TChessboard*, bool);
extern template TMateResult FindMateWhite<kLoggingNode>(TChessboard*, bool);
extern template TMateResult FindMateWhite<kForcedNode>(TChessboard*, bool);
extern template TMateResult FindMateWhite<kLoggingForcedNode>(TChessboard*, bool);
extern template TMateResult FindMateBlack<kPlainNode>(TChessboard*);
extern template TMateResult FindMateBlack<kLoggingNode>(TChessboard*);
extern template TMateResult FindMateBlack<kForcedNode>(TChessboard*);
extern template TMateResult FindMateBlack<kLoggingForcedNode>(TChessboard*);

} // namespace quillon
