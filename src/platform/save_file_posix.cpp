#include "platform/save_file.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

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
    explicit CNeighbour(const fs::path& file) : m_path(file.parent_path() / UnusedName()) {}
    ~CNeighbour() { unlink(m_path.c_str()); }
    CNeighbour(const CNeighbour&) = delete;
    CNeighbour& operator=(const CNeighbour&) = delete;

    [[nodiscard]] const fs::path& Path() const { return m_path; }

  private:
    /// Unused by this process: another one with its number may have been killed before it could remove its file.
    static std::string UnusedName() {
        static std::atomic<unsigned> nMade{0};
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        return ".quillon-" + std::to_string(getpid()) + "-" + std::to_string(now.tv_sec) + "-" +
               std::to_string(now.tv_nsec) + "-" + std::to_string(nMade.fetch_add(1));
    }

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
    return error;
}

bool IsFree(const fs::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

/// Keeps the file under a second name; it has its first name all the while.
std::error_code KeepOldFile(const fs::path& file, fs::path& backup) {
    constexpr int kMostBackups = 10'000;
    const CNeighbour copy(file);
    if (const std::error_code error = LinkOrCopy(file, copy.Path()))
        return error;
    backup = file.native() + ".BAK";
    if (rename(copy.Path().c_str(), backup.c_str()) == 0)
        return {};
    const std::error_code error = LastError();
    for (int n = 1; n <= kMostBackups; ++n) {
        backup = file.native() + ".BAK" + std::to_string(n);
        if (IsFree(backup))
            return rename(copy.Path().c_str(), backup.c_str()) == 0 ? std::error_code() : LastError();
    }
    return error;
}

/// Makes the change of a name last. A file system that cannot do this has done what it can.
void SyncFolder(const fs::path& folder) {
    const CDescriptor descriptor(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.Get() >= 0)
        static_cast<void>(fsync(descriptor.Get()));
}

TSaveResult Replace(const fs::path& file, std::string_view content, const struct stat* pOld, bool bBackup) {
    const CNeighbour fresh(file);
    const mode_t rights = pOld != nullptr ? 0600 : 0666; // until it has the old one's, nobody else is to read it
    CDescriptor descriptor(open(fresh.Path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights));
    if (descriptor.Get() < 0)
        return {LastError(), ESaveStep::Open, {}};
    TSaveResult result;
    if (const std::error_code error = WriteNew(descriptor, content, pOld))
        return {error, ESaveStep::Write, {}};
    if (pOld != nullptr && bBackup)
        if (const std::error_code error = KeepOldFile(file, result.m_oldFile))
            return {error, ESaveStep::Backup, {}};
    if (rename(fresh.Path().c_str(), file.c_str()) != 0)
        return {LastError(), ESaveStep::Rename, result.m_oldFile};
    SyncFolder(file.parent_path());
    return result;
}

} // namespace

TSaveResult SaveFile(const fs::path& path, std::string_view content, bool bBackup) {
    const CFileSizeSignalHeld held;
    std::error_code notThere;
    const fs::path target = fs::canonical(path, notThere);
    const fs::path& file = notThere ? path : target;
    struct stat status {};
    if (stat(file.c_str(), &status) != 0)
        return errno == ENOENT ? Replace(file, content, nullptr, bBackup)
                               : TSaveResult{LastError(), ESaveStep::Open, {}};
    if (S_ISDIR(status.st_mode))
        return {std::make_error_code(std::errc::is_a_directory), ESaveStep::Open, {}};
    if (!S_ISREG(status.st_mode))
        return WriteInPlace(file, content);
    if (access(file.c_str(), W_OK) != 0) // its folder would let it be replaced all the same
        return {LastError(), ESaveStep::Open, {}};
    return Replace(file, content, &status, bBackup);
}

} // namespace quillon
