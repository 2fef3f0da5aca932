#pragma once
// CFileLock: one process at a time works on something that a file stands for.
//
// The lock is advisory and belongs to the process: however it ends, the lock goes with it. The file is made for the
// lock and removed with it; one that a killed process has left locks nothing.
//
// Threads: an object is used by one thread at a time.

#include <filesystem>

namespace quillon {

class CFileLock {
  public:
    CFileLock() = default;
    ~CFileLock() { Release(); }
    CFileLock(const CFileLock&) = delete;
    CFileLock& operator=(const CFileLock&) = delete;

    /// Takes the lock without waiting; one that this object has is released before.
    ///   Result  false: another holder has it. Where no lock can be had at all, in a folder that may not be written to
    ///           or on a file system without locks, the result is true: nothing can be known of others.
    [[nodiscard]] bool Take(const std::filesystem::path& file);

    void Release();

  private:
    std::filesystem::path m_file;
    int m_nDescriptor = -1; // none: no lock
};

} // namespace quillon
