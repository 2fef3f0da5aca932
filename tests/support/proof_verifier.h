#pragma once

// Replays a claimed mate against every defence. Whoever claims it names White's moves; what they lead to is judged by
// the reference rules alone, so a claim that stands here is true however it was come by.

#include "support/reference_chess.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

/// A position with White to move on the way to the mate.
struct Turn {
    const Position& position;
    int movesLeft;                        // White's, the mating move included
    const std::vector<std::string>& line; // the moves from the root to here, in long notation
};

/// Names a move that mates within the moves left, in long notation; empty if it knows none.
using MoveOracle = std::function<std::string(const Turn&)>;

enum class ProofVerdict : std::uint8_t {
    Proved,   // every defence ends in mate in time
    Failed,   // one does not, by the oracle's moves
    TooLarge, // more positions than allowed
};

struct ProofReport {
    ProofVerdict verdict = ProofVerdict::Proved;
    std::string fault;           // why not, with the line that shows it; empty for Proved
    std::uint64_t positions = 0; // in which the oracle was asked
};

/// Does `key` mate within nMoves, against all replies?
///   Cost  a position of White's is asked for once, transpositions with fewer moves left excepted; at most
///         maxPositions of them.
[[nodiscard]] ProofReport VerifyMate(const Position& root, int nMoves, std::string_view key, const MoveOracle& oracle,
                                     std::uint64_t maxPositions);

/// Does the line of moves, in long notation, end in mate after at most nMoves of White's?
///   Result  empty if so, otherwise what is wrong with it.
[[nodiscard]] std::string FaultOfMatingLine(const Position& root, int nMoves, const std::vector<std::string>& line);

} // namespace reference
