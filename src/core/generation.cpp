#include "core/generation.h"

#include "core/attacks.h"
#include "core/figure_masks.h"
#include "core/knight_tables.h"
#include "core/lines.h"
#include "core/search_context.h"

namespace quillon {

namespace {

enum class EColour { White, Black };

constexpr EColour Other(EColour colour) { return colour == EColour::White ? EColour::Black : EColour::White; }
constexpr TFigure CodeOf(EColour colour) { return colour == EColour::White ? kWhite : kBlack; }

/// What differs between the colours in pawn moves and castling.
struct TSide {
    int m_nForward;           // square difference of a pawn's step
    int m_nDoubleStepRank;    // rank a double step starts from
    int m_nPromotionFromRank; // rank the last step starts from
    int m_nEnPassantRank;     // rank a pawn captures en passant from
    TSquare m_nKingHome;
};
constexpr TSide SideOf(EColour colour) {
    return colour == EColour::White ? TSide{8, 1, 6, 4, kE1} : TSide{-8, 6, 1, 3, kE8};
}

template <EColour kColour> bool IsOwn(TFigure figure) {
    return kColour == EColour::White ? IsWhite(figure) : IsBlack(figure);
}
template <EColour kColour> bool IsEnemy(TFigure figure) { return IsOwn<Other(kColour)>(figure); }

template <EColour kColour> TSquare KingSquare(const TChessboard& b) {
    return kColour == EColour::White ? WhiteKingSquare(b) : BlackKingSquare(b);
}
template <EColour kColour> int Checker(const TChessboard& b) {
    return kColour == EColour::White ? b.m_whiteChecker : b.m_blackChecker;
}
template <EColour kColour> bool IsAttacked(const TChessboard& b, TSquare square) {
    return kColour == EColour::White ? IsAttackedByBlack(b, FileOf(square), RankOf(square))
                                     : IsAttackedByWhite(b, FileOf(square), RankOf(square));
}

/// Writes moves one behind the other.
class CMoveWriter {
  public:
    explicit CMoveWriter(TMove* list) : m_begin(list), m_end(list) {}
    void Add(int from, int to, TFigure promotion = 0) {
        *m_end++ = {static_cast<std::uint8_t>(from), static_cast<std::uint8_t>(to), promotion, 0};
    }
    void AddPromotions(int from, int to) {
        for (const TFigure kind : {kQueen, kRook, kBishop, kKnight})
            Add(from, to, kind);
    }
    [[nodiscard]] int Count() const { return static_cast<int>(m_end - m_begin); }

