#include "globalregister/packed/packed_block.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <future>
#include <limits>
#include <new>
#include <string_view>
#include <system_error>

#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/little_endian.h"
#include "globalregister/packed/sequence_format.h"
#include "platform/processors.h"

namespace quillon {

namespace {

using TBytes = std::vector<std::uint8_t>;
using TByteSpan = std::span<const std::uint8_t>;

constexpr std::size_t kMagicBytes = 4;
constexpr std::size_t kPartMultiple = 16;
constexpr std::size_t kSizeLimit = std::numeric_limits<std::uint32_t>::max();

// No input byte makes more output: a byte that prolongs a match adds 255.
constexpr std::size_t kMostBytesFromOne = 255;

constexpr std::string_view kOldMagic = "LZ42";
constexpr std::string_view BlockMagic(EBlockForm form) { return form == EBlockForm::Short ? "LZ4 " : "LZ4e"; }
constexpr std::string_view ContainerMagic(EBlockForm form) { return form == EBlockForm::Short ? "lz4 " : "lz4e"; }

bool HasMagic(TByteSpan bytes, std::string_view magic) {
    return bytes.size() >= kMagicBytes && std::memcmp(bytes.data(), magic.data(), kMagicBytes) == 0;
}

void StoreMagic(std::uint8_t* bytes, std::string_view magic) { std::memcpy(bytes, magic.data(), kMagicBytes); }

std::size_t WordAt(TByteSpan bytes, std::size_t offset) {
    return LoadLittleEndian<std::uint32_t>(bytes.data() + offset);
}

void StoreWord(TBytes& bytes, std::size_t offset, std::size_t value) {
    StoreLittleEndian(bytes.data() + offset, static_cast<std::uint32_t>(value));
}

TBytes PackOne(TByteSpan source, EBlockForm form) {
    TBytes packed;
    packed.reserve(source.size() / 100 * 105 + source.size() % 100 + kBlockHeaderBytes + kMagicBytes);
    packed.resize(kBlockHeaderBytes);
    PackBody(source, form, packed);
    StoreMagic(packed.data(), BlockMagic(form));
    StoreWord(packed, 4, source.size());
    StoreWord(packed, 8, packed.size());
    packed.shrink_to_fit();
    return packed;
}

std::vector<TByteSpan> SplitEvenly(TByteSpan source, std::size_t nParts) {
    const std::size_t even = (source.size() + nParts - 1) / nParts;
    const std::size_t size = (even + kPartMultiple - 1) / kPartMultiple * kPartMultiple;
    std::vector<TByteSpan> parts;
    for (; source.size() > size; source = source.subspan(size))
        parts.push_back(source.first(size));
    parts.push_back(source);
    return parts;
}

TBytes PackContainer(TByteSpan source, EBlockForm form, std::size_t nParts) {
    std::vector<std::future<TBytes>> blocks;
    for (const TByteSpan part : SplitEvenly(source, nParts))
        blocks.push_back(std::async(std::launch::async, PackOne, part, form));
    TBytes packed(kContainerHeaderBytes);
    for (std::future<TBytes>& block : blocks) {
        const TBytes bytes = block.get();
        packed.insert(packed.end(), bytes.begin(), bytes.end());
    }
    StoreMagic(packed.data(), ContainerMagic(form));
    StoreWord(packed, 4, source.size());
    StoreWord(packed, 12, blocks.size());
    return packed;
}

bool Pack(TByteSpan source, EBlockForm form, TBytes& packed, int nProcessors) {
    packed.clear();
    if (source.size() > kSizeLimit)
        return false;
    try {
        const bool bParallel = source.size() >= kParallelPackBytes && nProcessors > 1;
        TBytes bytes =
            bParallel ? PackContainer(source, form, static_cast<std::size_t>(nProcessors)) : PackOne(source, form);
        if (bytes.size() > kSizeLimit)
            return false;
        packed = std::move(bytes);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::system_error&) { // no thread
        return false;
    }
}

// Room for the output, unless no input of this size could fill it: a damaged header must not ask for gigabytes.
bool MakeRoom(TBytes& unpacked, std::size_t size, std::size_t nInput) {
    if (size / kMostBytesFromOne > nInput)
        return false;
    unpacked.resize(size + kUnpackSlack);
    return true;
}

struct TBlock {
    EBlockForm m_form = EBlockForm::Short;
    std::size_t m_nUnpacked = 0;
    TByteSpan m_body;
};

// The block that the bytes begin with.
bool ReadBlock(TByteSpan bytes, TBlock& block) {
    const bool bOld = HasMagic(bytes, kOldMagic);
    const bool bLong = HasMagic(bytes, BlockMagic(EBlockForm::Long));
    if (bytes.size() < kBlockHeaderBytes || !(bOld || bLong || HasMagic(bytes, BlockMagic(EBlockForm::Short))))
        return false;
    block.m_form = bLong ? EBlockForm::Long : EBlockForm::Short;
    block.m_nUnpacked = WordAt(bytes, bOld ? 12 : 4);
    const std::size_t size = WordAt(bytes, 8);
    if (size < kBlockHeaderBytes || size > bytes.size())
        return false;
    block.m_body = bytes.subspan(kBlockHeaderBytes, size - kBlockHeaderBytes);
    return true;
}

bool UnpackOne(TByteSpan packed, TBytes& unpacked) {
    TBlock block;
    return ReadBlock(packed, block) && block.m_body.size() + kBlockHeaderBytes == packed.size() &&
           MakeRoom(unpacked, block.m_nUnpacked, packed.size()) &&
           UnpackBody(block.m_body, block.m_form, unpacked.data(), block.m_nUnpacked);
}

// A block may write behind its end, where the next one begins: they are unpacked in their order.
bool UnpackContainer(TByteSpan packed, TBytes& unpacked) {
    if (packed.size() < kContainerHeaderBytes)
        return false;
    const std::size_t size = WordAt(packed, 4);
    const std::size_t nBlocks = WordAt(packed, 12);
    if (!MakeRoom(unpacked, size, packed.size()))
        return false;
    std::size_t done = 0;
    TByteSpan rest = packed.subspan(kContainerHeaderBytes);
    for (std::size_t i = 0; i < nBlocks; ++i) {
        TBlock block;
        if (!ReadBlock(rest, block) || block.m_nUnpacked > size - done ||
            !UnpackBody(block.m_body, block.m_form, unpacked.data() + done, block.m_nUnpacked))
            return false;
        done += block.m_nUnpacked;
        rest = rest.subspan(kBlockHeaderBytes + block.m_body.size());
    }
    return done == size && rest.empty();
}

bool IsContainer(TByteSpan bytes) {
    return HasMagic(bytes, ContainerMagic(EBlockForm::Short)) || HasMagic(bytes, ContainerMagic(EBlockForm::Long));
}

} // namespace

bool PackBlock(TByteSpan source, TBytes& packed, int nProcessors) {
    return Pack(source, EBlockForm::Short, packed, nProcessors);
}

bool PackBlock(TByteSpan source, TBytes& packed) { return PackBlock(source, packed, UsableProcessors()); }

bool PackBlockLong(TByteSpan source, TBytes& packed, int nProcessors) {
    return Pack(source, EBlockForm::Long, packed, nProcessors);
}

bool PackBlockLong(TByteSpan source, TBytes& packed) { return PackBlockLong(source, packed, UsableProcessors()); }

bool UnpackBlock(TByteSpan packed, TBytes& unpacked) {
    unpacked.clear();
    bool bUnpacked = false;
    try {
        bUnpacked = IsContainer(packed) ? UnpackContainer(packed, unpacked) : UnpackOne(packed, unpacked);
    } catch (const std::bad_alloc&) {
    }
    unpacked.resize(bUnpacked ? unpacked.size() - kUnpackSlack : 0);
    return bUnpacked;
}

std::optional<std::uint64_t> UnpackedSize(TByteSpan packed) {
    const bool bOld = HasMagic(packed, kOldMagic);
    if (packed.size() < kBlockHeaderBytes || !(bOld || IsPackedBlock(packed)))
        return std::nullopt;
    return WordAt(packed, bOld ? 12 : 4);
}

// What unpacks to anything begins with a literal: a match has nothing to repeat yet.
std::optional<std::uint8_t> FirstUnpackedByte(std::istream& packed) {
    std::array<std::uint8_t, kBlockHeaderBytes> head{};
    bool bRead = ReadBytes(packed, head.data(), head.size());
    if (bRead && IsContainer(head)) { // whose own head is longer
        packed.ignore(kContainerHeaderBytes - kBlockHeaderBytes);
        bRead = ReadBytes(packed, head.data(), head.size()) && !IsContainer(head);
    }
    if (!bRead || !UnpackedSize(head))
        return std::nullopt;
    const int nLiterals = packed.get() >> 4;
    if (nLiterals == kNibbleFull)
        while (packed.get() == kExtensionFull) {
        }
    const int byte = packed.get();
    if (!packed || nLiterals == 0)
        return std::nullopt;
    return static_cast<std::uint8_t>(byte);
}

bool IsPackedBlock(TByteSpan bytes) {
    return IsContainer(bytes) || HasMagic(bytes, BlockMagic(EBlockForm::Short)) ||
           HasMagic(bytes, BlockMagic(EBlockForm::Long));
}

} // namespace quillon
