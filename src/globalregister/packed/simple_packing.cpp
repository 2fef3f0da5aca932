#include "globalregister/packed/simple_packing.h"

#include <algorithm>
#include <limits>

#include "globalregister/packed/little_endian.h"

namespace quillon {

namespace {

constexpr std::size_t kHeadBytes = 8;
constexpr std::size_t kOffsetBytes = 4;
constexpr std::uint8_t kFirstRun = 128, kLastRun = 254;
constexpr std::uint8_t kRunBase = 126;
constexpr std::size_t kShortestRun = kFirstRun - kRunBase, kLongestRun = kLastRun - kRunBase;

bool IsRun(std::uint8_t byte) { return byte >= kFirstRun && byte <= kLastRun; }

void AppendBlock(std::span<const std::uint8_t> block, std::vector<std::uint8_t>& packed) {
    for (std::size_t i = 0; i < block.size();) {
        const std::uint8_t element = block[i];
        packed.push_back(element);
        std::size_t end = ++i;
        while (end < block.size() && block[end] == element)
            ++end;
        for (; end - i >= kShortestRun; i += packed.back() - kRunBase)
            packed.push_back(static_cast<std::uint8_t>(kRunBase + std::min(end - i, kLongestRun)));
    }
}

} // namespace

std::optional<std::vector<std::uint8_t>> PackSimple(std::span<const std::uint8_t> table) {
    if (std::ranges::any_of(table, IsRun))
        return std::nullopt;
    const std::size_t nBlocks = (table.size() + kSimpleBlockElements - 1) / kSimpleBlockElements;
    std::vector<std::uint8_t> packed(kHeadBytes + nBlocks * kOffsetBytes);
    for (std::size_t block = 0; block < nBlocks; ++block) {
        StoreLittleEndian(packed.data() + kHeadBytes + block * kOffsetBytes, static_cast<std::uint32_t>(packed.size()));
        const std::size_t first = block * kSimpleBlockElements;
        AppendBlock(table.subspan(first, std::min<std::size_t>(kSimpleBlockElements, table.size() - first)), packed);
        if (packed.size() > std::numeric_limits<std::uint32_t>::max())
            return std::nullopt;
    }
    StoreLittleEndian(packed.data(), static_cast<std::uint32_t>(packed.size()));
    StoreLittleEndian(packed.data() + 4, static_cast<std::uint32_t>(nBlocks));
    return packed;
}

// Block by block, each to its own number of elements: blocks are stored one behind the other, in order.
std::optional<std::vector<std::uint8_t>> UnpackSimple(std::span<const std::uint8_t> packed, std::uint64_t nElements) {
    if (nElements == 0 || !SimpleElement(packed, nElements - 1) || SimpleElement(packed, nElements))
        return std::nullopt;
    std::vector<std::uint8_t> table;
    table.reserve(nElements);
    const std::size_t nBlocks = (nElements + kSimpleBlockElements - 1) / kSimpleBlockElements;
    for (std::size_t block = 0; block < nBlocks; ++block) {
        std::size_t at = LoadLittleEndian<std::uint32_t>(packed.data() + kHeadBytes + block * kOffsetBytes);
        const std::uint64_t end = std::min<std::uint64_t>((block + 1) * kSimpleBlockElements, nElements);
        for (std::uint8_t current = 0; table.size() < end; ++at) {
            if (at >= packed.size())
                return std::nullopt;
            const bool bRun = IsRun(packed[at]);
            const std::size_t count = bRun ? packed[at] - kRunBase : 1u;
            current = bRun ? current : packed[at];
            if (count > end - table.size() || (bRun && table.size() % kSimpleBlockElements == 0))
                return std::nullopt;
            table.insert(table.end(), count, current);
        }
    }
    return table;
}

std::optional<std::uint8_t> SimpleElement(std::span<const std::uint8_t> packed, std::uint64_t index) {
    const std::uint64_t block = index / kSimpleBlockElements;
    if (packed.size() < kHeadBytes || block >= LoadLittleEndian<std::uint32_t>(packed.data() + 4) ||
        block >= (packed.size() - kHeadBytes) / kOffsetBytes)
        return std::nullopt;
    const std::size_t start = LoadLittleEndian<std::uint32_t>(packed.data() + kHeadBytes + block * kOffsetBytes);
    const std::uint64_t wanted = index % kSimpleBlockElements;
    std::uint64_t count = 0; // elements passed
    std::uint8_t current = 0;
    for (std::size_t at = start; at < packed.size(); ++at) {
        const std::uint8_t byte = packed[at];
        if (!IsRun(byte))
            current = byte;
        else if (at == start)
            return std::nullopt;
        count += IsRun(byte) ? byte - kRunBase : 1u;
        if (count > wanted)
            return current;
    }
    return std::nullopt;
}

} // namespace quillon
