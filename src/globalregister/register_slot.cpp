#include "globalregister/register_slot.h"

#include <algorithm>

namespace quillon {

std::size_t TRegisterSlot::NextGroup() {
    static std::atomic<std::size_t> next{0};
    return next.fetch_add(1, std::memory_order_relaxed) % kGroups;
}

// A count seen at 0 once is enough: who raises it later sees no pointer.
bool TRegisterSlot::IsUnused() const {
    return std::ranges::all_of(m_usage, [](const TUsage& usage) { return usage.m_nRefCount.load() <= 0; });
}

TGlobalRegister* TRegisterSlot::TryTakeOut() {
    constexpr int kTries = 1000;
    TGlobalRegister* const data = m_data.exchange(nullptr);
    if (data == nullptr)
        return nullptr;
    for (int i = 0; i < kTries; ++i, SleepMs(0))
        if (IsUnused())
            return data;
    m_data.store(data);
    return nullptr;
}

std::int32_t TRegisterSlot::RefCount() const {
    std::int32_t count = 0;
    for (const TUsage& usage : m_usage)
        count += usage.m_nRefCount.load(std::memory_order_relaxed);
    return count;
}

std::uint64_t TRegisterSlot::LastUsedTicks() const {
    std::uint64_t ticks = 0;
    for (const TUsage& usage : m_usage)
        ticks = std::max(ticks, usage.m_nLastUsedTicks.load(std::memory_order_relaxed));
    return ticks;
}

} // namespace quillon
