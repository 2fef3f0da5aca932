#pragma once
// How much memory the settings allow.

#include <cstdint>

#include "app/settings.h"
#include "platform/memory_info.h"

namespace quillon {

struct TMemoryLimits {
    std::uint64_t m_nTempRegisterMB = 0;   // for the register of a problem
    std::uint64_t m_nSecondRegisterMB = 0; // for a second one, whatever the settings say
    std::uint64_t m_nPrecalculatedBytes = 0;
};

/// At the start, and again when a ratio has been changed.
///   Unit  nPhysicalMemory: bytes.
[[nodiscard]] constexpr TMemoryLimits ComputeMemoryLimits(const TSettings& settings, std::uint64_t nPhysicalMemory) {
    constexpr int kSecondRegisterRatio = 20;
    return {ShareMB(nPhysicalMemory, settings.m_nMaxMemRatioForTempReg), ShareMB(nPhysicalMemory, kSecondRegisterRatio),
            nPhysicalMemory * static_cast<std::uint64_t>(settings.m_nMaxMemRatioForPrecalculatedData) / 100};
}

[[nodiscard]] inline TMemoryLimits ComputeMemoryLimits(const TSettings& settings) {
    return ComputeMemoryLimits(settings, PhysicalMemory());
}

} // namespace quillon
