// Mate on the move and mate in two against the reference rules.

#include "search/find_mate.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>

#include "core/queries.h"
#include "search/searched_position.h"

namespace quillon::test {
namespace {

bool HasReferenceMateInOne(const reference::Position& position) { return reference::ForcesMate(position, 1); }

/// Squares around the black king without a black man that White does not attack, the king lifted off.
int CountReferenceFlights(reference::Position position) {
    const int king = reference::KingSquare(position, reference::Side::Black);
    position.board[static_cast<std::size_t>(king)] = reference::kEmpty;
    int flights = 0;
    for (int square = 0; square < 64; ++square) {
        const int files = std::abs(square % 8 - king % 8), ranks = std::abs(square / 8 - king / 8);
        const char man = position.board[static_cast<std::size_t>(square)];
        const bool bBlackMan = man >= 'a' && man <= 'z';
        flights += std::max(files, ranks) == 1 && !bBlackMan &&
                   reference::CountAttackers(position, square, reference::Side::White, 1) == 0;
    }
    return flights;
}

/// The engine's root for a problem's placement.
bool HasEngineMateInOne(const std::string& placement) {
    CSearchedPosition position(placement, 1);
    return FindMateInOne(&position.Now());
}

TEST(MateInOne, AgreesWithTheRulesInRandomDiagrams) {
    std::mt19937_64 rng(20240611);
    int mates = 0;
    const int count = Samples(30000);
    CSearchedPosition frame("7k/8/8/8/8/8/8/K7", 1);
    for (int i = 0; i < count; ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 9);
        const bool bMate = HasReferenceMateInOne(reference::ProblemFromFen(placement));
        TChessboard& root = *MakeRoot(frame.Context(), frame.Analysis(), ChessboardFromFEN(placement), 1, 2);
        ASSERT_EQ(FindMateInOne(&root), bMate) << placement;
        mates += bMate ? 1 : 0;
    }
    EXPECT_GT(mates, count / 50) << "the sample proves something about mates too";
    EXPECT_LT(mates, count - count / 10);
}

TEST(MateInOne, AgreesInCrowdedDiagrams) {
    std::mt19937_64 rng(77);
    int mates = 0;
    for (int i = 0; i < Samples(8000); ++i) {
        const std::string placement = i % 2 == 0 ? reference::RandomMatingPlacement(rng, 12 + i % 9)
                                                 : reference::RandomPawnPlacement(rng, 10 + i % 7);
        const bool bMate = HasReferenceMateInOne(reference::ProblemFromFen(placement));
        ASSERT_EQ(HasEngineMateInOne(placement), bMate) << placement;
        mates += bMate ? 1 : 0;
    }
    EXPECT_GT(mates, 0);
}

/// In games the history counts: en passant, and castlings that were lost.
TEST(MateInOne, AgreesBehindEveryMoveOfRandomGames) {
    std::mt19937_64 rng(4711);
    int mates = 0, checks = 0, enPassant = 0;
    for (int game = 0; game < Samples(700); ++game) {
        const std::vector<reference::GameStep> steps = reference::RandomGame(rng, 60);
        if (steps.empty())
            continue;
        const reference::Position first = reference::FromFen(steps.front().fen);
        if (first.toMove != reference::Side::White)
            continue;
        CSearchedPosition line(reference::Placement(first), 399);
        for (const reference::GameStep& step : steps) {
            const reference::Position now = reference::FromFen(step.fen);
            if (now.toMove == reference::Side::White) {
                const bool bMate = HasReferenceMateInOne(now);
                ASSERT_EQ(HasMateInOne(line.Now()), bMate) << step.fen;
                mates += bMate ? 1 : 0;
                checks += reference::InCheck(now) ? 1 : 0;
                enPassant += now.enPassant != reference::kNoSquare ? 1 : 0;
            }
            line.Play(step.move);
        }
    }
    EXPECT_GT(mates, 0);
    EXPECT_GT(checks, 0);
    EXPECT_GT(enPassant, 0);
}

TEST(LookForMateInOne, TellsTheFlightsBesideTheMate) {
    std::mt19937_64 rng(31);
    std::array<int, 9> seen{};
    int checks = 0;
    for (int i = 0; i < Samples(6000); ++i) {
        const std::string placement =
            i % 2 == 0 ? AnyPlacement(rng, i, 4 + i % 9) : reference::RandomPawnPlacement(rng, 8);
        const reference::Position position = reference::ProblemFromFen(placement);
        CSearchedPosition line(placement, 1);
        const TLookForMate look = LookForMateInOne(line.Now());
        ASSERT_EQ(look.m_bMate, HasReferenceMateInOne(position)) << placement;
        ASSERT_EQ(look.m_nFlights, CountReferenceFlights(position)) << placement;
        ++seen[static_cast<std::size_t>(look.m_nFlights)];
        checks += reference::InCheck(position) ? 1 : 0;
    }
    for (int flights = 0; flights <= 8; ++flights)
        EXPECT_GT(seen[static_cast<std::size_t>(flights)], 0) << flights;
    EXPECT_GT(checks, 0);
}

struct TMateRow {
    const char* m_pName;
    const char* m_pPlacement;
    bool m_bMate;
};

TEST(MateInOne, KnowsEveryKindOfMatingMove) {
    const TMateRow rows[] = {
        {"queen", "7k/8/6K1/8/8/8/8/1Q6", true},
        {"smothered by a knight", "6rk/6pp/8/6N1/8/8/8/K7", true},
        {"promotion to a queen", "7k/P7/6K1/8/8/8/8/8", true},
        {"promotion to a knight alone", "6nb/5Ppk/6pp/8/8/8/8/K7", true},
        {"castling or its rook", "5k2/8/8/8/8/4R1R1/8/4K2R", true},
        {"stalemate is none", "k7/P7/8/1K6/8/8/8/8", false},
        {"free figure", "7k/6pp/8/8/r3Q3/7K/8/8", true},
        {"the same figure pinned", "7k/6pp/8/8/r3Q2K/8/8/8", false},
        {"discovered by the king", "k7/8/8/8/8/8/KR6/R7", true},
        {"en passant is none in a diagram", "8/8/8/5pPk/7p/6pK/8/5R2", false},
    };
    for (const TMateRow& row : rows) {
        const bool bTruth = HasReferenceMateInOne(reference::ProblemFromFen(row.m_pPlacement));
        EXPECT_EQ(bTruth, row.m_bMate) << row.m_pName;
        EXPECT_EQ(HasEngineMateInOne(row.m_pPlacement), row.m_bMate) << row.m_pName;
    }
}

TEST(MateInTwo, AgreesWithTheRulesInRandomDiagrams) {
    std::mt19937_64 rng(31337);
    int mates = 0;
    CSearchedPosition frame("7k/8/8/8/8/8/8/K7", 3);
    for (int i = 0; i < Samples(2500); ++i) {
        const std::string placement = AnyPlacement(rng, i, 4 + i % 6);
        const bool bMate = reference::ForcesMate(reference::ProblemFromFen(placement), 2);
        TChessboard& root = *MakeRoot(frame.Context(), frame.Analysis(), ChessboardFromFEN(placement), 3, 2);
        ASSERT_EQ(HasMateInTwo(root), bMate) << placement;
        mates += bMate ? 1 : 0;
    }
    EXPECT_GT(mates, 0);
}

/// The question may be asked in the middle of a longer line: what the line has built stays as it was.
TEST(MateInTwo, LeavesTheLineAboveItAlone) {
    CSearchedPosition line("7k/8/5K2/8/8/8/8/1Q6", 9);
    line.Play("Qb1-a1 Kh8-h7");
    const TChessboard before = line.Now();
    EXPECT_TRUE(HasMateInTwo(line.Now()));
    EXPECT_EQ(before.m_nMoves, line.Now().m_nMoves);
    EXPECT_EQ(before.m_board, line.Now().m_board);
    EXPECT_EQ(before.m_pPrevious, line.Now().m_pPrevious);
}

} // namespace
} // namespace quillon::test
