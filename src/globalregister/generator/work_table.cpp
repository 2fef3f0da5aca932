#include <algorithm>
#include <new>
#include <utility>

#include "globalregister/generator/generator_run.h"
#include "globalregister/generator/work_cells.h"
#include "globalregister/packed/little_endian.h"

namespace quillon {

namespace {

constexpr std::uint8_t kOpenByte = kFirstUnsettledByte;

void FillOpenWords(std::vector<std::uint8_t>& data) {
    for (std::size_t i = 0; i + 1 < data.size(); i += 2)
        StoreLittleEndian(data.data() + i, kFirstUnsettledWord);
}

void FinishBytes(std::vector<std::uint8_t>& data) {
    std::for_each(data.begin() + 1, data.end(), [](std::uint8_t& element) {
        element &= CByteCells::kOpen;
        if (element == CByteCells::kOpen)
            element = 0;
    });
}

void FinishWords(std::vector<std::uint8_t>& data) {
    for (std::size_t i = 2; i + 1 < data.size(); i += 2) {
        const unsigned element = LoadLittleEndian<std::uint16_t>(data.data() + i) & CWordCells::kOpen;
        StoreLittleEndian(data.data() + i, static_cast<std::uint16_t>(element == CWordCells::kOpen ? 0 : element));
    }
}

} // namespace

bool MakeWorkTable(TGlobalRegister& table, bool bWideElements) {
    TPositionIndexing before = table;
    if (!ApplyFlags(table, FlagsOf(table, false) | kFlagCombinations))
        return false;
    const std::size_t nElementSize = ElementSize(table, bWideElements ? kFlagWideElements : 0);
    const bool bBitData = UsesBitData(table);
    const std::uint64_t size = table.GetSize();
    try {
        table.data.assign(bBitData ? (size + kPairsOfAByte - 1) / kPairsOfAByte : size * nElementSize,
                          bBitData ? 0 : kOpenByte);
    } catch (const std::bad_alloc&) {
        static_cast<TPositionIndexing&>(table) = std::move(before);
        return false;
    }
    table.bBitData = bBitData;
    table.nElementSize = static_cast<std::uint8_t>(nElementSize);
    if (!table.bBitData && table.nElementSize == 2)
        FillOpenWords(table.data);
    const std::uint16_t wFlags = FlagsOf(table, table.nElementSize == 2);
    table.data[0] = static_cast<std::uint8_t>(wFlags);
    if (!table.bBitData && table.nElementSize == 2)
        table.data[1] = 0;
    table.nRandomAccessKind = kPlainAccess;
    table.bCompactUnfinished = true;
    return true;
}

void FinishTable(TGlobalRegister& table) {
    if (!table.bBitData)
        table.nElementSize == 1 ? FinishBytes(table.data) : FinishWords(table.data);
    table.bCompactUnfinished = false;
}

} // namespace quillon
