// The two draw tests of pawn endings against complete tables of those endings, made here by working back from the wins.

#include <gtest/gtest.h>

#include <vector>

#include "core/certain_escapes.h"
#include "core/positions.h"

namespace quillon::test {
namespace {

constexpr int kNoBishop = 64;

/// King, pawn and perhaps a bishop against a king. Squares; White or Black to move as the function says.
struct TPlaces {
    int m_nWhiteKing, m_nBlackKing, m_nPawn, m_nBishop;

    [[nodiscard]] bool IsOccupiedByWhite(int square) const {
        return square == m_nWhiteKing || square == m_nPawn || square == m_nBishop;
    }
};

bool IsPawnsTarget(const TPlaces& p, int square) {
    return RankOf(square) == RankOf(p.m_nPawn) + 1 && AbsDiff(FileOf(square), FileOf(p.m_nPawn)) == 1;
}

/// Does the bishop look at the square? The black king, lifted off, does not stand in the way.
bool IsBishopsTarget(const TPlaces& p, int square) {
    const int files = FileOf(square) - FileOf(p.m_nBishop), ranks = RankOf(square) - RankOf(p.m_nBishop);
    if (p.m_nBishop == kNoBishop || files == 0 || AbsDiff(files, 0) != AbsDiff(ranks, 0))
        return false;
    const int step = (ranks > 0 ? 8 : -8) + (files > 0 ? 1 : -1);
    for (int between = p.m_nBishop + step; between != square; between += step)
        if (p.IsOccupiedByWhite(between))
            return false;
    return true;
}

bool IsAttacked(const TPlaces& p, int square) {
    return KingSteps(p.m_nWhiteKing, square) == 1 || IsPawnsTarget(p, square) || IsBishopsTarget(p, square);
}

template <class TVisit> void ForEachKingStep(int from, TVisit&& visit) {
    for (int square = 0; square < kSquares; ++square)
        if (KingSteps(from, square) == 1)
            visit(square);
}

/// Which positions White wins. A new queen that is not taken at once wins (or a rook, where the queen stalemates).
class CEndingTable {
  public:
    CEndingTable() : m_wins(2u * 64 * 64 * 64 * 65, false) {}

    /// Works out all positions with the pawn on this file and the bishop, if any, on squares of this colour.
    void Solve(int file, int nBishopColour, bool bBishop) {
        bool bChanged = true;
        while (bChanged) {
            bChanged = false;
            ForEachPosition(file, nBishopColour, bBishop, [&](const TPlaces& p) {
                bChanged |= Enter(true, p, !IsAttacked(p, p.m_nBlackKing) && WhiteWins(p));
                bChanged |= Enter(false, p, BlackLoses(p));
            });
        }
    }

    [[nodiscard]] bool IsWonWithWhiteToMove(const TPlaces& p) const { return m_wins[IndexOf(true, p)]; }

    /// Positions in which the figures stand apart and the kings do not touch.
    template <class TVisit> static void ForEachPosition(int file, int nBishopColour, bool bBishop, TVisit&& visit) {
        for (int white = 0; white < kSquares; ++white)
            for (int black = 0; black < kSquares; ++black)
                for (int rank = 1; rank < 7 && KingSteps(white, black) > 1; ++rank)
                    for (int bishop = bBishop ? 0 : kNoBishop; bishop < (bBishop ? kSquares : kNoBishop + 1);
                         ++bishop) {
                        const TPlaces p{white, black, SquareAt(file, rank), bishop};
                        const bool bApart = p.m_nPawn != white && p.m_nPawn != black && bishop != white &&
                                            bishop != black && bishop != p.m_nPawn;
                        if (bApart && (!bBishop || ColourOf(bishop) == nBishopColour))
                            visit(p);
                    }
    }

  private:
    [[nodiscard]] static std::size_t IndexOf(bool bWhite, const TPlaces& p) {
        const int index = ((p.m_nWhiteKing * 64 + p.m_nBlackKing) * 64 + p.m_nPawn) * 65 + p.m_nBishop;
        return 2u * static_cast<std::size_t>(index) + (bWhite ? 1u : 0u);
    }

    bool Enter(bool bWhite, const TPlaces& p, bool bWins) {
        if (!bWins || m_wins[IndexOf(bWhite, p)])
            return false;
        return m_wins[IndexOf(bWhite, p)] = true;
    }

    [[nodiscard]] bool IsLost(const TPlaces& p) const { return m_wins[IndexOf(false, p)]; }

    [[nodiscard]] bool WinsByPawn(const TPlaces& p) const {
        TPlaces after = p;
        after.m_nPawn += 8;
        const auto isBlocked = [&] { return after.m_nPawn == p.m_nBlackKing || p.IsOccupiedByWhite(after.m_nPawn); };
        if (isBlocked())
            return false;
        if (RankOf(after.m_nPawn) == 7)
            return KingSteps(p.m_nBlackKing, after.m_nPawn) > 1 || KingSteps(p.m_nWhiteKing, after.m_nPawn) == 1 ||
                   IsBishopsTarget(p, after.m_nPawn);
        if (IsLost(after))
            return true;
        after.m_nPawn += 8;
        return RankOf(p.m_nPawn) == 1 && !isBlocked() && IsLost(after);
    }

