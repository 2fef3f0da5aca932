#pragma once
// TTemporaryChessboardRegister<N>: a register of a running analysis, a hash table beside the tree it inherits.
//   N = 0  final results, true under any heuristics
//   N = 1  doubtful results of one set of heuristics; part of an aggregate (`parent`)
//
// Threads: combinedLock guards combinedMap: its shared side for look-ups, its exclusive side for changes. When both
//          locks are taken, `lock` comes first. The counter may be read without any.

#include <atomic>
#include <cstdint>

#include "tempregister/chessboard_register.h"
#include "tempregister/combined_map.h"

namespace quillon {

template <int N> class TTemporaryChessboardRegister : public TChessboardRegister<bool> {
  public:
    /// Empty; the table's memory is taken by the first insert.
    ///   budget   bytes
    ///   nBuckets a power of two
    TTemporaryChessboardRegister(std::uint64_t budget, std::uint32_t nBuckets)
        : TChessboardRegister<bool>(budget), combinedMap(nBuckets) {
        bTemporary = true;
    }

    [[nodiscard]] std::uint32_t GetElementsCount() const override {
        return nCombinedElements.load(std::memory_order_relaxed);
    }

    TRegisterCombinedMap combinedMap;
    std::atomic<std::uint32_t> nCombinedElements = 0; // in combinedMap
    mutable TRegisterLock combinedLock;
};

} // namespace quillon
