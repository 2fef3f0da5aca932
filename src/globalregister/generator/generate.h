#pragma once
// Making precalculated endgame data: the tables of one type or of several, from the rules and the data of simpler
// types.
//
//   1  loaded data go; what else holds memory is asked to hold little
//   2  settings that make it slow are challenged: Yes keeps the setting, No ends, Cancel turns it off for this run
//   3  data may take 90 % of the memory, less the table in the making; all settings return at the end, however it comes
//   4  the type's letters are read; 5 a custom type may ask about its black pawns
//   6  the table in its form, 7 its memory; 8 its files: a save that nobody can end forbids to go on
//   9  the data of the types that it needs are loaded and held
//  10  bit data: the file of lengths
//  11  an unfinished table is taken up, as the user says
//  12  level after level, 13 each saved, 14 until a level finds nothing and the other types can add nothing
//  15  the finished table takes its place; packing; the report
//
// Threads: Generate and GenerateMany return when all is done; the control and what the host hears of are the way in and
//          out meanwhile. Nothing else may use the registers.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/notifier.h"
#include "globalregister/generator/generator_files.h"
#include "globalregister/generator/generator_run.h"
#include "globalregister/global_registers.h"
#include "globalregister/table_conversion.h"

namespace quillon {

/// Has the run been told to end?
[[nodiscard]] inline bool IsStopped(const TGeneratorControl& control) {
    return control.m_bStop.load(std::memory_order_relaxed) ||
           control.m_nPause.load(std::memory_order_relaxed) == kGeneratorBreaks;
}

enum class EGenerateStatus : std::uint8_t { Failed = 0, Done = 1, Cancelled = 255 };

/// What there was of a table before its run.
enum class EFoundTable : std::uint8_t { None, Unfinished, Finished };

struct TGenerateReport {
    std::string m_typeName;
    EGenerateStatus m_status = EGenerateStatus::Failed;
    EFoundTable m_found = EFoundTable::None;
    bool m_bMade = false;                    // by this run; false: it was there, or is not finished
    bool m_bCounted = false;                 // the mates of the table that was made, its longest one among them
    bool m_bNotPacked = false;               // though that was asked for: the run was told to end
    std::optional<bool> m_bPacked;           // is the form there that was asked for? None: it was not asked for
    bool m_bSystemFailed = false;            // memory or disk, rather than what was asked for, or files as they are
    std::uint32_t m_nMate = 0;               // moves of the longest mate; of an unfinished table of what it has
    std::uint64_t m_nPositions = 0;          // indices with a mate
    std::uint32_t m_nLevels = 0;             // the last that was finished; of a table that is not there 0
    std::uint32_t m_nGivenUp = 0;            // the level that a stop has broken off; 0: none
    double m_seconds = 0;                    // of this run, without pauses
    std::filesystem::path m_file;            // the plain one, or the form of it that was there
    std::uint64_t m_nBytes = 0;              // of it, and of the lengths
    std::vector<std::string> m_missingTypes; // without data, which was the failure
};

struct TGenerateProgress {
    std::string m_typeName;
    int m_nType = 0, m_nTypes = 0; // which of how many, from 1
    TGeneratorProgress m_level;
    std::uint64_t m_nElements = 0;    // of the table
    std::uint64_t m_nFoundBefore = 0; // indices settled by the levels before
    double m_seconds = 0;             // of the table's run so far, without pauses
};

enum class EThreeWay : std::uint8_t { Yes, No, Cancel };

/// Who has started the run.
class IGenerateHost : public INotifier {
  public:
    /// Asked on the thread of the run.
    [[nodiscard]] virtual EThreeWay AskYesNoCancel(std::string_view text, std::string_view title) = 0;

    /// About once a second while a level runs, on any of its threads, one at a time.
    virtual void Progress(const TGenerateProgress& progress) = 0;

    /// The end of a type, on the thread of the run.
    virtual void TypeEnded(const TGenerateReport& report) = 0;

    /// The register of a running analysis is to have so many buckets, and at most this share of the memory, until it is
    /// restored. A program without such a register has nothing to do.
    virtual void LimitTemporaryRegister(std::size_t /*nBuckets*/, int /*nMostPercent*/) {}
    virtual void RestoreTemporaryRegister() {}
};

/// What to do with a file that is there. A finished table counts in whatever form and folder it is: its type is not
/// made beside it, since the files of a table in the making would mark it as unfinished. One of the second root is made
/// anew by nobody, for it would still be taken first.
enum class EExistingTable : std::uint8_t {
    Ask,      // Yes: it is continued, what is finished stays; No: it is made anew; Cancel: it stays as it is
    Leave,    // as with Cancel; what is finished counts as done
    Continue, // from the next level; what is finished stays
    Restart,  // it is made anew; the old one, packed forms too, stays as ".BAK"
};

struct TGenerateOptions {
    int m_nThreads = 1;
    int m_nThreadPriority = 0;        // platform/thread.h; the user's, where a window lets him choose one
    std::uint64_t m_nMemoryBytes = 0; // that all may take; 0: 90 % of the machine's
    EExistingTable m_existing = EExistingTable::Ask;
    bool m_bWithSubtypes = false;         // what is missing is made first
    std::optional<ETableForm> m_packForm; // packed beside the plain file, also one that was there
    TFileStep m_onFileStep;               // see generator_files.h
};

/// Makes the table of an ordinary or a custom type.
///   control  3 (kGeneratorBreaks) ends the run: the level under way is given up, the files have the one before. The
///            user is asked whether they stay. What is finished stays, though perhaps not packed.
///   Errors   none: they are told to the host, and in the report.
[[nodiscard]] TGenerateReport Generate(std::string_view typeName, const TGenerateOptions& options, IGenerateHost& host,
                                       CGlobalRegisters& registers, TGeneratorControl& control);

/// The same for several types, the simplest first. With m_bWithSubtypes those that they need and that have no data are
/// made, too. One that fails does not keep the rest from being tried; a stop does, and the rest counts as cancelled.
///   Result  of each type, in the order of making; the host has heard them.
std::vector<TGenerateReport> GenerateMany(const std::vector<std::string>& typeNames, const TGenerateOptions& options,
                                          IGenerateHost& host, CGlobalRegisters& registers, TGeneratorControl& control);

} // namespace quillon
