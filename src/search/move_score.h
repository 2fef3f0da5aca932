#pragma once
// Scores of moves in a list. A score lives in byte 3 of the move and is read as signed: the smaller comes first. The
// maker overwrites it when the move is made.

#include <algorithm>
#include <cstdint>

#include "core/figures.h"
#include "core/move.h"

namespace quillon {

inline constexpr int kScoreFirst = -128;        // a sort indication or a known variant: try first
inline constexpr int kScoreLastIndicated = -65; // several indications follow one another from kScoreFirst up to here
inline constexpr int kScoreMated = -127;        // known to mate; also the floor of the computed scores
inline constexpr int kScoreMostComputed = 125;  // computed scores are clamped to kScoreMated..this
inline constexpr int kScoreKnownNoMate = 125;   // known not to mate, or told to be avoided
inline constexpr int kScoreIllegal = 127;       // refused by the maker: behind the end of the list

/// Worth of a captured figure in the scores.
[[nodiscard]] constexpr int CaptureValue(TFigure figure) {
    switch (KindOf(figure)) {
    case kKing:
        return 10;
    case kPawn:
        return 1;
    case kBishop:
    case kKnight:
        return 3;
    case kRook:
        return 5;
    case kQueen:
        return 9;
    default:
        return 0;
    }
}

[[nodiscard]] constexpr int ClampScore(int score) { return std::clamp(score, kScoreMated, kScoreMostComputed); }

[[nodiscard]] constexpr int ScoreOf(const TMove& move) { return static_cast<std::int8_t>(move.m_nEnPassant); }
constexpr void SetScore(TMove& move, int score) { move.m_nEnPassant = static_cast<std::uint8_t>(score); }

/// Two accumulators of a score: major points count four, minor points one.
struct TScore {
    int m_nMajor = 0;
    int m_nMinor = 0;
    [[nodiscard]] constexpr int Value(int base) const { return ClampScore(m_nMinor + base + 4 * m_nMajor); }
};

/// Sorts by score, moves of equal score in their old order. Lists are short and this allocates nothing.
inline void SortByScore(TMove* list, int count) {
    for (int i = 1; i < count; ++i) {
        const TMove move = list[i];
        int at = i;
        for (; at > 0 && ScoreOf(list[at - 1]) > ScoreOf(move); --at)
            list[at] = list[at - 1];
        list[at] = move;
    }
}

/// While it lives the thread is inside a sort.
class CSortMark {
  public:
    explicit CSortMark(std::uint8_t& nesting) : m_nesting(nesting) { ++m_nesting; }
    ~CSortMark() { --m_nesting; }
    CSortMark(const CSortMark&) = delete;
    CSortMark& operator=(const CSortMark&) = delete;

  private:
    std::uint8_t& m_nesting;
};

} // namespace quillon
