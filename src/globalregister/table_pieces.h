#pragma once
// A table on disk from its beginning to its end.

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <mutex>
#include <vector>

#include "globalregister/disk_access.h"
#include "globalregister/global_register.h"
#include "globalregister/packed/byte_streams.h"

namespace quillon {

/// Calls take(bytes, first index, number of elements) for piece after piece: lookups of others may come between.
///   stream  of the table, or of the details.
///   Errors  CDiskFailure: the file cannot be read, or ends too early.
template <class TTake> void ForTablePieces(std::ifstream& stream, const TGlobalRegister& data, TTake take) {
    constexpr std::uint64_t kPieceBytes = 1 << 20;
    const std::uint64_t nPiece = kPieceBytes / data.nElementSize;
    std::vector<std::uint8_t> piece(kPieceBytes);
    for (std::uint64_t first = 0; first < data.GetSize(); first += nPiece) {
        const std::uint64_t nElements = std::min(nPiece, data.GetSize() - first);
        {
            const std::lock_guard lock(DiskAccessSection());
            stream.clear();
            stream.seekg(static_cast<std::streamoff>(first * data.nElementSize));
            if (!ReadBytes(stream, piece.data(), nElements * data.nElementSize))
                throw CDiskFailure("Error reading data of type " + data.typeName);
        }
        take(piece.data(), first, nElements);
    }
}

} // namespace quillon
