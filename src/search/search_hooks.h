#pragma once
// Steps of the nodes that other folders supply. Each has its place in the recursion.

#include "core/chessboard.h"
#include "core/mate_result.h"

namespace quillon {

/// What FindMateMultithreadingLevel returns when the node is to go on by itself.
inline constexpr int kContinueHere = -128;

/// parallel: deals the sorted moves of a white node within the multithreading levels to a group of threads, and waits
/// for it. Nothing is stored for the node itself.
///   nMoves   >= 2.
///   pNode    the white node that a thread calls with its share of the moves handed in (m_byResumeList).
///   Returns  MR_MATE; else what the list leaves behind in the node: MR_REPETITION (the node's mark is raised),
///            MR_DOUBTFUL or MR_NOMATE; kContinueHere when there were no threads to be had. Nothing of it is a verdict
///            while the thread is being stopped.
///   Errors   what a thread threw, std::bad_alloc for instance, after the others have been stopped.
[[nodiscard]] int FindMateMultithreadingLevel(TChessboard& p, int nMoves, TMove* list,
                                              TMateResult (*pNode)(TChessboard*));

/// parallel: the same for a white node below the multithreading levels, its moves juggled by a scheduler.
///   nBest    so many moves at the head of the list were sorted as almost the best.
[[nodiscard]] int FindMateScheduled(TChessboard& p, int nMoves, TMove* list, int nBest,
                                    TMateResult (*pNode)(TChessboard*));

} // namespace quillon
