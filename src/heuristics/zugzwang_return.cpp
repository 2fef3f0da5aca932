#include "heuristics/zugzwang_return.h"

#include <algorithm>

#include "heuristics/heuristic_moves.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr int kFewestPliesOfReturn = 14; // with fewer left there is no time to go and come back
constexpr int kMostMenAway = 2;

using TBoard = std::array<TFigure, kSquares>;

int CountMenAway(const TChessboard& b, const TBoard& home) {
    int away = 0;
    for (std::size_t s = 0; s < kSquares; ++s)
        if (IsWhite(home[s]) && b.m_board[s] != home[s])
            ++away;
    return away;
}

/// The stored board that White's men are nearest to; null if none is stored.
const TBoard* NearestHome(const TChessboard& b, int& nAway) {
    const TBoard* nearest = nullptr;
    nAway = -1;
    for (const auto& [after, home] : b.m_pAnalysis->m_zugzwangPositions) {
        const int away = CountMenAway(b, home);
        if (nearest == nullptr || away < nAway) {
            nearest = &home;
            nAway = away;
        }
    }
    return nearest;
}

int NotOnTheWay(TChessboard& b) {
    if (b.m_nMoves < kFewestPliesOfReturn)
        ClearHeuristics(b, SH_ZUGZWANG);
    return -1;
}

/// The move can be undone, or it brings a man home.
bool StaysOnTheWay(const TChessboard& b, const TBoard& home, int nAway, const TMove& move) {
    const TFigure figure = b.m_board[move.m_nFrom];
    if (home[move.m_nTo] == figure)
        return true;
    const bool bUndoable = figure != kWhitePawn && b.m_board[move.m_nTo] == kNoFigure;
    const bool bLeavesHome = home[move.m_nFrom] == figure;
    return bUndoable && (nAway == 0 || !bLeavesHome);
}

} // namespace

int CountMenAwayFromZugzwang(const TChessboard& b) {
    int away = -1;
    (void)NearestHome(b, away);
    return away;
}

int GenerateReturningMoves(TChessboard& b, TMove* list) {
    int away = -1;
    const TBoard* const home = NearestHome(b, away);
    if (home == nullptr || away > kMostMenAway)
        return NotOnTheWay(b);
    TMove checks[kMaxMoves];
    const int nChecks = away == 0 ? 0 : GenerateWhiteChecks(b, checks);
    const int count = CollectWhiteMoves(b, list, [&](const TMove& move) {
        return StaysOnTheWay(b, *home, away, move) ||
               std::any_of(checks, checks + nChecks, [&](const TMove& check) { return SameMove(check, move); });
    });
    return count != 0 ? count : NotOnTheWay(b);
}

bool RefusesQuickerSearch(const TChessboard& b) {
    const auto& stored = b.m_pAnalysis->m_zugzwangPositions;
    return std::any_of(stored.begin(), stored.end(), [&](const auto& entry) { return entry.second == b.m_board; });
}

} // namespace quillon
