#pragma once
// CPackedImage: a table of LZW blocks as a file has it (packed_table_header.h), in memory whole or with its blocks left
// on disk. Knows where the blocks are, not what they hold.
//
// Threads: BytesOf may be called by many threads at once, everything else needs the object alone.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <span>
#include <vector>

#include "globalregister/packed/packed_table_header.h"

namespace quillon {

class CPackedImage {
  public:
    /// Behind the blocks, for decoders that read ahead.
    static constexpr std::size_t kPadding = 8;

    explicit CPackedImage(std::uint32_t nBlockElements) { m_header.m_nBlockElements = nBlockElements; }

    /// False, and the image is empty: not readable, no file of this form, other blocks than these, or memory is short.
    [[nodiscard]] bool Load(const std::filesystem::path& path, bool bStream);

    /// False when the file cannot be written whole, or the blocks are on disk.
    [[nodiscard]] bool Save(const std::filesystem::path& path, std::uint16_t wFlags);

    void Empty();

    /// Takes blocks that were packed, from the plain dictionary, one after the other.
    ///   starts    of the blocks in `blocks`.
    ///   nReserve  bytes that follow the last block.
    void Take(std::uint64_t nElements, const std::vector<std::uint64_t>& starts, std::vector<std::uint8_t> blocks,
              std::size_t nReserve);

    /// The packed bytes of a block, with kPadding bytes behind them; `input` is where they are read to from disk.
    ///   Errors  ChessException when the file cannot be read.
    [[nodiscard]] std::span<const std::uint8_t> BytesOf(std::size_t block, std::vector<std::uint8_t>& input);

    /// Elements of a block: the last one may have fewer.
    [[nodiscard]] std::size_t ElementsOf(std::size_t block) const;

    [[nodiscard]] std::size_t Blocks() const { return m_offsets.size(); }
    [[nodiscard]] bool IsStreaming() const { return m_stream.is_open(); }
    [[nodiscard]] const TPackedTableHeader& Header() const { return m_header; }
    void SetUserWord(std::uint32_t nUserWord) { m_header.m_nUserWord = nUserWord; }

  private:
    [[nodiscard]] bool Read(std::uint64_t nFileSize, bool bStream);
    [[nodiscard]] bool ReadHeader(std::uint64_t nFileSize);
    [[nodiscard]] bool ReadOffsets();
    [[nodiscard]] std::uint64_t FirstBlockAt() const;
    [[nodiscard]] std::uint64_t EndOf(std::size_t block) const;

    TPackedTableHeader m_header;
    std::vector<std::uint64_t> m_offsets; // of the blocks from the start of the file, ascending
    std::vector<std::uint8_t> m_blocks;   // and the padding; empty while streaming
    std::ifstream m_stream;
};

/// Writes header and offsets, what a file has in front of its blocks.
[[nodiscard]] bool WritePackedTableHead(std::ostream& file, const TPackedTableHeader& header,
                                        std::span<const std::uint64_t> offsets);

} // namespace quillon