    [[nodiscard]] bool WhiteWins(const TPlaces& p) const {
        if (m_wins[IndexOf(true, p)] || WinsByPawn(p))
            return true;
        bool bWins = false;
        TPlaces after = p;
        ForEachKingStep(p.m_nWhiteKing, [&](int to) {
            after.m_nWhiteKing = to;
            bWins |= !p.IsOccupiedByWhite(to) && KingSteps(to, p.m_nBlackKing) > 1 && IsLost(after);
        });
        after = p;
        for (after.m_nBishop = 0; after.m_nBishop < kSquares && !bWins; ++after.m_nBishop)
            bWins = !p.IsOccupiedByWhite(after.m_nBishop) && CanBishopGo(p, after.m_nBishop) && IsLost(after);
        return bWins;
    }

    [[nodiscard]] static bool CanBishopGo(const TPlaces& p, int to) {
        TPlaces withKing = p; // the black king blocks the bishop as a pawn of its own would
        withKing.m_nWhiteKing = p.m_nBlackKing;
        return to != p.m_nBlackKing && IsBishopsTarget(p, to) && IsBishopsTarget(withKing, to);
    }

    [[nodiscard]] bool BlackLoses(const TPlaces& p) const {
        bool bCanMove = false, bSaved = false;
        ForEachKingStep(p.m_nBlackKing, [&](int to) {
            if (IsAttacked(p, to))
                return;
            TPlaces after = p;
            after.m_nBlackKing = to;
            if (to == p.m_nBishop)
                after.m_nBishop = kNoBishop;
            bCanMove = true;
            bSaved |= to == p.m_nPawn || !m_wins[IndexOf(true, after)];
        });
        return bCanMove ? !bSaved : IsAttacked(p, p.m_nBlackKing);
    }

    std::vector<bool> m_wins;
};

TChessboard BoardOf(const TPlaces& p) {
    TChessboard b = EmptyChessboard();
    b.m_board[static_cast<std::size_t>(p.m_nWhiteKing)] = kWhiteKing;
    b.m_board[static_cast<std::size_t>(p.m_nBlackKing)] = kBlackKing;
    b.m_board[static_cast<std::size_t>(p.m_nPawn)] = kWhitePawn;
    if (p.m_nBishop != kNoBishop)
        b.m_board[static_cast<std::size_t>(p.m_nBishop)] = kWhiteBishop;
    RecountFigures(b, true);
    b.m_nMoves = b.m_nInitialMoves = 99;
    return b;
}

/// Counts the draws that are claimed and asserts that White wins none of them.
template <class TClaim>
int CountClaims(const CEndingTable& table, int file, int nColour, bool bBishop, TClaim&& claims) {
    int nClaims = 0;
    CEndingTable::ForEachPosition(file, nColour, bBishop, [&](const TPlaces& p) {
        if (IsAttacked(p, p.m_nBlackKing))
            return;
        const TChessboard b = BoardOf(p);
        if (!claims(b, p))
            return;
        ++nClaims;
        EXPECT_FALSE(table.IsWonWithWhiteToMove(p)) << WriteFEN(b, false);
    });
    return nClaims;
}

TEST(PawnEndingTables, ClaimedDrawsOfKingAndPawnAreDraws) {
    CEndingTable table;
    int nClaims = 0;
    for (int file = 0; file < 8; ++file) {
        table.Solve(file, 0, false);
        nClaims += CountClaims(table, file, 0, false, [](const TChessboard& b, const TPlaces& p) {
            return IsDrawnPawnEnding(b, static_cast<TSquare>(p.m_nPawn));
        });
    }
    EXPECT_GT(nClaims, 5000);
}

TEST(PawnEndingTables, ClaimedDrawsOfTheWrongBishopAreDraws) {
    for (const int file : {0, 7}) {
        const int nWrong = 1 - ColourOf(SquareAt(file, 7));
        CEndingTable table;
        table.Solve(file, nWrong, false);
        table.Solve(file, nWrong, true);
        const int nClaims = CountClaims(table, file, nWrong, true, [](const TChessboard& b, const TPlaces& p) {
            return IsDrawnWrongBishopEnding(b, static_cast<TSquare>(p.m_nPawn), static_cast<TSquare>(p.m_nBishop));
        });
        EXPECT_GT(nClaims, 20000) << file;
    }
}

TEST(PawnEndingTables, KnowWinsAndDrawsThatEveryPlayerKnows) {
    CEndingTable table;
    table.Solve(4, 0, false);
    const auto isWon = [&](const char* white, const char* black, const char* pawn) {
        return table.IsWonWithWhiteToMove({SquareOf(white), SquareOf(black), SquareOf(pawn), kNoBishop});
    };
    EXPECT_TRUE(isWon("e6", "e8", "e5"));  // king on the sixth rank before its pawn
    EXPECT_FALSE(isWon("e4", "e6", "e3")); // Black has the opposition
    EXPECT_TRUE(isWon("a1", "a8", "e5"));  // the king is too far
    EXPECT_FALSE(isWon("a1", "f6", "e5"));
}

} // namespace
} // namespace quillon::test
