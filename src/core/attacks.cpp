#include "core/attacks.h"

#include "core/knight_tables.h"
#include "core/lines.h"
#include "core/mask_attacks.h"

namespace quillon {

namespace {

enum class EColour { White, Black };

constexpr TFigure CodeOf(EColour colour) { return colour == EColour::White ? kWhite : kBlack; }

/// Squares from which a pawn of the colour attacks `square` lie one rank behind it, seen from that colour.
constexpr int PawnRankStep(EColour colour) { return colour == EColour::White ? -1 : 1; }

template <EColour kColour> bool IsKingAdjacent(const TChessboard& b, int file, int rank) {
    const int kingFile = kColour == EColour::White ? b.m_whiteKingFile : b.m_blackKingFile;
    const int kingRank = kColour == EColour::White ? b.m_whiteKingRank : b.m_blackKingRank;
    const int files = AbsDiff(file, kingFile), ranks = AbsDiff(rank, kingRank);
    return (files | ranks) != 0 && files <= 1 && ranks <= 1;
}

TFigure FigureAt(const TChessboard& b, int file, int rank) { return b.m_board[SquareAt(file, rank)]; }

template <EColour kColour> bool IsAttackedByPawn(const TChessboard& b, int file, int rank) {
    const int pawnRank = rank + PawnRankStep(kColour);
    if (pawnRank < 1 || pawnRank > 6)
        return false;
    constexpr TFigure pawn = CodeOf(kColour) | kPawn;
    return (file > 0 && WithoutMark(FigureAt(b, file - 1, pawnRank)) == pawn) ||
           (file < 7 && WithoutMark(FigureAt(b, file + 1, pawnRank)) == pawn);
}

template <EColour kColour> bool HasKnights(const TChessboard& b) {
    return (kColour == EColour::White ? b.m_whiteKnights : b.m_blackKnights) != 0;
}

template <EColour kColour> bool HasSlider(const TChessboard& b, TDirection direction) {
    return kColour == EColour::White ? HasWhiteSlider(b, direction) : HasBlackSlider(b, direction);
}

template <EColour kColour> bool IsAttackedBySliderAlong(const TChessboard& b, int square, int first, int last) {
    for (int d = first; d < last; ++d) {
        const auto direction = static_cast<TDirection>(d);
        const TSquare found = FirstOnRay(b, square, direction);
        if (found != kNoSquare && IsSliderAlong(b.m_board[found], CodeOf(kColour), direction))
            return true;
    }
    return false;
}

/// Diagonal rays first, each kind only if the colour has such a slider at all.
template <EColour kColour> bool IsAttackedByScanning(const TChessboard& b, int file, int rank) {
    const int square = SquareAt(file, rank);
    return (HasSlider<kColour>(b, kStraightDirections) &&
            IsAttackedBySliderAlong<kColour>(b, square, kStraightDirections, kDirections)) ||
           (HasSlider<kColour>(b, 0) && IsAttackedBySliderAlong<kColour>(b, square, 0, kStraightDirections));
}

template <EColour kColour> bool IsAttackedByPawnOrKnight(const TChessboard& b, int file, int rank) {
    return IsAttackedByPawn<kColour>(b, file, rank) ||
           (HasKnights<kColour>(b) && HasKnightStep(b.m_board, SquareAt(file, rank), CodeOf(kColour) | kKnight));
}

/// Does the slider on `from`, of this kind, look at `square` over an empty way?
bool SliderReaches(const TChessboard& b, TSquare from, TFigure kind, int square) {
    const TDirection direction = DirectionBetween(from, square);
    return direction != kNoDirection && SlidesAlong(kind, direction) && IsEmptyBetween(b, from, square, direction);
}

bool IsAttackedByListedSlider(const TChessboard& b, int square) {
    if (b.m_whiteQueens != 0 && SliderReaches(b, b.m_whiteQueenSquare, kQueen, square))
        return true;
    for (std::size_t i = 0; i < b.m_whiteRooks; ++i)
        if (SliderReaches(b, b.m_whiteRookSquares[i], kRook, square))
            return true;
    for (std::size_t i = 0; i < b.m_whiteBishops; ++i)
        if (SliderReaches(b, b.m_whiteBishopSquares[i], kBishop, square))
            return true;
    return false;
}

/// Calls `tell(square)` for every figure of the colour but the king that attacks the square: pawns, knights, diagonal
/// sliders, straight sliders. Stops when it returns true.
template <EColour kColour, class TTell> bool ForEachAttacker(const TChessboard& b, int file, int rank, TTell&& tell) {
    const int square = SquareAt(file, rank);
    const int pawnRank = rank + PawnRankStep(kColour);
    if (pawnRank >= 1 && pawnRank <= 6)
        for (const int pawnFile : {file - 1, file + 1})
            if (pawnFile >= 0 && pawnFile <= 7 &&
                WithoutMark(FigureAt(b, pawnFile, pawnRank)) == (CodeOf(kColour) | kPawn) &&
                tell(SquareAt(pawnFile, pawnRank)))
                return true;
    const auto& deltas = KnightDeltasOf(square);
    if (HasKnights<kColour>(b))
        for (int i = 0; i < KnightCountOf(square); ++i) {
            const auto from = static_cast<TSquare>(square + deltas[static_cast<std::size_t>(i)]);
            if (b.m_board[from] == (CodeOf(kColour) | kKnight) && tell(from))
                return true;
        }
    for (int i = 0; i < kDirections; ++i) {
        const auto direction = static_cast<TDirection>((i + kStraightDirections) % kDirections);
        if (!HasSlider<kColour>(b, direction))
            continue;
        const TSquare found = FirstOnRay(b, square, direction);
        if (found != kNoSquare && IsSliderAlong(b.m_board[found], CodeOf(kColour), direction) && tell(found))
            return true;
    }
    return false;
}

template <EColour kColour> int FindAttackers(const TChessboard& b, int file, int rank, TMove* list, int* count) {
    int result = kNoAttacker;
    int n = 0;
    ForEachAttacker<kColour>(b, file, rank, [&](TSquare from) {
        result = n == 0 ? from : kManyAttackers;
        if (list != nullptr)
            list[n] = {from, SquareAt(file, rank), 0, 0};
        ++n;
        return false;
    });
    if (count != nullptr)
        *count = n;
    return result;
}

template <EColour kColour> bool IsPinned(const TChessboard& b, int file, int rank, TSquare target) {
    const int king = kColour == EColour::White ? WhiteKingSquare(b) : BlackKingSquare(b);
    const int square = SquareAt(file, rank);
    const TDirection direction = DirectionBetween(king, square);
    constexpr EColour enemy = kColour == EColour::White ? EColour::Black : EColour::White;
    if (direction == kNoDirection || !HasSlider<enemy>(b, direction) || DirectionBetween(king, target) == direction ||
        !IsEmptyBetween(b, king, square, direction))
        return false;
    const TSquare behind = FirstOnRay(b, square, direction);
    return behind != kNoSquare && IsSliderAlong(b.m_board[behind], CodeOf(enemy), direction);
}

} // namespace

bool IsAttackedByBlackFigure(const TChessboard& b, int file, int rank) {
    return IsAttackedByPawnOrKnight<EColour::Black>(b, file, rank) ||
           IsAttackedByScanning<EColour::Black>(b, file, rank);
}

bool IsAttackedByBlack(const TChessboard& b, int file, int rank) {
    return IsKingAdjacent<EColour::Black>(b, file, rank) || IsAttackedByBlackFigure(b, file, rank);
}

bool IsAttackedByWhiteOnBoard(const TChessboard& b, int file, int rank) {
    return IsKingAdjacent<EColour::White>(b, file, rank) || IsAttackedByPawnOrKnight<EColour::White>(b, file, rank) ||
           IsAttackedByScanning<EColour::White>(b, file, rank);
}

bool IsAttackedByWhite(const TChessboard& b, int file, int rank) {
    if (b.m_bWhiteListsValid == 0)
        return IsAttackedByWhiteOnBoard(b, file, rank);
    return IsKingAdjacent<EColour::White>(b, file, rank) || IsAttackedByPawnOrKnight<EColour::White>(b, file, rank) ||
           IsAttackedByListedSlider(b, SquareAt(file, rank));
}

int FindBlackAttackers(const TChessboard& b, int file, int rank, TMove* list, int* count) {
    return FindAttackers<EColour::Black>(b, file, rank, list, count);
}

int FindWhiteAttackers(const TChessboard& b, int file, int rank, TMove* list, int* count) {
    return FindAttackers<EColour::White>(b, file, rank, list, count);
}

bool FindBlackCapturer(const TChessboard& b, int file, int rank, TSquare& square) {
    const TSquare target = SquareAt(file, rank);
    return ForEachAttacker<EColour::Black>(b, file, rank, [&](TSquare from) {
        square = from;
        return !IsBlackFigurePinned(b, FileOf(from), RankOf(from), target);
    });
}

bool FindWhiteCapturer(const TChessboard& b, int file, int rank, TSquare& square) {
    const TSquare target = SquareAt(file, rank);
    return ForEachAttacker<EColour::White>(b, file, rank, [&](TSquare from) {
        square = from;
        return !IsWhiteFigurePinned(b, FileOf(from), RankOf(from), target);
    });
}

int ListBlackCapturers(const TChessboard& b, int file, int rank, TSquare* list) {
    const TSquare target = SquareAt(file, rank);
    int n = 0;
    ForEachAttacker<EColour::Black>(b, file, rank, [&](TSquare from) {
        if (!IsBlackFigurePinned(b, FileOf(from), RankOf(from), target))
            list[n++] = from;
        return false;
    });
    return n;
}

bool IsBlackFigurePinned(const TChessboard& b, int file, int rank, TSquare target) {
    return IsPinned<EColour::Black>(b, file, rank, target);
}

bool IsWhiteFigurePinned(const TChessboard& b, int file, int rank, TSquare target) {
    return IsPinned<EColour::White>(b, file, rank, target);
}

bool IsLegalBlackEnPassant(const TChessboard& b, const TMove& move) {
    TChessboard after = b;
    after.m_board[SquareAt(FileOf(move.m_nTo), RankOf(move.m_nFrom))] = kNoFigure;
    after.m_board[move.m_nTo] = after.m_board[move.m_nFrom];
    after.m_board[move.m_nFrom] = kNoFigure;
    return !IsAttackedByWhite(after, after.m_blackKingFile, after.m_blackKingRank);
}

bool HasBlackKingFlight(const TChessboard& b, int file, int rank) {
    TChessboard lifted = b;
    lifted.m_board[SquareAt(file, rank)] = kNoFigure;
    for (TMask squares = KingAttacks(SquareAt(file, rank)); squares != 0;) {
        const int square = TakeSquare(squares);
        if (!IsBlack(b.m_board[static_cast<std::size_t>(square)]) &&
            !IsAttackedByWhite(lifted, FileOf(square), RankOf(square)))
            return true;
    }
    return false;
}

int CountBlackKingFreeSquares(const TChessboard& b) {
    TChessboard lifted = b;
    const TSquare king = BlackKingSquare(b);
    lifted.m_board[king] = kNoFigure;
    int n = 0;
    for (TMask squares = KingAttacks(king); squares != 0;) {
        const int square = TakeSquare(squares);
        n += !IsBlack(b.m_board[static_cast<std::size_t>(square)]) &&
             !IsAttackedByWhite(lifted, FileOf(square), RankOf(square));
    }
    return n;
}

bool IsEnPassantAvailable(const TChessboard& b) {
    if (b.m_pPrevious == nullptr)
        return false;
    const int from = b.m_lastMove.m_nFrom, to = b.m_lastMove.m_nTo;
    const bool bWhiteMoves = IsWhiteToMove(b);
    const int step = bWhiteMoves ? -16 : 16; // of the other side's pawn
    const TFigure moved = WithoutMark(b.m_board[static_cast<std::size_t>(to)]);
    if (to - from != step || moved != (bWhiteMoves ? kBlackPawn : kWhitePawn))
        return false;
    const int checker = bWhiteMoves ? b.m_whiteChecker : b.m_blackChecker;
    if (checker != kNoChecker && checker != to)
        return false;
    const TFigure own = bWhiteMoves ? kWhitePawn : kBlackPawn;
    return (FileOf(to) > 0 && WithoutMark(b.m_board[static_cast<std::size_t>(to - 1)]) == own) ||
           (FileOf(to) < 7 && WithoutMark(b.m_board[static_cast<std::size_t>(to + 1)]) == own);
}

} // namespace quillon
