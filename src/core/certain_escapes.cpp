#include "core/certain_escapes.h"

#include <bit>

#include "core/attacks.h"
#include "core/mask_attacks.h"
#include "core/queries.h"

namespace quillon {

namespace {

int MinorFigures(const TChessboard& b) { return b.m_whiteBishops + b.m_whiteKnights; }

bool IsOnEdge(const TChessboard& b) { return BlackRing(b) == 0; }

bool IsInCorner(const TChessboard& b) {
    return kEdgeDistance[b.m_blackKingFile] + kEdgeDistance[b.m_blackKingRank] == 0;
}

/// Black figures on the squares around the black king.
int BlackFiguresRoundKing(const TChessboard& b) {
    return std::popcount(KingAttacks(BlackKingSquare(b)) & BlackFigures(b.m_board.data()));
}

TMask WhiteOfKind(const TChessboard& b, TFigure kind) {
    TMask found = 0;
    for (TMask figures = WhiteFigures(b.m_board.data()); figures != 0;) {
        const int square = TakeSquare(figures);
        if (KindOf(b.m_board[static_cast<std::size_t>(square)]) == kind)
            found |= MaskOf(square);
    }
    return found;
}

TMask BlackPawns(const TChessboard& b) {
    TMask found = 0;
    for (TMask figures = BlackFigures(b.m_board.data()); figures != 0;) {
        const int square = TakeSquare(figures);
        if (KindOf(b.m_board[static_cast<std::size_t>(square)]) == kPawn)
            found |= MaskOf(square);
    }
    return found;
}

/// Two knights mate only a king that is helped by its own men: bare, or with heavy figures alone, Black falls to a mate
/// in two moves at once or to none.
bool EscapesTwoKnights(TChessboard& b) {
    b.m_wBlackState |= kMinorMaterial;
    return BlackMen(b) == b.m_blackQueens + b.m_blackRooks;
}

bool EscapesPawns(const TChessboard& b) {
    const int movesLeft = (b.m_nMoves + 1) / 2;
    for (TMask pawns = WhiteOfKind(b, kPawn); pawns != 0;)
        if (DoesPawnMatter(b, static_cast<TSquare>(TakeSquare(pawns)), movesLeft))
            return false;
    return true;
}

/// A lone bishop mates only a king that its own men shut in.
bool EscapesLoneBishop(TChessboard& b) {
    b.m_wBlackState |= kMinorMaterial;
    const int around = BlackFiguresRoundKing(b);
    if (around == 0)
        return true;
    const TSquare king = BlackKingSquare(b);
    return around < 2 && !IsInCorner(b) && king != kG8 && king != SquareAt(1, 7);
}

/// A lone knight too; a rook's pawn beside its king in the same file is the smothered corner.
bool EscapesLoneKnight(TChessboard& b) {
    b.m_wBlackState |= kMinorMaterial;
    const int kingFile = b.m_blackKingFile;
    bool bPawnOnKingsRookFile = false;
    if (kingFile == 0 || kingFile == 7)
        bPawnOnKingsRookFile = (BlackPawns(b) & (kFileA << kingFile)) != 0;
    if (!bPawnOnKingsRookFile && BlackMen(b) + 1 < 3)
        return true;
    if (b.m_blackPawns != 0)
        return false;
    const int crowd = BlackFiguresRoundKing(b) + (IsOnEdge(b) ? 3 : 0) + (IsInCorner(b) ? 2 : 0);
    const bool bKingsApart = KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) > 2;
    return crowd < (bKingsApart ? 5 : 4);
}

bool EscapesByMaterial(TChessboard& b) {
    if (MinorFigures(b) == 0)
        return b.m_whitePawns == 0 || EscapesPawns(b);
    if (b.m_whitePawns != 0)
        return false;
    const bool bEscapes = b.m_whiteKnights == 2   ? EscapesTwoKnights(b)
                          : MinorFigures(b) != 1  ? false
                          : b.m_whiteBishops == 1 ? EscapesLoneBishop(b)
                                                  : EscapesLoneKnight(b);
    return bEscapes &&
           !HasMateInTwo(b); // the rules look at material and squares, and may miss a mate that stands there
}

bool EscapesWithBareKing(const TChessboard& b) {
    if ((b.m_wKingState & kBareBlackKing) == 0 || b.m_whitePawns != 1 || b.m_whiteKnights != 0)
        return false;
    const auto pawn = static_cast<TSquare>(LowestSquare(WhiteOfKind(b, kPawn)));
    if (b.m_whiteBishops == 0)
        return IsDrawnPawnEnding(b, pawn);
    return b.m_whiteBishops == 1 &&
           IsDrawnWrongBishopEnding(b, pawn, static_cast<TSquare>(LowestSquare(WhiteOfKind(b, kBishop))));
}

bool CanWhitePawnCapture(const TChessboard& b) {
    const TMask pawns = WhiteOfKind(b, kPawn);
    return (WhitePawnAttacks(pawns) & BlackFigures(b.m_board.data())) != 0 || IsEnPassantAvailable(b);
}

/// May Black be forced to open the rook's file: one of its pawns, ahead of White's and near enough, is driven to be
/// captured there, while another pawn can still move to the neighbouring file in time? When in doubt the answer is yes.
bool CanFileBeForcedOpen(const TChessboard& b, TSquare whitePawn) {
    const int spareMoves = (b.m_nMoves + 1) / 2;
    const int neighbourFile = FileOf(whitePawn) == 0 ? 1 : 6;
    const TMask blackPawns = BlackPawns(b);
    for (TMask rest = blackPawns; rest != 0;) {
        const int opener = TakeSquare(rest);
        const int ranksAhead = RankOf(opener) - RankOf(whitePawn);
        const int files = AbsDiff(FileOf(opener), FileOf(whitePawn));
        if (ranksAhead <= 0 || files > ranksAhead || files - 1 > spareMoves)
            continue;
        for (TMask others = blackPawns & ~MaskOf(opener); others != 0;)
            if (AbsDiff(FileOf(TakeSquare(others)), neighbourFile) <= spareMoves)
                return true;
    }
    return false;
}

bool EscapesInRookPawnsCorner(TChessboard& b) {
    if (IsRookPawnWithWrongBishop(b, true))
        b.m_wBlackState |= kRookPawnWrongBishop;
    if ((b.m_wBlackState & kRookPawnWrongBishop) == 0 || b.m_blackKingRank < 6)
        return false;
    const TMask pawns = WhiteOfKind(b, kPawn);
    if (pawns == 0 || !IsRookPawnWithWrongBishop(b, true))
        return false; // the mark may be older than a capture that freed another pawn
    const auto pawn = static_cast<TSquare>(LowestSquare(pawns));
    if (AbsDiff(b.m_blackKingFile, FileOf(pawn)) > 1 || BlackFiguresRoundKing(b) != 0 || CanWhitePawnCapture(b))
        return false;
    if (b.m_blackKingRank != 7 || b.m_blackPawns < 2)
        return true;
    for (TMask rest = pawns; rest != 0;)
        if (CanFileBeForcedOpen(b, static_cast<TSquare>(TakeSquare(rest))))
            return false;
    return true;
}

} // namespace

