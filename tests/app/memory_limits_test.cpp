#include "app/memory_limits.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30;

TEST(MemoryLimits, AreAFifthOfTheMemoryByDefault) {
    const TMemoryLimits limits = ComputeMemoryLimits({}, 10 * kGigabyte);
    EXPECT_EQ(limits.m_nTempRegisterMB, 2048u);
    EXPECT_EQ(limits.m_nSecondRegisterMB, 2048u);
    EXPECT_EQ(limits.m_nPrecalculatedBytes, 2 * kGigabyte);
}

TEST(MemoryLimits, FollowTheirRatios) {
    TSettings settings;
    settings.m_nMaxMemRatioForTempReg = 75;
    settings.m_nMaxMemRatioForPrecalculatedData = 33;
    const TMemoryLimits limits = ComputeMemoryLimits(settings, 4 * kGigabyte + 5);
    EXPECT_EQ(limits.m_nTempRegisterMB, 3072u);
    EXPECT_EQ(limits.m_nSecondRegisterMB, 819u) << "no ratio changes it";
    EXPECT_EQ(limits.m_nPrecalculatedBytes, 1417339209u);
}

TEST(MemoryLimits, CountWholeMegabytes) {
    TSettings settings;
    settings.m_nMaxMemRatioForTempReg = 100;
    EXPECT_EQ(ComputeMemoryLimits(settings, (std::uint64_t{3} << 20) - 1).m_nTempRegisterMB, 2u);
    settings.m_nMaxMemRatioForTempReg = 0;
    EXPECT_EQ(ComputeMemoryLimits(settings, kGigabyte).m_nTempRegisterMB, 0u);
}

TEST(MemoryLimits, HoldForLargeMachines) {
    TSettings settings;
    settings.m_nMaxMemRatioForPrecalculatedData = 100;
    const std::uint64_t petabyte = std::uint64_t{1} << 50;
    EXPECT_EQ(ComputeMemoryLimits(settings, petabyte).m_nPrecalculatedBytes, petabyte);
}

TEST(MemoryLimits, AreTakenFromThisMachine) {
    TSettings settings;
    settings.m_nMaxMemRatioForTempReg = 100;
    EXPECT_EQ(ComputeMemoryLimits(settings).m_nTempRegisterMB, PhysicalMemory() >> 20);
}

} // namespace
} // namespace quillon
