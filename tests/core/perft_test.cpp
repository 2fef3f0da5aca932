#include "core/perft.h"

#include <gtest/gtest.h>

#include "core/positions.h"

namespace quillon::test {
namespace {

struct TPerftRow {
    const char* m_pName;
    const char* m_pFen;
    int m_nDepth;
    std::uint64_t m_nLeaves;
};

constexpr const char* kInitial = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -";
constexpr const char* kKiwipete = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
constexpr const char* kThird = "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -";
constexpr const char* kFourth = "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -";
constexpr const char* kFourthMirrored = "r2q1rk1/pP1p2pp/Q4n2/bbp1p3/Np6/1B3NBn/pPPP1PPP/R3K2R b KQ -";
constexpr const char* kFifth = "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ -";
constexpr const char* kSixth = "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -";

class Perft : public testing::TestWithParam<TPerftRow> {};

TEST_P(Perft, CountsAsPublished) {
    CLine line(GetParam().m_pFen);
    EXPECT_EQ(quillon::Perft(line.Root(), GetParam().m_nDepth), GetParam().m_nLeaves);
}

INSTANTIATE_TEST_SUITE_P(
    KnownPositions, Perft,
    testing::Values(TPerftRow{"Initial1", kInitial, 1, 20}, TPerftRow{"Initial2", kInitial, 2, 400},
                    TPerftRow{"Initial3", kInitial, 3, 8902}, TPerftRow{"Initial4", kInitial, 4, 197281},
                    TPerftRow{"Initial5", kInitial, 5, 4865609}, TPerftRow{"Kiwipete1", kKiwipete, 1, 48},
                    TPerftRow{"Kiwipete2", kKiwipete, 2, 2039}, TPerftRow{"Kiwipete3", kKiwipete, 3, 97862},
                    TPerftRow{"Kiwipete4", kKiwipete, 4, 4085603}, TPerftRow{"Third5", kThird, 5, 674624},
                    TPerftRow{"Third6", kThird, 6, 11030083}, TPerftRow{"Fourth4", kFourth, 4, 422333},
                    TPerftRow{"Fourth5", kFourth, 5, 15833292},
                    TPerftRow{"FourthMirrored4", kFourthMirrored, 4, 422333}, TPerftRow{"Fifth4", kFifth, 4, 2103487},
                    TPerftRow{"Sixth4", kSixth, 4, 3894594}),
    [](const auto& row) { return std::string(row.param.m_pName); });

TEST(PerftCount, DepthZeroIsThePositionItself) {
    CLine line(kInitial);
    EXPECT_EQ(quillon::Perft(line.Root(), 0), 1u);
}

TEST(PerftCount, MateAndStalemateHaveNoLeaves) {
    CLine mated("R5k1/5ppp/8/8/8/8/8/K7 b");
    EXPECT_EQ(quillon::Perft(mated.Root(), 1), 0u);
    CLine stalemated("k7/2Q5/8/8/8/8/8/K7 b");
    EXPECT_EQ(quillon::Perft(stalemated.Root(), 3), 0u);
}

TEST(PerftCount, DivideTellsEveryRootMoveInTheOrderOfTheList) {
    CLine line(kKiwipete);
    TTexts told;
    std::uint64_t sum = 0;
    const std::uint64_t total = PerftDivide(line.Root(), 3, [&](const TMove& move, std::uint64_t leaves) {
        told.push_back(TextOf(move));
        sum += leaves;
    });
    EXPECT_EQ(total, 97862u);
    EXPECT_EQ(sum, total);
    EXPECT_EQ(told, line.Moves()); // every pseudo-legal move of this position is legal
}

TEST(PerftCount, AgreesWithTheReferenceInRandomDiagrams) {
    std::mt19937_64 rng(101);
    for (int round = 0; round < 300; ++round) {
        const std::string placement = reference::RandomAnyPlacement(rng);
        CLine line(placement);
        ASSERT_EQ(quillon::Perft(line.Root(), 3), reference::Perft(reference::ProblemFromFen(placement), 3))
            << placement;
    }
}

} // namespace
} // namespace quillon::test
