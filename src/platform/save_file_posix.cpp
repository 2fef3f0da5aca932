#include "platform/save_file.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace quillon {

namespace {

namespace fs = std::filesystem;

std::error_code LastError() { return {errno, std::generic_category()}; }

/// While it lives, a write beyond the limit on the size of files fails; the signal that would end the program is held
/// back from this thread and dropped.
class CFileSizeSignalHeld {
  public:
    CFileSizeSignalHeld() {
        sigemptyset(&m_signal);
        sigaddset(&m_signal, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
    }
    ~CFileSizeSignalHeld() {
        if (sigismember(&m_before, SIGXFSZ) == 0) {
            const timespec now{};
            while (sigtimedwait(&m_signal, nullptr, &now) < 0 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    CFileSizeSignalHeld(const CFileSizeSignalHeld&) = delete;
    CFileSizeSignalHeld& operator=(const CFileSizeSignalHeld&) = delete;

  private:
    sigset_t m_signal{}, m_before{};
};

/// An open file, closed at the end of its life.
class CDescriptor {
  public:
    explicit CDescriptor(int fd) : m_fd(fd) {}
    ~CDescriptor() {
        if (m_fd >= 0)
            close(m_fd);
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;

    [[nodiscard]] int Get() const { return m_fd; }

    /// What was written may be refused as late as here.
    [[nodiscard]] std::error_code Close() {
        const int result = close(m_fd);
        m_fd = -1;
        return result == 0 || errno == EINTR ? std::error_code() : LastError();
    }

  private:
    int m_fd;
};

/// A file beside the one to be saved, removed unless it has been given another name.
class CNeighbour {
  public:
    explicit CNeighbour(const fs::path& file) : m_path(UnusedNameBeside(file)) {}
    ~CNeighbour() { unlink(m_path.c_str()); }
    CNeighbour(const CNeighbour&) = delete;
    CNeighbour& operator=(const CNeighbour&) = delete;

    [[nodiscard]] const fs::path& Path() const { return m_path; }

  private:
    fs::path m_path;
};

std::error_code WriteAll(int fd, std::string_view content) {
    while (!content.empty()) {
        const ssize_t nWritten = write(fd, content.data(), content.size());
        if (nWritten < 0 && errno != EINTR)
            return LastError();
        content.remove_prefix(nWritten < 0 ? 0 : static_cast<std::size_t>(nWritten));
    }
    return {};
}

/// Gives the new file owner and rights of the old one, as far as the user may.
void TakeOver(int fd, const struct stat& old) {
    [[maybe_unused]] const int nOwner = fchown(fd, old.st_uid, old.st_gid);
    [[maybe_unused]] const int nRights = fchmod(fd, old.st_mode & 0777);
}

/// Fills a new file and waits until the disk has it.
///   pOld  the file it is to replace; null: none.
std::error_code WriteNew(CDescriptor& file, std::string_view content, const struct stat* pOld) {
    if (const std::error_code error = WriteAll(file.Get(), content))
        return error;
    if (pOld != nullptr)
        TakeOver(file.Get(), *pOld);
    if (fsync(file.Get()) != 0)
        return LastError();
    return file.Close();
}

TSaveResult WriteInPlace(const fs::path& path, std::string_view content) {
    CDescriptor file(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    if (file.Get() < 0)
        return {LastError(), ESaveStep::Open, {}};
    std::error_code error = WriteAll(file.Get(), content);
    if (!error)
        error = file.Close();
    return {error, ESaveStep::Write, {}};
}

/// A second name for the file or, where the file system knows no such thing, a copy.
std::error_code LinkOrCopy(const fs::path& from, const fs::path& to) {
    if (link(from.c_str(), to.c_str()) == 0)
        return {};
    std::error_code error;
    fs::copy_file(from, to, error);
    return error ? error : SyncFile(to);
}

/// What keeps a name from being looked up, other than that it is free.
std::error_code LookUpError(const fs::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 || errno == ENOENT ? std::error_code() : LastError();
}

bool IsFree(const fs::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

fs::path BackupOf(const fs::path& file) { return file.native() + ".BAK"; }

/// Gives the copy of the old file the name of a backup.
std::error_code NameBackup(const fs::path& copy, const fs::path& file, fs::path& backup) {
    constexpr int kMostBackups = 10'000;
    backup = BackupOf(file);
    if (rename(copy.c_str(), backup.c_str()) == 0)
        return {};
    const std::error_code error = LastError();
    for (int n = 1; n <= kMostBackups; ++n) {
        backup = BackupOf(file) += std::to_string(n);
        if (IsFree(backup))
            return rename(copy.c_str(), backup.c_str()) == 0 ? std::error_code() : LastError();
    }
    return error;
}

/// Where a file is to be written to.
struct TTarget {
    fs::path m_file;
    bool m_bExists = false;
    struct stat m_old {}; // if it exists
};

/// Follows a link to a file that does not exist yet; what exists has been followed.
std::error_code FollowLinks(fs::path& file) {
    constexpr int kMostLinks = 40;
    std::error_code error;
    for (int n = 0; n < kMostLinks; ++n) {
        if (!fs::is_symlink(fs::symlink_status(file, error)))
            return {};
        const fs::path named = fs::read_symlink(file, error);
        if (error)
            return error;
        file = file.parent_path() / named; // which is `named` where that is absolute
    }
    return std::make_error_code(std::errc::too_many_symbolic_link_levels);
}

std::error_code FindTarget(const fs::path& path, TTarget& target) {
    std::error_code notThere;
    target.m_file = fs::canonical(path, notThere);
    if (notThere) {
        target.m_file = path;
        if (const std::error_code error = FollowLinks(target.m_file))
            return error;
        if (const fs::path folder = fs::canonical(target.m_file.parent_path(), notThere); !notThere)
            target.m_file = folder / target.m_file.filename(); // one spelling for one file
    }
    target.m_bExists = stat(target.m_file.c_str(), &target.m_old) == 0;
    if (!target.m_bExists)
        return errno == ENOENT ? std::error_code() : LastError();
    if (S_ISDIR(target.m_old.st_mode))
        return std::make_error_code(std::errc::is_a_directory);
    if (S_ISREG(target.m_old.st_mode) && access(target.m_file.c_str(), W_OK) != 0)
        return LastError(); // its folder would let it be replaced all the same
    return {};
}

/// A save in its steps. Until the last one the file is what it was.
class CSave {
  public:
    CSave(TTarget target, std::string_view content)
        : m_target(std::move(target)), m_content(content), m_fresh(m_target.m_file), m_copy(m_target.m_file) {}

    [[nodiscard]] const fs::path& Target() const { return m_target.m_file; }

    /// A device or pipe.
    [[nodiscard]] bool IsInPlace() const { return m_target.m_bExists && !S_ISREG(m_target.m_old.st_mode); }

    /// Brings the content to the disk.
    [[nodiscard]] TSaveResult Write() const {
        if (IsInPlace())
            return {};
        const struct stat* const pOld = m_target.m_bExists ? &m_target.m_old : nullptr;
        const mode_t rights = pOld != nullptr ? 0600 : 0666; // until it has the old one's, nobody else is to read it
        CDescriptor descriptor(open(m_fresh.Path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights));
        if (descriptor.Get() < 0)
            return {LastError(), ESaveStep::Open, {}};
        return {WriteNew(descriptor, m_content, pOld), ESaveStep::Write, {}};
    }

    /// Keeps the old file under a name that is not yet that of the backup: an earlier backup stays until the new file
    /// is about to take its name.
    [[nodiscard]] TSaveResult KeepOld() {
        if (!m_target.m_bExists || IsInPlace())
            return {};
        m_bKept = true;
        if (const std::error_code error = LookUpError(BackupOf(m_target.m_file)))
            return {error, ESaveStep::Backup, {}}; // such as a name that would be too long
        return {LinkOrCopy(m_target.m_file, m_copy.Path()), ESaveStep::Backup, {}};
    }

    /// The last step.
    [[nodiscard]] TSaveResult Finish() const { return IsInPlace() ? WriteInPlace(m_target.m_file, m_content) : Name(); }

  private:
    [[nodiscard]] TSaveResult Name() const {
        TSaveResult result;
        if (m_bKept)
            if (const std::error_code error = NameBackup(m_copy.Path(), m_target.m_file, result.m_oldFile))
                return {error, ESaveStep::Backup, {}};
        if (rename(m_fresh.Path().c_str(), m_target.m_file.c_str()) != 0)
            return {LastError(), ESaveStep::Rename, result.m_oldFile};
        SyncFolder(m_target.m_file.parent_path());
        return result;
    }

    const TTarget m_target;
    const std::string_view m_content;
    const CNeighbour m_fresh, m_copy;
    bool m_bKept = false; // the old file has a second name, m_copy
};

/// Files that are saved together.
class CSaves {
  public:
    [[nodiscard]] TSaveResult Run(std::span<const TFileToSave> files, bool bBackup) {
        if (Prepare(files) && (!bBackup || KeepOld()) && Finish(/*bInPlace=*/true))
            static_cast<void>(Finish(/*bInPlace=*/false));
        return m_result;
    }

  private:
    bool Prepare(std::span<const TFileToSave> files) {
        for (std::size_t i = 0; i < files.size(); ++i) {
            TTarget target;
            if (!Take(i, {FindTarget(files[i].m_path, target), ESaveStep::Open, {}}))
                return false;
            const bool bKnown = std::any_of(m_saves.begin(), m_saves.end(),
                                            [&](const auto& save) { return save.second->Target() == target.m_file; });
            if (bKnown)
                continue;
            m_saves.emplace_back(i, std::make_unique<CSave>(std::move(target), files[i].m_content));
            if (!Take(i, m_saves.back().second->Write()))
                return false;
        }
        return true;
    }

    bool KeepOld() {
        return std::all_of(m_saves.begin(), m_saves.end(),
                           [&](const auto& save) { return Take(save.first, save.second->KeepOld()); });
    }

    bool Finish(bool bInPlace) {
        for (const auto& [nFile, save] : m_saves) {
            if (save->IsInPlace() != bInPlace)
                continue;
            if (!Take(nFile, save->Finish()))
                return false;
            m_result.m_saved.push_back(nFile);
        }
        return true;
    }

    /// Takes over how a step ended; true if it succeeded.
    bool Take(std::size_t nFile, const TSaveResult& step) {
        m_result.m_error = step.m_error;
        m_result.m_step = step.m_step;
        m_result.m_nFile = nFile;
        if (!step.m_oldFile.empty())
            m_result.m_oldFile = step.m_oldFile;
        return !step.m_error;
    }

    std::vector<std::pair<std::size_t, std::unique_ptr<CSave>>> m_saves; // each with the number of its file
    TSaveResult m_result;
};

} // namespace

std::error_code WriteToDisk(const fs::path& path, std::string_view content, bool bSync) {
    const CFileSizeSignalHeld held;
    CDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (file.Get() < 0)
        return LastError();
    std::error_code error = bSync ? WriteNew(file, content, nullptr) : WriteAll(file.Get(), content);
    if (!error && !bSync)
        error = file.Close();
    if (error)
        unlink(path.c_str());
    return error;
}

// Another process with the number of this one may have been killed before it could remove its file.
fs::path UnusedNameBeside(const fs::path& file) {
    static std::atomic<unsigned> nMade{0};
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return file.parent_path() / (".quillon-" + std::to_string(getpid()) + "-" + std::to_string(now.tv_sec) + "-" +
                                 std::to_string(now.tv_nsec) + "-" + std::to_string(nMade.fetch_add(1)));
}

void FailAtFileSizeLimit() { (void)std::signal(SIGXFSZ, SIG_IGN); }

std::error_code SyncFile(const fs::path& path) {
    CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0 || fsync(file.Get()) != 0)
        return LastError();
    return file.Close();
}

void SyncFolder(const fs::path& folder) {
    const CDescriptor descriptor(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.Get() >= 0)
        static_cast<void>(fsync(descriptor.Get()));
}

TSaveResult SaveFile(const fs::path& path, std::string_view content, bool bBackup) {
    const TFileToSave file{path, content};
    return SaveFiles({&file, 1}, bBackup);
}

TSaveResult SaveFiles(std::span<const TFileToSave> files, bool bBackup) {
    const CFileSizeSignalHeld held;
    return CSaves().Run(files, bBackup);
}

} // namespace quillon
