// Costs of precalculated data: the index of a position, packing a table and unpacking it, reading
// elements of a packed one and of a plain one, and the whole of a lookup.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <span>
#include <vector>

#include "core/chessboard.h"
#include "globalregister/global_registers.h"
#include "globalregister/packed/packed_block.h"
#include "globalregister/packed/random_access_packed_buffer.h"
#include "globalregister/position_indexing.h"
#include "platform/large_pages.h"

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

// A table of a rook against a bishop and a pawn that looks like a true one: kings' distance, edge, and what stands
// where, with holes for indices that name no position.
std::vector<std::uint8_t> TableAlike(std::size_t nElements) {
    const TPositionIndexing indexing("Rbp");
    std::vector<std::uint8_t> table(nElements);
    TChessboard b = EmptyChessboard();
    for (std::size_t index = 0; index < nElements; ++index) {
        if (!indexing.GetPositionByIndex(index, b))
            continue;
        const int king = BlackKingSquare(b);
        int moves = 4 + 3 * RingOf(FileOf(king), RankOf(king)) + KingSteps(king, WhiteKingSquare(b));
        for (int square = 0; square < kSquares; ++square) {
            const TFigure figure = b.m_board[static_cast<std::size_t>(square)];
            if (figure == kWhiteRook)
                moves +=
                    FileOf(square) == FileOf(king) || RankOf(square) == RankOf(king) ? -4 : KingSteps(square, king) / 3;
            else if (figure == kBlackBishop)
                moves += KingSteps(square, WhiteKingSquare(b)) / 2;
            else if (figure == kBlackPawn)
                moves += 7 - RankOf(square);
        }
        table[index] = static_cast<std::uint8_t>(moves);
    }
    return table;
}

constexpr std::size_t kTableElements = 4'000'000;

using TPack = bool (*)(std::span<const std::uint8_t>, std::vector<std::uint8_t>&, int);

void BM_Pack(benchmark::State& state, TPack pack) {
    const std::vector<std::uint8_t> table = TableAlike(kTableElements);
    std::vector<std::uint8_t> packed;
    for (auto _ : state)
        benchmark::DoNotOptimize(pack(table, packed, 1));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(table.size()));
    state.counters["ratio"] = static_cast<double>(packed.size()) / static_cast<double>(table.size());
}
BENCHMARK_CAPTURE(BM_Pack, short_offsets, static_cast<TPack>(PackBlock));
BENCHMARK_CAPTURE(BM_Pack, long_offsets, static_cast<TPack>(PackBlockLong));

void BM_Unpack(benchmark::State& state, TPack pack) {
    const std::vector<std::uint8_t> table = TableAlike(kTableElements);
    std::vector<std::uint8_t> packed, unpacked;
    if (!pack(table, packed, 1))
        state.SkipWithError("cannot pack");
    for (auto _ : state)
        benchmark::DoNotOptimize(UnpackBlock(packed, unpacked));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(table.size()));
}
BENCHMARK_CAPTURE(BM_Unpack, short_offsets, static_cast<TPack>(PackBlock));
BENCHMARK_CAPTURE(BM_Unpack, long_offsets, static_cast<TPack>(PackBlockLong));

using TBuffer = std::unique_ptr<RandomAccessLZWBuffer::CRandomAccessPackedBufferBase>;

void BM_PackedElement(benchmark::State& state) {
    static const TBuffer buffer = [] { // one for all threads
        TBuffer made = RandomAccessLZWBuffer::MakePackedWriter(1);
        const std::filesystem::path path = std::filesystem::temp_directory_path() / "quillon_bench.packed.lzw";
        const bool bSaved =
            made->Compress(kTableElements, TableAlike(kTableElements), true, 0, 0, 1) && made->Save(path, 0);
        made = RandomAccessLZWBuffer::MakePackedReader(1, 16384);
        if (!bSaved || !made->Load(path, false))
            made.reset();
        std::filesystem::remove(path);
        return made;
    }();
    if (!buffer) {
        state.SkipWithError("no packed table");
        return;
    }
    std::mt19937_64 rng(static_cast<std::uint64_t>(state.thread_index()));
    for (auto _ : state)
        benchmark::DoNotOptimize(buffer->Get(rng() % kTableElements, false));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PackedElement)->ThreadRange(1, 8);

