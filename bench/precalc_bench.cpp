// Costs of precalculated data: the index of a position.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "core/chessboard.h"
#include "globalregister/position_indexing.h"

namespace quillon {
namespace {

// Positions of a type, in lots small enough to stay in the first cache.
std::vector<TChessboard> PositionsOf(const TPositionIndexing& indexing, std::size_t nPositions) {
    std::mt19937_64 rng(7);
    std::vector<TChessboard> positions;
    TChessboard b = EmptyChessboard();
    while (positions.size() < nPositions)
        if (indexing.GetPositionByIndex(rng() % indexing.GetSize(), b))
            positions.push_back(b);
    return positions;
}

void BM_IndexOfPosition(benchmark::State& state, const char* type, bool bCombinations) {
    TPositionIndexing indexing(type);
    if (bCombinations && !indexing.SetupCombinations())
        state.SkipWithError("no combinations");
    const std::vector<TChessboard> positions = PositionsOf(indexing, 128);
    for (auto _ : state)
        for (const TChessboard& b : positions)
            benchmark::DoNotOptimize(indexing.GetIndex(b));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(positions.size()));
}
BENCHMARK_CAPTURE(BM_IndexOfPosition, five_men, "QRr", false);
BENCHMARK_CAPTURE(BM_IndexOfPosition, five_men_with_pawn, "RPr", false);
BENCHMARK_CAPTURE(BM_IndexOfPosition, seven_men, "QRBrb", false);
BENCHMARK_CAPTURE(BM_IndexOfPosition, seven_men_with_combinations, "QRRpp", true);

void BM_PositionByIndex(benchmark::State& state, const char* type) {
    const TPositionIndexing indexing(type);
    std::mt19937_64 rng(7);
    std::array<std::uint64_t, 128> indices{};
    for (std::uint64_t& index : indices)
        index = rng() % indexing.GetSize();
    TChessboard b = EmptyChessboard();
    for (auto _ : state)
        for (const std::uint64_t index : indices)
            benchmark::DoNotOptimize(indexing.GetPositionByIndex(index, b));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(indices.size()));
}
BENCHMARK_CAPTURE(BM_PositionByIndex, five_men, "QRr");
BENCHMARK_CAPTURE(BM_PositionByIndex, five_men_with_pawn, "RPr");

} // namespace
} // namespace quillon
