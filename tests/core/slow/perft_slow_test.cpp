// The known move counts one level deeper than the everyday run goes.

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

class PerftSlow : public testing::TestWithParam<TPerftRow> {};

TEST_P(PerftSlow, CountsAsPublished) {
    CLine line(GetParam().m_pFen);
    EXPECT_EQ(Perft(line.Root(), GetParam().m_nDepth), GetParam().m_nLeaves);
}

INSTANTIATE_TEST_SUITE_P(
    KnownPositions, PerftSlow,
    testing::Values(
        TPerftRow{"Initial6", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", 6, 119060324},
        TPerftRow{"Kiwipete5", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -", 5, 193690690},
        TPerftRow{"Third7", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -", 7, 178633661},
        TPerftRow{"Fourth6", "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -", 6, 706045033},
        TPerftRow{"Fifth5", "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ -", 5, 89941194},
        TPerftRow{"Sixth5", "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -", 5, 164075551}),
    [](const auto& row) { return std::string(row.param.m_pName); });

} // namespace
} // namespace quillon::test
