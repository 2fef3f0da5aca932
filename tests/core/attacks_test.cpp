#include "core/attacks.h"

#include <gtest/gtest.h>

#include "core/king_flights.h"
#include "core/knight_tables.h"
#include "core/lines.h"
#include "core/positions.h"

namespace quillon::test {
namespace {

using reference::Side;

constexpr int kKnightSteps[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};

std::vector<int> KnightTargets(int square) {
    std::vector<int> targets;
    for (const auto& [files, ranks] : kKnightSteps)
        if (IsOnBoard(FileOf(square) + files, RankOf(square) + ranks))
            targets.push_back(SquareAt(FileOf(square) + files, RankOf(square) + ranks));
    std::ranges::sort(targets);
    return targets;
}

// ---- knight tables

TEST(KnightTables, RowHoldsEveryStepInRisingOrder) {
    for (int square = 0; square < kSquares; ++square) {
        const auto& deltas = KnightDeltasOf(square);
        std::vector<int> targets;
        for (int i = 0; i < KnightCountOf(square); ++i)
            targets.push_back(square + deltas[static_cast<std::size_t>(i)]);
        EXPECT_EQ(targets, KnightTargets(square)) << TextOf(static_cast<TSquare>(square));
    }
}

TEST(KnightTables, RowsArePaddedWithTheirLastStep) {
    for (std::size_t row = 0; row < KnightDeltas.size(); ++row)
        for (std::size_t i = KnightCount[row]; i < 8; ++i)
            EXPECT_EQ(KnightDeltas[row][i], KnightDeltas[row][KnightCount[row] - 1u]) << row;
}

TEST(KnightTables, ClassesFollowTheDistanceToTheEdges) {
    EXPECT_EQ(KnightClass[SquareOf("d4")], 0);
    EXPECT_EQ(KnightClass[SquareOf("a1")], 19);
    EXPECT_EQ(KnightClass[SquareOf("h1")], 24);
    EXPECT_EQ(KnightClass[SquareOf("a8")], 9);
    EXPECT_EQ(KnightClass[SquareOf("h8")], 14);
    EXPECT_EQ(KnightClass[SquareOf("c7")], 1);
    EXPECT_EQ(KnightClass[SquareOf("c2")], 4);
    EXPECT_EQ(KnightClass[SquareOf("g5")], 2);
    EXPECT_EQ(KnightClass[SquareOf("b5")], 3);
}

TEST(KnightTables, EightProbesFindAKnightExactlyAStepAway) {
    for (int square = 0; square < kSquares; ++square) {
        const std::vector<int> targets = KnightTargets(square);
        for (int knight = 0; knight < kSquares; ++knight) {
            std::array<TFigure, kSquares> board{};
            board[static_cast<std::size_t>(knight)] = kWhiteKnight;
            EXPECT_EQ(HasKnightStep(board, square, kWhiteKnight), std::ranges::find(targets, knight) != targets.end());
            EXPECT_FALSE(HasKnightStep(board, square, kBlackKnight));
        }
    }
}

// ---- lines

TEST(Lines, DirectionLeadsFromTheFirstSquareToTheSecond) {
    for (int from = 0; from < kSquares; ++from)
        for (int to = 0; to < kSquares; ++to) {
            const int files = FileOf(to) - FileOf(from), ranks = RankOf(to) - RankOf(from);
            const bool bLine = from != to && (files == 0 || ranks == 0 || AbsDiff(files, 0) == AbsDiff(ranks, 0));
            const TDirection direction = DirectionBetween(from, to);
            ASSERT_EQ(direction != kNoDirection, bLine);
            if (bLine) {
                ASSERT_EQ(from + KingSteps(from, to) * kSteps[direction], to);
                ASSERT_EQ(IsStraight(direction), files == 0 || ranks == 0);
                ASSERT_GE(kSquaresToEdge[direction][static_cast<std::size_t>(from)], KingSteps(from, to));
            }
        }
}

TEST(Lines, RayEndsAtTheFirstFigureOrTheEdge) {
    CLine line("7k/8/8/3p4/8/8/3P4/K7 w");
    EXPECT_EQ(FirstOnRay(line.Root(), SquareOf("d3"), 0), SquareOf("d5"));
    EXPECT_EQ(FirstOnRay(line.Root(), SquareOf("d3"), 1), SquareOf("d2"));
    EXPECT_EQ(FirstOnRay(line.Root(), SquareOf("d3"), 2), kNoSquare);
    EXPECT_EQ(FirstOnRay(line.Root(), SquareOf("h1"), 2), kNoSquare);
    EXPECT_TRUE(IsEmptyBetween(line.Root(), SquareOf("d2"), SquareOf("d5"), 0));
    EXPECT_FALSE(IsEmptyBetween(line.Root(), SquareOf("d1"), SquareOf("d5"), 0));
    EXPECT_TRUE(IsEmptyBetween(line.Root(), SquareOf("d4"), SquareOf("d5"), 0));
}

// ---- against the reference

class AttacksAgainstReference : public testing::TestWithParam<int> {
  protected:
    template <class TVisit> void Walk(int nOffset, TVisit&& visit) {
        WalkRandomGames<kLegalityOnly>(static_cast<std::uint64_t>(nOffset + GetParam()), 250, 40, visit);
    }
};

TEST_P(AttacksAgainstReference, AttackedSquares) {
    Walk(5100, [](CLine& line, const reference::Position& truth) {
        const TChessboard& b = line.Now();
        for (int square = 0; square < kSquares; ++square) {
            const int file = FileOf(square), rank = RankOf(square);
            const bool bWhite = reference::CountAttackers(truth, square, Side::White, 1) != 0;
            ASSERT_EQ(IsAttackedByWhite(b, file, rank), bWhite) << square;
            ASSERT_EQ(IsAttackedByWhiteOnBoard(b, file, rank), bWhite) << square;
            ASSERT_EQ(IsAttackedByBlack(b, file, rank), reference::CountAttackers(truth, square, Side::Black, 1) != 0)
                << square;
        }
    });
}

/// The king's own attack is no business of the scans that list attackers.
int CountWithoutKing(const reference::Position& truth, int square, Side by) {
    const int king = reference::KingSquare(truth, by);
    return reference::CountAttackers(truth, square, by) - (king != square && KingSteps(king, square) == 1 ? 1 : 0);
}

TEST_P(AttacksAgainstReference, AttackersOfASquare) {
    Walk(5200, [](CLine& line, const reference::Position& truth) {
        for (int square = 0; square < kSquares; ++square)
            for (const Side by : {Side::White, Side::Black}) {
                const auto find = by == Side::White ? FindWhiteAttackers : FindBlackAttackers;
                TMove list[kMaxMoves];
                int count = -1;
                const int result = find(line.Now(), FileOf(square), RankOf(square), list, &count);
                ASSERT_EQ(count, CountWithoutKing(truth, square, by));
                ASSERT_EQ(result, count == 0 ? kNoAttacker : count == 1 ? list[0].m_nFrom : kManyAttackers);
                ASSERT_EQ(find(line.Now(), FileOf(square), RankOf(square), nullptr, nullptr), result);
                for (int i = 0; i < count; ++i)
                    ASSERT_EQ(list[i].m_nTo, square);
                if (by == Side::Black) {
                    ASSERT_EQ(IsAttackedByBlackFigure(line.Now(), FileOf(square), RankOf(square)), count != 0);
                }
            }
    });
}

/// Source squares of the legal captures on a square, kings left out; the side must not be in check.
std::vector<int> LegalCapturers(const reference::Position& truth, int square) {
    std::vector<int> from;
    for (const reference::Move move : reference::LegalMoves(truth))
        if (move.to == square && move.from != reference::KingSquare(truth, truth.toMove))
            from.push_back(move.from);
    std::ranges::sort(from);
    from.erase(std::unique(from.begin(), from.end()), from.end());
    return from;
}

TEST_P(AttacksAgainstReference, CapturersAreTheLegalOnes) {
    Walk(5300, [](CLine& line, const reference::Position& now) {
        const reference::Position black = WithSideToMove(now, Side::Black), white = WithSideToMove(now, Side::White);
        for (int square = 0; square < kSquares; ++square) {
            const char man = now.board[static_cast<std::size_t>(square)];
            const bool bWhiteMan = man >= 'A' && man <= 'Z' && man != 'K', bBlackMan = man >= 'a' && man != 'k';
            TSquare found = kNoSquare;
            if (bWhiteMan && !reference::InCheck(black)) {
                const std::vector<int> capturers = LegalCapturers(black, square);
                ASSERT_EQ(FindBlackCapturer(line.Now(), FileOf(square), RankOf(square), found), !capturers.empty());
                TSquare list[kMaxMoves];
                const int count = ListBlackCapturers(line.Now(), FileOf(square), RankOf(square), list);
                ASSERT_TRUE(count == 0 || list[0] == found);
                std::vector<int> listed(list, list + count);
                std::ranges::sort(listed);
                ASSERT_EQ(listed, capturers);
            } else if (bBlackMan && !reference::InCheck(white)) {
                const std::vector<int> capturers = LegalCapturers(white, square);
                ASSERT_EQ(FindWhiteCapturer(line.Now(), FileOf(square), RankOf(square), found), !capturers.empty());
                if (!capturers.empty()) {
                    ASSERT_TRUE(std::ranges::find(capturers, found) != capturers.end());
                }
            }
        }
    });
}

/// Of a side that is not in check every pseudo-legal move but the king's and en passant is legal unless a pin forbids
/// it.
TEST_P(AttacksAgainstReference, PinsForbidExactlyTheMovesThatUncoverTheKing) {
    int nPins = 0;
    Walk(5400, [&](CLine& line, const reference::Position& truth) {
        if (reference::InCheck(truth))
            return;
        const TTexts legal = SortedTexts(reference::LegalMoves(truth));
        const auto isPinned = truth.toMove == Side::White ? IsWhiteFigurePinned : IsBlackFigurePinned;
        for (const std::string& text : line.Moves()) {
            const TMove move = MoveOf(text);
            const bool bEnPassant = move.m_nTo == truth.enPassant;
            if (KindOf(line.Now().m_board[move.m_nFrom]) == kKing || bEnPassant)
                continue;
            const bool bLegal = std::ranges::binary_search(legal, text);
            ASSERT_EQ(isPinned(line.Now(), FileOf(move.m_nFrom), RankOf(move.m_nFrom), move.m_nTo), !bLegal) << text;
            nPins += bLegal ? 0 : 1;
        }
    });
    EXPECT_GT(nPins, 100);
}

TEST_P(AttacksAgainstReference, FlightsOfTheBlackKing) {
    Walk(5500, [](CLine& line, const reference::Position& now) {
        const reference::Position truth = WithSideToMove(now, Side::Black);
        const int king = reference::KingSquare(truth, Side::Black);
        const auto moves = reference::LegalMoves(truth);
        const auto flights = std::ranges::count_if(
            moves, [&](const reference::Move move) { return move.from == king && KingSteps(king, move.to) == 1; });
        ASSERT_EQ(HasBlackKingFlight(line.Now(), FileOf(king), RankOf(king)), flights != 0);
        ASSERT_EQ(CountBlackKingFreeSquares(line.Now()), flights);
        ASSERT_EQ(CountSquares(BlackKingFreeSquares(TakeMasks(line.Now()))), flights);
    });
}

bool IsEnPassantAvailableInTruth(const reference::Position& truth) {
    if (truth.enPassant == reference::kNoSquare)
        return false;
    const bool bWhite = truth.toMove == Side::White;
    const int victim = truth.enPassant + (bWhite ? -8 : 8), king = reference::KingSquare(truth, truth.toMove);
    const char own = bWhite ? 'P' : 'p';
    bool bBeside = false;
    for (const int step : {-1, 1})
        bBeside |= IsOnBoard(FileOf(victim) + step, RankOf(victim)) &&
                   truth.board[static_cast<std::size_t>(victim + step)] == own;
    const bool bPawnChecks =
        AbsDiff(FileOf(king), FileOf(victim)) == 1 && RankOf(king) == RankOf(truth.enPassant + (bWhite ? -16 : 16));
    const int nCheckers = reference::CountAttackers(truth, king, reference::Opponent(truth.toMove));
    return bBeside && (nCheckers == 0 || (nCheckers == 1 && bPawnChecks));
}

TEST_P(AttacksAgainstReference, EnPassantIsAvailableBesideADoubleStep) {
    int nAvailable = 0;
    Walk(5600, [&](CLine& line, const reference::Position& truth) {
        const bool bAvailable = IsEnPassantAvailableInTruth(truth);
        ASSERT_EQ(IsEnPassantAvailable(line.Now()), bAvailable);
        nAvailable += bAvailable ? 1 : 0;
    });
    EXPECT_GT(nAvailable, 20);
}

TEST_P(AttacksAgainstReference, BlackEnPassantIsLegalWhenTheKingStaysSafe) {
    int nPseudo = 0;
    Walk(5700, [&](CLine& line, const reference::Position& truth) {
        if (truth.toMove != Side::Black || truth.enPassant == reference::kNoSquare)
            return;
        const TTexts legal = SortedTexts(reference::LegalMoves(truth));
        for (const std::string& text : line.Moves()) {
            const TMove move = MoveOf(text);
            if (move.m_nTo != truth.enPassant || KindOf(line.Now().m_board[move.m_nFrom]) != kPawn ||
                FileOf(move.m_nFrom) == FileOf(move.m_nTo))
                continue;
            ASSERT_EQ(IsLegalBlackEnPassant(line.Now(), move), std::ranges::binary_search(legal, text)) << text;
            ++nPseudo;
        }
    });
    EXPECT_GT(nPseudo, 10);
}

INSTANTIATE_TEST_SUITE_P(Seeds, AttacksAgainstReference, testing::Values(1, 2, 3, 4));

// ---- by name

TEST(Attacks, ListsAnswerAsLongAsTheyAreValid) {
    CLine line("7k/8/8/8/8/8/8/K6R w");
    EXPECT_TRUE(IsAttackedByWhite(line.Root(), 7, 4));
    line.Root().m_board[kH1] = kNoFigure; // lifted off for a test: the list does not know, the board does
    EXPECT_TRUE(IsAttackedByWhite(line.Root(), 7, 4));
    EXPECT_FALSE(IsAttackedByWhiteOnBoard(line.Root(), 7, 4));
    line.Root().m_bWhiteListsValid = 0;
    EXPECT_FALSE(IsAttackedByWhite(line.Root(), 7, 4));
}

TEST(Attacks, ASquareIsNotAttackedByTheKingOnIt) {
    CLine line("7k/8/8/8/8/8/8/K7 w");
    EXPECT_FALSE(IsAttackedByWhite(line.Root(), 0, 0));
    EXPECT_TRUE(IsAttackedByWhite(line.Root(), 1, 1));
    EXPECT_FALSE(IsAttackedByBlack(line.Root(), 7, 7));
    EXPECT_TRUE(IsAttackedByBlack(line.Root(), 7, 6));
}

TEST(Attacks, MarkedPawnsAttackToo) {
    CLine line("7k/8/3p4/8/8/8/8/K7 w");
    line.Root().m_board[SquareOf("d6")] |= kPawnMayNotAdvance;
    EXPECT_TRUE(IsAttackedByBlack(line.Root(), 2, 4));
    EXPECT_TRUE(IsAttackedByBlack(line.Root(), 4, 4));
    EXPECT_EQ(FindBlackAttackers(line.Root(), 4, 4, nullptr, nullptr), SquareOf("d6"));
}

TEST(Attacks, PinsLookThroughNothing) {
    CLine line("7k/8/8/8/r2PP2K/8/8/8 w"); // two figures between: neither is pinned
    EXPECT_FALSE(IsWhiteFigurePinned(line.Root(), 4, 3, SquareOf("e5")));
    EXPECT_FALSE(IsWhiteFigurePinned(line.Root(), 3, 3, SquareOf("d5")));
}

TEST(Attacks, PinnedFigureMayMoveAlongItsLine) {
    CLine line("4k3/8/8/4r3/8/8/4Q3/K7 b");
    EXPECT_TRUE(IsBlackFigurePinned(line.Root(), 4, 4, SquareOf("d5")));
    EXPECT_FALSE(IsBlackFigurePinned(line.Root(), 4, 4, SquareOf("e7")));
    EXPECT_FALSE(IsBlackFigurePinned(line.Root(), 4, 4, SquareOf("e2"))); // takes the pinning queen
}

TEST(Attacks, CapturersArePawnsThenKnightsThenSliders) {
    CLine line("7k/1b1r4/8/4p1n1/3P3q/8/8/K7 b");
    PutFigure(line.Root(), SquareOf("f3"), kBlackKnight);
    TSquare list[kMaxMoves];
    const int count = ListBlackCapturers(line.Root(), 3, 3, list);
    TTexts squares;
    for (int i = 0; i < count; ++i)
        squares.push_back(TextOf(list[i]));
    EXPECT_EQ(squares, Words("e5 f3 d7 h4"));
    TSquare first = kNoSquare;
    ASSERT_TRUE(FindBlackCapturer(line.Root(), 3, 3, first));
    EXPECT_EQ(first, SquareOf("e5"));
}

TEST(Attacks, PinnedCapturerIsPassedOver) {
    CLine line("7k/8/5p2/4P3/8/8/1B6/K5r1 b"); // the bishop would pin the pawn f6, were the diagonal open
    TSquare first = kNoSquare;
    EXPECT_TRUE(FindBlackCapturer(line.Root(), 4, 4, first)); // taking the pawn e5 stays on the diagonal
    CLine pinned("5k2/8/5p2/4P3/8/8/8/K4R2 b");
    EXPECT_FALSE(FindBlackCapturer(pinned.Root(), 4, 4, first));
}

TEST(Attacks, KingIsLiftedForItsFlights) {
    CLine line("8/8/8/8/R3k3/8/8/K7 b"); // f4 lies behind the king
    EXPECT_FALSE(IsAttackedByWhite(line.Root(), 5, 3));
    EXPECT_EQ(CountBlackKingFreeSquares(line.Root()), 6);
}

TEST(Attacks, EnPassantOfBlackUncoversTheRank) {
    CLine line("8/8/8/8/k3p2R/8/3P4/7K w");
    line.Play("d2d4");
    EXPECT_FALSE(IsLegalBlackEnPassant(line.Now(), MoveOf("e4d3")));
    CLine safe("8/8/8/k7/4p2R/8/3P4/7K w");
    safe.Play("d2d4");
    EXPECT_TRUE(IsLegalBlackEnPassant(safe.Now(), MoveOf("e4d3")));
}

TEST(Attacks, EnPassantIsUnavailableInCheckFromElsewhere) {
    CLine line("2b4k/3p4/8/4P3/8/7K/8/8 b"); // the double step opens the bishop's diagonal
    line.Play("d7d5");
    ASSERT_EQ(line.Now().m_whiteChecker, SquareOf("c8"));
    EXPECT_FALSE(IsEnPassantAvailable(line.Now()));
}

} // namespace
} // namespace quillon::test
