#pragma once
// Replacing a file so that nothing can leave half of it: not a kill, not a power failure, not a full disk.
//
// The content goes to a new file in the same folder, down to the disk; only then the name is given to it, in one step
// of the file system. Until that step the name stands for the old file. A kill may leave the new file behind under its
// own name (".quillon-...").

#include <cstddef>
#include <filesystem>
#include <span>
#include <string_view>
#include <system_error>
#include <vector>

namespace quillon {

enum class ESaveStep {
    Open,   // the file may not be written, or none can be made beside it
    Write,  // the content did not go to the disk whole
    Backup, // the old file could not be kept
    Rename, // the new file could not take its place
};

/// How a save ended. Unless it succeeded the file is what it was before; of several files those are new that are named.
struct TSaveResult {
    std::error_code m_error;            // none: saved
    ESaveStep m_step = ESaveStep::Open; // that failed
    std::filesystem::path m_oldFile;    // the backup that was made, empty for none; of several files the last one
    std::size_t m_nFile = 0;            // of several files the one that failed
    std::vector<std::size_t> m_saved{}; // of several files those that are new, although one may have failed
};

/// Writes a file with this content.
///   bBackup  an old file stays as "NAME.BAK", instead of an earlier one of that name; where that cannot be replaced as
///            the first of "NAME.BAK1", "NAME.BAK2", ... that is free.
/// A link is followed to the file that it names, also to one that is yet to be made. A device or pipe cannot be
/// replaced: it is written to as it is.
[[nodiscard]] TSaveResult SaveFile(const std::filesystem::path& path, std::string_view content, bool bBackup);

struct TFileToSave {
    std::filesystem::path m_path;
    std::string_view m_content;
};

/// The same for files that belong together. The contents of all are on the disk before the first gets its name: a full
/// disk leaves all of them as they were, earlier backups included. Then devices and pipes are written to, since that
/// may fail as well, and the others get their names in this order, so that a kill at the worst moment leaves new files
/// before old ones. Where links make one file of two paths, the file gets the content of the first.
[[nodiscard]] TSaveResult SaveFiles(std::span<const TFileToSave> files, bool bBackup);

// ---- The steps of a save, for those that are more than one file in the place of another

/// Writes a file of this name, new or in the place of what it held. A failure, such as a full disk, leaves no file of
/// this name.
///   bSync  waits until the disk has it. Otherwise a power failure may still lose it.
[[nodiscard]] std::error_code WriteToDisk(const std::filesystem::path& path, std::string_view content,
                                          bool bSync = true);

/// A name in the folder of a file for its new content. Nobody else takes it, neither another process nor a later call,
/// and no user has given it.
[[nodiscard]] std::filesystem::path UnusedNameBeside(const std::filesystem::path& file);

/// From now on a write beyond the limit on the size of files fails, on every thread, instead of ending the process.
void FailAtFileSizeLimit();

/// Waits until the disk has what has been written to the file, through whatever descriptor.
[[nodiscard]] std::error_code SyncFile(const std::filesystem::path& path);

/// Makes changes of names in a folder last. A file system that cannot do this has done what it can.
void SyncFolder(const std::filesystem::path& folder);

} // namespace quillon
