#include "support/three_men_table.h"

#include <cstdlib>

namespace reference {

namespace {

constexpr int kAllSteps[] = {1, 0, -1, 0, 0, 1, 0, -1, 1, 1, 1, -1, -1, 1, -1, -1};
constexpr int kDirections = 8, kStraightDirections = 4;

bool AreNeighbours(int a, int b) { return a != b && std::abs(a % 8 - b % 8) <= 1 && std::abs(a / 8 - b / 8) <= 1; }

// The square one step on, by direction; -1 over the edge.
constexpr auto kNext = [] {
    std::array<std::array<int, kDirections>, 64> next{};
    for (int square = 0; square < 64; ++square)
        for (int d = 0; d < kDirections; ++d) {
            const int file = square % 8 + kAllSteps[2 * d], rank = square / 8 + kAllSteps[2 * d + 1];
            next[static_cast<std::size_t>(square)][static_cast<std::size_t>(d)] =
                file < 0 || file > 7 || rank < 0 || rank > 7 ? -1 : rank * 8 + file;
        }
    return next;
}();

int Step(int square, int direction) {
    return kNext[static_cast<std::size_t>(square)][static_cast<std::size_t>(direction)];
}

} // namespace

// Each position is found once: those that Black has lost, then those from which White reaches them, and so on.
ThreeMenTable::ThreeMenTable(char piece)
    : m_bQueen(piece == 'Q'), m_whiteMates(kSquares * kSquares * kSquares), m_blackLost(m_whiteMates.size()) {
    std::vector<TSquares> lost, mates;
    AddMated(lost);
    for (int moves = 1; !lost.empty(); ++moves) {
        mates.clear();
        for (const TSquares& squares : lost)
            TakeMatingMovesBack(squares, moves, mates);
        lost.clear();
        for (const TSquares& squares : mates)
            TakeBlackMovesBack(squares, moves, lost);
    }
}

void ThreeMenTable::AddMated(std::vector<TSquares>& lost) {
    for (int w = 0; w < kSquares; ++w)
        for (int p = 0; p < kSquares; ++p)
            for (int b = 0; b < kSquares; ++b)
                if (PieceAttacks(p, b, w, -1) && BlackIsLost(w, p, b, 0)) {
                    m_blackLost[Number(w, p, b)] = true;
                    lost.push_back({w, p, b});
                }
}

void ThreeMenTable::TakeMatingMovesBack(const TSquares& lost, int moves, std::vector<TSquares>& mates) {
    for (int d = 0; d < kDirections; ++d)
        if (const int from = Step(lost.whiteKing, d); from != -1)
            AddMate({from, lost.piece, lost.blackKing}, moves, mates);
    for (int d = 0; d < Directions(); ++d)
        for (int from = Step(lost.piece, d); from != -1 && from != lost.whiteKing && from != lost.blackKing;
             from = Step(from, d))
            AddMate({lost.whiteKing, from, lost.blackKing}, moves, mates);
}

void ThreeMenTable::AddMate(const TSquares& squares, int moves, std::vector<TSquares>& mates) {
    std::uint8_t& length = m_whiteMates[Number(squares.whiteKing, squares.piece, squares.blackKing)];
    if (length != 0 || IsIllegal(squares.whiteKing, squares.piece, squares.blackKing, true))
        return;
    length = static_cast<std::uint8_t>(moves);
    mates.push_back(squares);
}

void ThreeMenTable::TakeBlackMovesBack(const TSquares& mate, int moves, std::vector<TSquares>& lost) {
    for (int d = 0; d < kDirections; ++d) {
        const int from = Step(mate.blackKing, d);
        if (from == -1 || m_blackLost[Number(mate.whiteKing, mate.piece, from)] ||
            !BlackIsLost(mate.whiteKing, mate.piece, from, moves))
            continue;
        m_blackLost[Number(mate.whiteKing, mate.piece, from)] = true;
        lost.push_back({mate.whiteKing, mate.piece, from});
    }
}

// The first four of all are straight.
int ThreeMenTable::Directions() const { return m_bQueen ? kDirections : kStraightDirections; }

// The white king blocks, and so does the black one where it is not on its way: -1 then.
bool ThreeMenTable::PieceAttacks(int from, int target, int whiteKing, int blackKing) const {
    for (int d = 0; d < Directions(); ++d)
        for (int s = Step(from, d); s != -1; s = Step(s, d)) {
            if (s == target)
                return true;
            if (s == whiteKing || s == blackKing)
                break;
        }
    return false;
}

bool ThreeMenTable::IsIllegal(int whiteKing, int piece, int blackKing, bool whiteToMove) const {
    return whiteKing == piece || piece == blackKing || whiteKing == blackKing || AreNeighbours(whiteKing, blackKing) ||
           (whiteToMove && PieceAttacks(piece, blackKing, whiteKing, -1));
}

bool ThreeMenTable::BlackIsLost(int whiteKing, int piece, int blackKing, int moves) const {
    if (IsIllegal(whiteKing, piece, blackKing, false))
        return false;
    bool hasMove = false;
    for (int d = 0; d < kDirections; ++d) {
        const int to = Step(blackKing, d);
        if (to == -1 || to == whiteKing || AreNeighbours(to, whiteKing))
            continue;
        if (to == piece)
            return false; // takes it
        if (PieceAttacks(piece, to, whiteKing, -1))
            continue;
        hasMove = true;
        const int length = m_whiteMates[Number(whiteKing, piece, to)];
        if (length == 0 || length > moves)
            return false;
    }
    return hasMove || PieceAttacks(piece, blackKing, whiteKing, -1);
}

} // namespace reference
