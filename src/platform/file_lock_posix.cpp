#include "platform/file_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quillon {

namespace {

/// False if the holder before has removed the file between its being opened and being locked.
bool IsStillNamed(int fd, const std::filesystem::path& file) {
    struct stat opened {
    }, named{};
    return fstat(fd, &opened) == 0 && stat(file.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev;
}

} // namespace

bool CFileLock::Take(const std::filesystem::path& file) {
    Release();
    for (;;) {
        const int fd = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (fd < 0)
            return true;
        if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const bool bHeld = errno == EWOULDBLOCK;
            close(fd);
            return !bHeld;
        }
        if (IsStillNamed(fd, file)) {
            m_file = file;
            m_nDescriptor = fd;
            return true;
        }
        close(fd);
    }
}

// The name goes while the lock is held: whoever has opened the file meanwhile sees that it has no name any more.
void CFileLock::Release() {
    const int fd = std::exchange(m_nDescriptor, -1);
    if (fd < 0)
        return;
    unlink(m_file.c_str());
    close(fd);
}

} // namespace quillon
