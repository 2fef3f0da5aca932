#include "globalregister/packed/random_access_packed_buffer.h"

#include "globalregister/packed/random_access_lzw_buffer.h"

namespace quillon::RandomAccessLZWBuffer {

namespace {

constexpr std::size_t kSmallBlock = 8192, kLargeBlock = 16384, kReaders = 8;

template <class T, std::size_t nBlockElements> std::unique_ptr<CRandomAccessPackedBufferBase> Reader() {
    return std::make_unique<CRandomAccessLZWBuffer<T, nBlockElements, kReaders, true>>();
}

template <class T> std::unique_ptr<CRandomAccessPackedBufferBase> Writer() {
    return std::make_unique<CRandomAccessLZWBuffer<T, kLargeBlock, 1, false>>();
}

} // namespace

std::unique_ptr<CRandomAccessPackedBufferBase> MakePackedReader(std::size_t nElementSize,
                                                                std::uint32_t nBlockElements) {
    if (nElementSize == 1)
        return nBlockElements == kSmallBlock ? Reader<std::uint8_t, kSmallBlock>()
                                             : Reader<std::uint8_t, kLargeBlock>();
    return nBlockElements == kSmallBlock ? Reader<std::uint16_t, kSmallBlock>() : Reader<std::uint16_t, kLargeBlock>();
}

std::unique_ptr<CRandomAccessPackedBufferBase> MakePackedWriter(std::size_t nElementSize) {
    return nElementSize == 1 ? Writer<std::uint8_t>() : Writer<std::uint16_t>();
}

} // namespace quillon::RandomAccessLZWBuffer
