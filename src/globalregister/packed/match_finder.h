#pragma once
// CMatchFinder: finds what a packed block repeats. Places whose first 4, 8 or 19 bytes hash alike are chained, newest
// first. A match that a longer prefix gives is longer than any that only a shorter one gives, so data that repeats
// itself thousands of times needs no walk over all of the repetitions, and a bounded number of steps loses little.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/large_pages.h"

namespace quillon {

struct TFoundMatch {
    std::size_t m_nPosition = 0;
    std::size_t m_nLength = 0; // 0 for none
};

class CMatchFinder {
  public:
    ///   nWindow  offsets are below it; a power of two.
    ///   Errors   std::bad_alloc.
    CMatchFinder(std::span<const std::uint8_t> data, std::size_t nWindow);

    /// A long match at `position`, mostly the longest and of these the nearest; adds the position as Add does.
    [[nodiscard]] TFoundMatch FindAndAdd(std::size_t position);

    /// What is added can be found. Positions are added from 0 on, each once and none left out.
    void Add(std::size_t position);

  private:
    static constexpr std::size_t kLevels = 3;
    static constexpr std::size_t kAhead = 16; // positions from hash to use: as long as memory takes to answer

    using TPlaces = std::vector<std::uint32_t, CLargePageAllocator<std::uint32_t>>; // place + 1, 0 for none

    struct TLevel {
        std::size_t m_nWindow = 0;                   // how far back it is searched
        std::size_t m_nPlaceMask = 0;                // of a position, to an index of m_earlier
        int m_nShift = 0;                            // of a 64-bit hash, to an index of m_newest
        TPlaces m_newest;                            // by hash
        std::array<std::uint32_t, kAhead> m_ahead{}; // hashes of the next positions, by position modulo kAhead
        TPlaces m_earlier;                           // by place modulo the window: the one before it on its chain
    };

    template <std::size_t nLevel> void Foresee(std::size_t position);
    template <std::size_t nLevel> std::size_t AddTo(std::size_t position);
    template <std::size_t nLevel> void SearchChain(std::size_t next, std::size_t position, TFoundMatch& best) const;
    void Try(std::size_t candidate, std::size_t position, TFoundMatch& best) const;

    std::span<const std::uint8_t> m_data;
    std::array<TLevel, kLevels> m_levels;
};

} // namespace quillon
