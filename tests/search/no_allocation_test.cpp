// A node allocates nothing: this program's operator new counts per thread.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "search/searched_position.h"

namespace {

thread_local long t_nAllocations = 0;

void* Allocate(std::size_t bytes) {
    ++t_nAllocations;
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

} // namespace
} // namespace quillon::test
