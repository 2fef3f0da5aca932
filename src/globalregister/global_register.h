#pragma once
// TGlobalRegister: the precalculated data of one position type, as a lookup sees them.
//
// Where the elements are:
//   diskStream open        a plain table on disk, or the lengths of bit data that memory has no room for
//   bBitData               two bits an index in `data`; the lengths are in detailStream
//   nRandomAccessKind 0    plain table in `data`        1  simple packing in `data`        2  `packed`
//
// An answer of the data is a proof only for a position without castling and en passant: tables know neither.
//
// Threads: once loaded, lookups only read; those on disk take turns (disk_access.h). Loading and SetMateByIndex need
//          the object alone.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "globalregister/generator/detail_queue.h"
#include "globalregister/packed/random_access_packed_buffer.h"
#include "globalregister/position_indexing.h"
#include "globalregister/precalc_format.h"

namespace quillon {

inline constexpr std::uint8_t kPlainAccess = 0;
inline constexpr std::uint8_t kSimpleAccess = 1;
inline constexpr std::uint8_t kPackedAccess = 2;

class TRegisterSlot;

struct TGlobalRegister : TPositionIndexing {
    /// Of a type, nothing loaded.
    ///   Errors  as TPositionIndexing.
    explicit TGlobalRegister(std::string_view type) : TPositionIndexing(type) {}

    /// Half-moves to mate with White to move: 0 no mate, kUnknownHalfMoves, else odd. Bit data tell the pair of bits
    /// instead, 0 to 3 (bit 0: White mates).
    ///   index   < GetSize().
    ///   Errors  ChessException: damaged data.
    [[nodiscard]] std::uint16_t IsMateByIndex(std::uint64_t index) const;

    /// The same through GetIndex. Precondition: the position is of this type.
    [[nodiscard]] std::uint16_t IsMate(const TChessboard& b) const { return IsMateByIndex(GetIndex(b)); }

    /// Half-moves to mate in every form of the data, as far as they are proved: of bit data from the details, of a
    /// table that was not finished only what it has settled, and lengths from 127 on only of bit data and of a table
    /// that has been looked through.
    ///   Returns  0, kUnknownHalfMoves, or an odd number. kUnknownHalfMoves for a custom type without this position,
    ///            and for index 0, whose element holds the flags.
    ///            A custom type counts what leaves it as no mate: 0 proves nothing then, and a mate may be shorter.
    ///   Errors   ChessException: damaged data.
    [[nodiscard]] std::uint16_t ProvedHalfMoves(const TChessboard& b) const;

    /// The same for an index < GetSize().
    [[nodiscard]] std::uint16_t ProvedHalfMovesByIndex(std::uint64_t index) const;

    /// Writes an element; of bit data the pair, to which bits are added.
    ///   Errors  ChessException for packed data, which cannot be written.
    void SetMateByIndex(std::uint64_t index, std::uint16_t value);

    /// Bytes that count against the quota: 0 for a table on disk.
    [[nodiscard]] std::uint64_t GetMemoryInUse() const;

    std::filesystem::path path;       // a file chosen by name; empty for those of the folders
    std::filesystem::path loadedFrom; // the file that the elements came from; empty: no file
    bool bFullyLoaded = false;
    bool bBitData = false;
    bool bCompactUnfinished = false; // the table is, or was left, in the making
    bool bAllSettled = false;        // every element has been looked at, and none is of a table in the making
    mutable std::ifstream diskStream;
    mutable std::ifstream detailStream;
    std::uint8_t nElementSize = 1; // bytes, of the table or of the details
    std::uint8_t nRandomAccessKind = kPlainAccess;
    std::uint32_t nPackedSize = 0; // of the simple form
    std::unique_ptr<RandomAccessLZWBuffer::CRandomAccessPackedBufferBase> packed;
    std::vector<std::uint8_t> data;
    std::unique_ptr<TDetailQueue> details; // while bit data are made: the way into the details file
    TRegisterSlot* pSlot = nullptr;        // its place in the manager; null: it is nobody's

  private:
    [[nodiscard]] std::uint16_t HalfMovesOf(std::uint32_t element) const;
    [[nodiscard]] std::uint16_t ReadFrom(std::ifstream& stream, std::uint64_t index) const;
    [[nodiscard]] std::uint16_t OtherForm(std::uint64_t index) const;
    [[nodiscard]] std::uint16_t BitDataHalfMoves(std::uint64_t index) const;
    [[nodiscard]] std::uint16_t Settled(std::uint16_t halfMoves) const;
    void Update(std::uint64_t index, std::uint16_t value);
};

} // namespace quillon
