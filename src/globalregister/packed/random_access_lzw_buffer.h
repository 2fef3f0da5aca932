#pragma once
// CRandomAccessLZWBuffer: a table cut into blocks, each packed alone by LZW (lzw_coder.h, lzw_decoder.h). To read an
// element one block is decoded up to it.
//
// Instances: T the element, BlockSize the elements of a block, Slots the blocks that can be decoded at the same time,
// Reader whether many threads may read.
//   reading   both elements, blocks of 8192 and 16384, 8 slots
//   creating  both elements, blocks of 16384, 1 slot
//
// Threads: 1 The image does not change while there are readers.
//          2 A slot belongs to the thread that has set its mark; an instance with one slot belongs to one thread.

#include <array>
#include <atomic>
#include <new>
#include <thread>
#include <utility>

#include "core/chess_exception.h"
#include "globalregister/packed/byte_streams.h"
#include "globalregister/packed/element_bytes.h"
#include "globalregister/packed/lzw_decoder.h"
#include "globalregister/packed/lzw_table_packer.h"
#include "globalregister/packed/packed_image.h"
#include "globalregister/packed/packed_table_file.h"
#include "globalregister/packed/random_access_packed_buffer.h"

namespace quillon::RandomAccessLZWBuffer {

template <class T, std::size_t BlockSize, std::size_t Slots, bool Reader>
class CRandomAccessLZWBuffer final : public CRandomAccessPackedBufferBase {
    static_assert(BlockSize == 8192 || BlockSize == 16384);
    static_assert(Slots == (Reader ? 8 : 1));

  public:
    [[nodiscard]] bool Load(const std::filesystem::path& path, bool bStream) override {
        Clear();
        return m_image.Load(path, bStream);
    }

    [[nodiscard]] bool Save(const std::filesystem::path& path, std::uint16_t wFlags) override {
        return m_image.Save(path, wFlags);
    }

    [[nodiscard]] std::uint32_t Get(std::uint64_t index, bool bWholeBlock) override {
        if (index >= GetElements())
            throw ChessException("Index beyond the end of packed data");
        const auto block = static_cast<std::size_t>(index / BlockSize);
        const auto place = static_cast<std::size_t>(index % BlockSize);
        CTakenSlot taken(*this);
        return (bWholeBlock ? DecodeWhole(taken.Slot(), block) : Decode(taken.Slot(), block, place + 1))[place];
    }

    void Update(std::uint64_t, std::uint32_t) override {
        throw ChessException("Call to Update for non-update'able instance of CRandomAccessLZWBuffer.");
    }

    [[nodiscard]] std::optional<std::vector<std::uint8_t>> Unpack(INotifier& notifier) override {
        std::vector<std::uint8_t> table(GetElements() * sizeof(T));
        CTakenSlot taken(*this);
        try {
            for (std::size_t block = 0; block < m_image.Blocks(); ++block)
                StoreBlock(taken.Slot(), block, table.data() + block * kBlockBytes);
        } catch (const ChessException&) {
            notifier.Inform(kDamaged, "Error");
            return std::nullopt;
        }
        return table;
    }

    [[nodiscard]] bool UnpackTo(std::ostream& table) override {
        std::vector<std::uint8_t> bytes(kBlockBytes);
        CTakenSlot taken(*this);
        for (std::size_t block = 0; block < m_image.Blocks(); ++block)
            if (!WriteBytes(table, bytes.data(), StoreBlock(taken.Slot(), block, bytes.data())))
                return false;
        return true;
    }

    [[nodiscard]] std::uint32_t FindMaxAndIndexes(std::set<std::uint64_t>& indexes, std::size_t nLimit) override {
        constexpr T kUnknown = std::numeric_limits<T>::max();
        indexes.clear();
        T greatest = 0;
        CTakenSlot taken(*this);
        for (std::size_t block = 0; block < m_image.Blocks(); ++block) {
            std::uint64_t index = std::uint64_t{block} * BlockSize;
            for (const T element : DecodeWhole(taken.Slot(), block)) {
                if (element > greatest && element != kUnknown && index != 0) {
                    greatest = element;
                    indexes.clear();
                }
                if (element == greatest && element != 0 && index != 0 && indexes.size() < nLimit)
                    indexes.insert(index);
                ++index;
            }
        }
        return greatest;
    }

