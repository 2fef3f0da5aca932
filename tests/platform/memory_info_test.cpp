#include "platform/memory_info.h"

#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/mman.h>

#include "platform/cgroup.h"

namespace quillon {

namespace {

constexpr std::size_t kBlock = std::size_t{64} << 20;

std::uint64_t MemTotalOfTheMachine() {
    std::ifstream file("/proc/meminfo");
    std::string name;
    std::uint64_t kilobytes = 0;
    while (file >> name >> kilobytes && name != "MemTotal:")
        file.ignore(1000, '\n');
    return kilobytes * 1024;
}

// Memory straight from the system, every page touched, given back at the end.
class CTouchedBlock {
  public:
    CTouchedBlock()
        : m_pBytes(
              static_cast<char*>(mmap(nullptr, kBlock, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        for (std::size_t i = 0; i < kBlock; i += 1024)
            m_pBytes[i] = 1;
    }
    CTouchedBlock(const CTouchedBlock&) = delete;
    CTouchedBlock& operator=(const CTouchedBlock&) = delete;
    ~CTouchedBlock() { munmap(m_pBytes, kBlock); }

  private:
    char* m_pBytes;
};

} // namespace

TEST(MemoryInfo, PhysicalMemoryIsThatOfTheMachineOrItsContainer) {
    const std::uint64_t machine = MemTotalOfTheMachine();
    ASSERT_GT(machine, 0u);
    EXPECT_EQ(PhysicalMemory(), std::min(machine, CgroupMemoryLimit().value_or(machine)));
}

TEST(MemoryInfo, TouchedMemoryIsResidentUntilGivenBack) {
    const std::uint64_t before = ResidentMemory();
    std::uint64_t during = 0;
    {
        const CTouchedBlock block;
        during = ResidentMemory();
    }
    EXPECT_GT(before, 0u);
    EXPECT_GE(during, before + kBlock / 2);
    EXPECT_LE(ResidentMemory(), during - kBlock / 2);
}

TEST(MemoryInfo, PeakRemembersMemoryGivenBack) {
    std::uint64_t during = 0;
    {
        const CTouchedBlock block;
        during = ResidentMemory();
    }
    EXPECT_GE(PeakResidentMemory() + kBlock / 8, during);
    EXPECT_GE(PeakResidentMemory(), ResidentMemory());
}

} // namespace quillon
