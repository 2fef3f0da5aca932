// Costs of the register of a running analysis when it holds ten million elements: boards of one problem, in a table of
// the size that an analysis with such a budget gets.

#include <benchmark/benchmark.h>

#include <time.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/chessboard.h"
#include "tempregister/aggregated_register.h"
#include "tempregister/bucket_count.h"

namespace quillon {
namespace {

constexpr std::uint32_t kElements = 10'000'000;
constexpr int kPlies = 31;
constexpr std::uint64_t kMegabytes = 1400; // a little more than these elements need

std::uint64_t Mixed(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

/// Board `number` of a problem in which eight men wander over the squares that six pawns leave free. A function of the
/// number, so that boards need not be kept: reading them from memory would be measured, too. Boards of different
/// numbers are different but for a few in a million.
TBoardBytes BoardOf(std::uint64_t number) {
    constexpr std::array<TSquare, 6> kPawns{8, 48, 11, 51, 29, 37};
    constexpr std::array<TFigure, 8> kMen{kWhiteKing,   kBlackKing,   kWhiteRook,   kWhiteBishop,
                                          kWhiteKnight, kBlackKnight, kBlackBishop, kBlackQueen};
    TBoardBytes board{};
    for (std::size_t i = 0; i < kPawns.size(); ++i)
        board[kPawns[i]] = i % 2 == 0 ? kWhitePawn : kBlackPawn;
    std::uint64_t bits = Mixed(number * 0x9e3779b97f4a7c15);
    for (const TFigure man : kMen) {
        std::size_t square = bits % kSquares;
        bits /= kSquares;
        while (board[square] != kNoFigure)
            square = (square + 1) % kSquares;
        board[square] = man;
    }
    return board;
}

using TRegister = TAggregatedTemporaryChessboardRegister;

std::unique_ptr<TRegister> NewRegister() {
    constexpr std::uint64_t kMegabyte = 1024 * 1024;
    return std::make_unique<TRegister>(kMegabytes * kMegabyte, BucketCount(kPlies, kMegabytes));
}

// Positions are made in lots outside the measured time, few enough to stay in the first cache.
constexpr std::size_t kLot = 128;

/// Processor time of the calling thread: what other programs take of the machine does not count.
double ThreadNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// Nanoseconds of an operation over many lots.
class CLotTimer {
  public:
    template <typename TOperation> void Measure(TOperation operation) {
        const double start = ThreadNanoseconds();
        operation();
        m_total += ThreadNanoseconds() - start;
        ++m_nLots;
    }

    [[nodiscard]] double NanosecondsEach() const { return m_total / (static_cast<double>(m_nLots) * kLot); }

  private:
    double m_total = 0;
    std::uint64_t m_nLots = 0;
};

/// Fills the register; returns the nanoseconds that an insert took.
double Fill(TRegister& known) {
    std::array<TChessboard, kLot> positions;
    positions.fill(EmptyChessboard());
    CLotTimer timer;
    for (std::uint64_t first = 0; first < kElements; first += kLot) {
        for (std::size_t i = 0; i < kLot; ++i)
            positions[i].m_board = BoardOf(first + i);
        timer.Measure([&] {
            for (std::size_t i = 0; i < kLot; ++i)
                known.Insert(static_cast<std::uint16_t>(5 + 2 * (i % 8)), positions[i], i % 3 == 0);
        });
    }
    return timer.NanosecondsEach();
}

/// Filled once; the look-ups share it.
const TRegister& FullRegister() {
    static const std::unique_ptr<TRegister> known = [] {
        std::unique_ptr<TRegister> filled = NewRegister();
        Fill(*filled);
        return filled;
    }();
    return *known;
}

void RegisterInsert(benchmark::State& state) {
    for (auto _ : state) {
        const std::unique_ptr<TRegister> known = NewRegister();
        state.counters["ns"] = Fill(*known);
        state.counters["elements"] = known->GetElementsCount();
        state.counters["bytesEach"] =
            static_cast<double>(known->Statistics().m_nBytes) / static_cast<double>(known->GetElementsCount());
    }
}
BENCHMARK(RegisterInsert)->Iterations(1)->Unit(benchmark::kMillisecond);

/// Looks up boards `first` to `first + count - 1` in random order.
void LookUp(benchmark::State& state, std::uint64_t first, std::uint64_t count) {
    const TRegister& known = FullRegister();
    std::array<TBoardBytes, kLot> boards;
    std::uint64_t draw = static_cast<std::uint64_t>(state.thread_index() + 1) << 40;
    std::uint64_t answers = 0;
    CLotTimer timer;
    for (auto _ : state) {
        for (TBoardBytes& board : boards)
            board = BoardOf(first + Mixed(draw++) % count);
        timer.Measure([&] {
            for (const TBoardBytes& board : boards)
                answers += known.Find(101, board, 0, 0) != kRegisterUnknown ? 1 : 0;
        });
    }
    const double asked = static_cast<double>(state.iterations()) * kLot;
    state.counters["ns"] = benchmark::Counter(timer.NanosecondsEach(), benchmark::Counter::kAvgThreads);
    // Of all threads together, with the making of the boards: what contention leaves of it shows side by side.
    state.counters["lookups"] = benchmark::Counter(asked, benchmark::Counter::kIsRate);
    state.counters["answers"] =
        benchmark::Counter(static_cast<double>(answers) / asked, benchmark::Counter::kAvgThreads);
}

// A mate is found at 101 plies; an absence of mate is known for less, so a third of what is there answers.
void RegisterHit(benchmark::State& state) { LookUp(state, 0, kElements); }
void RegisterMiss(benchmark::State& state) { LookUp(state, std::uint64_t{1} << 32, std::uint64_t{1} << 32); }
constexpr int kLotsOfLookUps = 15000;
BENCHMARK(RegisterHit)->Threads(1)->Threads(2)->Threads(8)->Threads(16)->UseRealTime()->Iterations(kLotsOfLookUps);
BENCHMARK(RegisterMiss)->Threads(1)->Threads(2)->Threads(8)->Threads(16)->UseRealTime()->Iterations(kLotsOfLookUps);

} // namespace
} // namespace quillon