    [[nodiscard]] bool Compress(std::size_t nPatternLength, std::span<const std::uint8_t> source, bool bShrink,
                                std::size_t nMinBlockBytes, std::size_t nReserve, std::uint64_t nElements) override {
        Clear();
        m_image.Empty();
        if (source.size() / sizeof(T) != nPatternLength)
            return false;
        try {
            CLzwTablePacker<T> packer(BlockSize, nMinBlockBytes);
            if (packer.Pack(source, nPatternLength * nElements) != EPackEnd::Packed)
                return false;
            if (bShrink)
                packer.Blocks().reserve(packer.Blocks().size() + nReserve + CPackedImage::kPadding);
            if (bShrink)
                packer.Blocks().shrink_to_fit();
            m_image.Take(nPatternLength * nElements, packer.Starts(), std::move(packer.Blocks()), nReserve);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    [[nodiscard]] EPackEnd CompressStream(const std::filesystem::path& path, std::istream& source,
                                          std::uint64_t nElements, std::uint16_t wFlags) override {
        Clear();
        m_image.Empty();
        TPackedTableHeader header = m_image.Header();
        header.m_nElements = nElements;
        header.m_wFlags = wFlags;
        return WritePackedTableFile<T>(path, source, header);
    }

    [[nodiscard]] std::uint64_t GetPackedSize() const override {
        return m_image.Header().m_nFileSize + CPackedImage::kPadding;
    }

    [[nodiscard]] std::uint64_t GetMemorySize() const override {
        constexpr std::uint64_t kHead = kPackedTableHeaderBytes + CPackedImage::kPadding;
        return IsStreaming() ? kBlockOffsetBytes * m_image.Blocks() + kHead : GetPackedSize();
    }

    void Clear() override {
        for (TSlot& slot : m_slots) {
            slot.m_decoder.reset();
            slot.m_input = {};
        }
    }

    void SetUserWord(std::uint32_t nUserWord) override { m_image.SetUserWord(nUserWord); }
    [[nodiscard]] std::uint32_t GetUserWord() const override { return m_image.Header().m_nUserWord; }
    [[nodiscard]] std::uint64_t GetElements() const override { return m_image.Header().m_nElements; }
    [[nodiscard]] std::uint16_t GetFlags() const override { return m_image.Header().m_wFlags; }
    [[nodiscard]] std::size_t GetBlockSize() const override { return BlockSize; }
    [[nodiscard]] bool IsStreaming() const override { return m_image.IsStreaming(); }
    [[nodiscard]] std::size_t GetElementSize() const override { return sizeof(T); }

  private:
    static constexpr const char* kDamaged = "Error unpacking LZW data";
    static constexpr std::size_t kBlockBytes = BlockSize * sizeof(T); // unpacked

    // What one thread needs to decode a block.
    struct TSlot {
        std::atomic<bool> m_bTaken{false};
        std::unique_ptr<CLzwDecoder<T>> m_decoder; // made at the first use
        std::vector<std::uint8_t> m_input;         // of a stream
    };

    // The first free slot, for as long as the object lives. Who finds none waits for the short time that a block takes.
    class CTakenSlot {
      public:
        explicit CTakenSlot(CRandomAccessLZWBuffer& buffer) : m_slot(Take(buffer.m_slots)) {}
        CTakenSlot(const CTakenSlot&) = delete;
        CTakenSlot& operator=(const CTakenSlot&) = delete;
        ~CTakenSlot() { m_slot.m_bTaken.store(false, std::memory_order_release); }

        [[nodiscard]] TSlot& Slot() { return m_slot; }

      private:
        static TSlot& Take(std::array<TSlot, Slots>& slots) {
            for (;; std::this_thread::yield())
                for (TSlot& slot : slots)
                    if (!slot.m_bTaken.load(std::memory_order_relaxed) &&
                        !slot.m_bTaken.exchange(true, std::memory_order_acquire))
                        return slot;
        }

        TSlot& m_slot;
    };

    // At least nElements elements of a block.
    [[nodiscard]] std::span<const T> Decode(TSlot& slot, std::size_t block, std::size_t nElements) {
        if (!slot.m_decoder)
            slot.m_decoder = std::make_unique<CLzwDecoder<T>>(BlockSize, m_image.Header().m_bPlainDictionary);
        const std::size_t nDecoded = slot.m_decoder->Decode(m_image.BytesOf(block, slot.m_input), nElements);
        if (nDecoded == 0)
            throw ChessException(kDamaged);
        return {slot.m_decoder->Elements(), nDecoded};
    }

    // The last code of a block ends where the block does.
    [[nodiscard]] std::span<const T> DecodeWhole(TSlot& slot, std::size_t block) {
        const std::span<const T> elements = Decode(slot, block, m_image.ElementsOf(block));
        if (elements.size() != m_image.ElementsOf(block))
            throw ChessException(kDamaged);
        return elements;
    }

    // The bytes of a block in a plain table; how many.
    std::size_t StoreBlock(TSlot& slot, std::size_t block, std::uint8_t* bytes) {
        const std::span<const T> elements = DecodeWhole(slot, block);
        for (std::size_t i = 0; i < elements.size(); ++i)
            StoreElement(bytes, i, elements[i]);
        return elements.size() * sizeof(T);
    }

    CPackedImage m_image{static_cast<std::uint32_t>(BlockSize)};
    std::array<TSlot, Slots> m_slots;
};

} // namespace quillon::RandomAccessLZWBuffer
