#pragma once
// TAggregatedTemporaryChessboardRegister: the register of one analysis.
//
// It holds what is final for the problem (mate in k, no mate in k, under any heuristics) in its own table, and beside
// it a register for each set of heuristics in use, with what is only doubtful under that set. It is a cache of proofs:
// what it loses costs time and never a wrong result.
//
// All lengths are plies left and odd: only positions with White to move are kept.
//
// Threads: everything may be called from all threads of the analysis at once, Swap and the hooks excepted.
//   1 Order of the locks: the process-wide one of eviction, `lock`, `combinedLock`, doubtfulLock, then the locks of a
//     doubtful register.
//   2 combinedLock guards combinedMap. Look-ups of final results need no other.
//   3 `lock` guards the set of doubtful registers: its shared side to use one of them, its exclusive side to add, to
//     empty or to delete one. doubtfulUsers is guarded by its exclusive side.
//   4 doubtfulLock orders those who insert into doubtful registers.
//   5 Counters are atomic and read without locks.

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "core/chessboard.h"
#include "tempregister/register_statistics.h"
#include "tempregister/temporary_chessboard_register.h"

namespace quillon {

struct ChessProblem;

/// How deep eviction has gone already, in plies; 0 when solving starts. For all registers of the process.
inline constinit std::atomic<std::uint16_t> nLastRemovedLevel = 0;

/// Answer of the look-ups for what is doubtful.
inline constexpr std::int8_t kRegisterIsDoubtful = -1;

/// What the register asks of the program around it. Empty ones are not called.
///   Threads set before the analysis starts; called on any thread of it, m_autoSave and m_repaint under locks of the
///           register: they must not insert.
struct TRegisterHooks {
    std::function<void(std::string_view text, std::string_view title)> m_showMessage;
    std::function<void()> m_repaint;  // during a long purge, at most every 600 ms
    std::function<void()> m_autoSave; // before an eviction: saves if it is time to
};

class TAggregatedTemporaryChessboardRegister : public TTemporaryChessboardRegister<0> {
  public:
    using TDoubtfulRegister = TTemporaryChessboardRegister<1>;

    /// Empty.
    ///   budget    bytes the elements of all parts together may take; physical memory if that is less
    ///   nBuckets  a power of two, see BucketCount
    TAggregatedTemporaryChessboardRegister(std::uint64_t budget, std::uint32_t nBuckets);

    [[nodiscard]] std::uint32_t GetElementsCount() const override;
    [[nodiscard]] std::uint32_t GetDoubtfulCount() const override;

    /// Empties the doubtful registers whose last user is gone; returns the number of elements removed.
    std::uint32_t RemoveUnusedDoubtful() override;

    void LogMessage(std::string_view text, int nParam1, int nParam2) override;

    // ---- look-ups. They allocate nothing and take shared locks only.

    /// 1 mate within nMoves, 0 no mate within nMoves, -1 doubtful up to nMoves under these heuristics, -2 unknown.
    [[nodiscard]] std::int8_t Find(int nMoves, const TBoardBytes& key, std::uint32_t heuristics,
                                   std::uint32_t params) const;

    /// The same among final results alone: never -1.
    [[nodiscard]] std::int8_t FindFinal(int nMoves, const TBoardBytes& key) const;

    /// The shortest length at which Find says mate, going down from nMoves by two; if it does not at nMoves, its
    /// answer.
    [[nodiscard]] int FindMateLength(int nMoves, const TBoardBytes& key, std::uint32_t heuristics,
                                     std::uint32_t params) const;

    /// For two lengths, n1 not above n2: 1 not doubtful up to n2, 0 known but doubtful or not that far, -1 no answer.
    [[nodiscard]] std::int8_t FindNotDoubtful(int n1, int n2, const TBoardBytes& key, std::uint32_t heuristics,
                                              std::uint32_t params) const;

    /// As Find for n1, and 2 for a mate that needs more than n1 but not more than n2.
    [[nodiscard]] std::int8_t FindRange(int n1, int n2, const TBoardBytes& key, std::uint32_t heuristics,
                                        std::uint32_t params) const;

    // ---- inserts. What finds no room or no memory is lost.

    using TChessboardRegister<bool>::Insert;

    /// A verdict of the search: mate within nMoves, or none. The position tells the pass: in the pass without
    /// heuristics a contradiction with what is stored is an error and is shown; before, the mate wins.
    void Insert(std::uint16_t nMoves, const TChessboard& position, bool bThereIsMate);

    /// A verdict from a file: the mate always wins.
    void InsertLoaded(std::uint16_t nMoves, const TBoardBytes& key, bool bThereIsMate);

    /// Doubtful up to nMoves under these heuristics.
    void InsertDoubtful(std::uint16_t nMoves, const TBoardBytes& key, std::uint32_t heuristics, std::uint32_t params);

    /// Doubtful or not doubtful up to nMoves under these heuristics.
    void InsertDoubtfulState(std::uint16_t nMoves, const TBoardBytes& key, std::uint32_t heuristics,
                             std::uint32_t params, bool bDoubtful);

    // ---- upkeep

    /// One more run uses these heuristics.
    void AddDoubtfulUser(std::uint32_t heuristics, std::uint32_t params);

    /// One run less: as long as it was counted, 0. After the last, empties the register of these heuristics and returns
    /// the number of elements removed. Doubt holds only under the heuristics that caused it.
    std::uint32_t RemoveDoubtful(std::uint32_t heuristics, std::uint32_t params);

    /// A run with these heuristics is over: RemoveDoubtful, and after the last of them the register is emptied at once.
    /// What lines of the run have stored under other heuristics of theirs stays until room is needed: it may serve a
    /// later run.
    void ReleaseDoubtfulUser(std::uint32_t heuristics, std::uint32_t params);

