#include "globalregister/generator/detail_queue.h"

#include <array>

#include "core/chess_exception.h"
#include "globalregister/global_register.h"
#include "globalregister/packed/little_endian.h"

namespace quillon {

namespace {

constexpr std::uint64_t kNowhere = ~std::uint64_t{0}; // of a stream that has been read

// The batch has been taken out of the queue under its lock, so that the others go on at once.
bool WriteBatch(TDetailQueue& queue, std::size_t nElementSize) {
    for (const TDetailQueue::TEntry& entry : queue.writing) {
        if (queue.bFailed)
            break;
        const std::uint64_t offset = entry.m_nIndex << (nElementSize - 1);
        if (offset != queue.detailPosition)
            queue.detailFile.seekp(static_cast<std::streamoff>(offset));
        std::array<std::uint8_t, 2> element{};
        StoreLittleEndian(element.data(), entry.m_wValue);
        queue.detailFile.write(reinterpret_cast<const char*>(element.data()),
                               static_cast<std::streamsize>(nElementSize));
        queue.detailPosition = offset + nElementSize;
        queue.bFailed = !queue.detailFile;
    }
    queue.writing.clear();
    return !queue.bFailed;
}

// The queue's lock is held on entry, and given up as soon as the batch has been taken.
bool TakeAndWrite(TGlobalRegister& table, std::unique_lock<std::mutex>& queueLock) {
    TDetailQueue& queue = *table.details;
    const std::lock_guard writeLock(queue.writeLock);
    queue.pending.swap(queue.writing);
    queueLock.unlock();
    return WriteBatch(queue, table.nElementSize);
}

} // namespace

bool SetBitData(TGlobalRegister& table, std::uint64_t index, std::uint16_t value) {
    TDetailQueue& queue = *table.details;
    std::unique_lock queueLock(queue.queueLock);
    queue.pending.reserve(TDetailQueue::kCapacity);
    queue.pending.push_back({index, value});
    return queue.pending.size() < TDetailQueue::kCapacity || TakeAndWrite(table, queueLock);
}

std::uint16_t ReadBitData(TGlobalRegister& table, std::uint64_t index) {
    TDetailQueue& queue = *table.details;
    const std::lock_guard writeLock(queue.writeLock);
    std::array<std::uint8_t, 2> element{};
    queue.detailPosition = kNowhere;
    queue.detailFile.seekg(static_cast<std::streamoff>(index << (table.nElementSize - 1)));
    queue.detailFile.read(reinterpret_cast<char*>(element.data()), table.nElementSize);
    queue.bFailed = queue.bFailed || !queue.detailFile;
    const auto value = LoadLittleEndian<std::uint16_t>(element.data());
    if (queue.bFailed)
        throw CDetailFileFailure("Error reading details of type " + table.typeName);
    if (value == 0)
        throw ChessException("Error reading details of type " + table.typeName + ": a mate has no length");
    return value;
}

bool FlushBitData(TGlobalRegister& table, bool bFinal) {
    if (!table.details)
        return true;
    std::unique_lock queueLock(table.details->queueLock);
    bool bWritten = TakeAndWrite(table, queueLock);
    if (bFinal)
        bWritten = static_cast<bool>(table.details->detailFile.flush()) && bWritten;
    return bWritten;
}

} // namespace quillon
