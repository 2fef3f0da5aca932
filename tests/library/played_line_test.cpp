#include "library/played_line.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/fen.h"
#include "support/random_positions.h"
#include "support/reference_chess.h"

namespace quillon {
namespace {

TChessboard Board(const std::string& placement) {
    TChessboard board = EmptyChessboard();
    static_cast<void>(ReadFEN(board, placement));
    RecountFigures(board, true);
    return board;
}

std::vector<std::string> Sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

char PromotionLetter(TFigure kind) {
    return kind == kQueen ? 'Q' : kind == kRook ? 'R' : kind == kBishop ? 'B' : kind == kKnight ? 'N' : '-';
}

std::vector<std::string> Names(const std::vector<TMove>& moves) {
    std::vector<std::string> names;
    for (const TMove& move : moves)
        names.push_back(std::to_string(move.m_nFrom) + ">" + std::to_string(move.m_nTo) +
                        PromotionLetter(PromotionKind(move)));
    return Sorted(std::move(names));
}

std::vector<std::string> Names(const std::vector<reference::Move>& moves) {
    std::vector<std::string> names;
    for (const reference::Move& move : moves)
        names.push_back(std::to_string(move.from) + ">" + std::to_string(move.to) +
                        (move.promotion != 0 ? move.promotion : '-'));
    return Sorted(std::move(names));
}

TMove Same(const reference::Move& move) {
    const TFigure kind = move.promotion == 'Q'   ? kQueen
                         : move.promotion == 'R' ? kRook
                         : move.promotion == 'B' ? kBishop
                         : move.promotion == 'N' ? kKnight
                                                 : kNoFigure;
    return {move.from, move.to, kind, 0};
}

TEST(PlayedLine, FollowsTheRulesOfChess) {
    std::mt19937_64 rng(1925);
    CPlayedLine line;
    for (int i = 0; i < 150; ++i) {
        const std::string placement = reference::RandomAnyPlacement(rng);
        reference::Position position = reference::ProblemFromFen(placement);
        line.Start(Board(placement));
        for (int nPly = 0; nPly < 14; ++nPly) {
            const std::vector<reference::Move> moves = reference::LegalMoves(position);
            ASSERT_EQ(Names(line.LegalMoves()), Names(moves)) << reference::ToFen(position);
            ASSERT_EQ(line.IsInCheck(), reference::InCheck(position)) << reference::ToFen(position);
            if (moves.empty())
                break;
            const reference::Move move = moves[reference::Draw(rng, moves.size())];
            ASSERT_TRUE(line.Play(Same(move)));
            position = reference::Play(position, move);
            ASSERT_EQ(WriteFEN(line.Position(), false), reference::Placement(position));
        }
    }
}

TEST(PlayedLine, RefusesWhatIsIllegalAndStaysWhereItIs) {
    CPlayedLine line;
    line.Start(Board("4k3/8/8/8/8/8/4P3/4K3"));
    EXPECT_FALSE(line.Play({kE1, kE1, 0, 0}));
    EXPECT_FALSE(line.Play({SquareAt(4, 1), SquareAt(4, 4), 0, 0}));
    EXPECT_FALSE(line.Play({kE8, kD8, 0, 0}));
    EXPECT_FALSE(line.Play({200, 250, 0, 0}));
    EXPECT_TRUE(line.Play({SquareAt(4, 1), SquareAt(4, 3), 0, 0}));
    EXPECT_EQ(WriteFEN(line.PositionBefore(), false), "4k3/8/8/8/8/8/4P3/4K3");
}

TEST(PlayedLine, IsBounded) {
    CPlayedLine line;
    line.Start(Board("4k3/8/8/8/8/8/8/4K3"));
    const TMove there[] = {{kE1, kD1, 0, 0}, {kE8, kD8, 0, 0}, {kD1, kE1, 0, 0}, {kD8, kE8, 0, 0}};
    int nPlies = 0;
    while (nPlies < 1'000 && line.Play(there[nPlies % 4]))
        ++nPlies;
    EXPECT_EQ(nPlies, CPlayedLine::kMostPlies);
    EXPECT_EQ(line.LegalMoves().size(), 5u);
}

} // namespace
} // namespace quillon
