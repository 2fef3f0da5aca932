#pragma once
// How the moves of a node are dealt to a group of threads: how many, which numbers, which moves.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/move.h"

namespace quillon {

/// A group is never larger.
inline constexpr int kMostThreadsOfGroup = 64;

/// The highest number a thread may have; a node whose threads would get higher ones is analysed without threads.
inline constexpr std::uint32_t kLastThreadNumber = 0x7FFFF;

/// Threads of the group for a node with `nMoves` moves.
///   nWanted  threads that a group is to have, >= 1.
///   nLimit   of the analysis, 1: a group is none; 0: there is no limit.
[[nodiscard]] int GroupSize(int nMoves, int nWanted, int nLimit);

/// Number of the first thread of a group; thread i of it has i more. In a tree of full groups every thread has a number
/// of its own; where a level has been left out (a forced move) or groups are capped, two may have the same. The search
/// does not look at numbers. A command to a number is for every thread that has it, until the first of them has ended.
///   nLevel   moves of White played before the node, >= 1.
///   nParent  number of the thread that forms the group.
///   nWanted  threads a group is to have; nSize: threads this one gets.
[[nodiscard]] std::uint64_t FirstThreadNumber(int nLevel, std::uint32_t nParent, int nWanted, int nSize);

/// The sorted moves dealt like cards: move j goes to thread j mod nThreads, so that each starts with a good one.
[[nodiscard]] std::vector<std::vector<TMove>> DealMoves(const TMove* moves, int nMoves, int nThreads);

/// Stack that the recursion of a search thread takes, bytes, without the lists of moves.
///   nPlies  of the whole analysis.
[[nodiscard]] std::size_t ThreadStackBytes(int nPlies);

} // namespace quillon
