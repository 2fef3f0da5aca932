#include <vector>

#include "core/chess_exception.h"
#include "core/knight_tables.h"
#include "core/lines.h"
#include "core/makers.h"
#include "core/notation.h"

namespace quillon {
namespace {

using TSources = std::vector<TSquare>;

[[noreturn]] void Fail() { throw ChessException("Error in FindPosFrom()"); }

/// The figure's code with its colour and without the mark of a pawn.
TFigure FigureCode(const TChessboard& b, TFigure figure) {
    const bool bKindOnly = figure < kWhite;
    const TFigure kind = bKindOnly ? figure : KindOf(figure);
    if (kind == kNoFigure || kind > kKnight)
        Fail();
    if (bKindOnly)
        return (IsWhiteToMove(b) ? kWhite : kBlack) | kind;
    return WithoutMark(figure);
}

void AddIfThere(const TChessboard& b, int square, TFigure figure, TSources& sources) {
    if (WithoutMark(b.m_board[static_cast<TSquare>(square)]) == figure)
        sources.push_back(static_cast<TSquare>(square));
}

/// Did the last move, a pawn's double step, pass over the square?
bool IsEnPassantTarget(const TChessboard& b, int target) {
    const TMove& last = b.m_lastMove;
    return b.m_pPrevious != nullptr && AbsDiff(last.m_nFrom, last.m_nTo) == 16 &&
           (last.m_nFrom + last.m_nTo) / 2 == target && KindOf(b.m_board[last.m_nTo]) == kPawn;
}

void AddPawnSources(const TChessboard& b, TFigure pawn, int target, TSources& sources) {
    const int forward = IsWhite(pawn) ? 8 : -8;
    const int behind = target - forward;
    if (behind < 0 || behind >= kSquares)
        return;
    const bool bEmpty = b.m_board[static_cast<TSquare>(target)] == kNoFigure;
    if (bEmpty) {
        AddIfThere(b, behind, pawn, sources);
        const int doubleStepRank = IsWhite(pawn) ? 3 : 4;
        if (RankOf(target) == doubleStepRank && b.m_board[static_cast<TSquare>(behind)] == kNoFigure)
            AddIfThere(b, behind - forward, pawn, sources);
    }
    if (!bEmpty || IsEnPassantTarget(b, target)) {
        if (FileOf(target) > 0)
            AddIfThere(b, behind - 1, pawn, sources);
        if (FileOf(target) < 7)
            AddIfThere(b, behind + 1, pawn, sources);
    }
}

/// A queen's diagonals come before her straight lines.
void AddSliderSources(const TChessboard& b, TFigure slider, int target, TSources& sources) {
    constexpr TDirection kDiagonalsFirst[] = {4, 5, 6, 7, 0, 1, 2, 3};
    for (const TDirection direction : kDiagonalsFirst) {
        if (!SlidesAlong(slider, direction))
            continue;
        const TSquare square = FirstOnRay(b, target, direction);
        if (square != kNoSquare)
            AddIfThere(b, square, slider, sources);
    }
}

void AddKnightSources(const TChessboard& b, TFigure knight, int target, TSources& sources) {
    for (int i = 0; i < KnightCountOf(target); ++i)
        AddIfThere(b, target + KnightDeltasOf(target)[static_cast<std::size_t>(i)], knight, sources);
}

/// Squares of such figures that reach the target, each once; pins and checks do not count.
TSources SourcesOf(const TChessboard& b, TFigure figure, TSquare target) {
    TSources sources;
    const TFigure onTarget = b.m_board[target];
    const bool bOwn = onTarget != kNoFigure && IsWhite(onTarget) == IsWhite(figure);
    if (bOwn || KindOf(onTarget) == kKing)
        return sources;
    switch (KindOf(figure)) {
    case kPawn:
        AddPawnSources(b, figure, target, sources);
        break;
    case kKnight:
        AddKnightSources(b, figure, target, sources);
        break;
    case kBishop:
    case kRook:
    case kQueen:
        AddSliderSources(b, figure, target, sources);
        break;
    default:
        break;
    }
    return sources;
}

bool IsLegalArrival(TChessboard& position, TFigure figure, TSquare from, TSquare target) {
    TMove move{};
    move.m_nFrom = from;
    move.m_nTo = target;
    if (KindOf(figure) == kPawn && (RankOf(target) == 0 || RankOf(target) == 7))
        move.m_nPromotion = kQueen; // all promotions are legal, or none
    TChessboard trial = position;
    trial.m_pPrevious = &position;
    if (trial.m_nMoves == 0)
        trial.m_nMoves = 2; // the question has an answer behind the last move too, and makers count plies down
    return IsWhite(figure) ? MakeWhiteMove<kLegalityOnly>(trial, move) != 0
                           : MakeBlackMove<kLegalityOnly>(trial, move, false) != kIllegalMove;
}

} // namespace

TSquare FindPosFrom(TChessboard& position, TFigure figure, TSquare target) {
    figure = FigureCode(position, figure);
    if (target >= kSquares)
        Fail();
    if (KindOf(figure) == kKing)
        return IsWhite(figure) ? WhiteKingSquare(position) : BlackKingSquare(position);
    for (const TSquare from : SourcesOf(position, figure, target))
        if (IsLegalArrival(position, figure, from, target))
            return from;
    Fail();
}

} // namespace quillon
