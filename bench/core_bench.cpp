// Costs of the chess core and of the mate on the move, on positions of a few kinds.

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <string_view>

#include "core/attacks.h"
#include "core/fen.h"
#include "core/generation.h"
#include "core/makers.h"
#include "core/perft.h"
#include "core/search_context.h"
#include "search/analysis.h"
#include "search/find_mate.h"

namespace quillon {
namespace {

constexpr std::array<std::string_view, 4> kPositions{
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8",
    "7k/8/5K2/8/8/3N1N2/8/6Q1",
};

/// A root with `nMoves` plies left, in its slot.
struct TSetUp {
    explicit TSetUp(std::string_view fen, int nMoves) : m_context(NewSearchContext()) {
        m_root = MakeRoot(*m_context, m_analysis, ChessboardFromFEN(fen), nMoves | 1, 2);
        m_root->m_nMoves = static_cast<std::uint16_t>(nMoves);
    }
    TAnalysis m_analysis;
    std::unique_ptr<TSearchContext> m_context;
    TChessboard* m_root;
};

std::string_view PositionOf(const benchmark::State& state) {
    return kPositions[static_cast<std::size_t>(state.range(0))];
}

void GenerateWhite(benchmark::State& state) {
    TSetUp setUp(PositionOf(state), 5);
    TMove list[kMaxMoves];
    for (auto _ : state)
        benchmark::DoNotOptimize(GenerateWhiteMoves(*setUp.m_root, list));
}
BENCHMARK(GenerateWhite)->DenseRange(0, 3);

void GenerateBlack(benchmark::State& state) {
    TSetUp setUp(PositionOf(state), 4);
    TMove list[kMaxMoves];
    for (auto _ : state)
        benchmark::DoNotOptimize(GenerateBlackMoves(*setUp.m_root, list));
}
BENCHMARK(GenerateBlack)->DenseRange(0, 3);

void GenerateChecks(benchmark::State& state) {
    TSetUp setUp(PositionOf(state), 5);
    TMove list[kMaxMoves];
    for (auto _ : state)
        benchmark::DoNotOptimize(GenerateWhiteChecks(*setUp.m_root, list));
}
BENCHMARK(GenerateChecks)->DenseRange(0, 3);

template <bool kWhiteMoves> void Evasions(benchmark::State& state) {
    TSetUp setUp(kWhiteMoves ? "4k3/8/8/8/4r3/2B2N2/3P4/R3K2R" : "r3k2r/3p4/2b2n2/8/4R3/8/8/4K3", kWhiteMoves ? 5 : 4);
    TMove list[kMaxMoves];
    for (auto _ : state)
        benchmark::DoNotOptimize(kWhiteMoves ? GenerateWhiteEvasions(*setUp.m_root, list)
                                             : GenerateBlackEvasions(*setUp.m_root, list));
}
BENCHMARK(Evasions<true>)->Name("GenerateWhiteEvasions");
BENCHMARK(Evasions<false>)->Name("GenerateBlackEvasions");

/// Copy and make, per move of the full list.
template <bool kWhiteMoves> void CopyAndMake(benchmark::State& state) {
    TSetUp setUp(PositionOf(state), kWhiteMoves ? 5 : 4);
    TMove list[kMaxMoves];
    const int count = kWhiteMoves ? GenerateWhiteMoves(*setUp.m_root, list) : GenerateBlackMoves(*setUp.m_root, list);
    for (auto _ : state)
        for (int i = 0; i < count; ++i) {
            TChessboard* const child = CopyToChild(setUp.m_root);
            benchmark::DoNotOptimize(kWhiteMoves ? MakeWhiteMove(*child, list[i])
                                                 : MakeBlackMove(*child, list[i], false));
        }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(CopyAndMake<true>)->Name("CopyAndMakeWhite")->DenseRange(0, 3);
BENCHMARK(CopyAndMake<false>)->Name("CopyAndMakeBlack")->DenseRange(0, 3);

/// All 64 squares.
template <bool (*kTest)(const TChessboard&, int, int)> void AttackTest(benchmark::State& state) {
    TSetUp setUp(PositionOf(state), 5);
    for (auto _ : state)
        for (int square = 0; square < kSquares; ++square)
            benchmark::DoNotOptimize(kTest(*setUp.m_root, FileOf(square), RankOf(square)));
    state.SetItemsProcessed(state.iterations() * kSquares);
}
BENCHMARK(AttackTest<IsAttackedByWhite>)->Name("IsAttackedByWhite")->DenseRange(0, 3);
BENCHMARK(AttackTest<IsAttackedByBlack>)->Name("IsAttackedByBlack")->DenseRange(0, 3);
BENCHMARK(AttackTest<IsAttackedByWhiteOnBoard>)->Name("IsAttackedByWhiteOnBoard")->DenseRange(0, 3);

void MateInOne(benchmark::State& state) {
    TSetUp setUp(PositionOf(state), 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(FindMateInOne(setUp.m_root));
}
BENCHMARK(MateInOne)->DenseRange(0, 3);

void BlackEvasion(benchmark::State& state) {
    TSetUp setUp("r3k2r/3p4/2b2n2/8/4R3/8/8/4K3", 4);
    for (auto _ : state)
        benchmark::DoNotOptimize(HasBlackEvasion(*setUp.m_root));
}
BENCHMARK(BlackEvasion);

void PerftLeaves(benchmark::State& state) {
    constexpr int kDepth = 3;
    TSetUp setUp(PositionOf(state), kDepth);
    std::uint64_t leaves = 0;
    for (auto _ : state)
        leaves += Perft(*setUp.m_root, kDepth);
    state.SetItemsProcessed(static_cast<std::int64_t>(leaves));
}
BENCHMARK(PerftLeaves)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace quillon
