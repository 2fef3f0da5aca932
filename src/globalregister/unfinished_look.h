#pragma once
// Do the elements of a table tell that it was not finished? One that is has no unknown ones, and behind a long mate
// there are shorter ones.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "globalregister/packed/little_endian.h"
#include "globalregister/precalc_format.h"

namespace quillon {

/// Which values the elements of a table of bytes have.
using TSeenElements = std::array<bool, 256>;

[[nodiscard]] inline bool LookUnfinished(const TSeenElements& bSeen) {
    const auto unsettled = bSeen.begin() + kFirstUnsettledByte, unknown = bSeen.begin() + kUnknownElement;
    return *unknown || (std::find(unsettled, unknown, true) != unknown &&
                        std::find(bSeen.begin() + 1, unsettled, false) != unsettled);
}

/// Looks at a table piece by piece; element 0, which holds the flags, is left out.
class CUnfinishedLook {
  public:
    explicit CUnfinishedLook(std::size_t nElementSize) : m_nElementSize(nElementSize) {}

    /// The elements from the index `first` on.
    void Take(const std::uint8_t* bytes, std::uint64_t first, std::uint64_t nElements) {
        for (std::uint64_t i = first == 0 ? 1 : 0; i < nElements; ++i)
            TakeElement(m_nElementSize == 1 ? bytes[i] : LoadLittleEndian<std::uint16_t>(bytes + 2 * i));
    }
    void TakeElement(std::uint32_t element) {
        if (m_nElementSize == 1)
            m_bSeen[element & 0xff] = true;
        else
            m_bUnsettledWord = m_bUnsettledWord || element >= kFirstUnsettledWord;
    }
    [[nodiscard]] bool IsUnfinished() const { return m_nElementSize == 1 ? LookUnfinished(m_bSeen) : m_bUnsettledWord; }

  private:
    const std::size_t m_nElementSize;
    TSeenElements m_bSeen{};
    bool m_bUnsettledWord = false;
};

} // namespace quillon
