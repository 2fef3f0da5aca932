#pragma once
// CRandomAccessPackedBufferBase: a packed table whose elements are read one by one, from memory or from disk.
//
// Elements have one byte or two. As bytes, in what is packed and what is unpacked, they have the lowest byte first.
//
// Threads: Get and FindMaxAndIndexes may be called by many threads at once on instances for reading; everything else
// needs
//          the object alone.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <span>
#include <vector>

#include "core/notifier.h"
#include "globalregister/packed/lzw_table_packer.h"

namespace quillon::RandomAccessLZWBuffer {

class CRandomAccessPackedBufferBase {
  public:
    CRandomAccessPackedBufferBase() = default;
    CRandomAccessPackedBufferBase(const CRandomAccessPackedBufferBase&) = delete;
    CRandomAccessPackedBufferBase& operator=(const CRandomAccessPackedBufferBase&) = delete;
    virtual ~CRandomAccessPackedBufferBase() = default;

    /// Reads a file; with `bStream` its blocks stay on disk.
    ///   Errors  false, and the buffer is empty: unreadable, no such file, for another instance, or memory is short.
    [[nodiscard]] virtual bool Load(const std::filesystem::path& path, bool bStream) = 0;

    /// Writes the image with this flag word in its header.
    ///   Errors  false when the file cannot be written whole, or when the buffer streams.
    [[nodiscard]] virtual bool Save(const std::filesystem::path& path, std::uint16_t wFlags) = 0;

    /// The element at `index`. Decodes the block up to it, with `bWholeBlock` to its end. Nothing decoded is kept.
    ///   Errors  ChessException for an index beyond the table or a damaged block; CDiskFailure for a failed read of a
    ///           stream.
    [[nodiscard]] virtual std::uint32_t Get(std::uint64_t index, bool bWholeBlock) = 0;

    /// No instance can be updated.
    ///   Errors  ChessException, always.
    virtual void Update(std::uint64_t index, std::uint32_t value) = 0;

    /// The plain table, as bytes.
    ///   Errors  none; the notifier tells of a damaged block. std::bad_alloc.
    [[nodiscard]] virtual std::optional<std::vector<std::uint8_t>> Unpack(INotifier& notifier) = 0;

    /// Writes the plain table to a stream, block by block.
    ///   Errors  false: the stream failed. As Get. What was written is then of no use.
    [[nodiscard]] virtual bool UnpackTo(std::ostream& table) = 0;

    /// The greatest element apart from element 0, which holds the flags, and up to nLimit of the indices that hold it.
    /// The greatest value that an element can have means unknown and does not count.
    ///   Errors  as Get.
    [[nodiscard]] virtual std::uint32_t FindMaxAndIndexes(std::set<std::uint64_t>& indexes, std::size_t nLimit) = 0;

    /// Builds the image of a table that repeats a pattern.
    ///   nPatternLength  elements of `source`.
    ///   bShrink         gives back memory that the image does not fill.
    ///   nMinBlockBytes  a block takes at least so much room.
    ///   nReserve        bytes behind the last block that belong to the image.
    ///   nElements       how many times the pattern stands in the table.
    ///   Errors  false, and the buffer is empty: the blocks do not fit in as much room as they would need without
    ///   packing,
    ///           an element is above 1023, or memory is short.
    [[nodiscard]] virtual bool Compress(std::size_t nPatternLength, std::span<const std::uint8_t> source, bool bShrink,
                                        std::size_t nMinBlockBytes, std::size_t nReserve, std::uint64_t nElements) = 0;

    /// Builds a file from a stream of nElements elements without the whole image in memory; the buffer is empty then.
    /// Unless it is packed, the file is gone.
    [[nodiscard]] virtual EPackEnd CompressStream(const std::filesystem::path& path, std::istream& source,
                                                  std::uint64_t nElements, std::uint16_t wFlags) = 0;

    /// Bytes of the image and 8; 8 when empty.
    [[nodiscard]] virtual std::uint64_t GetPackedSize() const = 0;

    /// Bytes held: GetPackedSize, of a stream the offsets and 40.
    [[nodiscard]] virtual std::uint64_t GetMemorySize() const = 0;

    /// Gives back the working memory of the decoders; the next Get takes it again.
    virtual void Clear() = 0;

    virtual void SetUserWord(std::uint32_t nUserWord) = 0;
    [[nodiscard]] virtual std::uint32_t GetUserWord() const = 0;

    /// Elements of the table; 0 when empty.
    [[nodiscard]] virtual std::uint64_t GetElements() const = 0;

    /// The flag word of the file that was loaded.
    [[nodiscard]] virtual std::uint16_t GetFlags() const = 0;

    [[nodiscard]] virtual std::size_t GetBlockSize() const = 0;
    [[nodiscard]] virtual bool IsStreaming() const = 0;

    /// Bytes of an element: 1 or 2.
    [[nodiscard]] virtual std::size_t GetElementSize() const = 0;
};

/// An instance for reading files with blocks of nBlockElements (8192, any other number: 16384) elements of nElementSize
/// (1 or 2) bytes, by eight threads at once.
[[nodiscard]] std::unique_ptr<CRandomAccessPackedBufferBase> MakePackedReader(std::size_t nElementSize,
                                                                              std::uint32_t nBlockElements);

/// An instance for creating files.
[[nodiscard]] std::unique_ptr<CRandomAccessPackedBufferBase> MakePackedWriter(std::size_t nElementSize);

} // namespace quillon::RandomAccessLZWBuffer
