#pragma once
// TDetailQueue: the lengths of a table of bit data on their way into the details file. Threads push what they find; who
// fills the queue writes it out while the others go on filling the next one.
//
// Threads: SetBitData from any; FlushBitData while no other thread is in SetBitData. Locks, in this order: queueLock,
//          writeLock.

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <mutex>
#include <vector>

#include "globalregister/system_failure.h"

namespace quillon {

struct TGlobalRegister;

struct TDetailQueue {
    static constexpr std::size_t kCapacity = 16384; // entries of a batch

    std::fstream detailFile;          // open for reading and writing, at its full size
    std::uint64_t detailPosition = 0; // offset of the stream; under writeLock
    bool bFailed = false;             // a write went wrong; under writeLock
    struct TEntry {
        std::uint64_t m_nIndex;
        std::uint16_t m_wValue;
    };
    std::vector<TEntry> pending, writing;
    std::mutex queueLock; // of what is pending
    std::mutex writeLock; // of what is being written, and of the stream
};

/// The details file cannot be read or written. What stands in it is another matter: a plain ChessException.
class CDetailFileFailure : public CSystemFailure {
  public:
    using CSystemFailure::CSystemFailure;
};

/// Enters the length of an index (moves to mate). Precondition: `details` of the register is set.
///   Result  false: the file could not be written.
///   Errors  std::bad_alloc: nothing has been entered.
[[nodiscard]] bool SetBitData(TGlobalRegister& table, std::uint64_t index, std::uint16_t value);

/// The length of an index as the file has it. Precondition: nothing is pending.
///   Errors  CDetailFileFailure; ChessException: there is none.
[[nodiscard]] std::uint16_t ReadBitData(TGlobalRegister& table, std::uint64_t index);

/// Writes what is pending. Without a queue there is nothing to do.
///   bFinal  also flushes the stream, so that another reader sees all.
///   Result  false: the file could not be written.
[[nodiscard]] bool FlushBitData(TGlobalRegister& table, bool bFinal);

} // namespace quillon
