#pragma once
// TRegisterSlot: the place of one position type in the manager. It is made once and stays; the data in it come and go.
//
// Who looks up raises a count of its own group of threads, reads the pointer, and lowers the count when it has its
// answer. Who unloads takes the pointer away first and waits until each count has been seen at 0. Both sides write
// before they read, in one order that all threads agree on (sequentially consistent): either the one who looks up sees
// no pointer, or the one who unloads sees the count.
//
// Threads: any. Data are to be released on the thread that got them. Publish, TakeOut and TryTakeOut are called under
//          the manager's lock of registers.

#include <array>
#include <atomic>
#include <cstdint>

#include "core/position_type.h"
#include "platform/clock.h"
#include "platform/sleep.h"

namespace quillon {

struct TGlobalRegister;

/// What is known of a type.
enum class EDataState : std::uint8_t {
    NotAsked,    // no file is known; none has been looked for since the folders were read
    Present,     // there are files
    Unavailable, // there are none, or they are of no use: not tried again until all is unloaded
    NoRoom,      // there was no room: not tried again until all is unloaded or more memory is allowed
};

class TRegisterSlot {
  public:
    TRegisterSlot(TPositionType type, EDataState state) : m_nType(type), m_state(state) {}
    TRegisterSlot(const TRegisterSlot&) = delete;
    TRegisterSlot& operator=(const TRegisterSlot&) = delete;

    [[nodiscard]] TPositionType Type() const { return m_nType; }
    [[nodiscard]] EDataState State() const { return m_state.load(std::memory_order_relaxed); }
    void SetState(EDataState state) { m_state.store(state, std::memory_order_relaxed); }

    [[nodiscard]] bool IsLoaded() const { return m_data.load(std::memory_order_relaxed) != nullptr; }

    /// The data with their count raised; null if none are loaded.
    [[nodiscard]] TGlobalRegister* Acquire() {
        if (!IsLoaded())
            return nullptr;
        std::atomic<std::int32_t>& count = OwnUsage().m_nRefCount;
        count.fetch_add(1);
        if (TGlobalRegister* const data = m_data.load()) [[likely]]
            return data;
        count.fetch_sub(1);
        return nullptr;
    }

    /// Lowers the count and stamps the time.
    void Release() {
        TUsage& usage = OwnUsage();
        usage.m_nLastUsedTicks.store(CoarseTickCount64(), std::memory_order_relaxed);
        usage.m_nRefCount.fetch_sub(1, std::memory_order_release);
    }

    /// Shows data that have been loaded; the count is raised for the caller.
    void Publish(TGlobalRegister* data) {
        OwnUsage().m_nRefCount.fetch_add(1);
        m_data.store(data);
    }

    /// Takes the data out and waits until nobody uses them. Null if none are loaded.
    [[nodiscard]] TGlobalRegister* TakeOut() {
        TGlobalRegister* const data = m_data.exchange(nullptr);
        while (data != nullptr && !IsUnused())
            SleepMs(0);
        return data;
    }

    /// The same for data that are not in use: null, and they stay, if somebody uses them meanwhile for long.
    [[nodiscard]] TGlobalRegister* TryTakeOut();

    /// The data for a look at them without a count: nobody may unload meanwhile.
    [[nodiscard]] const TGlobalRegister* Peek() const { return m_data.load(std::memory_order_acquire); }

    [[nodiscard]] std::int32_t RefCount() const;
    [[nodiscard]] std::uint64_t LastUsedTicks() const;

    // Of a load in progress; both under the manager's lock of loads.
    bool m_bLoading = false;
    std::uint64_t m_nReserved = 0; // bytes
    bool m_bRoomRefused = false;   // there was none for it, at some step
    EDataState m_stateBefore = EDataState::NotAsked;

  private:
    static constexpr std::size_t kGroups = 16; // of threads: each its own line of the cache

    struct alignas(64) TUsage {
        std::atomic<std::int32_t> m_nRefCount{0};
        std::atomic<std::uint64_t> m_nLastUsedTicks{0};
    };

    /// Seen after the pointer was taken away: nobody has it any more.
    [[nodiscard]] bool IsUnused() const;

    [[nodiscard]] TUsage& OwnUsage() { return m_usage[OwnGroup()]; }
    [[nodiscard]] static std::size_t OwnGroup() {
        thread_local const std::size_t group = NextGroup();
        return group;
    }
    [[nodiscard]] static std::size_t NextGroup();

    const TPositionType m_nType;
    std::atomic<EDataState> m_state;
    std::atomic<TGlobalRegister*> m_data{nullptr}; // owned by the manager
    std::array<TUsage, kGroups> m_usage;
};

} // namespace quillon
