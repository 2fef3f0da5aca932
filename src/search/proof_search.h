#pragma once
// A best-first search for a forced mate: proof numbers, depth first (df-pn, A. Nagai 2002). It goes where the least is
// left to prove, so it finds long forced mates at once that a search by plies reaches last, and it proves no absence.
//
// Its result is an order of moves and nothing else: castling, en passant and hash collisions may deceive it.

#include <cstdint>

#include "search/proof_table.h"
#include "search/proof_team.h"

namespace quillon {

/// Looks for a mate within the plies of `root`, White to move, in its slot of the context's stack; the slots below are
/// used. No heuristics are in force and no register is asked.
///   nMostNodes  bound on expanded positions; the table keeps what was found, so a later call goes on from there.
///   nNodes      counts them.
///   nThreads    1: the result and the count depend on nothing else. More: all of them work from the root over the one
///               table, the calling thread among them; fewer where the system gives no more. None is left at the end.
///   Errors      std::bad_alloc
[[nodiscard]] EProofResult SearchProof(TChessboard& root, CProofTable& table, std::uint64_t nMostNodes,
                                       std::uint64_t& nNodes, int nThreads = 1);

/// White to move in `p`, three plies left or more: the move of a shortest mate within three plies, which the table
/// tells of without a move. False if there is none, or on a stop; `move` is then as it was.
[[nodiscard]] bool FindShortMate(TChessboard& p, TMove& move);

} // namespace quillon
