#pragma once

// King and one piece against king, solved backwards from the mates: the length of every mate, by the rules alone.

#include <array>
#include <cstdint>
#include <vector>

namespace reference {

class ThreeMenTable {
  public:
    /// White's piece: 'Q' or 'R'. Takes a moment.
    explicit ThreeMenTable(char piece);

    /// White to move: the moves to mate, the mating one among them; 0 if there is none, and for squares that are no
    /// legal position.
    [[nodiscard]] int Length(int whiteKing, int piece, int blackKing) const {
        return m_whiteMates[Number(whiteKing, piece, blackKing)];
    }

  private:
    static constexpr int kSquares = 64;

    struct TSquares {
        int whiteKing, piece, blackKing;
    };

    [[nodiscard]] static std::size_t Number(int whiteKing, int piece, int blackKing) {
        return static_cast<std::size_t>((whiteKing * kSquares + piece) * kSquares + blackKing);
    }
    [[nodiscard]] int Directions() const;
    [[nodiscard]] bool PieceAttacks(int from, int target, int whiteKing, int blackKing) const;
    [[nodiscard]] bool IsIllegal(int whiteKing, int piece, int blackKing, bool whiteToMove) const;
    [[nodiscard]] bool BlackIsLost(int whiteKing, int piece, int blackKing, int moves) const;
    void AddMated(std::vector<TSquares>& lost);
    void TakeMatingMovesBack(const TSquares& lost, int moves, std::vector<TSquares>& mates);
    void AddMate(const TSquares& squares, int moves, std::vector<TSquares>& mates);
    void TakeBlackMovesBack(const TSquares& mate, int moves, std::vector<TSquares>& lost);

    bool m_bQueen;
    std::vector<std::uint8_t> m_whiteMates; // White to move, by Number; 0: not, or not yet
    std::vector<bool> m_blackLost;          // Black to move
};

} // namespace reference