int ColourOutOfBishopsReach(const TChessboard& b) {
    TMask bishops = b.m_whiteBishops != 0 ? WhiteOfKind(b, kBishop) : 0;
    if (bishops == 0)
        return -1;
    const int colour = ColourOf(TakeSquare(bishops));
    while (bishops != 0)
        if (ColourOf(TakeSquare(bishops)) != colour)
            return -1;
    return 1 - colour;
}

bool IsRookPawnWithWrongBishop(const TChessboard& b, bool bAllPawns) {
    if (b.m_whiteQueens + b.m_whiteRooks + b.m_whiteKnights != 0 || b.m_whiteBishops == 0 || b.m_whitePawns == 0)
        return false;
    const int colour = ColourOutOfBishopsReach(b);
    const TMask pawns = WhiteOfKind(b, kPawn);
    for (const int file : {0, 7}) {
        const TMask onFile = pawns & (kFileA << file);
        if (onFile != 0 && (!bAllPawns || onFile == pawns) && ColourOf(SquareAt(file, 7)) == colour)
            return true;
    }
    return false;
}

bool IsDrawnPawnEnding(const TChessboard& b, TSquare pawn) {
    const int f = FileOf(pawn), r = RankOf(pawn);
    const int kingFile = b.m_blackKingFile, kingRank = b.m_blackKingRank;
    if ((f == 0 || f == 7) && AbsDiff(kingFile, f) <= 1 && kingRank > r)
        return true;
    if (r == 0 || r == 1)
        return false;
    if (kingFile == f && (kingRank == r + 1 || kingRank == r + 2) && kingRank != 7)
        return true;
    if (r > 4 || KingSteps(BlackKingSquare(b), SquareAt(f, r + 1)) != 1)
        return false;
    if (b.m_whiteKingRank == r + 2 && AbsDiff(b.m_whiteKingFile, f) <= 1)
        return false;
    const int u = kingFile == f - 1 ? f + 1 : f - 1;
    if (AbsDiff(b.m_whiteKingFile, u) > 1)
        return true;
    const int q = kingRank == r ? r : r + 1;
    if (AbsDiff(b.m_whiteKingRank, q) <= 1)
        return false;
    return AbsDiff(b.m_whiteKingRank, r + 2) > 1;
}

bool IsDrawnWrongBishopEnding(const TChessboard& b, TSquare pawn, TSquare bishop) {
    const int f = FileOf(pawn);
    if ((f != 0 && f != 7) || AbsDiff(b.m_blackKingFile, f) > 1 || b.m_blackKingRank <= RankOf(pawn))
        return false;
    const TSquare corner = SquareAt(f, 7);
    if (ColourOf(bishop) == ColourOf(corner))
        return false;
    if (KingSteps(BlackKingSquare(b), corner) <= 1)
        return true;
    const TSquare gate = SquareAt(f == 0 ? 1 : 6, 6);
    return KingSteps(BlackKingSquare(b), gate) < KingSteps(WhiteKingSquare(b), gate) - 1;
}

bool DoesPawnMatter(const TChessboard& b, TSquare pawn, int nMovesLeft) {
    const int r = RankOf(pawn), t = nMovesLeft;
    if (t >= (r == 1 ? 5 : 7 - r))
        return true;
    const int files = AbsDiff(FileOf(pawn), b.m_blackKingFile);
    if (files > t + 1)
        return false;
    const int kingRank = b.m_blackKingRank;
    if (kingRank <= r)
        return b.m_nMoves == 1 || r - kingRank + 3 <= t;
    const int ahead = kingRank - r;
    const bool bMayStepTwice = r == 1 && KingSteps(pawn, BlackKingSquare(b)) > 1;
    return t >= ahead - (bMayStepTwice ? 2 : 1);
}

bool HasEscapedForCertain(TChessboard& b) {
    if (b.m_nMoves <= 2 || b.m_whiteQueens + b.m_whiteRooks != 0 || MinorFigures(b) > 2)
        return false;
    return EscapesByMaterial(b) || EscapesWithBareKing(b) || EscapesInRookPawnsCorner(b);
}

} // namespace quillon
