#pragma once
// CGeneratorFiles: the files of a table in the making.
//
//   NAME                  the table as the last finished level left it
//   NAME.iter             the number of that level, four bytes, little-endian
//   NAME.SAVE_PENDING     a save is taking its place: what is to be done
//   NAME.NEW, .BIT_DATA   the next state, a table or bit data, until it is whole
//   DETAILS               of bit data, the lengths, written while a level runs; DETAILS.NEW until the first save
//   NAME.BAK, DETAILS.BAK what was there before the run, its packed forms under their names with ".BAK"
//   NAME.LOCK             one process at a time is at work here, also one that mends the table
//
// A save: 1 the next state goes to a file of its own, down to the disk; 2 SAVE_PENDING tells what is to be done; 3 the
// files get their names, the level is written; 4 SAVE_PENDING goes. A kill before 2 leaves the old state, a kill behind
// it a save that FinishPendingSave ends from what is there: NAME and NAME.iter are of one level whenever SAVE_PENDING
// is not there. Only a SAVE_PENDING that does not tell what is to be done stays.
//
// Details need no state of their own: a level that is run again finds the same lengths.
//
// Threads: an object is used by one thread at a time, and the files by the process that has their lock.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_lock.h"

namespace quillon {

struct TGeneratorPaths {
    std::filesystem::path m_plain;
    std::filesystem::path m_details; // empty: no bit data
};

/// No table has a level behind this one.
inline constexpr std::uint32_t kHighestLevel = 32767;

/// The file whose lock a process has that writes to the table of this plain file.
[[nodiscard]] std::filesystem::path LockFileOf(const std::filesystem::path& plain);

/// The number of a level in the file beside this plain file.
///   Result  none: there is no such file, it is cut, or tells no level.
[[nodiscard]] std::optional<std::uint32_t> ReadLevelBeside(const std::filesystem::path& plain);

/// Called before every change of the files, with its name.
using TFileStep = std::function<void(std::string_view step)>;

class CGeneratorFiles {
  public:
    explicit CGeneratorFiles(TGeneratorPaths paths, TFileStep onStep = {})
        : m_paths(std::move(paths)), m_onStep(std::move(onStep)) {}

    [[nodiscard]] const std::filesystem::path& Plain() const { return m_paths.m_plain; }
    [[nodiscard]] std::filesystem::path PendingMark() const;

    /// Keeps other processes from the files until this object goes.
    ///   Result  false: one of them is at work on them.
    [[nodiscard]] bool Lock() { return m_lock.Take(LockFile()); }
    [[nodiscard]] std::filesystem::path LockFile() const { return LockFileOf(m_paths.m_plain); }

    /// Ends a save that was broken off.
    ///   Result  false: a SAVE_PENDING stays.
    [[nodiscard]] bool FinishPendingSave();

    /// The last finished level; none without a file of it, and where that tells none of kHighestLevel and below: no run
    /// has written such a file, so the table beside it may be anything, a whole one too.
    [[nodiscard]] std::optional<std::uint32_t> ReadLevel() const;

    /// Saves wait until the disk has them, as they do from the start, or leave that to the system: a power failure may
    /// then cost the table, a kill costs nothing. The last one waits in any case.
    void SetDurable(bool bDurable) { m_bDurable = bDurable; }

    /// The first save takes the place of what is there now, packed forms too: they would be taken for forms of the new
    /// table. It keeps as ".BAK"
    ///   a finished table             in the place of any ".BAK" before
    ///   a packed form                where it has no ".BAK" yet
    ///   another table, its lengths   where no form of it has a ".BAK" yet, which may be a finished one: as one, since
    ///                                a table beside the lengths of another would look whole
    ///   finished  the file that is a finished table, plain or packed; empty: none is.
    void KeepOld(std::filesystem::path finished) {
        m_bReplaces = true;
        m_finished = std::move(finished);
    }

    /// Makes the file of lengths at its full size.
    ///   flags      its element 0.
    ///   isStopped  asked now and then; empty: it is made in any case.
    ///   Result     false: it cannot be made, or is not wanted any more.
    [[nodiscard]] bool CreateDetails(std::uint64_t nBytes, std::uint16_t flags, std::size_t nElementSize,
                                     const std::function<bool()>& isStopped = {});

    /// Where the details are now.
    [[nodiscard]] std::filesystem::path DetailsNow() const;

    /// Saves the state after a level.
    ///   Result  empty, or what went wrong, for the user. The state before stays.
    [[nodiscard]] std::string Save(std::span<const std::uint8_t> table, std::uint32_t nLevel);

    /// Saves the finished table; NAME.iter goes.
    [[nodiscard]] std::string Finish(std::span<const std::uint8_t> table);

    /// Removes what this run and earlier ones have left of an unfinished table; ".BAK" stays, and so does what the
    /// first save would have kept.
    void RemovePartial();

    /// Removes what a run that was killed may have left besides its state, and a level without a table.
    void RemoveStrays();

  private:
    struct TSaveTask {
        std::uint32_t m_nLevel = 0;
        bool m_bFinished = false;
        unsigned m_nKeep = 0;       // 0, or kReplaces and a bit for each of OldFiles that is kept
        std::uint64_t m_nBytes = 0; // of the new state
    };

    [[nodiscard]] std::string Run(std::span<const std::uint8_t> table, const TSaveTask& task);
    [[nodiscard]] std::error_code Carry(const TSaveTask& task);
    [[nodiscard]] std::vector<std::filesystem::path> OldFiles() const;
    [[nodiscard]] unsigned FilesToKeep() const;
    [[nodiscard]] std::error_code ClearPackedForms(unsigned nKeep);
    [[nodiscard]] std::error_code TakePlace(const std::filesystem::path& next, const std::filesystem::path& file,
                                            bool bKeep);
    [[nodiscard]] std::error_code Keep(const std::filesystem::path& file);
    [[nodiscard]] std::error_code WriteSmall(const std::filesystem::path& file, std::string_view content);
    void SyncNames() const;
    [[nodiscard]] std::error_code Remove(const std::filesystem::path& file);
    [[nodiscard]] std::optional<TSaveTask> ReadTask() const;
    [[nodiscard]] static std::string TextOf(const TSaveTask& task);
    [[nodiscard]] std::filesystem::path Next() const;
    [[nodiscard]] std::filesystem::path NextDetails() const;
    [[nodiscard]] std::filesystem::path LevelFile() const;
    void Step(std::string_view step) const {
        if (m_onStep)
            m_onStep(step);
    }

    const TGeneratorPaths m_paths;
    const TFileStep m_onStep;
    CFileLock m_lock;
    bool m_bReplaces = false; // until the first save
    std::filesystem::path m_finished;
    bool m_bDurable = true;
};

} // namespace quillon
