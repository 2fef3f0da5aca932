#pragma once
// Loading the data of one type: which of its files is taken, and whether it is held in memory or read from disk.
//
//   1  with GlobalRegisterForceDiskAccess, or without room for the whole table: packed tables come first, whole ones
//      after them; else whole ones first
//   2  whole: ".lz4" of the first root, of the second; the plain file of the second root, of the first
//   3  packed: ".packed.lzw" of the second root, of the first; as it is with UseDataPackedForRandomAccess 2, else only
//      if there is no other, and unpacked
//   4  ".packed.lz4": an archive is not read; simple packing under this name is, if there is nothing else. With
//      UseDataPackedForRandomAccess above 2 neither is, and where the disk is wanted the load fails before 2
//
// A file that is cut, oversized, of another type or unreadable is told of and not used: then there are no data. What
// memory is too short for is read from disk, if its form allows it, and so is a plain table where the machine has less
// memory than the quota.
//
// Threads: loads of different registers may run at the same time; IPrecalcRoom is told about each.

#include <cstdint>

#include "core/notifier.h"
#include "globalregister/global_register.h"
#include "globalregister/precalc_options.h"

namespace quillon {

/// Where the memory for data comes from.
class IPrecalcRoom {
  public:
    virtual ~IPrecalcRoom() = default;

    /// Bytes that all data together may take.
    [[nodiscard]] virtual std::uint64_t Quota() const = 0;

    /// Sets `size` bytes aside for the register that is being loaded, instead of what was set aside before; may unload
    /// others. False: there is no room, and nothing is set aside.
    [[nodiscard]] virtual bool MakeRoom(TPositionType type, std::uint64_t size) = 0;

    /// The machine has less memory than MakeRoom has given.
    virtual void TellMemoryShort(TPositionType) {}

    [[nodiscard]] virtual bool IsGenerating() const = 0;

    /// The user's word on packed tables that do not fit unpacked: may they stay packed? It is asked for once.
    [[nodiscard]] virtual bool MayStayPacked(INotifier& notifier) = 0;
};

/// The question of MayStayPacked.
inline constexpr std::string_view kStayPackedQuestion =
    "Not enough memory to load all the data unpacked.\n\nLet program use some data from disk and decompress?";

/// The question whether a table that was unpacked for memory is to be saved as a plain file begins so.
inline constexpr std::string_view kSaveUnpackedQuestion = "Save full decompressed data file ";

struct TLoadMode {
    bool m_bAllowDisk = true;  // false: into memory, whatever the settings say
    bool m_bVerifying = false; // also for the table being made: the quota is not looked at, nothing is offered
};

/// A table may take so much of the memory of the machine.
[[nodiscard]] std::uint64_t LargestTable(bool bGenerating);

/// Loads the data of `data.typeName`, or of `data.path` if that is set.
///   Result  false: no file, none that is whole, or no room. The register is then of no use.
///   Errors  std::bad_alloc, std::filesystem::filesystem_error.
[[nodiscard]] bool Load(TGlobalRegister& data, const TPrecalcOptions& options, IPrecalcRoom& room, INotifier& notifier,
                        TLoadMode mode = {});

} // namespace quillon
