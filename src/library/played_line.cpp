#include "library/played_line.h"

#include "core/generation.h"
#include "core/makers.h"
#include "core/search_context.h"
#include "search/analysis.h"

namespace quillon {

namespace {

constexpr int kRootPlies = 2 * kMaxStipulation - 1;
static_assert(CPlayedLine::kMostPlies == kRootPlies - 1); // with no ply left the makers could not try a move

constexpr int kNoPassWithHeuristics = 2;

/// Makes the move in the child's slot; null if it is not legal.
TChessboard* MakeMove(TChessboard& position, TMove& move) {
    TChessboard* const child = CopyToChild(&position);
    const bool bLegal = IsWhiteToMove(position) ? MakeWhiteMove<kLegalityOnly>(*child, move) != 0
                                                : MakeBlackMove<kLegalityOnly>(*child, move, false) != kIllegalMove;
    return bLegal ? child : nullptr;
}

std::vector<TMove> GeneratedMoves(const TChessboard& position) {
    TMove list[kMaxMoves];
    const int count = IsWhiteToMove(position) ? GenerateWhiteMoves(position, list) : GenerateBlackMoves(position, list);
    return {list, list + count};
}

bool IsPawnOnLastRank(const TChessboard& position, const TMove& move) {
    return KindOf(position.m_board[move.m_nFrom]) == kPawn && RankOf(move.m_nTo) == (IsWhiteToMove(position) ? 7 : 0);
}

} // namespace

struct CPlayedLine::TState {
    TAnalysis m_analysis;
    std::unique_ptr<TSearchContext> m_context = NewSearchContext();
};

CPlayedLine::CPlayedLine() : m_state(std::make_unique<TState>()) {}
CPlayedLine::~CPlayedLine() = default;

void CPlayedLine::Start(const TChessboard& start) {
    m_pPosition = MakeRoot(*m_state->m_context, m_state->m_analysis, start, kRootPlies, kNoPassWithHeuristics);
}

bool CPlayedLine::Play(TMove move) {
    TChessboard& position = *m_pPosition;
    if (position.m_nMoves == 1 || move.m_nFrom >= kSquares || move.m_nTo >= kSquares)
        return false;
    if (PromotionKind(move) == 0 && IsPawnOnLastRank(position, move))
        move.m_nPromotion = kQueen;
    for (TMove& candidate : GeneratedMoves(position))
        if (SameMove(candidate, move))
            if (TChessboard* const child = MakeMove(position, candidate)) {
                m_pPosition = child;
                return true;
            }
    return false;
}

std::vector<TMove> CPlayedLine::LegalMoves() {
    std::vector<TMove> legal;
    for (TMove& move : GeneratedMoves(*m_pPosition))
        if (MakeMove(*m_pPosition, move) != nullptr)
            legal.push_back(move);
    return legal;
}

bool CPlayedLine::IsInCheck() const {
    return (IsWhiteToMove(*m_pPosition) ? m_pPosition->m_whiteChecker : m_pPosition->m_blackChecker) != kNoChecker;
}

bool PlayOn(ChessProblem& problem, CPlayedLine& line, TMove move) {
    TChessboard& before = *problem.currentPosition;
    if (before.m_nMoves == 0 || !line.Play(move))
        return false;
    auto played = std::make_unique<TChessboard>(line.Position());
    played->m_pPrevious = &before;
    played->m_pContext = nullptr; // the record outlives the line
    played->m_pAnalysis = nullptr;
    played->m_nMoves = static_cast<std::uint16_t>(before.m_nMoves - 1);
    played->m_nInitialMoves = before.m_nInitialMoves;
    problem.currentPosition = played.get();
    problem.playedPositions.push_back(std::move(played));
    return true;
}

} // namespace quillon
