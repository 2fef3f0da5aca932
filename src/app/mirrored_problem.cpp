#include "app/mirrored_problem.h"

#include <algorithm>
#include <utility>

#include "core/castling.h"
#include "core/chess_exception.h"
#include "core/heuristic_parameters.h"
#include "core/set_of_squares.h"
#include "heuristics/heuristic_clauses.h"

namespace quillon {

namespace {

TChessboard MirroredBoard(const TChessboard& b, TMirror mirror) {
    TChessboard mirrored = EmptyChessboard();
    for (TSquare square = 0; square < kSquares; ++square)
        mirrored.m_board[MirrorSquare(square, mirror)] = b.m_board[square];
    return mirrored;
}

bool CanCastle(const TChessboard& b) { return WhiteCastlingsOnBoard(b) != 0 || BlackCastlingsOnBoard(b) != 0; }

/// A text that cannot be read stays: it fails in the copy as it does in the problem.
std::string MirroredSquares(const std::string& text, TMirror mirror) {
    try {
        std::string mirrored;
        for (const TSquare square : ParseSetOfSquares(text)) {
            const TSquare target = MirrorSquare(square, mirror);
            mirrored += {static_cast<char>('A' + FileOf(target)), static_cast<char>('1' + RankOf(target))};
        }
        return mirrored;
    } catch (const ChessException&) {
        return text;
    }
}

std::vector<TMove> Mirrored(std::vector<TMove> moves, TMirror mirror) {
    for (TMove& move : moves)
        move = MirrorMove(move, mirror);
    return moves;
}

SortIndications Mirrored(const SortIndications& indications, TMirror mirror) {
    const std::vector<SortIndication> mirrored = MirrorIndications({indications.begin(), indications.end()}, mirror);
    return {mirrored.begin(), mirrored.end()};
}

void MirrorVariants(ChessProblem& copy, TMirror mirror) {
    for (auto& [name, variant] : copy.variants)
        for (VariantMove& move : variant.moves)
            move.move = MirrorMove(move.move, mirror);
}

/// The fields that are the same in all copies.
void CopyOptions(const ChessProblem& problem, ChessProblem& copy) {
    copy.kind = problem.kind;
    copy.id = problem.id;
    copy.plies = problem.plies;
    copy.line = problem.line;
    copy.flags = problem.flags;
    copy.threads = problem.threads;
    copy.levels = problem.levels;
    copy.schedulerLevels = problem.schedulerLevels;
    copy.lichessLevels = problem.lichessLevels;
    copy.globRegMB = problem.globRegMB;
    copy.stopRelaxHeuristicsOnFirstSolution = problem.stopRelaxHeuristicsOnFirstSolution;
    copy.useMainVariantAsSortIndications = problem.useMainVariantAsSortIndications;
    copy.description = problem.description;
    copy.guiCheckCount = problem.guiCheckCount;
    copy.requiredMaterials = problem.requiredMaterials;
    copy.allSolutionsRequiredMaterials = problem.allSolutionsRequiredMaterials;
    copy.tags = problem.tags;
}

} // namespace

TSquare MirrorSquare(TSquare square, TMirror mirror) {
    if (square >= kSquares)
        return square;
    int file = FileOf(square), rank = RankOf(square);
    if ((mirror & kMirrorFiles) != 0)
        file = 7 - file;
    if ((mirror & kMirrorRanks) != 0)
        rank = 7 - rank;
    if ((mirror & kMirrorDiagonal) != 0)
        std::swap(file, rank);
    return SquareAt(file, rank);
}

TMove MirrorMove(TMove move, TMirror mirror) {
    move.m_nFrom = MirrorSquare(move.m_nFrom, mirror);
    move.m_nTo = MirrorSquare(move.m_nTo, mirror);
    return move;
}

std::vector<SortIndication> MirrorIndications(std::vector<SortIndication> indications, TMirror mirror) {
    for (SortIndication& indication : indications) {
        indication.m_nFrom = MirrorSquare(indication.m_nFrom, mirror);
        indication.m_nTo = MirrorSquare(indication.m_nTo, mirror);
    }
    return indications;
}

std::vector<TMirror> MirrorsOf(const ChessProblem& problem) {
    const TChessboard& board = *problem.originalPosition;
    if (CanCastle(board))
        return {};
    const TMirror last = board.m_whitePawns + board.m_blackPawns != 0 ? kMirrorFiles : kLastMirror;
    std::vector<TMirror> mirrors;
    for (TMirror mirror = kMirrorFiles; mirror <= last; ++mirror)
        if (!CanCastle(MirroredBoard(board, mirror)))
            mirrors.push_back(mirror);
    return mirrors;
}

std::vector<TMirror> RunsOf(const ChessProblem& problem, bool bSolveMirrors) {
    if (!bSolveMirrors && (problem.flags & kFlagMirrorOnly) != 0)
        return {};
    std::vector<TMirror> runs{kAsGiven};
    if (bSolveMirrors && (problem.flags & kFlagNoMirror) == 0)
        for (const TMirror mirror : MirrorsOf(problem))
            runs.push_back(mirror);
    return runs;
}

ChessProblem MirroredProblem(const ChessProblem& problem, TMirror mirror) {
    ChessProblem copy;
    CopyOptions(problem, copy);
    SetOriginalPosition(copy, MirroredBoard(*problem.originalPosition, mirror));
    copy.answer = Mirrored(problem.answer, mirror);
    copy.expectedWhiteMoves = Mirrored(problem.expectedWhiteMoves, mirror);
    copy.heuristicClauses = problem.heuristicClauses;
    if (const auto clause = copy.heuristicClauses.find(SH_DONTLETFIGUREUNBLOCK); clause != copy.heuristicClauses.end())
        clause->second = MirroredSquares(clause->second, mirror);
    copy.variants = problem.variants;
    MirrorVariants(copy, mirror);
    copy.sortIndications = Mirrored(problem.sortIndications, mirror);
    return copy;
}

} // namespace quillon
