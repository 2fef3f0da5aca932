#pragma once

// Seeded positions and games for differential tests. The same state of the generator gives the same positions with
// every library and compiler: all draws go through Draw below, none through <random>'s distributions.
//
// Every placement is a legal problem diagram: one king each, kings apart, no pawn on rank 1 or 8, Black not in check
// with White to move, White in check from at most two men, White with at least one legal move, and for each side at
// most 16 men, 8 pawns, and no more promoted men than pawns are missing.
// nMen counts the kings; a bias that cannot place all of them on its board tries again with a new arrangement.

#include "support/reference_chess.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace reference {

/// Evenly spread over 0 .. bound-1; bound must be above 0.
[[nodiscard]] std::uint64_t Draw(std::mt19937_64& rng, std::uint64_t bound);

/// 0 .. bound-1 as an int, for indices and small numbers.
[[nodiscard]] int DrawInt(std::mt19937_64& rng, int bound);

/// True in `percent` of 100 cases.
[[nodiscard]] bool Chance(std::mt19937_64& rng, int percent);

/// Any material anywhere. nMen 2..20.
[[nodiscard]] std::string RandomPlacement(std::mt19937_64& rng, int nMen);

/// Mates are frequent: the black king on the edge, half of Black's men beside him, the white king near, White heavier.
[[nodiscard]] std::string RandomMatingPlacement(std::mt19937_64& rng, int nMen);

/// Mostly pawns: some about to promote, some at home next to enemy pawns that could take en passant. nMen 2..16.
[[nodiscard]] std::string RandomPawnPlacement(std::mt19937_64& rng, int nMen);

/// Kings and rooks of one or both sides on their home squares, with few men between them. nMen 3..20.
[[nodiscard]] std::string RandomCastlingPlacement(std::mt19937_64& rng, int nMen);

/// White has only knights, bishops and pawns beside the king, Black anything. nMen 2..20.
[[nodiscard]] std::string RandomMinorPlacement(std::mt19937_64& rng, int nMen);

/// One of the generators above with 4 to 12 men.
[[nodiscard]] std::string RandomAnyPlacement(std::mt19937_64& rng);

struct GameStep {
    std::string fen;  // before the move
    std::string move; // long notation
};

/// Random legal moves, at most `plies`, from a random diagram or now and then the initial array; castling, promotion
/// and en passant come up more often than their share of the moves. Shorter if the game ends in mate or stalemate. The
/// first step's position has the castling rights of a problem diagram.
[[nodiscard]] std::vector<GameStep> RandomGame(std::mt19937_64& rng, int plies);

} // namespace reference
