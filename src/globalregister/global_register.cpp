#include "globalregister/global_register.h"

#include <array>
#include <mutex>

#include "core/chess_exception.h"
#include "globalregister/disk_access.h"
#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/simple_packing.h"

namespace quillon {

namespace {

constexpr std::uint8_t kWhiteMates = 1; // of a pair of bit data

constexpr std::uint16_t kFirstUnsettledOfByte = HalfMovesOfByte(kFirstUnsettledByte);
constexpr std::uint16_t kFirstUnsettledOfWord = HalfMovesOfWord(kFirstUnsettledWord);

constexpr std::uint64_t kSmallTypeMen = 5; // types with fewer men are counted as plain tables

} // namespace

// Lengths above 254 are in tables of two bytes only; 255 in one byte is no length in any form.
std::uint16_t TGlobalRegister::HalfMovesOf(std::uint32_t element) const {
    return nElementSize == 1 ? HalfMovesOfByte(static_cast<std::uint8_t>(element))
                             : HalfMovesOfWord(static_cast<std::uint16_t>(element));
}

std::uint16_t TGlobalRegister::ReadFrom(std::ifstream& stream, std::uint64_t index) const {
    std::array<std::uint8_t, 2> bytes{};
    {
        const std::lock_guard lock(DiskAccessSection());
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(index * nElementSize));
        if (!ReadBytes(stream, bytes.data(), nElementSize))
            return kUnknownHalfMoves;
    }
    return HalfMovesOf(LoadLittleEndian<std::uint16_t>(bytes.data()));
}

std::uint16_t TGlobalRegister::IsMateByIndex(std::uint64_t index) const {
    if (nRandomAccessKind == kPlainAccess && !bBitData && index < data.size()) [[likely]] {
        if (nElementSize == 1)
            return HalfMovesOfByte(data[index]);
        return HalfMovesOfWord(LoadLittleEndian<std::uint16_t>(data.data() + 2 * index));
    }
    return OtherForm(index);
}

std::uint16_t TGlobalRegister::OtherForm(std::uint64_t index) const {
    if (diskStream.is_open())
        return ReadFrom(diskStream, index);
    if (bBitData)
        return BitPair(data.data(), index);
    if (nRandomAccessKind == kSimpleAccess) {
        const auto element = SimpleElement(data, index);
        return element ? HalfMovesOfByte(*element) : kUnknownHalfMoves;
    }
    if (nRandomAccessKind == kPackedAccess)
        return HalfMovesOf(packed->Get(index, false));
    throw ChessException("Unknown random access buffer in TGlobalRegister::IsMateByIndex()");
}

// Only a set bit is certain in a table in the making. The details hold plain lengths, all of a byte too: what is open
// and what is lost for Black are told by the bits alone.
std::uint16_t TGlobalRegister::BitDataHalfMoves(std::uint64_t index) const {
    if (diskStream.is_open())
        return bCompactUnfinished ? kUnknownHalfMoves : ReadFrom(diskStream, index);
    if ((BitPair(data.data(), index) & kWhiteMates) == 0)
        return bCompactUnfinished ? kUnknownHalfMoves : 0;
    const std::uint16_t length = detailStream.is_open() ? ReadFrom(detailStream, index) : kUnknownHalfMoves;
    return length == 0 ? kUnknownHalfMoves : length;
}

// A table that nobody has looked through may be one in the making whatever its name says.
std::uint16_t TGlobalRegister::Settled(std::uint16_t halfMoves) const {
    if (halfMoves == 0)
        return bCompactUnfinished ? kUnknownHalfMoves : 0;
    if (halfMoves < (nElementSize == 1 ? kFirstUnsettledOfByte : kFirstUnsettledOfWord))
        return halfMoves;
    return bAllSettled && !bCompactUnfinished ? halfMoves : kUnknownHalfMoves;
}

std::uint16_t TGlobalRegister::ProvedHalfMoves(const TChessboard& b) const {
    const std::uint64_t index = GetIndex(b);
    return index == kNoIndex ? kUnknownHalfMoves : ProvedHalfMovesByIndex(index);
}

std::uint16_t TGlobalRegister::ProvedHalfMovesByIndex(std::uint64_t index) const {
    if (index == 0) // the flags
        return kUnknownHalfMoves;
    if (bBitData)
        return BitDataHalfMoves(index);
    return Settled(IsMateByIndex(index));
}

void TGlobalRegister::Update(std::uint64_t index, std::uint16_t value) {
    try {
        packed->Update(index, value);
    } catch (const ChessException&) {
        throw ChessException("Error (no mem.) in call to CRandomAccessPackedBufferBase::Update in "
                             "TGlobalRegister::SetMateByIndex()");
    }
}

void TGlobalRegister::SetMateByIndex(std::uint64_t index, std::uint16_t value) {
    if (bBitData) {
        AddToBitPair(data.data(), index, static_cast<std::uint8_t>(value & 3));
        return;
    }
    if (packed) {
        Update(index, value);
        return;
    }
    if (nElementSize == 1)
        data[index] = static_cast<std::uint8_t>(value);
    else
        StoreLittleEndian(data.data() + 2 * index, value);
}

std::uint64_t TGlobalRegister::GetMemoryInUse() const {
    if (diskStream.is_open())
        return 0;
    if (custom || MenWithKings() < kSmallTypeMen)
        return GetSize();
    if (nRandomAccessKind == kSimpleAccess)
        return nPackedSize;
    if (nRandomAccessKind == kPackedAccess)
        return packed->GetMemorySize();
    return bBitData ? GetSize() / 4 : GetSize() * nElementSize;
}

} // namespace quillon
