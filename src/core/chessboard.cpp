#include "core/chessboard.h"

#include <cstring>

#include "core/attacks.h"
#include "core/chess_exception.h"

namespace quillon {

namespace {

void ClearCounters(TChessboard& b) {
    b.m_whiteQueens = b.m_blackQueens = b.m_whiteRooks = b.m_blackRooks = b.m_whiteBishops = b.m_blackBishops = 0;
    b.m_whiteKnights = b.m_blackKnights = b.m_whitePawns = b.m_blackPawns = 0;
    b.m_whiteRookSquares = b.m_whiteBishopSquares = b.m_whiteKnightSquares = {};
    b.m_whiteQueenSquare = 0;
    b.m_bWhiteListsValid = 1;
}

/// Enters a white figure into its list; false when it finds no room there.
bool AddToList(std::array<TSquare, 2>& list, int nBefore, TSquare square) {
    if (nBefore >= 2)
        return false;
    list[static_cast<std::size_t>(nBefore)] = square;
    return true;
}

void SetBlackKing(TChessboard& b, TSquare square) {
    b.m_blackKingFile = static_cast<std::int8_t>(FileOf(square));
    b.m_blackKingRank = static_cast<std::int8_t>(RankOf(square));
    b.m_wBlackState = static_cast<std::uint16_t>((b.m_wBlackState & ~kRingMask) |
                                                 (RingOf(FileOf(square), RankOf(square)) << kRingShift));
}

void SetWhiteKing(TChessboard& b, TSquare square) {
    b.m_whiteKingFile = static_cast<std::int8_t>(FileOf(square));
    b.m_whiteKingRank = static_cast<std::int8_t>(RankOf(square));
}

std::int8_t CheckerField(int attackers) {
    return attackers == kNoAttacker ? kNoChecker : static_cast<std::int8_t>(attackers);
}

/// The first rule of set-up that the board breaks; null if none. Fills counts, kings and lists on the way.
const char* RecountOrExplain(TChessboard& b, bool bClearHeuristics) {
    ClearCounters(b);
    int nWhiteKings = 0, nBlackKings = 0;
    for (int s = 0; s < kSquares; ++s) {
        const auto square = static_cast<TSquare>(s);
        const TFigure figure = WithoutMark(b.m_board[square]);
        if (figure == kNoFigure)
            continue;
        if (KindOf(figure) == kPawn && (RankOf(s) == 0 || RankOf(s) == 7))
            return "Pawns cannot occupy 1st nor 8th line of the chessboard.";
        if (figure == kWhiteKing) {
            ++nWhiteKings;
            SetWhiteKing(b, square);
        } else if (figure == kBlackKing) {
            ++nBlackKings;
            SetBlackKing(b, square);
        } else if (IsWhite(figure) && KindOf(figure) != kPawn) {
            EnlistWhiteFigure(b, square, KindOf(figure));
        } else {
            ++CounterOf(b, figure);
        }
    }
    if (nWhiteKings != 1 || nBlackKings != 1)
        return "Illegal number of kings.";

    b.m_whiteChecker = CheckerField(FindBlackAttackers(b, b.m_whiteKingFile, b.m_whiteKingRank, nullptr, nullptr));
    b.m_blackChecker = CheckerField(FindWhiteAttackers(b, b.m_blackKingFile, b.m_blackKingRank, nullptr, nullptr));
    b.m_bySideState &= static_cast<std::uint8_t>(~(kWhiteCapturesMask | kBlackCapturesMask));
    if (bClearHeuristics) {
        b.m_wKingState = 0;
        b.m_nHeuristics = 0;
    }
    const bool bKingsTouch = KingSteps(WhiteKingSquare(b), BlackKingSquare(b)) <= 1;
    if (bKingsTouch || (b.m_whiteChecker != kNoChecker && b.m_blackChecker != kNoChecker))
        return "Both kings attacked.";
    return nullptr;
}

} // namespace

std::uint8_t& CounterOf(TChessboard& b, TFigure figure) {
    const bool bWhite = IsWhite(figure);
    switch (KindOf(figure)) {
    case kQueen:
        return bWhite ? b.m_whiteQueens : b.m_blackQueens;
    case kRook:
        return bWhite ? b.m_whiteRooks : b.m_blackRooks;
    case kBishop:
        return bWhite ? b.m_whiteBishops : b.m_blackBishops;
    case kKnight:
        return bWhite ? b.m_whiteKnights : b.m_blackKnights;
    default:
        return bWhite ? b.m_whitePawns : b.m_blackPawns;
    }
}

TChessboard EmptyChessboard() {
    TChessboard b;
    std::memset(static_cast<void*>(&b), 0, sizeof b);
    b.m_blockedFigures.fill(kNoSquare);
    b.m_whiteChecker = b.m_blackChecker = kNoChecker;
    b.m_bWhiteListsValid = 1;
    return b;
}

void RecountFigures(TChessboard& b, bool bClearHeuristics) {
    if (const char* failure = RecountOrExplain(b, bClearHeuristics))
        throw ChessException(failure);
}

void CheckNumberOfMen(const TChessboard& b) {
    constexpr int kMostMenWithoutKing = 15;
    if (WhiteMen(b) > kMostMenWithoutKing || BlackMen(b) > kMostMenWithoutKing)
        throw ChessException("More than 16 figures of one colour.");
}

bool TryRecountFigures(TChessboard& b, bool bClearHeuristics) {
    return RecountOrExplain(b, bClearHeuristics) == nullptr;
}

void EnlistWhiteFigure(TChessboard& b, TSquare square, TFigure kind) {
    bool bRoom = true;
    switch (kind) {
    case kQueen:
        bRoom = b.m_whiteQueens++ == 0;
        if (bRoom)
            b.m_whiteQueenSquare = square;
        break;
    case kRook:
        bRoom = AddToList(b.m_whiteRookSquares, b.m_whiteRooks++, square);
        break;
    case kKnight:
        bRoom = AddToList(b.m_whiteKnightSquares, b.m_whiteKnights++, square);
        break;
    default:
        bRoom = AddToList(b.m_whiteBishopSquares, b.m_whiteBishops++, square);
        if (b.m_whiteBishops == 2 && ColourOf(b.m_whiteBishopSquares[0]) == ColourOf(square))
            bRoom = false;
        break;
    }
    if (!bRoom)
        b.m_bWhiteListsValid = 0;
}

void PutFigure(TChessboard& b, TSquare square, TFigure figure) {
    b.m_board[square] = figure;
    const TFigure kind = KindOf(figure);
    if (kind == kKing) {
        if (IsWhite(figure))
            SetWhiteKing(b, square);
        else
            SetBlackKing(b, square);
        return;
    }
    const int nBefore = CounterOf(b, figure)++;
    if (IsBlack(figure) || kind == kPawn || b.m_bWhiteListsValid == 0)
        return;
    if (kind == kQueen && nBefore == 0)
        b.m_whiteQueenSquare = square;
    else if (kind == kRook)
        AddToList(b.m_whiteRookSquares, nBefore, square);
    else if (kind == kBishop)
        AddToList(b.m_whiteBishopSquares, nBefore, square);
    else if (kind == kKnight)
        AddToList(b.m_whiteKnightSquares, nBefore, square);
}

void RebuildWhiteLists(TChessboard& b) {
    if (b.m_whiteQueens > 1 || b.m_whiteRooks > 2 || b.m_whiteBishops > 2 || b.m_whiteKnights > 2)
        return;
    std::size_t nRooks = 0, nBishops = 0, nKnights = 0;
    for (int s = 0; s < kSquares; ++s) {
        const auto square = static_cast<TSquare>(s);
        switch (b.m_board[square]) {
        case kWhiteQueen:
            b.m_whiteQueenSquare = square;
            break;
        case kWhiteRook:
            b.m_whiteRookSquares[nRooks++] = square;
            break;
        case kWhiteBishop:
            b.m_whiteBishopSquares[nBishops++] = square;
            break;
        case kWhiteKnight:
            b.m_whiteKnightSquares[nKnights++] = square;
            break;
        default:
            break;
        }
    }
    const bool bSameColour =
        nBishops == 2 && ColourOf(b.m_whiteBishopSquares[0]) == ColourOf(b.m_whiteBishopSquares[1]);
    b.m_bWhiteListsValid = bSameColour ? 0 : 1;
}

} // namespace quillon
