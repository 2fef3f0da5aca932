#include "globalregister/packed/simple_packing.h"

#include <algorithm>
#include <limits>

#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/packed_table_header.h"

namespace quillon {

namespace {

constexpr std::size_t kHeadBytes = 8;
constexpr std::size_t kOffsetBytes = 4;
constexpr std::uint8_t kFirstRun = 128, kLastRun = 254;
constexpr std::uint8_t kRunBase = 126;
constexpr std::size_t kShortestRun = kFirstRun - kRunBase, kLongestRun = kLastRun - kRunBase;

bool IsRun(std::uint8_t byte) { return byte >= kFirstRun && byte <= kLastRun; }

/// That a byte stands for.
std::size_t ElementsOf(std::uint8_t byte) { return IsRun(byte) ? byte - kRunBase : 1u; }

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

std::uint64_t MostSimpleBytes(std::uint64_t nElements) {
    return kHeadBytes + BlocksOf(nElements, kSimpleBlockElements) * kOffsetBytes + nElements;
}

std::optional<std::vector<std::uint8_t>> PackSimple(std::span<const std::uint8_t> table) {
    if (std::ranges::any_of(table, IsRun))
        return std::nullopt;
    const std::size_t nBlocks = BlocksOf(table.size(), kSimpleBlockElements);
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

bool IsWholeSimple(std::span<const std::uint8_t> packed, std::uint64_t nElements) {
    const std::uint64_t nBlocks = BlocksOf(nElements, kSimpleBlockElements);
    if (nBlocks == 0 || packed.size() < kHeadBytes || nBlocks > (packed.size() - kHeadBytes) / kOffsetBytes ||
        LoadLittleEndian<std::uint32_t>(packed.data() + 4) != nBlocks)
        return false;
    std::uint64_t at = kHeadBytes + nBlocks * kOffsetBytes;
    for (std::uint64_t block = 0, rest = nElements; block < nBlocks; ++block) {
        if (LoadLittleEndian<std::uint32_t>(packed.data() + kHeadBytes + block * kOffsetBytes) != at ||
            at >= packed.size() || IsRun(packed[at]))
            return false;
        std::uint64_t count = std::min(rest, kSimpleBlockElements);
        rest -= count;
        for (; count > 0; ++at) {
            const std::uint64_t nOfByte = at < packed.size() ? ElementsOf(packed[at]) : 0;
            if (nOfByte == 0 || nOfByte > count)
                return false;
            count -= nOfByte;
        }
    }
    return at == packed.size();
}

std::size_t SimpleStreamStart(std::span<const std::uint8_t> packed) {
    return LoadLittleEndian<std::uint32_t>(packed.data() + kHeadBytes);
}

std::optional<std::vector<std::uint8_t>> UnpackSimple(std::span<const std::uint8_t> packed, std::uint64_t nElements) {
    if (!IsWholeSimple(packed, nElements))
        return std::nullopt;
    std::vector<std::uint8_t> table;
    table.reserve(nElements);
    std::uint8_t current = 0;
    for (const std::uint8_t byte : packed.subspan(SimpleStreamStart(packed))) {
        current = IsRun(byte) ? current : byte;
        table.insert(table.end(), ElementsOf(byte), current);
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
        count += ElementsOf(byte);
        if (count > wanted)
            return current;
    }
    return std::nullopt;
}

} // namespace quillon