    /// Removes what is known for nMoves and less only; returns the number of elements removed.
    std::uint32_t RemoveNMovers(int nMoves);

    /// The one policy that bounds memory: gives up unused doubt first, then the shortest subproblems, which are the
    /// cheapest to solve again.
    ///   bEarly  a periodic call. false: an insert has hit the budget or found no memory.
    void EmptySomeDataWhenRegisterFull(bool bEarly) override;

    /// The periodic call, from wherever it suits. A few relaxed reads unless less than a quarter is free. Sweeps hold
    /// all threads up: behind one the next comes when they have worked many times as long.
    void MakeRoomEarly();

    using TChessboardRegister<bool>::Clear;

    /// nMode > 0 empties the final results and keeps their array of buckets; 0 empties everything and gives the arrays
    /// back; < 0 deletes the doubtful registers alone.
    ///   bQuiet  without repainting
    void Clear(int nMode, bool bQuiet);

    /// Makes the number of buckets of all tables what is told, a power of two. Where memory is out, a table keeps its
    /// array.
    void SetBucketCount(std::uint32_t nNewBuckets, bool bKeepData);

    /// Exchanges the contents: trees, tables, maps, counters, problem. Locks, budgets, statistics and hooks stay.
    ///   Threads nobody else uses either register.
    void Swap(TAggregatedTemporaryChessboardRegister& other);

    /// Threads any, without locks. The counts are not of one moment.
    [[nodiscard]] TRegisterStatistics Statistics() const;

    /// A nested search of the initial analysis is under way: a contradiction is then shown in any pass.
    std::atomic<bool> bSideAnalysis = false;

    /// The problem whose register is saved by m_hooks.m_autoSave; null when that isn't wanted.
    ChessProblem* problem = nullptr;

    TRegisterHooks m_hooks;

  private:
    using TKey = std::uint64_t;

    [[nodiscard]] std::uint64_t FreeElements() const;
    [[nodiscard]] bool MakeRoom();
    void RecoverFromFailure(std::uint16_t nMoves, bool bValue);
    [[nodiscard]] TInsertOutcome InsertCounted(std::uint16_t nMoves, const TBoardBytes& key, bool bThereIsMate,
                                               EContradiction contradiction);
    void InsertFinal(std::uint16_t nMoves, const TBoardBytes& key, bool bThereIsMate, const TChessboard* reportFor);
    void ShowContradiction(std::uint16_t nMoves, const TChessboard& position, bool bThereIsMate,
                           const TCombinedLengths& lengths);

    [[nodiscard]] TDoubtfulRegister* DoubtfulRegister(TKey heuristicsKey) const;
    [[nodiscard]] TDoubtfulRegister& NewDoubtfulRegister(TKey heuristicsKey);
    [[nodiscard]] bool IsDoubtful(int nMoves, const TBoardBytes& key, std::uint32_t hash, TKey heuristicsKey) const;
    [[nodiscard]] bool InsertIntoExisting(std::uint16_t nMoves, const TBoardBytes& key, TKey heuristicsKey,
                                          bool bDoubtful);
    void InsertIntoNew(std::uint16_t nMoves, const TBoardBytes& key, TKey heuristicsKey, bool bDoubtful);
    void InsertInto(TDoubtfulRegister& known, std::uint16_t nMoves, const TBoardBytes& key, bool bDoubtful);
    [[nodiscard]] std::uint32_t DoubtfulBuckets(std::uint32_t nHeld) const;
    void GrowTable(TDoubtfulRegister& known);
    std::uint32_t RemoveDoubtful(TKey heuristicsKey);
    std::uint32_t Purge(TDoubtfulRegister& known, bool bQuiet);
    std::uint32_t RemoveFinalNMovers(int nMoves);
    std::uint32_t RemoveDoubtfulNMovers(TDoubtfulRegister& known, int nMoves);
    template <int N>
    void ResizeTable(TTemporaryChessboardRegister<N>& known, std::uint32_t nNewBuckets, bool bKeepData);
    void AdoptDoubtfulRegisters();
    [[nodiscard]] const std::function<void()>& Repaint(bool bQuiet) const;

    [[nodiscard]] bool IsNearlyFull() const { return FreeElements() * 4 < nMaxElements; }
    [[nodiscard]] bool IsEvictionDue(bool bEarly) const;
    [[nodiscard]] std::uint32_t Evict(bool bEarly);
    [[nodiscard]] std::uint32_t DropShortest(std::uint32_t freed);
    [[nodiscard]] std::uint32_t RemoveByLevels(bool bEarly, bool bEnough, std::uint32_t freed);
    void StopKeepingShort();

    std::map<TKey, std::unique_ptr<TDoubtfulRegister>> doubtfulRegisters;
    std::atomic<std::uint32_t> nDoubtfulElements = 0; // of all doubtful registers
    std::map<TKey, std::uint32_t> doubtfulUsers;      // runs that still use the heuristics
    std::mutex logLock;
    std::mutex doubtfulLock;
    std::atomic<std::uint64_t> nLastEmptiedTicks; // of the last eviction, ms
    std::atomic<std::uint64_t> m_nEarlyFrom = 0;  // no periodic call is heeded before, ms
    std::uint32_t nBuckets;                       // of the final table; the most a doubtful register gets

    std::atomic<std::uint64_t> m_nDoubtfulBytes = 0;
    std::atomic<std::uint64_t> m_nInserts = 0;
    std::atomic<std::uint64_t> m_nEvictions = 0;
    std::atomic<std::uint64_t> m_nEvictedElements = 0;
    mutable CLookupCounter m_lookups;
};

} // namespace quillon
