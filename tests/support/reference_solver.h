#pragma once

// Direct mates by plain AND/OR search over the reference rules: the verdicts that the product's search is compared
// with. Lengths are full moves of the mating side, the mating move included. The mating side is the one to move.
// Stalemate is no mate, and there is no rule of repetition or of fifty moves.

#include "support/reference_chess.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace reference {

struct Answer {
    std::vector<std::string> keys; // first moves that force mate in at most the length asked for, sorted by their text
    bool mateExists = false;
    std::uint64_t nodes = 0; // positions reached by a move
};

/// Every first move that forces mate in at most nMoves; each is tried, nothing is remembered from one line to the next.
///   Cost  grows with the full tree: #2 at once, #3 in a second or so, #4 only with few men.
[[nodiscard]] Answer SolveAll(const Position& position, int nMoves);

/// Can the side to move force mate in at most nMoves? False for nMoves below 1.
[[nodiscard]] bool ForcesMate(const Position& position, int nMoves);

/// The same verdict as SolveAll, by an ordered search that remembers proven verdicts under the full position, so that
/// no two positions can be taken for each other. For longer mates with few men.
///   Result  std::nullopt when more than maxNodes positions would have to be reached.
[[nodiscard]] std::optional<Answer> SolveAllWithTable(const Position& position, int nMoves, std::uint64_t maxNodes);

/// Length of the shortest forced mate, 0 if there is none in at most nMoves; std::nullopt as above.
[[nodiscard]] std::optional<int> ShortestMate(const Position& position, int nMoves, std::uint64_t maxNodes);

} // namespace reference
