#pragma once

// Endgame tables by the rules of chess alone: every position of a material is looked at again and again, each time for
// mates that are one move longer, until none turns up. Slow on purpose; nothing is derived that can be tried.

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/few_men_board.h"

namespace reference {

class RetrogradeTables;

/// All positions of one material without castling. A right to take en passant is no part of a position; what a double
/// step gives rise to is looked at in the position before it.
class RetrogradeTable {
  public:
    /// Where the men stand: the white king, the black king, the others in the order of the material's letters.
    using Squares = std::span<const int>;

    static constexpr int kNotLost = -1;

    /// Solves it, after all that it can turn into. The material is what stands beside the kings, in the order of
    /// "QRBNPqrbnp", three men at most: "QRp".
    RetrogradeTable(const std::string& material, RetrogradeTables& others);

    /// White to move: moves to mate, the mating one among them; 0 if there is none, and for what is no position.
    [[nodiscard]] int MateIn(Squares squares) const;

    /// Black to move: moves that White needs to mate him, 0 if he is mated; kNotLost if White cannot.
    [[nodiscard]] int MatedIn(Squares squares) const;

    /// Can these be the squares of a position with this side to move?
    [[nodiscard]] bool IsLegal(Squares squares, bool whiteToMove) const;

    /// With White to move; 0 if he can never mate.
    [[nodiscard]] int LongestMate() const { return m_longest; }

  private:
    using Move = FewMenBoard::Move;
    using Values = std::vector<std::uint8_t>; // by Number; see kIllegal

    // A table that a capture or a promotion leads to, and the numbers that its men have in this one.
    struct Conversion {
        const RetrogradeTable* table = nullptr;
        std::size_t count = 0;
        std::array<std::size_t, FewMenBoard::kMaxMen> men{};
    };

    void FindReflections();
    void FindConversions(RetrogradeTables& others);
    void AddConversion(RetrogradeTables& others, std::size_t man, std::size_t taken, char promotion);
    [[nodiscard]] Conversion& ConversionBy(std::size_t man, std::size_t taken, char promotion);
    void Solve();
    void MarkIllegal();
    [[nodiscard]] bool Sweep(bool white, int moves);
    [[nodiscard]] bool WhiteMates(FewMenBoard& board, int moves, int doubleStepper);
    [[nodiscard]] bool BlackIsMated(FewMenBoard& board, int moves, int doubleStepper);
    [[nodiscard]] std::uint8_t After(const FewMenBoard& board, const Move& move, bool whiteToMove);
    [[nodiscard]] std::size_t Number(Squares squares) const;
    [[nodiscard]] bool Place(std::size_t number, FewMenBoard& board) const;

    std::string m_letters;                                // of all men, "Kk" first
    std::vector<int> m_whiteKingSquares;                  // the others are reflections of these
    std::array<std::size_t, 64> m_reflection{}, m_slot{}; // of the white king's square: to there, and which that is
    std::array<std::array<std::array<Conversion, 5>, FewMenBoard::kMaxMen + 1>, FewMenBoard::kMaxMen> m_conversions{};
    Values m_white; // White to move: moves to mate
    Values m_black; // Black to move: moves until he is mated, and one more
    int m_longest = 0, m_longestConversion = 0;
};

/// Tables as they are asked for, with those that these need.
class RetrogradeTables {
  public:
    const RetrogradeTable& Of(const std::string& material);

  private:
    std::map<std::string, std::unique_ptr<RetrogradeTable>> m_tables;
};

} // namespace reference
