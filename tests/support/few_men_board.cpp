#include "support/few_men_board.h"

#include <cassert>
#include <cstdlib>

namespace reference {

namespace {

constexpr int kSteps[16][2] = {{1, 0}, {-1, 0}, {0, 1},  {0, -1}, {1, 1},   {1, -1},  {-1, 1}, {-1, -1},
                               {1, 2}, {2, 1},  {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}; // file, rank

// The square one step on, by direction; off the board over the edge.
constexpr auto kNext = [] {
    std::array<std::array<int, 16>, 64> next{};
    for (int square = 0; square < 64; ++square)
        for (int d = 0; d < 16; ++d) {
            const int file = square % 8 + kSteps[d][0], rank = square / 8 + kSteps[d][1];
            next[static_cast<std::size_t>(square)][static_cast<std::size_t>(d)] =
                file < 0 || file > 7 || rank < 0 || rank > 7 ? FewMenBoard::kOffBoard : rank * 8 + file;
        }
    return next;
}();

int Sign(int number) { return (number > 0) - (number < 0); }

} // namespace

int FewMenBoard::Next(int square, int direction) {
    return kNext[static_cast<std::size_t>(square)][static_cast<std::size_t>(direction)];
}

FewMenBoard::Way FewMenBoard::WayOf(char letter) {
    switch (letter) {
    case 'K':
    case 'k':
        return {0, 8, false};
    case 'Q':
    case 'q':
        return {0, 8, true};
    case 'R':
    case 'r':
        return {0, 4, true};
    case 'B':
    case 'b':
        return {4, 8, true};
    default:
        return {8, 16, false}; // a knight
    }
}

FewMenBoard::FewMenBoard(std::string_view letters) : m_count(letters.size()) {
    assert(letters.size() <= kMaxMen);
    letters.copy(m_letters.data(), m_count);
    m_squares.fill(kOffBoard);
    m_men.fill(kNobody);
}

void FewMenBoard::Put(int man, int square) {
    m_squares[static_cast<std::size_t>(man)] = square;
    m_men[static_cast<std::size_t>(square)] = man;
}

void FewMenBoard::Lift(int man) {
    if (SquareOf(man) == kOffBoard)
        return;
    m_men[static_cast<std::size_t>(SquareOf(man))] = kNobody;
    m_squares[static_cast<std::size_t>(man)] = kOffBoard;
}

bool FewMenBoard::Set(std::span<const int> squares) {
    assert(squares.size() == m_count);
    for (int man = 0; man < static_cast<int>(m_count); ++man)
        Lift(man);
    for (int man = 0; man < static_cast<int>(m_count); ++man) {
        const int square = squares[static_cast<std::size_t>(man)];
        if (ManOn(square) != kNobody || (IsPawn(man) && (square < 8 || square >= 56)))
            return false;
        Put(man, square);
    }
    return true;
}

void FewMenBoard::Play(const Move& move) {
    if (move.taken != kNobody)
        Lift(move.taken);
    Lift(move.man);
    Put(move.man, move.to);
    if (move.promotion != 0)
        m_letters[static_cast<std::size_t>(move.man)] = move.promotion;
}

// Who was taken is put back by the caller, who knows where he stood.
void FewMenBoard::TakeBack(const Move& move, char letter) {
    Lift(move.man);
    Put(move.man, move.from);
    m_letters[static_cast<std::size_t>(move.man)] = letter;
}

bool FewMenBoard::IsFree(int from, int to) const {
    const int step = Sign(to / 8 - from / 8) * 8 + Sign(to % 8 - from % 8);
    for (int square = from + step; square != to; square += step)
        if (ManOn(square) != kNobody)
            return false;
    return true;
}

bool FewMenBoard::Attacks(int man, int square) const {
    const int from = SquareOf(man);
    const int files = square % 8 - from % 8, ranks = square / 8 - from / 8;
    const bool straight = (files == 0) != (ranks == 0), diagonal = files != 0 && std::abs(files) == std::abs(ranks);
    switch (Letter(man)) {
    case 'K':
    case 'k':
        return std::abs(files) <= 1 && std::abs(ranks) <= 1;
    case 'Q':
    case 'q':
        return (straight || diagonal) && IsFree(from, square);
    case 'R':
    case 'r':
        return straight && IsFree(from, square);
    case 'B':
    case 'b':
        return diagonal && IsFree(from, square);
    case 'P':
        return std::abs(files) == 1 && ranks == 1;
    case 'p':
        return std::abs(files) == 1 && ranks == -1;
    default:
        return std::abs(files * ranks) == 2; // a knight
    }
}

bool FewMenBoard::IsInCheck(bool white) const {
    const int king = SquareOf(white ? 0 : 1);
    for (int man = 0; man < static_cast<int>(m_count); ++man)
        if (IsWhite(man) != white && SquareOf(man) != kOffBoard && Attacks(man, king))
            return true;
    return false;
}

int FewMenBoard::DoubleStepperOf(const Move& move) const {
    if (!IsPawn(move.man) || std::abs(move.to - move.from) != 16)
        return kNobody;
    for (const int side : {-1, 1})
        if (move.to % 8 + side >= 0 && move.to % 8 + side <= 7)
            if (const int there = ManOn(move.to + side);
                there != kNobody && IsPawn(there) && IsWhite(there) != IsWhite(move.man))
                return move.man;
    return kNobody;
}

} // namespace reference
