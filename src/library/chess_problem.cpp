#include "library/chess_problem.h"

#include <utility>

#include "core/chess_exception.h"
#include "core/search_context.h"

namespace quillon {

void PutById(TProblemMap& problems, std::unique_ptr<ChessProblem> problem) {
    const std::int32_t id = problem->id;
    problems.insert_or_assign(id, std::move(problem));
}

void SetStipulation(ChessProblem& problem, std::uint16_t kind, int nMoves) {
    if (nMoves < 1 || nMoves > kMaxStipulation)
        throw ChessException("Stipulation out of range (1 to " + std::to_string(kMaxStipulation) +
                             " moves): " + std::to_string(nMoves));
    problem.kind = kind;
    problem.plies = static_cast<std::uint16_t>(kind == kSelfmate ? 2 * nMoves + 1 : 2 * nMoves - 1);
}

void SetOriginalPosition(ChessProblem& problem, const TChessboard& board) {
    auto position = std::make_unique<TChessboard>(EmptyChessboard());
    position->m_board = board.m_board;
    position->m_nMoves = position->m_nInitialMoves = problem.plies;
    RecountFigures(*position, true);
    CheckNumberOfMen(*position);
    if (position->m_blackChecker != kNoChecker)
        throw ChessException("Black is in check with White to move.");
    problem.playedPositions.clear();
    problem.originalPosition = std::move(position);
    problem.currentPosition = problem.originalPosition.get();
}

int StipulationMoves(const ChessProblem& problem) {
    switch (problem.kind) {
    case kDirectMate:
        return (problem.plies + 1) / 2;
    case kSelfmate:
        return problem.plies / 2;
    default:
        return 0;
    }
}

std::string StipulationText(const ChessProblem& problem) {
    const int nMoves = StipulationMoves(problem);
    return nMoves == 0 ? "-" : (problem.kind == kSelfmate ? "s#" : "#") + std::to_string(nMoves);
}

const char* KindName(const ChessProblem& problem) {
    switch (problem.kind) {
    case kDirectMate:
        return "direct mate";
    case kSelfmate:
        return "selfmate";
    case kHelpmate:
        return "helpmate";
    default:
        return "position";
    }
}

} // namespace quillon