  private:
    TMove* m_begin;
    TMove* m_end;
};

template <EColour kColour> void AddRays(const TChessboard& b, int from, int first, int last, CMoveWriter& out) {
    for (int d = first; d < last; ++d) {
        const int step = kSteps[static_cast<std::size_t>(d)];
        int square = from;
        for (int n = kSquaresToEdge[static_cast<std::size_t>(d)][static_cast<std::size_t>(from)]; n > 0; --n) {
            square += step;
            const TFigure figure = b.m_board[static_cast<std::size_t>(square)];
            if (figure == kNoFigure) {
                out.Add(from, square);
                continue;
            }
            if (IsEnemy<kColour>(figure))
                out.Add(from, square);
            break;
        }
    }
}

template <EColour kColour> void AddKnightMoves(const TChessboard& b, int from, CMoveWriter& out) {
    const auto& deltas = KnightDeltasOf(from);
    const int count = KnightCountOf(from);
    for (int i = 0; i < count; ++i) {
        const int to = from + deltas[static_cast<std::size_t>(i)];
        if (!IsOwn<kColour>(b.m_board[static_cast<std::size_t>(to)]))
            out.Add(from, to);
    }
}

template <EColour kColour> void AddPawnArrival(int from, int to, CMoveWriter& out) {
    if (RankOf(from) == SideOf(kColour).m_nPromotionFromRank)
        out.AddPromotions(from, to);
    else
        out.Add(from, to);
}

/// Is the pawn beside (file, rank of capture) one that has just made its double step?
template <EColour kColour> bool CanCaptureEnPassant(const TChessboard& b, int victim) {
    constexpr TFigure pawn = CodeOf(Other(kColour)) | kPawn;
    return b.m_pPrevious != nullptr && b.m_lastMove.m_nTo == victim &&
           b.m_lastMove.m_nFrom == victim + 2 * SideOf(kColour).m_nForward &&
           WithoutMark(b.m_board[static_cast<std::size_t>(victim)]) == pawn;
}

template <EColour kColour> void AddPawnCapture(const TChessboard& b, int from, int fileStep, CMoveWriter& out) {
    constexpr TSide side = SideOf(kColour);
    if (!IsOnBoard(FileOf(from) + fileStep, RankOf(from)))
        return;
    const int to = from + side.m_nForward + fileStep;
    const TFigure figure = b.m_board[static_cast<std::size_t>(to)];
    if (IsEnemy<kColour>(figure))
        AddPawnArrival<kColour>(from, to, out);
    else if (RankOf(from) == side.m_nEnPassantRank && figure == kNoFigure &&
             CanCaptureEnPassant<kColour>(b, from + fileStep))
        out.Add(from, to);
}

template <EColour kColour> void AddPawnMoves(const TChessboard& b, int from, CMoveWriter& out) {
    constexpr TSide side = SideOf(kColour);
    const int ahead = from + side.m_nForward;
    if (b.m_board[static_cast<std::size_t>(ahead)] == kNoFigure) {
        AddPawnArrival<kColour>(from, ahead, out);
        const int twice = ahead + side.m_nForward;
        if (RankOf(from) == side.m_nDoubleStepRank && b.m_board[static_cast<std::size_t>(twice)] == kNoFigure)
            out.Add(from, twice);
    }
    AddPawnCapture<kColour>(b, from, -1, out);
    AddPawnCapture<kColour>(b, from, 1, out);
}

struct TCastling {
    TSquare m_nRookHome, m_nKingTarget, m_nKingPassed;
    TSquare m_nBetween1, m_nBetween2, m_nBetween3; // must be empty; the third equals the second on the king's side
};
constexpr TCastling CastlingOf(EColour colour, bool bKingSide) {
    const auto base = static_cast<TSquare>(colour == EColour::White ? 0 : 56);
    const auto at = [base](int file) { return static_cast<TSquare>(base + file); };
    return bKingSide ? TCastling{at(7), at(6), at(5), at(5), at(6), at(6)}
                     : TCastling{at(0), at(2), at(3), at(3), at(2), at(1)};
}

/// Has any move since the root ended on one of the two squares? Only targets count: a figure that left and came back
/// has such a move, and so has a capture there.
bool WasTargetSinceRoot(const TChessboard& b, TSquare first, TSquare second) {
    for (const TChessboard* p = &b; p->m_pPrevious != nullptr; p = p->m_pPrevious)
        if (p->m_lastMove.m_nTo == first || p->m_lastMove.m_nTo == second)
            return true;
    return false;
}

const TChessboard& RootOf(const TChessboard& b) {
    if (b.m_pContext != nullptr && b.m_pContext->m_pRoot != nullptr)
        return *b.m_pContext->m_pRoot;
    const TChessboard* p = &b;
    while (p->m_pPrevious != nullptr)
        p = p->m_pPrevious;
    return *p;
}

template <EColour kColour> bool HasCastlingRight(const TChessboard& b, bool bKingSide) {
    constexpr TSquare kingHome = SideOf(kColour).m_nKingHome;
    const TSquare rookHome = CastlingOf(kColour, bKingSide).m_nRookHome;
    constexpr TFigure king = CodeOf(kColour) | kKing, rook = CodeOf(kColour) | kRook;
    if (b.m_board[rookHome] != rook || b.m_board[kingHome] != king)
        return false;
    const TChessboard& root = RootOf(b);
    return root.m_board[rookHome] == rook && root.m_board[kingHome] == king &&
           !WasTargetSinceRoot(b, rookHome, kingHome);
}

template <EColour kColour> void AddCastling(const TChessboard& b, bool bKingSide, CMoveWriter& out) {
    const TCastling castling = CastlingOf(kColour, bKingSide);
    if ((b.m_board[castling.m_nBetween1] | b.m_board[castling.m_nBetween2] | b.m_board[castling.m_nBetween3]) != 0 ||
        !HasCastlingRight<kColour>(b, bKingSide) || Checker<kColour>(b) != kNoChecker)
        return;
    if (!IsAttacked<kColour>(b, castling.m_nKingTarget) && !IsAttacked<kColour>(b, castling.m_nKingPassed))
        out.Add(SideOf(kColour).m_nKingHome, castling.m_nKingTarget);
}

template <EColour kColour> void AddKingMoves(const TChessboard& b, int from, CMoveWriter& out) {
    const int file = FileOf(from), rank = RankOf(from);
    for (const int rankStep : {-1, 1, 0})
        for (const int fileStep : {0, -1, 1}) {
            if ((fileStep | rankStep) == 0 || !IsOnBoard(file + fileStep, rank + rankStep))
                continue;
            const TSquare to = SquareAt(file + fileStep, rank + rankStep);
            if (!IsOwn<kColour>(b.m_board[to]))
                out.Add(from, to);
        }
    if (from == SideOf(kColour).m_nKingHome) {
        AddCastling<kColour>(b, true, out);
        AddCastling<kColour>(b, false, out);
    }
}

template <EColour kColour> int GenerateFigureMoves(const TChessboard& b, TSquare square, TMove* list) {
    CMoveWriter out(list);
    switch (KindOf(b.m_board[square])) {
    case kKing:
        AddKingMoves<kColour>(b, square, out);
        break;
    case kPawn:
        AddPawnMoves<kColour>(b, square, out);
        break;
    case kBishop:
        AddRays<kColour>(b, square, kStraightDirections, kDirections, out);
        break;
    case kRook:
        AddRays<kColour>(b, square, 0, kStraightDirections, out);
        break;
    case kQueen:
        AddRays<kColour>(b, square, 0, kDirections, out);
        break;
    case kKnight:
        AddKnightMoves<kColour>(b, square, out);
        break;
    default:
        break;
    }
    return out.Count();
}

/// Every figure but the king that can move to an empty square: pawns by step and double step, knights, diagonal
/// sliders, straight sliders.
template <EColour kColour> void AddMovesToEmptySquare(const TChessboard& b, int target, CMoveWriter& out) {
    constexpr TSide side = SideOf(kColour);
    constexpr TFigure pawn = CodeOf(kColour) | kPawn;
    const int behind = target - side.m_nForward;
    if (behind >= 0 && behind < kSquares) {
        const TFigure figure = WithoutMark(b.m_board[static_cast<std::size_t>(behind)]);
        const int twice = behind - side.m_nForward;
        if (figure == pawn)
            AddPawnArrival<kColour>(behind, target, out);
        else if (figure == kNoFigure && twice >= 0 && twice < kSquares && RankOf(twice) == side.m_nDoubleStepRank &&
                 WithoutMark(b.m_board[static_cast<std::size_t>(twice)]) == pawn)
            out.Add(twice, target);
    }
    TMove attackers[kMaxMoves];
    int count = 0;
    if constexpr (kColour == EColour::White)
        FindWhiteAttackers(b, FileOf(target), RankOf(target), attackers, &count);
    else
        FindBlackAttackers(b, FileOf(target), RankOf(target), attackers, &count);
    for (int i = 0; i < count; ++i)
        if (WithoutMark(b.m_board[attackers[i].m_nFrom]) != pawn)
            out.Add(attackers[i].m_nFrom, target);
}

template <EColour kColour> void AddCapturesOf(const TChessboard& b, int target, CMoveWriter& out) {
    TMove attackers[kMaxMoves];
    int count = 0;
    if constexpr (kColour == EColour::White)
        FindWhiteAttackers(b, FileOf(target), RankOf(target), attackers, &count);
    else
        FindBlackAttackers(b, FileOf(target), RankOf(target), attackers, &count);
    constexpr TFigure pawn = CodeOf(kColour) | kPawn;
    for (int i = 0; i < count; ++i) {
        const int from = attackers[i].m_nFrom;
        if (WithoutMark(b.m_board[static_cast<std::size_t>(from)]) == pawn)
            AddPawnArrival<kColour>(from, target, out);
        else
            out.Add(from, target);
    }
}

template <EColour kColour> int GenerateEvasions(const TChessboard& b, TMove* list) {
    const int king = KingSquare<kColour>(b);
    const int checker = Checker<kColour>(b);
    CMoveWriter out(list);
    AddKingMoves<kColour>(b, king, out);
    if (checker == kDoubleCheck)
        return out.Count();
    AddCapturesOf<kColour>(b, checker, out);
    const TDirection direction = DirectionBetween(king, checker);
    if (direction != kNoDirection && KindOf(b.m_board[static_cast<std::size_t>(checker)]) != kPawn)
        for (int square = king + kSteps[direction]; square != checker; square += kSteps[direction])
            AddMovesToEmptySquare<kColour>(b, square, out);
    if (CanCaptureEnPassant<kColour>(b, checker)) {
        constexpr TFigure pawn = CodeOf(kColour) | kPawn;
        for (const int fileStep : {-1, 1})
            if (IsOnBoard(FileOf(checker) + fileStep, RankOf(checker)) &&
                WithoutMark(b.m_board[static_cast<std::size_t>(checker + fileStep)]) == pawn)
                out.Add(checker + fileStep, checker + SideOf(kColour).m_nForward);
    }
    return out.Count();
}

template <EColour kColour> TMask Figures(const TChessboard& b) {
    return kColour == EColour::White ? WhiteFigures(b.m_board.data()) : BlackFigures(b.m_board.data());
}

template <EColour kColour> int GenerateMoves(const TChessboard& b, TMove* list) {
    if (Checker<kColour>(b) != kNoChecker)
        return GenerateEvasions<kColour>(b, list);
    int count = 0;
    for (TMask figures = Figures<kColour>(b); figures != 0;)
        count += GenerateFigureMoves<kColour>(b, static_cast<TSquare>(TakeSquare(figures)), list + count);
    return count;
}

template <EColour kColour> int GenerateNextFigure(const TChessboard& b, int& nextSquare, TMove* list) {
    if (nextSquare >= kSquares)
        return 0;
    TMask figures = Figures<kColour>(b) & (~TMask{0} << nextSquare);
    while (figures != 0) {
        const int square = TakeSquare(figures);
        if (const int count = GenerateFigureMoves<kColour>(b, static_cast<TSquare>(square), list)) {
            nextSquare = square + 1;
            return count;
        }
    }
    nextSquare = kSquares;
    return 0;
}

// --- Checks
// -----------------------------------------------------------------------------------------------------------

/// Does a figure of this kind, standing on `square` with `from` emptied, attack the black king?
bool AttacksBlackKing(const TChessboard& b, TFigure kind, int square, int from) {
    const int king = BlackKingSquare(b);
    if (kind == kKnight)
        return AbsDiff(FileOf(square), FileOf(king)) * AbsDiff(RankOf(square), RankOf(king)) == 2;
    if (kind == kPawn)
        return RankOf(king) == RankOf(square) + 1 && AbsDiff(FileOf(square), FileOf(king)) == 1;
    const TDirection direction = DirectionBetween(square, king);
    if (direction == kNoDirection || !SlidesAlong(kind, direction))
        return false;
    for (int s = square + kSteps[direction]; s != king; s += kSteps[direction])
        if (s != from && b.m_board[static_cast<std::size_t>(s)] != kNoFigure)
            return false;
    return true;
}

/// Is the white figure on `square` the only one between a white slider and the black king?
bool IsDiscoverer(const TChessboard& b, int square) {
    const int king = BlackKingSquare(b);
    const TDirection direction = DirectionBetween(king, square);
    if (direction == kNoDirection || !HasWhiteSlider(b, direction) || !IsEmptyBetween(b, king, square, direction))
        return false;
    const TSquare behind = FirstOnRay(b, square, direction);
    return behind != kNoSquare && IsSliderAlong(b.m_board[behind], kWhite, direction);
}

bool LeavesLine(const TChessboard& b, const TMove& move) {
    return DirectionBetween(BlackKingSquare(b), move.m_nTo) != DirectionBetween(BlackKingSquare(b), move.m_nFrom);
}

/// The square a pawn captured en passant vanishes from may open a line to the black king.
bool EnPassantOpensLine(const TChessboard& b, const TMove& move) {
    const TSquare victim = SquareAt(FileOf(move.m_nTo), RankOf(move.m_nFrom));
    TChessboard after = b;
    after.m_board[victim] = after.m_board[move.m_nFrom] = kNoFigure;
    after.m_board[move.m_nTo] = kWhitePawn;
    return IsAttackedByWhiteOnBoard(after, after.m_blackKingFile, after.m_blackKingRank);
}

bool CastlingGivesCheck(const TChessboard& b, const TMove& move) {
    const int rook = move.m_nTo == kG1 ? kF1 : kD1;
    const int king = BlackKingSquare(b);
    const TDirection direction = DirectionBetween(rook, king);
    return direction != kNoDirection && IsStraight(direction) && AttacksBlackKing(b, kRook, rook, kE1);
}

bool GivesCheck(const TChessboard& b, const TMove& move, TFigure kind, bool bDiscoverer) {
    if (bDiscoverer && LeavesLine(b, move))
        return true;
    if (kind == kKing)
        return AbsDiff(FileOf(move.m_nFrom), FileOf(move.m_nTo)) == 2 && CastlingGivesCheck(b, move);
    const TFigure arriving = move.m_nPromotion != 0 ? PromotionKind(move) : kind;
    if (AttacksBlackKing(b, arriving, move.m_nTo, move.m_nFrom))
        return true;
    const bool bEnPassant =
        kind == kPawn && FileOf(move.m_nFrom) != FileOf(move.m_nTo) && b.m_board[move.m_nTo] == kNoFigure;
    return bEnPassant && EnPassantOpensLine(b, move);
}

} // namespace

int GenerateWhiteFigureMoves(const TChessboard& b, TSquare square, TMove* list) {
    return GenerateFigureMoves<EColour::White>(b, square, list);
}
int GenerateBlackFigureMoves(const TChessboard& b, TSquare square, TMove* list) {
    return GenerateFigureMoves<EColour::Black>(b, square, list);
}
int GenerateWhiteEvasions(const TChessboard& b, TMove* list) { return GenerateEvasions<EColour::White>(b, list); }
int GenerateBlackEvasions(const TChessboard& b, TMove* list) { return GenerateEvasions<EColour::Black>(b, list); }
int GenerateWhiteMoves(const TChessboard& b, TMove* list) { return GenerateMoves<EColour::White>(b, list); }
int GenerateBlackMoves(const TChessboard& b, TMove* list) { return GenerateMoves<EColour::Black>(b, list); }
int GenerateNextWhiteFigure(const TChessboard& b, int& nextSquare, TMove* list) {
    return GenerateNextFigure<EColour::White>(b, nextSquare, list);
}
int GenerateNextBlackFigure(const TChessboard& b, int& nextSquare, TMove* list) {
    return GenerateNextFigure<EColour::Black>(b, nextSquare, list);
}
bool HasWhiteCastlingRight(const TChessboard& b, bool bKingSide) {
    return HasCastlingRight<EColour::White>(b, bKingSide);
}
bool HasBlackCastlingRight(const TChessboard& b, bool bKingSide) {
    return HasCastlingRight<EColour::Black>(b, bKingSide);
}

int GenerateWhiteChecks(const TChessboard& b, TMove* list) {
    int count = 0;
    for (TMask figures = WhiteFigures(b.m_board.data()); figures != 0;) {
        const auto square = static_cast<TSquare>(TakeSquare(figures));
        const TFigure kind = KindOf(b.m_board[square]);
        const bool bDiscoverer = IsDiscoverer(b, square);
        TMove* const first = list + count;
        const int moves = GenerateWhiteFigureMoves(b, square, first);
        for (int i = 0; i < moves; ++i)
            if (GivesCheck(b, first[i], kind, bDiscoverer))
                list[count++] = first[i];
    }
    return count;
}

} // namespace quillon