void BM_PackForElements(benchmark::State& state) {
    const std::vector<std::uint8_t> table = TableAlike(kTableElements);
    const TBuffer buffer = RandomAccessLZWBuffer::MakePackedWriter(1);
    for (auto _ : state)
        benchmark::DoNotOptimize(buffer->Compress(table.size(), table, true, 0, 0, 1));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(table.size()));
    state.counters["ratio"] = static_cast<double>(buffer->GetPackedSize()) / static_cast<double>(table.size());
}
BENCHMARK(BM_PackForElements);

// A table of five men in memory: random elements, read in an order that no cache foresees.
TGlobalRegister PlainTable(const char* type) {
    TGlobalRegister data(type);
    std::mt19937_64 rng(8);
    data.data.reserve(data.GetSize());
    PreferLargePages(data.data.data(), data.GetSize()); // as a load does
    data.data.resize(data.GetSize());
    for (std::uint8_t& element : data.data)
        element = static_cast<std::uint8_t>(rng() % 40);
    return data;
}

void BM_IsMateOnPlainTable(benchmark::State& state, const char* type) {
    const TGlobalRegister data = PlainTable(type);
    const std::vector<TChessboard> positions = PositionsOf(data, 4096);
    for (auto _ : state)
        for (const TChessboard& b : positions)
            benchmark::DoNotOptimize(data.IsMate(b));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(positions.size()));
}
BENCHMARK_CAPTURE(BM_IsMateOnPlainTable, four_men, "Qr");
BENCHMARK_CAPTURE(BM_IsMateOnPlainTable, five_men, "QRr");

// All that a node does: the data of its type, the answer, the release.
class CLookups {
  public:
    CLookups() {
        std::filesystem::create_directories(m_folder / "Precalc");
        const TGlobalRegister table = PlainTable("Qr");
        std::ofstream(m_folder / "Precalc/Qr_.precalc", std::ios::binary)
            .write(reinterpret_cast<const char*>(table.data.data()), static_cast<std::streamsize>(table.data.size()));
        m_registers = std::make_unique<CGlobalRegisters>(TPrecalcOptions{{m_folder, ""}}, m_silent, 1u << 30);
        for (TChessboard& b : m_positions = PositionsOf(table, 4096))
            b.m_whiteQueens = b.m_blackRooks = 1;
        CGlobalRegisters::ReleaseRegister(m_registers->GetRegisterForTool(m_positions[0]));
    }
    ~CLookups() { std::filesystem::remove_all(m_folder); }

    [[nodiscard]] CGlobalRegisters& Registers() { return *m_registers; }
    [[nodiscard]] const std::vector<TChessboard>& Positions() const { return m_positions; }

  private:
    class CSilent final : public INotifier {
        void Inform(std::string_view, std::string_view) override {}
        bool AskYesNo(std::string_view, std::string_view) override { return false; }
    };

    const std::filesystem::path m_folder = std::filesystem::temp_directory_path() / "quillon_precalc_bench";
    CSilent m_silent;
    std::vector<TChessboard> m_positions;
    std::unique_ptr<CGlobalRegisters> m_registers;
};

void BM_LookupThroughManager(benchmark::State& state) {
    static CLookups lookups;
    for (auto _ : state)
        for (const TChessboard& b : lookups.Positions()) {
            const CRegisterUse data(lookups.Registers().GetRegister(b, {}));
            benchmark::DoNotOptimize(data->IsMate(b));
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(lookups.Positions().size()));
}
BENCHMARK(BM_LookupThroughManager)->Threads(1)->Threads(2)->Threads(8)->UseRealTime();

} // namespace
} // namespace quillon
