#pragma once
// An exhaustive packer of the block format, slow and plain: what it leaves is the measure for the product's ratio.
// Lists of places by a hash of four bytes are searched from the newest to the oldest; the longest match wins.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace quillon::reference_packer {

struct TLimits {
    std::size_t m_nWindow, m_nListSize, m_nListKept, m_nFarMatch;
};
inline constexpr TLimits kShort{0x10000, 2048, 2032, 4};
inline constexpr TLimits kLong{0x1000000, 4096, 4064, 19};

/// Bytes of the body.
inline std::size_t PackedSize(std::span<const std::uint8_t> data, const TLimits& limits) {
    const auto extension = [](std::size_t rest) { return rest / 255 + 1; };
    const bool bLong = limits.m_nFarMatch > 4;
    std::vector<std::vector<std::size_t>> lists(65536);
    const auto listOf = [&](std::size_t at) -> std::vector<std::size_t>& {
        std::uint32_t v = 0;
        std::memcpy(&v, data.data() + at, 4);
        return lists[((v >> 15) ^ v) & 0xffff];
    };
    std::size_t size = 0, literals = 0;
    for (std::size_t at = 0; at < data.size();) {
        std::size_t best = 0, bestOffset = 0;
        if (at + 4 <= data.size()) {
            const std::vector<std::size_t>& list = listOf(at);
            for (std::size_t i = list.size(); i-- > 0;) {
                const std::size_t offset = at - list[i];
                if (offset >= limits.m_nWindow || offset < 4)
                    continue;
                const std::size_t most = offset < 16 ? std::min(offset, data.size() - at) : data.size() - at;
                std::size_t length = 0;
                while (length < most && data[at + length] == data[list[i] + length])
                    ++length;
                if (length >= 4 && length > best && (offset < 0x10000 || length >= limits.m_nFarMatch)) {
                    best = length;
                    bestOffset = offset;
                }
            }
        }
        const std::size_t passed = std::max<std::size_t>(best, 1);
        for (std::size_t end = at + passed; at < end; ++at)
            if (at + 4 <= data.size()) {
                std::vector<std::size_t>& list = listOf(at);
                list.push_back(at);
                if (list.size() >= limits.m_nListSize)
                    list.erase(list.begin(), list.end() - static_cast<std::ptrdiff_t>(limits.m_nListKept));
            }
        if (best == 0) {
            ++literals;
            continue;
        }
        size += 1 + literals + (literals >= 15 ? extension(literals - 15) : 0);
        size += bLong && bestOffset >= 0x10000 ? 3 : 2;
        if (!bLong)
            size += best >= 19 ? extension(best - 19) : 0;
        else if (best >= 19)
            size += 1 + (best - 19 >= 127 ? extension(best - 19 - 127) : 0);
        literals = 0;
    }
    return size + 1 + literals + (literals >= 15 ? extension(literals - 15) : 0);
}

} // namespace quillon::reference_packer
