#pragma once
// Boards as a search leaves them: one problem, in which a few men wander while the rest stands. Seeded and the same
// everywhere.

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "tempregister/register_item.h"

namespace quillon::test {

/// A small generator with the same values on every machine (splitmix64).
class CRandom {
  public:
    explicit CRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t operator()() {
        std::uint64_t z = m_state += 0x9e3779b97f4a7c15;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
        return z ^ (z >> 31);
    }

    /// 0 .. bound - 1.
    std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(((*this)() >> 32) * bound >> 32); }

  private:
    std::uint64_t m_state;
};

/// Wanders through boards of one problem: each call moves one man to an empty square.
class CBoardWalk {
  public:
    explicit CBoardWalk(std::uint64_t seed) : m_random(seed) {
        for (std::size_t i = 0; i < kFixed.size(); ++i)
            m_board[kFixed[i]] = i % 2 == 0 ? kWhitePawn : kBlackPawn;
        for (const TFigure man : kWanderers)
            Put(man);
    }

    const TBoardBytes& Next() {
        const std::uint32_t man = m_random.Below(static_cast<std::uint32_t>(m_squares.size()));
        const TFigure figure = m_board[m_squares[man]];
        m_board[m_squares[man]] = kNoFigure;
        m_squares[man] = EmptySquare();
        m_board[m_squares[man]] = figure;
        return m_board;
    }

  private:
    static constexpr std::array<TSquare, 6> kFixed{8, 48, 11, 51, 29, 37};
    static constexpr std::array<TFigure, 8> kWanderers{kWhiteKing,   kBlackKing,   kWhiteRook,   kWhiteBishop,
                                                       kWhiteKnight, kBlackKnight, kBlackBishop, kBlackQueen};

    TSquare EmptySquare() {
        for (;;) {
            const auto square = static_cast<TSquare>(m_random.Below(kSquares));
            if (m_board[square] == kNoFigure)
                return square;
        }
    }

    void Put(TFigure man) {
        m_squares.push_back(EmptySquare());
        m_board[m_squares.back()] = man;
    }

    CRandom m_random;
    TBoardBytes m_board{};
    std::vector<TSquare> m_squares;
};

/// So many boards of one walk, all different.
[[nodiscard]] inline std::vector<TBoardBytes> DifferentBoards(std::size_t count, std::uint64_t seed) {
    CBoardWalk walk(seed);
    std::set<TBoardBytes> seen;
    std::vector<TBoardBytes> boards;
    while (boards.size() < count)
        if (const TBoardBytes& board = walk.Next(); seen.insert(board).second)
            boards.push_back(board);
    return boards;
}

} // namespace quillon::test
