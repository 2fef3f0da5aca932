// The reference itself, held against published move counts, against problems that can be checked by eye, and against
// itself: two ways to one verdict.

#include "support/random_positions.h"
#include "support/reference_chess.h"
#include "support/reference_solver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace reference {
namespace {

using Texts = std::vector<std::string>;

Texts Moves(const Position& position) {
    Texts texts;
    for (const Move move : LegalMoves(position))
        texts.push_back(LongNotation(position, move));
    std::ranges::sort(texts);
    return texts;
}

bool HasMove(const Position& position, std::string_view text) {
    const Texts moves = Moves(position);
    return std::ranges::find(moves, text) != moves.end();
}

Position After(Position position, const Texts& moves) {
    for (const std::string& move : moves)
        position = Play(position, MoveFromNotation(position, move));
    return position;
}

// ---- move counts

struct PerftRow {
    const char* name;
    const char* fen;
    std::vector<std::uint64_t> counts; // depth 1, 2, ...
};

class ReferencePerft : public testing::TestWithParam<PerftRow> {};

TEST_P(ReferencePerft, CountsAsPublished) {
    const Position position = FromFen(GetParam().fen);
    for (std::size_t index = 0; index < GetParam().counts.size(); ++index)
        EXPECT_EQ(Perft(position, static_cast<int>(index) + 1), GetParam().counts[index]) << "depth " << index + 1;
}

INSTANTIATE_TEST_SUITE_P(
    Published, ReferencePerft,
    testing::Values(
        PerftRow{"Start", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", {20, 400, 8902, 197281}},
        PerftRow{"Kiwipete", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", {48, 2039, 97862}},
        PerftRow{"RookEnding", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -", {14, 191, 2812, 43238, 674624}},
        PerftRow{
            "Promotions", "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", {6, 264, 9467, 422333}},
        PerftRow{"PawnOnD7", "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", {44, 1486, 62379}},
        PerftRow{"Middlegame",
                 "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
                 {46, 2079, 89890}}),
    [](const auto& row) { return std::string(row.param.name); });

// ---- FEN

TEST(ReferenceFen, PrintsWhatItRead) {
    for (const std::string fen : {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
                                  "r3k3/8/8/3pP3/8/8/8/4K2R w Kq d6 0 12", "8/8/8/8/k2Pp2Q/8/8/3K4 b - d3 0 1"})
        EXPECT_EQ(ToFen(FromFen(fen)), fen);
}

TEST(ReferenceFen, PlacementAloneMeansWhiteToMoveWithoutCastling) {
    EXPECT_EQ(ToFen(FromFen("4k3/8/8/8/8/8/8/R3K2R")), "4k3/8/8/8/8/8/8/R3K2R w - - 0 1");
}

TEST(ReferenceFen, ProblemHasEveryCastlingOfTheBoardAndNoEnPassant) {
    EXPECT_EQ(ToFen(ProblemFromFen("r3k3/8/8/3pP3/8/8/8/R3K2R b - d6")), "r3k3/8/8/3pP3/8/8/8/R3K2R w KQq - 0 1");
    EXPECT_EQ(ToFen(ProblemFromFen("r2k3r/8/8/8/8/8/8/R4K1R")), "r2k3r/8/8/8/8/8/8/R4K1R w - - 0 1");
}

TEST(ReferenceFen, RightWithoutRookOrKingAtHomeIsDropped) {
    EXPECT_EQ(ToFen(FromFen("r3k3/8/8/8/8/8/8/4K2R b KQkq - 3 9")), "r3k3/8/8/8/8/8/8/4K2R b Kq - 3 9");
}

TEST(ReferenceFen, EnPassantSquareMayBeInCapitals) {
    EXPECT_EQ(FromFen("8/8/8/8/k2Pp2Q/8/8/3K4 b - D3").enPassant, 19);
}

TEST(ReferenceFen, RefusesNonsense) {
    for (const char* fen : {"", "8/8/8/8/8/8/8/8", "k7/8/8/8/8/8/8/KK6", "k7/8/8/8/8/8/8/K6", "k7/8/8/8/8/8/8/K8",
                            "k7/8/8/8/8/8/K7", "k7/8/8/8/8/8/8/8/K7", "kP6/8/8/8/8/8/8/K7", "k7/8/8/8/8/8/8/Kp6",
                            "kx6/8/8/8/8/8/8/K7", "k7/8/8/8/8/8/8/K7 x", "k7/8/8/8/8/8/8/K7 w Z",
                            "k7/8/8/8/8/8/8/K7 w - e3", "k7/8/8/8/8/8/8/K7 w - e6", "k7/8/8/8/8/8/8/K7 w - - x"})
        EXPECT_THROW((void)FromFen(fen), std::invalid_argument) << fen;
}

// ---- rules and notation

TEST(ReferenceRules, CountersFollowCapturesAndPawns) {
    const Position start = FromFen("4k3/8/8/3p4/4P3/8/8/4K3 w - - 7 30");
    EXPECT_EQ(ToFen(After(start, {"Ke1-e2", "Ke8-e7"})), "8/4k3/8/3p4/4P3/8/4K3/8 w - - 9 31");
    EXPECT_EQ(ToFen(After(start, {"e4:d5"})), "4k3/8/8/3P4/8/8/8/4K3 b - - 0 30");
}

TEST(ReferenceRules, EnPassantOnlyDirectlyAfterTheDoubleStep) {
    const Position start = ProblemFromFen("k7/3p4/8/4P3/8/8/8/K7");
    const Position stepped = After(start, {"Ka1-a2", "d7-d5"});
    EXPECT_EQ(ToFen(stepped), "k7/8/8/3pP3/8/8/K7/8 w - d6 0 2");
    ASSERT_TRUE(HasMove(stepped, "e5:d6"));
    EXPECT_EQ(ToFen(After(stepped, {"e5:d6"})), "k7/8/3P4/8/8/8/K7/8 b - - 0 2");
    EXPECT_FALSE(HasMove(After(stepped, {"Ka2-a1", "Ka8-b8"}), "e5:d6"));
    EXPECT_FALSE(HasMove(After(start, {"Ka1-a2", "d7-d6", "Ka2-a1", "d6-d5"}), "e5:d6"));
    EXPECT_FALSE(HasMove(ProblemFromFen("k7/8/8/3pP3/8/8/8/K7"), "e5:d6"));
}

TEST(ReferenceRules, EnPassantMayNotUncoverTheKing) {
    // Both pawns leave the fifth rank at once, so the rook would check the king on a5.
    const Position start = FromFen("6k1/2p5/8/KP5r/8/8/8/8 b - -");
    const Position stepped = After(start, {"c7-c5"});
    EXPECT_FALSE(HasMove(stepped, "b5:c6"));
    EXPECT_TRUE(HasMove(After(FromFen("6k1/2p5/K7/1P5r/8/8/8/8 b - -"), {"c7-c5"}), "b5:c6"));
}

TEST(ReferenceRules, DoubleStepCheckMayBeTakenEnPassant) {
    const Position position = After(FromFen("7k/3p4/8/4P3/4K3/8/8/8 b - -"), {"d7-d5"});
    EXPECT_TRUE(InCheck(position));
    EXPECT_TRUE(HasMove(position, "e5:d6"));
    EXPECT_TRUE(HasMove(position, "Ke4:d5"));
    EXPECT_FALSE(HasMove(position, "e5-e6"));
}

TEST(ReferenceRules, PawnPromotesToFourMenAheadAndByCapture) {
    const Position position = ProblemFromFen("3n4/4P3/8/8/8/8/8/K1k5");
    for (const char* text : {"e7-e8Q", "e7-e8R", "e7-e8B", "e7-e8N", "e7:d8Q", "e7:d8R", "e7:d8B", "e7:d8N"})
        EXPECT_TRUE(HasMove(position, text)) << text;
    EXPECT_EQ(Placement(After(position, {"e7:d8N"})), "3N4/8/8/8/8/8/8/K1k5");
    EXPECT_EQ(Placement(After(FromFen("K1k5/8/8/8/8/8/p7/8 b"), {"a2-a1R"})), "K1k5/8/8/8/8/8/8/r7");
}

TEST(ReferenceRules, CastlingMovesBothMen) {
    const Position position = ProblemFromFen("r3k2r/8/8/8/8/8/8/R3K2R");
    EXPECT_EQ(ToFen(After(position, {"0-0"})), "r3k2r/8/8/8/8/8/8/R4RK1 b kq - 1 1");
    EXPECT_EQ(ToFen(After(position, {"0-0-0"})), "r3k2r/8/8/8/8/8/8/2KR3R b kq - 1 1");
    const Position black = After(position, {"Ke1-e2"});
    EXPECT_EQ(ToFen(After(black, {"0-0"})), "r4rk1/8/8/8/8/8/4K3/R6R w - - 2 2");
    EXPECT_EQ(ToFen(After(black, {"0-0-0"})), "2kr3r/8/8/8/8/8/4K3/R6R w - - 2 2");
}

TEST(ReferenceRules, CastlingNeitherOutOfNorThroughNorIntoCheck) {
    EXPECT_FALSE(HasMove(ProblemFromFen("4r1k1/8/8/8/8/8/8/R3K2R"), "0-0")); // out of check
    EXPECT_FALSE(HasMove(ProblemFromFen("4r1k1/8/8/8/8/8/8/R3K2R"), "0-0-0"));
    EXPECT_FALSE(HasMove(ProblemFromFen("5rk1/8/8/8/8/8/8/R3K2R"), "0-0")); // over f1
    EXPECT_TRUE(HasMove(ProblemFromFen("5rk1/8/8/8/8/8/8/R3K2R"), "0-0-0"));
    EXPECT_FALSE(HasMove(ProblemFromFen("k5r1/8/8/8/8/8/8/R3K2R"), "0-0"));    // to g1
    EXPECT_FALSE(HasMove(ProblemFromFen("3r2k1/8/8/8/8/8/8/R3K2R"), "0-0-0")); // over d1
    EXPECT_FALSE(HasMove(ProblemFromFen("2r3k1/8/8/8/8/8/8/R3K2R"), "0-0-0")); // to c1
}

TEST(ReferenceRules, CastlingAllowedWhenOnlyTheRookIsAttackedOrPasses) {
    EXPECT_TRUE(HasMove(ProblemFromFen("1r4k1/8/8/8/8/8/8/R3K2R"), "0-0-0")); // b1 attacked
    EXPECT_TRUE(HasMove(ProblemFromFen("r5kr/8/8/8/8/8/8/R3K2R"), "0-0-0"));  // a1 attacked
    EXPECT_TRUE(HasMove(ProblemFromFen("r5kr/8/8/8/8/8/8/R3K2R"), "0-0"));    // h1 attacked
}

TEST(ReferenceRules, CastlingNeedsEmptySquaresBetween) {
    EXPECT_FALSE(HasMove(ProblemFromFen("4k3/8/8/8/8/8/8/RN2K1NR"), "0-0"));
    EXPECT_FALSE(HasMove(ProblemFromFen("4k3/8/8/8/8/8/8/RN2K1NR"), "0-0-0"));
    EXPECT_FALSE(HasMove(ProblemFromFen("4k3/8/8/8/8/8/8/R1n1Kn1R"), "0-0"));
    EXPECT_FALSE(HasMove(ProblemFromFen("4k3/8/8/8/8/8/8/R1n1Kn1R"), "0-0-0"));
}

TEST(ReferenceRules, CastlingRightIsLostForGood) {
    const Position position = ProblemFromFen("r3k2r/8/8/8/8/6n1/8/R3K2R");
    const Position kingBack = After(position, {"Ke1-d2", "Ke8-e7", "Kd2-e1", "Ke7-e8"});
    EXPECT_EQ(ToFen(kingBack), "r3k2r/8/8/8/8/6n1/8/R3K2R w - - 4 3");
    const Position rookBack = After(position, {"Ra1-b1", "Ng3-f5", "Rb1-a1", "Nf5-g3"});
    EXPECT_EQ(ToFen(rookBack), "r3k2r/8/8/8/8/6n1/8/R3K2R w Kkq - 4 3");
    // The knight takes the rook on h1 and another rook takes back: no right for that rook.
    const Position taken = After(ProblemFromFen("r3k3/8/8/8/8/6n1/7R/R3K2R"), {"Ra1-b1", "Ng3:h1", "Rh2:h1"});
    EXPECT_EQ(ToFen(taken), "r3k3/8/8/8/8/8/8/1R2K2R b q - 0 2");
}

TEST(ReferenceRules, MateStalemateAndCheckAreToldApart) {
    const Position mate = FromFen("R5k1/5ppp/8/8/8/8/8/K7 b");
    EXPECT_TRUE(IsMate(mate));
    EXPECT_FALSE(IsStalemate(mate));
    const Position stalemate = FromFen("k7/2Q5/8/8/8/8/8/K7 b");
    EXPECT_TRUE(IsStalemate(stalemate));
    EXPECT_FALSE(IsMate(stalemate));
    const Position check = FromFen("R5k1/5pp1/8/8/8/8/8/K7 b");
    EXPECT_TRUE(InCheck(check));
    EXPECT_FALSE(IsMate(check));
    EXPECT_EQ(Moves(check), Texts({"Kg8-h7"}));
}

TEST(ReferenceRules, UnknownNotationIsRefused) {
    const Position position = ProblemFromFen("k7/8/8/8/8/8/8/K7");
    EXPECT_THROW((void)MoveFromNotation(position, "Ka1-a3"), std::invalid_argument);
    EXPECT_EQ(LongNotation(position, MoveFromNotation(position, "Ka1-b2")), "Ka1-b2");
}

// ---- mates

struct MateRow {
    const char* name;
    const char* placement;
    int nMoves;
    Texts keys;
};

class ReferenceMates : public testing::TestWithParam<MateRow> {};

TEST_P(ReferenceMates, BothSearchesFindTheKeys) {
    const Position position = ProblemFromFen(GetParam().placement);
    const int nMoves = GetParam().nMoves;
    const Answer plain = SolveAll(position, nMoves);
    EXPECT_EQ(plain.keys, GetParam().keys);
    EXPECT_EQ(plain.mateExists, !GetParam().keys.empty());
    EXPECT_EQ(ForcesMate(position, nMoves), plain.mateExists);
    const auto withTable = SolveAllWithTable(position, nMoves, 10'000'000);
    ASSERT_TRUE(withTable.has_value());
    EXPECT_EQ(withTable->keys, GetParam().keys);
    EXPECT_EQ(SolveAll(position, nMoves - 1).mateExists, false);
    EXPECT_EQ(ShortestMate(position, nMoves, 10'000'000), GetParam().keys.empty() ? 0 : nMoves);
}

INSTANTIATE_TEST_SUITE_P(
    ByEye, ReferenceMates,
    testing::Values(
        MateRow{"BackRank", "6k1/5ppp/8/8/8/8/8/R6K", 1, {"Ra1-a8"}},
        MateRow{"Smothered", "6rk/6pp/8/6N1/8/8/8/7K", 1, {"Ng5-f7"}},
        // Black's own men take c7, c8, e7 and e8 from his king; the castled rook checks like the rook that just moves.
        MateRow{"LongCastling", "2rkr3/2p1p3/8/8/8/8/8/R3K3", 1, {"0-0-0", "Ra1-d1"}},
        MateRow{"QueenInTheCorner", "k7/8/1K6/8/8/8/8/6Q1", 1, {"Qg1-g8"}},
        MateRow{"StalemateIsNoMate", "k7/8/1KP5/8/8/8/8/8", 1, {}},
        // The king is walled in by his own men; from f8 only a knight checks h7, and it guards g6.
        MateRow{"Underpromotion", "6nr/5Ppk/7p/8/8/8/8/K7", 1, {"f7-f8N"}},
        // Morphy: 1.Ra6! b:a6 2.b7 or 1...B~ 2.R:a7.
        MateRow{"Morphy", "kbK5/pp6/1P6/8/8/8/8/R7", 2, {"Ra1-a6"}}),
    [](const auto& row) { return std::string(row.param.name); });

// ---- the two searches against each other

TEST(ReferenceSolver, TableGivesTheVerdictOfThePlainSearch) {
    std::mt19937_64 rng(20);
    int mates = 0;
    for (int round = 0; round < 600; ++round) {
        const std::string placement = RandomAnyPlacement(rng);
        const Position position = ProblemFromFen(placement);
        for (int nMoves = 1; nMoves <= 2; ++nMoves) {
            const Answer plain = SolveAll(position, nMoves);
            const auto withTable = SolveAllWithTable(position, nMoves, 10'000'000);
            ASSERT_TRUE(withTable.has_value()) << placement;
            EXPECT_EQ(plain.keys, withTable->keys) << placement << " #" << nMoves;
            mates += plain.mateExists ? 1 : 0;
        }
    }
    EXPECT_GT(mates, 40);
}

TEST(ReferenceSolver, TableGivesTheVerdictOfThePlainSearchInThreeMoves) {
    std::mt19937_64 rng(21);
    int mates = 0;
    for (int round = 0; round < 40; ++round) {
        const std::string placement = RandomMatingPlacement(rng, 4 + round % 3);
        const Position position = ProblemFromFen(placement);
        const Answer plain = SolveAll(position, 3);
        const auto withTable = SolveAllWithTable(position, 3, 10'000'000);
        ASSERT_TRUE(withTable.has_value()) << placement;
        EXPECT_EQ(plain.keys, withTable->keys) << placement;
        mates += plain.mateExists ? 1 : 0;
    }
    EXPECT_GT(mates, 5);
}

TEST(ReferenceSolver, EnPassantMayBeTheOnlyMate) {
    // Any move of the pawn e5 opens the bishop's line to h8, but only en passant removes the pawn that could close it
    // again on d4.
    const Position stepped = After(FromFen("7k/3p4/6RK/4P3/8/8/8/B7 b - -"), {"d7-d5"});
    EXPECT_EQ(SolveAll(stepped, 1).keys, Texts({"e5:d6"}));
    EXPECT_EQ(SolveAllWithTable(stepped, 1, 1000)->keys, Texts({"e5:d6"}));
    Position passed = stepped;
    passed.enPassant = kNoSquare;
    EXPECT_FALSE(SolveAll(passed, 1).mateExists);
    EXPECT_FALSE(SolveAllWithTable(passed, 1, 1000)->mateExists);
}

TEST(ReferenceSolver, CastlingMayBeTheOnlyDefence) {
    // 1.Ke6 and 2.Ra8 mates whatever Black does, unless he may castle.
    constexpr std::string_view placement = "4k2r/8/5B2/R4K2/8/8/8/8";
    EXPECT_EQ(SolveAll(FromFen(placement), 2).keys, Texts({"Kf5-e6"}));
    EXPECT_FALSE(SolveAll(ProblemFromFen(placement), 2).mateExists);
    EXPECT_FALSE(SolveAllWithTable(ProblemFromFen(placement), 2, 100'000)->mateExists);
}

TEST(ReferenceSolver, KnowsLoydsExcelsior) {
    // S. Loyd 1861: the pawn on b2 gives mate on the promotion square in the fifth move.
    const auto answer = SolveAllWithTable(ProblemFromFen("n1rb4/1p3p1p/1p6/1R5K/8/p3p1PN/1PP1R3/N6k"), 5, 20'000'000);
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->keys, Texts({"b2-b4"}));
}

TEST(ReferenceSolver, GivesUpWhenTheNodesAreSpent) {
    const Position position = ProblemFromFen("8/8/8/3k4/8/8/8/R3K2R");
    EXPECT_FALSE(SolveAllWithTable(position, 6, 1000).has_value());
    EXPECT_FALSE(ShortestMate(position, 6, 1000).has_value());
}

// ---- the generators

struct GeneratorRow {
    const char* name;
    std::string (*generate)(std::mt19937_64&, int);
};

class ReferenceGenerators : public testing::TestWithParam<GeneratorRow> {};

int Count(const Position& position, std::string_view letters) {
    return static_cast<int>(
        std::ranges::count_if(position.board, [&](char man) { return letters.find(man) != std::string_view::npos; }));
}

void ExpectLegalDiagram(const std::string& placement) {
    const Position position = ProblemFromFen(placement); // throws for a missing king and for pawns on rank 1 or 8
    EXPECT_EQ(Placement(position), placement);
    EXPECT_FALSE(InCheck(position, Side::Black)) << placement;
    EXPECT_EQ(CountAttackers(position, KingSquare(position, Side::White), Side::Black) > 2, false) << placement;
    EXPECT_EQ(CountAttackers(position, KingSquare(position, Side::White), Side::Black) > 0, InCheck(position));
    EXPECT_TRUE(HasLegalMove(position)) << placement;
    EXPECT_LE(Count(position, "QP"), 9) << placement;
    EXPECT_LE(Count(position, "qp"), 9) << placement;
    const int files = std::abs(KingSquare(position, Side::White) % 8 - KingSquare(position, Side::Black) % 8);
    const int ranks = std::abs(KingSquare(position, Side::White) / 8 - KingSquare(position, Side::Black) / 8);
    EXPECT_GT(std::max(files, ranks), 1) << placement;
}

TEST_P(ReferenceGenerators, DeliverLegalDiagramsOfTheSizeAskedFor) {
    std::mt19937_64 rng(1);
    for (int nMen = 4; nMen <= 12; ++nMen)
        for (int round = 0; round < 40; ++round) {
            const std::string placement = GetParam().generate(rng, nMen);
            ExpectLegalDiagram(placement);
            EXPECT_EQ(64 - Count(ProblemFromFen(placement), "."), nMen) << placement;
        }
}

TEST_P(ReferenceGenerators, SameSeedSameDiagramsOtherSeedOthers) {
    std::mt19937_64 first(7), again(7), other(8);
    std::set<std::string> fromFirst;
    int shared = 0;
    for (int round = 0; round < 50; ++round) {
        const std::string placement = GetParam().generate(first, 8);
        EXPECT_EQ(placement, GetParam().generate(again, 8));
        fromFirst.insert(placement);
        shared += placement == GetParam().generate(other, 8) ? 1 : 0;
    }
    EXPECT_GT(fromFirst.size(), 45U);
    EXPECT_LT(shared, 3);
}

INSTANTIATE_TEST_SUITE_P(All, ReferenceGenerators,
                         testing::Values(GeneratorRow{"Any", RandomPlacement},
                                         GeneratorRow{"Mating", RandomMatingPlacement},
                                         GeneratorRow{"Pawn", RandomPawnPlacement},
                                         GeneratorRow{"Castling", RandomCastlingPlacement},
                                         GeneratorRow{"Minor", RandomMinorPlacement}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ReferenceGenerators, DiagramsAreTheSameWithEveryLibrary) {
    std::mt19937_64 rng(2024);
    EXPECT_EQ(RandomPlacement(rng, 9), "8/K7/4P3/3Nr3/3P4/2B2B2/Q7/2k5");
    EXPECT_EQ(RandomMatingPlacement(rng, 9), "1k6/p1b5/4KQ2/8/R7/8/1N3r1B/8");
    EXPECT_EQ(RandomPawnPlacement(rng, 9), "5K2/2P3pP/8/1n1b4/7n/8/kp6/8");
    EXPECT_EQ(RandomCastlingPlacement(rng, 9), "4k2r/8/P2p1b2/2K5/1n5r/7q/8/8");
    EXPECT_EQ(RandomMinorPlacement(rng, 9), "2B5/3p2pk/6p1/2N5/1N4K1/8/2P5/8");
}

TEST(ReferenceGenerators, DrawStaysInBoundsAndReachesAllValues) {
    std::mt19937_64 rng(3);
    std::array<int, 7> hits{};
    for (int round = 0; round < 7000; ++round)
        ++hits.at(static_cast<std::size_t>(DrawInt(rng, 7)));
    for (const int hit : hits)
        EXPECT_NEAR(hit, 1000, 150);
}

/// Share of `rounds` diagrams of ten men for which the property holds, in percent.
template <typename TGenerate, typename TProperty> int Percent(TGenerate generate, TProperty property) {
    std::mt19937_64 rng(5);
    int hits = 0;
    for (int round = 0; round < 200; ++round)
        hits += property(ProblemFromFen(generate(rng, 10))) ? 1 : 0;
    return hits / 2;
}

TEST(ReferenceGenerators, HaveTheBiasTheyAreNamedFor) {
    const auto mateInTwo = [](const Position& position) {
        return SolveAllWithTable(position, 2, 1'000'000)->mateExists;
    };
    EXPECT_GT(Percent(RandomMatingPlacement, mateInTwo), Percent(RandomPlacement, mateInTwo) + 20);
    EXPECT_EQ(Percent(RandomCastlingPlacement, [](const Position& position) { return position.castling != 0; }), 100);
    EXPECT_EQ(Percent(RandomMinorPlacement, [](const Position& position) { return Count(position, "QR") == 0; }), 100);
    EXPECT_GT(Percent(RandomPawnPlacement, [](const Position& position) { return Count(position, "Pp") >= 5; }), 70);
}

TEST(ReferenceGenerators, GamesAreLegalAndHoldTheSpecialMoves) {
    std::mt19937_64 rng(11);
    int castlings = 0, promotions = 0, enPassants = 0;
    for (int round = 0; round < 150; ++round) {
        const std::vector<GameStep> game = RandomGame(rng, 30);
        ASSERT_FALSE(game.empty());
        EXPECT_LE(game.size(), 30U);
        for (std::size_t ply = 0; ply < game.size(); ++ply) {
            const Position position = FromFen(game[ply].fen);
            EXPECT_EQ(ToFen(position), game[ply].fen);
            const Move move = MoveFromNotation(position, game[ply].move);
            if (ply + 1 < game.size()) {
                EXPECT_EQ(ToFen(Play(position, move)), game[ply + 1].fen);
            }
            castlings += game[ply].move.starts_with("0-0") ? 1 : 0;
            promotions += move.promotion != 0 ? 1 : 0;
            enPassants += move.to == position.enPassant && game[ply].move.size() == 5 && game[ply].move[2] == ':';
        }
    }
    EXPECT_GT(castlings, 3);
    EXPECT_GT(promotions, 3);
    EXPECT_GT(enPassants, 1);
}

} // namespace
} // namespace reference
