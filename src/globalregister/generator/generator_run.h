#pragma once
// One run of the generator of endgame data over one table, level by level.
//
// Level 2n - 1: White, to move, mates in n. Level 2n: Black, to move, is mated within n more moves of White.
//
// The work table is the table's own array; White and Black to move share an index:
//   bit data  two bits an index: bit 0 White mates within the level reached, bit 1 Black is mated within it
//   bytes     low 7 bits: n, 127 while nothing is settled; bit 7 Black is mated
//   words     low 15 bits: n, 32767 while nothing is settled; bit 15 Black is mated
// Element 0 names no position and holds the flags. The array and the number of the last level are all of the state: a
// run can be ended after any level and be taken up by another CGeneratorRun over the same array.
//
// Threads: one thread owns the run. RunLevel starts its own threads and joins them. The control may be written by any.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "globalregister/global_register.h"
#include "globalregister/global_registers.h"

namespace quillon {

/// Values of m_nPause.
inline constexpr std::uint8_t kGeneratorGoesOn = 0;
inline constexpr std::uint8_t kGeneratorPaused = 1;
inline constexpr std::uint8_t kGeneratorBreaks = 3; // the level ends at once, with -1

struct TGeneratorControl {
    std::atomic<bool> m_bStop{false}; // the level ends at once, with 0
    std::atomic<std::uint8_t> m_nPause{kGeneratorGoesOn};
    std::atomic<std::uint64_t> m_nPausedSince{0}; // TickCount64 of the pause that lasts
    std::atomic<std::uint64_t> m_nPausedMs{0};    // of those that have ended, which no time of a run counts
};

/// Pauses a run, and lets it go on. A stop stays a stop.
///   Threads  both called by one.
void PauseGenerator(TGeneratorControl& control);
void ResumeGenerator(TGeneratorControl& control);

struct TGeneratorProgress {
    int m_nLevel = 0;
    int m_nLevelLimit = 0;
    unsigned m_nPermille = 0;   // of the work of this level: never falls, 1000 at its end
    std::uint64_t m_nFound = 0; // indices settled by this level so far
};

struct TGeneratorOptions {
    int m_nThreads = 1;
    bool m_bFullSweeps = false; // looks at every index at every level: slow, for comparison
    int m_nLevelLimit = 255;    // shown in the progress
    int m_nThreadPriority = 0;  // of the threads that are made, platform/thread.h
    /// By one thread at a time: at most once in so many ms, and at the end of a level that has been done.
    std::function<void(const TGeneratorProgress&)> m_onProgress;
    std::uint64_t m_nProgressMs = 1000;
};

/// Results of a level.
inline constexpr int kLevelDone = 1;
inline constexpr int kLevelStopped = 0; // the stop flag, or errors
inline constexpr int kLevelBroken = -1; // kGeneratorBreaks

struct TLevelResult {
    int m_nResult = kLevelDone;        // the worst of all threads
    std::uint64_t m_nFound = 0;        // indices settled
    bool m_bFailed = false;            // by errors
    bool m_bSystemFailed = false;      // one of them is of memory or a file, rather than of what the data say
    std::vector<std::string> m_errors; // of threads, and of the details file; without what memory had no room for

    /// Is it the user who has ended it?
    [[nodiscard]] bool IsEndedByUser() const {
        return m_nResult == kLevelBroken || (m_nResult == kLevelStopped && !m_bFailed);
    }
};

/// Fills `data` of a table that nothing is loaded into, and its flags: combinations where the type has six or more men,
/// bit data where UsesBitData says so. `bWideElements` asks for words where the type may have them.
///   Result  false: memory is short, the table is as it was.
[[nodiscard]] bool MakeWorkTable(TGlobalRegister& table, bool bWideElements = false);

/// Ends a table of bytes or words: what is not settled is no mate, and Black's marks go. Bit data stay as they are,
/// with Black's bits, which no lookup asks for.
void FinishTable(TGlobalRegister& table);

class CGeneratorRun {
  public:
    /// Loads what the material turns into and holds it until the run is gone.
    ///   table        made by MakeWorkTable, or read from the file of an earlier run.
    ///   subMaterial  in generator mode. What is missing there is an error only if it is asked for, except by material
    ///                that cannot mate.
    ///   Errors       std::bad_alloc.
    CGeneratorRun(TGlobalRegister& table, CGlobalRegisters& subMaterial, TGeneratorControl& control,
                  TGeneratorOptions options = {});
    ~CGeneratorRun();
    CGeneratorRun(const CGeneratorRun&) = delete;
    CGeneratorRun& operator=(const CGeneratorRun&) = delete;

    /// All threads over one level. Levels are run in their order, from 1 or from any level that has not been left out:
    /// the last finished one may be repeated. A level that was not done has to be run again, and none before it: the
    /// array holds a part of its results, which levels before it would take for their own. Where writing the details
    /// has failed, lengths of this level are lost: array and details are to be read from their files again.
    ///   nLevel  from 1
    ///   Errors  none: they are in the result.
    [[nodiscard]] TLevelResult RunLevel(int nLevel);

    /// Types that the table turns into at once, by one capture or promotion, and that no data have been found for;
    /// those that cannot mate are not among them.
    [[nodiscard]] const std::vector<std::string>& MissingTypes() const;

    /// Bytes besides the table and the data of other types.
    [[nodiscard]] std::uint64_t MemoryInUse() const;

  private:
    class CImplementation;
    std::unique_ptr<CImplementation> m_implementation;
};

} // namespace quillon
