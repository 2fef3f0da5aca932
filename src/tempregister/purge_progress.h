#pragma once
// Lets displays of the number of elements move during a purge of gigabytes.

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

#include "platform/clock.h"
#include "tempregister/combined_map.h"

namespace quillon {

/// Takes what is removed off a counter and repaints, at most every 600 ms.
class CPurgeProgress final : public IPurgeProgress {
  public:
    /// Neither is owned; an empty `repaint` is not called.
    CPurgeProgress(std::atomic<std::uint32_t>& counter, const std::function<void()>& repaint)
        : m_counter(counter), m_repaint(repaint) {}

    void Removed(std::uint32_t removed) override {
        constexpr std::uint64_t kRepaintMs = 600;
        m_nPending += removed;
        if (TickCount64() - m_nLastRepaint < kRepaintMs)
            return;
        m_counter.fetch_sub(std::exchange(m_nPending, 0), std::memory_order_relaxed);
        if (m_repaint)
            m_repaint();
        m_nLastRepaint = TickCount64();
    }

  private:
    std::atomic<std::uint32_t>& m_counter;
    const std::function<void()>& m_repaint;
    std::uint64_t m_nLastRepaint = TickCount64();
    std::uint32_t m_nPending = 0; // removed but not yet off the counter
};

} // namespace quillon
