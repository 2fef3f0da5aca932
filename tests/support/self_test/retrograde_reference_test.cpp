// The endgame tables of the reference: their moves against the other move generator, their lengths against published
// ones and against the table of three men that is made the other way round.

#include "support/few_men_board.h"
#include "support/random_positions.h"
#include "support/reference_chess.h"
#include "support/retrograde_reference.h"
#include "support/three_men_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace reference {
namespace {

struct FewMen {
    std::string letters;
    std::vector<int> squares;
};

// Kings first, as the tables want them.
FewMen MenOf(const Position& position) {
    FewMen men{"Kk", {KingSquare(position, Side::White), KingSquare(position, Side::Black)}};
    for (int square = 0; square < 64; ++square)
        if (const char letter = position.board[static_cast<std::size_t>(square)];
            letter != kEmpty && letter != 'K' && letter != 'k') {
            men.letters += letter;
            men.squares.push_back(square);
        }
    return men;
}

std::string TextOf(int from, int to, char promotion) {
    return std::to_string(from) + '-' + std::to_string(to) + static_cast<char>(promotion == 0 ? '.' : promotion & ~32);
}

std::vector<std::string> ExpectedMoves(const Position& position) {
    std::vector<std::string> texts;
    for (const Move& move : LegalMoves(position))
        texts.push_back(TextOf(move.from, move.to, move.promotion));
    std::ranges::sort(texts);
    return texts;
}

std::vector<std::string> MovesOnFewMenBoard(const Position& position) {
    const FewMen men = MenOf(position);
    const bool white = position.toMove == Side::White;
    FewMenBoard board(men.letters);
    EXPECT_TRUE(board.Set(men.squares));
    int stepper = FewMenBoard::kNobody;
    if (position.enPassant != kNoSquare) // the pawn behind it has just come
        stepper = static_cast<int>(std::ranges::find(men.squares, position.enPassant + (white ? -8 : 8)) -
                                   men.squares.begin());
    std::vector<std::string> texts;
    board.AnyMove(white, stepper, [&](const FewMenBoard::Move& move) {
        if (!board.IsInCheck(white))
            texts.push_back(TextOf(move.from, move.to, move.promotion));
        return false;
    });
    EXPECT_TRUE(std::ranges::equal(board.Squares(), men.squares)) << "not taken back";
    std::ranges::sort(texts);
    return texts;
}

TEST(FewMenBoard, HasTheLegalMovesOfTheOtherGenerator) {
    std::mt19937_64 rng(20);
    int enPassant = 0, checks = 0;
    for (int i = 0; i < 1500; ++i) {
        const int men = 3 + DrawInt(rng, 3);
        Position position = FromFen(Chance(rng, 60) ? RandomPawnPlacement(rng, men) : RandomMatingPlacement(rng, men));
        for (int ply = 0; ply < 6; ++ply) {
            const std::vector<std::string> expected = ExpectedMoves(position);
            ASSERT_EQ(MovesOnFewMenBoard(position), expected) << ToFen(position);
            const std::vector<Move> moves = LegalMoves(position);
            if (moves.empty())
                break;
            checks += InCheck(position);
            position = Play(position, moves[Draw(rng, moves.size())]);
            enPassant += position.enPassant != kNoSquare;
        }
    }
    EXPECT_GT(enPassant, 50);
    EXPECT_GT(checks, 200);
}

TEST(RetrogradeReference, KnowsTheLongestMatesOfThreeMen) {
    RetrogradeTables tables;
    EXPECT_EQ(tables.Of("Q").LongestMate(), 10);
    EXPECT_EQ(tables.Of("R").LongestMate(), 16);
    EXPECT_EQ(tables.Of("P").LongestMate(), 28);
    for (const char* const material : {"", "B", "N", "q", "r", "b", "n", "p"})
        EXPECT_EQ(tables.Of(material).LongestMate(), 0) << material;
}

template <class Visit> void ForAllSquaresOfThree(Visit visit) {
    for (int number = 0; number < 64 * 64 * 64; ++number)
        visit(std::array{number / 4096, number / 64 % 64, number % 64});
}

TEST(RetrogradeReference, IsTheTableOfThreeMenThatWasMadeFromTheMates) {
    RetrogradeTables tables;
    for (const char piece : {'Q', 'R'}) {
        const RetrogradeTable& table = tables.Of({piece});
        const ThreeMenTable other(piece);
        int wrong = 0;
        ForAllSquaresOfThree([&](const std::array<int, 3>& squares) {
            wrong += table.MateIn(squares) != other.Length(squares[0], squares[2], squares[1]);
        });
        EXPECT_EQ(wrong, 0) << piece;
    }
}

int Mirrored(int square, int symmetry) {
    const int file = (symmetry & 1) != 0 ? 7 - square % 8 : square % 8;
    const int rank = (symmetry & 2) != 0 ? 7 - square / 8 : square / 8;
    return (symmetry & 4) != 0 ? file * 8 + rank : rank * 8 + file;
}

// Of its eight mirror images the first in the order of squares.
bool IsFirstOfItsKind(const std::array<int, 3>& squares) {
    for (int symmetry = 1; symmetry < 8; ++symmetry) {
        std::array<int, 3> mirrored{};
        std::ranges::transform(squares, mirrored.begin(), [&](int square) { return Mirrored(square, symmetry); });
        if (mirrored < squares)
            return false;
    }
    return true;
}

// A published count: rook against king, Black to move, mirror images once, by the moves until he is mated.
TEST(RetrogradeReference, CountsTheMatesOfTheRook) {
    const std::vector<int> published{27,   78,   246,  81,   198,  471,  592,  683, 1433,
                                     1712, 1985, 2854, 3597, 4194, 4553, 2166, 390};
    RetrogradeTables tables;
    const RetrogradeTable& rook = tables.Of("R");
    std::vector<int> counted(published.size());
    int drawn = 0;
    ForAllSquaresOfThree([&](const std::array<int, 3>& squares) {
        if (!IsFirstOfItsKind(squares) || !rook.IsLegal(squares, false))
            return;
        if (const int moves = rook.MatedIn(squares); moves == RetrogradeTable::kNotLost)
            ++drawn;
        else
            ++counted.at(static_cast<std::size_t>(moves));
    });
    EXPECT_EQ(counted, published);
    EXPECT_EQ(drawn, 2796);
}

} // namespace
} // namespace reference
