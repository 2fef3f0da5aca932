// A node allocates nothing, and helping threads do without those that there is no memory for: this program's operator
// new counts per thread, and may be short of contexts.

#include <atomic>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "search/helper_threads.h"
#include "search/main_variant.h"
#include "search/searched_position.h"

namespace {

thread_local long t_nAllocations = 0;
thread_local int t_nContextsLeft = 1 << 30; // that there is memory for

void* Allocate(std::size_t bytes) {
    ++t_nAllocations;
    if (bytes == sizeof(quillon::TSearchContext) && t_nContextsLeft-- <= 0)
        throw std::bad_alloc();
    if (void* const memory = std::malloc(bytes != 0 ? bytes : 1))
        return memory;
    throw std::bad_alloc();
}

// Not to be seen through: a compiler that sees malloc behind new and free behind delete takes them for a mismatch.
[[gnu::noinline]] void Release(void* memory) { std::free(memory); }

} // namespace

void* operator new(std::size_t bytes) { return Allocate(bytes); }
void* operator new[](std::size_t bytes) { return Allocate(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    ++t_nAllocations;
    return std::malloc(bytes != 0 ? bytes : 1);
}
void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept { return operator new(bytes, tag); }
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Release(memory); }
void operator delete[](void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Release(memory); }

namespace quillon::test {
namespace {

/// Knows nothing and forgets everything, without memory of its own.
class CEmptyRegister : public ITemporaryRegister {
  public:
    TMateResult Find(const TChessboard&, int, int) override { return MR_NONE; }
    void Insert(const TChessboard&, int, TMateResult) override { ++m_nStored; }
    void InsertDoubtful(const TChessboard&, int) override { ++m_nStored; }
    int m_nStored = 0;
};

TEST(Allocation, IsCountedHere) {
    const long before = t_nAllocations;
    delete new int(1);
    EXPECT_GE(t_nAllocations, before); // a compiler may leave the pair out
    std::vector<std::string> texts(3, std::string(100, 'x'));
    EXPECT_GE(t_nAllocations, before + 4);
}

TEST(Allocation, NoNodeAllocates) {
    const struct {
        const char* m_pPlacement;
        int m_nPlies;
        int m_nPass;
        TMateResult m_nExpected;
    } rows[] = {
        {"8/4b3/8/3R4/8/8/8/k2K4", 7, 2, MR_MATE},  {"8/8/8/8/8/2k5/7R/K7", 7, 2, MR_NOMATE},
        {"8/8/8/8/8/2k5/7R/K7", 7, 1, MR_DOUBTFUL}, {"r3k2r/8/8/8/8/8/7P/R3K2R", 3, 2, MR_NOMATE},
        {"8/8/8/8/7Q/n1K5/8/k7", 11, 2, MR_MATE},
    };
    for (const auto& row : rows) {
        CEmptyRegister known;
        CSearchedPosition line(row.m_pPlacement, row.m_nPlies, row.m_nPass);
        line.Analysis().m_pRegister = &known;
        const long before = t_nAllocations;
        const TMateResult verdict = line.Verdict();
        const long allocated = t_nAllocations - before;
        EXPECT_EQ(verdict, row.m_nExpected) << row.m_pPlacement;
        EXPECT_EQ(allocated, 0) << row.m_pPlacement;
        EXPECT_EQ(known.m_nStored > 0, row.m_nPlies >= 10);
    }
}

constexpr int kNoShortage = 1 << 30;

TEST(Allocation, ACloneWithoutMemoryCostsNotTheOthers) {
    static_assert(alignof(TSearchContext) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    CSearchedPosition line("8/8/8/8/7Q/n1K5/8/k7", 9);
    std::atomic<int> run{0};
    CHelperThreads helpers;
    t_nContextsLeft = 1;
    const int started = helpers.Start(line.Now(), 3, [&](TChessboard&) { ++run; });
    t_nContextsLeft = kNoShortage;
    helpers.Join();
    EXPECT_EQ(started, 1);
    EXPECT_EQ(run, 1);
}

/// What the main variant of a mate in ten costs, for two threads or for one.
std::uint64_t CostOfVariant(int nThreads, std::uint64_t nMostPositions) {
    CSearchedPosition line("7k/5p2/3K1P1p/7P/1p6/1P6/8/8", 19);
    line.Analysis().m_nThreads = static_cast<std::uint8_t>(nThreads);
    EXPECT_EQ(BuildMainVariant(line.Root(), ParseMove("Kd6-e7", true), nMostPositions).size(), 19u);
    FlushPositions(line.Context(), line.Analysis());
    return line.Analysis().m_nPositions + line.Analysis().m_nTrialPositions;
}

/// A caller whom nobody helps keeps the whole of his bound.
TEST(Allocation, HelpersThatDoNotComeAboutTakeNoPartOfABound) {
    const std::uint64_t cost = CostOfVariant(1, 100'000'000);
    t_nContextsLeft = 1; // of the caller
    const std::uint64_t alone = CostOfVariant(2, cost);
    t_nContextsLeft = kNoShortage;
    EXPECT_EQ(alone, cost);
}

} // namespace
} // namespace quillon::test
